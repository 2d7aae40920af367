#include "scripting/panel/ConsoleBuffer.h"

#include <algorithm>

namespace runebook {

namespace {

constexpr qsizetype kSlice = 1 << 15;

void join(ConsoleText &text, ConsoleText &&more)
{
    const qsizetype shift = text.text.size();
    text.text += more.text;
    for (const UnitRange &range : std::as_const(more.emphasised))
        text.emphasised << UnitRange {range.location + shift, range.length};
    for (FileLink &link : more.links) {
        link.range.location += shift;
        text.links << link;
    }
}

} // namespace

qsizetype ConsoleBuffer::append(const QString &text, const ConsoleLimits &limits)
{
    if (text.isEmpty())
        return 0;
    if (text.size() <= kSlice)
        appendMarked(text);
    else
        appendRaw(text, limits.units, std::make_shared<Marks>());
    return dropOldest(limits);
}

qsizetype ConsoleBuffer::continueWrite(const QString &text, const ConsoleLimits &limits)
{
    if (text.isEmpty())
        return 0;
    appendRaw(text, limits.units, m_lastMarks);
    return dropOldest(limits);
}

void ConsoleBuffer::appendMarked(const QString &text)
{
    if (m_entries.empty() || m_entries.back().isRaw() || m_entries.back().units() + text.size() > kSlice)
        m_entries.emplace_back();
    Entry &entry = m_entries.back();
    const qsizetype before = entry.units();
    join(entry.marked, ConsoleText::fromOutput(text));
    const qsizetype lines = text.count(u'\n');
    entry.lines += lines;
    m_lines += lines;
    m_units += entry.units() - before;
}

void ConsoleBuffer::appendRaw(const QString &text, qsizetype maxUnits, const std::shared_ptr<Marks> &marks)
{
    Entry &entry = m_entries.emplace_back();
    entry.marks = m_lastMarks = marks;
    entry.raw = text.size() > maxUnits ? text.right(maxUnits) : text;
    entry.lines = entry.raw.count(u'\n');
    m_lines += entry.lines;
    m_units += entry.units();
}

qsizetype ConsoleBuffer::dropOldest(const ConsoleLimits &limits)
{
    const qsizetype linesBefore = m_lines;
    while (m_entries.size() > 1) {
        const Entry &oldest = m_entries.front();
        if (m_lines - oldest.lines < limits.lines && m_units - oldest.units() < limits.units)
            break;
        m_lines -= oldest.lines;
        m_units -= oldest.units();
        m_entries.pop_front();
    }
    return linesBefore - m_lines;
}

ConsoleText ConsoleBuffer::take()
{
    Entry &entry = m_entries.front();
    if (entry.isRaw()) {
        ConsoleText slice = takeSlice(entry);
        if (entry.units() == 0)
            m_entries.pop_front();
        return slice;
    }
    m_lines -= entry.lines;
    m_units -= entry.units();
    ConsoleText marked = std::move(entry.marked);
    m_entries.pop_front();
    return marked;
}

/// Takes the marks of names out that the same write had before.
void ConsoleBuffer::keepFirstMarks(ConsoleText &text, Marks &marks)
{
    text.emphasised.removeIf([&](const UnitRange &range) {
        const QString word = text.text.mid(range.location, range.length);
        if (!errorNames().contains(word))
            return std::exchange(marks.hasTraceback, true);
        if (marks.names.contains(word))
            return true;
        marks.names << word;
        return false;
    });
}

ConsoleText ConsoleBuffer::takeSlice(Entry &entry)
{
    qsizetype length = std::min(kSlice, entry.units());
    const QStringView ahead = QStringView(entry.raw).sliced(entry.place, length);
    if (length < entry.units()) {
        const qsizetype lineEnd = ahead.lastIndexOf(u'\n');
        if (lineEnd >= 0)
            length = lineEnd + 1;
        else if (ahead.back().isHighSurrogate())
            --length;
    }
    ConsoleText slice = ConsoleText::fromOutput(ahead.first(length).toString());
    keepFirstMarks(slice, *entry.marks);
    entry.place += length;
    const qsizetype lines = ahead.first(length).count(u'\n');
    entry.lines -= lines;
    m_lines -= lines;
    m_units -= length;
    return slice;
}

void ConsoleBuffer::clear()
{
    m_entries.clear();
    m_lines = m_units = 0;
}

} // namespace runebook
