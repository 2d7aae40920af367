#pragma once

#include <QString>

class QObject;

namespace runebook {

/// Where the text goes that scripts write. Called on the main thread, unless it takes text from any.
class ScriptConsole
{
public:
    virtual ~ScriptConsole() = default;
    virtual void setWrite(const QString &text) = 0;
    /// More of the text that setWrite was given last: a large one comes in pieces.
    virtual void continueWrite(const QString &text) { setWrite(text); }
    virtual void setWriteError(const QString &text) = 0;
    /// Lets nothing wait that was written.
    virtual void flush() { }
    /// At once. \a sender: who asks for it.
    virtual void clearConsole(QObject *sender) { Q_UNUSED(sender) }
    /// True when both may be called on any thread; otherwise other threads' texts wait for the event loop.
    virtual bool takesAnyThread() const { return false; }
};

/// Where text goes: the process's own output where that was set, else the macro panel, else nowhere.
ScriptConsole *scriptConsole();
/// True when text goes to the process's own output.
bool hasOwnOutput();
/// The process's own output. Not owned.
void setScriptConsole(ScriptConsole *console);
/// The macro panel. Not owned; in a run without windows it is there as well, but shows nothing.
void setPanelConsole(ScriptConsole *console);

} // namespace runebook
