#include "codeeditor/BraceMarks.h"

#include "codeeditor/BraceMatching.h"
#include "codeeditor/VXCodeTextStorage.h"

#include <QPlainTextEdit>
#include <QTextBlock>

namespace runebook {

BraceMarks::BraceMarks(QPlainTextEdit *view, VXCodeTextStorage *storage)
    : QObject(view), m_view(view), m_storage(storage)
{
    connect(storage, &QTextDocument::contentsChanged, this, &BraceMarks::update);
    // An undo moves the caret with the text, then puts it where it was before, and tells nobody.
    const auto markAgain = [this] {
        if (selection() != m_marked)
            update();
    };
    connect(storage, &QTextDocument::contentsChanged, this, markAgain, Qt::QueuedConnection);
}

TextRange BraceMarks::selection() const
{
    const QTextCursor cursor = m_view->textCursor();
    return {cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart()};
}

std::optional<TextRange> BraceMarks::partnerOf(int index) const
{
    return partnerWithin(index, {0, m_storage->length()});
}

/// The text is read piece by piece.
std::optional<TextRange> BraceMarks::partnerWithin(int index, TextRange searched) const
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

void BraceMarks::update()
{
    constexpr int kMarkedWithin = 50'000; // characters from the caret: it moves often
    const TextRange caret = m_marked = selection();
    const TextRange near =
        TextRange {std::max(0, caret.location - kMarkedWithin), 2 * kMarkedWithin}.clampedTo(
            m_storage->length());
    for (const int index : {caret.location - 1, caret.location}) {
        if (caret.length > 0 || !near.contains(index))
            continue;
        if (const auto partner = partnerWithin(index, near)) {
            mark(index, partner->location);
            return;
        }
    }
    if (!m_view->extraSelections().isEmpty())
        m_view->setExtraSelections({});
}

void BraceMarks::mark(int first, int second)
{
    QColor ground = m_view->palette().color(QPalette::Highlight);
    ground.setAlphaF(0.28F);
    QList<QTextEdit::ExtraSelection> marks;
    for (const int place : {first, second}) {
        QTextEdit::ExtraSelection one;
        one.cursor = QTextCursor(m_storage);
        one.cursor.setPosition(place);
        one.cursor.setPosition(place + 1, QTextCursor::KeepAnchor);
        one.format.setBackground(ground);
        marks.append(one);
    }
    m_view->setExtraSelections(marks);
}

} // namespace runebook
