#include "scripting/panel/ConsoleLines.h"

#include <QTextDocument>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

/// How much longer the end of a block is in the text than the one unit it has in the document.
int extraLength(const QTextBlock &block)
{
    const auto end = static_cast<ConsoleLines::End>(block.userState());
    return end == ConsoleLines::End::Cut ? -1 : end == ConsoleLines::End::ReturnLineFeed ? 1 : 0;
}

} // namespace

void ConsoleLines::endBlock(QTextCursor &cursor, End end)
{
    m_hasOddEnds = true;
    cursor.insertBlock({}, {});
    QTextBlock before = cursor.block().previous();
    before.setUserState(static_cast<int>(end));
    cursor.block().setUserState(static_cast<int>(End::LineFeed));
    // A long line is folded at its first cut; whoever has it shown sees what comes, too.
    if (end == End::Cut && (start(before) == before || !before.isVisible()))
        hide(cursor.block());
    else
        cursor.block().setVisible(true);
}

void ConsoleLines::beginAnew(QTextCursor &cursor)
{
    QTextBlock line = start(cursor.block());
    cursor.setPosition(line.position(), QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    line = cursor.block();
    line.setUserState(static_cast<int>(End::LineFeed));
    line.setVisible(true);
}

bool ConsoleLines::isFolded(const QTextBlock &block)
{
    return block.isVisible() && block.next().isValid() && !block.next().isVisible();
}

QTextBlock ConsoleLines::start(QTextBlock block)
{
    while (block.previous().isValid() && isCut(block.previous()))
        block = block.previous();
    return block;
}

QTextBlock ConsoleLines::last(QTextBlock block)
{
    while (isCut(block) && block.next().isValid())
        block = block.next();
    return block;
}

void ConsoleLines::hide(QTextBlock block)
{
    block.setVisible(false);
    block.setLineCount(0);
}

QString ConsoleLines::textBetween(int from, int to) const
{
    QString text;
    text.reserve(to - from);
    for (QTextBlock block = m_document->findBlock(from); block.isValid() && block.position() <= to;
         block = block.next()) {
        const QString line = block.text();
        const int begin = std::max(0, from - block.position());
        const int end = std::min<int>(static_cast<int>(line.size()), to - block.position());
        text += QStringView(line).sliced(begin, std::max(0, end - begin));
        if (to <= block.position() + line.size())
            break;
        switch (static_cast<End>(block.userState())) {
        case End::Cut:
            break;
        case End::ReturnLineFeed:
            text += "\r\n"_L1;
            break;
        case End::ParagraphSeparator:
            text += QChar(QChar::ParagraphSeparator);
            break;
        case End::LineFeed:
            text += u'\n';
        }
    }
    return text;
}

int ConsoleLines::indexOfPosition(int position) const
{
    int index = position;
    if (m_hasOddEnds) {
        for (QTextBlock block = m_document->begin();
             block.isValid() && block.position() + block.length() <= position; block = block.next())
            index += extraLength(block);
    }
    return index;
}

int ConsoleLines::positionOfIndex(int index) const
{
    int position = index;
    if (m_hasOddEnds) {
        for (QTextBlock block = m_document->begin();
             block.isValid() && block.position() + block.length() <= position; block = block.next())
            position -= extraLength(block);
    }
    return std::clamp(position, 0, m_document->characterCount() - 1);
}

} // namespace runebook
