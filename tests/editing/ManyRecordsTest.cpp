// What editing many records at once does to them, without its sheets.
#include "editing/many/CharactersPlan.h"
#include "editing/many/ListEntries.h"
#include "editing/many/PlanModel.h"
#include "editing/many/ProductionPlan.h"
#include "editing/many/VariantsPlan.h"
#include "model/UnicodeData.h"
#include "platform/UndoManager.h"
#include "tests/RandomValues.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/editing/Records.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

const QDeadlineTimer kNever(QDeadlineTimer::Forever);

QStringList pick(QRandomGenerator &random, const QStringList &from, int most)
{
    QStringList picked;
    for (int i = random.bounded(most + 1); i > 0; --i)
        picked << from.at(random.bounded(int(from.size())));
    return picked;
}

/// Plans and applies in the smallest slices, as one step.
template <class Plan> void carryOut(Plan &plan, VXDocument &document)
{
    while (!plan.planMore(QDeadlineTimer(0))) { }
    const UndoGroup group(document.undoManager());
    while (!plan.applyMore(QDeadlineTimer(0))) { }
}

/// Rows of a plan, those that are left out in parentheses.
QString rowsOf(const RecordPlan &plan)
{
    QStringList rows;
    for (qsizetype row = 0; row < plan.countOfRows(); ++row) {
        const QString text = plan.text(row, 0) + u':' + plan.text(row, plan.headings().size() - 1);
        rows << (plan.isTaken(row) ? text : u'(' + text + u')');
    }
    return rows.join(u' ');
}

} // namespace

class ManyRecordsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    /// Against the same told plainly: what is removed goes wherever it stands, what is added comes behind,
    /// once.
    void entriesComeAndGo()
    {
        QRandomGenerator random(2105);
        const QStringList words = u"top bottom _top ogonek x"_s.split(u' ');
        const QStringList codePoints = u"0041 0042 1F600 0300"_s.split(u' ');
        for (int round = 0; round < rounds(150); ++round) {
            const GlyphField field =
                fieldsWithEntries()[std::size_t(random.bounded(int(fieldsWithEntries().size())))];
            const QStringList &from = field == GlyphField::Unicodes ? codePoints : words;
            const bool isList = field == GlyphField::Unicodes || field == GlyphField::AltNames;
            const InfoList infos = numbered(1 + random.bounded(200));
            QList<QStringList> expected;
            QHash<QString, qsizetype> counted;
            const EntryChange change {field, QSet<QString>(from.begin(), from.begin() + 2).values(),
                                      pick(random, from, 2)};
            qsizetype changing = 0;
            for (const InfoPtr &info : infos) {
                QStringList entries = pick(random, from, 4);
                if (isList && !entries.isEmpty())
                    info->setValueForKey(entries, keyOfField(field));
                else if (!isList)
                    info->setValueForKey(entries.join(random.bounded(2) ? u","_s : u", "_s),
                                         keyOfField(field));
                for (const QString &entry : QSet<QString>(entries.begin(), entries.end()))
                    ++counted[entry];
                QStringList after;
                for (const QString &entry : entries)
                    if (!change.removed.contains(entry))
                        after << entry;
                for (const QString &entry : change.added)
                    if (!after.contains(entry))
                        after << entry;
                changing += after != entries ? 1 : 0;
                expected << after;
            }
            const auto document = documentOf(infos);
            EntryCounts counts(infos, field);
            while (!counts.goOn(QDeadlineTimer(0))) { }
            QCOMPARE(std::ssize(counts.counts()), counted.size());
            for (const EntryCounts::Count &count : counts.counts())
                QCOMPARE(count.records, counted.value(count.entry));
            QStringList before;
            for (const InfoPtr &info : infos)
                before << info->displayText(field);
            EntryPlan plan(*document, infos, change);
            carryOut(plan, *document);
            QCOMPARE(std::ssize(plan.changing()), changing);
            for (qsizetype i = 0; i < expected.size(); ++i)
                QCOMPARE(entriesIn(*infos[std::size_t(i)], field), expected.at(i));
            if (changing > 0)
                document->undoManager()->undo();
            for (qsizetype i = 0; i < before.size(); ++i)
                QCOMPARE(infos[std::size_t(i)]->displayText(field), before.at(i));
        }
    }

    TABLE(entriesAreRefused, (const QString &key, const QString &typed, const QString &expected), {
        row("name of a record", u"altNames"_s, u"x, b"_s, u"a: Repeating name: b|b: Repeating name: b"_s);
        row("no code point", u"unicodes"_s, u"41, zz"_s, u"Left out, for it is no code point: “zz”"_s);
        row("comment", u"anchors"_s, u"a<!--"_s, u"!"_s);
        row("fine", u"anchors"_s, u" top ,top,, bottom"_s, u"top bottom"_s);
    })
    {
        const auto document = documentOf(named(u"a b"_s));
        const GlyphField field = *fieldForKey(key);
        const TypedEntries entries = typedEntries(field, typed);
        if (!entries.objection.isNull()) {
            QVERIFY2(expected == "!"_L1 || entries.objection == expected, qPrintable(entries.objection));
            return;
        }
        EntryPlan plan(*document, document->infos(), {field, entries.entries, {}});
        plan.planMore(kNever);
        QStringList refusals;
        for (const EntryPlan::Refusal &refusal : plan.refusals())
            refusals << refusal.info->name() + u": "_s + refusal.reason;
        QCOMPARE(refusals.isEmpty() ? entries.entries.join(u' ') : refusals.join(u'|'), expected);
        QCOMPARE(plan.changing().empty(), !refusals.isEmpty());
    }

    /// Every value but name and code points, whatever stands there; names are free and none comes twice.
    void duplicatesHaveEverythingElse()
    {
        Dice dice(99);
        for (int round = 0; round < rounds(60); ++round) {
            InfoList infos = named(u"a b a.001 a c.002 c.012 a.1"_s);
            for (const InfoPtr &info : infos) {
                dice.change(*info);
                if (!info->name().startsWith(u'a'))
                    info->setName(u"a"_s);
            }
            const auto document = documentOf(infos);
            FreeNames names(*document);
            std::vector<NewRecord> copies;
            for (const InfoPtr &info : infos)
                copies.push_back({duplicateOf(*info, names.nameFor(info->name())), info});
            const InfoList made = insertBehind(*document, copies);
            QCOMPARE(std::size_t(document->countOfInfos()), 2 * infos.size());
            QSet<QString> all;
            for (std::size_t i = 0; i < infos.size(); ++i) {
                QCOMPARE(document->indexOfObjectInInfos(made[i]), qsizetype(2 * i + 1));
                QVERIFY(made[i]->unicodes().isEmpty() && !all.contains(made[i]->name()));
                all << made[i]->name();
                QVERIFY(document->infoForName(made[i]->name()) == made[i]);
                QVariantList expected = valuesOf(*infos[i]);
                expected[kKeys.indexOf(u"name"_s)] = made[i]->name();
                expected[kKeys.indexOf(u"unicodes"_s)] = QStringList();
                QCOMPARE(valuesOf(*made[i]), expected);
            }
        }
        const auto document = documentOf(named(u"a a.001 b.009 x.sc"_s));
        FreeNames names(*document);
        QStringList given;
        for (const QString &name : {u"a"_s, u"a.001"_s, u"b.009"_s, u"x.sc"_s, u""_s})
            given << names.nameFor(name);
        QCOMPARE(given.join(u' '), u"a.002 a.003 b.001 x.sc.001 unknown.001"_s);
    }

    TABLE(variants, (const QString &suffixes, const QString &rows, const QString &names), {
        row("one", u".sc"_s, u"a.sc:a (b.sc:b) b.sc.sc:b.sc"_s, u"a a.sc b b.sc b.sc.sc"_s);
        row("two, one without its dot", u"sc, .alt"_s,
            u"a.sc:a a.alt:a (b.sc:b) b.alt:b b.sc.sc:b.sc b.sc.alt:b.sc"_s,
            u"a a.sc a.alt b b.alt b.sc b.sc.sc b.sc.alt"_s);
        row("the same twice", u".x _y .x"_s, u"a.x:a a_y:a b.x:b b_y:b b.sc.x:b.sc b.sc_y:b.sc"_s,
            u"a a.x a_y b b.x b_y b.sc b.sc.x b.sc_y"_s);
        row("no name", u".ä"_s, u"(a.ä:a) (b.ä:b) (b.sc.ä:b.sc)"_s, u"a b b.sc"_s);
    })
    {
        const auto document =
            documentOf(recordsOf(u"unicode=\"0061\" name=\"a\" category=\"Letter\" production=\"pa\" "
                                 u"anchors=\"top\" description=\"d\"\n"
                                 "name=\"b\" direction=\"RTL\" case=\"lower\"\nname=\"b.sc\""_s));
        VariantsPlan plan(*document, document->infos(),
                          {VariantChoices::suffixesOfText(suffixes),
                           {GlyphField::Category, GlyphField::Production, GlyphField::Direction,
                            GlyphField::Case, GlyphField::Desc}});
        PlanModel model;
        const QAbstractItemModelTester tester(&model);
        model.setPlan(&plan);
        while (!plan.planMore(QDeadlineTimer(0)))
            model.showMore();
        model.showMore();
        QCOMPARE(rowsOf(plan), rows);
        carryOut(plan, *document);
        QCOMPARE(namesOf(document->infos()), names);
        if (const InfoPtr made = document->infoForName(u"a.sc"_s)) {
            QCOMPARE(made->lineXMLFormatVersion(2).trimmed(),
                     u"<glyph name=\"a.sc\" category=\"Letter\" production=\"pa.sc\" description=\"d\" />"_s);
        }
        if (const InfoPtr made = document->infoForName(u"b.alt"_s))
            QCOMPARE(std::pair(made->direction(), made->caseValue()),
                     std::pair(int(VXGlyphInfo::RTL), int(VXGlyphInfo::lower)));
        document->undoManager()->undo();
        QCOMPARE(namesOf(document->infos()), u"a b b.sc"_s);
    }

    TABLE(charactersAreTyped, (const QString &typed, const QString &expected), {
        row("range", u"U+0400-04FF"_s, u"400-4FF"_s);
        row("without marks, turned round", u" 04ff – U+0400 "_s, u"400-4FF"_s);
        row("several", u"U+41, 0x43-45; 1F600-1F601"_s, u"41-41 43-45 1F600-1F601"_s);
        row("twice", u"U+0041-0045 U+0043-0047 U+0040-0050"_s, u"41-45 46-47 40-40 48-50"_s);
        row("block", u"greek and coptic"_s, u"370-3FF"_s);
        row("characters", u"бa б\n\U0001F600"_s, u"431-431 61-61 1F600-1F600"_s);
        row("digits are characters", u"0041"_s, u"30-30 34-34 31-31"_s);
        row("too large", u"U+110000"_s, u"The last code point is U+10FFFF."_s);
        row("far too large", u"U+100000041"_s, u"The last code point is U+10FFFF."_s);
        row("nothing", u" "_s, u"Paste characters, type a range such as U+0400-04FF, or choose a block."_s);
    })
    {
        const TypedCharacters characters = TypedCharacters::ofText(typed);
        QStringList ranges;
        for (const auto &[first, last] : characters.ranges)
            ranges << QString::number(first, 16).toUpper() + u'-' + QString::number(last, 16).toUpper();
        QCOMPARE(characters.objection.isNull() ? ranges.join(u' ') : characters.objection, expected);
    }

    /// Every assigned one that is not there, in order, once, by a valid name that nobody has.
    void charactersAreAdded()
    {
        QRandomGenerator random(4);
        for (int round = 0; round < rounds(20); ++round) {
            const char32_t first = char32_t(random.bounded(round % 2 ? 0x3000 : 0x1F700));
            const char32_t last = first + char32_t(random.bounded(400));
            const auto document = documentOf(named(u"own uni0378 A"_s));
            document->infos().back()->setUnicodes(
                {u"F8FF"_s, QString::number(first + 3, 16).rightJustified(4, u'0')});
            InfoPtr own = document->infos().front();
            own->setUnicode(QString::number(first + 1, 16).rightJustified(4, u'0').toUpper());
            CharactersPlan plan(
                *document, TypedCharacters::ofText(u"U+%1-%2"_s.arg(first, 0, 16).arg(last, 0, 16)), own);
            carryOut(plan, *document);
            QStringList expected, made;
            for (char32_t at = first; at <= last; ++at) {
                const bool isThere = UnicodeData::shared().isAssigned(at) && (at < 0xD800 || at > 0xDFFF);
                if (isThere && at != first + 1 && at != first + 3 && at != U'A')
                    expected << QString::number(at, 16).rightJustified(4, u'0').toUpper();
            }
            for (const InfoPtr &info : plan.added()) {
                made << info->unicode();
                QVERIFY(info->validateName(info->name()));
                QCOMPARE(document->infoForName(info->name()), info);
            }
            QCOMPARE(made.join(u' '), expected.join(u' '));
            QCOMPARE(document->countOfInfos(), 3 + made.size());
            QCOMPARE(document->indexOfObjectInInfos(own), 0);
        }
    }

    /// Fields are those proposed; parts are called as the records of the same plan are, unless one is taken
    /// out.
    void charactersKnowEachOther()
    {
        const auto document = documentOf(named(u"x"_s));
        document->infos().front()->setAltNames(QStringList {u"ha-cy"_s});
        CharactersPlan named(*document, TypedCharacters::ofText(u"х"_s), nullptr);
        named.planMore(kNever);
        QCOMPARE(rowsOf(named), u"uni0445:CYRILLIC SMALL LETTER HA"_s);
        CharactersPlan plan(*document, TypedCharacters::ofText(u"йи\u0306\uFFFFx\u0378"_s), nullptr);
        plan.planMore(kNever);
        QCOMPARE(plan.summary(),
                 u"3 records are new. With a name that cannot be given: 1. Code points without a "
                 "character: 2."_s);
        carryOut(plan, *document);
        QCOMPARE(namesOf(document->infos()), u"x iishort-cy ii-cy brevecomb"_s);
        const InfoPtr &made = document->infos()[1];
        QCOMPARE(
            made->lineXMLFormatVersion(2).trimmed(),
            u"<glyph unicode=\"0439\" name=\"iishort-cy\" decompose=\"ii-cy, brevecomb\" category=\"Letter\" "
            "subCategory=\"Lowercase\" case=\"lower\" script=\"cyrillic\" production=\"uni0439\" "
            "description=\"CYRILLIC SMALL LETTER SHORT I\" />"_s);
        document->undoManager()->undo();
        CharactersPlan without(*document, TypedCharacters::ofText(u"йи\u0306"_s), document->infos().front());
        without.planMore(kNever);
        without.setTaken(1, false);
        carryOut(without, *document);
        QCOMPARE(document->infos()[1]->decompose(), QString());
    }

    void rowsCanBeTakenOut()
    {
        const auto document = documentOf(named(u"a b c"_s));
        VariantsPlan plan(*document, document->infos(), {{u".sc"_s}, {}});
        PlanModel model;
        plan.planMore(kNever);
        model.setPlan(&plan);
        QVERIFY(model.setData(model.index(1, 0), Qt::Unchecked, Qt::CheckStateRole));
        QCOMPARE(plan.summary(), u"2 records are new."_s);
        QCOMPARE(plan.stepName(), u"Add 2 Variants"_s);
        carryOut(plan, *document);
        QCOMPARE(namesOf(document->infos()), u"a a.sc b c c.sc"_s);
    }

    TABLE(productionNames,
          (const QString &line, const QString &list, const QString &codePoint, const QString &parts), {
              row("listed", u"unicode=\"0431\" name=\"be-cy\""_s, u"uni0431"_s, u"uni0431"_s, u"uni0431"_s);
              row("five digits", u"unicode=\"1F600\" name=\"grin\""_s, u"u1F600"_s, u"u1F600"_s, u"u1F600"_s);
              row("its own", u"unicode=\"0041\" name=\"A\""_s, u""_s, u"uni0041"_s, u""_s);
              row("no code point", u"name=\"x\""_s, u""_s, u""_s, u""_s);
              row("no number", u"unicode=\"00GG\" name=\"x\""_s, u"uni00GG"_s, u""_s, u"uni00GG"_s);
              row("ligature", u"name=\"f_f_i.sc\""_s, u""_s, u""_s, u""_s);
              row("parts with production names", u"name=\"lam_alef-ar.fina\""_s, u""_s, u""_s,
                  u"uni06440627.fina"_s);
              row("suffix", u"name=\"lam-ar.init\""_s, u""_s, u""_s, u"uni0644.init"_s);
              row("unknown part", u"name=\"f_nobody\""_s, u""_s, u""_s, u""_s);
              row("part that is a name by itself", u"name=\"uni0915_lam-ar\""_s, u""_s, u""_s,
                  u"uni09150644"_s);
              row("conjunct with a virama",
                  u"name=\"uni0915_uni0937\" decompose=\"uni0915, uni094D.x, uni0937\""_s, u""_s, u""_s,
                  u"uni0915094D0937"_s);
              row("decomposition of something else", u"name=\"f_lam-ar\" decompose=\"lam-ar, f\""_s, u""_s,
                  u""_s, u"f_uni0644"_s);
              row("hidden", u"name=\".notdef\""_s, u""_s, u""_s, u""_s);
          })
    {
        InfoList infos = recordsOf(u"unicode=\"0644\" name=\"lam-ar\" production=\"uni0644\"\n"
                                   "unicode=\"0627\" name=\"alef-ar\"\n"_s
                                   + line);
        const auto document = documentOf(infos);
        const auto by = [&](ProductionRule rule) {
            return productionNameByRule(*document, *infos.back(), rule) + u""_s;
        };
        QCOMPARE(by(ProductionRule::GlyphList), list);
        QCOMPARE(by(ProductionRule::CodePoint), codePoint);
        QCOMPARE(by(ProductionRule::Parts), parts);
    }

    void productionNamesAreFilled()
    {
        const auto document = documentOf(recordsOf(
            u"unicode=\"0431\" name=\"be\" production=\"own\"\nunicode=\"0432\" name=\"ve\"\n"
            "unicode=\"0432\" name=\"ve.alt\"\nname=\"uni0433\"\nunicode=\"0433\" name=\"ge\"\nname=\"none\""_s));
        ProductionPlan plan(*document, document->infos(), ProductionRule::CodePoint,
                            ProductionPlan::Which::OnlyEmpty);
        while (!plan.planMore(QDeadlineTimer(0))) { }
        QCOMPARE(rowsOf(plan), u"ve:uni0432 ve.alt:uni0432 ge:uni0433"_s);
        QCOMPARE(
            plan.summary(),
            u"3 production names change. New names that other records will have too: 3. Records that keep "
            "theirs: 1. Records that need none by this rule, or get none: 2."_s);
        QCOMPARE(plan.remark(0).text, u"Records that will have it: 2"_s);
        plan.setTaken(1, false);
        carryOut(plan, *document);
        const auto productions = [&] {
            QStringList all;
            for (const InfoPtr &info : document->infos())
                all << info->production();
            return all.join(u'|');
        };
        QCOMPARE(productions(), u"own|uni0432|||uni0433|"_s);
        ProductionPlan all(*document, document->infos(), ProductionRule::CodePoint,
                           ProductionPlan::Which::All);
        carryOut(all, *document);
        QCOMPARE(productions(), u"uni0431|uni0432|uni0432||uni0433|"_s);
        document->undoManager()->undo();
        document->undoManager()->undo();
        QCOMPARE(productions(), u"own|||||"_s);
    }
};

RUNEBOOK_TEST_MAIN(ManyRecordsTest)
#include "ManyRecordsTest.moc"
