// What pasting a table does to records, without its window.
#include "editing/tables/PastePlan.h"
#include "document/TableForm.h"
#include "editing/tables/TableClipboard.h"
#include "platform/UndoManager.h"
#include "tests/RandomValues.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/editing/Records.h"

#include <QRandomGenerator>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr std::array kFields {GlyphField::Name, GlyphField::Unicodes, GlyphField::Category,
                              GlyphField::Direction, GlyphField::AltNames};
constexpr std::size_t kFieldsUsed = kFields.size();
using Values = std::array<QString, kFieldsUsed>; ///< of a record, in the order of kFields

/// "a|b;c|d": two rows of two cells.
PastedTable tableOf(const QString &text)
{
    PastedTable table;
    for (const QString &row : text.split(u';')) {
        table.rows.push_back(row.split(u'|'));
        table.columns = std::max(table.columns, table.rows.back().size());
    }
    return table;
}

QList<Values> valuesOf(const InfoList &infos)
{
    QList<Values> all;
    for (const InfoPtr &info : infos) {
        Values values;
        std::transform(kFields.begin(), kFields.end(), values.begin(),
                       [&](GlyphField field) { return info->displayText(field) + u""_s; });
        all << values;
    }
    return all;
}

QString textOf(const VXDocument &document)
{
    QStringList records;
    for (const Values &values : valuesOf(document.infos()))
        records << QStringList(values.begin(), values.end()).join(u'|');
    return records.join(u';');
}

/// A, B and C with a code point each.
std::unique_ptr<VXDocument> abc()
{
    auto document =
        documentOf(recordsOf(u"unicode=\"0041\" name=\"A\" production=\"pa\"\nunicode=\"0042\" name=\"B\"\n"
                             u"unicode=\"0043\" name=\"C\" category=\"Letter\""_s));
    return document;
}

QString applied(const PastePlan &plan, VXDocument &document)
{
    const UndoGroup group(document.undoManager());
    PastePlan::Progress progress;
    while (!plan.apply(document, document.countOfInfos(), QDeadlineTimer(0), progress)) { }
    return textOf(document);
}

// The same, told plainly: for each row the record is looked for, names are refused until none is left to
// refuse.
struct Model {
    QList<Values> records;
    QStringList refusals; ///< "row field"
    PastePlan::Counts counts;

    static QString read(std::size_t field, const QString &cell)
    {
        static const QHash<QString, QString> kForms {
            {u"0041"_s, u"0041"_s}, {u"U+0042"_s, u"0042"_s}, {u"0x43"_s, u"0043"_s}, {u"zz"_s, {}}};
        return kFields[field] == GlyphField::Unicodes ? kForms.value(cell) : cell;
    }
    static bool isInvalid(std::size_t field, const QString &cell)
    {
        return QStringList {u"bad name"_s, u"zz"_s, u"up"_s, u"x<!--"_s}.contains(cell)
            || (field == 0 && cell.isEmpty());
    }

    Model(const QList<Values> &before, const PastedTable &table, const PasteChoices &choices,
          const QList<qsizetype> &selected)
        : records(before)
    {
        struct Row {
            qsizetype record; ///< -1: new
            QMap<std::size_t, QString> values;
            bool isOut = false;
        };
        QList<Row> rows;
        const auto refuse = [&](qsizetype row, int field) {
            refusals << u"%1 %2"_s.arg(row).arg(field);
            if (field >= 0)
                rows[row].values.remove(std::size_t(field));
            if (field < 0 || (field == 0 && rows[row].record < 0)) {
                rows[row].isOut = true;
                rows[row].values.clear();
            }
        };
        QStringList keys;
        const auto keyField =
            std::size_t(std::find(kFields.begin(), kFields.end(), fieldOfKey(choices.key)) - kFields.begin());
        for (qsizetype i = 0; i < std::ssize(table.rows); ++i) {
            Row row {-1, {}};
            bool isMatched = true;
            if (choices.rows == PasteRows::ByKey) {
                const QString key = read(keyField, table.cell(i, choices.columnOf(fieldOfKey(choices.key))));
                for (qsizetype at = std::ssize(before) - 1; at >= 0; --at)
                    row.record = before[at][keyField] == key ? at : row.record;
                isMatched = !key.isEmpty() && (row.record >= 0 || choices.addsUnmatched);
                row.isOut = !key.isEmpty() && keys.contains(key);
                keys << key;
            } else if (choices.rows == PasteRows::OntoSelection) {
                isMatched = i < selected.size();
                row.record = selected.value(i, -1);
            }
            rows << row;
            if (rows.last().isOut)
                refuse(i, -1);
            else if (!isMatched)
                ++counts.unmatched;
            rows.last().isOut |= !isMatched;
            const bool isOut = rows.last().isOut;
            for (std::size_t field = 0; field < kFieldsUsed; ++field) {
                const qsizetype column = choices.columnOf(kFields[field]);
                if (isOut || column < 0 || column >= table.rows[std::size_t(i)].size())
                    continue;
                const QString cell = table.cell(i, column);
                if (cell.isEmpty() && (row.record < 0 || !choices.takesEmpty))
                    continue;
                if (row.record >= 0 && before[row.record][field] == read(field, cell)
                    && !isInvalid(field, cell))
                    continue;
                rows.last().values.insert(field, read(field, cell));
                if (isInvalid(field, cell))
                    refuse(i, int(field));
            }
        }
        const auto nameHolders = [&](const QString &name, qsizetype except) {
            bool isHeld = false;
            for (qsizetype at = 0; at < std::ssize(before); ++at)
                isHeld |=
                    before[at][0] == name && std::none_of(rows.begin(), rows.end(), [&](const Row &row) {
                        return row.record == at && row.values.contains(0);
                    });
            for (qsizetype i = 0; i < except; ++i)
                isHeld |= rows[i].values.value(0) == name;
            return isHeld;
        };
        for (Row &row : rows) {
            if (row.isOut)
                row.values.clear();
        }
        for (qsizetype i = 0; i < rows.size(); ++i) {
            if (rows[i].values.contains(0) && nameHolders(rows[i].values[0], i)) {
                refuse(i, 0);
                i = -1;
            }
        }
        for (qsizetype i = 0; i < rows.size(); ++i) {
            const QStringList others = rows[i].values.value(4).split(u", "_s, Qt::SkipEmptyParts);
            if (std::any_of(others.begin(), others.end(),
                            [&](const QString &name) { return nameHolders(name, rows.size()); }))
                refuse(i, 4);
        }
        for (const Row &row : rows) {
            const bool isNew = row.record < 0 && !row.values.isEmpty();
            if (isNew)
                records << Values {u"unknown"_s, u""_s, u""_s, u""_s, u""_s};
            counts.added += isNew;
            counts.records += row.record >= 0 && !row.values.isEmpty();
            counts.fields += row.record >= 0 ? row.values.size() : 0;
            for (const auto &[field, value] : row.values.asKeyValueRange())
                records[row.record >= 0 ? row.record : records.size() - 1][field] = value + u""_s;
        }
        refusals.sort();
    }
};

} // namespace

class PastePlanTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    /// Columns and rows are found as a person means them; what cannot be is said.
    TABLE(findsColumnsAndRows,
          (const QString &cells, const QString &selected, const QString &summary, const QString &after), {
              // "unicode: ..." is by that key, whatever is usual.
              const char *const kSame = "A|0041|||;B|0042|||;C|0043|Letter||";
              row("by name, titles in any case", "name|CATEGORY;C|Mark;A|Letter", "",
                  "2 records change in 2 fields.", "A|0041|Letter||;B|0042|||;C|0043|Mark||");
              row("by code point", "unicode: unicode|name;0x0042|be", "", "One record changes in one field.",
                  "A|0041|||;be|0042|||;C|0043|Letter||");
              row("by production name", "production: production|name;pa|be", "",
                  "One record changes in one field.", "be|0041|||;B|0042|||;C|0043|Letter||");
              row("new, and without a key", "name|unicode;D|U+1F600;|0045", "",
                  "One is new, one row matches nothing.", "A|0041|||;B|0042|||;C|0043|Letter||;D|1F600|||");
              row("a key twice", "name|category;A|Mark;A|Letter", "",
                  "One record changes in one field, one value is invalid.",
                  "A|0041|Mark||;B|0042|||;C|0043|Letter||");
              row("a column that is none", "name|colour|category;A|red|Mark", "",
                  "One record changes in one field.", "A|0041|Mark||;B|0042|||;C|0043|Letter||");
              row("by place", "Mark|RTL;Letter|LTR", "B C", "2 records change in 3 fields.",
                  "A|0041|||;B|0042|Mark|RTL|;C|0043|Letter|LTR|");
              row("other than so many", "Mark;Letter", "C", "2 rows do not fit 1 selected records.", kSame);
              row("nothing selected", "Mark;Letter", "", "2 are new.",
                  "A|0041|||;B|0042|||;C|0043|Letter||;unknown||Mark||;unknown||Letter||");
              row("nothing new", "name|category;C|Letter", "", "Nothing changes.", kSame);
              row("no code point", "name|unicode;C|0043, x", "", "One value is invalid.", kSame);
              row("names change places", "unicode: unicode|name;0041|B;0042|A", "",
                  "2 records change in 2 fields.", "B|0041|||;A|0042|||;C|0043|Letter||");
          })
    {
        const auto document = abc();
        PasteTarget target {*document, {}, {}};
        for (const QString &name : selected.split(u' ', Qt::SkipEmptyParts))
            target.selected.push_back(document->infoForName(name));
        const PastedTable table = tableOf(cells.section(u": "_s, -1));
        PasteChoices choices = usualChoices(table, {GlyphField::Category, GlyphField::Direction}, target);
        choices.key = compareKeyFromWord(cells.section(u": "_s, -2, -2)).value_or(choices.key);
        const PastePlan plan(table, choices, target);
        QCOMPARE(plan.asksForSizes() ? plan.obstacle() : plan.summary(), summary);
        if (plan.obstacle().isNull())
            applied(plan, *document);
        QCOMPARE(textOf(*document), after);
    }

    TABLE(fitsOtherSizes, (const QString &rows, int selected, int sizes, const QString &after), {
        row("X;Y", 3, int(PasteSizes::OnlyFitting), "X Y c d");
        row("X;Y", 3, int(PasteSizes::Repeat), "X Y X d");
        row("X;Y;Z", 1, int(PasteSizes::OnlyFitting), "X b c d");
        row("X;Y;Z", 1, int(PasteSizes::GoOnBelow), "X Y Z d");
        row("X;Y;Z;V;W", 1, int(PasteSizes::GoOnBelow), "X Y Z V W");
    })
    {
        const auto document = documentOf(named(u"a b c d"_s));
        for (const InfoPtr &info : document->infos())
            info->setCategory(info->name());
        const InfoList &infos = document->infos();
        const PasteTarget target {*document, {infos.begin(), infos.begin() + selected}, infos};
        PasteChoices choices = usualChoices(tableOf(rows), {GlyphField::Category}, target);
        choices.sizes = PasteSizes(sizes);
        const PastedTable table = tableOf(rows);
        const PastePlan plan(table, choices, target);
        applied(plan, *document);
        QStringList words;
        for (const Values &values : valuesOf(document->infos()))
            words << values[2];
        QCOMPARE(words.join(u' '), after);
    }

    /// Random tables into random lists: what is changed, added, refused and counted is what the model says,
    /// and one undo takes all of it back.
    void doesAsTheModel()
    {
        static const std::array<QStringList, kFieldsUsed> kWords {
            QStringList {u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s, u"bad name"_s, u""_s},
            {u"0041"_s, u"U+0042"_s, u"0x43"_s, u"zz"_s, u""_s},
            {u"Letter"_s, u"Mark"_s, u"x<!--"_s, u""_s},
            {u"LTR"_s, u"RTL"_s, u"up"_s, u""_s},
            {u"a"_s, u"q"_s, u"q, r"_s, u""_s}};
        for (quint32 seed = 0; seed < quint32(rounds(4000)); ++seed) {
            QRandomGenerator random(seed);
            const auto word = [&](std::size_t field) {
                return kWords[field].at(random.bounded(int(kWords[field].size())));
            };
            InfoList infos;
            for (int i = random.bounded(5); i >= 0; --i) {
                infos.push_back(infoNamed(kWords[0].at(random.bounded(5))));
                const QString codePoint = u"004%1"_s.arg(random.bounded(5));
                infos.back()->setUnicodes(codePoint == "0040"_L1 ? QStringList() : QStringList(codePoint));
                infos.back()->setCategory(kWords[2].at(random.bounded(2)));
            }
            const auto document = documentOf(infos);
            PasteChoices choices;
            choices.rows = PasteRows(random.bounded(3));
            choices.key = random.bounded(2) ? CompareKey::Name : CompareKey::Unicode;
            choices.addsUnmatched = random.bounded(2);
            choices.takesEmpty = random.bounded(2);
            choices.sizes = PasteSizes::OnlyFitting;
            std::vector<std::size_t> order {0, 1, 2, 3, 4};
            std::shuffle(order.begin(), order.end(), random);
            for (const std::size_t field : order)
                choices.fields.push_back(random.bounded(4) == 0 && kFields[field] != fieldOfKey(choices.key)
                                             ? std::nullopt
                                             : std::optional(kFields[field]));
            PastedTable table {{}, qsizetype(order.size())};
            for (int i = random.bounded(5); i >= 0; --i) {
                table.rows.emplace_back();
                for (const std::size_t field : order)
                    table.rows.back() << word(field);
                if (random.bounded(6) == 0)
                    table.rows.back().removeLast();
            }
            PasteTarget target {*document, {}, {}};
            QList<qsizetype> selected;
            for (qsizetype at = 0; at < std::ssize(infos); ++at) {
                if (random.bounded(2)) {
                    selected << at;
                    target.selected.push_back(infos[std::size_t(at)]);
                }
            }

            const QString before = textOf(*document);
            const Model model(valuesOf(document->infos()), table, choices, selected);
            const PastePlan plan(table, choices, target);
            QStringList refusals;
            for (const PastePlan::Refusal &refusal : plan.refusals()) {
                const auto field =
                    std::find(kFields.begin(), kFields.end(), refusal.field.value_or(GlyphField::Index));
                refusals
                    << u"%1 %2"_s.arg(refusal.row).arg(field == kFields.end() ? -1 : field - kFields.begin());
            }
            refusals.sort();
            const QByteArray context = u"seed %1: %2"_s.arg(seed).arg(plan.summary()).toUtf8();
            QVERIFY2(refusals == model.refusals, context + refusals.join(u',').toUtf8());
            QVERIFY2(plan.counts() == model.counts, context);
            applied(plan, *document);
            QVERIFY2(valuesOf(document->infos()) == model.records, context);
            document->undoManager()->undo();
            QCOMPARE(textOf(*document), before);
        }
    }

    /// What was copied as a table and is pasted again changes nothing; into new records it gives the same
    /// values.
    void copiedTablesComeBack()
    {
        const std::vector<GlyphField> fields(tableFields().begin(), tableFields().end());
        const TableForm form = TableForm::of(fields);
        Dice dice(7);
        int held = 0;
        for (int round = rounds(400); round > 0; --round) {
            InfoList infos;
            while (infos.empty() || dice.below(3)) {
                InfoPtr info = infoNamed(u"n%1"_s.arg(infos.size()));
                dice.change(*info);
                if (!hasTableLosses(*info, form))
                    infos.push_back(info);
            }
            const auto document = documentOf(infos);
            const std::unique_ptr<QMimeData> copied = tableData(infos, fields);
            for (const char *type : {"text/tab-separated-values", "text/csv"}) {
                QMimeData clipboard;
                clipboard.setData(QString::fromLatin1(type), copied->data(QString::fromLatin1(type)));
                const PastedTable table = tableOfClipboard(clipboard);
                PasteTarget target {*document, infos, {}};
                PasteChoices choices = usualChoices(table, {}, target);
                QVERIFY(choices.hasHeadings && choices.rows == PasteRows::ByKey);
                choices.rows = PasteRows::OntoSelection;
                const PastePlan onto(table, choices, target);
                QVERIFY2(onto.counts() == PastePlan::Counts() && onto.refusals().empty(),
                         qPrintable(onto.summary() + copied->text()));
                choices.rows = PasteRows::AsNew;
                const auto other = documentOf({});
                const PastePlan plan(table, choices, {*other, {}, {}});
                if (!plan.refusals().empty() || plan.counts().added != std::ssize(infos))
                    continue; // what a person may not type either
                applied(plan, *other);
                for (std::size_t i = 0; i < infos.size(); ++i, ++held) {
                    for (const GlyphField field : fields) {
                        const std::string cell = cellTextOf(*infos[i], field).toStdString();
                        // Code points get their usual form, as if typed.
                        if (field != GlyphField::Unicodes)
                            QVERIFY2(isCellOf(*other->infos()[i], field, cell), cell.c_str());
                    }
                }
            }
        }
        QVERIFY2(held > 100, qPrintable(QString::number(held)));
    }
};

RUNEBOOK_TEST_MAIN(PastePlanTest)
#include "PastePlanTest.moc"
