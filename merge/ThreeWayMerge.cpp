#include "merge/ThreeWayMerge.h"

#include "merge/MergeProgress.h"
#include "merge/OtherLines.h"
#include "platform/ParallelParts.h"

#include <QCoreApplication>
#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(ThreeWayMerge)
};

constexpr std::size_t kSides = 3;

// Of the time that all takes, about.
constexpr double kShareOfTables = 0.4;
constexpr double kShareOfMatching = 0.2;
constexpr double kShareOfRecords = 0.2;

QString nameOfSide(std::size_t side)
{
    constexpr const char *kNames[kSides] {QT_TRANSLATE_NOOP("ThreeWayMerge", "base"),
                                          QT_TRANSLATE_NOOP("ThreeWayMerge", "ours"),
                                          QT_TRANSLATE_NOOP("ThreeWayMerge", "theirs")};
    return Texts::tr(kNames[side]);
}

/// The version of a file as readers find it, where its header tells none.
quint8 versionOf(const MergeTable &table)
{
    if (const quint8 version = table.headerVersion())
        return version;
    return table.bytes().contains(" accents=\"") ? 1 : 2;
}

bool isOpen(const RecordMerge &record)
{
    return record.result == RecordMerge::Result::Conflict;
}

} // namespace

std::optional<ThreeWayMerge> ThreeWayMerge::of(const QByteArray &base, const QByteArray &ours,
                                               const QByteArray &theirs, const MergeOptions &options,
                                               Error *error)
{
    const std::array<const QByteArray *, kSides> texts {&base, &ours, &theirs};
    std::array<std::optional<MergeTable>, kSides> tables;
    std::array<Error, kSides> errors;
    inParallel(kSides, [&](qsizetype side) {
        const auto i = std::size_t(side);
        tables[i] = MergeTable::of(*texts[i], options.key, &errors[i], options.progress,
                                   kShareOfTables / double(kSides));
    });
    for (std::size_t side = 0; side < kSides; ++side) {
        if (tables[side])
            continue;
        errors[side].description = Texts::tr("The side “%1” cannot be merged.").arg(nameOfSide(side));
        fail(error, errors[side]);
        return {};
    }
    ThreeWayMerge merge;
    merge.m_options = options;
    merge.m_tables =
        std::make_unique<MergeTables>(std::move(*tables[0]), std::move(*tables[1]), std::move(*tables[2]));
    merge.m_matching = MergeMatching::of(*merge.m_tables, error);
    if (!merge.m_matching)
        return {};
    if (options.progress)
        options.progress->advance(kShareOfMatching);
    merge.mergeHeader();
    if (!merge.mergeRecords()) {
        fail(error, {u"MergeError"_s, 5, Texts::tr("The merge was cancelled."), {}, {}});
        return {};
    }
    return merge;
}

void ThreeWayMerge::mergeHeader()
{
    const MergeTable &ours = m_tables->ours();
    const MergeTable &theirs = m_tables->theirs();
    const std::string_view base = m_tables->base().header();
    const quint8 ourVersion = versionOf(ours);
    const quint8 theirVersion = ours.count() > 0 && theirs.count() == 0 ? ourVersion : versionOf(theirs);
    m_header = ours.header();
    m_version = std::max(ours.count() == 0 ? theirVersion : ourVersion, theirVersion);
    if (ourVersion != theirVersion) {
        m_header = ourVersion > theirVersion ? ours.header() : theirs.header();
        return;
    }
    if (haveSameLines(theirs.header(), base) || haveSameLines(theirs.header(), ours.header()))
        return;
    if (haveSameLines(ours.header(), base) || m_options.prefer == MergeSide::Theirs)
        m_header = theirs.header();
    else
        m_isHeaderInConflict = !m_options.prefer;
}

/// Of our records, those that are the same on all sides, to the last byte.
std::vector<quint8> ThreeWayMerge::plainRecords() const
{
    const MergePlace count = m_tables->ours().count();
    std::vector<quint8> isPlain(count);
    constexpr qsizetype kSmallest = 4096;
    const qsizetype parts = usefulParts(count, kSmallest);
    const MergePlace size = count / MergePlace(parts) + 1;
    inParallel(parts, [&](qsizetype part) {
        const MergePlace end = std::min<quint64>(count, (quint64(part) + 1) * size);
        for (MergePlace place = MergePlace(part) * size; place < end; ++place) {
            const auto [base, ours, theirs] = m_matching->placesOfOurs(place);
            if (base == kNoPlace || theirs == kNoPlace)
                continue;
            const std::string_view line = m_tables->ours().line(ours);
            isPlain[place] = line == m_tables->base().line(base) && line == m_tables->theirs().line(theirs);
        }
    });
    return isPlain;
}

bool ThreeWayMerge::mergeRecords()
{
    constexpr std::size_t kStep = 1 << 14;
    const std::vector<quint8> isPlain = plainRecords();
    const std::vector<OrderedRecord> order = mergedOrder(*m_tables, *m_matching);
    m_items.reserve(order.size());
    for (const OrderedRecord &record : order) {
        if (m_options.progress && m_items.size() % kStep == kStep - 1) {
            m_options.progress->advance(kShareOfRecords * double(kStep) / double(order.size()));
            if (m_options.progress->isCancelled())
                return false;
        }
        if (record.isOurs && isPlain[record.place]) {
            m_items.push_back({record, kNoPlace});
            continue;
        }
        m_items.push_back({record, quint32(m_records.size())});
        m_records.push_back(mergeRecord(*m_tables, placesOf(m_items.back())));
        if (isOpen(m_records.back()) && m_options.prefer)
            resolve(m_records.size() - 1, *m_options.prefer);
    }
    return true;
}

QString ThreeWayMerge::keyOf(const RecordMerge &record) const
{
    const auto [base, ours, theirs] = record.places;
    const std::string_view key = ours != kNoPlace ? m_tables->ours().key(ours)
        : theirs != kNoPlace                      ? m_tables->theirs().key(theirs)
                                                  : m_tables->base().key(base);
    return QString::fromUtf8(key.data(), qsizetype(key.size()));
}

InfoPtr ThreeWayMerge::resultOf(const RecordMerge &record) const
{
    switch (record.result) {
    case RecordMerge::Result::OursLine:
        return m_tables->read(MergeSide::Ours, record.places.ours);
    case RecordMerge::Result::TheirsLine:
        return m_tables->read(MergeSide::Theirs, record.places.theirs);
    case RecordMerge::Result::Nothing:
        return nullptr;
    case RecordMerge::Result::Fields:
    case RecordMerge::Result::Conflict:
        break;
    }
    return mergedRecord(*m_tables, record, MergeSide::Ours);
}

qsizetype ThreeWayMerge::count(MergeState state) const
{
    return std::count_if(m_records.begin(), m_records.end(),
                         [state](const RecordMerge &record) { return record.state == state; });
}

qsizetype ThreeWayMerge::openConflicts() const
{
    return std::count_if(m_records.begin(), m_records.end(), &isOpen) + m_isHeaderInConflict;
}

void ThreeWayMerge::resolve(std::size_t record, MergeSide side)
{
    resolveRecord(*m_tables, m_records[record], side);
}

void ThreeWayMerge::resolve(std::size_t record, GlyphField field, const FieldValue &value)
{
    resolveField(m_records[record], field, value);
}

} // namespace runebook
