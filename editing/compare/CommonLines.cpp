#include "editing/compare/CommonLines.h"

#include "editing/compare/GlyphLineStream.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace runebook {

namespace {

/// How far the walk looks for the next line that both files have before it gives these lines up.
constexpr std::size_t kLookAhead = 16;
/// Both files are kept ahead by that much, enough for the look-ahead of usual lines.
constexpr std::size_t kReserve = 16 * 1024;

/// Whether a line stands for one record whatever stands around it. Others are left to the reader.
bool isGlyphLine(std::string_view line)
{
    return line.starts_with("\t<glyph ") || line.starts_with(kGlyphLineStart);
}

/// Lines that are kept, in one block, without their line feeds.
class LineList
{
public:
    void add(std::string_view line)
    {
        if (line.ends_with('\n'))
            line.remove_suffix(1);
        m_lines.push_back({m_text.size(), line.size(), false});
        m_text += line;
    }
    std::size_t size() const { return m_lines.size(); }
    std::string_view at(std::size_t place) const
    {
        return std::string_view(m_text).substr(m_lines[place].begin, m_lines[place].length);
    }
    void take(std::size_t place) { m_lines[place].isTaken = true; }
    /// The lines that were not taken, as a text for the reader.
    QByteArray text() const
    {
        // What stands before the first glyph is not read: this line takes the place of the header.
        QByteArray text("<glyph \n");
        for (std::size_t i = 0; i < m_lines.size(); ++i) {
            if (m_lines[i].isTaken)
                continue;
            text.append(at(i).data(), static_cast<qsizetype>(m_lines[i].length));
            text.append('\n');
        }
        return text;
    }

private:
    struct Line {
        std::size_t begin;
        std::size_t length;
        bool isTaken;
    };

    std::string m_text;
    std::vector<Line> m_lines;
};

/// Walks through both files side by side: versions of one file have most lines in the same order.
class CommonWalk
{
public:
    CommonWalk(QIODevice &left, QIODevice &right) : m_left(left), m_right(right) { }

    bool run();
    /// Takes out the lines that both have at other places.
    void removeMovedLines();
    OtherLines result() const { return {m_leftOnly.text(), m_rightOnly.text(), m_common}; }

private:
    using Ahead = std::array<std::string_view, kLookAhead>;

    static std::size_t lookAhead(std::string_view text, Ahead &lines);
    static bool keepReserve(GlyphLineStream &stream);
    static bool giveUpRest(GlyphLineStream &stream, LineList &list);
    void walk();
    void resynchronise();
    void giveUp(GlyphLineStream &stream, LineList &list, std::size_t count);

    GlyphLineStream m_left;
    GlyphLineStream m_right;
    LineList m_leftOnly;
    LineList m_rightOnly;
    qsizetype m_common = 0;
};

bool CommonWalk::keepReserve(GlyphLineStream &stream)
{
    return stream.lines().size() >= kReserve || !stream.canFill() || stream.fill();
}

bool CommonWalk::run()
{
    if (!m_left.findFirstGlyph() || !m_right.findFirstGlyph())
        return false;
    for (;;) {
        if (!keepReserve(m_left) || !keepReserve(m_right))
            return false;
        if (m_left.lines().empty() || m_right.lines().empty())
            break;
        walk();
    }
    return giveUpRest(m_left, m_leftOnly) && giveUpRest(m_right, m_rightOnly);
}

/// Walks until one of the files has to be read on, or is at its end.
void CommonWalk::walk()
{
    do {
        const std::string_view rest = m_left.lines();
        const std::string_view other = m_right.lines();
        const void *feed = std::memchr(rest.data(), '\n', rest.size());
        const std::size_t size =
            feed ? static_cast<std::size_t>(static_cast<const char *>(feed) - rest.data()) + 1 : 0;
        if (size > 0 && size <= other.size() && std::memcmp(rest.data(), other.data(), size) == 0
            && isGlyphLine(rest)) {
            m_left.skip(size);
            m_right.skip(size);
            ++m_common;
        } else {
            resynchronise();
        }
    } while (m_left.lines().size() >= kReserve && m_right.lines().size() >= kReserve);
}

/// Up to kLookAhead lines of \a text.
std::size_t CommonWalk::lookAhead(std::string_view text, Ahead &lines)
{
    std::size_t count = 0;
    while (count < kLookAhead && !text.empty()) {
        const std::size_t feed = text.find('\n');
        lines[count] = text.substr(0, feed == text.npos ? feed : feed + 1);
        text.remove_prefix(lines[count++].size());
    }
    return count;
}

/// Gives lines up until both walks stand before the same line, or all that the look-ahead sees.
void CommonWalk::resynchronise()
{
    Ahead left;
    Ahead right;
    const std::size_t leftCount = lookAhead(m_left.lines(), left);
    const std::size_t rightCount = lookAhead(m_right.lines(), right);
    for (std::size_t distance = 1; distance + 1 < leftCount + rightCount; ++distance) {
        const std::size_t first = distance >= rightCount ? distance - rightCount + 1 : 0;
        for (std::size_t i = first; i <= distance && i < leftCount; ++i) {
            if (left[i] == right[distance - i] && isGlyphLine(left[i])) {
                giveUp(m_left, m_leftOnly, i);
                giveUp(m_right, m_rightOnly, distance - i);
                return;
            }
        }
    }
    giveUp(m_left, m_leftOnly, leftCount);
    giveUp(m_right, m_rightOnly, rightCount);
}

void CommonWalk::giveUp(GlyphLineStream &stream, LineList &list, std::size_t count)
{
    for (; count > 0; --count) {
        const std::string_view line = stream.line();
        list.add(line);
        stream.skip(line.size());
    }
}

bool CommonWalk::giveUpRest(GlyphLineStream &stream, LineList &list)
{
    for (;;) {
        while (!stream.lines().empty()) {
            const std::string_view line = stream.line();
            list.add(line);
            stream.skip(line.size());
        }
        if (!stream.canFill())
            return true;
        if (!stream.fill())
            return false;
    }
}

struct HashedLine {
    std::size_t hash;
    std::size_t place;
    // NOLINTNEXTLINE(modernize-use-nullptr): what the compiler makes of it
    friend auto operator<=>(const HashedLine &, const HashedLine &) = default;
};

std::vector<HashedLine> hashed(const LineList &lines)
{
    std::vector<HashedLine> hashes;
    hashes.reserve(lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i)
        hashes.push_back({std::hash<std::string_view>()(lines.at(i)), i});
    std::sort(hashes.begin(), hashes.end());
    return hashes;
}

void CommonWalk::removeMovedLines()
{
    const std::vector<HashedLine> left = hashed(m_leftOnly);
    const std::vector<HashedLine> right = hashed(m_rightOnly);
    for (std::size_t i = 0, j = 0; i < left.size() && j < right.size();) {
        if (left[i].hash != right[j].hash) {
            left[i].hash < right[j].hash ? ++i : ++j;
            continue;
        }
        const std::string_view line = m_leftOnly.at(left[i].place);
        if (line == m_rightOnly.at(right[j].place) && isGlyphLine(line)) {
            m_leftOnly.take(left[i].place);
            m_rightOnly.take(right[j].place);
            ++m_common;
        }
        ++i;
        ++j;
    }
}

} // namespace

std::optional<OtherLines> linesNotInCommon(QIODevice &left, QIODevice &right)
{
    CommonWalk walk(left, right);
    if (!walk.run())
        return {};
    walk.removeMovedLines();
    return walk.result();
}

} // namespace runebook
