#include "platform/predicates/Predicate.h"

#include "platform/predicates/PredicateFormat.h"
#include "platform/predicates/PredicateParser.h"

#include <QCoreApplication>
#include <utility>

using namespace Qt::StringLiterals;

namespace runebook {

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
