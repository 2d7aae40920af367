#pragma once

#include "model/VXGlyphInfo.h"

#include <span>
#include <string>

namespace runebook {

/// Finds the values that would not come back from a file: prints records as a file of one version holds them
/// and has the reader read that again. What a file cannot hold is thus decided by the writer and the reader
/// themselves.
///
/// A record without a name and the third and further code points are left out; they are known to be lost.
class RoundTrip
{
public:
    enum class Outcome : quint8 {
        Same,
        Broken, ///< a double quote or a line break ends a value early
        Changed, ///< a value comes back as another one, or spoils the lines behind it
    };
    /// A field and what it would be after saving and reading; null when nothing would be left of it.
    struct Loss {
        GlyphField field;
        QString after;
    };

    explicit RoundTrip(int fileVersion) : m_fileVersion(fileVersion) { }

    /// One outcome for each of \a infos. Cheap for records that were not changed since they were read; about
    /// the price of writing and reading for the others.
    void check(std::span<VXGlyphInfo *const> infos, std::vector<Outcome> &outcomes);
    /// The fields that a save would change, for people.
    std::vector<Loss> losses(const VXGlyphInfo &info) const;

    /// Whether a value of the record holds a double quote or a line break.
    static bool hasQuoteOrBreak(const VXGlyphInfo &info, GlyphField field);
    /// The fields whose values are texts or lists and stand in files.
    static std::span<const GlyphField> writtenFields();

private:
    struct Line {
        std::size_t record;
        std::size_t begin;
        std::size_t end; ///< of the line feed
    };

    int m_fileVersion;
    std::string m_text;
    std::vector<Line> m_lines;
};

} // namespace runebook
