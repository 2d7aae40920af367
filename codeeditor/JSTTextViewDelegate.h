#pragma once

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
};

Q_DECLARE_INTERFACE(JSTTextViewDelegate, "runebook.JSTTextViewDelegate")
