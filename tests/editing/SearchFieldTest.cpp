// The search field as its user meets it: keys, menu, help and problems.
#include "editing/fields/ErrorBubble.h"
#include "editing/search/SearchColumns.h"
#include "editing/search/SearchHelpSheet.h"
#include "editing/search/SearchMenu.h"
#include "tests/OnScreen.h"
#include "tests/editing/Windows.h"

using namespace runebook;

namespace {

/// A window with a search field that counts what the field tells.
class FieldWindow : public QWidget
{
public:
    FieldWindow()
        : field(new VXSearchField(this)),
          searches(field, &VXSearchField::searchChanged),
          settings(field, &VXSearchField::settingsChanged),
          leaves(field, &VXSearchField::goToTableRequested)
    {
        field->setUpSearchMenu();
        auto *layout = new QVBoxLayout(this);
        layout->addWidget(field);
        layout->addStretch();
        resize(400, 300);
        show();
        activateWindow();
        field->setFocus();
    }
    SearchHelpSheet *sheet() const { return field->findChild<SearchHelpSheet *>(); }
    QToolButton *button(const QString &text) const
    {
        for (auto *button : field->findChildren<QToolButton *>()) {
            if (button->defaultAction() && button->defaultAction()->text() == text && button->isVisible())
                return button;
        }
        return nullptr;
    }
    QAction *item(const QString &title) const
    {
        for (QAction *action : field->searchMenu()->actions()) {
            if (action->text().trimmed() == title)
                return action;
        }
        return nullptr;
    }
    /// The visible items, ticked ones with "*", disabled ones in parentheses.
    QString shownItems() const
    {
        QStringList titles;
        for (const QAction *action : field->searchMenu()->actions()) {
            if (!action->isVisible())
                continue;
            const QString title = action->isSeparator() ? u"--"_s : action->text().trimmed();
            const QString ticked = action->isChecked() ? title + u'*' : title;
            titles += action->isEnabled() ? ticked : u'(' + ticked + u')';
        }
        return titles.join(u' ');
    }

    VXSearchField *field;
    QSignalSpy searches;
    QSignalSpy settings;
    QSignalSpy leaves;

protected:
    void keyPressEvent(QKeyEvent *event) override { keysLeft += event->text(); }
    bool event(QEvent *event) override
    {
        if (event->type() == QEvent::StatusTip)
            statusTip = static_cast<QStatusTipEvent *>(event)->tip();
        return QWidget::event(event);
    }

public:
    QString keysLeft; ///< what the field did not take
    QString statusTip; ///< what a status bar would show
};

Error someProblem()
{
    return {u"Test"_s, 1, u"Not <b>understood</b>."_s, u"Because."_s, {}};
}

} // namespace

class SearchFieldTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        forget({"SearchState", "SearchStateMatchCase", "SearchStateRegex"});
        RecentSearches::clear();
        m_window = std::make_unique<FieldWindow>();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()) && field()->hasFocus());
    }
    void cleanup() { m_window.reset(); }

    // searches: how often the window is told; keysLeft: what it gets itself
    TABLE(tellsOfEveryKeystroke,
          (const QString &keys, const QString &text, int searches, const QString &keysLeft), {
              row("characters like others", "ab?", "ab?", 3, "");
              row("Backspace", "ab<Backspace><Left>", "a", 3, "");
              row("Escape clears", "ab<Esc>", "", 3, "");
              row("the window may want the second", "ab<Esc><Esc>", "", 3, "\x1b");
              row("down to the table", "ab<Down>", "ab", 2, "");
          })
    {
        field()->setStringValue(u"set"_s);
        field()->setProperty("stringValue", u"?"_s);
        QCOMPARE(field()->text(), u"?"_s);
        field()->setStringValue({});
        QVERIFY(m_window->searches.isEmpty() && !m_window->sheet()); // what is set is known
        typeKeys(field(), keys);
        QCOMPARE(field()->stringValue(), text);
        QCOMPARE(m_window->searches.size(), searches);
        QCOMPARE(m_window->keysLeft, keysLeft);
        QCOMPARE(m_window->settings.size(), 0);
        QCOMPARE(m_window->leaves.size(), keys.endsWith("<Down>"_L1) ? 1 : 0);
        if (keys.endsWith("<Down>"_L1))
            QCOMPARE(RecentSearches::texts(), QStringList {u"ab"_s});
    }

    void cutsACarelessPaste()
    {
        QApplication::clipboard()->setText(QString(50'000'000, u'x'));
        QTest::keyClick(field(), Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(field()->stringValue().size(), 10'000);
        QCOMPARE(m_window->searches.size(), 1);
        QApplication::clipboard()->clear();
    }

    void clearButton()
    {
        QVERIFY(!m_window->button(u"Clear search"_s));
        QTest::keyClicks(field(), u"ab"_s);
        QToolButton *clear = m_window->button(u"Clear search"_s);
        QVERIFY(clear);
        QTest::mouseClick(clear, Qt::LeftButton);
        QCOMPARE(field()->text(), QString());
        QCOMPARE(m_window->searches.size(), 3);
        QVERIFY(!m_window->button(u"Clear search"_s));
        QVERIFY(field()->hasFocus());
    }

    void menuItems()
    {
        QCOMPARE(m_window->shownItems(),
                 u"All Name Unicode Category Subcategory Script Decompose Anchors Production Alternate Name "
                 "Accents Description -- Match Case Regex --"_s);
        QList<int> tags;
        for (const QAction *action : field()->searchMenu()->actions()) {
            tags += action->data().toInt();
            QVERIFY(action->shortcut().isEmpty());
        }
        QCOMPARE(tags, (QList<int> {1,  2,  3, 4,    5,    6, 7,    8,    9,    10,
                                    11, 12, 0, 2001, 2002, 0, 1000, 1000, 1001, 1002}));
        QVERIFY(m_window->item(u"Unicode"_s)->toolTip().contains(u"0041-005A"_s));
        QCOMPARE(m_window->item(u"Unicode"_s)->whatsThis(), m_window->item(u"Unicode"_s)->toolTip());
    }

    void menuByKeys()
    {
        QTest::keyClick(field(), Qt::Key_Down, Qt::AltModifier);
        QVERIFY(field()->searchMenu()->isVisible());
        for (int i = 0; i < 2; ++i)
            QTest::keyClick(field()->searchMenu(), Qt::Key_Down);
        QVERIFY2(m_window->statusTip.startsWith(u"Matches a part of the name."_s),
                 qPrintable(m_window->statusTip));
        QTest::keyClick(field()->searchMenu(), Qt::Key_Return);
        QCOMPARE(m_window->statusTip, QString());
        QCOMPARE(UserDefaults::standard().integerForKey(u"SearchState"_s), 2);
        QCOMPARE(field()->placeholderText(), u"Search Name"_s);
        QCOMPARE(m_window->searches.size(), 1);
        QCOMPARE(m_window->settings.size(), 1);
        // The mode that is set already.
        field()->searchMode(2);
        QCOMPARE(m_window->searches.size(), 1);
        QTest::keyClick(field(), Qt::Key_Down, Qt::AltModifier);
        QVERIFY(m_window->shownItems().startsWith(u"All Name* Unicode "_s));
        QTest::keyClick(field()->searchMenu(), Qt::Key_Escape);
        QCOMPARE(m_window->searches.size(), 1);
    }

    void menuByMouse()
    {
        QToolButton *magnifier = m_window->button(u"Search options"_s);
        QVERIFY(magnifier);
        QTest::mouseClick(magnifier, Qt::LeftButton);
        QMenu *menu = field()->searchMenu();
        QVERIFY(menu->isVisible());
        const QRect place = menu->actionGeometry(m_window->item(u"Match Case"_s));
        QTest::mouseClick(menu, Qt::LeftButton, {}, place.center());
        QVERIFY(SearchSettings::current().matchCase);
        QCOMPARE(m_window->searches.size(), 1);
    }

    void recentSearches()
    {
        for (const QString &text : {u"first"_s, u"a&b"_s}) {
            field()->setStringValue(text);
            QTest::keyClick(field(), Qt::Key_Return);
        }
        field()->clearSearch();
        m_window->searches.clear();
        field()->showSearchMenu();
        QVERIFY2(m_window->shownItems().endsWith(
                     u"Regex -- -- (Recent Searches) a&&b first Clear -- How to Search…"_s),
                 qPrintable(m_window->shownItems()));
        m_window->item(u"a&&b"_s)->trigger();
        QCOMPARE(field()->stringValue(), u"a&b"_s);
        QCOMPARE(m_window->searches.size(), 1);
        QCOMPARE(RecentSearches::texts(), (QStringList {u"a&b"_s, u"first"_s}));
        field()->searchMenu()->close();
        field()->showSearchMenu();
        m_window->item(u"Clear"_s)->trigger();
        field()->searchMenu()->close();
        field()->showSearchMenu();
        QVERIFY(m_window->shownItems().endsWith(u"Regex -- -- How to Search…"_s));
        QCOMPARE(m_window->searches.size(), 1);
    }

    void promptFollowsOtherWindows()
    {
        FieldWindow other;
        QCOMPARE(other.field->placeholderText(), u"Search All"_s);
        field()->searchMode(6);
        QCOMPARE(other.field->placeholderText(), u"Search Script"_s);
        QCOMPARE(other.searches.size(), 0);
    }

    void helpByKeyAndMenu()
    {
        QTest::keyClicks(field(), u"x"_s);
        QTest::keyClick(field(), Qt::Key_F1);
        QVERIFY(m_window->sheet() && m_window->sheet()->isVisible());
        QTest::keyClick(m_window->sheet(), Qt::Key_Escape);
        QTRY_VERIFY(!m_window->sheet());
        QCOMPARE(field()->text(), u"x"_s); // looking something up takes nothing away

        QVERIFY(!m_window->item(u"How to Search…"_s)); // the menu as it is defined, until somebody looks
        field()->showSearchMenu();
        QVERIFY(m_window->item(u"How to Search…"_s));
        field()->searchMenu()->setActiveAction(m_window->item(u"How to Search…"_s));
        QTest::keyClick(field()->searchMenu(), Qt::Key_Return);
        QTRY_VERIFY(m_window->sheet());
        auto *list = m_window->sheet()->findChild<QTreeWidget *>();
        QTRY_VERIFY(list->hasFocus());
        for (int i = 0; i < 4; ++i)
            QTest::keyClick(list, Qt::Key_Down);
        QTest::keyClick(list, Qt::Key_Return);
        QTRY_VERIFY(!m_window->sheet());
        QCOMPARE(field()->text(), u"0410-042F"_s);
        QCOMPARE(SearchSettings::current(), (SearchSettings {3, false, false}));
        QCOMPARE(m_window->searches.size(), 2);
    }

    void chipTellsWhereIsSearched()
    {
        auto *chip = field()->findChild<QToolButton *>(u"searchChip"_s);
        QVERIFY(chip && !chip->isVisible());
        QTest::keyClicks(field(), u"ab"_s);
        for (const auto &[tag, words] : {std::pair(12, u"Description"_s),
                                         {SearchMenu::kMatchCaseTag, u"Description, Match Case"_s},
                                         {SearchMenu::kRegexTag, u"Name, Regex"_s}}) {
            field()->searchMode(tag);
            QCOMPARE(chip->text(), words);
            QCOMPARE(field()->placeholderText().contains("by Regex"_L1), words.endsWith("Regex"_L1));
            QVERIFY(chip->isVisible() && chip->accessibleName().contains(words));
            // Beside the text, which begins behind it.
            QVERIFY(field()->rect().contains(chip->geometry()));
            QVERIFY(field()->textMargins().left() >= chip->width());
        }
        m_window->searches.clear();
        QTest::mouseClick(chip, Qt::LeftButton);
        QVERIFY(!chip->isVisible());
        QCOMPARE(field()->textMargins().left(), 0);
        QCOMPARE(SearchSettings::current(), (SearchSettings {1, false, false}));
        QCOMPARE(field()->text(), u"ab"_s);
        QCOMPARE(m_window->searches.size(), 1);
        // By keys: Backspace once nothing else is left to take away.
        field()->searchMode(4);
        field()->setFocus();
        for (int i = 0; i < 2; ++i)
            QTest::keyClick(field(), Qt::Key_Backspace);
        QVERIFY(chip->isVisible());
        QTest::keyClick(field(), Qt::Key_Backspace);
        QVERIFY(!chip->isVisible());
    }

    void helpByMouse()
    {
        field()->showHelp();
        auto *list = m_window->sheet()->findChild<QTreeWidget *>();
        const int last = list->topLevelItemCount() - 1;
        list->scrollToItem(list->topLevelItem(last));
        const QPoint place = list->visualItemRect(list->topLevelItem(last)).center();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
        QTRY_VERIFY(!m_window->sheet());
        QCOMPARE(field()->text(), SearchExamples::all().last().text);
        QVERIFY(SearchSettings::current().regex);
    }

    TABLE(examplesFindSomething, (int number), {
        const QList<SearchExample> all = SearchExamples::all();
        for (int i = 0; i < all.size(); ++i)
            row(all.at(i).place() + u": "_s + all.at(i).text, i);
    })
    {
        const SearchExample example = SearchExamples::all().at(number);
        VXDocument document;
        QVERIFY(document.readFromURLOfType(QStringLiteral(RUNEBOOK_SOURCE_DIR) + u"/resources/sample.xml"_s,
                                           u"public.xml"_s));
        const SearchResult result = SearchFilter(example.settings).result(example.text);
        QVERIFY(!result.problem);
        QVERIFY(result.predicate);
        const std::optional<IndexSet> places = SearchColumns(document).placesPassing(*result.predicate);
        QVERIFY(places);
        QVERIFY2(!places->empty() && places->size() < document.infos().size() / 2,
                 qPrintable(QString::number(places->size())));
    }

    void showsProblems()
    {
        const QColor plain = field()->palette().color(QPalette::Base);
        QTest::keyClicks(field(), u"a"_s);
        const QImage before = onScreen(*field());
        field()->setProblem(someProblem());
        QVERIFY(field()->palette().color(QPalette::Base) != plain);
        QVERIFY(onScreen(*field()) != before);
        QVERIFY(field()->toolTip().contains(u"Not &lt;b&gt;understood"_s));
        QVERIFY(field()->accessibleDescription().contains(u"Not <b>understood</b>."_s));
        QVERIFY(m_window->button(u"Why nothing is searched"_s));
        // The reason shows itself when typing pauses.
        QVERIFY(!m_window->findChild<ErrorBubble *>());
        QTRY_VERIFY(m_window->findChild<ErrorBubble *>());
        QVERIFY(m_window->findChild<ErrorBubble *>()->text().contains(u"Because."_s));

        field()->setProblem({});
        QCOMPARE(field()->palette().color(QPalette::Base), plain);
        QVERIFY(!m_window->button(u"Why nothing is searched"_s));
        QVERIFY(!field()->toolTip().contains(u"understood"_s));
        QTest::keyClick(field(), Qt::Key_Escape);
        QCOMPARE(RecentSearches::texts(), QStringList {u"a"_s});

        // A text that could not be searched for is not offered again.
        QTest::keyClicks(field(), u"b"_s);
        field()->setProblem(someProblem());
        QTest::keyClick(field(), Qt::Key_Return);
        QCOMPARE(RecentSearches::texts(), QStringList {u"a"_s});
    }

    void markFollowsTheTheme()
    {
        const QPalette light = QApplication::palette();
        field()->setProblem(someProblem());
        const QColor lightMark = field()->palette().color(QPalette::Base);
        QVERIFY(lightMark.lightness() > 160);
        QPalette dark = light;
        dark.setColor(QPalette::Base, QColor(30, 30, 30));
        dark.setColor(QPalette::Text, Qt::white);
        QApplication::setPalette(dark);
        QCoreApplication::processEvents();
        const QColor darkMark = field()->palette().color(QPalette::Base);
        const QColor text = field()->palette().color(QPalette::Text);
        QApplication::setPalette(light);
        QCoreApplication::processEvents();
        QVERIFY2(darkMark.lightness() < 100, qPrintable(darkMark.name()));
        QCOMPARE(text, QColor(Qt::white));
        QVERIFY(darkMark.red() > darkMark.green());
        QCOMPARE(field()->palette().color(QPalette::Base), lightMark);
    }

private:
    VXSearchField *field() const { return m_window->field; }

    std::unique_ptr<FieldWindow> m_window;
};

RUNEBOOK_TEST_MAIN(SearchFieldTest)
#include "SearchFieldTest.moc"
