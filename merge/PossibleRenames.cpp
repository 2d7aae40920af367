#include "merge/PossibleRenames.h"

#include <QHash>
#include <algorithm>

namespace runebook {

namespace {

using Numbers = std::vector<std::size_t>;

MergePlace placeOn(const RecordMerge &record, MergeSide side)
{
    return side == MergeSide::Ours ? record.places.ours : record.places.theirs;
}

/// The one of the records \a numbers that has certain code points, if it is the only one.
QHash<QString, std::optional<std::size_t>> byCodePoints(const ThreeWayMerge &merge, MergeSide side,
                                                        const Numbers &numbers)
{
    QHash<QString, std::optional<std::size_t>> found;
    for (const std::size_t number : numbers) {
        const RecordMerge &record = merge.records()[number];
        const InfoPtr info =
            merge.tables().read(side, side == MergeSide::Base ? record.places.base : placeOn(record, side));
        const QString codePoints = info->displayText(GlyphField::Unicodes);
        if (codePoints.isEmpty())
            continue;
        const auto known = found.find(codePoints);
        if (known == found.end())
            found.insert(codePoints, number);
        else
            known->reset();
    }
    return found;
}

void addRenames(const ThreeWayMerge &merge, MergeSide side, std::size_t mostRead,
                std::vector<PossibleRename> &renames)
{
    Numbers removed;
    Numbers added;
    for (std::size_t number = 0; number < merge.records().size(); ++number) {
        const RecordMerge &record = merge.records()[number];
        const bool isThere = placeOn(record, side) != kNoPlace;
        const bool wasThere = record.places.base != kNoPlace;
        if (isThere != wasThere)
            (isThere ? added : removed).push_back(number);
    }
    if (removed.empty() || added.empty() || removed.size() + added.size() > mostRead)
        return;
    const auto former = byCodePoints(merge, MergeSide::Base, removed);
    const auto fresh = byCodePoints(merge, side, added);
    for (auto each = former.cbegin(); each != former.cend(); ++each) {
        const std::optional<std::size_t> to = fresh.value(each.key());
        const std::optional<std::size_t> &from = each.value();
        if (from && to) {
            const bool isInConflict = merge.records()[*from].conflict != ConflictKind::None;
            renames.push_back({*from, *to, side, isInConflict});
        }
    }
}

} // namespace

std::vector<PossibleRename> possibleRenames(const ThreeWayMerge &merge, std::size_t mostRead)
{
    std::vector<PossibleRename> renames;
    for (const MergeSide side : {MergeSide::Ours, MergeSide::Theirs})
        addRenames(merge, side, mostRead, renames);
    const auto nameOf = [&merge](const PossibleRename &rename) {
        return merge.keyOf(merge.records()[rename.from]);
    };
    std::sort(renames.begin(), renames.end(),
              [&nameOf](const auto &one, const auto &other) { return nameOf(one) < nameOf(other); });
    return renames;
}

MergedPlaces placesOfRename(const ThreeWayMerge &merge, const PossibleRename &rename)
{
    MergedPlaces places = merge.records()[rename.from].places;
    const MergedPlaces &to = merge.records()[rename.to].places;
    (rename.side == MergeSide::Ours ? places.ours : places.theirs) =
        rename.side == MergeSide::Ours ? to.ours : to.theirs;
    return places;
}

} // namespace runebook
