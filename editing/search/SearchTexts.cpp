#include "editing/search/SearchTexts.h"

#include "editing/search/ByteSearch.h"
#include "platform/predicates/PredicateFormat.h"

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// Calls \a take with each part of \a text between the separators of lists.
template <typename Take> void forEachEntry(std::string_view text, Take take)
{
    constexpr std::string_view comma(kListSeparator.data(), static_cast<std::size_t>(kListSeparator.size()));
    for (;;) {
        const std::size_t end = text.find(comma);
        take(text.substr(0, end));
        if (end == std::string_view::npos)
            return;
        text.remove_prefix(end + comma.size());
    }
}

} // namespace

SearchTexts::SearchTexts(SearchKey key, Folding folding) : m_key(key), m_folding(folding)
{
    clear();
}

void SearchTexts::clear()
{
    m_bytes.assign(1, kSeparator);
    m_starts.assign(1, m_bytes.size());
    close();
}

void SearchTexts::close()
{
    m_open = {};
    m_openSource.reset();
    m_taken = 0;
}

void SearchTexts::reserve(std::size_t records)
{
    constexpr std::size_t kUsualLength = 12;
    m_bytes.reserve(records * kUsualLength);
    m_starts.reserve(records + 1);
}

void SearchTexts::append(const VXGlyphInfo &info)
{
    appendValue(info);
    m_starts.push_back(m_bytes.size());
}

bool SearchTexts::areLong(const VXGlyphInfo &info) const
{
    constexpr qsizetype kLong = 1 << 20;
    constexpr qsizetype kManyEntries = 1 << 15;
    if (!m_key.isKept())
        return false; // the first code point, for one
    const FieldValue &value = info.stored(m_key.field);
    if (m_key.field == GlyphField::Unicodes && !value.isList())
        return false;
    return value.isPiece() ? qsizetype(value.pieceLength()) > kLong
        : value.isList()   ? value.toList(nullptr).size() > kManyEntries
                           : value.view().size() > kLong;
}

bool SearchTexts::appendPart(const VXGlyphInfo &info)
{
    if (!isOpen()) {
        m_open = info.stored(m_key.field);
        m_openSource = info.source();
        // Folded it is mostly as long; what has been taken would be copied with every growth.
        const auto size =
            static_cast<std::size_t>(m_open.isPiece() ? m_open.pieceLength() : m_open.view().size());
        m_bytes.reserve(m_bytes.size() + size + size / 8);
    }
    const bool isLast = m_key.kind == SearchKey::Kind::Text ? takeStretch() : takeEntries();
    if (!isLast)
        return false;
    close();
    m_starts.push_back(m_bytes.size());
    return true;
}

/// Of one text: folding works on each character for itself.
bool SearchTexts::takeStretch()
{
    constexpr std::size_t kStretch = 1 << 16;
    std::size_t all = 0;
    if (m_open.isPiece()) {
        const std::string_view bytes = m_open.bytes(m_openSource->data());
        all = bytes.size();
        std::size_t end = std::min(all, m_taken + kStretch);
        while (end < all && (bytes[end] & 0xC0) == 0x80)
            ++end;
        appendFoldedUtf8(m_bytes, bytes.substr(m_taken, end - m_taken), m_folding);
        m_taken = end;
    } else {
        const QStringView text = m_open.view();
        all = static_cast<std::size_t>(text.size());
        std::size_t end = std::min(all, m_taken + kStretch);
        end += end < all && text.at(qsizetype(end)).isLowSurrogate();
        appendFoldedUtf8(m_bytes, text.sliced(qsizetype(m_taken), qsizetype(end - m_taken)), m_folding);
        m_taken = end;
    }
    if (m_taken < all)
        return false;
    m_bytes += kSeparator;
    return true;
}

double SearchTexts::shareOf(std::size_t records) const
{
    if (records == 0)
        return 1;
    const auto all = m_open.isPiece() ? static_cast<qsizetype>(m_open.pieceLength())
        : m_open.isList()             ? m_open.toList(nullptr).size()
                                      : m_open.view().size();
    const double open = all > 0 ? std::min(1.0, static_cast<double>(m_taken) / static_cast<double>(all)) : 0;
    return (static_cast<double>(count()) + open) / static_cast<double>(records);
}

/// Of a list.
bool SearchTexts::takeEntries()
{
    constexpr std::size_t kEntries = 1 << 12;
    if (m_open.isPiece()) {
        const std::string_view rest = m_open.bytes(m_openSource->data()).substr(m_taken);
        constexpr std::size_t kStretch = 1 << 16;
        const std::size_t comma = rest.find(", ", std::min(kStretch, rest.size()));
        forEachEntry(rest.substr(0, comma), [this](std::string_view name) { appendText(name); });
        m_taken += comma + 2;
        return comma == rest.npos;
    }
    const QStringList entries =
        m_open.isList() ? m_open.toList(nullptr) : m_open.view().toString().split(kListSeparator);
    const auto all = static_cast<std::size_t>(entries.size());
    const std::size_t end = m_open.isList() ? std::min(all, m_taken + kEntries) : all;
    for (; m_taken < end; ++m_taken)
        appendText(entries.at(qsizetype(m_taken)));
    return m_taken == all;
}

void SearchTexts::appendText(std::string_view utf8)
{
    if (utf8.empty())
        return;
    appendFoldedUtf8(m_bytes, utf8, m_folding);
    m_bytes += kSeparator;
}

void SearchTexts::appendText(const QString &text)
{
    if (text.isEmpty())
        return;
    // Not by way of toUtf8(), which makes all lone surrogates alike.
    appendFoldedUtf8(m_bytes, text, m_folding);
    m_bytes += kSeparator;
}

void SearchTexts::appendValue(const VXGlyphInfo &info)
{
    if (m_key.kind == SearchKey::Kind::Unknown)
        return;
    if (m_key.kind == SearchKey::Kind::Number) {
        appendText(PredicateFormat::decimal(m_key.numberOf(info)));
        return;
    }
    if (m_key.isWorkedOut()) {
        appendText(m_key.textOf(info));
        return;
    }
    const bool isCodePoint = m_key.field == GlyphField::Unicode || m_key.field == GlyphField::Unicodes;
    const FieldValue &value = info.stored(isCodePoint ? GlyphField::Unicodes : m_key.field);
    if (value.isPiece()) {
        const std::string_view bytes = value.bytes(info.sourceData());
        if (m_key.kind == SearchKey::Kind::List && !isCodePoint)
            forEachEntry(bytes, [this](std::string_view name) { appendText(name); });
        else
            appendText(bytes);
    } else if (!value.isAbsent()) {
        if (m_key.kind == SearchKey::Kind::List) {
            for (const QString &text : value.toList(info.sourceData()))
                appendText(text);
        } else {
            appendText(isCodePoint ? info.unicode() : value.toString(info.sourceData()));
        }
    }
}

// Following a list

void SearchTexts::appendRun(const SearchTexts &other, std::size_t first, std::size_t last)
{
    const std::size_t from = other.m_starts[first];
    const std::size_t to = m_bytes.size();
    m_bytes.append(other.m_bytes, from, other.m_starts[last] - from);
    for (std::size_t i = first; i < last; ++i)
        m_starts.push_back(other.m_starts[i + 1] - from + to);
}

void SearchTexts::insert(const IndexSet &places, const InfoList &infos)
{
    SearchTexts merged(m_key, m_folding);
    merged.reserve(count() + places.size());
    std::size_t taken = 0;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const std::size_t before = static_cast<std::size_t>(places[i]) - i;
        merged.appendRun(*this, taken, before);
        merged.append(*infos[static_cast<std::size_t>(places[i])]);
        taken = before;
    }
    merged.appendRun(*this, taken, count());
    *this = std::move(merged);
}

void SearchTexts::remove(const IndexSet &places)
{
    SearchTexts left(m_key, m_folding);
    left.reserve(count() - places.size());
    std::size_t taken = 0;
    for (const qsizetype place : places) {
        left.appendRun(*this, taken, static_cast<std::size_t>(place));
        taken = static_cast<std::size_t>(place) + 1;
    }
    left.appendRun(*this, taken, count());
    *this = std::move(left);
}

// Asking

RecordBits SearchTexts::passing(const TextTest &test) const
{
    using Relation = TextTest::Relation;
    const bool isEqual = test.relation == Relation::Equal || test.relation == Relation::NotEqual
        || (test.relation == Relation::Contains && m_key.kind == SearchKey::Kind::List);
    if (test.text.empty() && test.relation != Relation::NotEqual)
        return RecordBits(count());
    std::string wanted = test.text;
    if (isEqual || test.relation == Relation::EndsWith)
        wanted += kSeparator;
    const bool fromStart = isEqual || test.relation == Relation::BeginsWith;
    if (fromStart)
        wanted.insert(wanted.begin(), kSeparator);
    const RecordBits found = recordsWith(wanted, fromStart ? 1 : 0);
    return test.relation == Relation::NotEqual ? recordsWithText() -= found : found;
}

/// The records in whose texts \a bytes stand; the first \a lead of them may stand before the record.
RecordBits SearchTexts::recordsWith(const std::string &bytes, std::size_t lead) const
{
    RecordBits found(count());
    const ByteSearch search(bytes, m_bytes);
    std::size_t record = 0;
    for (std::size_t from = 1 - lead; record < count(); from = m_starts[record] - lead) {
        const std::size_t place = search.find(m_bytes, from);
        if (place == ByteSearch::kNpos)
            break;
        // Doubling steps first: where many records match, the next one is near.
        std::size_t step = 1;
        while (record + step < count() && m_starts[record + step] <= place + lead)
            step *= 2;
        const auto first = m_starts.begin() + static_cast<std::ptrdiff_t>(record + step / 2);
        const auto last = m_starts.begin() + static_cast<std::ptrdiff_t>(std::min(record + step, count()));
        record = static_cast<std::size_t>(std::upper_bound(first, last, place + lead) - m_starts.begin());
        found.set(record - 1);
    }
    return found;
}

RecordBits SearchTexts::recordsWithText() const
{
    RecordBits bits(count());
    for (std::size_t i = 0; i < count(); ++i) {
        if (m_starts[i] != m_starts[i + 1])
            bits.set(i);
    }
    return bits;
}

template <typename Accepts> RecordBits SearchTexts::recordsWithAny(Accepts accepts) const
{
    RecordBits bits(count());
    for (std::size_t i = 0; i < count(); ++i) {
        forEachText(i, [&](std::string_view text) {
            if (accepts(text))
                bits.set(i);
        });
    }
    return bits;
}

RecordBits SearchTexts::passing(const ListTest &test) const
{
    // One run through the bytes for each is quicker than a look at every text, as long as they are few.
    constexpr std::size_t kFew = 4;
    if (test.texts.size() <= kFew) {
        RecordBits found(count());
        for (const std::string &text : test.texts)
            found |= recordsWith(kSeparator + text + kSeparator, 1);
        return found;
    }
    return recordsWithAny([&test](std::string_view text) { return test.accepts(text); });
}

RecordBits SearchTexts::passing(const HexRangeTest &test) const
{
    return recordsWithAny([&test](std::string_view text) { return test.range.contains(text); });
}

} // namespace runebook
