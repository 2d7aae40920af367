#include "editing/values/ValuesPanel.h"
#include "tests/editing/Windows.h"

using namespace runebook;

/// The panel of values as a person has it, in a window.
class ValuesPanelTest : public WindowFixture
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        forget({"ValuesPanelShown", "ValuesPanelField", "ValuesPanelSortsByText", "ValuesPanelSortsUp",
                "SearchState", "SearchStateRegex", "SearchStateMatchCase"});
        openWindow(
            recordsOf(u"name=\"A\" category=\"Letter\" script=\"latin\"\nname=\"B\" category=\"Letter\"\n"
                      "name=\"a.sc\" category=\"Letter\" script=\"latin\"\n"
                      "name=\"one\" category=\"Number\"\nname=\"gravecomb\" category=\"Mark\"\n"_s));
    }
    void cleanup() { closeWindow(); }

    /// Nothing is made before the key, and nothing is left of it behind the next one.
    void aKeyOpensAndClosesIt()
    {
        QVERIFY(!m_window->valuesPanel() && m_window->findChildren<ValueCounts *>().isEmpty());
        QTest::keyClick(m_window.get(), Qt::Key_F9);
        QVERIFY(panel() && panel()->view().hasFocus());
        QCOMPARE(rows(), u"Letter 3;Mark 1;Number 1;"_s);
        QCOMPARE(panel()->statusText(), u"3 values in 5 records"_s);
        QTest::keyClick(&panel()->view(), Qt::Key_Escape);
        QVERIFY(!m_window->isValuesShown() && table()->hasFocus());
        sendDeferredDeletes();
        QVERIFY(m_window->findChildren<ValueCounts *>().isEmpty());
        m_window->setValuesShown(true);
        panel()->setAspect(*FieldAspect::of(u"suffix"_s));
        reopenWindow(); // both are remembered
        QCOMPARE(rows(), u"(none) 4;.sc 1;"_s);
    }

    /// Clicks with their keys and keys alone do the same; what is chosen of one field narrows the others.
    void whatIsChosenFiltersTheTable()
    {
        open(u"category"_s);
        click(u"Letter"_s);
        QCOMPARE(namesOf(shown()), u"A B a.sc"_s);
        QCOMPARE(rows(), u"Letter 3;Mark 1;Number 1;"_s); // its own field is not narrowed
        QCOMPARE(m_window->subtitle(), u"3/5 infos"_s);
        click(u"Number"_s, Qt::ControlModifier);
        QCOMPARE(namesOf(shown()), u"A B a.sc one"_s);
        click(u"Letter"_s, Qt::AltModifier);
        QCOMPARE(namesOf(shown()), u"one"_s);
        click(u"Letter"_s);
        panel()->setAspect(*FieldAspect::of(u"script"_s));
        QCOMPARE(rows(), u"latin 2;(none) 1;"_s);
        click(u"(none)"_s);
        QCOMPARE(namesOf(shown()), u"B"_s);
        panel()->setAspect(*FieldAspect::of(u"category"_s));
        QCOMPARE(rows(), u"Letter 1;Mark 1;Number 1;"_s);
        QCOMPARE(spoken(u"Letter"_s), u"Letter: 1 record, chosen"_s);
        QVERIFY(filter().text().contains("script"_L1));

        filter({});
        QCOMPARE(rows(), u"Letter 3;Mark 1;Number 1;"_s);
        typeKeys(&panel()->view(), u"<Home><End><Up>"_s);
        for (const auto &[keys, names] : {std::pair(u"<Space>"_s, u"gravecomb"_s),
                                          {u"<Space>"_s, u"A B a.sc one gravecomb"_s},
                                          {u"<Return><Up><Ctrl+Space>"_s, u"A B a.sc gravecomb"_s},
                                          {u"<Alt+Return>"_s, u"gravecomb"_s},
                                          {u"<Down><Return><Down><Ctrl+Return>"_s, u"one gravecomb"_s}}) {
            typeKeys(&panel()->view(), keys);
            QTRY_COMPARE(namesOf(shown()), names);
        }
    }

    /// The search, and expressions in it, narrow all fields, also the one of which something is chosen.
    void theSearchNarrowsWhatIsCounted()
    {
        open(u"category"_s);
        click(u"Letter"_s);
        search(u"a"_s); // in all fields: of all, "A", "a.sc" and "gravecomb" have one; so have "latin" and
                        // "Mark"
        QCOMPARE(rows(), u"Letter 2;Mark 1;"_s);
        QCOMPARE(namesOf(shown()), u"A a.sc"_s);
        UserDefaults::standard().setObjectForKey(true, u"SearchStateRegex"_s);
        search(u"[Ao].*"_s);
        QTRY_COMPARE(namesOf(shown()), u"A"_s);
        QTRY_COMPARE(rows(), u"Letter 1;Number 1;"_s);
    }

    void countsFollowEveryEdit()
    {
        open(u"category"_s);
        click(u"Letter"_s);
        info(0)->setCategory(u"Mark"_s); // stays in the table until the filter is used again
        m_document->flushChanges();
        QCOMPARE(rows(), u"Letter 2;Mark 2;Number 1;"_s);
        m_window->addInfo();
        QCOMPARE(rows(), u"Letter 2;Mark 2;(none) 1;Number 1;"_s); // it is seen
        undo();
        undo();
        QCOMPARE(rows(), u"Letter 3;Mark 1;Number 1;"_s);
        m_document->removeObjectsFromInfosAtIndexes({0, 3});
        QCOMPARE(rows(), u"Letter 2;Mark 1;"_s);
        QCOMPARE(namesOf(shown()), u"B a.sc"_s);
    }

    void typingLooksForValues()
    {
        open(u"name"_s);
        typeKeys(&panel()->view(), u"a."_s);
        QVERIFY(panel()->searchLine().hasFocus());
        QCOMPARE(rows(), u"a.sc 1;"_s);
        typeKeys(&panel()->searchLine(), u"<Down><Space>"_s);
        typeKeys(&panel()->view(), u"<Space>"_s);
        QCOMPARE(namesOf(shown()), u"a.sc"_s);
        typeKeys(&panel()->view(), u"xx"_s);
        QCOMPARE(rows(), u"a.sc 1;"_s); // what is chosen stays in sight
        typeKeys(&panel()->searchLine(), u"<Esc>"_s);
        QCOMPARE(rows(), u"A 1;a.sc 1;B 1;gravecomb 1;one 1;"_s);

        // The keys of the Edit menu mean the list.
        go(u"B"_s);
        typeKeys(&panel()->view(), u"<Ctrl+C><Ctrl+A><Ctrl+X><Del>"_s);
        QCOMPARE(QApplication::clipboard()->text(), u"B\t1\n"_s);
        QVERIFY(!m_document->isDocumentEdited());
        QTest::mouseClick(panel()->view().horizontalHeader()->viewport(), Qt::LeftButton, {}, {10, 5});
        QTest::mouseClick(panel()->view().horizontalHeader()->viewport(), Qt::LeftButton, {}, {10, 5});
        QCOMPARE(rows(), u"one 1;gravecomb 1;B 1;a.sc 1;A 1;"_s);
    }

    /// A double click takes back what its first click chose; the rename is one step in all records.
    void valuesAreRenamedEverywhere()
    {
        open(u"category"_s);
        search(u"B"_s);
        QCOMPARE(rows(), u"Letter 1;Mark 1;"_s);
        doubleClick(u"Letter"_s);
        QCOMPARE(filter().text(), QString());
        rename(u"Lettre<Return>"_s);
        QTRY_COMPARE(rows(), u"Lettre 1;Mark 1;"_s);
        QCOMPARE(filter().text(), QString()); // the key that ended the typing chose nothing
        QCOMPARE(m_document->undoManager()->stack()->undoText(), u"Rename Value in 3 Records"_s);
        QCOMPARE(barText(), u"“Letter” is “Lettre” now. Records: 3. Not shown of these: 2."_s);
        search(u""_s);
        click(u"Lettre"_s);
        typeKeys(&panel()->view(), u"<F2>"_s);
        rename(u"Letter<Return>"_s);
        QTRY_COMPARE(rows(), u"Letter 3;Mark 1;Number 1;"_s);
        QCOMPARE(namesOf(shown()), u"A B a.sc"_s); // what was chosen is chosen by its new name
        undo();
        undo();
        QCOMPARE(info(0)->category(), u"Letter"_s);
        QVERIFY(!m_document->undoManager()->canUndo());
        filter({});

        go(u"Mark"_s);
        typeKeys(&panel()->view(), u"<F2>"_s);
        rename(u"x<Esc>"_s);
        typeKeys(&panel()->view(), u"<F2>"_s);
        rename(u"a--><Return>"_s);
        QTRY_VERIFY2(barText().contains(u"-->"_s), qPrintable(barText()));
        QCOMPARE(rows(), u"Letter 3;Mark 1;Number 1;"_s);
        panel()->setAspect(*FieldAspect::of(u"nameLength"_s));
        go(u"1"_s);
        typeKeys(&panel()->view(), u"<F2>"_s);
        QTRY_VERIFY2(barText().contains(u"“Name Length” is worked out"_s), qPrintable(barText()));
    }

private:
    ValuesPanel *panel() const { return m_window->valuesPanel(); }
    void open(const QString &field)
    {
        QVERIFY(m_window->showValues(field));
        QVERIFY(QTest::qWaitFor([this] { return !rows().isEmpty() && panel()->view().isVisible(); }));
        panel()->view().setFocus();
    }
    const RecordFilter &filter() const { return panel()->filter().filter(); }
    void filter(const RecordFilter &filter) { panel()->filter().setFilter(filter); }
    /// The list, once it is that of the rows that are shown now.
    QString rows() const
    {
        QCoreApplication::processEvents();
        const bool isReady = QTest::qWaitFor(
            [this] { return panel()->counts().isComplete() && panel()->model().isUpToDate(); });
        QString text;
        for (int row = 0; isReady && row < panel()->model().rowCount(); ++row)
            text += panel()->model().lineOf(row).replace(u'\t', u' ').replace(u'\n', u';');
        return text;
    }
    QModelIndex row(const QString &value) const
    {
        rows();
        return panel()->model().indexOfText(value == "(none)"_L1 ? QString() : value);
    }
    QString spoken(const QString &value) const { return row(value).data(Qt::AccessibleTextRole).toString(); }
    void go(const QString &value)
    {
        panel()->view().setFocus();
        panel()->view().setCurrentIndex(row(value));
    }
    void click(const QString &value, Qt::KeyboardModifiers modifiers = {})
    {
        const QModelIndex index = row(value);
        QVERIFY2(index.isValid(), qPrintable(value));
        QTest::mouseClick(panel()->view().viewport(), Qt::LeftButton, modifiers,
                          panel()->view().visualRect(index).center());
    }
    void doubleClick(const QString &value)
    {
        click(value);
        QTest::mouseDClick(panel()->view().viewport(), Qt::LeftButton, {},
                           panel()->view().visualRect(row(value)).center());
    }
    /// Types over the value whose editor is open.
    void rename(const QString &keys)
    {
        sendDeferredDeletes(); // of editors before
        auto *editor = panel()->view().findChild<QLineEdit *>();
        QVERIFY(editor);
        editor->selectAll();
        typeKeys(editor, keys);
    }
};

RUNEBOOK_TEST_MAIN(ValuesPanelTest)
#include "ValuesPanelTest.moc"
