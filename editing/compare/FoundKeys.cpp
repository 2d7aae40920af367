#include "editing/compare/FoundKeys.h"

#include <algorithm>

namespace runebook {

FoundKeys FoundKeys::of(const KeyComparison &comparison, CompareMode mode)
{
    if (mode != CompareMode::Different)
        return {comparison.keys(mode), {}, {}};
    return {comparison.keys(mode), comparison.differentFields(), comparison.differentPlaces()};
}

void FoundKeys::compareAgain(const InfoList &left, const std::vector<quint32> &leftPlaces,
                             const InfoList &right, CompareKey key, const CompareOptions &options)
{
    KeyComparison comparison(left, right, key, CompareMode::Different, options);
    comparison.finish(CompareMode::Different);
    const QStringList &freshKeys = comparison.keys(CompareMode::Different);
    const std::vector<quint32> &freshPlaces = comparison.differentPlaces();

    FoundKeys merged;
    merged.keys.reserve(keys.size());
    std::size_t fresh = 0;
    const auto addFreshBefore = [&](std::size_t end) {
        for (; fresh < freshPlaces.size() && leftPlaces[freshPlaces[fresh]] < end; ++fresh) {
            merged.keys += freshKeys.at(static_cast<qsizetype>(fresh));
            merged.fields.push_back(comparison.differentFields()[fresh]);
            merged.places.push_back(leftPlaces[freshPlaces[fresh]]);
        }
    };
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (std::binary_search(leftPlaces.begin(), leftPlaces.end(), places[i]))
            continue;
        addFreshBefore(places[i]);
        merged.keys += keys.at(static_cast<qsizetype>(i));
        merged.fields.push_back(fields[i]);
        merged.places.push_back(places[i]);
    }
    addFreshBefore(~std::size_t(0));
    *this = std::move(merged);
}

} // namespace runebook
