#include "scripting/python/PropertyListLimits.h"

#include <QByteArrayView>

namespace runebook {

namespace {

constexpr int kMaxDepth = 32;
constexpr int kMaxElements = 200'000;
constexpr int kMaxNumberSize = 8;

/// Finds how deep the elements of an XML property list are nested. Where it could understand something else
/// than the parser, in quoted attributes, in a document type with declarations, it says no.
class XmlWalk
{
public:
    explicit XmlWalk(QByteArrayView text) : m_text(text) { }

    bool isHarmless()
    {
        while ((m_at = m_text.indexOf('<', m_at)) >= 0) {
            const QByteArrayView rest = m_text.sliced(m_at);
            const bool isPassed = rest.startsWith("<!--") ? skipTo("-->")
                : rest.startsWith("<![CDATA[")            ? skipTo("]]>")
                : rest.startsWith("<?")                   ? skipTo("?>")
                : rest.startsWith("<!")                   ? passDocumentType()
                                                          : passTag();
            if (!isPassed)
                return false;
        }
        return true;
    }

private:
    bool skipTo(QByteArrayView end)
    {
        const qsizetype place = m_text.indexOf(end, m_at);
        m_at = place + end.size();
        return place >= 0;
    }

    bool passDocumentType()
    {
        const qsizetype end = m_text.indexOf('>', m_at);
        const bool isPlain = end >= 0 && m_depth == 0 && !m_text.sliced(m_at, end - m_at).contains('[');
        m_at = end + 1;
        return isPlain;
    }

    bool passTag()
    {
        const qsizetype end = m_text.indexOf('>', m_at);
        if (end < 0)
            return false;
        const QByteArrayView tag = m_text.sliced(m_at + 1, end - m_at - 1);
        m_at = end + 1;
        if (tag.contains('<') || (!tag.startsWith("plist") && (tag.contains('"') || tag.contains('\''))))
            return false;
        if (tag.startsWith('/'))
            m_depth = qMax(0, m_depth - 1);
        else if (!tag.endsWith('/'))
            ++m_depth;
        return m_depth <= kMaxDepth && ++m_elements <= kMaxElements;
    }

    QByteArrayView m_text;
    qsizetype m_at = 0;
    int m_depth = 0;
    int m_elements = 0;
};

/// Follows the references of a binary property list as the parser does, but not for long.
class BinaryWalk
{
public:
    explicit BinaryWalk(QByteArrayView bytes) : m_bytes(bytes) { }

    bool isHarmless()
    {
        constexpr qsizetype kTrailer = 32;
        if (m_bytes.size() < kTrailer + qsizetype(sizeof "bplist00") - 1)
            return true; // too short to be one
        const qsizetype trailer = m_bytes.size() - kTrailer;
        m_offsetSize = static_cast<uchar>(m_bytes[trailer + 6]);
        m_referenceSize = static_cast<uchar>(m_bytes[trailer + 7]);
        if (m_offsetSize > kMaxNumberSize || m_referenceSize > kMaxNumberSize)
            return false;
        m_objects = number(trailer + 8, 8);
        m_table = number(trailer + 24, 8);
        return visit(number(trailer + 16, 8), 0);
    }

private:
    /// The number in \a size bytes, highest first; 0 beyond the end.
    quint64 number(quint64 place, int size) const
    {
        const auto length = static_cast<quint64>(m_bytes.size());
        quint64 value = 0;
        if (place >= length || length - place < static_cast<quint64>(size))
            return 0;
        for (int i = 0; i < size; ++i)
            value = value << 8 | static_cast<uchar>(m_bytes[static_cast<qsizetype>(place) + i]);
        return value;
    }

    bool visit(quint64 object, int depth)
    {
        if (depth > kMaxDepth || ++m_elements > kMaxElements)
            return false;
        if (object >= m_objects)
            return true;
        quint64 place = number(m_table + object * static_cast<quint64>(m_offsetSize), m_offsetSize);
        const quint64 marker = number(place++, 1);
        const quint64 kind = marker >> 4;
        const bool isDictionary = kind == 0xD;
        if (kind != 0xA && kind != 0xC && !isDictionary)
            return true;
        quint64 count = marker & 0xF;
        if (count == 0xF) {
            const int size = 1 << (number(place++, 1) & 0xF);
            if (size > kMaxNumberSize)
                return false;
            count = number(place, size);
            place += static_cast<quint64>(size);
        }
        if (count > static_cast<quint64>(kMaxElements))
            return false;
        if (isDictionary)
            count *= 2;
        for (quint64 i = 0; i < count; ++i) {
            if (!visit(number(place + i * static_cast<quint64>(m_referenceSize), m_referenceSize), depth + 1))
                return false;
        }
        return true;
    }

    QByteArrayView m_bytes;
    int m_offsetSize = 0;
    int m_referenceSize = 0;
    quint64 m_objects = 0;
    quint64 m_table = 0;
    int m_elements = 0;
};

} // namespace

bool isHarmlessPropertyList(const QByteArray &bytes)
{
    return bytes.startsWith("bplist") ? BinaryWalk(bytes).isHarmless() : XmlWalk(bytes).isHarmless();
}

} // namespace runebook
