#include "editing/merge/MergeResolution.h"

#include "editing/fields/FieldEditing.h"
#include "editing/fields/GlyphColumns.h"
#include "merge/MergeProgress.h"
#include "merge/MergedText.h"
#include "platform/UndoManager.h"

#include <QLocale>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

bool isConflict(const RecordMerge &record)
{
    return record.conflict != ConflictKind::None;
}

/// Nothing where the value is there already, so that the record keeps its line.
void putValue(VXGlyphInfo &info, GlyphField field, const FieldValue &value)
{
    const bool isNumber = field == GlyphField::Case || field == GlyphField::Direction;
    if (isNumber || !FieldValue::equal(info.stored(field), info.sourceData(), value, nullptr))
        setMergedValue(info, field, value);
}

QString textOf(std::string_view bytes)
{
    return QString::fromUtf8(bytes.data(), qsizetype(bytes.size()));
}

} // namespace

PreparedMerge PreparedMerge::of(const std::array<QByteArray, 3> &sides, CompareKey key,
                                MergeProgress *progress)
{
    constexpr double kShareOfText = 0.1;
    PreparedMerge prepared;
    MergeOptions options;
    options.key = key;
    options.progress = progress;
    prepared.merge = ThreeWayMerge::of(sides[0], sides[1], sides[2], options, &prepared.error);
    if (!prepared.merge)
        return prepared;
    const QByteArray text = textOf(*prepared.merge, MergeSide::Ours);
    if (progress)
        progress->advance(kShareOfText);
    if (auto content = formatOfType(kGlyphDataType)->readData(text, nullptr))
        prepared.content = std::move(*content);
    prepared.renames = possibleRenames(*prepared.merge);
    return prepared;
}

void changeOpenConflicts(VXDocument &document, qsizetype count)
{
    document.undoManager()->registerUndo([guard = QPointer(&document), before = document.openConflicts()] {
        if (guard)
            changeOpenConflicts(*guard, before);
    });
    document.setOpenConflicts(count);
}

// Making

std::unique_ptr<MergeResolution> MergeResolution::of(PreparedMerge prepared, VXDocument &document)
{
    if (!prepared.merge)
        return nullptr;
    const std::vector<PossibleRename> renames = std::exchange(prepared.renames, {});
    std::unique_ptr<MergeResolution> made(new MergeResolution(std::move(prepared), document));
    if (!made->findRecords())
        return nullptr;
    made->findRenames(renames);
    document.setOpenConflicts(made->m_openCount);
    return made;
}

MergeResolution::MergeResolution(PreparedMerge prepared, VXDocument &document)
    : m_merge(std::move(*prepared.merge)), m_document(&document)
{
    if (!m_merge.isHeaderInConflict())
        return;
    m_header.state = MergeState::Conflict;
    m_header.conflict = ConflictKind::Line;
    m_header.result = RecordMerge::Result::Conflict;
}

MergeResolution::~MergeResolution() = default;

bool MergeResolution::findRecords()
{
    const InfoList &infos = m_document->infos();
    const std::vector<MergeItem> &items = m_merge.items();
    m_infos.resize(items.size());
    m_items.resize(m_merge.records().size());
    m_states.resize(m_merge.records().size() + 1);
    m_conflictCount = isConflict(m_header);
    std::size_t place = 0;
    for (std::size_t item = 0; item < items.size(); ++item) {
        const quint32 number = items[item].merge;
        bool isThere = true;
        if (number != kNoPlace) {
            const RecordMerge &merge = record(number);
            m_items[number] = quint32(item);
            m_conflictCount += isConflict(merge);
            isThere = isConflict(merge) ? merge.places.ours != kNoPlace
                                        : merge.result != RecordMerge::Result::Nothing;
        }
        if (!isThere)
            continue;
        if (place >= infos.size())
            return false;
        m_infos[item] = infos[place++];
    }
    m_openCount = m_conflictCount;
    return place == infos.size();
}

/// Those that decide a conflict, and leave nothing of it that could only be decided as a whole.
void MergeResolution::findRenames(const std::vector<PossibleRename> &renames)
{
    for (const PossibleRename &rename : renames) {
        if (!rename.isInConflict || isConflict(m_merge.records()[rename.to]))
            continue;
        RecordMerge merged = mergeRecord(m_merge.tables(), placesOfRename(m_merge, rename));
        if (merged.conflict == ConflictKind::None || merged.conflict == ConflictKind::Fields)
            m_renames.insert({rename.from, {rename, std::move(merged)}});
    }
}

MergeResolution::FieldBits MergeResolution::conflictingFields(const RecordMerge &record)
{
    FieldBits bits = 0;
    for (const FieldMerge &field : record.fields) {
        if (field.state == MergeState::Conflict)
            bits |= bitOf(field.field);
    }
    return bits;
}

// Asking

const RecordMerge &MergeResolution::record(std::size_t number) const
{
    if (number == headerNumber())
        return m_header;
    return !m_states.empty() && m_states[number].isRenamed ? m_renames.at(number).record
                                                           : m_merge.records()[number];
}

RecordSides MergeResolution::sidesOf(std::size_t number) const
{
    return number == headerNumber() ? RecordSides() : m_merge.sidesOf(record(number));
}

QString MergeResolution::keyOf(std::size_t number) const
{
    return number == headerNumber() ? tr("Header") : m_merge.keyOf(m_merge.records()[number]);
}

MergeResolution::FieldBits MergeResolution::fieldsOf(std::size_t number) const
{
    return conflictingFields(record(number));
}

std::size_t MergeResolution::itemOf(std::size_t number) const
{
    return m_items[m_states[number].isRenamed ? m_renames.at(number).rename.to : number];
}

bool MergeResolution::isResolved(std::size_t number) const
{
    const State &state = m_states[number];
    if (state.isTaken)
        return true;
    const FieldBits fields = fieldsOf(number);
    if (state.isRenamed)
        return (state.chosen & fields) == fields;
    return !isConflict(record(number)) || (fields != 0 && (state.chosen & fields) == fields);
}

bool MergeResolution::isInConflict(std::size_t number, GlyphField field) const
{
    return fieldsOf(number) & bitOf(field);
}

bool MergeResolution::isChosen(std::size_t number, GlyphField field) const
{
    return m_states[number].isTaken || (m_states[number].chosen & bitOf(field));
}

std::array<QString, 3> MergeResolution::linesOf(std::size_t number) const
{
    const auto [base, ours, theirs] = record(number).places;
    const std::array<MergePlace, 3> places {base, ours, theirs};
    std::array<QString, 3> lines;
    for (std::size_t side = 0; side < lines.size(); ++side) {
        const MergeTable &table = m_merge.tables()[MergeSide(side)];
        if (number == headerNumber())
            lines[side] = textOf(table.header()).trimmed();
        else if (places[side] != kNoPlace)
            lines[side] = textOf(table.line(places[side])).trimmed();
    }
    return lines;
}

InfoPtr MergeResolution::resultOf(std::size_t number) const
{
    if (number == headerNumber())
        return nullptr;
    const InfoPtr &info = m_infos[itemOf(number)];
    return info && m_document && m_document->placeOf(info.get()) >= 0 ? info : nullptr;
}

const PossibleRename *MergeResolution::renameOf(std::size_t number) const
{
    const auto found = m_renames.find(number);
    return found == m_renames.end() ? nullptr : &found->second.rename;
}

QString MergeResolution::nameOf(std::size_t number) const
{
    constexpr qsizetype kLongest = 60;
    return keyOf(number).left(kLongest);
}

// Deciding

void MergeResolution::take(std::size_t number, MergeSide side)
{
    if (!m_document || !isConflict(record(number)))
        return;
    const UndoGroup group(m_document->undoManager(),
                          (side == MergeSide::Ours ? tr("Take “%1” from Ours") : tr("Take “%1” from Theirs"))
                              .arg(nameOf(number)));
    takeRecord(number, side, fieldsOf(number));
    m_document->flushChanges();
}

void MergeResolution::takeAll(MergeSide side)
{
    if (!m_document || m_openCount == 0)
        return;
    const bool fromUs = side == MergeSide::Ours;
    const QString name = m_openCount == 1
        ? (fromUs ? tr("Take One Conflict from Ours") : tr("Take One Conflict from Theirs"))
        : (fromUs ? tr("Take %1 Conflicts from Ours") : tr("Take %1 Conflicts from Theirs"))
              .arg(QLocale().toString(m_openCount));
    const UndoGroup group(m_document->undoManager(), name);
    for (std::size_t number = 0; number < m_states.size(); ++number) {
        if (!isResolved(number))
            takeRecord(number, side, fieldsOf(number) & ~m_states[number].chosen);
    }
    m_document->flushChanges();
}

void MergeResolution::takeRecord(std::size_t number, MergeSide side, FieldBits fields)
{
    State state = m_states[number];
    state.chosen |= fields;
    state.isTaken = true;
    if (number == headerNumber()) { // which a save prints as it prints every header
        setState(number, state);
        return;
    }
    if (isOfLines(number)) {
        takeLine(number, side);
        setState(number, state);
        return;
    }
    const RecordSides sides = sidesOf(number);
    const InfoPtr source = side == MergeSide::Ours ? sides.ours : sides.theirs;
    const std::size_t item = itemOf(number);
    const qsizetype place = m_infos[item] ? m_document->placeOf(m_infos[item].get()) : -1;
    if (!source && place >= 0) {
        m_document->removeObjectFromInfosAtIndex(place);
    } else if (source) {
        if (!m_infos[item])
            m_infos[item] = source;
        putRecord(item);
        for (const GlyphField field : mergedFields()) {
            if (fields & bitOf(field))
                takeValue(*m_infos[item], field, *source);
        }
    }
    setState(number, state);
}

/// A record that is printed as that side's line, whatever else that holds, comes in the place of the one that
/// is there.
void MergeResolution::takeLine(std::size_t number, MergeSide side)
{
    const MergedPlaces &places = record(number).places;
    const InfoPtr info =
        m_merge.tables().readWithLine(side, side == MergeSide::Ours ? places.ours : places.theirs);
    const std::size_t item = itemOf(number);
    if (!info)
        return;
    const qsizetype place = m_infos[item] ? m_document->placeOf(m_infos[item].get()) : -1;
    if (place >= 0)
        m_document->removeObjectFromInfosAtIndex(place);
    m_document->insertObjectInInfosAtIndex(info, place >= 0 ? place : placeFor(item));
    setInfo(item, info);
}

/// Nothing where it is in the document.
void MergeResolution::putRecord(std::size_t item)
{
    if (m_document->placeOf(m_infos[item].get()) < 0)
        m_document->insertObjectInInfosAtIndex(m_infos[item], placeFor(item));
}

void MergeResolution::takeRename(std::size_t number)
{
    const auto found = m_renames.find(number);
    if (!m_document || found == m_renames.end() || m_states[number].isRenamed)
        return;
    const auto &[rename, merged] = found->second;
    const std::size_t to = m_items[rename.to];
    if (!m_infos[to])
        return;
    const UndoGroup group(m_document->undoManager(),
                          tr("Take “%1” Renamed to “%2”").arg(nameOf(number), nameOf(rename.to)));
    if (const InfoPtr former = resultOf(number))
        m_document->removeObjectFromInfosAtIndex(m_document->placeOf(former.get()));
    putRecord(to);
    for (const FieldMerge &field : merged.fields)
        putValue(*m_infos[to], field.field, field.merged);
    setState(number, {0, false, true});
    m_document->flushChanges();
}

void MergeResolution::takeField(std::size_t number, GlyphField field, MergeSide side)
{
    const InfoPtr info = resultOf(number);
    const RecordSides sides = sidesOf(number);
    const InfoPtr source = side == MergeSide::Ours ? sides.ours : sides.theirs;
    if (!info || !source || !isInConflict(number, field))
        return;
    const UndoGroup group(
        m_document->undoManager(),
        (side == MergeSide::Ours ? tr("Take %1 of “%2” from Ours") : tr("Take %1 of “%2” from Theirs"))
            .arg(fieldTitle(field), nameOf(number)));
    takeValue(*info, field, *source);
    State state = m_states[number];
    state.chosen |= bitOf(field);
    setState(number, state);
    m_document->flushChanges();
}

bool MergeResolution::takeText(std::size_t number, GlyphField field, const QString &text, Error *error)
{
    const InfoPtr info = resultOf(number);
    if (!info || !isInConflict(number, field))
        return fail(error, {u"EditError"_s, 3, tr("The record is not in the document."), {}, {}});
    const UndoGroup group(m_document->undoManager(),
                          tr("Set %1 of “%2”").arg(fieldTitle(field), nameOf(number)));
    if (!setFieldFromText(*m_document, {info}, field, text, error))
        return false;
    State state = m_states[number];
    state.chosen |= bitOf(field);
    setState(number, state);
    m_document->flushChanges();
    return true;
}

/// Nothing where the value is there already, so that the record keeps its line.
void MergeResolution::takeValue(VXGlyphInfo &info, GlyphField field, const VXGlyphInfo &source)
{
    if (!haveSameValue(field, &info, &source))
        setMergedValue(info, field, ownValue(field, source));
}

/// Behind the record that it follows in the merge.
qsizetype MergeResolution::placeFor(std::size_t item) const
{
    while (item-- > 0) {
        const qsizetype place = m_infos[item] ? m_document->placeOf(m_infos[item].get()) : -1;
        if (place >= 0)
            return place + 1;
    }
    return 0;
}

void MergeResolution::setInfo(std::size_t item, const InfoPtr &info)
{
    m_document->undoManager()->registerUndo([guard = QPointer(this), item, old = m_infos[item]] {
        if (guard)
            guard->setInfo(item, old);
    });
    m_infos[item] = info;
}

/// The document goes on to know how many are open when nobody resolves them any more and steps are taken
/// back.
void MergeResolution::setState(std::size_t number, State state)
{
    applyState(number, state);
    changeOpenConflicts(*m_document, m_openCount);
}

void MergeResolution::applyState(std::size_t number, State state)
{
    const State old = m_states[number];
    m_document->undoManager()->registerUndo([guard = QPointer(this), number, old] {
        if (guard)
            guard->applyState(number, old);
    });
    m_openCount += isResolved(number);
    m_states[number] = state;
    m_openCount -= isResolved(number);
    Q_EMIT changed();
}

void MergeResolution::endWithUndo()
{
    m_document->undoManager()->registerUndo([guard = QPointer(this)] {
        if (!guard)
            return;
        guard->m_isInForce = !guard->m_isInForce;
        guard->endWithUndo();
        Q_EMIT guard->changed();
    });
}

} // namespace runebook
