#include "editing/FindReplace.h"

#include "model/NameRules.h"

#include <algorithm>
#include <array>
#include <unordered_set>

namespace runebook {

namespace {

using TextSetter = void (VXGlyphInfo::*)(const QString &);

struct ReplaceField {
    GlyphField field;
    const char *title;
    TextSetter set;
};

// In the order of the tags.
constexpr std::array<ReplaceField, FindReplace::kLastTag - FindReplace::kFirstTag + 1> kFields {{
    {GlyphField::Name, QT_TRANSLATE_NOOP("FindReplace", "Name"), &VXGlyphInfo::setName},
    {GlyphField::Production, QT_TRANSLATE_NOOP("FindReplace", "Production name"),
     &VXGlyphInfo::setProduction},
    {GlyphField::AltNames, QT_TRANSLATE_NOOP("FindReplace", "Alternate names"), &VXGlyphInfo::setAltNames},
    {GlyphField::Anchors, QT_TRANSLATE_NOOP("FindReplace", "Anchors"), &VXGlyphInfo::setAnchors},
    {GlyphField::SortName, QT_TRANSLATE_NOOP("FindReplace", "Sort name"), &VXGlyphInfo::setSortName},
    {GlyphField::Desc, QT_TRANSLATE_NOOP("FindReplace", "Description"), &VXGlyphInfo::setDesc},
    {GlyphField::Decompose, QT_TRANSLATE_NOOP("FindReplace", "Decomposition"), &VXGlyphInfo::setDecompose},
    {GlyphField::Marks, QT_TRANSLATE_NOOP("FindReplace", "Accents"), &VXGlyphInfo::setMarks},
}};

const ReplaceField *entryForTag(int tag)
{
    if (tag < FindReplace::kFirstTag || tag > FindReplace::kLastTag)
        return nullptr;
    return &kFields[static_cast<std::size_t>(tag - FindReplace::kFirstTag)];
}

std::size_t hashOf(std::string_view name)
{
    return std::hash<std::string_view>()(name);
}

} // namespace

std::optional<GlyphField> FindReplace::fieldForTag(int tag)
{
    const ReplaceField *entry = entryForTag(tag);
    return entry ? std::optional(entry->field) : std::nullopt;
}

QString FindReplace::titleForTag(int tag)
{
    const ReplaceField *entry = entryForTag(tag);
    return entry ? tr(entry->title) : QString();
}

FindReplace::FindReplace(const QString &find, const QString &replacement, int tag)
    : m_text(find, replacement), m_field(fieldForTag(tag))
{
}

bool FindReplace::isUseful() const
{
    return m_field && !(m_text.find().isEmpty() && m_text.replacement().isEmpty());
}

QStringList FindReplace::elementsOf(const VXGlyphInfo &info) const
{
    return *m_field == GlyphField::AltNames ? info.altNames() : QStringList {info.stringValue(*m_field)};
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
    if (value.isPiece() && *m_field != GlyphField::AltNames && *m_field != GlyphField::Marks)
        return m_text.countIn(value.bytes(info.sourceData()));
    // Most records go out here, before a string is made. What is found may still lie across two names.
    if (value.isPiece() && !m_text.occursIn(value.bytes(info.sourceData())))
        return 0;
    qsizetype count = 0;
    for (const QString &element : elementsOf(info))
        count += m_text.countIn(element);
    const bool isRefused = count > 0 && *m_field == GlyphField::Marks
        && VXGlyphInfo::refusesMarks(m_text.replacedIn(info.marks()).toStdString());
    return isRefused ? 0 : count;
}

ReplacePreview FindReplace::previewOf(const VXGlyphInfo &info) const
{
    ReplacePreview preview;
    preview.name = info.name();
    const QStringList elements = elementsOf(info);
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
    ReplaceSummary summary;
    if (!isUseful())
        return summary;
    for (const InfoPtr &info : infos) {
        const qsizetype occurrences = occurrencesIn(*info);
        if (occurrences == 0)
            continue;
        ++summary.records;
        summary.occurrences += occurrences;
        if (summary.records <= shown)
            summary.first.push_back(previewOf(*info));
    }
    return summary;
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
    NameProblems problems;
    if (!isUseful() || *m_field != GlyphField::Name)
        return problems;
    std::unordered_set<const VXGlyphInfo *> selected;
    selected.reserve(infos.size());
    for (const InfoPtr &info : infos)
        selected.insert(info.get());

    // Names are compared by their hashes: two that differ have the same one less than once in a billion
    // documents, and then a warning says one too many.
    std::vector<std::size_t> changed;
    std::vector<std::size_t> everybody;
    everybody.reserve(all.size());
    std::string buffer;
    for (const InfoPtr &info : all) {
        if (!selected.contains(info.get()) || occurrencesIn(*info) == 0) {
            everybody.push_back(hashOf(info->utf8(GlyphField::Name, buffer)));
            continue;
        }
        const std::string_view name = newName(*info, buffer);
        if (objectionToName(name) != NameObjection::None)
            ++problems.invalid;
        everybody.push_back(hashOf(name));
        changed.push_back(everybody.back());
    }
    std::sort(everybody.begin(), everybody.end());
    for (const std::size_t name : changed) {
        const auto first = std::lower_bound(everybody.begin(), everybody.end(), name);
        if (std::next(first) != everybody.end() && *std::next(first) == name)
            ++problems.repeated;
    }
    return problems;
}

void FindReplace::setText(VXGlyphInfo &info, const QString &text) const
{
    const auto hasField = [this](const ReplaceField &entry) { return entry.field == *m_field; };
    (info.*std::find_if(kFields.begin(), kFields.end(), hasField)->set)(text);
}

void FindReplace::replaceIn(VXGlyphInfo &info) const
{
    if (*m_field == GlyphField::AltNames)
        info.setAltNames(replacedElements(info.altNames()));
    else
        setText(info, m_text.replacedIn(info.stringValue(*m_field)));
}

ReplaceSummary FindReplace::apply(const InfoList &infos) const
{
    ReplaceSummary summary;
    if (!isUseful())
        return summary;
    for (const InfoPtr &info : infos) {
        if (info->stored(*m_field).isAbsent()) {
            setText(*info, QString());
            continue;
        }
        const qsizetype occurrences = occurrencesIn(*info);
        if (occurrences == 0)
            continue;
        replaceIn(*info);
        ++summary.records;
        summary.occurrences += occurrences;
    }
    return summary;
}

} // namespace runebook
