#pragma once

#include "model/VXGlyphInfo.h"

#include <map>
#include <vector>

namespace runebook {

/// What is shown of one field: all of it, or the beginning of a value that is too long.
struct ShownValue {
    QString text;
    qsizetype length = 0; ///< of the whole value
    bool isCut() const { return text.size() < length; }
};
/// A field as its display text, whole up to kMostInField, cut to less when it is longer. The work does not
/// grow with the value, but for its length, which is counted when it is cut.
ShownValue shownValue(const VXGlyphInfo &info, GlyphField field);
/// The beginning of a display text for a cell; no work grows with the value.
QString shownInCell(const VXGlyphInfo &info, GlyphField field);
/// Whether a field's value is edited in a dialog of its own, part by part.
bool isLongValue(const VXGlyphInfo &info, GlyphField field);

/// A long text in parts that can be laid out. Each can be edited by itself; the text is put together once it
/// is asked for.
class LongText
{
public:
    explicit LongText(QString text);

    qsizetype partCount() const { return std::ssize(m_begins); }
    QString part(qsizetype index) const;
    /// Any text will do; parts stay apart as they are.
    void setPart(qsizetype index, const QString &text);
    bool isChanged() const { return !m_edited.empty(); }
    /// The part in which a place of the unchanged text lies.
    qsizetype partAt(qsizetype place) const;
    QString text() const;

private:
    QStringView original(qsizetype index) const;

    QString m_text;
    std::vector<qsizetype> m_begins;
    std::map<qsizetype, QString> m_edited;
};

} // namespace runebook
