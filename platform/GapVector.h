#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace runebook {

/// A vector for lists that are changed one element at a time, each near the one before: where elements went
/// or came last it keeps room, the gap, so that the next one moves only what lies between. Changes one by one
/// from the front, in the middle or at the end cost together as much as one of them all; at places far from
/// each other each moves what lies between, as in a vector. Elements that go leave `T()` behind.
///
/// The elements stand in slots, those behind the gap farther back by its length. An element keeps its slot
/// until it is moved, which insert() and erase() tell of.
template <typename T> class GapVector
{
public:
    /// Slots whose elements stood in other ones before.
    struct Moved {
        std::size_t first = 0;
        std::size_t last = 0;
        std::size_t count() const { return last - first; }
    };

    GapVector() = default;
    explicit GapVector(std::vector<T> elements) : m_slots(std::move(elements)) { }

    std::size_t size() const { return m_slots.size() - gap(); }
    bool empty() const { return size() == 0; }
    T &operator[](std::size_t place) { return m_slots[slotOf(place)]; }
    const T &operator[](std::size_t place) const { return m_slots[slotOf(place)]; }

    std::size_t slotOf(std::size_t place) const { return place < m_gapBegin ? place : place + gap(); }
    /// Of a slot with an element.
    std::size_t placeOfSlot(std::size_t slot) const { return slot < m_gapBegin ? slot : slot - gap(); }
    /// All slots, those of the gap as well.
    const std::vector<T> &slots() const { return m_slots; }

    /// The elements without a gap. Where there was one, what stood behind it has moved.
    const std::vector<T> &closed()
    {
        if (gap() > 0)
            std::move(slot(m_gapEnd), m_slots.end(), slot(m_gapBegin));
        m_slots.resize(size());
        m_gapBegin = m_gapEnd = m_lastRoom = 0;
        return m_slots;
    }
    bool isClosed() const { return gap() == 0; }

    void assign(std::size_t count, const T &value) { *this = GapVector(std::vector<T>(count, value)); }
    /// Room for \a more elements, so that inserting them fails no more.
    void makeRoomFor(std::size_t more)
    {
        // Not exactly: who adds a few at a time would move all others each time.
        const std::size_t needed = m_slots.size() + more + nextRoom(more);
        if (needed > m_slots.capacity())
            m_slots.reserve(std::max(needed, m_slots.capacity() + m_slots.capacity() / 2));
    }

    /// Inserts elements so that each stands at its place afterwards: \a places ascend, \a element gives the
    /// value for the n-th of them.
    template <typename Places, typename Element> Moved insert(const Places &places, Element element)
    {
        const std::size_t count = places.size();
        const auto first = static_cast<std::size_t>(places.front());
        if (!isRun(places))
            return insertScattered(places, element);
        if (first == size()) {
            dropGapAtEnd();
            for (std::size_t i = 0; i < count; ++i)
                m_slots.push_back(element(i));
            return {};
        }
        const Moved moved = gap() < count ? widenGap(first, count) : moveGap(first);
        for (std::size_t i = 0; i < count; ++i)
            m_slots[m_gapBegin++] = element(i);
        return moved;
    }

    /// Takes the elements at \a places, which ascend, out and gives each to \a taken.
    template <typename Places, typename Taken> Moved erase(const Places &places, Taken taken)
    {
        const std::size_t count = places.size();
        const auto first = static_cast<std::size_t>(places.front());
        for (const auto place : places)
            taken(std::exchange((*this)[static_cast<std::size_t>(place)], T()));
        if (!isRun(places))
            return closeScattered(places);
        if (first + count == size() && first >= m_gapBegin) {
            dropGapAtEnd();
            m_slots.resize(m_slots.size() - count);
            return {};
        }
        Moved moved;
        if (first > m_gapBegin || isClosed())
            moved = moveGap(first);
        else if (first + count < m_gapBegin)
            moved = moveGap(first + count);
        // Now the gap lies in front of them, among them or behind them.
        m_gapEnd += first + count - m_gapBegin;
        m_gapBegin = first;
        constexpr std::size_t kFew = 64;
        if (gap() <= std::max(kFew, size()))
            return moved;
        const std::size_t behind = m_gapBegin;
        closed();
        return {std::min(behind, moved.count() ? moved.first : behind), m_slots.size()};
    }

private:
    std::size_t gap() const { return m_gapEnd - m_gapBegin; }
    auto slot(std::size_t at) { return m_slots.begin() + static_cast<std::ptrdiff_t>(at); }
    template <typename Places> static bool isRun(const Places &places)
    {
        return static_cast<std::size_t>(places.back() - places.front()) + 1 == places.size();
    }
    /// A gap that was too small is followed by one of twice the room, as long as one change follows the
    /// other.
    std::size_t nextRoom(std::size_t least) const
    {
        constexpr std::size_t kFewest = 32;
        return std::max({least, kFewest, 2 * m_lastRoom});
    }

    void dropGapAtEnd()
    {
        if (m_gapEnd == m_slots.size())
            m_slots.resize(m_gapBegin);
        if (m_gapBegin >= m_slots.size())
            m_gapBegin = m_gapEnd = 0;
    }

    /// Brings the gap in front of the element at \a place.
    Moved moveGap(std::size_t place)
    {
        Moved moved;
        if (isClosed()) {
            m_gapEnd = place;
        } else if (place < m_gapBegin) {
            std::move_backward(slot(place), slot(m_gapBegin), slot(m_gapEnd));
            moved = {place + gap(), m_gapEnd};
            m_gapEnd = moved.first;
        } else if (place > m_gapBegin) {
            std::move(slot(m_gapEnd), slot(place + gap()), slot(m_gapBegin));
            moved = {m_gapBegin, place};
            m_gapEnd = place + gap();
        }
        m_gapBegin = place;
        return moved;
    }

    /// The same, with room for \a count elements and more.
    Moved widenGap(std::size_t place, std::size_t count)
    {
        const std::size_t room = nextRoom(count);
        const Moved moved = moveGap(place);
        const std::size_t behind = m_slots.size();
        m_slots.resize(behind + room);
        std::move_backward(slot(m_gapEnd), slot(behind), m_slots.end());
        m_gapEnd += room;
        m_lastRoom = room;
        return {moved.count() ? std::min(moved.first, place) : place, m_slots.size()};
    }

    template <typename Places, typename Element> Moved insertScattered(const Places &places, Element element)
    {
        closed();
        std::size_t old = m_slots.size();
        std::size_t next = places.size();
        m_slots.resize(old + next);
        // From the end on, so that every element moves once.
        while (next > 0) {
            const std::size_t place = old + next - 1;
            if (static_cast<std::size_t>(places[next - 1]) == place)
                m_slots[place] = element(--next);
            else
                m_slots[place] = std::move(m_slots[--old]);
        }
        return {static_cast<std::size_t>(places.front()), m_slots.size()};
    }

    /// Closes up where the elements at \a places were, and the gap.
    template <typename Places> Moved closeScattered(const Places &places)
    {
        const std::size_t hadBegun = isClosed() ? m_slots.size() : m_gapBegin;
        closed();
        auto kept = slot(static_cast<std::size_t>(places.front()));
        for (std::size_t i = 0; i < places.size(); ++i) {
            const auto end =
                i + 1 < places.size() ? slot(static_cast<std::size_t>(places[i + 1])) : m_slots.end();
            kept = std::move(slot(static_cast<std::size_t>(places[i]) + 1), end, kept);
        }
        m_slots.erase(kept, m_slots.end());
        return {std::min(hadBegun, static_cast<std::size_t>(places.front())), m_slots.size()};
    }

    std::vector<T> m_slots;
    std::size_t m_gapBegin = 0;
    std::size_t m_gapEnd = 0;
    std::size_t m_lastRoom = 0;
};

} // namespace runebook
