#include "scripting/python/PythonPlaces.h"

#include "platform/FileBytes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

// The texts as the search has always had them, trailing slashes and the entry without one included.
constexpr QLatin1StringView kFrameworks[] = {
    "/System/Library/Frameworks/Python.framework"_L1,
    "/Library/Frameworks/Python.framework"_L1,
    "/opt/local/Library/Frameworks/Python.framework"_L1,
    "/usr/local/Cellar/python3/"_L1,
    "/usr/local/Cellar/python@3.9"_L1,
    "/usr/local/Cellar/python/"_L1,
    "/opt/homebrew/Cellar/python@3.9/"_L1,
    "/opt/homebrew/Cellar/python@3.10/"_L1,
    "/opt/homebrew/Cellar/python@3.11/"_L1,
};

constexpr QLatin1StringView kCondaFolders[] = {"miniconda3"_L1, "anaconda3"_L1,  "miniforge3"_L1,
                                               "mambaforge"_L1, "micromamba"_L1, ".conda"_L1};

const QRegularExpression &libraryName()
{
    static const QRegularExpression expression(u"^libpython(\\d+\\.\\d+)m?\\.so(\\.[\\d.]+)?$"_s);
    return expression;
}

/// The folders that match \a pattern below \a folder, in the order of their names.
QStringList matching(const QString &folder, const QString &pattern, const QString &below = {})
{
    QStringList found;
    for (const QString &name : QDir(folder).entryList({pattern}, QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString path = folder + u'/' + name + below;
        if (QFileInfo(path).isDir())
            found << path;
    }
    return found;
}

QString patchLevel(const QString &header)
{
    const std::optional<QByteArray> text = bytesOfSmallFile(header, 1 << 16);
    if (!text)
        return {};
    static const QRegularExpression define(u"#define\\s+PY_VERSION\\s+\"(\\d+\\.\\d+\\.\\d+)"_s);
    return define.match(QString::fromUtf8(*text)).captured(1);
}

} // namespace

PythonPlaces PythonPlaces::ofThisMachine()
{
    return {{}, QDir::homePath(), {}};
}

QStringList PythonPlaces::frameworks() const
{
    QStringList places;
    for (const QLatin1StringView place : kFrameworks)
        places << root + place;
    places << home + "/Library/Frameworks/Python.framework"_L1;
    return places;
}

QStringList PythonPlaces::libraryFolders() const
{
    QStringList folders;
    for (const auto top : {"/usr"_L1, "/usr/local"_L1}) {
        folders << matching(root + top + "/lib"_L1, u"*-linux-*"_s);
        folders << root + top + "/lib"_L1 << root + top + "/lib64"_L1;
    }
    folders << matching(home + "/.pyenv/versions"_L1, u"*"_s, u"/lib"_s);
    folders << matching(home + "/.local/share/uv/python"_L1, u"*"_s, u"/lib"_s);
    folders << matching(home + "/.local/share/mise/installs/python"_L1, u"*"_s, u"/lib"_s);
    for (const QLatin1StringView conda : kCondaFolders) {
        folders << home + u'/' + conda + "/lib"_L1;
        folders << matching(home + u'/' + conda + "/envs"_L1, u"*"_s, u"/lib"_s);
    }
    folders << matching(root + "/opt"_L1, u"*"_s, u"/lib"_s);
    folders.removeIf([](const QString &folder) { return !QFileInfo(folder).isDir(); });
    return folders;
}

QString PythonPlaces::withoutRoot(const QString &path) const
{
    return !root.isEmpty() && path.startsWith(root) ? path.mid(root.size()) : path;
}

QString PythonPlaces::frameworkLabel(const QString &path) const
{
    const QString place = withoutRoot(path);
    if (place.startsWith("/System/Library/Frameworks"_L1))
        return u"Apple"_s;
    if (place.startsWith("/Library/Frameworks"_L1))
        return u"Python.org"_s;
    if (place.startsWith("/opt/local/Library/"_L1))
        return u"MacPorts"_s;
    if (place.contains("Cellar"_L1))
        return u"Homebrew"_s;
    if (place.contains("/Library/Frameworks/"_L1))
        return u"DEBUG"_s;
    return u"unknown"_s;
}

QString PythonPlaces::libraryLabel(const QString &path) const
{
    const QString place = withoutRoot(path);
    if (place.startsWith("/usr/"_L1) || place.startsWith("/lib"_L1))
        return u"System"_s;
    if (place.contains("/.pyenv/"_L1))
        return u"pyenv"_s;
    if (place.contains("/uv/python/"_L1))
        return u"uv"_s;
    if (place.contains("/mise/installs/"_L1))
        return u"mise"_s;
    if (place.contains("conda"_L1) || place.contains("/miniforge"_L1) || place.contains("mamba"_L1))
        return u"Conda"_s;
    return u"unknown"_s;
}

bool isPythonLibraryName(const QString &path)
{
    return libraryName().match(path.section(u'/', -1)).hasMatch();
}

QString versionInLibraryName(const QString &path)
{
    const QString version = libraryName().match(path.section(u'/', -1)).captured(1);
    return version.startsWith("3."_L1) ? version : QString();
}

QString pythonPrefix(const QString &path)
{
    if (!isPythonLibraryName(path))
        return path;
    const qsizetype lib = std::max(path.lastIndexOf("/lib/"_L1), path.lastIndexOf("/lib64/"_L1));
    return lib < 0 ? path.section(u'/', 0, -2) : path.left(lib);
}

QString installedVersion(const QString &libraryPath)
{
    const QString named = versionInLibraryName(libraryPath);
    const QString prefix = pythonPrefix(libraryPath);
    // Folders of version managers: "3.11.7", "cpython-3.11.7-linux-x86_64-gnu".
    const QRegularExpression inFolder(u"(?:^|[^\\d.])("_s + QRegularExpression::escape(named)
                                      + u"\\.\\d+)(?:$|[^\\d.])"_s);
    const QString folder = inFolder.match(prefix.section(u'/', -1)).captured(1);
    if (!folder.isEmpty())
        return folder;
    const QString header = patchLevel(prefix + "/include/python"_L1 + named + "/patchlevel.h"_L1);
    return header.isEmpty() ? named : header;
}

} // namespace runebook
