#include "document/VXDocument.h"

#include "document/AutosaveForm.h"
#include "document/DocumentSettings.h"
#include "document/FileFormats.h"
#include "document/GlyphDataReader.h"
#include "document/GlyphDataWriter.h"
#include "document/GlyphPreview.h"
#include "document/NameUses.h"
#include "document/PreviewFonts.h"
#include "document/ReloadedContent.h"
#include "document/SavingChanges.h"
#include "document/TabbedTable.h"
#include "document/UndoOnly.h"
#include "platform/CallLater.h"
#include "platform/CheckedFile.h"
#include "platform/FilePath.h"
#include "platform/MemoryRoom.h"
#include "platform/TurningWindows.h"
#include "platform/documents/DocumentController.h"

#include <QFileInfo>
#include <cerrno>
#include <fcntl.h>
#include <new>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

/// How many last parts of the path \a own it takes to tell it from \a other.
qsizetype differingParts(QStringView own, QStringView other)
{
    for (qsizetype parts = 1;; ++parts) {
        const qsizetype ownCut = own.lastIndexOf(u'/');
        const qsizetype otherCut = other.lastIndexOf(u'/');
        if (ownCut < 0 || otherCut < 0 || own.sliced(ownCut + 1) != other.sliced(otherCut + 1))
            return parts;
        own.truncate(ownCut);
        other.truncate(otherCut);
    }
}

Error notEnoughMemory(const QString &url)
{
    return {u"ReadError"_s,
            ENOMEM,
            VXDocument::tr("“%1” could not be read.").arg(pathFromURL(url)),
            VXDocument::tr("There is not enough memory for it."),
            {}};
}

/// The table \a form, where each of \a infos stands in the row of the one that was read in its place.
TableFormPtr withRowsOf(const TableFormPtr &form, const InfoList &infos, const InfoList &read)
{
    if (!form)
        return {};
    TableForm adopting = *form;
    for (std::size_t i = 0; i < infos.size(); ++i) {
        if (infos[i] && infos[i] != read[i])
            adopting.adoptRow(infos[i], *read[i]);
    }
    return std::make_shared<const TableForm>(std::move(adopting));
}

} // namespace

VXDocument::VXDocument(QObject *parent) : Document(parent), m_infos(*this, *Document::undoManager())
{
    DocumentController::shared().setAutosavingDelay(usualAutosavingDelay());
    connect(this, &Document::saved, this, [this] { m_fileForm.setSaved(); });
    connect(&m_infos, &DocumentInfos::revised, this, [this] { ++m_revision; });
    connect(&m_infos, &DocumentInfos::changedSilently, this, &Document::noteSilentChange);
    connect(&m_infos, &DocumentInfos::didChangeInfos, this, &VXDocument::didChangeInfos);
    connect(&m_infos, &DocumentInfos::inserted, this, &VXDocument::infosInserted);
    connect(&m_infos, &DocumentInfos::removed, this, &VXDocument::infosRemoved);
    connect(&m_infos, &DocumentInfos::replaced, this, &VXDocument::infoReplaced);
    connect(&m_infos, &DocumentInfos::reset, this, &VXDocument::infosReset);
}

VXDocument::~VXDocument()
{
    delete windowController(); // one that nobody closed: it cannot be without the document
}

void VXDocument::setInfos(InfoList infos)
{
    for (const InfoPtr &info : infos)
        info->setNotAsRead();
    install(std::move(infos));
    noteSilentChange();
}

// Opening and saving

quint64 VXDocument::changeCountTokenForSaveOperation(int) const
{
    return m_revision;
}

void VXDocument::updateChangeCountWithTokenForSaveOperation(quint64 token, int operation)
{
    constexpr int kSave = 0, kSaveAs = 1;
    if (token == m_revision && (operation == kSave || operation == kSaveAs))
        updateChangeCount(ChangeCleared);
}

InfoList VXDocument::takeForm(FileContent content)
{
    m_fileVersion = content.fileVersion.value_or(m_fileVersion);
    m_readNotes = std::move(content.notes);
    m_fileForm.setRead(m_readNotes, m_fileVersion, content.table);
    return std::move(content.infos);
}

bool VXDocument::readFromURLOfType(const QString &url, const QString &type, Error *error)
{
    const FileFormat *format = formatOfType(type);
    if (!format)
        return false;
    Error reason;
    // Nobody saves the file between the look at its state and the reading.
    CheckedFile file(pathFromURL(url), O_RDONLY);
    if (file.isRegular())
        static_cast<void>(file.lock(CheckedFile::Lock::Shared, CheckedFile::kPatience));
    const FileState state = FileState::of(file.descriptor());
    ReadNotes notes = std::exchange(m_readNotes, {});
    const quint8 version = m_fileVersion;
    const FileForm form = m_fileForm;
    m_fileForm.setRead({}, m_fileVersion);
    try {
        std::optional<FileContent> content = format->readFile(pathFromURL(url), &reason);
        // Lenient towards files, but what the machine lacks is no property of the file.
        if (!content && reason.code == ENOMEM)
            throw std::bad_alloc();
        constexpr std::size_t kForEachRow = 64; // what those keep who show the list
        ensureRoom(content ? content->infos.size() * kForEachRow : 0);
        install(content ? takeForm(std::move(*content)) : InfoList());
    } catch (const std::bad_alloc &) {
        m_readNotes = std::move(notes);
        m_fileVersion = version;
        m_fileForm = form;
        return fail(error, notEnoughMemory(url));
    }
    setReadState(state);
    m_readError = reason;
    m_fileForm.setUnreadable(!reason.domain.isEmpty());
    // Something else than the document's own file.
    if (!fileURL().isEmpty() && QFileInfo(pathFromURL(url)) != QFileInfo(fileURL()))
        noteSilentChange();
    return true;
}

bool VXDocument::readWhatCanBeRead(Error *error)
{
    const FileState state = FileState::of(fileURL());
    std::optional<FileContent> content = readTableLeniently(fileURL(), error);
    if (!content)
        return false;
    install(takeForm(std::move(*content)));
    setReadState(state);
    noteFileRead(state);
    m_readError = {};
    m_fileForm.setUnreadable(false);
    Q_EMIT readNotesChanged();
    return true;
}

bool VXDocument::readFromData(const QByteArray &bytes, const QString &type, Error *error)
{
    const FileFormat *format = formatOfType(type);
    std::optional<FileContent> content = format ? format->readData(bytes, error) : std::nullopt;
    if (!content)
        return false;
    takeContentRead(std::move(*content));
    return true;
}

void VXDocument::takeContentRead(FileContent content)
{
    install(takeForm(std::move(content)));
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
    std::optional<FileContent> content = formatOfType(kGlyphDataType)->readFile(pathFromURL(url), error);
    if (!content)
        return {};
    const quint8 before = m_fileVersion;
    m_fileVersion = content->fileVersion.value_or(m_fileVersion);
    m_readNotes = std::move(content->notes);
    InfoList infos = std::move(content->infos);
    if (m_fileVersion != before)
        noteSilentChange();
    return infos;
}

std::optional<InfoList> VXDocument::readTabbedFromURL(const QString &url, Error *error)
{
    return TabbedReader().read(pathFromURL(url), error);
}

bool VXDocument::readAutosavedContents(const QString &path, bool *isWhole, Error *error)
{
    *isWhole = true;
    const std::optional<QByteArray> bytes = readUtf8File(path, error);
    if (!bytes)
        return false;
    AutosavedContent content = readAutosavedContent(*bytes);
    *isWhole = content.isWhole;
    // They are not in the file of the document: whoever restores them compares both.
    for (const InfoPtr &info : content.infos)
        info->setNotAsRead();
    install(takeForm({std::move(content.infos), content.fileVersion, std::move(content.notes)}));
    return true;
}

void VXDocument::restoreFileVersion(int version)
{
    undoManager()->registerUndo([this, old = fileVersion()] { restoreFileVersion(old); });
    ++m_revision;
    setFileVersion(version);
}

bool VXDocument::takeContentOf(Document &other)
{
    auto *theirs = dynamic_cast<VXDocument *>(&other);
    if (!theirs)
        return false;
    InfoList content = theirs->infos();
    const InfoList read = content;
    theirs->setInfos({}); // and so without a document
    if (theirs->fileVersion() != fileVersion())
        restoreFileVersion(theirs->fileVersion());
    takeReloaded(content, infos(), fileVersion());
    flushChanges();
    if (content != infos())
        reorderInfos(content);
    m_readError = {};
    m_readNotes = theirs->m_readNotes;
    m_fileForm.setUnreadable(false);
    m_fileForm.setRead(m_readNotes, m_fileVersion, withRowsOf(theirs->tableForm(), content, read));
    Q_EMIT readNotesChanged();
    return true;
}

bool VXDocument::readWorseThan(const Document &former) const
{
    return m_readNotes.isCutOff || Document::readWorseThan(former);
}

TableFormPtr VXDocument::tableFormFor(const QString &type) const
{
    const FileFormat *format = formatOfType(type);
    const TableFormPtr &own = m_fileForm.table();
    if (!format || !format->separator)
        return {};
    // The separator that the table has, whatever its suffix.
    if (own && (type == fileType() || own->format.separator == format->separator))
        return own;
    DelimitedFormat written = own ? own->format : DelimitedFormat();
    written.separator = format->separator;
    return std::make_shared<const TableForm>(own ? own->inFormat(written)
                                                 : TableForm::of(tableFields(), written));
}

UnkeptValues::Content VXDocument::savedContent(const QString &type) const
{
    return {infos(),    m_fileVersion,      m_fileForm.readVersion(),
            m_revision, tableFormFor(type), m_fileForm.table()};
}

SavingLosses VXDocument::savingLosses(const QString &type) const
{
    m_lossyType = type;
    return formatOfType(type) ? m_unkept.losses(savedContent(type)) : SavingLosses();
}

void VXDocument::noteAcceptedLosses()
{
    m_unkept.accept(savedContent(m_lossyType));
}

qsizetype VXDocument::fixSavingLosses()
{
    const std::vector<UnkeptValues::Fix> plan = m_unkept.fixes(savedContent(m_lossyType));
    const UndoGroup group(undoManager(), tr("Fix Values"));
    for (const auto &[info, fixes] : plan) {
        for (const FieldFix &fix : fixes)
            storeEdited(*info, fix.field, fix.value);
    }
    flushChanges();
    return static_cast<qsizetype>(plan.size());
}

bool VXDocument::mayWrite(const QString &url, const QString &type, Error *notice, Error *error)
{
    if (type == kGlyphDataType && m_unkept.takesOthers(savedContent(type))) {
        const Error refusal = UnkeptValues::refusal(url, savingLosses(type));
        // A script that does not ask for the reason is told all the same.
        if (!error)
            ErrorPresenter::shared().present(refusal);
        return fail(error, refusal);
    }
    // A save has asked before. Who writes otherwise, as scripts do, is told.
    const SavingLosses lost = savedState() ? SavingLosses() : savingLosses(type);
    if (!lost.isEmpty())
        *notice = UnkeptValues::notice(url, lost, losesSilently() ? u"Notice"_s : u"SavingLossesError"_s);
    return true;
}

bool VXDocument::writeToURLOfType(const QString &url, const QString &type, Error *error)
{
    const FileFormat *format = formatOfType(type);
    // Saving a table writes all that it can hold. The operation alone, as scripts call it, is the export.
    const bool isExport = type == kTableType && !savedState();
    Error notice;
    if (!format || (!isExport && !mayWrite(url, type, &notice, error)))
        return false;
    const ContentProducer produce = isExport ? ContentProducer(TabbedWriter(infos()))
                                             : format->writer(infos(), {m_fileVersion, tableFormFor(type)});
    bool isSaved = false;
    doApart(GlyphDataWriter::sizeOf(infos(), m_fileVersion),
            [&] { isSaved = FileSaver::save(pathFromURL(url), produce, error, savedState()); });
    if (!isSaved)
        return false;
    if (!notice.domain.isEmpty())
        ErrorPresenter::shared().present(notice);
    return true;
}

QStringList VXDocument::savingWillChange() const
{
    return m_fileForm.savingWillChange(m_fileVersion, m_openConflicts);
}

void VXDocument::takeSavedForm(const QString &type)
{
    if (isTableType(type))
        m_fileForm.setTable(tableFormFor(type));
    const std::vector<LostCodePoints> lost =
        type == kGlyphDataType ? lostCodePoints(infos(), m_fileVersion) : std::vector<LostCodePoints>();
    if (lost.empty())
        return;
    const UndoGroup group(undoManager(), tr("Save"));
    for (const LostCodePoints &each : lost)
        each.info->setUnicodes(each.kept);
}

void VXDocument::learnFormOf(const QString &original)
{
    m_fileForm.setUnreadable(false);
    if (fileKind(original) != FileKind::Regular)
        return;
    if (fileType() == kGlyphDataType)
        m_fileForm.learnFrom(original);
    else if (isTableType(fileType()))
        adoptTable(original);
}

void VXDocument::adoptTable(const QString &original)
{
    const std::optional<FileContent> content = readTableLeniently(original, nullptr);
    m_fileForm.setUnreadable(!content);
    if (content)
        m_fileForm.setTable(
            withRowsOf(content->table, formerRecords(infos(), content->infos), content->infos));
}

std::unique_ptr<SlicedContent> VXDocument::slicedContent() const
{
    return std::make_unique<AutosaveSlices>(infos(), m_fileVersion,
                                            [this, revision = m_revision] { return m_revision == revision; });
}

double VXDocument::usualAutosavingDelay()
{
    return Settings::kAutosaveDelay.value();
}

QString VXDocument::autosavingFileType() const
{
    return kGlyphDataType;
}

void VXDocument::makeWindowControllers()
{
    if (DocumentController::shared().makeWindow(*this))
        Q_EMIT windowMade();
}

QString VXDocument::windowNibName() const
{
    return u"VXDocument_11"_s;
}

QString VXDocument::displayName() const
{
    if (fileURL().isEmpty())
        return Document::displayName();
    // The fewest last parts of the path that differ from another one's: no fewer than one, which is found
    // with the first document of another name. Every window asks for it, and there may be a thousand.
    qsizetype fewest = 0;
    for (const Document *other : DocumentController::shared().documentList()) {
        if (other == this || other->fileURL().isEmpty())
            continue;
        const qsizetype parts = differingParts(fileURL(), other->fileURL());
        if (fewest == 0 || parts < fewest)
            fewest = parts;
        if (fewest == 1)
            break;
    }
    return fewest == 0 ? Document::displayName() : fileURL().section(u'/', -fewest);
}

bool VXDocument::undoOnlyStep(int step, Error *error)
{
    const bool isDone = undoOnly(*undoManager(), step, error);
    flushChanges();
    return isDone;
}

// Names in other records

InfoList VXDocument::infosUsingName(const QString &name) const
{
    InfoList found;
    const InfoPtr nameBearer = VXGlyphInfo::init();
    nameBearer->setName(name);
    NameUses uses = NameUses::of(infos(), *this, {nameBearer});
    uses.finish();
    for (const NameUse &use : uses.uses()) {
        const bool isKnown = !found.empty() && found.back() == use.info;
        if (use.field != GlyphField::Name && !isKnown)
            found.push_back(use.info);
    }
    return found;
}

qsizetype VXDocument::renameInfoToReferences(const InfoPtr &info, const QString &name, bool references,
                                             Error *error)
{
    const std::optional<qsizetype> others = renameInfo(infos(), *this, info, name, references, error);
    flushChanges();
    return others.value_or(0);
}

// Previews

QString VXDocument::stringForInfo(const InfoPtr &info) const
{
    return GlyphPreview::text(m_infos.lookups(), info);
}

QString VXDocument::baseStringForInfo(const InfoPtr &info) const
{
    return GlyphPreview::baseText(m_infos.lookups(), info);
}

FormattedText VXDocument::formatStringFromInfo(const InfoPtr &info) const
{
    return GlyphPreview::formatted(m_infos.lookups(), info);
}

FormattedText VXDocument::formatInfoStringFont(const QString &text, const QFont &font)
{
    return GlyphPreview::formatted(text, font);
}

std::optional<QFont> VXDocument::fontForScriptSize(const QString &script, double size)
{
    return PreviewFonts::fontForScript(script, size);
}

QString VXDocument::previewFontForScript(const QString &script)
{
    return PreviewFonts::pathForScript(script);
}

void VXDocument::registerPreviewFontForScript(const QString &path, const QString &script)
{
    PreviewFonts::choose(path, script);
}

void VXDocument::removePreviewFontForScript(const QString &script)
{
    PreviewFonts::remove(script);
}

void VXDocument::setNeedsUpdateScriptToFontCache()
{
    PreviewFonts::setNeedUpdate();
}

// Called by records

void VXDocument::infoHasChanged(VXGlyphInfo &info, GlyphField field, const FieldValue &old)
{
    ++m_revision;
    m_infos.fieldHasChanged(info, field, old, m_changes.count());
    if (m_changes.isEmpty())
        callLater(this, [this] { flushChanges(); });
    m_changes.add(info, field, countOfInfos());
}

void VXDocument::contentHasChanged(VXGlyphInfo &info)
{
    ++m_revision;
    noteSilentChange();
    InfoOwnership::tellSharers(info, &m_infos.ownership());
}

void VXDocument::setFileVersion(int version)
{
    if (static_cast<quint8>(version) == m_fileVersion)
        return;
    m_fileVersion = static_cast<quint8>(version);
    ++m_revision;
    noteSilentChange();
}

void VXDocument::elementHasChanged(const InfoPtr &info)
{
    Q_EMIT elementChanged(info);
}

void VXDocument::flushChanges()
{
    if (m_changes.isEmpty())
        return;
    const std::vector<Change> changes = m_changes.take();
    Q_EMIT infosChanged(changes);
    elementHasChanged(changes.front().info);
}
