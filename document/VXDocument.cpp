#include "document/VXDocument.h"

#include "document/GlyphDataReader.h"
#include "document/GlyphDataWriter.h"
#include "document/TabbedTable.h"
#include "platform/DocumentController.h"
#include "platform/FilePath.h"

#include <QFileInfo>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr double kAutosavingDelay = 6.0;
constexpr std::size_t kFewChanges = 2000; // that an index follows in no time
constexpr auto kXMLType = "public.xml"_L1;
constexpr auto kTableType = "public.plain-text"_L1;

InfoIndex::Key keyOf(GlyphField field)
{
    return [field](const VXGlyphInfo &info, std::string &buffer) { return info.utf8(field, buffer); };
}

/// Ascending and none twice, as scripts may not give them.
IndexSet asSet(IndexSet indexes)
{
    std::sort(indexes.begin(), indexes.end());
    indexes.erase(std::unique(indexes.begin(), indexes.end()), indexes.end());
    return indexes;
}

} // namespace

VXDocument::VXDocument(QObject *parent)
    : Document(parent),
      m_byName(keyOf(GlyphField::Name)),
      m_byUnicode([](const VXGlyphInfo &info, std::string &buffer) { return info.unicodeUtf8(buffer); }),
      m_byProduction(keyOf(GlyphField::Production))
{
    DocumentController::shared().setAutosavingDelay(kAutosavingDelay);
}

VXDocument::~VXDocument()
{
    for (const InfoPtr &info : m_infos) {
        info->setListings(qMax(0, info->listings() - 1));
        release(info);
    }
    for (const std::weak_ptr<VXGlyphInfo> &stray : m_strays) {
        if (const InfoPtr info = stray.lock())
            release(info);
    }
}

// Opening and saving

bool VXDocument::readFromURLOfType(const QString &url, const QString &type, Error *)
{
    m_readError = {};
    m_readNotes = {};
    std::optional<InfoList> infos;
    if (type == kXMLType)
        infos = readXMLFromURL(url, &m_readError);
    else if (type == kTableType)
        infos = readTabbedFromURL(url, &m_readError);
    else
        return false;
    setInfos(std::move(infos).value_or(InfoList()));
    return true;
}

std::optional<InfoList> VXDocument::readFromURL(const QString &url, Error *error)
{
    const QString extension = QFileInfo(pathFromURL(url)).suffix();
    if (extension == "xml"_L1)
        return readXMLFromURL(url, error);
    if (extension == "txt"_L1)
        return readTabbedFromURL(url, error);
    return {};
}

std::optional<InfoList> VXDocument::readXMLFromURL(const QString &url, Error *error)
{
    GlyphDataReader reader;
    std::optional<InfoList> infos = reader.read(pathFromURL(url), error);
    if (!infos)
        return {};
    m_fileVersion = reader.fileVersion();
    m_readNotes = reader.notes();
    return infos;
}

std::optional<InfoList> VXDocument::readTabbedFromURL(const QString &url, Error *error)
{
    return TabbedReader().read(pathFromURL(url), error);
}

bool VXDocument::writeToURLOfType(const QString &url, const QString &type, Error *error)
{
    const QString path = pathFromURL(url);
    const bool isAutosave = path == autosavedContentsURL();
    ContentProducer produce;
    if (type == kXMLType)
        produce = GlyphDataWriter(m_infos, m_fileVersion);
    else if (type == kTableType)
        produce = TabbedWriter(m_infos);
    else
        return false;
    return isAutosave ? FileSaver::replace(path, produce, error) : FileSaver::save(path, produce, error);
}

QString VXDocument::autosavingFileType() const
{
    return kXMLType;
}

void VXDocument::makeWindowControllers()
{
    if (DocumentController::shared().makeWindow(*this))
        QMetaObject::invokeMethod(windowController(), "updateTitle");
}

QString VXDocument::windowNibName() const
{
    return u"VXDocument_11"_s;
}

QString VXDocument::displayName() const
{
    if (fileURL().isEmpty())
        return Document::displayName();
    const QStringList parts = fileURL().split(u'/');
    QStringList shortest;
    for (const Document *other : DocumentController::shared().documentList()) {
        if (other == this || other->fileURL().isEmpty())
            continue;
        const QStringList otherParts = other->fileURL().split(u'/');
        QStringList candidate;
        for (qsizetype i = 1; i <= qMin(parts.size(), otherParts.size()); ++i) {
            const QString &part = parts.at(parts.size() - i);
            candidate.prepend(part);
            if (part != otherParts.at(otherParts.size() - i))
                break;
        }
        if (!candidate.isEmpty() && (shortest.isEmpty() || candidate.size() < shortest.size()))
            shortest = candidate;
    }
    return shortest.isEmpty() ? Document::displayName() : shortest.join(u'/');
}

// The info list

void VXDocument::adopt(const InfoPtr &info)
{
    if (info->listings() > 0 && info->document() != this) {
        // It stands in the list of a document that will not hear of its changes any more.
        m_sharesRecords = true;
        if (auto *other = qobject_cast<VXDocument *>(info->documentObject()))
            other->m_sharesRecords = true;
    }
    info->setDocument(this);
    info->setListings(info->listings() + 1);
}

void VXDocument::release(const InfoPtr &info)
{
    if (info->document() == this)
        info->setDocument(nullptr);
}

void VXDocument::setInfos(InfoList infos)
{
    for (const InfoPtr &info : m_infos) {
        info->setListings(0);
        release(info);
    }
    m_infos = std::move(infos);
    for (const InfoPtr &info : m_infos)
        adopt(info);
    dropIndexes();
    m_placesAreValid = false;
    Q_EMIT infosReset();
}

void VXDocument::dropIndexes()
{
    for (InfoIndex *index : {&m_byName, &m_byUnicode, &m_byProduction})
        index->drop();
}

InfoPtr VXDocument::objectInInfosAtIndex(qsizetype index) const
{
    return index >= 0 && index < countOfInfos() ? m_infos[static_cast<std::size_t>(index)] : nullptr;
}

qsizetype VXDocument::indexOfObjectInInfos(const InfoPtr &info) const
{
    return placeOf(info.get());
}

qsizetype VXDocument::placeOf(const VXGlyphInfo *info) const
{
    if (!info)
        return -1;
    if (!m_placesAreValid || m_sharesRecords) {
        // Backwards, so that of a record that stands in the list twice the first place stays.
        for (std::size_t i = m_infos.size(); i-- > 0;)
            m_infos[i]->setPlaceHint(static_cast<quint32>(i));
        m_placesAreValid = true;
    }
    const std::size_t place = info->placeHint();
    return place < m_infos.size() && m_infos[place].get() == info ? static_cast<qsizetype>(place) : -1;
}

void VXDocument::addInfo(const InfoPtr &info)
{
    undoManager()->registerUndo([this, info] { removeInfo(info); });
    insertAt({info}, {countOfInfos()}, Notice::Observers);
}

void VXDocument::addInfos(const InfoList &infos)
{
    undoManager()->registerUndo([this, infos] { removeInfos(infos); });
    IndexSet indexes(infos.size());
    for (std::size_t i = 0; i < infos.size(); ++i)
        indexes[i] = countOfInfos() + static_cast<qsizetype>(i);
    insertAt(infos, indexes, Notice::Observers);
}

void VXDocument::removeInfo(const InfoPtr &info)
{
    undoManager()->registerUndo([this, info] { addInfo(info); });
    removeAt(placesOf({info}), Notice::Quiet);
}

void VXDocument::removeInfos(const InfoList &infos)
{
    undoManager()->registerUndo([this, infos] { addInfos(infos); });
    removeAt(placesOf(infos), Notice::Quiet);
}

void VXDocument::insertObjectInInfosAtIndex(const InfoPtr &info, qsizetype index)
{
    const qsizetype place = qBound<qsizetype>(0, index, countOfInfos());
    undoManager()->registerUndo([this, place] { removeObjectFromInfosAtIndex(place); });
    insertAt({info}, {place}, Notice::Observers);
}

void VXDocument::insertObjectsInInfosAtIndexes(const InfoList &infos, const IndexSet &anyIndexes)
{
    IndexSet indexes = asSet(anyIndexes);
    if (infos.empty() || infos.size() != indexes.size())
        return;
    // An index beyond the end means the end; undoing has to know which place that was.
    for (std::size_t i = 0; i < indexes.size(); ++i) {
        const auto before = static_cast<qsizetype>(i);
        indexes[i] = qBound(before, indexes[i], countOfInfos() + before);
    }
    undoManager()->registerUndo([this, indexes] { removeObjectsFromInfosAtIndexes(indexes); });
    insertAt(infos, indexes, Notice::Observers);
}

void VXDocument::removeObjectFromInfosAtIndex(qsizetype index)
{
    const InfoPtr info = objectInInfosAtIndex(index);
    if (!info)
        return;
    undoManager()->registerUndo([this, info, index] { insertObjectInInfosAtIndex(info, index); });
    removeAt({index}, Notice::Observers);
    release(info);
    m_sharesRecords |= info->listings() > 0;
}

void VXDocument::removeObjectsFromInfosAtIndexes(const IndexSet &anyIndexes)
{
    IndexSet present;
    InfoList infos;
    for (const qsizetype index : asSet(anyIndexes)) {
        if (const InfoPtr info = objectInInfosAtIndex(index)) {
            present.push_back(index);
            infos.push_back(info);
        }
    }
    if (present.empty())
        return;
    undoManager()->registerUndo([this, infos, present] { insertObjectsInInfosAtIndexes(infos, present); });
    removeAt(present, Notice::Observers);
}

void VXDocument::replaceObjectInInfosAtIndexWithObject(qsizetype index, const InfoPtr &info)
{
    if (!objectInInfosAtIndex(index) || !info)
        return;
    removeAt({index}, Notice::Quiet);
    insertAt({info}, {index}, Notice::Observers);
}

void VXDocument::reorderInfos(const InfoList &infos)
{
    undoManager()->registerUndo([this, old = m_infos] { reorderInfos(old); });
    const InfoList old = std::exchange(m_infos, infos);
    bool areTheSame = old.size() == m_infos.size();
    for (const InfoPtr &info : old) {
        areTheSame &= info->listings() == 1;
        info->setListings(info->listings() - 1);
    }
    for (const InfoPtr &info : m_infos)
        adopt(info);
    // Undoing may bring back an order of other records: those taken out by removeInfo come back at the end,
    // and what is undone by index after that meets others than it did.
    for (const InfoPtr &info : old) {
        if (info->listings() == 0) {
            areTheSame = false;
            m_strays.push_back(info);
        }
    }
    if (!areTheSame)
        dropIndexes();
    listChanged(Notice::Observers);
    Q_EMIT infosReset();
}

IndexSet VXDocument::placesOf(const InfoList &infos) const
{
    QSet<const VXGlyphInfo *> wanted;
    for (const InfoPtr &info : infos)
        wanted.insert(info.get());
    IndexSet places;
    for (std::size_t i = 0; i < m_infos.size(); ++i) {
        if (wanted.contains(m_infos[i].get()))
            places.push_back(static_cast<qsizetype>(i));
    }
    return places;
}

void VXDocument::insertAt(const InfoList &infos, const IndexSet &indexes, Notice notice)
{
    if (infos.empty())
        return;
    InfoList merged;
    merged.reserve(m_infos.size() + infos.size());
    IndexSet places;
    std::size_t next = 0;
    auto old = m_infos.begin();
    while (next < infos.size() || old != m_infos.end()) {
        const auto place = static_cast<qsizetype>(merged.size());
        if (next < infos.size() && indexes[next] == place) {
            adopt(infos[next]);
            merged.push_back(infos[next++]);
            places.push_back(place);
        } else {
            merged.push_back(std::move(*old++));
        }
    }
    const bool isAppended = places.front() == countOfInfos();
    m_infos = std::move(merged);
    for (InfoIndex *index : {&m_byName, &m_byUnicode, &m_byProduction}) {
        if (!index->isBuilt())
            continue;
        for (const InfoPtr &info : infos)
            index->insert(*info);
    }
    const bool standOnce =
        std::all_of(infos.begin(), infos.end(), [](const InfoPtr &info) { return info->listings() == 1; });
    const bool placesStayValid = m_placesAreValid && isAppended && standOnce;
    listChanged(notice);
    if (placesStayValid) {
        // Scripts append one record after the other and ask for its place: no renumbering for that.
        for (std::size_t i = 0; i < infos.size(); ++i)
            infos[i]->setPlaceHint(static_cast<quint32>(places[i]));
        m_placesAreValid = true;
    }
    Q_EMIT infosInserted(places);
}

void VXDocument::removeAt(const IndexSet &indexes, Notice notice)
{
    if (indexes.empty())
        return;
    InfoList leaving; // listeners may still look at them
    auto next = indexes.begin();
    std::size_t kept = static_cast<std::size_t>(indexes.front());
    for (std::size_t i = kept; i < m_infos.size(); ++i) {
        if (next != indexes.end() && *next == static_cast<qsizetype>(i)) {
            ++next;
            for (InfoIndex *index : {&m_byName, &m_byUnicode, &m_byProduction}) {
                if (index->isBuilt())
                    index->remove(*m_infos[i]);
            }
            m_infos[i]->setListings(m_infos[i]->listings() - 1);
            m_strays.push_back(m_infos[i]);
            leaving.push_back(std::move(m_infos[i]));
            continue;
        }
        m_infos[kept++] = std::move(m_infos[i]);
    }
    m_infos.resize(kept);
    std::erase_if(m_strays, [](const std::weak_ptr<VXGlyphInfo> &stray) { return stray.expired(); });
    listChanged(notice);
    Q_EMIT infosRemoved(indexes);
}

void VXDocument::listChanged(Notice notice)
{
    m_placesAreValid = false;
    if (notice == Notice::Observers)
        Q_EMIT didChangeInfos();
}

// Look-ups

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
    if (m_sharesRecords)
        index.drop();
    if (!index.isBuilt())
        index.build(m_infos);
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
    const auto found = std::find_if(m_infos.begin(), m_infos.end(), [](const InfoPtr &info) {
        const FieldValue &value = info->stored(GlyphField::Name);
        return !value.isAbsent() && value.isEmpty();
    });
    return found == m_infos.end() ? nullptr : *found;
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

std::optional<InfoList> VXDocument::infoForKeyValues(const QString &key, const QVariantList &values) const
{
    const std::optional<GlyphField> field = fieldForKey(key);
    if (!field)
        return {};
    std::optional<InfoList> matches = indexedInfos(*field, values);
    if (!matches) {
        matches.emplace();
        for (const InfoPtr &info : m_infos) {
            const QVariant value = info->valueForKey(key);
            const bool isAbsent = value.typeId() == QMetaType::QString && value.toString().isNull();
            if (!isAbsent && values.contains(value))
                matches->push_back(info);
        }
    }
    if (matches->empty())
        return {};
    return matches;
}

// Called by records

void VXDocument::infoHasChanged(VXGlyphInfo &info, GlyphField field, const FieldValue &old)
{
    InfoIndex *index = indexForField(field);
    // A command that has changed a good part of the list leaves the index to be made anew. Only once: it may
    // look something up between its changes, and then the index is kept in step.
    const std::size_t goodPart = std::max<std::size_t>(kFewChanges, m_infos.size() / 16);
    if (index && m_changes.size() == goodPart)
        index->drop();
    if (index && index->isBuilt() && info.listings() > 0) {
        std::string buffer;
        std::string_view text = old.utf8(info.sourceData(), buffer);
        if (field == GlyphField::Unicodes && !old.isPiece())
            text = buffer = old.toList(info.sourceData()).value(0).toStdString();
        for (int i = 0; i < info.listings(); ++i)
            index->remove(info, text);
        for (int i = 0; i < info.listings(); ++i)
            index->insert(info);
    }
    if (m_changes.empty())
        QMetaObject::invokeMethod(this, &VXDocument::flushChanges, Qt::QueuedConnection);
    m_changes.push_back({info.shared_from_this(), field});
}

void VXDocument::elementHasChanged(const InfoPtr &)
{
    if (windowController())
        QMetaObject::invokeMethod(windowController(), "setActiveInfo");
}

void VXDocument::flushChanges()
{
    if (m_changes.empty())
        return;
    const std::vector<Change> changes = std::exchange(m_changes, {});
    Q_EMIT infosChanged(changes);
    elementHasChanged(changes.front().info);
}
