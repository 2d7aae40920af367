#pragma once

#include "model/VXGlyphInfo.h"
#include "platform/ShownText.h"

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

/// Another text in the place of a stretch of the original one.
struct TextEdit {
    qsizetype begin = 0;
    qsizetype length = 0;
    QString text;
};

/// A long text in parts that can be laid out. Each can be edited by itself; the text is put together once it
/// is asked for. Nothing but that and a comparison of equals takes longer where there is more of it.
class LongText
{
public:
    explicit LongText(const QString &text) : LongText(FieldValue::text(text)) { }
    /// A text of its own, which is shared.
    explicit LongText(const FieldValue &text);

    qsizetype partCount() const;
    QString part(qsizetype index) const;
    /// Any text will do; one that is too long to be laid out becomes several parts. The other parts stay
    /// apart as they are.
    void setPart(qsizetype index, const QString &text);
    bool isChanged() const;
    /// The part in which a place of the unchanged text lies.
    qsizetype partAt(qsizetype place) const { return qMin(place / kStride, originalParts() - 1); }
    /// The part, from \a index on, in which the place lies that is so far behind the beginning of that one.
    qsizetype partBehind(qsizetype index, qsizetype distance) const;
    qsizetype originalSize() const { return m_view.size(); }

    /// What makes the original text into this one.
    std::vector<TextEdit> edits() const;
    FieldValue value() const;
    QString text() const;

private:
    /// Parts that stand one behind the other: some of the original ones, or texts that took the place of one.
    struct Run {
        qsizetype first = 0;
        qsizetype count = 0; ///< of original parts, also where others stand in their place
        QStringList own;
        bool isOwn = false;
        qsizetype partCount() const { return isOwn ? own.size() : count; }
    };
    struct Place {
        std::size_t run;
        qsizetype part; ///< in the run
    };
    static constexpr qsizetype kStride = kMostInField - 256; ///< no cut moves farther

    qsizetype originalParts() const { return qMax<qsizetype>(1, (m_view.size() + kStride - 1) / kStride); }
    qsizetype beginOf(qsizetype part) const;
    QStringView original(qsizetype part, qsizetype count = 1) const;
    Place placeOf(qsizetype index) const;
    std::vector<QStringView> views() const;

    FieldValue m_original;
    QStringView m_view;
    std::vector<Run> m_runs;
};

} // namespace runebook
