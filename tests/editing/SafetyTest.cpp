// What the user sees of safety: the panel of recovered documents, the bar for files changed elsewhere, the
// questions around a save.
#include "editing/ChangedOnDisk.h"
#include "editing/ErrorBubble.h"
#include "editing/DetailPane.h"
#include "editing/GlyphColumns.h"
#include "editing/GlyphTableView.h"
#include "editing/PendingTexts.h"
#include "editing/RecoveryPanel.h"
#include "editing/VXCompareDataWindow.h"
#include "editing/VXWindowController.h"
#include "model/EditedValue.h"
#include "model/GlyphLineWriter.h"
#include "platform/AutosaveFolder.h"
#include "platform/Background.h"
#include "platform/DocumentController.h"
#include "platform/DocumentPanels.h"
#include "platform/MessageBar.h"
#include "platform/UnsavedPanel.h"
#include "platform/UserDefaults.h"
#include "platform/WindowPlacement.h"
#include "tests/Oddities.h"
#include "tests/OtherProcess.h"
#include "tests/RandomValues.h"

#include <QClipboard>
#include <QDirIterator>
#include <QFile>
#include <QFileDialog>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <functional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

const QByteArray kLines =
    "\t<glyph name=\"a\" category=\"Letter\" />\n\t<glyph name=\"b\" category=\"Letter\" />\n";

DocumentController &controller()
{
    return DocumentController::shared();
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

/// The button with these words below \a parent, mnemonics left out.
QPushButton *button(QWidget *parent, const QString &words)
{
    for (QPushButton *candidate : parent->findChildren<QPushButton *>()) {
        if (candidate->text().remove(u'&') == words)
            return candidate;
    }
    return nullptr;
}

QMessageBox *sheet()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        auto *box = qobject_cast<QMessageBox *>(widget);
        if (box && box->isVisible())
            return box;
    }
    return nullptr;
}

void answer(const QString &words)
{
    QTRY_VERIFY(sheet());
    QVERIFY2(button(sheet(), words), qPrintable(words));
    button(sheet(), words)->click();
}

/// Edits a new document and, if it is named, a file; neither is closed.
void editAndAutosave(const QString &path)
{
    QList<VXDocument *> documents {new VXDocument};
    if (!path.isEmpty()) {
        documents.prepend(new VXDocument);
        if (!documents[0]->readFromURLOfType(path, u"public.xml"_s))
            qFatal("not read");
        documents[0]->setFileURL(path);
        documents[0]->setFileType(u"public.xml"_s);
    }
    for (VXDocument *document : documents) {
        document->addInfo(VXGlyphInfo::init());
        if (!document->autosave())
            qFatal("not autosaved");
    }
}

constexpr OtherProcess::Work kWorks[] {{"edit", editAndAutosave}};

} // namespace

class TestSafety : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void pastesWholeOrNotAtAll(); // the first: nothing was freed yet in which a large block would fit
    void offersToRecover();
    void keepsWhatIsBeingTyped_data();
    void keepsWhatIsBeingTyped();
    void leavesTypedTextsThatAreNotItsOwn_data();
    void leavesTypedTextsThatAreNotItsOwn();
    void barAboutChanges_data();
    void barAboutChanges();
    void reloadsByItself();
    void keepsTheRowsUntilAllHaveHeardOfAReload();
    void firstFileTakesThePlaceOfTheUntouchedDocument();
    void windowsStandBesideEachOther();
    void asksOnceAboutAllThatIsUnsaved_data();
    void asksOnceAboutAllThatIsUnsaved();
    void asksBeforeSaving_data();
    void asksBeforeSaving();
    void asksAboutLosses_data();
    void asksAboutLosses();
    void tellsAtTheField_data();
    void tellsAtTheField();
    void tellsOfAThirdCodePointOnce();
    void leavesOutWhatNoSaveWrites();
    void pastesEveryValue();
    void afterAFailedSave_data();
    void afterAFailedSave();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    VXDocument *open(const QString &name)
    {
        return qobject_cast<VXDocument *>(
            controller().openDocumentWithContentsOfURLDisplay(path(name), true));
    }
    void makeOwnFile(const QString &name)
    {
        VXDocument document;
        write(path(name), kLines);
        QVERIFY(document.readFromURLOfType(path(name), u"public.xml"_s));
        QVERIFY(document.writeToURLOfType(path(name), u"public.xml"_s));
    }
    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestSafety::initTestCase()
{
    controller().setDocumentFactory([] { return new VXDocument; });
    controller().setWindowMaker([](Document &document) -> QWidget * {
        auto *window = new VXWindowController(static_cast<VXDocument &>(document));
        window->show();
        return window;
    });
    controller().setPendingTextTaker([](Document &document, const QJsonArray &texts) {
        return takePendingTexts(static_cast<VXDocument &>(document), texts);
    });
    controller().addType({u"public.xml"_s, {u"xml"_s}, u"Glyph data"_s});
}

void TestSafety::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    qputenv("XDG_DATA_HOME", QFile::encodeName(path(u"data"_s)));
    UserDefaults::standard().setObjectForKey(false, u"VXReloadChangedFiles"_s);
    makeOwnFile(u"a.xml"_s);
}

void TestSafety::cleanup()
{
    for (Document *document : QList<Document *>(controller().documentList()))
        document->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void TestSafety::pastesWholeOrNotAtAll()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("sanitizer-memory: the sanitizers take more address space than any limit leaves");
#endif
    constexpr int kPasted = 200'000;
    VXDocument *document = open(u"a.xml"_s);
    auto *window = qobject_cast<VXWindowController *>(document->windowController());
    QApplication::clipboard()->setText(QString::fromUtf8(kLines).repeated(kPasted / 2));
    const auto inChild = [](const std::function<int()> &work) {
        waitForBackground(); // what is under way would not go on there
        const pid_t child = ::fork();
        if (child == 0)
            ::_exit(work());
        int status = 0;
        return ::waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    };
    const auto addressSpace = [](const char *which) { // in MiB
        QFile status(u"/proc/self/status"_s);
        const bool isKnown = status.open(QIODevice::ReadOnly);
        const QByteArray text = isKnown ? status.readAll() : QByteArray();
        return text.mid(text.indexOf(which) + qstrlen(which)).simplified().split(' ').first().toULongLong() >> 10;
    };
    // What pasting takes is found out first, so that there can be less and more of it.
    constexpr int kUnit = 4;
    const int units = inChild([&] {
        const auto before = addressSpace("VmSize:");
        window->paste();
        return document->countOfInfos() == 2 + kPasted ? int(addressSpace("VmPeak:") - before) / kUnit : 0;
    });
    QVERIFY2(units > 0 && units < 255, qPrintable(u"%1 MiB"_s.arg(units * kUnit)));
    const int outcome = inChild([&] {
        bool isGood = true;
        for (const double share : {1 / 64., 1 / 32., 1 / 16., 1 / 8., 1 / 4., 1 / 2., 2.}) {
            const auto room = rlim_t(units * kUnit * share) + addressSpace("VmSize:");
            const rlimit limit {room << 20, RLIM_INFINITY};
            ::setrlimit(RLIMIT_AS, &limit);
            window->paste();
            const rlimit none {RLIM_INFINITY, RLIM_INFINITY};
            ::setrlimit(RLIMIT_AS, &none);
            const qsizetype count = document->countOfInfos();
            const bool isPasted = count == 2 + kPasted;
            isGood &= isPasted || (count == 2 && !document->undoManager()->canUndo());
            isGood &= share < 1 / 32. ? !isPasted : share < 2 || isPasted;
            document->undoManager()->undo();
            isGood &= document->countOfInfos() == 2;
        }
        return isGood ? 0 : 1;
    });
    QVERIFY2(outcome >= 0, "it crashed");
    QCOMPARE(outcome, 0);
}

void TestSafety::offersToRecover()
{
    const OtherProcess crashed(OtherProcess::End::Dies, "edit", path(u"a.xml"_s));
    RecoveryPanel panel;
    panel.recovery().find();
    panel.showIfNeeded();
    QVERIFY(panel.isVisible() && !panel.isModal());
    auto *list = panel.findChild<QTreeWidget *>();
    QCOMPARE(list->topLevelItemCount(), 2);
    const auto choose = [list](const QString &name) {
        list->setCurrentItem(list->findItems(name, Qt::MatchExactly).value(0));
    };
    choose(u"Untitled"_s);
    QVERIFY(!button(&panel, u"Compare with File"_s)->isEnabled());
    choose(u"a.xml"_s);
    button(&panel, u"Compare with File"_s)->click();
    QCOMPARE(controller().documentList().size(), 2);
    VXCompareDataWindow *compare = nullptr;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *window = qobject_cast<VXCompareDataWindow *>(widget))
            compare = window;
    }
    QVERIFY(compare && compare->isVisible());
    QCOMPARE(compare->leftDocList()->document()->countOfInfos(), 2);
    QCOMPARE(compare->rightDocList()->document()->countOfInfos(), 3);
    compare->close();
    QCOMPARE(controller().documentList().size(), 0); // they were opened for that alone

    list->setFocus();
    QTest::keyClick(list, Qt::Key_Return);
    QCOMPARE(controller().documentList().size(), 1);
    QVERIFY(controller().documentList().first()->isDocumentEdited());
    QVERIFY(controller().documentList().first()->windowController());
    QCOMPARE(list->topLevelItemCount(), 1);
    button(&panel, u"Discard…"_s)->click();
    answer(u"Discard"_s);
    QTRY_VERIFY(!panel.isVisible());
    QVERIFY(panel.recovery().contents().isEmpty());
}

void TestSafety::keepsWhatIsBeingTyped_data()
{
    QTest::addColumn<QString>("where"); // a cell, or the editor of a field in the pane
    QTest::addColumn<int>("records");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("restored"); // of the first two records
    QTest::newRow("cell") << u"cell"_s << 1 << u"sortName"_s << u"one <two>"_s << u"one <two>|"_s;
    QTest::newRow("name") << u"name"_s << 1 << u"name"_s << u"c"_s << u"c|b"_s;
    QTest::newRow("refused") << u"name"_s << 1 << u"name"_s << u"b"_s << u"a|b"_s;
    QTest::newRow("two lines") << u"desc"_s << 1 << u"desc"_s << u"x\ny"_s << u"x\ny|"_s;
    QTest::newRow("two records") << u"sortName"_s << 2 << u"sortName"_s << u"s"_s << u"s|s"_s;
    QTest::newRow("word of a list") << u"script"_s << 1 << u"script"_s << u"lat"_s << u"lat|"_s;
    QTest::newRow("code points") << u"unicodes"_s << 1 << u"unicodes"_s << u"41 42"_s << u"0041, 0042|"_s;
}

/// Typed with keys, never handed over, and there after a crash.
void TestSafety::keepsWhatIsBeingTyped()
{
    QFETCH(QString, where);
    QFETCH(int, records);
    QFETCH(QString, field);
    QFETCH(QString, typed);
    QFETCH(QString, restored);
    VXDocument *document = open(u"a.xml"_s);
    auto *window = qobject_cast<VXWindowController *>(document->windowController());
    window->infolistController()->setSelectionIndexes(records == 2 ? IndexSet {0, 1} : IndexSet {0});
    window->setSidebarShown(true);
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window));
    auto *table = window->findChild<GlyphTableView *>();
    if (where == "cell"_L1) {
        const QModelIndex cell = table->model()->index(0, columnOfField(*fieldForKey(field)));
        table->setColumnHidden(cell.column(), false);
        table->setCurrentIndex(cell);
        table->edit(cell);
    } else {
        window->detailPane()->editorOf(*fieldForKey(field))->setFocus();
    }
    QWidget *editor = QApplication::focusWidget();
    QVERIFY(editor && editor != table);
    QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
    for (const QChar letter : typed)
        letter == u'\n' ? QTest::keyClick(editor, Qt::Key_Return) : QTest::keyClicks(editor, QString(letter));
    QVERIFY(!document->isDocumentEdited());

    waitForBackground(); // what is under way would not go on there
    const pid_t child = ::fork();
    if (child == 0) // a program that dies right after the autosave
        ::_exit(document->autosave() ? 0 : 1);
    int status = 0;
    ::waitpid(child, &status, 0);
    QCOMPARE(status, 0);
    QVERIFY(!document->isDocumentEdited()); // nothing was handed over for that
    window->hide();
    delete window;
    document->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    QSignalSpy told(&ErrorPresenter::shared(), &ErrorPresenter::presented);
    Recovery recovery;
    QCOMPARE(recovery.find().size(), 1);
    auto *again = qobject_cast<VXDocument *>(recovery.restore(recovery.contents().front()));
    QVERIFY(again && again->isDocumentEdited());
    const GlyphField wanted = *fieldForKey(field);
    QCOMPARE(again->infos()[0]->displayText(wanted) + u'|' + again->infos()[1]->displayText(wanted), restored);
    const bool isRefused = restored == "a|b"_L1;
    QCOMPARE(told.size(), isRefused ? 1 : 0);
    if (isRefused)
        QVERIFY(told.front().front().value<Error>().text().contains(u"“b”"_s));
}

void TestSafety::leavesTypedTextsThatAreNotItsOwn_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString &kind : {u"pipe"_s, u"folder"_s, u"link"_s, u"300 MB"_s, u"1000 texts"_s})
        QTest::newRow(qPrintable(kind)) << kind;
}

void TestSafety::leavesTypedTextsThatAreNotItsOwn()
{
    QFETCH(const QString, kind);
    const OtherProcess crashed(OtherProcess::End::Dies, "edit");
    QDirIterator contents(path(u"data/runebook/Autosave"_s), {u"*.xml"_s}, QDir::Files, QDirIterator::Subdirectories);
    const QString content = contents.next();
    const QString typed = AutosaveFolder::besideContent(content, AutosaveFolder::kTypedSuffix);
    if (kind.contains(u' ')) {
        QJsonArray texts;
        for (int i = 0; i < 1000; ++i)
            texts << QJsonObject {{u"field"_s, u"name"_s}, {u"text"_s, u"x"_s}, {u"name"_s, u"nobody"_s}};
        write(typed, QJsonDocument(texts).toJson());
        if (kind == "300 MB"_L1)
            QVERIFY(QFile::resize(typed, 300 << 20));
    } else {
        write(QFileInfo(typed).path() + "/elsewhere"_L1, "[]"); // where the link leads
        QVERIFY(makeOddity(kind, typed));
    }
    const auto before = whatIsAt(typed);
    QSignalSpy told(&ErrorPresenter::shared(), &ErrorPresenter::presented);
    Recovery recovery;
    QCOMPARE(recovery.find().size(), 1);
    QVERIFY(recovery.restore(recovery.contents().front()));
    QVERIFY(told.size() >= 1 && told.size() <= 21);
    QVERIFY(told.last().front().value<Error>().text().contains(typed));
    QVERIFY(QFile::exists(content));
    QCOMPARE(whatIsAt(typed), before);
}

void TestSafety::barAboutChanges_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("isEdited");
    QTest::addColumn<QString>("firstName"); // afterwards
    QTest::addColumn<bool>("isEditedAfterwards");
    QTest::newRow("reload, clean") << u"Reload"_s << false << u"x"_s << false;
    QTest::newRow("reload, edited") << u"Reload"_s << true << u"x"_s << false;
    QTest::newRow("keep, clean") << u"Keep Mine"_s << false << u"a"_s << true;
    QTest::newRow("keep, edited") << u"Keep Mine"_s << true << u"edited"_s << true;
    QTest::newRow("save again") << u"Save Again"_s << true << u"edited"_s << false;
}

void TestSafety::barAboutChanges()
{
    QFETCH(const QString, button);
    QFETCH(const bool, isEdited);
    QFETCH(const QString, firstName);
    QFETCH(const bool, isEditedAfterwards);
    VXDocument *document = open(u"a.xml"_s);
    auto *bar = document->windowController()->findChild<ChangedOnDisk *>();
    QVERIFY(bar && !bar->isVisible());
    if (isEdited)
        document->objectInInfosAtIndex(0)->setName(u"edited"_s);
    if (button == u"Save Again")
        QVERIFY(QFile::remove(path(u"a.xml"_s)));
    else
        write(path(u"a.xml"_s), contentOf(path(u"a.xml"_s)).replace("\"a\"", "\"x\""));
    QTRY_VERIFY(bar->isVisible());
    QVERIFY(!bar->text().isEmpty());
    ::button(bar, button)->click();
    QVERIFY(!bar->isVisible());
    QCOMPARE(document->objectInInfosAtIndex(0)->name(), firstName);
    QCOMPARE(document->isDocumentEdited(), isEditedAfterwards);
    QVERIFY(document->saveDocument()); // whatever the answer, it was one
    QVERIFY(contentOf(path(u"a.xml"_s)).contains(firstName.toUtf8()));
}

void TestSafety::reloadsByItself()
{
    UserDefaults::standard().removeObjectForKey(u"VXReloadChangedFiles"_s); // the usual way
    VXDocument *document = open(u"a.xml"_s);
    auto *window = qobject_cast<VXWindowController *>(document->windowController());
    auto *bar = window->findChild<ChangedOnDisk *>();
    window->infolistController()->setSelectionIndexes({1});
    const QByteArray usual = contentOf(path(u"a.xml"_s));
    // Somebody writes for a while; nothing is read meanwhile.
    for (const char *name : {"\"w\"", "\"x\""}) {
        QSignalSpy noticed(&document->fileWatch(), &FileWatch::changed);
        write(path(u"a.xml"_s), QByteArray(usual).replace(kLines, "\t<glyph name=\"new\" />\n" + kLines)
                                    .replace("\"a\"", name));
        QVERIFY(noticed.wait());
        QCOMPARE(document->countOfInfos(), 2);
        QVERIFY(!bar->isVisible());
    }
    QTRY_COMPARE(document->countOfInfos(), 3);
    QCOMPARE(document->objectInInfosAtIndex(1)->name(), u"x"_s);
    QVERIFY(!bar->isVisible() && !document->isDocumentEdited());
    QCOMPARE(window->infolistController()->selectionIndexes(), IndexSet {2}); // still "b"
    document->undoManager()->undo();
    QCOMPARE(document->countOfInfos(), 2);
    QVERIFY(document->isDocumentEdited());
    document->undoManager()->redo();
    QVERIFY(!document->isDocumentEdited());
    // What does not read well is not taken unasked.
    write(path(u"a.xml"_s), contentOf(path(u"a.xml"_s)).replace("</glyphData>\n", ""));
    QTRY_VERIFY(bar->isVisible());
    QVERIFY(!document->isDocumentEdited());
    bar->keepMine();
    QVERIFY(document->saveDocument());
    // What is edited, emptied or gone is never reloaded unasked.
    document->objectInInfosAtIndex(0)->setName(u"edited"_s);
    write(path(u"a.xml"_s), contentOf(path(u"a.xml"_s)).replace("\"x\"", "\"y\""));
    QTRY_VERIFY(bar->isVisible());
    QCOMPARE(document->objectInInfosAtIndex(0)->name(), u"edited"_s);
    bar->reload();
    QVERIFY(QFile::resize(path(u"a.xml"_s), 0));
    QTRY_VERIFY(bar->isVisible());
    QCOMPARE(document->countOfInfos(), 3);
}

void TestSafety::keepsTheRowsUntilAllHaveHeardOfAReload()
{
    VXDocument *document = open(u"a.xml"_s);
    auto *window = qobject_cast<VXWindowController *>(document->windowController());
    window->addInfo(); // what is selected was not read, so that nobody holds on to what was
    QVERIFY(document->saveDocument());
    write(path(u"a.xml"_s), contentOf(path(u"a.xml"_s)).replace("\"a\"", "\"x\""));
    // The table asks its rows of before for the place to come back to.
    const std::weak_ptr<VXGlyphInfo> row = document->objectInInfosAtIndex(0);
    bool isThere = false;
    connect(document, &VXDocument::infosReset, this, [&] { isThere = !row.expired(); });
    QVERIFY(document->revertToSaved());
    QVERIFY(isThere);
    QVERIFY(row.expired());
    QCOMPARE(document->objectInInfosAtIndex(0)->name(), u"x"_s);
}

void TestSafety::firstFileTakesThePlaceOfTheUntouchedDocument()
{
    makeOwnFile(u"b.xml"_s);
    controller().openUntitledDocumentAndDisplay(true)->setPlaceholder(true);
    open(u"a.xml"_s);
    QCOMPARE(controller().documentList().size(), 1);
    open(u"b.xml"_s);
    QCOMPARE(controller().documentList().size(), 2);
    // What somebody has touched stays, be it as empty as before, and so does what somebody asked for.
    auto *touched = qobject_cast<VXDocument *>(controller().openUntitledDocumentAndDisplay(true));
    touched->setPlaceholder(true);
    touched->addInfo(VXGlyphInfo::init());
    touched->undoManager()->undo();
    QVERIFY(!touched->isDocumentEdited() && !touched->isPlaceholder());
    QVERIFY(!controller().openUntitledDocumentAndDisplay(true)->isPlaceholder());
}

void TestSafety::windowsStandBesideEachOther()
{
    const QRect room = QGuiApplication::primaryScreen()->availableGeometry();
    std::vector<std::unique_ptr<QWidget>> windows;
    QList<QWidget *> others; // the last one first
    for (int i = 0; i < 30; ++i) {
        windows.push_back(std::make_unique<QWidget>());
        QWidget &window = *windows.back();
        if (i == 0)
            window.setGeometry(room.x() + 10, room.y() + 40, 600, 420);
        WindowPlacement::cascade(window, others);
        WindowPlacement::fitIntoScreen(window);
        window.show();
        QVERIFY2(room.contains(window.frameGeometry()), qPrintable(QString::number(i)));
        QCOMPARE(window.size(), QSize(600, 420));
        for (const QWidget *other : others)
            QVERIFY2((other->pos() - window.pos()).manhattanLength() > 8, qPrintable(QString::number(i)));
        others.prepend(&window);
    }
    // As on a screen whose pixels are twice as large.
    QWidget large;
    large.resize(room.size() * 2);
    WindowPlacement::fitIntoScreen(large);
    large.show();
    QVERIFY(room.contains(large.frameGeometry()));
    const QSize least = open(u"a.xml"_s)->windowController()->minimumSizeHint();
    QVERIFY2(least.width() <= 780 && least.height() <= 440, qPrintable(QString::number(least.width())));
}

void TestSafety::asksOnceAboutAllThatIsUnsaved_data()
{
    QTest::addColumn<QStringList>("keys"); // what is pressed in the panel
    QTest::addColumn<QString>("saved");
    QTest::addColumn<bool>("isClosed");
    QTest::newRow("save all is the default") << QStringList {u"Return"_s} << u"a b"_s << true;
    QTest::newRow("without the first") << QStringList {u"Shift+Tab"_s, u"Space"_s, u"Alt+S"_s} << u"b"_s << true;
    QTest::newRow("discard all") << QStringList {u"Alt+D"_s} << QString() << true;
    QTest::newRow("cancel") << QStringList {u"Esc"_s} << QString() << false;
}

void TestSafety::asksOnceAboutAllThatIsUnsaved()
{
    QFETCH(QStringList, keys);
    QFETCH(QString, saved);
    QFETCH(bool, isClosed);
    for (const QString &name : {u"c.xml"_s, u"b.xml"_s, u"a.xml"_s}) {
        makeOwnFile(name); // which a save has nothing to ask about
        VXDocument *document = open(name);
        if (name != u"c.xml"_s)
            document->infos().front()->setName(u"changed"_s);
    }
    std::optional<bool> closed;
    DocumentPanels::closeAll([&closed](bool all) { closed = all; });
    UnsavedPanel *panel = nullptr;
    for (QWidget *widget : QApplication::topLevelWidgets())
        panel = qobject_cast<UnsavedPanel *>(widget) ? qobject_cast<UnsavedPanel *>(widget) : panel;
    QVERIFY(panel);
    QVERIFY(QTest::qWaitForWindowActive(panel));
    QCOMPARE(panel->toSave().size(), 2);
    for (const QString &key : keys) {
        const QKeyCombination combination = QKeySequence(key)[0];
        QTest::keyClick(panel->focusWidget() ? panel->focusWidget() : panel, combination.key(),
                        combination.keyboardModifiers());
    }
    QTRY_COMPARE(closed, std::optional(isClosed));
    QCOMPARE(controller().documentList().isEmpty(), isClosed);
    QStringList changed;
    for (const QString &name : {u"a"_s, u"b"_s, u"c"_s}) {
        if (contentOf(path(name + u".xml"_s)).contains("changed"))
            changed << name;
    }
    QCOMPARE(changed.join(u' '), saved);
}

void TestSafety::asksBeforeSaving_data()
{
    QTest::addColumn<QByteArray>("outside"); // what another program puts in the place of "a"
    QTest::addColumn<QByteArray>("extra"); // what the file has besides
    QTest::addColumn<QStringList>("answers");
    QTest::addColumn<bool>("isSaved");
    QTest::newRow("nothing to ask") << QByteArray() << QByteArray() << QStringList() << true;
    QTest::newRow("changed, written over")
        << QByteArray("x") << QByteArray() << QStringList {u"Write Over It"_s} << true;
    QTest::newRow("changed, left") << QByteArray("x") << QByteArray() << QStringList {u"Cancel"_s} << false;
    QTest::newRow("a comment goes") << QByteArray() << QByteArray("<!-- x -->\n") << QStringList {u"Save"_s}
                                    << true;
    QTest::newRow("a comment stays") << QByteArray() << QByteArray("<!-- x -->\n")
                                     << QStringList {u"Cancel"_s} << false;
    QTest::newRow("both") << QByteArray("x") << QByteArray("<!-- x -->\n")
                          << QStringList {u"Write Over It"_s, u"Save"_s} << true;
}

void TestSafety::asksBeforeSaving()
{
    QFETCH(const QByteArray, outside);
    QFETCH(const QByteArray, extra);
    QFETCH(const QStringList, answers);
    QFETCH(const bool, isSaved);
    const QByteArray content = contentOf(path(u"a.xml"_s)).replace(kLines, kLines + extra);
    write(path(u"a.xml"_s), content);
    VXDocument *document = open(u"a.xml"_s);
    document->objectInInfosAtIndex(1)->setName(u"edited"_s);
    if (!outside.isEmpty())
        write(path(u"a.xml"_s), QByteArray(content).replace("\"a\"", '"' + outside + '"'));
    const QByteArray before = contentOf(path(u"a.xml"_s));
    std::optional<bool> outcome;
    DocumentPanels::save(*document, document->windowController(),
                         [&outcome](bool saved) { outcome = saved; });
    for (const QString &words : answers) {
        QVERIFY(!outcome);
        answer(words);
    }
    QCOMPARE(outcome, std::optional(isSaved));
    QCOMPARE(document->isDocumentEdited(), !isSaved);
    QCOMPARE(contentOf(path(u"a.xml"_s)).contains("edited"), isSaved);
    if (!isSaved)
        QCOMPARE(contentOf(path(u"a.xml"_s)), before);
    QVERIFY(!sheet());
}

void TestSafety::asksAboutLosses_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QStringList>("buttons"); // of the sheet, Cancel apart
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QByteArray>("saved"); // a part of the file afterwards; empty: as it was
    const QStringList barred {u"Fix"_s, u"Go to"_s};
    const QStringList listed {u"Fix All"_s, u"Go to"_s, u"Save Anyway"_s};
    const QString comment = u"q <!-- c"_s;
    const QString quote = u"the \"A\""_s;
    QTest::newRow("a comment, fixed") << comment << barred << u"Fix"_s << QByteArray("q <! -- c");
    QTest::newRow("a comment, by Return") << comment << barred << u"Return"_s << QByteArray("q <! -- c");
    QTest::newRow("quotes, by Return in the list") << quote << listed << u"List"_s << QByteArray("\"the A\"");
    QTest::newRow("a comment, looked at") << comment << barred << u"Go to"_s << QByteArray();
    QTest::newRow("a comment, cancelled") << comment << barred << u"Cancel"_s << QByteArray();
    QTest::newRow("quotes, fixed") << quote << listed << u"Fix All"_s << QByteArray("\"the A\"");
    QTest::newRow("quotes, lost") << quote << listed << u"Save Anyway"_s << QByteArray("\"the \"A");
    QTest::newRow("quotes, looked at") << quote << listed << u"Go to"_s << QByteArray();
    QTest::newRow("quotes, cancelled") << quote << listed << u"Cancel"_s << QByteArray();
}

void TestSafety::asksAboutLosses()
{
    QFETCH(const QString, value);
    QFETCH(const QStringList, buttons);
    QFETCH(const QString, answer);
    QFETCH(const QByteArray, saved);
    VXDocument *document = open(u"a.xml"_s);
    auto *window = qobject_cast<VXWindowController *>(document->windowController());
    const QByteArray before = contentOf(path(u"a.xml"_s));
    document->objectInInfosAtIndex(1)->setSortName(value);
    document->flushChanges();
    std::optional<bool> outcome;
    DocumentPanels::save(*document, window, [&outcome](bool isSaved) { outcome = isSaved; });
    auto *sheet = window->findChild<QDialog *>(u"savingLosses"_s);
    QVERIFY(sheet && sheet->isVisible());
    QVERIFY(sheet->screen()->availableGeometry().contains(sheet->geometry()));
    auto *list = sheet->findChild<QTreeWidget *>();
    QVERIFY(!list->accessibleName().isEmpty());
    QVERIFY(list->topLevelItemCount() >= 1); // a quote spoils what stands behind it, too
    QCOMPARE(list->topLevelItem(0)->text(0), u"b"_s);
    QCOMPARE(list->topLevelItem(0)->text(1), u"Sort Name"_s);
    for (const QString &words : {u"Fix"_s, u"Fix All"_s, u"Go to"_s, u"Save Anyway"_s})
        QCOMPARE(button(sheet, words) != nullptr, buttons.contains(words));
    if (answer == u"Cancel")
        QTest::keyClick(sheet, Qt::Key_Escape);
    else if (answer == u"Return" || answer == u"List")
        QTest::keyClick(answer == u"List" ? list : sheet->focusWidget(), Qt::Key_Return);
    else
        QTest::mouseClick(button(sheet, answer), Qt::LeftButton);
    QCOMPARE(outcome, std::optional(!saved.isEmpty()));
    QCOMPARE(document->isDocumentEdited(), saved.isEmpty());
    if (saved.isEmpty())
        QCOMPARE(contentOf(path(u"a.xml"_s)), before);
    else
        QVERIFY2(contentOf(path(u"a.xml"_s)).contains(saved), contentOf(path(u"a.xml"_s)).constData());
    QCOMPARE(QDir(path(u"data/runebook/Originals"_s)).entryList(QDir::Files).size(),
             answer == u"Save Anyway" ? 1 : 0);
    if (answer == u"Go to") {
        const InfoList selected = window->infolistController()->selectedObjects();
        QCOMPARE(selected, InfoList {document->objectInInfosAtIndex(1)});
    }
    if (answer.startsWith(u"Fix")) {
        document->undoManager()->undo();
        QCOMPARE(document->objectInInfosAtIndex(1)->sortName(), value);
    }
}

void TestSafety::tellsAtTheField_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("kept"); // in the record, before the offer is taken
    QTest::addColumn<QString>("offer");
    QTest::addColumn<QString>("offered"); // in the record afterwards
    QTest::newRow("usual") << u"a"_s << u"a"_s << QString() << QString();
    QTest::newRow("a comment") << u"q <!-- c"_s << QString() << u"Write <! -- instead"_s << u"q <! -- c"_s;
    QTest::newRow("the end of one") << u"q --> c"_s << QString() << u"Write -- > instead"_s << u"q -- > c"_s;
    QTest::newRow("a quote") << u"q\"c"_s << u"q\"c"_s << u"Leave the quotes out"_s << u"qc"_s;
    QTest::newRow("a blank in front") << u" c"_s << u" c"_s << u"Leave it out"_s << u"c"_s;
}

void TestSafety::tellsAtTheField()
{
    QFETCH(const QString, typed);
    QFETCH(const QString, kept);
    QFETCH(const QString, offer);
    QFETCH(const QString, offered);
    VXDocument *document = open(u"a.xml"_s);
    auto *window = qobject_cast<VXWindowController *>(document->windowController());
    const InfoPtr info = document->objectInInfosAtIndex(0);
    for (const bool isCell : {false, true}) {
        window->showInfo(info);
        QCoreApplication::processEvents();
        if (isCell) {
            auto &model = *window->infolistController();
            model.setData(model.index(0, columnOfField(GlyphField::SortName)), typed, Qt::EditRole);
        } else {
            auto *line = window->findChild<QLineEdit *>(u"sortName"_s);
            QVERIFY(line && line->isVisible());
            line->setFocus();
            QTest::keyClicks(line, typed);
            QTest::keyClick(line, Qt::Key_Return);
        }
        QCOMPARE(info->sortName(), kept);
        auto *bar = window->findChild<MessageBar *>();
        QCOMPARE(bar->isVisible(), !offer.isEmpty());
        if (!offer.isEmpty()) {
            QVERIFY(bar->text().contains(u"Sort Name"_s));
            QTest::mouseClick(button(bar, offer), Qt::LeftButton);
            QCOMPARE(info->sortName(), offered);
            QVERIFY(!bar->isVisible());
        }
        while (document->undoManager()->canUndo())
            document->undoManager()->undo();
        document->flushChanges();
    }
}

void TestSafety::tellsOfAThirdCodePointOnce()
{
    VXDocument *document = open(u"a.xml"_s);
    auto *window = qobject_cast<VXWindowController *>(document->windowController());
    const InfoPtr info = document->objectInInfosAtIndex(0);
    for (const bool isCell : {false, true}) {
        info->setUnicodes({u"0041"_s, u"0042"_s});
        window->showInfo(info);
        document->flushChanges();
        QCoreApplication::processEvents();
        auto *line = qobject_cast<QLineEdit *>(window->detailPane()->editorOf(GlyphField::Unicodes));
        if (isCell) {
            auto *table = window->findChild<GlyphTableView *>();
            table->setFocus();
            table->edit(table->model()->index(0, columnOfField(GlyphField::Unicodes)));
            line = qobject_cast<QLineEdit *>(QApplication::focusWidget());
        }
        QVERIFY(line);
        line->setFocus();
        QTest::keyClick(line, Qt::Key_End);
        QTest::keyClicks(line, u" 0043"_s);
        QTest::keyClick(line, Qt::Key_Return);
        QCOMPARE(info->unicodes().size(), 3);
        QTRY_VERIFY(window->findChild<ErrorBubble *>());
        const auto *bubble = window->findChild<ErrorBubble *>();
        QVERIFY2(bubble->text().contains(u"0043"), qPrintable(bubble->text()));
        // It is no refusal, and does not look like one.
        QCOMPARE(bubble->palette().color(QPalette::WindowText), bubble->palette().color(QPalette::ToolTipText));
        QVERIFY(!window->findChild<MessageBar *>()->isVisible());
        delete bubble;
    }
}

void TestSafety::leavesOutWhatNoSaveWrites()
{
    VXDocument *document = open(u"a.xml"_s);
    auto *window = qobject_cast<VXWindowController *>(document->windowController());
    const auto said = [window] {
        const auto *bar = window->findChild<MessageBar *>();
        return bar->isVisible() ? bar->text() : QString();
    };
    QApplication::clipboard()->setText(u"<glyph name=\"c\" sortName=\"x <!-- y\" />\n<glyph name=\"d\" />\n"
                                       "<glyph name=\"e\" description=\"x --> y\" />\n"_s);
    window->paste();
    QCOMPARE(document->countOfInfos(), 4);
    QVERIFY2(said().contains(u"1. Sort Name holds “<!--”"), qPrintable(said()));

    // A name that was read with the end of a comment may stay where it is, and go nowhere else.
    QApplication::clipboard()->setText(u"<glyph name=\"f-->\" />"_s);
    window->paste();
    const InfoPtr info = document->infos().back();
    window->infolistController()->setSelectedObjects({document->infos().front(), info});
    window->moveNameToAltName();
    QCOMPARE(document->infos().front()->altNames(), QStringList {u"a"_s});
    QVERIFY(info->altNames().isEmpty());
    QVERIFY2(said().contains(u"1. Alternate Names holds “-->”"), qPrintable(said()));
    QCOMPARE(document->savingLosses(document->fileType()).takingOthers, 0);
}

/// What is copied and pasted is equal, or is left out and counted; other programs see lines.
void TestSafety::pastesEveryValue()
{
    VXDocument *source = open(u"a.xml"_s);
    auto *from = qobject_cast<VXWindowController *>(source->windowController());
    makeOwnFile(u"b.xml"_s);
    VXDocument *target = open(u"b.xml"_s);
    auto *into = qobject_cast<VXWindowController *>(target->windowController());
    const auto isWritten = [](const InfoPtr &info) { return refusalOfEdited(*info).isNull(); };
    const auto valuesOfAll = [](const InfoList &infos) {
        QList<QVariantList> values;
        for (const InfoPtr &info : infos)
            values << valuesOf(*info);
        return values;
    };
    Dice dice(13);
    int kept = 0;
    int refused = 0;
    for (int round = 0; round < 100; ++round) {
        InfoList infos = source->infos(); // two as they were read, and three others
        infos.resize(2);
        std::string lines;
        for (int i = 0; i < 3; ++i) {
            infos.push_back(VXGlyphInfo::init());
            dice.change(*infos.back());
        }
        for (const InfoPtr &info : infos)
            GlyphLineWriter(2).append(*info, lines);
        source->setInfos(infos);
        from->infolistController()->setSelectedObjects(infos);
        from->copy();
        const QMimeData *copied = QApplication::clipboard()->mimeData();
        QCOMPARE(copied->text(), QString::fromStdString(lines));
        if (round % 2) { // as another program that runs gets it
            auto *bytes = new QMimeData;
            for (const QString &format : copied->formats())
                bytes->setData(format, copied->data(format));
            QApplication::clipboard()->setMimeData(bytes);
        }
        into->infolistController()->setSelectedObjects({});
        const qsizetype before = target->countOfInfos();
        const int steps = target->undoManager()->stack()->count();
        into->paste();
        const InfoList expected = [&] {
            InfoList written;
            std::copy_if(infos.begin(), infos.end(), std::back_inserter(written), isWritten);
            return written;
        }();
        const InfoList pasted(target->infos().begin() + before, target->infos().end());
        QCOMPARE(valuesOfAll(pasted), valuesOfAll(expected));
        QCOMPARE(target->undoManager()->stack()->count(), steps + 1);
        const auto left = infos.size() - expected.size();
        if (left > 0)
            QVERIFY(into->findChild<MessageBar *>()->text().contains(u"left out: %1."_s.arg(left)));
        kept += int(expected.size());
        refused += int(left);
        target->undoManager()->undo();
        QCOMPARE(target->countOfInfos(), before);
        target->undoManager()->stack()->clear();
    }
    QVERIFY2(kept > 400 && refused > 10, qPrintable(u"%1 %2"_s.arg(kept).arg(refused)));

    // A damaged form is passed over: what the lines hold is pasted.
    auto *damaged = new QMimeData;
    const QMimeData *copied = QApplication::clipboard()->mimeData();
    for (const QString &format : copied->formats())
        damaged->setData(format, format.startsWith(u"text/") ? "<glyph name=\"plain\" />" : copied->data(format).chopped(9));
    QApplication::clipboard()->setMimeData(damaged);
    into->paste();
    QCOMPARE(target->infos().back()->name(), u"plain"_s);
}

void TestSafety::afterAFailedSave_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<bool>("isMended"); // before the answer
    QTest::addColumn<bool>("isOpen"); // afterwards
    QTest::addColumn<bool>("isSaved");
    QTest::newRow("retry, mended") << u"Retry"_s << true << true << true;
    QTest::newRow("retry, in vain") << u"Retry"_s << false << true << false;
    QTest::newRow("cancel") << u"Cancel"_s << false << true << false;
    QTest::newRow("discard") << u"Discard Changes and Close"_s << false << false << false;
    QTest::newRow("save as") << u"Save As…"_s << false << true << false;
}

void TestSafety::afterAFailedSave()
{
    QFETCH(const QString, words);
    QFETCH(const bool, isMended);
    QFETCH(const bool, isOpen);
    QFETCH(const bool, isSaved);
    QPointer<VXDocument> document = open(u"a.xml"_s);
    document->objectInInfosAtIndex(1)->setName(u"edited"_s);
    // A folder has taken the file's place.
    QVERIFY(QFile::remove(path(u"a.xml"_s)) && QDir(m_folder->path()).mkdir(u"a.xml"_s));
    document->keepMine();
    std::optional<bool> outcome;
    DocumentPanels::save(*document, document->windowController(),
                         [&outcome](bool saved) { outcome = saved; });
    QTRY_VERIFY(sheet());
    QVERIFY(sheet()->text().contains(path(u"a.xml"_s)));
    QVERIFY(sheet()->textFormat() == Qt::PlainText);
    QVERIFY(!sheet()->informativeText().isEmpty());
    if (isMended)
        QVERIFY(QDir(m_folder->path()).rmdir(u"a.xml"_s));
    answer(words);
    if (words == u"Save As…") {
        auto *panel = document->windowController()->findChild<QFileDialog *>();
        QVERIFY(panel && panel->isVisible());
        panel->reject();
    } else if (words == u"Retry" && !isMended) {
        QTRY_VERIFY(sheet()); // once for each answer
        answer(u"Cancel"_s);
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(outcome, std::optional(isSaved));
    QCOMPARE(!document.isNull(), isOpen);
    if (isOpen)
        QCOMPARE(document->isDocumentEdited(), !isSaved);
}

RUNEBOOK_TEST_MAIN_WITH(TestSafety, kWorks)
#include "SafetyTest.moc"
