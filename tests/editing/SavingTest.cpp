#include "editing/compare/VXCompareDataWindow.h"
#include "editing/fields/ErrorBubble.h"
#include "editing/window/ChangedOnDisk.h"
#include "platform/WindowPlacement.h"
#include "platform/documents/DocumentPanels.h"
#include "platform/documents/DocumentWindows.h"
#include "platform/documents/UnsavedPanel.h"
#include "tests/ShownTexts.h"
#include "tests/editing/Windows.h"

using namespace runebook;

/// Questions around a save, the bar for files that others change, and what is told at a field.
class SavingTest : public FilesFixture
{
    Q_OBJECT
private Q_SLOTS:
    void init() { makeFolder(); }
    void cleanup() { closeAll(); }

    // firstName: afterwards
    TABLE(barAboutChanges,
          (const QString &button, bool isEdited, const QString &firstName, bool isEditedAfterwards), {
              row("reload, clean", "Reload", false, "x", false);
              row("reload, edited", "Reload", true, "x", false);
              row("keep, clean", "Keep Mine", false, "a", true);
              row("keep, edited", "Keep Mine", true, "edited", true);
              row("save again", "Save Again", true, "edited", false);
              row("keep, emptied", "Keep Mine", false, "a", true);
          })
    {
        VXDocument *document = open();
        auto *bar = document->windowController()->findChild<ChangedOnDisk *>();
        QVERIFY(bar && !bar->isVisible());
        if (isEdited)
            document->objectInInfosAtIndex(0)->setName(u"edited"_s);
        if (button == u"Save Again")
            QVERIFY(QFile::remove(path()));
        else if (qstrcmp(QTest::currentDataTag(), "keep, emptied") == 0)
            write(QByteArray());
        else
            write(content().replace("\"a\"", "\"x\""));
        QTRY_VERIFY(bar->isVisible());
        const QString what = QFileInfo(path()).size() > 0 ? u"saved"_s
            : QFile::exists(path())                       ? u"emptied"_s
                                                          : u"deleted"_s;
        QVERIFY(isAmongTexts(u"changed-on-disk"_s,
                             what + (isEdited ? u", edited: "_s : u": "_s) + textsOf(*bar).join(u'/')));
        runebook::button(bar, button)->click();
        QVERIFY(!bar->isVisible());
        QCOMPARE(document->objectInInfosAtIndex(0)->name(), firstName);
        QCOMPARE(document->isDocumentEdited(), isEditedAfterwards);
        QVERIFY(document->saveDocument()); // whatever the answer, it was one
        QVERIFY(content().contains(firstName.toUtf8()));
    }

    void comparesWithTheFileOnDisk()
    {
        VXDocument *document = open();
        document->objectInInfosAtIndex(0)->setName(u"edited"_s);
        write(content().replace("\"a\"", "\"x\""));
        auto *bar = document->windowController()->findChild<ChangedOnDisk *>();
        QTRY_VERIFY(bar->isVisible());
        button(bar, u"Compare"_s)->click();
        auto *window = shownWindow<VXCompareDataWindow>();
        QVERIFY(window);
        QCOMPARE(namesOf(window->leftDocList()->document()->infos()), u"edited b"_s);
        QCOMPARE(namesOf(window->rightDocList()->document()->infos()), u"x b"_s);
        QCOMPARE(window->rightDocList()->document()->displayName(), u"a.xml (on disk)"_s);
        QVERIFY(bar->isVisible()); // still to be answered
        window->close();
        QCOMPARE(controller().documentList(), QList<Document *> {document});
        QVERIFY(document->isDocumentEdited());
        // What cannot be read is told in the window.
        QVERIFY(QFile::remove(path()) && QDir().mkdir(path()));
        button(bar, u"Compare"_s)->click();
        QVERIFY(!shownWindow<VXCompareDataWindow>());
        QVERIFY2(windowOf(document)->findChild<MessageBar *>()->text().contains("a.xml"_L1),
                 qPrintable(windowOf(document)->findChild<MessageBar *>()->text()));
    }

    void reloadsByItself()
    {
        UserDefaults::standard().removeObjectForKey(u"VXReloadChangedFiles"_s); // the usual way
        VXDocument *document = open();
        VXWindowController *window = windowOf(document);
        auto *bar = window->findChild<ChangedOnDisk *>();
        window->infolistController()->setSelectionIndexes({1});
        const QByteArray usual = content();
        // Somebody writes for a while; nothing is read meanwhile.
        for (const char *name : {"\"w\"", "\"x\""}) {
            QSignalSpy noticed(&document->fileWatch(), &FileWatch::changed);
            write(QByteArray(usual)
                      .replace(kLines, "\t<glyph name=\"new\" />\n" + kLines)
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
        write(content().replace("</glyphData>\n", ""));
        QTRY_VERIFY(bar->isVisible());
        QVERIFY(!document->isDocumentEdited());
        bar->keepMine();
        QVERIFY(document->saveDocument());
        // What is edited, emptied or gone is never reloaded unasked.
        document->objectInInfosAtIndex(0)->setName(u"edited"_s);
        write(content().replace("\"x\"", "\"y\""));
        QTRY_VERIFY(bar->isVisible());
        QCOMPARE(document->objectInInfosAtIndex(0)->name(), u"edited"_s);
        bar->reload();
        QVERIFY(QFile::resize(path(), 0));
        QTRY_VERIFY(bar->isVisible());
        QCOMPARE(document->countOfInfos(), 3);
    }

    void keepsTheRowsUntilAllHaveHeardOfAReload()
    {
        VXDocument *document = open();
        VXWindowController *window = windowOf(document);
        window->addInfo(); // what is selected was not read, so that nobody holds on to what was
        QVERIFY(document->saveDocument());
        write(content().replace("\"a\"", "\"x\""));
        // The table asks its rows of before for the place to come back to.
        const std::weak_ptr<VXGlyphInfo> row = document->objectInInfosAtIndex(0);
        bool isThere = false;
        connect(document, &VXDocument::infosReset, this, [&] { isThere = !row.expired(); });
        QVERIFY(document->revertToSaved());
        QVERIFY(isThere);
        QVERIFY(row.expired());
        QCOMPARE(document->objectInInfosAtIndex(0)->name(), u"x"_s);
    }

    void firstFileTakesThePlaceOfTheUntouchedDocument()
    {
        makeOwnFile(u"b.xml"_s);
        controller().openUntitledDocumentAndDisplay(true)->setPlaceholder(true);
        open();
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

    void tellsWhatCouldNotBeOpened()
    {
        DocumentPanels::openFiles({path(u"gone.xml"_s), path()}, nullptr);
        QCOMPARE(controller().documentList().size(), 1);
        QVERIFY(shownWindow<QMessageBox>()->informativeText().contains(path(u"gone.xml"_s)));
        answer(u"OK"_s);
        open()->close();
        DocumentPanels::openFiles({path()}, nullptr);
        QVERIFY(!shownWindow<QMessageBox>());
    }

    void windowsStandBesideEachOther()
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
        const QSize least = DocumentWindows::of(*open())->minimumSizeHint();
        QVERIFY2(least.width() <= 780 && least.height() <= 440, qPrintable(QString::number(least.width())));
    }

    /// The question about changes when their window is closed, or the program is left.
    TABLE(asksWhenTheWindowCloses, (bool quits, const QStringList &answers, bool isClosed, bool isSaved), {
        for (const bool quits : {false, true}) {
            const QString when = quits ? u", quitting"_s : QString();
            row(u"saved"_s + when, quits, {u"Save"_s}, true, true);
            row(u"saved by Return"_s + when, quits, {u"Return"_s}, true, true);
            row(u"discarded"_s + when, quits, {u"Discard"_s}, true, false);
            row(u"discarded by Alt+D"_s + when, quits, {u"Alt+D"_s}, true, false);
            row(u"cancelled"_s + when, quits, {u"Cancel"_s}, false, false);
            row(u"saved in vain"_s + when, quits, {u"Save"_s, u"Cancel"_s}, false, false);
        }
    })
    {
        const QPointer<VXDocument> document = open();
        document->objectInInfosAtIndex(1)->setName(u"edited"_s);
        if (answers.size() > 1) // a folder has taken the file's place
            QVERIFY(QFile::remove(path()) && QDir().mkdir(path()) && (document->keepMine(), true));
        std::optional<bool> outcome;
        if (quits)
            DocumentPanels::closeAll([&outcome](bool all) { outcome = all; });
        else
            DocumentWindows::of(*document)->close();
        QVERIFY(document && !outcome && !content().contains("edited"));
        for (const QString &words : answers) {
            const bool isKey = words == u"Return" || words == u"Alt+D";
            QVERIFY(!isKey || QTest::qWaitForWindowActive(shownWindow<QMessageBox>()));
            isKey ? typeKeys(shownWindow<QMessageBox>(), u'<' + words + u'>') : answer(words);
        }
        QTRY_VERIFY(!shownWindow<QMessageBox>());
        sendDeferredDeletes();
        QCOMPARE(outcome, quits ? std::optional(isClosed) : std::nullopt);
        QCOMPARE(!document, isClosed);
        QCOMPARE(content().contains("edited"), isSaved);
        if (document)
            QVERIFY(document->isDocumentEdited() && DocumentWindows::of(*document)->isVisible());
    }

    /// What has no suffix gets that of the kind that was chosen, and what has the suffix of a type is of that
    /// one.
    TABLE(savesUnderTheNameTyped,
          (const QString &typed, bool choosesTables, const QString &name, const QString &type), {
              row("no suffix", "new", false, "new.xml", "public.xml");
              row("no suffix, tables chosen", "new", true, "new.txt", "public.plain-text");
              row("a table", "new.txt", false, "new.txt", "public.plain-text");
              row("another suffix", "new.glyphs", false, "new.glyphs", "public.xml");
          })
    {
        auto *document = qobject_cast<VXDocument *>(controller().openUntitledDocumentAndDisplay(true));
        document->addInfo(infoNamed(u"a"_s));
        std::optional<bool> outcome;
        DocumentPanels::saveAs(*document, DocumentWindows::of(*document),
                               [&outcome](bool saved) { outcome = saved; });
        auto *panel = document->windowController()->findChild<QFileDialog *>();
        QCOMPARE(panel->nameFilters().value(0), u"Glyph data (*.xml)"_s);
        auto *line = panel->findChild<QLineEdit *>(u"fileNameEdit"_s);
        QCOMPARE(line->text(), document->displayName());
        panel->setDirectory(m_folder->path());
        line->setText(typed);
        if (choosesTables)
            QTest::keyClick(panel->findChild<QComboBox *>(u"fileTypeCombo"_s), Qt::Key_Down);
        static_cast<QDialog *>(panel)->accept();
        QTRY_COMPARE(outcome, std::optional(true));
        QCOMPARE(document->fileURL(), path(name));
        QCOMPARE(document->fileType(), type);
        QVERIFY(content(name).contains(type == u"public.xml" ? "<glyph " : "\na\t"));
    }

    void opensWhatWasChosen()
    {
        const VXDocument *document = open();
        for (const QString &name : {u"b.xml"_s, u"c.xml"_s})
            makeOwnFile(name);
        DocumentPanels::open(windowOf(document));
        auto *panel = document->windowController()->findChild<QFileDialog *>();
        QCOMPARE(panel->nameFilters().join(u'|'),
                 u"All documents (*.xml *.txt)|Glyph data (*.xml)|Tables (*.txt)"_s);
        QCOMPARE(panel->directory().path(), m_folder->path()); // where one was last
        panel->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(u"\"b.xml\" \"c.xml\""_s);
        static_cast<QDialog *>(panel)->accept();
        QStringList names;
        for (const Document *each : controller().documentList())
            names << each->displayName();
        QCOMPARE(names.join(u' '), u"c.xml b.xml a.xml"_s);
    }

    // keys: what is pressed in the panel
    TABLE(asksOnceAboutAllThatIsUnsaved, (const QStringList &keys, const QString &saved, bool isClosed), {
        row("save all is the default", {u"Return"_s}, "a b", true);
        row("without the first", {u"Shift+Tab"_s, u"Space"_s, u"Alt+S"_s}, "b", true);
        row("discard all", {u"Alt+D"_s}, "", true);
        row("cancel", {u"Esc"_s}, "", false);
    })
    {
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
            if (content(name + u".xml"_s).contains("changed"))
                changed << name;
        }
        QCOMPARE(changed.join(u' '), saved);
    }

    // outside: what another program puts in the place of "a"
    // extra: what the file has besides
    TABLE(asksBeforeSaving,
          (const QByteArray &outside, const QByteArray &extra, const QStringList &answers, bool isSaved), {
              row("nothing to ask", "", "", {}, true);
              row("changed, written over", "x", "", {u"Write Over It"_s}, true);
              row("changed, left", "x", "", {u"Cancel"_s}, false);
              row("a comment goes", "", "<!-- x -->\n", {u"Save"_s}, true);
              row("a comment stays", "", "<!-- x -->\n", {u"Cancel"_s}, false);
              row("both", "x", "<!-- x -->\n", {u"Write Over It"_s, u"Save"_s}, true);
          })
    {
        const QByteArray given = content().replace(kLines, kLines + extra);
        write(given);
        VXDocument *document = open();
        document->objectInInfosAtIndex(1)->setName(u"edited"_s);
        if (!outside.isEmpty())
            write(QByteArray(given).replace("\"a\"", '"' + outside + '"'));
        const QByteArray before = content();
        std::optional<bool> outcome;
        DocumentPanels::save(*document, DocumentWindows::of(*document),
                             [&outcome](bool saved) { outcome = saved; });
        for (const QString &words : answers) {
            QVERIFY(!outcome);
            answer(words);
        }
        QCOMPARE(outcome, std::optional(isSaved));
        QCOMPARE(document->isDocumentEdited(), !isSaved);
        QCOMPARE(content().contains("edited"), isSaved);
        if (!isSaved)
            QCOMPARE(content(), before);
        QVERIFY(!shownWindow<QMessageBox>());
    }

    /// A text that its field refuses stops the save, and whoever waits for it hears so.
    void savesNothingBesideARefusedText()
    {
        VXDocument *document = open();
        VXWindowController *window = windowOf(document);
        window->infolistController()->setSelectionIndexes({0});
        auto *sortName = qobject_cast<QLineEdit *>(window->detailPane()->editorOf(GlyphField::SortName));
        sortName->setFocus();
        QTest::keyClicks(sortName, u"x <!-- y"_s);
        const QByteArray before = content();
        std::optional<bool> outcome;
        DocumentPanels::save(*document, window, [&outcome](bool saved) { outcome = saved; });
        QCOMPARE(outcome, std::optional(false));
        QCOMPARE(content(), before);
        QCOMPARE(sortName->text(), u"x <!-- y"_s);
        sortName->clear();
    }

    // buttons: of the sheet, Cancel apart
    // saved: a part of the file afterwards; empty: as it was
    TABLE(asksAboutLosses,
          (const QString &value, const QStringList &buttons, const QString &answer, const QByteArray &saved),
          {
              const QStringList barred {u"Fix"_s, u"Go to"_s};
              const QStringList listed {u"Fix All"_s, u"Go to"_s, u"Save Anyway"_s};
              const QString comment = u"q <!-- c"_s;
              const QString quote = u"the \"A\""_s;
              row("a comment, fixed", comment, barred, "Fix", "q <! -- c");
              row("a comment, by Return", comment, barred, "Return", "q <! -- c");
              row("quotes, by Return in the list", quote, listed, "List", "\"the A\"");
              row("a comment, looked at", comment, barred, "Go to", "");
              row("a comment, cancelled", comment, barred, "Cancel", "");
              row("quotes, fixed", quote, listed, "Fix All", "\"the A\"");
              row("quotes, lost", quote, listed, "Save Anyway", "\"the \"A");
              row("quotes, looked at", quote, listed, "Go to", "");
              row("quotes, cancelled", quote, listed, "Cancel", "");
          })
    {
        VXDocument *document = open();
        VXWindowController *window = windowOf(document);
        const QByteArray before = content();
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
            QCOMPARE(content(), before);
        else
            QVERIFY2(content().contains(saved), content().constData());
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

    // kept: in the record, before the offer is taken
    // offered: in the record afterwards
    TABLE(tellsAtTheField,
          (const QString &typed, const QString &kept, const QString &offer, const QString &offered), {
              row("usual", "a", "a", "", "");
              row("a comment", "q <!-- c", "", "Write <! -- instead", "q <! -- c");
              row("the end of one", "q --> c", "", "Write -- > instead", "q -- > c");
              row("a quote", "q\"c", "q\"c", "Leave the quotes out", "qc");
              row("a blank in front", " c", " c", "Leave it out", "c");
          })
    {
        VXDocument *document = open();
        VXWindowController *window = windowOf(document);
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
        if (offer.isEmpty())
            return;
        auto &model = *window->infolistController();
        model.setData(model.index(0, columnOfField(GlyphField::SortName)), typed, Qt::EditRole);
        document->removeInfo(info); // an offer for what is gone
        QTest::mouseClick(button(window->findChild<MessageBar *>(), offer), Qt::LeftButton);
        QCOMPARE(info->sortName(), kept);
    }

    void tellsOfConflictsAndAsks()
    {
        const QByteArray conflict = "<<<<<<< ours\n" + kLines + "=======\n>>>>>>> theirs\n";
        const QByteArray file = "<glyphData>\n" + conflict + conflict + "</glyphData>\n";
        write(file);
        VXDocument *document = open();
        const auto *bar = windowOf(document)->findChild<MessageBar *>();
        QVERIFY(bar->isVisible());
        QVERIFY2(bar->text().contains(u"2 unresolved conflicts"_s), qPrintable(bar->text()));
        document->objectInInfosAtIndex(0)->setScript(u"latin"_s);
        DocumentPanels::save(*document, windowOf(document));
        QTRY_VERIFY(shownWindow<QMessageBox>());
        const auto *question = shownWindow<QMessageBox>();
        QVERIFY2(question->informativeText().contains(u"2 conflicts"_s),
                 qPrintable(question->informativeText()));
        answer(u"Cancel"_s);
        QCOMPARE(content(), file);
    }

    /// A table with a bad row: empty with a bar, the other rows when that is asked for, and a sheet that
    /// offers no fixes about a value that the table has no column for.
    void opensAndSavesTables()
    {
        const QByteArray table = "name\tnote\nA\tx\nB\nC\tz\n";
        write(table, u"t.txt"_s);
        VXDocument *document = open(u"t.txt"_s);
        VXWindowController *window = windowOf(document);
        auto *bar = window->findChild<MessageBar *>();
        QVERIFY2(bar->isVisible() && bar->text().contains(u"Line 3, column 2 (note)"_s),
                 qPrintable(bar->text()));
        QTest::mouseClick(button(bar, u"Retry: Open What Can Be Read"_s), Qt::LeftButton);
        QTRY_COMPARE(window->infolistController()->rowCount(), 2);
        QVERIFY2(bar->isVisible() && bar->text().startsWith(u"One row"_s), qPrintable(bar->text()));
        document->objectInInfosAtIndex(1)->setScript(u"latin"_s);
        std::optional<bool> isSaved;
        DocumentPanels::save(*document, window, [&isSaved](bool saved) { isSaved = saved; });
        auto *sheet = window->findChild<QDialog *>(u"savingLosses"_s);
        QTRY_VERIFY(sheet && sheet->isVisible());
        QVERIFY(!button(sheet, u"Fix All"_s));
        QTest::mouseClick(button(sheet, u"Save Anyway"_s), Qt::LeftButton);
        QTRY_COMPARE(isSaved, std::optional(true));
        QCOMPARE(content(u"t.txt"_s), table);
    }

    void tellsOfAThirdCodePointOnce()
    {
        VXDocument *document = open();
        VXWindowController *window = windowOf(document);
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
            typeKeys(line, u"<End> 0043<Return>"_s);
            QCOMPARE(info->unicodes().size(), 3);
            QTRY_VERIFY(window->findChild<ErrorBubble *>());
            const auto *bubble = window->findChild<ErrorBubble *>();
            QVERIFY2(bubble->text().contains(u"0043"), qPrintable(bubble->text()));
            // It is no refusal, and does not look like one.
            QCOMPARE(bubble->palette().color(QPalette::WindowText),
                     bubble->palette().color(QPalette::ToolTipText));
            QVERIFY(!window->findChild<MessageBar *>()->isVisible());
            delete bubble;
        }
    }

    /// What goes through very much leaves the windows turning behind a bar, and nothing else happens
    /// meanwhile.
    TABLE(veryMuchHoldsNothingUp, (int bytes, bool isMuch), {
        row("little", 1 << 20, false);
        row("very much", 40 << 20, true);
    })
    {
        write(content().replace(
            kLines, kLines + "\t<glyph name=\"c\" description=\"" + QByteArray(bytes, 'd') + "\" />\n"));
        int turns = 0;
        int unseen = 0;
        QTimer other;
        connect(&other, &QTimer::timeout, this, [&] {
            const QWidget *bar = QApplication::activeModalWidget();
            ++turns;
            unseen += !bar || bar->objectName() != u"workApart"_s;
        });
        other.start(0);
        const auto turnedIn = [&](const auto &command) {
            turns = 0;
            command();
            return turns > 0;
        };
        QCOMPARE(turnedIn([this] { DocumentPanels::openFiles({path()}, nullptr); }), isMuch);
        auto *document = qobject_cast<VXDocument *>(controller().currentDocument());
        VXWindowController *window = windowOf(document);
        QCOMPARE(document->countOfInfos(), 3);
        QSignalSpy noticed(&document->fileWatch(), &FileWatch::changed);
        for (const int i : {0, 2}) // one with and one without the long value
            document->objectInInfosAtIndex(i)->setSortName(u"edited"_s);
        QCOMPARE(turnedIn([] { controller().autosaveBeforeRun(); }), isMuch);
        QCOMPARE(turnedIn([=] { DocumentPanels::save(*document, window); }), isMuch);
        QVERIFY(!document->isDocumentEdited());
        VXDocument read;
        QVERIFY(read.readFromURLOfType(path(), u"public.xml"_s));
        for (int i = 0; i < 3; ++i)
            QVERIFY(read.objectInInfosAtIndex(i)->lineXMLFormatVersion(2)
                    == document->objectInInfosAtIndex(i)->lineXMLFormatVersion(2));
        QCOMPARE(read.objectInInfosAtIndex(2)->desc().size(), bytes);
        window->infolistController()->setSelectionIndexes({2});
        QCOMPARE(turnedIn([=] { window->copy(); }), isMuch);
        QCOMPARE(turnedIn([=] { window->paste(); }), isMuch);
        QCOMPARE(document->countOfInfos(), 4);
        QVERIFY(document->objectInInfosAtIndex(3)->desc() == document->objectInInfosAtIndex(2)->desc());
        other.stop();
        QCOMPARE(unseen, 0);
        document->fileWatch().check();
        QCOMPARE(noticed.size(), 0);
    }

    // isMended: before the answer
    // isOpen: afterwards
    TABLE(afterAFailedSave, (const QString &words, bool isMended, bool isOpen, bool isSaved), {
        row("retry, mended", "Retry", true, true, true);
        row("retry, in vain", "Retry", false, true, false);
        row("cancel", "Cancel", false, true, false);
        row("discard", "Discard Changes and Close", false, false, false);
        row("save as", "Save As…", false, true, false);
    })
    {
        QPointer<VXDocument> document = open();
        document->objectInInfosAtIndex(1)->setName(u"edited"_s);
        // A folder has taken the file's place.
        QVERIFY(QFile::remove(path()) && QDir(m_folder->path()).mkdir(u"a.xml"_s));
        document->keepMine();
        std::optional<bool> outcome;
        DocumentPanels::save(*document, DocumentWindows::of(*document),
                             [&outcome](bool saved) { outcome = saved; });
        QTRY_VERIFY(shownWindow<QMessageBox>());
        QVERIFY(shownWindow<QMessageBox>()->text().contains(path()));
        QVERIFY(shownWindow<QMessageBox>()->textFormat() == Qt::PlainText);
        QVERIFY(!shownWindow<QMessageBox>()->informativeText().isEmpty());
        if (isMended)
            QVERIFY(QDir(m_folder->path()).rmdir(u"a.xml"_s));
        answer(words);
        if (words == u"Save As…") {
            auto *panel = document->windowController()->findChild<QFileDialog *>();
            QVERIFY(panel && panel->isVisible());
            panel->reject();
        } else if (words == u"Retry" && !isMended) {
            QTRY_VERIFY(shownWindow<QMessageBox>()); // once for each answer
            answer(u"Cancel"_s);
        }
        sendDeferredDeletes();
        QCOMPARE(outcome, std::optional(isSaved));
        QCOMPARE(!document.isNull(), isOpen);
        if (isOpen)
            QCOMPARE(document->isDocumentEdited(), !isSaved);
    }
};

RUNEBOOK_TEST_MAIN(SavingTest)
#include "SavingTest.moc"
