// Filters of conditions answer as asking every record plainly does, and are what they were when read back.
#include "editing/search/RecordFilter.h"

#include "editing/search/FilterTokens.h"
#include "editing/search/OnlyRecords.h"
#include "editing/search/SavedFilters.h"
#include "editing/search/SearchColumns.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/editing/Records.h"

#include <QRandomGenerator>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

using Relation = FieldCondition::Relation;
using Join = RecordFilter::Join;

class Dice
{
public:
    explicit Dice(quint32 seed) : m_random(seed) { }
    int below(qsizetype bound) { return static_cast<int>(m_random.bounded(static_cast<quint32>(bound))); }
    template <typename List> auto oneOf(const List &list) { return list[below(std::size(list))]; }

private:
    QRandomGenerator m_random;
};

const QStringList &names()
{
    static const QStringList texts {u""_s,      u"a"_s,         u"A.sc"_s,   u"a.sc.alt"_s, u".notdef"_s, u"é"_s,
                                    u"top"_s,   u"top, _top"_s, u"_top"_s,   u"𝔞b.ss01"_s,  u"yes"_s,     u"3"_s,
                                    u"latin"_s, u"LTR"_s,       u"upper"_s,  u"x \"y\\"_s,  u"a,b"_s,     u"0041"_s};
    return texts;
}

InfoPtr randomInfo(Dice &dice)
{
    const InfoPtr info = VXGlyphInfo::init();
    info->setName(dice.oneOf(names()));
    info->setScript(dice.oneOf(names()));
    info->setAnchors(dice.oneOf(names()));
    info->setMarks(dice.oneOf(names()));
    info->setDecompose(dice.oneOf(names()));
    QStringList list;
    for (int i = dice.below(3); i > 0; --i)
        list += dice.oneOf(names());
    info->setUnicodes(list);
    info->setAltNames(list);
    info->setCase(dice.below(6));
    info->setDirection(dice.below(6) - 2);
    return info;
}

/// Said once more and without any of what the program has for it.
QStringList plainValues(const VXGlyphInfo &info, const QString &id)
{
    QStringList values;
    if (id == u"anchor"_s)
        values = info.anchors().split(u", "_s);
    else if (id == u"mark"_s)
        values = info.marks().split(u", "_s);
    else if (id == u"component"_s)
        values = info.decompose().split(u", "_s);
    else if (id == u"unicodes"_s)
        values = info.unicodes();
    else if (id == u"altNames"_s)
        values = info.altNames();
    else if (id == u"letterCase"_s)
        values = {info.caseValue() == VXGlyphInfo::other ? u"other"_s
                                                         : VXGlyphInfo::stringFromCase(info.caseValue())};
    else if (id == u"writingDirection"_s)
        values = {VXGlyphInfo::stringFromDirection(info.direction())};
    else if (id == u"nameLength"_s)
        values = {QString::number(info.name().toUcs4().size())};
    else if (id == u"suffix"_s)
        values = {info.name().indexOf(u'.', 1) < 0 ? QString() : info.name().mid(info.name().indexOf(u'.', 1))};
    else if (id == u"hasCodePoint"_s)
        values = {info.unicodes().isEmpty() ? u"no"_s : u"yes"_s};
    else if (id == u"codePointCount"_s)
        values = {QString::number(info.unicodes().size())};
    else
        values = {info.valueForKey(id).toString()};
    values.removeAll(u""_s);
    return values;
}

bool plainlyMeets(const FieldCondition &condition, const QString &value, bool isList)
{
    const auto folded = [&](const QString &text) { return foldForSearch(text, condition.folding); };
    const QString there = folded(value);
    const QString wanted = folded(condition.values.value(0));
    switch (condition.relation) {
    case Relation::Contains:
        return !wanted.isEmpty() && (isList ? there == wanted : there.contains(wanted));
    case Relation::Is:
        return !wanted.isEmpty() && there == wanted;
    case Relation::BeginsWith:
        return !wanted.isEmpty() && there.startsWith(wanted);
    case Relation::EndsWith:
        return !wanted.isEmpty() && there.endsWith(wanted);
    case Relation::Matches:
        return QRegularExpression(QRegularExpression::anchoredPattern(wanted)).match(there).hasMatch();
    case Relation::In:
        return std::any_of(condition.values.begin(), condition.values.end(),
                           [&](const QString &each) { return !each.isEmpty() && folded(each) == there; });
    case Relation::InRange: {
        const bool isCodePoint = there.size() == 4 && there.toUpper() == there;
        bool isHex = false;
        const uint number = there.toUInt(&isHex, 16);
        return isCodePoint && isHex && number >= condition.values[0].toUInt(nullptr, 16)
            && number <= condition.values[1].toUInt(nullptr, 16);
    }
    case Relation::Equals:
        return value.toDouble() == wanted.toDouble();
    case Relation::Differs:
        return value.toDouble() != wanted.toDouble();
    case Relation::Less:
        return value.toDouble() < wanted.toDouble();
    case Relation::AtMost:
        return value.toDouble() <= wanted.toDouble();
    case Relation::Greater:
        return value.toDouble() > wanted.toDouble();
    case Relation::AtLeast:
        return value.toDouble() >= wanted.toDouble();
    case Relation::IsOther:
    case Relation::IsEmpty:
        break;
    }
    return false;
}

bool plainlyMeets(const FieldCondition &condition, const VXGlyphInfo &info)
{
    const QStringList values = plainValues(info, condition.key);
    const bool isList = FieldAspect::of(condition.key)->isList();
    bool meets = std::any_of(values.begin(), values.end(), [&](const QString &value) {
        return plainlyMeets(condition, value, isList);
    });
    if (condition.relation == Relation::IsEmpty)
        meets = values.isEmpty();
    else if (condition.relation == Relation::In && values.isEmpty())
        meets = condition.values.contains(u""_s);
    else if (condition.relation == Relation::IsOther)
        meets = !values.isEmpty()
            && std::none_of(values.begin(), values.end(), [&](const QString &value) {
                   return foldForSearch(value, condition.folding)
                       == foldForSearch(condition.values.first(), condition.folding);
               });
    return meets != condition.isNegated;
}

/// Nothing when all of it is switched off.
std::optional<bool> plainlyMeets(const RecordFilter &filter, const VXGlyphInfo &info)
{
    std::optional<bool> meets;
    for (const RecordFilter::Member &member : filter.members()) {
        std::optional<bool> one;
        if (const auto *condition = std::get_if<FieldCondition>(&member))
            one = condition->isOff ? std::optional<bool>() : plainlyMeets(*condition, info);
        else
            one = plainlyMeets(std::get<RecordFilter>(member), info);
        if (one)
            meets = !meets ? *one : filter.join() == Join::All ? *meets && *one : *meets || *one;
    }
    if (filter.members().empty())
        meets = filter.join() == Join::All;
    return meets ? std::optional(*meets != filter.isNegated()) : meets;
}

FieldCondition randomCondition(Dice &dice)
{
    const FieldAspect aspect = dice.oneOf(FieldAspect::all());
    QList<Relation> relations = FieldCondition::relationsFor(aspect);
    if (!aspect.isNumber())
        relations += {Relation::IsOther, Relation::Contains};
    FieldCondition condition;
    condition.key = aspect.id();
    condition.relation = dice.oneOf(relations);
    condition.isNegated = dice.below(3) == 0;
    condition.isOff = dice.below(6) == 0;
    if (condition.relation == Relation::InRange)
        condition.values = {u"0040"_s, u"00FF"_s};
    else if (aspect.isNumber())
        condition.values = {QString::number(dice.below(4))};
    else if (condition.relation == Relation::Matches)
        condition.values = {dice.oneOf(QStringList {u".*o.*"_s, u"[a-z]+"_s, u"."_s})};
    else if (condition.hasValue())
        condition.values = {dice.oneOf(names())};
    for (int i = condition.relation == Relation::In ? dice.below(3) : 0; i > 0; --i)
        condition.values += dice.oneOf(names());
    condition.values.removeDuplicates();
    if (condition.relation == Relation::IsOther && condition.values.first().isEmpty())
        condition.values = {u"a"_s}; // the other is how emptiness is asked
    if (condition.comparesTexts() && condition.relation != Relation::Matches && dice.below(2))
        condition.folding = Fold::Case | Fold::Diacritics;
    return condition;
}

RecordFilter randomFilter(Dice &dice, int depth = 0)
{
    RecordFilter filter(dice.below(2) ? Join::All : Join::Any);
    filter.setNegated(depth > 0 && dice.below(4) == 0);
    for (int i = dice.below(4) - (depth > 0 ? 0 : 1); i >= 0; --i) {
        if (depth < 2 && dice.below(3) == 0)
            filter.members().emplace_back(randomFilter(dice, depth + 1));
        else
            filter.members().emplace_back(randomCondition(dice));
    }
    return filter;
}

/// What the row of a filter shows, as a filter is typed.
QString shownAsText(const RecordFilter &filter)
{
    using Kind = FilterToken::Kind;
    QString text;
    for (const FilterToken &token : tokensOf(filter)) {
        text += token.kind == Kind::Condition ? conditionAt(filter, token.number).text()
            : token.kind == Kind::Open        ? u"("_s
            : token.kind == Kind::NotOpen     ? u"!("_s
            : token.kind == Kind::Close       ? u")"_s
            : token.kind == Kind::Everything  ? u"TRUEPREDICATE"_s
            : token.kind == Kind::Nothing     ? u"FALSEPREDICATE"_s
            : token.join == Join::All         ? u" && "_s
                                              : u" || "_s;
    }
    return text;
}

} // namespace

class RecordFilterTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    TABLE(answersAsEveryRecordDoes, (quint32 seed), {
        for (quint32 seed = 1; seed <= 6; ++seed)
            row(u"seed %1"_s.arg(seed), seed);
    })
    {
        Dice dice(seed);
        VXDocument document;
        InfoList infos = GlyphDataReader().read(QByteArray(
            "<glyphData>\n<glyph unicode=\"0041\" name=\"\xC3\xA9""b.sc\" anchors=\"top, _top\" case=\"lower\"/>\n"
            "<glyph name=\".notdef\" decompose=\"a, top\" script=\"latin\"/>\n</glyphData>\n"));
        for (int i = 0; i < 60; ++i)
            infos.push_back(randomInfo(dice));
        document.setInfos(infos);
        SearchColumns columns(document);
        for (int round = 0; round < rounds(150); ++round) {
            const InfoPtr changed = dice.oneOf(infos);
            changed->setName(dice.oneOf(names()));
            changed->setCase(dice.below(6));
            for (const GlyphField field : {GlyphField::Name, GlyphField::Case})
                columns.noteChange({changed, field});

            const RecordFilter filter = randomFilter(dice);
            IndexSet expected;
            for (qsizetype i = 0; i < qsizetype(infos.size()); ++i) {
                if (plainlyMeets(filter, *infos[size_t(i)]).value_or(true))
                    expected.push_back(i);
            }
            const QString text = filter.text();
            Error error;
            const std::optional<RecordFilter> again = RecordFilter::parse(text, &error);
            QVERIFY2(again, qPrintable(text + u'\n' + error.text()));
            for (const RecordFilter &each : {filter, *again}) {
                const std::optional<Predicate> predicate = each.predicate();
                QCOMPARE(predicate.has_value(), !each.text().isEmpty());
                const auto places = columns.placesPassing(predicate.value_or(Predicate()));
                QVERIFY2(places && *places == expected, qPrintable(each.text()));
            }
            const std::optional<RecordFilter> third = RecordFilter::parse(again->text());
            QVERIFY2(third && *third == *again, qPrintable(text));
        }
    }

    void rowsShowWhatIsAsked()
    {
        Dice dice(11);
        for (int i = 0; i < rounds(300); ++i) {
            RecordFilter filter = randomFilter(dice);
            filter.setOff(false);
            for (int steps = dice.below(4); steps >= 0; --steps) {
                const std::optional<RecordFilter> read = RecordFilter::parse(shownAsText(filter));
                QVERIFY2(read, qPrintable(shownAsText(filter)));
                QCOMPARE(read->text(), RecordFilter::parse(filter.text())->text());
                const int count = filter.countOfConditions();
                if (count == 0)
                    break;
                const int number = dice.below(count);
                const FieldCondition other = randomCondition(dice);
                if (steps % 3 == 0) {
                    setConditionAt(filter, number, other);
                    QCOMPARE(conditionAt(filter, number), other);
                    filter.setOff(false);
                } else {
                    steps % 3 == 1 ? removeConditionAt(filter, number) : toggleJoinAfter(filter, number);
                    QCOMPARE(filter.countOfConditions(), count - steps % 3 % 2);
                }
            }
        }
    }

    TABLE(joins, (const QString &text, int number, const QString &toggled), {
        row("x == \"1\" && x == \"2\"", "suffix == \"1\" && suffix == \"2\"", 0,
            "suffix == \"1\" || suffix == \"2\"");
        row("two of three", "name == \"1\" && name == \"2\" && name == \"3\"", 0,
            "(name == \"1\" || name == \"2\") && name == \"3\"");
        row("and back", "(name == \"1\" || name == \"2\") && name == \"3\"", 0,
            "name == \"1\" && name == \"2\" && name == \"3\"");
        row("of the whole", "(name == \"1\" || name == \"2\") && name == \"3\"", 1,
            "name == \"1\" || name == \"2\" || name == \"3\"");
    })
    {
        RecordFilter filter = *RecordFilter::parse(text);
        toggleJoinAfter(filter, number);
        QCOMPARE(filter.text(), toggled);
    }

    // asked: null: refused
    TABLE(onlyTakesNamesFiltersAndSearches, (const QString &text, const QString &asked), {
        row("a saved filter", "my letters", "category == \"Letter\"");
        row("a filter", "!(suffix = '.sc')", "!(suffix == \".sc\")");
        row("a search", "name",
            "(name contains[cd] \"name\") || (unicode contains[cd] \"name\") || "
            "(production contains[cd] \"name\")");
        row("a filter that is none", "script = latin", "");
        row("a filter of another field", "script == 'a' && x == 'b'", "");
    })
    {
        SavedFilters::save(u"my letters"_s, u"category == \"Letter\""_s);
        Error error;
        const std::optional<OnlyRecords> only = OnlyRecords::of(text, &error);
        QCOMPARE(only ? only->predicate->predicateFormat() : QString(), asked);
        QCOMPARE(error.domain.isEmpty(), only.has_value());
        SavedFilters::remove(u"my letters"_s);
    }

    void aspectsGiveTheirValues()
    {
        Dice dice(7);
        for (int i = 0; i < 100; ++i) {
            const InfoPtr info = randomInfo(dice);
            for (const FieldAspect &aspect : FieldAspect::all()) {
                QCOMPARE(aspect.values(*info), plainValues(*info, aspect.id()));
                QCOMPARE(FieldAspect::of(aspect.id()), aspect);
                QVERIFY(!aspect.title().isEmpty());
            }
        }
    }

    // What a person typed, as it is said and as it is printed again.
    TABLE(texts, (const QString &text, const QString &description, const QString &printed), {
        const auto same = [&row](const char *text, const char *description) { row(text, text, description, text); };
        same("name contains[cd] \"alt\"", "Name contains “alt”");
        same("!(name contains \"alt\")", "Name does not contain “alt”");
        same("!(script != \"\")", "Script is empty");
        same("script != \"\"", "Script is not empty");
        row("not empty, twice", "NOT NOT script != ''", "Script is not empty", "script != \"\"");
        same("(category IN {\"Letter\"} || !(category != \"\"))", "Category is one of Letter, \"\"");
        same("!(category IN {\"a,b\", \"c\"})", "Category is none of \"a,b\", c");
        same("unicodes IN HEXRANGE(0041, 005A)", "Unicode is in the range 0041-005A");
        row("numbers", "nameLength>=20.50", "Name Length ≥ 20.5", "nameLength >= 20.5");
        row("parentheses", "((accents BEGINSWITH 'a'))", "Accents begins with “a”",
            "accents BEGINSWITH \"a\"");
        same("index == 3", "index = 3");
    })
    {
        const std::optional<RecordFilter> filter = RecordFilter::parse(text);
        QVERIFY(filter);
        QCOMPARE(filter->text(), printed);
        QCOMPARE(filter->countOfConditions(), 1);
        QCOMPARE(std::get<FieldCondition>(filter->members().front()).description(), description);
    }

    void unknownFieldsAndOtherTextsAreRefused()
    {
        Error error;
        QVERIFY(!RecordFilter::parse(u"script == \"a\" && nonsense == \"b\""_s, &error));
        QVERIFY2(error.text().contains(u"“nonsense”"_s) && error.text().contains(u"nameLength"_s),
                 qPrintable(error.text()));
        QVERIFY(!RecordFilter::parse(u"alpha"_s, &error));
        QVERIFY(RecordFilter::parse(u"  "_s)->isEmpty());
    }

    void listsAreTypedAndShown()
    {
        Dice dice(3);
        for (int i = 0; i < 300; ++i) {
            FieldCondition condition;
            condition.relation = Relation::In;
            for (int j = dice.below(4); j > 0; --j)
                condition.values += dice.oneOf(names()) + dice.oneOf(QStringList {u""_s, u" "_s, u"\""_s, u","_s});
            condition.values.removeDuplicates();
            const QStringList expected = condition.values;
            condition.setValueText(condition.valueText());
            QCOMPARE(condition.values, expected);
        }
    }

    void listConditionsAreKeptApart()
    {
        const FieldAspect script = *FieldAspect::of(u"script");
        RecordFilter filter = *RecordFilter::parse(u"name contains \"a\" || name contains \"b\""_s);
        filter.setListCondition(FieldCondition::isOneOf(script, {u"latin"_s}));
        filter.setListCondition(FieldCondition::isNoneOf(script, {u"greek"_s}));
        filter.setListCondition(FieldCondition::isOneOf(script, {u"latin"_s, u""_s}));
        QCOMPARE(filter.text(),
                 u"(name contains \"a\" || name contains \"b\") && (script IN {\"latin\"} || !(script != \"\")) "
                 "&& !(script IN {\"greek\"})"_s);
        QCOMPARE(RecordFilter::parse(filter.text())->listCondition(script, false)->values,
                 (QStringList {u"latin"_s, u""_s}));
        filter.setListCondition(FieldCondition::isOneOf(script, {}));
        QVERIFY(!filter.listCondition(script, false) && filter.listCondition(script, true));
    }
};

RUNEBOOK_TEST_MAIN(RecordFilterTest)
#include "RecordFilterTest.moc"
