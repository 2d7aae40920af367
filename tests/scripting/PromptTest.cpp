#include "codeeditor/JSTDocument.h"
#include "codeeditor/JSTTextView.h"
#include "scripting/panel/LiveCompletion.h"
#include "scripting/panel/PromptLine.h"
#include "scripting/panel/VXMacroViewController.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/scripting/RunFixture.h"


using namespace runebook;
using namespace Qt::StringLiterals;

/// The prompt below the console: what lines do, what scripts may ask, what is offered while one types.
class PromptTest : public QObject, RunFixture
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { startInterpreter(); }
    void init() { showPanel(); }
    void cleanup() { endPanel(); }

    TABLE(evaluatesLines, (const QString &line, const QString &shown), {
        row("value", "1 + 1", ">>> 1 + 1\n2\n");
        row("text", "'a' 'b'", ">>> 'a' 'b'\n'ab'\n");
        row("None", "None", ">>> None\n");
        row("statement", "prompted = 5", ">>> prompted = 5\n");
        row("the name of before", " prompted", ">>>  prompted\n5\n");
        row("last value", "_ * 2", ">>> _ * 2\n10\n");
        row("compound", "for i in (1, 2): i", ">>> for i in (1, 2): i\n1\n2\n");
        row("error", "1 / 0",
            ">>> 1 / 0\nTraceback (most recent call last):\n  File \"<prompt>\", line 1\n"
            "    1 / 0\nZeroDivisionError: division by zero\n");
    })
    {
        PromptLine prompt;
        QTest::keyClicks(&prompt, line);
        QTest::keyClick(&prompt, Qt::Key_Return);
        static const QRegularExpression carets(u"\\n *[~^]+\\n"_s); // which older interpreters do not print
        QCOMPARE(m_panel->console->string().replace(carets, u"\n"_s), shown);
        QVERIFY(prompt.text().isEmpty());
    }

    /// Lines of a tab stand in no file; a function of an earlier run has none any more, and must not get
    /// others.
    void showsTheLinesOfTabs()
    {
        run(u"def earlier():\n    raise KeyError(1)\n"_s);
        run(u"def now(f):\n    f()\ntry: now(earlier)\nexcept KeyError as e: raise ValueError(2) from e"_s);
        static const QRegularExpression carets(u"\\n *[~^]+\\n"_s);
        QCOMPARE(
            m_panel->console->string().replace(carets, u"\n"_s),
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

    void asksWhatScriptsAsk()
    {
        // Every dialog gets its first line of text changed, unless nothing is left to enter; then it is
        // accepted.
        QStringList entries {u".smcp"_s, QString(), u"typed"_s};
        QStringList seen;
        int tallest = 0;
        QTimer user;
        connect(&user, &QTimer::timeout, this, [&] {
            auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            const QString entry = entries.isEmpty() ? QString() : entries.takeFirst();
            auto *line = dialog->findChild<QLineEdit *>();
            tallest = std::max(tallest, dialog->frameGeometry().height());
            seen << dialog->windowTitle() + (line ? u": "_s + line->text() : QString());
            if (line && !entry.isNull())
                line->setText(entry);
            const auto *box = qobject_cast<QMessageBox *>(dialog);
            if (box && box->button(QMessageBox::No))
                box->button(QMessageBox::No)->click();
            else
                dialog->accept();
        });
        user.start(5);
        const QString code =
            u"print(askFields('Small caps', suffix='.sc', n=2, style=('a', 'b'), all=True))\n"_s;
        run(code);
        run(code); // begins with the last answers
        run(u"print(askString('Name?'), askYesNo('Sure?'), askChoice('Which?', [1, 2]))"_s);
        QCOMPARE(m_panel->console->string(),
                 u"{'suffix': '.smcp', 'n': 2, 'style': 'a', 'all': True}\n"_s.repeated(2)
                     + u"typed False 1\n"_s);
        QCOMPARE(seen.mid(0, 3), (QStringList {u"Macro: .sc"_s, u"Macro: .smcp"_s, u"Macro: "_s}));
        QCOMPARE(seen.size(), 5);
        run(u"message('line\\n' * 500); askFields('Many', **{'f%d' % i: 'x' for i in range(200)})\n"
            "askYesNo('line\\n' * 500)"_s);
        QCOMPARE(seen.size(), 8);
        run(u"message('Done')"_s);
        QCOMPARE(seen.value(8), u"Macro"_s);
        QVERIFY(tallest < QGuiApplication::primaryScreen()->availableSize().height());
    }

    void showsProgressOfGenerators()
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
                [bar] {
                    qt_handleKeyEvent(bar->windowHandle(), QEvent::KeyPress, Qt::Key_Escape, {}, {}, false,
                                      1);
                },
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

    void remembersLines()
    {
        {
            PromptLine prompt;
            for (const auto line : {"first = 1"_L1, "second = 2"_L1, "second = 2"_L1}) {
                QTest::keyClicks(&prompt, line);
                QTest::keyClick(&prompt, Qt::Key_Enter, Qt::KeypadModifier);
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

    TABLE(completesLiveNames, (const QString &partial, const QStringList &found), {
        row("global", "liv", QStringList {u"live"_s, u"liveClass"_s});
        row("builtin", "isinst", QStringList {u"isinstance"_s});
        row("own and class", "live.a", QStringList {u"live.alone"_s, u"live.also"_s, u"live.answer"_s});
        row("two deep", "live.alone.sta", QStringList {u"live.alone.startswith"_s});
        row("slot", "slotted.held.up", QStringList {u"slotted.held.upper"_s});
        row("class", "liveClass.al", QStringList {u"liveClass.also"_s});
        row("module", "os.path.basen", QStringList {u"os.path.basename"_s});
        row("underscore when typed", "live._h", QStringList {u"live._hidden"_s});
        row("not through a property", "live.answer.", QStringList());
        row("unknown", "nobody.x", QStringList());
        row("of nothing", ".isinst", QStringList());
        row("bridged", "glyph.setProduc", QStringList {u"glyph.setProduction"_s, u"glyph.setProduction_"_s});
        row("__dict__ of its own", "liar.tru", QStringList {u"liar.truth"_s});
    })
    {
        run(u"import os\nran = []\n"
            "class liveClass:\n"
            "    also = 1\n    _hidden = 2\n"
            "    def __init__(self): self.alone = 'text'\n"
            "    @property\n    def answer(self): ran.append('property'); return 'x'\n"
            "    def __getattr__(self, name): ran.append(name); raise AttributeError\n"
            "    def __getattribute__(self, name): ran.append(name); return object.__getattribute__(self, "
            "name)\n"
            "class Slotted:\n    __slots__ = 'held',\n"
            "class Liar:\n    truth = 1\n    @property\n    def __dict__(self): ran.append('dict'); return "
            "{'lie': 1}\n"
            "live = liveClass(); slotted = Slotted(); slotted.held = 'a'; glyph = newInfo('a'); liar = "
            "Liar()\n"
            "ran.clear()"_s);
        QTRY_COMPARE(liveCompletions(partial), found); // it gives up where the machine leaves it no time
        run(u"print(ran)"_s);
        QCOMPARE(m_panel->console->string(), u"[]\n"_s);
    }

    void completesNothingDuringRuns()
    {
        QStringList found {u"not asked"_s};
        connect(&RunPump::shared(), &RunPump::pumped, m_panel.get(),
                [&found] { found = liveCompletions(u"prin"_s); });
        run(u"import time; time.sleep(0.2)"_s);
        QCOMPARE(found, QStringList());
        QTRY_COMPARE(liveCompletions(u"prin"_s), QStringList {u"print"_s});
    }

    TABLE(knowsWhatTheTextBinds, (const QString &code, const QString &has, const QString &hasNot), {
        row("a module that is imported", "import os\nos.", "os.getcwd", "os.addInfo_");
        row("the records of Doc", "for g in Doc:\n\tg.pro", "g.production", "g.progress");
        row("one record of Doc", "Doc['A'].pro", ".production", ".addInfo_");
        row("unknown", "nobody.addIn", "nobody.addInfo_", "nobody.getcwd");
    })
    {
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

    TABLE(describesNames,
          (const QString &path, const QString &name, const QString &signature, const QString &help), {
              const QString none;
              row("function", none, "told", "told(a, b=\u2026, *rest, only, free=\u2026, **more)",
                  "What it does.");
              row("method", "Teller", "tell", "tell(text)", none);
              row("class", none, "Teller", none, "Tells.");
              row("built in", none, "len", "len(obj, /)", "Return the number of items in a container.");
              row("of a text", "text", "join", "join(iterable, /)", "Concatenate any number of strings.");
              row("value", none, "text", none, none);
              row("not there", "nobody", "x", none, none);
          })
    {
        run(u"text = 'a'\ndef told(a, b=1, *rest, only, free=2, **more):\n    'What it does. And more.'\n"
            "class Teller:\n    'Tells.'\n    def tell(self, text): pass\n"_s);
        Completion one {name, {}, {}, {}};
        describeLiveName(path, name, one);
        QCOMPARE(one.signature, signature);
        QCOMPARE(one.help, help);
    }

    void runsNoCodeForCompletion()
    {
        // A thread of a script that keeps the interpreter to itself: the answer is none, and soon.
        run(u"import threading, re, time\n"
            "def hog():\n    re.match('(a+)+$', 'a' * 25 + 'b')\n    free.append(1)\n"
            "free = []\nthreading.Thread(target=hog).start()\n"_s);
        const QStringList found = liveCompletions(u"prin"_s);
        QVERIFY(found.isEmpty() || found == QStringList {u"print"_s});
        QTRY_COMPARE_WITH_TIMEOUT(liveCompletions(u"prin"_s), QStringList {u"print"_s}, 30000);
    }

    // text: then; "ran" for what was run
    TABLE(completesInThePrompt, (const QString &typed, const QList<int> &keys, const QString &text), {
        const int request = (Qt::CTRL | Qt::Key_Space).toCombined();
        row("Tab takes the one that stands out", "print(unmis", {Qt::Key_Tab}, "print(unmistakable");
        row("an arrow chooses", "unmistakable.spl", {Qt::Key_Down, Qt::Key_Tab}, "unmistakable.splitlines");
        row("Return takes what was chosen", "unmistakable.spl", {Qt::Key_Down, Qt::Key_Return},
            "unmistakable.splitlines");
        row("Return runs what was not", "print('ran') # unmis", {Qt::Key_Return}, "ran");
        row("Return beside a list", "0 if unmis", {Qt::Key_Return}, "");
        row("behind a dot", "unmistakable.", {Qt::Key_Tab}, "unmistakable.capitalize");
        row("asked for", "unmistakable.sp", {Qt::Key_Escape, request, Qt::Key_Down, Qt::Key_Return},
            "unmistakable.splitlines");
        row("one that is certain", "unm", {Qt::Key_Escape, request}, "unmistakable");
        row("not by one letter", "u", {Qt::Key_Down}, "u");
        row("not in a string", "'unmis", {Qt::Key_Down}, "'unmis");
        row("behind a string", "'\\'' + unmis", {Qt::Key_Tab}, "'\\'' + unmistakable");
        row("Shift by itself", "unmistakable.spl", {Qt::Key_Shift, Qt::Key_Down, Qt::Key_Tab},
            "unmistakable.splitlines");
        row("not for a name that is whole", "print", {Qt::Key_Down}, "print");
        row("typing on", "unm", {Qt::Key_I, Qt::Key_Backspace, Qt::Key_Tab}, "unmistakable");
        row("not behind a caret that went", "unm", {Qt::Key_Left, Qt::Key_Down}, "unm");
    })
    {
        run(u"unmistakable = 'text'"_s);
        const auto textAfterKeys = [&] {
            PromptLine prompt;
            prompt.show();
            prompt.activateWindow();
            if (!QTest::qWaitForWindowActive(&prompt))
                return u"not active"_s;
            QTest::keyClicks(&prompt, typed);
            for (const int key : keys)
                QTest::keyClick(&prompt, Qt::Key(key & ~Qt::CTRL),
                                key & Qt::CTRL ? Qt::ControlModifier : Qt::NoModifier);
            return prompt.text();
        };
        // Typed again where the machine left the interpreter no time to answer before the list was given up.
        QTRY_COMPARE(textAfterKeys(), text == "ran"_L1 ? QString() : text);
        if (text == "ran"_L1)
            QVERIFY(m_panel->console->string().endsWith(u"\nran\n"_s));
    }
};

RUNEBOOK_TEST_MAIN(PromptTest)
#include "PromptTest.moc"
