#pragma once

#include <QMetaType>
#include <QStringView>

/// One piece of a source as the tokenizer cuts it. A view: valid while the tokenizer keeps the text and
/// until it is asked for the next token.
class TDToken
{
    Q_GADGET
public:
    enum class Kind : quint8 { EndOfInput, QuotedString, Number, Comment, Word, Whitespace, Symbol };

    TDToken() = default;
    TDToken(Kind kind, QStringView stringValue) : m_stringValue(stringValue), m_kind(kind) { }

    /// The one token that stands for the end of every input. Compare by address.
    Q_INVOKABLE static const TDToken *EOFToken();

    /// The token's characters exactly as the source has them; the lengths of successive tokens add up to
    /// positions in the text.
    Q_INVOKABLE QStringView stringValue() const { return m_stringValue; }

    Kind kind() const { return m_kind; }
    Q_INVOKABLE bool isQuotedString() const { return m_kind == Kind::QuotedString; }
    Q_INVOKABLE bool isNumber() const { return m_kind == Kind::Number; }
    Q_INVOKABLE bool isComment() const { return m_kind == Kind::Comment; }
    Q_INVOKABLE bool isWord() const { return m_kind == Kind::Word; }
    Q_INVOKABLE bool isWhitespace() const { return m_kind == Kind::Whitespace; }

private:
    QStringView m_stringValue;
    Kind m_kind = Kind::EndOfInput;
};
