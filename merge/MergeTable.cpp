#include "merge/MergeTable.h"

#include "document/ConflictMarkers.h"
#include "document/GlyphDataReader.h"
#include "merge/MergeProgress.h"
#include "model/GlyphLineReader.h"

#include <QCoreApplication>
#include <algorithm>
#include <bit>
#include <cstring>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(MergeTable)
};

constexpr std::string_view kGlyph = "<glyph ";
constexpr std::string_view kList = "<glyphData";
constexpr std::string_view kListEnd = "</glyphData";

bool isBlank(std::string_view text)
{
    return text.find_first_not_of(" \t\r\n") == text.npos;
}

bool isKeyCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

quint32 hashOf(std::string_view key, bool isByName)
{
    const std::size_t hash = std::hash<std::string_view>()(key);
    return static_cast<quint32>(hash ^ (hash >> 32)) + isByName;
}

/// The value of an attribute in a line that stands as writers print it. Null where another look is needed: at
/// a line in any other form.
class UsualAttributes
{
public:
    explicit UsualAttributes(std::string_view line) : m_rest(line) { }

    enum class Found { Yes, No, Unusual };
    Found find(std::string_view wanted)
    {
        for (;;) {
            if (m_rest == "/>")
                return Found::No;
            std::size_t end = 0;
            while (end < m_rest.size() && isKeyCharacter(m_rest[end]))
                ++end;
            if (end < 2 || !m_rest.substr(end).starts_with("=\""))
                return Found::Unusual;
            const std::string_view attribute = m_rest.substr(0, end);
            m_rest.remove_prefix(end + 2);
            const std::size_t quote = m_rest.find('"');
            if (quote == m_rest.npos || quote == 0 || m_rest.front() == ' '
                || !m_rest.substr(quote + 1).starts_with(' '))
                return Found::Unusual;
            m_value = m_rest.substr(0, quote);
            m_rest.remove_prefix(quote + 2);
            if (attribute == wanted)
                return Found::Yes;
            // Other names for what is looked for.
            if (attribute.starts_with(wanted) || attribute == "legacy")
                return Found::Unusual;
        }
    }
    std::string_view value() const { return m_value; }

private:
    std::string_view m_rest;
    std::string_view m_value;
};

constexpr std::string_view attributeOf(CompareKey key)
{
    return key == CompareKey::Name ? "name" : key == CompareKey::Unicode ? "unicode" : "production";
}

/// Readers turn code points to upper case.
bool isKeptAsItIs(CompareKey key, std::string_view value)
{
    return key != CompareKey::Unicode || std::all_of(value.begin(), value.end(), [](char c) {
               return static_cast<signed char>(c) > 0 && (c < 'a' || c > 'z');
           });
}

} // namespace

/// Goes through a text line by line.
class MergeTable::Scan
{
public:
    Scan(MergeTable &table, CompareKey key, MergeProgress *progress, double share)
        : m_table(table), m_text(table.m_text), m_key(key), m_progress(progress), m_share(share)
    {
    }

    bool run(Error *error);

private:
    bool takeLine(std::size_t begin, std::size_t end);
    void addRecord(std::size_t begin, std::size_t end, std::size_t glyph);
    bool setUsualKey(Line &line, std::string_view attributes) const;
    void setReadKey(Line &line);
    bool isRecord(std::size_t begin, std::size_t end, std::size_t &glyph) const;
    bool hasCommentIn(std::size_t begin, std::size_t end);
    bool refuse(const QString &reason, std::size_t offset);
    bool goesOn(std::size_t at);

    MergeTable &m_table;
    std::string_view m_text;
    CompareKey m_key;
    MergeProgress *m_progress;
    double m_share;
    std::size_t m_told = 0; ///< as far as the progress has heard of it
    std::size_t m_nextMark = 0; ///< the next exclamation mark, without which there is no comment
    bool m_isInComment = false;
    QString m_reason;
    std::size_t m_refused = 0;
};

bool MergeTable::Scan::refuse(const QString &reason, std::size_t offset)
{
    m_reason = reason;
    m_refused = offset;
    return false;
}

/// Tells how far it has come, from time to time; false when that is far enough.
bool MergeTable::Scan::goesOn(std::size_t at)
{
    constexpr std::size_t kStep = 1 << 20;
    if (!m_progress || at < m_told + kStep)
        return true;
    m_progress->advance(m_share * double(at - m_told) / double(m_text.size()));
    m_told = at;
    return !m_progress->isCancelled();
}

bool MergeTable::Scan::run(Error *error)
{
    const std::size_t list = m_text.find(kList);
    const std::size_t glyph = m_text.find(kGlyph);
    if (list == m_text.npos && glyph == m_text.npos && !isBlank(m_text))
        return fail(error, {u"MergeError"_s, 1, {}, Texts::tr("It is no glyph data file."), {}});

    std::size_t begin = std::min(list, glyph);
    if (begin == list && list != m_text.npos)
        begin = std::min(m_text.find('\n', list), m_text.size() - 1) + 1;
    else if (glyph != m_text.npos)
        begin = m_text.rfind('\n', glyph) + 1; // 0 where there is none
    else
        begin = m_text.size();
    m_table.m_headerEnd = begin;
    m_nextMark = begin;
    bool isGood = !hasConflictMarker(m_text.substr(0, begin))
        || refuse(Texts::tr("It has conflicts that are not resolved."), 0);
    if (glyph < begin)
        isGood = refuse(Texts::tr("A glyph does not stand on a line of its own."), glyph);
    m_table.m_lines.reserve((m_text.size() - begin) / 150 + 1);
    while (isGood && begin < m_text.size()) {
        const std::size_t feed = m_text.find('\n', begin);
        const std::size_t end = feed == m_text.npos ? m_text.size() : feed;
        isGood = takeLine(begin, end) && (goesOn(end) || refuse(Texts::tr("It was cancelled."), 0));
        begin = end + 1;
    }
    if (isGood && m_isInComment)
        isGood = refuse(Texts::tr("A comment is not closed."), m_text.size());
    if (isGood)
        return true;
    const auto line = 1 + std::count(m_text.begin(), m_text.begin() + qsizetype(m_refused), '\n');
    const Error reason {u"MergeError"_s, 2, {}, Texts::tr("Line %1: %2").arg(line).arg(m_reason), {}};
    return fail(error, reason);
}

bool MergeTable::Scan::hasCommentIn(std::size_t begin, std::size_t end)
{
    while (m_nextMark != m_text.npos && m_nextMark < end) {
        if (m_nextMark > begin && m_text[m_nextMark - 1] == '<'
            && m_text.substr(m_nextMark + 1).starts_with("--"))
            return true;
        m_nextMark = m_text.find('!', m_nextMark + 1);
    }
    return false;
}

/// As readers find it: behind white space of any kind.
bool MergeTable::Scan::isRecord(std::size_t begin, std::size_t end, std::size_t &glyph) const
{
    glyph = begin;
    while (glyph < end && (m_text[glyph] == '\t' || m_text[glyph] == ' '))
        ++glyph;
    const std::string_view line = m_text.substr(glyph, end - glyph);
    if (line.starts_with(kGlyph))
        return true;
    if (line.empty() || (line.front() > ' ' && static_cast<signed char>(line.front()) > 0))
        return false;
    glyph = m_text.substr(0, end).find(kGlyph, glyph);
    return glyph != m_text.npos
        && QString::fromUtf8(m_text.data() + begin, qsizetype(glyph - begin)).trimmed().isEmpty();
}

bool MergeTable::Scan::takeLine(std::size_t begin, std::size_t end)
{
    const std::string_view line = m_text.substr(begin, end - begin);
    if (m_isInComment) {
        m_isInComment = line.find("-->") == line.npos;
        return true;
    }
    std::size_t glyph = 0;
    const bool hasComment = hasCommentIn(begin, end);
    m_isInComment = hasComment && line.find("-->") == line.npos;
    if (!isRecord(begin, end, glyph)) {
        if (isConflictMarker(line))
            return refuse(Texts::tr("It has conflicts that are not resolved."), begin);
        return true;
    }
    if (m_isInComment)
        return refuse(Texts::tr("A comment begins behind a glyph and goes on below."), begin);
    std::size_t last = end;
    while (last > glyph && (m_text[last - 1] == ' ' || m_text[last - 1] == '\r' || m_text[last - 1] == '\t'))
        --last;
    const std::string_view inside = m_text.substr(glyph + 1, last - glyph - 1);
    if (!inside.ends_with('>') && !hasComment)
        return refuse(Texts::tr("A glyph goes on below its line."), begin);
    if (inside.find('<') != inside.npos
        && (inside.find(kGlyph) != inside.npos || inside.find(kListEnd) != inside.npos))
        return refuse(Texts::tr("A glyph does not stand on a line of its own."), begin);
    if (end - begin > (1u << 27) || m_table.m_lines.size() >= kNoPlace - 1)
        return refuse(Texts::tr("It is too long."), begin);
    addRecord(begin, end, glyph);
    return true;
}

void MergeTable::Scan::addRecord(std::size_t begin, std::size_t end, std::size_t glyph)
{
    Line line {};
    const bool hasReturn = end > begin && m_text[end - 1] == '\r';
    const bool hasFeed = end < m_text.size();
    line.begin = begin;
    line.size = quint32(end - begin - (hasReturn && hasFeed));
    line.end = hasFeed ? (hasReturn ? 2 : 1) : 0;
    std::vector<Line> &lines = m_table.m_lines;
    const quint64 previousEnd =
        lines.empty() ? m_table.m_headerEnd : lines.back().begin + lines.back().size + lines.back().end;
    m_table.m_hasGaps |= previousEnd != begin;

    const std::size_t attributes = glyph + kGlyph.size();
    const std::size_t contentEnd = begin + line.size;
    if (!setUsualKey(line, m_text.substr(attributes, contentEnd - attributes)))
        setReadKey(line);
    lines.push_back(line);
}

bool MergeTable::Scan::setUsualKey(Line &line, std::string_view attributes) const
{
    UsualAttributes usual(attributes);
    auto found = usual.find(attributeOf(m_key));
    if (found == UsualAttributes::Found::No && m_key != CompareKey::Name) {
        line.isByName = true;
        usual = UsualAttributes(attributes);
        found = usual.find(attributeOf(CompareKey::Name));
    }
    if (found != UsualAttributes::Found::Yes || !isKeptAsItIs(m_key, usual.value()))
        return false;
    line.keyBegin = quint32(std::size_t(usual.value().data() - m_text.data()) - line.begin);
    line.keySize = quint32(usual.value().size());
    line.hash = hashOf(usual.value(), line.isByName);
    return true;
}

void MergeTable::Scan::setReadKey(Line &line)
{
    const QByteArray copy(m_text.data() + line.begin, qsizetype(line.size));
    ReadNotes notes;
    const InfoPtr info = GlyphLineReader(SourcePtr(new SourceBytes(copy)), &notes).readPiece(0, copy.size());
    std::string buffer;
    std::string key;
    if (info)
        key = keyUtf8(*info, m_key, buffer);
    line.isByName = key.empty() && m_key != CompareKey::Name;
    if (info && line.isByName)
        key = keyUtf8(*info, CompareKey::Name, buffer);
    line.isOwnKey = true;
    line.keyBegin = quint32(m_table.m_ownKeys.size());
    line.hash = hashOf(key, line.isByName);
    m_table.m_ownKeys.push_back(std::move(key));
}

std::optional<MergeTable> MergeTable::of(const QByteArray &utf8, CompareKey key, Error *error,
                                         MergeProgress *progress, double share)
{
    MergeTable table;
    table.m_bytes = utf8;
    table.m_text = {utf8.constData(), std::size_t(utf8.size())};
    const std::size_t feed = table.m_text.find('\n');
    if (feed != std::string_view::npos)
        table.m_lineEnd = feed > 0 && table.m_text[feed - 1] == '\r' ? "\r\n" : "\n";
    if (!Scan(table, key, progress, share).run(error))
        return {};
    table.indexKeys();
    return table;
}

void MergeTable::indexKeys()
{
    m_slots.assign(std::bit_ceil(m_lines.size() * 3 / 2 + 2), kNoPlace);
    const std::size_t mask = m_slots.size() - 1;
    for (MergePlace place = 0; place < count(); ++place) {
        std::size_t slot = m_lines[place].hash & mask;
        while (m_slots[slot] != kNoPlace && !hasKeyOf(m_slots[slot], *this, place))
            slot = (slot + 1) & mask;
        if (m_slots[slot] == kNoPlace) {
            m_slots[slot] = place;
            continue;
        }
        const auto [group, isNew] = m_groups.try_emplace(m_slots[slot], m_repeated.size());
        if (isNew)
            m_repeated.push_back({m_slots[slot]});
        m_repeated[group->second].push_back(place);
    }
}

std::string_view MergeTable::key(MergePlace place) const
{
    const Line &line = m_lines[place];
    if (line.isOwnKey)
        return m_ownKeys[line.keyBegin];
    return m_text.substr(line.begin + line.keyBegin, line.keySize);
}

bool MergeTable::hasKeyOf(MergePlace place, const MergeTable &other, MergePlace otherPlace) const
{
    const Line &mine = m_lines[place];
    const Line &theirs = other.m_lines[otherPlace];
    return mine.hash == theirs.hash && mine.isByName == theirs.isByName
        && key(place) == other.key(otherPlace);
}

MergePlace MergeTable::find(const MergeTable &other, MergePlace record) const
{
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t slot = other.m_lines[record].hash & mask;; slot = (slot + 1) & mask) {
        if (m_slots[slot] == kNoPlace || hasKeyOf(m_slots[slot], other, record))
            return m_slots[slot];
    }
}

std::string_view MergeTable::gapBefore(MergePlace place) const
{
    const std::size_t begin = place == 0 ? m_headerEnd : endOf(place - 1);
    return m_text.substr(begin, m_lines[place].begin - begin);
}

std::string_view MergeTable::tail() const
{
    return m_text.substr(m_lines.empty() ? m_headerEnd : endOf(count() - 1));
}

quint8 MergeTable::headerVersion() const
{
    return versionOfHeader(header());
}

} // namespace runebook
