#include "model/GlyphLineReader.h"

#include "model/FieldTable.h"
#include "model/GlyphLineWriter.h"
#include "model/LineMeaning.h"
#include "model/StringHelpers.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace runebook {

using namespace Qt::StringLiterals;

/// An attribute that records know: its key, how it is taken, and its place in the order in which the writer
/// prints (0: never printed).
struct KnownAttribute {
    enum Kind : quint8 { Field, CodePoint, CodePoints, Legacy, Direction, Case, Accents, Unknown };
    std::string_view key;
    Kind kind = Unknown;
    GlyphField field = GlyphField::Name;
    int rank = 0;
};

namespace {

constexpr std::string_view kStart = "<glyph ";
constexpr std::string_view kCommentStart = "<!--";
constexpr std::string_view kCommentEnd = "-->";

using K = KnownAttribute;
using F = GlyphField;

constexpr auto kFields = fieldsBy<&FieldRow::filePlace>();

constexpr K::Kind kindOf(F field)
{
    return field == F::Unicodes ? K::CodePoint
        : field == F::Case      ? K::Case
        : field == F::Direction ? K::Direction
                                : K::Field;
}

// Keys under which files know fields besides.
constexpr KnownAttribute kOtherKeys[] {
    {"unicode2", K::CodePoint, F::Unicodes},
    {"unicode3", K::CodePoint, F::Unicodes},
    {"accents", K::Accents, F::Marks},
    {"desc", K::Field, F::Desc},
    {"legacy", K::Legacy, F::Production},
    {"unicodes", K::CodePoints, F::Unicodes},
    {"unicodeLegecy", K::Field, F::UnicodeLegacy},
    {"unicharString", K::Field, F::UnicharString},
};

// In the order of the writer, so that the key of the next attribute is mostly one of the next few.
constexpr auto kKnown = [] {
    static_assert(kFields.front() == F::Unicodes);
    std::array<KnownAttribute, kFields.size() + std::size(kOtherKeys)> known;
    std::size_t count = 0;
    int rank = 0;
    int rankOfMarks = 0;
    const auto *other = std::begin(kOtherKeys);
    for (const F field : kFields) {
        const std::string_view opening = rowOf(field).fileOpening;
        known[count++] = {opening.substr(0, opening.size() - 2), kindOf(field), field, ++rank};
        rankOfMarks = field == F::Marks ? rank : rankOfMarks;
        if (field != F::Unicodes)
            continue;
        known[count] = *other++;
        known[count++].rank = ++rank;
        known[count++] = *other++; // the writer has its own way with it
    }
    for (; other != std::end(kOtherKeys); ++other) {
        known[count] = *other;
        known[count++].rank = other->kind == K::Accents ? rankOfMarks : 0;
    }
    return known;
}();

constexpr KnownAttribute kUnknown;

const KnownAttribute &attributeOfKey(std::string_view key)
{
    const auto *found = std::find_if(std::begin(kKnown), std::end(kKnown),
                                     [key](const KnownAttribute &known) { return known.key == key; });
    return found == std::end(kKnown) ? kUnknown : *found;
}

/// The attribute, from \a first of the table on, whose key stands at the front of \a text with an equals sign
/// and a quote behind it; null when there is none.
const KnownAttribute *usualAttribute(std::string_view text, const KnownAttribute *first)
{
    for (const KnownAttribute *known = first; known != kKnown.data() + kKnown.size(); ++known) {
        const std::string_view key = known->key;
        if (key.front() == text.front() && text.size() > key.size() + 1 && text[key.size()] == '='
            && text[key.size() + 1] == '"' && std::memcmp(text.data(), key.data(), key.size()) == 0)
            return known;
    }
    return nullptr;
}

constexpr std::array<bool, 256> makeKeyCharacters()
{
    std::array<bool, 256> table {};
    for (const char c : std::string_view("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-_"))
        table[static_cast<unsigned char>(c)] = true;
    return table;
}

bool isKeyCharacter(char c)
{
    static constexpr std::array<bool, 256> kTable = makeKeyCharacters();
    return kTable[static_cast<unsigned char>(c)];
}

bool isAscii(std::string_view text)
{
    // No early end: compilers turn this into a few instructions for sixteen bytes.
    unsigned char bits = 0;
    for (const char c : text)
        bits |= static_cast<unsigned char>(c);
    return bits < 0x80;
}

/// The number of UTF-16 units of valid UTF-8: every byte that begins a character, four-byte ones twice.
std::size_t utf16Length(std::string_view text)
{
    if (isAscii(text))
        return text.size();
    std::size_t units = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        units += ((byte & 0xC0) != 0x80) + (byte >= 0xF0);
    }
    return units;
}

/// Upper-case already, as far as that can be told without looking at Unicode tables.
bool isPlainUpper(std::string_view text)
{
    for (const char c : text) {
        if (static_cast<signed char>(c) < 0 || (c >= 'a' && c <= 'z'))
            return false;
    }
    return true;
}

/// An ASCII character that is no white space: what nearly every trimming meets at once.
bool isPlainInk(char c)
{
    return static_cast<signed char>(c) > ' ';
}

/// The white space character that ends right before \a end, or 0 bytes.
qsizetype spaceBefore(const char *data, qsizetype begin, qsizetype end)
{
    if (isPlainInk(data[end - 1]))
        return 0;
    qsizetype start = end - 1;
    while (start > begin && (static_cast<unsigned char>(data[start]) & 0xC0) == 0x80)
        --start;
    if (end - start == 1)
        return isWhitespaceOrNewline(static_cast<unsigned char>(data[start])) && data[start] >= 0 ? 1 : 0;
    const QString character = QString::fromUtf8(data + start, end - start);
    return character.size() == 1 && isWhitespaceOrNewline(character.at(0).unicode()) ? end - start : 0;
}

qsizetype spaceAfter(const char *data, qsizetype begin, qsizetype end)
{
    if (isPlainInk(data[begin]))
        return 0;
    qsizetype next = begin + 1;
    while (next < end && (static_cast<unsigned char>(data[next]) & 0xC0) == 0x80)
        ++next;
    return spaceBefore(data, begin, next) ? next - begin : 0;
}

QString toText(std::string_view utf8)
{
    return FieldValue::textOfUtf8(utf8);
}

/// False for a value that begins in the middle of a character, as it does when a sign of three bytes stands
/// where the equals sign and the quote are expected: it is no text, and written it would spoil the file.
bool isWholeText(std::string_view utf8)
{
    return (static_cast<unsigned char>(utf8.front()) & 0xC0) != 0x80;
}

/// The case that a file means by \a word; "other" for words that no file of the program has.
int caseOfWord(std::string_view word)
{
    int letterCase = VXGlyphInfo::upper;
    while (letterCase < VXGlyphInfo::other && word != GlyphLineWriter::caseWord(letterCase))
        ++letterCase;
    return letterCase;
}

} // namespace

GlyphLineReader::GlyphLineReader(SourcePtr source, ReadNotes *notes)
    : m_source(std::move(source)), m_notes(notes)
{
}

InfoPtr GlyphLineReader::readPiece(qsizetype begin, qsizetype end)
{
    const char *data = m_source->data();
    qsizetype first = begin;
    qsizetype last = end;
    while (const qsizetype space = first < last ? spaceAfter(data, first, last) : 0)
        first += space;
    while (const qsizetype space = first < last ? spaceBefore(data, first, last) : 0)
        last -= space;
    m_lastPiece = {data + first, static_cast<std::size_t>(last - first)};
    const bool followsTab = first > 0 && data[first - 1] == '\t' && (first < 2 || data[first - 2] == '\n');
    return read(first, last, followsTab && last == end && end < m_source->size());
}

bool GlyphLineReader::hasComment(qsizetype begin, qsizetype end)
{
    constexpr qsizetype kStretch = 1 << 16; // stays in the cache until it is read
    const bool wasPassed = m_firstComment >= 0 && m_firstComment < begin;
    if (begin < m_searchedBegin || end > m_searchedEnd || wasPassed) {
        m_searchedBegin = begin;
        m_searchedEnd = std::max(end, std::min(begin + kStretch, m_source->size()));
        const auto beyond = std::min(m_searchedEnd + std::ssize(kCommentStart) - 1, m_source->size());
        const std::string_view stretch(m_source->data() + begin, static_cast<std::size_t>(beyond - begin));
        const std::size_t found = stretch.find(kCommentStart);
        m_firstComment = found == stretch.npos ? -1 : begin + static_cast<qsizetype>(found);
    }
    return m_firstComment >= 0 && m_firstComment < end;
}

InfoPtr GlyphLineReader::read(qsizetype begin, qsizetype end, bool isWholeLine)
{
    const std::string_view line(m_source->data() + begin, static_cast<std::size_t>(end - begin));
    if (!line.starts_with(kStart))
        return nullptr;

    m_lineOffset = begin;
    m_isNoted = m_isTold = m_isOdd = m_isOtherWord = false;
    std::optional<VXGlyphInfo::Reading> glyph;
    const std::size_t comment = hasComment(begin, end) ? line.find(kCommentStart) : line.npos;
    const std::size_t commentEnd = comment == line.npos ? line.npos : line.rfind(kCommentEnd);
    if (comment != line.npos)
        note(ReadNotes::Comment, line.substr(comment));
    if (commentEnd != line.npos && commentEnd >= comment + kCommentStart.size()) {
        QByteArray rest(line.data(), static_cast<qsizetype>(comment));
        const std::string_view behind = line.substr(commentEnd + kCommentEnd.size());
        rest.append(behind.data(), static_cast<qsizetype>(behind.size()));
        GlyphLineReader inner(SourcePtr(new SourceBytes(rest)), m_notes);
        inner.m_records = m_records;
        inner.m_lineOffset = m_lineOffset;
        inner.m_versionHint = m_versionHint;
        glyph = inner.readWithoutComments({inner.m_source->data(), static_cast<std::size_t>(rest.size())});
        m_versionHint = inner.m_versionHint;
    } else {
        glyph.emplace(m_source);
        const bool mayBeKept = isWholeLine && comment == line.npos;
        if (!mayBeKept || !scanAsWritten(*glyph, line)) {
            glyph.emplace(m_source);
            scan(*glyph, line, mayBeKept);
        }
        // The line is kept with the tab before and the line feed behind it.
        if (m_lineVersions)
            glyph->setLine(static_cast<quint64>(begin) - 1, line.size() + 2, m_lineVersions);
        if (!m_lineVersions)
            noteForm(glyph->info(), line);
        if (m_notes) {
            m_notes->otherForms[0] += !(m_lineVersions & 1) && !m_isNoted;
            m_notes->otherForms[1] += !(m_lineVersions & 2) && !m_isNoted;
        }
    }
    if (!glyph->hasLine())
        glyph->setLine(static_cast<quint64>(begin), line.size()); // its place alone
    if (m_notes)
        glyph->setAsRead();
    ++m_records;
    return glyph->take();
}

VXGlyphInfo::Reading GlyphLineReader::readWithoutComments(std::string_view line)
{
    VXGlyphInfo::Reading glyph(m_source);
    scan(glyph, line, false);
    return glyph;
}

bool GlyphLineReader::scanAsWritten(VXGlyphInfo::Reading &glyph, std::string_view line)
{
    if (!isAscii(line))
        return false;
    glyph.setDirection(VXGlyphInfo::DirectionNotSet);
    m_lineVersions = 3;
    quint8 versionHint = m_versionHint;
    int lastRank = 0;
    const KnownAttribute *next = kKnown.data();
    std::string_view rest = line.substr(kStart.size());
    while (rest != "/>") {
        const KnownAttribute *known = usualAttribute(rest, next);
        if (!known || known->rank <= lastRank)
            return false;
        rest.remove_prefix(known->key.size() + 2);
        const std::size_t quote = rest.find('"');
        if (quote == rest.npos || quote == 0 || rest.front() == ' '
            || !rest.substr(quote + 1).starts_with(' ')
            || !applyAsWritten(glyph, *known, rest.substr(0, quote), versionHint))
            return false;
        rest.remove_prefix(quote + 2);
        lastRank = known->rank;
        next = known + 1;
    }
    if (glyph.info().stored(GlyphField::Name).isAbsent())
        return false;
    if (!glyph.info().stored(GlyphField::Unicodes).isAbsent())
        glyph.updateUnicodeChar();
    m_versionHint = versionHint;
    return true;
}

bool GlyphLineReader::applyAsWritten(VXGlyphInfo::Reading &glyph, const KnownAttribute &known,
                                     std::string_view value, quint8 &versionHint)
{
    switch (known.kind) {
    case K::Field:
        if (known.field == GlyphField::UnicodeLegacy && value.size() < 4)
            return false;
        if (known.field == GlyphField::Marks) {
            m_lineVersions &= ~1; // version 1 calls them accents
            if (VXGlyphInfo::refusesMarks(value))
                return false;
        }
        glyph.setPiece(known.field, value);
        return true;
    case K::CodePoint:
        glyph.setPiece(GlyphField::Unicodes, value);
        return known.rank == 1 && isPlainUpper(value);
    case K::Case:
        versionHint = 2;
        m_lineVersions &= ~1;
        glyph.setCase(caseOfWord(value));
        return glyph.info().caseValue() < VXGlyphInfo::other;
    case K::Accents:
        versionHint = 1;
        m_lineVersions &= ~2;
        glyph.setPiece(GlyphField::Marks, value);
        return true;
    default:
        return false;
    }
}

void GlyphLineReader::scan(VXGlyphInfo::Reading &glyph, std::string_view line, bool isWholeLine)
{
    glyph.setDirection(VXGlyphInfo::DirectionNotSet);
    m_lineVersions = isWholeLine ? 3 : 0;
    m_lastRank = 0;
    m_seenFields = 0;

    // Where a further attribute may begin is bounded by the number of characters of the line, while places
    // are bytes: in a line with non-ASCII text the last attributes may stay unread.
    const std::size_t bound = utf16Length(line);
    const std::size_t length = line.size();
    std::size_t i = kStart.size();
    // Where the writer would put the next key or the end: behind the closing quote and one blank.
    std::size_t usualPlace = i;
    std::size_t closingQuote = length;
    bool ended = false;
    if (bound < kStart.size() + 2)
        i = length;
    while (i < length) {
        const char c = line[i];
        if (c == ' ' || c == '"') {
            m_isOdd |= c == '"' && i != closingQuote;
            ++i;
            continue;
        }
        const bool isUsualPlace = i == usualPlace && line[i - 1] == ' ';
        const std::size_t keyStart = i;
        while (i < length && isKeyCharacter(line[i]))
            ++i;
        const std::string_view key = line.substr(keyStart, i - keyStart);
        if (key.empty() && line.substr(i, 2) == "/>") {
            if (!isUsualPlace)
                m_lineVersions = 0;
            i += 2;
            ended = true;
            break;
        }
        if (keyStart >= bound) {
            i = keyStart;
            break;
        }
        // What follows the key is taken for an equals sign and a quote, whatever it is.
        const std::size_t afterKey = i;
        i = std::min(i + 2, length);
        while (i < length && (line[i] == ' ' || (line[i] == '"' && line[i - 1] != '"')))
            ++i;
        const std::size_t valueStart = i;
        if (i < length) {
            const void *quote = std::memchr(line.data() + i, '"', length - i);
            i = quote ? static_cast<std::size_t>(static_cast<const char *>(quote) - line.data()) : length;
        }
        const Attribute attribute {key, line.substr(valueStart, i - valueStart), attributeOfKey(key)};
        const bool isOrdinary =
            valueStart == afterKey + 2 && line[afterKey] == '=' && line[afterKey + 1] == '"' && i < length;
        m_isOdd |= !isOrdinary;
        // Where XML has a value in single quotes, the second one at least becomes a part of it.
        m_isOtherWord |= key.size() >= 2 && line.substr(afterKey, 2) == "='";
        if (!isOrdinary || !isUsualPlace)
            m_lineVersions = 0;
        usualPlace = i + 2;
        closingQuote = i;

        After after = After::LookForEnd;
        if (key.size() >= 2 && !attribute.value.empty() && isWholeText(attribute.value)) {
            if (valueStart > afterKey + 2 && line[valueStart - 1] == ' ')
                note(ReadNotes::DroppedAttribute, key);
            after = apply(glyph, attribute);
        } else {
            m_lineVersions = 0;
            if (!key.empty() && !attribute.value.empty())
                note(ReadNotes::DroppedAttribute, key);
        }
        if (after == After::LookForEnd && line.substr(std::min(i + 1, length), 2) == "/>") {
            m_lineVersions = 0; // the writer would have put a blank before the end
            i += 3;
            ended = true;
            break;
        }
    }
    if (!ended || i != length) {
        m_lineVersions = 0;
        m_isOdd = true;
    }
    if (i < length && line.find_first_not_of(" \t\"", i) != line.npos)
        note(ReadNotes::UnreadRest, line.substr(i));
    if (m_seenFields & (1u << static_cast<int>(GlyphField::Unicodes)))
        glyph.updateUnicodeChar();
    if (!(m_seenFields & (1u << static_cast<int>(GlyphField::Name)))) {
        glyph.setUnknownName();
        m_lineVersions = 0;
        m_isOtherWord = true;
    }
}

void GlyphLineReader::noteForm(const VXGlyphInfo &info, std::string_view line)
{
    if (!m_notes || m_isTold)
        return;
    bool isOther = m_isOtherWord;
    constexpr std::size_t kLongest = 1 << 20; // a line that is longer is no glyph of anybody
    if (!isOther && m_isOdd && line.size() > kLongest) {
        isOther = true;
    } else if (!isOther && m_isOdd) {
        std::string printed;
        constexpr int kNewest = 2;
        GlyphLineWriter(kNewest).append(info, printed);
        isOther = !haveSameMeaning(line, printed);
    }
    if (isOther)
        note(ReadNotes::OtherMeaning, line);
}

GlyphLineReader::After GlyphLineReader::apply(VXGlyphInfo::Reading &glyph, const Attribute &attribute)
{
    const auto &[key, value, known] = attribute;
    noteOrder(known.rank);
    if (known.kind != K::Unknown) {
        const quint32 bit = 1u << static_cast<int>(known.field);
        if (m_seenFields & bit && known.kind != K::CodePoint)
            note(ReadNotes::DroppedAttribute, key);
        m_seenFields |= bit;
    }
    switch (known.kind) {
    case K::Field:
        if (known.field == GlyphField::Marks) {
            m_lineVersions &= ~1; // version 1 calls them accents
            if (VXGlyphInfo::refusesMarks(value)) {
                m_lineVersions = 0;
                note(ReadNotes::DroppedAttribute, value);
                return After::LookForEnd;
            }
        }
        if (known.field == GlyphField::UnicodeLegacy && utf16Length(value) < 4)
            m_lineVersions = 0;
        m_isOtherWord |= known.field == GlyphField::UnicharString; // which no file gets
        glyph.setPiece(known.field, value);
        return After::LookForEnd;
    case K::Legacy:
        glyph.setPiece(GlyphField::Production, value);
        return After::LookForEnd;
    case K::CodePoint:
        if (known.rank == 2 && glyph.info().stored(GlyphField::Unicodes).isAbsent())
            m_lineVersions = 0; // a lone second code point is the first one from now on
        addCodePoint(glyph, value);
        return After::GoOn;
    case K::CodePoints: {
        QStringList parts = toText(value).split(u',');
        glyph.info().setUnicodes(parts.join(u' ').split(u' '));
        if (glyph.info().unicodes().size() > 2)
            note(ReadNotes::CodePoints, value);
        return After::GoOn;
    }
    case K::Direction: {
        const int direction = VXGlyphInfo::directionFromString(toText(value));
        glyph.setDirection(direction);
        if (value != GlyphLineWriter::directionWord(direction)) {
            m_lineVersions = 0;
            m_isOtherWord = true;
        }
        return After::GoOn;
    }
    case K::Case: {
        const int letterCase = caseOfWord(value);
        const bool isUsual = letterCase < VXGlyphInfo::other;
        glyph.setCase(isUsual ? letterCase : VXGlyphInfo::caseFromString(toText(value)));
        m_versionHint = 2;
        m_isOtherWord |= !isUsual;
        m_lineVersions = isUsual ? m_lineVersions & ~1 : 0;
        return After::GoOn;
    }
    case K::Accents:
        glyph.setPiece(GlyphField::Marks, value);
        m_versionHint = 1;
        m_lineVersions &= ~2;
        return After::GoOn;
    case K::Unknown: {
        // Fields that take no text come here too: in a file they are as good as unknown.
        m_lineVersions = 0;
        note(ReadNotes::UnknownAttribute, key);
        reportUnknown(glyph, attribute);
        return After::LookForEnd;
    }
    }
    return After::LookForEnd;
}

void GlyphLineReader::reportUnknown(VXGlyphInfo::Reading &glyph, const Attribute &attribute)
{
    if (!m_notes)
        glyph.info().setValueForUndefinedKey(toText(attribute.value), toText(attribute.key));
    else if (m_notes->mayTellOfMoreKeys())
        m_notes->addUnknown(toText(attribute.key), toText(attribute.value));
}

void GlyphLineReader::addCodePoint(VXGlyphInfo::Reading &glyph, std::string_view value)
{
    const FieldValue &present = glyph.info().stored(GlyphField::Unicodes);
    if (present.isAbsent() && isPlainUpper(value)) {
        glyph.setPiece(GlyphField::Unicodes, value);
        return;
    }
    QStringList codePoints = glyph.info().unicodes();
    // Nobody else holds the list now, so adding to it copies nothing, however long it grows.
    glyph.setValue(GlyphField::Unicodes, FieldValue());
    codePoints << toText(value).toUpper();
    glyph.setValue(GlyphField::Unicodes, FieldValue::list(codePoints));
    if (!isPlainUpper(value))
        m_lineVersions = 0;
    if (codePoints.size() > 2)
        note(ReadNotes::CodePoints, value);
}

void GlyphLineReader::noteOrder(int rank)
{
    if (rank <= m_lastRank)
        m_lineVersions = 0;
    m_lastRank = rank;
}

void GlyphLineReader::note(ReadNotes::Kind kind, std::string_view text)
{
    m_isNoted = true;
    m_isTold |= kind != ReadNotes::UnknownAttribute;
    if (m_notes && m_notes->isFull())
        m_notes->countOne(kind);
    else if (m_notes)
        m_notes->add(kind, m_records, toText(text.substr(0, 400)), m_lineOffset);
}

} // namespace runebook
