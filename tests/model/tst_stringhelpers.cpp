// Hexadecimal texts, characters beyond 16 bits, line ranges; and the two value transformers.
#include "model/StringHelpers.h"
#include "model/VXArrayToStringTransformator.h"
#include "model/VXDirectionToIndexValueTransformer.h"
#include "model/VXGlyphInfo.h"
#include "tests/TestMain.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSet>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

/// An object with a "name" property, as a window might hand in.
class Named : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString name MEMBER name)
public:
    explicit Named(const QString &text) : name(text) { }
    QString name;
};

} // namespace

class TestStringHelpers : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void readsHex_data();
    void readsHex();
    void printsHex_data();
    void printsHex();
    void hexRoundTrip();
    void makesCharacters_data();
    void makesCharacters();
    void stepsThroughCharacters();
    void findsLines_data();
    void findsLines();
    void makesUniqueIds();
    void showsListsAsText_data();
    void showsListsAsText();
    void splitsTextIntoLists_data();
    void splitsTextIntoLists();
    void mapsDirections_data();
    void mapsDirections();
    void knowsTransformersByName();
};

void TestStringHelpers::readsHex_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<quint32>("number");
    QTest::newRow("empty") << u""_s << 0u;
    QTest::newRow("lower case") << u"00e9"_s << 233u;
    QTest::newRow("mixed") << u"1F60a"_s << 0x1F60Au;
    QTest::newRow("prefix") << u"0x41"_s << 0u;
    QTest::newRow("minus") << u"-41"_s << 0u;
    QTest::newRow("blank behind") << u"41 "_s << 0u;
    QTest::newRow("G") << u"4G"_s << 0u;
    QTest::newRow("other digits") << u"\u0661"_s << 0u;
    QTest::newRow("full-width") << u"\uFF21"_s << 0u;
    QTest::newRow("eight digits") << u"FFFFFFFF"_s << 0xFFFFFFFFu;
    QTest::newRow("nine digits keep 32 bits") << u"123456789"_s << 0x23456789u;
}

void TestStringHelpers::readsHex()
{
    QFETCH(const QString, text);
    QTEST(hexStringToInt(text), "number");
}

void TestStringHelpers::printsHex_data()
{
    QTest::addColumn<qint64>("number");
    QTest::addColumn<QString>("text");
    QTest::newRow("0") << qint64(0) << u"0000"_s;
    QTest::newRow("10") << qint64(10) << u"000A"_s;
    QTest::newRow("-10") << qint64(-10) << u"-000A"_s;
    QTest::newRow("emoji") << qint64(0x1F600) << u"1F600"_s;
    QTest::newRow("cap") << qint64(0xFFFFFFF) << u"FFFFFFF"_s;
    QTest::newRow("above the cap") << qint64(0x10000000) << u"FFFFFFF"_s;
    QTest::newRow("far above") << std::numeric_limits<qint64>::max() << u"FFFFFFF"_s;
    QTest::newRow("far below") << std::numeric_limits<qint64>::min() << u"-FFFFFFF"_s;
}

void TestStringHelpers::printsHex()
{
    QFETCH(const qint64, number);
    QTEST(hexStringFromInt(number), "text");
}

void TestStringHelpers::hexRoundTrip()
{
    QRandomGenerator random(3);
    for (int round = 0; round < 5'000; ++round) {
        const quint32 number = random.generate() >> random.bounded(4, 32);
        QCOMPARE(hexStringToInt(hexStringFromInt(number)), number);
    }
}

void TestStringHelpers::makesCharacters_data()
{
    QTest::addColumn<quint32>("codePoint");
    QTest::addColumn<QString>("text");
    QTest::newRow("0") << 0u << u""_s;
    QTest::newRow("A") << 0x41u << u"A"_s;
    QTest::newRow("last of one unit") << 0xFFFFu << QString(QChar(0xFFFF));
    QTest::newRow("lone surrogate") << 0xD800u << QString(QChar(0xD800));
    QTest::newRow("first pair") << 0x10000u << u"\U00010000"_s;
    QTest::newRow("emoji") << 0x1F600u << u"😀"_s;
    QTest::newRow("last") << 0x10FFFFu << u"\U0010FFFF"_s;
    QTest::newRow("beyond") << 0x110000u << QString();
}

void TestStringHelpers::makesCharacters()
{
    QFETCH(const quint32, codePoint);
    QTEST(stringWithChar(codePoint), "text");
}

void TestStringHelpers::stepsThroughCharacters()
{
    // A pair, a lone high surrogate, a lone low one, a high one at the end.
    const QString text = u"a😀"_s + QChar(0xD83D) + u"b"_s + QChar(0xDE00) + QChar(0xD83D);
    QList<char32_t> found;
    QList<qsizetype> places;
    for (qsizetype i = 0; i < text.size(); ++i) {
        found << character32AtIndex(text, i);
        places << i;
    }
    QCOMPARE(found, QList<char32_t>({U'a', 0x1F600, 0xD83D, U'b', 0xDE00, 0xD83D}));
    QCOMPARE(places, QList<qsizetype>({0, 2, 3, 4, 5, 6}));
}

void TestStringHelpers::findsLines_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("ranges"); // of the lines 1 to 4, "location+length"
    QTest::newRow("empty") << u""_s << u"0+0 0+0 0+0 0+0"_s;
    QTest::newRow("one line") << u"abc"_s << u"0+3 4+0 4+0 4+0"_s;
    QTest::newRow("final newline") << u"abc\n"_s << u"0+3 4+0 4+0 4+0"_s;
    QTest::newRow("two lines") << u"ab\nc"_s << u"0+2 3+1 5+0 5+0"_s;
    QTest::newRow("empty line") << u"a\n\nb"_s << u"0+1 2+0 3+1 5+0"_s;
    QTest::newRow("CR") << u"a\rb"_s << u"0+1 2+1 4+0 4+0"_s;
    QTest::newRow("CR LF drifts") << u"a\r\nb\r\nc"_s << u"0+1 2+1 4+1 6+0"_s;
    QTest::newRow("separators") << u"a\u2028b\u2029c"_s << u"0+1 2+1 4+1 6+0"_s;
}

void TestStringHelpers::findsLines()
{
    QFETCH(const QString, text);
    QStringList ranges;
    for (int number = 1; number <= 4; ++number) {
        const UnitRange range = rangeOfLine(text, number);
        ranges << u"%1+%2"_s.arg(range.location).arg(range.length);
    }
    QTEST(ranges.join(u' '), "ranges");
}

void TestStringHelpers::makesUniqueIds()
{
    static const QRegularExpression form(u"^[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}$"_s);
    QSet<QString> ids;
    for (int i = 0; i < 100; ++i) {
        const QString id = UUID();
        QVERIFY2(form.match(id).hasMatch(), qPrintable(id));
        ids << id;
    }
    QCOMPARE(ids.size(), 100);
}

void TestStringHelpers::showsListsAsText_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("text");
    const InfoPtr info = VXGlyphInfo::init();
    info->setName(u"A"_s);
    const InfoPtr nameless = VXGlyphInfo::init();
    nameless->setName({});
    auto *named = new Named(u"B"_s);
    named->setParent(this);
    QTest::newRow("texts") << QVariant(QStringList {u"a"_s, u"b"_s}) << u"a, b"_s;
    QTest::newRow("one text") << QVariant(QStringList {u"a"_s}) << u"a"_s;
    QTest::newRow("list of texts") << QVariant(QVariantList {u"a"_s, u"b"_s}) << u"a, b"_s;
    QTest::newRow("records") << QVariant(
        QVariantList {QVariant::fromValue(info), QVariant::fromValue(nameless), QVariant::fromValue(info)})
                             << u"A A "_s;
    QTest::newRow("objects") << QVariant(QVariantList {QVariant::fromValue<QObject *>(named)}) << u"B "_s;
    QTest::newRow("maps") << QVariant(QVariantList {QVariantMap {{u"name"_s, u"C"_s}}, QVariantMap()})
                          << u"C "_s;
    QTest::newRow("numbers have no name") << QVariant(QVariantList {1, 2}) << u""_s;
    QTest::newRow("text") << QVariant(u"a,b"_s) << u"a,b"_s;
    QTest::newRow("empty list") << QVariant(QStringList()) << u""_s;
    QTest::newRow("number") << QVariant(5) << u""_s;
    QTest::newRow("nothing") << QVariant() << u""_s;
}

void TestStringHelpers::showsListsAsText()
{
    QFETCH(const QVariant, value);
    const QVariant shown = VXArrayToStringTransformator().transformedValue(value);
    QCOMPARE(shown.typeId(), int(QMetaType::QString));
    QTEST(shown.toString(), "text");
    QVERIFY(!shown.toString().isNull());
}

void TestStringHelpers::splitsTextIntoLists_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QStringList>("list");
    QTest::newRow("text") << QVariant(u"a,b, c"_s) << QStringList {u"a,b"_s, u"c"_s};
    QTest::newRow("empty text") << QVariant(u""_s) << QStringList {u""_s};
    QTest::newRow("list") << QVariant(QStringList {u"a"_s}) << QStringList();
    QTest::newRow("number") << QVariant(5) << QStringList();
    QTest::newRow("nothing") << QVariant() << QStringList();
}

void TestStringHelpers::splitsTextIntoLists()
{
    QFETCH(const QVariant, value);
    const VXArrayToStringTransformator transformer;
    QTEST(transformer.reverseTransformedValue(value).toStringList(), "list");
    QVERIFY(!transformer.allowsReverseTransformation());
}

void TestStringHelpers::mapsDirections_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("valueOfIndex"); // of the first column taken as an index
    QTest::newRow("-2") << -2 << 0 << 0;
    QTest::newRow("-1") << -1 << 2 << 0;
    QTest::newRow("0") << 0 << 1 << 0;
    QTest::newRow("1") << 1 << 3 << 0;
    QTest::newRow("2") << 2 << 0 << -1;
    QTest::newRow("3") << 3 << 0 << 1;
    QTest::newRow("4") << 4 << 0 << 0;
}

void TestStringHelpers::mapsDirections()
{
    QFETCH(const int, value);
    const VXDirectionToIndexValueTransformer transformer;
    QTEST(transformer.transformedValue(value).toInt(), "index");
    QTEST(transformer.reverseTransformedValue(value).toInt(), "valueOfIndex");
    QVERIFY(transformer.allowsReverseTransformation());
}

void TestStringHelpers::knowsTransformersByName()
{
    const QString name = u"arrayToStringTransformator"_s;
    QVERIFY(!ValueTransformer::forName(name));
    ValueTransformer::setForName(name, std::make_unique<VXArrayToStringTransformator>());
    QVERIFY(!ValueTransformer::forName(name)->allowsReverseTransformation());
    ValueTransformer::setForName(name, std::make_unique<VXDirectionToIndexValueTransformer>());
    QVERIFY(ValueTransformer::forName(name)->allowsReverseTransformation());
}

RUNEBOOK_TEST_MAIN(TestStringHelpers)
#include "tst_stringhelpers.moc"
