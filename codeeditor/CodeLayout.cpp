#include "CodeLayout.h"

#include <QTextBlock>
#include <QTextDocument>
#include <QtMath>

namespace runebook {

CodeLayout::CodeLayout(QTextDocument *document) : QPlainTextDocumentLayout(document) { }

void CodeLayout::setParagraphStyle(qreal headIndent, qreal paragraphSpacing)
{
    if (headIndent == m_headIndent && paragraphSpacing == m_paragraphSpacing)
        return;
    m_headIndent = headIndent;
    m_paragraphSpacing = paragraphSpacing;
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
    if (sameBlocks && block.isValid() && block.layout()->lineCount() == 0
        && block == document()->findBlock(from + added - 1)) {
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
    QRectF rect = QPlainTextDocumentLayout::blockBoundingRect(block);
    if (!block.isValid() || !block.isVisible())
        return rect;
    const QTextLayout &layout = *block.layout();
    // The base lays a block out whenever it finds it without lines, and knows no indent: seen by its second
    // line, which stands at the margin then.
    if (m_headIndent > 0 && layout.lineCount() > 1
        && layout.lineAt(1).x() < layout.lineAt(0).x() + m_headIndent) {
        hang(block);
        rect = QPlainTextDocumentLayout::blockBoundingRect(block);
    }
    rect.setHeight(rect.height() + m_paragraphSpacing);
    return rect;
}

void CodeLayout::hang(const QTextBlock &block) const
{
    QTextLayout &layout = *block.layout();
    const qreal margin = layout.lineAt(0).x();
    const qreal width = layout.lineAt(0).width();
    // In a very narrow view the text needs the room more than the indent does.
    const qreal indent = width > 4 * m_headIndent ? m_headIndent : 0;
    if (indent == 0)
        return;
    const int linesBefore = document()->lineCount();
    qreal height = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        const qreal shift = line.lineNumber() > 0 ? indent : 0;
        line.setLeadingIncluded(true);
        line.setLineWidth(width - shift);
        line.setPosition(QPointF(margin + shift, height));
        height += line.height() + (line.leading() < 0 ? qCeil(line.leading()) : 0);
    }
    layout.endLayout();
    QTextBlock(block).setLineCount(layout.lineCount());
    if (document()->lineCount() != linesBefore)
        Q_EMIT const_cast<CodeLayout *>(this)->documentSizeChanged(documentSize());
}

} // namespace runebook
