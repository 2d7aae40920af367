#include "editing/problems/CharacterParts.h"

#include "model/CharacterNames.h"
#include "model/UnicodeData.h"

#include <algorithm>

namespace runebook {

namespace {

bool isAnyPart(char32_t codePoint)
{
    static const std::vector<char32_t> parts = UnicodeData::shared().allCanonicalParts();
    return std::binary_search(parts.begin(), parts.end(), codePoint);
}

} // namespace

bool CharacterParts::isComposed(char32_t codePoint)
{
    return codePoint >= 0xC0 && UnicodeData::shared().hasCanonicalDecomposition(codePoint);
}

bool CharacterParts::isPartOf(char32_t part, char32_t codePoint)
{
    constexpr char32_t kCommaBelow = 0x326, kTurnedCommaAbove = 0x312;
    const UnicodeData &data = UnicodeData::shared();
    if (data.hasPart(codePoint, part))
        return true;
    if (data.category(part).startsWith(u'S'))
        return true; // an accent that stands alone may be drawn onto a letter
    const std::vector<char32_t> whole = data.canonicalParts(codePoint);
    const std::vector<char32_t> parts = data.canonicalParts(part);
    return std::all_of(parts.begin(), parts.end(), [&](char32_t each) {
        return std::find(whole.begin(), whole.end(), each) != whole.end()
            || (hasCommaForCedilla(codePoint) && (each == kCommaBelow || each == kTurnedCommaAbove));
    });
}

void CharacterParts::clear()
{
    m_characters.clear();
    m_composed.clear();
    m_users.clear();
    m_unlike.clear();
}

void CharacterParts::addCharacter(quint64 name, char32_t codePoint)
{
    if (!name || !isAnyPart(codePoint))
        return;
    m_characters[name].push_back(codePoint);
    judgeUsers(name);
}

void CharacterParts::removeCharacter(quint64 name, char32_t codePoint)
{
    const auto found = m_characters.find(name);
    if (found == m_characters.end())
        return;
    const auto place = std::find(found->second.begin(), found->second.end(), codePoint);
    if (place == found->second.end())
        return;
    found->second.erase(place);
    if (found->second.empty())
        m_characters.erase(found);
    judgeUsers(name);
}

void CharacterParts::add(quint32 number, char32_t codePoint)
{
    if (!isComposed(codePoint))
        return;
    m_composed[number] = codePoint;
    for (const quint64 name : m_components.list(number))
        m_users[name].push_back(number);
    judge(number);
}

void CharacterParts::remove(quint32 number)
{
    if (m_composed.erase(number) == 0)
        return;
    for (const quint64 name : m_components.list(number)) {
        const auto users = m_users.find(name);
        if (users == m_users.end())
            continue;
        std::erase(users->second, number);
        if (users->second.empty())
            m_users.erase(users);
    }
    m_unlike.erase(number);
}

void CharacterParts::judgeUsers(quint64 name)
{
    const auto users = m_users.find(name);
    if (users == m_users.end())
        return;
    for (const quint32 number : users->second)
        judge(number);
}

void CharacterParts::judge(quint32 number)
{
    const char32_t codePoint = m_composed.at(number);
    const auto isForeign = [&](quint64 name) {
        const auto found = m_characters.find(name);
        return found != m_characters.end()
            && std::none_of(found->second.begin(), found->second.end(),
                            [&](char32_t part) { return isPartOf(part, codePoint); });
    };
    const std::span<const quint64> components = m_components.list(number);
    if (std::any_of(components.begin(), components.end(), isForeign))
        m_unlike.insert(number);
    else
        m_unlike.erase(number);
}

} // namespace runebook
