#include "platform/PlainText.h"
#include "scripting/panel/ConsoleFormats.h"
#include "scripting/panel/ConsoleView.h"

#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QTextBlock>
#include <QTextLayout>
#include <QToolTip>
#include <QWheelEvent>
#include <QtMath>

// Links of the console: under the mouse, with the keyboard, in the menu.

namespace runebook {

QStringList ConsoleView::linkAt(const QPoint &position) const
{
    const QTextBlock block = cursorForPosition(position).block();
    const QPointF inBlock = position - blockBoundingGeometry(block).translated(contentOffset()).topLeft();
    const QTextLayout *layout = block.layout();
    for (int i = 0; i < layout->lineCount(); ++i) {
        const QTextLine line = layout->lineAt(i);
        // A view's own search gives the nearest character, also beside the text.
        if (!line.naturalTextRect().contains(inBlock))
            continue;
        QTextCursor cursor(block);
        cursor.setPosition(block.position() + line.xToCursor(inBlock.x(), QTextLine::CursorOnCharacter) + 1);
        const auto link = console::linkOf(cursor.charFormat());
        return link ? QStringList {link->path, link->line} : QStringList();
    }
    return {};
}

bool ConsoleView::selectLink(bool forward)
{
    const QTextCursor caret = textCursor();
    QTextBlock block =
        forward ? document()->findBlock(caret.selectionEnd()) : document()->findBlock(caret.selectionStart());
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
        QTextCursor cursor(document());
        cursor.setPosition(found->location);
        cursor.setPosition(found->end(), QTextCursor::KeepAnchor);
        setTextCursor(cursor);
        return true;
    }
    return false;
}

bool ConsoleView::activateLink()
{
    QTextCursor cursor(document());
    cursor.setPosition(textCursor().selectionStart());
    if (!cursor.movePosition(QTextCursor::NextCharacter))
        return false;
    const auto link = console::linkOf(cursor.charFormat());
    if (link)
        Q_EMIT linkActivated(link->path, link->line);
    return link.has_value();
}

bool ConsoleView::focusNextPrevChild(bool next)
{
    return selectLink(next) || QPlainTextEdit::focusNextPrevChild(next);
}

void ConsoleView::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier && activateLink())
        return;
    QPlainTextEdit::keyPressEvent(event);
}

void ConsoleView::mouseMoveEvent(QMouseEvent *event)
{
    QPlainTextEdit::mouseMoveEvent(event);
    const QTextBlock folded = foldedBlockAt(event->position().toPoint());
    if (folded.isValid()) {
        const Fold fold = foldOf(folded);
        if (QRect(fold.show.topLeft(), fold.copy.bottomRight()).contains(event->position().toPoint())) {
            viewport()->setCursor(Qt::PointingHandCursor);
            return;
        }
    }
    viewport()->setCursor(linkAt(event->position().toPoint()).isEmpty() ? Qt::IBeamCursor
                                                                        : Qt::PointingHandCursor);
}

void ConsoleView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && clickFold(event->position().toPoint()))
        return;
    m_pressedLink = event->button() == Qt::LeftButton ? linkAt(event->position().toPoint()) : QStringList();
    QPlainTextEdit::mousePressEvent(event);
}

void ConsoleView::mouseReleaseEvent(QMouseEvent *event)
{
    QPlainTextEdit::mouseReleaseEvent(event);
    const QStringList pressed = std::exchange(m_pressedLink, {});
    // A link that was dragged over is text being selected.
    if (!pressed.isEmpty() && event->button() == Qt::LeftButton && !textCursor().hasSelection()
        && pressed == linkAt(event->position().toPoint()))
        Q_EMIT linkActivated(pressed[0], pressed[1]);
}

void ConsoleView::wheelEvent(QWheelEvent *event)
{
    if (!event->modifiers().testFlag(Qt::ControlModifier)) {
        QPlainTextEdit::wheelEvent(event);
        return;
    }
    // The view's own way makes this text larger and no other, and forgets it.
    if (const int steps = m_wheel.take(*event))
        Q_EMIT zoomRequested(steps);
    event->accept();
}

bool ConsoleView::viewportEvent(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QPlainTextEdit::viewportEvent(event);
    const auto *help = static_cast<QHelpEvent *>(event);
    const QStringList link = linkAt(help->pos());
    if (link.isEmpty())
        QToolTip::hideText();
    else
        QToolTip::showText(help->globalPos(), escapedToolTip(link[0]), this);
    return true;
}

void ConsoleView::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu menu(this);
    const QStringList link = linkAt(event->pos());
    if (!link.isEmpty()) {
        menu.addAction(tr("Open Link"), this, [this, link] { Q_EMIT linkActivated(link[0], link[1]); });
        menu.addSeparator();
    }
    const QTextBlock line = foldedBlockAt(event->pos());
    if (line.isValid()) {
        menu.addAction(tr("Show Whole Line"), this, [this, line] { showWholeLine(line); });
        menu.addAction(tr("Copy Whole Line"), this, [this, line] { copyWholeLine(line); });
        menu.addSeparator();
    }
    QAction *copyAction = menu.addAction(tr("Copy"), QKeySequence::Copy, this, &ConsoleView::copy);
    copyAction->setEnabled(textCursor().hasSelection());
    menu.addAction(tr("Select All"), QKeySequence::SelectAll, this, &ConsoleView::selectAll);
    menu.addSeparator();
    menu.addAction(tr("Clear Console"), this, &ConsoleView::clearText);
    menu.exec(event->globalPos());
}

} // namespace runebook
