#pragma once

#include "codeeditor/TextRange.h"

#include <QString>

class QTextCursor;
class VXCodeTextStorage;

namespace runebook {

/// What the parts of the code view ask of it: a text with a selection, in which the user changes something.
class EditableCode
{
public:
    virtual VXCodeTextStorage *textStorage() const = 0;
    virtual TextRange selectedRange() const = 0;
    virtual void setSelectedRange(TextRange range) = 0;
    virtual QTextCursor caret() const = 0;
    virtual void setCaret(const QTextCursor &caret) = 0;
    virtual void showCaret() = 0;
    virtual bool mayBeEdited() const = 0;
    /// True when the text can be edited and nobody has anything against the change.
    virtual bool shouldChangeTextInRangeReplacementString(TextRange range, const QString &replacement) = 0;
    /// Whether a key, or an input method, is just writing.
    virtual bool isTyping() const = 0;
    /// Whether the text is coloured there as a string or a comment.
    virtual bool isInStringOrComment(int index) const = 0;

    /// Replaces the selection, if nobody has anything against it.
    void insertText(const QString &text);
    /// The same with nothing, for \a range.
    void deleteRange(TextRange range);

protected:
    ~EditableCode() = default;
};

} // namespace runebook
