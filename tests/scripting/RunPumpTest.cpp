#include "document/VXDocument.h"
#include "platform/Background.h"
#include "platform/CallLater.h"
#include "platform/documents/DocumentController.h"
#include "scripting/classes/ScriptApplication.h"
#include "scripting/panel/RunIndicator.h"
#include "scripting/panel/VXMacroViewController.h"
#include "tests/Files.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/scripting/RunFixture.h"

#include <QSignalSpy>
#include <QtWidgets>
#include <thread>

using namespace runebook;
using namespace Qt::StringLiterals;

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

/// Windows while a script runs.
class RunPumpTest : public QObject, RunFixture
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { startInterpreter(); }
    void init() { showPanel(); }
    void cleanup() { endPanel(); }

    TABLE(showsOutputWhileAScriptRuns, (const QString &code), {
        row("loop", "while time.time() < end: pass");
        row("sleep", "time.sleep(0.4)");
        row("lock", "import threading; l = threading.Lock(); l.acquire(); l.acquire(timeout=0.4)");
        row("regular expression", "import re\nwhile time.time() < end: re.match('(a+)+$', 'a' * 22 + 'b')");
    })
    {
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

    void marksALargeWriteOnce()
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

    void refusesInput()
    {
        const QShortcut shortcut(QKeySequence(u"Ctrl+K"_s), m_panel.get());
        QSignalSpy clicked(&shortcut, &QShortcut::activated), pressed(m_panel->button, &QPushButton::clicked);
        QSignalSpy refused(&RunPump::shared(), &RunPump::refused);
        const QPoint place = m_panel->button->mapTo(m_panel.get(), m_panel->button->rect().center());
        RunIndicator indicator(RunIndicator::Stop::WithButton, m_panel.get());
        QStringList shown; // each text that the state had
        press(Qt::Key_A, Qt::NoModifier, u"a"_s);
        press(Qt::Key_K, Qt::ControlModifier);
        press(Qt::Key_Delete);
        QPointer<QWidget> gone = new QWidget;
        gone->deleteLater();
        bool isFirst = true;
        connect(&RunPump::shared(), &RunPump::pumped, &indicator, [&] {
            const auto *stop = indicator.findChild<QToolButton *>();
            const auto *state = indicator.findChild<QLabel *>();
            QVERIFY(indicator.isVisible() && stop->accessibleName() == u"Stop the script"_s);
            QVERIFY(!stop->geometry().intersects(state->geometry()));
            QCOMPARE(state->accessibleName(), u"State of the script"_s);
            QVERIFY(gone || !isFirst);
            if (shown.isEmpty() || shown.last() != indicator.text())
                shown << indicator.text();
            if (std::exchange(isFirst, false))
                QMetaObject::invokeMethod(
                    this, [&] { QTest::mouseClick(m_panel->windowHandle(), Qt::LeftButton, {}, place); },
                    Qt::QueuedConnection);
        });
        QCoreApplication::postEvent(m_panel->windowHandle(), new QCloseEvent);
        for (const QString &committed : {u""_s, u"é"_s}) { // what is only being composed is nothing yet
            auto *composed = new QInputMethodEvent(u"e"_s, {});
            composed->setCommitString(committed);
            QCoreApplication::postEvent(m_panel->field, composed);
        }
        run(u"import time; time.sleep(2.4)"_s); // the word stays for two seconds
        QVERIFY(!indicator.isVisible());
        const QString refusal = u"Not while a script runs: wait, or stop it with Ctrl+."_s;
        QCOMPARE(shown, (QStringList {refusal, u"Running “Macro”…"_s}));
        QCOMPARE(refused.size(), 6);
        // What comes after it finds nothing of all that.
        QTRY_VERIFY(!gone);
        QTest::keyClick(m_panel->field, Qt::Key_B);
        QCOMPARE(m_panel->field->text(), u"b"_s);
        QVERIFY(clicked.isEmpty() && pressed.isEmpty() && m_panel->isVisible());
    }

    void letsTheUserRead()
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
                QCoreApplication::postEvent(window,
                                            new QWheelEvent(at(20, 20), m_panel->mapToGlobal(at(20, 20)), {},
                                                            {0, -1200}, Qt::NoButton, Qt::NoModifier,
                                                            Qt::NoScrollPhase, false));
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

    void keepsOwnWorkForTheEnd()
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

    TABLE(stops, (const QString &code, bool byEscape), {
        row("loop", kEndlessLoop, false);
        row("sleep", "import time; time.sleep(60)", false);
        row("regular expression", "import re; re.match('(a+)+$', 'a' * 60 + 'b')", false);
        row("printing, Escape twice", "while True: print('x')", true);
    })
    {
        SKIP_WITHOUT_SIGNALS(code);
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

    /// A key that is held, or has another key with it, is none that stops.
    void goesOnAtOtherKeys()
    {
        SKIP_WITHOUT_SIGNALS(QString());
        std::thread user([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(150));
            for (int time = 0; time < 3; ++time)
                press(Qt::Key_Escape, Qt::NoModifier, {}, time > 0);
            press(Qt::Key_Escape, Qt::ShiftModifier);
            press(Qt::Key_Period, Qt::ControlModifier | Qt::AltModifier);
            press(Qt::Key_Period);
        });
        run(u"import time\nfor step in range(40): time.sleep(0.02); print(step)\nprint('done')"_s);
        user.join();
        QVERIFY2(m_panel->console->string().endsWith(u"39\ndone\n"_s),
                 qPrintable(m_panel->console->string().right(300)));
    }

    TABLE(stopsScriptsThatRefuse, (const QString &code), {
        row("bare except", "import time\nwhile True:\n    try: time.sleep(60)\n    except: pass");
        row("except that works",
            u"import time\nwhile True:\n    try:\n        "_s + kEndlessLoop
                + u"\n    except BaseException as e:\n        time.sleep(0.01)\n"_s);
        row("interrupts ignored",
            "import signal, time\n"
            "signal.signal(signal.SIGINT, signal.SIG_IGN)\n"
            "while True: time.sleep(60)\n");
    })
    {
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

    /// Stop at every pump, also while the error is being printed.
    TABLE(endsWithTheTraceback, (const QString &report), {
        row("the interpreter's", QString());
        row("a hook that takes long",
            "def hook(*error):\n    import time\n    while True: time.sleep(60)\nsys.excepthook = hook\n");
        row("a stream that takes long",
            u"class Slow:\n    def write(self, text):\n        "_s + kEndlessLoop
                + u"\nsys.stderr = Slow()\n"_s);
    })
    {
        run(u"import sys\ndef deep(n):\n    if n: deep(n - 1)\n    "_s + kEndlessLoop
            + u"\ntheirs = sys.stderr\n"_s + report);
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

    /// Code of a script that an operation calls back finds it half way: nothing is painted before its end.
    TABLE(waitsForTheEndOfOperations, (const QString &code, bool isPainted), {
        row("the script itself", "slowly()", true);
        row("a delegate", "bar.closeTabItem_(tab)", false);
        row("a script run by the script", "VXScriptingHandler.sharedHandler().runMacroFile_(path)", true);
        row("a script run by a delegate", "tabs.runs = True; bar.closeTabItem_(tab)", false);
    })
    {
        const QTemporaryDir folder;
        const QString script = write(folder.filePath(u"inner.py"_s), "slowly()\n");
        int inside = 0, outside = 0;
        connect(&RunPump::shared(), &RunPump::pumped, m_panel.get(),
                [&] { ++(m_panel->console->string().endsWith(u"in\n"_s) ? inside : outside); });
        run(u"import time\npath = '"_s + script
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

    void autosavesInTheMiddle()
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
        // What was there before lies on the disk when the script begins. What it does arrives while it works
        // on, and again; the timers that would see to it have no turn meanwhile.
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
            "del info\n"_s.arg(folder.path()));
        controller.setAutosavingBound(bound);
        QTRY_COMPARE(m_panel->console->toPlainText().trimmed(), u"first 1 0 then 2"_s);
        document->close();
        qputenv("XDG_DATA_HOME", before);
    }

    void answersTheStopButton()
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
        run(kEndlessLoop);
        disconnect(connection);
        QVERIFY(m_panel->console->string().endsWith(u"KeyboardInterrupt\n"_s));
    }

    void tellsOfRuns()
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

    void tellsOfStandstill()
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

    void addsUpStandstill()
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

private:
    /// Presses a key as soon as the event loop turns. On any thread.
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier, const QString &text = {},
               bool isHeld = false)
    {
        runOnMainThread([=, this] {
            for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease})
                qt_handleKeyEvent(m_panel->windowHandle(), type, key, modifiers, text, isHeld, 1);
        });
    }
};

RUNEBOOK_TEST_MAIN(RunPumpTest)
#include "RunPumpTest.moc"
