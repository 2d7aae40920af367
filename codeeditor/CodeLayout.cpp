#include "codeeditor/CodeLayout.h"

#include <QTextBlock>
#include <QTextDocument>
#include <QtMath>
#include <utility>

namespace runebook {

namespace {

constexpr qreal kEverything = 1e9;

/// Of the rows as laid out last, in 64ths of a pixel. Kept as the block's state, as new colours forget the
/// rows; -1 for a block that never had any.
int knownHeight(const QTextBlock &block)
{
    return block.userState();
}

void noteHeight(QTextBlock block)
{
    const QTextLayout &layout = *block.layout();
    const int rows = layout.lineCount();
    if (rows > 0)
        block.setUserState(qRound(64 * (layout.lineAt(rows - 1).y() + layout.lineAt(rows - 1).height())));
}

} // namespace

CodeLayout::CodeLayout(QTextDocument *document) : QPlainTextDocumentLayout(document)
{
    // Before anybody else hears of it: colours that are laid over the text widen what documentChanged() is
    // told.
    connect(document, &QTextDocument::contentsChange, this, [this](int from, int, int added) {
        m_edited = TextRange {from, added};
    });
}

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
    const QTextBlock first = document()->findBlock(from);
    const QTextBlock last = lastChangedBlock(from, charsAdded);
    const bool sameBlocks = std::exchange(m_blockCount, document()->blockCount()) == document()->blockCount();
    if (sameBlocks && first.isValid() && first == last) {
        blockChanged(first);
        return;
    }
    // The base adds both numbers up to find the last block that changed. Colours laid over one block count as
    // removed and added, so it would go wrong by a block and draw the whole view anew for each character.
    QPlainTextDocumentLayout::documentChanged(from, 0, last.position() + 1 - from);
}

/// The last block that looks different: colours touch whole blocks and say so by \a charsAdded; what was
/// taken out at the very end of an edit is told only by where the edit ended.
QTextBlock CodeLayout::lastChangedBlock(int from, int charsAdded)
{
    const int textEnd = document()->characterCount() - 1;
    int last = from + std::max(charsAdded, 1) - 1;
    if (const auto edited = std::exchange(m_edited, std::nullopt))
        last = std::max(last, edited->end());
    return document()->findBlock(std::clamp(last, std::min(from, textEnd), textEnd));
}

/// Lays \a block out anew. What stands below moves when the block got another height.
void CodeLayout::blockChanged(const QTextBlock &block)
{
    const int before = knownHeight(block);
    block.layout()->clearLayout();
    const bool isLong =
        block.length() > kLongestShapedBlock; // laid out once, however many changes come together
    if (!isLong)
        blockBoundingRect(block);
    if (!isLong && knownHeight(block) == before)
        Q_EMIT updateBlock(block);
    else
        Q_EMIT update(QRectF(0, -document()->documentMargin(), kEverything, kEverything));
}

QRectF CodeLayout::blockBoundingRect(const QTextBlock &block) const
{
    if (block.isValid() && m_wrapWidth > 0 && !isLaidOut(block))
        layOut(block);
    QRectF rect = QPlainTextDocumentLayout::blockBoundingRect(block);
    if (block.isValid())
        noteHeight(block);
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
    if (block.length() > kLongestShapedBlock)
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
