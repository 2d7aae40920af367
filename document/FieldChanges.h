#pragma once

#include "model/FieldRepeats.h"
#include "model/VXGlyphInfo.h"

#include <utility>
#include <vector>

namespace runebook {

/// A changed field of a record; the record may have left the list since.
struct FieldChange {
    InfoPtr info;
    GlyphField field;
};

/// The fields that one command has changed, gathered to be announced together: for one field of one record
/// a few entries at most.
class FieldChanges
{
public:
    bool isEmpty() const { return m_changes.empty(); }
    std::size_t count() const { return m_changes.size(); }
    /// \a listed: how many records there are to be changed.
    void add(VXGlyphInfo &info, GlyphField field, qsizetype listed)
    {
        constexpr std::size_t kFewChanges = 2000;
        // A command that has come so far goes on to the end as a rule.
        if (m_changes.size() == kFewChanges)
            m_changes.reserve(static_cast<std::size_t>(listed));
        m_changes.push_back({info.shared_from_this(), field});
        dropRepeats(m_changes, m_nextCleaning);
    }
    /// Gives all of them away.
    std::vector<FieldChange> take()
    {
        m_nextCleaning = 0;
        return std::exchange(m_changes, {});
    }

private:
    std::vector<FieldChange> m_changes;
    std::size_t m_nextCleaning = 0;
};

} // namespace runebook
