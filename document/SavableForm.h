#pragma once

#include "model/EditedValue.h"
#include "model/RoundTrip.h"

#include <QStringList>
#include <vector>

namespace runebook {

/// A new value of a field: a list for code points and alternate names, otherwise one text.
struct FieldFix {
    GlyphField field;
    QStringList value;
};

/// The fields that a file of \a fileVersion would not keep, in the nearest form that it keeps. Nothing for
/// those that only a person can decide about.
std::vector<FieldFix> savableForm(const VXGlyphInfo &info, int fileVersion);

/// What would become of the value of \a loss, in a sentence.
QString sentenceOfLoss(const VXGlyphInfo &info, const RoundTrip::Loss &loss, const QString &fieldTitle);

} // namespace runebook
