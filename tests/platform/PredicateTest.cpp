#include "tests/Rounds.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/platform/PredicateOracle.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <functional>
#include <limits>
#include <map>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

class Record : public PredicateSubject
{
public:
    Record(std::initializer_list<std::pair<const QString, PredicateValue>> values) : m_values(values) { }
    PredicateValue valueForKey(const QString &key) const override
    {
        const auto at = m_values.find(key);
        return at == m_values.end() ? PredicateValue {} : at->second;
    }
    QString name() const { return std::get<QString>(m_values.at(u"name"_s)); }

private:
    std::map<QString, PredicateValue> m_values;
};

Record named(const QString &name)
{
    return Record {{u"name"_s, name}};
}

const std::vector<Record> &records()
{
    static const std::vector<Record> all {
        {{u"name"_s, u"A"_s},
         {u"unicode"_s, u"0041"_s},
         {u"script"_s, u"latin"_s},
         {u"index"_s, 0.0},
         {u"altNames"_s, QStringList {u"uni0041"_s, u"A.base"_s}}},
        {{u"name"_s, u"Aacute"_s},
         {u"unicode"_s, u"00C1"_s},
         {u"script"_s, u"Latin"_s},
         {u"desc"_s, u"Á, big"_s},
         {u"index"_s, 1.0},
         {u"altNames"_s, QStringList {}}},
        {{u"name"_s, u"a.alt"_s},
         {u"unicode"_s, QString()},
         {u"script"_s, u""_s},
         {u"desc"_s, u"say \"hi\" \\ back"_s},
         {u"index"_s, 2.5},
         {u"altNames"_s, QStringList {u""_s}}},
        {{u"name"_s, u"germandbls"_s},
         {u"unicode"_s, u"00DF"_s},
         {u"desc"_s, u"Straße"_s},
         {u"index"_s, 10.0},
         {u"altNames"_s, QStringList {u"Ésszett"_s, u"ß"_s}}},
        {{u"name"_s, u"grin"_s}, {u"unicode"_s, u"1F600"_s}, {u"desc"_s, u"😀"_s}, {u"index"_s, 1e6}},
        {{u"name"_s, u"short"_s}, {u"unicode"_s, u"41"_s}},
        {{u"name"_s, u"small"_s}, {u"unicode"_s, u"00c1"_s}},
    };
    return all;
}

/// The names of the records that \a predicate is true of.
QString matches(const Predicate &predicate)
{
    QStringList names;
    for (const Record &record : records()) {
        if (evaluate(predicate, record) == Verdict::Yes)
            names += record.name();
    }
    return names.join(u' ');
}

/// A text in which every kind of trouble for a literal is likely.
QString troublesomeText(QRandomGenerator &random)
{
    static const QStringList parts {u"\""_s,       u"'"_s,        u"\\"_s,  u"%@"_s,     u"%K"_s,
                                    u"\\u0041"_s,  u"\n"_s,       u"\t"_s,  u"é"_s,      u"e\u0301"_s,
                                    u"😀"_s,        u")"_s,        u"}"_s,   u" "_s,      u" OR x"_s,
                                    u"\u2028"_s,   u"\uFEFF"_s,   u"AZ"_s,  u"\u0085"_s, u"ß"_s,
                                    QChar(0xD83D), QChar(0xDE00), QChar(0), u"a"_s};
    QString text;
    for (int i = random.bounded(1, 8); i > 0; --i)
        text += parts[random.bounded(parts.size())];
    return text;
}

/// A random predicate: its text, which leans on precedence wherever it can, and its meaning by plain means.
struct RandomPredicate {
    QString text;
    int binding = 3; // 1: or, 2: and, 3: not and single tests
    std::function<bool(const QString &)> isTrueOf;
};

QString inCase(QRandomGenerator &random, const QString &keyword)
{
    return random.bounded(2) ? keyword.toUpper() : keyword.toLower();
}

RandomPredicate randomTest(QRandomGenerator &random)
{
    const QString word = u"abAB"_s.mid(random.bounded(4), random.bounded(1, 3));
    const bool ignoreCase = random.bounded(2) == 0;
    const QString option = ignoreCase ? u"[c]"_s : QString();
    const auto sensitivity = ignoreCase ? Qt::CaseInsensitive : Qt::CaseSensitive;
    const auto text = [&](const QString &relation) {
        return u"name "_s + inCase(random, relation) + option + u" \""_s + word + u'"';
    };
    switch (random.bounded(5)) {
    case 0:
        return {text(u"contains"_s), 3,
                [=](const QString &name) { return name.contains(word, sensitivity); }};
    case 1:
        return {text(u"beginswith"_s), 3,
                [=](const QString &name) { return name.startsWith(word, sensitivity); }};
    case 2:
        return {text(u"endswith"_s), 3,
                [=](const QString &name) { return name.endsWith(word, sensitivity); }};
    case 3:
        return {text(u"=="_s), 3, [=](const QString &name) { return name.compare(word, sensitivity) == 0; }};
    default:
        return {text(u"!="_s), 3, [=](const QString &name) { return name.compare(word, sensitivity) != 0; }};
    }
}

RandomPredicate randomPredicate(QRandomGenerator &random, int depth)
{
    if (depth == 0 || random.bounded(4) == 0)
        return randomTest(random);
    const auto bracketed = [](const RandomPredicate &part, int binding) {
        return part.binding < binding ? u'(' + part.text + u')' : part.text;
    };
    const RandomPredicate one = randomPredicate(random, depth - 1);
    if (random.bounded(4) == 0) {
        const QString spelling = random.bounded(2) ? u"!"_s : inCase(random, u"not "_s);
        return {spelling + bracketed(one, 3), 3, [=](const QString &name) { return !one.isTrueOf(name); }};
    }
    const RandomPredicate other = randomPredicate(random, depth - 1);
    if (random.bounded(2)) {
        const QString join = random.bounded(2) ? u"&&"_s : inCase(random, u" and "_s);
        return {bracketed(one, 2) + join + bracketed(other, 2), 2,
                [=](const QString &name) { return one.isTrueOf(name) && other.isTrueOf(name); }};
    }
    const QString join = random.bounded(2) ? u"||"_s : inCase(random, u" or "_s);
    return {bracketed(one, 1) + join + bracketed(other, 1), 1,
            [=](const QString &name) { return one.isTrueOf(name) || other.isTrueOf(name); }};
}

} // namespace

class PredicateTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    // expected: the names of the records it is true of
    TABLE(language, (const QString &text, const QString &expected), {
        const QString everything = u"A Aacute a.alt germandbls grin short small"_s;

        row(u"TRUEPREDICATE"_s, everything);
        row(u"falsePredicate"_s, {});
        row(u"name CONTAINS[cd] 'AALT'"_s, {});
        row(u"desc contains[d] \"A\""_s, u"Aacute"_s);
        row(u"desc contains[c] \"STRASSE\""_s, u"germandbls"_s);
        row(u"desc contains[dc] \"á\""_s, u"Aacute a.alt germandbls"_s);
        row(u"desc contains[CD] \"😀\""_s, u"grin"_s);
        row(u"desc contains \"\\\"hi\\\" \\\\\""_s, u"a.alt"_s);
        row(u"desc contains '\"hi\"'"_s, u"a.alt"_s);
        row(u"desc contains \"\\uD83D\\uDE00\""_s, u"grin"_s);
        row(u"desc contains \"\\uD83D\""_s, {});
        row(u"name contains \"\""_s, {});
        row(u"name contains[d] \"\u0301\""_s, {});
        row(u"unicode contains 41"_s, u"A short"_s);
        row(u"name beginswith[c] \"A\""_s, u"A Aacute a.alt"_s);
        row(u"name ENDSWITH \"longer than any of the names\""_s, {});
        row(u"name == \"A\""_s, u"A"_s);
        row(u"name ==[c] \"a\""_s, u"A"_s);

        // Absent and empty values pass no test; only NOT turns that round.
        row(u"script != \"latin\""_s, u"Aacute"_s);
        row(u"script <> \"\""_s, u"A Aacute"_s);
        row(u"script !=[c] \"latin\""_s, {});
        row(u"NOT script == \"latin\""_s, u"Aacute a.alt germandbls grin short small"_s);
        row(u"nothing != \"x\""_s, {});
        row(u"! nothing == \"x\""_s, everything);
        row(u"unicode MATCHES \".*\""_s, u"A Aacute germandbls grin short small"_s);

        // A list: one element equals; "!=": none equals.
        row(u"altNames contains \"A.base\""_s, u"A"_s);
        row(u"altNames contains \"base\""_s, {});
        row(u"altNames contains[cd] \"esszett\""_s, u"germandbls"_s);
        row(u"altNames contains[c] \"SS\""_s, u"germandbls"_s);
        row(u"altNames != \"ß\""_s, u"A"_s);
        row(u"altNames BEGINSWITH \"uni\""_s, u"A"_s);
        row(u"altNames MATCHES \"uni.*\""_s, u"A"_s);
        row(u"altNames IN {\"x\", \"ß\"}"_s, u"germandbls"_s);
        row(u"altNames contains \"\""_s, {});

        row(u"script IN {\"latin\", \"greek\"}"_s, u"A"_s);
        row(u"script in[c] { 'greek' , 'LATIN' }"_s, u"A Aacute"_s);
        row(u"script IN {\"\"}"_s, {});
        row(u"script IN {}"_s, {});
        row(u"index IN {1, 2.5, 1000000}"_s, u"Aacute a.alt grin"_s);
        row(u"unicode IN HEXRANGE(0041, 00C1)"_s, u"A Aacute"_s);
        row(u"unicode IN hexrange(\"df\", \"FFFFFFF\")"_s, u"germandbls grin"_s);
        row(u"unicode IN HEXRANGE(1F600, 1F600)"_s, u"grin"_s);
        row(u"unicode IN HEXRANGE(43, 41)"_s, {});

        row(u"index > 1"_s, u"a.alt germandbls grin"_s);
        row(u"index < 2.5"_s, u"A Aacute"_s);
        row(u"index == 10"_s, u"germandbls"_s);
        row(u"index == \"10\""_s, u"germandbls"_s);
        row(u"index contains 00"_s, u"grin"_s);
        row(u"index != 10"_s, u"A Aacute a.alt grin"_s);
        row(u"index > -1 AND index < 1"_s, u"A"_s);
        row(u"unicode > 40"_s, u"A short"_s);
        row(u"altNames != 1"_s, {});

        row(u"name == \"A\" || name == \"grin\" && index > 5"_s, u"A grin"_s);
        row(u"(name == \"A\" || name == \"grin\") && index > 5"_s, u"grin"_s);
        row(u"!!name==\"A\""_s, u"A"_s);
        row(u" \n(\tname=='A' ) "_s, u"A"_s);
    })
    {
        Error error;
        const std::optional<Predicate> predicate = Predicate::parse(text, &error);
        QVERIFY2(predicate, qUtf8Printable(error.text()));
        QCOMPARE(predicate->predicateFormat(), text);
        QCOMPARE(matches(*predicate), expected);
    }

    // character: where, from 1; 0: at the end
    TABLE(errors, (const QString &text, int code, int character), {
        const auto add = [&](int character, std::initializer_list<const char *> texts,
                             int code = Predicate::SyntaxError) {
            for (const char *text : texts)
                row(text, code, character);
        };
        add(0,
            {"", "   ", "name", "name contains", "name == \"a\" &&", "(name == \"a\"", "!",
             "name IN {\"a\", \"b\"", "unicode IN HEXRANGE(0041, 0042"});
        add(1, {"contains \"a\"", "\"a\" == name", "&& name == \"a\""});
        add(2, {"()"});
        add(6, {"name \"a\""});
        add(8, {"name < \"a\""});
        add(9, {"name == %@", "index > 12abc", "name IN \"a\""});
        add(12, {"name == \"a\")"});
        add(13, {"name == \"a\" name == \"b\"", "name == \"a\" & name == \"b\"", "name == \"a\" # b"});
        add(14,
            {"name MATCHES \"a)|(b\"", "name MATCHES \"[\"", "name MATCHES \"*\"", "name MATCHES \"\\uD800\"",
             "name MATCHES \"(*UTF)a\""},
            Predicate::InvalidPattern);
        add(14,
            {"name contains[x] \"a\"", "name contains[] \"a\"", "name contains[c \"a\"",
             "name IN {\"a\" \"b\"}"});
        add(15,
            {"name contains alt", "name contains \"alt", "name contains \"alt\\\"", "name contains “a”",
             "unicode IN[c] HEXRANGE(0041, 0042)"});
        add(16, {"name contains \"\\u12\""});
        add(17, {"name contains \"a\\d\"", "name contains \"😀\\x\""});
        add(18, {"name contains \"a\"b\""});
        add(25, {"unicode IN HEXRANGE(0041)"});
        add(27, {"unicode IN HEXRANGE(0041, 00GG)", "unicode IN HEXRANGE(0041, 123456789)"});
    })
    {

        Error error;
        QVERIFY(!Predicate::parse(text, &error));
        QCOMPARE(error.domain, Predicate::errorDomain());
        QCOMPARE(error.code, code);
        static const QRegularExpression place(u"^At (?:character (\\d+)|the end): \\S"_s);
        const QRegularExpressionMatch match = place.match(error.failureReason);
        QVERIFY2(match.hasMatch(), qUtf8Printable(error.failureReason));
        QCOMPARE(match.captured(1).toInt(), character);
        QVERIFY(!Predicate::parse(text)); // nobody needs to ask why
    }

    TABLE(argumentsFillTheirPlaces,
          (const QString &format, const QVariantList &arguments, const QString &text), {
              row("text", "name contains[cd] %@", QVariantList {u"a\"b\\"_s},
                  "name contains[cd] \"a\\\"b\\\\\"");
              row("three texts", "(name contains %@) || (unicode contains[cd] %@) || (a==%@)",
                  QVariantList {u"1"_s, u"2"_s, u"3"_s},
                  "(name contains \"1\") || (unicode contains[cd] \"2\") || (a==\"3\")");
              row("place in quotation marks", "a == \"%@\" || a == '%@\\'%@' || a == %@",
                  QVariantList {u"x"_s}, "a == \"%@\" || a == '%@\\'%@' || a == \"x\"");
              row("key", "%K == %@", QVariantList {u"subCategory"_s, u"x"_s}, "subCategory == \"x\"");
              row("numbers", "a > %@ && b == %@ && c < %@ && d < %@", QVariantList {-3, 2.5, 1e15, 1e19},
                  "a > -3 && b == 2.5 && c < 1000000000000000 && d < 10000000000000000000");
              row("list of texts", "a IN %@", QVariantList {QStringList {u"x"_s, u"\""_s}},
                  "a IN {\"x\", \"\\\"\"}");
              row("mixed list", "a IN %@", QVariantList {QVariantList {u"x"_s, 2}}, "a IN {\"x\", 2}");
              row("range", "unicode IN %@", QVariantList {QVariant::fromValue(HexRange {0, 0xFFFFFFF})},
                  "unicode IN HEXRANGE(0000, FFFFFFF)");
              row("control characters", "a == %@", QVariantList {u"\n\r\t\u0001\u0085"_s},
                  "a == \"\\n\\r\\t\\u0001\\u0085\"");
              row("lone surrogate", "a == %@", QVariantList {QString(QChar(0xD83D)) + u'x'},
                  "a == \"\\uD83Dx\"");
          })
    {
        Error error;
        const std::optional<Predicate> predicate = Predicate::withFormat(format, arguments, &error);
        QVERIFY2(predicate, qUtf8Printable(error.text()));
        QCOMPARE(predicate->predicateFormat(), text);
    }

    TABLE(wrongArguments, (const QString &format, const QVariantList &arguments), {
        row("too few", "a == %@ || a == %@", QVariantList {u"x"_s});
        row("too many", "a == %@", QVariantList {u"x"_s, u"y"_s});
        row("nothing", "a == %@", QVariantList {QVariant()});
        row("map", "a == %@", QVariantList {QVariantMap {}});
        row("list in a list", "a IN %@", QVariantList {QVariantList {QVariantList {}}});
        row("no number", "a > %@", QVariantList {std::numeric_limits<double>::quiet_NaN()});
        row("infinite", "a > %@", QVariantList {std::numeric_limits<double>::infinity()});
        row("key: a test", "%K == \"x\"", QVariantList {u"a == \"y\" || b"_s});
        row("key: a keyword", "%K == \"x\"", QVariantList {u"contains"_s});
        row("key: empty", "%K == \"x\"", QVariantList {u""_s});
        row("key: a blank before", "%K == \"x\"", QVariantList {u" a"_s});
    })
    {
        Error error;
        QVERIFY(!Predicate::withFormat(format, arguments, &error));
        QCOMPARE(error.domain, Predicate::errorDomain());
        QCOMPARE(error.code, int(Predicate::WrongArguments));
        QVERIFY(!error.failureReason.isEmpty());
    }

    void anyTextSurvivesAsArgument()
    {
        QRandomGenerator random(4711);
        for (int round = 0; round < rounds(3000); ++round) {
            const QString text = troublesomeText(random), other = troublesomeText(random);
            const auto exact =
                Predicate::withFormat(u"name == %@ && name IN %@"_s, {text, QStringList {text}});
            QVERIFY2(exact, qUtf8Printable(text));
            QCOMPARE(evaluate(*exact, named(text)), Verdict::Yes);
            QCOMPARE(evaluate(*exact, named(other)) == Verdict::Yes, text == other);

            // The printable form means the same after it was kept as UTF-8.
            const QString kept = QString::fromUtf8(exact->predicateFormat().toUtf8());
            QCOMPARE(kept, exact->predicateFormat());
            const auto again = Predicate::parse(kept);
            QVERIFY(again);
            QCOMPARE(evaluate(*again, named(text)), Verdict::Yes);
        }
    }

    void randomPredicatesFollowTheModel()
    {
        QRandomGenerator random(99);
        for (int round = 0; round < rounds(2000); ++round) {
            const RandomPredicate expected = randomPredicate(random, 4);
            Error error;
            const auto predicate = Predicate::parse(expected.text, &error);
            QVERIFY2(predicate, qUtf8Printable(expected.text + u'\n' + error.text()));
            for (const QString &name : {u"a"_s, u"B"_s, u"ab"_s, u"BA"_s, u"AbA"_s, u"x"_s}) {
                if ((evaluate(*predicate, named(name)) == Verdict::Yes) != expected.isTrueOf(name))
                    QFAIL(qUtf8Printable(name + u": "_s + expected.text));
            }
        }
    }

    TABLE(expressionsMatchWholeValues,
          (const QString &pattern, const QString &value, bool expected, const QString &option), {
              row("whole", "a.c", "abc", true, {});
              row("only a part", "b", "abc", false, {});
              row("only the start", "ab", "abc", false, {});
              row("line end after it", "abc", "abc\n", false, {});
              row("the longer alternative", "a|ab", "ab", true, {});
              row("alternatives are anchored, too", "a|b", "ab", false, {});
              row("case counts", "ABC", "abc", false, {});
              row("[c]", "ABC", "abc", true, "[c]");
              row("[d]", "é+", "ee\u0301è", true, "[d]");
              row("[d] keeps case", "É", "e", false, "[d]");
              row("own anchors", "^abc$", "abc", true, {});
              row("open comment", "(?x) a b c # letters", "abc", true, {});
              row("open literal", "\\Qa.c", "a.c", true, {});
              row("open literal is literal", "\\Qa.c", "abc", false, {});
              row("match ended early", "a(*ACCEPT)", "ab", false, {});
              row("start moved", "a\\Kb", "ab", true, {});
              row("one astral character", ".", "😀", true, {});
              row("letters of every script", "\\w+", "ñß字", true, {});
              row("lone surrogate in the value", "a.b", u"a"_s + QChar(0xD800) + u"b"_s, true, {});
              row("100,000 characters", "(?:ab)*", u"ab"_s.repeated(50000), true, {});
          })
    {
        Error error;
        const auto predicate =
            Predicate::withFormat(u"name MATCHES"_s + option + u" %@"_s, {pattern}, &error);
        QVERIFY2(predicate, qUtf8Printable(error.text()));
        QCOMPARE(evaluate(*predicate, named(value)), expected ? Verdict::Yes : Verdict::No);
    }

    void catastrophicExpressionGivesUp()
    {
        const Record hostile = named(u"a"_s.repeated(60) + u"b!"_s);
        for (const QString &text : {u"name MATCHES \"(a+)+$\""_s, u"NOT name MATCHES \"(a+)+$\""_s,
                                    u"name MATCHES \"(a+)+$\" || TRUEPREDICATE"_s,
                                    u"name contains \"a\" && (name MATCHES \"(a|a)*b\")"_s}) {
            const auto predicate = Predicate::parse(text);
            QVERIFY(predicate);
            Error error;
            QCOMPARE(evaluate(*predicate, hostile, &error), Verdict::GaveUp);
            QCOMPARE(error.domain, Predicate::errorDomain());
            QCOMPARE(error.code, int(Predicate::PatternGaveUp));
            QVERIFY2(error.failureReason.contains(u"(a"_s) && error.failureReason.contains(u"aaa"_s),
                     qUtf8Printable(error.failureReason));
            QCOMPARE(evaluate(*predicate, named(u"aaaa"_s)),
                     text.contains(u"!"_s)                                     ? Verdict::Yes
                         : text.startsWith(u"NOT"_s) || text.contains(u"*b"_s) ? Verdict::No
                                                                               : Verdict::Yes);
        }
        // What is decided without the expression needs no answer from it.
        QCOMPARE(evaluate(*Predicate::parse(u"name contains \"!\" || name MATCHES \"(a+)+$\""_s), hostile),
                 Verdict::Yes);
    }

    void hexRangeIsItsList()
    {
        const HexRange range {0x41, 0x10005};
        QStringList list;
        for (quint32 value = range.first; value <= range.last; ++value)
            list += u"%1"_s.arg(value, 4, 16, QLatin1Char('0')).toUpper();
        const auto tested = Predicate::withFormat(u"name IN %@"_s, {QVariant::fromValue(range)});
        const auto listed = Predicate::withFormat(u"name IN %@"_s, {list});
        QVERIFY(tested && listed);

        QRandomGenerator random(1);
        for (int round = 0; round < rounds(20000); ++round) {
            QString text = QString::number(random.bounded(0x12000), 16);
            if (random.bounded(4))
                text = text.toUpper();
            text = text.rightJustified(random.bounded(3, 7), u'0');
            if (random.bounded(10) == 0)
                text.insert(random.bounded(text.size() + 1), u" xG-é"_s[random.bounded(5)]);
            if (evaluate(*tested, named(text)) != evaluate(*listed, named(text)))
                QFAIL(qUtf8Printable(text));
        }
        const auto widest = Predicate::withFormat(u"name IN %@"_s, {QVariant::fromValue(HexRange {0, ~0u})});
        for (const QString &text : {u"0000"_s, u"FFFFFFFF"_s, u"80000000"_s})
            QCOMPARE(evaluate(*widest, named(text)), Verdict::Yes);
        for (const QString &text : {u"100000000"_s, u"0"_s, u"00000"_s, u"FFFFFFFFFFFFFFFFFFFF"_s})
            QCOMPARE(evaluate(*widest, named(text)), Verdict::No);
    }

    void hugeTextsAreBounded()
    {
        const auto codeOf = [](const QString &text) {
            Error error;
            return Predicate::parse(text, &error) ? 0 : error.code;
        };
        const QString test = u"name == \"A\""_s;
        const auto nested = [&test](int depth) {
            return u"("_s.repeated(depth) + test + u")"_s.repeated(depth);
        };

        QCOMPARE(codeOf(nested(Predicate::kMaxDepth)), 0);
        QCOMPARE(codeOf(nested(Predicate::kMaxDepth + 1)), int(Predicate::TooDeep));
        QCOMPARE(codeOf(nested(100000)), int(Predicate::TooDeep));
        QCOMPARE(codeOf(u"("_s.repeated(100000)), int(Predicate::TooDeep));
        QCOMPARE(codeOf(u"!"_s.repeated(100000) + test), int(Predicate::TooDeep));
        QCOMPARE(codeOf(u"!("_s.repeated(100000)), int(Predicate::TooDeep));
        QCOMPARE(codeOf(u")"_s.repeated(100000)), int(Predicate::SyntaxError));
        QCOMPARE(codeOf(u"a"_s.repeated(Predicate::kMaxLength + 1)), int(Predicate::TooLong));
        QCOMPARE(codeOf(u"name == \""_s + u"a"_s.repeated(Predicate::kMaxLength - 10) + u'"'), 0);

        // Long is not deep.
        const auto flat = Predicate::parse((test + u"||(name==\"B\")&&"_s).repeated(30000) + test);
        QVERIFY(flat);
        QCOMPARE(evaluate(*flat, named(u"A"_s)), Verdict::Yes);
        QCOMPARE(evaluate(*flat, named(u"B"_s)), Verdict::No);
    }

    void allJoinsPredicates()
    {
        const Predicate one = *Predicate::parse(u"name contains \"a\" || name == \"A\""_s);
        const Predicate other = *Predicate::parse(u"unicode contains \"0\""_s);
        const Predicate both = Predicate::all({one, other});
        QCOMPARE(both.predicateFormat(),
                 u"(name contains \"a\" || name == \"A\") && (unicode contains \"0\")"_s);
        QCOMPARE(matches(both), u"A Aacute germandbls small"_s);
        QCOMPARE(matches(*Predicate::parse(both.predicateFormat())), matches(both));
        QCOMPARE(Predicate::all({one}).predicateFormat(), one.predicateFormat());
        QCOMPARE(matches(Predicate::all({})), matches(Predicate()));
        QCOMPARE(Predicate::all({}).predicateFormat(), u"TRUEPREDICATE"_s);
    }
};

RUNEBOOK_TEST_MAIN(PredicateTest)
#include "PredicateTest.moc"
