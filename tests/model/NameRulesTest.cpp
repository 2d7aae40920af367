#include "model/StringHelpers.h"
#include "model/VXArrayToStringTransformator.h"
#include "model/VXDirectionToIndexValueTransformer.h"
#include "model/VXGlyphInfo.h"
#include "platform/StandardFolders.h"
#include "tests/Fingerprint.h"
#include "tests/Rounds.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/model/RecordingOwner.h"

#include <QFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSet>

using namespace Qt::StringLiterals;
using namespace runebook;

// Vocabularies, word forms, which names are allowed, and the production name of a code point.

namespace {

const QString kEmpty = u"The glyph name should not be empty."_s;
const QString kSpace = u"The glyph name should not contain any space character."_s;
const QString kIllegal = u"The name contains illegal characters.\nOnly a-z, A-Z, 0-9, underscore, hyphen, "
                         "and period are allowed."_s;
const QString kDigit = u"The name shouldn’t start with a number (0-9)."_s;

} // namespace

// Hexadecimal texts, characters beyond 16 bits, line ranges; and the two value transformers.

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

/// The rules of glyph names, and the helpers for texts below them.
class NameRulesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources")); }

    void listsTheWords()
    {
        QCOMPARE(VXGlyphInfo::categories().join(u' '), u"Letter Number Punctuation Separator Symbol Mark"_s);
        QCOMPARE(fingerprintOf(VXGlyphInfo::subCategories()), QByteArray("73906ed92d30e9dce1b7dbafa1f96832"));
        QCOMPARE(fingerprintOf(VXGlyphInfo::scripts()), QByteArray("289fc660a7bffb1dbe6b5cb1bc8fbca7"));
    }

    TABLE(formsWords, (int value, const QString &caseWord, const QString &directionWord), {
        row("-2", -2, QString(), QString());
        row("-1", -1, QString(), "BIDI");
        row("0", 0, QString(), "LTR");
        row("1", 1, "upper", "RTL");
        row("2", 2, "lower", "VTL");
        row("3", 3, "smallCaps", "VTR");
        row("4", 4, "minor", QString());
        row("5", 5, QString(), QString());
    })
    {
        QCOMPARE(VXGlyphInfo::stringFromCase(value), caseWord);
        QCOMPARE(VXGlyphInfo::stringFromDirection(value), directionWord);
        QCOMPARE(VXGlyphInfo::stringFromCase(value).isNull(), caseWord.isNull());
        QCOMPARE(VXGlyphInfo::stringFromDirection(value).isNull(), directionWord.isNull());
        if (!caseWord.isNull())
            QCOMPARE(VXGlyphInfo::caseFromString(caseWord), value);
        if (!directionWord.isNull())
            QCOMPARE(VXGlyphInfo::directionFromString(directionWord), value);
    }

    TABLE(readsCases, (const QString &word, int value), {
        const QList<std::pair<const char *, int>> rows {
            {"", 0},  {"Upper", 0}, {"u", 1},     {"uppercase", 1}, {"lowercase", 2},
            {"s", 3}, {"m", 4},     {"other", 5}, {"none", 0},      {"x", 0}};
        for (const auto &[word, value] : rows)
            row(word, QString::fromLatin1(word), value);
        row("absent", QString(), 0);
    })
    {
        QCOMPARE(VXGlyphInfo::caseFromString(word), value);
    }

    TABLE(readsDirections, (const QString &word, int value), {
        const QList<std::pair<const char *, int>> rows {
            {"", 0},    {"BIDI", -1}, {"B", -1},  {"bidi", 0}, {"RTL", 1}, {"R", 1},    {"LTR", 0}, {"x", 0},
            {"VTL", 2}, {"VTR", 3},   {"VTX", 3}, {"VxL", 2},  {"VT", 0},  {"VTLx", 0}, {"V", 0}};
        for (const auto &[word, value] : rows)
            row(word, QString::fromLatin1(word), value);
    })
    {
        QCOMPARE(VXGlyphInfo::directionFromString(word), value);
    }

    TABLE(judgesNames, (const QString &name, const QString &objection), {
        row("absent", QString(), kEmpty);
        row("empty", "", kEmpty);
        row("blank", "A B", kSpace);
        row("tab", "A\tB", kSpace);
        row("no-break space", "A\u00A0B", kSpace);
        row("blank before illegal", "é b", kSpace);
        row("line feed", "A\nB", kIllegal);
        row("é", "é", kIllegal);
        row("1é: illegal first", "1é", kIllegal);
        row("other digit", "\u0661", kIllegal);
        row("+", "a+b", kIllegal);
        row("1a", "1a", kDigit);
        row("9", "9", kDigit);
        row("_1", "_1", QString());
        row(".notdef", ".notdef", QString());
        row("-", "-", QString());
        row("a1", "azAZ09._-", QString());
    })
    {
        const InfoPtr info = VXGlyphInfo::init();
        Error error;
        QCOMPARE(info->validateName(name, &error), objection.isNull());
        QCOMPARE(error.description, objection);
        QCOMPARE(error.domain, objection.isNull() ? QString() : u"TesselErrorDomain"_s);
        QCOMPARE(error.code, objection.isNull() ? 0 : 125);
        QCOMPARE(info->validateName(name), objection.isNull());
    }

    void judgesNamesInADocument()
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

    void readsTheGlyphList()
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
            QCOMPARE(VXGlyphInfo::aglfn().value(QString::fromLatin1(fields[0])),
                     QString::fromLatin1(fields[1]));
            ++rows;
        }
        QVERIFY(rows > 600);
        QCOMPARE(VXGlyphInfo::aglfn().size(), rows);
        QCOMPARE(VXGlyphInfo::aglfn().value(u"0041"_s), u"A"_s);
        QCOMPARE(VXGlyphInfo::aglfn().value(u"03A9"_s), u"Omega"_s);
    }

    // production: "kept" stands there before
    TABLE(makesProductionNames, (const QString &name, const QStringList &unicodes, const QString &production),
          {
              const auto add = [&](const char *label, const char16_t *name, const char16_t *codes,
                                   const char16_t *made) {
                  row(label, QString::fromUtf16(name),
                      QString::fromUtf16(codes).split(u' ', Qt::SkipEmptyParts), QString::fromUtf16(made));
              };
              add("name is listed", u"A", u"0041", u"kept");
              add("other name", u"Acap", u"0041", u"A");
              add("first code point counts", u"x", u"0042 0041", u"B");
              add("no code point", u"A", u"", u"kept");
              add("CR", u"CR", u"000D", u"kept");
              add("DEL", u"DEL", u"007F", u"kept");
              add("not listed", u"x", u"E000", u"uniE000");
              add("afii", u"x", u"0410", u"uni0410");
              add("afii, same name", u"afii10017", u"0410", u"uni0410");
              add("SF", u"x", u"2510", u"uni2510");
              add("ignored", u"x", u"0162", u"uni0162");
              add("ignored, same name", u"aleph", u"2135", u"uni2135");
              add("five characters", u"x", u"1F600", u"u1F600");
              add("six characters", u"x", u"10FFFF", u"kept");
              add("three characters", u"x", u"041", u"kept");
              add("no hexadecimal", u"x", u"WXYZ", u"uniWXYZ");
              add("lower case is stored upper", u"x", u"00e9", u"eacute");
              // Listed under a name that is no production name.
              QVERIFY(VXGlyphInfo::aglfn().value(u"0410"_s).startsWith(u"afii"_s));
              QVERIFY(VXGlyphInfo::aglfn().value(u"2510"_s).startsWith(u"SF"_s));
              QCOMPARE(VXGlyphInfo::aglfn().value(u"0162"_s), u"Tcommaaccent"_s);
              QCOMPARE(VXGlyphInfo::aglfn().value(u"2135"_s), u"aleph"_s);
          })
    {
        const InfoPtr info = VXGlyphInfo::init();
        info->setName(name);
        info->setUnicodes(unicodes);
        info->setProduction(u"kept"_s);
        info->generateUniName();
        QCOMPARE(info->production(), production);
    }

    void makesProductionNamesUndoably()
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

    TABLE(readsHex, (const QString &text, quint32 number), {
        row("empty", "", 0u);
        row("lower case", "00e9", 233u);
        row("mixed", "1F60a", 0x1F60Au);
        row("prefix", "0x41", 0u);
        row("minus", "-41", 0u);
        row("blank behind", "41 ", 0u);
        row("G", "4G", 0u);
        row("other digits", "\u0661", 0u);
        row("full-width", "\uFF21", 0u);
        row("eight digits", "FFFFFFFF", 0xFFFFFFFFu);
        row("nine digits keep 32 bits", "123456789", 0x23456789u);
    })
    {
        QCOMPARE(hexStringToInt(text), number);
    }

    TABLE(printsHex, (qint64 number, const QString &text), {
        row("0", qint64(0), "0000");
        row("10", qint64(10), "000A");
        row("-10", qint64(-10), "-000A");
        row("emoji", qint64(0x1F600), "1F600");
        row("cap", qint64(0xFFFFFFF), "FFFFFFF");
        row("above the cap", qint64(0x10000000), "FFFFFFF");
        row("far above", std::numeric_limits<qint64>::max(), "FFFFFFF");
        row("far below", std::numeric_limits<qint64>::min(), "-FFFFFFF");
    })
    {
        QCOMPARE(hexStringFromInt(number), text);
    }

    void hexRoundTrip()
    {
        QRandomGenerator random(3);
        for (int round = 0; round < rounds(5'000); ++round) {
            const quint32 number = random.generate() >> random.bounded(4, 32);
            QCOMPARE(hexStringToInt(hexStringFromInt(number)), number);
        }
    }

    TABLE(makesCharacters, (quint32 codePoint, const QString &text), {
        row("0", 0u, "");
        row("A", 0x41u, "A");
        row("last of one unit", 0xFFFFu, QString(QChar(0xFFFF)));
        row("lone surrogate", 0xD800u, QString(QChar(0xD800)));
        row("first pair", 0x10000u, u"\U00010000"_s);
        row("emoji", 0x1F600u, "😀");
        row("last", 0x10FFFFu, u"\U0010FFFF"_s);
        row("beyond", 0x110000u, QString());
    })
    {
        QCOMPARE(stringWithChar(codePoint), text);
    }

    void stepsThroughCharacters()
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

    // ranges: of the lines 1 to 4, "location+length"
    TABLE(findsLines, (const QString &text, const QString &ranges), {
        row("empty", "", "0+0 0+0 0+0 0+0");
        row("one line", "abc", "0+3 4+0 4+0 4+0");
        row("final newline", "abc\n", "0+3 4+0 4+0 4+0");
        row("two lines", "ab\nc", "0+2 3+1 5+0 5+0");
        row("empty line", "a\n\nb", "0+1 2+0 3+1 5+0");
        row("CR", "a\rb", "0+1 2+1 4+0 4+0");
        row("CR LF drifts", "a\r\nb\r\nc", "0+1 2+1 4+1 6+0");
        row("separators", "a\u2028b\u2029c", "0+1 2+1 4+1 6+0");
    })
    {
        QStringList found;
        for (int number = 1; number <= 4; ++number) {
            const UnitRange range = rangeOfLine(text, number);
            found << u"%1+%2"_s.arg(range.location).arg(range.length);
        }
        QCOMPARE(found.join(u' '), ranges);
    }

    void makesUniqueIds()
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

    TABLE(showsListsAsText, (const QVariant &value, const QString &text), {
        const InfoPtr info = VXGlyphInfo::init();
        info->setName(u"A"_s);
        const InfoPtr nameless = VXGlyphInfo::init();
        nameless->setName({});
        auto *named = new Named(u"B"_s);
        named->setParent(this);
        row("texts", QVariant(QStringList {u"a"_s, u"b"_s}), "a, b");
        row("one text", QVariant(QStringList {u"a"_s}), "a");
        row("list of texts", QVariant(QVariantList {u"a"_s, u"b"_s}), "a, b");
        row("records",
            QVariant(QVariantList {QVariant::fromValue(info), QVariant::fromValue(nameless),
                                   QVariant::fromValue(info)}),
            "A A ");
        row("objects", QVariant(QVariantList {QVariant::fromValue<QObject *>(named)}), "B ");
        row("maps", QVariant(QVariantList {QVariantMap {{u"name"_s, u"C"_s}}, QVariantMap()}), "C ");
        row("numbers have no name", QVariant(QVariantList {1, 2}), "");
        row("text", QVariant(u"a,b"_s), "a,b");
        row("empty list", QVariant(QStringList()), "");
        row("number", QVariant(5), "");
        row("nothing", QVariant(), "");
    })
    {
        const QVariant shown = VXArrayToStringTransformator().transformedValue(value);
        QCOMPARE(shown.typeId(), int(QMetaType::QString));
        QCOMPARE(shown.toString(), text);
        QVERIFY(!shown.toString().isNull());
    }

    TABLE(splitsTextIntoLists, (const QVariant &value, const QStringList &list), {
        row("text", QVariant(u"a,b, c"_s), QStringList {u"a,b"_s, u"c"_s});
        row("empty text", QVariant(u""_s), QStringList {u""_s});
        row("list", QVariant(QStringList {u"a"_s}), QStringList());
        row("number", QVariant(5), QStringList());
        row("nothing", QVariant(), QStringList());
    })
    {
        const VXArrayToStringTransformator transformer;
        QCOMPARE(transformer.reverseTransformedValue(value).toStringList(), list);
        QVERIFY(!transformer.allowsReverseTransformation());
    }

    // valueOfIndex: of the first column taken as an index
    TABLE(mapsDirections, (int value, int index, int valueOfIndex), {
        row("-2", -2, 0, 0);
        row("-1", -1, 2, 0);
        row("0", 0, 1, 0);
        row("1", 1, 3, 0);
        row("2", 2, 0, -1);
        row("3", 3, 0, 1);
        row("4", 4, 0, 0);
    })
    {
        const VXDirectionToIndexValueTransformer transformer;
        QCOMPARE(transformer.transformedValue(value).toInt(), index);
        QCOMPARE(transformer.reverseTransformedValue(value).toInt(), valueOfIndex);
        QVERIFY(transformer.allowsReverseTransformation());
        QCOMPARE(transformer.transformedValue({}), QVariant(0)); // nothing is selected
    }

    void knowsTransformersByName()
    {
        const QString name = u"arrayToStringTransformator"_s;
        QVERIFY(!ValueTransformer::forName(name));
        ValueTransformer::setForName(name, std::make_unique<VXArrayToStringTransformator>());
        QVERIFY(!ValueTransformer::forName(name)->allowsReverseTransformation());
        ValueTransformer::setForName(name, std::make_unique<VXDirectionToIndexValueTransformer>());
        QVERIFY(ValueTransformer::forName(name)->allowsReverseTransformation());
    }
};

RUNEBOOK_TEST_MAIN(NameRulesTest)
#include "NameRulesTest.moc"
