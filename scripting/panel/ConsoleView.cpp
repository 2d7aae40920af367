#include "scripting/panel/ConsoleView.h"

#include "codeeditor/CodeColors.h"
#include "platform/Appearance.h"
#include "platform/PlainLabel.h"
#include "platform/PlainText.h"
#include "scripting/panel/ConsoleFormats.h"
#include "scripting/panel/FoldedLines.h"
#include "scripting/panel/PanelSettings.h"

#include <QContextMenuEvent>
#include <QElapsedTimer>
#include <QHelpEvent>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QTextBlock>
#include <QToolTip>
#include <QWheelEvent>
#include <algorithm>
#include <malloc.h>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kFrameMs = 16;
constexpr qint64 kBudgetMs = 8;
constexpr qint64 kNoBudget = std::numeric_limits<qint64>::max();
/// Units of a line that are laid out together.
constexpr int kLongestBlock = 4096;
/// Units after which memory is given back.
constexpr qsizetype kMuchOutput = 8'000'000;
constexpr int kInsetWidth = 15;
constexpr int kInsetHeight = 7;

bool endsBlock(QChar character)
{
    return character == u'\n' || character == u'\r' || character == QChar::ParagraphSeparator;
}

} // namespace

ConsoleView::ConsoleView(QWidget *parent)
    : QPlainTextEdit(parent),
      m_storage(new ConsoleTextStorage(*this)),
      m_droppedNote(plainLabel({}, this)),
      m_textLines(document()),
      m_links(this,
              [this](const QTextBlock &block) {
                  return blockBoundingGeometry(block).translated(contentOffset());
              }),
      m_marks(this),
      m_folds(new FoldedLines(this, m_textLines, [this](const QTextBlock &block) {
          return blockBoundingGeometry(block).translated(contentOffset());
      }))
{
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setLineWrapMode(WidgetWidth);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setAccessibleName(tr("Console"));
    // The document's own margin is the same on all sides.
    document()->setDocumentMargin(kInsetHeight);
    setViewportMargins(kInsetWidth - kInsetHeight, 0, kInsetWidth - kInsetHeight, 0);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    viewport()->setMouseTracking(true);
    m_droppedNote->setForegroundRole(QPalette::PlaceholderText);
    m_droppedNote->setIndent(kInsetWidth);
    m_droppedNote->hide();

    m_frame.setSingleShot(true);
    m_frame.setInterval(kFrameMs);
    connect(&m_frame, &QTimer::timeout, this, &ConsoleView::showPending);
    Settings::kConsoleLineLimit.registerFallback();
    Settings::kConsoleLineLimit.onChange(this, [this] { readLineLimit(); });
    readLineLimit();
}

ConsoleView::~ConsoleView() = default;

// Writing

void ConsoleView::append(const QString &text, Kind kind)
{
    const QString shown = m_escapes.filtered(text);
    noteDropped(m_pending.append(kind == Kind::Error ? cleanupErrorMessage(shown) : shown, m_limits));
    m_unitsWritten += text.size();
    showSoon();
}

void ConsoleView::continueWrite(const QString &text)
{
    noteDropped(m_pending.continueWrite(m_escapes.filtered(text), m_limits));
    m_unitsWritten += text.size();
    showSoon();
}

void ConsoleView::showSoon()
{
    if (hasPending() && !m_frame.isActive())
        m_frame.start();
}

void ConsoleView::showPending()
{
    showPendingFor(kBudgetMs);
}

void ConsoleView::showPendingFor(qint64 milliseconds)
{
    if (!hasPending())
        return;
    QScrollBar *bar = verticalScrollBar();
    const bool wasAtEnd = bar->value() >= bar->maximum();
    const QTextBlock firstShown = firstVisibleBlock();
    const int lineInBlock = bar->value() - firstShown.firstLineNumber();
    const int firstNumber = firstShown.blockNumber();
    QTextCursor kept = textCursor();
    const int selectionEnd = kept.selectionEnd();
    const bool endsAtEnd = kept.hasSelection() && selectionEnd == document()->characterCount() - 1;
    const int selectionStart = kept.selectionStart();

    QElapsedTimer clock;
    clock.start();
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    cursor.movePosition(QTextCursor::End);
    do {
        insert(cursor, m_pending.take());
    } while (hasPending() && clock.elapsed() < milliseconds);
    if (endsAtEnd) {
        // What is added behind a selection does not belong to it.
        kept.setPosition(selectionStart);
        kept.setPosition(selectionEnd, QTextCursor::KeepAnchor);
    }
    const int dropped = dropOldest();
    cursor.endEditBlock();
    if (endsAtEnd)
        setTextCursor(kept);
    if (wasAtEnd) {
        bar->setValue(bar->maximum());
    } else {
        const QTextBlock block = document()->findBlockByNumber(std::max(0, firstNumber - dropped));
        bar->setValue(block.firstLineNumber() + (firstNumber >= dropped ? lineInBlock : 0));
    }
    if (hasPending())
        m_frame.start();
    else
        giveBackMemory();
}

/// Much output leaves room in the heap between what is kept, which nobody needs now.
void ConsoleView::giveBackMemory()
{
    if (m_unitsWritten < kMuchOutput)
        return;
    m_unitsWritten = 0;
    ::malloc_trim(0);
}

void ConsoleView::insert(QTextCursor &cursor, const ConsoleText &text)
{
    struct Mark {
        UnitRange range;
        const FileLink *link;
    };
    QList<Mark> marks;
    if (m_marks.marksErrors()) {
        for (const UnitRange &range : text.emphasised)
            marks << Mark {range, nullptr};
    }
    for (const FileLink &link : text.links)
        marks << Mark {link.range, &link};
    std::ranges::sort(marks, {}, [](const Mark &mark) { return mark.range.location; });

    const QStringView all(text.text);
    qsizetype place = 0;
    for (const Mark &mark : std::as_const(marks)) {
        if (mark.range.location < place)
            continue; // the name of an error in the text of a link
        insertRun(cursor, all.sliced(place, mark.range.location - place), {});
        insertRun(cursor, all.sliced(mark.range.location, mark.range.length),
                  mark.link ? m_marks.linkFormat(*mark.link) : m_marks.errorFormat());
        place = mark.range.location + mark.range.length;
    }
    insertRun(cursor, all.sliced(place), {});
    m_marks.follow(text.text);
}

/// Inserts as much at once as the document ends its blocks by itself.
void ConsoleView::insertRun(QTextCursor &cursor, QStringView text, const QTextCharFormat &format)
{
    using End = ConsoleLines::End;
    qsizetype begin = 0;
    qsizetype column = cursor.positionInBlock();
    const auto flush = [&](qsizetype end) {
        const QTextBlock block = cursor.block();
        if (end > begin)
            cursor.insertText(text.sliced(begin, end - begin).toString(), format);
        if (!block.isVisible())
            ConsoleLines::hide(block); // its layout counts its lines again
        begin = end;
    };
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar character = text[i];
        const bool isPair = character == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n';
        if (character == u'\r' && !isPair) {
            flush(i);
            begin = i + 1;
            m_isReturned = true;
            continue;
        }
        if (std::exchange(m_isReturned, false) && !isPair && character != u'\n') {
            ConsoleLines::beginAnew(cursor);
            column = 0;
        }
        if (character == u'\n') {
            ++m_lines;
            column = 0;
        } else if (endsBlock(character)) {
            flush(i);
            m_textLines.endBlock(cursor, isPair ? End::ReturnLineFeed : End::ParagraphSeparator);
            ++m_lines;
            i += isPair ? 1 : 0;
            begin = i + 1;
            column = 0;
        } else if (++column > kLongestBlock && !character.isLowSurrogate()) {
            flush(i);
            m_textLines.endBlock(cursor, End::Cut);
            column = 1;
        }
    }
    flush(text.size());
}

/// Removes what is too much from the top; answers how many blocks that were.
int ConsoleView::dropOldest()
{
    qsizetype units = document()->characterCount();
    QTextBlock block = document()->begin();
    int blocks = 0;
    const qsizetype linesBefore = m_lines;
    while (block.next().isValid() && (m_lines > m_limits.lines || units > m_limits.units)) {
        if (!ConsoleLines::isCut(block))
            --m_lines;
        units -= block.length();
        block = block.next();
        ++blocks;
    }
    if (blocks > 0) {
        QTextCursor top(document());
        const int state = block.userState();
        top.setPosition(block.position(), QTextCursor::KeepAnchor);
        top.removeSelectedText();
        document()->begin().setUserState(state);
        document()->begin().setVisible(true);
        noteDropped(linesBefore - m_lines);
    }
    return blocks;
}

void ConsoleView::noteDropped(qsizetype lines)
{
    if (lines == 0)
        return;
    m_dropped += lines;
    m_droppedNote->setText(tr("The first %1 lines were dropped.").arg(locale().toString(m_dropped)));
    if (m_droppedNote->isHidden()) {
        m_droppedNote->show();
        setViewportMargins(kInsetWidth - kInsetHeight, m_droppedNote->sizeHint().height(),
                           kInsetWidth - kInsetHeight, 0);
    }
    placeDroppedNote();
}

void ConsoleView::placeDroppedNote()
{
    m_droppedNote->setGeometry(frameWidth(), frameWidth(), viewport()->width() + 2 * kInsetWidth,
                               m_droppedNote->sizeHint().height());
}

void ConsoleView::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    placeDroppedNote();
}

void ConsoleView::clearText()
{
    m_pending.clear();
    clear();
    m_lines = 0;
    m_dropped = 0;
    m_isReturned = false;
    m_textLines.forget();
    m_escapes = {};
    m_marks.forget();
    if (!m_droppedNote->isHidden()) {
        m_droppedNote->hide();
        setViewportMargins(kInsetWidth - kInsetHeight, 0, kInsetWidth - kInsetHeight, 0);
    }
}

void ConsoleView::setString(const QString &text)
{
    clearText();
    append(text, Kind::Output);
}

void ConsoleView::setLineLimit(int lines)
{
    m_limits.lines = std::max(1, lines);
    showPendingFor(kNoBudget);
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    dropOldest();
    cursor.endEditBlock();
}

void ConsoleView::readLineLimit()
{
    setLineLimit(Settings::kConsoleLineLimit.value());
}

// Reading

QString ConsoleView::string()
{
    showPendingFor(kNoBudget);
    return m_textLines.textBetween(0, document()->characterCount() - 1);
}

int ConsoleView::length()
{
    showPendingFor(kNoBudget);
    return m_textLines.indexOfPosition(document()->characterCount() - 1);
}

TextRange ConsoleView::selectedRange()
{
    const QTextCursor cursor = textCursor();
    const int start = m_textLines.indexOfPosition(cursor.selectionStart());
    return {start, m_textLines.indexOfPosition(cursor.selectionEnd()) - start};
}

void ConsoleView::setSelectedRange(TextRange range)
{
    const TextRange inside = range.clampedTo(length());
    QTextCursor cursor = textCursor();
    cursor.setPosition(m_textLines.positionOfIndex(inside.location));
    cursor.setPosition(m_textLines.positionOfIndex(inside.end()), QTextCursor::KeepAnchor);
    setTextCursor(cursor);
}

QVariantMap ConsoleView::attributesAtIndex(int index, TextRange *effectiveRange)
{
    if (index < 0 || index >= length())
        return {};
    const int position = m_textLines.positionOfIndex(index);
    const QTextBlock block = document()->findBlock(position);
    QTextCharFormat format;
    TextRange range {index, 1};
    for (auto piece = block.begin(); !piece.atEnd(); ++piece) {
        const QTextFragment fragment = piece.fragment();
        if (!fragment.contains(position))
            continue;
        format = fragment.charFormat();
        range = {m_textLines.indexOfPosition(fragment.position()), fragment.length()};
    }
    if (effectiveRange)
        *effectiveRange = range;
    return console::attributesOf(format, *this);
}

QVariantMap ConsoleTextStorage::attributesAtIndexEffectiveRange(int index, TextRange *effectiveRange)
{
    return m_view.attributesAtIndex(index, effectiveRange);
}

QMimeData *ConsoleView::createMimeDataFromSelection() const
{
    const QTextCursor cursor = textCursor();
    auto *mime = new QMimeData;
    mime->setText(m_textLines.textBetween(cursor.selectionStart(), cursor.selectionEnd()));
    return mime;
}

// Looks

void ConsoleView::setEmphasisFont(const std::optional<QFont> &font)
{
    if (m_marks.setFont(font))
        m_marks.restyle();
}

void ConsoleView::changeEvent(QEvent *event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        m_marks.restyle();
}

// Links and folded lines

bool ConsoleView::selectLink(bool forward)
{
    return m_links.select(forward ? ConsoleLinks::Way::Forward : ConsoleLinks::Way::Backward);
}

bool ConsoleView::activateLink()
{
    const std::optional<FileLink> link = m_links.atCaret();
    if (link)
        follow(*link);
    return link.has_value();
}

void ConsoleView::paintEvent(QPaintEvent *event)
{
    QPlainTextEdit::paintEvent(event);
    QPainter painter(viewport());
    painter.setFont(font());
    m_folds->paint(painter, firstVisibleBlock());
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
    const QPoint position = event->position().toPoint();
    const bool isOnHand = m_folds->isOnCommand(position) || m_links.at(position).has_value();
    viewport()->setCursor(isOnHand ? Qt::PointingHandCursor : Qt::IBeamCursor);
}

void ConsoleView::mousePressEvent(QMouseEvent *event)
{
    const QPoint position = event->position().toPoint();
    const bool isLeft = event->button() == Qt::LeftButton;
    if (isLeft && m_folds->click(position))
        return;
    if (isLeft)
        m_links.press(position);
    else
        m_links.forgetPress();
    QPlainTextEdit::mousePressEvent(event);
}

void ConsoleView::mouseReleaseEvent(QMouseEvent *event)
{
    QPlainTextEdit::mouseReleaseEvent(event);
    const std::optional<FileLink> clicked = m_links.release(event->position().toPoint());
    if (clicked && event->button() == Qt::LeftButton)
        follow(*clicked);
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
    if (const std::optional<FileLink> link = m_links.at(help->pos()))
        QToolTip::showText(help->globalPos(), escapedToolTip(link->path), this);
    else
        QToolTip::hideText();
    return true;
}

void ConsoleView::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu menu(this);
    if (const std::optional<FileLink> link = m_links.at(event->pos())) {
        menu.addAction(tr("Open Link"), this, [this, link] { follow(*link); });
        menu.addSeparator();
    }
    const QTextBlock line = m_folds->lineAt(event->pos());
    if (line.isValid()) {
        menu.addAction(tr("Show Whole Line"), this, [this, line] { m_folds->showWhole(line); });
        menu.addAction(tr("Copy Whole Line"), this, [this, line] { m_folds->copyWhole(line); });
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
