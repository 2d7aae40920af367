#include "editing/compare/VXCompareDataWindow.h"
#include "editing/fields/PendingTexts.h"
#include "editing/window/RecoveryPanel.h"
#include "platform/Background.h"
#include "platform/documents/AutosaveFolder.h"
#include "tests/Oddities.h"
#include "tests/OtherProcess.h"
#include "tests/editing/Windows.h"

#include <sys/wait.h>
#include <unistd.h>

using namespace runebook;

namespace {

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

/// What a crash leaves, and how it is offered again.
class RecoveryTest : public FilesFixture
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        controller().setPendingTextTaker([](Document &document, const QJsonArray &texts) {
            return takePendingTexts(static_cast<VXDocument &>(document), texts);
        });
    }
    void init() { makeFolder(); }
    void cleanup() { closeAll(); }

    void offersToRecover()
    {
        const OtherProcess crashed(OtherProcess::End::Dies, "edit", path());
        RecoveryPanel panel;
        panel.recovery().find();
        panel.showIfNeeded();
        QVERIFY(panel.isVisible() && !panel.isModal());
        auto *list = panel.findChild<QTreeWidget *>();
        QCOMPARE(list->topLevelItemCount(), 2);
        const auto choose = [list](const QString &name) {
            list->setCurrentItem(list->findItems(name, Qt::MatchExactly).value(0));
        };
        QVERIFY(list->selectedItems().size() <= 1);
        choose(u"Untitled"_s);
        QVERIFY(!button(&panel, u"Compare with File"_s)->isEnabled());
        choose(u"a.xml"_s);
        QVERIFY(list->currentItem()->toolTip(0).contains("a.xml"_L1));
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

    /// Typed with keys, never handed over, and there after a crash.
    // where: a cell, or the editor of a field in the pane
    // restored: of the first two records
    TABLE(keepsWhatIsBeingTyped,
          (const QString &where, int records, const QString &field, const QString &typed,
           const QString &restored),
          {
              row("cell", "cell", 1, "sortName", "one <two>", "one <two>|");
              row("name", "name", 1, "name", "c", "c|b");
              row("refused", "name", 1, "name", "b", "a|b");
              row("two lines", "desc", 1, "desc", "x\ny", "x\ny|");
              row("two records", "sortName", 2, "sortName", "s", "s|s");
              row("word of a list", "script", 1, "script", "lat", "lat|");
              row("code points", "unicodes", 1, "unicodes", "41 42", "0041, 0042|");
          })
    {
        VXDocument *document = open();
        VXWindowController *window = windowOf(document);
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
            letter == u'\n' ? QTest::keyClick(editor, Qt::Key_Return)
                            : QTest::keyClicks(editor, QString(letter));
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
        sendDeferredDeletes();

        QSignalSpy told(&ErrorPresenter::shared(), &ErrorPresenter::presented);
        Recovery recovery;
        QCOMPARE(recovery.find().size(), 1);
        auto *again = qobject_cast<VXDocument *>(recovery.restore(recovery.contents().front()));
        QVERIFY(again && again->isDocumentEdited());
        const GlyphField wanted = *fieldForKey(field);
        QCOMPARE(again->infos()[0]->displayText(wanted) + u'|' + again->infos()[1]->displayText(wanted),
                 restored);
        const bool isRefused = restored == "a|b"_L1;
        QCOMPARE(told.size(), isRefused ? 1 : 0);
        if (isRefused)
            QVERIFY(told.front().front().value<Error>().text().contains(u"“b”"_s));
    }

    TABLE(leavesTypedTextsThatAreNotItsOwn, (const QString &kind), {
        for (const QString &kind : {u"pipe"_s, u"folder"_s, u"link"_s, u"300 MB"_s, u"1000 texts"_s})
            row(kind, kind);
    })
    {
        const OtherProcess crashed(OtherProcess::End::Dies, "edit");
        QDirIterator contents(path(u"data/runebook/Autosave"_s), {u"*.xml"_s}, QDir::Files,
                              QDirIterator::Subdirectories);
        const QString content = contents.next();
        const QString typed = AutosaveFolder::besideContent(content, AutosaveFolder::kTypedSuffix);
        if (kind.contains(u' ')) {
            QJsonArray texts;
            for (int i = 0; i < 1000; ++i)
                texts << QJsonObject {{u"field"_s, u"name"_s}, {u"text"_s, u"x"_s}, {u"name"_s, u"nobody"_s}};
            QVERIFY(writeFile(typed, QJsonDocument(texts).toJson()));
            if (kind == "300 MB"_L1)
                QVERIFY(QFile::resize(typed, 300 << 20));
        } else {
            QVERIFY(writeFile(QFileInfo(typed).path() + "/elsewhere"_L1, "[]")); // where the link leads
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
};

RUNEBOOK_TEST_MAIN_WITH(RecoveryTest, kWorks)
#include "RecoveryTest.moc"
