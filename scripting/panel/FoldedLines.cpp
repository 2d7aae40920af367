#include "scripting/panel/FoldedLines.h"

#include "scripting/panel/ConsoleLines.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QLocale>
#include <QPainter>
#include <QPlainTextDocumentLayout>
#include <QPlainTextEdit>
#include <QTextLayout>
#include <QTimer>
#include <algorithm>

namespace runebook {

namespace {

constexpr qint64 kBudgetMs = 8;

} // namespace

FoldedLines::FoldedLines(QPlainTextEdit *view, const ConsoleLines &lines, PlaceOf placeOf)
    : QObject(view), m_view(view), m_lines(lines), m_placeOf(std::move(placeOf))
{
}

void FoldedLines::showWhole(const QTextBlock &head)
{
    QTextBlock block = head;
    while (ConsoleLines::isCut(block) && block.next().isValid()) {
        block = block.next();
        block.setVisible(true);
        // Painting lays out what is hidden, too; what is laid out is not measured again.
        block.setLineCount(std::max(1, block.layout()->lineCount()));
    }
    measureShownLine(QTextCursor(head.next()));
    m_view->viewport()->update();
}

/// Counts the rows of a line that is shown whole, for the scroll bar: from the block of \a from a part now,
/// the rest when there is time.
void FoldedLines::measureShownLine(QTextCursor from)
{
    auto *layout = static_cast<QPlainTextDocumentLayout *>(m_view->document()->documentLayout());
    QElapsedTimer clock;
    clock.start();
    QTextBlock block = from.block();
    bool isLast = false;
    do {
        layout->blockBoundingRect(block);
        isLast = !ConsoleLines::isCut(block) || !block.next().isValid();
        block = block.next();
    } while (!isLast && !clock.hasExpired(kBudgetMs));
    Q_EMIT layout->documentSizeChanged(layout->documentSize());
    if (isLast)
        return;
    from.setPosition(block.position());
    QTimer::singleShot(0, this, [this, from] { measureShownLine(from); });
}

void FoldedLines::copyWhole(const QTextBlock &head) const
{
    const QTextBlock last = ConsoleLines::last(head);
    QGuiApplication::clipboard()->setText(
        m_lines.textBetween(head.position(), last.position() + last.length() - 1));
}

FoldedLines::Fold FoldedLines::foldOf(const QTextBlock &head) const
{
    qsizetype hidden = 0;
    for (QTextBlock block = head.next(); block.isValid() && !block.isVisible(); block = block.next())
        hidden += block.length() - 1;
    Fold fold;
    fold.text = tr("… %1 more characters").arg(m_view->locale().toString(hidden));
    const QFontMetrics metrics = m_view->fontMetrics();
    const int gap = metrics.horizontalAdvance(u'm');
    const QRect lines = m_placeOf(head).toAlignedRect();
    fold.copy =
        QRect(m_view->viewport()->width() - gap - metrics.horizontalAdvance(tr("Copy")),
              lines.bottom() - metrics.height(), metrics.horizontalAdvance(tr("Copy")), metrics.height());
    const int show = metrics.horizontalAdvance(tr("Show"));
    fold.show = fold.copy.translated(-gap - show, 0);
    fold.show.setWidth(show);
    const int text = metrics.horizontalAdvance(fold.text);
    fold.label = fold.show.translated(-gap - text, 0);
    fold.label.setWidth(text);
    return fold;
}

QTextBlock FoldedLines::lineAt(const QPoint &position) const
{
    const QTextBlock block = m_view->cursorForPosition(position).block();
    return ConsoleLines::isFolded(block) ? block : QTextBlock();
}

bool FoldedLines::isOnCommand(const QPoint &position) const
{
    const QTextBlock head = lineAt(position);
    if (!head.isValid())
        return false;
    const Fold fold = foldOf(head);
    return QRect(fold.show.topLeft(), fold.copy.bottomRight()).contains(position);
}

void FoldedLines::paint(QPainter &painter, const QTextBlock &first) const
{
    for (QTextBlock block = first; block.isValid(); block = block.next()) {
        if (!block.isVisible())
            continue;
        const QRectF place = m_placeOf(block);
        if (place.top() > m_view->viewport()->height())
            break;
        if (!ConsoleLines::isFolded(block))
            continue;
        const Fold fold = foldOf(block);
        painter.fillRect(QRect(fold.label.topLeft(), fold.copy.bottomRight()).adjusted(-6, 0, 6, 0),
                         m_view->palette().color(QPalette::AlternateBase));
        painter.setPen(m_view->palette().color(QPalette::Text));
        painter.drawText(fold.label, Qt::AlignVCenter, fold.text);
        painter.setPen(m_view->palette().color(QPalette::Link));
        painter.drawText(fold.show, Qt::AlignVCenter, tr("Show"));
        painter.drawText(fold.copy, Qt::AlignVCenter, tr("Copy"));
    }
}

bool FoldedLines::click(const QPoint &position)
{
    const QTextBlock head = lineAt(position);
    if (!head.isValid())
        return false;
    const Fold fold = foldOf(head);
    if (fold.show.contains(position))
        showWhole(head);
    else if (fold.copy.contains(position))
        copyWhole(head);
    else
        return false;
    return true;
}

} // namespace runebook
