#include "scripting/panel/PanelRuns.h"

#include "platform/MessageBar.h"
#include "scripting/classes/ScriptApplication.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/panel/ConsoleView.h"
#include "scripting/panel/PromptLine.h"
#include "scripting/panel/RunQuestion.h"
#include "scripting/panel/RunSummary.h"
#include "scripting/panel/VXMacroWindow.h"
#include "scripting/python/RunPump.h"
#include "ui_VXMacroWindow_11.h"

#include <QStatusBar>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

/// The preferences are the program's, which is known here by the names of its operations alone.
void showPythonPreferences()
{
    QObject *program = ScriptApplication::shared().delegate();
    QObject *preferences = nullptr;
    if (program)
        QMetaObject::invokeMethod(program, "preferencesController", Q_RETURN_ARG(QObject *, preferences));
    if (!preferences)
        return;
    QMetaObject::invokeMethod(preferences, "showPrefpaneWithIdentifier", Q_ARG(QString, u"python"_s));
    QMetaObject::invokeMethod(preferences, "showWindow");
}

} // namespace

PanelRuns::PanelRuns(QObject *parent) : QObject(parent)
{
    auto *summary = new RunSummary(this);
    m_question = new RunQuestion(*summary, this);
    const RunPump &pump = RunPump::shared();
    connect(&pump, &RunPump::runStarted, summary, &RunSummary::begin);
    connect(&pump, &RunPump::runStarted, m_question, &RunQuestion::begin);
    connect(&pump, &RunPump::runEnded, summary, [this, summary] {
        Q_EMIT summedUp(summary->end());
        m_question->end();
    });
    connect(m_question, &RunQuestion::tookBack, this, &PanelRuns::summedUp);
}

void PanelRuns::showIn(VXMacroWindow &window)
{
    RunPump &pump = RunPump::shared();
    for (QObject *control : window.parts().stopAction->associatedObjects()) {
        if (auto *button = qobject_cast<QToolButton *>(control))
            pump.addStopControl(button);
    }
    connect(&pump, &RunPump::runStarted, &window, [&window] { window.setRunning(true); });
    connect(window.parts().prompt, &PromptLine::aboutToRun, this, [&window] { tellOfMissingPython(window); });
    connect(&pump, &RunPump::pumped, window.parts().consoleText, &ConsoleView::showPending);
    m_question->setPanel(&window);
    connect(this, &PanelRuns::summedUp, window.statusBar(),
            [bar = window.statusBar()](const QString &line) { bar->showMessage(line); });
    connect(&pump, &RunPump::runEnded, &window, [&window] { window.setRunning(false); });
}

void PanelRuns::tellOfMissingPython(VXMacroWindow &window)
{
    const QString text = VXScriptingHandler::sharedHandler()->missingPythonText();
    if (!text.isEmpty())
        window.messageBar()->ask(text, {{tr("Python &Preferences…"), [] { showPythonPreferences(); }}});
}

} // namespace runebook
