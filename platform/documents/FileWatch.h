#pragma once

#include "platform/documents/FileState.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <future>

namespace runebook {

/// Notices within two seconds what other programs do to one file: by the system's notices, by a look every
/// second while the program is in front or no notices come, and whenever it is asked. A file that was only
/// touched counts as unchanged. Main thread only.
class FileWatch : public QObject
{
    Q_OBJECT
public:
    enum class Change {
        None,
        Changed, ///< other content in the same file
        Replaced, ///< another file has its name
        Emptied, ///< nothing is left of the content
        Removed
    };
    Q_ENUM(Change)

    explicit FileWatch(QObject *parent = nullptr);
    ~FileWatch() override;

public:
    /// Watches \a path from now on; \a known is the state in which its content was read. An empty path ends
    /// the watch.
    void watch(const QString &path, const FileState &known);
    const QString &path() const { return m_path; }
    /// What lies on the disk now is what the program knows: after a save, or when the user wants it so.
    void takeAsKnown();
    const FileState &known() const { return m_known; }
    /// The hash of the known content, when it is not too early to tell.
    std::optional<quint64> knownHash();

public: // asking
    /// Looks now, and announces what is new.
    Change check();
    /// What was found by the last look.
    Change change() const { return m_change; }

Q_SIGNALS:
    /// Once for each new state of the file that is not the known one; with Change::None when the known
    /// content is back.
    void changed(runebook::FileWatch::Change change);

private:
    void startHash();
    void arm();
    void onNotice(const QString &path);
    void look();
    /// Looks once nobody has written for a moment.
    void settle();
    Change compare(const FileState &now);

    QString m_path;
    FileState m_known;
    FileState m_seen; ///< by the last look
    Change m_change = Change::None;
    std::shared_future<std::optional<quint64>> m_hash; ///< of the known content
    QTimer m_lookTimer;
    QTimer m_settleTimer;
    QElapsedTimer m_unsettled;
    FileState m_settling;
    bool m_isArmed = false;
};

} // namespace runebook
