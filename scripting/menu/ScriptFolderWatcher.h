#pragma once

#include "scripting/menu/ScriptFile.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QSet>
#include <QStringList>
#include <QTimer>
#include <memory>

namespace runebook {

/// Notices when the scripts on disk are no longer those of the menu: one more, one less, another title.
/// What else changes in their folders does not count. Watches up to kMaxPaths places.
class ScriptFolderWatcher : public QObject
{
    Q_OBJECT
public:
    static constexpr qsizetype kMaxPaths = 8000; // the desktop shares out what the system can watch

    explicit ScriptFolderWatcher(QObject *parent = nullptr);

    /// Watches nothing more, and nothing has changed.
    void clear();
    /// Remembers what \a folder holds: \a names, in any order.
    void addFolder(const QString &folder, const QStringList &names);
    void addScript(const ScriptFile &script);
    /// Begins to watch what was added since clear(), in idle time.
    void start();

    bool hasChanged() const { return m_hasChanged; }
    /// False for what is hidden and for what the interpreter leaves beside scripts that ran: no folder for
    /// scripts, and nobody's change.
    static bool matters(const QString &name);
    /// Everything in \a folder, in no order; nothing when it cannot be read.
    static QStringList namesIn(const QString &folder);

Q_SIGNALS:
    /// Once, until the next clear().
    void changed();
    /// Whenever these places were looked at, whatever was found.
    void looked(const QSet<QString> &paths);

private:
    void watchMore();
    void look();
    bool differs(const QString &path) const;

    std::unique_ptr<QFileSystemWatcher> m_watcher;
    QTimer m_pause;
    QTimer m_idle;
    QStringList m_toWatch;
    QHash<QString, QStringList> m_folders;
    QHash<QString, ScriptFile> m_scripts;
    QSet<QString> m_toLookAt;
    bool m_hasChanged = false;
};

} // namespace runebook
