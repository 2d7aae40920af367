#pragma once

#include "model/StringHelpers.h"

#include <QMetaType>
#include <QStyledItemDelegate>
#include <vector>

namespace runebook {

/// A text and the parts of it that stand out.
struct MarkedText {
    QString text;
    std::vector<UnitRange> ranges;
};

/// Draws one line of plain text with marked parts: on a tint, and struck out where text goes, so that the
/// difference does not hang on the colour alone.
class MarkedTextDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    /// The marked parts of the text under Qt::DisplayRole, as a std::vector<UnitRange>.
    static constexpr int RangesRole = Qt::UserRole + 1;
    enum class Mark { Removed, Inserted };

    explicit MarkedTextDelegate(Mark mark, QObject *parent = nullptr)
        : QStyledItemDelegate(parent), m_mark(mark)
    {
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;

private:
    Mark m_mark;
};

} // namespace runebook

Q_DECLARE_METATYPE(std::vector<runebook::UnitRange>)
