#include "editing/problems/NameRelations.h"

#include "editing/problems/AnchorSides.h"

namespace runebook {

namespace {

SharedLists::Entry anchorOf(std::string_view text)
{
    const std::string_view plain = AnchorSides::plainAnchor(text);
    return {keyOfName(plain), keyOfName(AnchorSides::counterpart(plain))};
}

constexpr quint64 kCodeNames = 0x10000; // keys below are of names made of a code point

/// Most production names are made of a code point: they are counted in a column.
quint64 keyOfProduction(std::string_view name)
{
    constexpr std::size_t kLength = 7;
    if (name.size() == kLength && name.substr(0, 3) == "uni") {
        quint64 code = 0;
        for (const char c : name.substr(3)) {
            const bool isDigit = c >= '0' && c <= '9';
            if (!isDigit && !(c >= 'A' && c <= 'F'))
                return keyOfName(name);
            code = code << 4 | static_cast<quint64>(isDigit ? c - '0' : c - 'A' + 10);
        }
        if (code > 0)
            return code;
    }
    const quint64 key = keyOfName(name);
    return key && key < kCodeNames ? key + kCodeNames : key;
}

SharedLists::Entry markOf(std::string_view text)
{
    return {0, keyOfName(text)};
}

} // namespace

NameRelations::NameRelations()
    : m_marks(markOf, &m_names), m_anchors(anchorOf), m_circles(m_components), m_parts(m_components)
{
}

void NameRelations::assign(std::size_t count)
{
    m_nameKeys.assign(count, 0);
    m_productionKeys.assign(count, 0);
    m_codePoints.assign(count, 0);
    m_names.clear();
    m_productions.clear();
    m_codeNames.assign(kCodeNames, 0);
    m_repeatedCodeNames = 0;
    m_components.assign(count);
    m_marks.assign(count);
    m_altNames.assign(count);
    m_anchors.assign(count);
    m_circles.clear();
    m_parts.clear();
    m_missing = m_ambiguous = m_repeating = 0;
}

void NameRelations::insert(const IndexSet &places)
{
    m_nameKeys.insert(places, [](std::size_t) { return quint64(0); });
    m_productionKeys.insert(places, [](std::size_t) { return quint64(0); });
    m_codePoints.insert(places, [](std::size_t) { return quint32(0); });
    m_components.insert(places);
    m_marks.insert(places);
    m_altNames.insert(places);
    m_anchors.insert(places);
}

void NameRelations::erase(const IndexSet &places)
{
    m_nameKeys.erase(places, [](auto) {});
    m_productionKeys.erase(places, [](auto) {});
    m_codePoints.erase(places, [](auto) {});
    m_components.erase(places);
    m_marks.erase(places);
    m_altNames.erase(places);
    m_anchors.erase(places);
}

quint64 NameRelations::prepare(const VXGlyphInfo &info) const
{
    std::string buffer;
    const quint64 name = keyOfName(info.utf8(GlyphField::Name, buffer));
    m_names.prefetch(name);
    m_components.prefetch(name);
    m_altNames.prefetch(name);
    return name;
}

void NameRelations::set(std::size_t place, const VXGlyphInfo &info, quint64 name)
{
    std::string buffer;
    m_nameKeys[place] = name;
    addName(name);
    m_productionKeys[place] = keyOfProduction(info.utf8(GlyphField::Production, buffer));
    countProduction(m_productionKeys[place], 1);
    m_components.set(place, info.utf8(GlyphField::Decompose, buffer));
    m_marks.set(place, info.utf8(GlyphField::Marks, buffer));
    if (!info.stored(GlyphField::AltNames).isAbsent())
        m_altNames.set(place, info.utf8(GlyphField::AltNames, buffer));
    countEntries(place, 1);

    if (const quint32 number = m_components.numberAt(place))
        m_circles.add(name, number);
}

void NameRelations::setHints(std::size_t place, const VXGlyphInfo &info, std::optional<char32_t> codePoint)
{
    std::string buffer;
    m_anchors.set(place, info.utf8(GlyphField::Anchors, buffer));
    if (!codePoint)
        return;
    m_codePoints[place] = quint32(*codePoint) + 1;
    m_parts.addCharacter(m_nameKeys[place], *codePoint);
    if (const quint32 number = m_components.numberAt(place))
        m_parts.add(number, *codePoint);
}

void NameRelations::drop(std::size_t place)
{
    const quint64 name = std::exchange(m_nameKeys[place], 0);
    if (const quint32 number = m_components.numberAt(place)) {
        m_circles.remove(name, number);
        m_parts.remove(number);
    }
    if (const quint32 codePoint = std::exchange(m_codePoints[place], 0))
        m_parts.removeCharacter(name, codePoint - 1);
    m_anchors.drop(place);
    countEntries(place, -1);
    m_altNames.drop(place);
    m_marks.drop(place);
    m_components.drop(place);
    countProduction(std::exchange(m_productionKeys[place], 0), -1);
    removeName(name);
}

// What is mentioned is right or wrong by how many records have the name: that changes with the first and the
// second.

bool NameRelations::isWrong(ProblemKind kind, quint64 name) const
{
    if (!name)
        return false;
    const quint32 records = m_names.count(name);
    if (kind == ProblemKind::RepeatingAltName)
        return records > 0;
    return kind == ProblemKind::AmbiguousComponent ? records > 1 : records == 0;
}

void NameRelations::countEntries(std::size_t place, qsizetype sign)
{
    for (const quint64 name : m_components.at(place)) {
        if (!name)
            continue; // an empty text between two separators names nothing
        const quint32 records = m_names.count(name);
        m_missing += records == 0 ? sign : 0;
        m_ambiguous += records > 1 ? sign : 0;
    }
    for (const quint64 name : m_altNames.at(place))
        m_repeating += sign * isWrong(ProblemKind::RepeatingAltName, name);
}

void NameRelations::countProduction(quint64 key, int sign)
{
    if (!key)
        return;
    if (key < kCodeNames) {
        quint32 &count = m_codeNames[key];
        m_repeatedCodeNames -= count > 1 ? count : 0;
        count += static_cast<quint32>(sign);
        m_repeatedCodeNames += count > 1 ? count : 0;
    } else if (sign > 0) {
        m_productions.add(key);
    } else {
        m_productions.remove(key);
    }
}

quint32 NameRelations::productionCount(quint64 key) const
{
    return key == 0 ? 0 : key < kCodeNames ? m_codeNames[key] : m_productions.count(key);
}

quint32 NameRelations::productionCount(std::string_view production) const
{
    return productionCount(keyOfProduction(production));
}

void NameRelations::addName(quint64 name)
{
    if (!name)
        return;
    m_names.add(name);
    if (m_names.count(name) == 1) {
        m_missing -= m_components.count(name);
        m_marks.countAgain(name);
        m_repeating += m_altNames.count(name);
    } else if (m_names.count(name) == 2) {
        m_ambiguous += m_components.count(name);
    }
}

void NameRelations::removeName(quint64 name)
{
    if (!name)
        return;
    m_names.remove(name);
    if (m_names.count(name) == 0) {
        m_missing += m_components.count(name);
        m_marks.countAgain(name);
        m_repeating -= m_altNames.count(name);
    } else if (m_names.count(name) == 1) {
        m_ambiguous -= m_components.count(name);
    }
}

// Asking

bool NameRelations::knows(ProblemKind kind)
{
    switch (kind) {
    case ProblemKind::DuplicateName:
    case ProblemKind::RepeatingAltName:
    case ProblemKind::MissingComponent:
    case ProblemKind::AmbiguousComponent:
    case ProblemKind::CircularComponent:
    case ProblemKind::MissingMark:
    case ProblemKind::DuplicateProduction:
    case ProblemKind::UnicodeDecomposition:
    case ProblemKind::OneSidedAnchor:
        return true;
    default:
        return false;
    }
}

qsizetype NameRelations::count(ProblemKind kind) const
{
    switch (kind) {
    case ProblemKind::DuplicateName:
        return m_names.repeated();
    case ProblemKind::RepeatingAltName:
        return m_repeating;
    case ProblemKind::MissingComponent:
        return m_missing;
    case ProblemKind::AmbiguousComponent:
        return m_ambiguous;
    case ProblemKind::CircularComponent:
        return m_circles.count();
    case ProblemKind::MissingMark:
        return m_marks.unmet();
    case ProblemKind::DuplicateProduction:
        return m_productions.repeated() + m_repeatedCodeNames;
    case ProblemKind::UnicodeDecomposition:
        return m_parts.count();
    case ProblemKind::OneSidedAnchor:
        return m_anchors.unmet();
    default:
        return 0;
    }
}

const KeyLists *NameRelations::listsOf(ProblemKind kind) const
{
    switch (kind) {
    case ProblemKind::MissingComponent:
    case ProblemKind::AmbiguousComponent:
        return &m_components;
    case ProblemKind::RepeatingAltName:
        return &m_altNames;
    default:
        return nullptr;
    }
}

bool NameRelations::hasProblem(ProblemKind kind, std::size_t place) const
{
    if (const KeyLists *lists = listsOf(kind)) {
        const std::span<const quint64> names = lists->at(place);
        return std::any_of(names.begin(), names.end(), [&](quint64 name) { return isWrong(kind, name); });
    }
    const quint32 number = m_components.numberAt(place);
    switch (kind) {
    case ProblemKind::DuplicateName:
        return m_nameKeys[place] && m_names.count(m_nameKeys[place]) > 1;
    case ProblemKind::DuplicateProduction:
        return productionCount(m_productionKeys[place]) > 1;
    case ProblemKind::CircularComponent:
        return number && m_circles.isCircular(number);
    case ProblemKind::UnicodeDecomposition:
        return number && m_parts.isUnlike(number);
    case ProblemKind::OneSidedAnchor:
        return m_anchors.hasUnmet(place);
    case ProblemKind::MissingMark:
        return m_marks.hasUnmet(place);
    default:
        return false;
    }
}

void NameRelations::forEachPart(ProblemKind kind, std::size_t place,
                                const std::function<void(int)> &visit) const
{
    if (kind == ProblemKind::OneSidedAnchor) {
        m_anchors.forEachUnmet(place, visit);
        return;
    }
    if (kind == ProblemKind::MissingMark) {
        m_marks.forEachUnmet(place, visit);
        return;
    }
    const KeyLists *lists = listsOf(kind);
    if (!lists) {
        visit(0);
        return;
    }
    const std::span<const quint64> names = lists->at(place);
    for (std::size_t part = 0; part < names.size(); ++part) {
        if (isWrong(kind, names[part]))
            visit(static_cast<int>(part));
    }
}

} // namespace runebook
