#include "editing/search/RecordTests.h"

#include "platform/predicates/PredicateFormat.h"

#include <QDeadlineTimer>
#include <algorithm>
#include <cmath>

namespace runebook {

namespace {

bool accepts(const NumberTest &test, const PredicateValue &value)
{
    if (const double *number = std::get_if<double>(&value))
        return test.accepts(*number);
    QStringList texts = textsOf(value);
    texts.removeAll(QString());
    const auto passes = [&test](const QString &text) {
        bool isNumber = false;
        const double number = text.toDouble(&isNumber);
        return isNumber && std::isfinite(number) && test.accepts(number);
    };
    if (test.relation == NumberTest::Relation::NotEqual)
        return !texts.isEmpty() && std::all_of(texts.begin(), texts.end(), passes);
    return std::any_of(texts.begin(), texts.end(), passes);
}

} // namespace

RecordBits RecordTests::passing(const NumberTest &test, const RecordBits &asked) const
{
    const SearchKey key = SearchKey::of(test.key);
    RecordBits passed(asked.size());
    asked.forEachWhile([&](std::size_t place) {
        if (accepts(test, predicateValue(*m_infos[place], key)))
            passed.set(place);
        return true;
    });
    return passed;
}

std::optional<RecordBits> RecordTests::passing(const PatternTest &test, const RecordBits &asked,
                                               Error *error) const
{
    constexpr std::size_t kRecordsBetweenLooks = 64;
    const SearchKey key = SearchKey::of(test.key);
    const QDeadlineTimer deadline(m_patternTimeLimitMs);
    std::size_t records = 0;
    RecordBits passed(asked.size());
    // An expression may stay within its limit for every record and still take minutes for all.
    const auto hasTime = [&] {
        if (++records % kRecordsBetweenLooks != 0 || !deadline.hasExpired())
            return true;
        return fail(
            error,
            {Predicate::errorDomain(), Predicate::PatternGaveUp, tr("The regular expression takes too long."),
             tr("“%1” was given up after %2 of %3 records.")
                 .arg(test.pattern.pattern(), QLocale().toString(records), QLocale().toString(asked.count())),
             tr("Repetitions of repetitions such as (a+)+ are slow; write a+ instead.")});
    };
    QString text;
    const bool finished = asked.forEachWhile([&](std::size_t place) {
        const Verdict found = verdict(test, predicateValue(*m_infos[place], key), text);
        if (found == Verdict::GaveUp)
            return fail(error, Predicate::gaveUpError(test, text));
        if (found == Verdict::Yes)
            passed.set(place);
        return hasTime();
    });
    if (!finished)
        return std::nullopt;
    return passed;
}

/// Whether one of the texts of \a value matches; \a text is the one that settled it.
Verdict RecordTests::verdict(const PatternTest &test, const PredicateValue &value, QString &text)
{
    for (const QString &each : textsOf(value)) {
        const Verdict found = each.isEmpty() ? Verdict::No : test.pattern.match(each);
        if (found == Verdict::No)
            continue;
        text = each;
        return found;
    }
    return Verdict::No;
}

Verdict RecordTests::verdict(const PredicateNode &node, const KnownBits &known, std::size_t place,
                             Error *error) const
{
    const auto answer = [](bool passes) { return passes ? Verdict::Yes : Verdict::No; };
    if (const auto *group = std::get_if<PredicateGroup>(&node.test)) {
        const bool isAny = group->kind == PredicateGroup::Kind::Any;
        const Verdict settling = group->kind == PredicateGroup::Kind::All ? Verdict::No : Verdict::Yes;
        for (const PredicateNode &member : group->members) {
            const Verdict found = verdict(member, known, place, error);
            if (found == Verdict::GaveUp)
                return found;
            if (found == settling)
                return answer(isAny);
        }
        return answer(!isAny);
    }
    if (const auto *pattern = std::get_if<PatternTest>(&node.test)) {
        QString text;
        const PredicateValue value = predicateValue(*m_infos[place], SearchKey::of(pattern->key));
        const Verdict found = verdict(*pattern, value, text);
        if (found == Verdict::GaveUp)
            fail(error, Predicate::gaveUpError(*pattern, text));
        return found;
    }
    if (const auto *number = std::get_if<NumberTest>(&node.test))
        return answer(accepts(*number, predicateValue(*m_infos[place], SearchKey::of(number->key))));
    return answer(known.at(&node).test(place));
}

std::optional<std::size_t> RecordTests::passingFrom(const PredicateNode &node, const KnownBits &known,
                                                    std::size_t first, const QDeadlineTimer &deadline,
                                                    RecordBits &passed, Error *error) const
{
    constexpr std::size_t kRecordsBetweenLooks = 64;
    for (std::size_t place = first; place < m_infos.size(); ++place) {
        if (place % kRecordsBetweenLooks == 0 && place > first && deadline.hasExpired())
            return place;
        const Verdict found = verdict(node, known, place, error);
        if (found == Verdict::GaveUp)
            return std::nullopt;
        if (found == Verdict::Yes)
            passed.set(place);
    }
    return m_infos.size();
}

} // namespace runebook
