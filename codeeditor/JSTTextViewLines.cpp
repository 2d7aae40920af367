// The actions of the code view that work on whole lines, and how far a key indents.
#include "codeeditor/JSTTextView.h"

#include "codeeditor/EditGroup.h"
#include "codeeditor/LineEditing.h"
#include "codeeditor/VXCodeTextStorage.h"

#include <QTextBlock>

using namespace Qt::StringLiterals;
using namespace runebook;

void JSTTextView::commentSelection()
{
    const QString text = string();
    const LineEdit edit = toggleComment(text, selectedRange());
    if (edit.edits.isEmpty())
        return;
    const TextRange block = lineBlock(text, selectedRange());
    const QString changed = edit.appliedTo(text);
    const QString replacement = changed.sliced(block.location, block.length + changed.size() - text.size());
    if (!shouldChangeTextInRangeReplacementString(block, replacement))
        return;
    m_storage->replaceCharactersInRangeWithString(block, replacement);
    setSelectedRange(edit.selection);
}

/// Carries \a change out as one undoable step, as far as the delegate lets it.
void JSTTextView::apply(const LineEdit &change)
{
    if (change.edits.isEmpty())
        return;
    {
        const EditGroup group(textCursor());
        for (auto edit = change.edits.crbegin(); edit != change.edits.crend(); ++edit) {
            if (!shouldChangeTextInRangeReplacementString(edit->replaced, edit->replacement))
                return;
            m_storage->replaceCharactersInRangeWithString(edit->replaced, edit->replacement);
        }
    }
    setSelectedRange(change.selection);
    ensureCursorVisible();
}

void JSTTextView::shiftSelectedLinesRight()
{
    apply(shiftRight(string(), selectedRange()));
}

void JSTTextView::duplicateSelectedLines()
{
    apply(duplicateLines(string(), selectedRange()));
}

void JSTTextView::moveSelectedLinesUp()
{
    apply(moveLinesUp(string(), selectedRange()));
}

void JSTTextView::moveSelectedLinesDown()
{
    apply(moveLinesDown(string(), selectedRange()));
}

void JSTTextView::joinSelectedLines()
{
    apply(joinLines(string(), selectedRange()));
}

void JSTTextView::shiftSelectedLinesLeft()
{
    if (isReadOnly())
        return;
    const LineEdit shift = shiftLeft(string(), selectedRange());
    {
        // On the characters themselves: the delegate is not asked, unlike when lines are shifted right.
        const EditGroup group(textCursor());
        for (auto edit = shift.edits.crbegin(); edit != shift.edits.crend(); ++edit)
            m_storage->replaceCharactersInRangeWithString(edit->replaced, edit->replacement);
    }
    setSelectedRange(shift.selection);
}

QString JSTTextView::indentStep() const
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
    return runebook::indentStep(m_storage->substringWithRange({0, kLookedAt}));
}

/// Blanks up to the next step where the text is indented by blanks. False: the key writes its tab.
bool JSTTextView::insertIndent()
{
    const QString step = indentStep();
    if (step == "\t"_L1)
        return false;
    const int column = selectedRange().location - m_storage->findBlock(selectedRange().location).position();
    insertText(step.sliced(column % step.size()));
    return true;
}

/// Takes one step of blanks away in front of the caret. False when something else stands there.
bool JSTTextView::deleteIndent()
{
    const TextRange caret = selectedRange();
    const QTextBlock block = m_storage->findBlock(caret.location);
    const int column = caret.location - block.position();
    const QString before = block.text().first(column);
    if (caret.length > 0 || column < 2 || before.count(u' ') < column)
        return false;
    const QString step = indentStep();
    const int width = step == "\t"_L1 ? 4 : int(step.size());
    const int count = (column - 1) % width + 1;
    deleteRange({caret.location - count, count});
    return true;
}
