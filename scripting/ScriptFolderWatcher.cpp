#include "scripting/ScriptFolderWatcher.h"

#include <QDir>
#include <QFileInfo>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// Editors save in several steps, and copying a folder takes its time.
constexpr int kPauseMs = 300;

/// Running a script leaves the interpreter's own files beside it; they are nobody's change.
QStringList namesThatMatter(QStringList names)
{
    names.removeIf([](const QString &name) { return name.startsWith(u'.') || name == "__pycache__"_L1; });
    names.sort();
    return names;
}

} // namespace

ScriptFolderWatcher::ScriptFolderWatcher(QObject *parent) : QObject(parent)
{
    m_pause.setSingleShot(true);
    m_pause.setInterval(kPauseMs);
    const auto note = [this](const QString &path) {
        m_toLookAt.insert(path);
        m_pause.start();
    };
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, note);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, note);
    connect(&m_pause, &QTimer::timeout, this, &ScriptFolderWatcher::look);
}

void ScriptFolderWatcher::clear()
{
    const QStringList watched = m_watcher.directories() + m_watcher.files();
    if (!watched.isEmpty())
        m_watcher.removePaths(watched);
    m_pause.stop();
    m_folders.clear();
    m_scripts.clear();
    m_toLookAt.clear();
    m_hasChanged = false;
}

void ScriptFolderWatcher::addFolder(const QString &folder, const QStringList &names)
{
    m_folders.insert(folder, namesThatMatter(names));
}

void ScriptFolderWatcher::addScript(const ScriptFile &script)
{
    m_scripts.insert(script.path, script);
}

void ScriptFolderWatcher::start()
{
    // Folders first: they tell of most changes.
    const QStringList paths = (m_folders.keys() + m_scripts.keys()).mid(0, kMaxPaths);
    if (!paths.isEmpty())
        m_watcher.addPaths(paths);
}

bool ScriptFolderWatcher::differs(const QString &path) const
{
    const auto folder = m_folders.constFind(path);
    if (folder != m_folders.cend())
        return namesThatMatter(QDir(path).entryList(kListed, QDir::Unsorted)) != *folder;
    const auto script = m_scripts.constFind(path);
    return script != m_scripts.cend() && ScriptFile::read(path) != *script;
}

void ScriptFolderWatcher::look()
{
    bool differ = false;
    for (const QString &path : std::exchange(m_toLookAt, {})) {
        // A file that was replaced is no longer watched under its name.
        if (QFileInfo::exists(path))
            m_watcher.addPath(path);
        differ = differ || differs(path);
    }
    if (!differ || std::exchange(m_hasChanged, true))
        return;
    Q_EMIT changed();
}

} // namespace runebook
