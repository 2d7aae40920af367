#include "model/FieldValue.h"

#include "platform/ShownText.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <numeric>
#include <utility>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// How many bytes at the end belong to a character that goes on behind it.
std::size_t openBytes(std::string_view utf8)
{
    std::size_t back = 1;
    while (back < 4 && back < utf8.size() && (utf8[utf8.size() - back] & 0xC0) == 0x80)
        ++back;
    if (utf8.empty() || back > utf8.size())
        return 0;
    const auto lead = static_cast<unsigned char>(utf8[utf8.size() - back]);
    const std::size_t whole = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    return back < whole ? back : 0;
}

std::size_t utf16LengthOf(std::string_view utf8)
{
    std::size_t length = 0;
    for (const char byte : utf8)
        length += ((byte & 0xC0) != 0x80) + ((byte & 0xF8) == 0xF0);
    return length;
}

} // namespace

/// The head of a text; its characters lie right behind it. A QString would take two allocations and twice the
/// memory, which counts when one field of a million records is edited.
struct FieldValue::OwnText {
    QAtomicInt references = 1;
    qsizetype size = 0;

    static OwnText *make(std::span<const QStringView> parts)
    {
        const auto add = [](qsizetype sum, QStringView part) { return sum + part.size(); };
        const qsizetype size = std::accumulate(parts.begin(), parts.end(), qsizetype(0), add);
        const auto bytes = static_cast<std::size_t>(size) * sizeof(QChar);
        auto *made = new (::operator new(sizeof(OwnText) + bytes)) OwnText {1, size};
        auto *units = reinterpret_cast<QChar *>(made + 1);
        for (const QStringView part : parts) {
            if (!part.isEmpty())
                std::memcpy(units, part.data(), static_cast<std::size_t>(part.size()) * sizeof(QChar));
            units += part.size();
        }
        return made;
    }
    static void destroy(OwnText *text)
    {
        text->~OwnText();
        ::operator delete(text);
    }
    QStringView view() const { return {reinterpret_cast<const QChar *>(this + 1), size}; }
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
    const QStringView whole(text);
    return FieldValue::text(std::span(&whole, 1));
}

FieldValue FieldValue::text(std::span<const QStringView> parts)
{
    if (std::all_of(parts.begin(), parts.end(), [](QStringView part) { return part.isEmpty(); }))
        return FieldValue(PieceTag);
    return FieldValue(reinterpret_cast<quint64>(OwnText::make(parts)) | TextTag);
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
        return node<OwnText>()->view().toString();
    }
}

QStringView FieldValue::view() const
{
    return m_bits != 0 && tag() == TextTag ? node<OwnText>()->view() : QStringView();
}

QString FieldValue::beginning(const char *source, qsizetype most) const
{
    if (m_bits == 0)
        return {};
    if (tag() == PieceTag) {
        // No character takes more bytes than three for each of its units.
        const std::string_view all = pieceLength() ? bytes(source) : std::string_view();
        const std::string_view kept = all.substr(0, static_cast<std::size_t>(most) * 3);
        return beginningOf(textOfUtf8(kept.substr(0, kept.size() - openBytes(kept))), most).toString();
    }
    if (tag() == TextTag)
        return beginningOf(node<OwnText>()->view(), most).toString();
    if (tag() == NumberTag)
        return toString(source);
    QString text = u""_s;
    const QStringList &list = node<OwnList>()->value;
    for (qsizetype i = 0; i < list.size() && text.size() <= most; ++i) {
        if (i > 0)
            text += kListSeparator;
        text += list.at(i).size() > most ? beginningOf(list.at(i), most + 1) : QStringView(list.at(i));
        if (list.at(i).size() > most)
            break; // it was cut, maybe to one unit less
    }
    return beginningOf(text, most).toString();
}

qsizetype FieldValue::length(const char *source) const
{
    if (m_bits == 0)
        return 0;
    if (tag() == TextTag)
        return node<OwnText>()->size;
    if (tag() == PieceTag)
        return pieceLength() ? static_cast<qsizetype>(utf16LengthOf(bytes(source))) : 0;
    if (tag() == NumberTag)
        return toString(source).size();
    const QStringList &list = node<OwnList>()->value;
    const auto add = [](qsizetype sum, const QString &entry) {
        return sum + entry.size() + kListSeparator.size();
    };
    return std::max<qsizetype>(0, std::accumulate(list.begin(), list.end(), -kListSeparator.size(), add));
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
    const QByteArray encoded =
        tag() == TextTag ? node<OwnText>()->view().toUtf8() : toString(source).toUtf8();
    buffer.assign(encoded.constData(), static_cast<std::size_t>(encoded.size()));
    return buffer;
}

bool FieldValue::equal(const FieldValue &a, const char *sourceA, const FieldValue &b, const char *sourceB)
{
    if (a.isAbsent() || b.isAbsent())
        return a.isAbsent() && b.isAbsent();
    // The same node, number, or place: of a long value that is the usual case, and its text is not made.
    if (a.m_bits == b.m_bits && (!a.isPiece() || sourceA == sourceB))
        return true;
    if (a.isPiece() && b.isPiece()) {
        return a.pieceLength() == b.pieceLength()
            && (a.pieceLength() == 0 || a.bytes(sourceA) == b.bytes(sourceB));
    }
    if (a.isShared() && b.isShared() && a.tag() == TextTag && b.tag() == TextTag)
        return a.node<OwnText>()->view() == b.node<OwnText>()->view();
    if (a.isList() || b.isList())
        return a.toList(sourceA) == b.toList(sourceB);
    // A text and a piece: that a very long one is another than a short one is told without making texts.
    constexpr quint64 kMostBytes = 3; // of a unit
    const FieldValue &piece = a.isPiece() ? a : b;
    const auto units = static_cast<quint64>((a.isPiece() ? b : a).view().size());
    if (piece.isPiece() && (units > piece.pieceLength() || units * kMostBytes < piece.pieceLength())
        && (a.tag() == TextTag || b.tag() == TextTag))
        return false;
    return a.toString(sourceA) == b.toString(sourceB);
}

} // namespace runebook
