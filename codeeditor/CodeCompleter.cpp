#include "codeeditor/CodeCompleter.h"

#include "codeeditor/CharacterClasses.h"
#include "codeeditor/VXCodeTextStorage.h"

#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <algorithm>

namespace runebook {

CodeCompleter::CodeCompleter(QPlainTextEdit *view, EditableCode &code)
    : QObject(view), m_view(view), m_code(code), m_session(*new CompletionSession(view))
{
    connect(&m_session, &CompletionSession::accepted, this, &CodeCompleter::accept);
    m_session.setDescribe([this](Completion &one) {
        if (m_source.describe)
            m_source.describe(m_range, one);
    });
    // Whatever is not typing takes the caret or the text away from under the list.
    const auto endUnlessTyping = [this] {
        if (!m_code.isTyping())
            end();
    };
    connect(view, &QPlainTextEdit::cursorPositionChanged, this, endUnlessTyping);
    connect(view, &QPlainTextEdit::selectionChanged, this, endUnlessTyping);
    connect(view->document(), &QTextDocument::contentsChanged, this, endUnlessTyping);
    for (QScrollBar *bar : {view->verticalScrollBar(), view->horizontalScrollBar()})
        connect(bar, &QScrollBar::valueChanged, this, endUnlessTyping);
}

TextRange CodeCompleter::partialWord() const
{
    const int caret = m_view->textCursor().position();
    const QTextBlock block = m_view->document()->findBlock(caret);
    const QString text = block.text();
    int start = caret - block.position();
    const int end = start;
    while (start > 0) {
        const bool pair = start > 1 && text[start - 1].isLowSurrogate() && text[start - 2].isHighSurrogate();
        const int length = pair ? 2 : 1;
        if (text[start - 1] != u'.' && namePartLength(text, start - length) == 0)
            break;
        start -= length;
    }
    if (start < end && text[start].isDigit())
        return {caret, 0}; // a number
    return {block.position() + start, end - start};
}

void CodeCompleter::noteTyped(const QString &typed, Typing typing)
{
    const bool types = !typed.isEmpty() && typed.back().isPrint();
    if (isOpen() ? (types || typing == Typing::Erases) : types)
        show(Completing::ByItself);
    else
        end();
}

/// True when nobody asked and nobody would want help with what stands in \a range.
bool CodeCompleter::isUnwanted(TextRange range, const QString &partial) const
{
    return (!partial.contains(u'.') && partial.size() < CompletionSession::kLettersToBegin)
        || (range.length > 0 && m_code.isInStringOrComment(range.end() - 1));
}

void CodeCompleter::show(Completing completing)
{
    const bool onRequest = completing == Completing::OnRequest;
    const TextRange range = partialWord();
    const QString partial = m_code.textStorage()->substringWithRange(range);
    CompletionList offered;
    if (m_source.offered && m_code.mayBeEdited() && !m_view->textCursor().hasSelection()
        && (onRequest || !isUnwanted(range, partial)))
        offered = m_source.offered(range);
    // A name typed to its end wants no help; the next Return is meant for the text.
    const bool isTyped = std::any_of(offered.cbegin(), offered.cend(),
                                     [&partial](const Completion &one) { return one.text == partial; });
    if (isTyped && !onRequest)
        offered.clear();
    m_range = range;
    m_partial = partial;
    QTextCursor start(m_view->document());
    start.setPosition(range.location);
    const QRect caret = m_view->cursorRect(start);
    m_session.offer(offered, partial, QRect(m_view->viewport()->mapToGlobal(caret.topLeft()), caret.size()),
                    onRequest ? CompletionSession::Origin::OnRequest : CompletionSession::Origin::ByItself);
}

void CodeCompleter::accept(const QString &word)
{
    const TextRange range = m_range;
    VXCodeTextStorage *storage = m_code.textStorage();
    if (range != partialWord() || storage->substringWithRange(range) != m_partial
        || !m_code.shouldChangeTextInRangeReplacementString(range, word))
        return;
    storage->replaceCharactersInRangeWithString(range, word);
    m_code.setSelectedRange({range.location + int(word.size()), 0});
    m_code.showCaret();
}

} // namespace runebook
