#include "platform/predicates/PredicateParser.h"

#include "platform/predicates/PredicateText.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

std::optional<TextTest::Relation> textRelation(PredicateToken::Kind kind)
{
    switch (kind) {
    case PredicateToken::Kind::Contains:
        return TextTest::Relation::Contains;
    case PredicateToken::Kind::BeginsWith:
        return TextTest::Relation::BeginsWith;
    case PredicateToken::Kind::EndsWith:
        return TextTest::Relation::EndsWith;
    case PredicateToken::Kind::Equal:
        return TextTest::Relation::Equal;
    case PredicateToken::Kind::NotEqual:
        return TextTest::Relation::NotEqual;
    default:
        return std::nullopt;
    }
}

std::optional<NumberTest::Relation> numberRelation(PredicateToken::Kind kind)
{
    switch (kind) {
    case PredicateToken::Kind::Equal:
        return NumberTest::Relation::Equal;
    case PredicateToken::Kind::NotEqual:
        return NumberTest::Relation::NotEqual;
    case PredicateToken::Kind::Less:
        return NumberTest::Relation::Less;
    case PredicateToken::Kind::LessOrEqual:
        return NumberTest::Relation::LessOrEqual;
    case PredicateToken::Kind::Greater:
        return NumberTest::Relation::Greater;
    case PredicateToken::Kind::GreaterOrEqual:
        return NumberTest::Relation::GreaterOrEqual;
    default:
        return std::nullopt;
    }
}

/// As much of \a text as fits into a sentence.
QString excerpt(QStringView text)
{
    constexpr qsizetype kLongest = 40;
    return text.size() <= kLongest ? text.toString() : text.left(kLongest).toString() + u'…';
}

} // namespace

PredicateParser::PredicateParser(QStringView text) : m_text(text), m_lexer(text) { }

std::optional<PredicateNode> PredicateParser::parse(Error *error)
{
    PredicateNode node;
    bool ok = m_text.size() <= PredicateText::kMaxLength
        || failAt(PredicateText::kMaxLength, PredicateText::TooLong,
                  tr("the text is longer than %L1 characters").arg(PredicateText::kMaxLength));
    if (ok) {
        advance();
        ok = readAny(node) && readEnd();
    }
    if (ok)
        return node;
    fail(error, m_error);
    return std::nullopt;
}

bool PredicateParser::readEnd()
{
    if (m_token.kind == Kind::End)
        return true;
    if (m_token.kind == Kind::RightParenthesis)
        return failHere(tr("this closing parenthesis has no opening one"));
    const QChar before = m_text[m_token.position - 1];
    if (m_token.kind == Kind::Key && (before == u'"' || before == u'\''))
        return failHere(tr("a quotation mark within a quoted text is written \\%1").arg(before));
    return failHere(tr("&& or || is missing before this"));
}

bool PredicateParser::readAny(PredicateNode &node)
{
    return joinOperands(node, PredicateGroup::Kind::Any, Kind::Or, &PredicateParser::readAll);
}

bool PredicateParser::readAll(PredicateNode &node)
{
    return joinOperands(node, PredicateGroup::Kind::All, Kind::And, &PredicateParser::readOperand);
}

bool PredicateParser::joinOperands(PredicateNode &node, PredicateGroup::Kind group, Kind separator,
                                   bool (PredicateParser::*readMember)(PredicateNode &))
{
    PredicateGroup joined {group, {}};
    for (;;) {
        if (!(this->*readMember)(joined.members.emplace_back()))
            return false;
        if (m_token.kind != separator)
            break;
        advance();
    }
    if (joined.members.size() > 1)
        node.test = std::move(joined);
    else
        node = std::move(joined.members.front());
    return true;
}

bool PredicateParser::readOperand(PredicateNode &node)
{
    switch (m_token.kind) {
    case Kind::Not:
        return readNot(node);
    case Kind::LeftParenthesis:
        return readParenthesis(node);
    case Kind::Key:
        return readTest(node);
    case Kind::True:
    case Kind::False:
        node.test = PredicateGroup {
            m_token.kind == Kind::True ? PredicateGroup::Kind::All : PredicateGroup::Kind::Any, {}};
        advance();
        return true;
    case Kind::Text:
    case Kind::Number:
        return failHere(tr("a test begins with the name of a field, as in: name == \"A\""));
    default:
        return failHere(tr("a test is missing here"));
    }
}

bool PredicateParser::readNot(PredicateNode &node)
{
    PredicateGroup none {PredicateGroup::Kind::None, {}};
    if (!descend())
        return false;
    advance();
    if (!readOperand(none.members.emplace_back()))
        return false;
    --m_depth;
    node.test = std::move(none);
    return true;
}

bool PredicateParser::readParenthesis(PredicateNode &node)
{
    if (!descend())
        return false;
    advance();
    if (!readAny(node) || !expect(Kind::RightParenthesis, tr("a closing parenthesis is missing before this")))
        return false;
    --m_depth;
    return true;
}

bool PredicateParser::readTest(PredicateNode &node)
{
    const QString key = m_token.spelling.toString();
    advance();
    const Kind relation = m_token.kind;
    if (!textRelation(relation) && !numberRelation(relation) && relation != Kind::Matches
        && relation != Kind::In)
        return failHere(tr("contains, ==, MATCHES or another relation is missing after “%1”").arg(key));
    advance();
    if (relation == Kind::Matches)
        return readPatternTest(node, key);
    if (relation == Kind::In)
        return readMembership(node, key);
    if (numberRelation(relation) && (m_token.kind == Kind::Number || !textRelation(relation))) {
        NumberTest test {key, *numberRelation(relation), 0};
        const bool ok = readNumber(test.number);
        node.test = std::move(test);
        return ok;
    }
    return readTextTest(node, key, relation);
}

bool PredicateParser::readTextTest(PredicateNode &node, const QString &key, Kind relation)
{
    const Folding folding = readOptions();
    QString text;
    if (!readLiteral(text))
        return false;
    node.test = TextTest {key, *textRelation(relation), folding, foldedUtf8(text, folding), text};
    return true;
}

bool PredicateParser::readPatternTest(PredicateNode &node, const QString &key)
{
    const Folding folding = readOptions();
    const qsizetype position = m_token.position;
    QString text, reason;
    if (!readLiteral(text))
        return false;
    std::optional<PredicatePattern> pattern = PredicatePattern::compile(text, folding, &reason);
    if (!pattern)
        return failAt(position, PredicateText::InvalidPattern,
                      tr("this regular expression is not valid: %1").arg(reason));
    node.test = PatternTest {key, *std::move(pattern)};
    return true;
}

bool PredicateParser::readMembership(PredicateNode &node, const QString &key)
{
    const bool plain = m_token.kind != Kind::Options;
    const Folding folding = readOptions();
    if (m_token.kind == Kind::LeftBrace) {
        ListTest list {key, folding, {}};
        const bool ok = readList(list);
        node.test = std::move(list);
        return ok;
    }
    if (m_token.kind == Kind::HexRange && plain) {
        HexRangeTest test {key, {}};
        const bool ok = readHexRange(test.range);
        node.test = std::move(test);
        return ok;
    }
    return failHere(tr("a list is missing after IN, as in: script IN {\"latin\", \"greek\"}"));
}

bool PredicateParser::readList(ListTest &test)
{
    advance();
    while (m_token.kind != Kind::RightBrace) {
        QString text;
        if (!readLiteral(text))
            return false;
        std::string folded = foldedUtf8(text, test.folding);
        if (!folded.empty())
            test.texts.push_back(std::move(folded));
        test.spelled += text;
        if (m_token.kind == Kind::Comma)
            advance();
        else if (m_token.kind != Kind::RightBrace)
            return failHere(tr("a comma or the closing brace of the list is missing before this"));
    }
    advance();
    std::sort(test.texts.begin(), test.texts.end());
    test.texts.erase(std::unique(test.texts.begin(), test.texts.end()), test.texts.end());
    return true;
}

bool PredicateParser::readHexRange(HexRange &range)
{
    advance();
    return expect(Kind::LeftParenthesis, tr("HEXRANGE is followed by two code points: HEXRANGE(0041, 005A)"))
        && readCodePoint(range.first) && expect(Kind::Comma, tr("a comma is missing between the code points"))
        && readCodePoint(range.last)
        && expect(Kind::RightParenthesis, tr("a closing parenthesis is missing before this"));
}

bool PredicateParser::readCodePoint(quint32 &codePoint)
{
    const QStringView digits = m_token.kind == Kind::Text ? QStringView(m_token.text) : m_token.spelling;
    const auto isHexDigit = [](QChar c) {
        const QChar lower = c.toLower();
        return (lower >= u'0' && lower <= u'9') || (lower >= u'a' && lower <= u'f');
    };
    if (digits.isEmpty() || digits.size() > 8 || !std::all_of(digits.begin(), digits.end(), isHexDigit))
        return failHere(tr("a code point is missing: one to eight hexadecimal digits"));
    codePoint = digits.toUInt(nullptr, 16);
    advance();
    return true;
}

bool PredicateParser::readNumber(double &number)
{
    if (m_token.kind != Kind::Number)
        return failHere(tr("<, <=, > and >= compare with a number, and there is none"));
    bool ok = false;
    number = m_token.spelling.toDouble(&ok);
    if (!ok)
        return failHere(
            tr("“%1” is no number; a text stands in quotation marks").arg(excerpt(m_token.spelling)));
    advance();
    return true;
}

bool PredicateParser::readLiteral(QString &text)
{
    if (m_token.kind == Kind::Key)
        return failHere(tr("a text stands in quotation marks: \"%1\"").arg(excerpt(m_token.spelling)));
    if (m_token.kind != Kind::Text && m_token.kind != Kind::Number)
        return failHere(tr("a text in quotation marks is missing here"));
    text = m_token.kind == Kind::Text ? m_token.text : m_token.spelling.toString();
    advance();
    return true;
}

Folding PredicateParser::readOptions()
{
    if (m_token.kind != Kind::Options)
        return {};
    const Folding folding = m_token.folding;
    advance();
    return folding;
}

bool PredicateParser::expect(Kind kind, const QString &reason)
{
    if (m_token.kind != kind)
        return failHere(reason);
    advance();
    return true;
}

bool PredicateParser::descend()
{
    // The reading, asking and freeing of a tree goes as deep as the tree.
    return ++m_depth <= PredicateText::kMaxDepth
        || failAt(
            m_token.position, PredicateText::TooDeep,
            tr("more than %1 parentheses and negations lie in each other").arg(PredicateText::kMaxDepth));
}

bool PredicateParser::failHere(const QString &reason)
{
    const bool problem = m_token.kind == Kind::Problem;
    return failAt(m_token.position, PredicateText::SyntaxError, problem ? m_token.text : reason);
}

bool PredicateParser::failAt(qsizetype position, int code, const QString &reason)
{
    // As a person counts: from 1, and a character of two units once.
    const QStringView before = m_text.left(position);
    const qsizetype pairs =
        std::count_if(before.begin(), before.end(), [](QChar c) { return c.isLowSurrogate(); });
    const QString where = position >= m_text.size() ? tr("At the end: %1.")
                                                    : tr("At character %L1: %2.").arg(position - pairs + 1);
    m_error = {PredicateText::errorDomain(), code, tr("The filter is not understood."), where.arg(reason),
               tr("Tests look like this: name contains \"alt\" && script == \"latin\"")};
    return false;
}

} // namespace runebook
