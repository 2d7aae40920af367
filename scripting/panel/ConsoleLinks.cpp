#include "scripting/panel/ConsoleLinks.h"

#include "codeeditor/TextRange.h"
#include "scripting/panel/ConsoleFormats.h"

#include <QPlainTextEdit>
#include <QTextLayout>
#include <utility>

namespace runebook {

std::optional<FileLink> ConsoleLinks::at(const QPoint &position) const
{
    const QTextBlock block = m_view->cursorForPosition(position).block();
    const QPointF inBlock = position - m_placeOf(block).topLeft();
    const QTextLayout *layout = block.layout();
    for (int i = 0; i < layout->lineCount(); ++i) {
        const QTextLine line = layout->lineAt(i);
        // A view's own search gives the nearest character, also beside the text.
        if (!line.naturalTextRect().contains(inBlock))
            continue;
        QTextCursor cursor(block);
        cursor.setPosition(block.position() + line.xToCursor(inBlock.x(), QTextLine::CursorOnCharacter) + 1);
        return console::linkOf(cursor.charFormat());
    }
    return {};
}

std::optional<FileLink> ConsoleLinks::atCaret() const
{
    QTextCursor cursor(m_view->document());
    cursor.setPosition(m_view->textCursor().selectionStart());
    if (!cursor.movePosition(QTextCursor::NextCharacter))
        return {};
    return console::linkOf(cursor.charFormat());
}

bool ConsoleLinks::select(Way way)
{
    const QTextCursor caret = m_view->textCursor();
    const bool forward = way == Way::Forward;
    const QTextDocument *document = m_view->document();
    QTextBlock block = document->findBlock(forward ? caret.selectionEnd() : caret.selectionStart());
    for (; block.isValid(); block = forward ? block.next() : block.previous()) {
        std::optional<TextRange> found;
        for (auto piece = block.begin(); !piece.atEnd(); ++piece) {
            const QTextFragment fragment = piece.fragment();
            const TextRange range {fragment.position(), fragment.length()};
            const bool isAhead =
                forward ? range.location >= caret.selectionEnd() : range.end() <= caret.selectionStart();
            if (isAhead && console::linkOf(fragment.charFormat()) && !(forward && found))
                found = range;
        }
        if (!found)
            continue;
        QTextCursor cursor(m_view->document());
        cursor.setPosition(found->location);
        cursor.setPosition(found->end(), QTextCursor::KeepAnchor);
        m_view->setTextCursor(cursor);
        return true;
    }
    return false;
}

std::optional<FileLink> ConsoleLinks::release(const QPoint &position)
{
    const std::optional<FileLink> pressed = std::exchange(m_pressed, {});
    return pressed && !m_view->textCursor().hasSelection() && pressed == at(position) ? pressed
                                                                                      : std::nullopt;
}

} // namespace runebook
