#include "editing/values/ValueCounts.h"

#include <algorithm>
#include <functional>

namespace runebook {

using namespace std::chrono_literals;

namespace {

constexpr auto kSlice = 5ms;
constexpr std::size_t kBatch = 512;
/// So many records are looked at right away.
constexpr std::size_t kFew = 256;
/// Beyond this, looking at all records is simpler than finding the changed ones.
constexpr std::size_t kMany = 20'000;

constexpr quint32 kListBit = 0x80000000;

} // namespace

ValueCounts::ValueCounts(const VXDocument &document, const FieldAspect &aspect, QObject *parent)
    : QObject(parent), m_document(document), m_aspect(aspect)
{
    connect(&document, &VXDocument::infosInserted, this, &ValueCounts::insert);
    connect(&document, &VXDocument::infosRemoved, this, &ValueCounts::remove);
    connect(&document, &VXDocument::infoReplaced, this, [this](qsizetype place) {
        lookAt(static_cast<std::size_t>(place));
        announce();
    });
    connect(&document, &VXDocument::infosReset, this, &ValueCounts::reset);
    connect(&document, &VXDocument::infosChanged, this, &ValueCounts::noteChanges);
    connect(&m_timer, &QTimer::timeout, this, &ValueCounts::runSlice);
    reset();
}

ValueCounts::~ValueCounts() = default;

// What is counted

void ValueCounts::setAspect(const FieldAspect &aspect)
{
    if (aspect == m_aspect)
        return;
    m_aspect = aspect;
    start();
    schedule();
    announce();
}

void ValueCounts::setShown(const std::optional<IndexSet> &places)
{
    const std::size_t count = m_flags.size();
    const auto set = [this](std::size_t place, bool isWanted) {
        Flags &flags = m_flags[place];
        flags = isWanted ? flags | Wanted : flags & ~Wanted;
    };
    for (std::size_t place = 0; place < count; ++place)
        set(place, !places);
    for (const qsizetype place : places.value_or(IndexSet())) {
        if (static_cast<std::size_t>(place) < count)
            set(static_cast<std::size_t>(place), true);
    }
    m_next = 0;
    if (count <= kFew)
        lookAtBatch();
    if (!isComplete())
        schedule();
    announce();
}

/// Forgets all values, but not which records are shown.
void ValueCounts::start()
{
    m_texts.assign(2, {});
    m_shown.assign(2, 0);
    m_totals.assign(2, 0);
    m_numbers.fill({});
    m_lists.clear();
    m_freeLists.clear();
    for (std::size_t place = 0; place < m_flags.size(); ++place)
        m_flags[place] &= Wanted;
    m_shownRecords = 0;
    m_next = 0;
    m_looksAgain = false;
    m_changed.clear();
    m_nextChanged = 0;
}

// Looking

bool ValueCounts::isComplete() const
{
    return m_next >= m_flags.size() && m_nextChanged >= m_changed.size();
}

double ValueCounts::progress() const
{
    const std::size_t all = m_flags.size() + m_changed.size();
    return all ? static_cast<double>(m_next + m_nextChanged) / static_cast<double>(all) : 1;
}

void ValueCounts::schedule()
{
    if (!m_timer.isActive())
        m_timer.start(0ms);
}

void ValueCounts::runSlice()
{
    runFor(kSlice);
    announce();
}

bool ValueCounts::runFor(std::chrono::milliseconds budget)
{
    const auto end = std::chrono::steady_clock::now() + budget;
    do {
        lookAtBatch();
    } while (!isComplete() && std::chrono::steady_clock::now() < end);
    return isComplete();
}

void ValueCounts::finish()
{
    while (!isComplete())
        lookAtBatch();
    announce();
}

void ValueCounts::announce()
{
    if (isComplete())
        m_timer.stop();
    Q_EMIT changed();
}

void ValueCounts::lookAtBatch()
{
    Q_ASSERT(isInStep());
    for (std::size_t i = 0; m_nextChanged < m_changed.size() && i < kBatch; ++i) {
        if (const qsizetype place = m_document.placeOf(m_changed[m_nextChanged++].get()); place >= 0)
            lookAt(static_cast<std::size_t>(place));
    }
    if (m_nextChanged == m_changed.size()) {
        m_changed.clear();
        m_nextChanged = 0;
    }
    const std::size_t end = std::min(m_next + kBatch, m_flags.size());
    for (; m_next < end; ++m_next)
        lookAt(m_next, m_looksAgain);
    if (m_next == m_flags.size())
        m_looksAgain = false;
}

/// Learns the values of the record at \a place, \a again or for the first time, and counts it if it is shown.
void ValueCounts::lookAt(std::size_t place, bool again)
{
    if (again || !(m_flags[place] & LookedAt)) {
        dropValues(place);
        readValues(*m_document.objectInInfosAtIndex(static_cast<qsizetype>(place)));
        keepValues(place);
    }
    const bool isWanted = m_flags[place] & Wanted;
    if (isWanted != bool(m_flags[place] & Counted))
        setCounted(place, isWanted);
}

/// The numbers of the record's different values, into m_read.
void ValueCounts::readValues(const VXGlyphInfo &info)
{
    m_read.clear();
    forEachValue(m_aspect, info, [this](std::string_view utf8) { addRead(utf8); });
    if (m_read.empty())
        m_read.push_back(kNone);
}

void ValueCounts::addRead(std::string_view utf8)
{
    if (utf8.empty())
        return;
    const Value value = utf8.size() > kLongest ? kLong : numberOf(utf8);
    // Of a record with very many, the order says nothing: sorted, each is found quickly.
    const auto at = std::lower_bound(m_read.begin(), m_read.end(), value);
    if (at == m_read.end() || *at != value)
        m_read.insert(at, value);
}

ValueCounts::Value ValueCounts::numberOf(std::string_view utf8)
{
    Numbers &numbers = m_numbers[(std::hash<std::string_view>()(utf8) >> 48) % kShards];
    if (const auto known = numbers.find(utf8); known != numbers.end())
        return known->second;
    const auto value = static_cast<Value>(m_texts.size());
    numbers.emplace(m_texts.emplace_back(utf8), value);
    m_shown.push_back(0);
    m_totals.push_back(0);
    return value;
}

ValueCounts::Value ValueCounts::numberOf(const QString &text)
{
    return text.isEmpty() ? kNone : numberOf(std::string_view(text.toStdString()));
}

void ValueCounts::keepValues(std::size_t place)
{
    for (const Value value : m_read)
        ++m_totals[value];
    m_flags[place] |= LookedAt;
    if (m_read.size() == 1) {
        m_values[place] = m_read.front();
        return;
    }
    if (m_freeLists.empty()) {
        m_freeLists.push_back(static_cast<quint32>(m_lists.size()));
        m_lists.emplace_back();
    }
    m_lists[m_freeLists.back()] = m_read;
    m_values[place] = kListBit | m_freeLists.back();
    m_freeLists.pop_back();
}

void ValueCounts::dropValues(std::size_t place)
{
    if (!(m_flags[place] & LookedAt))
        return;
    if (m_flags[place] & Counted)
        setCounted(place, false);
    for (const Value value : valuesAt(place))
        --m_totals[value];
    if (m_values[place] & kListBit) {
        m_lists[m_values[place] & ~kListBit].clear();
        m_freeLists.push_back(m_values[place] & ~kListBit);
    }
    m_flags[place] &= ~LookedAt;
}

std::span<const ValueCounts::Value> ValueCounts::valuesAt(std::size_t place) const
{
    if (m_values[place] & kListBit)
        return m_lists[m_values[place] & ~kListBit];
    return {&m_values[place], 1};
}

void ValueCounts::setCounted(std::size_t place, bool isCounted)
{
    const int step = isCounted ? 1 : -1;
    for (const Value value : valuesAt(place))
        m_shown[value] += step;
    m_shownRecords += step;
    m_flags[place] ^= Counted;
}

// What the document tells

void ValueCounts::insert(const IndexSet &places)
{
    m_flags.insert(places, [](std::size_t) { return Flags(Wanted); });
    m_values.insert(places, [](std::size_t) { return quint32(kNone); });
    if (places.size() <= kFew) {
        for (const qsizetype place : places) {
            // Places ascend and count those that came in front of them.
            m_next += static_cast<std::size_t>(place) <= m_next;
            lookAt(static_cast<std::size_t>(place));
        }
    } else {
        m_next = qMin(m_next, static_cast<std::size_t>(places.front()));
        schedule();
    }
    announce();
}

void ValueCounts::remove(const IndexSet &places)
{
    for (const qsizetype place : places)
        dropValues(static_cast<std::size_t>(place));
    const auto lookedAt = std::lower_bound(places.begin(), places.end(), static_cast<qsizetype>(m_next));
    m_next -= static_cast<std::size_t>(lookedAt - places.begin());
    m_flags.erase(places, [](Flags) {});
    m_values.erase(places, [](quint32) {});
    announce();
}

void ValueCounts::reset()
{
    const auto count = static_cast<std::size_t>(m_document.countOfInfos());
    m_flags.assign(count, Wanted);
    m_values.assign(count, kNone);
    start();
    schedule();
    announce();
}

void ValueCounts::noteChanges(const std::vector<VXDocument::Change> &changes)
{
    const auto counts = [this](const VXDocument::Change &change) { return concerns(m_aspect, change.field); };
    if (std::none_of(changes.begin(), changes.end(), counts))
        return;
    const auto standsTwice = [](const VXDocument::Change &change) { return change.info->listings() > 1; };
    if (changes.size() > kMany || std::any_of(changes.begin(), changes.end(), standsTwice)) {
        m_changed.clear();
        m_nextChanged = 0;
        m_next = 0;
        m_looksAgain = true;
    } else {
        for (const VXDocument::Change &change : changes) {
            if (counts(change) && (m_changed.empty() || m_changed.back() != change.info))
                m_changed.push_back(change.info);
        }
    }
    // Records came or went, of which the word is still on its way: until then places mean others.
    if (isInStep() && m_changed.size() <= kFew)
        lookAtBatch();
    if (!isComplete())
        schedule();
    announce();
}

} // namespace runebook
