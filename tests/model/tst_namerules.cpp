// Vocabularies, word forms, which names are allowed, and the production name of a code point.
#include "model/VXGlyphInfo.h"
#include "platform/StandardFolders.h"
#include "tests/TestMain.h"
#include "tests/model/RecordingOwner.h"

#include <QFile>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

const QString kEmpty = u"The glyph name should not be empty."_s;
const QString kSpace = u"The glyph name should not contain any space character."_s;
const QString kIllegal = u"The name contains illegal characters.\nOnly a-z, A-Z, 0-9, underscore, hyphen, "
                         "and period are allowed."_s;
const QString kDigit = u"The name shouldn’t start with a number (0-9)."_s;

} // namespace

class TestNameRules : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void listsTheWords();
    void formsWords_data();
    void formsWords();
    void readsCases_data();
    void readsCases();
    void readsDirections_data();
    void readsDirections();
    void judgesNames_data();
    void judgesNames();
    void judgesNamesInADocument();
    void readsTheGlyphList();
    void makesProductionNames_data();
    void makesProductionNames();
    void makesProductionNamesUndoably();
};

void TestNameRules::initTestCase()
{
    StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources"));
}

void TestNameRules::listsTheWords()
{
    QCOMPARE(VXGlyphInfo::categories().join(u' '), u"Letter Number Punctuation Separator Symbol Mark"_s);
    const QStringList subCategories = VXGlyphInfo::subCategories();
    QCOMPARE(subCategories.size(), 32);
    QCOMPARE(QSet<QString>(subCategories.begin(), subCategories.end()).size(), 32);
    QCOMPARE(subCategories.first(), u"Uppercase"_s);
    QCOMPARE(subCategories.mid(9, 2), QStringList({u"Decimal Digit"_s, u"Digital Digit"_s}));
    QVERIFY(subCategories.contains(u"Nonspacing"_s) && subCategories.contains(u"Nonspace"_s));
    QCOMPARE(subCategories.last(), u"Syllable"_s);
    const QStringList scripts = VXGlyphInfo::scripts();
    QCOMPARE(scripts.size(), 47);
    QCOMPARE(QSet<QString>(scripts.begin(), scripts.end()).size(), 47);
    QCOMPARE(scripts.first(), u"latin"_s);
    QCOMPARE(scripts.at(18), u"Black Letter"_s);
    QCOMPARE(scripts.last(), u"yi"_s);
}

void TestNameRules::formsWords_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("caseWord");
    QTest::addColumn<QString>("directionWord");
    QTest::newRow("-2") << -2 << QString() << QString();
    QTest::newRow("-1") << -1 << QString() << u"BIDI"_s;
    QTest::newRow("0") << 0 << QString() << u"LTR"_s;
    QTest::newRow("1") << 1 << u"upper"_s << u"RTL"_s;
    QTest::newRow("2") << 2 << u"lower"_s << u"VTL"_s;
    QTest::newRow("3") << 3 << u"smallCaps"_s << u"VTR"_s;
    QTest::newRow("4") << 4 << u"minor"_s << QString();
    QTest::newRow("5") << 5 << QString() << QString();
}

void TestNameRules::formsWords()
{
    QFETCH(const int, value);
    QFETCH(const QString, caseWord);
    QFETCH(const QString, directionWord);
    QCOMPARE(VXGlyphInfo::stringFromCase(value), caseWord);
    QCOMPARE(VXGlyphInfo::stringFromDirection(value), directionWord);
    QCOMPARE(VXGlyphInfo::stringFromCase(value).isNull(), caseWord.isNull());
    QCOMPARE(VXGlyphInfo::stringFromDirection(value).isNull(), directionWord.isNull());
    if (!caseWord.isNull())
        QCOMPARE(VXGlyphInfo::caseFromString(caseWord), value);
    if (!directionWord.isNull())
        QCOMPARE(VXGlyphInfo::directionFromString(directionWord), value);
}

void TestNameRules::readsCases_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<int>("value");
    const QList<std::pair<const char *, int>> rows {
        {"", 0},  {"Upper", 0}, {"u", 1},     {"uppercase", 1}, {"lowercase", 2},
        {"s", 3}, {"m", 4},     {"other", 5}, {"none", 0},      {"x", 0}};
    for (const auto &[word, value] : rows)
        QTest::newRow(word) << QString::fromLatin1(word) << value;
    QTest::newRow("absent") << QString() << 0;
}

void TestNameRules::readsCases()
{
    QFETCH(const QString, word);
    QTEST(VXGlyphInfo::caseFromString(word), "value");
}

void TestNameRules::readsDirections_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<int>("value");
    const QList<std::pair<const char *, int>> rows {
        {"", 0},    {"BIDI", -1}, {"B", -1},  {"bidi", 0}, {"RTL", 1}, {"R", 1},    {"LTR", 0}, {"x", 0},
        {"VTL", 2}, {"VTR", 3},   {"VTX", 3}, {"VxL", 2},  {"VT", 0},  {"VTLx", 0}, {"V", 0}};
    for (const auto &[word, value] : rows)
        QTest::newRow(word) << QString::fromLatin1(word) << value;
}

void TestNameRules::readsDirections()
{
    QFETCH(const QString, word);
    QTEST(VXGlyphInfo::directionFromString(word), "value");
}

void TestNameRules::judgesNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("objection");
    QTest::newRow("absent") << QString() << kEmpty;
    QTest::newRow("empty") << u""_s << kEmpty;
    QTest::newRow("blank") << u"A B"_s << kSpace;
    QTest::newRow("tab") << u"A\tB"_s << kSpace;
    QTest::newRow("no-break space") << u"A\u00A0B"_s << kSpace;
    QTest::newRow("blank before illegal") << u"é b"_s << kSpace;
    QTest::newRow("line feed") << u"A\nB"_s << kIllegal;
    QTest::newRow("é") << u"é"_s << kIllegal;
    QTest::newRow("1é: illegal first") << u"1é"_s << kIllegal;
    QTest::newRow("other digit") << u"\u0661"_s << kIllegal;
    QTest::newRow("+") << u"a+b"_s << kIllegal;
    QTest::newRow("1a") << u"1a"_s << kDigit;
    QTest::newRow("9") << u"9"_s << kDigit;
    QTest::newRow("_1") << u"_1"_s << QString();
    QTest::newRow(".notdef") << u".notdef"_s << QString();
    QTest::newRow("-") << u"-"_s << QString();
    QTest::newRow("a1") << u"azAZ09._-"_s << QString();
}

void TestNameRules::judgesNames()
{
    QFETCH(const QString, name);
    QFETCH(const QString, objection);
    const InfoPtr info = VXGlyphInfo::init();
    Error error;
    QCOMPARE(info->validateName(name, &error), objection.isNull());
    QCOMPARE(error.description, objection);
    QCOMPARE(error.domain, objection.isNull() ? QString() : u"TesselErrorDomain"_s);
    QCOMPARE(error.code, objection.isNull() ? 0 : 125);
    QCOMPARE(info->validateName(name), objection.isNull());
}

void TestNameRules::judgesNamesInADocument()
{
    RecordingOwner owner;
    const InfoPtr first = owner.add();
    const InfoPtr second = owner.add();
    const InfoPtr third = owner.add();
    first->setName(u"a"_s);
    second->setName(u"b"_s);
    third->setName(u"a"_s);
    Error error;
    QVERIFY(first->validateName(u"a"_s, &error));
    QVERIFY(!third->validateName(u"a"_s, &error));
    QCOMPARE(error.description, u"There is already an info with the same name: a"_s);
    QCOMPARE(error.domain, u"TesselErrorDomain"_s);
    QCOMPARE(error.code, 125);
    QVERIFY(!second->validateName(u"a"_s));
    QVERIFY(second->validateName(u"c"_s));
    second->setDocument(nullptr);
    QVERIFY(second->validateName(u"a"_s));
}

void TestNameRules::readsTheGlyphList()
{
    // Taken straight from the lines of the file.
    QFile file(QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/aglfn1.6.txt"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    qsizetype rows = 0;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.trimmed().isEmpty() || line.startsWith('#'))
            continue;
        const QList<QByteArray> fields = line.split(';');
        QCOMPARE(fields.size(), 3);
        QCOMPARE(VXGlyphInfo::aglfn().value(QString::fromLatin1(fields[0])), QString::fromLatin1(fields[1]));
        ++rows;
    }
    QVERIFY(rows > 600);
    QCOMPARE(VXGlyphInfo::aglfn().size(), rows);
    QCOMPARE(VXGlyphInfo::aglfn().value(u"0041"_s), u"A"_s);
    QCOMPARE(VXGlyphInfo::aglfn().value(u"03A9"_s), u"Omega"_s);
}

void TestNameRules::makesProductionNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("unicodes");
    QTest::addColumn<QString>("production"); // "kept" stands there before
    const auto row = [](const char *label, const char16_t *name, const char16_t *codes,
                        const char16_t *made) {
        QTest::newRow(label) << QString::fromUtf16(name)
                             << QString::fromUtf16(codes).split(u' ', Qt::SkipEmptyParts)
                             << QString::fromUtf16(made);
    };
    row("name is listed", u"A", u"0041", u"kept");
    row("other name", u"Acap", u"0041", u"A");
    row("first code point counts", u"x", u"0042 0041", u"B");
    row("no code point", u"A", u"", u"kept");
    row("CR", u"CR", u"000D", u"kept");
    row("DEL", u"DEL", u"007F", u"kept");
    row("not listed", u"x", u"E000", u"uniE000");
    row("afii", u"x", u"0410", u"uni0410");
    row("afii, same name", u"afii10017", u"0410", u"uni0410");
    row("SF", u"x", u"2510", u"uni2510");
    row("ignored", u"x", u"0162", u"uni0162");
    row("ignored, same name", u"aleph", u"2135", u"uni2135");
    row("five characters", u"x", u"1F600", u"u1F600");
    row("six characters", u"x", u"10FFFF", u"kept");
    row("three characters", u"x", u"041", u"kept");
    row("no hexadecimal", u"x", u"WXYZ", u"uniWXYZ");
    row("lower case is stored upper", u"x", u"00e9", u"eacute");
    // Listed under a name that is no production name.
    QVERIFY(VXGlyphInfo::aglfn().value(u"0410"_s).startsWith(u"afii"_s));
    QVERIFY(VXGlyphInfo::aglfn().value(u"2510"_s).startsWith(u"SF"_s));
    QCOMPARE(VXGlyphInfo::aglfn().value(u"0162"_s), u"Tcommaaccent"_s);
    QCOMPARE(VXGlyphInfo::aglfn().value(u"2135"_s), u"aleph"_s);
}

void TestNameRules::makesProductionNames()
{
    QFETCH(const QString, name);
    QFETCH(const QStringList, unicodes);
    const InfoPtr info = VXGlyphInfo::init();
    info->setName(name);
    info->setUnicodes(unicodes);
    info->setProduction(u"kept"_s);
    info->generateUniName();
    QTEST(info->production(), "production");
}

void TestNameRules::makesProductionNamesUndoably()
{
    RecordingOwner owner;
    const InfoPtr info = owner.add();
    info->setUnicode(u"0041"_s);
    owner.manager.removeAllActions();
    info->generateUniName();
    QCOMPARE(info->production(), u"A"_s);
    owner.manager.undo();
    QVERIFY(info->production().isNull());
    owner.manager.redo();
    QCOMPARE(info->production(), u"A"_s);
}

RUNEBOOK_TEST_MAIN(TestNameRules)
#include "tst_namerules.moc"
