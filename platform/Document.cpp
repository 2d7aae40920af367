#include "platform/Document.h"

#include "platform/DocumentController.h"
#include "platform/FilePath.h"
#include "platform/StandardFolders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>
#include <QWidget>

namespace runebook {

using namespace Qt::StringLiterals;

Document::Document(QObject *parent) : QObject(parent)
{
    m_autosaveTimer.setSingleShot(true);
    connect(&m_autosaveTimer, &QTimer::timeout, this, [this] { autosave(); });
    connect(&m_undoManager, &UndoManager::cleanChanged, this, [this](bool clean) {
        if (clean)
            removeAutosave();
        Q_EMIT editedChanged(!clean);
    });
    connect(&m_undoManager, &UndoManager::changed, this, &Document::scheduleAutosave);
}

Document::~Document()
{
    // The history goes with the members; nobody hears of it from a half-destroyed document.
    m_undoManager.disconnect(this);
}

void Document::setFileURL(const QString &url)
{
    const QString path = pathFromURL(url);
    m_fileURL = path.isEmpty() ? QString() : QFileInfo(path).absoluteFilePath();
    Q_EMIT displayNameChanged();
}

QString Document::displayName() const
{
    if (!m_fileURL.isEmpty())
        return QFileInfo(m_fileURL).fileName();
    const int number = DocumentController::shared().untitledNumber(this);
    return number < 2 ? tr("Untitled") : tr("Untitled %1").arg(number);
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
    commitEditing();
    Error reason;
    if (!writeToURLOfType(url, type, &reason)) {
        // A failed write is answered with a reason, or with none by a type that cannot be written.
        if (reason.description.isEmpty())
            reason.description = tr("“%1” could not be saved.").arg(QFileInfo(pathFromURL(url)).fileName());
        return fail(error, reason);
    }
    m_fileType = type;
    setFileURL(url);
    m_undoManager.setClean();
    removeAutosave();
    DocumentController::shared().noteRecentFile(m_fileURL);
    Q_EMIT saved();
    return true;
}

bool Document::revertToSaved(Error *error)
{
    if (m_fileURL.isEmpty() || !QFileInfo::exists(m_fileURL))
        return fail(error,
                    {u"OpenError"_s,
                     1,
                     tr("The file “%1” is not there.").arg(displayName()),
                     {},
                     tr("The document stays as it is.")});
    if (!readFromURLOfType(m_fileURL, m_fileType, error))
        return false;
    m_undoManager.removeAllActions();
    m_undoManager.setClean();
    return true;
}

void Document::commitEditing()
{
    Q_EMIT commitEditingRequested();
}

void Document::updateChangeCount(int change)
{
    if (change == ChangeCleared)
        m_undoManager.setClean();
    else
        m_undoManager.resetClean();
}

QWidget *Document::windowController() const
{
    return m_window;
}

void Document::setWindowController(QWidget *window)
{
    m_window = window;
}

void Document::close()
{
    m_autosaveTimer.stop();
    removeAutosave();
    Q_EMIT aboutToClose(this);
    if (m_window)
        m_window->deleteLater();
    m_window.clear();
    DocumentController::shared().removeDocument(this);
}

void Document::scheduleAutosave()
{
    const double delay = DocumentController::shared().autosavingDelay();
    if (delay > 0 && isDocumentEdited())
        m_autosaveTimer.start(static_cast<int>(delay * 1000));
}

bool Document::autosave(Error *error)
{
    if (!isDocumentEdited())
        return true;
    if (m_autosaveURL.isEmpty()) {
        const QString own = StandardFolders::userData();
        const QString folder = own + "/Autosave"_L1;
        if (own.isEmpty() || !QDir().mkpath(folder))
            return fail(error,
                        {u"SaveError"_s, 2, tr("There is no folder for autosaved documents."), {}, {}});
        m_autosaveURL = folder + u'/' + QUuid::createUuid().toString(QUuid::WithoutBraces) + ".xml"_L1;
    }
    return writeToURLOfType(m_autosaveURL, autosavingFileType(), error);
}

void Document::removeAutosave()
{
    m_autosaveTimer.stop();
    if (!m_autosaveURL.isEmpty())
        QFile::remove(m_autosaveURL);
    m_autosaveURL.clear();
}

} // namespace runebook
