#include "editing/problems/Problems.h"

#include "editing/problems/ProblemTexts.h"
#include "editing/problems/UnicodeChecks.h"
#include "model/CodePointRules.h"
#include "model/NameRules.h"

#include <algorithm>
#include <functional>
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

quint64 keyOfCodePoint(quint32 codePoint)
{
    return quint64(codePoint) + 1;
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

std::optional<char32_t> firstCodePoint(const VXGlyphInfo &info)
{
    std::string buffer;
    return codePointOfText(info.unicodeUtf8(buffer));
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
    m_relations.assign(count);
    m_codePoints.assign(count, kNoCodePoint);
    m_lists.clear();
    m_freeLists.clear();
    m_codes.clear();
    std::fill(m_counts.begin(), m_counts.begin() + static_cast<int>(kFirstReadProblem), 0);
    m_changed.clear();
    m_nextChanged = 0;
    m_next = m_nextHint = 0;
}

// Looking

bool Problems::isComplete() const
{
    return areProblemsCounted() && m_nextHint >= m_flags.size() && m_fileVersion == m_document.fileVersion();
}

double Problems::progress() const
{
    const std::size_t all = 2 * m_flags.size() + m_changed.size();
    return all ? static_cast<double>(m_next + m_nextHint + m_nextChanged) / static_cast<double>(all) : 1;
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
    if (places.empty()) {
        const std::size_t end = std::min(m_nextHint + kBatch, m_flags.size());
        while (m_nextHint < end)
            checkHints(m_nextHint++);
    }
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
    std::vector<quint64> names;
    names.reserve(places.size());
    for (const VXGlyphInfo *info : infos)
        names.push_back(prepare(*info));
    for (std::size_t i = 0; i < places.size(); ++i) {
        const auto place = static_cast<std::size_t>(places[i]);
        Flags flags = flagsOf(*infos[i]);
        if (place < m_nextHint)
            flags |= hintsOf(*infos[i]);
        if (m_outcomes[i] == RoundTrip::Outcome::Broken)
            flags |= flagOf(ProblemKind::QuoteOrBreak);
        else if (m_outcomes[i] != RoundTrip::Outcome::Same)
            flags |= flagOf(ProblemKind::LostValue);
        setFlags(place, flags);
        dropKeys(place);
        setKeys(place, *infos[i], names[i]);
    }
    m_relations.update();
}

/// Of very many records, what is counted under a key lies far away: the processor is told early.
quint64 Problems::prepare(const VXGlyphInfo &info) const
{
    m_codes.prefetch(keyOfCodePoint(info.unicodeChar()));
    return m_relations.prepare(info);
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
    forEachEntry(info.utf8(GlyphField::Decompose, other), [&](std::string_view component) {
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

Problems::Flags Problems::hintsOf(const VXGlyphInfo &info) const
{
    return static_cast<Flags>(UnicodeChecks::hintsOf(info, firstCodePoint(info)));
}

/// Of a record that was looked at for everything else.
void Problems::checkHints(std::size_t place)
{
    const VXGlyphInfo &info = *m_document.infos()[place];
    setFlags(place, m_flags[place] | hintsOf(info));
    m_relations.setHints(place, info, firstCodePoint(info));
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

void Problems::setKeys(std::size_t place, const VXGlyphInfo &info, quint64 name)
{
    m_relations.set(place, info, name);
    if (place < m_nextHint)
        m_relations.setHints(place, info, firstCodePoint(info));
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
    m_relations.drop(place);
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
    merge(m_codePoints, kNoCodePoint);
    m_relations.insert(places);
    if (places.size() <= kFew) {
        // Places ascend and count those that came in front of them.
        for (const qsizetype place : places) {
            m_next += static_cast<std::size_t>(place) <= m_next;
            m_nextHint += static_cast<std::size_t>(place) <= m_nextHint;
        }
        check(places);
    } else {
        m_next = qMin(m_next, static_cast<std::size_t>(places.front()));
        m_nextHint = qMin(m_nextHint, m_next);
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
    for (std::size_t *next : {&m_next, &m_nextHint}) {
        const auto lookedAt = std::lower_bound(places.begin(), places.end(), static_cast<qsizetype>(*next));
        *next -= static_cast<std::size_t>(lookedAt - places.begin());
    }
    const auto erase = [&places](auto &values) { values.erase(places, [](auto) {}); };
    erase(m_flags);
    erase(m_codePoints);
    m_relations.erase(places);
    m_relations.update();
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
        m_next = m_nextHint = 0;
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
    if (m_leftOut & setOf(kind) || isTooEarlyFor(kind))
        return 0;
    if (kind == ProblemKind::DuplicateCodePoint)
        return m_codes.repeated();
    return NameRelations::knows(kind) ? m_relations.count(kind) : m_counts[static_cast<std::size_t>(kind)];
}

/// Until all names are known nobody can tell what is missing.
bool Problems::isTooEarlyFor(ProblemKind kind) const
{
    if (kind == ProblemKind::OneSidedAnchor)
        return m_nextHint < m_flags.size();
    return m_next < m_flags.size()
        && (kind == ProblemKind::MissingComponent || kind == ProblemKind::MissingMark);
}

void Problems::setLeftOut(ProblemKindSet kinds)
{
    if (std::exchange(m_leftOut, kinds & kOptionalKinds) == m_leftOut)
        return;
    Q_EMIT changed();
    if (isComplete())
        Q_EMIT completed();
}

std::array<qsizetype, kProblemKindCount> Problems::counts() const
{
    std::array<qsizetype, kProblemKindCount> counts {};
    for (const ProblemKind kind : allProblemKinds())
        counts[static_cast<std::size_t>(kind)] = count(kind);
    return counts;
}

qsizetype Problems::total(ProblemKindSet kinds) const
{
    qsizetype sum = 0;
    for (const ProblemKind kind : allProblemKinds())
        sum += kinds & setOf(kind) ? count(kind) : 0;
    return sum;
}

bool Problems::hasProblem(ProblemKind kind, qsizetype place) const
{
    const auto at = static_cast<std::size_t>(place);
    if (m_leftOut & setOf(kind) || isTooEarlyFor(kind))
        return false;
    if (NameRelations::knows(kind))
        return m_relations.hasProblem(kind, at);
    if (kind != ProblemKind::DuplicateCodePoint)
        return m_flags[at] & flagOf(kind);
    const std::span<const quint32> codePoints = codePointsAt(at);
    return std::any_of(codePoints.begin(), codePoints.end(),
                       [this](quint32 codePoint) { return isRepeated(codePoint); });
}

bool Problems::isRepeated(quint32 codePoint) const
{
    return codePoint != kNoCodePoint && m_codes.count(keyOfCodePoint(codePoint)) > 1;
}

bool Problems::hasProblemOf(ProblemKindSet kinds, qsizetype place) const
{
    const auto all = allProblemKinds();
    return std::any_of(all.begin(), all.end(), [&](ProblemKind kind) {
        return kinds & kRecordKinds & setOf(kind) && hasProblem(kind, place);
    });
}

void Problems::appendOf(ProblemKindSet kinds, qsizetype first, qsizetype last,
                        std::vector<Problem> &problems) const
{
    const InfoList &infos = m_document.infos();
    const auto appendKind = [&](ProblemKind kind, std::size_t place) {
        const auto add = [&](int part) { problems.push_back({kind, infos[place], part}); };
        if (!hasProblem(kind, static_cast<qsizetype>(place)))
            return;
        if (kind != ProblemKind::DuplicateCodePoint) {
            m_relations.forEachPart(kind, place, add);
            return;
        }
        const std::span<const quint32> codePoints = codePointsAt(place);
        for (std::size_t part = 0; part < codePoints.size(); ++part) {
            if (isRepeated(codePoints[part]))
                add(static_cast<int>(part));
        }
    };
    for (auto place = static_cast<std::size_t>(first); place < static_cast<std::size_t>(last); ++place) {
        for (const ProblemKind kind : allProblemKinds()) {
            if (kinds & kRecordKinds & setOf(kind))
                appendKind(kind, place);
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
                                             : textOfProblem(problem, {m_document, m_codes, m_relations});
}

} // namespace runebook
