#pragma once

#include "codeeditor/TDReader.h"
#include "codeeditor/TDToken.h"

#include <QList>
#include <QVariantHash>
#include <array>

/// Cuts a text into tokens that together are the whole text: white space and comments are tokens too. Which
/// kind of token a character begins is a table that can be changed; made for Python, a fresh tokenizer knows
/// its names, numbers and strings, and learns comments from the symbols it is given. No text is refused.
class TDTokenizer
{
    Q_GADGET
    Q_PROPERTY(QString string READ string WRITE setString)
    Q_PROPERTY(QVariantHash keywords READ keywords WRITE setKeywords)
public:
    /// What the first character of a token decides.
    enum class State : quint8 { Symbol, Word, Number, Quote, Whitespace };

    TDTokenizer();

public: // the text
    /// The text to cut; scanning starts at its beginning.
    const QString &string() const { return m_reader.string(); }
    Q_INVOKABLE void setString(const QString &string);
    /// Scans the text from where \a reader stands; a fresh reader restarts.
    Q_INVOKABLE void setReader(const TDReader &reader);
    /// The next token, TDToken::EOFToken() when the text is used up. The token is the tokenizer's own and
    /// changes with the next call.
    Q_INVOKABLE const TDToken *nextToken();

    /// So many characters behind its end, at most, decide where a token ends.
    int longestLookAhead() const;

public: // the keyword attribute table, kept here for who paints the tokens
    const QVariantHash &keywords() const { return m_keywords; }
    Q_INVOKABLE void setKeywords(const QVariantHash &keywords);
    /// Counts the changes of the table, so that what is derived from it can be kept.
    int keywordsRevision() const { return m_keywordsRevision; }

public: // comments
    /// From \a symbol to the end of its line, the line's break not included. An empty symbol is ignored.
    Q_INVOKABLE void addSingleLineCommentStartSymbol(const QString &symbol);
    /// From \a start to the next \a end, both included, or to the end of the text. Symbols made of quotes
    /// are Python's long strings used as comments: in them a backslash takes the next character along.
    Q_INVOKABLE void addMultiLineCommentStartSymbolEndSymbol(const QString &start, const QString &end);

public: // the table of states
    Q_INVOKABLE TDTokenizer::State symbolState() const { return State::Symbol; }
    Q_INVOKABLE TDTokenizer::State wordState() const { return State::Word; }
    Q_INVOKABLE TDTokenizer::State numberState() const { return State::Number; }
    Q_INVOKABLE TDTokenizer::State quoteState() const { return State::Quote; }
    Q_INVOKABLE TDTokenizer::State whitespaceState() const { return State::Whitespace; }
    /// Lets the characters \a from to \a to, both included, begin tokens of \a state.
    Q_INVOKABLE void setTokenizerStateFromTo(TDTokenizer::State state, char16_t from, char16_t to);

private:
    struct Comment {
        QString start;
        QString end; // empty: ends with its line
        bool escapes = false;
    };
    struct StateRange {
        char16_t from;
        char16_t to;
        State state;
    };

    State stateAt(QStringView text, qsizetype index) const;
    State stateOutsideLatin1(QStringView text, qsizetype index) const;
    bool mayBeginComment(char16_t c) const;
    const Comment *commentAt(QStringView text, qsizetype index) const;
    qsizetype endOfWhitespace(QStringView text, qsizetype index) const;

    TDReader m_reader;
    TDToken m_token;
    QVariantHash m_keywords;
    int m_keywordsRevision = 0;
    std::array<State, 256> m_states {};
    std::array<bool, 256> m_commentStarts {};
    bool m_hasWideCommentStart = false;
    QList<StateRange> m_wideStates;
    QList<Comment> m_comments;
};
