#include "document/InfoLookups.h"

#include <QSet>
#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

InfoIndex::Key keyOf(GlyphField field)
{
    return [field](const VXGlyphInfo &info, std::string &buffer) { return info.utf8(field, buffer); };
}

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

InfoLookups::InfoLookups(const InfoSequence &infos)
    : m_infos(infos),
      m_indexes {
          InfoIndex(keyOf(GlyphField::Name)),
          InfoIndex([](const VXGlyphInfo &info, std::string &buffer) { return info.unicodeUtf8(buffer); }),
          InfoIndex(keyOf(GlyphField::Production))}
{
}

InfoIndex *InfoLookups::indexForField(GlyphField field) const
{
    switch (field) {
    case GlyphField::Name:
        return &m_indexes[ByName];
    case GlyphField::Unicode:
    case GlyphField::Unicodes:
        return &m_indexes[ByUnicode];
    case GlyphField::Production:
        return &m_indexes[ByProduction];
    default:
        return nullptr;
    }
}

void InfoLookups::insert(VXGlyphInfo &info)
{
    for (InfoIndex &index : m_indexes) {
        if (index.isBuilt())
            index.insert(info);
    }
}

void InfoLookups::remove(VXGlyphInfo &info)
{
    for (InfoIndex &index : m_indexes) {
        if (index.isBuilt())
            index.remove(info);
    }
}

void InfoLookups::drop()
{
    for (InfoIndex &index : m_indexes)
        index.drop();
}

void InfoLookups::fieldHasChanged(VXGlyphInfo &info, GlyphField field, const FieldValue &old,
                                  std::size_t changes)
{
    constexpr std::size_t kFewChanges = 2000; // that an index follows in no time
    if (info.listings() > 0)
        ++m_heardChanges;
    InfoIndex *index = indexForField(field);
    if (!index)
        return;
    // A command that has changed a good part of the list leaves the index to be made anew. Only once: it may
    // look something up between its changes, and then the index is kept in step.
    if (changes == std::max(kFewChanges, static_cast<std::size_t>(m_infos.count()) / 16))
        index->drop();
    // How often a record of several lists stands in this one, nobody knows.
    if (m_infos.isShared() && info.listings() > 1)
        index->drop();
    if (!index->isBuilt() || !m_infos.lists(info))
        return;
    std::string buffer;
    std::string_view text = old.utf8(info.sourceData(), buffer);
    if (field == GlyphField::Unicodes && !old.isPiece())
        text = buffer = old.toList(info.sourceData()).value(0).toStdString();
    for (int i = 0; i < info.listings(); ++i)
        index->remove(info, text);
    for (int i = 0; i < info.listings(); ++i)
        index->insert(info);
}

const InfoIndex &InfoLookups::ready(InfoIndex &index) const
{
    // What was not heard may have changed any of them.
    if (m_infos.isShared()) {
        const quint64 unheard = VXGlyphInfo::changesOfListed() - m_heardChanges;
        if (std::exchange(m_unheardChanges, unheard) != unheard) {
            for (InfoIndex &each : m_indexes)
                each.drop();
        }
    }
    if (!index.isBuilt())
        index.build(m_infos.list());
    return index;
}

bool InfoLookups::isBefore(const VXGlyphInfo *a, const VXGlyphInfo *b) const
{
    return m_infos.placeOf(*a) < m_infos.placeOf(*b);
}

InfoPtr InfoLookups::firstFound(InfoIndex &index, const QString &text) const
{
    std::vector<VXGlyphInfo *> found;
    ready(index).find(text.toStdString(), found);
    if (found.empty())
        return nullptr;
    VXGlyphInfo *first = found.front();
    for (VXGlyphInfo *info : found) {
        if (info != first && isBefore(info, first))
            first = info;
    }
    return first->shared_from_this();
}

InfoPtr InfoLookups::infoForName(const QString &name) const
{
    if (!name.isEmpty())
        return firstFound(m_indexes[ByName], name);
    if (name.isNull())
        return nullptr;
    // The index leaves out what is empty.
    const InfoList &infos = m_infos.list();
    const auto found = std::find_if(infos.begin(), infos.end(), [](const InfoPtr &info) {
        const FieldValue &value = info->stored(GlyphField::Name);
        return !value.isAbsent() && value.isEmpty();
    });
    return found == infos.end() ? nullptr : *found;
}

InfoPtr InfoLookups::infoForUnicode(const QString &unicode) const
{
    return unicode.isEmpty() ? nullptr : firstFound(m_indexes[ByUnicode], unicode);
}

/// The records found by one of the texts, in list order; nothing when only a scan can tell.
std::optional<InfoList> InfoLookups::indexedInfos(GlyphField field, const QVariantList &values) const
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
    std::sort(found.begin(), found.end(), [this](const auto *a, const auto *b) { return isBefore(a, b); });
    InfoList infos;
    infos.reserve(found.size());
    for (VXGlyphInfo *info : found)
        infos.push_back(info->shared_from_this());
    return infos;
}

std::optional<InfoList> InfoLookups::infosForKeyValues(const QString &key, const QVariantList &values) const
{
    const std::optional<GlyphField> field = fieldForKey(key);
    if (!field)
        return {};
    std::optional<InfoList> matches = indexedInfos(*field, values);
    if (!matches) {
        matches.emplace();
        const ValueSet wanted(values);
        for (const InfoPtr &info : m_infos.list()) {
            if (wanted.contains(info->valueForKey(key)))
                matches->push_back(info);
        }
    }
    if (matches->empty())
        return {};
    return matches;
}

std::optional<InfoList> InfoLookups::baseInfosForUniName(const QString &name) const
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

} // namespace runebook
