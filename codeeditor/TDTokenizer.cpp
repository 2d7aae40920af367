#include "codeeditor/TDTokenizer.h"

#include "codeeditor/CharacterClasses.h"
#include "codeeditor/PythonScanner.h"

#include <algorithm>

using namespace runebook;

TDTokenizer::TDTokenizer()
{
    for (char16_t c = 0; c < 256; ++c) {
        const QStringView one(&c, 1);
        State &state = m_states[c];
        if (isBlank(c))
            state = State::Whitespace;
        else if (nameStartLength(one, 0) > 0)
            state = State::Word;
        else if ((c >= u'0' && c <= u'9') || c == u'.')
            state = State::Number;
        else if (c == u'"' || c == u'\'')
            state = State::Quote;
        else
            state = State::Symbol;
    }
}

void TDTokenizer::setString(const QString &string)
{
    m_reader.setString(string);
}

void TDTokenizer::setReader(const TDReader &reader)
{
    m_reader.setOffset(reader.offset());
}

int TDTokenizer::longestLookAhead() const
{
    constexpr int kPython = 4; // as in 1e+5 and 0x_f
    return m_comments.isEmpty() ? kPython : std::max(kPython, int(m_comments.front().start.size()));
}

void TDTokenizer::setKeywords(const QVariantHash &keywords)
{
    m_keywords = keywords;
    ++m_keywordsRevision;
}

void TDTokenizer::addSingleLineCommentStartSymbol(const QString &symbol)
{
    addMultiLineCommentStartSymbolEndSymbol(symbol, QString());
}

void TDTokenizer::addMultiLineCommentStartSymbolEndSymbol(const QString &start, const QString &end)
{
    if (start.isEmpty())
        return;
    const auto isQuote = [](QChar c) { return c == u'\'' || c == u'"'; };
    const bool escapes = !end.isEmpty() && std::all_of(end.cbegin(), end.cend(), isQuote);
    m_comments.append({start, end, escapes});
    // The longest symbol first, so that it is not taken for a shorter one that it begins with.
    std::stable_sort(m_comments.begin(), m_comments.end(),
                     [](const Comment &a, const Comment &b) { return a.start.size() > b.start.size(); });
    const char16_t first = start.front().unicode();
    if (first < 256)
        m_commentStarts[first] = true;
    else
        m_hasWideCommentStart = true;
}

void TDTokenizer::setTokenizerStateFromTo(State state, char16_t from, char16_t to)
{
    for (unsigned c = from; c <= to && c < 256; ++c)
        m_states[c] = state;
    if (to >= 256)
        m_wideStates.append({std::max<char16_t>(from, 256), to, state});
}

TDTokenizer::State TDTokenizer::stateAt(QStringView text, qsizetype index) const
{
    const char16_t c = text.utf16()[index];
    return c < 256 ? m_states[c] : stateOutsideLatin1(text, index);
}

TDTokenizer::State TDTokenizer::stateOutsideLatin1(QStringView text, qsizetype index) const
{
    const char16_t c = text.utf16()[index];
    for (auto range = m_wideStates.crbegin(); range != m_wideStates.crend(); ++range) {
        if (c >= range->from && c <= range->to)
            return range->state;
    }
    if (isBlank(c))
        return State::Whitespace;
    return nameStartLength(text, index) > 0 ? State::Word : State::Symbol;
}

bool TDTokenizer::mayBeginComment(char16_t c) const
{
    return c < 256 ? m_commentStarts[c] : m_hasWideCommentStart;
}

const TDTokenizer::Comment *TDTokenizer::commentAt(QStringView text, qsizetype index) const
{
    const QStringView rest = text.sliced(index);
    for (const Comment &comment : m_comments) {
        if (rest.startsWith(comment.start))
            return &comment;
    }
    return nullptr;
}

qsizetype TDTokenizer::endOfWhitespace(QStringView text, qsizetype index) const
{
    do
        ++index;
    while (index < text.size() && stateAt(text, index) == State::Whitespace);
    return index;
}

const TDToken *TDTokenizer::nextToken()
{
    const QStringView text = m_reader.string();
    const qsizetype start = m_reader.offset();
    if (start >= text.size())
        return TDToken::EOFToken();

    using Kind = TDToken::Kind;
    const auto take = [&](Kind kind, qsizetype end) {
        m_reader.setOffset(end);
        m_token = TDToken(kind, text.sliced(start, m_reader.offset() - start));
        return &m_token;
    };

    if (mayBeginComment(text.utf16()[start])) {
        if (const Comment *comment = commentAt(text, start)) {
            const qsizetype end = comment->end.isEmpty()
                ? python::endOfLine(text, start)
                : python::endOfBlock(text, start, comment->start.size(), comment->end,
                                     comment->escapes ? python::Escapes::Yes : python::Escapes::No);
            return take(Kind::Comment, std::max(end, start + comment->start.size()));
        }
    }
    switch (stateAt(text, start)) {
    case State::Word:
        return take(Kind::Word, python::endOfName(text, start));
    case State::Whitespace:
        return take(Kind::Whitespace, endOfWhitespace(text, start));
    case State::Quote:
        return take(Kind::QuotedString, python::endOfString(text, start));
    case State::Number:
        if (const qsizetype end = python::endOfNumber(text, start); end > start)
            return take(Kind::Number, end);
        break;
    case State::Symbol:
        break;
    }
    return take(Kind::Symbol, start + characterLength(text, start));
}
