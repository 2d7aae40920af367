#include "editing/problems/ComponentCircles.h"

#include <algorithm>

namespace runebook {

namespace {

constexpr std::size_t kMostNames = 2'000; // that hang together; the depth of the search, too

} // namespace

/// Finds which names lead to each other, from some of them on: the components that are strongly connected. A
/// name that was met in one call is known in the next.
class ComponentCircles::Search
{
public:
    explicit Search(const ComponentCircles &circles) : m_circles(circles) { }
    /// Names of one circle have the same number, those of none have one of their own.
    const std::unordered_map<quint64, quint32> &circles() const { return m_circleOf; }
    bool isKnown(quint64 name) const { return m_circleOf.contains(name); }
    void from(quint64 name)
    {
        m_left = kMostNames;
        visit(name);
    }

private:
    quint32 visit(quint64 name)
    {
        const quint32 own = ++m_order;
        quint32 lowest = own;
        m_met[name] = own;
        m_open.push_back(name);
        for (quint32 number = m_circles.m_first.value(name); number; number = m_circles.m_next[number]) {
            for (const quint64 component : m_circles.m_components.list(number)) {
                if (!component || isKnown(component) || m_circles.m_first.value(component) == 0)
                    continue;
                if (const auto met = m_met.find(component); met != m_met.end())
                    lowest = std::min(lowest, met->second);
                else if (m_left > 0 && m_left--)
                    lowest = std::min(lowest, visit(component));
            }
        }
        if (lowest == own) {
            quint64 member = 0;
            do {
                member = m_open.back();
                m_open.pop_back();
                m_met.erase(member);
                m_circleOf[member] = own;
            } while (member != name);
        }
        return lowest;
    }

    const ComponentCircles &m_circles;
    std::unordered_map<quint64, quint32> m_circleOf;
    std::unordered_map<quint64, quint32> m_met; ///< that are still open, with their order
    std::vector<quint64> m_open;
    quint32 m_order = 0;
    std::size_t m_left = 0;
};

void ComponentCircles::clear()
{
    m_first.clear();
    m_next.clear();
    m_circular.clear();
    m_circularNames.clear();
    m_changed.clear();
}

void ComponentCircles::add(quint64 name, quint32 number)
{
    if (!name)
        return;
    if (m_next.size() <= number)
        m_next.resize(number + 1);
    m_next[number] = std::exchange(m_first[name], number);
    m_changed.push_back(name);
}

void ComponentCircles::remove(quint64 name, quint32 number)
{
    if (!name)
        return;
    quint32 *link = &m_first[name];
    while (*link != number)
        link = &m_next[*link];
    *link = m_next[number];
    m_circular.erase(number);
    m_changed.push_back(name);
}

void ComponentCircles::update()
{
    if (m_changed.empty())
        return;
    // Where a circle is broken, its other names are in none any more.
    if (std::any_of(m_changed.begin(), m_changed.end(),
                    [this](quint64 name) { return m_circularNames.contains(name); }))
        m_changed.insert(m_changed.end(), m_circularNames.begin(), m_circularNames.end());
    Search search(*this);
    for (const quint64 name : m_changed) {
        if (!search.isKnown(name) && leadsOn(name))
            search.from(name);
    }
    if (!m_circularNames.empty()) {
        for (const quint64 name : m_changed)
            judge(name, search.circles());
    }
    for (const auto &each : search.circles())
        judge(each.first, search.circles());
    m_changed.clear();
}

/// Whether a name is composed of something that is composed itself.
bool ComponentCircles::leadsOn(quint64 name) const
{
    for (quint32 number = m_first.value(name); number; number = m_next[number]) {
        for (const quint64 component : m_components.list(number)) {
            if (component && m_first.value(component))
                return true;
        }
    }
    return false;
}

void ComponentCircles::judge(quint64 name, const std::unordered_map<quint64, quint32> &circles)
{
    m_circularNames.erase(name);
    const auto own = circles.find(name);
    for (quint32 number = m_first.value(name); number; number = m_next[number]) {
        const auto leadsBack = [&](quint64 component) {
            const auto other = circles.find(component);
            return component != name && own != circles.end() && other != circles.end()
                && other->second == own->second;
        };
        const std::span<const quint64> components = m_components.list(number);
        if (std::any_of(components.begin(), components.end(), leadsBack)) {
            m_circular.insert(number);
            m_circularNames.insert(name);
        } else {
            m_circular.erase(number);
        }
    }
}

} // namespace runebook
