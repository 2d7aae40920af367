#include "platform/predicates/Predicate.h"

#include "platform/predicates/PredicateFormat.h"
#include "platform/predicates/PredicateParser.h"

#include <QCoreApplication>
#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

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

} // namespace

Predicate::Predicate() : Predicate(u"TRUEPREDICATE"_s, PredicateNode {}) { }

Predicate::Predicate(QString format, PredicateNode root)
    : m_format(std::move(format)), m_root(std::make_shared<const PredicateNode>(std::move(root)))
{
}

std::optional<Predicate> Predicate::parse(const QString &text, Error *error)
{
    std::optional<PredicateNode> root = PredicateParser(text).parse(error);
    if (!root)
        return std::nullopt;
    return Predicate(text, *std::move(root));
}

std::optional<Predicate> Predicate::withFormat(const QString &format, const QVariantList &arguments,
                                               Error *error)
{
    const std::optional<QString> text = PredicateFormat(format, arguments).text(error);
    return text ? parse(*text, error) : std::nullopt;
}

Predicate Predicate::all(const QList<Predicate> &parts)
{
    if (parts.size() == 1)
        return parts.first();
    PredicateGroup group;
    QStringList formats;
    for (const Predicate &part : parts) {
        group.members.push_back(part.root());
        formats += u'(' + part.predicateFormat() + u')';
    }
    const QString format = formats.isEmpty() ? u"TRUEPREDICATE"_s : formats.join(" && "_L1);
    return Predicate(format, PredicateNode {std::move(group)});
}

QString Predicate::quoted(QStringView text)
{
    return PredicateFormat::quoted(text);
}

Verdict Predicate::evaluate(const PredicateSubject &subject, Error *error) const
{
    return Evaluation(subject, error).ask(*m_root);
}

Error Predicate::gaveUpError(const PatternTest &test, QStringView value)
{
    constexpr qsizetype kLongest = 60;
    const QString excerpt =
        value.size() <= kLongest ? value.toString() : value.left(kLongest).toString() + u'…';
    return {errorDomain(), PatternGaveUp,
            QCoreApplication::translate("Predicate", "The regular expression takes too long."),
            QCoreApplication::translate("Predicate", "“%1” was given up on “%2” after %L3 steps.")
                .arg(test.pattern.pattern(), excerpt)
                .arg(PredicatePattern::kMaxSteps),
            QCoreApplication::translate(
                "Predicate", "Repetitions of repetitions such as (a+)+ are slow; write a+ instead.")};
}

} // namespace runebook
