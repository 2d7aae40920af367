#include "editing/replace/FindReplace.h"

#include "editing/fields/GlyphColumns.h"
#include "model/FieldTable.h"
#include "model/NameRules.h"

#include <algorithm>
#include <utility>

namespace runebook {

namespace {

// In the order of the tags.
constexpr auto kFields = fieldsBy<&FieldRow::replaceTag>();

// Between two looks at the clock.
constexpr std::size_t kBatch = 64;

std::size_t hashOf(std::string_view name)
{
    return std::hash<std::string_view>()(name);
}

} // namespace

QList<int> FindReplace::tags()
{
    QList<int> tags;
    for (const GlyphField field : kFields)
        tags << rowOf(field).replaceTag;
    return tags;
}

std::optional<GlyphField> FindReplace::fieldForTag(int tag)
{
    const auto *field = std::find_if(kFields.begin(), kFields.end(),
                                     [tag](GlyphField each) { return rowOf(each).replaceTag == tag; });
    return field == kFields.end() ? std::nullopt : std::optional(*field);
}

QString FindReplace::titleForTag(int tag)
{
    const std::optional<GlyphField> field = fieldForTag(tag);
    return field ? fieldTitle(*field) : QString();
}

FindReplace::FindReplace(const QString &find, const QString &replacement, int tag,
                         const ReplaceOptions &options)
    : m_text(find, replacement, options),
      m_field(fieldForTag(tag)),
      m_replacesBrackets(replacement.contains(u'<') || replacement.contains(u'>'))
{
}

QString FindReplace::problem() const
{
    if (!m_text.problem().isNull())
        return tr("The regular expression is not valid: %1.").arg(m_text.problem());
    return m_text.hasGivenUp() ? tr("The regular expression takes too many steps.") : QString();
}

bool FindReplace::isUseful() const
{
    return m_field && m_text.problem().isNull()
        && !(m_text.find().isEmpty() && m_text.replacement().isEmpty());
}

QStringList FindReplace::replacedElements(const QStringList &elements) const
{
    QStringList replaced;
    replaced.reserve(elements.size());
    for (const QString &element : elements)
        replaced += m_text.replacedIn(element);
    return replaced;
}

/// How often something is replaced in a record; 0 when the record stays as it is.
qsizetype FindReplace::occurrencesIn(const VXGlyphInfo &info) const
{
    const FieldValue &value = info.stored(*m_field);
    if (value.isAbsent() || !m_text.changesAnything())
        return 0;
    if (value.isPiece() && rowOf(*m_field).kind != FieldKind::List && *m_field != GlyphField::Marks)
        return m_text.countIn(value.bytes(info.sourceData()));
    // Most records go out here, before a string is made. What is found may still lie across two names.
    if (value.isPiece() && !m_text.occursIn(value.bytes(info.sourceData())))
        return 0;
    qsizetype count = 0;
    for (const QString &element : info.entriesOf(*m_field))
        count += m_text.countIn(element);
    const bool isRefused = count > 0 && *m_field == GlyphField::Marks
        && VXGlyphInfo::refusesMarks(m_text.replacedIn(info.marks()).toStdString());
    return isRefused ? 0 : count;
}

/// Why a record in which the text occurs stays as it is; null when nothing is in the way.
QString FindReplace::refusal(const VXGlyphInfo &info) const
{
    // Most go out here: a mark of a comment comes from what was there and what is put in.
    std::string buffer;
    const auto hasBracket = [](std::string_view text) {
        return text.find('<') != text.npos || text.find('>') != text.npos;
    };
    if (!m_replacesBrackets && !hasBracket(info.utf8(*m_field, buffer)))
        return {};
    return refusalOfEdited(*m_field, replacedElements(info.entriesOf(*m_field)));
}

ReplacePreview FindReplace::previewOf(const VXGlyphInfo &info) const
{
    ReplacePreview preview;
    preview.name = info.name();
    const QStringList elements = info.entriesOf(*m_field);
    const QStringList replaced = replacedElements(elements);
    preview.before = elements.join(kListSeparator);
    preview.after = replaced.join(kListSeparator);
    const auto append = [](std::vector<UnitRange> &to, const std::vector<UnitRange> &ranges, qsizetype by) {
        for (const UnitRange &range : ranges)
            to.push_back({range.location + by, range.length});
    };
    qsizetype before = 0;
    qsizetype after = 0;
    for (qsizetype i = 0; i < elements.size(); ++i) {
        const TextReplacement::Places places = m_text.placesIn(elements.at(i));
        append(preview.places.found, places.found, before);
        append(preview.places.inserted, places.inserted, after);
        before += elements.at(i).size() + kListSeparator.size();
        after += replaced.at(i).size() + kListSeparator.size();
    }
    return preview;
}

ReplaceSummary FindReplace::preview(const InfoList &infos, qsizetype shown) const
{
    Progress progress;
    previewMore(infos, shown, QDeadlineTimer(QDeadlineTimer::Forever), progress);
    return progress.summary;
}

bool FindReplace::previewMore(const InfoList &infos, qsizetype shown, const QDeadlineTimer &deadline,
                              Progress &progress) const
{
    ReplaceSummary &summary = progress.summary;
    if (!isUseful())
        return true;
    while (progress.next < infos.size()) {
        for (const std::size_t end = std::min(infos.size(), progress.next + kBatch); progress.next < end;
             ++progress.next) {
            const VXGlyphInfo &info = *infos[progress.next];
            const qsizetype occurrences = occurrencesIn(info);
            if (m_text.hasGivenUp()) {
                summary = {};
                return true;
            }
            if (occurrences == 0)
                continue;
            if (const QString why = refusal(info); !why.isNull()) {
                summary.leftOut.add(why);
                continue;
            }
            ++summary.records;
            summary.occurrences += occurrences;
            if (summary.records <= shown)
                summary.first.push_back(previewOf(info));
        }
        if (deadline.hasExpired())
            break;
    }
    return progress.next == infos.size();
}

std::string_view FindReplace::newName(const VXGlyphInfo &info, std::string &buffer) const
{
    const FieldValue &name = info.stored(GlyphField::Name);
    if (name.isPiece())
        m_text.replaceIn(name.bytes(info.sourceData()), buffer);
    else
        buffer = m_text.replacedIn(info.name()).toStdString();
    return buffer;
}

NameProblems FindReplace::nameProblems(const InfoList &infos, const InfoList &all) const
{
    NameScan scan;
    nameProblemsMore(infos, all, QDeadlineTimer(QDeadlineTimer::Forever), scan);
    return scan.problems;
}

bool FindReplace::nameProblemsMore(const InfoList &infos, const InfoList &all, const QDeadlineTimer &deadline,
                                   NameScan &scan) const
{
    if (!isUseful() || *m_field != GlyphField::Name)
        return true;
    // Calls step for the next places until all are done or the time is over.
    const auto goOn = [&deadline](std::size_t &next, std::size_t count, auto step) {
        while (next < count) {
            for (const std::size_t end = std::min(count, next + kBatch); next < end; ++next)
                step(next);
            if (next < count && deadline.hasExpired())
                return false;
        }
        return true;
    };
    if (!goOn(scan.nextSelected, infos.size(), [&](std::size_t i) { scan.selected.insert(infos[i].get()); }))
        return false;
    // Names are compared by their hashes: two that differ have the same one less than once in a billion
    // documents, and then a warning says one too many.
    std::string buffer;
    const auto lookAt = [&](std::size_t i) {
        const VXGlyphInfo &info = *all[i];
        if (!scan.selected.contains(&info) || occurrencesIn(info) == 0 || !refusal(info).isNull()) {
            scan.everybody.push_back(hashOf(info.utf8(GlyphField::Name, buffer)));
            return;
        }
        const std::string_view name = newName(info, buffer);
        if (objectionToName(name) != NameObjection::None)
            ++scan.problems.invalid;
        scan.everybody.push_back(hashOf(name));
        scan.changed.push_back(scan.everybody.back());
    };
    if (!goOn(scan.next, all.size(), lookAt))
        return false;
    if (!std::exchange(scan.isSorted, true))
        std::sort(scan.everybody.begin(), scan.everybody.end());
    return goOn(scan.nextChanged, scan.changed.size(), [&](std::size_t i) {
        const std::size_t name = scan.changed[i];
        const auto first = std::lower_bound(scan.everybody.begin(), scan.everybody.end(), name);
        if (std::next(first) != scan.everybody.end() && *std::next(first) == name)
            ++scan.problems.repeated;
    });
}

void FindReplace::replaceIn(VXGlyphInfo &info) const
{
    if (rowOf(*m_field).kind == FieldKind::List)
        storeEdited(info, *m_field, replacedElements(info.entriesOf(*m_field)));
    else
        storeEdited(info, *m_field, m_text.replacedIn(info.stringValue(*m_field)));
}

ReplaceSummary FindReplace::apply(const InfoList &infos) const
{
    Progress progress;
    applyMore(infos, QDeadlineTimer(QDeadlineTimer::Forever), progress);
    return progress.summary;
}

bool FindReplace::applyMore(const InfoList &infos, const QDeadlineTimer &deadline, Progress &progress) const
{
    if (!isUseful())
        return true;
    while (progress.next < infos.size() && !m_text.hasGivenUp()) {
        for (const std::size_t end = std::min(infos.size(), progress.next + kBatch); progress.next < end;
             ++progress.next) {
            VXGlyphInfo &info = *infos[progress.next];
            if (info.stored(*m_field).isAbsent()) {
                storeText(info, *m_field, {});
                continue;
            }
            const qsizetype occurrences = occurrencesIn(info);
            if (occurrences == 0)
                continue;
            if (const QString why = refusal(info); !why.isNull()) {
                progress.summary.leftOut.add(why);
                continue;
            }
            replaceIn(info);
            ++progress.summary.records;
            progress.summary.occurrences += occurrences;
        }
        if (deadline.hasExpired())
            break;
    }
    return progress.next == infos.size() || m_text.hasGivenUp();
}

} // namespace runebook
