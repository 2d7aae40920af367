#pragma once

#include "platform/documents/Document.h"
#include "platform/documents/OpenDocuments.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QStringList>
#include <functional>

namespace runebook {

/// A kind of file that the program opens: its name, its extensions, the words for it.
struct DocumentType {
    QString name; ///< "public.plain-text"
    QStringList extensions; ///< without dot, lower case
    QString title; ///< for file panels, translated
};

/// The open documents, front to back, and everything that is done to documents as a whole: making, opening,
/// recent files, the names of new ones. One for the program.
class DocumentController : public QObject, private OpenDocuments
{
    Q_OBJECT
public:
    static DocumentController &shared();

public: // set-up by the program
    using Factory = std::function<Document *()>;
    void setDocumentFactory(Factory factory) { m_factory = std::move(factory); }
    /// A document that is not among the open ones yet; null without a factory.
    std::unique_ptr<Document> makeDocument() const override;
    /// Makes and shows the window of a document; without one documents are opened unseen.
    using WindowMaker = std::function<QObject *(Document &)>;
    void setWindowMaker(WindowMaker maker) { m_windowMaker = std::move(maker); }
    /// The window of \a document, made on first call; null in a program without windows.
    QObject *makeWindow(Document &document);
    /// Takes texts that were pending in a document's editors when it was autosaved, and answers what became
    /// of those that it refuses: sentences for the user.
    using PendingTextTaker = std::function<QStringList(Document &, const QJsonArray &)>;
    void setPendingTextTaker(PendingTextTaker taker) { m_pendingTextTaker = std::move(taker); }
    const PendingTextTaker &pendingTextTaker() const { return m_pendingTextTaker; }
    void addType(const DocumentType &type) { m_types << type; }
    const QList<DocumentType> &types() const { return m_types; }
    /// The type of a file by its extension; empty when there is none for it.
    Q_INVOKABLE QString typeForURL(const QString &url) const;

public: // documents
    /// Front to back: the first is the one the user sees.
    Q_INVOKABLE QList<QObject *> orderedDocuments() const;
    Q_INVOKABLE QList<QObject *> documents() const { return orderedDocuments(); }
    const QList<Document *> &documentList() const { return m_documents; }
    Q_INVOKABLE QObject *currentDocument() const { return m_documents.value(0); }
    /// The open document with that file, or null.
    Q_INVOKABLE runebook::Document *documentForURL(const QString &url) const;
    /// A new, empty document; shown when there is a window maker and \a display.
    Q_INVOKABLE runebook::Document *openUntitledDocumentAndDisplay(bool display,
                                                                   runebook::Error *error = nullptr);
    /// Opens a file, or brings it to the front when it is open already. Null and an error when its type is
    /// unknown or the file is not there.
    Q_INVOKABLE runebook::Document *openDocumentWithContentsOfURLDisplay(const QString &url, bool display,
                                                                         runebook::Error *error = nullptr);
    Q_INVOKABLE void addDocument(runebook::Document *document);
    /// Takes the document out and deletes it later.
    Q_INVOKABLE void removeDocument(runebook::Document *document) override;
    void bringToFront(Document *document);
    /// Has every document take what is being typed; false and an error at the first that refuses a text.
    bool commitEditing(runebook::Error *error = nullptr);
    /// While one of these lives many files are being opened: windows come up behind the others without taking
    /// the keyboard, and documentsChanged() waits, so that no window does anything for each of the others.
    class OpeningMany
    {
    public:
        OpeningMany() { ++shared().m_openingMany; }
        ~OpeningMany();
        Q_DISABLE_COPY_MOVE(OpeningMany)
    };
    bool isOpeningMany() const { return m_openingMany > 0; }
    /// Deletes all documents and their windows at once, unsaved or not: for the end of the program.
    void releaseAll();

public: // names, recent files, autosave
    /// The number in the name of a document without file: 1, 2, ...
    int untitledNumber(const Document *document) const override;
    Q_INVOKABLE QStringList recentFiles() const;
    Q_INVOKABLE void noteRecentFile(const QString &path) override;
    Q_INVOKABLE void clearRecentFiles();
    /// Seconds of inactivity before changes are autosaved; 0 means never.
    Q_INVOKABLE double autosavingDelay() const { return AutosaveTimes::shared().delay; }
    Q_INVOKABLE void setAutosavingDelay(double seconds) { AutosaveTimes::shared().delay = seconds; }
    /// Seconds after which a change lies on the disk at the latest, however busy the user or a script is.
    double autosavingBound() const { return AutosaveTimes::shared().bound; }
    void setAutosavingBound(double seconds) { AutosaveTimes::shared().bound = seconds; }
    /// Autosaves what waits too long for the event loop; called again and again while a script runs.
    void autosaveWhatIsDue();
    /// Autosaves what no autosave holds yet, and waits for it: before a script runs, which may be the end of
    /// the program.
    void autosaveBeforeRun();

Q_SIGNALS:
    void documentsChanged();
    /// A file was opened by path; its document is the frontmost.
    void fileOpened(const QString &path);
    void recentFilesChanged();

private:
    void announceDocuments();
    QStringList filePaths() const override;

    QList<Document *> m_documents;
    QList<DocumentType> m_types;
    QHash<const Document *, int> m_untitledNumbers;
    Factory m_factory;
    WindowMaker m_windowMaker;
    PendingTextTaker m_pendingTextTaker;
    int m_openingMany = 0;
    bool m_isAnnouncementDue = false;
};

} // namespace runebook
