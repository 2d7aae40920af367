#include "platform/StandardFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

namespace runebook::StandardFolders {

using namespace Qt::StringLiterals;

namespace {

QString &chosenProgramData()
{
    static QString path;
    return path;
}

} // namespace

QString programData()
{
    if (!chosenProgramData().isEmpty())
        return chosenProgramData();
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + "/../share/runebook"_L1);
}

QString resource(const QString &name)
{
    return programData() + u'/' + name;
}

QStringList applicationSupport()
{
    QStringList folders = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    folders.removeDuplicates();
    return folders;
}

QString userData()
{
    const QString path =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/runebook"_L1;
    return QDir().mkpath(path) ? path : QString();
}

void setProgramData(const QString &path)
{
    chosenProgramData() = path;
}

} // namespace runebook::StandardFolders
