#pragma once

#include "platform/Error.h"
#include "platform/predicates/PredicateLexer.h"

#include <QCoreApplication>
#include <optional>

namespace runebook {

/// Reads one predicate text into its tree. Behind Predicate::parse().
class PredicateParser
{
    Q_DECLARE_TR_FUNCTIONS(PredicateParser)
public:
    /// \a text must outlive the parser.
    explicit PredicateParser(QStringView text);

    /// The tree; or nothing, and \a error filled when given.
    std::optional<PredicateNode> parse(Error *error);

private:
    using Kind = PredicateToken::Kind;

    // Each reads its part from the current token on, leaves the token behind it current, and answers false
    // after it has noted an error.
    bool readEnd();
    bool readAny(PredicateNode &node);
    bool readAll(PredicateNode &node);
    bool readOperand(PredicateNode &node);
    bool readNot(PredicateNode &node);
    bool readParenthesis(PredicateNode &node);
    bool readTest(PredicateNode &node);
    bool readTextTest(PredicateNode &node, const QString &key, Kind relation);
    bool readPatternTest(PredicateNode &node, const QString &key);
    bool readMembership(PredicateNode &node, const QString &key);
    bool readList(ListTest &test);
    bool readHexRange(HexRange &range);
    bool readCodePoint(quint32 &codePoint);
    bool readNumber(double &number);
    bool readLiteral(QString &text);
    Folding readOptions();

    bool joinOperands(PredicateNode &node, PredicateGroup::Kind group, Kind separator,
                      bool (PredicateParser::*readMember)(PredicateNode &));
    bool expect(Kind kind, const QString &reason);
    bool descend();
    void advance() { m_token = m_lexer.next(); }
    bool failHere(const QString &reason);
    bool failAt(qsizetype position, int code, const QString &reason);

    QStringView m_text;
    PredicateLexer m_lexer;
    PredicateToken m_token;
    int m_depth = 0;
    Error m_error;
};

} // namespace runebook
