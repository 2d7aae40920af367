#include "app/tabbar/VXTabBarControl.h"
#include "codeeditor/JSTTextView.h"
#include "document/VXDocument.h"
#include "platform/DocumentController.h"
#include "platform/MessageBar.h"
#include "platform/StandardFolders.h"
#include "platform/UserDefaults.h"
#include "scripting/RunPump.h"
#include "scripting/ScriptRun.h"
#include "scripting/VXScriptingHandler.h"
#include "scripting/bridge/ScriptApplication.h"
#include "scripting/panel/ConsoleView.h"
#include "scripting/panel/SnippetsPopup.h"
#include "scripting/panel/VXMacroViewController.h"
#include "scripting/panel/VXMacroWindow.h"
#include "scripting/panel/VXMacroWindowController.h"
#include "tests/Files.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "ui_VXMacroWindow_11.h"

#include <QAbstractButton>
#include <QDropEvent>
#include <QFileDialog>
#include <QHelpEvent>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTextBlock>
#include <QTimer>
#include <QToolTip>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

UserDefaults &defaults()
{
    return UserDefaults::standard();
}

QVariantMap record(const QString &title, const QString &code)
{
    return {{u"title"_s, title}, {u"code"_s, code}};
}

/// A shown panel with the keyboard.
struct Panel {
    VXMacroWindowController controller;

    Panel()
    {
        controller.showPanel();
        (void)QTest::qWaitForWindowActive(controller.window());
        editor().setFocus();
    }
    VXTabBarControl &bar() { return *controller.tabBarControl(); }
    JSTTextView &editor() { return *controller.activeMacroController()->macroText(); }
    ConsoleView &console() { return *controller.window()->parts().consoleText; }
    void press(int key, Qt::KeyboardModifiers modifiers = Qt::ControlModifier)
    {
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : &editor(), Qt::Key(key),
                        modifiers);
    }
    /// Replaces the tab's code as a user does.
    void type(const QString &code)
    {
        press(Qt::Key_A);
        press(Qt::Key_Delete, Qt::NoModifier);
        for (const QString &line : code.split(u'\n')) {
            if (!editor().string().isEmpty())
                press(Qt::Key_Return, Qt::NoModifier);
            QTest::keyClicks(&editor(), line);
            press(Qt::Key_Escape, Qt::NoModifier); // the completions, should they be there
        }
    }
    /// "title: code" of each tab, the selected one in brackets.
    QString tabs()
    {
        QStringList texts;
        for (QObject *item : bar().tabItems()) {
            const auto *tab = qobject_cast<VXMacroViewController *>(item);
            const QString text = tab->title() + ": "_L1 + tab->code();
            texts << (item == bar().selectedTabItem() ? u'[' + text + u']' : text);
        }
        return texts.join(" | "_L1);
    }
};

} // namespace

// Script files

namespace {

void press(MessageBar &bar, const QString &answer)
{
    // Those of an earlier question wait for their end.
    const QList<QPushButton *> buttons = bar.findChildren<QPushButton *>();
    const auto last = std::find_if(buttons.crbegin(), buttons.crend(), [&answer](const QPushButton *button) {
        return button->text().remove(u'&') == answer;
    });
    QVERIFY(last != buttons.crend());
    (*last)->click();
}

} // namespace

// The window

// Fonts

// Keys

// Running

// From scripts

/// As the program's delegate hands the panel out.
class Delegate : public QObject
{
    Q_OBJECT
public:
    explicit Delegate(QObject *panel) : m_panel(panel) { }
    Q_INVOKABLE QObject *macroPanelController() const { return m_panel; }

private:
    QObject *m_panel;
};

class MacroPanelTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
        VXScriptingHandler::sharedHandler();
    }

    void init()
    {
        for (const char *key : {"VXMacroViews", "VXSelectedMacroView", "macroCode", "MacroCodeFontSize",
                                "showMacroPanel", "VXMacroPanelGeometry", "VXMacroPanelSplitter"})
            defaults().removeObjectForKey(QString::fromLatin1(key));
    }

    void cleanup() { DocumentController::shared().releaseAll(); }

    void costsNothingBeforeItIsShown()
    {
        VXMacroWindowController panel;
        QVERIFY(!panel.isWindowLoaded());
        QVERIFY(!panel.isReallyVisible());
        panel.hidePanel();
        panel.clearConsole(nullptr);
        QVERIFY(!panel.isWindowLoaded());
        QVERIFY(!defaults().isSet(u"VXMacroViews"_s));

        panel.newTab();
        QVERIFY(panel.isWindowLoaded());
        QVERIFY(!panel.isReallyVisible());
        QVERIFY(!panel.activeMacroController()->isEditorMade());
        QVERIFY(!panel.window()->canBecomeMainWindow());
        QVERIFY(!panel.window()->testAttribute(Qt::WA_QuitOnClose));
        panel.showPanel();
        QTRY_VERIFY(panel.isReallyVisible());
        QVERIFY(panel.activeMacroController()->isEditorMade());
        panel.hidePanel();
        QVERIFY(!panel.isReallyVisible());
    }

    void editsScriptFiles()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"a.py"_s);
        write(path, "one\ntwo\nthree\n");
        VXMacroWindowController panel;
        QVERIFY(panel.openScript(path, 2));
        VXMacroViewController *tab = panel.activeMacroController();
        JSTTextView *text = tab->macroText();
        QCOMPARE(text->selectedRange(), (TextRange {4, 4}));
        QVERIFY(panel.openScript(path, 3)); // the tab that has it
        QCOMPARE(panel.tabBarControl()->countOfTabItems(), 2U);

        // Another program changes it: read again at once where nothing was edited, the caret where it was.
        MessageBar &bar = *panel.window()->messageBar();
        write(path, "ONE\ntwo\nTHREE\nfour\n");
        Q_EMIT panel.window()->becameKey();
        QCOMPARE(tab->code(), u"ONE\ntwo\nTHREE\nfour\n"_s);
        QCOMPARE(text->textCursor().blockNumber(), 3);
        text->undo(); // which is one step
        QCOMPARE(tab->code(), u"one\ntwo\nthree\n"_s);

        // Edited here and there: asked; neither side goes without an answer.
        write(path, "theirs\n");
        Q_EMIT panel.window()->becameKey();
        QCOMPARE(tab->code(), u"one\ntwo\nthree\n"_s);
        panel.window()->parts().saveAction->trigger();
        QCOMPARE(contentOf(path), QByteArray("theirs\n"));
        press(bar, u"Save Mine"_s);
        QCOMPARE(contentOf(path), QByteArray("one\ntwo\nthree\n"));
        text->setString(u"mine again\n"_s);
        panel.window()->parts().saveAction->trigger();
        QCOMPARE(contentOf(path), QByteArray("mine again\n"));

        // The next start knows what belongs to which file.
        panel.saveMacroTabs();
        VXMacroWindowController next;
        next.window();
        QCOMPARE(next.activeMacroController()->filePath(), path);
        write(path, "later\n");
        Q_EMIT next.window()->becameKey();
        QCOMPARE(next.activeMacroController()->code(), u"later\n"_s);

        // A tab of the panel's own becomes a script of the menu.
        VXMacroViewController *own = panel.addMacroTitle(u"print(1)\n"_s, u"Über / Größe"_s);
        panel.tabBarControl()->selectTabItem(own);
        for (QAction *action : panel.window()->parts().fileMenu->actions()) {
            if (action->text().remove(u'&') == u"Save as Script…"_s)
                action->trigger();
        }
        auto *dialog = panel.window()->findChild<QFileDialog *>();
        QVERIFY(dialog);
        const QString script = dialog->selectedFiles().value(0);
        QVERIFY2(script.endsWith(u"/Scripts/Über  Größe.py"_s)
                     || script.endsWith(u"/Scripts/Über Größe.py"_s),
                 qPrintable(script));
        Q_EMIT dialog->fileSelected(script);
        QCOMPARE(contentOf(script), QByteArray("# MenuTitle: Über / Größe\nprint(1)\n"));
        QCOMPARE(own->filePath(), script);
        QVERIFY(QFile::remove(script));
    }

    void takesDroppedFiles()
    {
        const QTemporaryDir folder;
        write(folder.filePath(u"dropped.py"_s), "x = 1\n");
        VXMacroWindowController panel;
        panel.showPanel();
        QVERIFY(QTest::qWaitForWindowExposed(panel.window()));
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(folder.filePath(u"dropped.py"_s))});
        QWidget *editor = panel.activeMacroController()->macroText()->viewport();
        const QString before = panel.activeMacroController()->code();
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(editor, &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(editor, &drop);
        QCOMPARE(panel.activeMacroController()->code(), u"x = 1\n"_s);
        QCOMPARE(qobject_cast<VXMacroViewController *>(panel.tabBarControl()->tabItems().first())->code(),
                 before);
    }

    TABLE(refusesWhatIsNoScript, (const QByteArray &bytes, const QString &reason), {
        row("not UTF-8", QByteArray("caf\xe9"), "UTF-8");
        row("too large", QByteArray((4 << 20) + 1, 'x'), "4 MB");
        row("a folder", QByteArray(), "no plain file");
    })
    {
        const QTemporaryDir folder;
        const QString path = bytes.isEmpty() ? folder.path() : folder.filePath(u"a.py"_s);
        if (!bytes.isEmpty())
            write(path, bytes);
        VXMacroWindowController panel;
        QVERIFY(!panel.openScript(path));
        QVERIFY2(panel.window()->messageBar()->text().contains(reason),
                 qPrintable(panel.window()->messageBar()->text()));
        QCOMPARE(panel.tabBarControl()->countOfTabItems(), 1U);
    }

    /// What is printed behind it stays, without a turn of the event loop in between.
    void isClearedByTheMenuAtOnce()
    {
        VXMacroWindowController panel;
        panel.showPanel();
        VXScriptingHandler *handler = VXScriptingHandler::sharedHandler();
        handler->setMacroPanelController(&panel);
        panel.setWrite(u"before\n"_s);
        handler->reloadScriptMenu();
        panel.setWrite(u"behind\n"_s);
        QCoreApplication::processEvents();
        QCOMPARE(panel.write(), u"behind\n"_s);
        handler->setMacroPanelController(nullptr);
    }

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

    TABLE(restoresTabs, (const QVariant &saved, const QVariant &selected, const QString &tabs), {
        const QVariant none;
        const auto list = [](const QVariantList &records) { return QVariant(records); };
        const QString first = u"[Macro 1: # type your Python code here and press cmd+Return to run.]"_s;
        row("never saved", none, none, first);
        row("an empty record takes no number", list({record({}, u"a"_s), QVariantMap(), record({}, u"b"_s)}),
            none, "[Macro 1: a] | Macro 2: b");
        row("titles stay", list({record(u"T"_s, u"a"_s), record({}, u"b"_s)}), QVariant(1),
            "T: a | [Macro 2: b]");
        row("selection beyond the end", list({record(u"A"_s, {}), record(u"B"_s, {}), record(u"C"_s, {})}),
            QVariant(5), "[A: ] | B:  | C: ");
        row("negative selection", list({record(u"A"_s, {}), record(u"B"_s, {})}), QVariant(-1),
            "[A: ] | B: ");
        row("no tabs: one when it becomes key", list({}), none, "[Macro 1: # add code here]");
        row("only empty records", list({QVariantMap()}), none, "[Macro 1: # add code here]");
        row("a text instead of a list", QVariant(u"tabs"_s), QVariant(u"x"_s), first);
        row("texts instead of records", list({u"x"_s, 5, record(u"A"_s, u"a"_s)}), none, "[A: a]");
        row("numbers instead of texts", list({QVariantMap {{u"title"_s, 5}, {u"code"_s, QVariantList {1}}}}),
            none, "[Macro 1: ]");
    })
    {
        defaults().setObjectForKey(saved, u"VXMacroViews"_s);
        defaults().setObjectForKey(selected, u"VXSelectedMacroView"_s);
        VXMacroWindowController controller;
        controller.showPanel();
        QVERIFY(QTest::qWaitForWindowActive(controller.window()));
        QStringList texts;
        for (QObject *item : controller.tabBarControl()->tabItems()) {
            const auto *tab = qobject_cast<VXMacroViewController *>(item);
            const QString text = tab->title() + ": "_L1 + tab->code();
            texts << (item == controller.activeMacroController() ? u'[' + text + u']' : text);
        }
        QCOMPARE(texts.join(" | "_L1), tabs);
    }

    void keepsTabsOverARestart()
    {
        {
            Panel panel;
            panel.type(u"print(1)"_s);
            panel.press(Qt::Key_T);
            panel.type(u"x = \"b\"\nprint(x)"_s);
            panel.press(Qt::Key_F2, Qt::NoModifier);
            QTest::keyClicks(QApplication::focusWidget(), u"Second & last"_s);
            panel.press(Qt::Key_Return, Qt::NoModifier);
            panel.controller.window()->close();
        }
        Panel panel;
        QCOMPARE(panel.tabs(), u"Macro 1: print(1) | [Second & last: x = \"b\"\nprint(x)]"_s);
        // The other way round, by a click on the first tab and without closing.
        const QRectF first = panel.bar().cells().first()->frame();
        QTest::mouseClick(&panel.bar(), Qt::LeftButton, {}, first.center().toPoint());
        QCOMPARE(defaults().integerForKey(u"VXSelectedMacroView"_s), 0);
        QCOMPARE(QApplication::focusWidget(), &panel.editor());
    }

    void keepsWhatIsBeingTyped()
    {
        Panel panel;
        DocumentController &controller = DocumentController::shared();
        const double bound = controller.autosavingBound();
        controller.setAutosavingBound(0.3);
        panel.type(u"#"_s);
        // Never a pause of three seconds, and yet it gets into the settings, again and again.
        const auto kept = [] {
            return defaults()
                .arrayForKey(u"VXMacroViews"_s)
                .value(0)
                .toMap()
                .value(u"code"_s)
                .toString()
                .size();
        };
        for (int i = 0; i < 2; ++i) {
            const qsizetype before = panel.editor().string().size();
            for (int keys = 0; kept() <= before; ++keys) {
                QVERIFY(keys < 10'000);
                QTest::keyClick(&panel.editor(), Qt::Key_X);
                QTest::qWait(2);
            }
        }
        controller.setAutosavingBound(bound);
    }

    void closesAndReopensTabs()
    {
        Panel panel;
        panel.type(u"one"_s);
        panel.controller.consoleText()->setFocus();
        panel.press(Qt::Key_T);
        QCOMPARE(QApplication::focusWidget(), &panel.editor()); // to type in, wherever the focus was
        panel.press(Qt::Key_W);
        QCOMPARE(panel.tabs(), u"[Macro 1: one]"_s);
        QCOMPARE(defaults().arrayForKey(u"VXMacroViews"_s).size(), 1);
        panel.press(Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(panel.tabs(), u"Macro 1: one | [Macro 2: # add code here]"_s);
        panel.press(Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier); // no more of them
        QCOMPARE(panel.bar().countOfTabItems(), 2u);
        panel.press(Qt::Key_W);
        panel.press(Qt::Key_W);
        QVERIFY(!panel.controller.window()->isVisible());
        QCOMPARE(panel.tabs(), u"[Macro 1: one]"_s);
    }

    void remembersThatItWasClosed()
    {
        Panel panel;
        const QString key = u"showMacroPanel"_s;
        defaults().setObjectForKey(true, key);
        panel.controller.hidePanel();
        QVERIFY(defaults().boolForKey(key));
        panel.controller.showPanel();
        QEvent quit(QEvent::Quit);
        QCoreApplication::sendEvent(qApp, &quit); // closes all windows
        QVERIFY(!panel.controller.window()->isVisible());
        QVERIFY(defaults().boolForKey(key));
        QCoreApplication::processEvents();
        panel.controller.showPanel();
        panel.controller.window()->close();
        QVERIFY(!defaults().boolForKey(key));
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
        QVERIFY(panel.controller.activeMacroController()->macroFontBold().bold());
        for (const int size : {-1, 0, 100'000'000}) {
            defaults().setObjectForKey(size, u"MacroCodeFontSize"_s);
            QCOMPARE(panel.controller.macroFontSize(), 13);
            QVERIFY(panel.editor().font().pointSize() > 0 && panel.editor().font().pointSize() < 1000);
        }
        QCOMPARE(panel.controller.messageAttributes(), panel.controller.errorAttributes());
    }

    void refusesToSave()
    {
        VXDocument *document = makeDocument();
        Panel panel;
        QSignalSpy refused(panel.controller.window(), &VXMacroWindow::saveRefused);
        panel.press(Qt::Key_S);
        QCOMPARE(refused.size(), 1);
        QVERIFY(document->isDocumentEdited());
        QCOMPARE(DocumentController::shared().currentDocument(), document);
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
        panel.press(Qt::Key_Escape, Qt::NoModifier);
        QCOMPARE(QApplication::focusWidget(), &panel.editor());
        for (QWidget *pane : {static_cast<QWidget *>(&panel.console()),
                              static_cast<QWidget *>(panel.controller.window()->parts().prompt),
                              static_cast<QWidget *>(&panel.editor())}) {
            panel.press(Qt::Key_F6, Qt::NoModifier);
            QCOMPARE(QApplication::focusWidget(), pane);
        }
        QVERIFY(!panel.controller.window()->parts().findBar->isVisible());
    }

    void editsLines()
    {
        Panel panel;
        panel.type(u"a\nb\nc"_s);
        panel.press(Qt::Key_A);
        panel.press(Qt::Key_Slash);
        QCOMPARE(panel.editor().string(), u"# a\nb\n# c"_s);
        panel.press(Qt::Key_BracketRight);
        QCOMPARE(panel.editor().string(), u"\t# a\n\tb\n# c"_s);
        panel.press(Qt::Key_BracketLeft);
        QCOMPARE(panel.editor().string(), u"# a\nb\n# c"_s);
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
        bool hadOutput = false;
        const auto connection = connect(&RunPump::shared(), &RunPump::pumped, this, [&] {
            if (hadOutput)
                return; // once: a second Stop would be one with force
            wasRunning = parts.stopAction->isEnabled() && !parts.runAction->isEnabled();
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

    void renamesTabsWithTheMouse()
    {
        Panel panel;
        panel.press(Qt::Key_T);
        const QPoint first = panel.bar().cells().first()->frame().center().toPoint();
        QTest::mouseDClick(&panel.bar(), Qt::LeftButton, {}, first);
        const auto field = [&] { return qobject_cast<QLineEdit *>(QApplication::focusWidget()); };
        QVERIFY(field() && field()->parentWidget() == &panel.bar());
        QCOMPARE(field()->text(), u"Macro 1"_s);
        QVERIFY(panel.bar().cells().first()->frame().contains(field()->geometry()));
        QTest::keyClicks(field(), u"  "_s);
        QTest::keyClick(field(), Qt::Key_Return); // no title: the old one stays
        QCOMPARE(panel.bar().cells().first()->title(), u"Macro 1"_s);
        panel.press(Qt::Key_F2, Qt::NoModifier);
        QTest::keyClicks(field(), u"never"_s);
        QTest::keyClick(field(), Qt::Key_Escape);
        QCOMPARE(panel.bar().cells().first()->title(), u"Macro 1"_s);
        panel.controller.renameTab();
        QTest::keyClicks(field(), u" Sorting "_s);
        QTest::keyClick(field(), Qt::Key_Return);
        QCOMPARE(panel.controller.activeMacroController()->title(), u"Sorting"_s);
        QCOMPARE(panel.bar().selectedTabItem(), panel.controller.activeMacroController());
        QMenu *menu = panel.controller.tabViewMenuForTabItem(&panel.bar(), panel.bar().tabItemAtIndex(0));
        QCOMPARE(panel.bar().selectionIndex(), 0u);
        QCOMPARE(menu->actions().size(), 3);
    }

    /// Title and first line in a tip, as they stand.
    void tellsWhatTabsHold()
    {
        Panel panel;
        panel.controller.addMacroTitle(u"\n  # <b>first</b> & more\nsecond"_s, u"<i>"_s);
        panel.controller.addMacroTitle({}, u"empty"_s);
        const QStringList wanted {u"&lt;i&gt;\n# &lt;b&gt;first&lt;/b&gt; &amp; more"_s, u"empty"_s};
        for (qsizetype i = 0; i < wanted.size(); ++i) {
            const auto cells = panel.bar().cells();
            const QPoint place = cells[cells.size() - wanted.size() + i]->frame().center().toPoint();
            QHelpEvent hover(QEvent::ToolTip, place, panel.bar().mapToGlobal(place));
            QApplication::sendEvent(&panel.bar(), &hover);
            QString shown = QToolTip::text();
            shown.replace(u"<br/>"_s, u"\n"_s).replace(u"<br>"_s, u"\n"_s);
            QVERIFY2(shown.contains(wanted[i]), qPrintable(shown));
        }
    }

    TABLE(answersScripts, (const QString &expression, const QString &answer), {
        row("p.activeMacroController().title", "'Macro 1'");
        row("p.newTab_(None) or p.tabBarControl().countOfTabItems()", "2");
        row("p.addMacro_title_(None, 'T').macroText().string()", "''");
        row("p.addMacro_title_('x = 1', 'T').code()", "'x = 1'");
        row("[t.title for t in p.tabBarControl().tabItems]", "['Macro 1']");
        row("p.addMacro_title_('ab\\ncd', '').rangeForLine_(2)", "(3, 2)");
        row("p.setWrite_('text') or p.write()", "'text'");
        row("p.setWriteError_('a, in <module>b') or p.write()", "'ab'");
        row("p.setWrite_('text') or p.clearConsole_(None) or p.write()", "''");
        row("p.cleanupErrorMessage_('x, in <module>')", "'x'");
        row("p.addFileLinks_attributesString_('File \"<string>\", line 4', None)['string']",
            "'File \"<macro>\", line 4'");
        row("p.consoleText().string()", "''");
        row("p.window().title()", "'Macro Panel'");
        row("p.window().canBecomeMainWindow()", "False");
        row("p.isReallyVisible()", "False");
        row("p.macroFontSize", "13");
        row("p.snippetsPopup().menu().numberOfItems() > 5", "True");
        row("p.addSnippets_([{'code': 'x', 'title': 'My Own'}]) or p.snippetsPopup().itemTitles()[-1]",
            "'My Own'");
        row("p.snippedClicked_(p.snippetsPopup().menu().itemAtIndex_(0)) or "
            "'Doc' in p.activeMacroController().macroText().string()",
            "True");
        row("p.activeMacroController().encodeRestorableStateWithCoder_(None)['macroText'][:6]", "'# type'");
        row("p.quitMacro_(None)", "None");
        row("p.textView_clickedOnLink_atIndex_(p.consoleText(), ['<string>', '1'], 0)", "True");
    })
    {
        QVERIFY(VXScriptingHandler::isPythonRunning());
        class Output final : public ScriptConsole
        {
        public:
            void setWrite(const QString &text) override { output += text; }
            void setWriteError(const QString &text) override { output += text; }
            QString output;
        } console;
        VXMacroWindowController panel;
        Delegate delegate(&panel);
        ScriptApplication::shared().setDelegate(&delegate);
        setScriptConsole(&console);
        runPanelCode(u"p = NSApplication.sharedApplication().delegate().macroPanelController()\n"
                     "print(repr((%1)), end='')\n"_s.arg(expression));
        setScriptConsole(nullptr);
        QCOMPARE(console.output, answer);
    }

private:
    VXDocument *makeDocument()
    {
        auto *document = new VXDocument;
        DocumentController::shared().addDocument(document);
        for (const QString &name : {u"A"_s, u"B"_s}) {
            auto info = std::make_shared<VXGlyphInfo>();
            info->setName(name);
            document->addInfo(info);
        }
        QCoreApplication::processEvents();
        return document;
    }
};

RUNEBOOK_TEST_MAIN(MacroPanelTest)
#include "tst_macropanel.moc"
