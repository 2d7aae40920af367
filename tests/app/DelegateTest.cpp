#include "app/VXChangeLogWindowController.h"
#include "editing/compare/CompareDocuments.h"
#include "platform/Appearance.h"
#include "platform/ValueTransformer.h"
#include "platform/documents/DocumentWindows.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/panel/RunIndicator.h"
#include "scripting/panel/VXMacroWindow.h"
#include "scripting/panel/VXMacroWindowController.h"
#include "scripting/python/RunPump.h"
#include "scripting/python/ScriptRun.h"
#include "scripting/python/ScriptRunEntries.h"
#include "tests/app/AppMain.h"
#include "update/PageView.h"

using namespace runebook;

/// The program's delegate: what its commands do.
class DelegateTest : public AppTest
{
    Q_OBJECT
public:
    using AppTest::AppTest;

private Q_SLOTS:
    void knowsTheTransformers()
    {
        QCOMPARE(VXAppDelegate::applicationName(), u"Runebook"_s);
        for (const QString &name : {u"arrayToStringTransformator"_s, u"directionToIndexTransformer"_s})
            QVERIFY(ValueTransformer::forName(name));
    }

    TABLE(putsItsCommandsIntoMenus, (const QString &menu, const QString &command, const QString &keys), {
        row("quit", "File", "Quit", "Ctrl+Q");
        row("preferences", "Edit", "Preferences…", "Ctrl+,");
        row("macro panel", "Window", "Macro Panel", "Ctrl+Alt+M");
        row("compare", "Window", "Compare Data", "Ctrl+Shift+C");
        row("documentation", "Help", "Scripting Documentation", "F1");
        row("change log", "Help", "Change Log", "");
        row("updates", "Help", "Check for Updates…", "");
        row("about", "Help", "About Runebook", "");
    })
    {
        m_delegate.openAtStart({});
        const QMenuBar *bar = frontWindow()->menuBar();
        const qsizetype place = offersOf(*bar).indexOf(menu);
        QVERIFY(place >= 0);
        const QMenu *offers = bar->actions().at(place)->menu();
        const qsizetype item = offersOf(*offers).indexOf(command);
        QVERIFY(item >= 0);
        QCOMPARE(offers->actions().at(item)->shortcut().toString(), keys);
        QVERIFY(offers->actions().at(item)->text().contains(u'&')); // a key for it
    }

    /// Of two commands with the same key neither would act.
    void everyKeyBelongsToOneCommand()
    {
        m_delegate.openAtStart({});
        QHash<QString, QString> owners;
        for (const QAction *action : frontWindow()->menuBar()->findChildren<QAction *>()) {
            for (const QKeySequence &key : action->shortcuts()) {
                QVERIFY2(!owners.contains(key.toString()),
                         qPrintable(key.toString() + u' ' + action->text() + owners.value(key.toString())));
                owners.insert(key.toString(), action->text());
            }
        }
        QVERIFY(owners.contains(u"Ctrl+Shift+T"_s) && owners.contains(u"Ctrl+Shift+C"_s));
    }

    void togglesTheMacroPanel()
    {
        m_delegate.openAtStart({});
        QWidget *document = frontWindow();
        document->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(document));
        auto *panel = qobject_cast<VXMacroWindowController *>(m_delegate.macroPanelController());
        m_delegate.applicationDidFinishLaunching(); // it was closed
        const auto stored = [] { return UserDefaults::standard().boolForKey(u"showMacroPanel"_s); };
        QVERIFY(!panel->isReallyVisible());

        m_delegate.showMacroPanel();
        QTRY_VERIFY(panel->isReallyVisible() && panel->isKeyWindow());
        QVERIFY(stored());
        document->activateWindow(); // open, but without the keyboard
        QTRY_VERIFY(!panel->isKeyWindow());
        m_delegate.showMacroPanel();
        QTRY_VERIFY(panel->isKeyWindow());
        QVERIFY(panel->isReallyVisible());
        QVERIFY(stored());
        m_delegate.showMacroPanel(); // with the keyboard
        QTRY_VERIFY(!panel->isReallyVisible());
        QVERIFY(!stored());
        // A start brings it back, behind the document.
        UserDefaults::standard().setObjectForKey(true, u"showMacroPanel"_s);
        m_delegate.applicationDidFinishLaunching();
        QTRY_VERIFY(panel->isReallyVisible());
        QCOMPARE(controller().currentDocument(), &frontWindow()->glyphDocument());
        panel->hidePanel();
    }

    // told: some of it
    TABLE(tellsWhatAHiddenPanelWasGiven,
          (const QStringList &printed, const QString &error, bool isPanelShown, const QString &told), {
              row("printed", {u"3"_s, u" found\n"_s, u"more\n"_s}, "", false, "“3 found”");
              row("failed", {}, "Traceback\n  line 1\nZeroDivisionError: x\n", false,
                  "failed: ZeroDivisionError: x");
              row("both", {u"3 found\n"_s}, "KeyError: 'a'\n", false, "failed: KeyError: 'a'");
              row("blank", {u" \n"_s}, "", false, "");
              row("the panel shows it", {u"3 found\n"_s}, "KeyError\n", true, "");
          })
    {
        m_delegate.openAtStart({});
        auto *panel = qobject_cast<VXMacroWindowController *>(m_delegate.macroPanelController());
        if (isPanelShown)
            panel->showPanel();
        QTRY_COMPARE(panel->isReallyVisible(), isPanelShown);
        for (const QString &text : printed)
            panel->setWrite(text);
        for (const QChar piece : error)
            panel->setWriteError(piece);
        QTest::qWait(0);
        const auto *bar = frontWindow()->findChild<MessageBar *>();
        QCOMPARE(bar->isVisible(), !told.isEmpty());
        QVERIFY2(bar->text().contains(told), qPrintable(bar->text()));
        panel->hidePanel();
    }

    void makesWindowsOnce()
    {
        QObject *compare = m_delegate.compareWindow();
        m_delegate.showCompareWindow();
        QCOMPARE(m_delegate.compareWindow(), compare);
        QVERIFY(qobject_cast<QWidget *>(compare)->isVisible());
        qobject_cast<QWidget *>(compare)->hide();
        VXDocument left;
        VXDocument right;
        m_delegate.applicationDidFinishLaunching();
        compareDocuments(left, right, {}); // which is asked for in panels and bars
        QVERIFY(qobject_cast<QWidget *>(compare)->isVisible());
        QObject *preferences = m_delegate.preferencesController();
        QVERIFY(!qobject_cast<QWidget *>(preferences)->isVisible());
        m_delegate.showMainPreferences();
        QVERIFY(qobject_cast<QWidget *>(preferences)->isVisible());
        QCOMPARE(m_delegate.preferencesController(), preferences);
        QVERIFY(!m_delegate.changeLogWindowController());
        m_delegate.showChangeLogWindow();
        QObject *log = m_delegate.changeLogWindowController();
        m_delegate.showChangeLogWindow();
        QCOMPARE(m_delegate.changeLogWindowController(), log);
        for (QObject *window : {compare, preferences, log})
            qobject_cast<QWidget *>(window)->hide();
    }

    void opensTheDocumentation()
    {
        const UrlTaker taker({u"file"_s});
        const QTemporaryDir folder;
        StandardFolders::setProgramData(folder.path());
        m_delegate.showScriptingDocu();
        QVERIFY(taker.urls.isEmpty());
        QMessageBox *missing = shownBox();
        QVERIFY(missing);
        QVERIFY(isSaidAmongTexts(u"questions"_s, *missing));
        QDir(folder.path()).mkdir(u"doc"_s);
        const QString page = folder.filePath(u"doc/index.html"_s);
        QVERIFY(writeFile(page, {}));
        m_delegate.showScriptingDocu();
        QCOMPARE(taker.urls, QList<QUrl> {QUrl::fromLocalFile(page)});
        StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
    }

    TABLE(findsTheChangeLog, (const QString &server, const QString &url), {
        row("a server", "https://u.example.org", "https://u.example.org/Runebook/Runebook2.1-123.html");
        row("with a slash", "https://u.example.org/x//",
            "https://u.example.org/x/Runebook/Runebook2.1-123.html");
        row("none", "", QUrl::fromLocalFile(StandardFolders::resource(u"doc/changelog.html"_s)).toString());
    })
    {
        QCOMPARE(VXChangeLogWindowController::urlForServer(server, u"2.1"_s, u"123"_s), url);
        UserDefaults::standard().setObjectForKey(server, u"VXUpdateServer"_s);
        QString expected = url;
        expected.replace(u"2.1-123"_s, QStringLiteral(RUNEBOOK_VERSION "-" RUNEBOOK_BUILD));
        QCOMPARE(VXAppDelegate::changeLogURL(), expected);
    }

    void showsTheChangeLogInLightAndDark()
    {
        const QTemporaryDir folder;
        StandardFolders::setProgramData(folder.path());
        QDir(folder.path()).mkdir(u"doc"_s);
        QVERIFY(writeFile(folder.filePath(u"doc/changelog.html"_s),
                          "<style>x</style><h1>Changes</h1><p>Better <img src='/dev/zero'>\xc3\xa9</p>"));
        VXChangeLogWindowController window;
        window.setChangeLogURL(VXChangeLogWindowController::urlForServer({}, {}, {}));
        QCOMPARE(window.changeLogWebView()->toPlainText(), u"Changes\nBetter é"_s);
        for (const Appearance::Choice choice : {Appearance::Dark, Appearance::Light, Appearance::Dark}) {
            Appearance::shared().setChoice(choice);
            QTRY_COMPARE(window.changeLogWebView()->isUserStyleSheetEnabled(), choice == Appearance::Dark);
        }
        Appearance::shared().setChoice(Appearance::System);
        // What cannot be loaded is an empty page, without a word; other files are not read.
        for (const QString &url : {u"file:///etc/passwd"_s, u"http://192.0.2.1/"_s, u"https://["_s}) {
            window.setChangeLogURL(url);
            QTest::qWait(10);
            QCOMPARE(window.changeLogWebView()->toPlainText(), QString());
            QVERIFY(!shownBox());
        }
        StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
    }

    TABLE(choosesWhatIsOffered,
          (const QStringList &versions, const QVariant &wantsNewest, const QString &offered), {
              const QStringList three {u"1"_s, u"3"_s, u"2"_s};
              row("unset", three, {}, "1");
              row("no", three, QVariant(false), "1");
              row("yes", three, QVariant(true), "2");
              row("one", {u"1"_s}, QVariant(true), "1");
              row("none", {}, QVariant(true), "");
          })
    {
        UserDefaults::standard().setObjectForKey(wantsNewest, u"SUShowCuttingEdgeVersion"_s);
        SUAppcast appcast;
        for (const QString &version : versions) {
            auto *item = new SUAppcastItem;
            item->versionString = version;
            appcast.addItem(item);
        }
        auto *application = qobject_cast<VXApplication *>(qApp);
        const SUAppcastItem *best =
            application->bestValidUpdateInAppcastForUpdater(&appcast, application->updater());
        QCOMPARE(best ? best->versionString : QString(), offered);
    }

    void tellsWhatItIs()
    {
        m_delegate.openAtStart({});
        m_delegate.startScripting();
        for (QAction *action : frontWindow()->findChildren<QAction *>()) {
            if (plain(action->text()) == u"About Runebook"_s)
                action->trigger();
        }
        const QMessageBox *about = shownBox(u"aboutBox"_s);
        QVERIFY(about);
        QCOMPARE(about->parentWidget(), frontWindow()); // over the window that was asked
        m_delegate.showAbout(frontWindow());
        about = shownBox(u"aboutBox"_s); // again, there is one
        QVERIFY(about);
        QVERIFY(about->text().contains(QStringLiteral(RUNEBOOK_VERSION)));
        QVERIFY(about->informativeText().contains(QString::fromLatin1(qVersion())));
        QVERIFY(about->informativeText().contains("Python 3."_L1));
    }

    void warnsOfAPythonThatIsNotSupported()
    {
        m_delegate.startScripting();
        m_delegate.startScripting();
        Q_EMIT VXScriptingHandler::sharedHandler()->unsupportedPythonStarted(u"You have 3.8"_s,
                                                                             u"Get another"_s);
        QMessageBox *box = shownBox(u"pythonWarning"_s);
        QVERIFY(box);
        QCOMPARE(box->text(), u"You have 3.8"_s);
        QCOMPARE(box->informativeText(), u"Get another"_s);
        QCOMPARE(box->standardButtons(), QMessageBox::Ok);
        QVERIFY(!box->isModal());
        QTest::mouseClick(box->button(QMessageBox::Ok), Qt::LeftButton);
        QVERIFY(!shownBox(u"pythonWarning"_s)); // one, though the start was asked for twice
    }

    void givesDocumentsOfScriptsWindows()
    {
        const QTemporaryDir folder;
        RunPump::shared().start();
        m_delegate.openAtStart({});
        VXScriptingHandler::sharedHandler()->runMacroString(
            u"new = newDocument()\nnew.addInfo_(newInfo('x'))\nopenDocument(r'"_s
            + tinyFile(folder, u"tiny.xml"_s) + u"')\nnewDocument().close()"_s);
        RunPump::shared().end();
        QCOMPARE(controller().documentList().size(), 3);
        for (const Document *document : controller().documentList())
            QTRY_VERIFY(document->windowController() && DocumentWindows::of(*document)->isVisible());
    }

    void stopsFromTheCompareWindow()
    {
        VXScriptingHandler::sharedHandler();
        RunPump::shared().start();
        m_delegate.showCompareWindow();
        const auto *indicator =
            qobject_cast<QWidget *>(m_delegate.compareWindow())->findChild<RunIndicator *>();
        QVERIFY(indicator && !indicator->isVisible());
        QString shown;
        const auto stop = connect(&RunPump::shared(), &RunPump::pumped, this, [&] {
            shown = indicator->isVisible() ? indicator->text() : QString();
            indicator->findChild<QToolButton *>()->click();
        });
        // Calls of the C library, as the thread sanitizer delivers signals there only.
        runPanelCode(u"import os\nwhile True: os.close(os.dup(0))"_s, u"Endless"_s);
        disconnect(stop);
        RunPump::shared().end();
        QCOMPARE(shown, u"Running “Endless”…"_s);
        QVERIFY(!indicator->isVisible());
    }

    /// A script of the menu fails while the panel is closed; the window's own table shows what is taken back.
    void asksInTheWindowWhatBecomesOfChanges()
    {
        const QTemporaryDir folder;
        VXScriptingHandler::sharedHandler();
        RunPump::shared().start();
        m_delegate.openAtStart({tinyFile(folder, u"tiny.xml"_s)});
        QTRY_VERIFY(controller().documentList().size() == 1 && frontWindow());
        QVERIFY(QTest::qWaitForWindowActive(frontWindow()));
        const auto *document = qobject_cast<VXDocument *>(controller().documentList().first());
        const auto answer = [](const QString &text) {
            const QPointer<QAbstractButton> asked = [text] {
                QAbstractButton *there = nullptr;
                return QTest::qWaitFor([&] { return (there = button(frontWindow(), text)) != nullptr; })
                    ? there
                    : nullptr;
            }();
            return asked && (QTest::mouseClick(asked, Qt::LeftButton), !asked || !asked->isVisible());
        };
        runPanelCode(u"Doc[0].name = 'kept'\n1/0"_s);
        QVERIFY(answer(u"Keep"_s));
        runPanelCode(u"Doc[0].name = 'lost'\nDoc.addInfo_(newInfo('new'))\n1/0"_s);
        QCOMPARE(document->countOfInfos(), 3);
        QVERIFY(answer(u"Take Back"_s));
        QCOMPARE(document->infos().front()->name(), u"kept"_s);
        QCOMPARE(frontWindow()->findChild<GlyphTableView *>()->model()->rowCount(), 2);
        const auto *bar = frontWindow()->findChildren<MessageBar *>().last();
        QVERIFY2(bar->isVisible() && bar->text().startsWith("Taken back"_L1), qPrintable(bar->text()));
        RunPump::shared().end();
    }
};

RUNEBOOK_APP_TEST_MAIN(DelegateTest)
#include "DelegateTest.moc"
