#include "merge/FieldMerge.h"

#include "model/ComparableValue.h"
#include "model/FieldTable.h"

#include <QSet>
#include <algorithm>

namespace runebook {

namespace {

constexpr auto kFields = fieldsBy<&FieldRow::filePlace>();
/// Of the code points of a record files keep two.
constexpr qsizetype kMostCodePoints = 2;

enum class Entries : quint8 { None, Free, Ordered };

constexpr Entries entriesIn(GlyphField field)
{
    switch (field) {
    case GlyphField::Anchors:
    case GlyphField::Marks:
    case GlyphField::AltNames:
        return Entries::Free;
    case GlyphField::Unicodes:
    case GlyphField::Decompose:
        return Entries::Ordered;
    default:
        return Entries::None;
    }
}

QStringList entriesOf(GlyphField field, const VXGlyphInfo *info)
{
    if (!info || info->stored(field).isEmpty())
        return {};
    return field == GlyphField::Unicodes ? info->unicodes() : info->stored(field).toList(info->sourceData());
}

FieldValue valueOfEntries(GlyphField field, const QStringList &entries)
{
    if (entries.isEmpty())
        return {};
    return rowOf(field).kind == FieldKind::List ? FieldValue::list(entries)
                                                : FieldValue::text(entries.join(kListSeparator));
}

bool isNumber(GlyphField field)
{
    return field == GlyphField::Case || field == GlyphField::Direction;
}

/// The entries of one list that are kept by others too, in their order.
QStringList common(const QStringList &list, const QSet<QString> &kept)
{
    QStringList entries;
    for (const QString &entry : list) {
        if (kept.contains(entry))
            entries << entry;
    }
    return entries;
}

QSet<QString> setOf(const QStringList &list)
{
    return {list.begin(), list.end()};
}

bool haveSameOrder(const QStringList &one, const QStringList &other)
{
    return common(one, setOf(other)) == common(other, setOf(one));
}

/// What stands in the three lists between two entries that all have.
struct Stretch {
    QStringList base, ours, theirs;
};

QStringList without(const QStringList &list, const QStringList &others)
{
    const QSet<QString> left = setOf(others);
    QStringList rest;
    for (const QString &entry : list) {
        if (!left.contains(entry))
            rest << entry;
    }
    return rest;
}

bool mergeStretch(const Stretch &stretch, EntryOrder order, QStringList &merged)
{
    const QStringList addedByUs = without(stretch.ours, stretch.base);
    const QStringList addedByThem = without(stretch.theirs, stretch.base);
    const QStringList taken = without(stretch.base, stretch.ours);
    const QStringList takenByThem = without(stretch.base, stretch.theirs);
    if (addedByUs != addedByThem) {
        const bool bothReplace = without(taken, takenByThem).size() != taken.size();
        const bool bothAdd = !addedByUs.isEmpty() && !addedByThem.isEmpty();
        if (bothReplace || (bothAdd && order == EntryOrder::Meant))
            return false;
    }
    QStringList entries = without(stretch.ours, takenByThem);
    // What we added at the same place comes first.
    const auto behindOurs = [&](qsizetype place) {
        while (place < entries.size() && addedByUs.contains(entries.at(place)))
            ++place;
        return place;
    };
    qsizetype behind = behindOurs(0);
    for (const QString &entry : stretch.theirs) {
        const qsizetype place = entries.indexOf(entry);
        if (place >= 0)
            behind = behindOurs(place + 1);
        else if (addedByThem.contains(entry))
            entries.insert(behind++, entry);
    }
    merged << entries;
    return true;
}

} // namespace

std::span<const GlyphField> mergedFields()
{
    return kFields;
}

std::optional<QStringList> mergeEntries(const QStringList &base, const QStringList &ours,
                                        const QStringList &theirs, EntryOrder order)
{
    for (const QStringList *list : {&base, &ours, &theirs}) {
        if (setOf(*list).size() != list->size())
            return {};
    }
    if (!haveSameOrder(base, ours) || !haveSameOrder(base, theirs) || !haveSameOrder(ours, theirs))
        return {};
    const QSet<QString> ends = setOf(ours) & setOf(theirs) & setOf(base);
    QStringList merged;
    std::array<qsizetype, 3> next {};
    const std::array<const QStringList *, 3> lists {&base, &ours, &theirs};
    for (bool isLast = false; !isLast;) {
        Stretch stretch;
        const std::array<QStringList *, 3> parts {&stretch.base, &stretch.ours, &stretch.theirs};
        QString end;
        for (std::size_t i = 0; i < lists.size(); ++i) {
            qsizetype &at = next[i];
            while (at < lists[i]->size() && !ends.contains(lists[i]->at(at)))
                *parts[i] << lists[i]->at(at++);
            isLast = at == lists[i]->size();
            if (!isLast)
                end = lists[i]->at(at++);
        }
        if (!mergeStretch(stretch, order, merged))
            return {};
        if (!isLast)
            merged << end;
    }
    if (setOf(merged).size() != merged.size())
        return {}; // one entry at two places
    return merged;
}

bool haveSameValue(GlyphField field, const VXGlyphInfo *one, const VXGlyphInfo *other)
{
    static const VXGlyphInfo none {FieldValue()};
    if (isNumber(field)) {
        const auto numberOf = [field](const VXGlyphInfo *info) {
            if (field == GlyphField::Case)
                return info ? info->caseValue() : int(VXGlyphInfo::noCase);
            return info ? info->direction() : int(VXGlyphInfo::DirectionNotSet);
        };
        return numberOf(one) == numberOf(other);
    }
    return haveEqualValues(one ? *one : none, other ? *other : none, field);
}

FieldValue ownValue(GlyphField field, const VXGlyphInfo &info)
{
    if (field == GlyphField::Case)
        return FieldValue::number(info.caseValue());
    if (field == GlyphField::Direction)
        return FieldValue::number(info.direction());
    if (info.stored(field).isEmpty())
        return {};
    if (rowOf(field).kind == FieldKind::List)
        return FieldValue::list(info.entriesOf(field));
    return FieldValue::text(info.stringValue(field));
}

void setMergedValue(VXGlyphInfo &info, GlyphField field, const FieldValue &value)
{
    if (field == GlyphField::Case)
        info.setCase(value.toNumber());
    else if (field == GlyphField::Direction)
        info.setDirection(value.toNumber());
    else
        info.editValue(field, value);
}

FieldMerge mergeField(GlyphField field, const VXGlyphInfo *base, const VXGlyphInfo &ours,
                      const VXGlyphInfo &theirs)
{
    const bool oursIsBase = haveSameValue(field, &ours, base);
    const bool theirsIsBase = haveSameValue(field, &theirs, base);
    if (oursIsBase && theirsIsBase)
        return {field, MergeState::Unchanged, ownValue(field, ours), false};
    if (theirsIsBase)
        return {field, MergeState::Ours, ownValue(field, ours), false};
    if (oursIsBase)
        return {field, MergeState::Theirs, ownValue(field, theirs), false};
    if (haveSameValue(field, &ours, &theirs))
        return {field, MergeState::Both, ownValue(field, ours), false};
    const Entries kind = entriesIn(field);
    if (kind == Entries::None)
        return {field, MergeState::Conflict, ownValue(field, ours), false};
    const auto merged =
        mergeEntries(entriesOf(field, base), entriesOf(field, &ours), entriesOf(field, &theirs),
                     kind == Entries::Ordered ? EntryOrder::Meant : EntryOrder::Free);
    if (!merged || (field == GlyphField::Unicodes && merged->size() > kMostCodePoints))
        return {field, MergeState::Conflict, ownValue(field, ours), false};
    return {field, MergeState::Merged, valueOfEntries(field, *merged), false};
}

} // namespace runebook
