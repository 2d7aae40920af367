#pragma once

#include <QAtomicInt>
#include <QByteArray>
#include <QSharedData>
#include <QString>
#include <QStringList>
#include <span>
#include <string>
#include <string_view>

namespace runebook {

/// The bytes of one reading (a file, a pasted text), UTF-8, held together by all records that came from it.
/// Never changes once records point into it.
class SourceBytes : public QSharedData
{
public:
    explicit SourceBytes(QByteArray bytes) : m_bytes(std::move(bytes)) { }
    const char *data() const { return m_bytes.constData(); }
    qsizetype size() const { return m_bytes.size(); }

private:
    const QByteArray m_bytes;
};

using SourcePtr = QExplicitlySharedDataPointer<const SourceBytes>;

/// The value of one field of a record in eight bytes: absent, a piece of the bytes that were read, a text or
/// a list of texts of its own, or a small number. A piece knows only its place; whoever asks for its text
/// gives the bytes it lies in.
class FieldValue
{
public: // making
    FieldValue() = default;
    FieldValue(const FieldValue &other) : m_bits(other.m_bits)
    {
        if (isShared())
            share();
    }
    FieldValue(FieldValue &&other) noexcept : m_bits(std::exchange(other.m_bits, 0)) { }
    FieldValue &operator=(FieldValue other) noexcept
    {
        std::swap(m_bits, other.m_bits);
        return *this;
    }
    ~FieldValue()
    {
        if (isShared())
            release();
    }

    /// The bytes [offset, offset + length) of \a source; one that lies out of a view's reach (beyond 64 GB,
    /// longer than 64 MB) becomes a text of its own.
    static FieldValue piece(const char *source, quint64 offset, quint64 length)
    {
        if (!canBePiece(offset, length))
            return text(textOfUtf8({source + offset, static_cast<std::size_t>(length)}));
        return FieldValue(PieceTag | offset << 2 | length << LengthShift);
    }
    /// A text of its own; a null string gives an absent value, "" a present empty one.
    static FieldValue text(const QString &text);
    /// The text that \a parts are together, copied once however long it is; "" for none.
    static FieldValue text(std::span<const QStringView> parts);
    static FieldValue list(const QStringList &list);
    static FieldValue number(qint32 number);
    /// Whether a piece can have that place.
    static bool canBePiece(quint64 offset, quint64 length)
    {
        return offset <= MaxOffset && length <= MaxLength;
    }
    /// UTF-8 as a text, not null. A leading byte order mark is a character like any other.
    static QString textOfUtf8(std::string_view utf8);

public: // asking
    bool isAbsent() const { return m_bits == 0; }
    bool isPiece() const { return tag() == PieceTag; }
    bool isList() const { return m_bits != 0 && tag() == ListTag; }
    /// Absent or of length 0.
    bool isEmpty() const;
    /// Null when absent; lists joined with ", ".
    QString toString(const char *source) const;
    /// The units of a text of its own, valid as long as a copy of this value; null for all other values.
    QStringView view() const;
    /// The beginning of that, \a most UTF-16 units or a few less; takes no longer where there is more.
    QString beginning(const char *source, qsizetype most) const;
    /// The length of toString() in UTF-16 units, without making it.
    qsizetype length(const char *source) const;
    /// The entries; a piece or text is split at every ", "; empty when absent.
    QStringList toList(const char *source) const;
    qint32 toNumber() const { return static_cast<qint32>(static_cast<quint32>(m_bits >> 32)); }
    /// The text as UTF-8: the bytes that were read where it is a piece, otherwise made in \a buffer.
    std::string_view utf8(const char *source, std::string &buffer) const;

    quint64 pieceOffset() const { return (m_bits >> 2) & MaxOffset; }
    quint64 pieceLength() const { return m_bits >> LengthShift; }
    /// The bytes of a piece. Only for pieces.
    std::string_view bytes(const char *source) const
    {
        return {source + pieceOffset(), static_cast<std::size_t>(pieceLength())};
    }

    /// Equal as texts or as lists; an absent value equals only an absent one.
    static bool equal(const FieldValue &a, const char *sourceA, const FieldValue &b, const char *sourceB);

private:
    enum Tag : quint64 { TextTag = 0, PieceTag = 1, NumberTag = 2, ListTag = 3 };
    static constexpr int LengthShift = 38;
    static constexpr quint64 MaxOffset = (quint64(1) << 36) - 1;
    static constexpr quint64 MaxLength = (quint64(1) << 26) - 1;

    struct OwnText;
    struct OwnList {
        QAtomicInt references = 1;
        QStringList value;
    };

    explicit FieldValue(quint64 bits) : m_bits(bits) { }
    quint64 tag() const { return m_bits & 3; }
    /// Whether it holds a node that copies share.
    bool isShared() const { return m_bits != 0 && (tag() == TextTag || tag() == ListTag); }
    void share() const;
    void release();
    template <typename Node> Node *node() const { return reinterpret_cast<Node *>(m_bits & ~quint64(3)); }

    quint64 m_bits = 0;
};

static_assert(sizeof(FieldValue) == 8);

/// The separator of lists that are kept in one text field.
inline constexpr QLatin1StringView kListSeparator {", "};

} // namespace runebook
