#pragma once

#include "editing/search/RecordFilter.h"

#include <QStringList>

namespace runebook {

/// Which values of one aspect somebody wants to see, and which not: only records that have one of the first,
/// if there are any, and none of the others. An empty text stands for no value.
struct ChosenValues {
    QStringList only;
    QStringList without;

    /// What \a filter has of them, as conditions of their own.
    static ChosenValues of(const FieldAspect &aspect, const RecordFilter &filter)
    {
        const auto values = [&](bool isNegated) {
            const FieldCondition *condition = filter.listCondition(aspect, isNegated);
            return condition ? condition->values : QStringList();
        };
        return {values(false), values(true)};
    }
    /// Makes them conditions of \a filter, in the place of those that are there.
    void putInto(RecordFilter &filter, const FieldAspect &aspect) const
    {
        filter.setListCondition(FieldCondition::isOneOf(aspect, only));
        filter.setListCondition(FieldCondition::isNoneOf(aspect, without));
    }
    bool isEmpty() const { return only.isEmpty() && without.isEmpty(); }
    /// What a click chooses: this value alone, or everything again when it was that already.
    void choose(const QString &value)
    {
        const bool wasAlone = *this == ChosenValues {{value}, {}};
        *this = wasAlone ? ChosenValues() : ChosenValues {{value}, {}};
    }
    /// Besides those that are chosen already; or no longer.
    void toggle(const QString &value)
    {
        without.removeAll(value);
        if (!only.removeOne(value))
            only << value;
    }
    /// Leaves its records out; or no longer.
    void toggleWithout(const QString &value)
    {
        only.removeAll(value);
        if (!without.removeOne(value))
            without << value;
    }
    /// The value has another text now.
    void rename(const QString &from, const QString &to)
    {
        for (QStringList *values : {&only, &without}) {
            if (const qsizetype at = values->indexOf(from); at >= 0 && !values->contains(to))
                values->replace(at, to);
            else
                values->removeAll(from);
        }
    }
    friend bool operator==(const ChosenValues &, const ChosenValues &) = default;
};

} // namespace runebook
