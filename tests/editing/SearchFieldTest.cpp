// The search field as its user meets it: keys, menu, help and problems.
#include "document/VXDocument.h"
#include "editing/ErrorBubble.h"
#include "editing/SearchColumns.h"
#include "editing/SearchHelpSheet.h"
#include "editing/SearchMenu.h"
#include "editing/VXSearchField.h"
#include "platform/UserDefaults.h"
#include "tests/TestMain.h"

#include <QClipboard>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusTipEvent>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace runebook;
using namespace Qt::StringLiterals;

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
    bool isReady() { return QTest::qWaitForWindowActive(this) && field->hasFocus(); }
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
    void init();
    void tellsOfEveryKeystroke();
    void settingTheValueTellsNothing();
    void cutsACarelessPaste();
    void escapeClears();
    void clearButton();
    void arrowDownGoesToTheTable();
    void menuItems();
    void menuByKeys();
    void menuByMouse();
    void menuUnderRegex();
    void recentSearches();
    void promptFollowsOtherWindows();
    void helpByKeyAndMenu();
    void questionMarkIsText();
    void chipTellsWhereIsSearched();
    void helpByMouse();
    void examplesFindSomething_data();
    void examplesFindSomething();
    void showsProblems();
    void markFollowsTheTheme();
};

void SearchFieldTest::init()
{
    for (const QString &key : {u"SearchState"_s, u"SearchStateMatchCase"_s, u"SearchStateRegex"_s})
        UserDefaults::standard().removeObjectForKey(key);
    RecentSearches::clear();
}

void SearchFieldTest::tellsOfEveryKeystroke()
{
    FieldWindow window;
    QVERIFY(window.isReady());
    QTest::keyClicks(window.field, u"abc"_s);
    QCOMPARE(window.searches.size(), 3);
    QTest::keyClick(window.field, Qt::Key_Backspace);
    QCOMPARE(window.searches.size(), 4);
    QCOMPARE(window.field->stringValue(), u"ab"_s);
    QTest::keyClick(window.field, Qt::Key_Left);
    QCOMPARE(window.searches.size(), 4);
    QCOMPARE(window.settings.size(), 0);
}

void SearchFieldTest::settingTheValueTellsNothing()
{
    FieldWindow window;
    window.field->setStringValue(u"ab"_s);
    QCOMPARE(window.searches.size(), 0);
    QCOMPARE(window.field->stringValue(), u"ab"_s);
    window.field->setProperty("stringValue", u"?"_s);
    QCOMPARE(window.field->text(), u"?"_s);
    QVERIFY(!window.sheet());
}

void SearchFieldTest::cutsACarelessPaste()
{
    FieldWindow window;
    QVERIFY(window.isReady());
    QApplication::clipboard()->setText(QString(50'000'000, u'x'));
    QTest::keyClick(window.field, Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(window.field->stringValue().size(), 10'000);
    QCOMPARE(window.searches.size(), 1);
    QApplication::clipboard()->clear();
}

void SearchFieldTest::escapeClears()
{
    FieldWindow window;
    QVERIFY(window.isReady());
    QTest::keyClicks(window.field, u"ab"_s);
    QTest::keyClick(window.field, Qt::Key_Escape);
    QCOMPARE(window.field->text(), QString());
    QCOMPARE(window.searches.size(), 3);
    QCOMPARE(window.keysLeft, QString());
    QTest::keyClick(window.field, Qt::Key_Escape);
    QCOMPARE(window.searches.size(), 3);
    QCOMPARE(window.keysLeft, u"\x1b"_s); // the window may want it
}

void SearchFieldTest::clearButton()
{
    FieldWindow window;
    QVERIFY(window.isReady());
    QVERIFY(!window.button(u"Clear search"_s));
    QTest::keyClicks(window.field, u"ab"_s);
    QToolButton *clear = window.button(u"Clear search"_s);
    QVERIFY(clear);
    QTest::mouseClick(clear, Qt::LeftButton);
    QCOMPARE(window.field->text(), QString());
    QCOMPARE(window.searches.size(), 3);
    QVERIFY(!window.button(u"Clear search"_s));
    QVERIFY(window.field->hasFocus());
}

void SearchFieldTest::arrowDownGoesToTheTable()
{
    FieldWindow window;
    QVERIFY(window.isReady());
    QTest::keyClicks(window.field, u"ab"_s);
    QTest::keyClick(window.field, Qt::Key_Down);
    QCOMPARE(window.leaves.size(), 1);
    QCOMPARE(RecentSearches::texts(), QStringList {u"ab"_s});
}

void SearchFieldTest::menuItems()
{
    FieldWindow window;
    QCOMPARE(window.shownItems(),
             u"All Name Unicode Category Subcategory Script Decompose Anchors Production Alternate Name "
             "Accents Description -- Match Case Regex --"_s);
    QList<int> tags;
    for (const QAction *action : window.field->searchMenu()->actions()) {
        tags += action->data().toInt();
        QVERIFY(action->shortcut().isEmpty());
    }
    QCOMPARE(tags,
             (QList<int> {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 0, 2001, 2002, 0, 1000, 1000, 1001, 1002}));
    QVERIFY(window.item(u"Unicode"_s)->toolTip().contains(u"0041-005A"_s));
    QCOMPARE(window.item(u"Unicode"_s)->whatsThis(), window.item(u"Unicode"_s)->toolTip());
}

void SearchFieldTest::menuByKeys()
{
    FieldWindow window;
    QVERIFY(window.isReady());
    QTest::keyClick(window.field, Qt::Key_Down, Qt::AltModifier);
    QVERIFY(window.field->searchMenu()->isVisible());
    for (int i = 0; i < 2; ++i)
        QTest::keyClick(window.field->searchMenu(), Qt::Key_Down);
    QVERIFY2(window.statusTip.startsWith(u"Matches a part of the name."_s), qPrintable(window.statusTip));
    QTest::keyClick(window.field->searchMenu(), Qt::Key_Return);
    QCOMPARE(window.statusTip, QString());
    QCOMPARE(UserDefaults::standard().integerForKey(u"SearchState"_s), 2);
    QCOMPARE(window.field->placeholderText(), u"Search Name"_s);
    QCOMPARE(window.searches.size(), 1);
    QCOMPARE(window.settings.size(), 1);
    // The mode that is set already.
    window.field->searchMode(2);
    QCOMPARE(window.searches.size(), 1);
    QTest::keyClick(window.field, Qt::Key_Down, Qt::AltModifier);
    QVERIFY(window.shownItems().startsWith(u"All Name* Unicode "_s));
    QTest::keyClick(window.field->searchMenu(), Qt::Key_Escape);
    QCOMPARE(window.searches.size(), 1);
}

void SearchFieldTest::menuByMouse()
{
    FieldWindow window;
    QVERIFY(window.isReady());
    QToolButton *magnifier = window.button(u"Search options"_s);
    QVERIFY(magnifier);
    QTest::mouseClick(magnifier, Qt::LeftButton);
    QMenu *menu = window.field->searchMenu();
    QVERIFY(menu->isVisible());
    const QRect place = menu->actionGeometry(window.item(u"Match Case"_s));
    QTest::mouseClick(menu, Qt::LeftButton, {}, place.center());
    QVERIFY(SearchSettings::current().matchCase);
    QCOMPARE(window.searches.size(), 1);
}

void SearchFieldTest::menuUnderRegex()
{
    FieldWindow window;
    window.field->searchMode(4);
    window.field->searchMode(SearchMenu::regexTag);
    QCOMPARE(window.field->placeholderText(), u"Search Name by Regex"_s);
    QVERIFY(!window.field->validateMenuItem(window.item(u"Category"_s)));
    QVERIFY(window.item(u"Category"_s)->isChecked());
    QVERIFY(!window.field->validateMenuItem(window.item(u"Match Case"_s)));
    QVERIFY(window.field->validateMenuItem(window.item(u"Regex"_s)));
    QVERIFY(window.item(u"Regex"_s)->isChecked());
}

void SearchFieldTest::recentSearches()
{
    FieldWindow window;
    QVERIFY(window.isReady());
    for (const QString &text : {u"first"_s, u"a&b"_s}) {
        window.field->setStringValue(text);
        QTest::keyClick(window.field, Qt::Key_Return);
    }
    window.field->clearSearch();
    window.searches.clear();
    window.field->showSearchMenu();
    QVERIFY2(window.shownItems().endsWith(u"Regex -- -- (Recent Searches) a&&b first Clear -- How to Search…"_s),
             qPrintable(window.shownItems()));
    window.item(u"a&&b"_s)->trigger();
    QCOMPARE(window.field->stringValue(), u"a&b"_s);
    QCOMPARE(window.searches.size(), 1);
    QCOMPARE(RecentSearches::texts(), (QStringList {u"a&b"_s, u"first"_s}));
    window.field->searchMenu()->close();
    window.field->showSearchMenu();
    window.item(u"Clear"_s)->trigger();
    window.field->searchMenu()->close();
    window.field->showSearchMenu();
    QVERIFY(window.shownItems().endsWith(u"Regex -- -- How to Search…"_s));
    QCOMPARE(window.searches.size(), 1);
}

void SearchFieldTest::promptFollowsOtherWindows()
{
    FieldWindow window;
    FieldWindow other;
    QCOMPARE(other.field->placeholderText(), u"Search All"_s);
    window.field->searchMode(6);
    QCOMPARE(other.field->placeholderText(), u"Search Script"_s);
    QCOMPARE(other.searches.size(), 0);
}

void SearchFieldTest::helpByKeyAndMenu()
{
    FieldWindow window;
    QVERIFY(window.isReady());
    QTest::keyClicks(window.field, u"x"_s);
    QTest::keyClick(window.field, Qt::Key_F1);
    QVERIFY(window.sheet() && window.sheet()->isVisible());
    QTest::keyClick(window.sheet(), Qt::Key_Escape);
    QTRY_VERIFY(!window.sheet());
    QCOMPARE(window.field->text(), u"x"_s); // looking something up takes nothing away

    QVERIFY(!window.item(u"How to Search…"_s)); // the menu as it is defined, until somebody looks
    window.field->showSearchMenu();
    QVERIFY(window.item(u"How to Search…"_s));
    window.field->searchMenu()->setActiveAction(window.item(u"How to Search…"_s));
    QTest::keyClick(window.field->searchMenu(), Qt::Key_Return);
    QTRY_VERIFY(window.sheet());
    auto *list = window.sheet()->findChild<QTreeWidget *>();
    QTRY_VERIFY(list->hasFocus());
    for (int i = 0; i < 4; ++i)
        QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Return);
    QTRY_VERIFY(!window.sheet());
    QCOMPARE(window.field->text(), u"0410-042F"_s);
    QCOMPARE(SearchSettings::current(), (SearchSettings {3, false, false}));
    QCOMPARE(window.searches.size(), 2);
}

void SearchFieldTest::questionMarkIsText()
{
    FieldWindow window;
    QVERIFY(window.isReady());
    QTest::keyClicks(window.field, u"?"_s);
    QCOMPARE(window.field->text(), u"?"_s);
    QVERIFY(!window.sheet());
    QCOMPARE(window.searches.size(), 1);
}

void SearchFieldTest::chipTellsWhereIsSearched()
{
    FieldWindow window;
    QVERIFY(window.isReady());
    auto *chip = window.field->findChild<QToolButton *>(u"searchChip"_s);
    QVERIFY(chip && !chip->isVisible());
    QTest::keyClicks(window.field, u"ab"_s);
    for (const auto &[tag, words] : {std::pair(12, u"Description"_s), {SearchMenu::matchCaseTag,
                                                                       u"Description, Match Case"_s},
                                     {SearchMenu::regexTag, u"Name, Regex"_s}}) {
        window.field->searchMode(tag);
        QCOMPARE(chip->text(), words);
        QVERIFY(chip->isVisible() && chip->accessibleName().contains(words));
        // Beside the text, which begins behind it.
        QVERIFY(window.field->rect().contains(chip->geometry()));
        QVERIFY(window.field->textMargins().left() >= chip->width());
    }
    window.searches.clear();
    QTest::mouseClick(chip, Qt::LeftButton);
    QVERIFY(!chip->isVisible());
    QCOMPARE(window.field->textMargins().left(), 0);
    QCOMPARE(SearchSettings::current(), (SearchSettings {1, false, false}));
    QCOMPARE(window.field->text(), u"ab"_s);
    QCOMPARE(window.searches.size(), 1);
    // By keys: Backspace once nothing else is left to take away.
    window.field->searchMode(4);
    window.field->setFocus();
    for (int i = 0; i < 2; ++i)
        QTest::keyClick(window.field, Qt::Key_Backspace);
    QVERIFY(chip->isVisible());
    QTest::keyClick(window.field, Qt::Key_Backspace);
    QVERIFY(!chip->isVisible());
}

void SearchFieldTest::helpByMouse()
{
    FieldWindow window;
    QVERIFY(window.isReady());
    window.field->showHelp();
    auto *list = window.sheet()->findChild<QTreeWidget *>();
    const int last = list->topLevelItemCount() - 1;
    list->scrollToItem(list->topLevelItem(last));
    const QPoint place = list->visualItemRect(list->topLevelItem(last)).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
    QTRY_VERIFY(!window.sheet());
    QCOMPARE(window.field->text(), SearchExamples::all().last().text);
    QVERIFY(SearchSettings::current().regex);
}

void SearchFieldTest::examplesFindSomething_data()
{
    QTest::addColumn<int>("number");
    const QList<SearchExample> all = SearchExamples::all();
    for (int i = 0; i < all.size(); ++i)
        QTest::addRow("%s: %s", qPrintable(all.at(i).place()), qPrintable(all.at(i).text)) << i;
}

void SearchFieldTest::examplesFindSomething()
{
    QFETCH(int, number);
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

void SearchFieldTest::showsProblems()
{
    FieldWindow window;
    QVERIFY(window.isReady());
    const QColor plain = window.field->palette().color(QPalette::Base);
    QTest::keyClicks(window.field, u"a"_s);
    const QImage before = window.field->grab().toImage();
    window.field->setProblem(someProblem());
    QVERIFY(window.field->palette().color(QPalette::Base) != plain);
    QVERIFY(window.field->grab().toImage() != before);
    QVERIFY(window.field->toolTip().contains(u"Not &lt;b&gt;understood"_s));
    QVERIFY(window.field->accessibleDescription().contains(u"Not <b>understood</b>."_s));
    QVERIFY(window.button(u"Why nothing is searched"_s));
    // The reason shows itself when typing pauses.
    QVERIFY(!window.findChild<ErrorBubble *>());
    QTRY_VERIFY(window.findChild<ErrorBubble *>());
    QVERIFY(window.findChild<ErrorBubble *>()->text().contains(u"Because."_s));

    window.field->setProblem({});
    QCOMPARE(window.field->palette().color(QPalette::Base), plain);
    QVERIFY(!window.button(u"Why nothing is searched"_s));
    QVERIFY(!window.field->toolTip().contains(u"understood"_s));
    QTest::keyClick(window.field, Qt::Key_Escape);
    QCOMPARE(RecentSearches::texts(), QStringList {u"a"_s});

    // A text that could not be searched for is not offered again.
    QTest::keyClicks(window.field, u"b"_s);
    window.field->setProblem(someProblem());
    QTest::keyClick(window.field, Qt::Key_Return);
    QCOMPARE(RecentSearches::texts(), QStringList {u"a"_s});
}

void SearchFieldTest::markFollowsTheTheme()
{
    const QPalette light = QApplication::palette();
    FieldWindow window;
    window.field->setProblem(someProblem());
    const QColor lightMark = window.field->palette().color(QPalette::Base);
    QVERIFY(lightMark.lightness() > 160);
    QPalette dark = light;
    dark.setColor(QPalette::Base, QColor(30, 30, 30));
    dark.setColor(QPalette::Text, Qt::white);
    QApplication::setPalette(dark);
    QCoreApplication::processEvents();
    const QColor darkMark = window.field->palette().color(QPalette::Base);
    const QColor text = window.field->palette().color(QPalette::Text);
    QApplication::setPalette(light);
    QCoreApplication::processEvents();
    QVERIFY2(darkMark.lightness() < 100, qPrintable(darkMark.name()));
    QCOMPARE(text, QColor(Qt::white));
    QVERIFY(darkMark.red() > darkMark.green());
    QCOMPARE(window.field->palette().color(QPalette::Base), lightMark);
}

RUNEBOOK_TEST_MAIN(SearchFieldTest)
#include "SearchFieldTest.moc"
