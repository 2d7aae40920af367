#pragma once

#include "codeeditor/Completion.h"

#include <QCoreApplication>
#include <QStringList>
#include <functional>

namespace runebook {

/// What is offered for a partial word: what is near in the text and alive in the interpreter, and the words
/// of a list.
class OfferedWords
{
    Q_DECLARE_TR_FUNCTIONS(OfferedWords)
public:
    const QStringList &words() const { return m_words; }
    void setWords(const QStringList &words) { m_words = words; }

    /// The words of the list that fit \a partial, whatever their case, with what stands in front of its last
    /// dot.
    CompletionList fitting(const QString &partial) const;

    /// The names of live objects, as JSTTextViewDelegate::textViewNamesAtPath() tells them.
    using LiveNames = std::function<KnownNames(const QString &path, const QString &start)>;
    using IsInside = std::function<bool(int index)>;
    /// What to offer for what stands from \a start to \a end of \a text, the nearest first. \a isInside tells
    /// of strings and comments.
    CompletionList offered(const QString &text, int start, int end, const LiveNames &liveNames,
                           const IsInside &isInside) const;

private:
    QStringList m_words;
};

} // namespace runebook
