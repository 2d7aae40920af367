#include "model/ComparableValue.h"

#include <algorithm>

namespace runebook {

namespace {

/// Texts are kept joined, lists may hold the separator inside an entry: only such a list needs another form.
std::string_view comparableList(const QStringList &list, std::string &buffer)
{
    const bool isPlain = std::none_of(list.begin(), list.end(),
                                      [](const QString &entry) { return entry.contains(kListSeparator); });
    buffer = isPlain ? list.join(kListSeparator).toStdString()
                     : '\0' + list.join(QChar(QChar::Null)).toStdString();
    return buffer;
}

} // namespace

std::optional<std::string_view> comparableValue(const VXGlyphInfo &info, GlyphField field,
                                                std::string &buffer)
{
    if (field == GlyphField::Case || field == GlyphField::Direction) {
        buffer = std::to_string(field == GlyphField::Case ? info.caseValue() : info.direction());
        return buffer;
    }
    const FieldValue &value = info.stored(field);
    const std::string_view text =
        value.isList() ? comparableList(value.toList(info.sourceData()), buffer) : info.utf8(field, buffer);
    return text.empty() ? std::nullopt : std::optional(text);
}

bool haveEqualValues(const VXGlyphInfo &left, const VXGlyphInfo &right, GlyphField field)
{
    if (field == GlyphField::Case)
        return left.caseValue() == right.caseValue();
    if (field == GlyphField::Direction)
        return left.direction() == right.direction();
    const FieldValue &one = left.stored(field);
    const FieldValue &other = right.stored(field);
    if (one.isPiece() && other.isPiece())
        return one.bytes(left.sourceData()) == other.bytes(right.sourceData());
    if (one.isAbsent() && other.isAbsent())
        return true;
    std::string leftBuffer;
    std::string rightBuffer;
    return comparableValue(left, field, leftBuffer) == comparableValue(right, field, rightBuffer);
}

} // namespace runebook
