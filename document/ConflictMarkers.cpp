#include "document/ConflictMarkers.h"

#include <algorithm>
#include <optional>

namespace runebook {

namespace {

constexpr std::size_t kUsualSize = 7;

std::string_view withoutEnd(std::string_view line)
{
    const std::size_t last = line.find_last_not_of(" \t\r\n");
    return line.substr(0, last == line.npos ? 0 : last + 1);
}

std::string_view labelOf(std::string_view line, std::size_t size)
{
    const std::string_view marker = withoutEnd(line);
    return marker.substr(std::min(marker.size(), size + 1));
}

/// Gathers the parts of conflicts line by line.
class Finder
{
public:
    Finder(std::vector<Conflict> &found, std::vector<std::size_t> *strays) : m_found(found), m_strays(strays)
    {
    }

    void take(std::string_view text, std::size_t begin, std::size_t end)
    {
        const std::string_view line = text.substr(begin, end - begin);
        std::size_t size = 0;
        const ConflictMarker marker = conflictMarker(line, &size);
        if (marker == ConflictMarker::None)
            return;
        if (marker == ConflictMarker::Ours && (m_part == ConflictMarker::None || size == m_size)) {
            giveUp(); // two beginnings: the first has no end
            m_part = marker;
            m_size = size;
            m_open = {};
            m_open.oursLabel = labelOf(line, size);
            m_begin = begin;
            m_partBegin = end;
            m_markers = {begin};
            return;
        }
        if (m_part == ConflictMarker::None) {
            if (marker == ConflictMarker::End)
                addStray(begin);
            return;
        }
        if (size != m_size || marker <= m_part
            || (marker == ConflictMarker::End && m_part != ConflictMarker::Theirs))
            return;
        endPart(text, begin);
        m_markers.push_back(begin);
        m_part = marker;
        m_partBegin = end;
        if (marker == ConflictMarker::Base)
            m_open.baseLabel = labelOf(line, size);
        if (marker != ConflictMarker::End)
            return;
        m_open.theirsLabel = labelOf(line, size);
        m_open.whole = text.substr(m_begin, end - m_begin);
        m_found.push_back(m_open);
        m_part = ConflictMarker::None;
    }
    void finish() { giveUp(); }

private:
    void endPart(std::string_view text, std::size_t end)
    {
        const std::string_view part = text.substr(m_partBegin, end - m_partBegin);
        (m_part == ConflictMarker::Ours       ? m_open.ours
             : m_part == ConflictMarker::Base ? m_open.base
                                              : m_open.theirs) = part;
    }
    void giveUp()
    {
        if (m_part != ConflictMarker::None) {
            for (const std::size_t marker : m_markers)
                addStray(marker);
        }
        m_part = ConflictMarker::None;
    }
    void addStray(std::size_t offset)
    {
        if (m_strays)
            m_strays->push_back(offset);
    }

    std::vector<Conflict> &m_found;
    std::vector<std::size_t> *m_strays;
    ConflictMarker m_part = ConflictMarker::None;
    std::size_t m_size = 0;
    Conflict m_open;
    std::size_t m_begin = 0;
    std::size_t m_partBegin = 0;
    std::vector<std::size_t> m_markers;
};

} // namespace

ConflictMarker conflictMarker(std::string_view line, std::size_t *size)
{
    constexpr std::string_view kCharacters = "<|=>";
    const std::size_t which = line.empty() ? kCharacters.npos : kCharacters.find(line.front());
    if (which == kCharacters.npos)
        return ConflictMarker::None;
    const std::size_t count = std::min(line.find_first_not_of(line.front()), line.size());
    const bool isMarker = count >= kUsualSize
        && (count == line.size() || line[count] == ' ' || line[count] == '\r' || line[count] == '\n');
    if (!isMarker)
        return ConflictMarker::None;
    if (size)
        *size = count;
    constexpr ConflictMarker kMarkers[] = {ConflictMarker::Ours, ConflictMarker::Base, ConflictMarker::Theirs,
                                           ConflictMarker::End};
    return kMarkers[which];
}

bool hasConflictMarker(std::string_view text)
{
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t feed = std::min(text.find('\n', begin), text.size());
        if (isConflictMarker(text.substr(begin, feed - begin)))
            return true;
        begin = feed + 1;
    }
    return false;
}

std::vector<Conflict> conflictsIn(std::string_view text, std::vector<std::size_t> *strays)
{
    std::vector<Conflict> found;
    Finder finder(found, strays);
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t feed = text.find('\n', begin);
        const std::size_t end = feed == text.npos ? text.size() : feed + 1;
        finder.take(text, begin, end);
        begin = end;
    }
    finder.finish();
    return found;
}

} // namespace runebook
