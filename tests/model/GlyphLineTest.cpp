// One record, one line: reading it, writing it, and writing it again as it stood.
#include "model/GlyphLineReader.h"
#include "model/GlyphLineWriter.h"
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
        u"|desc=\"y\" |name=\"\" |marks=\" z\" |index=\"5\" |name=\"ü€𝄞\" |production=\"\uFEFFx\" "_s.split(
            u'|');
    QString line = u"<glyph "_s;
    const int chance = random.bounded(1, 6);
    for (int i = 0; i < attributes.size(); ++i) {
        const bool isUsual = i < 20;
        if (random.bounded(isUsual ? 6 : 40) < (isUsual ? chance : 1))
            line += attributes[i];
    }
    line += u"/>"_s;
    const QStringList damage =
        u"|\"|\"\"| |\t|  |=|/>|/|>|<!--|-->|<!-- c -->|é|€|\uFEFF|x|\" |=\"|\"/>|a=\"b\" "_s.split(u'|');
    for (int count = random.bounded(3); count > 0; --count) {
        const auto place = random.bounded(7, static_cast<int>(line.size()) + 1);
        line.replace(place, random.bounded(3), damage[random.bounded(static_cast<int>(damage.size()))]);
    }
    return line;
}

} // namespace

using Edit = std::function<void(VXGlyphInfo &)>;

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
        row("entities stay", u"<glyph name=\"a\" description=\"x &amp; y\"/>", u"name=a; desc=x &amp; y");
        row("comment between", u"<glyph name=\"A\" <!-- script=\"x\" -->category=\"B\"/>",
            u"name=A; category=B");
        row("first to last comment", u"<glyph <!--a--> name=\"A\" <!--b--> script=\"x\"/>",
            u"name=unknown; script=x");
        row("comment that is none", u"<glyph name=\"A\" description=\"<!-->\" />", u"name=A; desc=<!-->");
        row("end before beginning", u"<glyph name=\"-->\" description=\"<!--\" />", u"name=-->; desc=<!--");
        row("unclosed comment", u"<glyph name=\"A\" <!-- script=\"x\" category=\"B\"/>", u"name=A");
        row("unicodes", u"<glyph unicodes=\"0041, 0061\"/>", u"name=unknown; unicodes=0041|0061");
        row("unicodes, all separators", u"<glyph unicodes=\",41  42,,43, \"/>",
            u"name=unknown; unicodes=41|42|43");
        row("only separators", u"<glyph unicodes=\", ,\" name=\"x\"/>", u"name=x");
        row("code point with separator", u"<glyph unicode=\"41, 42\"/>", u"name=unknown; unicodes=41, 42");
        row("old spelling", u"<glyph unicodeLegecy=\"E001\"/>", u"name=unknown; unicodeLegacy=E001");
        row("VTX", u"<glyph direction=\"VTX\"/>", u"name=unknown; direction=3");
        row("end behind a code point", u"<glyph unicode=\"41\"/> script=\"x\"", u"name=unknown; unicodes=41");
        row("tab is an empty key", u"<glyph name=\"a\"\tscript=\"x\" category=\"b\" anchors=\"c\"/>",
            u"name=a");
        row("bound: begins before it", u"<glyph description=\"ééééé\" name=\"ab\"/>", u"name=ab; desc=ééééé");
        row("bound: begins behind it", u"<glyph description=\"éééééééééééééé\" name=\"ab\"/>",
            u"name=unknown; desc=éééééééééééééé");
        row("bound: pairs count two units", u"<glyph description=\"𝄞𝄞𝄞𝄞𝄞\" name=\"abcdef\"/>",
            u"name=abcdef; desc=𝄞𝄞𝄞𝄞𝄞");
        row("bound: and have four bytes", u"<glyph description=\"𝄞𝄞𝄞𝄞𝄞𝄞𝄞𝄞\" name=\"abcdef\"/>",
            u"name=unknown; desc=𝄞𝄞𝄞𝄞𝄞𝄞𝄞𝄞");
        row("bound: without the comment",
            u"<glyph description=\"éééééééééééé\" name=\"a\"/><!-- a long comment behind all of it -->",
            u"name=unknown; desc=éééééééééééé");
        row("byte order marks inside", u"<glyph name=\"\uFEFF\uFEFF\uFEFFa\uFEFF\"/>",
            u"name=\uFEFF\uFEFF\uFEFFa\uFEFF");
        row("sign of three bytes for the equals", u"<glyph name€v\" script=\"x\"/>",
            u"name=unknown; script=x");
        row("refused marks", u"<glyph marks=\"%1\"/>"_s.arg(kArabicMarks), "name=unknown");
        row("accents are not refused", u"<glyph accents=\"%1\"/>"_s.arg(kArabicMarks),
            u"name=unknown; marks="_s + kArabicMarks);
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

    TABLE(refusesOtherLines, (const QString &line), {
        for (const char *line : {"", "<glyph", "<glyph/>", "<glyph\tname=\"a\"/>", "<Glyph name=\"a\"/>",
                                 " <glyph name=\"a\"/>", "</glyphData>", "<glyphs name=\"a\"/>"})
            row(line, QString::fromLatin1(line));
    })
    {
        quint8 hint = 7;
        QVERIFY(!VXGlyphInfo::initWithLineXMLFileVersion(line, &hint));
        QCOMPARE(hint, 7);
    }

    TABLE(tellsTheVersion, (const QString &line, int hint), {
        row("neither", "<glyph name=\"a\" marks=\"m\"/>", 0);
        row("accents", "<glyph accents=\"m\"/>", 1);
        row("case", "<glyph case=\"upper\"/>", 2);
        row("unknown case", "<glyph case=\"X\"/>", 2);
        row("case, accents", "<glyph case=\"upper\" accents=\"m\"/>", 1);
        row("accents, case", "<glyph accents=\"m\" case=\"upper\"/>", 2);
        row("empty ones do not count", "<glyph accents=\"\" case=\"\"/>", 0);
        row("in a comment", "<glyph name=\"a\"/><!-- case=\"upper\" -->", 0);
        row("beside a comment", "<glyph <!-- c --> case=\"upper\"/>", 2);
    })
    {
        quint8 told = 0;
        QVERIFY(VXGlyphInfo::initWithLineXMLFileVersion(line, &told));
        QCOMPARE(told, hint);
        quint8 before = 9;
        QVERIFY(VXGlyphInfo::initWithLineXMLFileVersion(line, &before));
        QCOMPARE(before, hint == 0 ? 9 : hint);
    }

    TABLE(writes, (const Edit &edit, int version, const QString &line), {
        const auto add = [&](const char *name, int version, const char16_t *middle, const Edit &edit) {
            row(name, edit, version, u"\t<glyph "_s + QString::fromUtf16(middle) + u"/>\n"_s);
        };
        const auto everything = [](VXGlyphInfo &info) {
            info.setUnicodes({u"41"_s, u"42"_s, u"43"_s, u"44"_s});
            info.setUnicodeLegacy(u"E000"_s);
            info.setName(u"n"_s);
            info.setSortName(u"s"_s);
            info.setSortNameOld(u"o"_s);
            info.setSortNameKeep(u"k"_s);
            info.setDecompose(u"x, y"_s);
            info.setCategory(u"c"_s);
            info.setSubCategory(u"u"_s);
            info.setCase(VXGlyphInfo::minor);
            info.setScript(u"i"_s);
            info.setProduction(u"p"_s);
            info.setDirection(VXGlyphInfo::VTL);
            info.setAltNames(QStringList {u"a"_s, u"b"_s});
            info.setDesc(u"& < > '"_s);
            info.setAnchors(u"t"_s);
            info.setMarks(u"m"_s);
            info.setIndex(7);
        };
        add("everything, 2", 2,
            u"unicode=\"41\" unicode2=\"42\" unicode3=\"42\" unicodeLegacy=\"E000\" name=\"n\" "
            u"sortName=\"s\" "
            u"sortNameOld=\"o\" sortNameKeep=\"k\" decompose=\"x, y\" category=\"c\" subCategory=\"u\" "
            u"case=\"minor\" script=\"i\" production=\"p\" direction=\"VTL\" altNames=\"a, b\" "
            u"description=\"& < > '\" anchors=\"t\" marks=\"m\" ",
            everything);
        add("everything, 1", 1,
            u"unicode=\"41\" unicode2=\"42\" unicode3=\"42\" unicodeLegacy=\"E000\" name=\"n\" "
            u"sortName=\"s\" "
            u"sortNameOld=\"o\" sortNameKeep=\"k\" decompose=\"x, y\" category=\"c\" subCategory=\"u\" "
            u"script=\"i\" production=\"p\" direction=\"VTL\" altNames=\"a, b\" description=\"& < > '\" "
            u"anchors=\"t\" accents=\"m\" ",
            everything);
        add("everything, 0", 0,
            u"unicode2=\"42\" unicode3=\"42\" unicodeLegacy=\"E000\" name=\"n\" sortName=\"s\" "
            u"sortNameOld=\"o\" sortNameKeep=\"k\" decompose=\"x, y\" category=\"c\" subCategory=\"u\" "
            u"script=\"i\" production=\"p\" direction=\"VTL\" altNames=\"a, b\" description=\"& < > '\" "
            u"anchors=\"t\" marks=\"m\" ",
            everything);
        add("absent name", 2, u"name=\"(null)\" direction=\"LTR\" ", [](VXGlyphInfo &i) { i.setName({}); });
        add("legacy of 4", 2, u"unicodeLegacy=\"éééé\" name=\"unknown\" direction=\"LTR\" ",
            [](VXGlyphInfo &i) { i.setUnicodeLegacy(u"éééé"_s); });
        add("one empty other name", 2, u"name=\"unknown\" direction=\"LTR\" altNames=\"\" ",
            [](VXGlyphInfo &i) { i.setAltNames(u""_s); });
        add("no other names", 2, u"name=\"unknown\" direction=\"LTR\" ",
            [](VXGlyphInfo &i) { i.setAltNames(QStringList()); });
        add("empty texts", 2, u"name=\"unknown\" direction=\"LTR\" ", [](VXGlyphInfo &i) {
            for (const QString &key : u"category subCategory marks anchors unicodeLegacy script production "
                                      "sortName sortNameKeep sortNameOld desc decompose"_s.split(u' '))
                i.setValueForKey(u""_s, key);
        });
        add("case without word", 2, u"name=\"unknown\" case=\"(null)\" direction=\"LTR\" ",
            [](VXGlyphInfo &i) { i.setCase(VXGlyphInfo::other); });
        add("upper in 1", 1, u"name=\"unknown\" subCategory=\"Uppercase\" direction=\"LTR\" ",
            [](VXGlyphInfo &i) { i.setCase(VXGlyphInfo::upper); });
        add("small caps in 1", 1, u"name=\"unknown\" subCategory=\"(null)\" direction=\"LTR\" ",
            [](VXGlyphInfo &i) { i.setCase(VXGlyphInfo::smallCaps); });
        add("case and sub-category in 1", 1, u"name=\"unknown\" subCategory=\"Spacing\" direction=\"LTR\" ",
            [](VXGlyphInfo &i) { i.setCase(VXGlyphInfo::lower), i.setSubCategory(u"Spacing"_s); });
    })
    {
        const InfoPtr info = VXGlyphInfo::init();
        edit(*info);
        QCOMPARE(info->lineXMLFormatVersion(version), line);
        QCOMPARE(PlainRecord::of(*info).line(version), line);
    }

    void readsAsWrittenOut()
    {
        QRandomGenerator random(1);
        for (int round = 0; round < rounds(20'000); ++round) {
            const QString line = nearlyRightLine(random).trimmed();
            quint8 hint = 0;
            quint8 expectedHint = 0;
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
        row("no blank at the end", u"<glyph name=\"A\"/>", "");
        row("two quotes at the end", u"<glyph name=\"A\" script=\"x\"\" />", "");
        row("no name", u"<glyph script=\"x\" />", "");
        row("short legacy", u"<glyph unicodeLegacy=\"E0\" name=\"A\" />", "");
        row("lower case", u"<glyph unicode=\"00e9\" name=\"A\" />", "");
        row("second first", u"<glyph unicode2=\"0041\" name=\"A\" />", "");
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
        }
        QVERIFY2(copied > 500, qPrintable(QString::number(copied)));
    }

    void neverWritesBrokenUtf8()
    {
        // A sign of three bytes where "=" and the quote are expected leaves its last byte before the value.
        for (const char16_t *line :
             {u"<glyph name€v\" script=\"x\" />", u"<glyph unicode€0041\" name=\"a\" />",
              u"<glyph direction𝄞RTL\" />", u"<glyph zoo€v\" />"}) {
            const LineInFile read(QString::fromUtf16(line));
            std::string written;
            GlyphLineWriter(2).append(*read.info, written);
            QVERIFY2(QUtf8StringView(written.data(), qsizetype(written.size())).isValidUtf8(),
                     written.c_str());
            QVERIFY2(written.find("\xEF\xBF\xBD") == written.npos, written.c_str());
        }
    }

    void setsTheNumberOfTheFirstCodePoint()
    {
        const auto number = [](const char16_t *line) {
            return VXGlyphInfo::initWithLineXMLFileVersion(QString::fromUtf16(line))->unicodeChar();
        };
        QCOMPARE(number(u"<glyph unicode=\"0041\" unicode2=\"0042\" />"), 0x41u);
        QCOMPARE(number(u"<glyph unicode=\"1f600\" />"), 0x1F600u);
        QCOMPARE(number(u"<glyph unicode=\"xyz\" />"), 0u);
        QCOMPARE(number(u"<glyph unicodes=\", ,\" name=\"a\" />"), 0xFFFFFFu);
        QCOMPARE(number(u"<glyph name=\"a\" />"), 0u);
    }

    TABLE(notesWhatItCannotKeep, (const QString &line, const QList<int> &kinds), {
        using N = ReadNotes;
        row("nothing to note", u"<glyph unicode=\"0041\" unicode2=\"0042\" name=\"A\" />", {});
        row("without blank", u"<glyph name=\"A\"/>", {});
        row("non-ASCII at the end", u"<glyph name=\"A\" description=\"ℵℵℵℵ\" />", {});
        row("non-ASCII at the end, without blank", u"<glyph name=\"A\" description=\"ℵℵℵℵ\"/>", {});
        row("non-ASCII before more", u"<glyph description=\"ℵℵℵℵℵℵℵℵℵℵ\" name=\"A\" />", {N::UnreadRest});
        row("comment", u"<glyph name=\"A\" /><!-- c -->", {N::Comment});
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
