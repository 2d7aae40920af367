#include "merge/OtherLines.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

namespace runebook {

namespace {

constexpr std::string_view kListEnd = "</glyphData>";

/// Takes the first line off; without its end.
std::string_view takeLine(std::string_view &text)
{
    const std::size_t feed = text.find('\n');
    std::string_view line = text.substr(0, feed);
    text.remove_prefix(feed == text.npos ? text.size() : feed + 1);
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

std::size_t lengthOfLine(std::string_view text)
{
    const std::size_t feed = text.find('\n');
    return feed == text.npos ? text.size() : feed + 1;
}

/// Lines, those of one comment together.
std::vector<std::string_view> chunks(std::string_view text)
{
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        std::size_t length = lengthOfLine(text);
        bool isOpen = text.substr(0, length).find("<!--") != text.npos;
        std::size_t last = 0;
        while (isOpen && text.substr(last, length - last).find("-->") == text.npos && length < text.size()) {
            last = length;
            length += lengthOfLine(text.substr(length));
        }
        parts.push_back(text.substr(0, length));
        text.remove_prefix(length);
    }
    return parts;
}

std::string withoutReturns(std::string_view text)
{
    std::string plain(text);
    std::erase(plain, '\r');
    if (plain.ends_with('\n'))
        plain.pop_back();
    return plain;
}

} // namespace

bool haveSameLines(std::string_view one, std::string_view other)
{
    if (one == other)
        return true;
    if (one.ends_with('\n') != other.ends_with('\n'))
        return false;
    while (!one.empty() && !other.empty()) {
        if (takeLine(one) != takeLine(other))
            return false;
    }
    return one.empty() && other.empty();
}

std::string_view mergeOtherLines(std::string_view base, std::string_view ours, std::string_view theirs,
                                 std::string &buffer)
{
    if (haveSameLines(theirs, base) || haveSameLines(ours, theirs))
        return ours;
    if (haveSameLines(ours, base))
        return theirs;
    std::unordered_set<std::string> known;
    for (const std::string_view text : {base, ours}) {
        for (const std::string_view chunk : chunks(text))
            known.insert(withoutReturns(chunk));
    }
    std::string added;
    for (const std::string_view chunk : chunks(theirs)) {
        if (known.contains(withoutReturns(chunk)))
            continue;
        added += chunk;
        if (!added.ends_with('\n'))
            added += '\n';
    }
    buffer = ours;
    const std::size_t end = buffer.rfind(kListEnd);
    const std::size_t line = end == buffer.npos ? buffer.npos : buffer.rfind('\n', end);
    const std::size_t place = end == buffer.npos ? buffer.size() : line == buffer.npos ? 0 : line + 1;
    if (place > 0 && buffer[place - 1] != '\n')
        added.insert(0, 1, '\n');
    buffer.insert(place, added);
    return buffer;
}

} // namespace runebook
