#include "editing/compare/CompareKeys.h"

#include "editing/compare/ComparedFields.h"

#include <array>
#include <bit>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t kStep = 2048;

quint32 hashOf(std::string_view key)
{
    const std::size_t hash = std::hash<std::string_view>()(key);
    return static_cast<quint32>(hash ^ (hash >> 32));
}

/// The bytes of the record as they were read from a file of whatever version; empty once it was edited.
std::string_view lineAsRead(const VXGlyphInfo &info)
{
    const std::string_view line = info.unchangedLine(2);
    return line.empty() ? info.unchangedLine(1) : line;
}

} // namespace

// KeyIndex

KeyIndex::KeyIndex(const InfoList &infos, CompareKey key)
    : m_infos(infos),
      m_key(key),
      m_slots(std::bit_ceil(std::max<std::size_t>(16, infos.size() * 3 / 2))),
      m_isReplaced(infos.size())
{
}

bool KeyIndex::addNext(std::size_t count)
{
    // The slots of several records are asked for before the first is needed: memory answers them together.
    constexpr std::size_t kBatch = 16;
    struct Entry {
        std::string buffer;
        std::string_view key;
        quint32 hash = 0;
    };
    std::array<Entry, kBatch> batch;

    const std::size_t end = m_added + std::min(count, m_infos.size() - m_added);
    while (m_added < end) {
        const std::size_t size = std::min(kBatch, end - m_added);
        for (std::size_t i = 0; i < size; ++i) {
            Entry &entry = batch[i];
            entry.key = keyUtf8(*m_infos[m_added + i], m_key, entry.buffer);
            entry.hash = hashOf(entry.key);
            __builtin_prefetch(&m_slots[entry.hash & (m_slots.size() - 1)]);
        }
        for (std::size_t i = 0; i < size; ++i) {
            if (!batch[i].key.empty())
                insert(batch[i].hash, static_cast<quint32>(m_added + i), batch[i].key);
        }
        m_added += size;
    }
    return m_added == m_infos.size();
}

void KeyIndex::insert(quint32 hash, quint32 place, std::string_view key)
{
    const std::size_t mask = m_slots.size() - 1;
    std::string buffer;
    for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
        Slot &slot = m_slots[i];
        if (slot.place == kNone) {
            slot = {hash, place};
            return;
        }
        if (slot.hash == hash && keyUtf8(*m_infos[slot.place], m_key, buffer) == key) {
            m_isReplaced[slot.place] = true;
            slot.place = place;
            return;
        }
    }
}

quint32 KeyIndex::find(std::string_view key) const
{
    const std::size_t mask = m_slots.size() - 1;
    const quint32 hash = hashOf(key);
    std::string buffer;
    for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
        const Slot &slot = m_slots[i];
        if (slot.place == kNone)
            return kNone;
        if (slot.hash == hash && keyUtf8(*m_infos[slot.place], m_key, buffer) == key)
            return slot.place;
    }
}

// KeyPass

KeyPass::KeyPass(const InfoList &source, const InfoList &other, CompareKey key, const CompareOptions &options)
    : m_source(source), m_other(other), m_key(key), m_index(other, key), m_options(options)
{
}

bool KeyPass::advance(std::size_t count)
{
    if (m_index.added() < m_other.size() && !m_index.addNext(count))
        return false;
    const std::size_t end = m_next + std::min(count, m_source.size() - m_next);
    while (m_next < end)
        compare(m_source[m_next++]);
    return m_next == m_source.size();
}

/// Most records of two versions of a file stand in the same order and are the same to the last byte: then
/// neither their keys nor their fields need a look.
bool KeyPass::isEqualAsRead(const VXGlyphInfo &info) const
{
    if (m_expected >= m_other.size() || m_index.isReplaced(m_expected))
        return false;
    const std::string_view line = lineAsRead(info);
    return !line.empty() && line == lineAsRead(*m_other[m_expected]);
}

void KeyPass::addDifferent(const InfoPtr &info, const InfoPtr &other, std::string_view key)
{
    m_different += QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
    if (!m_wantsFields)
        return;
    m_fields.push_back(differingBits(*info, *other, m_options));
    m_places.push_back(static_cast<quint32>(m_next - 1));
}

void KeyPass::compare(const InfoPtr &compared)
{
    const VXGlyphInfo &info = *compared;
    if (isEqualAsRead(info)) {
        const InfoPtr &other = m_other[m_expected++];
        // Records without description never count as equal.
        if (!info.stored(GlyphField::Desc).isAbsent() || countAsEqual(compared, other, m_options))
            return;
        const std::string_view key = keyUtf8(info, m_key, m_buffer);
        if (!key.empty())
            addDifferent(compared, other, key);
        return;
    }
    const std::string_view key = keyUtf8(info, m_key, m_buffer);
    if (key.empty())
        return;
    const bool isExpected = m_expected < m_other.size() && !m_index.isReplaced(m_expected)
        && keyUtf8(*m_other[m_expected], m_key, m_otherBuffer) == key;
    const std::size_t place = isExpected ? m_expected : m_index.find(key);
    if (place == KeyIndex::kNone) {
        m_missing += QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
        return;
    }
    m_expected = place + 1;
    if (!countAsEqual(compared, m_other[place], m_options))
        addDifferent(compared, m_other[place], key);
}

// KeyComparison

KeyComparison::KeyComparison(const InfoList &left, const InfoList &right, CompareKey key, CompareMode first,
                             const CompareOptions &options)
    : m_passes {{right, left, key, options}, {left, right, key, options}}, m_firstIsForward(isForward(first))
{
    m_passes[1].wantFields();
}

bool KeyComparison::advance()
{
    const bool forward = m_isDone[m_firstIsForward] ? !m_firstIsForward : m_firstIsForward;
    if (!m_isDone[forward])
        m_isDone[forward] = m_passes[forward].advance(kStep);
    return m_isDone[0] && m_isDone[1];
}

bool KeyComparison::runFor(std::chrono::milliseconds budget)
{
    const auto end = std::chrono::steady_clock::now() + budget;
    do {
        if (advance())
            return true;
    } while (std::chrono::steady_clock::now() < end);
    return false;
}

void KeyComparison::finish(CompareMode mode)
{
    while (!isDone(mode))
        advance();
}

const QStringList &KeyComparison::keys(CompareMode mode) const
{
    const KeyPass &pass = m_passes[isForward(mode)];
    return mode == CompareMode::Different ? pass.different() : pass.missing();
}

double KeyComparison::progress() const
{
    const KeyPass &pass = m_passes[m_firstIsForward];
    return pass.workload() ? static_cast<double>(pass.workDone()) / static_cast<double>(pass.workload()) : 1;
}

} // namespace runebook
