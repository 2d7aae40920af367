// Pairs in the code view: brackets and quotes that close themselves, and braces that belong together.
#include "codeeditor/JSTTextView.h"

#include "codeeditor/BraceMatching.h"
#include "codeeditor/EditGroup.h"
#include "codeeditor/JSTDocument.h"
#include "codeeditor/PairTyping.h"
#include "codeeditor/VXCodeTextStorage.h"

#include <QPaintEvent>
#include <QPainter>
#include <QTextBlock>

using namespace runebook;

namespace {

constexpr int kMarkedWithin = 50'000; // characters from the caret: it moves often

} // namespace

// ---- typing

/// A closer that stands there by itself is typed over; an opener brings its closer along. False: the
/// character is typed as any other.
bool JSTTextView::typePair(QChar typed)
{
    const TextRange caret = selectedRange();
    if (!m_closesBrackets || isReadOnly() || caret.length > 0)
        return false;
    forgetClosers();
    if (!m_closers.isEmpty() && m_closers.last().selectionStart() == caret.location
        && m_storage->characterAt(caret.location) == typed) {
        m_closers.removeLast();
        moveCursor(QTextCursor::NextCharacter);
        return true;
    }
    const QTextBlock block = m_storage->findBlock(caret.location);
    const auto *coloured = qobject_cast<const JSTDocument *>(m_delegate.data());
    const bool isInside = coloured && caret.location > block.position()
        && coloured->isInStringOrComment(caret.location - 1)
        && (coloured->isInStringOrComment(caret.location)
            || caret.location + 1 >= block.position() + block.length());
    if (isInside || !closesItself(block.text(), caret.location - block.position(), typed)
        || !shouldChangeTextInRangeReplacementString(caret, typed))
        return false;
    QTextCursor pair = textCursor();
    {
        const EditGroup group(pair);
        pair.insertText(QString(typed) + closerOf(typed));
    }
    setSelectedRange({caret.location + 1, 0});
    QTextCursor closer(m_storage);
    closer.setPosition(caret.location + 2);
    closer.setPosition(caret.location + 1, QTextCursor::KeepAnchor);
    closer.setKeepPositionOnInsert(false);
    m_closers.append(closer);
    ensureCursorVisible();
    return true;
}

/// Deletes both halves of a pair that closed itself and is still empty.
bool JSTTextView::deletePair()
{
    forgetClosers();
    const TextRange caret = selectedRange();
    if (caret.length > 0 || m_closers.isEmpty() || m_closers.last().selectionStart() != caret.location
        || caret.location == 0
        || closerOf(m_storage->characterAt(caret.location - 1)) != m_storage->characterAt(caret.location))
        return false;
    m_closers.removeLast();
    deleteRange({caret.location - 1, 2});
    return true;
}

/// Closers count as long as the caret stays in front of them in their line.
void JSTTextView::forgetClosers()
{
    const QTextCursor caret = textCursor();
    while (!m_closers.isEmpty()) {
        const QTextCursor &closer = m_closers.last();
        const bool isThere = closer.selectionEnd() - closer.selectionStart() == 1
            && closer.selectionStart() >= caret.position() && closer.block() == caret.block();
        if (isThere)
            return;
        m_closers.removeLast();
    }
}

// ---- braces

TextRange JSTTextView::wholeText() const
{
    return {0, m_storage->length()};
}

std::optional<TextRange> JSTTextView::matchingBrace(int index, TextRange searched) const
{
    QTextBlock block; // the one that was read last: pieces of a long one follow each other
    QString text;
    return findMatchingBrace(index, searched, [&, this](TextRange range) {
        QString piece;
        for (int at = range.location; at < range.end(); at = range.location + int(piece.size())) {
            if (!block.isValid() || !block.contains(at)) {
                block = m_storage->findBlock(at);
                text = block.text() + u'\n';
            }
            piece += QStringView(text).sliced(at - block.position()).left(range.end() - at);
        }
        return piece;
    });
}

void JSTTextView::followBraces()
{
    connect(document(), &QTextDocument::contentsChanged, this, &JSTTextView::markBraces);
    // An undo moves the caret with the text, then puts it where it was before, and tells nobody.
    const auto markAgain = [this] {
        if (selectedRange() != m_markedSelection)
            markBraces();
    };
    connect(document(), &QTextDocument::contentsChanged, this, markAgain, Qt::QueuedConnection);
}

/// Colours the brace at the caret, the one in front of it first, and its partner.
void JSTTextView::markBraces()
{
    const TextRange caret = m_markedSelection = selectedRange();
    const TextRange near =
        TextRange {std::max(0, caret.location - kMarkedWithin), 2 * kMarkedWithin}.clampedTo(
            m_storage->length());
    QList<QTextEdit::ExtraSelection> marks;
    for (const int index : {caret.location - 1, caret.location}) {
        if (caret.length > 0 || !near.contains(index) || !marks.isEmpty())
            continue;
        const auto match = matchingBrace(index, near);
        if (!match)
            continue;
        for (const int place : {index, match->location}) {
            QTextEdit::ExtraSelection mark;
            mark.cursor = QTextCursor(m_storage);
            mark.cursor.setPosition(place);
            mark.cursor.setPosition(place + 1, QTextCursor::KeepAnchor);
            QColor ground = palette().color(QPalette::Highlight);
            ground.setAlphaF(0.28F);
            mark.format.setBackground(ground);
            marks.append(mark);
        }
    }
    if (!marks.isEmpty() || !extraSelections().isEmpty())
        setExtraSelections(marks);
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
