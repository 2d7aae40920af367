#pragma once

#include "editing/problems/KeyLists.h"

#include <unordered_map>
#include <unordered_set>

namespace runebook {

/// Which compositions lead back to their own name by way of others: a of b, and b of a. Follows changes: a
/// circle that comes or goes leads through a name that was changed, so only what hangs together with that is
/// looked at. Circles of very many names are not told.
class ComponentCircles
{
public:
    explicit ComponentCircles(const KeyLists &components) : m_components(components) { }
    void clear();

    /// The composition \a number belongs to a record of that name; again to none.
    void add(quint64 name, quint32 number);
    void remove(quint64 name, quint32 number);
    /// Looks at what was added and removed. To be called before asking.
    void update();

    qsizetype count() const { return static_cast<qsizetype>(m_circular.size()); }
    bool isCircular(quint32 number) const { return m_circular.contains(number); }

private:
    class Search;
    bool leadsOn(quint64 name) const;
    void judge(quint64 name, const std::unordered_map<quint64, quint32> &circles);

    const KeyLists &m_components;
    KeyTable m_first; ///< of a name, the number of one of its compositions; 0 for none
    std::vector<quint32> m_next; ///< the next composition of the same name
    std::unordered_set<quint32> m_circular;
    std::unordered_set<quint64> m_circularNames;
    std::vector<quint64> m_changed; ///< names
};

} // namespace runebook
