#pragma once

#include "editing/problems/CharacterParts.h"
#include "editing/problems/ComponentCircles.h"
#include "editing/problems/KeyLists.h"
#include "editing/problems/Problem.h"
#include "editing/problems/SharedLists.h"
#include "platform/IndexSet.h"

#include <functional>
#include <optional>

namespace runebook {

/// Follows names across the records of a list: who has a name, who mentions it among components, marks and
/// alternate names, whose anchors meet; and counts what is wrong with that. By the record's place; knows no
/// document.
class NameRelations
{
public:
    NameRelations();
    Q_DISABLE_COPY_MOVE(NameRelations)
    void assign(std::size_t count);
    void insert(const IndexSet &places);
    void erase(const IndexSet &places);
    /// Where nothing is: what \a info mentions.
    /// \a name is its prepared key.
    void set(std::size_t place, const VXGlyphInfo &info, quint64 name);
    /// Of a record that has been set: what hints need. Its first code point; nothing for none.
    void setHints(std::size_t place, const VXGlyphInfo &info, std::optional<char32_t> codePoint);
    void drop(std::size_t place);
    /// The key of a name that comes next.
    quint64 prepare(const VXGlyphInfo &info) const;
    /// After the last set() and drop() of a change.
    void update() { m_circles.update(); }

    /// Whether a kind is one of those that are answered here.
    static bool knows(ProblemKind kind);
    qsizetype count(ProblemKind kind) const;
    bool hasProblem(ProblemKind kind, std::size_t place) const;
    /// Calls \a visit with each part of the record that has a problem of \a kind.
    void forEachPart(ProblemKind kind, std::size_t place, const std::function<void(int)> &visit) const;

    const KeyCounts &names() const { return m_names; }
    /// How many records have a production name.
    quint32 productionCount(std::string_view production) const;

private:
    const KeyLists *listsOf(ProblemKind kind) const;
    bool isWrong(ProblemKind kind, quint64 name) const;
    void countEntries(std::size_t place, qsizetype sign);
    quint32 productionCount(quint64 key) const;
    void countProduction(quint64 key, int sign);
    void addName(quint64 name);
    void removeName(quint64 name);

    GapVector<quint64> m_nameKeys; ///< 0: none
    GapVector<quint64> m_productionKeys;
    GapVector<quint32> m_codePoints; ///< one more than the first; 0 for none
    KeyCounts m_names;
    KeyCounts m_productions;
    std::vector<quint32> m_codeNames; ///< how many records have each production name of the form "uni4E00"
    qsizetype m_repeatedCodeNames = 0;
    KeyLists m_components;
    KeyLists m_altNames;
    SharedLists m_marks;
    SharedLists m_anchors;
    ComponentCircles m_circles;
    CharacterParts m_parts;
    qsizetype m_missing = 0; ///< components that name no record
    qsizetype m_ambiguous = 0; ///< that name several
    qsizetype m_repeating = 0; ///< alternate names that some record has as its name
};

} // namespace runebook
