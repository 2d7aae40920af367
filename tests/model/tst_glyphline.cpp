// One record, one line: reading it, writing it, and writing it again as it stood.
#include "model/GlyphLineReader.h"
#include "model/GlyphLineWriter.h"
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

class TestGlyphLine : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void reads_data();
    void reads();
    void refusesOtherLines_data();
    void refusesOtherLines();
    void tellsTheVersion_data();
    void tellsTheVersion();
    void writes_data();
    void writes();
    void repeatsTheSecondCodePoint();
    void readsAsWrittenOut();
    void repeatsWholeLines_data();
    void repeatsWholeLines();
    void copiesALineOnlyWhenItWouldPrintIt();
    void neverWritesBrokenUtf8();
    void setsTheNumberOfTheFirstCodePoint();
    void notesWhatItCannotKeep_data();
    void notesWhatItCannotKeep();
    void readsManyCodePointsInLinearTime();
};

void TestGlyphLine::reads_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("record");
    const auto row = [](const char *name, const char16_t *line, const char16_t *record) {
        QTest::newRow(name) << QString::fromUtf16(line) << QString::fromUtf16(record);
    };
    row("all attributes",
        u"<glyph unicode=\"0041\" unicode2=\"0042\" unicodeLegacy=\"E000\" name=\"A\" sortName=\"s\" "
        u"sortNameOld=\"o\" sortNameKeep=\"k\" decompose=\"a, b\" category=\"Letter\" subCategory=\"Other\" "
        u"case=\"smallCaps\" script=\"latin\" production=\"p\" direction=\"VTR\" altNames=\"x, y\" "
        u"description=\"d\" anchors=\"top\" marks=\"m\" />",
        u"name=A; anchors=top; category=Letter; decompose=a, b; desc=d; marks=m; production=p; script=latin; "
        u"sortName=s; sortNameKeep=k; sortNameOld=o; subCategory=Other; unicodeLegacy=E000; "
        u"unicodes=0041|0042; altNames=x|y; direction=3; case=3");
    row("no attribute", u"<glyph />", u"name=unknown");
    row("8 characters", u"<glyph a", u"name=unknown");
    row("no name", u"<glyph script=\"latin\"/>", u"name=unknown; script=latin");
    row("entities stay", u"<glyph name=\"a\" description=\"x &amp; y\"/>", u"name=a; desc=x &amp; y");
    row("raw markup", u"<glyph name=\"a\" description=\"<'&>\"/>", u"name=a; desc=<'&>");
    row("comment behind", u"<glyph name=\"A\"/> <!-- note -->", u"name=A");
    row("comment between", u"<glyph name=\"A\" <!-- script=\"x\" -->category=\"B\"/>", u"name=A; category=B");
    row("first to last comment", u"<glyph <!--a--> name=\"A\" <!--b--> script=\"x\"/>",
        u"name=unknown; script=x");
    row("comment that is none", u"<glyph name=\"A\" description=\"<!-->\" />", u"name=A; desc=<!-->");
    row("end before beginning", u"<glyph name=\"-->\" description=\"<!--\" />", u"name=-->; desc=<!--");
    row("unclosed comment", u"<glyph name=\"A\" <!-- script=\"x\" category=\"B\"/>", u"name=A");
    row("unicodes", u"<glyph unicodes=\"0041, 0061\"/>", u"name=unknown; unicodes=0041|0061");
    row("unicodes, all separators", u"<glyph unicodes=\",41  42,,43, \"/>",
        u"name=unknown; unicodes=41|42|43");
    row("unicodes takes the place", u"<glyph unicode=\"1F\" unicodes=\"41\" unicode3=\"42\"/>",
        u"name=unknown; unicodes=41|42");
    row("only separators", u"<glyph unicodes=\", ,\" name=\"x\"/>", u"name=x");
    row("lower-case code point", u"<glyph unicode=\"00e9\"/>", u"name=unknown; unicodes=00E9");
    row("no merging", u"<glyph unicode=\"41\" unicode=\"41\" unicode3=\"41\"/>",
        u"name=unknown; unicodes=41|41|41");
    row("only the second", u"<glyph unicode2=\"42\"/>", u"name=unknown; unicodes=42");
    row("code point with separator", u"<glyph unicode=\"41, 42\"/>", u"name=unknown; unicodes=41, 42");
    row("legacy", u"<glyph legacy=\"afii1\"/>", u"name=unknown; production=afii1");
    row("old spelling", u"<glyph unicodeLegecy=\"E001\"/>", u"name=unknown; unicodeLegacy=E001");
    row("desc", u"<glyph desc=\"d\"/>", u"name=unknown; desc=d");
    row("accents", u"<glyph accents=\"acute\"/>", u"name=unknown; marks=acute");
    row("altNames", u"<glyph altNames=\"a,b, c\"/>", u"name=unknown; altNames=a,b|c");
    row("BIDI", u"<glyph direction=\"B\"/>", u"name=unknown; direction=-1");
    row("RTL", u"<glyph direction=\"Rx\"/>", u"name=unknown; direction=1");
    row("VTL", u"<glyph direction=\"VTL\"/>", u"name=unknown; direction=2");
    row("VTX", u"<glyph direction=\"VTX\"/>", u"name=unknown; direction=3");
    row("VT", u"<glyph direction=\"VT\"/>", u"name=unknown; direction=0");
    row("Case", u"<glyph case=\"Upper\"/>", u"name=unknown");
    row("other", u"<glyph case=\"other\"/>", u"name=unknown; case=5");
    row("last one wins", u"<glyph name=\"a\" name=\"b\"/>", u"name=b");
    row("key of one character", u"<glyph n=\"a\" name=\"b\"/>", u"name=b");
    row("empty value", u"<glyph name=\"\" script=\"x\"/>", u"name=unknown; script=x");
    row("blank before the quote", u"<glyph name= \"v\"/>", u"name=v");
    row("blanks inside the quote", u"<glyph name=\"  v \"/>", u"name=v ");
    row("blank value takes the next", u"<glyph name=\" \" script=\"x\"/>", u"name=script=");
    row("no closing quote", u"<glyph name=\"a\" script=\"lat />", u"name=a; script=lat />");
    row("no end", u"<glyph name=\"a\"", u"name=a");
    row("end behind the quote", u"<glyph name=\"a\"/> script=\"x\"", u"name=a");
    row("end behind a code point", u"<glyph unicode=\"41\"/> script=\"x\"", u"name=unknown; unicodes=41");
    row("end behind a dropped pair", u"<glyph x=\"a\"/> name=\"b\"", u"name=unknown");
    row("end after a blank", u"<glyph name=\"a\" /> script=\"x\"", u"name=a");
    row("any sign for equals", u"<glyph name:'a\"/>", u"name=a");
    row("slash is an empty key", u"<glyph / name=\"a\" script=\"x\" category=\"b\"/>", u"name=unknown");
    row("tab is an empty key", u"<glyph name=\"a\"\tscript=\"x\" category=\"b\" anchors=\"c\"/>", u"name=a");
    row("too many quotes", u"<glyph name=\"a\"\" script=\"x\" />", u"name=a; script=x");
    row("only non-ASCII", u"<glyph name=\"é\"/>", u"name=é");
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
    row("byte order mark inside", u"<glyph name=\"\uFEFFa\"/>", u"name=\uFEFFa");
    row("byte order marks inside", u"<glyph name=\"\uFEFF\uFEFF\uFEFFa\uFEFF\"/>",
        u"name=\uFEFF\uFEFF\uFEFFa\uFEFF");
    row("byte order mark before a word", u"<glyph direction=\"\uFEFFRTL\"/>", u"name=unknown; direction=0");
    row("sign of three bytes for the equals", u"<glyph name€v\" script=\"x\"/>", u"name=unknown; script=x");
    QTest::newRow("refused marks") << u"<glyph marks=\"%1\"/>"_s.arg(kArabicMarks) << u"name=unknown"_s;
    QTest::newRow("accents are not refused")
        << u"<glyph accents=\"%1\"/>"_s.arg(kArabicMarks) << u"name=unknown; marks="_s + kArabicMarks;
    QTest::newRow("NUL") << u"<glyph name=\"a"_s + QChar(0) + u"b\" script=\"x\"/>"_s
                         << u"name=a"_s + QChar(0) + u"b; script=x"_s;
}

void TestGlyphLine::reads()
{
    QFETCH(const QString, line);
    QFETCH(const QString, record);
    const InfoPtr info = VXGlyphInfo::initWithLineXMLFileVersion(line);
    QVERIFY(info);
    QCOMPARE(PlainRecord::of(*info).toString(), record);
    quint8 hint = 0;
    QCOMPARE(PlainRecord::ofLine(line, hint).value().toString(), record);
}

void TestGlyphLine::refusesOtherLines_data()
{
    QTest::addColumn<QString>("line");
    for (const char *line : {"", "<glyph", "<glyph/>", "<glyph\tname=\"a\"/>", "<Glyph name=\"a\"/>",
                             " <glyph name=\"a\"/>", "</glyphData>", "<glyphs name=\"a\"/>"})
        QTest::newRow(line) << QString::fromLatin1(line);
}

void TestGlyphLine::refusesOtherLines()
{
    QFETCH(const QString, line);
    quint8 hint = 7;
    QVERIFY(!VXGlyphInfo::initWithLineXMLFileVersion(line, &hint));
    QCOMPARE(hint, 7);
}

void TestGlyphLine::tellsTheVersion_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("hint");
    QTest::newRow("neither") << u"<glyph name=\"a\" marks=\"m\"/>"_s << 0;
    QTest::newRow("accents") << u"<glyph accents=\"m\"/>"_s << 1;
    QTest::newRow("case") << u"<glyph case=\"upper\"/>"_s << 2;
    QTest::newRow("unknown case") << u"<glyph case=\"X\"/>"_s << 2;
    QTest::newRow("case, accents") << u"<glyph case=\"upper\" accents=\"m\"/>"_s << 1;
    QTest::newRow("accents, case") << u"<glyph accents=\"m\" case=\"upper\"/>"_s << 2;
    QTest::newRow("empty ones do not count") << u"<glyph accents=\"\" case=\"\"/>"_s << 0;
    QTest::newRow("in a comment") << u"<glyph name=\"a\"/><!-- case=\"upper\" -->"_s << 0;
    QTest::newRow("beside a comment") << u"<glyph <!-- c --> case=\"upper\"/>"_s << 2;
}

void TestGlyphLine::tellsTheVersion()
{
    QFETCH(const QString, line);
    QFETCH(const int, hint);
    quint8 told = 0;
    QVERIFY(VXGlyphInfo::initWithLineXMLFileVersion(line, &told));
    QCOMPARE(told, hint);
    quint8 before = 9;
    QVERIFY(VXGlyphInfo::initWithLineXMLFileVersion(line, &before));
    QCOMPARE(before, hint == 0 ? 9 : hint);
}

void TestGlyphLine::writes_data()
{
    using Edit = std::function<void(VXGlyphInfo &)>;
    QTest::addColumn<Edit>("edit");
    QTest::addColumn<int>("version");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, int version, const char16_t *middle, const Edit &edit) {
        QTest::newRow(name) << edit << version << u"\t<glyph "_s + QString::fromUtf16(middle) + u"/>\n"_s;
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
    row("everything, 2", 2,
        u"unicode=\"41\" unicode2=\"42\" unicode3=\"42\" unicodeLegacy=\"E000\" name=\"n\" sortName=\"s\" "
        u"sortNameOld=\"o\" sortNameKeep=\"k\" decompose=\"x, y\" category=\"c\" subCategory=\"u\" "
        u"case=\"minor\" script=\"i\" production=\"p\" direction=\"VTL\" altNames=\"a, b\" "
        u"description=\"& < > '\" anchors=\"t\" marks=\"m\" ",
        everything);
    row("everything, 1", 1,
        u"unicode=\"41\" unicode2=\"42\" unicode3=\"42\" unicodeLegacy=\"E000\" name=\"n\" sortName=\"s\" "
        u"sortNameOld=\"o\" sortNameKeep=\"k\" decompose=\"x, y\" category=\"c\" subCategory=\"u\" "
        u"script=\"i\" production=\"p\" direction=\"VTL\" altNames=\"a, b\" description=\"& < > '\" "
        u"anchors=\"t\" accents=\"m\" ",
        everything);
    row("everything, 0", 0,
        u"unicode2=\"42\" unicode3=\"42\" unicodeLegacy=\"E000\" name=\"n\" sortName=\"s\" "
        u"sortNameOld=\"o\" sortNameKeep=\"k\" decompose=\"x, y\" category=\"c\" subCategory=\"u\" "
        u"script=\"i\" production=\"p\" direction=\"VTL\" altNames=\"a, b\" description=\"& < > '\" "
        u"anchors=\"t\" marks=\"m\" ",
        everything);
    row("new", 2, u"name=\"unknown\" direction=\"LTR\" ", [](VXGlyphInfo &) {});
    row("absent name", 2, u"name=\"(null)\" direction=\"LTR\" ", [](VXGlyphInfo &i) { i.setName({}); });
    row("empty name", 2, u"name=\"\" direction=\"LTR\" ", [](VXGlyphInfo &i) { i.setName(u""_s); });
    row("not set", 2, u"name=\"unknown\" ", [](VXGlyphInfo &i) { i.setDirection(-2); });
    row("BIDI", 2, u"name=\"unknown\" direction=\"BIDI\" ", [](VXGlyphInfo &i) { i.setDirection(-1); });
    row("legacy of 3", 2, u"name=\"unknown\" direction=\"LTR\" ",
        [](VXGlyphInfo &i) { i.setUnicodeLegacy(u"ééé"_s); });
    row("legacy of 4", 2, u"unicodeLegacy=\"éééé\" name=\"unknown\" direction=\"LTR\" ",
        [](VXGlyphInfo &i) { i.setUnicodeLegacy(u"éééé"_s); });
    row("one empty other name", 2, u"name=\"unknown\" direction=\"LTR\" altNames=\"\" ",
        [](VXGlyphInfo &i) { i.setAltNames(u""_s); });
    row("no other names", 2, u"name=\"unknown\" direction=\"LTR\" ",
        [](VXGlyphInfo &i) { i.setAltNames(QStringList()); });
    row("empty texts", 2, u"name=\"unknown\" direction=\"LTR\" ", [](VXGlyphInfo &i) {
        for (const QString &key : u"category subCategory marks anchors unicodeLegacy script production "
                                  "sortName sortNameKeep sortNameOld desc decompose"_s.split(u' '))
            i.setValueForKey(u""_s, key);
    });
    row("case without word", 2, u"name=\"unknown\" case=\"(null)\" direction=\"LTR\" ",
        [](VXGlyphInfo &i) { i.setCase(VXGlyphInfo::other); });
    row("upper in 1", 1, u"name=\"unknown\" subCategory=\"Uppercase\" direction=\"LTR\" ",
        [](VXGlyphInfo &i) { i.setCase(VXGlyphInfo::upper); });
    row("lower in 1", 1, u"name=\"unknown\" subCategory=\"Lowercase\" direction=\"LTR\" ",
        [](VXGlyphInfo &i) { i.setCase(VXGlyphInfo::lower); });
    row("small caps in 1", 1, u"name=\"unknown\" subCategory=\"(null)\" direction=\"LTR\" ",
        [](VXGlyphInfo &i) { i.setCase(VXGlyphInfo::smallCaps); });
    row("case and sub-category in 1", 1, u"name=\"unknown\" subCategory=\"Spacing\" direction=\"LTR\" ",
        [](VXGlyphInfo &i) { i.setCase(VXGlyphInfo::lower), i.setSubCategory(u"Spacing"_s); });
    row("version 9 is like 2", 9, u"name=\"unknown\" case=\"upper\" direction=\"LTR\" marks=\"m\" ",
        [](VXGlyphInfo &i) { i.setCase(VXGlyphInfo::upper), i.setMarks(u"m"_s); });
}

void TestGlyphLine::writes()
{
    using Edit = std::function<void(VXGlyphInfo &)>;
    QFETCH(const Edit, edit);
    QFETCH(const int, version);
    QFETCH(const QString, line);
    const InfoPtr info = VXGlyphInfo::init();
    edit(*info);
    QCOMPARE(info->lineXMLFormatVersion(version), line);
    QCOMPARE(PlainRecord::of(*info).line(version), line);
}

void TestGlyphLine::repeatsTheSecondCodePoint()
{
    const InfoPtr info = VXGlyphInfo::init();
    info->setUnicodes({u"0041"_s, u"0042"_s, u"0043"_s});
    const QString line = info->lineXMLFormatVersion(2);
    QVERIFY(line.startsWith(u"\t<glyph unicode=\"0041\" unicode2=\"0042\" unicode3=\"0042\" name="_s));
    QCOMPARE(VXGlyphInfo::initWithLineXMLFileVersion(line.trimmed())->unicodes(),
             QStringList({u"0041"_s, u"0042"_s, u"0042"_s}));
}

void TestGlyphLine::readsAsWrittenOut()
{
    QRandomGenerator random(1);
    for (int round = 0; round < 20'000; ++round) {
        const QString line = nearlyRightLine(random).trimmed();
        quint8 hint = 0;
        quint8 expectedHint = 0;
        const InfoPtr info = VXGlyphInfo::initWithLineXMLFileVersion(line, &hint);
        const std::optional<PlainRecord> expected = PlainRecord::ofLine(line, expectedHint);
        QCOMPARE(info != nullptr, expected.has_value());
        if (!info)
            continue;
        PlainRecord read = PlainRecord::of(*info);
        QVERIFY2(read == *expected,
                 qPrintable(line + "\n got: "_L1 + read.toString() + "\nwant: "_L1 + expected->toString()));
        QCOMPARE(hint, expectedHint);
        for (const int version : {0, 1, 2, 3})
            QCOMPARE(info->lineXMLFormatVersion(version), expected->line(version));
    }
}

void TestGlyphLine::repeatsWholeLines_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("versions");
    const auto row = [](const char *name, const char16_t *line, const char *versions) {
        QTest::newRow(name) << QString::fromUtf16(line) << QString::fromLatin1(versions);
    };
    row("either", u"<glyph unicode=\"0041\" name=\"A\" category=\"Letter\" />", "1 2 3");
    row("case", u"<glyph name=\"A\" case=\"upper\" />", "2 3");
    row("marks", u"<glyph name=\"A\" marks=\"m\" />", "2 3");
    row("accents", u"<glyph name=\"A\" accents=\"m\" />", "1");
    row("one more character than bytes allow", u"<glyph name=\"A\" description=\"ℵℵℵ\" />", "1 2 3");
    row("no blank at the end", u"<glyph name=\"A\"/>", "");
    row("another order", u"<glyph script=\"x\" name=\"A\" />", "");
    row("two blanks", u"<glyph name=\"A\"  script=\"x\" />", "");
    row("two quotes", u"<glyph name=\"A\"\" script=\"x\" />", "");
    row("two quotes at the end", u"<glyph name=\"A\" script=\"x\"\" />", "");
    row("quotes apart", u"<glyph name=\"A\" \"\" script=\"x\" />", "");
    row("quote first", u"<glyph \"name=\"A\" />", "");
    row("no name", u"<glyph script=\"x\" />", "");
    row("comment", u"<glyph name=\"A\" /><!-- c -->", "");
    row("text behind", u"<glyph name=\"A\" /> ", "");
    row("short legacy", u"<glyph unicodeLegacy=\"E0\" name=\"A\" />", "");
    row("lower case", u"<glyph unicode=\"00e9\" name=\"A\" />", "");
    row("second first", u"<glyph unicode2=\"0041\" name=\"A\" />", "");
    row("unknown", u"<glyph name=\"A\" zoo=\"x\" />", "");
    row("word", u"<glyph name=\"A\" direction=\"Right\" />", "");
    row("word behind a mark", u"<glyph name=\"A\" direction=\"\uFEFFRTL\" />", "");
}

void TestGlyphLine::repeatsWholeLines()
{
    QFETCH(const QString, line);
    QFETCH(const QString, versions);
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

void TestGlyphLine::copiesALineOnlyWhenItWouldPrintIt()
{
    QRandomGenerator random(2);
    int copied = 0;
    for (int round = 0; round < 40'000; ++round) {
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

void TestGlyphLine::neverWritesBrokenUtf8()
{
    // A sign of three bytes where "=" and the quote are expected leaves its last byte before the value.
    for (const char16_t *line : {u"<glyph name€v\" script=\"x\" />", u"<glyph unicode€0041\" name=\"a\" />",
                                 u"<glyph direction𝄞RTL\" />", u"<glyph zoo€v\" />"}) {
        const LineInFile read(QString::fromUtf16(line));
        std::string written;
        GlyphLineWriter(2).append(*read.info, written);
        QVERIFY2(QUtf8StringView(written.data(), qsizetype(written.size())).isValidUtf8(), written.c_str());
        QVERIFY2(written.find("\xEF\xBF\xBD") == written.npos, written.c_str());
    }
}

void TestGlyphLine::setsTheNumberOfTheFirstCodePoint()
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

void TestGlyphLine::notesWhatItCannotKeep_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QList<int>>("kinds");
    using N = ReadNotes;
    const auto row = [](const char *name, const char16_t *line, const QList<int> &kinds) {
        QTest::newRow(name) << QString::fromUtf16(line) << kinds;
    };
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
    QTest::newRow("refused marks") << u"<glyph name=\"A\" marks=\"%1\" />"_s.arg(kArabicMarks)
                                   << QList<int> {N::DroppedAttribute};
}

void TestGlyphLine::notesWhatItCannotKeep()
{
    QFETCH(const QString, line);
    QFETCH(const QList<int>, kinds);
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

void TestGlyphLine::readsManyCodePointsInLinearTime()
{
    // Copying the list for each of them would take minutes: the test would run into its time limit.
    constexpr int kCount = 400'000;
    const InfoPtr info = VXGlyphInfo::initWithLineXMLFileVersion(
        u"<glyph "_s + u"unicode=\"0041\" "_s.repeated(kCount) + "/>"_L1);
    QCOMPARE(info->unicodes().size(), kCount);
}

RUNEBOOK_TEST_MAIN(TestGlyphLine)
#include "tst_glyphline.moc"
