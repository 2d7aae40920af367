#include "editing/fields/LongValues.h"

#include <algorithm>
#include <numeric>

namespace runebook {

namespace {

/// The display text, or so much of it that it is seen to be longer than \a most.
QString beginningOfField(const VXGlyphInfo &info, GlyphField field, qsizetype most)
{
    if (!isStored(field))
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

LongText::LongText(const FieldValue &text) : m_original(text), m_view(m_original.view())
{
    m_runs.push_back({0, originalParts(), {}, false});
}

qsizetype LongText::beginOf(qsizetype part) const
{
    const qsizetype place = part * kStride;
    return part == 0 ? 0 : place >= m_view.size() ? m_view.size() : cutBefore(m_view, place);
}

QStringView LongText::original(qsizetype part, qsizetype count) const
{
    const qsizetype begin = beginOf(part);
    const qsizetype end = part + count >= originalParts() ? m_view.size() : beginOf(part + count);
    return m_view.sliced(begin, end - begin);
}

LongText::Place LongText::placeOf(qsizetype index) const
{
    std::size_t run = 0;
    while (run + 1 < m_runs.size() && index >= m_runs[run].partCount())
        index -= m_runs[run++].partCount();
    return {run, index};
}

qsizetype LongText::partCount() const
{
    return std::accumulate(m_runs.begin(), m_runs.end(), qsizetype(0),
                           [](qsizetype sum, const Run &run) { return sum + run.partCount(); });
}

QString LongText::part(qsizetype index) const
{
    const auto [at, part] = placeOf(index);
    const Run &run = m_runs[at];
    return run.isOwn ? run.own.at(part) : original(run.first + part).toString();
}

void LongText::setPart(qsizetype index, const QString &text)
{
    auto [at, part] = placeOf(index);
    if (!m_runs[at].isOwn) {
        if (original(m_runs[at].first + part) == text)
            return;
        // One part becomes a run of its own between the others.
        const Run whole = m_runs[at];
        std::vector<Run> runs;
        if (part > 0)
            runs.push_back({whole.first, part, {}, false});
        runs.push_back({whole.first + part, 1, {QString()}, true});
        if (part + 1 < whole.count)
            runs.push_back({whole.first + part + 1, whole.count - part - 1, {}, false});
        const auto place = m_runs.erase(m_runs.begin() + static_cast<std::ptrdiff_t>(at));
        m_runs.insert(place, runs.begin(), runs.end());
        at += part > 0;
        part = 0;
    }
    Run &run = m_runs[at];
    QStringList parts;
    QStringView rest = text;
    while (rest.size() > kMostInField) {
        const qsizetype cut = cutBefore(rest, kStride);
        parts << rest.first(cut).toString();
        rest = rest.sliced(cut);
    }
    parts << rest.toString();
    run.own = run.own.first(part) + parts + run.own.sliced(part + 1);
    if (run.own.size() == 1 && run.count == 1 && original(run.first) == run.own.first())
        run = {run.first, 1, {}, false};
}

bool LongText::isChanged() const
{
    return std::any_of(m_runs.begin(), m_runs.end(), [](const Run &run) { return run.isOwn; });
}

qsizetype LongText::partBehind(qsizetype index, qsizetype distance) const
{
    for (const qsizetype last = partCount() - 1; index < last; ++index) {
        const qsizetype size = part(index).size();
        if (distance <= size)
            break;
        distance -= size;
    }
    return index;
}

std::vector<TextEdit> LongText::edits() const
{
    std::vector<TextEdit> edits;
    for (const Run &run : m_runs) {
        if (run.isOwn) {
            const QStringView replaced = original(run.first, run.count);
            edits.push_back({replaced.data() - m_view.data(), replaced.size(), run.own.join(QString())});
        }
    }
    return edits;
}

std::vector<QStringView> LongText::views() const
{
    std::vector<QStringView> views;
    for (const Run &run : m_runs) {
        if (run.isOwn)
            views.insert(views.end(), run.own.begin(), run.own.end());
        else
            views.push_back(original(run.first, run.count));
    }
    return views;
}

FieldValue LongText::value() const
{
    return FieldValue::text(views());
}

QString LongText::text() const
{
    return value().toString(nullptr);
}

} // namespace runebook
