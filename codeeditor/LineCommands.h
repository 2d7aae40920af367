#pragma once

#include "codeeditor/EditableCode.h"

namespace runebook {

struct LineEdit;

/// The commands of the code view that work on whole lines, and what the Tab key writes there; what they do to
/// a text says LineEditing. Each is one undoable step, as far as the view's delegate lets it.
class LineCommands
{
public:
    /// \a code must live as long.
    explicit LineCommands(EditableCode &code) : m_code(code) { }

    void comment();
    void shiftRight();
    /// The delegate is not asked, unlike when lines are shifted right.
    void shiftLeft();
    void duplicate();
    void moveUp();
    void moveDown();
    void join();
    bool selectionSpansLines() const;

    enum class Indentation { AsTheText, Tab, Blanks };
    void setIndentation(Indentation indentation) { m_indentation = indentation; }
    /// Writes blanks up to the next step where the text is indented by blanks. False: the key writes its tab.
    bool insertIndent();
    /// Takes one step of blanks away in front of the caret. False when something else stands there.
    bool deleteIndent();

private:
    QString string() const;
    void apply(const LineEdit &change);
    QString indentStep() const;

    EditableCode &m_code;
    Indentation m_indentation = Indentation::AsTheText;
};

} // namespace runebook
