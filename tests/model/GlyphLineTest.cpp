// One record, one line: reading it, writing it, and writing it again as it stood.
#include "model/GlyphLineReader.h"
#include "model/GlyphLineWriter.h"
#include "tests/RandomValues.h"
#include "tests/Rounds.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/model/PlainRecord.h"

#include <QRandomGenerator>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

const QString kArabicMarks =
    u"fathatan-ar, dammatan-ar, fatha-ar, damma-ar, shadda-ar, sukun-ar, madda-ar, hamzaabove-ar, "
    "noonghunna-ar, alefabove-ar, kasratan-ar, kasra-ar, hamzabelow-ar, alefbelow-ar"_s;

/// A file's line as it stands between two others.
struct LineInFile {
    explicit LineInFile(const QString &line, ReadNotes *notes = nullptr)
        : bytes("\n\t" + line.toUtf8() + '\n'),
          reader(SourcePtr(new SourceBytes(bytes)), notes),
          info(reader.read(2, bytes.size() - 1, true))
    {
    }
    QByteArray bytes;
    GlyphLineReader reader;
    InfoPtr info;
};

/// The line printed field by field: the copy was never a line.
QString printedFieldByField(const VXGlyphInfo &info, int version)
{
    const InfoPtr copy = info.copy();
    copy->setDesc(info.desc());
    copy->setSortNameOld(info.sortNameOld());
    return copy->lineXMLFormatVersion(version);
}

QString linesInAllVersions(const VXGlyphInfo &info, QString (*print)(const VXGlyphInfo &, int))
{
    QString lines;
    for (const int version : {0, 1, 2, 3, 255})
        lines += QString::number(version) + print(info, version);
    return lines;
}

/// Lines that are nearly right: whole ones of the writer with small damage, so that every test on the way to
/// "may be copied as it stands" is met from both sides.
QString nearlyRightLine(QRandomGenerator &random)
{
    const QStringList attributes =
        u"unicode=\"0041\" |unicode2=\"0042\" |unicode3=\"0042\" |unicodeLegacy=\"E000\" |name=\"a\" "
        u"|sortName=\"s\" |sortNameOld=\"o\" |sortNameKeep=\"k\" |decompose=\"f, i\" |category=\"Letter\" "
        u"|subCategory=\"Uppercase\" |case=\"upper\" |script=\"latin\" |production=\"uni0041\" "
        u"|direction=\"RTL\" |altNames=\"b, c\" |description=\"d é & <x> ' \" |anchors=\"top\" "
        u"|accents=\"acute\" |marks=\"acute\" |unicode=\"00e9\" |unicodeLegacy=\"E0\" |case=\"other\" "
        u"|case=\"normal\" |direction=\"right\" |direction=\"\uFEFFRTL\" |unicodes=\"41, 42\" |legacy=\"x\" "
        u"|desc=\"y\" |name=\"\" |marks=\" z\" |index=\"5\" |name=\"ü€𝄞\" |production=\"\uFEFFx\" "
        u"|unicodes=\",41  42,,43, \" |unicodes=\", ,\" |unicode=\"00z\" |unicode=\"1f600\" "
        u"|unicodeLegecy=\"E1\" "
        u"|direction=\"VTX\" |case=\"smallCaps\" |case=\"\" |accents=\"\" |marks=\"%1\" |accents=\"%1\" "_s
            .arg(kArabicMarks)
            .split(u'|');
    QString line = u"<glyph "_s;
    const int chance = random.bounded(1, 6);
    for (int i = 0; i < attributes.size(); ++i) {
        const bool isUsual = i < 20;
        if (random.bounded(isUsual ? 6 : 40) < (isUsual ? chance : 1))
            line += attributes[i];
    }
    line += u"/>"_s;
    const QStringList damage =
        u"|\"|\"\"| |\t|  |=|/>|/|>|<!--|-->|<!-- c -->|é|€|\uFEFF|x|\" |=\"|\"/>|a=\"b\" |𝄞𝄞𝄞𝄞𝄞𝄞|éééééééé"_s
            .split(u'|');
    for (int count = random.bounded(3); count > 0; --count) {
        const auto place = random.bounded(random.bounded(9) ? 7 : 0, static_cast<int>(line.size()) + 1);
        line.replace(place, random.bounded(3), damage[random.bounded(static_cast<int>(damage.size()))]);
    }
    return line;
}

} // namespace

class GlyphLineTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    TABLE(reads, (const QString &line, const QString &record), {
        row("all attributes",
            u"<glyph unicode=\"0041\" unicode2=\"0042\" unicodeLegacy=\"E000\" name=\"A\" sortName=\"s\" "
            u"sortNameOld=\"o\" sortNameKeep=\"k\" decompose=\"a, b\" category=\"Letter\" "
            u"subCategory=\"Other\" "
            u"case=\"smallCaps\" script=\"latin\" production=\"p\" direction=\"VTR\" altNames=\"x, y\" "
            u"description=\"d\" anchors=\"top\" marks=\"m\" />",
            u"name=A; anchors=top; category=Letter; decompose=a, b; desc=d; marks=m; production=p; "
            u"script=latin; "
            u"sortName=s; sortNameKeep=k; sortNameOld=o; subCategory=Other; unicodeLegacy=E000; "
            u"unicodes=0041|0042; altNames=x|y; direction=3; case=3");
        row("first to last comment", u"<glyph <!--a--> name=\"A\" <!--b--> script=\"x\"/>",
            u"name=unknown; script=x");
        row("comment that is none", u"<glyph name=\"A\" description=\"<!-->\" />", u"name=A; desc=<!-->");
        row("end before beginning", u"<glyph name=\"-->\" description=\"<!--\" />", u"name=-->; desc=<!--");
        row("unclosed comment", u"<glyph name=\"A\" <!-- script=\"x\" category=\"B\"/>", u"name=A");
        row("tab is an empty key", u"<glyph name=\"a\"\tscript=\"x\" category=\"b\" anchors=\"c\"/>",
            u"name=a");
        row("bound: begins behind it", u"<glyph description=\"éééééééééééééé\" name=\"ab\"/>",
            u"name=unknown; desc=éééééééééééééé");
        row("sign of three bytes for the equals", u"<glyph name€v\" script=\"x\"/>",
            u"name=unknown; script=x");
        row("refused marks", u"<glyph marks=\"%1\"/>"_s.arg(kArabicMarks), "name=unknown");
        row("NUL", u"<glyph name=\"a"_s + QChar(0) + u"b\" script=\"x\"/>"_s,
            u"name=a"_s + QChar(0) + u"b; script=x"_s);
    })
    {
        const InfoPtr info = VXGlyphInfo::initWithLineXMLFileVersion(line);
        QVERIFY(info);
        QCOMPARE(PlainRecord::of(*info).toString(), record);
        quint8 hint = 0;
        QCOMPARE(PlainRecord::ofLine(line, hint).value().toString(), record);
    }

    void writes()
    {
        const InfoPtr info = VXGlyphInfo::init();
        info->setUnicodes({u"41"_s, u"42"_s, u"43"_s, u"44"_s});
        for (const QString &key : u"unicodeLegacy name sortName sortNameOld sortNameKeep decompose category "
                                  "subCategory script production desc anchors marks"_s.split(u' '))
            info->setValueForKey(QString(u"& < > ' "_s + key), key);
        info->setCase(VXGlyphInfo::minor);
        info->setDirection(VXGlyphInfo::VTL);
        info->setAltNames(QStringList {u"a"_s, u"b"_s});
        info->setIndex(7);
        QCOMPARE(info->lineXMLFormatVersion(2),
                 u"\t<glyph unicode=\"41\" unicode2=\"42\" unicode3=\"42\" unicodeLegacy=\"& < > ' "
                 u"unicodeLegacy\" "
                 "name=\"& < > ' name\" sortName=\"& < > ' sortName\" sortNameOld=\"& < > ' sortNameOld\" "
                 "sortNameKeep=\"& < > ' sortNameKeep\" decompose=\"& < > ' decompose\" "
                 "category=\"& < > ' category\" subCategory=\"& < > ' subCategory\" case=\"minor\" "
                 "script=\"& < > ' script\" production=\"& < > ' production\" direction=\"VTL\" "
                 "altNames=\"a, b\" description=\"& < > ' desc\" anchors=\"& < > ' anchors\" "
                 "marks=\"& < > ' marks\" />\n"_s);
        // Whatever is set, absent and empty texts among it, in every version.
        Dice dice(4);
        for (int round = 0; round < rounds(5'000); ++round) {
            const InfoPtr any = VXGlyphInfo::init();
            dice.change(*any);
            if (dice.below(4) == 0)
                any->setValueForKey(QString(), u"name"_s);
            for (const int version : {0, 1, 2, 3})
                QCOMPARE(any->lineXMLFormatVersion(version).toUtf8(),
                         PlainRecord::of(*any).line(version).toUtf8());
        }
    }

    void readsAsWrittenOut()
    {
        QRandomGenerator random(1);
        for (int round = 0; round < rounds(20'000); ++round) {
            const QString line = nearlyRightLine(random).trimmed();
            quint8 hint = 9; // stays where the line tells of no version
            quint8 expectedHint = 9;
            const InfoPtr info = VXGlyphInfo::initWithLineXMLFileVersion(line, &hint);
            const std::optional<PlainRecord> expected = PlainRecord::ofLine(line, expectedHint);
            QCOMPARE(info != nullptr, expected.has_value());
            if (!info)
                continue;
            PlainRecord read = PlainRecord::of(*info);
            QVERIFY2(
                read == *expected,
                qPrintable(line + "\n got: "_L1 + read.toString() + "\nwant: "_L1 + expected->toString()));
            QCOMPARE(hint, expectedHint);
            for (const int version : {0, 1, 2, 3})
                QCOMPARE(info->lineXMLFormatVersion(version), expected->line(version));
        }
    }

    TABLE(repeatsWholeLines, (const QString &line, const QString &versions), {
        row("either", u"<glyph unicode=\"0041\" name=\"A\" category=\"Letter\" />", "1 2 3");
        row("case", u"<glyph name=\"A\" case=\"upper\" />", "2 3");
        row("marks", u"<glyph name=\"A\" marks=\"m\" />", "2 3");
        row("accents", u"<glyph name=\"A\" accents=\"m\" />", "1");
        row("one more character than bytes allow", u"<glyph name=\"A\" description=\"ℵℵℵ\" />", "1 2 3");
        row("two quotes at the end", u"<glyph name=\"A\" script=\"x\"\" />", "");
        row("word behind a mark", u"<glyph name=\"A\" direction=\"\uFEFFRTL\" />", "");
    })
    {
        const LineInFile read(line);
        QStringList repeated;
        for (const int version : {1, 2, 3}) {
            const std::string_view bytes = read.info->unchangedLine(version);
            if (bytes.empty())
                continue;
            repeated << QString::number(version);
            QCOMPARE(QByteArray(bytes.data(), qsizetype(bytes.size())), read.bytes.mid(1));
        }
        QCOMPARE(repeated.join(u' '), versions);
        read.info->setIndex(5);
        QCOMPARE(!read.info->unchangedLine(2).empty(), versions.contains(u'2'));
        read.info->setUnicodeLegacy(u"E001"_s);
        QVERIFY(read.info->unchangedLine(1).empty() && read.info->unchangedLine(2).empty());
    }

    void copiesALineOnlyWhenItWouldPrintIt()
    {
        QRandomGenerator random(2);
        int copied = 0;
        for (int round = 0; round < rounds(40'000); ++round) {
            const QString line = nearlyRightLine(random).trimmed();
            const LineInFile read(line);
            if (!read.info)
                continue;
            copied += !read.info->unchangedLine(2).empty() || !read.info->unchangedLine(1).empty();
            const QString fast = linesInAllVersions(*read.info, [](const VXGlyphInfo &info, int version) {
                return info.lineXMLFormatVersion(version);
            });
            const QString slow = linesInAllVersions(*read.info, printedFieldByField);
            QVERIFY2(fast == slow, qPrintable(line + u'\n' + fast + u'\n' + slow));
            // A sign of three bytes where "=" and the quote are expected leaves its last byte before the
            // value.
            std::string written;
            GlyphLineWriter(2).append(*read.info, written);
            QVERIFY2(QUtf8StringView(written.data(), qsizetype(written.size())).isValidUtf8()
                         && written.find("\xEF\xBF\xBD") == written.npos,
                     written.c_str());
        }
        QVERIFY2(copied > 500, qPrintable(QString::number(copied)));
    }

    TABLE(notesWhatItCannotKeep, (const QString &line, const QList<int> &kinds), {
        using N = ReadNotes;
        row("nothing to note", u"<glyph unicode=\"0041\" unicode2=\"0042\" name=\"A\" />", {});
        row("without blank", u"<glyph name=\"A\"/>", {});
        row("non-ASCII at the end", u"<glyph name=\"A\" description=\"ℵℵℵℵ\" />", {});
        row("non-ASCII at the end, without blank", u"<glyph name=\"A\" description=\"ℵℵℵℵ\"/>", {});
        row("non-ASCII before more", u"<glyph description=\"ℵℵℵℵℵℵℵℵℵℵ\" name=\"A\" />", {N::UnreadRest});
        row("comment", u"<glyph name=\"A\" /><!-- c -->", {N::Comment});
        row("long comment", u"<glyph name=\"A\" /><!-- %1 -->"_s.arg(QString(999, u'c')),
            QList<int> {N::Comment});
        row("unknown", u"<glyph name=\"A\" zoo2=\"x\" />", {N::UnknownAttribute});
        row("behind the end", u"<glyph name=\"A\" /> script=\"x\"", {N::UnreadRest});
        row("repeated", u"<glyph name=\"A\" name=\"B\" />", {N::DroppedAttribute});
        row("leading blank", u"<glyph name=\" A\" />", {N::DroppedAttribute});
        row("key too short", u"<glyph n=\"A\" />", {N::DroppedAttribute});
        row("three code points", u"<glyph unicodes=\"41 42 43\" />", {N::CodePoints});
        row("three attributes", u"<glyph unicode=\"41\" unicode2=\"42\" unicode3=\"43\" />", {N::CodePoints});
        row("refused marks", u"<glyph name=\"A\" marks=\"%1\" />"_s.arg(kArabicMarks),
            QList<int> {N::DroppedAttribute});
    })
    {
        ReadNotes notes;
        const LineInFile read(line, &notes);
        QList<int> noted;
        for (const ReadNotes::Note &note : notes.notes) {
            noted << note.kind;
            QCOMPARE(note.record, 0);
            QVERIFY2(line.contains(note.text), qPrintable(note.text));
            QCOMPARE(note.text.size() == 200, line.size() > 900); // enough to know it by
        }
        QCOMPARE(noted, kinds);
        QCOMPARE(notes.isEmpty(), kinds.isEmpty());
    }

    void readsManyCodePointsInLinearTime()
    {
        // Copying the list for each of them would take minutes: the test would run into its time limit.
        constexpr int kCount = 400'000;
        const InfoPtr info = VXGlyphInfo::initWithLineXMLFileVersion(
            u"<glyph "_s + u"unicode=\"0041\" "_s.repeated(kCount) + "/>"_L1);
        QCOMPARE(info->unicodes().size(), kCount);
    }
};

RUNEBOOK_TEST_MAIN(GlyphLineTest)
#include "GlyphLineTest.moc"
