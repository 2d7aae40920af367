#include "scripting/python/PythonDiscovery.h"

#include "platform/VXVersionComparator.h"
#include "scripting/python/BundleInfo.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

const QString kName = u"name"_s;
const QString kFullPath = u"fullPath"_s;
const QString kVersion = u"version"_s;

QVariantMap description(const QString &path, const QString &version, const QString &label)
{
    return {{kName, u"%1 (%2)"_s.arg(version, label)}, {kFullPath, path}, {kVersion, version}};
}

bool sortsBefore(const QVariantMap &a, const QVariantMap &b)
{
    const int order = VXVersionComparator::compareVersionWithVersion(a[kVersion], b[kVersion]);
    return order != 0 ? order < 0 : a[kName].toString() < b[kName].toString();
}

/// Absolute with all links resolved; empty for what is not there.
QString resolved(const QString &path)
{
    return QDir::isAbsolutePath(path) ? QFileInfo(path).canonicalFilePath() : QString();
}

/// The names in a folder in the order in which the file system lists them.
QStringList entries(const QString &folder)
{
    QStringList names;
    QDirIterator iterator(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    while (iterator.hasNext()) {
        iterator.next();
        names << iterator.fileName();
    }
    return names;
}

QString joined(const QString &folder, const QString &name)
{
    return folder.endsWith(u'/') ? folder + name : folder + u'/' + name;
}

void walk(const PythonDiscovery &discovery, const QString &path, QStringList &above, QStringList &found)
{
    if (path.contains("/Python.framework"_L1)) {
        found << discovery.allVersionsOfFramework(path);
        return;
    }
    // A link that leads back to a folder above it must not make the walk endless.
    const QString folder = QFileInfo(path).canonicalFilePath();
    if (folder.isEmpty() || above.contains(folder))
        return;
    above << folder;
    static const QSet<QString> skipped {
        u"bin"_s, u"libexec"_s, u"lib"_s, u"IDLE 3.app"_s, u"share"_s, u"Python Launcher 3.app"_s, u"."_s};
    for (const QString &name : entries(path)) {
        if (skipped.contains(name) || name.startsWith(u'.'))
            continue;
        const QString below = joined(path, name);
        if (QFileInfo(below).isDir())
            walk(discovery, below, above, found);
    }
    above.removeLast();
}

} // namespace

QList<QVariantMap> PythonDiscovery::find(const QString &chosenPath) const
{
    QList<QVariantMap> all = supportedFrameworks() + supportedLibraries();
    std::stable_sort(all.begin(), all.end(), sortsBefore);
    const QVariantMap byHand = chosen(chosenPath, all);
    if (!byHand.isEmpty())
        all << byHand;
    return all;
}

QList<QVariantMap> PythonDiscovery::supportedFrameworks() const
{
    QStringList candidates = m_places.frameworks();
    const QString plugin = resolved(m_places.pluginFramework);
    if (!plugin.isEmpty() && isSupported(plugin))
        candidates.prepend(plugin);
    QList<QVariantMap> found;
    for (const QString &candidate : candidates) {
        for (const QString &path : allFrameworkPaths(candidate)) {
            QString version;
            if (isSupported(path, &version))
                found << description(path, version, m_places.frameworkLabel(path));
        }
    }
    return found;
}

QList<QVariantMap> PythonDiscovery::supportedLibraries() const
{
    QList<QVariantMap> found;
    for (const QString &path : allLibraries()) {
        const QString version = installedVersion(path);
        if (isSupportedVersion(version))
            found << description(path, version, m_places.libraryLabel(path));
    }
    return found;
}

QVariantMap PythonDiscovery::chosen(const QString &path, const QList<QVariantMap> &listed) const
{
    if (path.isEmpty())
        return {};
    const bool isLibrary = isPythonLibraryName(path);
    const QString choice = isLibrary ? resolved(path) : allFrameworkPaths(path).value(0);
    if (choice.isEmpty())
        return {};
    for (const QVariantMap &known : listed) {
        const QString fullPath = known[kFullPath].toString();
        if (fullPath.startsWith(choice) || choice.startsWith(fullPath))
            return {};
    }
    QString version;
    if (isLibrary) {
        version = installedVersion(choice);
    } else {
        const std::optional<BundleInfo> bundle = BundleInfo::read(choice);
        if (!bundle || !bundle->hasDictionary)
            return {};
        version = bundle->version;
    }
    const QString word = QCoreApplication::translate("PythonDiscovery", "manually");
    return {{kName, u"%1 (%2)"_s.arg(version, word)}, {kFullPath, choice}};
}

QStringList PythonDiscovery::allFrameworkPaths(const QString &path) const
{
    QStringList found;
    QStringList above;
    if (!path.isEmpty())
        walk(*this, path, above, found);
    return found;
}

QStringList PythonDiscovery::allVersionsOfFramework(const QString &path) const
{
    if (path.contains("/Versions/"_L1))
        return {path};
    QStringList versions;
    const QString folder = joined(path, u"Versions"_s);
    for (const QString &name : entries(folder)) {
        const QString version = joined(folder, name);
        if (!QFileInfo(version).isDir())
            continue;
        const QString target = resolved(version);
        if (!versions.contains(target))
            versions << target;
    }
    return versions;
}

QStringList PythonDiscovery::allLibraries() const
{
    QStringList libraries;
    for (const QString &folder : m_places.libraryFolders()) {
        for (const QString &name : QDir(folder).entryList({u"libpython3.*.so*"_s}, QDir::Files)) {
            const QString library = resolved(joined(folder, name));
            if (!versionInLibraryName(library).isEmpty() && !libraries.contains(library))
                libraries << library;
        }
    }
    return libraries;
}

bool PythonDiscovery::isSupportedVersion(const QString &version)
{
    // An absent version is a mistake of whoever made the bundle, not one of the comparison.
    if (version.isEmpty())
        return false;
    return !VXVersionComparator::isVersionGreaterThanVersion(QString::fromLatin1(kOldestVersion), version)
        && !VXVersionComparator::isVersionGreaterThanVersion(version, QString::fromLatin1(kNewestVersion));
}

bool PythonDiscovery::isSupported(const QString &path, QString *version)
{
    const std::optional<BundleInfo> bundle = BundleInfo::read(path);
    if (!bundle || !isSupportedVersion(bundle->version))
        return false;
    if (version)
        *version = bundle->version;
    return true;
}

} // namespace runebook
