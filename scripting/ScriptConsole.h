#pragma once

#include <QString>

namespace runebook {

/// Where the text goes that scripts write. Called on the main thread, unless it takes text from any.
class ScriptConsole
{
public:
    virtual ~ScriptConsole() = default;
    virtual void setWrite(const QString &text) = 0;
    virtual void setWriteError(const QString &text) = 0;
    virtual void clearConsole() { }
    /// True when both may be called on any thread; otherwise other threads' texts wait for the event loop.
    virtual bool takesAnyThread() const { return false; }
};

/// The console of the process: the macro panel, or the process's own output. Not owned; null drops all text.
ScriptConsole *scriptConsole();
void setScriptConsole(ScriptConsole *console);

} // namespace runebook
