#pragma once

#include "platform/Error.h"
#include "platform/documents/AutosaveFolder.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <memory>
#include <vector>

namespace runebook {

class Document;

/// Something that a process which is no more has left: changes that were never saved, or the text of a save
/// that did not end.
struct RecoverableContent {
    enum class Kind {
        Autosave, ///< unsaved changes
        Rescue ///< the whole text of an interrupted save; the file itself may be damaged
    };
    Kind kind = Kind::Autosave;
    QString contentPath;
    QString notePath; ///< empty when there is none
    QString typedPath; ///< of what stood in editors; empty for a rescue file
    QString originalPath; ///< empty for a document that had no file, or when nobody knows any more
    QString type; ///< of the original
    QString displayName;
    QDateTime savedAt;
    qint64 process = 0; ///< that left it; 0 when nobody knows
    qint64 size = 0; ///< bytes
    FileState original; ///< the file in the state that was edited
    bool hasOriginalChanged = false; ///< since, by another program

    bool operator==(const RecoverableContent &other) const { return contentPath == other.contentPath; }
};

/// What can be brought back after a crash. It holds what it lists for this process as long as it lives, so
/// that two programs never restore the same; what is neither restored nor discarded is listed again the next
/// time. Main thread only.
class Recovery : public QObject
{
    Q_OBJECT
public:
    explicit Recovery(QObject *parent = nullptr);
    ~Recovery() override;

public: // looking
    /// Looks for what dead processes left, and returns all that is listed.
    const QList<RecoverableContent> &find();
    /// Adds what interrupted saves of \a path left.
    const QList<RecoverableContent> &findFor(const QString &path);
    const QList<RecoverableContent> &contents() const { return m_contents; }

public: // deciding
    /// Opens a document with that content, edited and belonging to the original file, which is not touched.
    /// What was left goes only once the document is autosaved again. When the original is open already, its
    /// unedited document makes room; an edited one stays beside the restored one, which then has no file.
    /// Null and an error when the content cannot be read; it stays where it is then.
    Document *restore(const RecoverableContent &content, Error *error = nullptr);
    /// Removes what was left, for good.
    bool discard(const RecoverableContent &content, Error *error = nullptr);
    /// Opens the content beside the original for a comparison: two documents without file, named after what
    /// they are. Both null when one of them cannot be read.
    std::pair<Document *, Document *> openToCompare(const RecoverableContent &content,
                                                    Error *error = nullptr);

    /// A document with the content of \a path that does not belong to that file; added to the open ones.
    static Document *openCopy(const QString &path, const QString &type, const QString &name, Error *error);

Q_SIGNALS:
    void contentsChanged();

private:
    void addAutosavesIn(const QString &folder);
    void addRescue(const QString &path, const QString &target);
    void forget(const RecoverableContent &content);
    static bool takeTyped(Document &document, const RecoverableContent &content);

    std::vector<std::unique_ptr<AutosaveFolder::Abandoned>> m_held;
    QList<RecoverableContent> m_contents;
};

} // namespace runebook
