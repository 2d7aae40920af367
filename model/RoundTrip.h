#pragma once

#include "model/VXGlyphInfo.h"

#include <span>
#include <string>

namespace runebook {

/// Finds the values that would not come back from a file: prints records as a file of one version holds them
/// and has the reader read that again. What a file cannot hold is thus decided by the writer and the reader
/// themselves.
///
/// A record without a name and the third and further code points are left out, as known to be lost, unless
/// all is asked for.
class RoundTrip
{
public:
    enum class Outcome : quint8 {
        Same,
        Broken, ///< a double quote or a line break ends a value early
        Changed, ///< a value comes back as another one
        TakesOthers, ///< a mark of a comment: may hide the records around it, so no file gets it
    };
    /// A field and what it would be after saving and reading; null when nothing would be left of it.
    struct Loss {
        GlyphField field;
        QString after;
    };

    enum class Of { Values, Everything };

    explicit RoundTrip(int fileVersion, Of of = Of::Values) : m_fileVersion(fileVersion), m_of(of) { }

    /// One outcome for each of \a infos. Cheap for records that were not changed since they were read; about
    /// the price of writing and reading for the others.
    void check(std::span<VXGlyphInfo *const> infos, std::vector<Outcome> &outcomes);
    /// The fields that a save would change, for people.
    std::vector<Loss> losses(const VXGlyphInfo &info) const;

    /// Whether a value of the record holds a double quote or a line break.
    static bool hasQuoteOrBreak(const VXGlyphInfo &info, GlyphField field);
    /// Whether a value of \a field may not be written, since other records would go with it. A "-->" that
    /// stands in the bytes that were read has proved harmless.
    static bool takesOthers(const VXGlyphInfo &info, GlyphField field);
    /// Whether a value is so long that looking at the record takes longer than a key may wait: such records
    /// are looked at when they are saved.
    static bool isVeryLong(const VXGlyphInfo &info);
    /// The fields whose values are texts or lists and stand in files.
    static std::span<const GlyphField> writtenFields();

private:
    struct Line {
        std::size_t record;
        std::size_t begin;
        std::size_t end; ///< of the line feed
    };

    bool isSame(const VXGlyphInfo &a, const VXGlyphInfo &b, GlyphField field) const;
    bool isSameRecord(const VXGlyphInfo &a, const VXGlyphInfo &b) const;
    bool isSameList(const VXGlyphInfo &a, const VXGlyphInfo &b, GlyphField field) const;

    int m_fileVersion;
    Of m_of;
    std::string m_text;
    std::vector<Line> m_lines;
};

} // namespace runebook
