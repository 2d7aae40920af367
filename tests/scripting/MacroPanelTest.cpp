#include "platform/MessageBar.h"
#include "scripting/classes/ScriptApplication.h"
#include "scripting/python/ScriptRun.h"
#include "scripting/python/ScriptRunEntries.h"
#include "tests/Files.h"
#include "tests/ShownTexts.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/scripting/KeptConsole.h"
#include "tests/scripting/PanelFixture.h"

#include <QSignalSpy>
#include <QtWidgets>

using namespace runebook;
using namespace Qt::StringLiterals;

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

/// The panel as a window: tabs, files, what scripts see of it.
class MacroPanelTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { startPanels(); }
    void init() { forgetPanels(); }
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

    /// Once when it gets the keyboard, not when it loses it.
    void tellsWhenItBecomesKey()
    {
        Panel panel;
        QSignalSpy told(panel.controller.window(), &VXMacroWindow::becameKey);
        QWidget other;
        other.show();
        other.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        QCOMPARE(told.size(), 0);
        panel.controller.window()->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(panel.controller.window()));
        QCOMPARE(told.size(), 1);
        COMPARE_TEXTS(u"macro-panel"_s, *panel.controller.window());
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
        Panel panel;
        QCOMPARE(panel.tabs(), tabs);
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
        const QVariant stored = defaults().arrayForKey(u"VXMacroViews"_s).value(0);
        QCOMPARE(stored.toMap().value(u"title"_s).toString(), u"Sorting"_s);
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
        row("p.cleanupErrorMessage_('x, in <module>, in <module>, in f')", "'x, in <module>, in f'");
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
        KeptConsole console;
        VXMacroWindowController panel;
        Delegate delegate(&panel);
        ScriptApplication::shared().setDelegate(&delegate);
        setScriptConsole(&console);
        runPanelCode(u"p = NSApplication.sharedApplication().delegate().macroPanelController()\n"
                     "print(repr((%1)), end='')\n"_s.arg(expression));
        setScriptConsole(nullptr);
        QCOMPARE(console.output + console.errors, answer);
    }
};

RUNEBOOK_TEST_MAIN(MacroPanelTest)
#include "MacroPanelTest.moc"
