#pragma once

#include "platform/predicates/Predicate.h"
#include "platform/predicates/PredicateFormat.h"

#include <cmath>

namespace runebook {

/// Whatever a predicate can be asked about.
class PredicateSubject
{
public:
    virtual ~PredicateSubject() = default;
    /// The value under \a key; nothing when there is no such key.
    virtual PredicateValue valueForKey(const QString &key) const = 0;
};

/// Asks the tests of a tree about one subject. GaveUp ends the asking.
class Evaluation
{
public:
    Evaluation(const PredicateSubject &subject, Error *error) : m_subject(subject), m_error(error) { }

    Verdict ask(const PredicateNode &node) const
    {
        return std::visit([this](const auto &test) { return ask(test); }, node.test);
    }

private:
    Verdict ask(const PredicateGroup &group) const
    {
        const Verdict deciding = group.kind == PredicateGroup::Kind::All ? Verdict::No : Verdict::Yes;
        for (const PredicateNode &member : group.members) {
            const Verdict verdict = ask(member);
            if (verdict == Verdict::GaveUp)
                return verdict;
            if (verdict == deciding)
                return answer(group.kind == PredicateGroup::Kind::Any);
        }
        return answer(group.kind != PredicateGroup::Kind::Any);
    }

    Verdict ask(const TextTest &test) const
    {
        const PredicateValue value = m_subject.valueForKey(test.key);
        const bool isList = std::holds_alternative<QStringList>(value);
        const auto accepts = [&test, isList](const QString &text) {
            const std::string folded = foldedUtf8(text, test.folding);
            return answer(isList ? test.acceptsElement(folded) : test.accepts(folded));
        };
        return test.relation == TextTest::Relation::NotEqual ? every(value, accepts) : any(value, accepts);
    }

    Verdict ask(const NumberTest &test) const
    {
        const PredicateValue value = m_subject.valueForKey(test.key);
        if (const double *number = std::get_if<double>(&value))
            return answer(test.accepts(*number));
        const auto accepts = [&test](const QString &text) {
            bool ok = false;
            const double number = text.toDouble(&ok);
            return answer(ok && std::isfinite(number) && test.accepts(number));
        };
        return test.relation == NumberTest::Relation::NotEqual ? every(value, accepts) : any(value, accepts);
    }

    Verdict ask(const ListTest &test) const
    {
        return any(m_subject.valueForKey(test.key), [&test](const QString &text) {
            return answer(test.accepts(foldedUtf8(text, test.folding)));
        });
    }

    Verdict ask(const HexRangeTest &test) const
    {
        return any(m_subject.valueForKey(test.key), [&test](const QString &text) {
            return answer(test.range.contains(foldedUtf8(text, {})));
        });
    }

    Verdict ask(const PatternTest &test) const
    {
        return any(m_subject.valueForKey(test.key), [this, &test](const QString &text) {
            const Verdict verdict = test.pattern.match(text);
            if (verdict == Verdict::GaveUp)
                fail(m_error, Predicate::gaveUpError(test, text));
            return verdict;
        });
    }

    static Verdict answer(bool yes) { return yes ? Verdict::Yes : Verdict::No; }

    /// What \a accepts says about the one text of \a value, which is no list.
    template <typename Accepts> static Verdict one(const PredicateValue &value, Accepts accepts)
    {
        if (const double *number = std::get_if<double>(&value))
            return accepts(PredicateFormat::decimal(*number));
        const QString *text = std::get_if<QString>(&value);
        return text && !text->isEmpty() ? accepts(*text) : Verdict::No;
    }

    template <typename Accepts> static Verdict any(const PredicateValue &value, Accepts accepts)
    {
        const QStringList *list = std::get_if<QStringList>(&value);
        if (!list)
            return one(value, accepts);
        for (const QString &text : *list) {
            const Verdict verdict = text.isEmpty() ? Verdict::No : accepts(text);
            if (verdict != Verdict::No)
                return verdict;
        }
        return Verdict::No;
    }

    template <typename Accepts> static Verdict every(const PredicateValue &value, Accepts accepts)
    {
        const QStringList *list = std::get_if<QStringList>(&value);
        if (!list)
            return one(value, accepts);
        Verdict verdict = Verdict::No;
        for (const QString &text : *list) {
            if (text.isEmpty())
                continue;
            verdict = accepts(text);
            if (verdict != Verdict::Yes)
                break;
        }
        return verdict;
    }

    const PredicateSubject &m_subject;
    Error *m_error;
};

/// Tests one subject, as plainly as can be: what searches of whole columns have to agree with. GaveUp as soon
/// as a regular expression takes too long to tell; then \a error says which one and on what.
inline Verdict evaluate(const Predicate &predicate, const PredicateSubject &subject, Error *error = nullptr)
{
    return Evaluation(subject, error).ask(predicate.root());
}

} // namespace runebook
