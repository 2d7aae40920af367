#pragma once

#include <QString>

namespace runebook {

/// Takes the control sequences of terminals (colours, movements of the caret, titles of windows) out of what
/// scripts print, which is often written by libraries that believe in a terminal. A sequence may come in
/// pieces.
class EscapeFilter
{
public:
    QString filtered(const QString &text);

private:
    enum class State { Text, Escape, Control, Command, CommandEscape };

    bool isText(QChar character);

    State m_state = State::Text;
};

} // namespace runebook
