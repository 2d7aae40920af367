#pragma once

#include "editing/problems/KeyLists.h"

#include <unordered_map>
#include <unordered_set>

namespace runebook {

/// Which compositions have a component that is no part of their character, by what Unicode says it is
/// canonically made of: "eacute" of "a" and "acutecomb". Components are characters by the records of their
/// names; one of which nothing can be told is none to complain of, such as a dotless form.
class CharacterParts
{
public:
    explicit CharacterParts(const KeyLists &components) : m_components(components) { }
    void clear();

    /// A record of that name has the code point; again it has not.
    void addCharacter(quint64 name, char32_t codePoint);
    void removeCharacter(quint64 name, char32_t codePoint);
    /// The composition \a number belongs to a record with the code point; again to none.
    void add(quint32 number, char32_t codePoint);
    void remove(quint32 number);

    qsizetype count() const { return static_cast<qsizetype>(m_unlike.size()); }
    bool isUnlike(quint32 number) const { return m_unlike.contains(number); }
    /// Whether a character may stand in the composition of another.
    static bool isPartOf(char32_t part, char32_t codePoint);
    /// Whether a character has a canonical decomposition.
    static bool isComposed(char32_t codePoint);

private:
    void judge(quint32 number);
    void judgeUsers(quint64 name);

    const KeyLists &m_components;
    std::unordered_map<quint64, std::vector<char32_t>> m_characters; ///< those that are parts of others
    std::unordered_map<quint32, char32_t> m_composed;
    std::unordered_map<quint64, std::vector<quint32>> m_users;
    std::unordered_set<quint32> m_unlike;
};

} // namespace runebook
