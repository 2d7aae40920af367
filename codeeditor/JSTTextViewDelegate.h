#pragma once

#include "codeeditor/Completion.h"
#include "codeeditor/TextRange.h"

#include <QStringList>
#include <QtPlugin>

class JSTTextView;

/// What a code text view and its document tell, and ask, an object that cares. Implement what is of interest;
/// the object must be a QObject that lists this interface (Q_INTERFACES), so that it may go at any time.
class JSTTextViewDelegate
{
public:
    virtual ~JSTTextViewDelegate() = default;

    virtual void textDidChange(JSTTextView *) { }
    virtual void textViewDidChangeSelection(JSTTextView *) { }
    /// False refuses the change.
    virtual bool textViewShouldChangeTextInRangeReplacementString(JSTTextView *, runebook::TextRange,
                                                                  const QString &)
    {
        return true;
    }
    /// Whether the text is coloured there as a string or a comment.
    virtual bool textViewIsInStringOrComment(int index) const
    {
        Q_UNUSED(index)
        return false;
    }
    /// Completions for the partial word at \a range; \a words are those found so far, \a selectedIndex may be
    /// set to the one to offer first.
    virtual QStringList textViewCompletionsForPartialWordRangeIndexOfSelectedItem(JSTTextView *,
                                                                                  const QStringList &words,
                                                                                  runebook::TextRange range,
                                                                                  int *selectedIndex)
    {
        Q_UNUSED(words)
        Q_UNUSED(range)
        Q_UNUSED(selectedIndex)
        return {};
    }

public: // the list that is shown
    /// What to offer for the partial word at \a range, the nearest first: by default the words above.
    virtual runebook::CompletionList textViewCompletionsToShow(JSTTextView *view, runebook::TextRange range)
    {
        int selected = 0;
        runebook::CompletionList offered;
        for (const QString &word :
             textViewCompletionsForPartialWordRangeIndexOfSelectedItem(view, {}, range, &selected))
            offered.append({word, {}, {}, {}});
        return offered;
    }
    /// The names of live objects that begin with \a start, of the object at the end of \a path
    /// (CompletionContext) or of the whole program when there is none.
    virtual runebook::KnownNames textViewNamesAtPath(JSTTextView *, const QString &path, const QString &start)
    {
        Q_UNUSED(path)
        Q_UNUSED(start)
        return {};
    }
    /// Fills in signature and help of \a one, which is offered for the partial word at \a range.
    virtual void textViewDescribeCompletion(JSTTextView *, runebook::TextRange range,
                                            runebook::Completion &one)
    {
        Q_UNUSED(range)
        Q_UNUSED(one)
    }
};

Q_DECLARE_INTERFACE(JSTTextViewDelegate, "runebook.JSTTextViewDelegate")
