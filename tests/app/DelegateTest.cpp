#include "app/FileOpener.h"
#include "app/Session.h"
#include "app/VXChangeLogWindowController.h"
#include "app/update/PageView.h"
#include "editing/GlyphTableView.h"
#include "editing/VXWindowController.h"
#include "platform/Appearance.h"
#include "platform/Background.h"
#include "platform/DocumentController.h"
#include "platform/MessageBar.h"
#include "platform/UndoManager.h"
#include "platform/UserDefaults.h"
#include "platform/ValueTransformer.h"
#include "scripting/RunIndicator.h"
#include "scripting/RunPump.h"
#include "scripting/ScriptRun.h"
#include "scripting/VXScriptingHandler.h"
#include "scripting/panel/VXMacroWindow.h"
#include "scripting/panel/VXMacroWindowController.h"
#include "tests/app/AppMain.h"

#include <QDesktopServices>
#include <QMenuBar>
#include <QMessageBox>
#include <QPixmapCache>
#include <QProgressDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QToolButton>
#include <malloc.h>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

QString sample()
{
    return QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/sample.xml");
}

QString tinyFile(const QTemporaryDir &folder, const QString &name)
{
    QFile file(folder.filePath(name));
    if (file.open(QIODevice::WriteOnly))
        file.write(
            "<glyphData>\n\t<glyph unicode=\"0041\" name=\"A\" />\n\t<glyph name=\"B\" />\n</glyphData>\n");
    return file.fileName();
}

/// The first box of that name that is shown.
QMessageBox *shownBox(const QString &name = {})
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        auto *box = qobject_cast<QMessageBox *>(widget);
        if (box && box->isVisible() && (name.isEmpty() || box->objectName() == name))
            return box;
    }
    return nullptr;
}

DocumentController &controller()
{
    return DocumentController::shared();
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
    return qobject_cast<VXWindowController *>(controller().documentList().front()->windowController());
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

} // namespace

/// The program's delegate: what its commands do, and how the program starts and ends.
class DelegateTest : public QObject
{
    Q_OBJECT
public:
    explicit DelegateTest(VXAppDelegate &delegate) : m_delegate(delegate) { }

private Q_SLOTS:
    void cleanup();
    void knowsTheTransformers();
    void putsItsCommandsIntoMenus_data();
    void putsItsCommandsIntoMenus();
    void togglesTheMacroPanel();
    void reopensTheMacroPanelBehind();
    void tellsWhatAHiddenPanelWasGiven_data();
    void tellsWhatAHiddenPanelWasGiven();
    void makesWindowsOnce();
    void opensTheDocumentation();
    void findsTheChangeLog_data();
    void findsTheChangeLog();
    void showsTheChangeLogInLightAndDark();
    void choosesWhatIsOffered_data();
    void choosesWhatIsOffered();
    void tellsWhatItIs();
    void startsWithWhatIsGiven_data();
    void startsWithWhatIsGiven();
    void theEmptyWindowGivesItsPlace();
    void opensVeryManyBehind();
    void leavesNothingBehind_data();
    void leavesNothingBehind();
    void tellsWhatCannotBeOpened();
    void tellsOfDamagedSettings();
    void warnsOfAPythonThatIsNotSupported();
    void comesBackAsItWasLeft();
    void passesOverDamagedSessions();
    void keepsEverythingWhenTheDesktopEnds();
    void followsTheAutosaveDelay();
    void givesDocumentsOfScriptsWindows();
    void stopsFromTheCompareWindow();
    void asksInTheWindowWhatBecomesOfChanges();

private:
    VXAppDelegate &m_delegate;
};

void DelegateTest::cleanup()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (qobject_cast<QMessageBox *>(widget))
            delete widget;
    }
    controller().releaseAll();
    for (const char *key : {"VXOpenWindows", "VXRestoreWindows", "VXAutosaveDelay", "VXUpdateServer",
                            "SUShowCuttingEdgeVersion", "showMacroPanel"})
        UserDefaults::standard().removeObjectForKey(QString::fromLatin1(key));
}

void DelegateTest::knowsTheTransformers()
{
    QCOMPARE(VXAppDelegate::applicationName(), u"Runebook"_s);
    const ValueTransformer *list = ValueTransformer::forName(u"arrayToStringTransformator"_s);
    QVERIFY(list);
    QCOMPARE(list->transformedValue(QStringList {u"a"_s, u"b"_s}).toString(), u"a, b"_s);
    QVERIFY(ValueTransformer::forName(u"directionToIndexTransformer"_s));
}

void DelegateTest::putsItsCommandsIntoMenus_data()
{
    QTest::addColumn<QString>("menu");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("keys");
    QTest::newRow("quit") << u"File"_s << u"Quit"_s << u"Ctrl+Q"_s;
    QTest::newRow("preferences") << u"Edit"_s << u"Preferences…"_s << u"Ctrl+,"_s;
    QTest::newRow("macro panel") << u"Window"_s << u"Macro Panel"_s << u"Ctrl+Alt+M"_s;
    QTest::newRow("compare") << u"Window"_s << u"Compare Data"_s << u"Ctrl+Shift+C"_s;
    QTest::newRow("documentation") << u"Help"_s << u"Scripting Documentation"_s << u"F1"_s;
    QTest::newRow("change log") << u"Help"_s << u"Change Log"_s << QString();
    QTest::newRow("updates") << u"Help"_s << u"Check for Updates…"_s << QString();
    QTest::newRow("about") << u"Help"_s << u"About Runebook"_s << QString();
}

void DelegateTest::putsItsCommandsIntoMenus()
{
    QFETCH(QString, menu);
    QFETCH(QString, command);
    QFETCH(QString, keys);
    m_delegate.openAtStart({});
    const auto plain = [](QString text) { return text.remove(u'&'); };
    for (const QAction *title : frontWindow()->menuBar()->actions()) {
        if (plain(title->text()) != menu)
            continue;
        for (const QAction *action : title->menu()->actions()) {
            if (plain(action->text()) == command) {
                QCOMPARE(action->shortcut().toString(), keys);
                QVERIFY(action->text().contains(u'&')); // a key for it
                return;
            }
        }
    }
    QFAIL("no such command");
}

void DelegateTest::togglesTheMacroPanel()
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

void DelegateTest::reopensTheMacroPanelBehind()
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

void DelegateTest::tellsWhatAHiddenPanelWasGiven_data()
{
    QTest::addColumn<QStringList>("printed");
    QTest::addColumn<QString>("error");
    QTest::addColumn<bool>("isPanelShown");
    QTest::addColumn<QString>("told"); // some of it
    QTest::newRow("printed") << QStringList {u"3"_s, u" found\n"_s, u"more\n"_s} << QString() << false
                             << u"“3 found”"_s;
    QTest::newRow("failed") << QStringList() << u"Traceback\n  line 1\nZeroDivisionError: x\n"_s << false
                            << u"failed: ZeroDivisionError: x"_s;
    QTest::newRow("both") << QStringList {u"3 found\n"_s} << u"KeyError: 'a'\n"_s << false
                          << u"failed: KeyError: 'a'"_s;
    QTest::newRow("blank") << QStringList {u" \n"_s} << QString() << false << QString();
    QTest::newRow("the panel shows it")
        << QStringList {u"3 found\n"_s} << u"KeyError\n"_s << true << QString();
}

void DelegateTest::tellsWhatAHiddenPanelWasGiven()
{
    QFETCH(const QStringList, printed);
    QFETCH(const QString, error);
    QFETCH(const bool, isPanelShown);
    QFETCH(const QString, told);
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

void DelegateTest::makesWindowsOnce()
{
    QObject *compare = m_delegate.compareWindow();
    m_delegate.showCompareWindow();
    QCOMPARE(m_delegate.compareWindow(), compare);
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

void DelegateTest::opensTheDocumentation()
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
    QFile page(folder.filePath(u"doc/index.html"_s));
    QVERIFY(page.open(QIODevice::WriteOnly));
    page.close();
    m_delegate.showScriptingDocu();
    QCOMPARE(taker.urls, QList<QUrl> {QUrl::fromLocalFile(page.fileName())});
    StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
    QDesktopServices::unsetUrlHandler(u"file"_s);
}

void DelegateTest::findsTheChangeLog_data()
{
    QTest::addColumn<QString>("server");
    QTest::addColumn<QString>("url");
    QTest::newRow("a server") << u"https://u.example.org"_s
                              << u"https://u.example.org/Runebook/Runebook2.1-123.html"_s;
    QTest::newRow("with a slash") << u"https://u.example.org/x//"_s
                                  << u"https://u.example.org/x/Runebook/Runebook2.1-123.html"_s;
    QTest::newRow("none")
        << QString() << QUrl::fromLocalFile(StandardFolders::resource(u"doc/changelog.html"_s)).toString();
}

void DelegateTest::findsTheChangeLog()
{
    QFETCH(QString, server);
    QFETCH(QString, url);
    QCOMPARE(VXChangeLogWindowController::urlForServer(server, u"2.1"_s, u"123"_s), url);
    UserDefaults::standard().setObjectForKey(server, u"VXUpdateServer"_s);
    QString expected = url;
    expected.replace(u"2.1-123"_s, QStringLiteral(RUNEBOOK_VERSION "-" RUNEBOOK_BUILD));
    QCOMPARE(VXAppDelegate::changeLogURL(), expected);
}

void DelegateTest::showsTheChangeLogInLightAndDark()
{
    const QTemporaryDir folder;
    StandardFolders::setProgramData(folder.path());
    QDir(folder.path()).mkdir(u"doc"_s);
    QFile page(folder.filePath(u"doc/changelog.html"_s));
    QVERIFY(page.open(QIODevice::WriteOnly));
    page.write("<style>x</style><h1>Changes</h1><p>Better <img src='/dev/zero'>\xc3\xa9</p>");
    page.close();
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

void DelegateTest::choosesWhatIsOffered_data()
{
    QTest::addColumn<QStringList>("versions");
    QTest::addColumn<QVariant>("wantsNewest");
    QTest::addColumn<QString>("offered");
    const QStringList three {u"1"_s, u"3"_s, u"2"_s};
    QTest::newRow("unset") << three << QVariant() << u"1"_s;
    QTest::newRow("no") << three << QVariant(false) << u"1"_s;
    QTest::newRow("yes") << three << QVariant(true) << u"2"_s;
    QTest::newRow("one") << QStringList {u"1"_s} << QVariant(true) << u"1"_s;
    QTest::newRow("none") << QStringList() << QVariant(true) << QString();
}

void DelegateTest::choosesWhatIsOffered()
{
    QFETCH(QStringList, versions);
    QFETCH(QVariant, wantsNewest);
    QFETCH(QString, offered);
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

void DelegateTest::tellsWhatItIs()
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

void DelegateTest::startsWithWhatIsGiven_data()
{
    QTest::addColumn<QStringList>("given");
    QTest::addColumn<QStringList>("opened"); // the frontmost first
    QTest::newRow("nothing") << QStringList() << QStringList {QString()};
    QTest::newRow("two") << QStringList {u"a.xml"_s, u"b.xml"_s} << QStringList {u"b.xml"_s, u"a.xml"_s};
    QTest::newRow("one twice") << QStringList {u"a.xml"_s, u"a.xml"_s} << QStringList {u"a.xml"_s};
    QTest::newRow("a missing one") << QStringList {u"no.xml"_s} << QStringList {QString()};
}

void DelegateTest::startsWithWhatIsGiven()
{
    QFETCH(QStringList, given);
    QFETCH(QStringList, opened);
    const QTemporaryDir folder;
    tinyFile(folder, u"a.xml"_s);
    tinyFile(folder, u"b.xml"_s);
    QStringList paths;
    for (const QString &name : given)
        paths << folder.filePath(name);
    m_delegate.openAtStart(paths);
    QTRY_COMPARE(openPaths(), opened);
}

void DelegateTest::theEmptyWindowGivesItsPlace()
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

namespace {

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
    int busiest() const { return m_counts.isEmpty() ? 0 : *std::max_element(m_counts.begin(), m_counts.end()); }

private:
    QWidget &m_window;
    QMap<std::pair<QObject *, int>, int> m_counts;
};

} // namespace

void DelegateTest::opensVeryManyBehind()
{
    const QTemporaryDir folder;
    constexpr int kFiles = 60;
    QStringList paths;
    for (int i = 0; i < kFiles; ++i)
        paths << tinyFile(folder, QString::number(i) + ".xml"_L1);
    QSignalSpy announced(&controller(), &DocumentController::documentsChanged);
    m_delegate.openAtStart(paths);
    const auto progress = [] {
        QList<QProgressDialog *> bars;
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (auto *bar = qobject_cast<QProgressDialog *>(widget); bar && bar->isVisible())
                bars << bar;
        }
        return bars;
    };
    QTRY_VERIFY(controller().documentList().size() > 2);
    QCOMPARE(progress().size(), 1);
    QVERIFY(progress().front()->value() > 0 && progress().front()->maximum() == kFiles);
    // A window that is there has nothing to do for each of those that come after it.
    QTRY_VERIFY(controller().documentList().size() > 12);
    EventCount ofOne(*controller().documentList()[10]->windowController());
    QTRY_COMPARE_WITH_TIMEOUT(controller().documentList().size(), kFiles, 60'000);
    QTRY_VERIFY(progress().isEmpty());
    // Nobody had to hear of each of them.
    QVERIFY2(announced.size() < 10, qPrintable(QString::number(announced.size())));
    QVERIFY2(ofOne.busiest() < kFiles / 4, qPrintable(QString::number(ofOne.busiest())));

    paths.clear();
    for (int i = 0; i < kFiles; ++i)
        paths << tinyFile(folder, u'b' + QString::number(i) + ".xml"_L1);
    m_delegate.openFromElsewhere(paths);
    QTRY_COMPARE(progress().size(), 1);
    QTRY_VERIFY(controller().documentList().size() > kFiles + 2);
    QTest::keyClick(progress().front(), Qt::Key_Escape);
    const qsizetype opened = controller().documentList().size();
    QTest::qWait(50);
    QVERIFY(progress().isEmpty());
    QCOMPARE(controller().documentList().size(), opened);
    QVERIFY(opened < 2 * kFiles);
}

void DelegateTest::leavesNothingBehind_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<int>("times");
    QTest::newRow("documents with windows") << u"documents"_s << 200;
    QTest::newRow("steps undone and redone") << u"steps"_s << 10'000;
    QTest::newRow("script runs") << u"runs"_s << 1'000;
}

/// However often something was done: once the documents are closed, memory and descriptors are what they were.
void DelegateTest::leavesNothingBehind()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("the sanitizers keep what is freed, and look for leaks by themselves");
#endif
    QFETCH(QString, what);
    QFETCH(int, times);
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
                QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
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
                // As behind every command: the framework never gives back the room of its queue, which would
                // grow by what each run leaves for the next turn.
                QTest::qWait(0);
                QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
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
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
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
        return qint64(heap.uordblks + heap.hblkhd);
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

void DelegateTest::tellsWhatCannotBeOpened()
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

void DelegateTest::tellsOfDamagedSettings()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"<b>d.ini"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("Dear reader,\n");
    file.close();
    const UserDefaults damaged(file.fileName());
    m_delegate.openAtStart({});
    const QMessageBox *box = shownBox();
    QVERIFY(box);
    QVERIFY(box->text().contains("damaged"_L1));
    QVERIFY(box->informativeText().contains((file.fileName() + ".damaged"_L1).toHtmlEscaped()));
    delete box;
    m_delegate.openAtStart({});
    QVERIFY(!shownBox()); // told once
}

void DelegateTest::warnsOfAPythonThatIsNotSupported()
{
    m_delegate.startScripting();
    m_delegate.startScripting();
    Q_EMIT VXScriptingHandler::sharedHandler()->unsupportedPythonStarted(u"You have 3.8"_s, u"Get another"_s);
    QMessageBox *box = shownBox(u"pythonWarning"_s);
    QVERIFY(box);
    QCOMPARE(box->text(), u"You have 3.8"_s);
    QCOMPARE(box->informativeText(), u"Get another"_s);
    QCOMPARE(box->standardButtons(), QMessageBox::Ok);
    QVERIFY(!box->isModal());
    QTest::mouseClick(box->button(QMessageBox::Ok), Qt::LeftButton);
    QVERIFY(!shownBox(u"pythonWarning"_s)); // one, though the start was asked for twice
}

void DelegateTest::comesBackAsItWasLeft()
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

void DelegateTest::passesOverDamagedSessions()
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

void DelegateTest::keepsEverythingWhenTheDesktopEnds()
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

void DelegateTest::followsTheAutosaveDelay()
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

void DelegateTest::givesDocumentsOfScriptsWindows()
{
    const QTemporaryDir folder;
    RunPump::shared().start();
    m_delegate.openAtStart({});
    VXScriptingHandler::sharedHandler()->runMacroString(
        u"new = newDocument()\nnew.addInfo_(newInfo('x'))\nopenDocument(r'"_s + tinyFile(folder, u"tiny.xml"_s)
        + u"')\nnewDocument().close()"_s);
    RunPump::shared().end();
    QCOMPARE(controller().documentList().size(), 3);
    for (const Document *document : controller().documentList())
        QTRY_VERIFY(document->windowController() && document->windowController()->isVisible());
}

void DelegateTest::stopsFromTheCompareWindow()
{
    VXScriptingHandler::sharedHandler();
    RunPump::shared().start();
    m_delegate.showCompareWindow();
    const auto *indicator = qobject_cast<QWidget *>(m_delegate.compareWindow())->findChild<RunIndicator *>();
    QVERIFY(indicator && !indicator->isVisible());
    QString shown;
    const auto stop = connect(&RunPump::shared(), &RunPump::pumped, this, [&] {
        shown = indicator->isVisible() ? indicator->text() : QString();
        indicator->findChild<QToolButton *>()->click();
    });
    runPanelCode(u"while True: pass"_s, u"Endless"_s);
    disconnect(stop);
    RunPump::shared().end();
    QCOMPARE(shown, u"Running “Endless”…"_s);
    QVERIFY(!indicator->isVisible());
}

/// A script of the menu fails while the panel is closed; the window's own table shows what is taken back.
void DelegateTest::asksInTheWindowWhatBecomesOfChanges()
{
    const QTemporaryDir folder;
    VXScriptingHandler::sharedHandler();
    RunPump::shared().start();
    m_delegate.openAtStart({tinyFile(folder, u"tiny.xml"_s)});
    QTRY_VERIFY(controller().documentList().size() == 1 && frontWindow());
    QVERIFY(QTest::qWaitForWindowActive(frontWindow()));
    const auto *document = qobject_cast<VXDocument *>(controller().documentList().first());
    const auto answer = [](const QString &text) {
        QPushButton *button = nullptr;
        const auto isAsked = [&button, text] {
            for (QPushButton *one : frontWindow()->findChildren<QPushButton *>())
                button = one->isVisible() && one->text() == text ? one : button;
            return button != nullptr;
        };
        return QTest::qWaitFor(isAsked) ? (QTest::mouseClick(button, Qt::LeftButton), !button->isVisible()) : false;
    };
    runPanelCode(u"Doc[0].name = 'kept'\n1/0"_s);
    QVERIFY(answer(u"&Keep"_s));
    runPanelCode(u"Doc[0].name = 'lost'\nDoc.addInfo_(newInfo('new'))\n1/0"_s);
    QCOMPARE(document->countOfInfos(), 3);
    QVERIFY(answer(u"&Take Back"_s));
    QCOMPARE(document->infos().front()->name(), u"kept"_s);
    QCOMPARE(frontWindow()->findChild<GlyphTableView *>()->model()->rowCount(), 2);
    const auto *bar = frontWindow()->findChildren<MessageBar *>().last();
    QVERIFY2(bar->isVisible() && bar->text().startsWith("Taken back"_L1), qPrintable(bar->text()));
    RunPump::shared().end();
}

RUNEBOOK_APP_TEST_MAIN(DelegateTest)
#include "DelegateTest.moc"
