// Tables in and out: every value comes back or is told, and what nobody has touched is the same bytes.
#include "document/TableReader.h"
#include "document/TableWriter.h"
#include "tests/RandomValues.h"
#include "tests/Rounds.h"
#include "tests/TestMain.h"

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

using Encoding = DelimitedFormat::Encoding;

QByteArray bytesOf(const InfoList &infos, const TableFormPtr &form)
{
    std::string bytes;
    TableWriter(infos, form)([&bytes](std::string_view block) { return bytes += block, true; }, nullptr);
    return QByteArray::fromStdString(bytes);
}

DelimitedFormat randomFormat(Dice &dice)
{
    DelimitedFormat format;
    format.separator = "\t,;"[dice.below(3)];
    format.encoding = static_cast<Encoding>(dice.below(3));
    format.hasByteOrderMark = dice.below(2);
    format.quotesEverything = dice.below(4) == 0;
    format.lineEnd = dice.below(2) ? "\r\n" : "\n";
    format.endsWithLineEnd = dice.below(4) != 0;
    return format;
}

/// The fields of each record, for a failure to show: "A|0041|…".
QString textOf(const TableReading &reading)
{
    QStringList rows;
    for (const InfoPtr &info : reading.infos) {
        QStringList cells;
        for (const GlyphField field : tableFields()) {
            if (const QString text = info->displayText(field); !text.isEmpty())
                cells << headingOfField(field) + u'=' + text;
        }
        rows << cells.join(u' ');
    }
    return rows.join(u'\n');
}

/// A cell in one of the ways in which programs write it.
QByteArray randomCell(Dice &dice, char separator)
{
    static const QByteArrayList values {"",        "a",    "B7",         "0041",           "0x00e9",
                                        "U+1F600", "1E10", "é",          "a, b",           "say \"x",
                                        "x\ty",    "x;y",  "two\nlines", " lead",          "\xD7\x90",
                                        "upper",   "RTL",  "Uo",         "0x0041, 0x0042", "\xEF\xBB\xBF",
                                        "x\r\ny"};
    QByteArray value = values.at(dice.below(int(values.size())));
    const bool isPlain = !value.contains(separator) && !value.contains('\n') && !value.contains('\r')
        && !value.startsWith('"');
    return isPlain && dice.below(3) ? value : '"' + value.replace('"', "\"\"") + '"';
}

struct RandomTable {
    QByteArray utf8;
    char separator;
};

RandomTable randomTable(Dice &dice)
{
    static const QByteArrayList headings {"name",     "Unicode",   "CATEGORY",      "Sort Name",
                                          "case",     "direction", "note",          "id #",
                                          "altNames", "desc",      "unicodeLegacy", "marks"};
    RandomTable table {{}, "\t,;"[dice.below(3)]};
    const int columns = 1 + dice.below(int(headings.size()));
    const QByteArray lineEnd = QByteArrayList {"\n", "\r\n", "\r"}.at(dice.below(3));
    const QByteArray separator(1, table.separator);
    const auto addRow = [&](int cells, auto cellAt) {
        QByteArrayList row;
        for (int i = 0; i < cells; ++i)
            row << cellAt(i);
        table.utf8 += row.join(separator) + (dice.below(9) ? lineEnd : QByteArray("\n"));
    };
    const bool areQuoted = dice.below(4) == 0;
    addRow(columns, [&](int i) { return areQuoted ? '"' + headings.at(i) + '"' : headings.at(i); });
    for (int rows = dice.below(8); rows > 0; --rows) {
        const int kind = dice.below(12);
        if (kind == 0)
            table.utf8 += lineEnd;
        else if (kind == 1)
            table.utf8 += QByteArray(columns - 1, table.separator) + lineEnd;
        else if (kind == 2)
            table.utf8 += "x\"y" + separator + "\"b\"c" + lineEnd;
        else
            addRow(columns + (dice.below(8) == 0) - (dice.below(8) == 0),
                   [&](int) { return randomCell(dice, table.separator); });
    }
    if (dice.below(3) == 0) {
        while (table.utf8.endsWith('\n') || table.utf8.endsWith('\r'))
            table.utf8.chop(1);
    }
    return table;
}

} // namespace

class TablesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    /// Records to a table and back: each value is the same, or was told with what became of it.
    void givesValuesBackOrTells()
    {
        Dice dice(7);
        int told = 0;
        for (int round = 0; round < rounds(300); ++round) {
            InfoList infos;
            for (int i = dice.below(5); i >= 0; --i) {
                infos.push_back(VXGlyphInfo::init());
                for (int changes = dice.below(4); changes > 0; --changes)
                    dice.change(*infos.back());
            }
            std::vector<GlyphField> fields;
            for (const GlyphField field : tableFields()) {
                if (round % 3 || dice.below(2))
                    fields.push_back(field);
            }
            if (fields.empty())
                continue;
            const auto form = std::make_shared<const TableForm>(TableForm::of(fields, randomFormat(dice)));
            const QByteArray bytes = bytesOf(infos, form);
            Error error;
            const auto reading = TableReader({.separator = form->format.separator}).read(bytes, &error);
            QVERIFY2(reading, qPrintable(error.text()));
            QCOMPARE(reading->problemCount, 0);
            QCOMPARE(reading->infos.size(), infos.size());
            for (std::size_t i = 0; i < infos.size(); ++i) {
                const std::vector<TableLoss> losses = tableLosses(*infos[i], *form);
                QCOMPARE(hasTableLosses(*infos[i], *form), !losses.empty());
                told += int(losses.size());
                const VXGlyphInfo &read = *reading->infos[i];
                for (const GlyphField field : tableFields()) {
                    const auto loss =
                        std::find_if(losses.begin(), losses.end(),
                                     [field](const TableLoss &each) { return each.field == field; });
                    if (!form->columnOf(field) && field != GlyphField::Name)
                        QVERIFY(loss != losses.end() || !hasTableValue(*infos[i], field));
                    else if (loss != losses.end() && loss->hasColumn)
                        QCOMPARE(read.displayText(field) + u""_s, loss->after + u""_s);
                    else if (form->columnOf(field))
                        QCOMPARE(read.displayText(field) + u""_s, infos[i]->displayText(field) + u""_s);
                    if (loss != losses.end())
                        QVERIFY(!loss->sentence(*infos[i]).isEmpty());
                }
            }
            // The program's own table is written again as it was.
            QCOMPARE(bytesOf(reading->infos, reading->form), bytes);
        }
        QVERIFY(told > 20);
    }

    /// Whatever a table looks like, it is written as it was; an edited record changes its own row alone.
    void keepsWhatNobodyTouched()
    {
        Dice dice(11);
        int edits = 0;
        int left = 0;
        for (int round = 0; round < rounds(600); ++round) {
            const RandomTable table = randomTable(dice);
            DelimitedFormat format = randomFormat(dice);
            std::string encoded;
            appendEncoded((format.hasByteOrderMark ? "\xEF\xBB\xBF" : "") + table.utf8.toStdString(),
                          format.encoding, encoded);
            const QByteArray bytes = QByteArray::fromStdString(encoded);
            Error error;
            const auto reading = TableReader({.separator = table.separator}).read(bytes, &error);
            QVERIFY2(reading, qPrintable(error.text() + QString::fromUtf8(table.utf8)));
            QCOMPARE(bytesOf(reading->infos, reading->form), bytes);
            left += int(reading->rowsLeftOut);
            if (reading->infos.empty())
                continue;
            const auto place = std::size_t(dice.below(int(reading->infos.size())));
            VXGlyphInfo &info = *reading->infos[place];
            const auto &column =
                reading->form->columns[std::size_t(dice.below(int(reading->form->columns.size())))];
            if (!column.field || !storeCell(info, *column.field, dice.below(2) ? u"lower"_s : u"RTL"_s))
                continue;
            ++edits;
            const TableFormPtr &form = reading->form;
            const auto written = delimitedText(bytesOf(reading->infos, form), &error);
            QVERIFY2(written, qPrintable(error.text()));
            const QByteArray before = form->source.first(info.lineOffset());
            const QByteArray behind = form->source.mid(info.lineOffset() + info.lineLength());
            QVERIFY2(written->utf8.startsWith(before) && written->utf8.endsWith(behind),
                     written->utf8.constData());
            const auto again = TableReader({.separator = table.separator}).read(written->utf8, &error);
            QVERIFY2(again, qPrintable(error.text()));
            QCOMPARE(again->infos.size(), reading->infos.size());
            for (std::size_t i = 0; i < again->infos.size(); ++i)
                QCOMPARE(valuesOf(*again->infos[i]), valuesOf(*reading->infos[i]));
        }
        QVERIFY(edits > 50 && left > 20);
    }

    /// A table that several threads read is the same as its rows one after the other.
    void readsLargeTables()
    {
        Dice dice(3);
        for (int round = 0; round < 4; ++round) {
            QByteArray rows;
            while (rows.size() < 30000)
                rows += randomCell(dice, ',') + ',' + randomCell(dice, ',') + ",x\n";
            if (round % 2)
                rows.replace('"', '\'').replace("\r\n", "\r");
            const QByteArray head = "name,desc,note\n";
            const auto one = TableReader({.separator = ','}).read(head + rows);
            const auto many = TableReader({.separator = ','}).read(head + rows.repeated(150));
            QVERIFY(one && many);
            QCOMPARE(many->infos.size(), one->infos.size() * 150);
            QCOMPARE(many->rowsLeftOut, one->rowsLeftOut * 150);
            for (std::size_t i = 0; i < many->infos.size(); i += 7)
                QCOMPARE(many->infos[i]->desc(), one->infos[i % one->infos.size()]->desc());
            QCOMPARE(bytesOf(many->infos, many->form), many->form->source);
        }
    }

    void reads_data()
    {
        QTest::addColumn<QByteArray>("table");
        QTest::addColumn<QString>("records");
        QTest::addColumn<QString>("problems");
        const auto row = [](const char *name, const QByteArray &table, const QString &records,
                            const QString &problems = {}) {
            QTest::newRow(name) << table << records << problems;
        };
        row("titles in any case", "PRODUCTION NAME;Legacy unicode;Accents\na;0xE000;b\n",
            u"name=unknown production=a marks=b unicodeLegacy=E000"_s);
        row("code points", "unicode,name\n0x41,a\n41,b\nU+1f600,c\n\"0041; 0x42 U+43\",d\n1E10,e\n",
            u"name=a unicode=41\nname=b unicode=0041\nname=c unicode=1F600\nname=d unicode=0041, 42, 43\n"
            "name=e unicode=1E10"_s);
        row("texts stay texts", "name,desc\n0041,1E10\n0xyz,'=1'\n",
            u"name=0041 desc=1E10\nname=0xyz desc='=1'"_s);
        row("unset direction", "name\tdirection\tcase\nb\t\t\na\tltr\tUPPER\n",
            u"name=b\nname=a case=upper direction=LTR"_s);
        row("wrong words", "name,case\n\na,up\n", u"name=a"_s,
            u"Line 3, column 2 (case): “up” is no case."_s);
        row("too few cells", "name,case,script\na,upper\nb,lower,latin\n",
            u"name=b case=lower script=latin"_s, u"Line 2, column 3 (script): the row has 2 of 3 cells."_s);
        row("open quotes", "name,desc\r\na,\"x\r\nb,y\r\n", u"name=b desc=y"_s,
            u"Line 2, column 2 (desc): the quotes that begin the cell do not end."_s);
        row("text behind quotes", "name,desc\n\"a\nb\",\"x\"y\nc,z\n", u"name=c desc=z"_s,
            u"Line 2, column 2 (desc): something other than a separator stands behind the quotes that end "
            "the cell."_s);
        row("the same heading twice", "name,Name,desc\na,b,c\n", u"name=a desc=c"_s,
            u"Line 1, column 2 (Name): the column “name” stands for the same field."_s);
        row("more cells than columns", "name,desc\na,b,c\n", u"name=a desc=b"_s,
            u"Line 2, column 3: the cell stands in no column."_s);
        row("no field", "a,b\n1,2\n", u"No column is headed by a field."_s);
        row("no text", "name,desc\na,b\n\xFF,c\n", u"Line 3: It is not UTF-8 text."_s);
        row("half a character of UTF-16", QByteArray("n\0a\0m\0e\0\n\0a\0\n\0\x00\xD8", 16),
            u"Line 3: It is not UTF-16 text."_s);
    }
    void reads()
    {
        QFETCH(const QByteArray, table);
        Error error;
        const auto reading = TableReader().read(table, &error);
        QTEST(reading ? textOf(*reading) : error.failureReason, "records");
        QStringList problems;
        if (reading) {
            for (const TableProblem &problem : reading->problems)
                problems << problem.sentence();
        }
        QTEST(problems.join(u'\n'), "problems");
    }
};

RUNEBOOK_TEST_MAIN(TablesTest)
#include "TablesTest.moc"
