#pragma once

#include "platform/Error.h"
#include "platform/UndoManager.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

class QWidget;

namespace runebook {

/// One open file of the program, or one that has no file yet: its path and type, its undo history, whether
/// it has unsaved changes, its window. What is in it, a subclass knows. Main thread only.
class Document : public QObject
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
    /// The type of the separate file that autosaving writes.
    Q_INVOKABLE virtual QString autosavingFileType() const = 0;
    Q_INVOKABLE virtual bool autosavesInPlace() const { return false; }
    /// Makes the windows that show the document. Called once, when it is to be shown.
    Q_INVOKABLE virtual void makeWindowControllers() { }

public: // the file
    /// Absolute path; empty while the document has no file.
    Q_INVOKABLE QString fileURL() const { return m_fileURL; }
    Q_INVOKABLE void setFileURL(const QString &url);
    Q_INVOKABLE QString fileType() const { return m_fileType; }
    Q_INVOKABLE void setFileType(const QString &type) { m_fileType = type; }
    /// The file's name, or a name for a document without one.
    Q_INVOKABLE virtual QString displayName() const;
    /// Writes the document to its own file. Fails without one.
    Q_INVOKABLE bool saveDocument(runebook::Error *error = nullptr);
    /// Writes the document to \a url, which becomes its file.
    Q_INVOKABLE bool saveToURLOfType(const QString &url, const QString &type,
                                     runebook::Error *error = nullptr);
    /// Reads the document's file again; its history starts anew.
    Q_INVOKABLE bool revertToSaved(runebook::Error *error = nullptr);
    /// Gives what the user typed but did not leave yet to the records; called before every save and run.
    void commitEditing();

public: // changes
    Q_INVOKABLE runebook::UndoManager *undoManager() { return &m_undoManager; }
    Q_INVOKABLE bool isDocumentEdited() const { return !m_undoManager.isClean(); }
    enum ChangeType { ChangeDone = 0, ChangeCleared = 2 };
    Q_INVOKABLE void updateChangeCount(int change);

public: // window and life
    /// The main window, or null: a document without one works all the same.
    Q_INVOKABLE QWidget *windowController() const;
    void setWindowController(QWidget *window);
    /// Forgets the document without asking; its window closes, records that others hold stay valid.
    Q_INVOKABLE void close();

public: // autosave
    /// Writes the content to the document's autosave file when it has unsaved changes.
    bool autosave(Error *error = nullptr);
    /// Empty while nothing was autosaved.
    QString autosavedContentsURL() const { return m_autosaveURL; }
    void removeAutosave();

Q_SIGNALS:
    void editedChanged(bool edited);
    void displayNameChanged();
    void aboutToClose(runebook::Document *document);
    /// Asks every pane to hand over what is being typed.
    void commitEditingRequested();
    void saved();

private:
    void scheduleAutosave();

    UndoManager m_undoManager;
    QString m_fileURL;
    QString m_fileType;
    QString m_autosaveURL;
    QPointer<QWidget> m_window;
    QTimer m_autosaveTimer;
    int m_untitledNumber = 0;
};

} // namespace runebook
