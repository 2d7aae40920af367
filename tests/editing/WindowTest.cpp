#include "editing/fields/VocabularyComboBox.h"
#include "editing/replace/VXFindReplaceWindowController.h"
#include "editing/search/SearchFilter.h"
#include "editing/window/EmptyTable.h"
#include "editing/window/VXMenuButton.h"
#include "platform/StandardFolders.h"
#include "tests/editing/Windows.h"

using namespace runebook;

/// The document window as a user has it: searches, menus, notices.
class WindowTest : public WindowFixture
{
    Q_OBJECT
private Q_SLOTS:
    void init() { openFive(); }
    void cleanup() { closeWindow(); }

    void searchNarrowsTheTableWithEveryKey()
    {
        VXSearchField *search = m_window->searchField();
        QTest::keyClick(m_window.get(), Qt::Key_F, Qt::ControlModifier);
        QTRY_VERIFY(search->hasFocus());
        QTest::keyClicks(search, u"a"_s);
        QCOMPARE(namesOf(shown()), u"A a.sc gravecomb"_s);
        QCOMPARE(m_window->subtitle(), u"3/5 infos"_s);
        QTest::keyClicks(search, u"."_s);
        QCOMPARE(namesOf(shown()), u"a.sc"_s);
        QVERIFY(!list()->draggingEnabled());
        typeKeys(search, u"<Backspace><Backspace>"_s);
        QCOMPARE(m_window->subtitle(), u"5 infos"_s);
        QVERIFY(list()->draggingEnabled());
        search->insert(u"ä"_s);
        QCOMPARE(namesOf(shown()), QString());
        QVERIFY(!m_document->isDocumentEdited());
    }

    void oneKeyIsToldOfOnce()
    {
        QSignalSpy told(m_window.get(), &VXWindowController::stateChanged);
        for (const char *key : {"a", ".", "x"}) {
            select({0});
            QCoreApplication::processEvents();
            told.clear();
            QTest::keyClicks(m_window->searchField(), QString::fromLatin1(key));
            QCoreApplication::processEvents();
            QCOMPARE(told.size(), 1); // menus are validated and the title is made with it
        }
    }

    /// Menus and title follow once in a turn; whoever opens a menu or presses a key does not wait for that.
    void changesAreToldOfTogether()
    {
        m_window->activateWindow();
        table()->setFocus();
        select({});
        QCoreApplication::processEvents();
        const QAction *duplicate = command(u"Duplicate"_s);
        QVERIFY(!duplicate->isEnabled());
        QSignalSpy told(m_window.get(), &VXWindowController::stateChanged);
        select({0});
        info(0)->setScript(u"greek"_s);
        m_document->flushChanges();
        select({0, 1});
        QCOMPARE(told.size(), 0);
        QCoreApplication::processEvents();
        QCOMPARE(told.size(), 1);
        QVERIFY(duplicate->isEnabled() && m_window->isWindowModified());
        select({});
        QTest::keyClick(table(), Qt::Key_D, Qt::ControlModifier);
        QCOMPARE(list()->countOfArrangedObjects(), 5);
        select({0});
        QTest::keyClick(table(), Qt::Key_D, Qt::ControlModifier);
        QCOMPARE(list()->countOfArrangedObjects(), 6);
        QCoreApplication::processEvents();
        select({});
        Q_EMIT qobject_cast<QMenu *>(duplicate->associatedObjects().value(0))->aboutToShow();
        QVERIFY(!duplicate->isEnabled());
    }

    void typingGoesOnWhileAnExpressionIsLookedFor()
    {
        fill(*m_document, numbered(120'000, u"glyph"_s));
        UserDefaults::standard().setObjectForKey(true, u"SearchStateRegex"_s);
        VXSearchField *search = m_window->searchField();
        search->setFocus();
        QTest::keyClicks(search, u"g(l|m)+(y|z)+p.*9"_s);
        QVERIFY(m_window->isFiltering());
        QCOMPARE(list()->countOfArrangedObjects(), 120'000); // until all are found
        QTest::keyClicks(search, u"9$"_s);
        QTRY_VERIFY(!m_window->isFiltering());
        QVERIFY2(m_window->subtitle().startsWith(u"1200/120000 "_s), qPrintable(m_window->subtitle()));
        QCOMPARE(m_window->statusBar()->findChild<QLabel *>()->text(), u"1,200/120,000 infos"_s);
        QCOMPARE(list()->arrangedObjectAtIndex(1)->name(), u"glyph199"_s);
        // A change begins the search anew, Escape ends it.
        QTest::keyClick(search, Qt::Key_Backspace);
        info(0)->setName(u"glyph-99"_s);
        QTRY_VERIFY(!m_window->isFiltering());
        QCOMPARE(list()->arrangedObjectAtIndex(0)->name(), u"glyph-99"_s);
        QTest::keyClicks(search, u"9"_s);
        QVERIFY(m_window->isFiltering());
        QTest::keyClick(search, Qt::Key_Escape);
        QVERIFY(!m_window->isFiltering());
        QCOMPARE(list()->countOfArrangedObjects(), 120'000);
    }

    void f6GoesRoundTheAreas()
    {
        m_window->setProblemsShown(true);
        select({0});
        lineOf(GlyphField::SortName)->setFocus(); // where the pane had it last
        table()->setFocus();
        const auto press = [&](Qt::KeyboardModifiers modifiers) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_F6, modifiers);
            return QApplication::focusWidget();
        };
        QWidget *const pane = lineOf(GlyphField::SortName);
        QWidget *const search = m_window->searchField();
        QCOMPARE(press({}), pane);
        QVERIFY(m_window->problemsPane()->isAncestorOf(press({})));
        QCOMPARE(press({}), search);
        QCOMPARE(press({}), static_cast<QWidget *>(table()));
        QCOMPARE(press(Qt::ShiftModifier), search);
        QVERIFY(m_window->problemsPane()->isAncestorOf(press(Qt::ShiftModifier)));
        QCOMPARE(press(Qt::ShiftModifier), pane);
        // What is hidden or has nothing to offer is passed over.
        m_window->setProblemsShown(false);
        select({});
        table()->setFocus();
        QCOMPARE(press({}), search);
    }

    void emptyResultTellsWhereElseSomethingIs()
    {
        info(3)->setDesc(u"A Letter no more"_s);
        UserDefaults::standard().setObjectForKey(int(SearchMode::Script), u"SearchState"_s);
        VXSearchField *search = m_window->searchField();
        search->setFocus();
        QTest::keyClicks(search, u"letter"_s);
        const auto *notice = m_window->findChild<EmptyTable *>();
        QTRY_VERIFY(notice->isVisible());
        QCOMPARE(notice->notice().title, u"Nothing found for “letter” in Script"_s);
        QTRY_VERIFY(button(notice, u"Category: 3"_s));
        QVERIFY(button(notice, u"Description: 1"_s) && !button(notice, u"Name: 0"_s));
        typeKeys(button(notice, u"Category: 3"_s), u"<Space>"_s);
        QCOMPARE(namesOf(shown()), u"A B a.sc"_s);
        QTRY_VERIFY(!notice->isVisible() && search->hasFocus());
        typeKeys(search, u"<Ctrl+A>?"_s);
        QTRY_VERIFY(notice->isVisible() && notice->notice().hint.contains(u"003F"_s));
        QTest::keyClick(search, Qt::Key_Escape);
        QTRY_VERIFY(!notice->isVisible());
        QCOMPARE(shown().size(), 5u);
    }

    void emptyDocumentTellsHowToBegin()
    {
        makeDocumentsWithWindows();
        const auto noticeOf = [](const Document *document) {
            return windowOf(document)->findChild<EmptyTable *>();
        };
        Document *first = controller().openUntitledDocumentAndDisplay(true);
        first->setPlaceholder(true);
        StandardFolders::setProgramData(QDir::tempPath());
        button(noticeOf(first), u"Open Sample"_s)->click();
        answer(u"OK"_s); // there is none
        StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources"));
        button(noticeOf(first), u"Open Sample"_s)->click();
        QCOMPARE(controller().documentList().size(), 1);
        Document *sample = controller().documentList().front();
        QVERIFY(sample->fileURL().isEmpty() && !sample->isDocumentEdited());
        QVERIFY(windowOf(sample)->infolistController()->countOfArrangedObjects() > 1000);
        Document *second = controller().openUntitledDocumentAndDisplay(true);
        button(noticeOf(second), u"Add Glyph"_s)->click();
        QTRY_VERIFY(!noticeOf(second)->isVisible());
        second->undoManager()->undo();
        QTRY_VERIFY(noticeOf(second)->isVisible());
        button(noticeOf(second), u"Open…"_s)->click();
        QVERIFY(windowOf(second)->findChild<QFileDialog *>());
        controller().releaseAll();
        controller().setDocumentFactory({});
        controller().setWindowMaker({});
    }

    void invalidSearchShowsAllAndSaysWhy()
    {
        UserDefaults::standard().setObjectForKey(true, u"SearchStateRegex"_s);
        search(u"(a"_s);
        QCOMPARE(shown().size(), 5u);
        QVERIFY(!m_window->searchField()->toolTip().isEmpty());
        search(u"[AB]"_s);
        QCOMPARE(namesOf(shown()), u"A B"_s);
    }

    void glyphButtonOffersTheCommands()
    {
        const auto *button = m_window->findChild<VXMenuButton *>();
        QVERIFY(button && button->isVisible());
        const QMenu *menu = button->itemMenu();
        select({0});
        const qsizetype place = offersOf(*menu).indexOf(u"Name to Alternate Names"_s);
        QVERIFY(place >= 0);
        menu->actions().at(place)->trigger();
        QCOMPARE(info(0)->altNames(), QStringList {u"A"_s});
        select({});
        QVERIFY(offersOf(*menu).contains(u"(Name to Alternate Names)"_s));
    }

    void replacesInWhatIsShownWhenNothingIsSelected()
    {
        search(u"."_s);
        for (const bool isSelected : {false, true}) {
            select(isSelected ? IndexSet {0} : IndexSet {});
            QTimer::singleShot(0, this, [this] {
                auto *panel = m_window->findChild<VXFindReplaceWindowController *>();
                panel->findChild<QLineEdit *>(u"findField"_s)->setText(u"a"_s);
                panel->findChild<QLineEdit *>(u"replaceField"_s)->setText(u"b"_s);
                panel->selectItemWithTag(FindReplace::Name);
                panel->doReplace();
            });
            m_window->performFindPanelAction(12);
            QTRY_COMPARE(allNames(), u"A B b.sc one gravecomb"_s);
            undo();
        }
    }

    void replacesInTheCurrentColumnFirst()
    {
        for (const auto &[field, tag] : {std::pair(GlyphField::Production, FindReplace::Production),
                                         {GlyphField::Name, FindReplace::Name},
                                         {GlyphField::Category, FindReplace::Name}}) { // as it was last
            table()->setCurrentIndex(cell(1, field));
            int begins = 0;
            QTimer::singleShot(0, this, [this, &begins] {
                auto *panel = m_window->findChild<VXFindReplaceWindowController *>();
                begins = panel->selectedTag();
                panel->doReplace();
            });
            m_window->performFindPanelAction(12);
            QTRY_COMPARE(begins, int(tag));
            QTRY_VERIFY(!m_window->findChild<VXFindReplaceWindowController *>());
        }
    }

    void undoAndRedoNameTheirSteps()
    {
        select({0});
        m_window->moveNameToAltName();
        QCOMPARE(info(0)->altNames(), QStringList {u"A"_s});
        QVERIFY(command(u"Undo Name to Alternate Names of A"_s));
        command(u"Undo Name to Alternate Names of A"_s)->trigger();
        QVERIFY(command(u"Redo Name to Alternate Names of A"_s)->isEnabled());
        QVERIFY(!command(u"Undo"_s)->isEnabled());
    }

    void namesOfStepsTellWhichRecordsTheyAreOf()
    {
        const auto last = [&] { return stack().undoText(); };
        select({0, 1, 2});
        auto *category =
            qobject_cast<VocabularyComboBox *>(m_window->detailPane()->editorOf(GlyphField::Category));
        category->lineEdit()->setText(u"Mark"_s);
        m_window->commitEditing();
        QCOMPARE(last(), u"Change Category of A and 2 Others"_s);
        m_window->duplicateSelectedInfos();
        QCOMPARE(last(), u"Duplicate A and 2 Others"_s);
        m_window->cut();
        QCOMPARE(last(), u"Cut A.001 and 2 Others"_s);
        m_window->paste();
        QCOMPARE(last(), u"Paste A.001 and 2 Others"_s);
        m_window->moveNameToAltName();
        QCOMPARE(last(), u"Name to Alternate Names of A.001 and 2 Others"_s);
        m_window->delete_();
        QCOMPARE(last(), u"Delete A.001 and 2 Others"_s);
        // Only what changes counts, and one is none too many to be named.
        select({0, 1, 2});
        m_window->commitEditing();
        select({0});
        m_window->delete_();
        QCOMPARE(last(), u"Delete A"_s);
    }

    void commandsAreEnabledOnlyWhenTheyCanAct()
    {
        for (const bool isSelected : {false, true}) {
            select(isSelected ? IndexSet {0, 1} : IndexSet {});
            for (const QString &text :
                 {u"Delete"_s, u"Duplicate"_s, u"Remove…"_s, u"Name to Alternate Names"_s,
                  u"Make Legacy Name"_s, u"Number Sort Names…"_s})
                QVERIFY2(command(text)->isEnabled() == isSelected, qPrintable(text));
        }
        const QAction *character = command(u"Show Code Point in Character Application"_s);
        QVERIFY(!character->isEnabled());
        select({0});
        QVERIFY(command(plain(character->text()))->isEnabled());
    }

    void messagesDoNotCoverEachOther()
    {
        MessageBar bar;
        bar.showMessage(u"first"_s, MessageBar::Stay::ShortTime);
        bar.showMessage(u"at once"_s, MessageBar::Stay::ShortTime);
        bar.showMessage(u"at once"_s, MessageBar::Stay::ShortTime);
        QCOMPARE(bar.text(), u"first\nat once"_s);
        bar.findChild<QToolButton *>()->click();
        QVERIFY(bar.isHidden());
        bar.showMessage(u"not read"_s, MessageBar::Stay::UntilClosed);
        bool isAnswered = false;
        bar.ask(u"Really?"_s, {{u"Yes"_s, [&] { isAnswered = true; }}});
        QCOMPARE(bar.text(), u"not read\nReally?"_s);
        bar.findChild<QPushButton *>()->click();
        QVERIFY(isAnswered);
        QCOMPARE(bar.text(), u"not read"_s);
        bar.showMessage(u"passing"_s, MessageBar::Stay::ShortTime);
        QCOMPARE(bar.text(), u"not read\npassing"_s);
        QVERIFY(QMetaObject::invokeMethod(bar.findChild<QTimer *>(), "timeout"));
        QCOMPARE(bar.text(), u"not read"_s);
        bar.findChild<QToolButton *>()->click();
        QVERIFY(bar.isHidden());
        bar.ask(u"Really?"_s, {{u"Yes"_s, [] {}}});
        bar.showMessage(u"passing"_s, MessageBar::Stay::ShortTime);
        QCOMPARE(bar.text(), u"passing"_s);
    }

    void offersAreInSightFromTheFirst()
    {
        QWidget area;
        area.resize(98, 28); // what a table has before its window is laid out
        EmptyTable table(&area);
        table.showNotice({u"Nothing"_s, {}, {{u"Something"_s, [] {}}}});
        area.resize(800, 600);
        QResizeEvent event(area.size(), {98, 28}); // comes before it is shown, and on a screen no other does
        QApplication::sendEvent(&area, &event);
        QVERIFY(area.rect().contains(table.geometry()));
        QVERIFY(table.height() > 2 * area.findChild<QPushButton *>()->sizeHint().height());
    }

    /// Lists of which one is the present one have dots, not ticks that could be set one by one.
    void oneOfManyIsChosenByADot()
    {
        for (int i = 0; i < 3; ++i) {
            select({i});
            info(i)->setScript(u"greek"_s);
            m_document->undoManager()->setActionName(u"Step %1"_s.arg(i));
            m_document->flushChanges();
            QCoreApplication::processEvents();
        }
        undo();
        controller().addDocument(m_document.get());
        const auto look = [this](const QString &title) {
            QMenu *menu = command(title)->menu();
            menu->popup({});
            QStringList texts;
            QAction *shown = nullptr;
            for (QAction *action : menu->actions()) {
                if (!action->isCheckable())
                    continue;
                texts << (action->isChecked() ? u'[' + action->text() + u']' : action->text());
                shown = action->isChecked() ? action : shown;
                if (!action->actionGroup() || !action->actionGroup()->isExclusive())
                    texts << u"(a tick)"_s;
            }
            if (!shown)
                return texts.join(u'|') + u" (none is marked)"_s;
            QStyleOptionMenuItem option;
            struct Open : QMenu {
                using QMenu::initStyleOption;
            };
            (menu->*(&Open::initStyleOption))(&option, shown);
            menu->close();
            if (option.checkType != QStyleOptionMenuItem::Exclusive)
                texts << u"(drawn as a tick)"_s;
            return texts.join(u'|');
        };
        QCOMPARE(look(u"History"_s), u"Step 2|[Step 1]|Step 0|As Opened"_s);
        QCOMPARE(look(u"Window"_s), u"[%1]"_s.arg(m_document->windowTitle()));
        // Each step of the history leads to the document as it was then.
        const auto go = [this](const QString &step) {
            QMenu *menu = command(u"History"_s)->menu();
            Q_EMIT menu->aboutToShow();
            menu->actions().at(offersOf(*menu).indexOf(step))->trigger();
            return std::count_if(m_document->infos().begin(), m_document->infos().end(),
                                 [](const InfoPtr &each) { return each->script() == "greek"_L1; });
        };
        QCOMPARE(go(u"Step 0"_s), 1);
        QCOMPARE(go(u"Step 2"_s), 3);
        QCOMPARE(go(u"As Opened"_s), 0);
        // What is being typed is a step of its own, and of a long history the near part is shown.
        select({0});
        typeInto(GlyphField::SortName, u"typed"_s);
        Q_EMIT command(u"History"_s)->menu()->aboutToShow();
        QCOMPARE(info(0)->sortName(), u"typed"_s);
        while (stack().index() < 90) {
            const UndoGroup group(m_document->undoManager());
            info(0)->setSortName(QString::number(stack().index()));
        }
        go(u"Earlier…"_s);
        QCOMPARE(stack().index(), 50);
        controller().removeDocument(m_document.get());
    }
};

RUNEBOOK_TEST_MAIN(WindowTest)
#include "WindowTest.moc"
