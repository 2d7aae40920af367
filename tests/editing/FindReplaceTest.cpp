// What find and replace does to records, without its window.
#include "editing/FindReplace.h"
#include "document/VXDocument.h"
#include "tests/Rounds.h"
#include "tests/TestMain.h"

#include <QElapsedTimer>
#include <QRandomGenerator>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

/// A record with one field filled, read from a line as a file has it or set by hand. "-": no value.
InfoPtr recordWith(const QString &key, const QString &value, bool fromFile)
{
    if (fromFile) {
        const QString attribute = value == "-"_L1 ? QString() : u"%1=\"%2\" "_s.arg(key, value);
        return VXGlyphInfo::initWithLineXMLFileVersion("<glyph "_L1 + attribute + "/>"_L1);
    }
    const InfoPtr info = VXGlyphInfo::init();
    info->setValueForKey(value == "-"_L1 ? QVariant() : QVariant(value), key);
    return info;
}

/// The field of all records: "one|two|-".
QString textOf(const InfoList &infos, const QString &key)
{
    QStringList values;
    for (const InfoPtr &info : infos) {
        const FieldValue &value = info->stored(*fieldForKey(key));
        values << (value.isAbsent() ? u"-"_s : value.toString(info->sourceData()));
    }
    return values.join(u'|');
}

InfoList recordsWith(const QString &key, const QString &values, bool fromFile)
{
    InfoList infos;
    for (const QString &value : values.split(u'|'))
        infos.push_back(recordWith(key, value, fromFile));
    return infos;
}

InfoList named(const QStringList &names)
{
    InfoList infos;
    for (const QString &name : names) {
        infos.push_back(VXGlyphInfo::init());
        infos.back()->setName(name);
    }
    return infos;
}

} // namespace

class FindReplaceTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void replaces_data();
    void replaces();
    void replacesWithOptions_data();
    void replacesWithOptions();
    void comesToTheSameInSlices();
    void stopsAtAnEndlessPattern();
    void previewTellsWhatApplyDoes();
    void previewShowsPlacesInLists();
    void countsProblemsOfNames_data();
    void countsProblemsOfNames();
    void isOneStepThatUndoTakesBack();
    void namesAreFoundAfterManyChanged();
    void setsAbsentValuesOnceMore();
    void refusedMarksStay();
    void neverTearsCharacters();
    void agreesWithPlainStrings();
};

void FindReplaceTest::replaces_data()
{
    QTest::addColumn<int>("tag");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("find");
    QTest::addColumn<QString>("replacement");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<int>("records");
    QTest::addColumn<int>("occurrences");

    const auto row = [](const char *what, int tag, const QString &key, const QString &find,
                        const QString &replacement, const QString &before, const QString &after, int records,
                        int occurrences) {
        QTest::newRow(what) << tag << key << find << replacement << before << after << records << occurrences;
    };
    row("names", 2, u"name"_s, u"a"_s, u"b"_s, u"a.sc|cab"_s, u"b.sc|cbb"_s, 2, 2);
    row("production", 3, u"production"_s, u"uni"_s, u"u"_s, u"uni0041|x"_s, u"u0041|x"_s, 1, 1);
    row("alternate names", 4, u"altNames"_s, u"x"_s, u"z"_s, u"x.alt, y|y"_s, u"z.alt, y|y"_s, 1, 1);
    row("a separator is no text", 4, u"altNames"_s, u", "_s, u"-"_s, u"x, y"_s, u"x, y"_s, 0, 0);
    row("nothing lies across names", 4, u"altNames"_s, u" y"_s, u"-"_s, u"x, y|x, a y"_s, u"x, y|x, a-"_s, 1,
        1);
    row("anchors are one text", 5, u"anchors"_s, u", "_s, u"-"_s, u"top, bottom"_s, u"top-bottom"_s, 1, 1);
    row("sort names", 6, u"sortName"_s, u"1"_s, u""_s, u"a101|b"_s, u"a0|b"_s, 1, 2);
    row("description", 7, u"desc"_s, u"é"_s, u"E"_s, u"éa é|e"_s, u"Ea E|e"_s, 1, 2);
    row("decomposition", 8, u"decompose"_s, u"acute"_s, u"grave"_s, u"a, acute"_s, u"a, grave"_s, 1, 1);
    row("accents are the marks", 9, u"marks"_s, u"comb"_s, u""_s, u"acutecomb"_s, u"acute"_s, 1, 1);
    row("tag 1 is no field", 1, u"name"_s, u"a"_s, u"b"_s, u"a"_s, u"a"_s, 0, 0);
    row("tag 10 is no field", 10, u"name"_s, u"a"_s, u"b"_s, u"a"_s, u"a"_s, 0, 0);
    row("case counts", 2, u"name"_s, u"A"_s, u"b"_s, u"a|A"_s, u"a|b"_s, 1, 1);
    row("accents count", 7, u"desc"_s, u"e"_s, u"b"_s, u"é|e"_s, u"é|b"_s, 1, 1);
    row("no pattern", 2, u"name"_s, u"."_s, u"x"_s, u"a.b|ab"_s, u"axb|ab"_s, 1, 1);
    row("nothing is found twice", 2, u"name"_s, u"aa"_s, u"a"_s, u"aaaa|aaa"_s, u"aa|aa"_s, 2, 3);
    row("nor in what was put in", 2, u"name"_s, u"a"_s, u"aa"_s, u"aba"_s, u"aabaa"_s, 1, 2);
    row("nothing to find", 2, u"name"_s, u""_s, u"x"_s, u"a|b"_s, u"a|b"_s, 0, 0);
    row("both empty", 2, u"name"_s, u""_s, u""_s, u"a"_s, u"a"_s, 0, 0);
    row("by itself", 2, u"name"_s, u"a"_s, u"a"_s, u"aa"_s, u"aa"_s, 0, 0);
    row("a whole text goes", 6, u"sortName"_s, u"abc"_s, u""_s, u"abc|abcd"_s, u"-|d"_s, 2, 2);
    row("alternate names go", 4, u"altNames"_s, u"x"_s, u""_s, u"x, x|x, y"_s, u"-|, y"_s, 2, 3);
    row("no comment begins", 7, u"desc"_s, u"a"_s, u"<!--"_s, u"a|ba|c"_s, u"a|ba|c"_s, 0, 0);
    row("nor ends", 4, u"altNames"_s, u"x"_s, u""_s, u"y, -x->|x"_s, u"y, -x->|-"_s, 1, 1);
    row("a mark that stood there", 7, u"desc"_s, u"a"_s, u"b"_s, u"a --> a|a"_s, u"a --> a|b"_s, 1, 1);
    row("no value stays none", 6, u"sortName"_s, u"a"_s, u"b"_s, u"-|a"_s, u"-|b"_s, 1, 1);
    row("beyond 16 bits", 7, u"desc"_s, u"😀"_s, u"x"_s, u"a😀😁"_s, u"ax😁"_s, 1, 1);
    row("percent signs are text", 7, u"desc"_s, u"%1"_s, u"%2"_s, u"%1%1"_s, u"%2%2"_s, 1, 2);
}

void FindReplaceTest::replaces()
{
    QFETCH(int, tag);
    QFETCH(QString, key);
    QFETCH(QString, find);
    QFETCH(QString, replacement);
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(int, records);
    QFETCH(int, occurrences);
    for (const bool fromFile : {true, false}) {
        const InfoList infos = recordsWith(key, before, fromFile);
        const ReplaceSummary preview = FindReplace(find, replacement, tag).preview(infos, 9);
        const ReplaceSummary summary = FindReplace(find, replacement, tag).apply(infos);
        QCOMPARE(preview.records, summary.records);
        QCOMPARE(preview.leftOut, summary.leftOut);
        QCOMPARE(summary.leftOut.sentence.contains(u"comment"), summary.leftOut.records > 0);
        const bool marks = replacement.contains(u"--") || before.contains(u"->");
        QCOMPARE(summary.leftOut.records > 0, marks);
        QCOMPARE(textOf(infos, key), after);
        QCOMPARE(summary.records, records);
        QCOMPARE(summary.occurrences, occurrences);
    }
}

void FindReplaceTest::replacesWithOptions_data()
{
    QTest::addColumn<QString>("options"); // c: either case, w: whole value, r: regular expression
    QTest::addColumn<QString>("find");
    QTest::addColumn<QString>("replacement");
    QTest::addColumn<QString>("values");
    QTest::addColumn<QString>("result");
    QTest::addColumn<int>("records");
    QTest::newRow("usual") << u""_s << u"A."_s << u"\\1"_s << u"A.a.|Ab"_s << u"\\1a.|Ab"_s << 1;
    QTest::newRow("case") << u"c"_s << u"aÄ"_s << u"x"_s << u"AäaÄ|Aa"_s << u"xx|Aa"_s << 1;
    QTest::newRow("case, the same") << u"c"_s << u"a"_s << u"a"_s << u"aA|a"_s << u"aa|a"_s << 1;
    QTest::newRow("no pattern") << u"c"_s << u"a.c"_s << u"$1"_s << u"abc|A.C"_s << u"abc|$1"_s << 1;
    QTest::newRow("whole") << u"w"_s << u"top"_s << u"x"_s << u"top|top, top|Top"_s << u"x|top, top|Top"_s << 1;
    QTest::newRow("whole, case") << u"wc"_s << u"top"_s << u"x"_s << u"top|Top|top_"_s << u"x|x|top_"_s << 2;
    QTest::newRow("pattern") << u"r"_s << u"[aeiou]"_s << u"_"_s << u"abe|AB"_s << u"_b_|AB"_s << 1;
    QTest::newRow("groups") << u"r"_s << u"(\\w+)-(\\w+)"_s << u"\\2.$1"_s << u"a-b, c-d"_s << u"b.a, d.c"_s << 1;
    QTest::newRow("whole match, signs") << u"r"_s << u"b"_s << u"\\\\$$\\0$x"_s << u"abc"_s << u"a\\$b$xc"_s << 1;
    QTest::newRow("empty match") << u"r"_s << u"$"_s << u".sc"_s << u"a|b"_s << u"a.sc|b.sc"_s << 2;
    QTest::newRow("whole pattern") << u"rw"_s << u"a|ab"_s << u"x"_s << u"ab|abc"_s << u"x|abc"_s << 1;
    QTest::newRow("outside the plane") << u"r"_s << u"."_s << u"<\\0>"_s << u"😀"_s << u"<😀>"_s << 1;
    QTest::newRow("not valid") << u"r"_s << u"(a"_s << u"x"_s << u"(a|a"_s << u"(a|a"_s << 0;
    QTest::newRow("nothing to find") << u"r"_s << u""_s << u"x"_s << u"a"_s << u"a"_s << 0;
}

void FindReplaceTest::replacesWithOptions()
{
    QFETCH(QString, options);
    QFETCH(QString, find);
    QFETCH(QString, replacement);
    QFETCH(QString, values);
    QFETCH(QString, result);
    QFETCH(int, records);
    const ReplaceOptions how {!options.contains(u'c'), options.contains(u'w'), options.contains(u'r')};
    for (const bool fromFile : {true, false}) {
        const FindReplace replace(find, replacement, FindReplace::Anchors, how);
        const InfoList infos = recordsWith(u"anchors"_s, values, fromFile);
        const ReplaceSummary preview = replace.preview(infos, 9);
        QCOMPARE(preview.records, records);
        for (const ReplacePreview &each : preview.first) {
            QVERIFY(each.before != each.after);
            for (const UnitRange &place : each.places.inserted)
                QVERIFY(place.location + place.length <= each.after.size());
        }
        QCOMPARE(replace.apply(infos).records, records);
        QCOMPARE(textOf(infos, u"anchors"_s), result);
        QCOMPARE(replace.problem().isNull(), find != u"(a"_s);
    }
}

void FindReplaceTest::comesToTheSameInSlices()
{
    const auto make = [] {
        QStringList names;
        for (int i = 0; i < 3'000; ++i)
            names << u"n%1"_s.arg(i % 1'700);
        return named(names);
    };
    const FindReplace replace(u"9"_s, u"."_s, FindReplace::Name);
    InfoList infos = make();
    FindReplace::Progress preview;
    int slices = 1;
    while (!replace.previewMore(infos, 5, QDeadlineTimer(0), preview))
        ++slices;
    QVERIFY(slices > 10);
    const ReplaceSummary whole = replace.preview(infos, 5);
    QCOMPARE(preview.summary.records, whole.records);
    QCOMPARE(preview.summary.occurrences, whole.occurrences);
    QCOMPARE(preview.summary.first.size(), 5u);
    FindReplace::NameScan names;
    while (!replace.nameProblemsMore(infos, infos, QDeadlineTimer(0), names)) { }
    QCOMPARE(names.problems, replace.nameProblems(infos, infos));
    QVERIFY(names.problems.repeated > 0);
    FindReplace::Progress applied;
    while (!replace.applyMore(infos, QDeadlineTimer(0), applied)) { }
    QCOMPARE(applied.summary.records, whole.records);
    const InfoList atOnce = make();
    replace.apply(atOnce);
    QCOMPARE(textOf(infos, u"name"_s), textOf(atOnce, u"name"_s));
}

void FindReplaceTest::stopsAtAnEndlessPattern()
{
    const InfoList infos = recordsWith(u"desc"_s, QStringList(200, QString(60, u'a') + u"b!"_s).join(u'|'), false);
    const FindReplace replace(u"^(a+)+$"_s, u"x"_s, FindReplace::Desc, {true, false, true});
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(replace.preview(infos, 9).records, 0);
    QVERIFY(!replace.problem().isNull());
    const qint64 first = clock.restart();
    replace.apply(infos);
    QVERIFY2(clock.elapsed() <= first + 500, "it tried again");
}

void FindReplaceTest::previewTellsWhatApplyDoes()
{
    const InfoList infos = named({u"a.sc"_s, u"b"_s, u"cab"_s, u"aa"_s});
    const FindReplace replace(u"a"_s, u"xy"_s, FindReplace::Name);
    const ReplaceSummary preview = replace.preview(infos, 2);
    QCOMPARE(textOf(infos, u"name"_s), u"a.sc|b|cab|aa"_s);
    QCOMPARE(preview.records, 3);
    QCOMPARE(preview.occurrences, 4);
    QCOMPARE(preview.first.size(), 2U);
    QCOMPARE(preview.first[1].name, u"cab"_s);
    QCOMPARE(preview.first[1].before, u"cab"_s);
    QCOMPARE(preview.first[1].after, u"cxyb"_s);
    replace.apply(infos);
    QCOMPARE(infos[2]->name(), preview.first[1].after);
}

void FindReplaceTest::previewShowsPlacesInLists()
{
    const InfoList infos = recordsWith(u"altNames"_s, u"ab, xa, y"_s, true);
    const ReplaceSummary summary = FindReplace(u"a"_s, u"123"_s, FindReplace::AltNames).preview(infos, 1);
    const ReplacePreview &shown = summary.first.at(0);
    const auto marked = [](const QString &text, const std::vector<UnitRange> &ranges) {
        QString result = text;
        for (auto range = ranges.rbegin(); range != ranges.rend(); ++range) {
            result.insert(range->location + range->length, u']');
            result.insert(range->location, u'[');
        }
        return result;
    };
    QCOMPARE(marked(shown.before, shown.places.found), u"[a]b, x[a], y"_s);
    QCOMPARE(marked(shown.after, shown.places.inserted), u"[123]b, x[123], y"_s);
}

void FindReplaceTest::countsProblemsOfNames_data()
{
    QTest::addColumn<int>("tag");
    QTest::addColumn<QString>("find");
    QTest::addColumn<QString>("replacement");
    QTest::addColumn<QStringList>("selected");
    QTest::addColumn<QStringList>("others");
    QTest::addColumn<NameProblems>("problems");

    const QStringList none;
    QTest::newRow("a name of another")
        << 2 << u"x"_s << u"y"_s << QStringList {u"ax"_s} << QStringList {u"ay"_s} << NameProblems {0, 1};
    QTest::newRow("two become one") << 2 << u".alt"_s << u""_s << QStringList {u"a.alt"_s, u"a"_s} << none
                                    << NameProblems {0, 1};
    QTest::newRow("two that change") << 2 << u"x"_s << u""_s << QStringList {u"ax"_s, u"xa"_s} << none
                                     << NameProblems {0, 2};
    QTest::newRow("all move on") << 2 << u"a"_s << u"aa"_s << QStringList {u"a"_s, u"aa"_s} << none
                                 << NameProblems {0, 0};
    QTest::newRow("a blank") << 2 << u"x"_s << u" "_s << QStringList {u"axa"_s, u"b"_s} << none
                             << NameProblems {1, 0};
    QTest::newRow("a digit first") << 2 << u"one"_s << u"1"_s << QStringList {u"one.lf"_s, u"a.one"_s} << none
                                   << NameProblems {1, 0};
    QTest::newRow("empty") << 2 << u"a"_s << u""_s << QStringList {u"a"_s} << none << NameProblems {1, 0};
    QTest::newRow("bad before, unchanged")
        << 2 << u"x"_s << u"y"_s << QStringList {u"a b"_s, u"c"_s, u"c"_s} << none << NameProblems {0, 0};
    QTest::newRow("other fields have no rules")
        << 3 << u"x"_s << u" "_s << QStringList {u"x"_s} << none << NameProblems {0, 0};
}

void FindReplaceTest::countsProblemsOfNames()
{
    QFETCH(int, tag);
    QFETCH(QString, find);
    QFETCH(QString, replacement);
    QFETCH(QStringList, selected);
    QFETCH(QStringList, others);
    QFETCH(NameProblems, problems);
    const InfoList infos = named(selected);
    for (const InfoPtr &info : infos)
        info->setProduction(info->name());
    InfoList all = named(others);
    all.insert(all.begin(), infos.begin(), infos.end());
    const FindReplace replace(find, replacement, tag);
    QCOMPARE(replace.nameProblems(infos, all), problems);
}

void FindReplaceTest::isOneStepThatUndoTakesBack()
{
    VXDocument document;
    document.setInfos(named({u"a1"_s, u"b"_s, u"a2"_s}));
    {
        const UndoGroup group(document.undoManager(), u"Replace"_s);
        FindReplace(u"a"_s, u"c"_s, FindReplace::Name).apply(document.infos());
    }
    QCOMPARE(textOf(document.infos(), u"name"_s), u"c1|b|c2"_s);
    QCOMPARE(document.undoManager()->stack()->count(), 1);
    document.undoManager()->undo();
    QCOMPARE(textOf(document.infos(), u"name"_s), u"a1|b|a2"_s);
    document.undoManager()->redo();
    QCOMPARE(textOf(document.infos(), u"name"_s), u"c1|b|c2"_s);
}

void FindReplaceTest::namesAreFoundAfterManyChanged()
{
    constexpr int kRecords = 6000;
    QStringList names;
    for (int i = 0; i < kRecords; ++i)
        names << u"a%1"_s.arg(i);
    VXDocument document;
    document.setInfos(named(names));
    const auto found = [&document](QChar first) {
        int count = 0;
        for (int i = 0; i < kRecords; ++i)
            count += document.infoForName(first + QString::number(i)) == document.infos()[std::size_t(i)];
        return count;
    };
    QCOMPARE(found(u'a'), kRecords);
    {
        const UndoGroup group(document.undoManager());
        FindReplace(u"a"_s, u"b"_s, FindReplace::Name).apply(document.infos());
    }
    QCOMPARE(found(u'b'), kRecords);
    QCOMPARE(found(u'a'), 0);
    // The changes are not announced yet, and looking up has made the index again.
    document.undoManager()->undo();
    QCOMPARE(found(u'a'), kRecords);
    QCOMPARE(found(u'b'), 0);
    document.flushChanges();
    document.undoManager()->redo();
    QCOMPARE(found(u'b'), kRecords);
}

void FindReplaceTest::setsAbsentValuesOnceMore()
{
    const auto steps = [](int tag) {
        VXDocument document;
        document.setInfos(named({u"a"_s}));
        {
            const UndoGroup group(document.undoManager());
            FindReplace(u"x"_s, u"y"_s, tag).apply(document.infos());
        }
        return document.undoManager()->stack()->count();
    };
    QCOMPARE(steps(FindReplace::Name), 0);
    QCOMPARE(steps(FindReplace::SortName), 1);
    QCOMPARE(steps(FindReplace::AltNames), 1);
    QCOMPARE(steps(FindReplace::Desc), 0); // whose setter takes no notice of nothing for nothing
}

void FindReplaceTest::refusedMarksStay()
{
    QString refused =
        u"fathatan-ar, dammatan-ar, fatha-ar, damma-ar, shadda-ar, sukun-ar, madda-ar, hamzaabove-ar, noonghunna-ar, alefabove-ar, kasratan-ar, kasra-ar, hamzabelow-ar, alefbelow-ar"_s;
    const QString nearly = refused.replace(u"sukun"_s, u"SUKUN"_s);
    const InfoPtr info = VXGlyphInfo::init();
    info->setMarks(nearly);
    const ReplaceSummary summary = FindReplace(u"SUKUN"_s, u"sukun"_s, FindReplace::Accents).apply({info});
    QCOMPARE(info->marks(), nearly);
    QCOMPARE(summary.records, 0);
}

void FindReplaceTest::neverTearsCharacters()
{
    const QString pair = u"😀"_s;
    const QString high = pair.first(1);
    const InfoPtr info = VXGlyphInfo::init();
    info->setDesc(high + u"a"_s + pair);
    FindReplace(high, u"x"_s, FindReplace::Desc).apply({info});
    QCOMPARE(info->desc(), u"xa😀"_s);
    FindReplace(pair.last(1), u"x"_s, FindReplace::Desc).apply({info});
    QCOMPARE(info->desc(), u"xa😀"_s);
}

void FindReplaceTest::agreesWithPlainStrings()
{
    QRandomGenerator random(7);
    const QStringList letters {u"a"_s, u"b"_s, u"é"_s, u"😀"_s, u", "_s, u" "_s};
    const auto word = [&](int longest) {
        QString text;
        for (int i = random.bounded(longest + 1); i > 0; --i)
            text += letters.at(random.bounded(int(letters.size())));
        return text;
    };
    for (int round = 0; round < rounds(3000); ++round) {
        const bool isList = random.bounded(2);
        const QString key = isList ? u"altNames"_s : u"desc"_s;
        const QString before = word(8);
        const QString find = word(2);
        const QString replacement = word(2);
        const InfoPtr info = recordWith(key, before, random.bounded(2));
        QStringList expected = isList ? info->altNames() : QStringList {info->desc()};
        const QStringList old = expected;
        if (!find.isEmpty())
            expected.replaceInStrings(find, replacement);
        const FindReplace replace(find, replacement, isList ? FindReplace::AltNames : FindReplace::Desc);
        const ReplaceSummary preview = replace.preview({info}, 1);
        const ReplaceSummary applied = replace.apply({info});
        const bool isEmptied = expected != old && expected.join(QString()).isEmpty();
        QCOMPARE(isList ? info->altNames() : QStringList {info->desc()},
                 isList && isEmptied ? QStringList() : expected);
        QVERIFY(!isEmptied || info->stored(*fieldForKey(key)).isAbsent());
        QCOMPARE(applied.records, old == expected ? 0 : 1);
        QCOMPARE(preview.records, applied.records);
        QCOMPARE(preview.occurrences, applied.occurrences);
        if (preview.records)
            QCOMPARE(preview.first.front().after, expected.join(u", "_s));
    }
}

RUNEBOOK_TEST_MAIN(FindReplaceTest)
#include "FindReplaceTest.moc"
