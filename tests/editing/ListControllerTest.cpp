#include "editing/GlyphColumns.h"
#include "editing/RSRTVArrayController.h"
#include "editing/SortOrder.h"
#include "tests/Rounds.h"
#include "tests/TestMain.h"

#include <QAbstractItemModelTester>
#include <QCollator>
#include <QMimeData>
#include <QRandomGenerator>
#include <set>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

InfoPtr infoNamed(const QString &name)
{
    InfoPtr info = VXGlyphInfo::init();
    info->setName(name);
    return info;
}

/// A document with a record for each word of \a names.
std::unique_ptr<VXDocument> documentOf(const QString &names)
{
    auto document = std::make_unique<VXDocument>();
    InfoList infos;
    for (const QString &name : names.split(u' ', Qt::SkipEmptyParts))
        infos.push_back(infoNamed(name));
    document->setInfos(infos);
    document->updateChangeCount(Document::ChangeCleared);
    return document;
}

QString namesOf(const InfoList &infos)
{
    QStringList names;
    for (const InfoPtr &info : infos)
        names << info->name();
    return names.join(u' ');
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

} // namespace

class ListControllerTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { qRegisterMetaType<InfoPtr>(); }

    void drop_data()
    {
        QTest::addColumn<QString>("names");
        QTest::addColumn<QString>("rows");
        QTest::addColumn<int>("target");
        QTest::addColumn<bool>("copies");
        QTest::addColumn<QString>("expected");
        QTest::newRow("a [b] c [d] e to the front")
            << u"a b c d e"_s << u"1 3"_s << 0 << false << u"[b] [d] a c e"_s;
        QTest::newRow("[a] [b] c d e before e")
            << u"a b c d e"_s << u"0 1"_s << 4 << false << u"c d [a] [b] e"_s;
        QTest::newRow("onto its own place") << u"a b c"_s << u"1"_s << 1 << false << u"a [b] c"_s;
        QTest::newRow("to the end") << u"a b c"_s << u"0 2"_s << 3 << false << u"b [a] [c]"_s;
        QTest::newRow("into the middle of itself")
            << u"a b c d"_s << u"0 3"_s << 2 << false << u"b [a] [d] c"_s;
        QTest::newRow("copies of b c to the front")
            << u"a b c"_s << u"1 2"_s << 0 << true << u"[b] [c] a b c"_s;
        QTest::newRow("copies between") << u"a b c d"_s << u"0 3"_s << 2 << true << u"a b [a] [d] c d"_s;
        QTest::newRow("copies to the end") << u"a b"_s << u"0 1"_s << 2 << true << u"a b [a] [b]"_s;
    }

    void drop()
    {
        QFETCH(QString, names);
        QFETCH(QString, rows);
        QFETCH(int, target);
        QFETCH(bool, copies);
        QFETCH(QString, expected);
        const auto document = documentOf(names);
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
        const auto document = documentOf(u"a b c"_s);
        const auto other = documentOf(u"a b c"_s);
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

    void selectionSurvives_data()
    {
        QTest::addColumn<QString>("step");
        QTest::addColumn<QString>("expected");
        QTest::newRow("filter that keeps b") << u"filter b"_s << u"[b] ab"_s;
        QTest::newRow("filter that hides b") << u"filter c"_s << u"c"_s;
        QTest::newRow("filter and clear") << u"filter c;clear"_s << u"a [b] c ab"_s;
        QTest::newRow("two filters and clear") << u"filter c;filter a;clear"_s << u"a [b] c ab"_s;
        QTest::newRow("sort down") << u"sort"_s << u"c [b] ab a"_s;
        QTest::newRow("sort and back") << u"sort;unsort"_s << u"a [b] c ab"_s;
        QTest::newRow("a record is added") << u"add"_s << u"a [b] c ab new"_s;
        QTest::newRow("another is removed") << u"remove 0"_s << u"[b] c ab"_s;
        QTest::newRow("removed and undone") << u"remove 1;undo"_s << u"a [b] c ab"_s;
        QTest::newRow("renamed") << u"rename"_s << u"a [renamed] c ab"_s;
    }

    void selectionSurvives()
    {
        QFETCH(QString, step);
        QFETCH(QString, expected);
        const auto document = documentOf(u"a b c ab"_s);
        RSRTVArrayController controller(*document);
        const QAbstractItemModelTester tester(&controller,
                                              QAbstractItemModelTester::FailureReportingMode::QtTest);
        controller.setSelectionIndexes({1});
        const int nameColumn = columnOfField(GlyphField::Name);
        for (const QString &command : step.split(u';')) {
            if (command.startsWith("filter "_L1))
                QVERIFY(controller.setFilterPredicate(u"name contains \"%1\""_s.arg(command.mid(7))));
            else if (command == "clear"_L1)
                QVERIFY(controller.setFilterPredicate(QString()));
            else if (command == "sort"_L1)
                controller.sort(nameColumn, Qt::DescendingOrder);
            else if (command == "unsort"_L1)
                controller.sort(-1);
            else if (command == "add"_L1)
                document->addInfo(infoNamed(u"new"_s));
            else if (command.startsWith("remove "_L1))
                document->removeObjectFromInfosAtIndex(command.mid(7).toInt());
            else if (command == "undo"_L1)
                document->undoManager()->undo();
            else if (command == "rename"_L1)
                document->objectInInfosAtIndex(1)->setName(u"renamed"_s);
            document->flushChanges();
        }
        QCOMPARE(picture(controller), expected);
    }

    void rowsFollowRandomEdits()
    {
        const auto document = documentOf(u"a1 a2 b1 b2 c1 c2"_s);
        RSRTVArrayController controller(*document);
        const QAbstractItemModelTester tester(&controller,
                                              QAbstractItemModelTester::FailureReportingMode::QtTest);
        QRandomGenerator random(20);
        ExpectedRows expected {*document, {}, false, {}, {}};
        expected.arrange(true);
        const auto randomName = [&random] {
            return QChar(u'a' + random.bounded(4)) + QString::number(random.bounded(30));
        };
        for (int step = 0; step < rounds(3000); ++step) {
            const int count = static_cast<int>(document->countOfInfos());
            const InfoList before = document->infos();
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
                if (acts && (!expected.filter.isEmpty() || document->infos() != before))
                    expected.arrange(true);
                break;
            }
            case 5:
                expected.filter = random.bounded(2) ? QString() : QString(QChar(u'a' + random.bounded(4)));
                expected.added.clear();
                QVERIFY(controller.setFilterPredicate(
                    expected.filter.isEmpty() ? QString()
                                              : u"name contains \"%1\""_s.arg(expected.filter)));
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
        }
    }

    void filterStaysInForceOverUndo()
    {
        const auto document = documentOf(u"a1 b1 a2 b2 a3 b3"_s);
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
        const auto document = documentOf(u"a b c d"_s);
        RSRTVArrayController controller(*document);
        controller.setSelectionIndexes({1, 3});
        document->setInfos(documentOf(u"x d b a"_s)->infos());
        QCOMPARE(picture(controller), u"x [d] [b] a"_s);
        QCOMPARE(controller.selectionModel()->currentIndex().row(), 2);
    }

    void afterRemovingTheNextRowIsSelected_data()
    {
        QTest::addColumn<QString>("rows");
        QTest::addColumn<QString>("expected");
        QTest::newRow("a [b] c d") << u"1"_s << u"a [c] d"_s;
        QTest::newRow("[a] [b] c d") << u"0 1"_s << u"[c] d"_s;
        QTest::newRow("[a] b [c] d") << u"0 2"_s << u"b [d]"_s;
        QTest::newRow("a b c [d]") << u"3"_s << u"a b [c]"_s;
        QTest::newRow("[a] [b] [c] [d]") << u"0 1 2 3"_s << u""_s;
    }

    void afterRemovingTheNextRowIsSelected()
    {
        QFETCH(QString, rows);
        QFETCH(QString, expected);
        const auto document = documentOf(u"a b c d"_s);
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

    void naturalOrder_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<Qt::SortOrder>("order");
        QTest::addColumn<QStringList>("values");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("numbers by value")
            << u"sortName"_s << Qt::AscendingOrder << QStringList {u"a10"_s, u"a9"_s, u"a1"_s, u"a09x"_s}
            << QStringList {u"a1"_s, u"a9"_s, u"a09x"_s, u"a10"_s};
        QTest::newRow("case counts for nothing")
            << u"sortName"_s << Qt::AscendingOrder << QStringList {u"b"_s, u"A"_s, u"B"_s, u"a"_s}
            << QStringList {u"A"_s, u"a"_s, u"b"_s, u"B"_s};
        QTest::newRow("longer numbers") << u"sortName"_s << Qt::AscendingOrder
                                        << QStringList {u"x12345678901"_s, u"x9876543210"_s, u"x999999999"_s}
                                        << QStringList {u"x999999999"_s, u"x9876543210"_s, u"x12345678901"_s};
        QTest::newRow("nothing last, up")
            << u"sortName"_s << Qt::AscendingOrder << QStringList {QString(), u"b"_s, u"a"_s}
            << QStringList {u"a"_s, u"b"_s, QString()};
        QTest::newRow("nothing last, down")
            << u"sortName"_s << Qt::DescendingOrder << QStringList {QString(), u"a"_s, u"b"_s}
            << QStringList {u"b"_s, u"a"_s, QString()};
        QTest::newRow("code points by number")
            << u"unicode"_s << Qt::AscendingOrder << QStringList {u"1F600"_s, u"FFFD"_s, u"0041"_s}
            << QStringList {u"0041"_s, u"FFFD"_s, u"1F600"_s};
        QTest::newRow("long texts that begin alike")
            << u"desc"_s << Qt::DescendingOrder
            << QStringList {u"the same beginning a"_s, u"the same beginning c"_s, u"the same b"_s}
            << QStringList {u"the same beginning c"_s, u"the same beginning a"_s, u"the same b"_s};
    }

    void naturalOrder()
    {
        QFETCH(QString, field);
        QFETCH(Qt::SortOrder, order);
        QFETCH(QStringList, values);
        QFETCH(QStringList, expected);
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
        const auto document = documentOf(u"c a b"_s);
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

    void cellsTakeWhatTheFieldTakes_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("expected"); // null: refused
        QTest::newRow("name") << u"name"_s << u"x.alt"_s << u"x.alt"_s;
        QTest::newRow("name with a blank") << u"name"_s << u"x y"_s << QString();
        QTest::newRow("name of another") << u"name"_s << u"b"_s << QString();
        QTest::newRow("code points") << u"unicodes"_s << u"e9, 1f600 zz"_s << u"00E9, 1F600"_s;
        QTest::newRow("case") << u"case"_s << u"smallCaps"_s << u"smallCaps"_s;
        QTest::newRow("case without a word in files") << u"case"_s << u"other"_s << u"other"_s;
        QTest::newRow("case that is none") << u"case"_s << u"tiny"_s << QString();
        QTest::newRow("direction") << u"direction"_s << u"RTL"_s << u"RTL"_s;
        QTest::newRow("direction taken away") << u"direction"_s << u""_s << u""_s;
        QTest::newRow("direction that is none") << u"direction"_s << u"up"_s << QString();
        QTest::newRow("alternate names") << u"altNames"_s << u"one, two"_s << u"one, two"_s;
        QTest::newRow("alternate name that is a name") << u"altNames"_s << u"one, b"_s << QString();
        QTest::newRow("free text") << u"category"_s << u"My Own"_s << u"My Own"_s;
        QTest::newRow("legacy") << u"unicodeLegacy"_s << u"F001"_s << u"F001"_s;
    }

    void cellsTakeWhatTheFieldTakes()
    {
        QFETCH(QString, field);
        QFETCH(QString, typed);
        QFETCH(QString, expected);
        const auto document = documentOf(u"a b"_s);
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
