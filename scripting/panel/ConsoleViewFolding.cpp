#include "scripting/panel/ConsoleView.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QLocale>
#include <QPainter>
#include <QPlainTextDocumentLayout>
#include <QTextBlock>
#include <QTextLayout>
#include <QTimer>

// Lines that are too long to be shown at once: their beginning stands there, with what shows or copies all of
// it.

namespace runebook {

namespace {

constexpr qint64 kBudgetMs = 8;

} // namespace

bool ConsoleView::isFolded(const QTextBlock &block)
{
    return block.isVisible() && block.next().isValid() && !block.next().isVisible();
}

/// The first block of the line that \a block belongs to.
QTextBlock ConsoleView::lineStart(QTextBlock block)
{
    while (block.previous().isValid() && block.previous().userState() == static_cast<int>(BlockEnd::Cut))
        block = block.previous();
    return block;
}

void ConsoleView::hideBlock(QTextBlock block)
{
    block.setVisible(false);
    block.setLineCount(0);
}

void ConsoleView::showWholeLine(const QTextBlock &head)
{
    QTextBlock block = head;
    while (block.userState() == static_cast<int>(BlockEnd::Cut) && block.next().isValid()) {
        block = block.next();
        block.setVisible(true);
        block.setLineCount(1);
    }
    measureShownLine(QTextCursor(head.next()));
    viewport()->update();
}

/// Counts the rows of a line that is shown whole, for the scroll bar: from the block of \a from a part now,
/// the rest when there is time.
void ConsoleView::measureShownLine(QTextCursor from)
{
    auto *layout = static_cast<QPlainTextDocumentLayout *>(document()->documentLayout());
    QElapsedTimer clock;
    clock.start();
    QTextBlock block = from.block();
    bool isLast = false;
    do {
        layout->blockBoundingRect(block);
        isLast = block.userState() != static_cast<int>(BlockEnd::Cut) || !block.next().isValid();
        block = block.next();
    } while (!isLast && !clock.hasExpired(kBudgetMs));
    Q_EMIT layout->documentSizeChanged(layout->documentSize());
    if (isLast)
        return;
    from.setPosition(block.position());
    QTimer::singleShot(0, this, [this, from] { measureShownLine(from); });
}

void ConsoleView::copyWholeLine(const QTextBlock &head) const
{
    QTextBlock last = head;
    while (last.userState() == static_cast<int>(BlockEnd::Cut) && last.next().isValid())
        last = last.next();
    QGuiApplication::clipboard()->setText(textBetween(head.position(), last.position() + last.length() - 1));
}

ConsoleView::Fold ConsoleView::foldOf(const QTextBlock &head) const
{
    qsizetype hidden = 0;
    for (QTextBlock block = head.next(); block.isValid() && !block.isVisible(); block = block.next())
        hidden += block.length() - 1;
    Fold fold;
    fold.text = tr("… %1 more characters").arg(locale().toString(hidden));
    const QFontMetrics metrics = fontMetrics();
    const int gap = metrics.horizontalAdvance(u'm');
    const QRect lines = blockBoundingGeometry(head).translated(contentOffset()).toAlignedRect();
    fold.copy =
        QRect(viewport()->width() - gap - metrics.horizontalAdvance(tr("Copy")),
              lines.bottom() - metrics.height(), metrics.horizontalAdvance(tr("Copy")), metrics.height());
    const int show = metrics.horizontalAdvance(tr("Show"));
    fold.show = fold.copy.translated(-gap - show, 0);
    fold.show.setWidth(show);
    const int text = metrics.horizontalAdvance(fold.text);
    fold.label = fold.show.translated(-gap - text, 0);
    fold.label.setWidth(text);
    return fold;
}

QTextBlock ConsoleView::foldedBlockAt(const QPoint &position) const
{
    const QTextBlock block = cursorForPosition(position).block();
    return isFolded(block) ? block : QTextBlock();
}

void ConsoleView::paintEvent(QPaintEvent *event)
{
    QPlainTextEdit::paintEvent(event);
    QPainter painter(viewport());
    painter.setFont(font());
    for (QTextBlock block = firstVisibleBlock(); block.isValid(); block = block.next()) {
        if (!block.isVisible())
            continue;
        const QRectF place = blockBoundingGeometry(block).translated(contentOffset());
        if (place.top() > viewport()->height())
            break;
        if (!isFolded(block))
            continue;
        const Fold fold = foldOf(block);
        painter.fillRect(QRect(fold.label.topLeft(), fold.copy.bottomRight()).adjusted(-6, 0, 6, 0),
                         palette().color(QPalette::AlternateBase));
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(fold.label, Qt::AlignVCenter, fold.text);
        painter.setPen(palette().color(QPalette::Link));
        painter.drawText(fold.show, Qt::AlignVCenter, tr("Show"));
        painter.drawText(fold.copy, Qt::AlignVCenter, tr("Copy"));
    }
}

bool ConsoleView::clickFold(const QPoint &position)
{
    const QTextBlock head = foldedBlockAt(position);
    if (!head.isValid())
        return false;
    const Fold fold = foldOf(head);
    if (fold.show.contains(position))
        showWholeLine(head);
    else if (fold.copy.contains(position))
        copyWholeLine(head);
    else
        return false;
    return true;
}

} // namespace runebook
