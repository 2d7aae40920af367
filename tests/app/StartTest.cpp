// How the program starts with files and with what it kept, and how it ends.
#include "app/LastWindow.h"
#include "app/RunWatch.h"
#include "platform/Background.h"
#include "platform/UndoManager.h"
#include "platform/documents/DocumentWindows.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "tests/app/AppMain.h"

#include <malloc.h>

using namespace runebook;

namespace {

QString sample()
{
    return QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/sample.xml");
}

QStringList openPaths()
{
    QStringList names;
    for (const Document *document : controller().documentList())
        names << QFileInfo(document->fileURL()).fileName();
    return names;
}

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

using Use = std::function<void(int)>;

class StartTest : public AppTest
{
    Q_OBJECT
public:
    using AppTest::AppTest;

private Q_SLOTS:
    // opened: the frontmost first
    TABLE(startsWithWhatIsGiven, (const QStringList &given, const QStringList &opened), {
        row("nothing", {}, {QString()});
        row("two", {u"a.xml"_s, u"b.xml"_s}, {u"b.xml"_s, u"a.xml"_s});
        row("one twice", {u"a.xml"_s, u"a.xml"_s}, {u"a.xml"_s});
        row("a missing one", {u"no.xml"_s}, {QString()});
        row("a table", {u"c.txt"_s}, {u"c.txt"_s});
    })
    {
        const QTemporaryDir folder;
        for (const QString &name : {u"a.xml"_s, u"b.xml"_s, u"c.txt"_s})
            tinyFile(folder, name);
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
        EventCount ofOne(*DocumentWindows::of(*controller().documentList()[10]));
        QTRY_COMPARE_WITH_TIMEOUT(controller().documentList().size(), kFiles, 60'000);
        QTRY_VERIFY(!shownWindow<QProgressDialog>());
        for (const Document *document : controller().documentList()) // shown again they come to the front
            QVERIFY(!DocumentWindows::of(*document)->testAttribute(Qt::WA_ShowWithoutActivating));
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

    void tellsWhatCannotBeOpened()
    {
        const QTemporaryDir folder;
        m_delegate.openAtStart({folder.filePath(u"no.xml"_s), folder.path(), tinyFile(folder, u"a.xml"_s),
                                tinyFile(folder, u"a.png"_s)});
        QTRY_VERIFY(shownBox());
        const QMessageBox *box = shownBox();
        QVERIFY(box->text().contains(u'3'));
        QVERIFY(isSaidAmongTexts(u"questions"_s, *box));
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
        QVERIFY(isSaidAmongTexts(u"questions"_s, *box));
        QVERIFY(box->informativeText().contains((file + ".damaged"_L1).toHtmlEscaped()));
        delete box;
        m_delegate.openAtStart({});
        QVERIFY(!shownBox()); // told once
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

    /// What a program that was ended by hand leaves for the next one, whole or not at all.
    void takesOnlyWholeSessionsOver()
    {
        const QByteArray bytes = ReopenedSession {7, {QVariantMap {{u"path"_s, u"/a.xml"_s}}}}.toBytes();
        const auto whole = ReopenedSession::fromBytes(bytes);
        QVERIFY(whole && whole->process == 7 && whole->windows.size() == 1);
        for (qsizetype size = 0; size < bytes.size(); ++size)
            QVERIFY2(!ReopenedSession::fromBytes(bytes.first(size)), qPrintable(QString::number(size)));
        for (int place = 0; place < 4; ++place) { // another format
            QByteArray other = bytes;
            other[place] = char(other[place] + 1);
            QVERIFY(!ReopenedSession::fromBytes(other));
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
        // One that cannot be kept is told, although the one behind it can be.
        controller().openDocumentWithContentsOfURLDisplay(tinyFile(folder, u"b.xml"_s), true);
        frontWindow()->addInfo();
        controller().documentList().back()->undoManager()->undo();
        const QByteArray data = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", "/dev/null/none");
        const bool isKept = m_delegate.keepForNextStart();
        qputenv("XDG_DATA_HOME", data);
        QVERIFY(!isKept);
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

    /// However often something was done: once the documents are closed, memory and descriptors are what they
    /// were.
    TABLE(leavesNothingBehind, (int times, const Use &use), {
        const auto openedFile = [this] {
            return controller().openDocumentWithContentsOfURLDisplay(m_file, true);
        };
        row("documents with windows", 200, Use([=](int) {
                Document *document = openedFile();
                QTest::qWait(0);
                frontWindow()->addInfo();
                [&] { QVERIFY(document->autosave()); }();
                document->close();
            }));
        row("steps undone and redone", 10'000, Use([=](int i) {
                Document *document = controller().documentList().isEmpty()
                    ? openedFile()
                    : controller().documentList().front();
                UndoManager *history = document->undoManager();
                {
                    const UndoGroup group(history);
                    static_cast<VXDocument *>(document)->infos().front()->setSortName(QString::number(i));
                }
                history->undo();
                history->redo();
            }));
        row("script runs", 1'000, Use([=](int i) {
                if (controller().documentList().isEmpty())
                    openedFile();
                VXScriptingHandler::sharedHandler()->runMacroString(
                    u"Doc.infos()[0].sortName = 'x%1'"_s.arg(i));
                // As behind every command: the framework never gives back the room of its queue, which would
                // grow by what each run leaves for the next turn.
                QTest::qWait(0);
            }));
    })
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        QSKIP("the sanitizers keep what is freed, and look for leaks by themselves");
#endif
        m_delegate.startScripting();
        if (times == 1'000 && !VXScriptingHandler::isPythonRunning())
            QSKIP("needs a supported Python");
        // The style's own, which is bounded: it fills up with pictures for each window before it drops any.
        const int cached = QPixmapCache::cacheLimit();
        QPixmapCache::setCacheLimit(0);
        const auto restore = qScopeGuard([cached] { QPixmapCache::setCacheLimit(cached); });
        const QTemporaryDir folder;
        m_file = tinyFile(folder, u"a.xml"_s);
        const auto useAndClose = [&](int count) {
            for (int i = 0; i < count; ++i) {
                use(i);
                sendDeferredDeletes();
            }
            for (Document *document : QList<Document *>(controller().documentList())) {
                while (document->undoManager()->canUndo())
                    document->undoManager()->undo();
                document->close();
            }
            sendDeferredDeletes();
        };
        const auto descriptors = [] { return QDir(u"/proc/self/fd"_s).entryList().size(); };
        const auto bytes = [] {
            for (int i = 0; i < 2; ++i) {
                QTest::qWait(20);
                waitForBackground();
            }
            const auto heap = ::mallinfo2();
            return qint64(heap.uordblks) + qint64(heap.hblkhd);
        };
        // What is made once is made.
        for (int i = 0; i < 2; ++i)
            useAndClose(times / 4);
        const qint64 before = bytes();
        const auto descriptorsBefore = descriptors();
        useAndClose(times);
        const qint64 grown = bytes() - before;
        constexpr qint64 kNothing = 100'000; // of what takes some megabytes while it is there
        QVERIFY2(grown < kNothing, qPrintable(u"%1 bytes more"_s.arg(grown)));
        // Of those before, some may have been on their way out.
        QTRY_VERIFY2(descriptors() <= descriptorsBefore, qPrintable(QString::number(descriptors())));
    }

    /// Last, as it holds for the rest of a run: a merge that version control asks for is no session.
    void aMergeLeavesTheSessionAlone()
    {
        const QTemporaryDir folder;
        m_delegate.openAtStart({tinyFile(folder, u"a.xml"_s)});
        const QVariantList before {u"as it was left"_s};
        UserDefaults::standard().setObjectForKey(before, u"VXOpenWindows"_s);
        m_delegate.leaveSessionAlone();
        QVERIFY(m_delegate.keepForNextStart());
        QCOMPARE(UserDefaults::standard().arrayForKey(u"VXOpenWindows"_s), before);
    }

private:
    QString m_file;
};

RUNEBOOK_APP_TEST_MAIN(StartTest)
#include "StartTest.moc"
