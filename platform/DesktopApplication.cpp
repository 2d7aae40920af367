#include "platform/DesktopApplication.h"

#include "platform/FileBytes.h"
#include "platform/StandardFolders.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStringList>

namespace runebook::DesktopApplication {

using namespace Qt::StringLiterals;

namespace {

/// The command of a desktop file, without the places for files.
QStringList commandOf(const QString &desktopFile)
{
    constexpr qint64 kLargestFile = 1 << 20;
    const QByteArray text = bytesOfSmallFile(desktopFile, kLargestFile).value_or(QByteArray());
    bool inEntry = false;
    for (const QString &line : QString::fromUtf8(text).split(u'\n')) {
        if (line.startsWith(u'['))
            inEntry = line.trimmed() == "[Desktop Entry]"_L1;
        if (!inEntry || !line.startsWith("Exec="_L1))
            continue;
        QStringList command = QProcess::splitCommand(line.mid(5).trimmed());
        command.removeIf([](const QString &word) { return word.startsWith(u'%'); });
        return command;
    }
    return {};
}

} // namespace

QString desktopFile(const QString &id)
{
    const QString name = id.endsWith(".desktop"_L1) ? id : id + ".desktop"_L1;
    if (id.isEmpty() || name.contains(u'/'))
        return {};
    for (const QString &folder : StandardFolders::applicationSupport()) {
        const QString path = folder + "/applications/"_L1 + name;
        if (QFileInfo(path).isFile())
            return path;
    }
    return {};
}

bool showCharacter(const QString &preferredId, quint32 codePoint)
{
    const QStringList ids = preferredId.isEmpty()
        ? QStringList {u"gucharmap"_s, u"org.gnome.Characters"_s, u"org.kde.kcharselect"_s}
        : QStringList {preferredId};
    for (const QString &id : ids) {
        QStringList command = commandOf(desktopFile(id));
        if (command.isEmpty())
            continue;
        // The character map goes to the first character of its argument; the others take none.
        if (id.startsWith("gucharmap"_L1))
            command << QString::fromUcs4(reinterpret_cast<const char32_t *>(&codePoint), 1);
        const QString program = command.takeFirst();
        return QProcess::startDetached(program, command);
    }
    return false;
}

} // namespace runebook::DesktopApplication
