#pragma once

#include "document/VXDocument.h"
#include "editing/search/RecordBits.h"
#include "editing/search/SearchKey.h"
#include "platform/TextFolding.h"
#include "platform/predicates/PredicateNodes.h"

#include <string>
#include <string_view>
#include <vector>

namespace runebook {

/// The texts that a number of records have under one key, folded alike, in one run of bytes: each text is
/// followed by a byte that UTF-8 does not have, so that a search through the run never finds something across
/// two of them. A list gives all its texts, a number its digits, an absent or empty value nothing.
class SearchTexts
{
public: // making
    SearchTexts(SearchKey key, Folding folding);
    void reserve(std::size_t records);
    void append(const VXGlyphInfo &info);
    void clear();
    /// Whether the record's texts are so long that a key may not wait for them: appendPart() takes them.
    bool areLong(const VXGlyphInfo &info) const;
    /// Takes a part of such a record's texts; true with the last. Until then they are not counted, and the
    /// record is the one with which this began, as it was then.
    bool appendPart(const VXGlyphInfo &info);
    /// Whether such a part was taken that was not the last.
    bool isOpen() const { return !m_open.isAbsent(); }
    /// How many of \a records were appended, from 0 to 1, with the part of the one that is open.
    double shareOf(std::size_t records) const;
    /// Whether moving all of this takes longer than a key may wait.
    bool areMany() const { return m_bytes.size() > (std::size_t(1) << 25); }

public: // following a list; linear in its length
    /// The records that now stand at \a places of \a infos are new.
    void insert(const IndexSet &places, const InfoList &infos);
    /// The records that stood at \a places went.
    void remove(const IndexSet &places);

public: // asking
    SearchKey key() const { return m_key; }
    Folding folding() const { return m_folding; }
    /// How many records were appended.
    std::size_t count() const { return m_starts.size() - 1; }
    /// Calls \a visit with each text of the record at a place, folded.
    template <typename Visit> void forEachText(std::size_t record, Visit visit) const
    {
        for (std::size_t at = m_starts[record]; at < m_starts[record + 1];) {
            const std::size_t end = m_bytes.find(kSeparator, at);
            visit(std::string_view(m_bytes).substr(at, end - at));
            at = end + 1;
        }
    }
    /// The records that pass. The folding of the test must be the same; a range needs none.
    RecordBits passing(const TextTest &test) const;
    RecordBits passing(const ListTest &test) const;
    RecordBits passing(const HexRangeTest &test) const;

private:
    static constexpr char kSeparator = '\xFF';

    void appendText(std::string_view utf8);
    void appendText(const QString &text);
    void appendValue(const VXGlyphInfo &info);
    bool takeStretch();
    bool takeEntries();
    void close();
    void appendRun(const SearchTexts &other, std::size_t first, std::size_t last);
    RecordBits recordsWithText() const;
    RecordBits recordsWith(const std::string &bytes, std::size_t lead) const;
    template <typename Accepts> RecordBits recordsWithAny(Accepts accepts) const;

    SearchKey m_key;
    Folding m_folding;
    std::string m_bytes; ///< begins with a separator, so that every text stands between two
    FieldValue m_open; ///< the value of which a part was taken
    SourcePtr m_openSource; ///< what it lies in
    std::size_t m_taken = 0; ///< of it: bytes, units, or entries
    std::vector<std::size_t> m_starts; ///< where each record's texts begin; one more for the end
};

} // namespace runebook
