// Editing many records at once in a document window: keys, sheets, steps.
#include "editing/fields/PreviewTable.h"
#include "editing/many/CharactersSheet.h"
#include "editing/many/EntriesSheet.h"
#include "editing/many/ProductionSheet.h"
#include "editing/many/VariantsSheet.h"
#include "platform/UndoManager.h"
#include "tests/editing/Windows.h"

using namespace runebook;

class ManyWindowsTest : public WindowFixture
{
    Q_OBJECT
private:
    template <class Sheet> Sheet *sheetBy(const QString &keys)
    {
        m_window->activateWindow();
        [this] { QVERIFY(QTest::qWaitForWindowActive(m_window.get())); }();
        table()->setFocus();
        typeKeys(table(), keys);
        [] { QTRY_VERIFY(shownWindow<Sheet>()); }();
        auto *sheet = shownWindow<Sheet>();
        [sheet] { QVERIFY(QTest::qWaitForWindowActive(sheet)); }();
        return sheet;
    }
    static QString summaryOf(const QWidget &sheet)
    {
        for (const QLabel *label : sheet.findChildren<QLabel *>()) {
            if (label->accessibleName() == "What will be done"_L1)
                return label->text();
        }
        return {};
    }
    /// Rows of the preview, cells separated by bars.
    static QString previewOf(const QWidget &sheet)
    {
        const QAbstractItemModel *model = sheet.findChild<PreviewTable *>()->model();
        QStringList rows;
        for (int row = 0; row < model->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < model->columnCount(); ++column)
                cells << model->index(row, column).data().toString();
            rows << cells.join(u'|');
        }
        return rows.join(u' ');
    }
    QString anchors() const
    {
        QStringList all;
        for (const InfoPtr &info : m_document->infos())
            all << info->anchors();
        return all.join(u'|');
    }

private Q_SLOTS:
    void init()
    {
        forget({"EntriesField", "VariantSuffixes", "VariantFields", "ProductionRule", "ProductionOnlyEmpty"});
        openFive();
        info(0)->setAnchors(u"top, bottom"_s);
        info(1)->setAnchors(u"top"_s);
        m_document->flushChanges();
    }
    void cleanup()
    {
        delete shownWindow<EntriesSheet>();
        delete shownWindow<PlanSheet>();
        closeWindow();
    }

    /// Ctrl+D: free names, no code points, the rest as it was, each behind its original, all selected.
    void duplicatesAreFree()
    {
        info(0)->setDesc(u"described"_s);
        select({0, 2});
        table()->setFocus();
        typeKeys(table(), u"<Ctrl+D>"_s);
        QCOMPARE(allNames(), u"A A.001 B a.sc a.sc.001 one gravecomb"_s);
        QCOMPARE(selected(), u"A.001 a.sc.001"_s);
        QVERIFY(info(1)->unicodes().isEmpty());
        QCOMPARE(info(1)->desc() + info(1)->anchors(), u"describedtop, bottom"_s);
        QCOMPARE(stack().undoText(), u"Duplicate A and 1 Other"_s);
        undo();
        QCOMPARE(allNames(), u"A B a.sc one gravecomb"_s);
        QCOMPARE(selected(), u"A a.sc"_s);
    }

    /// The keys for adding one entry to all: three besides the word.
    void entriesAreAdded()
    {
        select({0, 1, 2});
        auto *sheet = sheetBy<EntriesSheet>(u"<Ctrl+Shift+A>"_s);
        QCOMPARE(previewOf(*sheet), u"top|2 of 3|Stays bottom|1 of 3|Stays"_s);
        QVERIFY(!button(sheet, u"Change"_s)->isEnabled());
        typeKeys(sheet, u"top, _x"_s);
        QCOMPARE(summaryOf(*sheet), u"3 records change."_s);
        typeKeys(sheet, u"<Return>"_s);
        QTRY_COMPARE(anchors(), u"top, bottom, _x|top, _x|top, _x||"_s);
        QCOMPARE(barText(), u"3 records change."_s);
        QCOMPARE(stack().undoText(), u"Add to Anchors of A and 2 Others"_s);
        undo();
        QCOMPARE(anchors(), u"top, bottom|top|||"_s);
    }

    /// From the pane, by the keyboard: what some have goes to all, to none, and stays again.
    void entriesAreTicked()
    {
        select({0, 1});
        auto *pane = m_window->detailPane();
        auto *plusMinus = button<QToolButton>(pane, u"Anchors: Add to all or remove from all…"_s);
        QVERIFY(plusMinus && plusMinus->isVisible());
        QVERIFY(!button(pane, u"Category: Add to all or remove from all…"_s));
        plusMinus->setFocus();
        typeKeys(plusMinus, u"<Space>"_s);
        QTRY_VERIFY(shownWindow<EntriesSheet>());
        auto *sheet = shownWindow<EntriesSheet>();
        QVERIFY(QTest::qWaitForWindowActive(sheet));
        auto *entries = sheet->findChild<PreviewTable *>();
        entries->setFocus();
        typeKeys(entries, u"<Down><Space>"_s);
        QCOMPARE(previewOf(*sheet), u"top|All 2|Stays bottom|1 of 2|Is added to 1"_s);
        typeKeys(entries, u"<Space>"_s);
        QCOMPARE(previewOf(*sheet), u"top|All 2|Stays bottom|1 of 2|Is removed from 1"_s);
        typeKeys(entries, u"<Space>"_s);
        QCOMPARE(previewOf(*sheet), u"top|All 2|Stays bottom|1 of 2|Stays"_s);
        typeKeys(entries, u"<Up><Space><Return>"_s);
        QTRY_COMPARE(anchors(), u"bottom||||"_s);
        QCOMPARE(stack().undoText(), u"Remove from Anchors of A and 1 Other"_s);
        select({0});
        QVERIFY(!plusMinus->isVisible());
    }

    void refusalsAreListed()
    {
        select({0, 1});
        auto *sheet = sheetBy<EntriesSheet>(u"<Ctrl+Shift+A>"_s);
        auto *field = sheet->findChild<QComboBox *>();
        field->setCurrentIndex(field->findText(u"Alternate Names"_s));
        typeKeys(sheet->findChild<QLineEdit *>(), u"one"_s);
        QCOMPARE(summaryOf(*sheet), u"No record changes. 2 are left as they are:"_s);
        const auto *refusals = sheet->findChild<QListWidget *>();
        QVERIFY(refusals->isVisible() && refusals->item(0)->text() == u"A: Repeating name: one"_s);
        QVERIFY(!button(sheet, u"Change"_s)->isEnabled());
        typeKeys(sheet, u"<Return>"_s);
        QVERIFY(sheet->isVisible());
        typeKeys(sheet->findChild<QLineEdit *>(), u".alt<Return>"_s);
        QTRY_COMPARE(info(1)->altNames(), QStringList {u"one.alt"_s});
        // The field that was edited last is offered first.
        QCOMPARE(sheetBy<EntriesSheet>(u"<Ctrl+Shift+A>"_s)->findChild<QComboBox *>()->currentText(),
                 u"Alternate Names"_s);
    }

    void variantsAreAdded()
    {
        info(1)->setProduction(u"pb"_s);
        m_document->flushChanges();
        select({0, 1});
        auto *sheet = sheetBy<VariantsSheet>(u"<Ctrl+Shift+D>"_s);
        QCOMPARE(previewOf(*sheet), u"A.sc|A| B.sc|B|"_s);
        typeKeys(sheet, u".sc ss01"_s);
        QTRY_COMPARE(previewOf(*sheet), u"A.sc|A| A.ss01|A| B.sc|B| B.ss01|B|"_s);
        auto *fields = sheet->findChild<QListWidget *>();
        fields->setFocus();
        typeKeys(fields, u"<Space>"_s); // Category
        auto *rows = sheet->findChild<PreviewTable *>();
        rows->setFocus();
        rows->setCurrentIndex(rows->model()->index(1, 0));
        QTRY_COMPARE(summaryOf(*sheet), u"4 records are new."_s);
        typeKeys(rows, u"<Down><Space>"_s);
        QTRY_VERIFY(button(sheet, u"Add 3"_s));
        // Somebody else makes one of the names: the sheet follows.
        m_document->addInfo(infoNamed(u"A.ss01"_s));
        m_document->flushChanges();
        QTRY_COMPARE(summaryOf(*sheet), u"3 records are new. Already there: 1."_s);
        typeKeys(sheet, u"<Return>"_s);
        QTRY_COMPARE(allNames(), u"A A.sc B B.sc B.ss01 a.sc one gravecomb A.ss01"_s);
        QCOMPARE(selected(), u"A.sc B.sc B.ss01"_s);
        QCOMPARE(info(3)->production() + info(3)->category(), u"pb.sc"_s);
        QCOMPARE(info(1)->anchors(), u"top, bottom"_s);
        QCOMPARE(stack().undoText(), u"Add 3 Variants"_s);
        undo();
        QCOMPARE(allNames(), u"A B a.sc one gravecomb A.ss01"_s);
        // Suffixes and fields are remembered.
        sheet = sheetBy<VariantsSheet>(u"<Ctrl+Shift+D>"_s);
        QCOMPARE(sheet->findChild<QLineEdit *>()->text(), u".sc ss01"_s);
        QCOMPARE(sheet->findChild<QListWidget *>()->item(0)->checkState(), Qt::Unchecked);
        typeKeys(sheet->findChild<QLineEdit *>(), u"<Ctrl+A><Del>"_s);
        QTRY_COMPARE(summaryOf(*sheet), u"Type a suffix such as .sc, or several."_s);
        QVERIFY(!button(sheet, u"Add"_s)->isEnabled());
    }

    /// A block by the keyboard, behind the selected record.
    void charactersAreAdded()
    {
        select({1});
        auto *sheet = sheetBy<CharactersSheet>(u"<Ctrl+Shift+I>"_s);
        typeKeys(sheet, u"AB"_s);
        QTRY_COMPARE(summaryOf(*sheet), u"Nothing is new. Already there: 2."_s);
        QVERIFY(!button(sheet, u"Add"_s)->isEnabled());
        auto *block = sheet->findChild<QComboBox *>();
        block->setFocus();
        block->setCurrentIndex(block->findText(u"Cyrillic"_s));
        QCOMPARE(sheet->findChild<QLineEdit *>()->text(), u"U+0400-04FF"_s);
        QTRY_COMPARE(summaryOf(*sheet), u"256 records are new."_s);
        typeKeys(sheet, u"<Return>"_s);
        QTRY_COMPARE(m_document->countOfInfos(), 261);
        QCOMPARE(info(2)->unicode() + info(257)->unicode(), u"040004FF"_s);
        QCOMPARE(list()->selectedCount(), 256);
        QCOMPARE(stack().undoText(), u"Add 256 Characters"_s);
        undo();
        QCOMPARE(m_document->countOfInfos(), 5);
        // So many that the event loop turns meanwhile.
        sheet = sheetBy<CharactersSheet>(u"<Ctrl+Shift+I>"_s);
        typeKeys(sheet, u"U+20000-2FFFF"_s);
        QTRY_VERIFY_WITH_TIMEOUT(summaryOf(*sheet).contains(u"are new"_s), 60'000);
        const qsizetype before = m_document->countOfInfos();
        typeKeys(sheet, u"<Return>"_s);
        QTRY_VERIFY_WITH_TIMEOUT(m_document->countOfInfos() > 50'000, 60'000);
        undo();
        QCOMPARE(m_document->countOfInfos(), before);
        // Esc leaves all as it was.
        typeKeys(sheetBy<CharactersSheet>(u"<Ctrl+Shift+I>"_s), u"Z<Esc>"_s);
        QCOMPARE(m_document->countOfInfos(), 5);
    }

    /// Without a selection for all that are shown.
    void productionNamesAreFilled()
    {
        select({});
        auto *sheet = sheetBy<ProductionSheet>(u"<Ctrl+Shift+P>"_s);
        sheet->findChild<QComboBox *>()->setCurrentIndex(1);
        QTRY_COMPARE(previewOf(*sheet), u"A||uni0041| B||uni0042| one||uni0031| gravecomb||uni0300|"_s);
        auto *rows = sheet->findChild<PreviewTable *>();
        rows->setFocus();
        rows->setCurrentIndex(rows->model()->index(0, 2));
        typeKeys(rows, u"<Space>"_s);
        QTRY_VERIFY(button(sheet, u"Fill 3"_s));
        typeKeys(sheet, u"<Return>"_s);
        QTRY_COMPARE(info(1)->production() + info(0)->production() + info(4)->production(),
                     u"uni0042uni0300"_s);
        QCOMPARE(stack().undoText(), u"Fill 3 Production Names"_s);
        undo();
        QVERIFY(info(1)->production().isEmpty());
    }
};

RUNEBOOK_TEST_MAIN(ManyWindowsTest)
#include "ManyWindowsTest.moc"
