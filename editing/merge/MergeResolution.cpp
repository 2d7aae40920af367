#include "editing/merge/MergeResolution.h"

#include "document/OpenConflicts.h"
#include "editing/fields/FieldEditing.h"
#include "editing/fields/GlyphColumns.h"
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

} // namespace

PreparedMerge PreparedMerge::of(const std::array<QByteArray, 3> &sides, CompareKey key)
{
    PreparedMerge prepared;
    MergeOptions options;
    options.key = key;
    prepared.merge = ThreeWayMerge::of(sides[0], sides[1], sides[2], options, &prepared.error);
    if (!prepared.merge)
        return prepared;
    options.prefer = MergeSide::Ours;
    prepared.text = textOf(*ThreeWayMerge::of(sides[0], sides[1], sides[2], options));
    return prepared;
}

// Making

std::unique_ptr<MergeResolution> MergeResolution::of(PreparedMerge prepared, VXDocument &document)
{
    if (!prepared.merge)
        return nullptr;
    std::unique_ptr<MergeResolution> made(new MergeResolution(std::move(*prepared.merge), document));
    return made->findRecords() ? std::move(made) : nullptr;
}

MergeResolution::MergeResolution(ThreeWayMerge merge, VXDocument &document)
    : m_merge(std::move(merge)), m_document(&document)
{
}

MergeResolution::~MergeResolution() = default;

bool MergeResolution::findRecords()
{
    const InfoList &infos = m_document->infos();
    const std::vector<MergeItem> &items = m_merge.items();
    m_infos.resize(items.size());
    m_items.resize(m_merge.records().size());
    m_states.resize(m_merge.records().size());
    m_fields.resize(m_merge.records().size());
    std::size_t place = 0;
    for (std::size_t item = 0; item < items.size(); ++item) {
        const quint32 number = items[item].merge;
        bool isThere = true;
        if (number != kNoPlace) {
            const RecordMerge &merge = record(number);
            m_items[number] = quint32(item);
            m_fields[number] = conflictingFields(merge);
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
    if (place != infos.size())
        return false;
    m_openCount = m_conflictCount;
    setOpenConflicts(*m_document, m_openCount);
    return true;
}

MergeResolution::FieldBits MergeResolution::conflictingFields(const RecordMerge &record) const
{
    FieldBits bits = 0;
    for (const FieldMerge &field : record.fields) {
        if (field.state == MergeState::Conflict)
            bits |= bitOf(field.field);
    }
    if (record.conflict != ConflictKind::Line)
        return bits;
    const RecordSides sides = m_merge.sidesOf(record);
    for (const GlyphField field : mergedFields()) {
        if (!haveSameValue(field, sides.ours.get(), sides.theirs.get()))
            bits |= bitOf(field);
    }
    return bits;
}

// Asking

bool MergeResolution::isResolved(std::size_t number) const
{
    const FieldBits fields = m_fields[number];
    return !isConflict(record(number)) || m_states[number].isTaken
        || (fields != 0 && (m_states[number].chosen & fields) == fields);
}

bool MergeResolution::isInConflict(std::size_t number, GlyphField field) const
{
    return m_fields[number] & bitOf(field);
}

bool MergeResolution::isChosen(std::size_t number, GlyphField field) const
{
    return m_states[number].isTaken || (m_states[number].chosen & bitOf(field));
}

InfoPtr MergeResolution::resultOf(std::size_t number) const
{
    const InfoPtr &info = m_infos[m_items[number]];
    return info && m_document && m_document->placeOf(info.get()) >= 0 ? info : nullptr;
}

QString MergeResolution::nameOf(std::size_t number) const
{
    constexpr qsizetype kLongest = 60;
    return m_merge.keyOf(record(number)).left(kLongest);
}

// Deciding

void MergeResolution::take(std::size_t number, MergeSide side)
{
    if (!m_document || !isConflict(record(number)))
        return;
    const UndoGroup group(m_document->undoManager(),
                          (side == MergeSide::Ours ? tr("Take “%1” from Ours") : tr("Take “%1” from Theirs"))
                              .arg(nameOf(number)));
    takeRecord(number, side, m_fields[number]);
    m_document->flushChanges();
}

void MergeResolution::takeAll(MergeSide side)
{
    if (!m_document || m_openCount == 0)
        return;
    const QString name =
        side == MergeSide::Ours ? tr("Take %1 Conflicts from Ours") : tr("Take %1 Conflicts from Theirs");
    const UndoGroup group(m_document->undoManager(), name.arg(QLocale().toString(m_openCount)));
    for (std::size_t number = 0; number < m_states.size(); ++number) {
        if (!isResolved(number))
            takeRecord(number, side, m_fields[number] & ~m_states[number].chosen);
    }
    m_document->flushChanges();
}

void MergeResolution::takeRecord(std::size_t number, MergeSide side, FieldBits fields)
{
    const RecordMerge &merge = record(number);
    const RecordSides sides = m_merge.sidesOf(merge);
    const InfoPtr source = side == MergeSide::Ours ? sides.ours : sides.theirs;
    InfoPtr &info = m_infos[m_items[number]];
    const qsizetype place = info ? m_document->placeOf(info.get()) : -1;
    if (!source && place >= 0) {
        m_document->removeObjectFromInfosAtIndex(place);
    } else if (source) {
        if (place < 0) {
            if (!info)
                info = source;
            m_document->insertObjectInInfosAtIndex(info, placeFor(m_items[number]));
        }
        for (const GlyphField field : mergedFields()) {
            if (fields & bitOf(field))
                takeValue(*info, field, *source);
        }
    }
    setState(number, {m_fields[number], true});
}

void MergeResolution::takeField(std::size_t number, GlyphField field, MergeSide side)
{
    const InfoPtr info = resultOf(number);
    const RecordSides sides = m_merge.sidesOf(record(number));
    const InfoPtr source = side == MergeSide::Ours ? sides.ours : sides.theirs;
    if (!info || !source || !isInConflict(number, field))
        return;
    const UndoGroup group(
        m_document->undoManager(),
        (side == MergeSide::Ours ? tr("Take %1 of “%2” from Ours") : tr("Take %1 of “%2” from Theirs"))
            .arg(fieldTitle(field), nameOf(number)));
    takeValue(*info, field, *source);
    setState(number, {m_states[number].chosen | bitOf(field), m_states[number].isTaken});
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
    setState(number, {m_states[number].chosen | bitOf(field), m_states[number].isTaken});
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

void MergeResolution::setState(std::size_t number, State state)
{
    const State old = m_states[number];
    m_document->undoManager()->registerUndo([guard = QPointer(this), number, old] {
        if (guard)
            guard->setState(number, old);
    });
    m_openCount += isResolved(number);
    m_states[number] = state;
    m_openCount -= isResolved(number);
    setOpenConflicts(*m_document, m_openCount);
    Q_EMIT changed();
}

} // namespace runebook
