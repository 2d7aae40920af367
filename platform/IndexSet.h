#pragma once

#include <QtGlobal>
#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <numeric>
#include <vector>

namespace runebook {

/// Places in a list: ascending and none twice, in whatever order they were given.
class IndexSet
{
public:
    using value_type = qsizetype;
    using const_iterator = std::vector<qsizetype>::const_iterator;

public: // making
    IndexSet() = default;
    IndexSet(std::initializer_list<qsizetype> places) : IndexSet(std::vector<qsizetype>(places)) { }
    explicit IndexSet(std::vector<qsizetype> places) : m_places(std::move(places))
    {
        if (std::adjacent_find(m_places.begin(), m_places.end(), std::greater_equal<>()) == m_places.end())
            return; // mostly
        std::sort(m_places.begin(), m_places.end());
        m_places.erase(std::unique(m_places.begin(), m_places.end()), m_places.end());
    }
    template <std::input_iterator Iterator>
    IndexSet(Iterator first, Iterator last) : IndexSet(std::vector<qsizetype>(first, last))
    {
    }
    /// \a count places that follow each other.
    static IndexSet run(qsizetype first, std::size_t count)
    {
        IndexSet places;
        places.m_places.resize(count);
        std::iota(places.m_places.begin(), places.m_places.end(), first);
        return places;
    }

public: // asking
    bool empty() const { return m_places.empty(); }
    std::size_t size() const { return m_places.size(); }
    qsizetype operator[](std::size_t i) const { return m_places[i]; }
    qsizetype front() const { return m_places.front(); }
    qsizetype back() const { return m_places.back(); }
    const_iterator begin() const { return m_places.begin(); }
    const_iterator end() const { return m_places.end(); }
    auto rbegin() const { return m_places.rbegin(); }
    auto rend() const { return m_places.rend(); }
    friend bool operator==(const IndexSet &, const IndexSet &) = default;

public: // changing
    void reserve(std::size_t count) { m_places.reserve(count); }
    /// Quick behind the last one; elsewhere it moves what follows: many places in no order are better
    /// gathered first.
    void push_back(qsizetype place)
    {
        const auto at = m_places.empty() || m_places.back() < place
            ? m_places.end()
            : std::lower_bound(m_places.begin(), m_places.end(), place);
        if (at == m_places.end() || *at != place)
            m_places.insert(at, place);
    }
    /// Adds the places of \a others; linear.
    void unite(const IndexSet &others)
    {
        std::vector<qsizetype> all;
        all.reserve(size() + others.size());
        std::set_union(begin(), end(), others.begin(), others.end(), std::back_inserter(all));
        m_places = std::move(all);
    }
    template <typename Condition> void removeIf(Condition condition) { std::erase_if(m_places, condition); }

private:
    std::vector<qsizetype> m_places;
};

} // namespace runebook
