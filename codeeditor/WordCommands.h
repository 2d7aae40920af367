#pragma once

#include "codeeditor/EditableCode.h"

class QKeyEvent;

namespace runebook {

/// The keys of the code view that move and delete by words, which end at the parts of dotted names.
class WordCommands
{
public:
    /// \a code must live as long.
    explicit WordCommands(EditableCode &code) : m_code(code) { }

    /// False for keys of another kind.
    bool handleKey(const QKeyEvent &event);
    /// The selection; without one blanks alone or up to the end of the word.
    void deleteForward();
    void deleteBackward();

private:
    enum class Way { Forward, Backward };
    enum class Anchor { Moves, Stays };
    void move(Way way, Anchor anchor);
    int nextWord(int from, Way way) const;

    EditableCode &m_code;
};

} // namespace runebook
