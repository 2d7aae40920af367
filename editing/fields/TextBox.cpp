#include "editing/fields/TextBox.h"

#include "platform/ShownText.h"

#include <QMimeData>
#include <QTextDocument>

namespace runebook {

QString TextBox::exactText() const
{
    QString text = document()->toRawText();
    return text.replace(QChar::ParagraphSeparator, u'\n');
}

/// The framework's own way of pasting ends the program when nobody owns the clipboard.
void TextBox::insertFromMimeData(const QMimeData *source)
{
    const QString text = source ? source->text() : QString();
    if (text.isEmpty())
        return;
    const QTextCursor cursor = textCursor();
    const int start = cursor.selectionStart();
    const int end = cursor.selectionEnd();
    if (m_takesLong && document()->characterCount() + text.size() > 2 * kMostInField
        && m_takesLong(exactText().replace(start, end - start, text), start + text.size()))
        return;
    insertPlainText(text);
    ensureCursorVisible();
}

} // namespace runebook
