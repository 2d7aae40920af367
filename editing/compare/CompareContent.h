#pragma once

#include "editing/compare/CompareKeys.h"
#include "editing/compare/CompareOptions.h"
#include "editing/compare/KeyCounts.h"

#include <QSet>
#include <array>
#include <chrono>

namespace runebook {

/// What the two panes show of one field of any number of records, found step by step: its first distinct
/// values on each side, and whether the sets of its values differ. The lists must stay as they are.
class FieldContent
{
public:
    /// The first distinct values, in the order of the records.
    struct Values {
        QStringList texts;
        QSet<int> choices; ///< of case and direction instead
        bool hasMore = false;
    };

    FieldContent(GlyphField field, const InfoList &left, const InfoList &right,
                 const CompareOptions &options = {});

    /// Looks at about \a count further records; true when everything is known.
    bool advance(std::size_t count);
    void finish();
    GlyphField field() const { return m_field; }
    const Values &left() const { return m_values[0]; }
    const Values &right() const { return m_values[1]; }
    /// Whether the distinct values over one list are others than over the other, whatever is overlooked left
    /// out. A list without any value has no set of them; two such lists do not differ.
    bool differs() const { return m_differs; }
    /// Whether a side has no record at all.
    bool isOneSided() const { return m_lists[0]->empty() || m_lists[1]->empty(); }

private:
    enum class Step { ShownLeft, ShownRight, InTurn, LeftSet, RightSet, Done };

    void lookAt(std::size_t place);
    bool show(std::size_t side, const VXGlyphInfo &info);
    const InfoList &walked() const;
    void goTo(Step step);
    void conclude(bool differs);

    GlyphField m_field;
    std::array<const InfoList *, 2> m_lists;
    CompareOptions m_options;
    std::array<Values, 2> m_values;
    Step m_step = Step::ShownLeft;
    std::size_t m_next = 0;
    std::string m_last;
    std::string m_buffer;
    std::string m_otherBuffer;
    // Values are compared by their hashes: two that differ have the same one less than once in a billion
    // documents, and then a caption is not coloured.
    KeyCounts m_leftSet;
    KeyCounts m_rightSet;
    bool m_differs = false;
};

/// What is shown of two lists, in the order of comparedFields(). The lists must stay as they are.
std::vector<FieldContent> contentOf(const InfoList &left, const InfoList &right,
                                    const CompareOptions &options = {});
/// FieldContent::differs() of one field.
bool valuesDiffer(const InfoList &values, const InfoList &others, GlyphField field);

/// The records of very many selected keys and what is shown of them, found in slices. The lists must stay as
/// they are until all is known.
class CompareContent
{
public:
    /// A side without a document has no list.
    CompareContent(QStringList keys, CompareKey key, const InfoList *left, const InfoList *right,
                   const CompareOptions &options = {});

    /// Works for about so long; true when everything is known.
    bool runFor(std::chrono::milliseconds budget);
    const InfoList &left() const { return m_found[0]; }
    const InfoList &right() const { return m_found[1]; }
    /// Gives the lists away, when all is known.
    InfoList takeLeft() { return std::move(m_found[0]); }
    InfoList takeRight() { return std::move(m_found[1]); }
    /// In the order of comparedFields().
    const std::vector<FieldContent> &fields() const { return m_fields; }

private:
    bool advance(std::size_t count);
    bool findRecords(std::size_t side, std::size_t count);
    bool isWanted(const VXGlyphInfo &info);

    QStringList m_keys;
    CompareKey m_key;
    std::array<const InfoList *, 2> m_lists;
    CompareOptions m_options;
    KeyTable m_places; ///< by the hash of a key its place in the list, from 1
    qsizetype m_entered = 0;
    std::array<std::size_t, 2> m_next {};
    std::array<InfoList, 2> m_found;
    std::vector<FieldContent> m_fields;
    std::string m_buffer;
};

} // namespace runebook
