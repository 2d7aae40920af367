#include "editing/problems/Problems.h"

#include "editing/problems/ProblemTexts.h"
#include "model/CodePointRules.h"
#include "model/NameRules.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <string_view>
#include <unordered_set>

namespace runebook {

using namespace std::chrono_literals;

namespace {

constexpr auto kSlice = 5ms;
/// The window is shown and painted before anything else.
constexpr auto kFirstDelay = 120ms;
constexpr std::size_t kBatch = 256;
/// So many changed records are looked at right away.
constexpr std::size_t kFew = 256;
/// Beyond this, looking at all records is simpler than finding the changed ones.
constexpr std::size_t kMany = 20'000;

constexpr quint32 kNoCodePoint = 0x7FFFFFFF;
constexpr quint32 kListBit = 0x80000000;

constexpr qsizetype kLongestName = 63;

constexpr quint32 flagOf(ProblemKind kind)
{
    return 1u << static_cast<int>(kind);
}

quint64 keyOfName(std::string_view name)
{
    // Two names with one hash would be told to be the same less than once in a billion documents.
    return name.empty() ? 0 : qMax<quint64>(1, std::hash<std::string_view>()(name));
}

quint64 keyOfCodePoint(quint32 codePoint)
{
    return quint64(codePoint) + 1;
}

/// Calls \a visit with the name of each component.
template <typename Visit> void forEachComponent(const VXGlyphInfo &info, Visit visit)
{
    constexpr std::string_view kSeparator = ", ";
    std::string buffer;
    std::string_view rest = info.utf8(GlyphField::Decompose, buffer);
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(kSeparator), rest.size());
        visit(rest.substr(0, end));
        rest.remove_prefix(std::min(rest.size(), end + kSeparator.size()));
    }
}

/// Words that are looked up without making a string of what is looked for.
struct WordHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view word) const { return std::hash<std::string_view>()(word); }
};
using Words = std::unordered_set<std::string, WordHash, std::equal_to<>>;

/// Whether a value is a word that its field knows; none at all is no fault.
bool isKnown(std::string_view value, const Words &words)
{
    return value.empty() || words.contains(value);
}

const Words &wordsOf(GlyphField field)
{
    const auto setOf = [](const QStringList &list) {
        Words words;
        for (const QString &word : list)
            words.insert(word.toStdString());
        return words;
    };
    static const auto categories = setOf(VXGlyphInfo::categories());
    static const auto subCategories = setOf(VXGlyphInfo::subCategories());
    static const auto scripts = setOf(VXGlyphInfo::scripts());
    return field == GlyphField::Category ? categories : field == GlyphField::Script ? scripts : subCategories;
}

/// Calls \a visit with each code point text of a record, as UTF-8. Of a record with very many, which has a
/// problem anyhow, the first are looked at: an edit of it may not hold the window.
template <typename Visit> void forEachCodePoint(const VXGlyphInfo &info, Visit visit)
{
    constexpr qsizetype kMost = 10'000;
    const FieldValue &value = info.stored(GlyphField::Unicodes);
    if (value.isPiece()) {
        visit(value.bytes(info.sourceData()));
    } else if (!value.isAbsent()) {
        const QStringList texts = info.unicodes();
        for (qsizetype i = 0; i < qMin(kMost, texts.size()); ++i)
            visit(std::string_view(texts.at(i).toStdString()));
    }
}

/// Calls \a visit with each alternate name of a record; of an empty text there is none.
template <typename Visit> void forEachAltName(const VXGlyphInfo &info, Visit visit)
{
    if (info.stored(GlyphField::AltNames).isAbsent())
        return;
    constexpr std::string_view kSeparator = ", ";
    std::string buffer;
    std::string_view rest = info.utf8(GlyphField::AltNames, buffer);
    for (;;) {
        const std::size_t end = rest.find(kSeparator);
        visit(rest.substr(0, end));
        if (end == rest.npos)
            return;
        rest.remove_prefix(end + kSeparator.size());
    }
}

} // namespace

Problems::Problems(VXDocument &document, QObject *parent)
    : QObject(parent),
      m_document(document),
      m_roundTrip(document.fileVersion()),
      m_fileVersion(document.fileVersion())
{
    connect(&document, &VXDocument::infosInserted, this, &Problems::insert);
    connect(&document, &VXDocument::infosRemoved, this, &Problems::remove);
    connect(&document, &VXDocument::infoReplaced, this, &Problems::replace);
    connect(&document, &VXDocument::infosReset, this, &Problems::reset);
    connect(&document, &VXDocument::infosChanged, this, &Problems::noteChanges);
    connect(&document, &VXDocument::readNotesChanged, this, [this] {
        takeWhatWasRead();
        announce();
    });
    connect(&document, &Document::saved, this, [this] {
        // The file is now what the records are.
        m_read.clear();
        countWhatWasRead();
        announce();
    });
    connect(&m_timer, &QTimer::timeout, this, &Problems::runSlice);
    takeWhatWasRead();
    start();
    m_timer.start(kFirstDelay);
}

Problems::~Problems() = default;

void Problems::start()
{
    const auto count = static_cast<std::size_t>(m_document.countOfInfos());
    m_flags.assign(count, 0);
    m_nameKeys.assign(count, 0);
    m_codePoints.assign(count, kNoCodePoint);
    m_components.assign(count, 0);
    m_componentLists.clear();
    m_freeComponents.clear();
    m_composed.clear();
    m_missing = 0;
    m_lists.clear();
    m_freeLists.clear();
    m_altNames.assign(count, 0);
    m_altLists.assign(1, {});
    m_freeAltLists.clear();
    m_altCounts.clear();
    m_repeatingAltNames = 0;
    m_names.clear();
    m_codes.clear();
    std::fill(m_counts.begin(), m_counts.begin() + static_cast<int>(kFirstReadProblem), 0);
    m_changed.clear();
    m_nextChanged = 0;
    m_next = 0;
}

// Looking

bool Problems::isComplete() const
{
    return m_next >= m_flags.size() && m_nextChanged >= m_changed.size()
        && m_fileVersion == m_document.fileVersion();
}

double Problems::progress() const
{
    const std::size_t all = m_flags.size() + m_changed.size();
    return all ? static_cast<double>(m_next + m_nextChanged) / static_cast<double>(all) : 1;
}

void Problems::schedule()
{
    m_isBehind = true;
    if (!m_timer.isActive())
        m_timer.start(0ms);
}

void Problems::checkBatch()
{
    if (m_fileVersion != m_document.fileVersion()) {
        // What a file of another version can hold is another question for every record.
        m_fileVersion = m_document.fileVersion();
        m_roundTrip = RoundTrip(m_fileVersion);
        m_next = 0;
    }
    std::vector<qsizetype> places;
    while (m_nextChanged < m_changed.size() && places.size() < kBatch) {
        if (const qsizetype place = m_document.placeOf(m_changed[m_nextChanged++].get()); place >= 0)
            places.push_back(place);
    }
    if (m_nextChanged == m_changed.size()) {
        m_changed.clear();
        m_nextChanged = 0;
    }
    while (m_next < m_flags.size() && places.size() < kBatch)
        places.push_back(static_cast<qsizetype>(m_next++));
    check(places);
}

bool Problems::runFor(std::chrono::milliseconds budget)
{
    const auto end = std::chrono::steady_clock::now() + budget;
    do {
        checkBatch();
    } while (!isComplete() && std::chrono::steady_clock::now() < end);
    return isComplete();
}

void Problems::runSlice()
{
    m_timer.setInterval(0ms);
    runFor(kSlice);
    announce();
}

void Problems::finish()
{
    m_document.flushChanges();
    while (!isComplete())
        checkBatch();
    announce();
}

void Problems::announce()
{
    const bool wasBehind = m_isBehind;
    m_isBehind = !isComplete();
    if (!m_isBehind)
        m_timer.stop();
    Q_EMIT changed();
    if (wasBehind && !m_isBehind)
        Q_EMIT completed();
}

void Problems::check(std::span<const qsizetype> places)
{
    std::vector<VXGlyphInfo *> infos;
    infos.reserve(places.size());
    for (const qsizetype place : places)
        infos.push_back(m_document.objectInInfosAtIndex(place).get());
    checkRoundTrip(infos);
    for (std::size_t i = 0; i < places.size(); ++i) {
        const auto place = static_cast<std::size_t>(places[i]);
        Flags flags = flagsOf(*infos[i]);
        if (m_outcomes[i] == RoundTrip::Outcome::Broken)
            flags |= flagOf(ProblemKind::QuoteOrBreak);
        else if (m_outcomes[i] != RoundTrip::Outcome::Same)
            flags |= flagOf(ProblemKind::LostValue);
        setFlags(place, flags);
        dropKeys(place);
        setKeys(place, *infos[i]);
    }
}

/// What a file would not keep of each record, into m_outcomes. Of one with a very long value that turns out
/// when it is saved: the window would stand still while it is printed and read.
void Problems::checkRoundTrip(std::span<VXGlyphInfo *const> infos)
{
    const auto isLong = [this](const VXGlyphInfo *info) {
        return info->unchangedLine(m_fileVersion).empty() && RoundTrip::isVeryLong(*info);
    };
    if (std::none_of(infos.begin(), infos.end(), isLong)) {
        m_roundTrip.check(infos, m_outcomes);
        return;
    }
    std::vector<RoundTrip::Outcome> outcomes(infos.size(), RoundTrip::Outcome::Same);
    for (std::size_t i = 0; i < infos.size(); ++i) {
        if (isLong(infos[i]))
            continue;
        m_roundTrip.check(infos.subspan(i, 1), m_outcomes);
        outcomes[i] = m_outcomes.front();
    }
    m_outcomes = std::move(outcomes);
}

Problems::Flags Problems::flagsOf(const VXGlyphInfo &info) const
{
    Flags flags = 0;
    std::string buffer;
    const std::string_view name = info.utf8(GlyphField::Name, buffer);
    const NameObjection objection = objectionToName(name);
    if (objection == NameObjection::Empty || name == "unknown")
        flags |= flagOf(ProblemKind::MissingName);
    else if (objection != NameObjection::None)
        flags |= flagOf(ProblemKind::InvalidName);

    // Characters, not bytes: what continues one does not count.
    const auto continues = [](char byte) { return (byte & 0xC0) == 0x80; };
    if (std::ssize(name) > kLongestName
        && std::ssize(name) - std::count_if(name.begin(), name.end(), continues) > kLongestName)
        flags |= flagOf(ProblemKind::LongName);

    std::string other;
    for (const auto &[field, kind] : {std::pair(GlyphField::Category, ProblemKind::UnknownCategory),
                                      {GlyphField::SubCategory, ProblemKind::UnknownSubCategory},
                                      {GlyphField::Script, ProblemKind::UnknownScript}}) {
        if (!isKnown(info.utf8(field, other), wordsOf(field)))
            flags |= flagOf(kind);
    }
    forEachComponent(info, [&](std::string_view component) {
        if (component == name)
            flags |= flagOf(ProblemKind::SelfReference);
    });

    int codePoints = 0;
    forEachCodePoint(info, [&](std::string_view text) {
        ++codePoints;
        if (objectionToCodePoint(text) != CodePointObjection::None)
            flags |= flagOf(ProblemKind::InvalidCodePoint);
    });
    if (codePoints > 2)
        flags |= flagOf(ProblemKind::ManyCodePoints);
    return flags;
}

void Problems::setFlags(std::size_t place, Flags flags)
{
    const Flags different = flags ^ m_flags[place];
    for (std::size_t kind = 0; different >> kind; ++kind) {
        if (different >> kind & 1)
            m_counts[kind] += flags >> kind & 1 ? 1 : -1;
    }
    m_flags[place] = flags;
}

void Problems::setKeys(std::size_t place, const VXGlyphInfo &info)
{
    std::string buffer;
    m_nameKeys[place] = keyOfName(info.utf8(GlyphField::Name, buffer));
    addName(m_nameKeys[place]);
    setComponents(place, info);
    setAltNames(place, info);

    // A text that is no number keeps its place in the list, for the list's places are told to people.
    std::vector<quint32> codePoints;
    quint32 single = kNoCodePoint;
    int count = 0;
    forEachCodePoint(info, [&](std::string_view text) {
        const std::optional<char32_t> codePoint = codePointOfText(text);
        const quint32 value = codePoint ? static_cast<quint32>(*codePoint) : kNoCodePoint;
        if (++count == 1)
            single = value;
        if (count == 2)
            codePoints = {single};
        if (count >= 2)
            codePoints.push_back(value);
    });
    m_codePoints[place] = single;
    if (count >= 2) {
        if (m_freeLists.empty()) {
            m_freeLists.push_back(static_cast<quint32>(m_lists.size()));
            m_lists.emplace_back();
        }
        m_lists[m_freeLists.back()] = std::move(codePoints);
        m_codePoints[place] = kListBit | m_freeLists.back();
        m_freeLists.pop_back();
    }
    for (const quint32 codePoint : codePointsAt(place)) {
        if (codePoint != kNoCodePoint)
            m_codes.add(keyOfCodePoint(codePoint));
    }
}

void Problems::dropKeys(std::size_t place)
{
    removeName(std::exchange(m_nameKeys[place], 0));
    dropComponents(place);
    dropAltNames(place);
    for (const quint32 codePoint : codePointsAt(place)) {
        if (codePoint != kNoCodePoint)
            m_codes.remove(keyOfCodePoint(codePoint));
    }
    if (m_codePoints[place] & kListBit) {
        const quint32 list = m_codePoints[place] & ~kListBit;
        m_lists[list].clear();
        m_freeLists.push_back(list);
    }
    m_codePoints[place] = kNoCodePoint;
}

// An alternate name repeats a name from the first record of that name on to the last, whichever comes when; a
// component is missing as long as there is none.

void Problems::addName(quint64 key)
{
    if (!key)
        return;
    if (m_names.count(key) == 0) {
        m_missing -= m_composed.count(key);
        m_repeatingAltNames += m_altCounts.count(key);
    }
    m_names.add(key);
}

void Problems::removeName(quint64 key)
{
    if (!key)
        return;
    m_names.remove(key);
    if (m_names.count(key) == 0) {
        m_missing += m_composed.count(key);
        m_repeatingAltNames -= m_altCounts.count(key);
    }
}

void Problems::setComponents(std::size_t place, const VXGlyphInfo &info)
{
    std::vector<quint64> keys;
    forEachComponent(info, [&keys](std::string_view name) { keys.push_back(keyOfName(name)); });
    if (keys.empty())
        return;
    for (const quint64 key : keys) {
        if (!key)
            continue; // an empty text between two separators names nothing
        m_composed.add(key);
        m_missing += isMissing(key);
    }
    if (m_freeComponents.empty()) {
        m_componentLists.emplace_back();
        m_freeComponents.push_back(static_cast<quint32>(m_componentLists.size()));
    }
    m_components[place] = m_freeComponents.back();
    m_freeComponents.pop_back();
    m_componentLists[m_components[place] - 1] = std::move(keys);
}

void Problems::dropComponents(std::size_t place)
{
    const quint32 list = std::exchange(m_components[place], 0);
    if (!list)
        return;
    for (const quint64 key : std::exchange(m_componentLists[list - 1], {})) {
        if (!key)
            continue;
        m_missing -= isMissing(key);
        m_composed.remove(key);
    }
    m_freeComponents.push_back(list);
}

void Problems::setAltNames(std::size_t place, const VXGlyphInfo &info)
{
    std::vector<quint64> keys;
    forEachAltName(info, [&keys](std::string_view name) { keys.push_back(keyOfName(name)); });
    if (keys.empty())
        return;
    if (m_freeAltLists.empty()) {
        m_freeAltLists.push_back(static_cast<quint32>(m_altLists.size()));
        m_altLists.emplace_back();
    }
    m_altNames[place] = m_freeAltLists.back();
    m_freeAltLists.pop_back();
    for (const quint64 key : keys) {
        if (key == 0)
            continue;
        m_altCounts.add(key);
        m_repeatingAltNames += m_names.count(key) > 0;
    }
    m_altLists[m_altNames[place]] = std::move(keys);
}

void Problems::dropAltNames(std::size_t place)
{
    const quint32 list = std::exchange(m_altNames[place], 0);
    if (list == 0)
        return;
    for (const quint64 key : std::exchange(m_altLists[list], {})) {
        if (key == 0)
            continue;
        m_altCounts.remove(key);
        m_repeatingAltNames -= m_names.count(key) > 0;
    }
    m_freeAltLists.push_back(list);
}

std::span<const quint64> Problems::altNamesAt(std::size_t place) const
{
    return m_altLists[m_altNames[place]];
}

std::span<const quint32> Problems::codePointsAt(std::size_t place) const
{
    if (m_codePoints[place] & kListBit)
        return m_lists[m_codePoints[place] & ~kListBit];
    return {&m_codePoints[place], 1};
}

// What the document tells

void Problems::insert(const IndexSet &places)
{
    const auto merge = [&places](auto &values, auto fresh) {
        values.insert(places, [fresh](std::size_t) { return fresh; });
    };
    merge(m_flags, Flags(0));
    merge(m_nameKeys, quint64(0));
    merge(m_codePoints, kNoCodePoint);
    merge(m_components, quint32(0));
    merge(m_altNames, quint32(0));
    if (places.size() <= kFew) {
        // Places ascend and count those that came in front of them.
        for (const qsizetype place : places)
            m_next += static_cast<std::size_t>(place) <= m_next;
        check(places);
    } else {
        m_next = qMin(m_next, static_cast<std::size_t>(places.front()));
        schedule();
    }
    announce();
}

void Problems::remove(const IndexSet &places)
{
    for (const qsizetype place : places) {
        setFlags(static_cast<std::size_t>(place), 0);
        dropKeys(static_cast<std::size_t>(place));
    }
    const auto lookedAt = std::lower_bound(places.begin(), places.end(), static_cast<qsizetype>(m_next));
    m_next -= static_cast<std::size_t>(lookedAt - places.begin());
    const auto erase = [&places](auto &values) { values.erase(places, [](auto) {}); };
    erase(m_flags);
    erase(m_nameKeys);
    erase(m_codePoints);
    erase(m_components);
    erase(m_altNames);
    announce();
}

void Problems::replace(qsizetype place)
{
    if (static_cast<std::size_t>(place) < m_next)
        check({{place}});
    announce();
}

void Problems::reset()
{
    start();
    if (!m_read.areOfSameList())
        takeWhatWasRead();
    schedule();
    announce();
}

void Problems::noteChanges(const std::vector<VXDocument::Change> &changes)
{
    const auto standsTwice = [](const VXDocument::Change &change) { return change.info->listings() > 1; };
    if (changes.size() > kMany || std::any_of(changes.begin(), changes.end(), standsTwice)) {
        m_changed.clear();
        m_nextChanged = 0;
        m_next = 0;
        schedule();
        announce();
        return;
    }
    for (const VXDocument::Change &change : changes) {
        if (m_changed.empty() || m_changed.back() != change.info)
            m_changed.push_back(change.info);
    }
    // Records came or went, of which the word is still on its way: until then places mean others.
    if (std::ssize(m_flags) != m_document.countOfInfos()) {
        schedule();
        return;
    }
    if (m_changed.size() <= kFew)
        checkBatch();
    if (!isComplete())
        schedule();
    announce();
}

// Asking

qsizetype Problems::count(ProblemKind kind) const
{
    switch (kind) {
    case ProblemKind::DuplicateName:
        return m_names.repeated();
    case ProblemKind::RepeatingAltName:
        return m_repeatingAltNames;
    case ProblemKind::DuplicateCodePoint:
        return m_codes.repeated();
    case ProblemKind::MissingComponent:
        // Until all names are known nobody can tell.
        return m_next < m_flags.size() ? 0 : m_missing;
    default:
        return m_counts[static_cast<std::size_t>(kind)];
    }
}

std::array<qsizetype, kProblemKindCount> Problems::counts() const
{
    std::array<qsizetype, kProblemKindCount> counts {};
    for (const ProblemKind kind : allProblemKinds())
        counts[static_cast<std::size_t>(kind)] = count(kind);
    return counts;
}

qsizetype Problems::total() const
{
    const auto all = counts();
    return std::accumulate(all.begin(), all.end(), qsizetype(0));
}

bool Problems::hasProblem(ProblemKind kind, qsizetype place) const
{
    const auto at = static_cast<std::size_t>(place);
    switch (kind) {
    case ProblemKind::DuplicateName:
        return m_nameKeys[at] && m_names.count(m_nameKeys[at]) > 1;
    case ProblemKind::RepeatingAltName: {
        const std::span<const quint64> keys = altNamesAt(at);
        return std::any_of(keys.begin(), keys.end(),
                           [this](quint64 key) { return key != 0 && m_names.count(key) > 0; });
    }
    case ProblemKind::DuplicateCodePoint: {
        const std::span<const quint32> codePoints = codePointsAt(at);
        return std::any_of(codePoints.begin(), codePoints.end(), [this](quint32 codePoint) {
            return codePoint != kNoCodePoint && m_codes.count(keyOfCodePoint(codePoint)) > 1;
        });
    }
    case ProblemKind::MissingComponent: {
        const quint32 list = m_next < m_flags.size() ? 0 : m_components[at];
        return list
            && std::any_of(m_componentLists[list - 1].begin(), m_componentLists[list - 1].end(),
                           [this](quint64 key) { return isMissing(key); });
    }
    default:
        return m_flags[at] & flagOf(kind);
    }
}

void Problems::append(std::optional<ProblemKind> kind, qsizetype first, qsizetype last,
                      std::vector<Problem> &problems) const
{
    const InfoList &infos = m_document.infos();
    const auto appendKind = [&](ProblemKind each, std::size_t place) {
        if (!hasProblem(each, static_cast<qsizetype>(place)))
            return;
        if (each == ProblemKind::MissingComponent) {
            const std::vector<quint64> &keys = m_componentLists[m_components[place] - 1];
            for (std::size_t part = 0; part < keys.size(); ++part) {
                if (isMissing(keys[part]))
                    problems.push_back({each, infos[place], static_cast<int>(part)});
            }
            return;
        }
        if (each == ProblemKind::RepeatingAltName) {
            const std::span<const quint64> keys = altNamesAt(place);
            for (std::size_t part = 0; part < keys.size(); ++part) {
                if (keys[part] != 0 && m_names.count(keys[part]) > 0)
                    problems.push_back({each, infos[place], static_cast<int>(part)});
            }
            return;
        }
        if (each != ProblemKind::DuplicateCodePoint) {
            problems.push_back({each, infos[place], 0});
            return;
        }
        const std::span<const quint32> codePoints = codePointsAt(place);
        for (std::size_t part = 0; part < codePoints.size(); ++part) {
            if (codePoints[part] != kNoCodePoint && m_codes.count(keyOfCodePoint(codePoints[part])) > 1)
                problems.push_back({each, infos[place], static_cast<int>(part)});
        }
    };
    for (auto place = static_cast<std::size_t>(first); place < static_cast<std::size_t>(last); ++place) {
        for (const ProblemKind each : allProblemKinds()) {
            if (each < kFirstReadProblem && (!kind || *kind == each))
                appendKind(each, place);
        }
    }
}

// What was read

void Problems::takeWhatWasRead()
{
    m_read.take(m_document);
    countWhatWasRead();
}

void Problems::countWhatWasRead()
{
    std::copy(m_read.counts().begin() + static_cast<int>(kFirstReadProblem), m_read.counts().end(),
              m_counts.begin() + static_cast<int>(kFirstReadProblem));
}

// In words

QString Problems::explanation(const Problem &problem) const
{
    return problem.kind >= kFirstReadProblem ? m_read.textOf(problem)
                                             : textOfProblem(problem, {m_document, m_names, m_codes});
}

} // namespace runebook
