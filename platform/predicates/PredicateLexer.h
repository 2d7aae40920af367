#pragma once

#include "platform/predicates/PredicateNodes.h"

#include <QCoreApplication>
#include <QString>
#include <QStringView>

namespace runebook {

/// A word of the predicate language.
struct PredicateToken {
    enum class Kind : quint8 {
        End,
        Problem, ///< nothing of the language; text tells why, for a person
        Key, ///< any word that is no keyword
        Text, ///< a literal; text is what it stands for
        Number, ///< spelled with a digit or a minus sign first; may be none after all
        And,
        Or,
        Not,
        True,
        False,
        Contains,
        BeginsWith,
        EndsWith,
        Matches,
        In,
        HexRange,
        Equal,
        NotEqual,
        Less,
        LessOrEqual,
        Greater,
        GreaterOrEqual,
        Options, ///< [c], [d], [cd]; folding is what they mean
        LeftParenthesis,
        RightParenthesis,
        LeftBrace,
        RightBrace,
        Comma
    };

    Kind kind = Kind::End;
    qsizetype position = 0; ///< in UTF-16 units from the start
    QStringView spelling; ///< as it stands in the text
    QString text;
    Folding folding;
};

/// Cuts a predicate text into words, one at a time. The text must outlive it and the spellings.
class PredicateLexer
{
    Q_DECLARE_TR_FUNCTIONS(PredicateLexer)
public:
    explicit PredicateLexer(QStringView text) : m_text(text) { }

    /// The next word; End for ever after the last.
    PredicateToken next();

private:
    PredicateToken finish(PredicateToken::Kind kind, qsizetype length);
    PredicateToken problem(qsizetype position, const QString &reason);
    PredicateToken readWord();
    PredicateToken readNumber();
    PredicateToken readText();
    PredicateToken readOptions();
    PredicateToken readSymbol();
    QString readEscape(qsizetype &at) const;

    QStringView m_text;
    qsizetype m_at = 0;
};

} // namespace runebook
