#include "platform/predicates/PredicateLexer.h"

#include <algorithm>
#include <iterator>
#include <utility>

using namespace Qt::StringLiterals;

namespace runebook {

using Kind = PredicateToken::Kind;

namespace {

constexpr std::pair<QLatin1StringView, Kind> kKeywords[] = {
    {"and"_L1, Kind::And},
    {"or"_L1, Kind::Or},
    {"not"_L1, Kind::Not},
    {"truepredicate"_L1, Kind::True},
    {"falsepredicate"_L1, Kind::False},
    {"contains"_L1, Kind::Contains},
    {"beginswith"_L1, Kind::BeginsWith},
    {"endswith"_L1, Kind::EndsWith},
    {"matches"_L1, Kind::Matches},
    {"in"_L1, Kind::In},
    {"hexrange"_L1, Kind::HexRange},
};

// The longer before those that begin alike.
constexpr std::pair<QLatin1StringView, Kind> kSymbols[] = {
    {"&&"_L1, Kind::And},
    {"||"_L1, Kind::Or},
    {"=="_L1, Kind::Equal},
    {"!="_L1, Kind::NotEqual},
    {"<>"_L1, Kind::NotEqual},
    {"<="_L1, Kind::LessOrEqual},
    {">="_L1, Kind::GreaterOrEqual},
    {"="_L1, Kind::Equal},
    {"<"_L1, Kind::Less},
    {">"_L1, Kind::Greater},
    {"!"_L1, Kind::Not},
    {"("_L1, Kind::LeftParenthesis},
    {")"_L1, Kind::RightParenthesis},
    {"{"_L1, Kind::LeftBrace},
    {"}"_L1, Kind::RightBrace},
    {","_L1, Kind::Comma},
};

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

bool isAsciiLetterOrDigit(QChar c)
{
    return isDigit(c) || (c.toLower() >= u'a' && c.toLower() <= u'z');
}

bool startsWord(QChar c)
{
    return c == u'_' || c.isLetter();
}

bool continuesWord(QChar c)
{
    return c == u'_' || c == u'.' || c.isLetterOrNumber();
}

} // namespace

PredicateToken PredicateLexer::next()
{
    while (m_at < m_text.size() && m_text[m_at].isSpace())
        ++m_at;
    if (m_at == m_text.size())
        return finish(Kind::End, 0);
    const QChar first = m_text[m_at];
    const bool negative = first == u'-' && m_at + 1 < m_text.size() && isDigit(m_text[m_at + 1]);
    if (first == u'"' || first == u'\'')
        return readText();
    if (first == u'[')
        return readOptions();
    if (isDigit(first) || negative)
        return readNumber();
    if (startsWord(first))
        return readWord();
    return readSymbol();
}

PredicateToken PredicateLexer::finish(Kind kind, qsizetype length)
{
    PredicateToken token;
    token.kind = kind;
    token.position = m_at;
    token.spelling = m_text.mid(m_at, length);
    m_at += length;
    return token;
}

PredicateToken PredicateLexer::problem(qsizetype position, const QString &reason)
{
    m_at = position;
    PredicateToken token = finish(Kind::Problem, m_text.size() - position);
    token.text = reason;
    return token;
}

PredicateToken PredicateLexer::readWord()
{
    const auto end = std::find_if_not(m_text.begin() + m_at, m_text.end(), continuesWord);
    PredicateToken token = finish(Kind::Key, end - m_text.begin() - m_at);
    const auto keyword =
        std::find_if(std::begin(kKeywords), std::end(kKeywords), [&token](const auto &candidate) {
            return token.spelling.compare(candidate.first, Qt::CaseInsensitive) == 0;
        });
    if (keyword != std::end(kKeywords))
        token.kind = keyword->second;
    return token;
}

PredicateToken PredicateLexer::readNumber()
{
    // The digits of a code point may be letters; whoever wants a number says whether it is one.
    const auto end = std::find_if_not(m_text.begin() + m_at + 1, m_text.end(), continuesWord);
    return finish(Kind::Number, end - m_text.begin() - m_at);
}

PredicateToken PredicateLexer::readText()
{
    const QChar quote = m_text[m_at];
    QString value;
    qsizetype at = m_at + 1;
    while (at < m_text.size() && m_text[at] != quote) {
        if (m_text[at] != u'\\') {
            value += m_text[at++];
            continue;
        }
        const qsizetype escapeAt = at;
        const QString meaning = readEscape(at);
        if (meaning.isEmpty() && at < m_text.size())
            return problem(escapeAt,
                           tr("a backslash in a quoted text is written twice, since \\%1 has no meaning")
                               .arg(m_text[escapeAt + 1]));
        value += meaning;
    }
    if (at >= m_text.size())
        return problem(m_at, tr("the text that begins here lacks its closing quotation mark %1").arg(quote));
    PredicateToken token = finish(Kind::Text, at + 1 - m_at);
    token.text = value;
    return token;
}

/// What the escape at \a at stands for; moves \a at behind it. Nothing when it has no meaning or when the
/// text ends; then \a at has moved only in the second case.
QString PredicateLexer::readEscape(qsizetype &at) const
{
    if (at + 1 >= m_text.size()) {
        at = m_text.size();
        return {};
    }
    const QChar letter = m_text[at + 1];
    qsizetype length = 2;
    QString meaning;
    if (letter == u'n') {
        meaning = u"\n"_s;
    } else if (letter == u'r') {
        meaning = u"\r"_s;
    } else if (letter == u't') {
        meaning = u"\t"_s;
    } else if (letter == u'u') {
        length = 6;
        const QStringView digits = m_text.mid(at + 2, 4);
        bool isHex = digits.size() == 4 && std::all_of(digits.begin(), digits.end(), isAsciiLetterOrDigit);
        const ushort unit = isHex ? digits.toUShort(&isHex, 16) : 0;
        if (isHex)
            meaning = QChar(unit);
    } else if (!isAsciiLetterOrDigit(letter)) {
        meaning = letter;
    }
    if (!meaning.isEmpty())
        at += length;
    return meaning;
}

PredicateToken PredicateLexer::readOptions()
{
    Folding folding;
    qsizetype at = m_at + 1;
    for (; at < m_text.size() && m_text[at] != u']'; ++at) {
        const QChar option = m_text[at].toLower();
        if (option != u'c' && option != u'd')
            break;
        folding |= option == u'c' ? Fold::Case : Fold::Diacritics;
    }
    if (at >= m_text.size() || m_text[at] != u']' || at == m_at + 1)
        return problem(m_at, tr("only [c], [d] or [cd] can stand here"));
    PredicateToken token = finish(Kind::Options, at + 1 - m_at);
    token.folding = folding;
    return token;
}

PredicateToken PredicateLexer::readSymbol()
{
    const QStringView rest = m_text.mid(m_at);
    for (const auto &[spelling, kind] : kSymbols) {
        if (rest.startsWith(spelling))
            return finish(kind, spelling.size());
    }
    if (rest.startsWith("%@"_L1) || rest.startsWith("%K"_L1))
        return problem(m_at, tr("%1 waits for an argument, and there is none").arg(rest.left(2)));
    if (rest[0] == u'&' || rest[0] == u'|')
        return problem(m_at, tr("write && for “and”, || for “or”"));
    if (QStringView(u"“”„«»‘’‚").contains(rest[0]))
        return problem(m_at, tr("texts stand between straight quotation marks: \"text\""));
    const bool pair = rest.size() > 1 && rest[0].isHighSurrogate() && rest[1].isLowSurrogate();
    return problem(m_at, tr("“%1” does not belong here").arg(rest.left(pair ? 2 : 1)));
}

} // namespace runebook
