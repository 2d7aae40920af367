#include "scripting/panel/ScriptText.h"

#include "platform/documents/FileSaver.h"
#include "scripting/menu/ScriptFile.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

namespace runebook::ScriptText {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(ScriptText)
};

std::optional<QString> refuse(const QString &path, const QString &reason, Error *error)
{
    if (error)
        *error = {u"ScriptError"_s,
                  1,
                  Texts::tr("“%1” was not opened.").arg(QFileInfo(path).fileName()),
                  reason,
                  {}};
    return std::nullopt;
}

} // namespace

std::optional<QString> read(const QString &path, Error *error)
{
    const QFileInfo info(path);
    if (!info.exists())
        return refuse(path, Texts::tr("There is no such file."), error);
    if (!info.isFile())
        return refuse(path, Texts::tr("It is no plain file."), error);
    if (info.size() > kLargest)
        return refuse(path, Texts::tr("It is larger than 4 MB."), error);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return refuse(path, file.errorString(), error);
    const QByteArray bytes = file.read(kLargest);
    if (!bytes.isValidUtf8())
        return refuse(path, Texts::tr("It is not UTF-8."), error);
    return QString::fromUtf8(bytes);
}

bool write(const QString &path, const QString &text, Error *error)
{
    const QByteArray bytes = text.toUtf8();
    return FileSaver::save(
        path,
        [&bytes](const BlockSink &sink, Error *) {
            return sink({bytes.constData(), std::size_t(bytes.size())});
        },
        error);
}

QString withMenuTitle(const QString &code, const QString &title)
{
    if (ScriptFile::menuTitle(code + u'\n'))
        return code;
    return u"# MenuTitle: %1\n"_s.arg(title.simplified()) + code;
}

QString fileNameFor(const QString &title)
{
    QString name;
    for (const QChar character : title.simplified()) {
        if (character.isPrint() && !u"/\\:*?\"<>|"_s.contains(character))
            name += character;
    }
    while (name.startsWith(u'.') || name.startsWith(u'_')) // which the menu leaves out
        name.remove(0, 1);
    constexpr qsizetype kLongest = 80;
    name = name.left(kLongest).trimmed();
    return (name.isEmpty() ? Texts::tr("Script") : name) + ".py"_L1;
}

} // namespace runebook::ScriptText
