// Names that other records have: what follows a renaming, who uses a record, the ways there and back, and one
// step taken back alone; by keys and mouse in a window that is shown.
#include "editing/window/WindowSettings.h"
#include "tests/editing/Windows.h"

using namespace runebook;

class NamesInOthersTest : public WindowFixture
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { makeDocumentsWithWindows(); }
    void init()
    {
        forget({"VXRenameElsewhere", "SearchState", "SearchStateRegex", "TableHeaderState"});
        openWindow(
            recordsOf(QStringLiteral("name=\"a\"\n"
                                     "name=\"acute\"\n"
                                     "name=\"aacute\" decompose=\"a, acute\"\n"
                                     "name=\"a.sc\"\n"
                                     "name=\"z\" decompose=\"a.sc, a\" marks=\"acute, a\" altNames=\"a\"")));
    }
    void cleanup() { closeWindow(); }

    /// In one step with the renaming, if that is asked for or always wished.
    TABLE(whatNamesARecordFollowsItsName,
          (int setting, const QString &answer, const QString &expected, int steps), {
              const QString kFollowed = u"b acute b.sc|b, acute|b.sc, b|acute, b|b"_s;
              const QString kLeft = u"b acute a.sc|a, acute|a.sc, a|acute, a|a"_s;
              row("always", RenamesElsewhere::Always, "", kFollowed, 1);
              row("never", RenamesElsewhere::Never, "", kLeft, 1);
              row("asks: yes", RenamesElsewhere::Ask, "Rename There Too", kFollowed, 1);
              row("asks: no", RenamesElsewhere::Ask, "Leave Them", kLeft, 1);
          })
    {
        Settings::kRenamesElsewhere.set(setting);
        const QString before = picture();
        select({0});
        typeInto(GlyphField::Name, u"<Ctrl+A>b<Return>"_s);
        QCOMPARE(info(0)->name(), u"b"_s);
        if (answer.isEmpty()) {
            QTRY_COMPARE(picture(), expected);
        } else {
            QTRY_COMPARE(barText(), u"3 other records use the name “a”, which is “b” now."_s);
            QVERIFY(lineOf(GlyphField::Name)->hasFocus()); // nobody is stopped
            button(m_window.get(), answer)->click();
        }
        QCOMPARE(picture(), expected);
        QCOMPARE(stack().index(), steps);
        QVERIFY(command(u"Rename in Other Records…"_s)->isEnabled() == (setting == RenamesElsewhere::Never));
        undo();
        QCOMPARE(picture(), before);
    }

    /// Many names at once, and quick typing: what was not answered is offered with the next.
    void isOfferedForAllThatWereRenamed()
    {
        select({0});
        typeInto(GlyphField::Name, u"<Ctrl+A>b<Return>"_s);
        select({1});
        typeInto(GlyphField::Name, u"<Ctrl+A>grave<Return>"_s);
        QTRY_COMPARE(barText(), u"3 other records use names that were changed (2)."_s);
        typeKeys(m_window.get(), u"<Ctrl+Alt+R>"_s);
        auto *dialog = shownWindow<QDialog>(u"usesDialog"_s);
        QVERIFY(dialog);
        auto *view = dialog->findChild<QTableView *>();
        QCOMPARE(rows(*view).first(), u"a.sc|Name|a.sc|b.sc"_s);
        QCOMPARE(view->model()->rowCount(), 5);
        QTest::keyClick(view, Qt::Key_Space); // a.sc stays, and so does what names it
        QTest::keyClick(view, Qt::Key_Return);
        QTRY_COMPARE(picture(), u"b grave a.sc|b, grave|a.sc, b|grave, b|b"_s);
        QCOMPARE(barText(), u"Renamed in 2 other records."_s);
        QCOMPARE(stack().undoText(), u"Rename in 2 Records"_s);
        undo();
        QCOMPARE(picture(), u"b grave a.sc|a, acute|a.sc, a|acute, a|a"_s);
        undo();
        undo();
        QCOMPARE(stack().index(), 0);
    }

    void usesAreListedAndGoneTo()
    {
        select({1});
        typeKeys(m_window.get(), u"<Ctrl+Alt+U>"_s);
        auto *dialog = shownWindow<QDialog>(u"usesDialog"_s);
        QVERIFY(dialog);
        auto *view = dialog->findChild<QTableView *>();
        QCOMPARE(rows(*view), QStringList({u"aacute|Decompose|a, acute"_s, u"z|Accents|acute, a"_s}));
        QTest::keyClick(view, Qt::Key_Down);
        QTest::keyClick(view, Qt::Key_Return);
        QCOMPARE(selected(), u"z"_s);
        info(0)->setDecompose(u"acute"_s);
        QTRY_COMPARE(view->model()->rowCount(), 3); // it follows what changes
        button(dialog, u"Select in the Table"_s)->click();
        QCOMPARE(selected(), u"a aacute z"_s);
    }

    /// There by Ctrl and a click, or a key; back and forth by keys and by the mouse; past what was removed.
    void placesAreGoneThrough()
    {
        table()->setColumnShown(columnOfField(GlyphField::Marks), true);
        const auto clickAt = [&](const QString &before) {
            table()->scrollTo(cell(4, GlyphField::Decompose));
            const QRect rect = table()->visualRect(cell(4, GlyphField::Decompose));
            const int x = rect.left() + GlyphCellDelegate::kMargin
                + QFontMetrics(table()->font()).horizontalAdvance(before) + 2;
            QTest::mouseClick(table()->viewport(), Qt::LeftButton, Qt::ControlModifier,
                              {x, rect.center().y()});
        };
        select({4});
        table()->setCurrentIndex(cell(4, GlyphField::Decompose));
        clickAt(u"a.sc, "_s);
        QCOMPARE(selected(), u"a"_s);
        m_window->goBack();
        QCOMPARE(selected(), u"z"_s);
        clickAt(u""_s);
        QCOMPARE(selected(), u"a.sc"_s);
        m_window->showInfo(info(1));
        typeKeys(m_window.get(), u"<Alt+Left>"_s);
        QCOMPARE(selected(), u"a.sc"_s);
        m_document->removeInfo(info(3));
        select({0});
        typeKeys(m_window.get(), u"<Alt+Left>"_s);
        QCOMPARE(selected(), u"z"_s);
        QVERIFY(!command(u"Back"_s)->isEnabled());
        QTest::mouseClick(table()->viewport(), Qt::ForwardButton, {}, {20, 20});
        QCOMPARE(selected(), u"acute"_s);
        // A search is a place, and comes back with its record.
        search(u"acute"_s);
        select({1});
        m_window->showInfo(info(3));
        QCOMPARE(namesOf(shown()).count(u' '), 3);
        m_window->goBack();
        QCOMPARE(namesOf(shown()), u"acute aacute"_s);
        QCOMPARE(selected(), u"aacute"_s);
        m_window->goForward();
        QCOMPARE(selected(), u"z"_s);
        // From the caret in the pane.
        typeInto(GlyphField::Decompose, u"<End><Ctrl+Alt+G>"_s);
        QCOMPARE(selected(), u"a"_s);
        select({0});
        typeKeys(m_window.get(), u"<Ctrl+Alt+G>"_s);
        QVERIFY(barText().startsWith(u"“a” names no record"_s));
    }

    void removalSaysWhoUsesIt()
    {
        select({0});
        m_window->removeSelectedInfos();
        QTRY_VERIFY(shownWindow<QMessageBox>());
        const QString text = shownWindow<QMessageBox>()->informativeText();
        QVERIFY2(text.contains(u"2 records are composed with it: aacute, z"_s), qPrintable(text));
        answer(u"Cancel"_s);
        select({0, 2, 4});
        m_window->removeSelectedInfos();
        QTRY_VERIFY(shownWindow<QMessageBox>());
        QVERIFY(!shownWindow<QMessageBox>()->informativeText().contains(u"composed"_s));
        answer(u"Cancel"_s);
    }

    void oneStepIsTakenBackFromTheMenu()
    {
        select({0});
        typeInto(GlyphField::Production, u"x<Return>"_s);
        select({1});
        typeInto(GlyphField::Production, u"y<Return>"_s);
        typeInto(GlyphField::SortName, u"s<Return>"_s);
        typeKeys(m_window.get(), u"<Ctrl+Alt+Z>"_s);
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu);
        QCOMPARE(offersOf(*menu),
                 QStringList({u"Change Sort Name of acute"_s, u"Change Production Name of acute"_s,
                              u"Change Production Name of a"_s}));
        typeKeys(menu, u"<Down><Return>"_s);
        QCOMPARE(info(1)->production(), QString());
        QCOMPARE(info(1)->sortName(), u"s"_s);
        QCOMPARE(stack().undoText(), u"Take Back “Change Production Name of acute”"_s);
        typeKeys(m_window.get(), u"<Ctrl+Alt+Z>"_s);
        typeKeys(QApplication::activePopupWidget(), u"<Down><Down><Return>"_s);
        QVERIFY2(barText().startsWith(u"“Change Production Name of acute” cannot be taken back alone:"_s),
                 qPrintable(barText()));
    }

private:
    /// Names, then decompositions, accents and alternate names of those that have any.
    QString picture() const
    {
        return u"%1 %2 %3|%4|%5|%6|%7"_s.arg(info(0)->name(), info(1)->name(), info(3)->name(),
                                             info(2)->decompose(), info(4)->decompose(), info(4)->marks(),
                                             info(4)->altNames().join(u", "_s));
    }
    static QStringList rows(const QTableView &view)
    {
        QStringList rows;
        for (int row = 0; row < view.model()->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < view.model()->columnCount(); ++column)
                cells << view.model()->index(row, column).data().toString();
            rows << cells.join(u'|');
        }
        return rows;
    }
};

RUNEBOOK_TEST_MAIN(NamesInOthersTest)
#include "NamesInOthersTest.moc"
