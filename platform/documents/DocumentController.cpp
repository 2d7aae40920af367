#include "platform/documents/DocumentController.h"

#include "platform/FilePath.h"
#include "platform/PlatformSettings.h"
#include "platform/documents/Autosaver.h"

#include <QFileInfo>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kMaxRecentFiles = 12;

/// What the user can do when a file is of no known type.
QString endings(const QList<DocumentType> &types)
{
    QStringList words;
    for (const DocumentType &type : types)
        words << u"%1 (.%2)"_s.arg(type.title, type.extensions.join(", ."_L1));
    return DocumentController::tr("What can be opened: %1.").arg(words.join(", "_L1));
}

} // namespace

DocumentController &DocumentController::shared()
{
    static DocumentController controller;
    return controller;
}

QString DocumentController::typeForURL(const QString &url) const
{
    const QString extension = QFileInfo(pathFromURL(url)).suffix().toLower();
    for (const DocumentType &type : m_types) {
        if (type.extensions.contains(extension))
            return type.name;
    }
    return {};
}

QObject *DocumentController::makeWindow(Document &document)
{
    if (!document.windowController() && m_windowMaker)
        document.setWindowController(m_windowMaker(document));
    return document.windowController();
}

QList<QObject *> DocumentController::orderedDocuments() const
{
    return {m_documents.begin(), m_documents.end()};
}

Document *DocumentController::documentForURL(const QString &url) const
{
    const QString path = pathFromURL(url);
    // Nothing is asked of the disk for each document: there may be a thousand.
    const QString absolute = QFileInfo(path).absoluteFilePath();
    const QString canonical = canonicalPath(path);
    for (Document *document : m_documents) {
        if (!document->fileURL().isEmpty()
            && (document->fileURL() == absolute
                || (!canonical.isEmpty() && document->hasCanonicalPath(canonical))))
            return document;
    }
    return nullptr;
}

Document *DocumentController::openUntitledDocumentAndDisplay(bool display, Error *)
{
    Document *document = m_factory();
    addDocument(document);
    if (display)
        document->makeWindowControllers();
    return document;
}

Document *DocumentController::openDocumentWithContentsOfURLDisplay(const QString &url, bool display,
                                                                   Error *error)
{
    const QString path = pathFromURL(url);
    if (Document *open = documentForURL(path)) {
        if (display)
            open->makeWindowControllers();
        bringToFront(open);
        return open;
    }
    const FileKind kind = fileKind(path);
    if (kind == FileKind::None) {
        fail(error,
             {u"OpenError"_s,
              1,
              tr("The file “%1” is not there.").arg(shownPath(path)),
              {},
              tr("It may have been moved, renamed or removed.")});
        return nullptr;
    }
    if (kind == FileKind::Folder) {
        fail(error,
             {u"OpenError"_s, 2, tr("“%1” is a folder.").arg(shownPath(path)), {}, tr("Open a file in it.")});
        return nullptr;
    }
    const QString type = typeForURL(path);
    if (type.isEmpty()) {
        fail(error,
             {u"OpenError"_s,
              3,
              tr("“%1” is of no kind that can be opened.").arg(shownPath(QFileInfo(path).fileName())),
              {},
              endings(m_types)});
        return nullptr;
    }
    std::unique_ptr<Document> document(m_factory());
    const FileState state = FileState::of(path);
    if (!document->readFromURLOfType(path, type, error))
        return nullptr;
    document->setFileType(type);
    document->setFileURL(path);
    document->noteFileRead(document->readState().exists ? document->readState() : state);
    Document *opened = document.release();
    Document *placeholder = display && currentDocument() ? m_documents.front() : nullptr;
    addDocument(opened);
    noteRecentFile(opened->fileURL());
    if (display)
        opened->makeWindowControllers();
    if (placeholder && placeholder->isPlaceholder())
        placeholder->close();
    Q_EMIT fileOpened(opened->fileURL());
    return opened;
}

void DocumentController::addDocument(Document *document)
{
    if (m_documents.contains(document))
        return;
    document->setParent(this);
    // Those that are opened in the background do not push the one that is being used from its place.
    if (isOpeningMany())
        m_documents.append(document);
    else
        m_documents.prepend(document);
    // How a document is called depends on what else is open.
    connect(document, &Document::displayNameChanged, this, &DocumentController::announceDocuments);
    if (document->fileURL().isEmpty()) {
        int number = 1;
        while (std::find(m_untitledNumbers.cbegin(), m_untitledNumbers.cend(), number)
               != m_untitledNumbers.cend())
            ++number;
        m_untitledNumbers.insert(document, number);
    }
    announceDocuments();
}

void DocumentController::removeDocument(Document *document)
{
    if (!m_documents.removeOne(document))
        return;
    m_untitledNumbers.remove(document);
    document->disconnect(this);
    document->deleteLater();
    announceDocuments();
}

void DocumentController::bringToFront(Document *document)
{
    const qsizetype place = m_documents.indexOf(document);
    if (place > 0) {
        m_documents.move(place, 0);
        announceDocuments();
    }
    if (!isOpeningMany())
        Q_EMIT document->frontRequested();
}

void DocumentController::announceDocuments()
{
    m_isAnnouncementDue = isOpeningMany();
    if (!m_isAnnouncementDue)
        Q_EMIT documentsChanged();
}

DocumentController::OpeningMany::~OpeningMany()
{
    DocumentController &controller = shared();
    if (--controller.m_openingMany == 0 && controller.m_isAnnouncementDue)
        controller.announceDocuments();
}

bool DocumentController::commitEditing(Error *error)
{
    const QList<Document *> documents = m_documents;
    return std::all_of(documents.begin(), documents.end(),
                       [error](Document *document) { return document->commitEditing(error); });
}

void DocumentController::releaseAll()
{
    for (Document *document : std::exchange(m_documents, {})) {
        document->disconnect(this);
        delete document->windowController();
        delete document;
    }
    m_untitledNumbers.clear();
}

void DocumentController::autosaveWhatIsDue()
{
    for (Document *document : std::as_const(m_documents))
        document->autosaver().captureWhatIsDue();
}

void DocumentController::autosaveBeforeRun()
{
    for (Document *document : std::as_const(m_documents))
        document->autosaver().saveBeforeRun();
}

std::unique_ptr<Document> DocumentController::makeDocument() const
{
    return std::unique_ptr<Document>(m_factory ? m_factory() : nullptr);
}

QStringList DocumentController::filePaths() const
{
    QStringList paths;
    for (const Document *document : m_documents)
        paths << document->fileURL();
    return paths;
}

int DocumentController::untitledNumber(const Document *document) const
{
    return m_untitledNumbers.value(document, 1);
}

QStringList DocumentController::recentFiles() const
{
    return Settings::kRecentFiles.value();
}

void DocumentController::noteRecentFile(const QString &path)
{
    QStringList files = recentFiles();
    files.removeAll(path);
    files.prepend(path);
    files = files.mid(0, kMaxRecentFiles);
    Settings::kRecentFiles.set(files);
    Q_EMIT recentFilesChanged();
}

void DocumentController::clearRecentFiles()
{
    Settings::kRecentFiles.reset();
    Q_EMIT recentFilesChanged();
}

} // namespace runebook
