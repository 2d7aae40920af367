#include "editing/DetailPane.h"
#include "editing/EmptyTable.h"
#include "editing/FieldEditing.h"
#include "editing/GlyphCellDelegate.h"
#include "editing/GlyphColumns.h"
#include "editing/GlyphTableView.h"
#include "editing/PreviewLabel.h"
#include "editing/Problems.h"
#include "editing/ProblemsPane.h"
#include "editing/SearchFilter.h"
#include "editing/SortNumbering.h"
#include "editing/VXMenuButton.h"
#include "editing/VXSearchField.h"
#include "editing/VXValidatingTextField.h"
#include "editing/VXWindowController.h"
#include "editing/VocabularyComboBox.h"
#include "platform/DocumentController.h"
#include "platform/MessageBar.h"
#include "platform/StandardFolders.h"
#include "platform/PlainText.h"
#include "platform/UserDefaults.h"
#include "tests/TestMain.h"

#include <QActionGroup>
#include <QClipboard>
#include <QFileDialog>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStatusBar>
#include <QStyledItemDelegate>
#include <QStyleOptionMenuItem>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolButton>
#include <QToolTip>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

InfoPtr infoNamed(const QString &name, const QString &unicode = {}, const QString &category = {})
{
    InfoPtr info = VXGlyphInfo::init();
    info->setName(name);
    if (!unicode.isEmpty())
        info->setUnicode(unicode);
    if (!category.isEmpty())
        info->setCategory(category);
    return info;
}

QString namesOf(const InfoList &infos)
{
    QStringList names;
    for (const InfoPtr &info : infos)
        names << info->name();
    return names.join(u' ');
}

/// The command of a menu by its text, wherever it stands.
QAction *commandOf(const QMainWindow &window, const QString &text)
{
    const QList<QAction *> actions = window.findChildren<QAction *>();
    for (QAction *action : actions) {
        if (QString(action->text()).remove(u'&') == text)
            return action;
    }
    return nullptr;
}

/// Answers all questions of the table: names are drawn by it, one cell of categories has a widget.
class QuestionsDelegate : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE QObject *tableColumnInTableViewDataCellForRow(int column, QObject *, int)
    {
        asked << u"column"_s;
        return column == columnOfField(GlyphField::Name) ? &m_cell : nullptr;
    }
    Q_INVOKABLE QObject *tableViewDataCellForTableColumnRow(QObject *, int, int)
    {
        asked << u"cell"_s;
        return nullptr;
    }
    Q_INVOKABLE void tableViewWillDisplayCellForTableColumnRow(QObject *, QObject *cell, int, int)
    {
        asked << u"display"_s;
        painted += cell == &m_cell;
    }
    Q_INVOKABLE bool tableViewShouldEditTableColumnRow(QObject *, int, int)
    {
        asked << u"edit"_s;
        return false;
    }
    Q_INVOKABLE QObject *viewAtColumnRowMakeIfNecessary(int column, int row, bool)
    {
        asked << u"view"_s;
        return column == columnOfField(GlyphField::Category) && row == 1 ? view.data() : nullptr;
    }
    Q_INVOKABLE bool tableViewShouldShowCellExpansionForTableColumnRow(QObject *, int, int)
    {
        asked << u"expansion"_s;
        return true;
    }
    QSet<QString> asked;
    int painted = 0;
    QPointer<QLabel> view = new QLabel;

private:
    QStyledItemDelegate m_cell;
};

} // namespace

/// The document window as a user has it: shown, driven by keys, clicks and menu commands.
class WindowTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        UserDefaults::standard().removeObjectForKey(u"SearchState"_s);
        UserDefaults::standard().removeObjectForKey(u"SearchStateRegex"_s);
        UserDefaults::standard().removeObjectForKey(u"SearchStateMatchCase"_s);
        UserDefaults::standard().removeObjectForKey(u"TableHeaderState"_s);
        m_document = std::make_unique<VXDocument>();
        m_document->setInfos(
            {infoNamed(u"A"_s, u"0041"_s, u"Letter"_s), infoNamed(u"B"_s, u"0042"_s, u"Letter"_s),
             infoNamed(u"a.sc"_s, {}, u"Letter"_s), infoNamed(u"one"_s, u"0031"_s, u"Number"_s),
             infoNamed(u"gravecomb"_s, u"0300"_s, u"Mark"_s)});
        m_document->updateChangeCount(Document::ChangeCleared);
        m_window = std::make_unique<VXWindowController>(*m_document);
        m_document->setWindowController(m_window.get());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }

    void cleanup()
    {
        m_window.reset();
        m_document.reset();
    }

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
        QTest::keyClick(search, Qt::Key_Backspace);
        QTest::keyClick(search, Qt::Key_Backspace);
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
            QCoreApplication::processEvents();
            told.clear();
            select({0});
            told.clear();
            QTest::keyClicks(m_window->searchField(), QString::fromLatin1(key));
            QCoreApplication::processEvents();
            QCOMPARE(told.size(), 1); // menus are validated and the title is made with it
        }
    }

    void typingGoesOnWhileAnExpressionIsLookedFor()
    {
        InfoList infos;
        for (int i = 0; i < 120'000; ++i)
            infos.push_back(infoNamed(u"glyph%1"_s.arg(i)));
        m_document->setInfos(infos);
        m_document->updateChangeCount(Document::ChangeCleared);
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
        m_document->objectInInfosAtIndex(0)->setName(u"glyph-99"_s);
        QTRY_VERIFY(!m_window->isFiltering());
        QCOMPARE(list()->arrangedObjectAtIndex(0)->name(), u"glyph-99"_s);
        QTest::keyClicks(search, u"9"_s);
        QVERIFY(m_window->isFiltering());
        QTest::keyClick(search, Qt::Key_Escape);
        QVERIFY(!m_window->isFiltering());
        QCOMPARE(list()->countOfArrangedObjects(), 120'000);
    }

    void aBadNameLeavesTheFieldsWhereTheyAre()
    {
        auto *pane = m_window->findChild<DetailPane *>();
        auto *name = pane->findChild<QLineEdit *>(u"name"_s);
        list()->setSelectionIndexes({0});
        const int usual = name->parentWidget()->minimumSizeHint().width();
        m_document->objectInInfosAtIndex(0)->setName(u"a b"_s);
        QCoreApplication::processEvents();
        QCOMPARE(name->text(), u"a b"_s);
        QVERIFY(name->textMargins().right() > 0); // what is wrong stands there
        QCOMPARE(name->parentWidget()->minimumSizeHint().width(), usual);
    }

    void f6GoesRoundTheAreas()
    {
        m_window->setProblemsShown(true);
        select({0});
        lineOf(GlyphField::SortName)->setFocus(); // where the pane had it last
        m_window->tableView()->setFocus();
        const auto press = [&](Qt::KeyboardModifiers modifiers) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_F6, modifiers);
            return QApplication::focusWidget();
        };
        QWidget *const pane = lineOf(GlyphField::SortName);
        QWidget *const search = m_window->searchField();
        QCOMPARE(press({}), pane);
        QVERIFY(m_window->problemsPane()->isAncestorOf(press({})));
        QCOMPARE(press({}), search);
        QCOMPARE(press({}), static_cast<QWidget *>(m_window->tableView()));
        QCOMPARE(press(Qt::ShiftModifier), search);
        QVERIFY(m_window->problemsPane()->isAncestorOf(press(Qt::ShiftModifier)));
        QCOMPARE(press(Qt::ShiftModifier), pane);
        // What is hidden or has nothing to offer is passed over.
        m_window->setProblemsShown(false);
        select({});
        m_window->tableView()->setFocus();
        QCOMPARE(press({}), search);
    }

    void rowsHaveAMenuOfTheirCommands()
    {
        const auto texts = [&] {
            QContextMenuEvent event(QContextMenuEvent::Keyboard, {5, 5}, m_window->mapToGlobal(QPoint(5, 5)));
            QApplication::sendEvent(m_window->tableView()->viewport(), &event);
            QStringList shown;
            auto *menu = m_window->findChild<QMenu *>(u"rowMenu"_s);
            if (!menu || !menu->isVisible())
                return QStringList {u"(no menu)"_s};
            for (const QAction *action : menu->actions())
                shown << QString(action->text()).remove(u'&');
            delete menu;
            return shown;
        };
        QApplication::clipboard()->setText(u"x"_s);
        select({0});
        const QStringList one = texts();
        for (const QString &text : {u"Cut"_s, u"Copy"_s, u"Paste"_s, u"Delete"_s, u"Duplicate"_s,
                                    u"Select Records with the Same"_s, u"Find and Replace…"_s, u"Remove…"_s,
                                    u"Number Sort Names…"_s, u"Show Code Point in Character Application"_s})
            QVERIFY2(one.contains(text), qPrintable(text + u" is not in "_s + one.join(u'|')));
        QVERIFY(!one.contains(u"Undo"_s));
        select({0, 1});
        QVERIFY(!texts().contains(u"Show Code Point in Character Application"_s));
        select({});
        QVERIFY(!texts().contains(u"Cut"_s));
        QVERIFY(texts().contains(u"Add Glyph"_s));
    }

    void aCutCellShowsItsTextInATip()
    {
        GlyphTableView *table = m_window->tableView();
        const QString text = u"<b>very</b> long description "_s.repeated(20);
        m_document->objectInInfosAtIndex(0)->setDesc(text);
        m_document->flushChanges();
        const auto tipAt = [&](int row, GlyphField field) {
            const QModelIndex index = list()->index(row, columnOfField(field));
            table->scrollTo(index);
            const QPoint place = table->visualRect(index).intersected(table->viewport()->rect()).center();
            QHelpEvent event(QEvent::ToolTip, place, table->viewport()->mapToGlobal(place));
            QApplication::sendEvent(table->viewport(), &event);
            return QToolTip::isVisible() ? QToolTip::text() : QString();
        };
        QVERIFY(tipAt(0, GlyphField::Desc).contains(u"&lt;b&gt;very"_s));
        QToolTip::hideText();
        QTRY_VERIFY(!QToolTip::isVisible());
        QCOMPARE(tipAt(0, GlyphField::Name), QString());
    }

    void previewIsSeenWhole()
    {
        PreviewLabel *label = m_window->previewLabel();
        const auto show = [&](const QString &text) {
            label->setFormattedText(VXDocument::formatInfoStringFont(text, QFont(u"DejaVu Sans"_s, 100)));
        };
        show(u"\u0301"_s); // a mark alone stands on a dotted circle
        QCOMPARE(label->picture().pieces().front().text, u"\u25CC\u0301"_s);
        show(u"é = e + \u0301"_s);
        const auto &pieces = label->picture().pieces();
        QCOMPARE(pieces.size(), 5u);
        QCOMPARE(pieces.back().text, u"\u25CC\u0301"_s);
        for (const auto &[text, count] : {std::pair(u"é = e + \u0301"_s, 5), {u"J = \u0616j + ff\u030A + W"_s, 7}}) {
            show(text);
            QCOMPARE(int(label->picture().pieces().size()), count);
            for (std::size_t i = 1; i < label->picture().pieces().size(); ++i) {
                const QRectF &left = label->picture().pieces()[i - 1].ink;
                QVERIFY2(left.right() + 4 <= label->picture().pieces()[i].ink.left(), qPrintable(text));
            }
        }
        // Nothing is painted beyond the edge, whatever stands there.
        for (const QString &text : {u"Ǻ"_s, u"\uFDFA"_s, u"A\u0302\u0302\u0302\u0302\u0323\u0323\u0323"_s,
                                    u"\U00012031"_s, QString(40, u'W')}) {
            show(text);
            const QRectF bounds = label->picture().bounds();
            for (const PreviewPicture::Piece &piece : label->picture().pieces())
                QVERIFY2(bounds.adjusted(-0.01, -0.01, 0.01, 0.01).contains(piece.ink), qPrintable(text));
            const QImage image = label->grab().toImage();
            const QRgb ground = image.pixel(image.width() / 2, 4);
            for (int x = 10; x < image.width() - 10; ++x) {
                QCOMPARE(image.pixel(x, 4), ground);
                QCOMPARE(image.pixel(x, image.height() - 5), ground);
            }
        }
        show(u"\U000F1234"_s); // a private one
        QVERIFY(label->picture().isNothingThere());
        QCOMPARE(label->remark(), u"no installed font has U+F1234"_s);
        show(u"\u25A1"_s); // a real box
        QVERIFY(label->remark().isNull() && !label->picture().isNothingThere());
    }

    void everyFieldIsInSightAt800Pixels()
    {
        m_window->resize(1240, 752); // what is left of them between frame and panel
        select({0});
        QCoreApplication::processEvents();
        const QWidget *desc = m_window->detailPane()->editorOf(GlyphField::Desc);
        QCOMPARE(desc->visibleRegion().boundingRect().height(), desc->height());
        QVERIFY(m_window->previewLabel()->height() >= 84);
    }

    void emptyResultTellsWhereElseSomethingIs()
    {
        m_document->objectInInfosAtIndex(3)->setDesc(u"A Letter no more"_s);
        UserDefaults::standard().setObjectForKey(int(SearchMode::Script), u"SearchState"_s);
        VXSearchField *search = m_window->searchField();
        search->setFocus();
        QTest::keyClicks(search, u"letter"_s);
        const auto *notice = m_window->findChild<EmptyTable *>();
        QVERIFY(notice->isVisible());
        QCOMPARE(notice->notice().title, u"Nothing found for “letter” in Script"_s);
        const auto button = [&](const QString &text) -> QPushButton * {
            for (QPushButton *each : notice->findChildren<QPushButton *>()) {
                if (each->isVisible() && each->text() == text)
                    return each;
            }
            return nullptr;
        };
        QTRY_VERIFY(button(u"Category: 3"_s));
        QVERIFY(button(u"Description: 1"_s));
        QVERIFY(!button(u"Name: 0"_s));
        button(u"Category: 3"_s)->setFocus();
        QTest::keyClick(button(u"Category: 3"_s), Qt::Key_Space);
        QCOMPARE(namesOf(shown()), u"A B a.sc"_s);
        QVERIFY(!notice->isVisible() && search->hasFocus());
        search->selectAll();
        QTest::keyClicks(search, u"?"_s);
        QVERIFY(notice->isVisible() && notice->notice().hint.contains(u"003F"_s));
        QTest::keyClick(search, Qt::Key_Escape);
        QVERIFY(!notice->isVisible());
        QCOMPARE(shown().size(), 5u);
    }

    void emptyDocumentTellsHowToBegin()
    {
        StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources"));
        const auto windowOf = [](const Document *document) {
            return qobject_cast<VXWindowController *>(document->windowController());
        };
        DocumentController &controller = DocumentController::shared();
        controller.setDocumentFactory([] { return new VXDocument; });
        controller.setWindowMaker([](Document &document) -> QWidget * {
            auto *window = new VXWindowController(static_cast<VXDocument &>(document));
            window->show();
            return window;
        });
        const auto press = [](VXWindowController *window, const QString &text) {
            for (QPushButton *each : window->findChild<EmptyTable *>()->findChildren<QPushButton *>()) {
                if (QString(each->text()).remove(u'&') == text) {
                    each->click();
                    return true;
                }
            }
            return false;
        };
        Document *first = controller.openUntitledDocumentAndDisplay(true);
        first->setPlaceholder(true);
        QVERIFY(windowOf(first)->findChild<EmptyTable *>()->isVisible());
        QVERIFY(press(windowOf(first), u"Open Sample"_s));
        QCOMPARE(controller.documentList().size(), 1);
        Document *sample = controller.documentList().front();
        QVERIFY(sample->fileURL().isEmpty() && !sample->isDocumentEdited());
        QVERIFY(windowOf(sample)->infolistController()->countOfArrangedObjects() > 1000);
        Document *second = controller.openUntitledDocumentAndDisplay(true);
        QVERIFY(press(windowOf(second), u"Add Glyph"_s));
        QVERIFY(!windowOf(second)->findChild<EmptyTable *>()->isVisible());
        second->undoManager()->undo();
        QTRY_VERIFY(windowOf(second)->findChild<EmptyTable *>()->isVisible());
        QVERIFY(press(windowOf(second), u"Open…"_s));
        QVERIFY(windowOf(second)->findChild<QFileDialog *>());
        controller.releaseAll();
        controller.setDocumentFactory({});
        controller.setWindowMaker({});
    }

    void subtitleTellsOfUnsavedChanges()
    {
        m_document->objectInInfosAtIndex(0)->setCategory(u"Mark"_s);
        QTRY_COMPARE(m_window->subtitle(), u"5 infos - Edited"_s);
        m_window->searchField()->setStringValue(u"gra"_s);
        m_window->filterInfos();
        QCOMPARE(m_window->subtitle(), u"1/5 infos - Edited"_s);
        m_document->undoManager()->undo();
        QTRY_COMPARE(m_window->subtitle(), u"1/5 infos"_s);
        QVERIFY(!m_window->isWindowModified());
    }

    void invalidSearchShowsAllAndSaysWhy()
    {
        UserDefaults::standard().setObjectForKey(true, u"SearchStateRegex"_s);
        m_window->searchField()->setStringValue(u"(a"_s);
        m_window->filterInfos();
        QCOMPARE(shown().size(), 5u);
        QVERIFY(!m_window->searchField()->toolTip().isEmpty());
        m_window->searchField()->setStringValue(u"[AB]"_s);
        m_window->filterInfos();
        QCOMPARE(namesOf(shown()), u"A B"_s);
    }

    void copiedLinesArePastedBehindTheSelectedRecord()
    {
        select({0, 3});
        QTest::keyClick(m_window->tableView(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(),
                 u"\t<glyph unicode=\"0041\" name=\"A\" category=\"Letter\" direction=\"LTR\" />\n"
                 "\t<glyph unicode=\"0031\" name=\"one\" category=\"Number\" direction=\"LTR\" />\n"_s);
        select({1});
        QTest::keyClick(m_window->tableView(), Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(namesOf(m_document->infos()), u"A B A one a.sc one gravecomb"_s);
        QCOMPARE(namesOf(list()->selectedObjects()), u"A one"_s);
        QTest::keyClick(m_window->tableView(), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(namesOf(m_document->infos()), u"A B a.sc one gravecomb"_s);

        select({});
        QApplication::clipboard()->setText(u"no glyph\n  <glyph name=\"pasted\"/>\r\n<glyph\n"_s);
        m_window->paste();
        QCOMPARE(namesOf(m_document->infos()), u"A B a.sc one gravecomb pasted"_s);
        QCOMPARE(m_document->infos().back()->direction(), -2);
    }

    void pasteIntoAFilteredTableCountsInTheWholeList()
    {
        m_window->searchField()->setStringValue(u"one"_s);
        m_window->filterInfos();
        select({0});
        QApplication::clipboard()->setText(u"<glyph name=\"two\"/>"_s);
        m_window->paste();
        QCOMPARE(namesOf(m_document->infos()), u"A B a.sc one two gravecomb"_s);
    }

    void copyOfNothingLeavesTheClipboard()
    {
        QApplication::clipboard()->setText(u"kept"_s);
        select({});
        m_window->copy();
        QCOMPARE(QApplication::clipboard()->text(), u"kept"_s);
        m_window->paste();
        QCOMPARE(m_document->countOfInfos(), 5);
        QVERIFY(!m_document->isDocumentEdited());
    }

    void removalAsksFirst()
    {
        select({1, 2});
        m_window->removeSelectedInfos();
        auto *sheet = m_window->findChild<QMessageBox *>();
        QVERIFY(sheet);
        QCOMPARE(sheet->text(), u"Do you really want to remove all selected entries?"_s);
        QTest::keyClick(sheet, Qt::Key_Escape);
        QCOMPARE(m_document->countOfInfos(), 5);
        QTRY_VERIFY(!m_window->findChild<QMessageBox *>());

        m_window->removeSelectedInfos();
        sheet = m_window->findChild<QMessageBox *>();
        QTest::mouseClick(sheet->defaultButton(), Qt::LeftButton);
        QCOMPARE(namesOf(m_document->infos()), u"A one gravecomb"_s);

        select({0});
        QTest::keyClick(m_window->tableView(), Qt::Key_Delete);
        QCOMPARE(namesOf(m_document->infos()), u"one gravecomb"_s);
        m_document->undoManager()->undo();
        m_document->undoManager()->undo();
        QCOMPARE(namesOf(m_document->infos()), u"A B a.sc one gravecomb"_s);
        QVERIFY(!m_document->isDocumentEdited());
    }

    void typingInAFieldIsNeverLost_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("Return") << u"return"_s;
        QTest::newRow("Tab") << u"tab"_s;
        QTest::newRow("another record is chosen") << u"select"_s;
        QTest::newRow("a script asks the document") << u"commit"_s;
        QTest::newRow("the table is filtered") << u"filter"_s;
    }

    void typingInAFieldIsNeverLost()
    {
        QFETCH(QString, how);
        select({1});
        QLineEdit *field = lineOf(GlyphField::SortName);
        field->setFocus();
        QTest::keyClicks(field, u"b001"_s);
        QCOMPARE(m_document->objectInInfosAtIndex(1)->sortName(), QString());
        if (how == "return"_L1)
            QTest::keyClick(field, Qt::Key_Return);
        else if (how == "tab"_L1)
            QTest::keyClick(field, Qt::Key_Tab);
        else if (how == "select"_L1)
            select({0});
        else if (how == "commit"_L1)
            m_document->commitEditing();
        else
            m_window->filterInfos();
        QCOMPARE(m_document->objectInInfosAtIndex(1)->sortName(), u"b001"_s);
        QCOMPARE(m_document->objectInInfosAtIndex(0)->sortName(), QString());
        m_document->undoManager()->undo();
        QCOMPARE(m_document->objectInInfosAtIndex(1)->sortName(), QString());
        QVERIFY(!m_document->isDocumentEdited());
    }

    void escapeTakesTypingBack()
    {
        select({0});
        QLineEdit *field = lineOf(GlyphField::Production);
        field->setFocus();
        QTest::keyClicks(field, u"rubbish"_s);
        QTest::keyClick(field, Qt::Key_Escape);
        QCOMPARE(field->text(), QString());
        select({1});
        QVERIFY(!m_document->isDocumentEdited());
    }

    void refusedNameStaysWithAWord()
    {
        select({0});
        QLineEdit *field = lineOf(GlyphField::Name);
        field->setFocus();
        field->selectAll();
        QTest::keyClicks(field, u"B"_s);
        QTest::keyClick(field, Qt::Key_Tab);
        QCOMPARE(m_document->objectInInfosAtIndex(0)->name(), u"A"_s);
        QCOMPARE(field->text(), u"B"_s);
        QCOMPARE(qobject_cast<VXValidatingTextField *>(field)->errorHint(),
                 u"There is already an info with the same name: B"_s);
        QVERIFY(!m_document->isDocumentEdited());
        QTest::keyClick(field, Qt::Key_Escape);
        QCOMPARE(field->text(), u"A"_s);
    }

    void whatMayStandInAFieldIsOneAnswer()
    {
        auto *altNames = m_window->altNameField();
        const auto repeating = [this] {
            m_document->flushChanges();
            m_window->problems().finish();
            return m_window->problems().count(ProblemKind::RepeatingAltName);
        };
        const InfoPtr info = m_document->objectInInfosAtIndex(2);
        info->setAltNames(QStringList {u"later"_s});
        select({2});
        QVERIFY(altNames->errorHint().isEmpty());
        // Another record gets that name.
        m_document->objectInInfosAtIndex(1)->setName(u"later"_s);
        QCOMPARE(repeating(), 1);
        QCOMPARE(altNames->errorHint(), u"Repeating name: later"_s);
        QVERIFY(altNames->isExtraButtonVisible());
        std::vector<Problem> found;
        m_window->problems().append(ProblemKind::RepeatingAltName, 0, 5, found);
        QCOMPARE(m_window->problems().explanation(found.front()), altNames->errorHint());
        // The mark goes with the record, be it that nothing is selected any more.
        m_window->searchField()->setStringValue(u"no such"_s);
        m_window->filterInfos();
        QVERIFY(altNames->errorHint().isEmpty() && !altNames->isExtraButtonVisible());
        m_window->searchField()->setStringValue(u""_s);
        m_window->filterInfos();
        select({3});
        QVERIFY(altNames->errorHint().isEmpty());
        m_document->removeObjectFromInfosAtIndex(1);
        select({1});
        QVERIFY(altNames->errorHint().isEmpty());
        QCOMPARE(repeating(), 0);
        // A record without a name stops nobody from emptying a field, which then is absent.
        m_document->objectInInfosAtIndex(0)->setName(u""_s);
        altNames->setFocus();
        altNames->clear();
        QTest::keyClick(altNames, Qt::Key_Return);
        QVERIFY(info->stored(GlyphField::AltNames).isAbsent());
    }

    void anEmptiedFieldBecomesAbsent()
    {
        const InfoPtr info = m_document->objectInInfosAtIndex(0);
        info->setUnicodeLegacy(u"F6C3"_s);
        info->setDesc(u"words"_s);
        info->setProduction(u"x"_s);
        info->setCase(VXGlyphInfo::upper);
        for (const GlyphField field : {GlyphField::Unicodes, GlyphField::Category, GlyphField::Production,
                                       GlyphField::UnicodeLegacy, GlyphField::Desc, GlyphField::Case}) {
            QVERIFY(setFieldFromText(*m_document, {info}, field, u""_s));
            QVERIFY(field == GlyphField::Case ? info->caseValue() == VXGlyphInfo::noCase
                                              : info->stored(field).isAbsent());
            m_document->undoManager()->undo();
            QVERIFY(!info->displayText(field).isEmpty());
        }
    }

    void codePointsInCellsAndTheLegacyFieldAreChecked()
    {
        select({1});
        GlyphTableView *table = m_window->tableView();
        table->setFocus();
        table->setCurrentIndex(list()->index(1, columnOfField(GlyphField::Unicodes)));
        QTest::keyClick(table, Qt::Key_F2);
        QLineEdit *cell = table->cellDelegate().editor();
        cell->end(false);
        QTest::keyClicks(cell, u"ßg"_s);
        QTest::keyClicks(cell, u" 43"_s);
        QTest::keyClick(cell, Qt::Key_Return);
        QCOMPARE(m_document->objectInInfosAtIndex(1)->unicodes(), (QStringList {u"0042"_s, u"0043"_s}));
        QLineEdit *legacy = lineOf(GlyphField::UnicodeLegacy);
        legacy->setFocus();
        QTest::keyClicks(legacy, u"F6gC312"_s);
        QTest::keyClick(legacy, Qt::Key_Return);
        QCOMPARE(m_document->objectInInfosAtIndex(1)->unicodeLegacy(), u"F6C31"_s);
    }

    void delegateOfTheListIsAskedAllItsQuestions()
    {
        QuestionsDelegate delegate;
        list()->setDelegate(&delegate);
        GlyphTableView *table = m_window->tableView();
        table->grab();
        const QModelIndex cell = list()->index(1, columnOfField(GlyphField::Category));
        const QPoint place = table->visualRect(cell).center();
        QHelpEvent help(QEvent::ToolTip, place, table->viewport()->mapToGlobal(place));
        QCoreApplication::sendEvent(table->viewport(), &help);
        QCOMPARE(QToolTip::text(), escapedToolTip(u"Letter"_s));
        QTRY_COMPARE(table->indexWidget(cell), delegate.view.data());
        QVERIFY(delegate.painted >= 5); // the names of five records
        table->setCurrentIndex(cell);
        QTest::keyClick(table, Qt::Key_F2);
        QVERIFY(!table->cellDelegate().editor());
        QCOMPARE(
            delegate.asked,
            (QSet<QString> {u"column"_s, u"cell"_s, u"display"_s, u"edit"_s, u"view"_s, u"expansion"_s}));
    }

    void glyphButtonOffersTheCommands()
    {
        auto *button = m_window->findChild<VXMenuButton *>();
        QVERIFY(button && button->isVisible());
        select({0});
        QAction *item = nullptr;
        for (QAction *each : button->itemMenu()->actions()) {
            if (each->text().remove(u'&') == "Name to Alternate Names"_L1)
                item = each;
        }
        QVERIFY(item && item->isEnabled());
        item->trigger();
        QCOMPARE(m_document->objectInInfosAtIndex(0)->altNames(), QStringList {u"A"_s});
        select({});
        QVERIFY(!item->isEnabled());
    }

    void severalRecordsAreEditedAtOnce()
    {
        select({0, 1, 3});
        QCOMPARE(lineOf(GlyphField::SortName)->placeholderText(), QString());
        QVERIFY(!m_window->detailPane()->editorOf(GlyphField::Name)->isEnabled());
        QLineEdit *field = lineOf(GlyphField::SortName);
        field->setFocus();
        QTest::keyClicks(field, u"x"_s);
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(m_document->objectInInfosAtIndex(3)->sortName(), u"x"_s);
        QCOMPARE(m_document->objectInInfosAtIndex(2)->sortName(), QString());
        QCOMPARE(m_document->undoManager()->stack()->count(), 1);
        select({0, 2});
        QCOMPARE(lineOf(GlyphField::SortName)->placeholderText(), u"Multiple values"_s);
        QCOMPARE(lineOf(GlyphField::SortName)->text(), QString());
        select({});
        m_document->undoManager()->undo();
        QCOMPARE(m_document->objectInInfosAtIndex(0)->sortName(), QString());
        QCOMPARE(m_document->objectInInfosAtIndex(3)->sortName(), QString());
    }

    void largeSelectionsAreComparedToTheEnd()
    {
        InfoList infos;
        for (int i = 0; i < 9000; ++i)
            infos.push_back(infoNamed(u"g%1"_s.arg(i), {}, u"Letter"_s));
        infos.back()->setScript(u"latin"_s);
        m_document->setInfos(infos);
        m_document->updateChangeCount(Document::ChangeCleared);
        m_window->selectAll();
        auto *script =
            qobject_cast<VocabularyComboBox *>(m_window->detailPane()->editorOf(GlyphField::Script));
        auto *category =
            qobject_cast<VocabularyComboBox *>(m_window->detailPane()->editorOf(GlyphField::Category));
        QTRY_VERIFY2(script->isMixed(), "the last record alone differs");
        QCOMPARE(category->text(), u"Letter"_s);
        QVERIFY(!category->isMixed());
        QCOMPARE(list()->selectedCount(), 9000);
    }

    void fieldsFollowChangesFromElsewhere()
    {
        select({0});
        QCOMPARE(m_window->detailPane()->previewLabel()->text(), u"A"_s);
        m_document->objectInInfosAtIndex(0)->setUnicode(u"0042"_s);
        m_document->objectInInfosAtIndex(0)->setSortName(u"fresh"_s);
        QTRY_COMPARE(lineOf(GlyphField::SortName)->text(), u"fresh"_s);
        QCOMPARE(m_window->detailPane()->previewLabel()->text(), u"B"_s);
        select({0, 1});
        QCOMPARE(m_window->detailPane()->previewLabel()->text(), QString());
    }

    void undoAndRedoNameTheirSteps()
    {
        select({0});
        m_window->moveNameToAltName();
        QCOMPARE(m_document->objectInInfosAtIndex(0)->altNames(), QStringList {u"A"_s});
        QVERIFY(commandOf(*m_window, u"Undo Name to Alternate Names"_s));
        commandOf(*m_window, u"Undo Name to Alternate Names"_s)->trigger();
        QVERIFY(commandOf(*m_window, u"Redo Name to Alternate Names"_s)->isEnabled());
        QVERIFY(!commandOf(*m_window, u"Undo"_s)->isEnabled());
    }

    void namesOfStepsTellHowManyRecordsTheyAreOf()
    {
        const auto last = [&] { return m_document->undoManager()->stack()->undoText(); };
        select({0, 1, 2});
        auto *category = qobject_cast<VocabularyComboBox *>(m_window->detailPane()->editorOf(GlyphField::Category));
        category->lineEdit()->setText(u"Mark"_s);
        m_window->commitEditing();
        QCOMPARE(last(), u"Change Category of 3 Records"_s);
        m_window->duplicateSelectedInfos();
        QCOMPARE(last(), u"Duplicate 3 Records"_s);
        m_window->cut();
        QCOMPARE(last(), u"Cut 3 Records"_s);
        m_window->paste();
        QCOMPARE(last(), u"Paste 3 Records"_s);
        m_window->moveNameToAltName();
        QCOMPARE(last(), u"Names to Alternate Names of 3 Records"_s);
        m_window->delete_();
        QCOMPARE(last(), u"Delete 3 Records"_s);
        // Only what changes counts, and one is none too many to be named.
        select({0, 1, 2});
        m_window->commitEditing();
        select({0});
        m_window->delete_();
        QCOMPARE(last(), u"Delete"_s);
    }

    void removingTellsHowManyAndWhich()
    {
        select({0, 2});
        m_window->removeSelectedInfos();
        auto *box = m_window->findChild<QMessageBox *>();
        QVERIFY(box);
        QCOMPARE(box->text(), u"Do you really want to remove all selected entries?"_s);
        QCOMPARE(box->informativeText(), u"2 of 5 glyphs: A, a.sc"_s);
        box->reject();
    }

    void commandsAreEnabledOnlyWhenTheyCanAct()
    {
        const QStringList needSelection {u"Delete"_s,           u"Duplicate"_s,
                                         u"Remove…"_s,          u"Name to Alternate Names"_s,
                                         u"Make Legacy Name"_s, u"Number Sort Names…"_s};
        select({});
        for (const QString &text : needSelection)
            QVERIFY2(!commandOf(*m_window, text)->isEnabled(), qPrintable(text));
        select({0, 1});
        for (const QString &text : needSelection)
            QVERIFY2(commandOf(*m_window, text)->isEnabled(), qPrintable(text));
        QAction *character = commandOf(*m_window, u"Show Code Point in Character Application"_s);
        QVERIFY(!character->isEnabled());
        select({0});
        QVERIFY(character->isEnabled());
    }

    void headerClicksSortAndGoBack()
    {
        QHeaderView *header = m_window->tableView()->horizontalHeader();
        const int column = columnOfField(GlyphField::Name);
        select({3});
        const QPoint place(header->sectionViewportPosition(column) + 20, header->height() / 2);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(namesOf(shown()), u"A a.sc B gravecomb one"_s);
        QCOMPARE(namesOf(list()->selectedObjects()), u"one"_s);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(namesOf(shown()), u"one gravecomb B a.sc A"_s);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(namesOf(shown()), u"A B a.sc one gravecomb"_s);
        QCOMPARE(namesOf(list()->selectedObjects()), u"one"_s);
        QVERIFY(!m_document->isDocumentEdited());
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

    void theHeaderHasAMenu()
    {
        GlyphTableView *table = m_window->tableView();
        QHeaderView *header = table->horizontalHeader();
        QTest::keyClick(table, Qt::Key_Home, Qt::ControlModifier);
        const int name = columnOfField(GlyphField::Name);
        const int category = columnOfField(GlyphField::Category);
        // Asks for the menu over a column, walks to a command by keys and takes it; the window's menu waits in a loop
        // of its own.
        const auto choose = [&](int column, const QString &wanted) {
            QStringList offered;
            QTimer::singleShot(0, this, [&] {
                auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
                if (!menu)
                    return;
                const auto plain = [](const QAction *action) { return QString(action->text()).remove(u'&'); };
                for (const QAction *action : menu->actions())
                    offered << (action->isEnabled() ? plain(action) : u'(' + plain(action) + u')');
                for (int i = 0; i < 60 && (!menu->activeAction() || plain(menu->activeAction()) != wanted); ++i)
                    QTest::keyClick(menu, Qt::Key_Down);
                QTest::keyClick(menu, menu->activeAction() && plain(menu->activeAction()) == wanted ? Qt::Key_Return
                                                                                                   : Qt::Key_Escape);
            });
            const QPoint place(header->sectionViewportPosition(column) + 20, header->height() / 2);
            QTest::mouseClick(header->viewport(), Qt::RightButton, {}, place);
            QContextMenuEvent event(QContextMenuEvent::Mouse, place, header->viewport()->mapToGlobal(place));
            QApplication::sendEvent(header->viewport(), &event);
            return offered;
        };
        const QStringList offered = choose(category, u"Hide “Category”"_s);
        QVERIFY2(offered.contains(u"Sort Ascending"_s) && offered.contains(u"(Name)"_s)
                     && offered.contains(u"Reset Columns and Zoom"_s),
                 qPrintable(offered.join(u'|')));
        QVERIFY(header->isSectionHidden(category));
        choose(name, u"Category"_s);
        QVERIFY(!header->isSectionHidden(category));
        choose(name, u"Category"_s);
        QVERIFY(header->isSectionHidden(category));
        // The name stays, and a text that is being typed is not hidden away.
        QVERIFY(choose(name, {}).contains(u"(Hide “Name”)"_s));
        const int script = columnOfField(GlyphField::Script);
        table->setCurrentIndex(list()->index(1, script));
        QTest::keyClick(table, Qt::Key_F2);
        QTest::keyClicks(table->viewport()->findChild<QLineEdit *>(), u"greek"_s);
        choose(script, u"Hide “Script”"_s);
        QVERIFY(header->isSectionHidden(script));
        QCOMPARE(m_document->objectInInfosAtIndex(1)->script(), u"greek"_s);
        choose(name, u"Sort Descending"_s);
        QCOMPARE(namesOf(shown()), u"one gravecomb B a.sc A"_s);
        choose(name, u"Document Order"_s);
        QCOMPARE(namesOf(shown()), u"A B a.sc one gravecomb"_s);
        choose(name, u"Reset Columns and Zoom"_s);
        QVERIFY(!header->isSectionHidden(category) && !header->isSectionHidden(script));
    }

    /// Lists of which one is the present one have dots, not ticks that could be set one by one.
    void oneOfManyIsChosenByADot()
    {
        for (int i = 0; i < 3; ++i) {
            select({i});
            m_document->objectInInfosAtIndex(i)->setScript(u"greek"_s);
            m_document->undoManager()->setActionName(u"Step %1"_s.arg(i));
            m_document->flushChanges();
            QCoreApplication::processEvents();
        }
        m_document->undoManager()->undo();
        DocumentController::shared().addDocument(m_document.get());
        const auto look = [this](const QString &title) {
            QMenu *menu = commandOf(*m_window, title)->menu();
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
        DocumentController::shared().removeDocument(m_document.get());
    }

    void cellsAreEditedInPlace()
    {
        GlyphTableView *table = m_window->tableView();
        table->goToRow(1);
        table->setCurrentIndex(list()->index(1, columnOfField(GlyphField::Category)));
        QTest::keyClick(table, Qt::Key_Return);
        auto *editor = table->viewport()->findChild<QLineEdit *>();
        QVERIFY(editor);
        QCOMPARE(editor->text(), u"Letter"_s);
        editor->selectAll();
        QTest::keyClicks(editor, u"Symbol"_s);
        QTest::keyClick(editor, Qt::Key_Return);
        QCOMPARE(m_document->objectInInfosAtIndex(1)->category(), u"Symbol"_s);
        // A very long text goes through the editor whole and untouched.
        const QString longText(100'000, u'x');
        m_document->objectInInfosAtIndex(1)->setDecompose(longText);
        m_document->undoManager()->setClean();
        table->setCurrentIndex(list()->index(1, columnOfField(GlyphField::Decompose)));
        QTest::keyClick(table, Qt::Key_F2);
        editor = table->viewport()->findChild<QLineEdit *>();
        QVERIFY(editor);
        QTest::keyClick(editor, Qt::Key_Return);
        QCOMPARE(m_document->objectInInfosAtIndex(1)->decompose().size(), longText.size());
        QVERIFY(!m_document->isDocumentEdited());
    }

    void placeIsKeptWhileRowsComeAndGo()
    {
        const InfoList infos = setManyInfos();
        GlyphTableView *table = m_window->tableView();
        table->goToRow(1400);
        const int y = table->rowViewportPosition(1400);
        m_window->searchField()->setStringValue(u".x"_s);
        m_window->filterInfos();
        QCOMPARE(list()->countOfArrangedObjects(), 286);
        const qsizetype row = list()->rowOfObject(infos[1400]);
        QVERIFY(row >= 0);
        QVERIFY(qAbs(table->rowViewportPosition(static_cast<int>(row)) - y) <= 1);
        QCOMPARE(namesOf(list()->selectedObjects()), infos[1400]->name());
        m_window->searchField()->setStringValue(u""_s);
        m_window->filterInfos();
        QCOMPARE(table->rowViewportPosition(1400), y);
        QCOMPARE(namesOf(list()->selectedObjects()), infos[1400]->name());
        m_document->objectInInfosAtIndex(3)->setName(u"changed"_s);
        m_document->undoManager()->undo();
        m_document->flushChanges();
        QCOMPARE(table->rowViewportPosition(1400), y);
    }

    void whatWasChosenLastStaysInView()
    {
        const InfoList infos = setManyInfos();
        GlyphTableView *table = m_window->tableView();
        const auto isInView = [&](int place) {
            const qsizetype row = list()->rowOfObject(infos[static_cast<std::size_t>(place)]);
            const int y = table->rowViewportPosition(static_cast<int>(row));
            return row >= 0 && y >= 0 && y + table->rowHeight(0) <= table->viewport()->height();
        };
        // Chosen under a filter that had hidden another one.
        table->goToRow(1401);
        setSearch(u".x"_s);
        table->goToRow(10);
        setSearch({});
        QVERIFY(isInView(70));
        QCOMPARE(table->currentIndex().row(), 70);
        // The record that others with the same value were asked for.
        infos[1800]->setCategory(u"Mark"_s);
        infos[2]->setCategory(u"Mark"_s);
        table->goToRow(1800);
        m_window->selectSame(u"category"_s);
        QCOMPARE(namesOf(list()->selectedObjects()), infos[2]->name() + u' ' + infos[1800]->name());
        QVERIFY(isInView(1800));
        // Deleting goes on with the keyboard, and undoing comes back to where it began.
        table->goToRow(900);
        for (int i = 0; i < 3; ++i) {
            QTest::keyClick(table, Qt::Key_Delete);
            QCoreApplication::processEvents();
        }
        QCOMPARE(namesOf(list()->selectedObjects()), infos[903]->name());
        table->verticalScrollBar()->setValue(0);
        m_document->undoManager()->undo();
        QCOMPARE(namesOf(list()->selectedObjects()), infos[902]->name());
        QVERIFY(isInView(902));
        m_document->undoManager()->undo();
        m_document->undoManager()->undo();
        QCOMPARE(namesOf(list()->selectedObjects()), infos[900]->name());
        QVERIFY(isInView(900));
        // What is pasted is selected, and undone the selection is the former one.
        m_window->copy();
        m_window->paste();
        QCOMPARE(list()->selectionIndexes(), IndexSet {901});
        m_document->undoManager()->undo();
        QCOMPARE(list()->selectionIndexes(), IndexSet {900});
        // One more record far above moves nothing.
        const int y = table->rowViewportPosition(900);
        m_document->insertObjectInInfosAtIndex(infoNamed(u"above"_s), 0);
        QCOMPARE(table->rowViewportPosition(901), y);
        // Another reading of the same file: other records, the same place.
        setManyInfos();
        QCOMPARE(list()->selectionIndexes(), IndexSet {900});
        QCOMPARE(table->rowViewportPosition(900), y);
    }

    void keysWorkWhateverColumnIsCurrent()
    {
        const InfoList infos = setManyInfos();
        GlyphTableView *table = m_window->tableView();
        for (const Qt::Key key : {Qt::Key_F2, Qt::Key_Return}) {
            table->goToRow(4);
            table->setCurrentIndex(list()->index(4, 0)); // the picture, which nobody can edit
            QTest::keyClick(table, key);
            auto *editor = table->viewport()->findChild<QLineEdit *>();
            QVERIFY(editor);
            QCOMPARE(editor->text(), infos[4]->name());
            QTest::keyClick(editor, Qt::Key_Escape);
            QTRY_VERIFY(!table->viewport()->findChild<QLineEdit *>());
        }
        table->setCurrentIndex(list()->index(4, 0));
        QTest::keyClick(table, Qt::Key_Down, Qt::ControlModifier);
        QTest::keyClick(table, Qt::Key_Down, Qt::ControlModifier);
        QTest::keyClick(table, Qt::Key_Space);
        QCOMPARE(list()->selectionIndexes(), (IndexSet {4, 6}));
        QTest::keyClick(table, Qt::Key_End, Qt::ControlModifier);
        QCOMPARE(list()->selectionIndexes(), IndexSet {1999});
        QCOMPARE(table->currentIndex(), list()->index(1999, 0));
        QVERIFY(table->rowViewportPosition(1999) < table->viewport()->height());
        QTest::keyClick(table, Qt::Key_Home, Qt::ControlModifier);
        QCOMPARE(list()->selectionIndexes(), IndexSet {0});
        QCOMPARE(table->currentIndex().row(), 0);
        table->goToRow(1998);
        QTest::keyClick(table, Qt::Key_End, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(list()->selectionIndexes(), (IndexSet {1998, 1999}));
        QTest::keyClicks(table, u"g12"_s); // goes on to the names that begin so
        QCOMPARE(table->currentIndex().column(), 0);
    }

    void eachFileIsSortedAsItWas()
    {
        const QTemporaryDir folder;
        const auto reopened = [this](const QString &path) {
            cleanup();
            m_document = std::make_unique<VXDocument>();
            m_document->setFileURL(path);
            m_document->setInfos({infoNamed(u"b"_s), infoNamed(u"a"_s)});
            m_window = std::make_unique<VXWindowController>(*m_document);
        };
        reopened(folder.filePath(u"one.xml"_s));
        m_window->tableView()->horizontalHeader()->setSortIndicator(columnOfField(GlyphField::Name),
                                                                    Qt::AscendingOrder);
        QCOMPARE(namesOf(shown()), u"a b"_s);
        reopened(folder.filePath(u"two.xml"_s));
        QCOMPARE(namesOf(shown()), u"b a"_s);
        reopened(folder.filePath(u"one.xml"_s));
        QCOMPARE(namesOf(shown()), u"a b"_s);
        m_window->tableView()->resetViewSettings();
        QCOMPARE(namesOf(shown()), u"b a"_s);
        reopened(folder.filePath(u"one.xml"_s));
        QCOMPARE(namesOf(shown()), u"b a"_s);
    }

    void goingToARecordShowsItWhateverIsFiltered()
    {
        m_window->searchField()->setStringValue(u"one"_s);
        m_window->filterInfos();
        for (const QString &typed : {u"B"_s, u"42"_s, u"U+0042"_s}) {
            m_window->goToInfo();
            auto *panel = m_window->findChild<QDialog *>();
            QVERIFY(panel);
            auto *line = panel->findChild<QLineEdit *>();
            QTest::keyClicks(line, typed);
            QTest::keyClick(line, Qt::Key_Return);
            QCOMPARE(namesOf(list()->selectedObjects()), u"B"_s);
            QCOMPARE(m_window->searchField()->stringValue(), QString());
            select({});
            QTRY_VERIFY(!m_window->findChild<QDialog *>());
        }
    }

    void recordsWithTheSameValueAreSelected()
    {
        select({3});
        m_window->selectSame(u"category"_s);
        QCOMPARE(namesOf(list()->selectedObjects()), u"one"_s);
        select({0});
        m_window->selectSame(u"category"_s);
        QCOMPARE(namesOf(list()->selectedObjects()), u"A B a.sc"_s);
    }

    void sortNamesAreNumbered()
    {
        select({0, 1, 2});
        m_window->setSortName();
        m_window->sortNameCancel();
        QVERIFY(!m_document->isDocumentEdited());
        m_window->setSortName();
        m_window->sortNameOK();
        QCOMPARE(m_document->objectInInfosAtIndex(2)->sortName(), u"a003"_s);
        m_document->undoManager()->undo();
        QCOMPARE(m_document->objectInInfosAtIndex(0)->sortName(), QString());

        UserDefaults::standard().setObjectForKey(u"<!--"_s, SortNumbering::prefixKey());
        m_window->setSortName();
        m_window->sortNameOK();
        UserDefaults::standard().removeObjectForKey(SortNumbering::prefixKey());
        QVERIFY(m_window->findChild<MessageBar *>()->text().contains(u"Sort Name holds “<!--”"_s));
        QVERIFY(!m_document->isDocumentEdited());
    }

    void legacyNameComesFromTheCodePoint()
    {
        m_document->objectInInfosAtIndex(1)->setUnicode(u"1E02"_s);
        select({4, 1});
        m_window->makeLegacyName();
        QCOMPARE(m_document->objectInInfosAtIndex(1)->production(), u"uni1E02"_s);
        QCOMPARE(m_document->objectInInfosAtIndex(4)->production(), QString());
    }

    void windowStateIsRestored()
    {
        m_window->searchField()->setStringValue(u"e"_s);
        m_window->filterInfos();
        select({0, 1});
        const QVariantMap state = m_window->windowWillEncodeRestorableState();
        m_window->searchField()->setStringValue(u""_s);
        m_window->filterInfos();
        select({});
        m_window->windowDidDecodeRestorableState(state);
        QCOMPARE(m_window->searchField()->stringValue(), u"e"_s);
        QCOMPARE(namesOf(list()->selectedObjects()), u"one gravecomb"_s);
    }

    void everyControlHasANameAndTakesTheFocus()
    {
        select({0});
        for (QWidget *widget : m_window->findChildren<QWidget *>()) {
            if (!widget->isVisible() || widget->focusPolicy() == Qt::NoFocus || widget->focusProxy())
                continue;
            if (qobject_cast<QLineEdit *>(widget->parentWidget()) || qobject_cast<QScrollBar *>(widget)
                || qobject_cast<QHeaderView *>(widget) || widget->objectName().startsWith("qt_"_L1))
                continue;
            QVERIFY2(!widget->accessibleName().isEmpty() || qobject_cast<QAbstractButton *>(widget)
                         || (widget->parentWidget() && !widget->parentWidget()->accessibleName().isEmpty()),
                     qPrintable(QString::fromLatin1(widget->metaObject()->className()) + u' '
                                + widget->objectName()));
        }
        for (const QLabel *caption : m_window->detailPane()->findChildren<QLabel *>()) {
            if (caption->objectName().startsWith("infoLable"_L1))
                QVERIFY2(caption->buddy(), qPrintable(caption->objectName()));
        }
    }

    void columnsAndZoomAreRemembered()
    {
        GlyphTableView *table = m_window->tableView();
        const int hidden = columnOfField(GlyphField::Production);
        table->setColumnShown(hidden, false);
        table->horizontalHeader()->resizeSection(columnOfField(GlyphField::Name), 222);
        table->zoom(3);
        const double size = table->font().pointSizeF();
        cleanup();
        m_document = std::make_unique<VXDocument>();
        m_window = std::make_unique<VXWindowController>(*m_document);
        table = m_window->tableView();
        QVERIFY(table->isColumnHidden(hidden));
        QCOMPARE(table->columnWidth(columnOfField(GlyphField::Name)), 222);
        QCOMPARE(table->font().pointSizeF(), size);
        table->resetViewSettings();
        QVERIFY(!table->isColumnHidden(hidden));
        QVERIFY(table->font().pointSizeF() < size);
    }

private:
    RSRTVArrayController *list() const { return m_window->infolistController(); }
    InfoList shown() const { return list()->arrangedObjects(); }
    void select(const IndexSet &rows) { list()->setSelectionIndexes(rows); }
    void setSearch(const QString &text)
    {
        m_window->searchField()->setStringValue(text);
        m_window->filterInfos();
    }
    /// 2,000 records, every seventh of which has ".x" in its name.
    InfoList setManyInfos()
    {
        InfoList infos;
        for (int i = 0; i < 2000; ++i)
            infos.push_back(infoNamed(u"g%1"_s.arg(i, 4, 10, QChar(u'0')) + (i % 7 ? u""_s : u".x"_s)));
        m_document->setInfos(infos);
        return infos;
    }
    QLineEdit *lineOf(GlyphField field) const
    {
        return qobject_cast<QLineEdit *>(m_window->detailPane()->editorOf(field));
    }

    std::unique_ptr<VXDocument> m_document;
    std::unique_ptr<VXWindowController> m_window;
};

RUNEBOOK_TEST_MAIN(WindowTest)
#include "WindowTest.moc"
