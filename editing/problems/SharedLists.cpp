#include "editing/problems/SharedLists.h"

#include "editing/problems/RecordTexts.h"

#include <algorithm>

namespace runebook {

void SharedLists::assign(std::size_t count)
{
    m_numbers.assign(count, 0);
    m_lists.assign(1, {});
    m_byText.clear();
    m_wanting.clear();
    m_free.clear();
    m_sides.clear();
    m_unmet = 0;
}

quint32 SharedLists::numberOf(std::string_view text)
{
    quint32 &number = m_byText[keyOfName(text)];
    if (number)
        return number;
    if (m_free.empty()) {
        m_free.push_back(static_cast<quint32>(m_lists.size()));
        m_lists.emplace_back();
    }
    number = m_free.back();
    m_free.pop_back();
    List &list = m_lists[number];
    list = {};
    list.key = keyOfName(text);
    forEachEntry(text, [&](std::string_view entry) { list.entries.push_back(m_makeEntry(entry)); });
    addSides(number);
    return number;
}

void SharedLists::countUnmet(List &list) const
{
    list.unmet = std::count_if(list.entries.begin(), list.entries.end(),
                               [this](const Entry &entry) { return isUnmet(entry); });
}

void SharedLists::countAgain(quint64 other)
{
    const auto lists = m_wanting.find(other);
    if (lists == m_wanting.end())
        return;
    for (const quint32 number : lists->second) {
        List &list = m_lists[number];
        m_unmet -= list.records * list.unmet;
        countUnmet(list);
        m_unmet += list.records * list.unmet;
    }
}

void SharedLists::addSides(quint32 number)
{
    for (const Entry &entry : m_lists[number].entries) {
        if (entry.other)
            m_wanting[entry.other].insert(number);
        if (!entry.own)
            continue;
        m_sides.add(entry.own);
        if (m_sides.count(entry.own) == 1)
            countAgain(entry.own);
    }
    countUnmet(m_lists[number]);
}

void SharedLists::removeSides(quint32 number)
{
    for (const Entry &entry : m_lists[number].entries) {
        if (const auto lists = m_wanting.find(entry.other); lists != m_wanting.end()) {
            lists->second.erase(number);
            if (lists->second.empty())
                m_wanting.erase(lists);
        }
        if (!entry.own)
            continue;
        m_sides.remove(entry.own);
        if (m_sides.count(entry.own) == 0)
            countAgain(entry.own);
    }
}

void SharedLists::set(std::size_t place, std::string_view text)
{
    if (text.empty())
        return;
    m_numbers[place] = numberOf(text);
    List &list = m_lists[m_numbers[place]];
    ++list.records;
    m_unmet += list.unmet;
}

void SharedLists::drop(std::size_t place)
{
    const quint32 number = std::exchange(m_numbers[place], 0);
    if (number == 0)
        return;
    m_unmet -= m_lists[number].unmet;
    if (--m_lists[number].records > 0)
        return;
    removeSides(number);
    m_byText.erase(m_lists[number].key);
    m_lists[number] = {};
    m_free.push_back(number);
}

} // namespace runebook
