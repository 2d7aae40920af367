#pragma once

#include "merge/RecordMerge.h"

#include <optional>

namespace runebook {

/// Which records of the three sides are the same one: those of one key. Several of one key are told apart by
/// their lines; kNoPlace where a side lacks the record.
class MergeMatching
{
public:
    /// Nothing and an error (domain "MergeError") when both sides changed records of a key that several have,
    /// so that nobody can tell which is which.
    static std::optional<MergeMatching> of(const MergeTables &tables, Error *error);

    MergePlace oursOfTheirs(MergePlace theirs) const { return m_oursOfTheirs[theirs]; }
    MergedPlaces placesOfOurs(MergePlace ours) const
    {
        return {m_baseOf[0][ours], ours, m_theirsOfOurs[ours]};
    }
    MergedPlaces placesOfTheirs(MergePlace theirs) const
    {
        return {m_baseOf[1][theirs], m_oursOfTheirs[theirs], theirs};
    }

private:
    explicit MergeMatching(const MergeTables &tables);
    bool matchRepeated(Error *error);
    bool matchGroup(MergePlace example, MergeSide side, Error *error);
    void matchSide(std::size_t side);
    void matchAdditions();
    void pair(std::size_t side, MergePlace base, MergePlace place);

    const MergeTables *m_tables;
    std::array<std::vector<MergePlace>, 2> m_ofBase; ///< ours, theirs
    std::array<std::vector<MergePlace>, 2> m_baseOf;
    std::vector<MergePlace> m_theirsOfOurs;
    std::vector<MergePlace> m_oursOfTheirs;
    /// The records of all sides whose key several have.
    std::array<std::vector<bool>, 3> m_isRepeated;
};

} // namespace runebook
