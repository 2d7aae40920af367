#include "codeeditor/OfferedWords.h"

#include "codeeditor/CompletionRules.h"
#include "codeeditor/KeywordTable.h"

#include <QSet>
#include <algorithm>

namespace runebook {

CompletionList OfferedWords::fitting(const QString &partial) const
{
    // The dot stays with the partial word: behind a dot only words that begin with one fit.
    const qsizetype dot = std::max<qsizetype>(partial.lastIndexOf(u'.'), 0);
    const QString prefix = partial.first(dot);
    const QString start = partial.sliced(dot).toLower();
    CompletionList found;
    for (const QString &word : m_words) {
        if (word.toLower().startsWith(start))
            found.append({prefix + word, isPythonKeyword(word) ? tr("keyword") : QString(), {}, {}});
    }
    return found;
}

CompletionList OfferedWords::offered(const QString &text, int start, int end, const LiveNames &liveNames,
                                     const IsInside &isInside) const
{
    const CompletionContext context = completionContext(text, start, end);
    KnownNames live;
    if (!context.afterDot || !context.path.isEmpty())
        live = liveNames(context.path, context.start);
    CompletionList near;
    if (!context.afterDot || !live.isKnown) {
        const QSet<QString> listed(m_words.cbegin(), m_words.cend());
        for (const Completion &one : namesInText(text, context.start, context.afterDot, end, isInside)) {
            if (!listed.contains(one.text))
                near.append(one);
        }
    }
    appendNew(near, live.names);
    for (Completion &one : near)
        one.text.prepend(context.front);
    if (!context.afterDot || !live.isKnown)
        appendNew(near, fitting(context.front + context.start));
    return near;
}

} // namespace runebook
