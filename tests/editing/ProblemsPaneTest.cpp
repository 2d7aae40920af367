#include "editing/replace/VXFindReplaceWindowController.h"
#include "tests/editing/Windows.h"

#include <QAbstractItemModelTester>

using namespace runebook;

/// The problems pane as a person has it, in a window.
class ProblemsPaneTest : public WindowFixture
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        forget({"ProblemsPaneShown", "ProblemsPaneHeight", "TableHeaderState"});
        openWindow({infoNamed(u"A"_s, {u"0041"_s}), infoNamed(u"B c"_s), infoNamed(u"A"_s),
                    infoNamed(u"D"_s, {u"44"_s}), infoNamed(u"E "_s, {u"45"_s})});
    }
    void cleanup() { closeWindow(); }

    void badgeCountsWhileEditing()
    {
        auto *badge = m_window->findChild<ProblemsButton *>();
        QTRY_COMPARE(badge->text(), u"6 problems"_s); // names: 2 invalid, 2 the same; 2 code points
        QCOMPARE(badge->accessibleName(), badge->text());
        info(2)->setName(u"C"_s);
        QTRY_COMPARE(badge->text(), u"4 problems"_s);
        undo();
        QTRY_COMPARE(badge->text(), u"6 problems"_s);
        QVERIFY(!m_window->isProblemsShown());
        QTest::mouseClick(badge, Qt::LeftButton);
        QVERIFY(m_window->isProblemsShown());
        QVERIFY(badge->isChecked());
        QTest::mouseClick(badge, Qt::LeftButton);
        QVERIFY(!m_window->isProblemsShown());
    }

    void keysOpenTheListAndWalkThroughIt()
    {
        m_window->problems().finish();
        QTest::keyClick(m_window.get(), Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(m_window->isProblemsShown());
        QCOMPARE(pane()->table()->model()->rowCount(), 6);
        QStringList walked;
        for (int i = 0; i < 7; ++i) {
            QTest::keyClick(m_window.get(), Qt::Key_F8);
            walked << selected();
        }
        QCOMPARE(walked.join(u','), u"A,B c,A,D,E ,E ,A"_s);
        QTest::keyClick(m_window.get(), Qt::Key_F8, Qt::ShiftModifier);
        QCOMPARE(selected(), u"E "_s);

        // The keys of the Edit menu mean the list that has the focus.
        QCOMPARE(pane()->table()->selectionModel()->selectedRows().size(), 1);
        select({0});
        pane()->table()->setFocus();
        const QModelIndex second = pane()->table()->model()->index(1, 0);
        pane()->table()->selectionModel()->setCurrentIndex(
            second, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        QTest::keyClick(pane()->table(), Qt::Key_C, Qt::ControlModifier);
        const QString copied = QApplication::clipboard()->text();
        QVERIFY2(copied.contains("\nInvalid names\tB c\t"_L1) && copied.count(u'\n') == 2,
                 qPrintable(copied));
        for (const Qt::Key key : {Qt::Key_X, Qt::Key_V, Qt::Key_A})
            QTest::keyClick(pane()->table(), key, Qt::ControlModifier);
        QTest::keyClick(pane()->table(), Qt::Key_Delete);
        QCOMPARE(pane()->table()->selectionModel()->selectedRows().size(), 6);
        QCOMPARE(list()->selectionIndexes(), IndexSet {0});
        QVERIFY(!m_document->isDocumentEdited());

        pane()->table()->selectRow(1);
        QTest::keyClick(pane()->table(), Qt::Key_Return);
        QCOMPARE(selected(), u"B c"_s);
        QVERIFY(m_window->tableView()->hasFocus());
        pane()->table()->setFocus();
        QTest::keyClick(pane()->table(), Qt::Key_Escape);
        QVERIFY(!m_window->isProblemsShown());
        QVERIFY(m_window->tableView()->hasFocus());
    }

    void kindsNarrowTheListAndTheTable()
    {
        m_window->problems().finish();
        m_window->setProblemsShown(true);
        QAbstractItemModelTester tester(pane()->table()->model());
        const auto shownKinds = [this] {
            QStringList kinds;
            for (int i = 0; i < pane()->kinds()->topLevelItemCount(); ++i) {
                const QTreeWidgetItem *item = pane()->kinds()->topLevelItem(i);
                if (!item->isHidden())
                    kinds << item->text(0) + u' ' + item->text(1);
            }
            return kinds.join(u", "_s);
        };
        QCOMPARE(shownKinds(),
                 u"All problems 6, Invalid names 2, Duplicate names 2, Invalid code points 2"_s);
        pane()->kinds()->setFocus();
        QTest::keyClick(pane()->kinds(), Qt::Key_Down);
        QCOMPARE(pane()->kind(), ProblemKind::InvalidName);
        QCOMPARE(pane()->table()->model()->rowCount(), 2);

        pane()->setFiltering(true);
        QCOMPARE(namesOf(shown()), u"B c E "_s);
        QCOMPARE(m_window->subtitle(), u"2/5 infos"_s);
        QVERIFY(!list()->draggingEnabled());
        search(u"e"_s);
        QCOMPARE(namesOf(shown()), u"E "_s);
        pane()->showKind(ProblemKind::DuplicateName);
        QCOMPARE(namesOf(shown()), QString());
        QTest::keyClick(m_window.get(), Qt::Key_F8);
        QCOMPARE(selected(), u"A"_s);
        QVERIFY(!pane()->isFiltering());
        QCOMPARE(list()->countOfArrangedObjects(), 5);
        pane()->setFiltering(true);
        m_window->setProblemsShown(false);
        QCOMPARE(list()->countOfArrangedObjects(), 5);
        QVERIFY(list()->draggingEnabled());
    }

    void fixesGoThroughTheButtons()
    {
        m_window->problems().finish();
        m_window->setProblemsShown(true);
        pane()->showKind(ProblemKind::InvalidCodePoint);
        QVERIFY(QTest::qWaitFor([this] { return button(pane(), u"Fix Selected"_s)->width() > 40; }));
        pane()->table()->selectRow(1);
        QTest::mouseClick(button(pane(), u"Fix Selected"_s), Qt::LeftButton);
        QCOMPARE(info(4)->unicode(), u"0045"_s);
        QCOMPARE(info(3)->unicode(), u"44"_s);
        QCOMPARE(pane()->table()->model()->rowCount(), 1);
        QCOMPARE(pane()->table()->currentIndex().row(), 0); // the next one
        QTest::mouseClick(button(pane(), u"Fix All"_s), Qt::LeftButton);
        QCOMPARE(info(3)->unicode(), u"0044"_s);
        QVERIFY(!button(pane(), u"Fix All"_s)->isEnabled());
        QCOMPARE(m_document->undoManager()->stack()->undoText(), u"Correct Code Points (Records: 1)"_s);

        pane()->showKind(ProblemKind::InvalidName);
        pane()->table()->selectRow(0);
        QVERIFY2(!button(pane(), u"Fix Selected"_s)->isEnabled(), "a space inside a name needs a decision");
        pane()->table()->selectAll();
        QVERIFY(button(pane(), u"Fix Selected"_s)->isEnabled());
        pane()->showKind(ProblemKind::DuplicateName);
        QVERIFY(!button(pane(), u"Fix All"_s)->isEnabled());
        undo();
        undo();
        QCOMPARE(info(4)->unicode(), u"45"_s);
        QVERIFY(!m_document->isDocumentEdited());
        pane()->kinds()->setCurrentItem(pane()->kinds()->topLevelItem(0)); // of several kinds at once
        QTRY_COMPARE(pane()->table()->model()->rowCount(), 6);
        pane()->table()->selectAll();
        QTest::mouseClick(button(pane(), u"Fix Selected"_s), Qt::LeftButton);
        QCOMPARE(m_document->undoManager()->stack()->undoText(), u"Fix Problems (Records: 2)"_s);
    }

    void hintsAreApartAndKindsCanBeLeftOut()
    {
        forget({"LeftOutProblemKinds"});
        info(0)->setCase(VXGlyphInfo::lower);
        auto *badge = m_window->findChild<ProblemsButton *>();
        QTRY_COMPARE(badge->text(), u"6 problems, 1 hint"_s);
        m_window->setProblemsShown(true);
        QCOMPARE(pane()->table()->model()->rowCount(), 6);
        pane()->showKind(ProblemKind::UnicodeCase);
        QCOMPARE(pane()->table()->model()->rowCount(), 1);
        pane()->table()->selectRow(0);
        QTest::keyClick(m_window.get(), Qt::Key_F8, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(info(0)->caseValue(), int(VXGlyphInfo::upper));
        QCOMPARE(m_document->undoManager()->stack()->undoText(), u"Set Case by Unicode (Records: 1)"_s);
        undo();
        QTRY_COMPARE(badge->text(), u"6 problems, 1 hint"_s);
        QTemporaryDir folder;
        QVERIFY(pane()->saveList(folder.filePath(u"list.tsv"_s)));
        QCOMPARE(contentOf(folder.filePath(u"list.tsv"_s)).count('\n'), 2);

        QMenu *menu = button<QToolButton>(pane(), u"Kinds"_s)->menu();
        Q_EMIT menu->aboutToShow();
        const auto toggle = [menu](const QString &text) {
            for (QAction *action : menu->actions()) {
                if (action->text().remove(u'&') == text)
                    action->trigger();
            }
        };
        toggle(u"Case unlike Unicode"_s);
        toggle(u"Duplicate names"_s);
        QTRY_COMPARE(badge->text(), u"4 problems"_s);
        reopenWindow();
        badge = m_window->findChild<ProblemsButton *>();
        QTRY_COMPARE(badge->text(), u"4 problems"_s);
        forget({"LeftOutProblemKinds"});
    }

    void paneAndItsHeightAreRemembered()
    {
        m_window->setProblemsShown(true);
        reopenWindow();
        QVERIFY(m_window->isProblemsShown());
        m_window->setProblemsShown(false);
        reopenWindow();
        QVERIFY(!m_window->isProblemsShown());
    }

    void replacementTellsOfWhatItSpoils()
    {
        m_window->problems().finish();
        m_window->selectAll();
        QTimer::singleShot(0, this, [this] {
            auto *panel = m_window->findChild<VXFindReplaceWindowController *>();
            panel->selectItemWithTag(FindReplace::Name);
            panel->findChild<QLineEdit *>(u"findField"_s)->setText(u"D"_s);
            panel->findChild<QLineEdit *>(u"replaceField"_s)->setText(u"A\""_s);
            panel->doReplace();
        });
        m_window->performFindPanelAction(12);
        auto *bar = m_window->findChild<MessageBar *>();
        QTRY_VERIFY(bar->isVisible());
        QCOMPARE(info(3)->name(), u"A\""_s);
        QVERIFY2(bar->text().contains(u"Invalid names (1 more), Quotes and line breaks (1 more)"_s),
                 qPrintable(bar->text()));
    }

    void windowStateIsComplete()
    {
        QHeaderView *header = m_window->tableView()->horizontalHeader();
        header->setSortIndicator(1, Qt::DescendingOrder);
        header->resizeSection(2, 143);
        search(u"a"_s);
        select({1});
        m_window->setSidebarShown(false);
        QVERIFY(!m_window->detailPane()->isVisible());
        m_window->setProblemsShown(true);
        const QVariantMap state = m_window->windowWillEncodeRestorableState();
        const QString rows = namesOf(shown());

        m_window->setSidebarShown(true);
        m_window->setProblemsShown(false);
        m_window.reset();
        forget({"TableHeaderState"});
        reopenWindow();
        QCOMPARE(list()->sortColumn(), -1);
        QVERIFY(m_window->tableView()->columnWidth(2) != 143);
        m_window->windowDidDecodeRestorableState(state);
        QCOMPARE(namesOf(shown()), rows);
        QCOMPARE(list()->sortColumn(), 1);
        QCOMPARE(m_window->tableView()->columnWidth(2), 143);
        QCOMPARE(list()->selectionIndexes(), IndexSet {1});
        QVERIFY(!m_window->isSidebarShown());
        QVERIFY(m_window->isProblemsShown());
        m_window->setSidebarShown(true);
    }

private:
    ProblemsPane *pane() const { return m_window->problemsPane(); }
};

RUNEBOOK_TEST_MAIN(ProblemsPaneTest)
#include "ProblemsPaneTest.moc"
