#include "editing/values/ValueRename.h"
#include "editing/values/ValuesModel.h"
#include "tests/RandomValues.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/editing/Records.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QSignalSpy>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

FieldAspect aspect(const QString &id)
{
    return *FieldAspect::of(id);
}

/// What a person would count: "value: among those shown/in all", in alphabetical order.
QStringList plainCounts(const VXDocument &document, const FieldAspect &counted,
                        const std::optional<IndexSet> &shown)
{
    QMap<QString, std::pair<int, int>> counts;
    const IndexSet places = shown.value_or(IndexSet::run(0, std::size_t(document.countOfInfos())));
    for (qsizetype place = 0; place < document.countOfInfos(); ++place) {
        QStringList values;
        for (const QString &value : counted.values(*document.objectInInfosAtIndex(place)))
            values << FieldValue::textOfUtf8(value.toStdString()); // half a character is any of them
        values.removeDuplicates();
        if (values.isEmpty())
            values << QString();
        for (const QString &value : values) {
            counts[value].first += std::binary_search(places.begin(), places.end(), place);
            ++counts[value].second;
        }
    }
    QStringList lines;
    for (auto it = counts.begin(); it != counts.end(); ++it)
        lines << u"%1: %2/%3"_s.arg(it.key()).arg(it->first).arg(it->second);
    return lines;
}

QStringList pictureOf(const ValueCounts &counts)
{
    QMap<QString, QString> lines;
    for (ValueCounts::Value value = 0; value < counts.valueCount(); ++value) {
        if (counts.total(value) > 0)
            lines[counts.text(value)] =
                u"%1: %2/%3"_s.arg(counts.text(value)).arg(counts.shown(value)).arg(counts.total(value));
    }
    return lines.values();
}

/// The rows of a model that is up to date.
QString rowsOf(const ValuesModel &model)
{
    QString rows;
    for (int row = 0; row < model.rowCount(); ++row)
        rows += model.lineOf(row).replace(u'\t', u' ').replace(u'\n', u';');
    return rows;
}

/// Renames as a window does; how many records have changed, or why none has.
QString rename(VXDocument &document, const QString &id, const QString &from, const QString &to)
{
    ValueRename renaming(document, aspect(id), from, to);
    while (!renaming.findUntil(QDeadlineTimer(0))) { }
    if (const Error error = renaming.objection(); !error.domain.isEmpty())
        return error.description;
    const UndoGroup group(document.undoManager(), renaming.actionName());
    while (!renaming.applyUntil(QDeadlineTimer(0))) { }
    return QString::number(renaming.records());
}

} // namespace

class ValuesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    /// Whatever happens to records, list and filter, the counts are those of a count from the beginning.
    void countsStayTrueThroughEveryEdit()
    {
        QRandomGenerator random(21);
        Dice dice(21);
        const QStringList words {u"Letter"_s, u"Mark"_s, u""_s, u"top, bottom, top"_s, u"a.sc"_s, u"é, "_s};
        const auto change = [&](VXGlyphInfo &info) {
            for (const QString &key : {u"name"_s, u"category"_s, u"anchors"_s, u"decompose"_s, u"script"_s})
                info.setValueForKey(words.at(random.bounded(words.size())), key);
            dice.change(info);
        };
        const auto made = [&] {
            const InfoPtr info = infoNamed(u"a"_s);
            change(*info);
            return info;
        };
        const QList<FieldAspect> &aspects = FieldAspect::all();
        VXDocument document;
        InfoList first =
            recordsOf(u"name=\"a.ss01\" anchors=\"top, _top\" altNames=\"x, y, x\"\n"
                      "name=\"b\" unicode=\"0041\" unicode2=\"0042\" case=\"upper\" category=\"Letter\"\n"_s);
        for (int i = 0; i < 700; ++i)
            first.push_back(made());
        document.setInfos(first);
        ValueCounts counts(document, aspect(u"category"_s));
        std::optional<IndexSet> shown;
        for (int round = 0; round < rounds(600); ++round) {
            const qsizetype count = document.countOfInfos();
            const qsizetype place = count ? random.bounded(int(count)) : 0;
            bool knowsShown = false;
            switch (random.bounded(11)) {
            case 0:
                document.insertObjectInInfosAtIndex(made(), place);
                break;
            case 1: {
                InfoList several;
                IndexSet places;
                for (int i = 0; i < (round % 5 == 0 ? 400 : 5); ++i) {
                    several.push_back(made());
                    places.push_back(place + 2 * i);
                }
                document.insertObjectsInInfosAtIndexes(several, places);
                break;
            }
            case 2:
                document.removeObjectsFromInfosAtIndexes({place, place + 1, place + 7, place + 300});
                break;
            case 3:
                if (count)
                    change(*document.objectInInfosAtIndex(place));
                knowsShown = true;
                break;
            case 4:
                for (qsizetype i = place; i < count; ++i)
                    document.objectInInfosAtIndex(i)->setCategory(words.at(random.bounded(words.size())));
                knowsShown = true;
                break;
            case 5:
                document.undoManager()->undo();
                break;
            case 6: {
                InfoList order = document.infos();
                std::reverse(order.begin(), order.end());
                document.reorderInfos(order);
                break;
            }
            case 7:
                if (count)
                    document.replaceObjectInInfosAtIndexWithObject(place, made());
                knowsShown = true;
                break;
            case 8:
                counts.setAspect(aspects.at(random.bounded(aspects.size())));
                knowsShown = true;
                break;
            case 9:
                shown = IndexSet();
                for (qsizetype i = 0; i < count; ++i) {
                    if (random.bounded(3) == 0)
                        shown->push_back(i);
                }
                if (round % 4 == 0)
                    shown.reset();
                counts.setShown(shown);
                knowsShown = true;
                break;
            default:
                document.flushChanges();
                counts.runFor(std::chrono::milliseconds(0));
                continue;
            }
            document.flushChanges();
            if (!knowsShown) { // as a window tells when its rows are other ones
                shown.reset();
                counts.setShown(shown);
            }
            if (round % 3)
                continue;
            counts.finish();
            QStringList plain = plainCounts(document, counts.aspect(), shown);
            QStringList counted = pictureOf(counts);
            if (!counts.aspect().key().isAnnounced())
                continue; // a change of it is told to nobody
            QCOMPARE(counted.join(u'\n'), plain.join(u'\n'));
            QCOMPARE(counts.shownRecords(), shown ? std::ssize(*shown) : document.countOfInfos());
        }
    }

    /// New records stand among those that are shown, and the others keep what they are.
    void insertionsAndRemovalsKeepWhatIsShown()
    {
        VXDocument document;
        document.setInfos(named(u"a b c.sc d.sc"_s));
        ValueCounts counts(document, aspect(u"suffix"_s));
        counts.setShown(IndexSet {1, 2});
        counts.finish();
        QCOMPARE(pictureOf(counts).join(u' '), u": 1/2 .sc: 1/2"_s);
        document.insertObjectInInfosAtIndex(infoNamed(u"e.sc"_s), 0);
        QCOMPARE(pictureOf(counts).join(u' '), u": 1/2 .sc: 2/3"_s);
        document.removeObjectsFromInfosAtIndexes({1, 3});
        QCOMPARE(pictureOf(counts).join(u' '), u": 1/1 .sc: 1/2"_s);
        document.objectInInfosAtIndex(2)->setName(u"f"_s);
        document.flushChanges();
        QCOMPARE(pictureOf(counts).join(u' '), u": 1/2 .sc: 1/1"_s);
    }

    /// A first look at very many, and at all again, goes on while the program is idle.
    void manyAreCountedInIdleTime()
    {
        VXDocument document;
        document.setInfos(numbered(30'000));
        ValueCounts counts(document, aspect(u"name"_s));
        ValuesModel model(counts);
        QVERIFY(!counts.isComplete());
        QTRY_VERIFY(model.isUpToDate());
        QCOMPARE(model.rowCount(), int(ListedValues::kMost));
        QCOMPARE(model.found(), 30'000);
        model.setOrder({ValueOrder::By::Text, Qt::DescendingOrder, u"G2999"_s});
        QTRY_VERIFY(model.isUpToDate());
        QVERIFY2(rowsOf(model).startsWith("g29999 1;g29998 1;"_L1), qPrintable(rowsOf(model)));
        QCOMPARE(model.rowCount(), 11);
        for (const InfoPtr &info : document.infos())
            info->setName(u"same"_s);
        document.flushChanges();
        QVERIFY(!counts.isComplete());
        model.setOrder({});
        QTRY_VERIFY(counts.isComplete() && model.isUpToDate());
        QCOMPARE(rowsOf(model), u"same 30000;"_s);
        document.objectInInfosAtIndex(0)->setDesc(QString(5000, u'x'));
        counts.setAspect(aspect(u"desc"_s));
        QTRY_VERIFY(counts.isComplete() && model.isUpToDate());
        QCOMPARE(rowsOf(model), u"(none) 29999;(very long texts) 1;"_s);
        QVERIFY(!model.canBeChosen(model.index(1, 0)));
    }

    TABLE(valuesStandInOrder,
          (const QString &id, int by, int direction, const QString &searched, const QString &rows), {
              const int text = int(ValueOrder::By::Text);
              const int count = int(ValueOrder::By::Count);
              row("most records first", "category", count, 1, "", "Letter 3;Mark 2;(none) 1;");
              row("fewest first", "category", count, 0, "", "(none) 1;Mark 2;Letter 3;");
              row("by text", "category", text, 0, "", "(none) 1;Letter 3;Mark 2;");
              row("a part, in either case", "category", text, 0, "ETT", "Letter 3;Mark 2;");
              row("numbers as numbers", "nameLength", text, 0, "", "1 3;2 1;10 1;100 1;");
              row("the same count: by text", "nameLength", count, 1, "", "1 3;2 1;10 1;100 1;");
              row("words for no value", "category", text, 1, "(none", "Mark 2;(none) 1;");
          })
    {
        VXDocument document;
        document.setInfos({infoNamed(u"a"_s, {}, u"Letter"_s), infoNamed(u"b"_s, {}, u"Letter"_s),
                           infoNamed(u"c"_s, {}, u"Mark"_s), infoNamed(u"dd"_s, {}, u"Mark"_s),
                           infoNamed(QString(10, u'e'), {}, u"Letter"_s), infoNamed(QString(100, u'f'))});
        ValueCounts counts(document, aspect(id));
        ValuesModel model(counts);
        QAbstractItemModelTester tester(&model);
        if (id == "category"_L1)
            model.setChosen({{u"Mark"_s}, {}}); // always listed
        model.setOrder({ValueOrder::By(by), Qt::SortOrder(direction), searched});
        QTRY_VERIFY(model.isUpToDate());
        QCOMPARE(rowsOf(model), rows);
    }

    void rowsAreSpoken()
    {
        VXDocument document;
        document.setInfos({infoNamed(u"a"_s, {}, u"Letter"_s), infoNamed(u"b"_s)});
        ValueCounts counts(document, aspect(u"category"_s));
        ValuesModel model(counts);
        model.setChosen({{u"Letter"_s, u"Gone"_s}, {u""_s}});
        model.sort(ValuesModel::ValueColumn, Qt::AscendingOrder);
        QTRY_VERIFY(model.isUpToDate());
        QStringList spoken;
        for (int row = 0; row < model.rowCount(); ++row)
            spoken << model.index(row, 1).data(Qt::AccessibleTextRole).toString();
        QCOMPARE(spoken.join(u"; "_s),
                 u"(none): 1 record, left out; Gone: 0 records, chosen; Letter: 1 record, chosen"_s);
    }

    TABLE(clicksChoose, (const QString &clicks, const QString &only, const QString &without), {
        row("a", "a", "");
        row("a a", "", "");
        row("a b", "b", "");
        row("a +b", "a,b", "");
        row("a +b b", "b", "");
        row("+a +a", "", "");
        row("-a", "", "a");
        row("-a -b +a", "a", "b");
        row("a -a", "", "a");
        row("-a -a", "", "");
        row("-a b", "b", "");
    })
    {
        ChosenValues chosen;
        for (const QString &click : clicks.split(u' ')) {
            const QString value = click.right(1);
            if (click.startsWith(u'+'))
                chosen.toggle(value);
            else if (click.startsWith(u'-'))
                chosen.toggleWithout(value);
            else
                chosen.choose(value);
        }
        QCOMPARE(chosen.only.join(u','), only);
        QCOMPARE(chosen.without.join(u','), without);
    }

    TABLE(valuesAreRenamed,
          (const QString &id, const QString &from, const QString &to, const QString &outcome,
           const QString &left),
          {
              row("a typing error", "category", "Leter", "Letter", "2", "Letter,Letter,,Letter");
              row("records without one", "category", "", "Mark", "1", "Leter,Leter,Mark,Letter");
              row("to nothing", "category", "Leter", "", "2", ",,,Letter");
              row("an entry", "anchor", "top", "ogonek", "2", "ogonek|bottom,ogonek,,bottom");
              row("one that is there already", "anchor", "top", "bottom", "2", "bottom,bottom,,bottom");
              row("an entry goes", "anchor", "top", "", "2", "bottom,,,bottom");
              row("a code point, as it is typed", "unicodes", "0041", "U+00c4", "1", "00C4|0042,,,");
              row("no code point", "unicodes", "0041", "x",
                  "“x” is no code point. A code point has four to six hexadecimal digits.", "0041|0042,,,");
              row("two entries for one", "anchor", "top", "a, b",
                  "“a, b” cannot stand in a list: a comma and a blank part its entries.",
                  "top|bottom,top,,bottom");
              row("the name of another", "altNames", "old", "B", "Repeating name: B", "old,,,");
              row("an alternate name", "altNames", "old", "new", "1", "new,,,");
              row("a word for a number", "letterCase", "upper", "lower", "1", "lower,,,");
              row("no such word", "letterCase", "upper", "big",
                  "The case is one of upper, lower, smallCaps, minor, or empty.", "upper,,,");
              row("names are each for itself", "name", "A", "A.alt", "1", "A.alt,B,C,D");
              row("one name for another's", "name", "A", "B",
                  "There is already an info with the same name: B", "A,B,C,D");
              row("a length is no value", "nameLength", "1", "2",
                  "“Name Length” is worked out of the field “Name” and has no values to rename. Edit that "
                  "field instead.",
                  "1,1,1,1");
          })
    {
        VXDocument document;
        document.setInfos(recordsOf(u"unicode=\"0041\" unicode2=\"0042\" name=\"A\" category=\"Leter\" "
                                    u"case=\"upper\" altNames=\"old\" "
                                    "anchors=\"top, bottom\"\n"
                                    "name=\"B\" category=\"Leter\" anchors=\"top\"\nname=\"C\"\n"
                                    "name=\"D\" category=\"Letter\" anchors=\"bottom\"\n"_s));
        const auto picture = [&] {
            QStringList records;
            for (const InfoPtr &info : document.infos())
                records << aspect(id).values(*info).join(u'|');
            return records.join(u',');
        };
        const QString before = picture();
        QCOMPARE(rename(document, id, from, to), outcome);
        QCOMPARE(picture(), left);
        if (left == before)
            return;
        const QString records = outcome == "1"_L1 ? u"1 Record"_s : outcome + u" Records"_s;
        QCOMPARE(document.undoManager()->stack()->undoText(), u"Rename Value in "_s + records);
        document.undoManager()->undo();
        QCOMPARE(picture(), before);
        QVERIFY(!document.undoManager()->canUndo());
    }
};

RUNEBOOK_TEST_MAIN(ValuesTest)
#include "ValuesTest.moc"
