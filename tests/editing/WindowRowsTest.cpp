#include "model/EditedValue.h"
#include "model/GlyphLineWriter.h"
#include "platform/Background.h"
#include "platform/PlainText.h"
#include "tests/PaintedTexts.h"
#include "tests/RandomValues.h"
#include "tests/editing/Windows.h"

#include <functional>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace runebook;

namespace {

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

/// Rows and columns of the table in the document window, by keys, mouse and commands.
class WindowRowsTest : public WindowFixture
{
    Q_OBJECT
private Q_SLOTS:
    void init() { openFive(); }
    void cleanup() { closeWindow(); }

    // the first: nothing was freed yet in which a large block would fit
    void pastesWholeOrNotAtAll()
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        QSKIP("sanitizer-memory: the sanitizers take more address space than any limit leaves");
#endif
        constexpr int kPasted = 200'000;
        const QByteArray kGlyphs =
            "\t<glyph name=\"a\" category=\"Letter\" />\n\t<glyph name=\"b\" category=\"Letter\" />\n";
        QApplication::clipboard()->setText(QString::fromUtf8(kGlyphs).repeated(kPasted / 2));
        const auto inChild = [](const std::function<int()> &work) {
            waitForBackground(); // what is under way would not go on there
            const pid_t child = ::fork();
            if (child == 0)
                ::_exit(work());
            int status = 0;
            return ::waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        };
        const auto addressSpace = [](const char *which) { // in MiB
            QFile status(u"/proc/self/status"_s);
            const bool isKnown = status.open(QIODevice::ReadOnly);
            const QByteArray text = isKnown ? status.readAll() : QByteArray();
            return text.mid(text.indexOf(which) + qstrlen(which))
                       .simplified()
                       .split(' ')
                       .first()
                       .toULongLong()
                >> 10;
        };
        // What pasting takes is found out first, so that there can be less and more of it.
        constexpr int kUnit = 4;
        const int units = inChild([&] {
            const auto before = addressSpace("VmSize:");
            m_window->paste();
            return m_document->countOfInfos() == 5 + kPasted ? int(addressSpace("VmPeak:") - before) / kUnit
                                                             : 0;
        });
        QVERIFY2(units > 0 && units < 255, qPrintable(u"%1 MiB"_s.arg(units * kUnit)));
        const int outcome = inChild([&] {
            bool isGood = true;
            for (const double share : {1 / 64., 1 / 32., 1 / 16., 1 / 8., 1 / 4., 1 / 2., 2.}) {
                const auto room = rlim_t(units * kUnit * share) + addressSpace("VmSize:");
                const rlimit limit {room << 20, RLIM_INFINITY};
                ::setrlimit(RLIMIT_AS, &limit);
                m_window->paste();
                const rlimit none {RLIM_INFINITY, RLIM_INFINITY};
                ::setrlimit(RLIMIT_AS, &none);
                const qsizetype count = m_document->countOfInfos();
                const bool isPasted = count == 5 + kPasted;
                isGood &= isPasted || (count == 5 && !m_document->undoManager()->canUndo());
                isGood &= share < 1 / 32. ? !isPasted : share < 2 || isPasted;
                m_document->undoManager()->undo();
                isGood &= m_document->countOfInfos() == 5;
            }
            return isGood ? 0 : 1;
        });
        QVERIFY2(outcome >= 0, "it crashed");
        QCOMPARE(outcome, 0);
    }

    void copiedLinesArePastedBehindTheSelectedRecord()
    {
        select({0, 3});
        QTest::keyClick(table(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(),
                 u"\t<glyph unicode=\"0041\" name=\"A\" category=\"Letter\" direction=\"LTR\" />\n"
                 "\t<glyph unicode=\"0031\" name=\"one\" category=\"Number\" direction=\"LTR\" />\n"_s);
        select({1});
        QTest::keyClick(table(), Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(allNames(), u"A B A one a.sc one gravecomb"_s);
        QCOMPARE(selected(), u"A one"_s);
        QTest::keyClick(table(), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(allNames(), u"A B a.sc one gravecomb"_s);

        select({});
        QApplication::clipboard()->setText(u"no glyph\n  <glyph name=\"pasted\"/>\r\n<glyph\n"_s);
        m_window->paste();
        QCOMPARE(allNames(), u"A B a.sc one gravecomb pasted"_s);
        QCOMPARE(m_document->infos().back()->direction(), -2);
        undo();
        // In a filtered table the place counts in the whole list.
        search(u"one"_s);
        select({0});
        QApplication::clipboard()->setText(u"<glyph name=\"two\"/>"_s);
        m_window->paste();
        QCOMPARE(allNames(), u"A B a.sc one two gravecomb"_s);
        undo();
        // A copy of nothing leaves the clipboard, and no glyphs are nothing to paste.
        QApplication::clipboard()->setText(u"kept"_s);
        select({});
        m_window->copy();
        QCOMPARE(QApplication::clipboard()->text(), u"kept"_s);
        m_window->paste();
        QVERIFY(m_document->countOfInfos() == 5 && !m_document->isDocumentEdited());
    }

    void leavesOutWhatNoSaveWrites()
    {
        QApplication::clipboard()->setText(
            u"<glyph name=\"c\" sortName=\"x <!-- y\" />\n<glyph name=\"d\" />\n"
            "<glyph name=\"e\" description=\"x --> y\" />\n"_s);
        m_window->paste();
        QCOMPARE(m_document->countOfInfos(), 7);
        QVERIFY2(barText().contains(u"1. Sort Name holds “<!--”"), qPrintable(barText()));

        // A name that was read with the end of a comment may stay where it is, and go nowhere else.
        QApplication::clipboard()->setText(u"<glyph name=\"f-->\" />"_s);
        m_window->paste();
        const InfoPtr last = m_document->infos().back();
        m_window->infolistController()->setSelectedObjects({m_document->infos().front(), last});
        m_window->moveNameToAltName();
        QCOMPARE(m_document->infos().front()->altNames(), QStringList {u"A"_s});
        QVERIFY(last->altNames().isEmpty());
        QVERIFY2(barText().contains(u"1. Alternate Names holds “-->”"), qPrintable(barText()));
        QCOMPARE(m_document->savingLosses(m_document->fileType()).takingOthers, 0);
    }

    /// What is copied and pasted is equal, or is left out and counted; other programs see lines.
    void pastesEveryValue()
    {
        fill(*m_document, recordsOf(u"name=\"a\" category=\"Letter\"\nname=\"b\" category=\"Letter\""_s));
        const auto target = documentOf({});
        VXWindowController into(*target);
        target->setWindowController(&into);
        const auto isWritten = [](const InfoPtr &info) { return refusalOfEdited(*info).isNull(); };
        const auto valuesOfAll = [](const InfoList &infos) {
            QList<QVariantList> values;
            for (const InfoPtr &info : infos)
                values << valuesOf(*info);
            return values;
        };
        Dice dice(13);
        int kept = 0;
        int refused = 0;
        for (int round = 0; round < 100; ++round) {
            InfoList infos = m_document->infos(); // two as they were read, and three others
            infos.resize(2);
            std::string lines;
            for (int i = 0; i < 3; ++i) {
                infos.push_back(VXGlyphInfo::init());
                dice.change(*infos.back());
            }
            for (const InfoPtr &info : infos)
                GlyphLineWriter(2).append(*info, lines);
            m_document->setInfos(infos);
            m_window->infolistController()->setSelectedObjects(infos);
            m_window->copy();
            const QMimeData *copied = QApplication::clipboard()->mimeData();
            QCOMPARE(copied->text(), QString::fromStdString(lines));
            if (round % 2) { // as another program that runs gets it
                auto *bytes = new QMimeData;
                for (const QString &format : copied->formats())
                    bytes->setData(format, copied->data(format));
                QApplication::clipboard()->setMimeData(bytes);
            }
            into.infolistController()->setSelectedObjects({});
            const qsizetype before = target->countOfInfos();
            const int steps = target->undoManager()->stack()->count();
            into.paste();
            const InfoList expected = [&] {
                InfoList written;
                std::copy_if(infos.begin(), infos.end(), std::back_inserter(written), isWritten);
                return written;
            }();
            const InfoList pasted(target->infos().begin() + before, target->infos().end());
            QCOMPARE(valuesOfAll(pasted), valuesOfAll(expected));
            QCOMPARE(target->undoManager()->stack()->count(), steps + 1);
            const auto left = infos.size() - expected.size();
            if (left > 0)
                QVERIFY(into.findChild<MessageBar *>()->text().contains(u"left out: %1."_s.arg(left)));
            kept += int(expected.size());
            refused += int(left);
            target->undoManager()->undo();
            QCOMPARE(target->countOfInfos(), before);
            target->undoManager()->stack()->clear();
        }
        QVERIFY2(kept > 400 && refused > 10, qPrintable(u"%1 %2"_s.arg(kept).arg(refused)));

        // A damaged form is passed over: what the lines hold is pasted.
        auto *damaged = new QMimeData;
        const QMimeData *copied = QApplication::clipboard()->mimeData();
        for (const QString &format : copied->formats())
            damaged->setData(format,
                             format.startsWith(u"text/") ? "<glyph name=\"plain\" />"
                                                         : copied->data(format).chopped(9));
        QApplication::clipboard()->setMimeData(damaged);
        into.paste();
        QCOMPARE(target->infos().back()->name(), u"plain"_s);
    }

    void removalAsksFirst()
    {
        select({1, 2});
        m_window->removeSelectedInfos();
        auto *sheet = m_window->findChild<QMessageBox *>();
        QVERIFY(sheet);
        QCOMPARE(sheet->text(), u"Do you really want to remove all selected entries?"_s);
        QCOMPARE(sheet->informativeText(), u"2 of 5 glyphs: B, a.sc"_s);
        QTest::keyClick(sheet, Qt::Key_Escape);
        QCOMPARE(m_document->countOfInfos(), 5);
        QTRY_VERIFY(!m_window->findChild<QMessageBox *>());

        m_window->removeSelectedInfos();
        sheet = m_window->findChild<QMessageBox *>();
        QTest::mouseClick(sheet->defaultButton(), Qt::LeftButton);
        QCOMPARE(allNames(), u"A one gravecomb"_s);

        select({0});
        QTest::keyClick(table(), Qt::Key_Delete);
        QCOMPARE(allNames(), u"one gravecomb"_s);
        undo();
        undo();
        QCOMPARE(allNames(), u"A B a.sc one gravecomb"_s);
        QVERIFY(!m_document->isDocumentEdited());
    }

    void headerClicksSortAndGoBack()
    {
        QHeaderView *header = table()->horizontalHeader();
        const int column = columnOfField(GlyphField::Name);
        select({3});
        const QPoint place(header->sectionViewportPosition(column) + 20, header->height() / 2);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(namesOf(shown()), u"A a.sc B gravecomb one"_s);
        QCOMPARE(selected(), u"one"_s);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(namesOf(shown()), u"one gravecomb B a.sc A"_s);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(namesOf(shown()), u"A B a.sc one gravecomb"_s);
        QCOMPARE(selected(), u"one"_s);
        QVERIFY(!m_document->isDocumentEdited());
    }

    void theHeaderHasAMenu()
    {
        QHeaderView *header = table()->horizontalHeader();
        QTest::keyClick(table(), Qt::Key_Home, Qt::ControlModifier);
        const int name = columnOfField(GlyphField::Name);
        const int category = columnOfField(GlyphField::Category);
        // Asks for the menu over a column, walks to a command by keys and takes it; the window's menu waits
        // in a loop of its own.
        const auto choose = [&](int column, const QString &wanted) {
            QStringList offered;
            QTimer::singleShot(0, this, [&] {
                auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
                if (!menu)
                    return;
                offered = offersOf(*menu);
                const auto isThere = [&] {
                    return menu->activeAction() && plain(menu->activeAction()->text()) == wanted;
                };
                for (int i = 0; i < 60 && !isThere(); ++i)
                    QTest::keyClick(menu, Qt::Key_Down);
                QTest::keyClick(menu, isThere() ? Qt::Key_Return : Qt::Key_Escape);
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
        typeKeys(editCell(1, GlyphField::Script), u"greek"_s);
        choose(script, u"Hide “Script”"_s);
        QVERIFY(header->isSectionHidden(script));
        QCOMPARE(info(1)->script(), u"greek"_s);
        choose(name, u"Sort Descending"_s);
        QCOMPARE(namesOf(shown()), u"one gravecomb B a.sc A"_s);
        choose(name, u"Document Order"_s);
        QCOMPARE(namesOf(shown()), u"A B a.sc one gravecomb"_s);
        choose(name, u"Reset Columns and Zoom"_s);
        QVERIFY(!header->isSectionHidden(category) && !header->isSectionHidden(script));
    }

    void rowsHaveAMenuOfTheirCommands()
    {
        const auto texts = [&] {
            QContextMenuEvent event(QContextMenuEvent::Keyboard, {5, 5}, m_window->mapToGlobal(QPoint(5, 5)));
            QApplication::sendEvent(table()->viewport(), &event);
            auto *menu = m_window->findChild<QMenu *>(u"rowMenu"_s);
            const QStringList shown =
                menu && menu->isVisible() ? offersOf(*menu) : QStringList {u"(no menu)"_s};
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

    void placeIsKeptWhileRowsComeAndGo()
    {
        const InfoList infos = setManyInfos();
        table()->goToRow(1400);
        const int y = table()->rowViewportPosition(1400);
        search(u".x"_s);
        QCOMPARE(list()->countOfArrangedObjects(), 286);
        const qsizetype row = list()->rowOfObject(infos[1400]);
        QVERIFY(row >= 0);
        QVERIFY(qAbs(table()->rowViewportPosition(static_cast<int>(row)) - y) <= 1);
        QCOMPARE(selected(), infos[1400]->name());
        search(u""_s);
        QCOMPARE(table()->rowViewportPosition(1400), y);
        QCOMPARE(selected(), infos[1400]->name());
        info(3)->setName(u"changed"_s);
        undo();
        m_document->flushChanges();
        QCOMPARE(table()->rowViewportPosition(1400), y);
    }

    void whatWasChosenLastStaysInView()
    {
        const InfoList infos = setManyInfos();
        const auto isInView = [&](std::size_t place) {
            const int row = int(list()->rowOfObject(infos[place]));
            const int y = table()->rowViewportPosition(row);
            return row >= 0 && y >= 0 && y + table()->rowHeight(0) <= table()->viewport()->height();
        };
        // Chosen under a filter that had hidden another one.
        table()->goToRow(1401);
        search(u".x"_s);
        table()->goToRow(10);
        search({});
        QVERIFY(isInView(70));
        QCOMPARE(table()->currentIndex().row(), 70);
        // The record that others with the same value were asked for.
        infos[1800]->setCategory(u"Mark"_s);
        infos[2]->setCategory(u"Mark"_s);
        table()->goToRow(1800);
        m_window->selectSame(u"category"_s);
        QCOMPARE(selected(), infos[2]->name() + u' ' + infos[1800]->name());
        QVERIFY(isInView(1800));
        // Deleting goes on with the keyboard, and undoing comes back to where it began.
        table()->goToRow(900);
        for (int i = 0; i < 3; ++i) {
            QTest::keyClick(table(), Qt::Key_Delete);
            QCoreApplication::processEvents();
        }
        QCOMPARE(selected(), infos[903]->name());
        table()->verticalScrollBar()->setValue(0);
        undo();
        QCOMPARE(selected(), infos[902]->name());
        QVERIFY(isInView(902));
        undo();
        undo();
        QCOMPARE(selected(), infos[900]->name());
        QVERIFY(isInView(900));
        // What is pasted is selected, and undone the selection is the former one.
        m_window->copy();
        m_window->paste();
        QCOMPARE(list()->selectionIndexes(), IndexSet {901});
        undo();
        QCOMPARE(list()->selectionIndexes(), IndexSet {900});
        // One more record far above moves nothing.
        const int y = table()->rowViewportPosition(900);
        m_document->insertObjectInInfosAtIndex(infoNamed(u"above"_s), 0);
        QCOMPARE(table()->rowViewportPosition(901), y);
        // Another reading of the same file: other records, the same place.
        setManyInfos();
        QCOMPARE(list()->selectionIndexes(), IndexSet {900});
        QCOMPARE(table()->rowViewportPosition(900), y);
    }

    void keysWorkWhateverColumnIsCurrent()
    {
        const InfoList infos = setManyInfos();
        for (const Qt::Key key : {Qt::Key_F2, Qt::Key_Return}) {
            table()->goToRow(4);
            table()->setCurrentIndex(list()->index(4, 0)); // the picture, which nobody can edit
            QTest::keyClick(table(), key);
            QVERIFY(table()->cellDelegate().editor());
            QCOMPARE(table()->cellDelegate().editor()->text(), infos[4]->name());
            QTest::keyClick(table()->cellDelegate().editor(), Qt::Key_Escape);
            QTRY_VERIFY(!table()->cellDelegate().editor());
        }
        table()->setCurrentIndex(list()->index(4, 0));
        typeKeys(table(), u"<Ctrl+Down><Ctrl+Down><Space>"_s);
        QCOMPARE(list()->selectionIndexes(), (IndexSet {4, 6}));
        QTest::keyClick(table(), Qt::Key_End, Qt::ControlModifier);
        QCOMPARE(list()->selectionIndexes(), IndexSet {1999});
        QCOMPARE(table()->currentIndex(), list()->index(1999, 0));
        QVERIFY(table()->rowViewportPosition(1999) < table()->viewport()->height());
        QTest::keyClick(table(), Qt::Key_Home, Qt::ControlModifier);
        QCOMPARE(list()->selectionIndexes(), IndexSet {0});
        QCOMPARE(table()->currentIndex().row(), 0);
        table()->goToRow(1998);
        QTest::keyClick(table(), Qt::Key_End, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(list()->selectionIndexes(), (IndexSet {1998, 1999}));
        QTest::keyClicks(table(), u"g12"_s); // goes on to the names that begin so
        QCOMPARE(table()->currentIndex().column(), 0);
    }

    void eachFileIsSortedAsItWas()
    {
        const QTemporaryDir folder;
        const auto reopened = [this](const QString &path) {
            cleanup();
            m_document = documentOf(named(u"b a"_s), path);
            reopenWindow();
        };
        reopened(folder.filePath(u"one.xml"_s));
        table()->horizontalHeader()->setSortIndicator(columnOfField(GlyphField::Name), Qt::DescendingOrder);
        reopened(folder.filePath(u"one.xml"_s));
        QCOMPARE(list()->sortDirection(), Qt::DescendingOrder);
        table()->horizontalHeader()->setSortIndicator(columnOfField(GlyphField::Name), Qt::AscendingOrder);
        QCOMPARE(namesOf(shown()), u"a b"_s);
        reopened(folder.filePath(u"two.xml"_s));
        QCOMPARE(namesOf(shown()), u"b a"_s);
        reopened(folder.filePath(u"one.xml"_s));
        QCOMPARE(namesOf(shown()), u"a b"_s);
        table()->resetViewSettings();
        QCOMPARE(namesOf(shown()), u"b a"_s);
        reopened(folder.filePath(u"one.xml"_s));
        QCOMPARE(namesOf(shown()), u"b a"_s);
    }

    void columnsAndZoomAreRemembered()
    {
        const int hidden = columnOfField(GlyphField::Production);
        table()->setColumnShown(hidden, false);
        table()->horizontalHeader()->resizeSection(columnOfField(GlyphField::Name), 222);
        const double usual = table()->font().pointSizeF();
        const auto turnWheel = [this](int angle) {
            const QPointF place(50, 50);
            QWheelEvent event(place, table()->viewport()->mapToGlobal(place), {}, {0, angle}, Qt::NoButton,
                              Qt::ControlModifier, Qt::NoScrollPhase, false);
            QApplication::sendEvent(table()->viewport(), &event);
            return table()->font().pointSizeF();
        };
        const double size = turnWheel(120);
        QVERIFY(size > usual);
        QVERIFY(turnWheel(0) == size && turnWheel(-120) == usual && turnWheel(120) == size);
        m_window->resize(1111, 666);
        reopenWindow();
        QCOMPARE(m_window->size(), QSize(1111, 666));
        QVERIFY(table()->isColumnHidden(hidden));
        QCOMPARE(table()->columnWidth(columnOfField(GlyphField::Name)), 222);
        QCOMPARE(table()->font().pointSizeF(), size);
        table()->resetViewSettings();
        QVERIFY(!table()->isColumnHidden(hidden));
        QVERIFY(table()->font().pointSizeF() < size);
    }

    /// What is edited stands at the left, signs that are looked at in the middle; what is chosen stands out.
    void cellsAreWrittenAsTheyAreMeant()
    {
        select({0});
        QWidget &view = *table()->viewport();
        const QPalette colors = table()->palette();
        QCOMPARE(painted(view, u"A"_s).color, colors.color(QPalette::HighlightedText));
        const QString other = info(1)->name();
        QCOMPARE(painted(view, other).color, colors.color(QPalette::Text));
        const QRect name = table()->visualRect(cell(1, GlyphField::Name));
        QVERIFY(painted(view, other).place.x() < name.left() + 12);
        for (int column = 0; column < list()->columnCount(); ++column) {
            const QRect place = table()->visualRect(list()->index(1, column));
            if (isEditableColumn(column) || !view.rect().contains(place))
                continue;
            const QString text = list()->index(1, column).data().toString();
            const PaintedText sign = painted(view, text);
            if (text.isEmpty() || place.width() < 40)
                continue;
            const double middle = sign.place.x() + QFontMetricsF(sign.font).horizontalAdvance(text) / 2;
            QVERIFY2(std::abs(middle - place.center().x()) < 3, qPrintable(text));
        }
        search(u"nothing is called this"_s);
        QVERIFY(!command(u"Copy as Table"_s)->isEnabled());
    }

    void aCutCellShowsItsTextInATip()
    {
        const QString text = u"<b>very</b> long description "_s.repeated(20);
        info(0)->setDesc(text);
        m_document->flushChanges();
        const auto tipAt = [&](int row, GlyphField field) {
            const QModelIndex index = cell(row, field);
            table()->scrollTo(index);
            const QPoint place = table()->visualRect(index).intersected(table()->viewport()->rect()).center();
            QHelpEvent event(QEvent::ToolTip, place, table()->viewport()->mapToGlobal(place));
            QApplication::sendEvent(table()->viewport(), &event);
            return QToolTip::isVisible() ? QToolTip::text() : QString();
        };
        QVERIFY(tipAt(0, GlyphField::Desc).contains(u"&lt;b&gt;very"_s));
        tipAt(0, GlyphField::Name); // where there is none the last one goes
        QTRY_VERIFY(!QToolTip::isVisible());
        QCOMPARE(tipAt(0, GlyphField::Name), QString());
    }

    void delegateOfTheListIsAskedAllItsQuestions()
    {
        QuestionsDelegate delegate;
        list()->setDelegate(&delegate);
        table()->grab();
        const QModelIndex cell = this->cell(1, GlyphField::Category);
        const QPoint place = table()->visualRect(cell).center();
        QHelpEvent help(QEvent::ToolTip, place, table()->viewport()->mapToGlobal(place));
        QCoreApplication::sendEvent(table()->viewport(), &help);
        QCOMPARE(QToolTip::text(), escapedToolTip(u"Letter"_s));
        QTRY_COMPARE(table()->indexWidget(cell), delegate.view.data());
        QVERIFY(delegate.painted >= 5); // the names of five records
        table()->setCurrentIndex(cell);
        QTest::keyClick(table(), Qt::Key_F2);
        QVERIFY(!table()->cellDelegate().editor());
        QCOMPARE(
            delegate.asked,
            (QSet<QString> {u"column"_s, u"cell"_s, u"display"_s, u"edit"_s, u"view"_s, u"expansion"_s}));
    }

    void goingToARecordShowsItWhateverIsFiltered()
    {
        search(u"one"_s);
        for (const QString &typed : {u"B"_s, u"42"_s, u"U+0042"_s}) {
            m_window->goToInfo();
            auto *panel = m_window->findChild<QDialog *>();
            QVERIFY(panel);
            QCOMPARE(panel->windowTitle(), u"Go to Name or Code Point"_s);
            QVERIFY(panel->layout()->indexOf(panel->findChild<QLineEdit *>()) >= 0);
            typeKeys(panel->findChild<QLineEdit *>(), typed + u"<Return>"_s);
            QCOMPARE(selected(), u"B"_s);
            QCOMPARE(m_window->searchField()->stringValue(), QString());
            select({});
            QTRY_VERIFY(!m_window->findChild<QDialog *>());
        }
    }

private:
    /// 2,000 records, every seventh of which has ".x" in its name.
    InfoList setManyInfos()
    {
        InfoList infos;
        for (int i = 0; i < 2000; ++i)
            infos.push_back(infoNamed(u"g%1"_s.arg(i, 4, 10, QChar(u'0')) + (i % 7 ? u""_s : u".x"_s)));
        m_document->setInfos(infos);
        return infos;
    }
};

RUNEBOOK_TEST_MAIN(WindowRowsTest)
#include "WindowRowsTest.moc"
