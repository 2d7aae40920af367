// Tables in a document window: copying, pasting, exporting.
#include "editing/tables/ExportDialog.h"
#include "editing/tables/PastePreviewModel.h"
#include "editing/tables/PasteSheet.h"
#include "platform/Unattended.h"
#include "tests/editing/Windows.h"

using namespace runebook;

namespace {

void setClipboard(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

} // namespace

class TableWindowsTest : public WindowFixture
{
    Q_OBJECT
private:
    PasteSheet *pastedSheet()
    {
        table()->setFocus();
        QTest::keyClick(table(), Qt::Key_V, Qt::ControlModifier);
        [] { QTRY_VERIFY(shownWindow<PasteSheet>()); }();
        return shownWindow<PasteSheet>();
    }
    static QString summaryOf(const PasteSheet &sheet)
    {
        for (const QLabel *label : sheet.findChildren<QLabel *>()) {
            if (label->accessibleName() == "What the paste will do"_L1)
                return label->text();
        }
        return {};
    }
    /// Rows of the preview, cells separated by bars.
    static QStringList previewOf(const PasteSheet &sheet)
    {
        const QAbstractItemModel *model = sheet.findChild<QTableView *>()->model();
        QStringList rows;
        for (int row = 0; row < model->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < model->columnCount(); ++column)
                cells << model->index(row, column).data().toString();
            rows << cells.join(u'|');
        }
        return rows;
    }
    static QComboBox *combo(const QWidget &window, const QString &name)
    {
        for (QComboBox *box : window.findChildren<QComboBox *>()) {
            if (box->accessibleName() == name)
                return box;
        }
        return nullptr;
    }
    ExportDialog *openExport()
    {
        m_window->activateWindow();
        [this] { QVERIFY(QTest::qWaitForWindowActive(m_window.get())); }();
        QTest::keyClick(table(), Qt::Key_E, Qt::ControlModifier | Qt::ShiftModifier);
        [] { QTRY_VERIFY(shownWindow<ExportDialog>()); }();
        [] { QVERIFY(QTest::qWaitForWindowActive(shownWindow<ExportDialog>())); }();
        return shownWindow<ExportDialog>();
    }

private Q_SLOTS:
    void init()
    {
        forget({"ExportTableFields", "ExportTableTitles", "ExportTableSeparator", "ExportTableByteOrderMark",
                "ExportTableRecords"});
        openFive();
        table()->resetViewSettings();
    }
    void cleanup()
    {
        delete shownWindow<PasteSheet>();
        delete shownWindow<ExportDialog>();
        closeWindow();
    }

    /// What is copied has the shown columns and rows; pasted into an empty document it makes the same
    /// records.
    void copiedTablesComeBack()
    {
        table()->horizontalHeader()->moveSection(columnOfField(GlyphField::Category),
                                                 columnOfField(GlyphField::Name));
        for (const GlyphField field : {GlyphField::Script, GlyphField::Desc, GlyphField::Production})
            table()->setColumnShown(columnOfField(field), false);
        table()->setColumnShown(columnOfField(GlyphField::Direction), true);
        info(2)->setSubCategory(u"a \"b\", c"_s);
        list()->sort(columnOfField(GlyphField::Name), Qt::DescendingOrder);
        select({0, 1, 2});
        table()->setFocus();
        QTest::keyClick(table(), Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
        const QMimeData *copied = QGuiApplication::clipboard()->mimeData();
        const QString heads = u"category\tname\tunicode\tsubCategory\tdirection\tsortName\tdecompose\n"_s;
        QVERIFY2(copied->text().startsWith(heads + u"Number\tone\t0x0031\t\tLTR\t"_s),
                 qPrintable(copied->text()));
        QCOMPARE(copied->data(u"text/tab-separated-values"_s), copied->text().toUtf8());
        QVERIFY(copied->data(u"text/csv"_s).contains(",\"a \"\"b\"\", c\",")
                == (selected().contains(u"a.sc"_s)));
        select({});
        QTest::keyClick(table(), Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(QGuiApplication::clipboard()->text().count(u'\n'), 6);
        const InfoList before = shown();
        QStringList lines;
        for (const InfoPtr &info : before)
            lines << info->lineXMLFormatVersion(2);

        openWindow({});
        PasteSheet *sheet = pastedSheet();
        QCOMPARE(summaryOf(*sheet), u"5 are new."_s);
        QTest::keyClick(sheet, Qt::Key_Return);
        QTRY_COMPARE(namesOf(shown()), namesOf(before));
        for (const InfoPtr &info : shown())
            QCOMPARE(info->lineXMLFormatVersion(2), lines.takeFirst());
        QCOMPARE(selected(), namesOf(before));
        QCOMPARE(stack().undoText(), u"Paste Table"_s);
        undo();
        QCOMPARE(allNames(), QString());
    }

    /// By a key: what changes, what is new, what is invalid is shown before and done in one step.
    void cellsArePastedByKey()
    {
        setClipboard(u"name\tUnicode\tCategory\tdirection\n"
                     "one\t0x0031\tDigit\tup\n"
                     "new\t0041\tLetter\tLTR\n"
                     "bad name\t\tLetter\t\n"
                     "\t0042\tMark\t\n"_s);
        PasteSheet *sheet = pastedSheet();
        QCOMPARE(
            summaryOf(*sheet),
            u"One record changes in one field, one is new, one row matches nothing, 2 values are invalid."_s);
        QCOMPARE(
            previewOf(*sheet),
            (QStringList {u"2|Changes|one|one|0031|Number → Digit|✗ up"_s, u"3|Is new||new|0041|Letter|LTR"_s,
                          u"4|Left out||✗ bad name||Letter|"_s, u"5|Matches nothing|||0042|Mark|"_s}));
        auto *refusals = sheet->findChild<QListWidget *>();
        QVERIFY(refusals->isVisible());
        QVERIFY2(refusals->item(0)->text().startsWith(u"Row 2, Direction: “up” is no direction"_s),
                 qPrintable(refusals->item(0)->text()));
        refusals->setCurrentRow(1);
        QCOMPARE(sheet->findChild<QTableView *>()->currentIndex(),
                 sheet->findChild<QTableView *>()->model()->index(2, PastePreviewModel::FirstFieldColumn));
        // Invalid values may stop it.
        auto *stop = button(sheet, u"Paste nothing while values are invalid"_s);
        stop->click();
        QVERIFY(!button(sheet, u"Paste"_s)->isEnabled());
        stop->click();
        QTest::mouseClick(button(sheet, u"Paste"_s), Qt::LeftButton);
        QTRY_COMPARE(allNames(), u"A B a.sc one gravecomb new"_s);
        QCOMPARE(info(3)->category(), u"Digit"_s);
        QCOMPARE(selected(), u"new"_s);
        QVERIFY(barText().startsWith(u"One record changes"_s));
        QCOMPARE(stack().count(), 1);
        undo();
        QCOMPARE(allNames(), u"A B a.sc one gravecomb"_s);
        QCOMPARE(info(3)->category(), u"Number"_s);
    }

    /// Columns and rows are matched otherwise by the choosers; a field takes one column.
    void columnsAndRowsCanBeChosen()
    {
        setClipboard(u"x\tLetter\ny\tMark\n"_s);
        select({0, 1});
        table()->selectionModel()->setCurrentIndex(cell(0, GlyphField::Category),
                                                   QItemSelectionModel::NoUpdate);
        PasteSheet *sheet = pastedSheet();
        QCOMPARE(previewOf(*sheet).first(), u"1|Changes|A|Letter → x| → Letter"_s);
        typeKeys(combo(*sheet, u"Field for Column 2 (Letter…)"_s), u"Category"_s);
        QCOMPARE(previewOf(*sheet), (QStringList {u"1|Stays|A|Letter"_s, u"2|Changes|B|Letter → Mark"_s}));
        QCOMPARE(combo(*sheet, u"Field for Column 1 (x…)"_s)->currentText(), u"(left out)"_s);
        combo(*sheet, u"Field for Column 1 (x…)"_s)->setCurrentText(u"Name"_s);
        combo(*sheet, u"Rows"_s)->setCurrentText(u"As new records"_s);
        QCOMPARE(summaryOf(*sheet), u"2 are new."_s);
        button(sheet, u"First row holds headings"_s)->click();
        QCOMPARE(summaryOf(*sheet), u"One is new."_s);
        QTest::keyClick(sheet, Qt::Key_Escape);
        QTRY_VERIFY(!shownWindow<PasteSheet>());
        QVERIFY(!m_document->isDocumentEdited());
    }

    TABLE(otherSizesAreAsked,
          (const QString &cells, const IndexSet &rows, const QString &answer, const QString &categories), {
              row("go on", "x;y;z", {0}, "Go on with the records below", "x y z Number Mark");
              row("the rest of the rows", "x;y;z", {0, 2}, "Leave out the rest of the rows",
                  "x Letter y Number Mark");
              row("repeat", "x;y", {0, 1, 4}, "Repeat the rows", "x y Letter Number x");
              row("the rest of the records", "x;y", {0, 1, 4}, "Leave the rest of the records",
                  "x y Letter Number Mark");
          })
    {
        setClipboard(QString(cells).replace(u';', u'\n'));
        select(rows);
        table()->selectionModel()->setCurrentIndex(cell(0, GlyphField::Category),
                                                   QItemSelectionModel::NoUpdate);
        PasteSheet *sheet = pastedSheet();
        QVERIFY(!button(sheet, u"Paste"_s)->isEnabled());
        QVERIFY(summaryOf(*sheet).contains(u"do not fit"_s));
        combo(*sheet, u"When there are other than so many rows"_s)->setCurrentText(answer);
        button(sheet, u"Paste"_s)->click();
        const auto words = [this] {
            QStringList all;
            for (const InfoPtr &info : m_document->infos())
                all << info->category();
            return all.join(u' ');
        };
        QTRY_COMPARE(words(), categories);
        QVERIFY(!shownWindow<PasteSheet>());
    }

    /// One value goes to all selected records, after a question with their number.
    void oneCellFillsTheSelection()
    {
        setClipboard(u"Symbol\n"_s);
        select({0, 1, 3});
        table()->selectionModel()->setCurrentIndex(cell(0, GlyphField::Category),
                                                   QItemSelectionModel::NoUpdate);
        table()->setFocus();
        QTest::keyClick(table(), Qt::Key_V, Qt::ControlModifier);
        QTRY_VERIFY(shownWindow<QMessageBox>());
        QVERIFY(shownWindow<QMessageBox>()->text().contains(u"Category of all 3 selected"_s));
        answer(u"Paste"_s);
        QTRY_COMPARE(info(3)->category(), u"Symbol"_s);
        QCOMPARE(info(2)->category(), u"Letter"_s);
        QCOMPARE(stack().count(), 1);
        undo();
        QCOMPARE(info(0)->category(), u"Letter"_s);
    }

    /// Glyph lines are records, as ever; scripts and runs without windows are asked nothing.
    void othersArePastedWithoutAsking()
    {
        setClipboard(info(0)->lineXMLFormatVersion(2).replace(u"\"A\""_s, u"\"pasted\""_s));
        select({0});
        m_window->paste();
        QCOMPARE(allNames(), u"A pasted B a.sc one gravecomb"_s);
        QVERIFY(!shownWindow<PasteSheet>());
        setClipboard(u"name,category\nA,Mark\n"_s);
        setUnattended(true);
        m_window->paste();
        setUnattended(false);
        QCOMPARE(info(0)->category(), u"Mark"_s);
        Error error;
        select({0});
        QCOMPARE(m_window->pasteTable(u"x\ny"_s, &error), QString());
        QVERIFY(error.text().contains(u"2 rows do not fit 1 selected"_s));
        QCOMPARE(m_window->pasteTable(u"name;category\nA;Letter\nB;\"Mark"_s, &error),
                 u"One record changes in one field, one row cannot be read for its quotes."_s);
    }

    /// Fields are ticked, moved by keys, and the preview is what the file gets; all of it is remembered.
    void tablesAreExported()
    {
        const QTemporaryDir folder;
        select({1, 0});
        ExportDialog *dialog = openExport();
        auto *fields = dialog->findChild<QListWidget *>();
        QCOMPARE(fields->item(1)->text(), u"Unicode"_s);
        QTest::keyClick(fields, Qt::Key_Down, Qt::AltModifier); // the name behind the code points
        for (int row = 3; row < fields->count(); ++row) {
            fields->setCurrentRow(row);
            QTest::keyClick(fields, Qt::Key_Space);
        }
        combo(*dialog, u"Records"_s)->setCurrentText(u"Those selected (2)"_s);
        combo(*dialog, u"Headings"_s)->setCurrentIndex(1);
        combo(*dialog, u"Separator"_s)->setCurrentText(u"Semicolon"_s);
        const QString text = u"Unicode;Name;Category\n0x0041;A;Letter\n0x0042;B;Letter"_s;
        QTRY_COMPARE(dialog->findChild<QPlainTextEdit *>()->toPlainText(), text);
        button(dialog, u"Byte order mark"_s)->click();
        button(dialog, u"Export…"_s)->click();
        QTRY_VERIFY(shownWindow<QFileDialog>());
        auto *panel = shownWindow<QFileDialog>();
        panel->setDirectory(folder.path());
        auto *name = panel->findChild<QLineEdit *>();
        name->setFocus();
        name->selectAll();
        typeKeys(name, u"table<Return>"_s);
        QTRY_VERIFY(!shownWindow<ExportDialog>());
        QCOMPARE(contentOf(folder.filePath(u"table.csv"_s)),
                 QByteArray("\xEF\xBB\xBF" + text.toUtf8() + "\n"));
        QTRY_VERIFY(barText().contains(u"table.csv"_s));
        sendDeferredDeletes();
        dialog = openExport();
        QTRY_COMPARE(dialog->findChild<QPlainTextEdit *>()->toPlainText(), text);
        QVERIFY(button(dialog, u"Byte order mark"_s)->isChecked());
    }

    /// What a table cannot hold is told; what cannot be written says why and leaves the dialog.
    void exportsSayWhatGoesWrong()
    {
        const QTemporaryDir folder;
        const QString own = folder.filePath(u"own.xml"_s);
        QVERIFY(writeFile(own, "<glyphData/>"));
        m_document->setFileURL(own);
        info(0)->setName({});
        ExportDialog *dialog = openExport();
        const auto losses = [dialog] {
            QStringList texts;
            for (const QLabel *label : dialog->findChildren<QLabel *>())
                texts << (label->isVisible() ? label->text() : QString());
            return texts.join(u' ');
        };
        QTRY_VERIFY(losses().contains(u"does not hold all of one record"_s));
        for (const QString &path : {own, folder.filePath(u"none/table.tsv"_s)}) {
            dialog->exportTo(path);
            QTRY_VERIFY(shownWindow<QMessageBox>());
            QVERIFY(!shownWindow<QMessageBox>()->informativeText().isEmpty());
            answer(u"OK"_s);
            QTRY_VERIFY(!shownWindow<QMessageBox>());
        }
        QVERIFY(dialog->isVisible());
        QCOMPARE(contentOf(own), QByteArray("<glyphData/>"));
        Error error;
        QVERIFY(!m_window->exportTableToURLFieldsRecords(own, {u"colour"_s}, u"all"_s, &error));
        QVERIFY(error.text().contains(u"colour"_s));
        // Esc stops it: nothing was written, and nothing is said.
        QVERIFY(!exportTable(
            m_document->infos(), dialog->choices(), folder.filePath(u"stopped.tsv"_s),
            [](double) { return false; }, &error));
        QVERIFY(error.domain.isEmpty());
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList {u"own.xml"_s});
        const QString path = folder.filePath(u"t.tsv"_s);
        QVERIFY(m_window->exportTableToURLFieldsRecords(path, {u"name"_s, u"case"_s}, u"shown"_s, &error));
        QCOMPARE(contentOf(path), QByteArray("name\tcase\n\"\"\t\nB\t\na.sc\t\none\t\ngravecomb\t\n"));
    }
};

RUNEBOOK_TEST_MAIN(TableWindowsTest)
#include "TableWindowsTest.moc"
