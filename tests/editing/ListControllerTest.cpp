#include "editing/fields/GlyphColumns.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/records/SortOrder.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/editing/Records.h"

#include <QAbstractItemModelTester>
#include <QCollator>
#include <QMimeData>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <set>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

/// A document with a record for each word of \a names.
std::unique_ptr<VXDocument> documentWith(const QString &names)
{
    return documentOf(named(names));
}

IndexSet rowsOf(const QString &text)
{
    IndexSet rows;
    for (const QString &row : text.split(u' ', Qt::SkipEmptyParts))
        rows.push_back(row.toInt());
    return rows;
}

/// A picture of the list with the selected records in brackets: "a [b] c".
QString picture(const RSRTVArrayController &controller)
{
    const IndexSet selected = controller.selectionIndexes();
    QStringList names;
    for (qsizetype row = 0; row < controller.countOfArrangedObjects(); ++row) {
        const QString name = controller.arrangedObjectAtIndex(row)->name();
        names << (std::binary_search(selected.begin(), selected.end(), row) ? u'[' + name + u']' : name);
    }
    return names.join(u' ');
}

/// The rows as filter and order have them, by scans: what was added by hand is seen until the filter is used
/// again, what was renamed keeps its row.
struct ExpectedRows {
    const VXDocument &document;
    QString filter;
    bool isSorted = false;
    InfoList rows;
    std::set<InfoPtr> added;

    void arrange(bool appliesFilter)
    {
        const std::set<InfoPtr> shown(rows.begin(), rows.end());
        rows.clear();
        for (const InfoPtr &info : document.infos()) {
            const bool passes = appliesFilter ? info->name().contains(filter) : shown.count(info) > 0;
            if (filter.isEmpty() || passes || added.count(info))
                rows.push_back(info);
        }
        if (!isSorted)
            return;
        QCollator collator(QLocale(QLocale::English, QLocale::UnitedStates));
        collator.setNumericMode(true);
        std::stable_sort(rows.begin(), rows.end(), [&](const InfoPtr &a, const InfoPtr &b) {
            return collator.compare(a->name(), b->name()) < 0;
        });
    }
    void insert(const InfoList &before)
    {
        const std::set<InfoPtr> old(before.begin(), before.end());
        for (const InfoPtr &info : document.infos()) {
            if (!filter.isEmpty() && !old.count(info))
                added.insert(info);
        }
        arrange(false);
    }
    void remove()
    {
        const auto isGone = [](const InfoPtr &info) { return info->listings() == 0; };
        std::erase_if(rows, isGone);
        std::erase_if(added, isGone);
    }
};

/// The selection by scans: what was chosen stays so while it is listed, whether it is seen or not; the next
/// row, else the one before, follows on a current one that is gone.
struct ExpectedSelection {
    const RSRTVArrayController &controller;
    std::set<InfoPtr> chosen;
    InfoPtr current;
    InfoList former; ///< the rows before the step
    bool isKnown;

    void take()
    {
        isKnown = true;
        const InfoList selected = controller.selectedObjects();
        chosen = {selected.begin(), selected.end()};
        current = shownCurrent();
    }
    void follow()
    {
        const auto isListed = [](const InfoPtr &info) { return info->listings() > 0; };
        std::erase_if(chosen, [&](const InfoPtr &info) { return !isListed(info); });
        if (!current || isListed(current))
            return;
        const auto gone = std::ranges::find(former, current);
        const auto next = std::find_if(gone, former.end(), isListed);
        const auto before = std::find_if(std::make_reverse_iterator(gone), former.rend(), isListed);
        current = next != former.end()                        ? *next
            : gone != former.end() && before != former.rend() ? *before
                                                              : nullptr;
    }
    InfoPtr shownCurrent() const
    {
        const QModelIndex index = controller.selectionModel()->currentIndex();
        return index.isValid() ? controller.arrangedObjectAtIndex(index.row()) : nullptr;
    }
};

} // namespace

class ListControllerTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { qRegisterMetaType<InfoPtr>(); }

    TABLE(drop, (const QString &names, const QString &rows, int target, bool copies, const QString &expected),
          {
              row("a [b] c [d] e to the front", "a b c d e", "1 3", 0, false, "[b] [d] a c e");
              row("[a] [b] c d e before e", "a b c d e", "0 1", 4, false, "c d [a] [b] e");
              row("onto its own place", "a b c", "1", 1, false, "a [b] c");
              row("to the end", "a b c", "0 2", 3, false, "b [a] [c]");
              row("into the middle of itself", "a b c d", "0 3", 2, false, "b [a] [d] c");
              row("copies of b c to the front", "a b c", "1 2", 0, true, "[b] [c] a b c");
              row("copies between", "a b c d", "0 3", 2, true, "a b [a] [d] c d");
              row("copies to the end", "a b", "0 1", 2, true, "a b [a] [b]");
          })
    {
        const auto document = documentWith(names);
        RSRTVArrayController controller(*document);
        const QAbstractItemModelTester tester(&controller,
                                              QAbstractItemModelTester::FailureReportingMode::QtTest);
        const std::unique_ptr<QMimeData> data(controller.mimeDataForRows(rowsOf(rows)));
        QVERIFY(data);
        controller.dropMimeData(data.get(), copies ? Qt::CopyAction : Qt::MoveAction, target, 0, {});
        QCOMPARE(picture(controller), expected);
        QCOMPARE(namesOf(document->infos()), namesOf(controller.arrangedObjects()));

        document->undoManager()->undo();
        QCOMPARE(namesOf(document->infos()), names);
        document->undoManager()->redo();
        QCOMPARE(namesOf(document->infos()), QString(expected).remove(u'[').remove(u']'));
    }

    void dropsFromElsewhereAreRefused()
    {
        const auto document = documentWith(u"a b c"_s);
        const auto other = documentWith(u"a b c"_s);
        RSRTVArrayController controller(*document);
        RSRTVArrayController otherController(*other);
        const std::unique_ptr<QMimeData> foreign(otherController.mimeDataForRows({0}));
        controller.dropMimeData(foreign.get(), Qt::MoveAction, 3, 0, {});
        QMimeData broken;
        broken.setData(RSRTVArrayController::dragType(), QByteArray("\1rubbish"));
        controller.dropMimeData(&broken, Qt::MoveAction, 3, 0, {});
        QCOMPARE(namesOf(document->infos()), u"a b c"_s);
        QVERIFY(!document->isDocumentEdited());

        controller.setDraggingEnabled(false);
        QVERIFY(!controller.mimeDataForRows({0}));
        controller.setDraggingEnabled(true);
        QVERIFY(controller.setFilterPredicate(u"name contains \"a\""_s));
        QVERIFY2(!controller.mimeDataForRows({0}), "rows of a filtered table are no places in the list");
    }

    TABLE(selectionSurvives, (const QString &step, const QString &expected), {
        row("another is chosen under a filter", "filter c;select 0;clear", "a b [c] ab");
        row("removed and undone", "remove 1;undo", "a [b] c ab");
    })
    {
        const auto document = documentWith(u"a b c ab"_s);
        RSRTVArrayController controller(*document);
        const QAbstractItemModelTester tester(&controller,
                                              QAbstractItemModelTester::FailureReportingMode::QtTest);
        controller.setSelectionIndexes({1});
        for (const QString &command : step.split(u';')) {
            if (command.startsWith("filter "_L1))
                QVERIFY(controller.setFilterPredicate(u"name contains \"%1\""_s.arg(command.mid(7))));
            else if (command.startsWith("select "_L1))
                controller.setSelectionIndexes(rowsOf(command.mid(7)));
            else if (command == "clear"_L1)
                QVERIFY(controller.setFilterPredicate(QString()));
            else if (command.startsWith("remove "_L1))
                document->removeObjectFromInfosAtIndex(command.mid(7).toInt());
            else if (command == "undo"_L1)
                document->undoManager()->undo();
            document->flushChanges();
        }
        QCOMPARE(picture(controller), expected);
    }

    void rowsFollowRandomEdits()
    {
        const auto document = documentWith(u"a1 a2 b1 b2 c1 c2"_s);
        RSRTVArrayController controller(*document);
        const QAbstractItemModelTester tester(&controller,
                                              QAbstractItemModelTester::FailureReportingMode::QtTest);
        QRandomGenerator random(20);
        ExpectedRows expected {*document, {}, false, {}, {}};
        expected.arrange(true);
        ExpectedSelection selection {controller, {}, {}, {}, true};
        QSignalSpy inserted(document.get(), &VXDocument::infosInserted);
        const auto randomName = [&random] {
            return QChar(u'a' + random.bounded(4)) + QString::number(random.bounded(30));
        };
        for (int step = 0; step < rounds(3000); ++step) {
            const int count = static_cast<int>(document->countOfInfos());
            const InfoList before = document->infos();
            inserted.clear();
            selection.former = expected.rows;
            const int what = random.bounded(10);
            switch (what) {
            case 0:
                document->insertObjectInInfosAtIndex(infoNamed(randomName()), random.bounded(count + 1));
                expected.insert(before);
                break;
            case 1:
                if (count > 4)
                    document->removeObjectFromInfosAtIndex(random.bounded(count));
                expected.remove();
                break;
            case 2:
                document->objectInInfosAtIndex(random.bounded(count))->setName(randomName());
                break;
            case 3:
            case 4: {
                UndoManager &history = *document->undoManager();
                const bool acts = what == 3 ? history.canUndo() : history.canRedo();
                what == 3 ? history.undo() : history.redo();
                expected.remove();
                // A step may have put in and taken out the same: the list is arranged all the same.
                if (acts
                    && (!expected.filter.isEmpty() || document->infos() != before || !inserted.isEmpty()))
                    expected.arrange(true);
                break;
            }
            case 5:
                expected.filter = random.bounded(2) ? QString() : QString(QChar(u'a' + random.bounded(4)));
                expected.added.clear();
                QVERIFY(controller.setFilterPredicate(
                    expected.filter.isEmpty() ? QString() : u"name contains \"%1\""_s.arg(expected.filter)));
                expected.arrange(true);
                break;
            case 6:
                expected.isSorted = random.bounded(2);
                controller.sort(expected.isSorted ? columnOfField(GlyphField::Name) : -1);
                expected.arrange(true);
                break;
            case 7: {
                InfoList infos;
                IndexSet places;
                for (qsizetype i = 0; i < random.bounded(100); ++i) {
                    infos.push_back(infoNamed(u'd' + QString::number(i)));
                    places.push_back(i * 2);
                }
                document->insertObjectsInInfosAtIndexes(infos, places);
                if (!infos.empty())
                    expected.insert(before);
                break;
            }
            case 8:
                if (count > 0) {
                    document->replaceObjectInInfosAtIndexWithObject(random.bounded(count),
                                                                    infoNamed(randomName()));
                    expected.remove();
                    expected.insert(before);
                }
                break;
            default: {
                IndexSet places;
                for (qsizetype i = random.bounded(3);
                     i < count && places.size() + 5 < static_cast<std::size_t>(count);
                     i += 1 + random.bounded(3))
                    places.push_back(i);
                document->removeObjectsFromInfosAtIndexes(places);
                expected.remove();
                break;
            }
            }
            document->flushChanges();
            if (random.bounded(2))
                QCoreApplication::processEvents();
            QCOMPARE(namesOf(controller.arrangedObjects()), namesOf(expected.rows));
            for (qsizetype row = 0; row < controller.countOfArrangedObjects(); ++row)
                QCOMPARE(controller.rowOfObject(controller.arrangedObjectAtIndex(row)), row);
            // Undo brings back places, and what is put for another record stands in its place.
            selection.isKnown &= what != 3 && what != 4 && what != 8;
            if (selection.isKnown) {
                selection.follow();
                InfoList chosen = expected.rows;
                std::erase_if(chosen, [&](const InfoPtr &info) { return !selection.chosen.count(info); });
                QCOMPARE(namesOf(controller.selectedObjects()), namesOf(chosen));
                const bool isSeen = std::ranges::count(expected.rows, selection.current) > 0;
                QCOMPARE(selection.shownCurrent(), isSeen ? selection.current : nullptr);
                if (random.bounded(3))
                    continue;
            }
            IndexSet rows;
            for (int row = random.bounded(4); row < int(expected.rows.size()); row += 1 + random.bounded(9))
                rows.push_back(row);
            if (controller.selectionIndexes() == rows)
                continue;
            controller.setSelectionIndexes(rows);
            selection.take();
        }
    }

    void aRecordListedTwiceStandsInTwoRows()
    {
        const auto document = documentWith(u"a b c"_s);
        RSRTVArrayController controller(*document);
        const InfoPtr twice = document->objectInInfosAtIndex(0);
        document->insertObjectInInfosAtIndex(twice, 2);
        QCOMPARE(picture(controller), u"a b a c"_s);
        QVERIFY(controller.setFilterPredicate(u"name contains \"a\""_s));
        QCOMPARE(picture(controller), u"a a"_s);
        QCoreApplication::processEvents(); // ends the undo step
        document->removeObjectFromInfosAtIndex(0);
        document->flushChanges();
        QCOMPARE(picture(controller), u"a"_s);
        controller.setFilterPredicate(QString());
        QCOMPARE(picture(controller), u"b a c"_s);
        document->undoManager()->undo();
        twice->setName(u"z"_s);
        document->flushChanges();
        QCOMPARE(picture(controller), u"z b z c"_s);
        QCOMPARE(document->infoForName(u"z"_s), twice);
        document->removeObjectFromInfosAtIndex(2);
        document->flushChanges();
        QCOMPARE(picture(controller), u"z b c"_s);
        QCOMPARE(document->infoForName(u"z"_s), twice);
        document->insertObjectsInInfosAtIndexes(document->infos(), {3, 4, 5}); // its own list
        document->flushChanges();
        QCOMPARE(picture(controller), u"z b c z b c"_s);
    }

    /// Whether a filter gave up does not hang on what the caller passes for the error.
    void aFilterThatGaveUpIsToldOf()
    {
        const auto document = documentOf(named(QString(60, u'a') + u'!'));
        RSRTVArrayController controller(*document);
        const QString hostile = u"name MATCHES \"(a+)+$\""_s;
        QVERIFY(!controller.setFilterPredicate(hostile));
        QVERIFY(controller.filterPredicate().isNull());
        Error ofBefore {u"Before"_s, 1, {}, {}, {}};
        QVERIFY(controller.setFilterPredicate(u"name contains \"a\""_s, &ofBefore));
        QCOMPARE(ofBefore.domain, u"Before"_s);
        QVERIFY(!controller.setFilterPredicate(hostile, &ofBefore));
        QCOMPARE(ofBefore.code, int(Predicate::PatternGaveUp));
    }

    void filterStaysInForceOverUndo()
    {
        const auto document = documentWith(u"a1 b1 a2 b2 a3 b3"_s);
        RSRTVArrayController controller(*document);
        QVERIFY(controller.setFilterPredicate(u"name contains \"a\""_s));
        controller.setSelectionIndexes({0});
        controller.remove();
        QCOMPARE(picture(controller), u"[a2] a3"_s);
        document->undoManager()->undo();
        QCOMPARE(picture(controller), u"[a1] a2 a3"_s);
        document->undoManager()->redo();
        QCOMPARE(picture(controller), u"[a2] a3"_s);
        controller.setFilterPredicate(QString());
        document->removeObjectsFromInfosAtIndexes({0, 1, 2});
        QVERIFY(controller.setFilterPredicate(u"name contains \"b\""_s));
        document->undoManager()->undo();
        QVERIFY2(picture(controller) == "b1 b2 b3"_L1, qPrintable(picture(controller)));
        document->insertObjectInInfosAtIndex(infoNamed(u"new"_s), 3);
        QCOMPARE(picture(controller), u"b1 b2 new b3"_s); // one that was just added is seen
        document->objectInInfosAtIndex(0)->setName(u"a0"_s);
        document->undoManager()->undo();
        QCOMPARE(picture(controller), u"b1 b2 b3"_s);
    }

    void selectionSurvivesAnotherReadingOfTheFile()
    {
        const auto document = documentWith(u"a b c d"_s);
        RSRTVArrayController controller(*document);
        controller.setSelectionIndexes({1, 3});
        document->setInfos(documentWith(u"x d b a"_s)->infos());
        QCOMPARE(picture(controller), u"x [d] [b] a"_s);
        QCOMPARE(controller.selectionModel()->currentIndex().row(), 2);
    }

    TABLE(afterRemovingTheNextRowIsSelected, (const QString &rows, const QString &expected), {
        row("a [b] c d", "1", "a [c] d");
        row("[a] [b] c d", "0 1", "[c] d");
        row("[a] b [c] d", "0 2", "b [d]");
        row("a b c [d]", "3", "a b [c]");
        row("[a] [b] [c] [d]", "0 1 2 3", "");
    })
    {
        const auto document = documentWith(u"a b c d"_s);
        RSRTVArrayController controller(*document);
        controller.setSelectionIndexes(rowsOf(rows));
        const QString before = picture(controller);
        controller.remove();
        QCOMPARE(picture(controller), expected);
        document->undoManager()->undo();
        QCOMPARE(picture(controller), before);
        QCOMPARE(controller.selectionModel()->currentIndex().row(), rowsOf(rows).front());
        document->undoManager()->redo();
        QCOMPARE(picture(controller), expected);
    }

    TABLE(naturalOrder,
          (const QString &field, const Qt::SortOrder &order, const QStringList &values,
           const QStringList &expected),
          {
              row("numbers by value", "sortName", Qt::AscendingOrder, {u"a10"_s, u"a9"_s, u"a1"_s, u"a09x"_s},
                  {u"a1"_s, u"a9"_s, u"a09x"_s, u"a10"_s});
              row("case counts for nothing", "sortName", Qt::AscendingOrder, {u"b"_s, u"A"_s, u"B"_s, u"a"_s},
                  {u"A"_s, u"a"_s, u"b"_s, u"B"_s});
              row("longer numbers", "sortName", Qt::AscendingOrder,
                  {u"x12345678901"_s, u"x9876543210"_s, u"x999999999"_s},
                  {u"x999999999"_s, u"x9876543210"_s, u"x12345678901"_s});
              row("nothing last, up", "sortName", Qt::AscendingOrder, {QString(), u"b"_s, u"a"_s},
                  {u"a"_s, u"b"_s, QString()});
              row("nothing last, down", "sortName", Qt::DescendingOrder, {QString(), u"a"_s, u"b"_s},
                  {u"b"_s, u"a"_s, QString()});
              row("code points by number", "unicode", Qt::AscendingOrder, {u"1F600"_s, u"FFFD"_s, u"0041"_s},
                  {u"0041"_s, u"FFFD"_s, u"1F600"_s});
              row("long texts that begin alike", "desc", Qt::DescendingOrder,
                  {u"the same beginning a"_s, u"the same beginning c"_s, u"the same b"_s},
                  {u"the same beginning c"_s, u"the same beginning a"_s, u"the same b"_s});
          })
    {
        InfoList infos;
        for (const QString &value : values) {
            infos.push_back(VXGlyphInfo::init());
            if (!value.isNull())
                infos.back()->setValueForKey(value, field);
        }
        QStringList sorted;
        for (const quint32 place : sortedPlaces(infos, *fieldForKey(field), order))
            sorted << infos[place]->valueForKey(field).toString();
        QCOMPARE(sorted, expected);
    }

    void shownOrderIsWrittenOnce()
    {
        const auto document = documentWith(u"c a b"_s);
        RSRTVArrayController controller(*document);
        controller.sort(columnOfField(GlyphField::Name));
        QVERIFY2(!document->isDocumentEdited(), "sorting the table is no change of the document");
        controller.writeArrangedOrder();
        QCOMPARE(namesOf(document->infos()), u"a b c"_s);
        QCOMPARE(controller.sortColumn(), -1);
        document->undoManager()->undo();
        QCOMPARE(namesOf(document->infos()), u"c a b"_s);
        QVERIFY(!document->isDocumentEdited());
    }

    // expected: null: refused
    TABLE(cellsTakeWhatTheFieldTakes, (const QString &field, const QString &typed, const QString &expected), {
        row("name", "name", "x.alt", "x.alt");
        row("name with a blank", "name", "x y", QString());
        row("name of another", "name", "b", QString());
        row("code points", "unicodes", "e9, 1f600 zz", "00E9, 1F600");
        row("case", "case", "smallCaps", "smallCaps");
        row("case without a word in files", "case", "other", "other");
        row("case that is none", "case", "tiny", QString());
        row("direction", "direction", "RTL", "RTL");
        row("direction taken away", "direction", "", "");
        row("direction that is none", "direction", "up", QString());
        row("alternate names", "altNames", "one, two", "one, two");
        row("alternate name that is a name", "altNames", "one, b", QString());
        row("free text", "category", "My Own", "My Own");
        row("legacy", "unicodeLegacy", "F001", "F001");
    })
    {
        const auto document = documentWith(u"a b"_s);
        RSRTVArrayController controller(*document);
        const int column = columnOfField(*fieldForKey(field));
        const QModelIndex cell = controller.index(0, column);
        const QString before = cell.data(Qt::EditRole).toString();
        QCOMPARE(controller.setData(cell, typed), !expected.isNull());
        QCOMPARE(cell.data(Qt::EditRole).toString(), expected.isNull() ? before : expected);
        QCOMPARE(document->isDocumentEdited(), !expected.isNull());
        document->undoManager()->undo();
        QCOMPARE(cell.data(Qt::EditRole).toString(), before);
        document->undoManager()->redo();
        QCOMPARE(cell.data(Qt::EditRole).toString(), expected.isNull() ? before : expected);
    }
};

RUNEBOOK_TEST_MAIN(ListControllerTest)
#include "ListControllerTest.moc"
