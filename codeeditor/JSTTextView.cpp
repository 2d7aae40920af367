#include "codeeditor/JSTTextView.h"

#include "codeeditor/BraceMatching.h"
#include "codeeditor/CodeLayout.h"
#include "codeeditor/CompletionSession.h"
#include "codeeditor/EditGroup.h"
#include "codeeditor/FindIndicator.h"
#include "codeeditor/JSTTextViewDelegate.h"
#include "codeeditor/LineEditing.h"
#include "codeeditor/RtfWriter.h"
#include "codeeditor/VXCodeTextStorage.h"
#include "codeeditor/VXLineNumberView.h"

#include <QMimeData>
#include <QTextBlock>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

constexpr int kLineNumberLeftMargin = 12;

} // namespace

JSTTextView::JSTTextView(QWidget *parent)
    : QPlainTextEdit(parent), m_storage(new VXCodeTextStorage(document(), this))
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
    setUpCompletions();
    followBraces();
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

void JSTTextView::insertText(const QString &text)
{
    if (!shouldChangeTextInRangeReplacementString(selectedRange(), text))
        return;
    textCursor().insertText(text);
    ensureCursorVisible();
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
    m_completions->end();
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
    markBraces();
    if (old == selection)
        return;
    if (JSTTextViewDelegate *delegate = delegateInterface())
        delegate->textViewDidChangeSelection(this);
    if (m_userEvent == UserEvent::KeyDown && selection.length == 0 && old.location == selection.location - 1)
        flashOpeningBrace(old.location);
}

void JSTTextView::flashOpeningBrace(int closingBrace)
{
    if (!TE_isClosingBrace(m_storage->characterAt(closingBrace).unicode()))
        return;
    if (const auto match = matchingBrace(closingBrace, wholeText()))
        showFindIndicatorForRange(*match);
}

void JSTTextView::selectBracePair()
{
    const TextRange selection = selectedRange();
    if (selection.length != 1)
        return;
    const auto match = matchingBrace(selection.location, wholeText());
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
    m_completions->end();
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

void JSTTextView::deleteRange(TextRange range)
{
    if (!shouldChangeTextInRangeReplacementString(range, QString()))
        return;
    QTextCursor cursor = textCursor();
    cursor.setPosition(range.location);
    cursor.setPosition(range.end(), QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    setTextCursor(cursor);
    ensureCursorVisible();
}

void JSTTextView::deleteWordForward()
{
    const TextRange selection = selectedRange();
    if (selection.length > 0) {
        deleteRange(selection);
        return;
    }
    const int caret = selection.location;
    const QTextBlock block = m_storage->findBlock(caret);
    const QString rest = block.text().sliced(caret - block.position());
    const auto spaces = std::find_if(rest.cbegin(), rest.cend(), [](QChar c) { return c != u' '; });
    const int count = int(spaces - rest.cbegin());
    const int end = count > 0 ? caret + count : m_storage->nextWord(caret, VXCodeTextStorage::Way::Forward);
    if (end > caret)
        deleteRange({caret, end - caret});
}

void JSTTextView::deleteWordBackward()
{
    const TextRange selection = selectedRange();
    const int start = selection.length > 0
        ? selection.location
        : m_storage->nextWord(selection.location, VXCodeTextStorage::Way::Backward);
    if (start < selection.end())
        deleteRange({start, selection.end() - start});
}

bool JSTTextView::selectionSpansLines() const
{
    const QTextCursor cursor = textCursor();
    return m_storage->findBlock(cursor.selectionStart()) != m_storage->findBlock(cursor.selectionEnd());
}
