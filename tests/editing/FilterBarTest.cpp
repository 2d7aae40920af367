#include "editing/search/FilterBar.h"
#include "editing/search/CurrentFilter.h"
#include "editing/search/FilterChip.h"
#include "editing/search/SavedFilters.h"
#include "editing/search/SavedFiltersSheet.h"
#include "editing/window/EmptyTable.h"
#include "tests/editing/Windows.h"

using namespace runebook;

/// The conditions above the table, made and changed with keys and mouse.
class FilterBarTest : public WindowFixture
{
    Q_OBJECT
private:
    FilterBar *bar() const { return m_window->findChild<FilterBar *>(); }
    FilterChip *chip(int number) const
    {
        for (FilterChip *each : bar()->findChildren<FilterChip *>()) {
            if (each->isVisible() && each->number() == number)
                return each;
        }
        return nullptr;
    }
    QComboBox *box(const QString &name) const
    {
        const auto boxes = bar()->findChildren<QComboBox *>();
        const auto found = std::find_if(boxes.begin(), boxes.end(), [&](const QComboBox *each) {
            return each->accessibleName() == name;
        });
        return found == boxes.end() ? nullptr : *found;
    }
    void press(const QString &keys) { typeKeys(m_window.get(), keys); }
    /// A condition as somebody makes it with the keyboard.
    void add(const QString &field, const QString &relation, const QString &value)
    {
        press(u"<Ctrl+Shift+F>"_s);
        typeKeys(box(u"Field"_s), field);
        typeKeys(box(u"Relation"_s), relation);
        typeKeys(bar()->findChild<QLineEdit *>(), value + u"<Return>"_s);
        m_window->activateWindow(); // without a window system nobody does when the list of offers goes
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }

private Q_SLOTS:
    void init()
    {
        forget({"SavedFilters"});
        openFive();
    }
    void cleanup() { closeWindow(); }

    void conditionsAreMadeWithTheKeyboard()
    {
        QVERIFY(!bar()); // nothing is made before it is needed
        press(u"<Ctrl+Shift+F>"_s);
        QVERIFY(bar() && bar()->isVisible() && bar()->isEditing());
        press(u"A<Return>"_s);
        QCOMPARE(m_window->filter(), u"name contains[cd] \"A\""_s);
        QCOMPARE(namesOf(shown()), u"A a.sc gravecomb"_s);
        QVERIFY(table()->hasFocus() && !bar()->isEditing());
        search(u"."_s); // both count
        QCOMPARE(namesOf(shown()), u"a.sc"_s);
        QCOMPARE(m_window->subtitle(), u"1/5 infos"_s);
        search({});
        add(u"Cat"_s, u"is"_s, u"number"_s);
        QCOMPARE(m_window->filter(), u"name contains[cd] \"A\" && category ==[cd] \"number\""_s);
        QCOMPARE(shown().size(), 0u);
        QTRY_VERIFY(m_window->findChild<EmptyTable *>()->isVisible());
        table()->setFocus();
        press(u"<Shift+F6><Right><Space>"_s); // to the first chip, and behind it
        QCOMPARE(namesOf(shown()), u"A a.sc one gravecomb"_s);
        QVERIFY(chip(0)->hasFocus());
        typeKeys(chip(0), u"-"_s);
        QCOMPARE(m_window->filter(), u"!(name contains[cd] \"A\") || category ==[cd] \"number\""_s);
        typeKeys(chip(0), u"<Ctrl+Space>"_s);
        QCOMPARE(namesOf(shown()), u"one"_s);
        QVERIFY(chip(0)->accessibleName().contains(u"switched off"_s));
        typeKeys(chip(0), u"<Right><Right>"_s);
        QVERIFY(chip(1)->hasFocus());
        typeKeys(chip(1), u"<Delete>"_s);
        QCOMPARE(m_window->subtitle(), u"5 infos"_s);
        QVERIFY(chip(0)->hasFocus());
        typeKeys(chip(0), u"<Esc>"_s);
        QVERIFY(!bar()->isVisible() && table()->hasFocus() && m_window->filter().isEmpty());
        command(u"Bring Back Last Filter"_s)->trigger();
        QVERIFY(bar()->isVisible());
        m_window->searchField()->setFocus();
        press(u"<Esc>"_s);
        QVERIFY(!bar()->isVisible());
        QVERIFY(!m_document->isDocumentEdited());
    }

    void conditionsAreChangedWithTheMouse()
    {
        QVERIFY(m_window->setFilter(u"category IN {\"Letter\", \"Mark\"} && nameLength < 5"_s));
        QCOMPARE(namesOf(shown()), u"A B a.sc"_s);
        QCOMPARE(chip(0)->text(), u"Category is one of Letter, Mark"_s);
        QTest::mouseClick(chip(0), Qt::LeftButton);
        QVERIFY(bar()->isEditing());
        auto *value = bar()->findChild<QLineEdit *>();
        QCOMPARE(value->text(), u"Letter, Mark"_s);
        value->clear();
        press(u"<Return>"_s); // refused, with the reason
        QVERIFY(bar()->isEditing() && !value->accessibleDescription().isEmpty());
        QTest::keyClicks(value, u"Number, mark"_s);
        QTest::mouseClick(button(bar(), u"Apply"_s), Qt::LeftButton);
        QCOMPARE(m_window->filter(), u"category IN {\"Number\", \"mark\"} && nameLength < 5"_s);
        QCOMPARE(namesOf(shown()), u"one"_s);
        QTest::mouseClick(chip(1), Qt::LeftButton);
        QTest::mouseClick(button(bar(), u"Cancel"_s), Qt::LeftButton);
        QVERIFY(!bar()->isEditing());
        QTest::mouseClick(chip(0), Qt::LeftButton, {}, {chip(0)->width() - 8, chip(0)->height() / 2});
        QCOMPARE(m_window->filter(), u"nameLength < 5"_s);
        QTest::mouseClick(button(bar(), u"Take all conditions away"_s), Qt::LeftButton);
        QCOMPARE(m_window->subtitle(), u"5 infos"_s);
        QVERIFY(!bar()->isVisible());
    }

    void rowsFollowTheRulesOfSearches()
    {
        QVERIFY(m_window->setFilter(u"category == \"Letter\""_s));
        info(0)->setCategory(u"Mark"_s); // an edit leaves the rows
        QCoreApplication::processEvents();
        QCOMPARE(namesOf(shown()), u"A B a.sc"_s);
        m_window->addInfo(); // what is added is seen
        QCOMPARE(shown().size(), 4u);
        QVERIFY(!list()->draggingEnabled());
        m_window->filterInfos();
        QCOMPARE(namesOf(shown()), u"B a.sc"_s);
        m_window->showInfo(info(3)); // a filter that hides it is switched off, not lost
        QCOMPARE(selected(), u"one"_s);
        QVERIFY(m_window->filter().isEmpty() && chip(0));
        press(u"<Ctrl+Shift+O>"_s);
        QCOMPARE(namesOf(shown()), u"B a.sc"_s);
        const QVariantMap state = m_window->windowWillEncodeRestorableState();
        reopenWindow();
        m_window->windowDidDecodeRestorableState(state);
        QCOMPARE(namesOf(shown()), u"B a.sc"_s);
    }

    void expressionsAreLookedForInSlices()
    {
        fill(*m_document, numbered(60'000, u"glyph"_s));
        info(9)->setScript(u"greek"_s);
        QVERIFY(m_window->setFilter(u"name MATCHES \".*9\" && (script == \"greek\" || nameLength > 9)"_s));
        QVERIFY(m_window->isFiltering());
        QTRY_VERIFY(!m_window->isFiltering());
        IndexSet expected;
        for (qsizetype i = 0; i < m_document->countOfInfos(); ++i) {
            const QString name = info(i)->name();
            if (name.endsWith(u'9') && (info(i)->script() == u"greek"_s || name.size() > 9))
                expected.push_back(i);
        }
        QCOMPARE(qsizetype(expected.size()), list()->countOfArrangedObjects());
        QCOMPARE(list()->arrangedObjectAtIndex(0), info(expected[0]));
    }

    void filtersAreSavedUnderNames()
    {
        QVERIFY(m_window->setFilter(u"category == \"Letter\""_s));
        command(u"Save Filter…"_s)->trigger();
        auto *sheet = m_window->findChild<QInputDialog *>();
        typeKeys(sheet, u"only letters<Return>"_s);
        QTRY_VERIFY(!m_window->findChild<QInputDialog *>());
        QCOMPARE(SavedFilters::textOf(u"only letters"_s), u"category == \"Letter\""_s);
        QVERIFY(m_window->setFilter({}));
        QVERIFY(m_window->setFilter(u"only letters"_s));
        QCOMPARE(namesOf(shown()), u"A B a.sc"_s);
        QVERIFY(m_window->setFilter({}));
        auto *menu = qobject_cast<QMenu *>(command(u"Clear Filter"_s)->associatedObjects().value(0));
        Q_EMIT menu->aboutToShow();
        QCOMPARE(menu->actions().last()->text(), u"&1 only letters"_s);
        menu->actions().last()->trigger();
        QCOMPARE(m_window->filter(), u"category == \"Letter\""_s);

        command(u"Saved Filters…"_s)->trigger();
        auto *manager = m_window->findChild<SavedFiltersSheet *>();
        auto *names = manager->findChild<QListWidget *>();
        QTest::keyClick(names, Qt::Key_F2);
        auto *editor = names->findChild<QLineEdit *>();
        QVERIFY(editor);
        editor->setText(u"letters"_s);
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE(names->item(0)->text(), u"letters"_s);
        QCOMPARE(m_window->savedFilters(), QStringList {u"letters"_s});
        button(manager, u"Delete"_s)->click();
        QVERIFY(m_window->savedFilters().isEmpty());
        manager->reject();

        Error error;
        QVERIFY(!m_window->setFilter(u"letters"_s, &error));
        QVERIFY(!error.text().isEmpty());
        QCOMPARE(namesOf(shown()), u"A B a.sc"_s); // as it was
    }

    void regexSaysWhereItLooks()
    {
        UserDefaults::standard().setObjectForKey(true, u"SearchStateRegex"_s);
        m_window->searchField()->setFocus();
        press(u"sc"_s);
        QTRY_VERIFY(!m_window->isFiltering());
        QVERIFY(m_window->searchField()->placeholderText().contains(u"Whole Names"_s));
        auto *notice = m_window->findChild<EmptyTable *>();
        QTRY_VERIFY(notice->isVisible());
        QVERIFY(notice->accessibleDescription().contains(u"whole names only"_s));
        button(notice, u"Pattern for Another Field…"_s)->click();
        QVERIFY(bar()->isEditing() && m_window->searchField()->stringValue().isEmpty());
        search(u"sc"_s);
        QTRY_VERIFY(!m_window->isFiltering() && notice->isVisible());
        button(notice, u"Anywhere in the Name"_s)->click();
        QTRY_COMPARE(namesOf(shown()), u"a.sc"_s);
    }

    void f6LeadsToTheChips()
    {
        QVERIFY(m_window->setFilter(u"category == \"Letter\""_s));
        m_window->searchField()->setFocus();
        press(u"<F6>"_s);
        QVERIFY(chip(0)->hasFocus());
        press(u"<Return>"_s);
        QVERIFY(bar()->isEditing());
        press(u"<Esc>"_s);
        QVERIFY(!bar()->isEditing() && chip(0)->hasFocus());
        table()->setCurrentIndex(cell(0, GlyphField::Case));
        press(u"<Ctrl+Shift+F>"_s);
        QCOMPARE(box(u"Field"_s)->currentText(), u"Case"_s);
        press(u"<Esc>"_s);
        m_window->searchField()->setFocus();
        press(u"<F6>"_s);
        press(u"<F6>"_s);
        QVERIFY(table()->hasFocus());
    }
};

RUNEBOOK_TEST_MAIN(FilterBarTest)
#include "FilterBarTest.moc"
