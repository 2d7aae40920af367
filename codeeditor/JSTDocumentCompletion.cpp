// What a document offers for a partial word: the words of its list, and what is near.
#include "codeeditor/JSTDocument.h"

#include "codeeditor/CompletionRules.h"
#include "codeeditor/JSTTextView.h"
#include "codeeditor/KeywordTable.h"
#include "codeeditor/VXCodeTextStorage.h"

#include <QSet>

using namespace runebook;

QStringList JSTDocument::textViewCompletionsForPartialWordRangeIndexOfSelectedItem(JSTTextView *view,
                                                                                   const QStringList &words,
                                                                                   TextRange range,
                                                                                   int *selectedIndex)
{
    QStringList result;
    for (const Completion &word : wordsOfList(view->textStorage()->substringWithRange(range)))
        result.append(word.text);
    if (JSTTextViewDelegate *delegate = delegateInterface())
        result += delegate->textViewCompletionsForPartialWordRangeIndexOfSelectedItem(view, words, range,
                                                                                      selectedIndex);
    return result;
}

/// The words of the list that fit \a partial, whatever their case, with what stands in front of its last dot.
CompletionList JSTDocument::wordsOfList(const QString &partial) const
{
    // The dot stays with the partial word: behind a dot only words that begin with one fit.
    const qsizetype dot = std::max<qsizetype>(partial.lastIndexOf(u'.'), 0);
    const QString prefix = partial.first(dot);
    const QString start = partial.sliced(dot).toLower();
    CompletionList found;
    for (const QString &word : m_autocompleteKeywords) {
        if (word.toLower().startsWith(start))
            found.append({prefix + word, isPythonKeyword(word) ? tr("keyword") : QString(), {}, {}});
    }
    return found;
}

CompletionList JSTDocument::textViewCompletionsToShow(JSTTextView *view, TextRange range)
{
    const QString text = view->string();
    const CompletionContext context = completionContext(text, range.location, range.end());
    KnownNames live;
    if (JSTTextViewDelegate *delegate = delegateInterface();
        delegate && (!context.afterDot || !context.path.isEmpty()))
        live = delegate->textViewNamesAtPath(view, context.path, context.start);
    CompletionList near;
    if (!context.afterDot || !live.isKnown) {
        const QSet<QString> listed(m_autocompleteKeywords.cbegin(), m_autocompleteKeywords.cend());
        for (const Completion &one : namesInText(text, context.start, context.afterDot, range.end(),
                                                 [this](int index) { return isInStringOrComment(index); })) {
            if (!listed.contains(one.text))
                near.append(one);
        }
    }
    appendNew(near, live.names);
    for (Completion &one : near)
        one.text.prepend(context.front);
    if (!context.afterDot || !live.isKnown)
        appendNew(near, wordsOfList(context.front + context.start));
    return near;
}

void JSTDocument::textViewDescribeCompletion(JSTTextView *view, TextRange range, Completion &one)
{
    if (JSTTextViewDelegate *delegate = delegateInterface())
        delegate->textViewDescribeCompletion(view, range, one);
}
