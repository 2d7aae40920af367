#include "editing/compare/VXCompareDataWindow.h"
#include "editing/many/CharactersSheet.h"
#include "editing/many/EntriesSheet.h"
#include "editing/many/ProductionSheet.h"
#include "editing/many/VariantsSheet.h"
#include "editing/merge/MergeDialog.h"
#include "editing/records/ChoiceCells.h"
#include "editing/replace/VXFindReplaceWindowController.h"
#include "editing/tables/ExportDialog.h"
#include "editing/tables/PasteSheet.h"
#include "editing/values/ValuesPanel.h"
#include "tests/ShownTexts.h"
#include "tests/editing/Windows.h"

using namespace runebook;

namespace {

/// What a person can act on, as assistive technology calls it.
bool isControl(QAccessible::Role role)
{
    using enum QAccessible::Role;
    static const QSet<QAccessible::Role> controls {
        Button,       ButtonMenu, ButtonDropDown, CheckBox, RadioButton, ComboBox,
        EditableText, SpinBox,    Table,          Tree,     List};
    return controls.contains(role);
}

/// Parts of a control, which speak through it.
bool isInnerPart(const QWidget &widget)
{
    const QWidget *parent = widget.parentWidget();
    const bool isPartOfField = parent && parent->inherits("QLineEdit");
    return isPartOfField || widget.inherits("QScrollBar") || widget.inherits("QHeaderView")
        || widget.objectName().startsWith("qt_"_L1) || (parent && parent->inherits("QComboBox"));
}

QString pathOf(const QWidget &widget)
{
    QStringList path;
    for (const QWidget *each = &widget; each; each = each->parentWidget())
        path.prepend(QString::fromLatin1(each->metaObject()->className()) + u'#' + each->objectName());
    return path.join(u'/');
}

/// A control that keys do not reach must have a command with a key that does the same.
bool isReachable(const QWidget &widget)
{
    if (widget.focusPolicy() & Qt::TabFocus)
        return true;
    if (widget.focusProxy() && isReachable(*widget.focusProxy()))
        return true;
    // The buttons of a tool bar repeat commands of menus.
    const auto *button = qobject_cast<const QAbstractButton *>(&widget);
    return button && (qobject_cast<QToolBar *>(widget.parentWidget()) || !button->shortcut().isEmpty());
}

QStringList faultsOf(const QWidget &window)
{
    QStringList faults;
    int controls = 0;
    for (QWidget *widget : window.findChildren<QWidget *>()) {
        if (!widget->isVisible() || isInnerPart(*widget))
            continue;
        const QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(widget);
        if (!interface || !isControl(interface->role()))
            continue;
        ++controls;
        if (interface->text(QAccessible::Name).isEmpty())
            faults << u"no name: "_s + pathOf(*widget);
        if (widget->isEnabled() && !isReachable(*widget))
            faults << u"no key: "_s + pathOf(*widget);
    }
    if (controls < 4)
        faults << u"too few controls were found"_s;
    return faults;
}

} // namespace

/// Every control of the windows has a name and a role, and keys reach it.
class AccessibilityTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        for (VXDocument *document : {&m_left, &m_right})
            document->setInfos({infoNamed(u"A"_s), infoNamed(u"B"_s), infoNamed(u"two words"_s)});
        m_right.infos().front()->setDesc(u"other"_s);
    }

    void theWalkFindsFaults()
    {
        QWidget window;
        auto *nameless = new QToolButton(&window);
        nameless->setFocusPolicy(Qt::NoFocus);
        for (int x = 0; x < 3; ++x)
            (new QToolButton(&window))->setText(u"named"_s);
        window.show();
        const QStringList faults = faultsOf(window);
        QCOMPARE(faults.size(), 2);
        QVERIFY(faults.first().startsWith("no name"_L1) && faults.last().startsWith("no key"_L1));
    }

    void documentWindowWithConditions()
    {
        VXWindowController window(m_left);
        window.show();
        QVERIFY(window.setFilter(u"(name contains \"a\" || !(script != \"\")) && nameLength < 9"_s));
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTest::keyClick(&window, Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(faultsOf(window).join(u'\n'), QString());
    }

    void documentWindowWithProblems()
    {
        VXWindowController window(m_left);
        window.show();
        window.setProblemsShown(true);
        window.problems().finish();
        window.problemsPane()->showKind(ProblemKind::InvalidName);
        QVERIFY(window.showValues(u"category"_s));
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTRY_VERIFY(window.valuesPanel()->model().isUpToDate());
        QCOMPARE(faultsOf(window).join(u'\n'), QString());
        COMPARE_TEXTS(u"document"_s, window);

        for (const QLabel *caption : window.detailPane()->findChildren<QLabel *>()) {
            if (caption->objectName().startsWith("infoLable"_L1))
                QVERIFY2(caption->buddy(), qPrintable(caption->objectName()));
        }
        // A problem is read out as a cell with its text.
        QAccessibleInterface *table = QAccessible::queryAccessibleInterface(window.problemsPane()->table());
        QVERIFY(table->tableInterface());
        QCOMPARE(table->tableInterface()->rowCount(), 1);
        const QAccessibleInterface *cell =
            table->tableInterface()->cellAt(0, ProblemsModel::ExplanationColumn);
        QVERIFY(cell->text(QAccessible::Name).contains(u"space"_s));
    }

    /// Tab goes round through all that takes the focus, and comes back.
    void tabReachesThePane()
    {
        VXWindowController window(m_left);
        window.show();
        window.setProblemsShown(true);
        window.problems().finish();
        window.setValuesShown(true);
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QSet<const QWidget *> reached;
        for (int i = 0; i < 200 && !(i > 2 && reached.contains(QApplication::focusWidget())); ++i) {
            reached << QApplication::focusWidget();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        const ProblemsPane *pane = window.problemsPane();
        QVERIFY(reached.contains(pane->table()));
        QVERIFY(reached.contains(&window.valuesPanel()->view()));
        QVERIFY(reached.contains(&window.valuesPanel()->field()));
        for (const QAbstractButton *button : pane->findChildren<QAbstractButton *>()) {
            if (button->isVisible() && button->isEnabled() && button->focusPolicy() & Qt::TabFocus)
                QVERIFY2(reached.contains(button), qPrintable(pathOf(*button)));
        }
    }

    void choiceCellsSayWhatIsChosen()
    {
        ChoiceCells cells(u"Case"_s, {{1, u"None"_s}, {2, u"Upper"_s}, {3, u"Lower"_s}});
        const auto spoken = [&cells] {
            return QAccessible::queryAccessibleInterface(&cells)->text(QAccessible::Name);
        };
        QCOMPARE(spoken(), u"Case"_s);
        cells.setChosen({3, 2, 7});
        QCOMPARE(spoken(), u"Case: Upper, Lower"_s);
        cells.setChosen({});
        QCOMPARE(spoken(), u"Case"_s);
    }

    void tableDialogs()
    {
        PastedTable table;
        table.rows = {{u"name"_s, u"direction"_s}, {u"A"_s, u"up"_s}, {u"B"_s, u"RTL"_s}};
        table.columns = 2;
        PasteSheet sheet(table, {}, {m_left, {m_left.infos().front()}, m_left.infos()});
        sheet.show();
        QVERIFY(QTest::qWaitForWindowActive(&sheet));
        QCOMPARE(faultsOf(sheet).join(u'\n'), QString());
        COMPARE_TEXTS(u"paste-table"_s, sheet);
        const QAbstractItemModel *model = sheet.findChild<QTableView *>()->model();
        const int last = model->columnCount() - 1;
        QCOMPARE(model->index(0, last).data(Qt::AccessibleTextRole).toString(),
                 u"Direction: up is left out. “up” is no direction"_s);
        QCOMPARE(model->index(1, last).data(Qt::AccessibleTextRole).toString(),
                 u"Direction: LTR becomes RTL"_s);
        EntriesSheet entries(m_left, m_left.infos(), GlyphField::Anchors, nullptr);
        VariantsSheet variants(m_left, m_left.infos(), nullptr);
        ProductionSheet production(m_left, m_left.infos(), nullptr);
        CharactersSheet characters(m_left, nullptr, nullptr);
        const QList<std::pair<QString, QDialog *>> ofMany {{u"characters"_s, &characters},
                                                           {u"entries"_s, &entries},
                                                           {u"variants"_s, &variants},
                                                           {u"production-names"_s, &production}};
        for (const auto &[name, many] : ofMany) {
            many->show();
            QVERIFY(QTest::qWaitForWindowActive(many));
            QCOMPARE(faultsOf(*many).join(u'\n'), QString());
            COMPARE_TEXTS(name, *many);
        }
        ExportDialog dialog({m_left.infos(), m_left.infos(), {}}, {});
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QCOMPARE(faultsOf(dialog).join(u'\n'), QString());
        COMPARE_TEXTS(u"export-table"_s, dialog);
    }

    void compareWindow()
    {
        controller().addDocument(&m_left);
        controller().addDocument(&m_right);
        VXCompareDataWindow window;
        window.showWindow();
        window.filteredKeys()->setSelectionIndexes({0});
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QCOMPARE(faultsOf(window).join(u'\n'), QString());
    }

    void mergeWindow()
    {
        makeDocumentsWithWindows();
        const auto side = [](const QByteArray &word) {
            return "<!-- " + word + " -->\n<glyphData format=\"2\">\n<glyph name=\"a\" category=\"" + word
                + "\" />\n</glyphData>\n";
        };
        MergeWindow *window =
            showMerge(PreparedMerge::of({side("base"), side("ours"), side("theirs")}, CompareKey::Name),
                      {u"base"_s, u"ours"_s, u"theirs"_s}, u"merged"_s);
        QVERIFY(QTest::qWaitForWindowActive(window));
        for (int conflict = 0; conflict < 2; ++conflict) { // the header, then the record
            QCOMPARE(faultsOf(*window).join(u'\n'), QString());
            window->goToNextConflict();
        }
        MergeDialog dialog;
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QCOMPARE(faultsOf(dialog).join(u'\n'), QString());
        window->resolution().document()->close();
        sendDeferredDeletes();
    }

private:
    VXDocument m_left;
    VXDocument m_right;
};

RUNEBOOK_TEST_MAIN(AccessibilityTest)
#include "AccessibilityTest.moc"
