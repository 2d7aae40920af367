// Searching columns of texts answers as asking every record does, whatever happened to the records before.
#include "editing/search/SearchColumns.h"

#include "editing/search/RecordTests.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/editing/Records.h"
#include "tests/platform/PredicateOracle.h"

#include <QRandomGenerator>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

class InfoSubject final : public PredicateSubject
{
public:
    explicit InfoSubject(const VXGlyphInfo &info) : m_info(info) { }
    PredicateValue valueForKey(const QString &key) const override
    {
        return predicateValue(m_info, SearchKey::of(key));
    }

private:
    const VXGlyphInfo &m_info;
};

const QStringList &someTexts()
{
    // With marks alone, halves of pairs, and a text in which sixteen places fit more than once.
    static const QStringList texts {
        QString(),
        u""_s,
        u"a"_s,
        u"A"_s,
        u"aa"_s,
        u"alpha"_s,
        u"ALPHA.alt"_s,
        u"ALPHA"_s,
        u"beta alpha"_s,
        u"é"_s,
        u"e"_s,
        u"É"_s,
        u"e\u0301"_s,
        u"\u0301"_s,
        u"straße"_s,
        u"STRASSE"_s,
        u"がき"_s,
        u"𝔞\U0001F600"_s,
        QString(QChar(0xD800)),
        QString(QChar(0xDFFF)) + u"a"_s,
        QString(u'a') + QChar(0) + u'b',
        u"0041"_s,
        u"00041"_s,
        u"1F600"_s,
        u"00e9"_s,
        u"12"_s,
        u"-3.5"_s,
        u"a, alpha"_s,
        u"quote \" and \\ back"_s,
        u"a rather long text, so that sixteen places fit in it more than once: alpha, beta, alpha"_s,
    };
    return texts;
}

class Dice
{
public:
    explicit Dice(quint32 seed) : m_random(seed) { }
    int below(qsizetype bound) { return static_cast<int>(m_random.bounded(static_cast<quint32>(bound))); }
    QString text() { return someTexts().at(below(someTexts().size())); }
    QStringList list()
    {
        QStringList list;
        for (int i = below(4); i > 0; --i)
            list += text();
        return list;
    }
    QString oneOf(const QStringList &choices) { return choices.at(below(choices.size())); }

private:
    QRandomGenerator m_random;
};

/// A test of the predicate language about one of the keys that searches use, or several joined.
QString randomPredicate(Dice &dice, int depth = 0)
{
    if (depth < 3 && dice.below(3) == 0) {
        const QString first = randomPredicate(dice, depth + 1);
        if (dice.below(4) == 0)
            return u"!("_s + first + u')';
        const QString joined = dice.oneOf({u") && ("_s, u") || ("_s});
        return u'(' + first + joined + randomPredicate(dice, depth + 1) + u')';
    }
    const QString key =
        dice.oneOf({u"name"_s, u"name"_s, u"unicode"_s, u"production"_s, u"altNames"_s, u"unicodes"_s,
                    u"accents"_s, u"marks"_s, u"desc"_s, u"description"_s, u"unicodeLegacy"_s, u"case"_s,
                    u"direction"_s, u"index"_s, u"unicodeChar"_s, u"document"_s, u"nothing"_s});
    const QString options = dice.oneOf({u""_s, u"[c]"_s, u"[d]"_s, u"[cd]"_s});
    switch (dice.below(8)) {
    case 0:
        return key + u" IN"_s + options
            + u" {%1, %2}"_s.arg(Predicate::quoted(dice.text()), Predicate::quoted(dice.text()));
    case 1:
        return key + u" IN HEXRANGE(0041, 1F600)"_s;
    case 2:
        return key + u" MATCHES"_s + options + dice.oneOf({u" \"a.*\""_s, u" \".\""_s, u" \"[0-9A-F]+\""_s});
    case 3:
        return key + dice.oneOf({u" < "_s, u" <= "_s, u" == "_s, u" != "_s, u" > "_s, u" >= "_s})
            + dice.oneOf({u"12"_s, u"0"_s, u"-3.5"_s, u"41"_s});
    default:
        return key
            + dice.oneOf(
                {u" contains"_s, u" contains"_s, u" BEGINSWITH"_s, u" ENDSWITH"_s, u" =="_s, u" !="_s})
            + options + u' ' + Predicate::quoted(dice.text());
    }
}

void fillRandomly(VXGlyphInfo &info, Dice &dice)
{
    info.setName(dice.text());
    info.setProduction(dice.text());
    info.setMarks(dice.text());
    info.setDesc(dice.text());
    info.setUnicodeLegacy(dice.text());
    info.setUnicodes(dice.list());
    info.setAltNames(dice.list());
    info.setCase(dice.below(6));
    info.setDirection(dice.below(6) - 2);
    info.setIndex(static_cast<quint64>(dice.below(60)));
}

InfoPtr randomInfo(Dice &dice)
{
    const InfoPtr info = VXGlyphInfo::init();
    fillRandomly(*info, dice);
    return info;
}

void changeOneField(VXGlyphInfo &info, Dice &dice)
{
    switch (dice.below(9)) {
    case 0:
        return info.setProduction(dice.text());
    case 1:
        return info.setUnicodes(dice.list());
    case 2:
        return info.setAltNames(dice.list());
    case 3:
        return info.setMarks(dice.text());
    case 4:
        return info.setUnicodeLegacy(dice.text());
    case 5:
        return info.setCase(dice.below(6));
    case 6:
        return info.setIndex(static_cast<quint64>(dice.below(60)));
    default:
        return info.setName(dice.text());
    }
}

/// Records whose texts are still the bytes that were read.
InfoList readInfos()
{
    QByteArray file = "<glyphData>\n";
    for (const char *line :
         {"unicode=\"0041\" name=\"A\" production=\"uni0041\" altNames=\"a, Alpha\"",
          "name=\"adieresis.alt\" marks=\"a, e\"", "unicode=\"1F600\" name=\"\xF0\x9F\x98\x80\"",
          "name=\"alpha\" altNames=\"ALPHA\" description=\"\xC3\xA9\"", "category=\"\" altNames=\"\""})
        file += QByteArray("<glyph ") + line + "/>\n";
    return GlyphDataReader().read(file + "</glyphData>\n");
}

/// A document with its columns, told of every change as a list controller tells them.
class SearchedDocument
{
public:
    SearchedDocument() : columns(document)
    {
        QObject::connect(&document, &VXDocument::infosChanged, &document, [this](const auto &changes) {
            for (const VXDocument::Change &change : changes)
                columns.noteChange(change);
        });
        QObject::connect(&document, &VXDocument::infosInserted, &document,
                         [this](const IndexSet &places) { columns.noteInsertion(places); });
        QObject::connect(&document, &VXDocument::infosRemoved, &document,
                         [this](const IndexSet &places) { columns.noteRemoval(places); });
        QObject::connect(&document, &VXDocument::infosReset, &document, [this] { columns.reset(); });
    }

    void editRandomly(Dice &dice)
    {
        const qsizetype count = document.countOfInfos();
        const auto anyPlace = [&] { return static_cast<qsizetype>(dice.below(count)); };
        switch (dice.below(12)) {
        case 0:
            return document.insertObjectInInfosAtIndex(randomInfo(dice), dice.below(count + 1));
        case 1:
            return document.insertObjectsInInfosAtIndexes(
                {randomInfo(dice), randomInfo(dice), randomInfo(dice)}, {0, count / 2, count + 2});
        case 2:
            return document.removeObjectsFromInfosAtIndexes({anyPlace() / 2, (count + anyPlace()) / 2});
        case 3:
            return document.removeInfo(document.objectInInfosAtIndex(anyPlace()));
        case 4:
            // What undo removes is told by places, which an undone removal or a repeated record may have
            // moved.
            return repeats ? void() : document.undoManager()->undo();
        case 5:
            return repeats ? document.reorderInfos({document.infos().rbegin(), document.infos().rend()})
                           : void();
        case 6: // more than is worth being followed
            for (const InfoPtr &info : document.infos())
                changeOneField(*info, dice);
            return;
        case 7:
            if (!repeats)
                return;
            return document.addInfo(document.objectInInfosAtIndex(anyPlace()));
        default:
            for (int i = dice.below(5); i >= 0; --i)
                changeOneField(*document.objectInInfosAtIndex(anyPlace()), dice);
        }
    }
    /// The records that pass when each is asked for itself.
    IndexSet passingOneByOne(const Predicate &predicate) const
    {
        IndexSet places;
        for (qsizetype i = 0; i < document.countOfInfos(); ++i) {
            if (evaluate(predicate, InfoSubject(*document.objectInInfosAtIndex(i))) == Verdict::Yes)
                places.push_back(i);
        }
        return places;
    }

    VXDocument document;
    SearchColumns columns;
    bool repeats = false; ///< whether records come to stand in the list twice; then nothing is undone
};

} // namespace

class SearchColumnsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    TABLE(answersAsEveryRecordDoes, (quint32 seed), {
        for (quint32 seed = 1; seed <= 12; ++seed)
            row(u"seed %1"_s.arg(seed), seed);
    })
    {
        Dice dice(seed);
        SearchedDocument searched;
        searched.repeats = seed % 2 == 0;
        InfoList infos = readInfos();
        for (int i = 0; i < 120; ++i)
            infos.push_back(randomInfo(dice));
        searched.document.setInfos(infos);

        for (int round = 0; round < rounds(150); ++round) {
            const QString text = randomPredicate(dice);
            Error error;
            const std::optional<Predicate> predicate = Predicate::parse(text, &error);
            QVERIFY2(predicate, qPrintable(text + u'\n' + error.text()));
            if (dice.below(4) == 0)
                searched.columns.prepare(*predicate, 0);
            for (int i = dice.below(4); i > 0; --i)
                searched.editRandomly(dice);
            searched.document.flushChanges();

            const IndexSet expected = searched.passingOneByOne(*predicate);
            const std::optional<IndexSet> places = searched.columns.placesPassing(*predicate);
            QVERIFY(places);
            QVERIFY2(*places == expected, qPrintable(u"round %1: %2"_s.arg(round).arg(text)));
            const std::optional<std::vector<bool>> bits = searched.columns.evaluate(*predicate);
            QVERIFY(bits);
            QCOMPARE(qsizetype(bits->size()), searched.document.countOfInfos());
            QCOMPARE(size_t(std::count(bits->begin(), bits->end(), true)), expected.size());
            for (const qsizetype place : expected)
                QVERIFY((*bits)[size_t(place)]);
        }
    }

    void preparesInSlices()
    {
        Dice dice(5);
        SearchedDocument searched;
        InfoList infos;
        for (int i = 0; i < 3000; ++i)
            infos.push_back(randomInfo(dice));
        searched.document.setInfos(infos);
        const std::optional<Predicate> predicate =
            Predicate::parse(u"name contains[cd] \"alpha\" || production contains[cd] \"e\""_s);
        QVERIFY(predicate);

        int slices = 1;
        for (; !searched.columns.prepare(*predicate, 0); ++slices) {
            QVERIFY(slices < 1000);
            if (slices == 2) // in front of what is prepared already
                searched.document.insertObjectInInfosAtIndex(randomInfo(dice), 0);
            searched.document.objectInInfosAtIndex(slices)->setName(u"alpha"_s);
            searched.document.objectInInfosAtIndex(2999 - slices)->setName(u"beta"_s);
            searched.document.flushChanges();
        }
        QVERIFY2(slices > 3, qPrintable(QString::number(slices)));
        QCOMPARE(*searched.columns.placesPassing(*predicate), searched.passingOneByOne(*predicate));
    }

    void preparesInSlicesOfLongValues()
    {
        // What is looked for lies across the stretches in which a value is taken; two of them as bytes that
        // were read.
        const QString word = u"Ä😀sſe\u0301"_s;
        const QString text = u"😀Ä\u0301x, "_s.repeated(300'000) + word;
        const auto read = [](const QString &key, const QString &value) {
            return VXGlyphInfo::initWithLineXMLFileVersion(u"<glyph name=\"r\" %1=\"%2\"/>"_s.arg(key, value),
                                                           nullptr);
        };
        const InfoList infos {VXGlyphInfo::init(), read(u"description"_s, text), VXGlyphInfo::init(),
                              read(u"altNames"_s, u"é, "_s.repeated(300'000) + u"ALPHA"_s)};
        infos[0]->setDesc(word);
        infos[2]->setAltNames(u"bé, "_s.repeated(100'000).split(u", "_s) << u"alpha"_s);
        SearchedDocument searched;
        searched.document.setInfos(infos);
        for (const QString &changed : {QString(), u"short ä😀ssé"_s, word + text}) {
            for (const QString &test :
                 {u"desc contains[cd] \"ä😀ssé\""_s, u"desc contains[cd] \"ä\u0301X, 😀\""_s,
                  u"desc ENDSWITH \"e\u0301\""_s, u"altNames contains[cd] \"alpha\""_s,
                  u"altNames contains \"bé\""_s}) {
                infos[2]->setDesc(text);
                searched.document.flushChanges();
                searched.columns.reset();
                const std::optional<Predicate> predicate = Predicate::parse(test);
                QVERIFY(predicate && !searched.columns.prepareUpToLong(*predicate));
                int slices = 1;
                for (; !searched.columns.prepare(*predicate, 0); ++slices) {
                    QVERIFY(slices < 1000);
                    // The last text but one of the list becomes another while a part of it is taken.
                    if (slices == 45 && !changed.isNull()) {
                        infos[2]->setDesc(changed);
                        searched.document.flushChanges();
                    }
                }
                QVERIFY2(slices > 20, qPrintable(test + u' ' + QString::number(slices)));
                QVERIFY(searched.columns.prepareUpToLong(*predicate));
                QCOMPARE(*searched.columns.placesPassing(*predicate), searched.passingOneByOne(*predicate));
            }
        }
    }

    void givesUpOnSlowExpressions()
    {
        VXDocument document;
        const InfoPtr info = infoNamed(QString(60, u'a') + u'!');
        document.setInfos({VXGlyphInfo::init(), info});
        SearchColumns columns(document);
        const std::optional<Predicate> predicate = Predicate::parse(u"name MATCHES \"(a+)+$\""_s);
        QVERIFY(predicate);
        Error error;
        QVERIFY(!columns.evaluate(*predicate, &error));
        QCOMPARE(error.domain, Predicate::errorDomain());
        QCOMPARE(error.code, int(Predicate::PatternGaveUp));
        info->setName(u"aaa"_s);
        columns.noteChange({info, GlyphField::Name});
        QCOMPARE(*columns.placesPassing(*predicate), IndexSet {1});
    }

    void asksExpressionsOnlyWhereTheyMatter()
    {
        VXDocument document;
        document.setInfos({infoNamed(QString(60, u'a') + u'!'), infoNamed(u"aaa"_s)});
        document.infos()[1]->setScript(u"latin"_s);
        SearchColumns columns(document);
        const auto places = [&](const QString &text) {
            return columns.placesPassing(*Predicate::parse(text)).value_or(IndexSet {-1});
        };
        QCOMPARE(places(u"script == \"latin\" && name MATCHES \"(a+)+$\""_s), IndexSet {1});
        QCOMPARE(places(u"script == \"greek\" && name MATCHES \"(a+)+$\""_s), IndexSet {});
        QCOMPARE(places(u"name contains \"!\" || name MATCHES \"(a+)+$\""_s), (IndexSet {0, 1}));
        QCOMPARE(places(u"name MATCHES \"(a+)+$\" && script == \"latin\""_s), IndexSet {-1});
    }

    void givesUpWhenAllTakesTooLong()
    {
        VXDocument document;
        document.setInfos(numbered(1000, u"u"_s));
        SearchColumns columns(document);
        columns.setPatternTimeLimit(0);
        Error error;
        QVERIFY(!columns.evaluate(*Predicate::parse(u"name MATCHES \"u.*\""_s), &error));
        QCOMPARE(error.code, int(Predicate::PatternGaveUp));
        QVERIFY2(error.failureReason.contains(u"u.*"_s), qPrintable(error.failureReason));
        columns.setPatternTimeLimit(60'000);
        QCOMPARE(columns.placesPassing(*Predicate::parse(u"name MATCHES \"u.*\""_s))->size(), size_t(1000));
    }
};

RUNEBOOK_TEST_MAIN(SearchColumnsTest)
#include "SearchColumnsTest.moc"
