#pragma once

#include "editing/search/FieldAspect.h"
#include "platform/TextFolding.h"

#include <QCoreApplication>
#include <QString>
#include <QStringList>

namespace runebook {

/// What is asked of one field of a record: its aspect, how it is compared, with what. A plain value.
struct FieldCondition {
    Q_DECLARE_TR_FUNCTIONS(FieldCondition)
public:
    enum class Relation : quint8 {
        Contains, ///< a list: one of its entries is the value
        Is,
        BeginsWith,
        EndsWith,
        Matches, ///< a regular expression, as a whole
        IsEmpty,
        In, ///< it is one of the values; an empty one among them stands for none
        IsOther, ///< it has a value, and another one
        InRange, ///< of code points, from the first to the second value
        Equals, ///< as numbers, here and below
        Differs,
        Less,
        AtMost,
        Greater,
        AtLeast,
    };

    QString key; ///< the id of an aspect, or any key that searches know
    Relation relation = Relation::Contains;
    QStringList values; ///< one, but for In, InRange and IsEmpty
    bool isNegated = false;
    Folding folding; ///< what comparisons of texts overlook
    bool isOff = false; ///< it is kept and asks nothing

public: // making
    /// That the aspect is one of \a values, exactly; an empty one stands for none. Quick for many records.
    static FieldCondition isOneOf(const FieldAspect &aspect, const QStringList &values);
    static FieldCondition isNoneOf(const FieldAspect &aspect, const QStringList &values);

public: // asking
    /// The test in the language of predicates, in parentheses when it is negated.
    QString text() const;
    /// How the field is called: "Name Length".
    QString title() const;
    /// The whole for a person: "Name does not contain “alt”".
    QString description() const;
    /// The values as they are shown and typed: "latin, greek".
    QString valueText() const;
    /// Takes what was typed as the values.
    void setValueText(const QString &text);
    /// Why it cannot be asked, for a person; null when it can.
    QString objection() const;
    bool hasValue() const { return relation != Relation::IsEmpty; }
    /// Whether it compares texts, for which case and diacritics may be overlooked.
    bool comparesTexts() const;
    friend bool operator==(const FieldCondition &, const FieldCondition &) = default;

public: // relations
    /// Those that are offered for \a aspect, and the one that it has.
    static QList<Relation> relationsFor(const FieldAspect &aspect);
    /// "contains", or, negated, "does not contain".
    static QString titleOf(Relation relation, bool isNegated);
};

} // namespace runebook
