#include "codeeditor/LineCommands.h"

#include "codeeditor/EditGroup.h"
#include "codeeditor/LineEditing.h"
#include "codeeditor/VXCodeTextStorage.h"

#include <QTextBlock>

using namespace Qt::StringLiterals;

namespace runebook {

QString LineCommands::string() const
{
    return m_code.textStorage()->string();
}

bool LineCommands::selectionSpansLines() const
{
    const TextRange selection = m_code.selectedRange();
    const VXCodeTextStorage *storage = m_code.textStorage();
    return storage->findBlock(selection.location) != storage->findBlock(selection.end());
}

void LineCommands::comment()
{
    const QString text = string();
    const LineEdit edit = toggleComment(text, m_code.selectedRange());
    if (edit.edits.isEmpty())
        return;
    const TextRange block = lineBlock(text, m_code.selectedRange());
    const QString changed = edit.appliedTo(text);
    const QString replacement = changed.sliced(block.location, block.length + changed.size() - text.size());
    if (!m_code.shouldChangeTextInRangeReplacementString(block, replacement))
        return;
    m_code.textStorage()->replaceCharactersInRangeWithString(block, replacement);
    m_code.setSelectedRange(edit.selection);
}

void LineCommands::apply(const LineEdit &change)
{
    if (change.edits.isEmpty())
        return;
    {
        const EditGroup group(m_code.caret());
        for (auto edit = change.edits.crbegin(); edit != change.edits.crend(); ++edit) {
            if (!m_code.shouldChangeTextInRangeReplacementString(edit->replaced, edit->replacement))
                return;
            m_code.textStorage()->replaceCharactersInRangeWithString(edit->replaced, edit->replacement);
        }
    }
    m_code.setSelectedRange(change.selection);
    m_code.showCaret();
}

void LineCommands::shiftRight()
{
    apply(runebook::shiftRight(string(), m_code.selectedRange()));
}

void LineCommands::shiftLeft()
{
    if (!m_code.mayBeEdited())
        return;
    const LineEdit shift = runebook::shiftLeft(string(), m_code.selectedRange());
    {
        const EditGroup group(m_code.caret());
        for (auto edit = shift.edits.crbegin(); edit != shift.edits.crend(); ++edit)
            m_code.textStorage()->replaceCharactersInRangeWithString(edit->replaced, edit->replacement);
    }
    m_code.setSelectedRange(shift.selection);
}

void LineCommands::duplicate()
{
    apply(duplicateLines(string(), m_code.selectedRange()));
}

void LineCommands::moveUp()
{
    apply(moveLinesUp(string(), m_code.selectedRange()));
}

void LineCommands::moveDown()
{
    apply(moveLinesDown(string(), m_code.selectedRange()));
}

void LineCommands::join()
{
    apply(joinLines(string(), m_code.selectedRange()));
}

QString LineCommands::indentStep() const
{
    constexpr int kBlanksOfChoice = 4;
    constexpr int kLookedAt = 50'000; // characters
    switch (m_indentation) {
    case Indentation::Tab:
        return u"\t"_s;
    case Indentation::Blanks:
        return QString(kBlanksOfChoice, u' ');
    case Indentation::AsTheText:
        break;
    }
    return runebook::indentStep(m_code.textStorage()->substringWithRange({0, kLookedAt}));
}

bool LineCommands::insertIndent()
{
    const QString step = indentStep();
    if (step == "\t"_L1)
        return false;
    const int caret = m_code.selectedRange().location;
    const int column = caret - m_code.textStorage()->findBlock(caret).position();
    m_code.insertText(step.sliced(column % step.size()));
    return true;
}

bool LineCommands::deleteIndent()
{
    const TextRange caret = m_code.selectedRange();
    const QTextBlock block = m_code.textStorage()->findBlock(caret.location);
    const int column = caret.location - block.position();
    const QString before = block.text().first(column);
    if (caret.length > 0 || column < 2 || before.count(u' ') < column)
        return false;
    const QString step = indentStep();
    const int width = step == "\t"_L1 ? 4 : int(step.size());
    const int count = (column - 1) % width + 1;
    m_code.deleteRange({caret.location - count, count});
    return true;
}

} // namespace runebook
