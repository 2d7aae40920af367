#pragma once

#include "platform/StandardFolders.h"
#include "platform/defaults/UserDefaults.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/panel/ConsoleView.h"
#include "scripting/panel/VXMacroWindowController.h"
#include "scripting/python/RunPump.h"
#include "scripting/python/ScriptConsole.h"
#include "scripting/python/ScriptRunEntries.h"
#include "tests/scripting/EndlessLoop.h"

#include <QTest>
#include <QtWidgets>

// Events as the window system hands them over.
QT_BEGIN_NAMESPACE
Q_GUI_EXPORT void qt_handleKeyEvent(QWindow *window, QEvent::Type type, int key,
                                    Qt::KeyboardModifiers modifiers, const QString &text, bool isRepeated,
                                    ushort count);
Q_GUI_EXPORT void qt_handleMouseEvent(QWindow *window, const QPointF &local, const QPointF &global,
                                      Qt::MouseButtons buttons, Qt::MouseButton button, QEvent::Type type,
                                      Qt::KeyboardModifiers modifiers, int timestamp);
QT_END_NAMESPACE

namespace runebook {

/// A window with a console, a field and a button, as the panel has them.
class Panel final : public QWidget, public ScriptConsole
{
public:
    Panel() : console(new ConsoleView), field(new QLineEdit), button(new QPushButton)
    {
        auto *column = new QVBoxLayout(this);
        for (QWidget *widget : std::initializer_list<QWidget *> {console, field, button})
            column->addWidget(widget);
        connect(&RunPump::shared(), &RunPump::pumped, console, &ConsoleView::showPending);
    }
    void setWrite(const QString &text) override { console->append(text, ConsoleView::Kind::Output); }
    void continueWrite(const QString &text) override { console->continueWrite(text); }
    void setWriteError(const QString &text) override { console->append(text, ConsoleView::Kind::Error); }

    ConsoleView *console;
    QLineEdit *field;
    QPushButton *button;
};

/// Runs in the interpreter of this very process, with a window that is shown.
class RunFixture
{
protected:
    static void startInterpreter()
    {
        using namespace Qt::StringLiterals;
        StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
        // The same with another interpreter: the path of its library in this variable.
        if (const QString library = qEnvironmentVariable("RUNEBOOK_TEST_PYTHON"); !library.isEmpty())
            UserDefaults::standard().setObjectForKey(library, u"VXPythonFrameworkPath"_s);
        VXMacroWindowController::initialize();
        VXScriptingHandler::sharedHandler();
        QVERIFY(VXScriptingHandler::isPythonRunning());
        RunPump::shared().start();
        // What every run begins with takes long only once; afterwards it is the test's own code that is
        // stopped.
        runPanelCode({});
    }

    void showPanel()
    {
        m_panel = std::make_unique<Panel>();
        m_panel->resize(400, 300);
        m_panel->show();
        m_panel->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_panel.get()));
        m_panel->field->setFocus();
        setScriptConsole(m_panel.get());
    }

    void endPanel()
    {
        setScriptConsole(nullptr);
        m_panel.reset();
    }

    void run(const QString &code) { VXScriptingHandler::sharedHandler()->runMacroString(code); }

    std::unique_ptr<Panel> m_panel;
};

} // namespace runebook
