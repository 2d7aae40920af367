#pragma once

#include "platform/Error.h"
#include "platform/UndoManager.h"
#include "platform/documents/AutosaveSubject.h"
#include "platform/documents/FileWatch.h"
#include "platform/documents/SavingLosses.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <vector>

namespace runebook {

class Autosaver;
struct SavedState;

/// One open file of the program, or one that has no file yet: its path and type, its undo history, whether
/// it has unsaved changes, its window. What is in it, a subclass knows. Main thread only.
class Document : public QObject, public AutosaveSubject
{
    Q_OBJECT
    Q_PROPERTY(bool isDocumentEdited READ isDocumentEdited NOTIFY editedChanged)
    Q_PROPERTY(QString displayName READ displayName NOTIFY displayNameChanged)
public:
    explicit Document(QObject *parent = nullptr);
    ~Document() override;

public: // content, supplied by the subclass
    /// Replaces the content by that of the file; \a type is one of the type names of the controller.
    Q_INVOKABLE virtual bool readFromURLOfType(const QString &url, const QString &type,
                                               runebook::Error *error = nullptr) = 0;
    Q_INVOKABLE virtual bool writeToURLOfType(const QString &url, const QString &type,
                                              runebook::Error *error = nullptr) = 0;
    /// Why the content is not what the file holds, when it could not be read; an empty domain when it could.
    virtual const Error &readError() const;
    /// What the next save will write differently from the file, or leave out: sentences for the user, none
    /// when the file is written as it was read.
    Q_INVOKABLE virtual QStringList savingWillChange() const { return {}; }
    /// Brings the content into the form in which it was just written to its file of type \a type, where that
    /// is another one; a step that can be undone.
    virtual void takeSavedForm(const QString &type) { Q_UNUSED(type) }
    /// Learns what savingWillChange() tells from the file \a original, for content that came from elsewhere.
    virtual void learnFormOf(const QString &original) { Q_UNUSED(original) }
    /// Takes over the content of \a other, which was read from this document's file, keeping what is the
    /// same; part of an open undo group. False when that is not possible; then nothing has changed.
    virtual bool takeContentOf(Document &other);
    /// Whether reading this met problems that reading \a former did not meet.
    virtual bool readWorseThan(const Document &former) const;
    /// The values that a save as \a type would not keep, those left out that were accepted to be lost.
    virtual SavingLosses savingLosses(const QString &type) const;
    /// Puts values into a form that a file keeps, where nobody has to decide, as one undo step; how many
    /// records that were.
    virtual qsizetype fixSavingLosses() { return 0; }
    /// Null unless the subclass knows how to.
    std::unique_ptr<SlicedContent> slicedContent() const override;
    /// Replaces the content by one that was autosaved. \a isWhole tells whether all of it could be read.
    virtual bool readAutosavedContents(const QString &path, bool *isWhole, Error *error);
    /// The type of the separate file that autosaving writes.
    Q_INVOKABLE virtual QString autosavingFileType() const = 0;
    Q_INVOKABLE virtual bool autosavesInPlace() const { return false; }
    /// Whether there is nothing in it yet that anybody would miss.
    virtual bool isEmpty() const { return false; }
    /// Makes the windows that show the document. Called once, when it is to be shown.
    Q_INVOKABLE virtual void makeWindowControllers() { }

public: // the file
    /// Absolute path; empty while the document has no file.
    Q_INVOKABLE QString fileURL() const { return m_fileURL; }
    Q_INVOKABLE void setFileURL(const QString &url);
    Q_INVOKABLE QString fileType() const { return m_fileType; }
    Q_INVOKABLE void setFileType(const QString &type) { m_fileType = type; }
    /// The file's name, or a name for a document without one.
    Q_INVOKABLE QString displayName() const override;
    /// What the document is called where documents stand beside each other: the file's name, with as many of
    /// its folders as tell it from other open files of that name.
    Q_INVOKABLE QString windowTitle() const;
    /// Whether \a canonicalPath, where every link is followed, leads to the document's file.
    bool hasCanonicalPath(const QString &canonicalPath) const { return m_canonicalPath == canonicalPath; }
    /// Gives a document without file a name of its own.
    void setUntitledName(const QString &name);
    /// Writes the document to its own file. Fails without one, and with the domain "ChangedOnDiskError" when
    /// another program has written to it; keepMine() lets the next save pass. Fails with the domain
    /// "SavingLossesError" when values would not be kept: code 1 until acceptSavingLosses(), code 2 always,
    /// since other records would go with them. Before the first save that leaves something out a copy of the
    /// file goes to the folder of originals.
    Q_INVOKABLE bool saveDocument(runebook::Error *error = nullptr);
    /// Writes the document to \a url, which becomes its file.
    Q_INVOKABLE bool saveToURLOfType(const QString &url, const QString &type,
                                     runebook::Error *error = nullptr);
    /// Lets saves leave out what savingLosses() lists now, unless other records would go with it.
    Q_INVOKABLE void acceptSavingLosses();
    /// Whether saves of all documents leave values out without being told to.
    static void setLosesSilently(bool losesSilently);
    static bool losesSilently();
    /// Reads the document's file again; its history starts anew.
    Q_INVOKABLE bool revertToSaved(runebook::Error *error = nullptr);
    enum class Reload {
        Always,
        IfSound ///< not when less can be made of the file than of the one that was read before
    };
    /// Reads the document's file again, as one step of its history. Fails with the domain
    /// "ChangedOnDiskError" and the code 2 when somebody is just writing it.
    bool reload(Reload how, runebook::Error *error = nullptr);
    /// Gives what the user typed but did not leave yet to the records; called before every save, close and
    /// run. False and an error when a field refuses its text: it stays where it is, and where it is says why.
    bool commitEditing(runebook::Error *error = nullptr);

public: // what other programs do to the file
    /// The file's watch. It knows the state in which the file was read or saved.
    FileWatch &fileWatch() { return m_fileWatch; }
    const FileWatch &fileWatch() const { return m_fileWatch; }
    /// The content was read when the file was in the state \a state.
    void noteFileRead(const FileState &state) { m_fileWatch.watch(m_fileURL, state); }
    /// The state of the file that was read last, as the reading found it; none where the subclass does not
    /// tell.
    const FileState &readState() const { return m_readState; }
    /// Decides that the document's content is the right one, whatever the file holds now.
    Q_INVOKABLE void keepMine();

public: // changes
    Q_INVOKABLE runebook::UndoManager *undoManager() { return &m_undoManager; }
    Q_INVOKABLE bool isDocumentEdited() const override { return !m_undoManager.isClean(); }
    enum ChangeType { ChangeDone = 0, ChangeCleared = 2 };
    Q_INVOKABLE void updateChangeCount(int change);
    /// Of what changes no undo step tells: what a save would write is another thing now.
    void noteSilentChange() { updateChangeCount(ChangeDone); }

public: // what stands in editors and was not handed over yet
    /// Texts that are being typed, each as an object whose form only those know who type and who take them.
    using PendingTexts = std::function<QJsonArray()>;
    /// Asks \a source, as long as \a owner lives, whenever the document is autosaved.
    void addPendingTexts(QObject *owner, PendingTexts source);
    /// To be called by who has such texts, at every key: they are autosaved as edits are.
    void pendingTextChanged();
    QJsonArray pendingTexts() const override;
    bool hasUnsavedWork() const override;

public: // window and life
    // DocumentWindows has it as a widget.
    /// The main window, or null: a document without one works all the same.
    Q_INVOKABLE QObject *windowController() const override;
    void setWindowController(QObject *window);
    /// Forgets the document without asking; its window closes, records that others hold stay valid.
    Q_INVOKABLE void close();

    /// Whether the document was made because there was none, and nobody has done anything with it: the first
    /// file that is opened may take its place.
    bool isPlaceholder() const;
    void setPlaceholder(bool isPlaceholder) { m_isPlaceholder = isPlaceholder; }

public: // autosave
    /// Writes the content to the document's autosave file when it has unsaved work, at once. After a while
    /// without changes, and while they go on after a while as well, that happens by itself, without holding
    /// anybody up.
    bool autosave(Error *error = nullptr);
    /// Empty while nothing was autosaved.
    QString autosavedContentsURL() const;
    void removeAutosave();
    AutosaveNote autosaveNote() override;
    bool writeAutosave(const QString &path, Error *error) override;
    Autosaver &autosaver() { return *m_autosaver; }

Q_SIGNALS:
    void editedChanged(bool edited);
    void displayNameChanged();
    /// Its window hides itself, and is deleted later.
    void aboutToClose(runebook::Document *document);
    /// Asks the window to come up in front of the others.
    void frontRequested();
    /// Asks the window to show what stands at \a place of the document.
    void showPlaceRequested(qsizetype place);
    /// Asks every pane to hand over what is being typed. Who cannot fills \a refusal.
    void commitEditingRequested(runebook::Error *refusal);
    void saved();

protected:
    void setReadState(const FileState &state) { m_readState = state; }
    /// What the save that goes on expects of the document's file, and what it leaves; null for other writing.
    SavedState *savedState() { return m_savedState; }
    /// Remembers that what savingLosses() lists now may be lost.
    virtual void noteAcceptedLosses() { }

private:
    bool mayLose(const QString &type, Error *error);
    bool isReadable(Error *error) const;
    bool readAgain(std::unique_ptr<Document> &trial, Error *error) const;
    bool isOwnFile(const QString &path) const;
    bool mayWriteOver(Error *error);
    bool keepOriginal(Error *error);
    void fileHasChanged(FileWatch::Change change);

    UndoManager m_undoManager;
    QString m_fileURL;
    QString m_fileType;
    QString m_untitledName;
    FileWatch m_fileWatch;
    FileState m_readState;
    SavedState *m_savedState = nullptr;
    std::unique_ptr<Autosaver> m_autosaver;
    QPointer<QObject> m_window;
    bool m_isPlaceholder = false;
    mutable std::vector<std::pair<QPointer<QObject>, PendingTexts>> m_pendingTexts;
    QString m_canonicalPath; ///< of the file, when it became this document's
    bool m_losesValues = false; ///< in the next save, as was accepted
};

} // namespace runebook
