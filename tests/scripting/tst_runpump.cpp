#include "codeeditor/JSTDocument.h"
#include "codeeditor/JSTTextView.h"
#include "document/VXDocument.h"
#include "platform/CallLater.h"
#include "platform/DocumentController.h"
#include "platform/StandardFolders.h"
#include "platform/UserDefaults.h"
#include "scripting/LiveCompletion.h"
#include "scripting/RunIndicator.h"
#include "scripting/RunPump.h"
#include "scripting/ScriptConsole.h"
#include "scripting/VXScriptingHandler.h"
#include "scripting/bridge/ScriptApplication.h"
#include "scripting/panel/ConsoleView.h"
#include "scripting/panel/PromptLine.h"
#include "scripting/panel/VXMacroViewController.h"
#include "tests/TestMain.h"

#include <QClipboard>
#include <QCloseEvent>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollBar>
#include <QShortcut>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>
#include <thread>

using namespace runebook;
using namespace Qt::StringLiterals;

QT_BEGIN_NAMESPACE
Q_GUI_EXPORT void qt_handleKeyEvent(QWindow *window, QEvent::Type type, int key,
                                    Qt::KeyboardModifiers modifiers, const QString &text, bool isRepeated,
                                    ushort count);
Q_GUI_EXPORT void qt_handleMouseEvent(QWindow *window, const QPointF &local, const QPointF &global,
                                      Qt::MouseButtons buttons, Qt::MouseButton button, QEvent::Type type,
                                      Qt::KeyboardModifiers modifiers, int timestamp);
QT_END_NAMESPACE

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
class RunPumpTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void showsOutputWhileAScriptRuns_data();
    void showsOutputWhileAScriptRuns();
    void marksALargeWriteOnce();
    void refusesInput();
    void letsTheUserRead();
    void keepsOwnWorkForTheEnd();
    void stops_data();
    void stops();
    void stopsScriptsThatRefuse_data();
    void stopsScriptsThatRefuse();
    void endsWithTheTraceback_data();
    void endsWithTheTraceback();
    void waitsForTheEndOfOperations_data();
    void waitsForTheEndOfOperations();
    void autosavesInTheMiddle();
    void answersTheStopButton();
    void tellsOfRuns();
    void tellsOfStandstill();
    void addsUpStandstill();
    void evaluatesLines_data();
    void evaluatesLines();
    void showsTheLinesOfTabs();
    void asksWhatScriptsAsk();
    void showsProgressOfGenerators();
    void remembersLines();
    void completesLiveNames_data();
    void completesLiveNames();
    void completesNothingDuringRuns();
    void knowsWhatTheTextBinds_data();
    void knowsWhatTheTextBinds();
    void describesNames_data();
    void describesNames();
    void runsNoCodeForCompletion();
    void completesInThePrompt_data();
    void completesInThePrompt();

private:
    /// Presses a key as soon as the event loop turns. On any thread.
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString &text = {});
    void run(const QString &code) { VXScriptingHandler::sharedHandler()->runMacroString(code); }

    std::unique_ptr<Panel> m_panel;
};

void RunPumpTest::initTestCase()
{
    StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
    // The same with another interpreter: the path of its library in this variable.
    if (const QString library = qEnvironmentVariable("RUNEBOOK_TEST_PYTHON"); !library.isEmpty())
        UserDefaults::standard().setObjectForKey(library, u"VXPythonFrameworkPath"_s);
    VXScriptingHandler::sharedHandler();
    QVERIFY(VXScriptingHandler::isPythonRunning());
    RunPump::shared().start();
}

void RunPumpTest::init()
{
    m_panel = std::make_unique<Panel>();
    m_panel->resize(400, 300);
    m_panel->show();
    m_panel->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_panel.get()));
    m_panel->field->setFocus();
    setScriptConsole(m_panel.get());
}

void RunPumpTest::cleanup()
{
    setScriptConsole(nullptr);
    m_panel.reset();
}

void RunPumpTest::press(int key, Qt::KeyboardModifiers modifiers, const QString &text)
{
    QMetaObject::invokeMethod(
        this,
        [=, this] {
            qt_handleKeyEvent(m_panel->windowHandle(), QEvent::KeyPress, key, modifiers, text, false, 1);
            qt_handleKeyEvent(m_panel->windowHandle(), QEvent::KeyRelease, key, modifiers, text, false, 1);
        },
        Qt::QueuedConnection);
}

void RunPumpTest::showsOutputWhileAScriptRuns_data()
{
    QTest::addColumn<QString>("code");
    QTest::newRow("loop") << u"while time.time() < end: pass"_s;
    QTest::newRow("sleep") << u"time.sleep(0.4)"_s;
    QTest::newRow("lock") << u"import threading; l = threading.Lock(); l.acquire(); l.acquire(timeout=0.4)"_s;
    QTest::newRow("regular expression")
        << u"import re\nwhile time.time() < end: re.match('(a+)+$', 'a' * 22 + 'b')"_s;
}

void RunPumpTest::showsOutputWhileAScriptRuns()
{
    QFETCH(QString, code);
    // What is on the screen, seen from the paint events.
    struct Watch : QObject {
        explicit Watch(ConsoleView &view) : console(view) { view.viewport()->installEventFilter(this); }
        bool eventFilter(QObject *, QEvent *event) override
        {
            if (event->type() == QEvent::Paint && RunPump::shared().isRunning()
                && console.document()->firstBlock().text() == u"early"_s)
                ++paints;
            return false;
        }
        ConsoleView &console;
        int paints = 0;
    } watch(*m_panel->console);
    run(u"import time; print('early'); end = time.time() + 0.4\n"_s + code);
    QVERIFY(watch.paints > 0);
    QCOMPARE(m_panel->console->string(), u"early\n"_s);
}

void RunPumpTest::marksALargeWriteOnce()
{
    QFont bold = m_panel->console->consoleFont();
    bold.setBold(true);
    m_panel->console->setEmphasisFont(bold);
    run(u"import sys; sys.stdout.write(('KeyError' + 'x' * 200_000 + '\\n') * 12)"_s);
    const QString text = m_panel->console->string();
    QCOMPARE(text.size(), 12 * 200'009);
    int marked = 0;
    for (qsizetype at = text.indexOf(u'K'); at >= 0; at = text.indexOf(u'K', at + 1)) {
        const QVariantMap attributes = m_panel->console->attributesAtIndex(static_cast<int>(at), nullptr);
        marked += attributes.value(u"NSFont"_s).value<QFont>().bold() ? 1 : 0;
    }
    QCOMPARE(marked, 1);
}

void RunPumpTest::refusesInput()
{
    const QShortcut shortcut(QKeySequence(u"Ctrl+K"_s), m_panel.get());
    QSignalSpy clicked(&shortcut, &QShortcut::activated), pressed(m_panel->button, &QPushButton::clicked);
    QSignalSpy refused(&RunPump::shared(), &RunPump::refused);
    const QPoint place = m_panel->button->mapTo(m_panel.get(), m_panel->button->rect().center());
    RunIndicator indicator(RunIndicator::Stop::WithButton, m_panel.get());
    QString shown;
    press(Qt::Key_A, Qt::NoModifier, u"a"_s);
    press(Qt::Key_K, Qt::ControlModifier);
    press(Qt::Key_Delete);
    QPointer<QWidget> gone = new QWidget;
    gone->deleteLater();
    bool isFirst = true;
    connect(&RunPump::shared(), &RunPump::pumped, &indicator, [&] {
        QVERIFY(indicator.isVisible() && gone);
        shown = indicator.text();
        if (std::exchange(isFirst, false))
            QMetaObject::invokeMethod(
                this, [&] { QTest::mouseClick(m_panel->windowHandle(), Qt::LeftButton, {}, place); },
                Qt::QueuedConnection);
    });
    QCoreApplication::postEvent(m_panel->windowHandle(), new QCloseEvent);
    run(u"import time; time.sleep(0.3)"_s);
    QVERIFY(!indicator.isVisible());
    QVERIFY2(shown.startsWith(u"Not while"_s), qPrintable(shown));
    QCOMPARE(refused.size(), 5);
    // What comes after it finds nothing of all that.
    QTRY_VERIFY(!gone);
    QTest::keyClick(m_panel->field, Qt::Key_B);
    QCOMPARE(m_panel->field->text(), u"b"_s);
    QVERIFY(clicked.isEmpty() && pressed.isEmpty() && m_panel->isVisible());
}

void RunPumpTest::letsTheUserRead()
{
    QString text;
    for (int i = 0; i < 200; ++i)
        text += u"line %1\n"_s.arg(i);
    m_panel->console->append(text, ConsoleView::Kind::Output);
    m_panel->console->showPending();
    m_panel->console->verticalScrollBar()->setValue(0);
    m_panel->console->setFocus();
    QWidget *view = m_panel->console->viewport();
    QWindow *window = m_panel->windowHandle();
    const auto at = [&](int x, int y) { return view->mapTo(m_panel.get(), QPoint(x, y)); };
    const auto mouse = [&](QEvent::Type type, int x) {
        const bool isMove = type == QEvent::MouseMove;
        QMetaObject::invokeMethod(
            this,
            [=, this] {
                qt_handleMouseEvent(window, at(x, 12), m_panel->mapToGlobal(at(x, 12)),
                                    type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton,
                                    isMove ? Qt::NoButton : Qt::LeftButton, type, Qt::NoModifier, 0);
            },
            Qt::QueuedConnection);
    };
    QGuiApplication::clipboard()->clear();
    QString copied;
    int scrolled = 0, step = 0;
    connect(&RunPump::shared(), &RunPump::pumped, m_panel.get(), [&] {
        switch (step++) {
        case 0:
            mouse(QEvent::MouseButtonPress, 0);
            mouse(QEvent::MouseMove, 200);
            mouse(QEvent::MouseButtonRelease, 200);
            press(Qt::Key_C, Qt::ControlModifier);
            break;
        case 4:
            copied = QGuiApplication::clipboard()->text();
            press(Qt::Key_X, Qt::NoModifier, u"x"_s);
            QCoreApplication::postEvent(
                window, new QWheelEvent(at(20, 20), m_panel->mapToGlobal(at(20, 20)), {}, {0, -1200}, Qt::NoButton,
                                        Qt::NoModifier, Qt::NoScrollPhase, false));
            break;
        default:
            scrolled = m_panel->console->verticalScrollBar()->value();
        }
    });
    run(u"import time; time.sleep(0.6)"_s);
    QVERIFY(step > 5);
    QCOMPARE(copied, u"line 0"_s);
    QVERIFY(scrolled > 0);
}

void RunPumpTest::keepsOwnWorkForTheEnd()
{
    QStringList done;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&done] { done << u"timer"_s; });
    timer.start(20);
    callLater(this, [&done] { done << u"later"_s; });
    int doneDuringRun = 0;
    int pumps = 0;
    const QMetaObject::Connection look = connect(&RunPump::shared(), &RunPump::pumped, this, [&] {
        doneDuringRun += static_cast<int>(done.size());
        ++pumps;
    });
    run(u"import time; time.sleep(0.3)"_s);
    disconnect(look);
    QVERIFY(pumps >= 3);
    QCOMPARE(doneDuringRun, 0);
    QTRY_VERIFY(done.contains(u"later"_s) && done.contains(u"timer"_s));
}

void RunPumpTest::stops_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<bool>("byEscape");
    QTest::newRow("loop") << u"while True: pass"_s << false;
    QTest::newRow("sleep") << u"import time; time.sleep(60)"_s << false;
    QTest::newRow("regular expression") << u"import re; re.match('(a+)+$', 'a' * 60 + 'b')"_s << false;
    QTest::newRow("printing, Escape twice") << u"while True: print('x')"_s << true;
}

void RunPumpTest::stops()
{
    QFETCH(QString, code);
    QFETCH(bool, byEscape);
    QElapsedTimer sinceStop;
    std::thread user([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        sinceStop.start();
        if (byEscape) {
            press(Qt::Key_Escape);
            press(Qt::Key_Escape);
        } else {
            press(Qt::Key_Period, Qt::ControlModifier);
        }
    });
    run(code);
    user.join();
    const qint64 tookMs = sinceStop.elapsed();
    const QString text = m_panel->console->string();
    QVERIFY2(text.contains(u"File \"<macro>\", line 1"_s), qPrintable(text.right(300)));
    QVERIFY(text.endsWith(u"KeyboardInterrupt\n"_s));
    // Not the figure, which benchmarks watch: here only that it was Stop that ended it.
    QVERIFY2(tookMs < 5000, qPrintable(QString::number(tookMs)));
}

void RunPumpTest::stopsScriptsThatRefuse_data()
{
    QTest::addColumn<QString>("code");
    QTest::newRow("bare except") << u"import time\nwhile True:\n    try: time.sleep(60)\n    except: pass"_s;
    QTest::newRow("except that works") << u"import time\nwhile True:\n    try:\n        while True: pass\n"
                                          "    except BaseException as e:\n        time.sleep(0.01)\n"_s;
    QTest::newRow("interrupts ignored") << u"import signal, time\n"
                                           "signal.signal(signal.SIGINT, signal.SIG_IGN)\n"
                                           "while True: time.sleep(60)\n"_s;
}

void RunPumpTest::stopsScriptsThatRefuse()
{
    QFETCH(QString, code);
    std::atomic<bool> isDone = false;
    std::thread user([&] {
        while (!isDone) {
            std::this_thread::sleep_for(std::chrono::milliseconds(150));
            if (!isDone)
                press(Qt::Key_Period, Qt::ControlModifier);
        }
    });
    run(code);
    isDone = true;
    user.join();
    QVERIFY2(m_panel->console->string().contains(u"KeyboardInterrupt"_s),
             qPrintable(m_panel->console->string()));
    run(u"import signal; signal.signal(signal.SIGINT, signal.default_int_handler); x = 1\n"
        "def f():\n    return 5\nprint('again', f())"_s);
    QVERIFY(m_panel->console->string().endsWith(u"again 5\n"_s));
}

void RunPumpTest::endsWithTheTraceback_data()
{
    QTest::addColumn<QString>("report");
    QTest::newRow("the interpreter's") << QString();
    QTest::newRow("a hook that takes long")
        << u"def hook(*error):\n    import time\n    while True: time.sleep(60)\nsys.excepthook = hook\n"_s;
    QTest::newRow("a stream that takes long")
        << u"class Slow:\n    def write(self, text):\n        while True: "
           "pass\nsys.stderr = Slow()\n"_s;
}

/// Stop at every pump, also while the error is being printed.
void RunPumpTest::endsWithTheTraceback()
{
    QFETCH(QString, report);
    run(u"import sys\ndef deep(n):\n    if n: deep(n - 1)\n    while True: pass\n"
        "theirs = sys.stderr\n"_s
        + report);
    const QMetaObject::Connection impatience =
        connect(&RunPump::shared(), &RunPump::pumped, this, [] { RunPump::shared().stop(); });
    run(u"deep(40)"_s);
    disconnect(impatience);
    const QString text = m_panel->console->string();
    run(u"sys.stderr = theirs; sys.excepthook = sys.__excepthook__"_s);
    QVERIFY2(text.contains(u"Traceback (most recent call last):\n  File \"<macro>\", line 1\n"_s)
                 && text.contains(u"line 3, in deep\n"_s),
             qPrintable(text.left(300)));
    QVERIFY2(text.endsWith(u"KeyboardInterrupt\n"_s), qPrintable(text.right(300)));
}

void RunPumpTest::waitsForTheEndOfOperations_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<bool>("isPainted");
    QTest::newRow("the script itself") << u"slowly()"_s << true;
    QTest::newRow("a delegate") << u"bar.closeTabItem_(tab)"_s << false;
    QTest::newRow("a script run by the script")
        << u"VXScriptingHandler.sharedHandler().runMacroFile_(path)"_s << true;
    QTest::newRow("a script run by a delegate") << u"tabs.runs = True; bar.closeTabItem_(tab)"_s << false;
}

/// Code of a script that an operation calls back finds it half way: nothing is painted before its end.
void RunPumpTest::waitsForTheEndOfOperations()
{
    QFETCH(QString, code);
    QFETCH(bool, isPainted);
    const QTemporaryDir folder;
    QFile script(folder.filePath(u"inner.py"_s));
    QVERIFY(script.open(QIODevice::WriteOnly));
    script.write("slowly()\n");
    script.close();
    int inside = 0, outside = 0;
    connect(&RunPump::shared(), &RunPump::pumped, m_panel.get(),
            [&] { ++(m_panel->console->string().endsWith(u"in\n"_s) ? inside : outside); });
    run(u"import time\npath = '"_s + script.fileName()
        + u"'\n"
          "def slowly():\n    print('in'); time.sleep(0.3); print('out')\n"
          "class Tabs(NSObject):\n    runs = False\n"
          "    def tabBar_didCloseTabItem_(self, bar, item):\n"
          "        VXScriptingHandler.sharedHandler().runMacroFile_(path) if self.runs else slowly()\n"
          "tabs = Tabs.alloc().init()\n"
          "bar = NSClassFromString('VXTabBarControl').alloc().init()\n"
          "bar.setCanCloseOnlyTab_(True); bar.setDelegate_(tabs)\n"
          "tab = NSClassFromString('VXMacroViewController').alloc().init(); bar.addTabItem_(tab)\n"_s
        + code + u"\ntime.sleep(0.2); print('end')"_s);
    QCOMPARE(m_panel->console->string(), u"in\nout\nend\n"_s);
    QCOMPARE(inside > 0, isPainted);
    QVERIFY(outside > 0);
}

void RunPumpTest::autosavesInTheMiddle()
{
    const QTemporaryDir folder;
    const QByteArray before = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", QFile::encodeName(folder.path()));
    DocumentController &controller = DocumentController::shared();
    auto *document = new VXDocument;
    controller.addDocument(document);
    document->addInfo(VXGlyphInfo::init());
    QCOMPARE(controller.autosavingDelay(), 6.0);
    const double bound = controller.autosavingBound();
    controller.setAutosavingBound(0.2);
    // What was there before lies on the disk when the script begins. What it does arrives while it works on,
    // and again; the timers that would see to it have no turn meanwhile.
    run(u"import glob, time\n"
        "def kept():\n"
        "    return ''.join(open(path, encoding='utf-8').read() for path in "
        "glob.glob('%1/runebook/Autosave/*/*.xml'))\n"
        "first, seen = kept(), []\n"
        "info, end = Doc.infos()[0], time.time() + 60\n"
        "count = 0\n"
        "while len(seen) < 2 and time.time() < end:\n"
        "    count += 1\n"
        "    info.setSortName_('w%d' % count)\n"
        "    words = kept().split('sortName=\"')\n"
        "    if len(words) > 1 and words[1] not in seen: seen.append(words[1])\n"
        "print('first', first.count('name=\"unknown\"'), first.count('sortName=\"'), 'then', len(seen))\n"
        "del info\n"_s
            .arg(folder.path()));
    controller.setAutosavingBound(bound);
    QTRY_COMPARE(m_panel->console->toPlainText().trimmed(), u"first 1 0 then 2"_s);
    document->close();
    qputenv("XDG_DATA_HOME", before);
}

void RunPumpTest::answersTheStopButton()
{
    RunPump &pump = RunPump::shared();
    pump.addStopControl(m_panel->button);
    const auto connection = connect(m_panel->button, &QPushButton::clicked, &pump, &RunPump::stop);
    const QPoint place = m_panel->button->mapTo(m_panel.get(), m_panel->button->rect().center());
    bool isClicked = false;
    connect(&pump, &RunPump::pumped, m_panel.get(), [&] {
        if (!std::exchange(isClicked, true))
            QMetaObject::invokeMethod(
                this, [&] { QTest::mouseClick(m_panel->windowHandle(), Qt::LeftButton, {}, place); },
                Qt::QueuedConnection);
    });
    run(u"while True: pass"_s);
    disconnect(connection);
    QVERIFY(m_panel->console->string().endsWith(u"KeyboardInterrupt\n"_s));
}

void RunPumpTest::tellsOfRuns()
{
    RunPump &pump = RunPump::shared();
    QSignalSpy started(&pump, &RunPump::runStarted), ended(&pump, &RunPump::runEnded);
    run(u"pass"_s);
    QCOMPARE(started.size(), 1);
    QCOMPARE(ended.size(), 1);
    QVERIFY(!pump.isRunning());
    pump.end();
    run(u"import time; time.sleep(0.1)"_s);
    pump.start();
    QCOMPARE(started.size(), 1);
}

/// An operation that returns when it is known that windows stand still.
class Holder final : public QObject, public StandstillWatcher
{
    Q_OBJECT
public:
    Q_INVOKABLE void hold()
    {
        QElapsedTimer limit;
        limit.start();
        while (stands == 0 && !limit.hasExpired(20'000))
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    void windowsStand(Standstill::Duration) override { ++stands; }
    void windowsTurn() override { ++turns; }

    std::atomic<int> stands = 0, turns = 0;
};

void RunPumpTest::tellsOfStandstill()
{
    Holder holder;
    ScriptApplication::shared().setDelegate(&holder);
    RunPump::shared().setStandstillWatcher(&holder);
    run(u"import time; time.sleep(1.5)"_s);
    QCOMPARE(holder.stands, 0); // however long the script takes
    run(u"NSApplication.sharedApplication().delegate().hold()"_s);
    RunPump::shared().setStandstillWatcher(nullptr);
    ScriptApplication::shared().setDelegate(nullptr);
    QVERIFY(holder.stands > 0);
    QCOMPARE(holder.turns, 1);
}

void RunPumpTest::addsUpStandstill()
{
    using namespace std::chrono_literals;
    Standstill standstill;
    for (int i = 0; i < 40; ++i)
        standstill.look(15ms, false);
    QCOMPARE(standstill.length(), 600ms);
    standstill.look(3h, false); // the machine slept
    QVERIFY(standstill.length() < 1s);
    standstill.look(15ms, true);
    QCOMPARE(standstill.length(), 0ms);
}

void RunPumpTest::evaluatesLines_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("shown");
    QTest::newRow("value") << u"1 + 1"_s << u">>> 1 + 1\n2\n"_s;
    QTest::newRow("text") << u"'a' 'b'"_s << u">>> 'a' 'b'\n'ab'\n"_s;
    QTest::newRow("None") << u"None"_s << u">>> None\n"_s;
    QTest::newRow("statement") << u"prompted = 5"_s << u">>> prompted = 5\n"_s;
    QTest::newRow("the name of before") << u" prompted"_s << u">>>  prompted\n5\n"_s;
    QTest::newRow("last value") << u"_ * 2"_s << u">>> _ * 2\n10\n"_s;
    QTest::newRow("compound") << u"for i in (1, 2): i"_s << u">>> for i in (1, 2): i\n1\n2\n"_s;
    QTest::newRow("error") << u"1 / 0"_s
                           << u">>> 1 / 0\nTraceback (most recent call last):\n  File \"<prompt>\", line 1\n"
                              "    1 / 0\nZeroDivisionError: division by zero\n"_s;
}

void RunPumpTest::evaluatesLines()
{
    QFETCH(QString, line);
    QFETCH(QString, shown);
    PromptLine prompt;
    QTest::keyClicks(&prompt, line);
    QTest::keyClick(&prompt, Qt::Key_Return);
    static const QRegularExpression carets(u"\\n *[~^]+\\n"_s); // which older interpreters do not print
    QCOMPARE(m_panel->console->string().replace(carets, u"\n"_s), shown);
    QVERIFY(prompt.text().isEmpty());
}

/// Lines of a tab stand in no file; a function of an earlier run has none any more, and must not get others.
void RunPumpTest::showsTheLinesOfTabs()
{
    run(u"def earlier():\n    raise KeyError(1)\n"_s);
    run(u"def now(f):\n    f()\ntry: now(earlier)\nexcept KeyError as e: raise ValueError(2) from e"_s);
    static const QRegularExpression carets(u"\\n *[~^]+\\n"_s);
    QCOMPARE(m_panel->console->string().replace(carets, u"\n"_s),
             u"Traceback (most recent call last):\n"
             "  File \"<macro>\", line 3\n    try: now(earlier)\n"
             "  File \"<macro>\", line 2, in now\n    f()\n"
             "  File \"<macro>\", line 2, in earlier\n"
             "KeyError: 1\n\n"
             "The above exception was the direct cause of the following exception:\n\n"
             "Traceback (most recent call last):\n"
             "  File \"<macro>\", line 4, in <module>\n    except KeyError as e: raise ValueError(2) from e\n"
             "ValueError: 2\n"_s);
}

void RunPumpTest::asksWhatScriptsAsk()
{
    // Every dialog gets its first line of text changed, unless nothing is left to enter; then it is accepted.
    QStringList entries {u".smcp"_s, QString(), u"typed"_s};
    QStringList seen;
    QTimer user;
    connect(&user, &QTimer::timeout, this, [&] {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        const QString entry = entries.isEmpty() ? QString() : entries.takeFirst();
        auto *line = dialog->findChild<QLineEdit *>();
        seen << dialog->windowTitle() + (line ? u": "_s + line->text() : QString());
        if (line && !entry.isNull())
            line->setText(entry);
        if (auto *box = qobject_cast<QMessageBox *>(dialog))
            box->button(QMessageBox::No)->click();
        else
            dialog->accept();
    });
    user.start(5);
    const QString code = u"print(askFields('Small caps', suffix='.sc', n=2, style=('a', 'b'), all=True))\n"_s;
    run(code);
    run(code); // begins with the last answers
    run(u"print(askString('Name?'), askYesNo('Sure?'), askChoice('Which?', [1, 2]))"_s);
    QCOMPARE(m_panel->console->string(), u"{'suffix': '.smcp', 'n': 2, 'style': 'a', 'all': True}\n"_s.repeated(2)
                 + u"typed False 1\n"_s);
    QCOMPARE(seen.mid(0, 3), (QStringList {u"Macro: .sc"_s, u"Macro: .smcp"_s, u"Macro: "_s}));
    QCOMPARE(seen.size(), 5);
}

void RunPumpTest::showsProgressOfGenerators()
{
    int shown = 0;
    QObject user;
    connect(&RunPump::shared(), &RunPump::pumped, &user, [&] {
        auto *bar = qobject_cast<QProgressDialog *>(QApplication::activeModalWidget());
        if (!bar || !bar->windowHandle())
            return;
        ++shown;
        QMetaObject::invokeMethod(
            bar,
            [bar] { qt_handleKeyEvent(bar->windowHandle(), QEvent::KeyPress, Qt::Key_Escape, {}, {}, false, 1); },
            Qt::QueuedConnection);
    });
    run(u"for i in progress(range(3)): print(i)"_s); // over before anybody could read it
    QCOMPARE(shown, 0);
    run(u"import itertools, time\n"
        "for i in progress(itertools.islice(itertools.count(), 5000)): time.sleep(0.002)"_s);
    QVERIFY(shown > 0);
    QVERIFY2(m_panel->console->string().endsWith(u"KeyboardInterrupt: stopped by the user\n"_s),
             qPrintable(m_panel->console->string()));
    QVERIFY(!QApplication::activeModalWidget());
}

void RunPumpTest::remembersLines()
{
    {
        PromptLine prompt;
        for (const auto line : {"first = 1"_L1, "second = 2"_L1, "second = 2"_L1}) {
            QTest::keyClicks(&prompt, line);
            QTest::keyClick(&prompt, Qt::Key_Return);
        }
    }
    PromptLine prompt; // as after a restart
    QTest::keyClicks(&prompt, u"draft"_s);
    const QList<std::pair<Qt::Key, QString>> walk {{Qt::Key_Up, u"second = 2"_s},
                                                   {Qt::Key_Up, u"first = 1"_s},
                                                   {Qt::Key_Down, u"second = 2"_s},
                                                   {Qt::Key_Down, u"draft"_s},
                                                   {Qt::Key_Down, u"draft"_s}};
    for (const auto &[key, text] : walk) {
        QTest::keyClick(&prompt, key);
        QCOMPARE(prompt.text(), text);
    }
}

void RunPumpTest::completesLiveNames_data()
{
    QTest::addColumn<QString>("partial");
    QTest::addColumn<QStringList>("found");
    QTest::newRow("global") << u"liv"_s << QStringList {u"live"_s, u"liveClass"_s};
    QTest::newRow("builtin") << u"isinst"_s << QStringList {u"isinstance"_s};
    QTest::newRow("own and class") << u"live.a"_s
                                   << QStringList {u"live.alone"_s, u"live.also"_s, u"live.answer"_s};
    QTest::newRow("two deep") << u"live.alone.sta"_s << QStringList {u"live.alone.startswith"_s};
    QTest::newRow("slot") << u"slotted.held.up"_s << QStringList {u"slotted.held.upper"_s};
    QTest::newRow("class") << u"liveClass.al"_s << QStringList {u"liveClass.also"_s};
    QTest::newRow("module") << u"os.path.basen"_s << QStringList {u"os.path.basename"_s};
    QTest::newRow("underscore when typed") << u"live._h"_s << QStringList {u"live._hidden"_s};
    QTest::newRow("not through a property") << u"live.answer."_s << QStringList();
    QTest::newRow("unknown") << u"nobody.x"_s << QStringList();
    QTest::newRow("bridged") << u"glyph.setProduc"_s
                             << QStringList {u"glyph.setProduction"_s, u"glyph.setProduction_"_s};
    QTest::newRow("__dict__ of its own") << u"liar.tru"_s << QStringList {u"liar.truth"_s};
}

void RunPumpTest::completesLiveNames()
{
    QFETCH(QString, partial);
    QFETCH(QStringList, found);
    run(u"import os\nran = []\n"
        "class liveClass:\n"
        "    also = 1\n    _hidden = 2\n"
        "    def __init__(self): self.alone = 'text'\n"
        "    @property\n    def answer(self): ran.append('property'); return 'x'\n"
        "    def __getattr__(self, name): ran.append(name); raise AttributeError\n"
        "    def __getattribute__(self, name): ran.append(name); return object.__getattribute__(self, name)\n"
        "class Slotted:\n    __slots__ = 'held',\n"
        "class Liar:\n    truth = 1\n    @property\n    def __dict__(self): ran.append('dict'); return "
        "{'lie': 1}\n"
        "live = liveClass(); slotted = Slotted(); slotted.held = 'a'; glyph = newInfo('a'); liar = Liar()\n"
        "ran.clear()"_s);
    QCOMPARE(liveCompletions(partial), found);
    run(u"print(ran)"_s);
    QCOMPARE(m_panel->console->string(), u"[]\n"_s);
}

void RunPumpTest::completesNothingDuringRuns()
{
    QStringList found {u"not asked"_s};
    connect(&RunPump::shared(), &RunPump::pumped, m_panel.get(),
            [&found] { found = liveCompletions(u"prin"_s); });
    run(u"import time; time.sleep(0.2)"_s);
    QCOMPARE(found, QStringList());
    QCOMPARE(liveCompletions(u"prin"_s), QStringList {u"print"_s});
}

void RunPumpTest::knowsWhatTheTextBinds_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("has");
    QTest::addColumn<QString>("hasNot");
    QTest::newRow("a module that is imported") << u"import os\nos."_s << u"os.getcwd"_s << u"os.addInfo_"_s;
    QTest::newRow("the records of Doc") << u"for g in Doc:\n\tg.pro"_s << u"g.production"_s << u"g.progress"_s;
    QTest::newRow("one record of Doc") << u"Doc['A'].pro"_s << u".production"_s << u".addInfo_"_s;
    QTest::newRow("unknown") << u"nobody.addIn"_s << u"nobody.addInfo_"_s << u"nobody.getcwd"_s;
}

void RunPumpTest::knowsWhatTheTextBinds()
{
    QFETCH(QString, code);
    QFETCH(QString, has);
    QFETCH(QString, hasNot);
    run(u"import os"_s); // the program's names are there from the first run on
    VXMacroViewController tab;
    tab.setCode(code);
    JSTTextView *view = tab.macroText();
    view->setSelectedRange({int(code.size()), 0});
    QStringList words;
    for (const Completion &one :
         tab.document()->textViewCompletionsToShow(view, view->rangeForUserCompletion()))
        words << one.text;
    QVERIFY2(words.contains(has), qPrintable(words.join(u' ')));
    QVERIFY(!words.contains(hasNot));
}

void RunPumpTest::describesNames_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("signature");
    QTest::addColumn<QString>("help");
    const QString none;
    QTest::newRow("function") << none << u"told"_s << u"told(a, b=\u2026, *rest, only, free=\u2026, **more)"_s
                              << u"What it does."_s;
    QTest::newRow("method") << u"Teller"_s << u"tell"_s << u"tell(text)"_s << none;
    QTest::newRow("class") << none << u"Teller"_s << none << u"Tells."_s;
    QTest::newRow("built in") << none << u"len"_s << u"len(obj, /)"_s
                              << u"Return the number of items in a container."_s;
    QTest::newRow("of a text") << u"text"_s << u"join"_s << u"join(iterable, /)"_s
                               << u"Concatenate any number of strings."_s;
    QTest::newRow("value") << none << u"text"_s << none << none;
    QTest::newRow("not there") << u"nobody"_s << u"x"_s << none << none;
}

void RunPumpTest::describesNames()
{
    QFETCH(QString, path);
    QFETCH(QString, name);
    run(u"text = 'a'\ndef told(a, b=1, *rest, only, free=2, **more):\n    'What it does. And more.'\n"
        "class Teller:\n    'Tells.'\n    def tell(self, text): pass\n"_s);
    Completion one {name, {}, {}, {}};
    describeLiveName(path, name, one);
    QTEST(one.signature, "signature");
    QTEST(one.help, "help");
}

void RunPumpTest::runsNoCodeForCompletion()
{
    // A thread of a script that keeps the interpreter to itself: the answer is none, and soon.
    run(u"import threading, re, time\n"
        "def hog():\n    re.match('(a+)+$', 'a' * 25 + 'b')\n    free.append(1)\n"
        "free = []\nthreading.Thread(target=hog).start()\n"_s);
    const QStringList found = liveCompletions(u"prin"_s);
    QVERIFY(found.isEmpty() || found == QStringList {u"print"_s});
    QTRY_COMPARE_WITH_TIMEOUT(liveCompletions(u"prin"_s), QStringList {u"print"_s}, 30000);
}

void RunPumpTest::completesInThePrompt_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QList<int>>("keys");
    QTest::addColumn<QString>("text"); // then; "ran" for what was run
    const auto row = [](const char *name, const char *typed, const QList<int> &keys, const char *text) {
        QTest::newRow(name) << QString::fromUtf8(typed) << keys << QString::fromUtf8(text);
    };
    const int request = (Qt::CTRL | Qt::Key_Space).toCombined();
    row("Tab takes the one that stands out", "print(unmis", {Qt::Key_Tab}, "print(unmistakable");
    row("an arrow chooses", "unmistakable.spl", {Qt::Key_Down, Qt::Key_Tab}, "unmistakable.splitlines");
    row("Return takes what was chosen", "unmistakable.spl", {Qt::Key_Down, Qt::Key_Return}, "unmistakable.splitlines");
    row("Return runs what was not", "print('ran') # unmis", {Qt::Key_Return}, "ran");
    row("Return beside a list", "0 if unmis", {Qt::Key_Return}, "");
    row("behind a dot", "unmistakable.", {Qt::Key_Tab}, "unmistakable.capitalize");
    row("asked for", "unmistakable.sp", {Qt::Key_Escape, request, Qt::Key_Down, Qt::Key_Return}, "unmistakable.splitlines");
    row("one that is certain", "unm", {Qt::Key_Escape, request}, "unmistakable");
    row("not by one letter", "u", {Qt::Key_Down}, "u");
    row("not in a string", "'unmis", {Qt::Key_Down}, "'unmis");
    row("behind a string", "'\\'' + unmis", {Qt::Key_Tab}, "'\\'' + unmistakable");
    row("not for a name that is whole", "print", {Qt::Key_Down}, "print");
    row("typing on", "unm", {Qt::Key_I, Qt::Key_Backspace, Qt::Key_Tab}, "unmistakable");
    row("not behind a caret that went", "unm", {Qt::Key_Left, Qt::Key_Down}, "unm");
}

void RunPumpTest::completesInThePrompt()
{
    QFETCH(QString, typed);
    QFETCH(QList<int>, keys);
    QFETCH(QString, text);
    run(u"unmistakable = 'text'"_s);
    PromptLine prompt;
    prompt.show();
    prompt.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&prompt));
    QTest::keyClicks(&prompt, typed);
    for (const int key : keys)
        QTest::keyClick(&prompt, Qt::Key(key & ~Qt::CTRL), key & Qt::CTRL ? Qt::ControlModifier : Qt::NoModifier);
    if (text == "ran"_L1)
        QVERIFY(m_panel->console->string().endsWith(u"\nran\n"_s));
    QCOMPARE(prompt.text(), text == "ran"_L1 ? QString() : text);
}

RUNEBOOK_TEST_MAIN(RunPumpTest)
#include "tst_runpump.moc"
