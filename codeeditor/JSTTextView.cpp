#include "codeeditor/JSTTextView.h"

#include "codeeditor/BraceMarks.h"
#include "codeeditor/BraceMatching.h"
#include "codeeditor/CodeCompleter.h"
#include "codeeditor/CodeLayout.h"
#include "codeeditor/EditGroup.h"
#include "codeeditor/FindIndicator.h"
#include "codeeditor/JSTTextViewDelegate.h"
#include "codeeditor/LineEditing.h"
#include "codeeditor/RtfWriter.h"
#include "codeeditor/VXCodeTextStorage.h"
#include "codeeditor/VXLineNumberView.h"

#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QTextBlock>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

constexpr int kLineNumberLeftMargin = 12;

} // namespace

JSTTextView::JSTTextView(QWidget *parent)
    : QPlainTextEdit(parent),
      m_storage(new VXCodeTextStorage(document(), this)),
      m_lines(*this),
      m_words(*this),
      m_pairs(*this)
{
    setDocument(m_storage);
    setLineWrapMode(QPlainTextEdit::WidgetWidth);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setAccessibleName(tr("Code"));
    connect(this, &QPlainTextEdit::cursorPositionChanged, this, &JSTTextView::textViewDidChangeSelection);
    connect(this, &QPlainTextEdit::selectionChanged, this, &JSTTextView::textViewDidChangeSelection);
    connect(this, &QPlainTextEdit::textChanged, this, [this] {
        if (JSTTextViewDelegate *delegate = delegateInterface())
            delegate->textDidChange(this);
    });
    connect(this, &QPlainTextEdit::updateRequest, this, [this](const QRect &, int dy) {
        if (dy != 0)
            dropRestOfScrolling();
    });
    m_completer = new CodeCompleter(this, *this);
    m_completer->setSource({[this](TextRange range) {
                                JSTTextViewDelegate *delegate = delegateInterface();
                                return delegate ? delegate->textViewCompletionsToShow(this, range)
                                                : CompletionList();
                            },
                            [this](TextRange range, Completion &one) {
                                if (JSTTextViewDelegate *delegate = delegateInterface())
                                    delegate->textViewDescribeCompletion(this, range, one);
                            }});
    m_braces = new BraceMarks(this, m_storage);
}

JSTTextView::~JSTTextView()
{
    // The view's last changes while it is taken down are nobody's business.
    disconnect(this, nullptr, this, nullptr);
}

QString JSTTextView::string() const
{
    return m_storage->string();
}

void JSTTextView::setString(const QString &text)
{
    setPlainText(text);
}

TextRange JSTTextView::selectedRange() const
{
    const QTextCursor cursor = textCursor();
    return {cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart()};
}

void JSTTextView::setSelectedRange(TextRange range)
{
    const TextRange clamped = range.clampedTo(m_storage->length());
    QTextCursor cursor = textCursor();
    cursor.setPosition(clamped.location);
    cursor.setPosition(clamped.end(), QTextCursor::KeepAnchor);
    setTextCursor(cursor);
}

bool JSTTextView::shouldChangeTextInRangeReplacementString(TextRange range, const QString &replacement)
{
    if (isReadOnly())
        return false;
    JSTTextViewDelegate *delegate = delegateInterface();
    return !delegate || delegate->textViewShouldChangeTextInRangeReplacementString(this, range, replacement);
}

VXCodeTextStorage *JSTTextView::textStorage() const
{
    return m_storage;
}

void JSTTextView::setDelegate(QObject *delegate)
{
    m_delegate = delegate;
}

JSTTextViewDelegate *JSTTextView::delegateInterface() const
{
    return qobject_cast<JSTTextViewDelegate *>(m_delegate.data());
}

bool JSTTextView::isInStringOrComment(int index) const
{
    JSTTextViewDelegate *delegate = delegateInterface();
    return delegate && delegate->textViewIsInStringOrComment(index);
}

void JSTTextView::setHeadIndent(qreal headIndent)
{
    if (headIndent == m_headIndent)
        return;
    m_headIndent = headIndent;
    Q_EMIT headIndentChanged(headIndent);
}

// ---- line numbers

void JSTTextView::setupLineNumberview()
{
    if (!m_lineNumberView) {
        m_lineNumberView = new VXLineNumberView(this);
        connect(m_lineNumberView, &VXLineNumberView::ruleThicknessChanged, this,
                &JSTTextView::placeLineNumberView);
    }
    m_showsLineNumbers = true;
    m_lineNumberView->setBackgroundColor(palette().color(QPalette::Base));
    m_lineNumberView->setFont(font());
    m_lineNumberView->setLeftMargin(kLineNumberLeftMargin);
    m_lineNumberView->show();
    placeLineNumberView();
}

void JSTTextView::disableLineNumbers()
{
    m_showsLineNumbers = false;
    if (m_lineNumberView)
        m_lineNumberView->hide();
    placeLineNumberView();
}

void JSTTextView::placeLineNumberView()
{
    const int thickness = m_showsLineNumbers ? qCeil(m_lineNumberView->ruleThickness()) : 0;
    setViewportMargins(thickness, 0, 0, 0);
    if (m_showsLineNumbers) {
        const QRect inside = contentsRect();
        const QRect view = viewport()->geometry();
        m_lineNumberView->setGeometry(inside.left(), view.top(), thickness, view.height());
    }
}

void JSTTextView::resizeEvent(QResizeEvent *event)
{
    m_storage->codeLayout().setWrapWidth(lineWrapMode() == WidgetWidth ? viewport()->width() : 0);
    QPlainTextEdit::resizeEvent(event);
    placeLineNumberView();
    m_completer->end();
}

/// The base shifts what is painted by whole pixels and carries the rest on from scroll to scroll, as it
/// thinks that rows end between pixels (Qt 6.4). Letters and grounds would stand by the way that led to a
/// place, up to a pixel apart.
void JSTTextView::dropRestOfScrolling()
{
    const QPointF carried = contentOffset();
    // Where nothing is painted, the base goes to its place without a rest.
    const bool wasDisabled = viewport()->testAttribute(Qt::WA_UpdatesDisabled);
    viewport()->setAttribute(Qt::WA_UpdatesDisabled);
    QPlainTextEdit::scrollContentsBy(1, 0);
    viewport()->setAttribute(Qt::WA_UpdatesDisabled, wasDisabled);
    if (contentOffset() == carried)
        return;
    viewport()->update();
    Q_EMIT updateRequest(viewport()->rect(), 0);
}

/// Where bars or line numbers came with the layout for a size that the viewport got unseen, the framework
/// forgets to tell it of the size that they left it (Qt 6.4).
void JSTTextView::showEvent(QShowEvent *event)
{
    QPlainTextEdit::showEvent(event);
    const QSize size = viewport()->size();
    if (lineWrapMode() != WidgetWidth || m_storage->codeLayout().wrapWidth() == size.width())
        return;
    QResizeEvent forgotten(size, QSize());
    resizeEvent(&forgotten);
}

void JSTTextView::changeEvent(QEvent *event)
{
    QPlainTextEdit::changeEvent(event);
    if (!m_lineNumberView)
        return;
    if (event->type() == QEvent::FontChange)
        m_lineNumberView->setFont(font());
    else if (event->type() == QEvent::PaletteChange)
        m_lineNumberView->setBackgroundColor(palette().color(QPalette::Base));
}

// ---- selection and braces

void JSTTextView::textViewDidChangeSelection()
{
    const TextRange selection = selectedRange();
    const TextRange old = std::exchange(m_lastSelection, selection);
    m_braces->update();
    if (old == selection)
        return;
    if (JSTTextViewDelegate *delegate = delegateInterface())
        delegate->textViewDidChangeSelection(this);
    if (m_isTyping && selection.length == 0 && old.location == selection.location - 1)
        flashOpeningBrace(old.location);
}

void JSTTextView::flashOpeningBrace(int closingBrace)
{
    if (!TE_isClosingBrace(m_storage->characterAt(closingBrace).unicode()))
        return;
    if (const auto match = m_braces->partnerOf(closingBrace))
        showFindIndicatorForRange(*match);
}

void JSTTextView::selectBracePair()
{
    const TextRange selection = selectedRange();
    if (selection.length != 1)
        return;
    const auto match = m_braces->partnerOf(selection.location);
    if (!match)
        return;
    // The caret goes to the end where the match is, so that keeping it visible shows the match.
    const TextRange both = selection.united(*match);
    const bool matchIsLast = match->location > selection.location;
    QTextCursor cursor = textCursor();
    cursor.setPosition(matchIsLast ? both.location : both.end());
    cursor.setPosition(matchIsLast ? both.end() : both.location, QTextCursor::KeepAnchor);
    setTextCursor(cursor);
    ensureCursorVisible();
}

void JSTTextView::showFindIndicatorForRange(TextRange range)
{
    const TextRange shown = range.clampedTo(m_storage->length());
    QTextCursor cursor(m_storage);
    cursor.setPosition(shown.location);
    const QRect first = cursorRect(cursor);
    cursor.setPosition(shown.end());
    const QRect last = cursorRect(cursor);
    const QRect box(first.topLeft(), QPoint(std::max(last.left(), first.left() + 4), first.bottom()));
    if (viewport()->rect().intersects(box)) {
        const QString text = m_storage->substringWithRange(shown);
        new FindIndicator(viewport(), box, text, font()); // owned by the viewport, deletes itself
    }
    Q_EMIT findIndicatorShown(shown);
}

void JSTTextView::mouseDoubleClickEvent(QMouseEvent *event)
{
    QPlainTextEdit::mouseDoubleClickEvent(event); // begins a drag by words
    if (event->button() != Qt::LeftButton)
        return;
    // The base moves the caret into an empty line and tells nobody.
    m_completer->end();
    textViewDidChangeSelection();
    m_doubleClicked = true;
    // The position between two characters; the one under the mouse stands before it in its right half.
    const QPoint point = event->position().toPoint();
    QTextCursor cursor = cursorForPosition(point);
    if (!cursor.atBlockStart() && (cursor.atBlockEnd() || cursorRect(cursor).left() > point.x()))
        cursor.movePosition(QTextCursor::PreviousCharacter);
    if (cursor.atBlockEnd())
        return;
    setSelectedRange(m_storage->doubleClickAtIndex(cursor.position()));
}

void JSTTextView::mouseReleaseEvent(QMouseEvent *event)
{
    QPlainTextEdit::mouseReleaseEvent(event);
    if (event->button() == Qt::LeftButton && std::exchange(m_doubleClicked, false))
        selectBracePair();
}

void JSTTextView::focusOutEvent(QFocusEvent *event)
{
    QPlainTextEdit::focusOutEvent(event);
}

// ---- editing actions

void JSTTextView::copy()
{
    QPlainTextEdit::copy(); // takes what createMimeDataFromSelection() makes, as cutting and dragging do
}

QMimeData *JSTTextView::createMimeDataFromSelection() const
{
    const TextRange selection = selectedRange();
    auto *mime = new QMimeData;
    mime->setText(m_storage->substringWithRange(selection));
    mime->setData(u"text/rtf"_s, richTextFormat(*m_storage, selection));
    return mime;
}

/// Not the base's, which crashes where the clipboard of a display belongs to nobody (Qt 6.4).
void JSTTextView::insertFromMimeData(const QMimeData *source)
{
    if (const QString text = source->text(); !text.isEmpty())
        insertText(text);
}

void JSTTextView::insertNewline()
{
    if (!shouldChangeTextInRangeReplacementString(selectedRange(), u"\n"_s))
        return;
    const EditGroup group(textCursor());
    textCursor().insertBlock();
    const QTextBlock ended = m_storage->findBlock(std::max(0, textCursor().position() - 1));
    const QString indentation = indentationAfter(ended.text());
    if (!indentation.isEmpty())
        insertText(indentation);
    ensureCursorVisible();
}

// ---- completions

TextRange JSTTextView::rangeForUserCompletion() const
{
    return m_completer->partialWord();
}

QStringList JSTTextView::completionsForPartialWordRange(TextRange range, int *selectedIndex)
{
    JSTTextViewDelegate *delegate = delegateInterface();
    if (!delegate)
        return {};
    QStringList words =
        delegate->textViewCompletionsForPartialWordRangeIndexOfSelectedItem(this, {}, range, selectedIndex);
    words.removeDuplicates();
    return words;
}

void JSTTextView::complete()
{
    m_completer->complete();
}

// ---- keys

bool JSTTextView::event(QEvent *event)
{
    // Escape dismisses the completions before any shortcut of the window sees it.
    if (event->type() == QEvent::ShortcutOverride && m_completer->isOpen()
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QPlainTextEdit::event(event);
}

void JSTTextView::keyPressEvent(QKeyEvent *event)
{
    if (m_completer->handleKey(*event) || handleEditingKey(event)) {
        event->accept();
        return;
    }
    m_isTyping = true;
    const bool isBackspace = event->key() == Qt::Key_Backspace && event->modifiers() == Qt::NoModifier;
    const bool isDone = isBackspace ? m_pairs.deletePair() || m_lines.deleteIndent()
                                    : event->text().size() == 1 && m_pairs.type(event->text().front());
    if (isDone)
        event->accept();
    else
        QPlainTextEdit::keyPressEvent(event);
    m_isTyping = false;
    if (event->key() != Qt::Key_Shift)
        m_completer->noteTyped(event->text(),
                               event->key() == Qt::Key_Backspace ? CodeCompleter::Typing::Erases
                                                                 : CodeCompleter::Typing::Adds);
}

void JSTTextView::inputMethodEvent(QInputMethodEvent *event)
{
    const QString committed = event->commitString(); // a text is typed, whatever wrote it
    m_isTyping = !committed.isEmpty();
    QPlainTextEdit::inputMethodEvent(event);
    m_isTyping = false;
    m_completer->noteTyped(event->preeditString().isEmpty() ? committed : QString(),
                           CodeCompleter::Typing::Adds);
}

bool JSTTextView::handleEditingKey(QKeyEvent *event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const bool plain = modifiers == Qt::NoModifier;
    const bool shifted = modifiers == Qt::ShiftModifier;
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!plain && !shifted) // with Shift too: a line separator is nothing Python knows
            return false;
        m_completer->end();
        insertNewline();
        return true;
    case Qt::Key_Space:
        if (modifiers != Qt::ControlModifier)
            return false;
        complete();
        return true;
    case Qt::Key_Tab:
        if (!plain)
            return false;
        if (!m_lines.selectionSpansLines())
            return m_lines.insertIndent();
        shiftSelectedLinesRight();
        return true;
    case Qt::Key_Backtab:
        shiftSelectedLinesLeft();
        return true;
    default:
        if (!m_words.handleKey(*event))
            return false;
        m_completer->end();
        return true;
    }
}

// ---- the line at the wrap column

void JSTTextView::setWrapColumn(int column)
{
    m_wrapColumn = std::max(0, column);
    viewport()->update();
}

void JSTTextView::paintEvent(QPaintEvent *event)
{
    if (m_wrapColumn > 0) {
        const qreal letter = QFontMetricsF(font()).horizontalAdvance(u'0');
        const int x = qRound(contentOffset().x() + document()->documentMargin() + letter * m_wrapColumn);
        QColor line = palette().color(QPalette::Text);
        line.setAlphaF(0.12F);
        QPainter(viewport()).fillRect(QRect(x, event->rect().top(), 1, event->rect().height()), line);
    }
    QPlainTextEdit::paintEvent(event);
}
