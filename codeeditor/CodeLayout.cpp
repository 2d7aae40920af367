#include "CodeLayout.h"

#include <QTextBlock>
#include <QTextDocument>
#include <QtMath>
#include <utility>

namespace runebook {

namespace {

/// Looking for the place to break a word costs the square of its length; longer paragraphs break anywhere.
constexpr int longestBlockBrokenAtWords = 10'000;

} // namespace

CodeLayout::CodeLayout(QTextDocument *document) : QPlainTextDocumentLayout(document) { }

void CodeLayout::setParagraphStyle(qreal headIndent, qreal paragraphSpacing)
{
    if (headIndent == m_headIndent && paragraphSpacing == m_paragraphSpacing)
        return;
    m_headIndent = headIndent;
    m_paragraphSpacing = paragraphSpacing;
    m_blockCount = 0; // a text of one block is no exception
    requestUpdate();
    documentChanged(0, 0, document()->characterCount());
}

void CodeLayout::documentChanged(int from, int charsRemoved, int charsAdded)
{
    Q_UNUSED(charsRemoved)
    const int added = std::max(charsAdded, 1);
    const QTextBlock block = document()->findBlock(from);
    const bool sameBlocks = std::exchange(m_blockCount, document()->blockCount()) == document()->blockCount();
    // The base would lay the block of a typed character out twice: once to ask for its old size, which is
    // gone.
    if (sameBlocks && block.isValid() && block == document()->findBlock(from + added - 1)) {
        block.layout()->clearLayout();
        blockBoundingRect(block);
        Q_EMIT updateBlock(block);
        return;
    }
    // The base adds both numbers up to find the last block that changed. Colours laid over one block count as
    // removed and added, so it would go wrong by a block and draw the whole view anew for each character.
    QPlainTextDocumentLayout::documentChanged(from, 0, added);
}

QRectF CodeLayout::blockBoundingRect(const QTextBlock &block) const
{
    if (block.isValid() && m_wrapWidth > 0 && !isLaidOut(block))
        layOut(block);
    QRectF rect = QPlainTextDocumentLayout::blockBoundingRect(block);
    if (block.isValid() && block.isVisible())
        rect.setHeight(rect.height() + m_paragraphSpacing);
    return rect;
}

/// False also for what the base laid out, which knows no indent: seen by the second row, at the margin then.
bool CodeLayout::isLaidOut(const QTextBlock &block) const
{
    const QTextLayout &layout = *block.layout();
    const int rows = layout.lineCount();
    return rows == 1 || (rows > 1 && (m_headIndent == 0 || layout.lineAt(1).x() > layout.lineAt(0).x()));
}

void CodeLayout::layOut(const QTextBlock &block) const
{
    QTextLayout &layout = *block.layout();
    QTextOption option = document()->defaultTextOption();
    if (block.length() > longestBlockBrokenAtWords)
        option.setWrapMode(QTextOption::WrapAnywhere);
    layout.setTextOption(option);

    const qreal margin = document()->documentMargin();
    const qreal width = m_wrapWidth - 2 * margin;
    // In a very narrow view the text needs the room more than the indent does.
    const qreal indent = std::min(m_headIndent, std::max<qreal>(1, width / 4));
    const int rowsBefore = document()->lineCount();
    qreal height = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        const qreal shift = height > 0 ? indent : 0;
        line.setLeadingIncluded(true);
        line.setLineWidth(width - shift);
        line.setPosition(QPointF(margin + shift, height));
        height += line.height() + (line.leading() < 0 ? qCeil(line.leading()) : 0);
    }
    layout.endLayout();
    QTextBlock(block).setLineCount(block.isVisible() ? layout.lineCount() : 0);
    if (document()->lineCount() != rowsBefore)
        Q_EMIT const_cast<CodeLayout *>(this)->documentSizeChanged(documentSize());
}

} // namespace runebook
