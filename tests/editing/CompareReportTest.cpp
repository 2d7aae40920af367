#include "editing/compare/CompareReport.h"
#include "editing/compare/CommonLines.h"
#include "editing/compare/ComparedFields.h"
#include "editing/compare/RecordPairs.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/editing/Records.h"

#include <QBuffer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <random>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

QByteArray fileOf(const QStringList &lines)
{
    QByteArray text("<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<glyphData format=\"2\">\n");
    for (const QString &line : lines)
        text += line.toUtf8() + '\n';
    return text + "</glyphData>\n";
}

QString glyph(const QString &attributes)
{
    return u"\t<glyph %1 />"_s.arg(attributes);
}

/// A pair as a text: the left name, the right name, the keys of the fields that differ.
QString shown(const RecordPair &pair)
{
    if (!pair.right)
        return u"-"_s + pair.left->name();
    if (!pair.left)
        return u"+"_s + pair.right->name();
    QStringList fields;
    for (const ComparedField *field : differingFields(*pair.left, *pair.right))
        fields << keyOfField(field->field);
    return pair.left->name() + u':' + fields.join(u',');
}

QStringList shown(const std::vector<RecordPair> &pairs)
{
    QStringList texts;
    for (const RecordPair &pair : pairs)
        texts << shown(pair);
    return texts;
}

/// A device that fails after so many bytes.
class FailingDevice : public QBuffer
{
public:
    FailingDevice(const QByteArray &bytes, qint64 good) : m_good(good)
    {
        setData(bytes);
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

protected:
    qint64 readData(char *data, qint64 size) override
    {
        if (pos() >= m_good)
            return -1;
        return QBuffer::readData(data, qMin(size, m_good - pos()));
    }

private:
    qint64 m_good;
};

} // namespace

class CompareReportTest : public QObject
{
    Q_OBJECT
    QTemporaryDir m_folder;

    QString write(const QString &name, const QByteArray &bytes)
    {
        QFile file(m_folder.filePath(name));
        const bool ok = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
        return ok ? file.fileName() : QString();
    }

    int report(const QString &left, const QString &right, QString *text = nullptr,
               ReportFormat format = ReportFormat::Text, CompareKey key = CompareKey::Name,
               Error *error = nullptr)
    {
        QString buffer;
        QTextStream out(text ? text : &buffer);
        return compareFiles(left, right, key, format, out, error);
    }

private Q_SLOTS:
    TABLE(pairs, (const QStringList &left, const QStringList &right, int key, const QStringList &pairs), {
        const QString a = glyph(u"name=\"A\""_s);
        const QString b = glyph(u"name=\"B\" category=\"Letter\""_s);
        const QString changedB = glyph(u"name=\"B\" category=\"Mark\""_s);
        const QStringList none;

        row("identical, no descriptions", {a, b}, {a, b}, 0, none);
        row("both empty", none, none, 0, none);
        row("another order", {a, b}, {b, a}, 0, none);
        row("disjoint", {a}, {b}, 0, {u"-A"_s, u"+B"_s});
        row("one empty", {a, b}, none, 0, {u"-A"_s, u"-B"_s});
        row("a field", {a, b}, {a, changedB}, 0, {u"B:category"_s});
        row("repeated and the same", {b, changedB}, {changedB, b}, 0, none);
        row("repeated, one more on the left", {b, changedB}, {changedB}, 0, {u"-B"_s});
        row("repeated twice the same, once there", {a, a}, {a}, 0, {u"-A"_s});
        row("another way to write the same", {a, b}, {u"<glyph   name=\"A\"/>"_s, b + u"\r"_s}, 0, none);
        row("an unknown attribute is no field", {a}, {glyph(u"name=\"A\" colour=\"3\""_s)}, 0, none);
        row("case, though the record's own equality overlooks it", {glyph(u"name=\"A\" case=\"upper\""_s)},
            {a}, 0, {u"A:case"_s});
        row("by code point, renamed", {glyph(u"unicode=\"0041\" name=\"A\""_s)},
            {glyph(u"unicode=\"0041\" name=\"Alpha\""_s)}, 1, {u"A:name"_s});
        row("by code point, without one: by name", {b}, {changedB}, 1, {u"B:category"_s});
        row("a comment hides lines", {b, a}, {b, u"<!--"_s, a, u"-->"_s}, 0, {u"-A"_s});
        row("foreign lines are no records", {a, u"something"_s, u"something"_s}, {u"else"_s, a}, 0, none);
        row("one long line and many short ones",
            {glyph(u"name=\"A\" description=\"%1\""_s.arg(QString(700'000, u'x')))}, QStringList(40, a), 0,
            (QStringList {u"A:desc"_s} + QStringList(39, u"+A"_s)));
    })
    {
        const auto difference =
            differenceOfFiles(write(u"left.xml"_s, fileOf(left)), write(u"right.xml"_s, fileOf(right)),
                              static_cast<CompareKey>(key));
        QVERIFY(difference);
        QCOMPARE(shown(difference->pairs), pairs);
        QCOMPARE(difference->leftCount, GlyphDataReader().read(fileOf(left)).size());
        QCOMPARE(difference->rightCount, GlyphDataReader().read(fileOf(right)).size());
    }

    /// Taking out common lines changes nothing in the result: a comparison of all records says the same.
    TABLE(againstAllRecords, (int seed), {
        for (int seed = 1; seed <= 30; ++seed)
            row(u"seed %1"_s.arg(seed), seed);
    })
    {
        std::mt19937 random(static_cast<unsigned>(seed));
        const auto roll = [&](unsigned sides) { return static_cast<qsizetype>(random() % sides); };
        const auto line = [&] {
            return glyph(
                u"name=\"g%1\" category=\"c%2\" description=\"%3\""_s.arg(roll(400)).arg(roll(2)).arg(
                    QString(roll(seed % 5 == 0 ? 3000 : 40), u'd')));
        };
        QStringList left;
        for (int i = 0; i < 600; ++i)
            left << line();
        QStringList right = left;
        for (int i = 0; i < 25; ++i) {
            const qsizetype at = roll(static_cast<unsigned>(right.size()));
            if (i % 5 == 0)
                right.removeAt(at);
            else if (i % 5 == 1)
                right.insert(at, line());
            else if (i % 5 == 2)
                right[at] = line();
            else
                right.move(at, roll(static_cast<unsigned>(right.size())));
        }
        // A block that is longer than the walk looks ahead.
        right = right.mid(50) + right.first(50);

        const auto difference = differenceOfFiles(write(u"left.xml"_s, fileOf(left)),
                                                  write(u"right.xml"_s, fileOf(right)), CompareKey::Name);
        QVERIFY(difference);
        QStringList found = shown(difference->pairs);
        QStringList expected = shown(differingPairs(GlyphDataReader().read(fileOf(left)),
                                                    GlyphDataReader().read(fileOf(right)), CompareKey::Name));
        // With repeated names, which of them is paired with which is left to the order of what remains.
        found.sort();
        expected.sort();
        QCOMPARE(found, expected);

        QBuffer leftFile;
        QBuffer rightFile;
        leftFile.setData(fileOf(left));
        rightFile.setData(fileOf(right));
        QVERIFY(leftFile.open(QIODevice::ReadOnly) && rightFile.open(QIODevice::ReadOnly));
        const auto lines = linesNotInCommon(leftFile, rightFile);
        QVERIFY(lines);
        QVERIFY2(lines->common > 550, "lines that both files have were taken apart");
    }

    void failingDevice()
    {
        QStringList lines;
        for (int i = 0; i < 20'000; ++i)
            lines << glyph(u"name=\"g%1\" description=\"abcdefghijklmnopqrstuvwxyz\""_s.arg(i));
        const QByteArray bytes = fileOf(lines);
        for (const qint64 good : {qint64(0), qint64(10), qint64(300'000), qint64(bytes.size())}) {
            QBuffer whole;
            whole.setData(bytes);
            whole.open(QIODevice::ReadOnly);
            FailingDevice broken(bytes, good);
            QVERIFY(!linesNotInCommon(whole, broken));
        }
    }

    void tables()
    {
        const QString table = write(u"table.txt"_s, "name\tcategory\nA\tLetter\nB\tMark\n");
        const QString xml = write(
            u"same.xml"_s,
            fileOf({glyph(u"name=\"B\" category=\"Mark\""_s), glyph(u"name=\"A\" category=\"Letter\""_s)}));
        const QString comma = write(u"table.csv"_s, "name,category,direction\nA,\"Letter\",\nB,Mark,RTL\n");
        QString text;
        QCOMPARE(report(table, xml), 0);
        QCOMPARE(report(table, table), 0);
        QCOMPARE(report(comma, xml, &text), 1);
        QCOMPARE(text.count(u"direction:"_s), 1);
    }

    void text()
    {
        const QString left = write(
            u"left.xml"_s,
            fileOf({glyph(u"name=\"gone\""_s),
                    glyph(u"name=\"A\" category=\"Letter\" description=\"%1\""_s.arg(QString(60, u'd'))),
                    glyph(u"name=\"same\""_s)}));
        const QString right =
            write(u"right.xml"_s,
                  fileOf({glyph(u"name=\"A\" category=\"Mark\" description=\"%1\""_s.arg(QString(60, u'e'))),
                          glyph(u"name=\"same\""_s), glyph(u"name=\"new\u001B[31m\u202E\""_s),
                          glyph(u"name=\"more\""_s)}));
        QString text;
        QCOMPARE(report(left, right, &text), 1);
        QString expected = u"- LEFT  (3 glyphs)\n"
                           "+ RIGHT  (4 glyphs)\n"
                           "\n"
                           "Only left:\n"
                           "  - gone\n"
                           "\n"
                           "Only right:\n"
                           "  + new\\u{001b}[31m\\u{202e}\n"
                           "  + more\n"
                           "\n"
                           "Different:\n"
                           "  A\n"
                           "      category: Letter → Mark\n"
                           "      desc:\n"
                           "        - DDD\n"
                           "        + EEE\n"
                           "\n"
                           "1 only left, 2 only right, 1 different\n"_s;
        expected.replace(u"LEFT"_s, left).replace(u"RIGHT"_s, right);
        expected.replace(u"DDD"_s, QString(60, u'd')).replace(u"EEE"_s, QString(60, u'e'));
        QCOMPARE(text, expected);
    }

    void noDifferences()
    {
        const QString left = write(u"left.xml"_s, fileOf({glyph(u"name=\"A\""_s)}));
        const QString right = write(u"right.xml"_s, fileOf({glyph(u"name=\"A\""_s)}));
        QString text;
        QCOMPARE(report(left, right, &text), 0);
        QVERIFY(text.contains(u"(1 glyph)"_s));
        QVERIFY(text.endsWith(u"\nNo differences.\n"_s));
        QString json;
        QCOMPARE(report(left, right, &json, ReportFormat::Json), 0);
        QCOMPARE(QJsonDocument::fromJson(json.toUtf8()).array().size(), 0);
        QVERIFY(QJsonDocument::fromJson(json.toUtf8()).isArray());
    }

    void json()
    {
        const QString left =
            write(u"left.xml"_s,
                  fileOf({glyph(u"unicode=\"0041\" name=\"A\" category=\"Letter\" altNames=\"a, b\""_s),
                          glyph(u"unicode=\"0042\" name=\"B\""_s)}));
        const QString right =
            write(u"right.xml"_s, fileOf({glyph(u"unicode=\"0041\" name=\"A\" altNames=\"a\""_s)}));
        QString text;
        QCOMPARE(report(left, right, &text, ReportFormat::Json, CompareKey::Unicode), 1);
        const QJsonArray pairs = QJsonDocument::fromJson(text.toUtf8()).array();
        QCOMPARE(pairs.size(), 2);
        QCOMPARE(text.count(u'\n'), 4);
        const QJsonObject a = pairs.at(0).toObject();
        QCOMPARE(a[u"unicode"_s].toString(), u"0041"_s);
        QCOMPARE(a[u"name"_s].toString(), u"A"_s);
        const QJsonObject fields = a[u"different"_s].toObject();
        QCOMPARE(fields.keys(), QStringList({u"altNames"_s, u"category"_s}));
        QCOMPARE(fields[u"category"_s].toObject(),
                 QJsonObject({{u"left"_s, u"Letter"_s}, {u"right"_s, u""_s}}));
        QCOMPARE(fields[u"altNames"_s].toObject()[u"left"_s].toArray(), QJsonArray({u"a"_s, u"b"_s}));
        const QJsonObject b = pairs.at(1).toObject();
        QCOMPARE(b[u"missing"_s].toString(), u"right"_s);
        QCOMPARE(b[u"record"_s].toObject()[u"name"_s].toString(), u"B"_s);
    }

    TABLE(unreadable, (const QString &path), {
        row("not there", m_folder.filePath(u"nothing.xml"_s));
        row("a folder", m_folder.path());
        row("a device", "/dev/null");
        row("not UTF-8", write(u"latin.xml"_s, fileOf({glyph(u"name=\"A\""_s)}) + "\xE4\n"));
        row("no glyph data", write(u"page.xml"_s, "<html><body>glyph</body></html>\n"));
        row("no table", write(u"page.txt"_s, "<html><body>glyph</body></html>\n"));
    })
    {
        const QString good = write(u"good.xml"_s, fileOf({glyph(u"name=\"A\""_s)}));
        for (const auto &[left, right] : {std::pair(good, path), std::pair(path, good)}) {
            QString text;
            Error error;
            QCOMPARE(report(left, right, &text, ReportFormat::Text, CompareKey::Name, &error), 2);
            QCOMPARE(text, QString());
            QVERIFY(!error.domain.isEmpty());
            QVERIFY(!error.text().isEmpty());
        }
    }
};

RUNEBOOK_TEST_MAIN(CompareReportTest)
#include "CompareReportTest.moc"
