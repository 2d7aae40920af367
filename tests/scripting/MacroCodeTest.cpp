#include "scripting/panel/RunIndicator.h"
#include "scripting/python/RunPump.h"
#include "scripting/python/ScriptRun.h"
#include "scripting/python/ScriptRunEntries.h"
#include "tests/Files.h"
#include "tests/PaintedTexts.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/scripting/PanelFixture.h"

#include <QtWidgets>

using namespace runebook;
using namespace Qt::StringLiterals;

/// The code of a tab: how it is edited, found, replaced and run.
class MacroCodeTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { startPanels(); }
    void init() { forgetPanels(); }
    void cleanup() { DocumentController::shared().releaseAll(); }

    void asksForInput()
    {
        VXMacroWindowController panel;
        panel.showPanel();
        VXScriptingHandler::sharedHandler()->setMacroPanelController(&panel);
        int asked = 0;
        QTimer answering;
        connect(&answering, &QTimer::timeout, this, [&asked] {
            auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            dialog->findChild<QLineEdit *>()->setText(u"typed"_s);
            ++asked < 3 ? dialog->accept() : dialog->reject();
        });
        answering.start(5);
        runPanelCode(
            u"print('got', input('Name? '))\nimport sys\nprint('read', sys.stdin.readline(), end='')"_s);
        QCOMPARE(panel.write(), u"Name? typed\ngot typed\nread typed\n"_s);
        runPanelCode(u"input()"_s);
        QVERIFY2(panel.write().contains(u"EOFError"_s), qPrintable(panel.write()));
        QCOMPARE(asked, 3);
        VXScriptingHandler::sharedHandler()->setMacroPanelController(nullptr);
    }

    TABLE(zooms, (int size, const QChar &key, int after), {
        const auto add = [&](const char *name, int size, char16_t key, int after) {
            row(name, size, QChar(key), after);
        };
        add("13 + 14", 13, u'+', 14);
        add("40 + 40", 40, u'+', 40);
        add("3 + 8", 3, u'+', 8);
        add("13 - 12", 13, u'-', 12);
        add("8 - 7", 8, u'-', 7);
        add("7 - 7", 7, u'-', 7);
        add("90 - 39", 90, u'-', 39);
        add("20 0 13", 20, u'0', 13);
    })
    {
        Panel panel;
        defaults().setObjectForKey(size, u"MacroCodeFontSize"_s);
        panel.press(key.unicode());
        QCOMPARE(defaults().integerForKey(u"MacroCodeFontSize"_s), after);
        QCOMPARE(panel.editor().font().pointSize(), after);
        QCOMPARE(panel.console().font().pointSize(), after);
    }

    void changesFonts()
    {
        defaults().setObjectForKey(45, u"MacroCodeFontSize"_s);
        Panel panel;
        QCOMPARE(panel.controller.macroFontSize(), 45);
        QCOMPARE(panel.controller.activeMacroController()->macroFontSize(), 45);
        defaults().setObjectForKey(46, u"MacroCodeFontSize"_s);
        QCOMPARE(panel.controller.macroFontSize(), 13);
        QCOMPARE(panel.controller.macroFont().pointSize(), 13);
        QCOMPARE(panel.controller.activeMacroController()->macroFontSize(), 46);
        // Keywords and comments, as one sees them.
        panel.controller.activeMacroController()->setCode(u"def f(): # why"_s);
        QTRY_VERIFY(painted(*panel.editor().viewport(), u"def"_s).font.bold());
        const QFont comment = painted(*panel.editor().viewport(), u"# why"_s).font;
        QVERIFY(comment.italic() && !comment.bold());
        QCOMPARE(comment.pointSize(), 46);
        for (const int size : {-1, 0, 100'000'000}) {
            defaults().setObjectForKey(size, u"MacroCodeFontSize"_s);
            QCOMPARE(panel.controller.macroFontSize(), 13);
            QVERIFY(panel.editor().font().pointSize() > 0 && panel.editor().font().pointSize() < 1000);
        }
        QCOMPARE(panel.controller.messageAttributes(), panel.controller.errorAttributes());
    }

    void findsText()
    {
        Panel panel;
        panel.controller.activeMacroController()->setCode(u"alpha beta\nAlpha gamma"_s);
        panel.editor().setSelectedRange({0, 5});
        panel.press(Qt::Key_E);
        panel.press(Qt::Key_G);
        QCOMPARE(panel.editor().selectedRange(), (TextRange {11, 5}));
        panel.press(Qt::Key_G); // around the end
        QCOMPARE(panel.editor().selectedRange(), (TextRange {0, 5}));
        panel.press(Qt::Key_G, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(panel.editor().selectedRange(), (TextRange {11, 5}));
        panel.press(Qt::Key_F);
        QTest::keyClicks(QApplication::focusWidget(), u"gam"_s);
        QCOMPARE(panel.editor().selectedRange(), (TextRange {17, 3}));
        // What is found stands out, though the keyboard is in the bar.
        QCOMPARE(panel.editor().palette().brush(QPalette::Inactive, QPalette::Highlight),
                 QApplication::palette().brush(QPalette::Active, QPalette::Highlight));
        QVERIFY(panel.editor().testAttribute(Qt::WA_SetPalette));
        panel.press(Qt::Key_Escape, Qt::NoModifier);
        QCOMPARE(QApplication::focusWidget(), &panel.editor());
        QVERIFY(!panel.editor().testAttribute(Qt::WA_SetPalette));
        for (QWidget *pane : {static_cast<QWidget *>(&panel.console()),
                              static_cast<QWidget *>(panel.controller.window()->parts().prompt),
                              static_cast<QWidget *>(&panel.editor())}) {
            panel.press(Qt::Key_F6, Qt::NoModifier);
            QCOMPARE(QApplication::focusWidget(), pane);
        }
        QVERIFY(!panel.controller.window()->parts().findBar->isVisible());
    }

    /// By its keys and by its buttons, which Tab leads to, as a plain search in the text.
    void findsLikeAPlainSearch()
    {
        Panel panel;
        FindBar &bar = *panel.controller.window()->parts().findBar;
        QRandomGenerator random(5);
        QString text;
        for (int i = 0; i < 300; ++i)
            text += u"abABn \n"_s.at(random.bounded(7));
        panel.controller.activeMacroController()->setCode(text);
        panel.press(Qt::Key_F);
        auto *field = qobject_cast<QLineEdit *>(QApplication::focusWidget());
        TextRange selected = panel.editor().selectedRange();
        bool matchesCase = false;
        QString note;
        const auto find = [&](const QString &wanted, bool backward, int from) {
            const auto sensitivity = matchesCase ? Qt::CaseSensitive : Qt::CaseInsensitive;
            const auto at = [&](qsizetype begin) {
                return backward ? begin > 0 ? text.lastIndexOf(wanted, begin - 1, sensitivity) : -1
                                : text.indexOf(wanted, begin, sensitivity);
            };
            qsizetype found = at(from);
            const bool hasWrapped = found < 0;
            if (hasWrapped)
                found = at(backward ? text.size() : 0);
            note = u"Not found"_s;
            if (found < 0)
                return;
            selected = {int(found), int(wanted.size())};
            note = u"%1%2 of %3"_s.arg(hasWrapped ? u"Wrapped, "_s : QString())
                       .arg(text.first(found + wanted.size()).split(wanted, {}, sensitivity).size() - 1)
                       .arg(text.split(wanted, {}, sensitivity).size() - 1);
        };
        const auto pressButton = [&](int tabs) {
            field->setFocus();
            for (int tab = 0; tab < tabs; ++tab)
                panel.press(Qt::Key_Tab, Qt::NoModifier);
            panel.press(Qt::Key_Space, Qt::NoModifier);
            field->setFocus();
        };
        for (int step = 0; step < 300; ++step) {
            const QString before = field->text();
            const int what = before.isEmpty() ? 0 : random.bounded(6);
            if (what == 0) {
                const QString wanted =
                    QStringList {u"a"_s, u"Ab"_s, u"bN"_s, u"b a"_s, u"nn"_s, u"abn"_s}.at(random.bounded(6));
                field->selectAll();
                QTest::keyClicks(field, wanted);
                for (qsizetype size = 1; size <= wanted.size(); ++size)
                    find(wanted.first(size), false, selected.location);
            } else if (what == 1) {
                matchesCase = !matchesCase;
                pressButton(1);
                find(before, false, selected.location);
            } else {
                const bool backward = what % 2;
                if (what < 4)
                    panel.press(Qt::Key_Return, backward ? Qt::ShiftModifier : Qt::NoModifier);
                else
                    pressButton(backward ? 2 : 3);
                find(before, backward, backward ? selected.location : selected.end());
            }
            QCOMPARE(panel.editor().selectedRange(), selected);
            QCOMPARE(bar.findChild<QLabel *>()->text(), note);
        }
        pressButton(4);
        QVERIFY(!bar.isVisible());
    }

    void replacesText()
    {
        Panel panel;
        FindBar &bar = *panel.controller.window()->parts().findBar;
        panel.controller.activeMacroController()->setCode(u"alpha beta\nAlpha gamma\nalpha"_s);
        panel.press(Qt::Key_F);
        QTest::keyClicks(QApplication::focusWidget(), u"alpha"_s);
        QCOMPARE(bar.findChild<QLabel *>()->text(), u"1 of 3"_s);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QCOMPARE(bar.findChild<QLabel *>()->text(), u"2 of 3"_s);
        const QList<QLineEdit *> fields = bar.findChildren<QLineEdit *>();
        fields.last()->setFocus();
        QTest::keyClicks(fields.last(), u"o"_s);
        QTest::keyClick(fields.last(), Qt::Key_Return);
        QCOMPARE(panel.editor().string(), u"alpha beta\no gamma\nalpha"_s);
        QCOMPARE(panel.editor().selectedRange(), (TextRange {19, 5}));
        QCOMPARE(bar.replaceAll(), 2);
        QCOMPARE(panel.editor().string(), u"o beta\no gamma\no"_s);
        panel.editor().undo(); // all of it is one step
        QCOMPARE(panel.editor().string(), u"alpha beta\no gamma\nalpha"_s);
    }

    void goesToLines()
    {
        Panel panel;
        panel.controller.activeMacroController()->setCode(u"a\nb\nc\nd"_s);
        panel.press(Qt::Key_G, Qt::AltModifier);
        auto *dialog = panel.controller.window()->findChild<QInputDialog *>();
        QVERIFY(dialog);
        dialog->setIntValue(3);
        dialog->accept();
        QCOMPARE(panel.editor().selectedRange(), (TextRange {4, 0}));
    }

    TABLE(findsLines, (const QString &text, int line, const QString &selected), {
        row("first, with its break", u"a\nbb\nccc", 1, u"a\n");
        row("middle", u"a\nbb\nccc", 2, u"bb\n");
        row("last, without a break", u"a\nbb\nccc", 3, u"ccc");
        row("beyond the end", u"a\nbb\nccc", 4, u"");
        row("far beyond the end", u"a", 2'000'000'000, u"");
        row("no number", u"a\nbb", 0, u"a\n");
        row("negative", u"a\nbb", -7, u"a\n");
        row("empty text", u"", 1, u"");
    })
    {
        VXMacroViewController tab;
        tab.setCode(text);
        tab.selectTextForLine(line);
        const TextRange range = tab.macroText()->selectedRange();
        QCOMPARE(text.mid(range.location, range.length), selected);
        if (line > text.count(u'\n') + 1)
            QCOMPARE(range, (TextRange {int(text.size()), 0}));
    }

    // marked: the selection stands in brackets
    TABLE(takesPiecesOfCode, (const QString &marked, const QString &code), {
        row("caret in the first line", u"on[]e\ntwo", u"one");
        row("caret in the last line", u"one\ntwo[]", u"\ntwo");
        row("a piece of a line", u"one\nx = [len(y)] + 1", u"\nlen(y)");
        row("a whole line with its break", u"one\n[two\n]three", u"\ntwo");
        row("several lines are taken whole", u"one\nt[wo\nthr]ee\nfour", u"\ntwo\nthree");
        row("an indented line", u"if x:\n    on[]e\ntwo", u"if True:\n    one");
        row("indented lines", u"a\nif x:\n[\tone\n\ttwo]", u"\nif True:\n\tone\n\ttwo");
        row("an indented piece from its start", u"if x:\n  [  one] + 2", u"if True:\n    one");
        row("an indented piece", u"if x:\n    y = [one]", u"\none");
        row("the first line indented", u"  o[]ne", u"  one");
        row("an empty line", u"one\n[]\ntwo", u"\n");
    })
    {
        const qsizetype start = marked.indexOf(u'[');
        const qsizetype end = marked.indexOf(u']') - 1;
        VXMacroViewController tab;
        tab.setCode(QString(marked).remove(u'[').remove(u']'));
        tab.macroText()->setSelectedRange({int(start), int(end - start)});
        QCOMPARE(tab.selectedCode(), code);
    }

    void restoresTheTextOfATab()
    {
        VXMacroViewController tab;
        tab.setCode(u"a\u2028\u00A0b"_s);
        QVariantMap coder;
        tab.encodeRestorableStateWithCoder(&coder);
        QCOMPARE(coder, (QVariantMap {{u"macroText"_s, u"a\u2028\u00A0b"_s}}));
        VXMacroViewController other;
        other.restoreStateWithCoder(coder);
        QCOMPARE(other.macroText()->string(), u"a\u2028\u00A0b"_s);
        other.restoreStateWithCoder({{u"macroText"_s, 5}});
        QCOMPARE(other.code(), u"a\u2028\u00A0b"_s);
    }

    void runsCodeOnTheDocument()
    {
        QVERIFY(VXScriptingHandler::isPythonRunning());
        VXDocument *document = makeDocument();
        Panel panel;
        setScriptConsole(&panel.controller);
        panel.type(u"for info in Doc: info.production = info.name * 2\nprint(\"done\", len(Doc))"_s);
        panel.press(Qt::Key_Return);
        QCOMPARE(panel.controller.write(), u"done 2\n"_s);
        QCOMPARE(document->objectInInfosAtIndex(1)->production(), u"BB"_s);
        QVERIFY(defaults()
                    .arrayForKey(u"VXMacroViews"_s)
                    .first()
                    .toMap()
                    .value(u"code"_s)
                    .toString()
                    .contains(u"done"_s));
        document->undoManager()->undo();
        QVERIFY(document->objectInInfosAtIndex(0)->production().isNull());
        panel.controller.quitMacro();
        panel.controller.clearConsole();
        QVERIFY(!panel.controller.write().isEmpty());
        QCoreApplication::processEvents();
        QVERIFY(panel.controller.write().isEmpty());
        setScriptConsole(nullptr);
    }

    void runsTheSelection()
    {
        QVERIFY(VXScriptingHandler::isPythonRunning());
        Panel panel;
        setScriptConsole(&panel.controller);
        panel.controller.activeMacroController()->setCode(u"print(1)\nprint(2)\nif False:\n    print(3)\n"_s);
        panel.press(Qt::Key_Return, Qt::ShiftModifier);
        panel.press(Qt::Key_Return, Qt::ShiftModifier); // the caret has gone on to the next line
        QCOMPARE(panel.controller.write(), u"1\n2\n"_s);
        panel.editor().setSelectedRange({28, 12});
        panel.press(Qt::Key_Enter, Qt::ShiftModifier | Qt::KeypadModifier);
        QCOMPARE(panel.controller.write(), u"1\n2\n3\n"_s);
        QCOMPARE(panel.editor().string(), u"print(1)\nprint(2)\nif False:\n    print(3)\n"_s);
        setScriptConsole(nullptr);
    }

    void followsLinks()
    {
        QVERIFY(VXScriptingHandler::isPythonRunning());
        Panel panel;
        setScriptConsole(&panel.controller);
        panel.controller.activeMacroController()->setCode(u"a = 1\n\n1 / 0\n# end\n"_s);
        panel.press(Qt::Key_Return);
        const QString output = panel.controller.write();
        QVERIFY2(output.contains(u"File \"<macro>\", line 3\n"_s), qPrintable(output));
        QVERIFY(output.contains(u"ZeroDivisionError"_s));

        // From another tab, by the keyboard's way and by a click: the tab that ran comes to the front.
        panel.press(Qt::Key_T);
        panel.console().showPending();
        const int place = int(output.indexOf(u"<macro>"_s));
        panel.console().setSelectedRange({place, 0});
        const QPoint point = panel.console().cursorRect().center() + QPoint(8, 0);
        QTest::mouseClick(panel.console().viewport(), Qt::LeftButton, {}, point);
        QCOMPARE(panel.bar().selectionIndex(), 0u);
        QCOMPARE(panel.editor().selectedRange(), (TextRange {7, 6}));
        QCOMPARE(QApplication::focusWidget(), &panel.editor());

        const QVariantList link {u"<string>"_s, u"1"_s};
        QVERIFY(!panel.controller.textViewClickedOnLinkAtIndex(&panel.editor(), link, 0));
        QCOMPARE(panel.editor().selectedRange(), (TextRange {7, 6}));
        QVERIFY(panel.controller.textViewClickedOnLinkAtIndex(&panel.console(), link, 0));
        QCOMPARE(panel.editor().selectedRange(), (TextRange {0, 6}));
        setScriptConsole(nullptr);
    }

    void showsThatItRuns()
    {
        QVERIFY(VXScriptingHandler::isPythonRunning());
        Panel panel;
        setScriptConsole(&panel.controller);
        const Ui::VXMacroWindow_11 &parts = panel.controller.window()->parts();
        QVERIFY(!parts.stopAction->isEnabled() && parts.runAction->isEnabled());
        bool wasRunning = false;
        const auto *indicator = panel.controller.window()->findChild<RunIndicator *>();
        bool hadOutput = false;
        const auto connection = connect(&RunPump::shared(), &RunPump::pumped, this, [&] {
            if (hadOutput)
                return; // once: a second Stop would be one with force
            wasRunning = parts.stopAction->isEnabled() && !parts.runAction->isEnabled()
                && indicator->isVisible() && indicator->text().contains(u"Macro 1"_s);
            hadOutput = panel.console().toPlainText().contains(u"begun"_s);
            if (hadOutput)
                parts.stopAction->trigger();
        });
        panel.controller.activeMacroController()->setCode(u"print('begun')\nwhile True: pass\n"_s);
        panel.press(Qt::Key_Return);
        disconnect(connection);
        QVERIFY(wasRunning && hadOutput);
        QVERIFY(panel.controller.write().endsWith(u"KeyboardInterrupt\n"_s));
        QVERIFY(panel.controller.write().contains(u"File \"<macro>\", line 2"_s));
        QVERIFY(!parts.stopAction->isEnabled() && parts.runAction->isEnabled());
        setScriptConsole(nullptr);
    }

    void evaluatesAndCompletes()
    {
        QVERIFY(VXScriptingHandler::isPythonRunning());
        Panel panel;
        setScriptConsole(&panel.controller);
        PromptLine *prompt = panel.controller.window()->parts().prompt;
        QTest::keyClicks(prompt, u"answerOfAll = 6 * 7"_s);
        QTest::keyClick(prompt, Qt::Key_Return);
        QTest::keyClicks(prompt, u"answerOfAll"_s);
        QTest::keyClick(prompt, Qt::Key_Return);
        QVERIFY(panel.controller.write().endsWith(u">>> answerOfAll\n42\n"_s));
        setScriptConsole(nullptr);
        // What the prompt made is offered in the editor, behind the words of its list.
        panel.controller.activeMacroController()->setCode(u"answerOf"_s);
        int selected = -1;
        const QStringList offered = panel.editor().completionsForPartialWordRange({0, 8}, &selected);
        QCOMPARE(offered, QStringList {u"answerOfAll"_s});
    }
};

RUNEBOOK_TEST_MAIN(MacroCodeTest)
#include "MacroCodeTest.moc"
