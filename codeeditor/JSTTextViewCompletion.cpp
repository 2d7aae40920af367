// The completions of the code view: when they come up, and what becomes of the one that was taken.
#include "codeeditor/JSTTextView.h"

#include "codeeditor/CharacterClasses.h"
#include "codeeditor/CompletionSession.h"
#include "codeeditor/JSTDocument.h"
#include "codeeditor/VXCodeTextStorage.h"

#include <QScrollBar>
#include <QTextBlock>

using namespace runebook;

void JSTTextView::setUpCompletions()
{
    m_completions = new CompletionSession(this);
    connect(m_completions, &CompletionSession::accepted, this, &JSTTextView::acceptCompletion);
    m_completions->setDescribe([this](Completion &one) {
        if (JSTTextViewDelegate *delegate = delegateInterface())
            delegate->textViewDescribeCompletion(this, m_completedRange, one);
    });
    // Whatever is not typing takes the caret or the text away from under the list.
    const auto endUnlessTyping = [this] {
        if (m_userEvent != UserEvent::KeyDown)
            m_completions->end();
    };
    connect(this, &QPlainTextEdit::cursorPositionChanged, this, endUnlessTyping);
    connect(this, &QPlainTextEdit::selectionChanged, this, endUnlessTyping);
    connect(document(), &QTextDocument::contentsChanged, this, endUnlessTyping);
    for (QScrollBar *bar : {verticalScrollBar(), horizontalScrollBar()})
        connect(bar, &QScrollBar::valueChanged, this, endUnlessTyping);
}

TextRange JSTTextView::rangeForUserCompletion() const
{
    const int caret = textCursor().position();
    const QTextBlock block = m_storage->findBlock(caret);
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

QStringList JSTTextView::completionsForPartialWordRange(TextRange range, int *selectedIndex)
{
    JSTTextViewDelegate *delegate = delegateInterface();
    if (!delegate)
        return {};
    QStringList words =
        delegate->textViewCompletionsForPartialWordRangeIndexOfSelectedItem(this, {}, range, selectedIndex);
    words.removeDuplicates();
    return words;
}

void JSTTextView::complete()
{
    showCompletions(Completing::OnRequest);
}

/// After something was \a typed: a name brings the list up, or narrows it; anything else ends it.
void JSTTextView::updateCompletions(const QString &typed, Typing typing)
{
    const bool types = !typed.isEmpty() && typed.back().isPrint();
    if (m_completions->isOpen() ? (types || typing == Typing::Erases) : types)
        showCompletions(Completing::ByItself);
    else
        m_completions->end();
}

/// True when nobody asked and nobody would want help with what stands in \a range.
bool JSTTextView::wantsNoCompletions(TextRange range, const QString &partial) const
{
    const auto *coloured = qobject_cast<const JSTDocument *>(m_delegate.data());
    return (!partial.contains(u'.') && partial.size() < CompletionSession::kLettersToBegin)
        || (coloured && range.length > 0 && coloured->isInStringOrComment(range.end() - 1));
}

void JSTTextView::showCompletions(Completing completing)
{
    const bool onRequest = completing == Completing::OnRequest;
    const TextRange range = rangeForUserCompletion();
    const QString partial = m_storage->substringWithRange(range);
    JSTTextViewDelegate *delegate = delegateInterface();
    CompletionList offered;
    if (delegate && !isReadOnly() && !textCursor().hasSelection()
        && (onRequest || !wantsNoCompletions(range, partial)))
        offered = delegate->textViewCompletionsToShow(this, range);
    // A name typed to its end wants no help; the next Return is meant for the text.
    const bool isTyped = std::any_of(offered.cbegin(), offered.cend(),
                                     [&partial](const Completion &one) { return one.text == partial; });
    if (isTyped && !onRequest)
        offered.clear();
    m_completedRange = range;
    m_partialWord = partial;
    QTextCursor start(m_storage);
    start.setPosition(range.location);
    const QRect caret = cursorRect(start);
    m_completions->offer(offered, partial, QRect(viewport()->mapToGlobal(caret.topLeft()), caret.size()),
                         onRequest ? CompletionSession::Origin::OnRequest
                                   : CompletionSession::Origin::ByItself);
}

void JSTTextView::acceptCompletion(const QString &word)
{
    const TextRange range = m_completedRange;
    if (range != rangeForUserCompletion() || m_storage->substringWithRange(range) != m_partialWord
        || !shouldChangeTextInRangeReplacementString(range, word))
        return;
    m_storage->replaceCharactersInRangeWithString(range, word);
    setSelectedRange({range.location + int(word.size()), 0});
    ensureCursorVisible();
}
