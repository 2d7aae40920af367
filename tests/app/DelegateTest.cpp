#include "app/FileOpener.h"
#include "app/LastWindow.h"
#include "app/Session.h"
#include "app/VXChangeLogWindowController.h"
#include "editing/compare/CompareDocuments.h"
#include "platform/Appearance.h"
#include "platform/Background.h"
#include "platform/UndoManager.h"
#include "platform/ValueTransformer.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/panel/RunIndicator.h"
#include "scripting/panel/VXMacroWindow.h"
#include "scripting/panel/VXMacroWindowController.h"
#include "scripting/python/RunPump.h"
#include "scripting/python/ScriptRun.h"
#include "tests/app/AppMain.h"
#include "tests/editing/Windows.h"
#include "update/PageView.h"

#include <malloc.h>

using namespace runebook;

namespace {

QString sample()
{
    return QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/sample.xml");
}

QString tinyFile(const QTemporaryDir &folder, const QString &name)
{
    QString path = folder.filePath(name);
    writeFile(path,
              "<glyphData>\n\t<glyph unicode=\"0041\" name=\"A\" />\n\t<glyph name=\"B\" />\n</glyphData>\n");
    return path;
}

QMessageBox *shownBox(const QString &name = {})
{
    return shownWindow<QMessageBox>(name);
}

QStringList openPaths()
{
    QStringList names;
    for (const Document *document : controller().documentList())
        names << QFileInfo(document->fileURL()).fileName();
    return names;
}

VXWindowController *frontWindow()
{
    return windowOf(controller().documentList().front());
}

/// Takes the addresses that would go to other programs.
class UrlTaker : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> urls;
public Q_SLOTS:
    void take(const QUrl &url) { urls << url; }
};

/// Counts what reaches the widgets of a window, by kind.
class EventCount : public QObject
{
public:
    explicit EventCount(QWidget &window) : m_window(window) { qApp->installEventFilter(this); }
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        const auto *widget = qobject_cast<QWidget *>(watched);
        if (widget && widget->window() == &m_window && event->type() != QEvent::Timer)
            ++m_counts[{watched, event->type()}];
        return false;
    }
    int busiest() const
    {
        return m_counts.isEmpty() ? 0 : *std::max_element(m_counts.begin(), m_counts.end());
    }

private:
    QWidget &m_window;
    QMap<std::pair<QObject *, int>, int> m_counts;
};

} // namespace

/// The program's delegate: what its commands do, and how the program starts and ends.
class DelegateTest : public QObject
{
    Q_OBJECT
public:
    explicit DelegateTest(VXAppDelegate &delegate) : m_delegate(delegate) { }

private Q_SLOTS:
    void cleanup()
    {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (qobject_cast<QMessageBox *>(widget))
                delete widget;
        }
        controller().releaseAll();
        for (QWidget *window : QApplication::topLevelWidgets())
            window->hide();
        forget({"VXOpenWindows", "VXRestoreWindows", "VXAutosaveDelay", "VXUpdateServer",
                "SUShowCuttingEdgeVersion", "showMacroPanel"});
    }

    void knowsTheTransformers()
    {
        QCOMPARE(VXAppDelegate::applicationName(), u"Runebook"_s);
        const ValueTransformer *list = ValueTransformer::forName(u"arrayToStringTransformator"_s);
        QVERIFY(list);
        QCOMPARE(list->transformedValue(QStringList {u"a"_s, u"b"_s}).toString(), u"a, b"_s);
        QVERIFY(ValueTransformer::forName(u"directionToIndexTransformer"_s));
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

    void togglesTheMacroPanel()
    {
        m_delegate.openAtStart({});
        QWidget *document = frontWindow();
        document->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(document));
        auto *panel = qobject_cast<VXMacroWindowController *>(m_delegate.macroPanelController());
        QVERIFY(panel);
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
        QCOMPARE(controller().currentDocument(), &frontWindow()->glyphDocument());
    }

    void reopensTheMacroPanelBehind()
    {
        m_delegate.openAtStart({});
        QWidget *document = frontWindow();
        document->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(document));
        auto *panel = qobject_cast<VXMacroWindowController *>(m_delegate.macroPanelController());
        m_delegate.applicationDidFinishLaunching();
        QVERIFY(!panel->isReallyVisible());
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
        UrlTaker taker;
        QDesktopServices::setUrlHandler(u"file"_s, &taker, "take");
        const QTemporaryDir folder;
        StandardFolders::setProgramData(folder.path());
        m_delegate.showScriptingDocu();
        QVERIFY(taker.urls.isEmpty());
        QMessageBox *missing = shownBox();
        QVERIFY(missing);
        QVERIFY(missing->text().contains("not installed"_L1));
        QDir(folder.path()).mkdir(u"doc"_s);
        const QString page = folder.filePath(u"doc/index.html"_s);
        QVERIFY(writeFile(page, {}));
        m_delegate.showScriptingDocu();
        QCOMPARE(taker.urls, QList<QUrl> {QUrl::fromLocalFile(page)});
        StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
        QDesktopServices::unsetUrlHandler(u"file"_s);
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
        m_delegate.showAbout(frontWindow());
        m_delegate.showAbout(frontWindow());
        const QMessageBox *about = shownBox(u"aboutBox"_s);
        QVERIFY(about);
        QVERIFY(about->text().contains(QStringLiteral(RUNEBOOK_VERSION)));
        QVERIFY(about->informativeText().contains(QString::fromLatin1(qVersion())));
        QVERIFY(about->informativeText().contains("Python "_L1));
    }

    // opened: the frontmost first
    TABLE(startsWithWhatIsGiven, (const QStringList &given, const QStringList &opened), {
        row("nothing", {}, {QString()});
        row("two", {u"a.xml"_s, u"b.xml"_s}, {u"b.xml"_s, u"a.xml"_s});
        row("one twice", {u"a.xml"_s, u"a.xml"_s}, {u"a.xml"_s});
        row("a missing one", {u"no.xml"_s}, {QString()});
    })
    {
        const QTemporaryDir folder;
        tinyFile(folder, u"a.xml"_s);
        tinyFile(folder, u"b.xml"_s);
        QStringList paths;
        for (const QString &name : given)
            paths << folder.filePath(name);
        m_delegate.openAtStart(paths);
        QTRY_COMPARE(openPaths(), opened);
    }

    void theEmptyWindowGivesItsPlace()
    {
        const QTemporaryDir folder;
        const QRect place(37, 41, 612, 417);
        m_delegate.openAtStart({});
        const QPointer<QWidget> untouched = frontWindow();
        untouched->setGeometry(place);
        m_delegate.openFromElsewhere({tinyFile(folder, u"a.xml"_s)});
        QTRY_COMPARE(openPaths(), QStringList {u"a.xml"_s});
        QTRY_VERIFY(!untouched);
        QCOMPARE(frontWindow()->geometry(), place);
        // The next file stands beside it.
        m_delegate.openFromElsewhere({tinyFile(folder, u"b.xml"_s)});
        QTRY_COMPARE(openPaths(), (QStringList {u"b.xml"_s, u"a.xml"_s}));
        QCOMPARE(frontWindow()->size(), place.size());
        QVERIFY(frontWindow()->pos() != place.topLeft());
    }

    void opensVeryManyBehind()
    {
        const QTemporaryDir folder;
        constexpr int kFiles = 60;
        QStringList paths;
        for (int i = 0; i < kFiles; ++i)
            paths << tinyFile(folder, QString::number(i) + ".xml"_L1);
        QSignalSpy announced(&controller(), &DocumentController::documentsChanged);
        m_delegate.openAtStart(paths);
        QTRY_VERIFY(controller().documentList().size() > 2);
        const auto *progress = shownWindow<QProgressDialog>();
        QVERIFY(progress && progress->value() > 0 && progress->maximum() == kFiles);
        QCOMPARE(progress->windowTitle(), u"Opening Files"_s);
        // A window that is there has nothing to do for each of those that come after it.
        QTRY_VERIFY(controller().documentList().size() > 12);
        EventCount ofOne(*controller().documentList()[10]->windowController());
        QTRY_COMPARE_WITH_TIMEOUT(controller().documentList().size(), kFiles, 60'000);
        QTRY_VERIFY(!shownWindow<QProgressDialog>());
        for (const Document *document : controller().documentList()) // shown again they come to the front
            QVERIFY(!document->windowController()->testAttribute(Qt::WA_ShowWithoutActivating));
        // Nobody had to hear of each of them.
        QVERIFY2(announced.size() < 10, qPrintable(QString::number(announced.size())));
        QVERIFY2(ofOne.busiest() < kFiles / 4, qPrintable(QString::number(ofOne.busiest())));

        paths.clear();
        for (int i = 0; i < kFiles; ++i)
            paths << tinyFile(folder, u'b' + QString::number(i) + ".xml"_L1);
        m_delegate.openFromElsewhere(paths);
        QTRY_VERIFY(shownWindow<QProgressDialog>());
        QTRY_VERIFY(controller().documentList().size() > kFiles + 2);
        QTest::keyClick(shownWindow<QProgressDialog>(), Qt::Key_Escape);
        const qsizetype opened = controller().documentList().size();
        QTest::qWait(50);
        QVERIFY(!shownWindow<QProgressDialog>());
        QCOMPARE(controller().documentList().size(), opened);
        QVERIFY(opened < 2 * kFiles);
    }

    /// However often something was done: once the documents are closed, memory and descriptors are what they
    /// were.
    TABLE(leavesNothingBehind, (const QString &what, int times), {
        row("documents with windows", "documents", 200);
        row("steps undone and redone", "steps", 10'000);
        row("script runs", "runs", 1'000);
    })
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        QSKIP("the sanitizers keep what is freed, and look for leaks by themselves");
#endif
        // The style's own, which is bounded: it fills up with pictures for each window before it drops any.
        const int cached = QPixmapCache::cacheLimit();
        QPixmapCache::setCacheLimit(0);
        const auto restore = qScopeGuard([cached] { QPixmapCache::setCacheLimit(cached); });
        const QTemporaryDir folder;
        const QString file = tinyFile(folder, u"a.xml"_s);
        if (what == "runs"_L1) {
            m_delegate.startScripting();
            VXScriptingHandler::sharedHandler();
            if (!VXScriptingHandler::isPythonRunning())
                QSKIP("needs a supported Python");
        }
        const auto use = [&](int count) {
            if (what == "documents"_L1) {
                for (int i = 0; i < count; ++i) {
                    Document *document = controller().openDocumentWithContentsOfURLDisplay(file, true);
                    QTest::qWait(0);
                    frontWindow()->addInfo();
                    [&] { QVERIFY(document->autosave()); }();
                    document->close();
                    sendDeferredDeletes();
                }
                return;
            }
            Document *document = controller().openDocumentWithContentsOfURLDisplay(file, true);
            const InfoPtr info = static_cast<VXDocument *>(document)->infos().front();
            UndoManager *history = document->undoManager();
            for (int i = 0; i < count; ++i) {
                if (what == "runs"_L1) {
                    VXScriptingHandler::sharedHandler()->runMacroString(
                        u"Doc.infos()[0].sortName = 'x%1'"_s.arg(i));
                    // As behind every command: the framework never gives back the room of its queue, which
                    // would grow by what each run leaves for the next turn.
                    QTest::qWait(0);
                    sendDeferredDeletes();
                    continue;
                }
                {
                    const UndoGroup group(history);
                    info->setSortName(QString::number(i));
                }
                if (i % 3 == 0) {
                    history->undo();
                    history->redo();
                }
            }
            for (int i = 0; i < count; ++i)
                history->undo();
            document->close();
            sendDeferredDeletes();
        };
        const auto settle = [] {
            for (int i = 0; i < 2; ++i) {
                QTest::qWait(20);
                waitForBackground();
            }
        };
        const auto descriptors = [] { return QDir(u"/proc/self/fd"_s).entryList().size(); };
        const auto bytes = [] {
            const auto heap = ::mallinfo2();
            return qint64(heap.uordblks) + qint64(heap.hblkhd);
        };
        // What is made once is made.
        for (int i = 0; i < 2; ++i)
            use(times / 4);
        settle();
        const auto descriptorsBefore = descriptors();
        const qint64 before = bytes();
        use(times);
        settle();
        const qint64 grown = bytes() - before;
        constexpr qint64 kNothing = 100'000; // of what takes some megabytes while it is there
        QVERIFY2(grown < kNothing, qPrintable(u"%1 bytes more"_s.arg(grown)));
        // Of those before, some may have been on their way out.
        QTRY_VERIFY2(descriptors() <= descriptorsBefore, qPrintable(QString::number(descriptors())));
    }

    void tellsWhatCannotBeOpened()
    {
        const QTemporaryDir folder;
        m_delegate.openAtStart({folder.filePath(u"no.xml"_s), folder.path(), tinyFile(folder, u"a.xml"_s),
                                tinyFile(folder, u"a.png"_s)});
        QTRY_VERIFY(shownBox());
        const QMessageBox *box = shownBox();
        QVERIFY(box->text().contains(u'3'));
        QVERIFY(box->informativeText().contains("is a folder"_L1));
        QCOMPARE(openPaths(), QStringList {u"a.xml"_s});
        QCOMPARE(box->parentWidget(), frontWindow());
    }

    void tellsOfDamagedSettings()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(u"<b>d.ini"_s);
        QVERIFY(writeFile(file, "Dear reader,\n"));
        const UserDefaults damaged(file);
        m_delegate.openAtStart({});
        const QMessageBox *box = shownBox();
        QVERIFY(box);
        QVERIFY(box->text().contains("damaged"_L1));
        QVERIFY(box->informativeText().contains((file + ".damaged"_L1).toHtmlEscaped()));
        delete box;
        m_delegate.openAtStart({});
        QVERIFY(!shownBox()); // told once
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

    void comesBackAsItWasLeft()
    {
        const QTemporaryDir folder;
        const QStringList paths {tinyFile(folder, u"a.xml"_s), tinyFile(folder, u"b.xml"_s)};
        m_delegate.openAtStart(paths);
        QTRY_COMPARE(controller().documentList().size(), 2);
        frontWindow()->resize(900, 500);
        frontWindow()->infolistController()->setSelectionIndexes({1});
        QSignalSpy quits(qApp, &QCoreApplication::aboutToQuit);
        m_delegate.terminate();
        QVERIFY(controller().documentList().isEmpty());

        m_delegate.openAtStart({}); // the user does not want them
        QCOMPARE(openPaths(), QStringList {QString()});
        controller().releaseAll();
        UserDefaults::standard().setObjectForKey(true, u"VXRestoreWindows"_s);
        m_delegate.openAtStart({});
        QCOMPARE(openPaths(), (QStringList {u"b.xml"_s, u"a.xml"_s}));
        QCOMPARE(frontWindow()->size(), QSize(900, 500));
        QCOMPARE(frontWindow()->infolistController()->selectedObjects().at(0)->name(), u"B"_s);
        controller().releaseAll();
        QFile::remove(paths.at(1));
        m_delegate.openAtStart({});
        QCOMPARE(openPaths(), QStringList {u"a.xml"_s});
        controller().releaseAll();
        m_delegate.openAtStart({sample()}); // files that are given come alone
        QCOMPARE(openPaths(), QStringList {u"sample.xml"_s});
    }

    TABLE(endsWithItsLastWindow, (int documents, bool showsPreferences, bool opensAnother, bool ends), {
        row("one window of two closed", 2, false, false, false);
        row("the only window closed", 1, false, false, true);
        row("only the preferences are left", 1, true, false, true);
        row("another document opened in its place", 1, false, true, false);
    })
    {
        constexpr int kEnded = 0;
        constexpr int kStillThere = 1;
        constexpr int kWaitMs = 500;
        const LastWindow lastWindow;
        for (int i = 0; i < documents; ++i)
            controller().openUntitledDocumentAndDisplay(true);
        if (showsPreferences)
            m_delegate.showMainPreferences();
        QTimer::singleShot(0, this, [opensAnother] {
            frontWindow()->close();
            if (opensAnother)
                controller().openUntitledDocumentAndDisplay(true);
        });
        QTimer stillThere;
        stillThere.callOnTimeout([] { QCoreApplication::exit(kStillThere); });
        stillThere.start(ends ? 20 * kWaitMs : kWaitMs);
        QCOMPARE(QApplication::exec(), ends ? kEnded : kStillThere);
    }

    void passesOverDamagedSessions()
    {
        UserDefaults::standard().setObjectForKey(true, u"VXRestoreWindows"_s);
        const QVariantMap wrong {{u"path"_s, sample()}, {u"geometry"_s, u"x"_s}, {u"state"_s, 5}};
        for (const QVariant &stored : {QVariant(u"text"_s), QVariant(QVariantList {5, u"a"_s, QVariantMap()}),
                                       QVariant(QVariantList {wrong})}) {
            UserDefaults::standard().setObjectForKey(stored, u"VXOpenWindows"_s);
            m_delegate.openAtStart({});
            QCOMPARE(controller().documentList().size(), 1);
            controller().releaseAll();
        }
    }

    void keepsEverythingWhenTheDesktopEnds()
    {
        const QTemporaryDir folder;
        m_delegate.openAtStart({tinyFile(folder, u"a.xml"_s)});
        QVERIFY(m_delegate.keepForNextStart());
        QVERIFY(controller().documentList().front()->autosavedContentsURL().isEmpty());
        frontWindow()->addInfo();
        QVERIFY(m_delegate.keepForNextStart());
        QVERIFY(!shownBox());
        const QString kept = controller().documentList().front()->autosavedContentsURL();
        QVERIFY(QFileInfo(kept).size() > 0);
        QCOMPARE(UserDefaults::standard().arrayForKey(u"VXOpenWindows"_s).size(), 1);
        QVERIFY(controller().documentList().front()->isDocumentEdited());
        controller().documentList().front()->removeAutosave();
    }

    void followsTheAutosaveDelay()
    {
        m_delegate.openAtStart({});
        QCOMPARE(controller().autosavingDelay(), 6.0);
        UserDefaults::standard().setObjectForKey(20, u"VXAutosaveDelay"_s);
        const VXDocument madeByAScript;
        QCOMPARE(controller().autosavingDelay(), 20.0);
        controller().openUntitledDocumentAndDisplay(false);
        QCOMPARE(controller().autosavingDelay(), 20.0);
        UserDefaults::standard().setObjectForKey(-5, u"VXAutosaveDelay"_s);
        QCOMPARE(controller().autosavingDelay(), 0.0);
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
            QTRY_VERIFY(document->windowController() && document->windowController()->isVisible());
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

private:
    VXAppDelegate &m_delegate;
};

RUNEBOOK_APP_TEST_MAIN(DelegateTest)
#include "DelegateTest.moc"
