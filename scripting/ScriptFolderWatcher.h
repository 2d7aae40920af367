#pragma once

#include "scripting/ScriptFile.h"

#include <QDir>
#include <QFileSystemWatcher>
#include <QHash>
#include <QSet>
#include <QStringList>
#include <QTimer>

namespace runebook {

/// Notices when the scripts on disk are no longer those of the menu: one more, one less, another title.
/// What else changes in their folders does not count. Watches up to kMaxPaths places.
class ScriptFolderWatcher : public QObject
{
    Q_OBJECT
public:
    static constexpr qsizetype kMaxPaths = 8000; // the desktop shares out what the system can watch

    /// What a listing of a folder holds.
    static constexpr QDir::Filters kListed = QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot;

    explicit ScriptFolderWatcher(QObject *parent = nullptr);

    /// Watches nothing more, and nothing has changed.
    void clear();
    /// Remembers what \a folder holds: \a names, in any order.
    void addFolder(const QString &folder, const QStringList &names);
    void addScript(const ScriptFile &script);
    /// Begins to watch what was added since clear().
    void start();

    bool hasChanged() const { return m_hasChanged; }

Q_SIGNALS:
    /// Once, until the next clear().
    void changed();

private:
    void look();
    bool differs(const QString &path) const;

    QFileSystemWatcher m_watcher;
    QTimer m_pause;
    QHash<QString, QStringList> m_folders;
    QHash<QString, ScriptFile> m_scripts;
    QSet<QString> m_toLookAt;
    bool m_hasChanged = false;
};

} // namespace runebook
