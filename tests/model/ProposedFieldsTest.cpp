// What is proposed for a character, against the records of the sample, which people made by hand and by rule.
#include "model/FieldTable.h"
#include "model/ProposedFields.h"
#include "model/UnicodeData.h"
#include "model/NameRules.h"
#include "model/VXGlyphInfo.h"

#include "tests/TestMain.h"

#include <QFile>
#include <QHash>
#include <QMap>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

InfoList sampleRecords()
{
    InfoList records;
    QFile file(QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/sample.xml"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no sample");
    while (!file.atEnd()) {
        if (const InfoPtr info = VXGlyphInfo::initWithLineXMLFileVersion(QString::fromUtf8(file.readLine()).trimmed()))
            records.push_back(info);
    }
    return records;
}

} // namespace

class ProposedFieldsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theSampleAgrees();
    void oneCharacter_data();
    void oneCharacter();
    void everyNameIsValid();
};

/// How many percent of the sample's records with a code point have just what is proposed, field by field. The limits
/// are what was measured: what is left is a matter of taste. RUNEBOOK_SHOW=FIELD lists the others.
void ProposedFieldsTest::theSampleAgrees()
{
    const InfoList records = sampleRecords();
    QHash<char32_t, QString> names;
    for (const InfoPtr &info : records) {
        for (const QString &text : info->unicodes())
            names.insert(text.toUInt(nullptr, 16), info->name());
    }
    const NameOfCharacter nameOf = [&names](char32_t codePoint) { return names.value(codePoint); };
    QMap<QString, int> agreeing;
    int count = 0;
    for (const InfoPtr &info : records) {
        if (info->unicodes().isEmpty())
            continue;
        ++count;
        const ProposedFields proposed = proposedFields(info->unicodes().first().toUInt(nullptr, 16), nameOf);
        const auto compare = [&](const QString &field, const QString &theirs, const QString &ours) {
            agreeing[field] += theirs == ours;
            if (theirs != ours && qEnvironmentVariable("RUNEBOOK_SHOW") == field && qEnvironmentVariableIsSet("RUNEBOOK_SHOW"))
                qInfo().noquote() << info->unicode() << info->name() << '|' << theirs << '|' << ours;
        };
        compare(u"name"_s, info->name(), proposed.name);
        compare(u"description"_s, info->desc(), proposed.description);
        compare(u"category"_s, info->category(), proposed.category);
        compare(u"subCategory"_s, info->subCategory(), proposed.subCategory);
        compare(u"script"_s, info->script(), proposed.script);
        compare(u"case"_s, QString::number(info->caseValue()), QString::number(proposed.letterCase));
        compare(u"direction"_s, QString::number(info->direction()), QString::number(proposed.direction));
        compare(u"decomposition"_s, info->decompose(), proposed.decomposition.join(u", "_s));
        compare(u"production"_s, info->production(), proposed.production);
    }
    QVERIFY(count > 1500);
    const QMap<QString, double> limits {
        {u"name"_s, 93.0},   {u"description"_s, 99.9}, {u"category"_s, 99.4},   {u"subCategory"_s, 99.1},
        {u"script"_s, 99.5}, {u"case"_s, 99.8},        {u"direction"_s, 100.0}, {u"decomposition"_s, 96.2},
        {u"production"_s, 99.8}};
    QCOMPARE(agreeing.keys(), limits.keys());
    for (auto each = agreeing.begin(); each != agreeing.end(); ++each) {
        const double percent = 100.0 * each.value() / count;
        qInfo("%-14s %5.1f %% of %d", qPrintable(each.key()), percent, count);
        QVERIFY2(percent >= limits.value(each.key()), qPrintable(each.key()));
    }
}

void ProposedFieldsTest::oneCharacter_data()
{
    QTest::addColumn<uint>("codePoint");
    QTest::addColumn<QString>("line");
    const auto row = [](uint codePoint, const char *line) {
        QTest::newRow(line) << codePoint << QString::fromUtf8(line);
    };
    row(0x41, "A; Letter Uppercase upper latin; ; ");
    row(0x1EAD, "acircumflexdotbelow; Letter Lowercase lower latin; adotbelow, circumflexcomb; uni1EAD");
    row(0x1C5, "Dzcaron; Letter Other latin; D, zcaron; uni01C5");
    row(0x491, "gheupturn-cy; Letter Lowercase lower cyrillic; ; uni0491");
    row(0x5DA, "kafFinal-hb; Letter Other hebrew RTL; ; uni05DA");
    row(0x6F3, "threeFarsi-ar; Number Decimal Digit arabic LTR; ; uni06F3");
    row(0x995, "ka-beng; Letter Other bengali; ; uni0995");
    row(0x9CB, "oMatra-beng; Mark Matra bengali; eMatra-beng, aaMatra-beng; uni09CB");
    row(0xAC01, "gag-ko; Letter Syllable hangul; kiyeokcho-ko, ajung-ko, kiyeokjong-ko; uniAC01");
    row(0x4E00, "uni4E00; Letter Other han; ; ");
    row(0x1D44E, "aitalic-math; Letter Lowercase lower math; ; u1D44E");
    row(0x2468, "ninecircle; Number Enclosing; ; uni2468");
    row(0xE000, "uniE000; Letter Other; ; ");
}

void ProposedFieldsTest::oneCharacter()
{
    QFETCH(uint, codePoint);
    QFETCH(QString, line);
    const ProposedFields fields = proposedFields(codePoint, [](char32_t part) { return proposedName(part); });
    QStringList words {fields.category, fields.subCategory, VXGlyphInfo::stringFromCase(fields.letterCase), fields.script,
                       VXGlyphInfo::stringFromDirection(fields.direction)};
    words.removeAll(QString());
    QCOMPARE(u"%1; %2; %3; %4"_s.arg(fields.name, words.join(u' '), fields.decomposition.join(u", "_s), fields.production),
             line);
}

/// Valid, and of the glyph list's no other character's. The words are those of the vocabularies.
void ProposedFieldsTest::everyNameIsValid()
{
    const UnicodeData &data = UnicodeData::shared();
    int named = 0;
    for (char32_t code = 0; code <= 0x10FFFF; code += code >= 0x20000 ? 1009 : 1) {
        const ProposedFields fields = proposedFields(code);
        const bool isSpoken = !fields.name.isEmpty() && !fields.name.startsWith("uni"_L1);
        named += isSpoken;
        const bool isFine = data.isAssigned(code) == !fields.name.isEmpty()
            && (fields.name.isEmpty() || objectionToName(QStringView(fields.name)) == NameObjection::None)
            && (fields.category.isEmpty() || VXGlyphInfo::categories().contains(fields.category))
            && (fields.subCategory.isEmpty() || VXGlyphInfo::subCategories().contains(fields.subCategory))
            && (fields.script.isEmpty() || VXGlyphInfo::scripts().contains(fields.script));
        if (!isFine)
            QFAIL(qPrintable(u"U+%1 %2"_s.arg(code, 4, 16).arg(fields.name)));
    }
    QVERIFY(named > 20000);
}

RUNEBOOK_TEST_MAIN(ProposedFieldsTest)
#include "ProposedFieldsTest.moc"
