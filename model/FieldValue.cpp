#include "model/FieldValue.h"

#include <cstring>
#include <new>
#include <utility>

namespace runebook {

using namespace Qt::StringLiterals;

/// The head of a text; its characters lie right behind it. A QString would take two allocations and twice the
/// memory, which counts when one field of a million records is edited.
struct FieldValue::OwnText {
    QAtomicInt references = 1;
    qsizetype size = 0;

    static OwnText *make(const QString &text)
    {
        const auto bytes = static_cast<std::size_t>(text.size()) * sizeof(QChar);
        auto *made = new (::operator new(sizeof(OwnText) + bytes)) OwnText {1, text.size()};
        void *units = made + 1;
        std::memcpy(units, text.constData(), bytes);
        return made;
    }
    static void destroy(OwnText *text)
    {
        text->~OwnText();
        ::operator delete(text);
    }
    QString toString() const { return QString(reinterpret_cast<const QChar *>(this + 1), size); }
};

void FieldValue::share() const
{
    if (tag() == TextTag)
        node<OwnText>()->references.ref();
    else
        node<OwnList>()->references.ref();
}

void FieldValue::release()
{
    if (tag() == TextTag) {
        if (!node<OwnText>()->references.deref())
            OwnText::destroy(node<OwnText>());
    } else if (!node<OwnList>()->references.deref()) {
        delete node<OwnList>();
    }
}

FieldValue FieldValue::text(const QString &text)
{
    if (text.isNull())
        return {};
    if (text.isEmpty())
        return FieldValue(PieceTag);
    return FieldValue(reinterpret_cast<quint64>(OwnText::make(text)) | TextTag);
}

FieldValue FieldValue::list(const QStringList &list)
{
    return FieldValue(reinterpret_cast<quint64>(new OwnList {1, list}) | ListTag);
}

FieldValue FieldValue::number(qint32 number)
{
    return FieldValue(quint64(static_cast<quint32>(number)) << 32 | NumberTag);
}

QString FieldValue::textOfUtf8(std::string_view utf8)
{
    if (utf8.empty())
        return u""_s;
    // Decoding drops a mark that stands first.
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    qsizetype marks = 0;
    for (; utf8.starts_with(kMark); ++marks)
        utf8.remove_prefix(kMark.size());
    const QString text = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
    return marks ? QString(marks, QChar::ByteOrderMark) + text : text;
}

bool FieldValue::isEmpty() const
{
    if (m_bits == 0)
        return true;
    switch (tag()) {
    case PieceTag:
        return pieceLength() == 0;
    case ListTag:
        return node<OwnList>()->value.isEmpty();
    default:
        return false;
    }
}

QString FieldValue::toString(const char *source) const
{
    if (m_bits == 0)
        return {};
    switch (tag()) {
    case PieceTag:
        return textOfUtf8(pieceLength() ? bytes(source) : std::string_view());
    case NumberTag:
        return QString::number(toNumber());
    case ListTag:
        return node<OwnList>()->value.join(kListSeparator);
    default:
        return node<OwnText>()->toString();
    }
}

QStringList FieldValue::toList(const char *source) const
{
    if (m_bits == 0)
        return {};
    if (tag() == ListTag)
        return node<OwnList>()->value;
    return toString(source).split(kListSeparator);
}

std::string_view FieldValue::utf8(const char *source, std::string &buffer) const
{
    if (m_bits == 0)
        return {};
    if (tag() == PieceTag)
        return bytes(source);
    const QByteArray encoded = toString(source).toUtf8();
    buffer.assign(encoded.constData(), static_cast<std::size_t>(encoded.size()));
    return buffer;
}

bool FieldValue::equal(const FieldValue &a, const char *sourceA, const FieldValue &b, const char *sourceB)
{
    if (a.isAbsent() || b.isAbsent())
        return a.isAbsent() && b.isAbsent();
    if (a.isPiece() && b.isPiece()) {
        return a.pieceLength() == b.pieceLength()
            && (a.pieceLength() == 0 || a.bytes(sourceA) == b.bytes(sourceB));
    }
    if (a.isList() || b.isList())
        return a.toList(sourceA) == b.toList(sourceB);
    return a.toString(sourceA) == b.toString(sourceB);
}

} // namespace runebook
