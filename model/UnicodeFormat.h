#pragma once

#include <QByteArray>
#include <QtEndian>
#include <array>

/// How the data of characters lie in the file that ships with the program: what runebook-make-unicode writes and
/// UnicodeData reads. A head, then the tables one behind the other; all numbers little-endian.
namespace runebook::UnicodeFormat {

inline constexpr char kFileName[] = "unicode.dat";
inline constexpr quint32 kMagic = 0x31445552; // "RUD1"

enum Table : quint8 {
    TextBytes, ///< words of the vocabularies, one behind the other
    TextStarts, ///< u32 each, one more than there are texts
    WordBytes, ///< words of names, ascending
    WordStarts,
    NameCodes, ///< u32: code point, kAliasBit for a further name; ascending
    NameStarts, ///< u32 into the tokens, one more than there are names
    NameTokens, ///< of each name: word * 2 + 1 behind a hyphen, else word * 2; seven bits a byte, lowest first
    NameOrder, ///< u16: the names in the order of their tokens' bytes
    RuleNames, ///< first, last, text: the name is the text and the code point
    RunStarts, ///< u32: where characters of one kind begin
    RunKinds, ///< u16 for each run
    Kinds, ///< u16 each: texts of category, bidi class and script; combining class * 2, + 1 when mirrored
    Blocks, ///< first, last, text
    Cases, ///< code point, upper, lower, title
    Decompositions, ///< code point, text of the tag, first and number of the parts
    Parts, ///< u32: code points
    TableCount
};

inline constexpr quint32 kAliasBit = 0x80000000;

struct Head {
    quint32 magic = 0;
    quint32 size = 0; ///< of the file
    std::array<quint32, TableCount + 1> starts {}; ///< of the tables; the last is the size
};

/// A column of numbers in the bytes of a file.
template <typename Number> class Numbers
{
public:
    Numbers() = default;
    Numbers(const char *bytes, quint32 size)
        : m_bytes(bytes)
        , m_count(size / sizeof(Number))
    {
    }
    quint32 size() const { return m_count; }
    Number operator[](quint32 index) const
    {
        return qFromLittleEndian<Number>(m_bytes + std::size_t(index) * sizeof(Number));
    }
    /// How many of every \a step numbers are not larger than \a value, when these ascend.
    quint32 countUpTo(Number value, quint32 step = 1) const
    {
        quint32 first = 0;
        quint32 last = m_count / step;
        while (first < last) {
            const quint32 middle = (first + last) / 2;
            if ((*this)[middle * step] <= value)
                first = middle + 1;
            else
                last = middle;
        }
        return first;
    }

private:
    const char *m_bytes = nullptr;
    quint32 m_count = 0;
};

/// Appends \a value in seven bits a byte.
inline void appendToken(QByteArray &bytes, quint32 value)
{
    for (; value >= 0x80; value >>= 7)
        bytes += char(value | 0x80);
    bytes += char(value);
}

} // namespace runebook::UnicodeFormat
