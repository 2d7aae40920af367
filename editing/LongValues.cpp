#include "editing/LongValues.h"

#include "platform/ShownText.h"

#include <algorithm>

namespace runebook {

namespace {

/// The display text, or so much of it that it is seen to be longer than \a most.
QString beginningOfField(const VXGlyphInfo &info, GlyphField field, qsizetype most)
{
    if (static_cast<int>(field) >= kStoredFieldCount)
        return info.displayText(field);
    // One more might be half a character, which is left out.
    return info.stored(field).beginning(info.sourceData(), most + 2);
}

/// Where \a text is cut at \a most or before: behind a line, an entry or a word where one ends near there.
qsizetype cutBefore(QStringView text, qsizetype most)
{
    constexpr qsizetype kNear = 256;
    for (qsizetype at = most; at > qMax<qsizetype>(1, most - kNear); --at) {
        const QChar last = text.at(at - 1);
        if (last.isSpace() || (last == u',' && at < text.size() && !text.at(at).isSpace()))
            return at;
    }
    return beginningOf(text, most).size();
}

} // namespace

ShownValue shownValue(const VXGlyphInfo &info, GlyphField field)
{
    const QString text = beginningOfField(info, field, kMostInField);
    if (text.size() <= kMostInField)
        return {text, text.size()};
    return {text.first(cutBefore(text, kMostOfLong)), info.stored(field).length(info.sourceData())};
}

QString shownInCell(const VXGlyphInfo &info, GlyphField field)
{
    return beginningOfField(info, field, kMostInCell);
}

bool isLongValue(const VXGlyphInfo &info, GlyphField field)
{
    return beginningOfField(info, field, kMostInField).size() > kMostInField;
}

LongText::LongText(QString text) : m_text(std::move(text))
{
    qsizetype begin = 0;
    do {
        m_begins.push_back(begin);
        const QStringView rest = QStringView(m_text).sliced(begin);
        begin += rest.size() > kMostInField ? cutBefore(rest, kMostInField) : rest.size();
    } while (begin < m_text.size());
}

QStringView LongText::original(qsizetype index) const
{
    const auto at = static_cast<std::size_t>(index);
    const qsizetype end = at + 1 < m_begins.size() ? m_begins[at + 1] : m_text.size();
    return QStringView(m_text).sliced(m_begins[at], end - m_begins[at]);
}

QString LongText::part(qsizetype index) const
{
    const auto found = m_edited.find(index);
    return found == m_edited.end() ? original(index).toString() : found->second;
}

void LongText::setPart(qsizetype index, const QString &text)
{
    if (original(index) == text)
        m_edited.erase(index);
    else
        m_edited[index] = text;
}

qsizetype LongText::partAt(qsizetype place) const
{
    const auto behind = std::upper_bound(m_begins.begin(), m_begins.end(), place);
    return std::max<qsizetype>(0, behind - m_begins.begin() - 1);
}

QString LongText::text() const
{
    QString text;
    text.reserve(m_text.size());
    qsizetype done = 0;
    for (const auto &[index, edited] : m_edited) {
        const qsizetype begin = m_begins[static_cast<std::size_t>(index)];
        text += QStringView(m_text).sliced(done, begin - done);
        text += edited;
        done = begin + original(index).size();
    }
    return text += QStringView(m_text).sliced(done);
}

} // namespace runebook
