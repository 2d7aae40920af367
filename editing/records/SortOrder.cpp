#include "editing/records/SortOrder.h"

#include "platform/TextFolding.h"

#include <bit>
#include <cstring>

namespace runebook {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// A record's place, with the first bytes of its key as a number: most comparisons end there.
struct Entry {
    quint64 head = 0;
    quint32 place = 0;
    quint32 offset = 0; ///< of the rest of the key in the text of all keys
    quint32 length = 0;
};

quint64 headOf(std::string_view key)
{
    char bytes[8] = {};
    std::memcpy(bytes, key.data(), std::min<std::size_t>(8, key.size()));
    quint64 head = 0;
    std::memcpy(&head, bytes, 8);
    return std::endian::native == std::endian::little ? __builtin_bswap64(head) : head;
}

std::vector<quint32> placesByNumber(const InfoList &infos, const auto &numberOf, quint64 none,
                                    Qt::SortOrder order)
{
    std::vector<std::pair<quint64, quint32>> entries;
    std::vector<quint32> last;
    entries.reserve(infos.size());
    for (std::size_t i = 0; i < infos.size(); ++i) {
        const quint64 number = numberOf(*infos[i]);
        if (number == none)
            last.push_back(static_cast<quint32>(i));
        else
            entries.emplace_back(order == Qt::AscendingOrder ? number : ~number, static_cast<quint32>(i));
    }
    std::sort(entries.begin(), entries.end());
    std::vector<quint32> places;
    places.reserve(infos.size());
    for (const auto &[number, place] : entries)
        places.push_back(place);
    places.insert(places.end(), last.begin(), last.end());
    return places;
}

/// What of a text decides where its record stands: as much as anybody looks at.
std::string_view sortedPart(const VXGlyphInfo &info, GlyphField field, std::string &buffer)
{
    constexpr qsizetype kMost = 1 << 16;
    const FieldValue &value = info.stored(field);
    const bool isShort =
        value.isPiece() ? value.pieceLength() <= kMost : value.view().size() <= kMost && !value.isList();
    if (isShort)
        return info.utf8(field, buffer);
    return buffer = value.beginning(info.sourceData(), kMost).toStdString();
}

std::vector<quint32> placesByText(const InfoList &infos, GlyphField field, Qt::SortOrder order)
{
    std::string keys;
    keys.reserve(infos.size() * 12);
    std::vector<Entry> entries;
    entries.reserve(infos.size());
    std::vector<quint32> last;
    std::string buffer;
    for (std::size_t i = 0; i < infos.size(); ++i) {
        const std::size_t start = keys.size();
        appendNaturalKey(keys, sortedPart(*infos[i], field, buffer));
        const std::string_view key = std::string_view(keys).substr(start);
        if (key.empty()) {
            last.push_back(static_cast<quint32>(i));
            continue;
        }
        entries.push_back({headOf(key), static_cast<quint32>(i), static_cast<quint32>(start),
                           static_cast<quint32>(key.size())});
    }
    const auto rest = [&keys](const Entry &entry) {
        return entry.length <= 8 ? std::string_view()
                                 : std::string_view(keys).substr(entry.offset + 8, entry.length - 8);
    };
    const auto isLess = [&rest](const Entry &a, const Entry &b) {
        if (a.head != b.head)
            return a.head < b.head;
        if (a.length > 8 || b.length > 8) {
            if (const int compared = rest(a).compare(rest(b)))
                return compared < 0;
        }
        return a.place < b.place;
    };
    const auto isGreater = [&](const Entry &a, const Entry &b) {
        if (a.head != b.head)
            return a.head > b.head;
        if (const int compared = rest(a).compare(rest(b)))
            return compared > 0;
        return a.place < b.place;
    };
    if (order == Qt::AscendingOrder)
        std::sort(entries.begin(), entries.end(), isLess);
    else
        std::sort(entries.begin(), entries.end(), isGreater);
    std::vector<quint32> places;
    places.reserve(infos.size());
    for (const Entry &entry : entries)
        places.push_back(entry.place);
    places.insert(places.end(), last.begin(), last.end());
    return places;
}

} // namespace

void appendNaturalKey(std::string &key, std::string_view utf8)
{
    const std::size_t start = key.size();
    appendFoldedUtf8(key, utf8, Fold::Case);
    // A number becomes its count of digits and the digits: more digits are the greater number. Only texts
    // with a digit are written a second time.
    const std::string_view folded = std::string_view(key).substr(start);
    if (std::none_of(folded.begin(), folded.end(), isDigit))
        return;
    const std::string text(folded);
    key.resize(start);
    for (std::size_t i = 0; i < text.size();) {
        if (!isDigit(text[i])) {
            key += text[i++];
            continue;
        }
        while (i + 1 < text.size() && text[i] == '0' && isDigit(text[i + 1]))
            ++i;
        std::size_t end = i;
        while (end < text.size() && isDigit(text[end]))
            ++end;
        const std::size_t count = end - i;
        if (count <= 9) {
            key += static_cast<char>('0' + count);
        } else {
            // Behind every shorter number; numbers of more than a million digits are as good as equal.
            const std::string digits = std::to_string(std::min<std::size_t>(count, 999'999));
            key += ':';
            key.append(6 - digits.size(), '0').append(digits);
        }
        key.append(text, i, end - i);
        i = end;
    }
}

std::vector<quint32> sortedPlaces(const InfoList &infos, GlyphField field, Qt::SortOrder order)
{
    constexpr quint64 kNone = ~quint64(0);
    switch (field) {
    case GlyphField::Unicodes:
    case GlyphField::Unicode:
    case GlyphField::UnicodeChar:
        return placesByNumber(
            infos,
            [](const VXGlyphInfo &info) {
                return info.stored(GlyphField::Unicodes).isEmpty() ? kNone : quint64(info.unicodeChar());
            },
            kNone, order);
    case GlyphField::Case:
        return placesByNumber(
            infos,
            [](const VXGlyphInfo &info) {
                return info.caseValue() == VXGlyphInfo::noCase ? kNone : quint64(info.caseValue());
            },
            kNone, order);
    case GlyphField::Direction:
        return placesByNumber(
            infos,
            [](const VXGlyphInfo &info) {
                return info.direction() == VXGlyphInfo::DirectionNotSet ? kNone
                                                                        : quint64(info.direction() + 2);
            },
            kNone, order);
    default:
        return placesByText(infos, field, order);
    }
}

} // namespace runebook
