#include "editing/compare/ComparedFields.h"

#include "editing/fields/GlyphColumns.h"
#include "model/FieldTable.h"

#include <QCoreApplication>
#include <algorithm>

namespace runebook {

const QList<ComparedField> &comparedFields()
{
    static const QList<ComparedField> fields = [] {
        QList<ComparedField> list;
        for (const GlyphField field : fieldsBy<&FieldRow::comparePlace>())
            list.append({field, rowOf(field).caption});
        return list;
    }();
    return fields;
}

QString titleOf(const ComparedField &field)
{
    return fieldTitle(field.field);
}

std::vector<const ComparedField *> differingFields(const VXGlyphInfo &left, const VXGlyphInfo &right)
{
    std::vector<const ComparedField *> differing;
    for (const ComparedField &field : comparedFields()) {
        if (!haveEqualValues(left, right, field.field))
            differing.push_back(&field);
    }
    return differing;
}

bool countAsEqual(const InfoPtr &left, const InfoPtr &right)
{
    if (left->isEqualToInfo(right))
        return true;
    const auto isEqual = [&](GlyphField field) { return haveEqualValues(*left, *right, field); };
    // The name first, as that is where most differ.
    constexpr auto kFields = fieldsBy<[](const FieldRow &row) {
        const bool isAsked = row.isEquality && row.field != GlyphField::Desc;
        return row.field == GlyphField::Name ? 1 : isAsked ? row.comparePlace : 0;
    }>();
    if (!std::all_of(std::begin(kFields), std::end(kFields), isEqual))
        return false;
    // As there: a record without description passes only against one that has one.
    const bool hasNone = left->desc().isEmpty();
    const bool same = hasNone ? right->desc().isEmpty() : isEqual(GlyphField::Desc);
    return same != hasNone;
}

} // namespace runebook
