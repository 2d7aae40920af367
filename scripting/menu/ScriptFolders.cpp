#include "scripting/menu/ScriptFolders.h"

#include "platform/StandardFolders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

QString userSupport()
{
    const QString folder = StandardFolders::applicationSupport().value(0);
    return folder.isEmpty() ? QDir::tempPath() : folder;
}

/// The folder that is searched.
QString searched()
{
    return ScriptFolders::applicationSupportPath() + "/Scripts"_L1;
}

} // namespace

QString ScriptFolders::applicationSupportFolder()
{
    return userSupport() + "/runebook"_L1;
}

QString ScriptFolders::applicationSupportPath()
{
    return QDir::cleanPath(userSupport() + u'/' + applicationSupportFolder());
}

QString ScriptFolders::shown()
{
    return applicationSupportFolder() + "/Scripts"_L1;
}

void ScriptFolders::link()
{
    if (!QFileInfo(shown()).isDir() || QFileInfo::exists(searched()) || QFileInfo(searched()).isSymLink())
        return;
    QDir().mkpath(applicationSupportPath());
    QFile::link(shown(), searched());
}

QStringList ScriptFolders::present(int major, int minor)
{
    link();
    QStringList paths {StandardFolders::programData() + u"/Contents/Scripts%1%2"_s.arg(major).arg(minor)};
    const QStringList supportFolders = StandardFolders::applicationSupport();
    for (const auto below : {"/Scripts"_L1, "/Scripts/site-packages"_L1}) {
        for (const QString &folder : supportFolders) {
            const QString scripts = QDir::cleanPath(folder + u'/' + applicationSupportFolder()) + below;
            if (QFileInfo(scripts).isDir())
                paths << scripts;
        }
    }
    if (QFileInfo(searched() + "/TesselApp"_L1).isDir()) {
        paths.removeAll(searched());
        paths.prepend(searched());
    }
    return paths;
}

} // namespace runebook
