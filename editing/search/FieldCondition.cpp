#include "editing/search/FieldCondition.h"

#include "platform/predicates/PredicateFormat.h"

#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using Relation = FieldCondition::Relation;

/// What stands in a predicate, and what people read.
constexpr struct {
    Relation relation;
    const char16_t *symbol;
    const char *title;
    const char *negated;
} kRelations[] {
    {Relation::Contains, u"contains", QT_TRANSLATE_NOOP("FieldCondition", "contains"),
     QT_TRANSLATE_NOOP("FieldCondition", "does not contain")},
    {Relation::Is, u"==", QT_TRANSLATE_NOOP("FieldCondition", "is"),
     QT_TRANSLATE_NOOP("FieldCondition", "is not")},
    {Relation::BeginsWith, u"BEGINSWITH", QT_TRANSLATE_NOOP("FieldCondition", "begins with"),
     QT_TRANSLATE_NOOP("FieldCondition", "does not begin with")},
    {Relation::EndsWith, u"ENDSWITH", QT_TRANSLATE_NOOP("FieldCondition", "ends with"),
     QT_TRANSLATE_NOOP("FieldCondition", "does not end with")},
    {Relation::Matches, u"MATCHES", QT_TRANSLATE_NOOP("FieldCondition", "matches"),
     QT_TRANSLATE_NOOP("FieldCondition", "does not match")},
    {Relation::IsEmpty, u"", QT_TRANSLATE_NOOP("FieldCondition", "is empty"),
     QT_TRANSLATE_NOOP("FieldCondition", "is not empty")},
    {Relation::In, u"IN", QT_TRANSLATE_NOOP("FieldCondition", "is one of"),
     QT_TRANSLATE_NOOP("FieldCondition", "is none of")},
    {Relation::IsOther, u"!=", QT_TRANSLATE_NOOP("FieldCondition", "is other than"),
     QT_TRANSLATE_NOOP("FieldCondition", "is empty or")},
    {Relation::InRange, u"IN", QT_TRANSLATE_NOOP("FieldCondition", "is in the range"),
     QT_TRANSLATE_NOOP("FieldCondition", "is not in the range")},
    {Relation::Equals, u"==", QT_TRANSLATE_NOOP("FieldCondition", "="),
     QT_TRANSLATE_NOOP("FieldCondition", "≠")},
    {Relation::Differs, u"!=", QT_TRANSLATE_NOOP("FieldCondition", "≠"),
     QT_TRANSLATE_NOOP("FieldCondition", "not ≠")},
    {Relation::Less, u"<", QT_TRANSLATE_NOOP("FieldCondition", "<"),
     QT_TRANSLATE_NOOP("FieldCondition", "not <")},
    {Relation::AtMost, u"<=", QT_TRANSLATE_NOOP("FieldCondition", "≤"),
     QT_TRANSLATE_NOOP("FieldCondition", "not ≤")},
    {Relation::Greater, u">", QT_TRANSLATE_NOOP("FieldCondition", ">"),
     QT_TRANSLATE_NOOP("FieldCondition", "not >")},
    {Relation::AtLeast, u">=", QT_TRANSLATE_NOOP("FieldCondition", "≥"),
     QT_TRANSLATE_NOOP("FieldCondition", "not ≥")},
};

const auto &rowOfRelation(Relation relation)
{
    return *std::find_if(std::begin(kRelations), std::end(kRelations),
                         [relation](const auto &row) { return row.relation == relation; });
}

bool isOfNumbers(Relation relation)
{
    return relation >= Relation::Equals;
}

QString optionsOf(Folding folding)
{
    if (!folding)
        return {};
    return u'[' + QString(folding.testFlag(Fold::Case) ? u"c"_s : QString())
        + (folding.testFlag(Fold::Diacritics) ? u"d]"_s : u"]"_s);
}

QString hasValueTest(const QString &key)
{
    return key + " != \"\""_L1;
}

/// "key IN {…}", besides with the records that have no value.
QString listTest(const FieldCondition &condition)
{
    QStringList literals;
    for (const QString &value : condition.values) {
        if (!value.isEmpty())
            literals += Predicate::quoted(value);
    }
    QString list =
        condition.key + " IN"_L1 + optionsOf(condition.folding) + " {"_L1 + literals.join(", "_L1) + u'}';
    if (literals.size() == condition.values.size())
        return list;
    return list + " || !("_L1 + hasValueTest(condition.key) + u')';
}

bool isHexadecimal(const QString &text)
{
    bool isOk = false;
    text.toUInt(&isOk, 16);
    return isOk && text.size() <= 8 && text.front() != u'+' && text.front() != u'-';
}

/// One of several values as it is typed: between quotation marks where a comma could be taken for another.
QString asTyped(const QString &value)
{
    const bool isPlain = !value.contains(u',') && !value.contains(u'"') && value == value.trimmed();
    return isPlain && !value.isEmpty() ? value : u'"' + QString(value).replace(u'"', "\"\""_L1) + u'"';
}

/// The values between the commas of \a text.
QStringList typedValues(const QString &text)
{
    QStringList values;
    qsizetype at = 0;
    while (at < text.size()) {
        while (at < text.size() && text[at].isSpace())
            ++at;
        QString value;
        const bool isQuoted = at < text.size() && text[at] == u'"';
        if (isQuoted) {
            for (++at; at < text.size(); ++at) {
                if (text[at] == u'"' && (at + 1 == text.size() || text[++at] != u'"'))
                    break;
                value += text[at];
            }
        }
        const qsizetype comma = text.indexOf(u',', at);
        const qsizetype end = comma < 0 ? text.size() : comma;
        if (!isQuoted)
            value = text.mid(at, end - at).trimmed();
        if (isQuoted || !value.isEmpty())
            values += value;
        at = end + 1;
    }
    values.removeDuplicates();
    return values;
}

} // namespace

FieldCondition FieldCondition::isOneOf(const FieldAspect &aspect, const QStringList &values)
{
    FieldCondition condition;
    condition.key = aspect.id();
    condition.relation = Relation::In;
    condition.values = values;
    return condition;
}

FieldCondition FieldCondition::isNoneOf(const FieldAspect &aspect, const QStringList &values)
{
    FieldCondition condition = isOneOf(aspect, values);
    condition.isNegated = true;
    return condition;
}

QString FieldCondition::text() const
{
    QString test;
    if (relation == Relation::IsEmpty) {
        test = hasValueTest(key);
        return isNegated ? test : "!("_L1 + test + u')';
    }
    const QString first = values.value(0);
    if (relation == Relation::In) {
        test = listTest(*this);
        if (!isNegated && test.endsWith(u')'))
            return u'(' + test + u')';
    } else if (relation == Relation::InRange) {
        test = key + " IN HEXRANGE("_L1 + first + ", "_L1 + values.value(1) + u')';
    } else {
        const QString symbol = QString::fromUtf16(rowOfRelation(relation).symbol);
        test = key + u' ' + symbol;
        test += isOfNumbers(relation) ? u' ' + PredicateFormat::decimal(first.toDouble())
                                      : optionsOf(folding) + u' ' + Predicate::quoted(first);
    }
    return isNegated ? "!("_L1 + test + u')' : test;
}

QString FieldCondition::title() const
{
    const std::optional<FieldAspect> aspect = FieldAspect::of(key);
    return aspect ? aspect->title() : key;
}

QString FieldCondition::description() const
{
    const QString relationTitle = titleOf(relation, isNegated);
    if (!hasValue())
        return tr("%1 %2").arg(title(), relationTitle);
    // A quotation mark tells where a text begins and ends; values of a list stand as they are typed.
    const bool isSingle = values.size() == 1 && !isOfNumbers(relation) && relation != Relation::In;
    return (isSingle ? tr("%1 %2 “%3”") : tr("%1 %2 %3")).arg(title(), relationTitle, valueText());
}

QString FieldCondition::valueText() const
{
    if (relation == Relation::InRange)
        return values.join(u'-');
    if (relation != Relation::In)
        return values.value(0);
    QStringList typed;
    for (const QString &value : values)
        typed += asTyped(value);
    return typed.join(", "_L1);
}

void FieldCondition::setValueText(const QString &text)
{
    if (relation == Relation::IsEmpty)
        values.clear();
    else if (relation == Relation::In)
        values = typedValues(text);
    else if (relation == Relation::InRange)
        values = text.simplified().remove(u' ').split(u'-');
    else
        values = QStringList {text};
}

QString FieldCondition::objection() const
{
    if (!hasValue())
        return {};
    if (values.isEmpty() || (relation != Relation::In && values.first().isEmpty()))
        return tr("Type a value, or choose “is empty”.");
    if (relation == Relation::InRange
        && (values.size() != 2 || !std::all_of(values.begin(), values.end(), isHexadecimal)))
        return tr("Type two code points with a hyphen between them: 0041-005A");
    bool isNumber = true;
    if (isOfNumbers(relation))
        values.first().toDouble(&isNumber);
    if (!isNumber)
        return tr("“%1” is no number.").arg(values.first());
    QString reason;
    if (relation == Relation::Matches && !PredicatePattern::compile(values.first(), folding, &reason))
        return tr("This regular expression is not valid: %1").arg(reason);
    return {};
}

bool FieldCondition::comparesTexts() const
{
    return hasValue() && !isOfNumbers(relation) && relation != Relation::InRange;
}

QList<FieldCondition::Relation> FieldCondition::relationsFor(const FieldAspect &aspect)
{
    using enum Relation;
    if (aspect.isNumber())
        return {Equals, Differs, Less, AtMost, Greater, AtLeast};
    QList<Relation> relations {Contains, Is, BeginsWith, EndsWith, Matches, In, IsEmpty};
    if (aspect.isList())
        relations.removeFirst(); // the same as Is
    if (aspect.field() == GlyphField::Unicodes && aspect.isList())
        relations += InRange;
    return relations;
}

QString FieldCondition::titleOf(Relation relation, bool isNegated)
{
    const auto &row = rowOfRelation(relation);
    return tr(isNegated ? row.negated : row.title);
}

} // namespace runebook
