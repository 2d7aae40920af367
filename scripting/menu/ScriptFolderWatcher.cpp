#include "scripting/menu/ScriptFolderWatcher.h"

#include <QFile>
#include <QFileInfo>
#include <filesystem>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// Editors save in several steps, and copying a folder takes its time.
constexpr int kPauseMs = 300;
constexpr int kIdleMs = 20;
constexpr qsizetype kPathsAtOnce = 100;

QStringList namesThatMatter(QStringList names)
{
    names.removeIf([](const QString &name) { return !ScriptFolderWatcher::matters(name); });
    names.sort();
    return names;
}

} // namespace

ScriptFolderWatcher::ScriptFolderWatcher(QObject *parent) : QObject(parent)
{
    m_pause.setSingleShot(true);
    m_pause.setInterval(kPauseMs);
    connect(&m_idle, &QTimer::timeout, this, &ScriptFolderWatcher::watchMore);
    connect(&m_pause, &QTimer::timeout, this, &ScriptFolderWatcher::look);
}

void ScriptFolderWatcher::clear()
{
    // Taking thousands of places out one by one would take longer.
    m_watcher = std::make_unique<QFileSystemWatcher>();
    const auto note = [this](const QString &path) {
        m_toLookAt.insert(path);
        m_pause.start();
    };
    connect(m_watcher.get(), &QFileSystemWatcher::directoryChanged, this, note);
    connect(m_watcher.get(), &QFileSystemWatcher::fileChanged, this, note);
    m_pause.stop();
    m_idle.stop();
    m_toWatch.clear();
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
    m_toWatch = (m_folders.keys() + m_scripts.keys()).mid(0, kMaxPaths);
    m_idle.start(0);
}

/// The watcher compares each new place with all it has: thousands at once would hold up the window.
void ScriptFolderWatcher::watchMore()
{
    const QStringList paths = m_toWatch.mid(0, kPathsAtOnce);
    m_toWatch.remove(0, paths.size());
    if (!paths.isEmpty())
        m_watcher->addPaths(paths);
    // What changed before it was watched.
    m_toLookAt.unite({paths.begin(), paths.end()});
    look();
    if (m_toWatch.isEmpty())
        m_idle.stop();
    else
        m_idle.start(kIdleMs);
}

bool ScriptFolderWatcher::matters(const QString &name)
{
    return !name.startsWith(u'.') && name != "__pycache__"_L1;
}

QStringList ScriptFolderWatcher::namesIn(const QString &folder)
{
    // QDir would ask the disk about each name.
    QStringList names;
    std::error_code failed;
    std::filesystem::directory_iterator entries(QFile::encodeName(folder).toStdString(), failed);
    for (; !failed && entries != std::filesystem::directory_iterator(); entries.increment(failed))
        names << QFile::decodeName(entries->path().filename().c_str());
    return names;
}

bool ScriptFolderWatcher::differs(const QString &path) const
{
    const auto folder = m_folders.constFind(path);
    if (folder != m_folders.cend())
        return namesThatMatter(namesIn(path)) != *folder;
    const auto script = m_scripts.constFind(path);
    return script != m_scripts.cend() && ScriptFile::read(path) != *script;
}

void ScriptFolderWatcher::look()
{
    bool differ = false;
    const QSet<QString> paths = std::exchange(m_toLookAt, {});
    for (const QString &path : paths) {
        // A file that was replaced is no longer watched under its name.
        if (QFileInfo::exists(path))
            m_watcher->addPath(path);
        differ = differ || differs(path);
    }
    if (differ && !std::exchange(m_hasChanged, true))
        Q_EMIT changed();
    Q_EMIT looked(paths);
}

} // namespace runebook
