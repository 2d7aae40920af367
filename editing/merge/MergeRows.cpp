#include "editing/merge/MergeRows.h"

#include <QCoreApplication>
#include <QLocale>
#include <algorithm>

namespace runebook {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(MergeRows)
};

QString numberText(qsizetype number)
{
    return QLocale().toString(qlonglong(number));
}

QString explanationOfChange(const MergedPlaces &places)
{
    const auto [base, ours, theirs] = places;
    if (base == kNoPlace)
        return theirs == kNoPlace ? Texts::tr("Ours added this record.")
            : ours == kNoPlace    ? Texts::tr("Theirs added this record.")
                                  : Texts::tr("Both added this record.");
    return ours == kNoPlace || theirs == kNoPlace ? Texts::tr("This record was removed.") : QString();
}

QString explanationOfRemoval(const MergeResolution &resolution, std::size_t number)
{
    const bool byUs = resolution.record(number).conflict == ConflictKind::RemovedByUs;
    const QString removed = byUs ? Texts::tr("Ours removed this record, theirs edited it.")
                                 : Texts::tr("Theirs removed this record, ours edited it.");
    const QString now = resolution.resultOf(number) ? Texts::tr("It is kept.") : Texts::tr("It is removed.");
    const PossibleRename *rename = resolution.renameOf(number);
    if (!rename)
        return removed + u' ' + now;
    return removed + u' ' + now + u'\n'
        + (byUs ? Texts::tr("It may have been renamed by ours: “%1” has its code points.")
                : Texts::tr("It may have been renamed by theirs: “%1” has its code points."))
              .arg(resolution.keyOf(rename->to));
}

QString explanationOfRename(const MergeResolution &resolution, std::size_t number)
{
    return Texts::tr("Taken as renamed: %1 → %2. The edits of both sides are in it.")
        .arg(resolution.keyOf(number), resolution.keyOf(resolution.renameOf(number)->to));
}

} // namespace

std::vector<MergeRow> mergeRows(const MergeResolution &resolution, std::size_t number)
{
    if (number == resolution.headerNumber())
        return {};
    const RecordMerge &record = resolution.record(number);
    const RecordSides sides = resolution.sidesOf(number);
    const auto isChanged = [&](GlyphField field, const InfoPtr &side) {
        return side && !haveSameValue(field, side.get(), sides.base.get());
    };
    const auto isThere = [](GlyphField field, const InfoPtr &side) {
        return !haveSameValue(field, side.get(), nullptr);
    };
    std::vector<MergeRow> rows;
    std::vector<MergeRow> all;
    for (const GlyphField field : mergedFields()) {
        const bool isInConflict = resolution.isInConflict(number, field);
        const auto merged = std::find_if(record.fields.begin(), record.fields.end(),
                                         [field](const FieldMerge &each) { return each.field == field; });
        const MergeRow row {field, merged == record.fields.end() ? record.state : merged->state, isInConflict,
                            resolution.isChosen(number, field)};
        if (isInConflict || isChanged(field, sides.ours) || isChanged(field, sides.theirs))
            rows.push_back(row);
        if (isThere(field, sides.base) || isThere(field, sides.ours) || isThere(field, sides.theirs))
            all.push_back(row);
    }
    return rows.empty() && !resolution.isOfLines(number) ? all : rows;
}

QString mergeExplanation(const MergeResolution &resolution, std::size_t number)
{
    if (number == resolution.headerNumber())
        return Texts::tr("Both changed what stands above the records. Whichever is right, a save writes "
                         "Runebook's own header.");
    if (resolution.isRenamed(number))
        return explanationOfRename(resolution, number);
    const RecordMerge &record = resolution.record(number);
    switch (record.conflict) {
    case ConflictKind::RemovedByUs:
    case ConflictKind::RemovedByThem:
        return explanationOfRemoval(resolution, number);
    case ConflictKind::Line:
        return Texts::tr("Both changed this record, whose line holds more than the known fields: the whole "
                         "line is taken from one side.");
    case ConflictKind::Fields:
        return record.places.base == kNoPlace ? Texts::tr("Both added this record.")
                                              : Texts::tr("Both changed the same fields.");
    case ConflictKind::None:
        break;
    }
    return explanationOfChange(record.places);
}

QString mergeStateText(const MergeResolution &resolution)
{
    const qsizetype all = resolution.conflictCount();
    const qsizetype open = resolution.openCount();
    if (all == 0)
        return Texts::tr("There are no conflicts.");
    if (open == 0)
        return Texts::tr("All conflicts are resolved.");
    return Texts::tr("%1 of %2 conflicts remain.").arg(numberText(open), numberText(all));
}

} // namespace runebook
