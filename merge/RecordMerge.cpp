#include "merge/RecordMerge.h"

#include "model/GlyphLineReader.h"

#include <algorithm>

namespace runebook {

namespace {

using Result = RecordMerge::Result;

bool haveSameFields(const VXGlyphInfo &one, const VXGlyphInfo &other)
{
    const auto isSame = [&](GlyphField field) { return haveSameValue(field, &one, &other); };
    return std::all_of(mergedFields().begin(), mergedFields().end(), isSame);
}

/// One side has removed the record: right, if the other has changed nothing but the form of its line.
void mergeRemoved(const MergeTables &tables, RecordMerge &merge)
{
    const bool byUs = merge.places.ours == kNoPlace;
    const MergeSide side = byUs ? MergeSide::Theirs : MergeSide::Ours;
    const MergePlace place = byUs ? merge.places.theirs : merge.places.ours;
    merge.state = byUs ? MergeState::Ours : MergeState::Theirs;
    merge.result = Result::Nothing;
    if (tables[side].line(place) == tables.base().line(merge.places.base))
        return;
    bool isWhole = true;
    const InfoPtr kept = tables.read(side, place, &isWhole);
    const InfoPtr base = tables.read(MergeSide::Base, merge.places.base, &isWhole);
    if (isWhole && haveSameFields(*kept, *base))
        return;
    merge.state = MergeState::Conflict;
    merge.conflict = byUs ? ConflictKind::RemovedByUs : ConflictKind::RemovedByThem;
    merge.result = Result::Conflict;
}

bool hasState(const RecordMerge &merge, MergeState state)
{
    return std::any_of(merge.fields.begin(), merge.fields.end(),
                       [state](const FieldMerge &field) { return field.state == state; });
}

/// What comes out of fields that were merged one by one.
void conclude(RecordMerge &merge)
{
    const bool fromUs = hasState(merge, MergeState::Ours);
    const bool fromThem = hasState(merge, MergeState::Theirs);
    const bool isMerged = hasState(merge, MergeState::Merged) || (fromUs && fromThem);
    if (hasState(merge, MergeState::Conflict)) {
        merge.state = MergeState::Conflict;
        merge.conflict = ConflictKind::Fields;
        merge.result = Result::Conflict;
    } else if (isMerged) {
        merge.state = MergeState::Merged;
        merge.result = Result::Fields;
    } else if (fromThem) {
        merge.state = MergeState::Theirs;
        merge.result = Result::TheirsLine;
    } else {
        merge.result = Result::OursLine;
        merge.state = fromUs                    ? MergeState::Ours
            : hasState(merge, MergeState::Both) ? MergeState::Both
                                                : MergeState::Unchanged;
    }
}

void mergeChanged(const MergeTables &tables, RecordMerge &merge)
{
    bool areWhole = true;
    const RecordSides sides = tables.read(merge.places, &areWhole);
    if (!areWhole) {
        merge.state = MergeState::Conflict;
        merge.conflict = ConflictKind::Line;
        merge.result = Result::Conflict;
        return;
    }
    for (const GlyphField field : mergedFields()) {
        FieldMerge each = mergeField(field, sides.base.get(), *sides.ours, *sides.theirs);
        if (each.state != MergeState::Unchanged)
            merge.fields.push_back(std::move(each));
    }
    conclude(merge);
}

} // namespace

InfoPtr MergeTables::read(MergeSide side, MergePlace place, bool *isWhole) const
{
    if (place == kNoPlace)
        return nullptr;
    const std::string_view line = (*this)[side].line(place);
    // A copy of the line alone, so that records hold no more than they need.
    const SourcePtr source(new SourceBytes(QByteArray(line.data(), qsizetype(line.size()))));
    ReadNotes notes;
    InfoPtr info = GlyphLineReader(source, &notes).readPiece(0, source->size());
    if (isWhole && !notes.isEmpty())
        *isWhole = false;
    return info;
}

InfoPtr MergeTables::readWithLine(MergeSide side, MergePlace place) const
{
    const InfoPtr info = read(side, place);
    if (!info)
        return nullptr;
    constexpr quint8 kAllVersions = 3;
    const std::string_view line = (*this)[side].line(place);
    const SourcePtr source(new SourceBytes(QByteArray(line.data(), qsizetype(line.size())) + '\n'));
    VXGlyphInfo::Reading kept(source);
    for (const GlyphField field : mergedFields()) {
        if (field == GlyphField::Case)
            kept.setCase(info->caseValue());
        else if (field == GlyphField::Direction)
            kept.setDirection(info->direction());
        else
            kept.setValue(field, ownValue(field, *info));
    }
    if (!kept.info().stored(GlyphField::Unicodes).isAbsent())
        kept.updateUnicodeChar();
    kept.setLine(0, quint64(source->size()), kAllVersions);
    return kept.take();
}

RecordSides MergeTables::read(const MergedPlaces &places, bool *areWhole) const
{
    return {read(MergeSide::Base, places.base, areWhole), read(MergeSide::Ours, places.ours, areWhole),
            read(MergeSide::Theirs, places.theirs, areWhole)};
}

RecordMerge mergeRecord(const MergeTables &tables, const MergedPlaces &places)
{
    const auto [base, ours, theirs] = places;
    RecordMerge merge;
    merge.places = places;
    const auto take = [&merge](MergeState state, Result result) {
        merge.state = state;
        merge.result = result;
    };
    const auto isAsBase = [&tables, base = base](MergeSide side, MergePlace place) {
        return base == kNoPlace || place == kNoPlace ? base == place
                                                     : tables[side].line(place) == tables.base().line(base);
    };
    if (ours == kNoPlace && theirs == kNoPlace)
        take(MergeState::Both, Result::Nothing);
    else if (base != kNoPlace && (ours == kNoPlace || theirs == kNoPlace))
        mergeRemoved(tables, merge);
    else if (isAsBase(MergeSide::Theirs, theirs))
        take(isAsBase(MergeSide::Ours, ours) ? MergeState::Unchanged : MergeState::Ours, Result::OursLine);
    else if (isAsBase(MergeSide::Ours, ours))
        take(MergeState::Theirs, Result::TheirsLine);
    else if (tables.ours().line(ours) == tables.theirs().line(theirs))
        take(MergeState::Both, Result::OursLine);
    else
        mergeChanged(tables, merge);
    return merge;
}

void resolveRecord(const MergeTables &tables, RecordMerge &merge, MergeSide side)
{
    const bool fromUs = side == MergeSide::Ours;
    if (merge.conflict != ConflictKind::Fields) {
        const ConflictKind removed = fromUs ? ConflictKind::RemovedByUs : ConflictKind::RemovedByThem;
        merge.result = merge.conflict == removed ? Result::Nothing
            : fromUs                             ? Result::OursLine
                                                 : Result::TheirsLine;
        return;
    }
    const MergePlace place = fromUs ? merge.places.ours : merge.places.theirs;
    const InfoPtr chosen = tables.read(side, place);
    for (FieldMerge &field : merge.fields) {
        if (field.state == MergeState::Conflict)
            resolveField(merge, field.field, ownValue(field.field, *chosen));
    }
    // With nothing of the other side in it, it is that side's line.
    const MergeState other = fromUs ? MergeState::Theirs : MergeState::Ours;
    if (!hasState(merge, other) && !hasState(merge, MergeState::Merged))
        merge.result = fromUs ? Result::OursLine : Result::TheirsLine;
}

void resolveField(RecordMerge &merge, GlyphField field, const FieldValue &value)
{
    bool isResolved = true;
    for (FieldMerge &each : merge.fields) {
        if (each.field == field && each.state == MergeState::Conflict) {
            each.merged = value;
            each.isChosen = true;
        }
        isResolved &= each.state != MergeState::Conflict || each.isChosen;
    }
    if (isResolved && merge.conflict == ConflictKind::Fields)
        merge.result = Result::Fields;
}

InfoPtr mergedRecord(const MergeTables &tables, const RecordMerge &merge, MergeSide side)
{
    const auto [base, ours, theirs] = merge.places;
    const MergePlace place = side == MergeSide::Base ? base : side == MergeSide::Ours ? ours : theirs;
    const bool byFields = merge.result == Result::Fields || merge.conflict == ConflictKind::Fields;
    if (!byFields)
        return tables.read(side, place);
    // Without a base there is no value to go back to.
    const InfoPtr source = tables.read(side, place);
    InfoPtr info = tables.read(MergeSide::Ours, ours);
    for (const FieldMerge &field : merge.fields) {
        if (field.state != MergeState::Conflict || field.isChosen)
            setMergedValue(*info, field.field, field.merged);
        else if (source)
            setMergedValue(*info, field.field, ownValue(field.field, *source));
        else
            info->clear(field.field);
    }
    return info;
}

} // namespace runebook
