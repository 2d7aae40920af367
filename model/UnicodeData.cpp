#include "model/UnicodeData.h"

#include "platform/StandardFolders.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace runebook {

using namespace Qt::StringLiterals;
using namespace UnicodeFormat;

namespace {

constexpr char32_t kLast = 0x10FFFF;

// Hangul syllables and their names follow from their three parts.
constexpr char32_t kHangulFirst = 0xAC00, kLeadFirst = 0x1100, kVowelFirst = 0x1161, kTailFirst = 0x11A7;
constexpr char32_t kLeads = 19, kVowels = 21, kTails = 28, kSyllables = kLeads * kVowels * kTails;
constexpr std::array<const char *, kLeads> kLeadNames {"G", "GG", "N", "D",  "DD", "R", "M", "B", "BB", "S",
                                                       "SS", "", "J", "JJ", "C",  "K", "T", "P", "H"};
constexpr std::array<const char *, kVowels> kVowelNames {"A",  "AE",  "YA", "YAE", "EO", "E",  "YEO",
                                                         "YE", "O",   "WA", "WAE", "OE", "YO", "U",
                                                         "WEO", "WE", "WI", "YU",  "EU", "YI", "I"};
constexpr std::array<const char *, kTails> kTailNames {"",   "G",  "GG", "GS", "N",  "NJ", "NH", "D", "L", "LG",
                                                       "LM", "LB", "LS", "LT", "LP", "LH", "M",  "B", "BS", "S",
                                                       "SS", "NG", "J",  "C",  "K",  "T",  "P",  "H"};
constexpr std::string_view kHangulName = "HANGUL SYLLABLE ";

bool isHangul(char32_t codePoint)
{
    return codePoint >= kHangulFirst && codePoint < kHangulFirst + kSyllables;
}

std::string hangulName(char32_t syllable)
{
    const char32_t place = syllable - kHangulFirst;
    return std::string(kHangulName) + kLeadNames[place / (kVowels * kTails)]
        + kVowelNames[place / kTails % kVowels] + kTailNames[place % kTails];
}

std::string hexText(char32_t codePoint)
{
    std::string digits;
    for (quint32 rest = codePoint; rest > 0 || digits.size() < 4; rest >>= 4)
        digits.insert(digits.begin(), "0123456789ABCDEF"[rest & 0xF]);
    return digits;
}

/// Upper case, blanks around it dropped and inner ones made one; nothing for what is not ASCII.
std::optional<std::string> normalName(QStringView name)
{
    std::string normal;
    for (const QChar character : name.trimmed()) {
        if (character.unicode() >= 0x80)
            return {};
        const char c = character.toUpper().toLatin1();
        if (c != ' ' || normal.back() != ' ')
            normal += c;
    }
    return normal;
}

quint32 readToken(std::string_view tokens, std::size_t &at)
{
    quint32 value = 0;
    for (int shift = 0;; shift += 7) {
        const auto byte = static_cast<unsigned char>(tokens[at++]);
        value |= quint32(byte & 0x7F) << shift;
        if (!(byte & 0x80))
            return value;
    }
}

} // namespace

const UnicodeData &UnicodeData::shared()
{
    static const UnicodeData data(StandardFolders::resource(QLatin1StringView(kFileName)));
    return data;
}

UnicodeData::UnicodeData(const QString &path)
    : m_file(path)
{
    if (!m_file.open(QIODevice::ReadOnly) || m_file.size() < qint64(sizeof(Head)))
        return;
    m_bytes = reinterpret_cast<const char *>(m_file.map(0, m_file.size()));
    if (!m_bytes) {
        m_read = m_file.readAll();
        m_bytes = m_read.constData();
    }
    const Numbers<quint32> head(m_bytes, sizeof(Head));
    m_head.magic = head[0];
    m_head.size = head[1];
    for (quint32 i = 0; i <= TableCount; ++i)
        m_head.starts[i] = head[2 + i];
    if (m_head.magic != kMagic || m_head.size != m_file.size() || m_head.starts[TableCount] != m_head.size
        || !std::is_sorted(m_head.starts.begin(), m_head.starts.end()))
        return;
    m_textStarts = numbers<quint32>(TextStarts);
    m_wordStarts = numbers<quint32>(WordStarts);
    m_nameCodes = numbers<quint32>(NameCodes);
    m_nameStarts = numbers<quint32>(NameStarts);
    m_rules = numbers<quint32>(RuleNames);
    m_runStarts = numbers<quint32>(RunStarts);
    m_blocks = numbers<quint32>(Blocks);
    m_cases = numbers<quint32>(Cases);
    m_decompositions = numbers<quint32>(Decompositions);
    m_parts = numbers<quint32>(Parts);
    m_nameOrder = numbers<quint16>(NameOrder);
    m_runKinds = numbers<quint16>(RunKinds);
    m_kinds = numbers<quint16>(Kinds);
}

template <typename Number> Numbers<Number> UnicodeData::numbers(Table table) const
{
    return Numbers<Number>(m_bytes + m_head.starts[table], m_head.starts[table + 1] - m_head.starts[table]);
}

std::string_view UnicodeData::bytes(Table table) const
{
    return {m_bytes + m_head.starts[table], m_head.starts[table + 1] - m_head.starts[table]};
}

std::string_view UnicodeData::piece(Table text, const Numbers<quint32> &starts, quint32 index) const
{
    return bytes(text).substr(starts[index], starts[index + 1] - starts[index]);
}

QString UnicodeData::text(quint32 index) const
{
    const std::string_view latin1 = piece(TextBytes, m_textStarts, index);
    return QString::fromLatin1(latin1.data(), qsizetype(latin1.size()));
}

/// The text of the range (first, last, text) that \a codePoint lies in; null for none.
QString UnicodeData::textOfRange(const Numbers<quint32> &ranges, char32_t codePoint) const
{
    const quint32 count = ranges.countUpTo(codePoint, 3);
    const quint32 at = (count - 1) * 3;
    return count > 0 && codePoint <= ranges[at + 1] ? text(ranges[at + 2]) : QString();
}

quint16 UnicodeData::kindNumber(char32_t codePoint, quint32 column) const
{
    return m_kinds[kindOf(codePoint) * 4U + column];
}

quint16 UnicodeData::kindOf(char32_t codePoint) const
{
    return isLoaded() ? m_runKinds[m_runStarts.countUpTo(std::min(codePoint, kLast)) - 1] : 0;
}

bool UnicodeData::hasCanonicalDecomposition(char32_t codePoint) const
{
    const quint32 count = m_decompositions.countUpTo(codePoint, 4);
    const quint32 at = (count - 1) * 4;
    return isHangul(codePoint)
        || (count > 0 && m_decompositions[at] == codePoint
            && piece(TextBytes, m_textStarts, m_decompositions[at + 1]).empty());
}

bool UnicodeData::isAssigned(char32_t codePoint) const
{
    return category(codePoint) != "Cn"_L1;
}

QString UnicodeData::category(char32_t codePoint) const
{
    return isLoaded() && codePoint <= kLast ? text(kindNumber(codePoint, 0)) : u"Cn"_s;
}

QString UnicodeData::bidiClass(char32_t codePoint) const
{
    return isLoaded() && codePoint <= kLast ? text(kindNumber(codePoint, 1)) : u"L"_s;
}

QString UnicodeData::script(char32_t codePoint) const
{
    return isLoaded() && codePoint <= kLast ? text(kindNumber(codePoint, 2)) : u"Unknown"_s;
}

int UnicodeData::combiningClass(char32_t codePoint) const
{
    return isLoaded() && codePoint <= kLast ? kindNumber(codePoint, 3) / 2 : 0;
}

bool UnicodeData::isMirrored(char32_t codePoint) const
{
    return isLoaded() && codePoint <= kLast && kindNumber(codePoint, 3) % 2 == 1;
}

QString UnicodeData::block(char32_t codePoint) const
{
    return textOfRange(m_blocks, codePoint);
}

QStringList UnicodeData::blocks() const
{
    QStringList names;
    for (quint32 at = 0; at < m_blocks.size(); at += 3)
        names += text(m_blocks[at + 2]);
    return names;
}

std::optional<std::pair<char32_t, char32_t>> UnicodeData::rangeOfBlock(QStringView name) const
{
    for (quint32 at = 0; at < m_blocks.size(); at += 3) {
        if (text(m_blocks[at + 2]).compare(name.trimmed(), Qt::CaseInsensitive) == 0)
            return std::pair<char32_t, char32_t>(m_blocks[at], m_blocks[at + 1]);
    }
    return {};
}

char32_t UnicodeData::mapped(char32_t codePoint, quint32 column) const
{
    const quint32 count = m_cases.countUpTo(codePoint, 4);
    const quint32 at = (count - 1) * 4;
    return count > 0 && m_cases[at] == codePoint ? m_cases[at + column] : codePoint;
}

UnicodeData::Decomposition UnicodeData::decomposition(char32_t codePoint) const
{
    Decomposition found;
    if (isHangul(codePoint)) {
        const char32_t place = codePoint - kHangulFirst;
        if (place % kTails != 0)
            return {{}, {codePoint - place % kTails, kTailFirst + place % kTails}};
        return {{}, {kLeadFirst + place / (kVowels * kTails), kVowelFirst + place / kTails % kVowels}};
    }
    const quint32 count = m_decompositions.countUpTo(codePoint, 4);
    const quint32 at = (count - 1) * 4;
    if (count == 0 || m_decompositions[at] != codePoint)
        return found;
    found.tag = text(m_decompositions[at + 1]);
    const quint32 first = m_decompositions[at + 2];
    for (quint32 i = first; i < first + m_decompositions[at + 3]; ++i)
        found.parts.push_back(m_parts[i]);
    return found;
}

std::vector<char32_t> UnicodeData::canonicalParts(char32_t codePoint) const
{
    const Decomposition found = decomposition(codePoint);
    if (found.parts.empty() || !found.tag.isEmpty())
        return {codePoint};
    std::vector<char32_t> parts;
    for (const char32_t part : found.parts) {
        const std::vector<char32_t> further = canonicalParts(part);
        parts.insert(parts.end(), further.begin(), further.end());
    }
    return parts;
}

std::vector<char32_t> UnicodeData::allCanonicalParts() const
{
    std::vector<char32_t> parts;
    for (quint32 at = 0; at < m_decompositions.size(); at += 4) {
        if (text(m_decompositions[at + 1]).isEmpty()) {
            for (const char32_t part : decomposition(m_decompositions[at]).parts)
                parts.push_back(part);
        }
    }
    for (char32_t jamo = kLeadFirst; jamo < kTailFirst + kTails; ++jamo)
        parts.push_back(jamo);
    std::sort(parts.begin(), parts.end());
    parts.erase(std::unique(parts.begin(), parts.end()), parts.end());
    return parts;
}

std::string_view UnicodeData::tokens(quint32 nameIndex) const
{
    return piece(NameTokens, m_nameStarts, nameIndex);
}

std::string UnicodeData::listedName(quint32 nameIndex) const
{
    const std::string_view all = tokens(nameIndex);
    std::string name;
    for (std::size_t at = 0; at < all.size();) {
        const bool isFirst = at == 0;
        const quint32 token = readToken(all, at);
        if (!isFirst)
            name += token % 2 == 1 ? '-' : ' ';
        name += piece(WordBytes, m_wordStarts, token / 2);
    }
    return name;
}

bool UnicodeData::beginsWithName(std::string_view text, char32_t codePoint) const
{
    const quint32 after = isLoaded() ? m_nameCodes.countUpTo(codePoint) : 0;
    if (after == 0 || m_nameCodes[after - 1] != codePoint) {
        const std::string name = asciiName(codePoint);
        return !name.empty() && text.substr(0, name.size()) == name;
    }
    const std::string_view all = tokens(after - 1);
    std::size_t from = 0;
    for (std::size_t at = 0; at < all.size();) {
        const bool isFirst = at == 0;
        const quint32 token = readToken(all, at);
        if (!isFirst && (from >= text.size() || text[from++] != (token % 2 == 1 ? '-' : ' ')))
            return false;
        const std::string_view word = piece(WordBytes, m_wordStarts, token / 2);
        if (text.substr(std::min(from, text.size()), word.size()) != word)
            return false;
        from += word.size();
    }
    return true;
}

bool UnicodeData::hasPart(char32_t codePoint, char32_t part) const
{
    const quint32 count = m_decompositions.countUpTo(codePoint, 4);
    const quint32 at = (count - 1) * 4;
    if (count == 0 || m_decompositions[at] != codePoint)
        return false;
    const quint32 first = m_decompositions[at + 2];
    for (quint32 i = first; i < first + m_decompositions[at + 3]; ++i) {
        if (m_parts[i] == part)
            return true;
    }
    return false;
}

std::string UnicodeData::asciiName(char32_t codePoint) const
{
    if (!isLoaded())
        return {};
    if (isHangul(codePoint))
        return hangulName(codePoint);
    const quint32 after = m_nameCodes.countUpTo(codePoint);
    if (after > 0 && m_nameCodes[after - 1] == codePoint)
        return listedName(after - 1);
    const quint32 rules = m_rules.countUpTo(codePoint, 3);
    if (rules == 0 || codePoint > m_rules[(rules - 1) * 3 + 1])
        return {};
    return std::string(piece(TextBytes, m_textStarts, m_rules[(rules - 1) * 3 + 2])) + hexText(codePoint);
}

QString UnicodeData::name(char32_t codePoint) const
{
    const std::string text = asciiName(codePoint);
    return text.empty() ? QString() : QString::fromStdString(text);
}

QStringList UnicodeData::aliases(char32_t codePoint) const
{
    // Aliases stand behind all names, in the order of their code points.
    QStringList found;
    const quint32 alias = codePoint | kAliasBit;
    for (quint32 at = m_nameCodes.countUpTo(alias); at > 0 && m_nameCodes[at - 1] == alias; --at)
        found.prepend(QString::fromStdString(listedName(at - 1)));
    return found;
}

std::optional<quint32> UnicodeData::wordIndex(std::string_view word) const
{
    quint32 first = 0;
    quint32 last = m_wordStarts.size() - 1;
    while (first < last) {
        const quint32 middle = (first + last) / 2;
        if (piece(WordBytes, m_wordStarts, middle) < word)
            first = middle + 1;
        else
            last = middle;
    }
    const bool isThere = first + 1 < m_wordStarts.size() && piece(WordBytes, m_wordStarts, first) == word;
    return isThere ? std::optional(first) : std::nullopt;
}

std::optional<char32_t> UnicodeData::codePointOfRule(std::string_view upperName) const
{
    if (upperName.substr(0, kHangulName.size()) == kHangulName) {
        for (char32_t code = kHangulFirst; code < kHangulFirst + kSyllables; ++code) {
            if (hangulName(code) == upperName)
                return code;
        }
        return {};
    }
    const std::size_t hyphen = upperName.rfind('-');
    const std::string_view digits = hyphen == upperName.npos ? upperName : upperName.substr(hyphen + 1);
    bool isNumber = false;
    const quint32 code = QByteArray(digits.data(), qsizetype(digits.size())).toUInt(&isNumber, 16);
    if (!isNumber || code > kLast)
        return {};
    const QString prefix = textOfRange(m_rules, code);
    return !prefix.isNull() && prefix.toStdString() + hexText(code) == upperName ? std::optional<char32_t>(code)
                                                                                  : std::nullopt;
}

std::optional<char32_t> UnicodeData::codePointOfListedName(std::string_view upperName) const
{
    QByteArray sought;
    for (std::size_t from = 0; from <= upperName.size();) {
        const std::size_t to = std::min(upperName.find_first_of(" -", from), upperName.size());
        const std::optional<quint32> word = wordIndex(upperName.substr(from, to - from));
        if (!word)
            return {};
        appendToken(sought, *word * 2 + (from > 0 && upperName[from - 1] == '-' ? 1 : 0));
        from = to + 1;
    }
    const std::string_view wanted(sought.constData(), std::size_t(sought.size()));
    quint32 first = 0;
    quint32 last = m_nameOrder.size();
    while (first < last) {
        const quint32 middle = (first + last) / 2;
        if (tokens(m_nameOrder[middle]) < wanted)
            first = middle + 1;
        else
            last = middle;
    }
    if (first == m_nameOrder.size() || tokens(m_nameOrder[first]) != wanted)
        return {};
    return m_nameCodes[m_nameOrder[first]] & ~kAliasBit;
}

std::optional<char32_t> UnicodeData::codePointOfName(QStringView name) const
{
    const std::optional<std::string> upperName = normalName(name);
    if (!isLoaded() || !upperName || upperName->empty())
        return {};
    const std::optional<char32_t> listed = codePointOfListedName(*upperName);
    return listed ? listed : codePointOfRule(*upperName);
}

/// The words that are sought, each as the range of listed words that begin with it.
struct UnicodeData::Words {
    struct Range {
        quint32 first = 0, whole = 0, last = 0; ///< whole: where those begin that only begin with it
        int rank(quint32 word) const { return word < first || word >= last ? 2 : word >= whole ? 1 : 0; }
    };
    std::vector<Range> ranges;

    /// 0: all are whole words of the name, 1: all are in it, 2: not all.
    int rankOf(std::string_view tokens) const
    {
        std::vector<int> ranks(ranges.size(), 2);
        for (std::size_t at = 0; at < tokens.size();) {
            const quint32 word = readToken(tokens, at) / 2;
            for (std::size_t i = 0; i < ranges.size(); ++i)
                ranks[i] = std::min(ranks[i], ranges[i].rank(word));
        }
        return *std::max_element(ranks.begin(), ranks.end());
    }
};

QList<UnicodeData::Found> UnicodeData::search(QStringView words, qsizetype limit) const
{
    const std::optional<std::string> upperWords = normalName(words);
    if (!isLoaded() || !upperWords || upperWords->empty())
        return {};
    Words sought;
    const auto firstWordNotBelow = [this](const std::string &text) {
        quint32 first = 0;
        for (quint32 count = m_wordStarts.size() - 1; count > 0;) {
            const quint32 half = count / 2;
            const bool isBelow = piece(WordBytes, m_wordStarts, first + half) < text;
            first += isBelow ? half + 1 : 0;
            count = isBelow ? count - half - 1 : half;
        }
        return first;
    };
    for (std::size_t from = 0; from < upperWords->size();) {
        const std::size_t to = std::min(upperWords->find_first_of(" -", from), upperWords->size());
        const std::string word = upperWords->substr(from, to - from);
        if (!word.empty()) // '\x7F' stands behind all characters of names
            sought.ranges.push_back({firstWordNotBelow(word), firstWordNotBelow(word + '\x01'),
                                     firstWordNotBelow(word + '\x7F')});
        from = to + 1;
    }
    if (sought.ranges.empty())
        return {};

    struct Ranked {
        int rank;
        Found found;
    };
    std::vector<Ranked> ranked;
    const QString text = QString::fromStdString(*upperWords);
    for (quint32 index = 0; index < m_nameCodes.size(); ++index) {
        const int rank = sought.rankOf(tokens(index));
        if (rank > 1)
            continue;
        const Found found {m_nameCodes[index] & ~kAliasBit, QString::fromStdString(listedName(index))};
        const bool isBeginning = found.name.startsWith(text);
        ranked.push_back({isBeginning ? int(found.name.size() != text.size()) : 2 + rank, found});
    }
    if (const std::optional<char32_t> exact = codePointOfRule(*upperWords))
        ranked.push_back({0, {*exact, name(*exact)}});
    std::sort(ranked.begin(), ranked.end(), [](const Ranked &a, const Ranked &b) {
        const auto key = [](const Ranked &each) {
            return std::tuple(each.rank, each.found.name.size(), each.found.codePoint);
        };
        return key(a) < key(b);
    });
    QList<Found> best;
    for (const Ranked &each : ranked) {
        if (best.size() == limit)
            break;
        const auto isSame = [&each](const Found &other) { return other.codePoint == each.found.codePoint; };
        if (std::none_of(best.begin(), best.end(), isSame))
            best += each.found;
    }
    return best;
}

} // namespace runebook
