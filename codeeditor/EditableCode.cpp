#include "codeeditor/EditableCode.h"

#include <QTextCursor>

namespace runebook {

void EditableCode::insertText(const QString &text)
{
    if (!shouldChangeTextInRangeReplacementString(selectedRange(), text))
        return;
    caret().insertText(text);
    showCaret();
}

void EditableCode::deleteRange(TextRange range)
{
    if (!shouldChangeTextInRangeReplacementString(range, QString()))
        return;
    QTextCursor cursor = caret();
    cursor.setPosition(range.location);
    cursor.setPosition(range.end(), QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    setCaret(cursor);
    showCaret();
}

} // namespace runebook
