#include "platform/DesktopApplication.h"

#include "platform/FileBytes.h"
#include "platform/StandardFolders.h"

#include <QFileInfo>
#include <QProcess>
#include <gio/gdesktopappinfo.h>

namespace runebook::DesktopApplication {

using namespace Qt::StringLiterals;

QStringList commandOf(const QString &desktopFile)
{
    constexpr qint64 kLargestFile = 1 << 20;
    const QByteArray content = bytesOfSmallFile(desktopFile, kLargestFile).value_or(QByteArray());
    g_autoptr(GKeyFile) file = g_key_file_new();
    const auto size = static_cast<gsize>(content.size());
    if (!g_key_file_load_from_data(file, content.constData(), size, G_KEY_FILE_NONE, nullptr))
        return {};
    g_autofree char *line =
        g_key_file_get_string(file, G_KEY_FILE_DESKTOP_GROUP, G_KEY_FILE_DESKTOP_KEY_EXEC, nullptr);
    g_auto(GStrv) words = nullptr;
    if (!line || !g_shell_parse_argv(line, nullptr, &words, nullptr))
        return {};
    QStringList command;
    for (char **each = words; *each; ++each) {
        const QString word = QString::fromUtf8(*each);
        const bool isPlace = word.size() == 2 && word[0] == u'%' && word[1] != u'%';
        if (!isPlace)
            command << QString(word).replace("%%"_L1, "%"_L1);
    }
    return command;
}

QString defaultFor(const QString &type)
{
    g_autoptr(GAppInfo) application = g_app_info_get_default_for_type(type.toUtf8().constData(), FALSE);
    if (!G_IS_DESKTOP_APP_INFO(application))
        return {};
    return QString::fromUtf8(g_desktop_app_info_get_filename(G_DESKTOP_APP_INFO(application)));
}

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
