#include "editing/CompareContent.h"
#include "editing/TextDifference.h"
#include "tests/Rounds.h"
#include "tests/TestMain.h"
#include "tests/editing/CompareRecords.h"

#include <random>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

/// The text with its parts in brackets.
QString bracketed(const QString &text, const std::vector<TextPart> &parts)
{
    QString result;
    qsizetype done = 0;
    for (const TextPart &part : parts) {
        result += text.mid(done, part.begin - done) + u'[' + text.mid(part.begin, part.length) + u']';
        done = part.begin + part.length;
    }
    return result + text.mid(done);
}

QString unmarked(const QString &text, const std::vector<TextPart> &parts)
{
    QString rest = text;
    for (auto part = parts.rbegin(); part != parts.rend(); ++part)
        rest.remove(part->begin, part->length);
    return rest;
}

} // namespace

class CompareValuesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void parts_data()
    {
        QTest::addColumn<QString>("left");
        QTest::addColumn<QString>("right");
        const auto row = [](const char *name, const QString &left, const QString &right) {
            QTest::newRow(name) << left << right;
        };
        row("equal", u"acute, grave"_s, u"acute, grave"_s);
        row("both empty", u""_s, u""_s);
        row("one empty", u"[acute, grave]"_s, u""_s);
        row("a word added", u"acute, grave"_s, u"acute, [breve, ]grave"_s);
        row("a word added at the end", u"acute"_s, u"acute[, grave]"_s);
        row("two words apart", u"[a, ]b, c, d"_s, u"b, c, d[, e]"_s);
        row("one word for another, by character", u"uni1EA[E]"_s, u"uni1EA[F]"_s);
        row("inside a word", u"LATIN CAP[IT]AL A"_s, u"LATIN CAPAL A"_s);
        row("repeated letters", u"aa"_s, u"aa[a]"_s);
        row("not between a letter and its mark", u"caf[e\u0301]"_s, u"caf[e]"_s);
        row("not through a pair", u"x[\U0001F600]"_s, u"x[\U0001F601]"_s);
        row("case", u"[L]atin"_s, u"[l]atin"_s);
    }

    void parts()
    {
        QFETCH(const QString, left);
        QFETCH(const QString, right);
        const auto plain = [](QString text) { return text.remove(u'[').remove(u']'); };
        const TextDifference difference = differenceOfTexts(plain(left), plain(right));
        QCOMPARE(bracketed(plain(left), difference.left), left);
        QCOMPARE(bracketed(plain(right), difference.right), right);
    }

    /// What is not marked is the same on both sides, and equal texts have no marks.
    void randomTexts()
    {
        std::mt19937 random(7);
        const QStringList words {u"a"_s, u"acute"_s, u"b"_s, u", "_s, u"ae\u0301"_s, u"\U0001F600"_s, u" "_s};
        const auto text = [&](unsigned length) {
            QString made;
            for (unsigned i = random() % length; i > 0; --i)
                made += words.at(static_cast<qsizetype>(random() % 7));
            return made;
        };
        for (int round = 0; round < rounds(2000); ++round) {
            const unsigned length = round % 50 == 0 ? 900 : 12;
            const QString left = text(length);
            const QString right = round % 10 == 0 ? left : text(length);
            const TextDifference difference = differenceOfTexts(left, right);
            QCOMPARE(unmarked(left, difference.left), unmarked(right, difference.right));
            if (left == right)
                QVERIFY(difference.left.empty() && difference.right.empty());
        }
    }

    void valueSets_data()
    {
        QTest::addColumn<QString>("left");
        QTest::addColumn<QString>("right");
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("differ");
        const QString none;
        QTest::newRow("both missing") << none << none << u"name"_s << false;
        QTest::newRow("left missing") << none << u"name=\"A\""_s << u"name"_s << true;
        QTest::newRow("right missing") << u"name=\"A\""_s << none << u"name"_s << true;
        QTest::newRow("right missing, left without value") << u"name=\"A\""_s << none << u"script"_s << false;
        QTest::newRow("equal") << u"name=\"A\""_s << u"name=\"A\""_s << u"name"_s << false;
        QTest::newRow("different") << u"name=\"A\""_s << u"name=\"B\""_s << u"name"_s << true;
        QTest::newRow("absent against present")
            << u"name=\"A\""_s << u"name=\"A\" script=\"latin\""_s << u"script"_s << true;
        QTest::newRow("absent against empty")
            << u"name=\"A\""_s << u"name=\"A\" script=\"\""_s << u"script"_s << false;
        QTest::newRow("sets in another order")
            << u"name=\"A\"\nname=\"B\""_s << u"name=\"B\"\nname=\"A\""_s << u"name"_s << false;
        QTest::newRow("how often does not count")
            << u"name=\"A\"\nname=\"A\""_s << u"name=\"A\""_s << u"name"_s << false;
        QTest::newRow("one more on the left")
            << u"name=\"A\"\nname=\"B\""_s << u"name=\"A\""_s << u"name"_s << true;
        QTest::newRow("one more on the right")
            << u"name=\"A\""_s << u"name=\"A\"\nname=\"B\""_s << u"name"_s << true;
        QTest::newRow("lists") << u"name=\"A\" altNames=\"a, b\""_s << u"name=\"A\" altNames=\"b, a\""_s
                               << u"altNames"_s << true;
        QTest::newRow("case") << u"name=\"A\" case=\"upper\""_s << u"name=\"A\""_s << u"case"_s << true;
        QTest::newRow("direction") << u"name=\"A\" direction=\"RTL\""_s << u"name=\"A\" direction=\"RTL\""_s
                                   << u"direction"_s << false;
    }

    void valueSets()
    {
        QFETCH(const QString, left);
        QFETCH(const QString, right);
        QFETCH(const QString, key);
        QTEST(valuesDiffer(recordsOf(left), recordsOf(right), *fieldForKey(key)), "differ");
    }

    /// Lists count by their entries, however they came to be kept.
    void lists()
    {
        const InfoPtr read = recordsOf(u"name=\"A\" altNames=\"a, b\""_s).front();
        const InfoPtr set = VXGlyphInfo::init();
        set->setAltNames(QStringList {u"a"_s, u"b"_s});
        QVERIFY(!valuesDiffer({read}, {set}, GlyphField::AltNames));
        set->setAltNames(QStringList {u"a, b"_s});
        QVERIFY(valuesDiffer({read}, {set}, GlyphField::AltNames));
    }

    /// Every field that files keep, the ones that the records' own equality overlooks included.
    void differingFields_data()
    {
        QTest::addColumn<QString>("right");
        QTest::addColumn<QString>("fields");
        const QString base = u"unicode=\"0041\" unicodeLegacy=\"F041\" name=\"A\" case=\"upper\" "
                             "description=\"d\" marks=\"m\""_s;
        const auto row = [&](const char *name, const QString &before, const QString &after,
                             const QString &fields) {
            QTest::newRow(name) << QString(base).replace(before, after) << fields;
        };
        row("none", u"x"_s, u"x"_s, {});
        row("case", u"upper"_s, u"lower"_s, u"case"_s);
        row("legacy", u"F041"_s, u"F042"_s, u"unicodeLegacy"_s);
        row("code points", u"unicode=\"0041\""_s, u"unicode=\"0041\" unicode2=\"0042\""_s, u"unicodes"_s);
        row("old sort name", u"name=\"A\""_s, u"name=\"A\" sortNameOld=\"x\""_s, u"sortNameOld"_s);
        row("name and marks", u"name=\"A\""_s, u"name=\"B\" marks=\"\""_s, u"name"_s);
        row("description gone", u"description=\"d\" "_s, {}, u"desc"_s);
        row("direction", u"name=\"A\""_s, u"name=\"A\" direction=\"LTR\""_s, u"direction"_s);
    }

    void differingFields()
    {
        QFETCH(const QString, right);
        const InfoPtr left = recordsOf(u"unicode=\"0041\" unicodeLegacy=\"F041\" name=\"A\" case=\"upper\" "
                                       "description=\"d\" marks=\"m\""_s)
                                 .front();
        QStringList keys;
        for (const ComparedField *field : runebook::differingFields(*left, *recordsOf(right).front()))
            keys << keyOfField(field->field);
        QTEST(keys.join(u' '), "fields");
    }

    /// What is found step by step is what a look at everything finds.
    void stepsFindTheSame()
    {
        std::mt19937 random(11);
        const auto upTo = [&random](int limit) { return static_cast<int>(random() % unsigned(limit)); };
        const QStringList texts {{}, u""_s, u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s, u"f"_s};
        const auto made = [&] {
            InfoList infos;
            for (int i = upTo(6); i > 0; --i) {
                infos.push_back(VXGlyphInfo::init());
                infos.back()->setDesc(texts.at(upTo(texts.size())));
                infos.back()->setAltNames(QStringList(upTo(3), texts.at(2 + upTo(2))));
                infos.back()->setCase(upTo(3));
            }
            return infos;
        };
        int different = 0;
        for (int round = 0; round < rounds(2000); ++round) {
            const InfoList left = made();
            const InfoList right = round % 4 ? made() : left;
            for (const GlyphField field : {GlyphField::Desc, GlyphField::AltNames, GlyphField::Case}) {
                FieldContent content(field, left, right);
                const auto step = static_cast<std::size_t>(1 + upTo(4));
                while (!content.advance(step)) { }
                QCOMPARE(content.differs(), valuesDiffer(left, right, field));
                different += content.differs();
            }
            FieldContent shown(GlyphField::Desc, left, right);
            shown.finish();
            QStringList distinct;
            for (const InfoPtr &info : left)
                distinct << info->desc();
            distinct.removeDuplicates();
            distinct.removeAll(QString());
            QCOMPARE(shown.left().texts, distinct.first(qMin<qsizetype>(5, distinct.size())));
            QCOMPARE(shown.left().hasMore, distinct.size() > 5);
        }
        QVERIFY(different > 500);
    }
};

RUNEBOOK_TEST_MAIN(CompareValuesTest)
#include "CompareValuesTest.moc"
