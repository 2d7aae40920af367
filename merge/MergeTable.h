#pragma once

#include "model/CompareKey.h"
#include "platform/Error.h"

#include <QByteArray>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace runebook {

class MergeProgress;

/// A place among the records of a table.
using MergePlace = quint32;
inline constexpr MergePlace kNoPlace = ~MergePlace(0);

/// One side of a merge: the records of a glyph data file in their order, where the line of each stands, and
/// by which key it is known. Nothing is read but keys; the bytes of lines say whether records are the same.
/// What stands between records (header, comments, other lines) belongs to the record that follows it.
class MergeTable
{
public: // making
    /// Takes the text of a file apart; a blank one is a table without records. Nothing and an error (domain
    /// "MergeError") for a text whose lines cannot be merged one by one: no glyph data, one with unresolved
    /// conflicts, a comment that goes on behind a glyph, a glyph that does not stand on a line of its own.
    /// \a share is what \a progress advances by until the end; where that is cancelled, there is nothing.
    static std::optional<MergeTable> of(const QByteArray &utf8, CompareKey key, Error *error = nullptr,
                                        MergeProgress *progress = nullptr, double share = 0);

public: // asking for records
    MergePlace count() const { return MergePlace(m_lines.size()); }
    /// The bytes of the line, without its end.
    std::string_view line(MergePlace place) const
    {
        return {m_text.data() + m_lines[place].begin, m_lines[place].size};
    }
    /// The same with its end, which the last line of a file may lack.
    std::string_view wholeLine(MergePlace place) const
    {
        return {m_text.data() + m_lines[place].begin, std::size_t(m_lines[place].size) + m_lines[place].end};
    }
    std::string_view key(MergePlace place) const;
    /// Whether the records of two tables are known by the same key: those that lack it are known by name.
    bool hasKeyOf(MergePlace place, const MergeTable &other, MergePlace otherPlace) const;
    /// The first record with the key that \a record of \a other has.
    MergePlace find(const MergeTable &other, MergePlace record) const;
    /// For each key that several records have, those records in their order.
    const std::vector<std::vector<MergePlace>> &repeated() const { return m_repeated; }
    /// The records of such a key by the first of them; null for any other record.
    const std::vector<MergePlace> *repeatedFrom(MergePlace first) const
    {
        const auto group = m_groups.find(first);
        return group == m_groups.end() ? nullptr : &m_repeated[group->second];
    }

public: // asking for the rest
    /// The lines between the record and the one before it or the header.
    std::string_view gapBefore(MergePlace place) const;
    /// Whether such lines are there anywhere.
    bool hasGaps() const { return m_hasGaps; }
    /// What stands before all that, as far as the line that begins the list.
    std::string_view header() const { return m_text.substr(0, m_headerEnd); }
    /// What stands behind the last record.
    std::string_view tail() const;
    /// The version that the header tells; 0 where it does not.
    quint8 headerVersion() const;
    /// "\n" or "\r\n", as the first line has it; empty for a text without lines.
    std::string_view lineEnd() const { return m_lineEnd; }
    const QByteArray &bytes() const { return m_bytes; }

private:
    struct Line {
        quint64 begin;
        quint32 size;
        quint32 hash; ///< of the key
        /// Of the key in the line, or the number of one that stands in m_ownKeys.
        quint32 keyBegin;
        quint32 keySize : 28;
        quint32 end : 2; ///< bytes of the line end
        quint32 isOwnKey : 1;
        quint32 isByName : 1; ///< the record has no such key
    };
    class Scan;

    void indexKeys();
    quint64 endOf(MergePlace place) const
    {
        return m_lines[place].begin + m_lines[place].size + m_lines[place].end;
    }

    QByteArray m_bytes;
    std::string_view m_text; ///< of m_bytes
    std::vector<Line> m_lines;
    std::deque<std::string> m_ownKeys;
    std::vector<MergePlace> m_slots; ///< places by the hash of their key
    std::vector<std::vector<MergePlace>> m_repeated;
    std::unordered_map<MergePlace, std::size_t> m_groups; ///< by their first record
    std::string_view m_lineEnd;
    std::size_t m_headerEnd = 0;
    bool m_hasGaps = false;
};

} // namespace runebook
