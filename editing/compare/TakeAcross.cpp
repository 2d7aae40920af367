#include "editing/compare/TakeAcross.h"

#include "editing/compare/RecordPairs.h"
#include "model/FieldTable.h"
#include "platform/UndoManager.h"

#include <QCoreApplication>
#include <QLocale>
#include <algorithm>
#include <bit>
#include <unordered_set>

namespace runebook {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(TakeAcross)
};

QString stepName(const InfoList &records, const QString &one, const QString &several)
{
    return records.size() == 1 ? one.arg(records.front()->name())
                               : several.arg(QLocale().toString(std::ssize(records)));
}

/// A free record with every value of \a info.
InfoPtr wholeCopyOf(const VXGlyphInfo &info)
{
    InfoPtr copy = VXGlyphInfo::init();
    copy->takeValuesOf(info);
    return copy;
}

} // namespace

TakeAcross::TakeAcross(const VXDocument &source, VXDocument &target, CompareKey key,
                       const CompareOptions &options)
    : m_source(source), m_target(target), m_key(key), m_options(options)
{
}

// Taking

TakeAcross::Outcome TakeAcross::takeRecords(const InfoList &theirs, const InfoList &ours)
{
    Outcome outcome;
    const UndoGroup group(m_target.undoManager(),
                          stepName(theirs, Texts::tr("Take “%1”"), Texts::tr("Take %1 Records")));
    InfoList missing;
    for (const RecordPair &pair : differingPairs(theirs, ours, m_key)) {
        if (!pair.right)
            missing.push_back(pair.left);
        if (!pair.left || !pair.right)
            continue;
        bool isChanged = false;
        const FieldBits differing = differingBits(*pair.left, *pair.right, m_options);
        for (const ComparedField &field : comparedFields()) {
            if (differing & bitOf(field.field))
                isChanged |= setField(*pair.right, *pair.left, field.field, outcome);
        }
        outcome.changed += isChanged;
    }
    // In the order of the source: pairs come in that of the records given, which may be another one.
    std::sort(missing.begin(), missing.end(), [this](const InfoPtr &a, const InfoPtr &b) {
        return m_source.placeOf(a.get()) < m_source.placeOf(b.get());
    });
    insert(missing, outcome);
    return outcome;
}

TakeAcross::Outcome TakeAcross::takeField(GlyphField field, const InfoList &theirs, const InfoList &ours)
{
    Outcome outcome;
    const QString title = titleOfField(field);
    const UndoGroup group(
        m_target.undoManager(),
        ours.size() == 1
            ? Texts::tr("Take %1").arg(title)
            : Texts::tr("Take %1 of %2 Records").arg(title, QLocale().toString(std::ssize(ours))));
    for (const RecordPair &pair : differingPairs(theirs, ours, m_key)) {
        if (!pair.left || !pair.right)
            continue;
        const FieldBits differing = differingBits(*pair.left, *pair.right, m_options);
        if ((differing & bitOf(field)) && setField(*pair.right, *pair.left, field, outcome))
            ++outcome.changed;
    }
    return outcome;
}

/// False when no save would write the value.
bool TakeAcross::setField(VXGlyphInfo &target, const VXGlyphInfo &source, GlyphField field,
                          Outcome &outcome) const
{
    switch (field) {
    case GlyphField::Case:
        target.setCase(source.caseValue());
        return true;
    case GlyphField::Direction:
        target.setDirection(source.direction());
        return true;
    default:
        break;
    }
    const bool isList = rowOf(field).kind == FieldKind::List;
    const QStringList value = isList ? source.entriesOf(field) : QStringList(source.stringValue(field));
    if (const QString refusal = refusalOfEdited(field, value); !refusal.isNull()) {
        outcome.leftOut.add(refusal);
        return false;
    }
    // As it stands on the other side: what a setter makes of it would differ again.
    if (std::all_of(value.begin(), value.end(), [](const QString &part) { return part.isEmpty(); }))
        target.clear(field);
    else
        target.editValue(field, isList ? FieldValue::list(value) : FieldValue::text(value.first()));
    return true;
}

// Inserting

/// The place in the target of the last record with the key of \a info; -1 when there is none.
qsizetype TakeAcross::placeOfCounterpart(const VXGlyphInfo &info) const
{
    std::string buffer;
    const std::string_view key = keyUtf8(info, m_key, buffer);
    if (key.empty())
        return -1;
    const QVariantList keys {QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()))};
    const std::optional<InfoList> found = m_target.infoForKeyValues(propertyOfKey(m_key), keys);
    return found && !found->empty() ? m_target.indexOfObjectInInfos(found->back()) : -1;
}

/// \a records stand in the order of the source.
void TakeAcross::insert(const InfoList &records, Outcome &outcome)
{
    std::vector<Addition> additions;
    qsizetype last = -1; // the record added before this one, and the place behind which it goes
    qsizetype lastBehind = -1;
    for (const InfoPtr &record : records) {
        InfoPtr copy = wholeCopyOf(*record);
        if (const QString refusal = refusalOfEdited(*copy); !refusal.isNull()) {
            outcome.leftOut.add(refusal);
            continue;
        }
        const qsizetype place = m_source.placeOf(record.get());
        qsizetype behind = -1;
        for (qsizetype before = place - 1; behind < 0 && before > last; --before)
            behind = placeOfCounterpart(*m_source.objectInInfosAtIndex(before));
        lastBehind = behind < 0 ? lastBehind : behind;
        last = place;
        additions.push_back({lastBehind, std::move(copy)});
    }
    if (additions.empty())
        return;
    std::stable_sort(additions.begin(), additions.end(),
                     [](const Addition &a, const Addition &b) { return a.behind < b.behind; });
    InfoList infos;
    std::vector<qsizetype> places;
    for (Addition &addition : additions) {
        places.push_back(addition.behind + 1 + std::ssize(infos));
        infos.push_back(std::move(addition.record));
    }
    outcome.inserted = std::ssize(infos);
    m_target.insertObjectsInInfosAtIndexes(infos, IndexSet(std::move(places)));
}

// Removing

TakeAcross::Outcome TakeAcross::removeMissing(const InfoList &theirs, const InfoList &ours)
{
    InfoList removed;
    for (const RecordPair &pair : differingPairs(theirs, ours, m_key)) {
        if (!pair.left)
            removed.push_back(pair.right);
    }
    Outcome outcome;
    if (removed.empty())
        return outcome;
    std::vector<qsizetype> places;
    for (const InfoPtr &info : removed)
        places.push_back(m_target.indexOfObjectInInfos(info));
    outcome.removed = std::ssize(removed);
    const UndoGroup group(m_target.undoManager(),
                          stepName(removed, Texts::tr("Remove “%1”"), Texts::tr("Remove %1 Records")));
    m_target.removeObjectsFromInfosAtIndexes(IndexSet(std::move(places)));
    return outcome;
}

InfoList recordsWithKeys(const InfoList &infos, CompareKey key, const QStringList &keys)
{
    // Most records are none of them, which a look at one bit tells.
    const std::hash<std::string_view> hash;
    std::vector<bool> mayBeWanted(std::bit_ceil(static_cast<std::size_t>(keys.size()) * 16 + 64));
    std::unordered_set<std::string> wanted;
    wanted.reserve(static_cast<std::size_t>(keys.size()));
    for (const QString &each : keys) {
        std::string text = each.toStdString();
        mayBeWanted[hash(text) & (mayBeWanted.size() - 1)] = true;
        wanted.insert(std::move(text));
    }
    InfoList found;
    std::string buffer;
    for (const InfoPtr &info : infos) {
        const std::string_view text = keyUtf8(*info, key, buffer);
        if (!text.empty() && mayBeWanted[hash(text) & (mayBeWanted.size() - 1)]
            && wanted.contains(std::string(text)))
            found.push_back(info);
    }
    return found;
}

} // namespace runebook
