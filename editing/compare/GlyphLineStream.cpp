#include "editing/compare/GlyphLineStream.h"

#include <QUtf8StringView>
#include <cstring>

namespace runebook {

namespace {

/// Small enough to stay in the processor's cache, together with its like of the other file.
constexpr std::size_t kBlock = 256 * 1024;

} // namespace

bool GlyphLineStream::readMore()
{
    m_buffer.resize(std::max(m_buffer.size(), m_size + kBlock));
    const qint64 count =
        m_device.read(m_buffer.data() + m_size, static_cast<qint64>(m_buffer.size() - m_size));
    if (count < 0)
        return false;
    m_isAtEnd = count == 0;
    m_size += static_cast<std::size_t>(count);
    return true;
}

bool GlyphLineStream::fill()
{
    if (m_isAtEnd)
        return true;
    if (m_skipped > 0) {
        m_size -= m_skipped;
        m_complete -= m_skipped;
        std::memmove(m_buffer.data(), m_buffer.data() + m_skipped, m_size);
        m_skipped = 0;
    }

    const std::size_t known = m_complete;
    do {
        const std::size_t before = m_size;
        if (!readMore())
            return false;
        const std::string_view added(m_buffer.data() + before, m_size - before);
        const std::size_t feed = added.rfind('\n');
        if (m_isAtEnd)
            m_complete = m_size;
        else if (feed != added.npos)
            m_complete = before + feed + 1;
    } while (m_complete == known && !m_isAtEnd);

    const std::string_view fresh(m_buffer.data() + known, m_complete - known);
    return QUtf8StringView(fresh.data(), static_cast<qsizetype>(fresh.size())).isValidUtf8()
        && (!m_isInBody || fresh.find("<!--") == fresh.npos);
}

bool GlyphLineStream::findFirstGlyph()
{
    for (;;) {
        const std::string_view rest = lines();
        const std::size_t glyph = rest.find(kGlyphLineStart);
        if (glyph != rest.npos) {
            skip(glyph);
            m_isInBody = true;
            return lines().find("<!--") == rest.npos;
        }
        skip(rest.size());
        if (m_isAtEnd || !fill())
            return false;
    }
}

} // namespace runebook
