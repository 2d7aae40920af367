#include "platform/documents/Document.h"

#include "platform/FilePath.h"
#include "platform/documents/Autosaver.h"
#include "platform/documents/FileSaver.h"
#include "platform/documents/OpenDocuments.h"
#include "platform/documents/Originals.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <QScopedValueRollback>

namespace runebook {

using namespace Qt::StringLiterals;

Document::Document(QObject *parent) : QObject(parent), m_autosaver(std::make_unique<Autosaver>(*this))
{
    connect(&m_undoManager, &UndoManager::cleanChanged, this, [this](bool clean) {
        if (clean)
            removeAutosave();
        m_autosaver->schedule();
        Q_EMIT editedChanged(!clean);
    });
    connect(&m_undoManager, &UndoManager::changed, m_autosaver.get(), &Autosaver::schedule);
    connect(&m_fileWatch, &FileWatch::changed, this, &Document::fileHasChanged);
}

Document::~Document()
{
    // The history goes with the members; nobody hears of it from a half-destroyed document.
    m_undoManager.disconnect();
    m_fileWatch.disconnect();
}

const Error &Document::readError() const
{
    static const Error none;
    return none;
}

std::unique_ptr<SlicedContent> Document::slicedContent() const
{
    return nullptr;
}

SavingLosses Document::savingLosses(const QString &) const
{
    return {};
}

bool Document::readAutosavedContents(const QString &path, bool *isWhole, Error *error)
{
    *isWhole = true;
    return readFromURLOfType(path, autosavingFileType(), error);
}

void Document::setFileURL(const QString &url)
{
    const QString path = pathFromURL(url);
    m_fileURL = path.isEmpty() ? QString() : QFileInfo(path).absoluteFilePath();
    m_canonicalPath = canonicalPath(m_fileURL);
    m_fileWatch.watch(m_fileURL, FileState::of(m_fileURL));
    Q_EMIT displayNameChanged();
}

QString Document::displayName() const
{
    if (!m_fileURL.isEmpty())
        return shownPath(QFileInfo(m_fileURL).fileName());
    if (!m_untitledName.isEmpty())
        return m_untitledName;
    const OpenDocuments *others = OpenDocuments::current();
    const int number = others ? others->untitledNumber(this) : 1;
    return number < 2 ? tr("Untitled") : tr("Untitled %1").arg(number);
}

QString Document::windowTitle() const
{
    if (m_fileURL.isEmpty())
        return displayName();
    const QStringView path(m_fileURL);
    const qsizetype nameStart = path.lastIndexOf(u'/') + 1;
    const QStringView name = path.sliced(nameStart);
    qsizetype start = nameStart; // of the part of the path that is shown
    const OpenDocuments *others = OpenDocuments::current();
    for (const QString &other : others ? others->filePaths() : QStringList()) {
        const QStringView theirs(other);
        const bool hasName = theirs.endsWith(name) && theirs.size() > name.size()
            && theirs.at(theirs.size() - name.size() - 1) == u'/';
        if (!hasName || theirs == path)
            continue;
        qsizetype common = 0; // characters at the end
        while (path.at(path.size() - 1 - common) == theirs.at(theirs.size() - 1 - common)
               && common + 1 < qMin(path.size(), theirs.size()))
            ++common;
        start = qMin(start, path.lastIndexOf(u'/', path.size() - 1 - common) + 1);
    }
    return path.sliced(start).toString();
}

void Document::setUntitledName(const QString &name)
{
    m_untitledName = name;
    Q_EMIT displayNameChanged();
}

bool Document::isOwnFile(const QString &path) const
{
    return !m_fileURL.isEmpty() && isSameFile(path, m_fileURL);
}

bool Document::mayWriteOver(Error *error)
{
    const FileWatch::Change change = m_fileWatch.check();
    // A file that is gone has nothing to lose.
    if (change == FileWatch::Change::None || change == FileWatch::Change::Removed)
        return true;
    return fail(error,
                {u"ChangedOnDiskError"_s, 1, tr("“%1” could not be saved.").arg(m_fileURL),
                 tr("Another program has changed the file since it was opened or saved here."),
                 tr("The file was not touched. Save under another name, or decide which version to keep.")});
}

namespace {

bool &silentLosses()
{
    static bool losesSilently = false;
    return losesSilently;
}

} // namespace

void Document::setLosesSilently(bool losesSilently)
{
    silentLosses() = losesSilently;
}

bool Document::losesSilently()
{
    return silentLosses();
}

void Document::acceptSavingLosses()
{
    m_losesValues = true;
    noteAcceptedLosses();
}

bool Document::mayLose(const QString &type, Error *error)
{
    constexpr qsizetype kTold = 20;
    const SavingLosses losses = savingLosses(type);
    if (losses.isEmpty())
        return true;
    if (losses.takingOthers == 0 && losesSilently()) {
        acceptSavingLosses();
        return true;
    }
    Error reason {u"SavingLossesError"_s, 1,
                  tr("“%1” was not saved: values would be lost.").arg(displayName()),
                  losses.lines(kTold).join(u'\n'), tr("The file was not touched.")};
    if (losses.takingOthers > 0) {
        reason.code = 2;
        reason.description =
            tr("“%1” was not saved: values in it would take other records with them.").arg(displayName());
    }
    // A script that does not ask for the reason is told all the same.
    if (!error)
        ErrorPresenter::shared().present(reason);
    return fail(error, reason);
}

bool Document::keepOriginal(Error *error)
{
    if ((savingWillChange().isEmpty() && !m_losesValues) || fileKind(m_fileURL) != FileKind::Regular)
        return true;
    const QString copy = Originals::keepCopy(m_fileURL, error);
    if (copy.isEmpty())
        return false;
    ErrorPresenter::shared().present(
        {u"Notice"_s,
         1,
         tr("Saving leaves out something that “%1” had.").arg(QFileInfo(m_fileURL).fileName()),
         {},
         tr("A copy of the file as it was is kept as “%1”.").arg(copy)});
    return true;
}

bool Document::saveDocument(Error *error)
{
    if (m_fileURL.isEmpty())
        return fail(
            error,
            {u"SaveError"_s, 1, tr("The document has no file yet."), {}, tr("Save it under a name first.")});
    return saveToURLOfType(m_fileURL, m_fileType, error);
}

bool Document::saveToURLOfType(const QString &url, const QString &type, Error *error)
{
    if (!commitEditing(error))
        return false;
    const QString path = pathFromURL(url);
    if (isOwnFile(path) && !mayWriteOver(error))
        return false;
    if (!mayLose(type, error) || (isOwnFile(path) && !keepOriginal(error)))
        return false;
    Error reason;
    SavedState state;
    if (isOwnFile(path) && m_fileWatch.change() == FileWatch::Change::None && m_fileWatch.known().exists)
        state.before = m_fileWatch.known();
    const QScopedValueRollback saving(m_savedState, &state);
    if (!writeToURLOfType(url, type, &reason)) {
        // A failed write is answered with a reason, or with none by a type that cannot be written.
        if (reason.description.isEmpty())
            reason.description = tr("“%1” could not be saved.").arg(QFileInfo(path).fileName());
        return fail(error, reason);
    }
    takeSavedForm(type);
    m_fileType = type;
    setFileURL(url);
    if (state.after.exists)
        noteFileRead(state.after);
    m_undoManager.setClean();
    m_losesValues = false;
    removeAutosave();
    if (OpenDocuments *others = OpenDocuments::current())
        others->noteRecentFile(m_fileURL);
    Q_EMIT saved();
    return true;
}

// Opening is lenient and shows nothing of a file that it cannot read; that must not happen to what is open.
bool Document::readAgain(std::unique_ptr<Document> &trial, Error *error) const
{
    if (m_fileURL.isEmpty() || fileKind(m_fileURL) == FileKind::None)
        return fail(error,
                    {u"OpenError"_s,
                     1,
                     tr("The file “%1” is not there.").arg(displayName()),
                     {},
                     tr("The document stays as it is.")});
    const OpenDocuments *others = OpenDocuments::current();
    trial = others ? others->makeDocument() : nullptr;
    if (!trial)
        return true;
    if (!trial->readFromURLOfType(m_fileURL, m_fileType, error))
        return false;
    return trial->readError().domain.isEmpty() || fail(error, trial->readError());
}

bool Document::takeContentOf(Document &)
{
    return false;
}

bool Document::readWorseThan(const Document &former) const
{
    return !savingWillChange().isEmpty() && savingWillChange() != former.savingWillChange();
}

bool Document::reload(Reload how, Error *error)
{
    const auto refuse = [&](int code, const QString &reason) {
        return fail(
            error,
            {u"ChangedOnDiskError"_s, code, tr("“%1” was not reloaded.").arg(displayName()), reason, {}});
    };
    const FileState state = FileState::of(m_fileURL);
    std::unique_ptr<Document> theirs;
    if (!readAgain(theirs, error))
        return false;
    if (FileState::of(m_fileURL) != state)
        return refuse(2, tr("Another program is still writing it."));
    if (theirs && how == Reload::IfSound && theirs->readWorseThan(*this))
        return refuse(3, tr("Not everything in it can be read."));
    bool isTaken = false;
    if (theirs) {
        const UndoGroup group(&m_undoManager, tr("Reload"));
        isTaken = takeContentOf(*theirs);
    }
    if (!isTaken)
        return revertToSaved(error);
    noteFileRead(state);
    m_undoManager.setClean();
    return true;
}

bool Document::revertToSaved(Error *error)
{
    const FileState state = FileState::of(m_fileURL);
    std::unique_ptr<Document> trial;
    if (!readAgain(trial, error))
        return false;
    if (!readFromURLOfType(m_fileURL, m_fileType, error))
        return false;
    noteFileRead(m_readState.exists ? m_readState : state);
    m_undoManager.removeAllActions();
    m_undoManager.setClean();
    return true;
}

bool Document::commitEditing(Error *error)
{
    Error refusal;
    Q_EMIT commitEditingRequested(&refusal);
    return refusal.domain.isEmpty() || fail(error, refusal);
}

void Document::updateChangeCount(int change)
{
    if (change == ChangeCleared) {
        m_undoManager.setClean();
        return;
    }
    m_undoManager.resetClean();
    m_autosaver->schedule();
}

void Document::addPendingTexts(QObject *owner, PendingTexts source)
{
    std::erase_if(m_pendingTexts, [](const auto &known) { return !known.first; });
    m_pendingTexts.emplace_back(owner, std::move(source));
}

void Document::pendingTextChanged()
{
    m_autosaver->schedule();
}

QJsonArray Document::pendingTexts() const
{
    QJsonArray texts;
    for (const auto &[owner, source] : m_pendingTexts) {
        for (const QJsonArray all = owner ? source() : QJsonArray(); const QJsonValue &text : all)
            texts << text;
    }
    return texts;
}

bool Document::hasUnsavedWork() const
{
    return isDocumentEdited() || !pendingTexts().isEmpty();
}

QObject *Document::windowController() const
{
    return m_window;
}

void Document::setWindowController(QObject *window)
{
    m_window = window;
}

void Document::keepMine()
{
    m_fileWatch.takeAsKnown();
    updateChangeCount(ChangeDone);
}

bool Document::isPlaceholder() const
{
    return m_isPlaceholder && m_fileURL.isEmpty() && m_untitledName.isEmpty() && !isDocumentEdited()
        && m_undoManager.isUntouched() && isEmpty();
}

void Document::fileHasChanged(FileWatch::Change change)
{
    // Nowhere but here is the text now.
    if (change == FileWatch::Change::Removed)
        updateChangeCount(ChangeDone);
}

void Document::close()
{
    m_fileWatch.watch({}, {});
    removeAutosave();
    Q_EMIT aboutToClose(this);
    if (m_window)
        m_window->deleteLater();
    m_window.clear();
    if (OpenDocuments *others = OpenDocuments::current())
        others->removeDocument(this);
}

AutosaveNote Document::autosaveNote()
{
    return {m_fileURL,
            m_fileType,
            displayName(),
            m_fileWatch.known(),
            m_fileWatch.knownHash(),
            QDateTime::currentDateTimeUtc(),
            QCoreApplication::applicationPid()};
}

bool Document::writeAutosave(const QString &path, Error *error)
{
    return writeToURLOfType(path, autosavingFileType(), error);
}

bool Document::autosave(Error *error)
{
    return !hasUnsavedWork() || m_autosaver->saveNow(error);
}

QString Document::autosavedContentsURL() const
{
    return m_autosaver->path();
}

void Document::removeAutosave()
{
    m_autosaver->remove();
}

} // namespace runebook
