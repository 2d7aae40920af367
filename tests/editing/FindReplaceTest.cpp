// What find and replace does to records, without its window.
#include "editing/replace/FindReplace.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/editing/Records.h"

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
    for (const QString &name : names)
        infos.push_back(infoNamed(name));
    return infos;
}

} // namespace

class FindReplaceTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    TABLE(replaces,
          (int tag, const QString &key, const QString &find, const QString &replacement,
           const QString &before, const QString &after, int records, int occurrences),
          {
              row("production", 3, "production", "uni", "u", "uni0041|x", "u0041|x", 1, 1);
              row("a separator is no text", 4, "altNames", ", ", "-", "x, y", "x, y", 0, 0);
              row("nothing lies across names", 4, "altNames", " y", "-", "x, y|x, a y", "x, y|x, a-", 1, 1);
              row("sort names", 6, "sortName", "1", "", "a101|b", "a0|b", 1, 2);
              row("accents are the marks", 9, "marks", "comb", "", "acutecomb", "acute", 1, 1);
              row("tag 1 is no field", 1, "name", "a", "b", "a", "a", 0, 0);
              row("tag 10 is no field", 10, "name", "a", "b", "a", "a", 0, 0);
              row("no comment begins", 7, "desc", "a", "<!--", "a|ba|c", "a|ba|c", 0, 0);
              row("nor ends", 4, "altNames", "x", "", "y, -x->|x", "y, -x->|-", 1, 1);
              row("a mark that stood there", 7, "desc", "a", "b", "a --> a|a", "a --> a|b", 1, 1);
              row("no value stays none", 6, "sortName", "a", "b", "-|a", "-|b", 1, 1);
          })
    {
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

    // options: c: either case, w: whole value, r: regular expression
    TABLE(replacesWithOptions,
          (const QString &options, const QString &find, const QString &replacement, const QString &values,
           const QString &result, int records),
          {
              row("usual", "", "A.", "\\1", "A.a.|Ab", "\\1a.|Ab", 1);
              row("case", "c", "aÄ", "x", "AäaÄ|Aa", "xx|Aa", 1);
              row("case, the same", "c", "a", "a", "aA|a", "aa|a", 1);
              row("no pattern", "c", "a.c", "$1", "abc|A.C", "abc|$1", 1);
              row("whole", "w", "top", "x", "top|top, top|Top", "x|top, top|Top", 1);
              row("whole, case", "wc", "top", "x", "top|Top|top_", "x|x|top_", 2);
              row("pattern", "r", "[aeiou]", "_", "abe|AB", "_b_|AB", 1);
              row("groups", "r", "(\\w+)-(\\w+)", "\\2.$1", "a-b, c-d", "b.a, d.c", 1);
              row("whole match, signs", "r", "b", u"\\\\$$\\0$x"_s, "abc", "a\\$b$xc", 1);
              row("empty match", "r", "$", ".sc", "a|b", "a.sc|b.sc", 2);
              row("whole pattern", "rw", "a|ab", "x", "ab|abc", "x|abc", 1);
              row("outside the plane", "r", ".", u"<\\0>"_s, "😀", "<😀>", 1);
              row("not valid", "r", "(a", "x", "(a|a", "(a|a", 0);
              row("nothing to find", "r", "", "x", "a", "a", 0);
          })
    {
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

    void comesToTheSameInSlices()
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

    void stopsAtAnEndlessPattern()
    {
        const InfoList infos =
            recordsWith(u"desc"_s, QStringList(200, QString(60, u'a') + u"b!"_s).join(u'|'), false);
        const FindReplace replace(u"^(a+)+$"_s, u"x"_s, FindReplace::Desc, {true, false, true});
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(replace.preview(infos, 9).records, 0);
        QVERIFY(!replace.problem().isNull());
        const qint64 first = clock.restart();
        replace.apply(infos);
        QVERIFY2(clock.elapsed() <= first + 500, "it tried again");
    }

    void previewShowsPlacesInLists()
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

    TABLE(countsProblemsOfNames,
          (int tag, const QString &find, const QString &replacement, const QStringList &selected,
           const QStringList &others, const NameProblems &problems),
          {
              const QStringList none;
              row("a name of another", 2, "x", "y", {u"ax"_s}, {u"ay"_s}, {0, 1});
              row("two become one", 2, ".alt", "", {u"a.alt"_s, u"a"_s}, none, {0, 1});
              row("two that change", 2, "x", "", {u"ax"_s, u"xa"_s}, none, {0, 2});
              row("all move on", 2, "a", "aa", {u"a"_s, u"aa"_s}, none, {0, 0});
              row("a blank", 2, "x", " ", {u"axa"_s, u"b"_s}, none, {1, 0});
              row("a digit first", 2, "one", "1", {u"one.lf"_s, u"a.one"_s}, none, {1, 0});
              row("empty", 2, "a", "", {u"a"_s}, none, {1, 0});
              row("bad before, unchanged", 2, "x", "y", {u"a b"_s, u"c"_s, u"c"_s}, none, {0, 0});
              row("other fields have no rules", 3, "x", " ", {u"x"_s}, none, {0, 0});
          })
    {
        const InfoList infos = named(selected);
        for (const InfoPtr &info : infos)
            info->setProduction(info->name());
        InfoList all = named(others);
        all.insert(all.begin(), infos.begin(), infos.end());
        const FindReplace replace(find, replacement, tag);
        QCOMPARE(replace.nameProblems(infos, all), problems);
    }

    void setsAbsentValuesOnceMore()
    {
        const auto steps = [](int tag) {
            VXDocument document;
            document.setInfos(named(u"a"_s));
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

    void refusedMarksStay()
    {
        QString refused =
            u"fathatan-ar, dammatan-ar, fatha-ar, damma-ar, shadda-ar, sukun-ar, madda-ar, hamzaabove-ar, noonghunna-ar, alefabove-ar, kasratan-ar, kasra-ar, hamzabelow-ar, alefbelow-ar"_s;
        const QString nearly = refused.replace(u"sukun"_s, u"SUKUN"_s);
        const InfoPtr info = VXGlyphInfo::init();
        info->setMarks(nearly);
        const ReplaceSummary summary =
            FindReplace(u"SUKUN"_s, u"sukun"_s, FindReplace::Accents).apply({info});
        QCOMPARE(info->marks(), nearly);
        QCOMPARE(summary.records, 0);
    }

    void neverTearsCharacters()
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

    void agreesWithPlainStrings()
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
};

RUNEBOOK_TEST_MAIN(FindReplaceTest)
#include "FindReplaceTest.moc"
