#include "document/VXDocument.h"

// Look-ups: they answer as a scan from the top of the list would.

#include <QSet>
#include <algorithm>
#include <utility>

using namespace runebook;
using namespace Qt::StringLiterals;

InfoIndex *VXDocument::indexForField(GlyphField field) const
{
    switch (field) {
    case GlyphField::Name:
        return &m_byName;
    case GlyphField::Unicode:
    case GlyphField::Unicodes:
        return &m_byUnicode;
    case GlyphField::Production:
        return &m_byProduction;
    default:
        return nullptr;
    }
}

const InfoIndex &VXDocument::ready(InfoIndex &index) const
{
    // What was not heard may have changed any of them.
    if (m_sharesRecords) {
        const quint64 unheard = VXGlyphInfo::changesOfListed() - m_heardChanges;
        if (std::exchange(m_unheardChanges, unheard) != unheard) {
            for (InfoIndex *each : {&m_byName, &m_byUnicode, &m_byProduction})
                each->drop();
        }
    }
    if (!index.isBuilt())
        index.build(infos());
    return index;
}

InfoPtr VXDocument::firstFound(InfoIndex &index, const QString &text) const
{
    std::vector<VXGlyphInfo *> found;
    ready(index).find(text.toStdString(), found);
    if (found.empty())
        return nullptr;
    VXGlyphInfo *first = found.front();
    for (VXGlyphInfo *info : found) {
        if (info != first && placeOf(info) < placeOf(first))
            first = info;
    }
    return first->shared_from_this();
}

InfoPtr VXDocument::infoForName(const QString &name) const
{
    if (!name.isEmpty())
        return firstFound(m_byName, name);
    if (name.isNull())
        return nullptr;
    // The index leaves out what is empty.
    const auto found = std::find_if(infos().begin(), infos().end(), [](const InfoPtr &info) {
        const FieldValue &value = info->stored(GlyphField::Name);
        return !value.isAbsent() && value.isEmpty();
    });
    return found == infos().end() ? nullptr : *found;
}

InfoPtr VXDocument::infoForUnicode(const QString &unicode) const
{
    return unicode.isEmpty() ? nullptr : firstFound(m_byUnicode, unicode);
}

std::optional<InfoList> VXDocument::indexedInfos(GlyphField field, const QVariantList &values) const
{
    if (field != GlyphField::Name && field != GlyphField::Unicode && field != GlyphField::Production)
        return {};
    const InfoIndex &index = ready(*indexForField(field));
    std::vector<VXGlyphInfo *> found;
    QStringList texts;
    for (const QVariant &value : values) {
        if (value.typeId() != QMetaType::QString || value.toString().isEmpty())
            return {};
        texts << value.toString();
    }
    texts.removeDuplicates();
    for (const QString &text : std::as_const(texts))
        index.find(text.toStdString(), found);
    // One that stands in the list twice has only one place here.
    if (std::any_of(found.begin(), found.end(), [](const auto *info) { return info->listings() > 1; }))
        return {};
    std::sort(found.begin(), found.end(),
              [this](const auto *a, const auto *b) { return placeOf(a) < placeOf(b); });
    InfoList infos;
    infos.reserve(found.size());
    for (VXGlyphInfo *info : found)
        infos.push_back(info->shared_from_this());
    return infos;
}

namespace {

/// Values to be compared with those of many records: texts and lists by their hash.
class ValueSet
{
public:
    explicit ValueSet(const QVariantList &values)
    {
        for (const QVariant &value : values) {
            if (value.typeId() == QMetaType::QString)
                m_texts.insert(value.toString());
            else if (value.typeId() == QMetaType::QStringList)
                m_lists.insert(value.toStringList());
            else if (!m_others.contains(value))
                m_others << value;
        }
    }
    /// An absent text is none of them.
    bool contains(const QVariant &value) const
    {
        if (value.typeId() == QMetaType::QString)
            return !value.toString().isNull() && m_texts.contains(value.toString());
        if (value.typeId() == QMetaType::QStringList && m_lists.contains(value.toStringList()))
            return true;
        return m_others.contains(value);
    }

private:
    QSet<QString> m_texts;
    QSet<QStringList> m_lists;
    QVariantList m_others; ///< numbers, of which there are few; lists of another kind
};

bool isUpperHex(QStringView text)
{
    return std::all_of(text.begin(), text.end(),
                       [](QChar c) { return (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'F'); });
}

} // namespace

std::optional<InfoList> VXDocument::infoForKeyValues(const QString &key, const QVariantList &values) const
{
    const std::optional<GlyphField> field = fieldForKey(key);
    if (!field)
        return {};
    std::optional<InfoList> matches = indexedInfos(*field, values);
    if (!matches) {
        matches.emplace();
        const ValueSet wanted(values);
        for (const InfoPtr &info : infos()) {
            if (wanted.contains(info->valueForKey(key)))
                matches->push_back(info);
        }
    }
    if (matches->empty())
        return {};
    return matches;
}

std::optional<InfoList> VXDocument::baseInfosForUniName(const QString &name) const
{
    struct Form {
        QLatin1StringView prefix;
        qsizetype digits;
    };
    for (const Form form : {Form {"uni"_L1, 4}, Form {"u"_L1, 5}}) {
        const QStringView digits = QStringView(name).mid(form.prefix.size());
        if (!name.startsWith(form.prefix) || digits.isEmpty() || digits.size() % form.digits != 0
            || !isUpperHex(digits))
            continue;
        InfoList infos;
        for (qsizetype i = 0; i < digits.size(); i += form.digits) {
            const QString chunk = digits.mid(i, form.digits).toString();
            InfoPtr info = infoForUnicode(chunk);
            if (!info) {
                info = VXGlyphInfo::init();
                info->setName(form.prefix + chunk);
                info->setUnicode(chunk);
            }
            infos.push_back(std::move(info));
        }
        return infos;
    }
    return {};
}
