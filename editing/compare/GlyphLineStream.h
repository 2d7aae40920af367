#pragma once

#include <QIODevice>
#include <string_view>
#include <vector>

namespace runebook {

inline constexpr std::string_view kGlyphLineStart = "<glyph ";

/// The lines of a glyph data file from the first glyph on, read in blocks into memory that is used again.
class GlyphLineStream
{
public:
    /// \a device must be open, and stay.
    explicit GlyphLineStream(QIODevice &device) : m_device(device) { }

    /// Reads on until the first glyph. False when there is none, or as fill() does.
    bool findFirstGlyph();
    /// Gathers further lines. False when the device fails, the text is not UTF-8, or a comment stands in it.
    bool fill();

    /// The whole lines gathered and not yet skipped; the last one of the file may lack its line feed. Valid
    /// until the next call of fill().
    std::string_view lines() const { return std::string_view(m_buffer.data(), m_complete).substr(m_skipped); }
    /// The next line, with its line feed.
    std::string_view line() const
    {
        const std::string_view rest = lines();
        const std::size_t feed = rest.find('\n');
        return feed == rest.npos ? rest : rest.substr(0, feed + 1);
    }
    void skip(std::size_t bytes) { m_skipped += bytes; }
    /// Whether fill() could gather more.
    bool canFill() const { return !m_isAtEnd; }

private:
    bool readMore();

    QIODevice &m_device;
    std::vector<char> m_buffer;
    std::size_t m_size = 0; ///< bytes in the buffer
    std::size_t m_complete = 0; ///< of them, those of whole lines
    std::size_t m_skipped = 0; ///< of these, those that are done with
    bool m_isAtEnd = false;
    bool m_isInBody = false;
};

} // namespace runebook
