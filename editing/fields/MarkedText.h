#pragma once

#include "model/StringHelpers.h"

#include <QMetaType>
#include <QString>
#include <vector>

namespace runebook {

/// A text and the parts of it that stand out.
struct MarkedText {
    /// Where models give the marked parts of the text under Qt::DisplayRole, as a std::vector<UnitRange>.
    static constexpr int RangesRole = Qt::UserRole + 1;

    QString text;
    std::vector<UnitRange> ranges;
};

} // namespace runebook

Q_DECLARE_METATYPE(std::vector<runebook::UnitRange>)
