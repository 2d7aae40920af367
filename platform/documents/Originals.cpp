#include "platform/documents/Originals.h"

#include "platform/CheckedFile.h"
#include "platform/StandardFolders.h"
#include "platform/TurningWindows.h"
#include "platform/documents/FileState.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <fcntl.h>

namespace runebook::Originals {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Originals)
};

Error copyError(const QString &path, const QString &reason)
{
    return {u"SaveError"_s, 4, Texts::tr("“%1” was not saved.").arg(path),
            Texts::tr("Saving would leave out something that the file has, and no copy of it could be kept. ")
                + reason,
            Texts::tr("The file was not touched. Save under another name, or make room.")};
}

/// "data 2026-05-04 10.20.30.xml", with a number behind the time where that is taken.
QString freeName(const QString &path)
{
    const QFileInfo info(path);
    const QString stem = info.completeBaseName().left(80) + u' '
        + QDateTime::currentDateTime().toString(u"yyyy-MM-dd HH.mm.ss"_s);
    const QString suffix = info.suffix().isEmpty() ? QString() : u'.' + info.suffix().left(20);
    QString name = stem + suffix;
    for (int number = 2; QFileInfo::exists(folder() + u'/' + name); ++number)
        name = stem + u'-' + QString::number(number) + suffix;
    return folder() + u'/' + name;
}

} // namespace

QString folder()
{
    const QString own = StandardFolders::userData();
    return !own.isEmpty() && QDir(own).mkpath(u"Originals"_s) ? own + "/Originals"_L1 : QString();
}

QString keepCopy(const QString &path, Error *error)
{
    if (folder().isEmpty()) {
        fail(error, copyError(path, Texts::tr("There is no folder for it.")));
        return {};
    }
    CheckedFile source(path, O_RDONLY);
    CheckedFile copy(freeName(path), O_RDWR | O_CREAT | O_EXCL, 0600);
    bool isCopied = source.isOpen() && copy.isOpen();
    if (isCopied)
        doApart(FileState::of(source.descriptor()).size,
                [&] { isCopied = copy.writeContentOf(source) && copy.settle() && copy.close(); });
    if (isCopied) {
        prune();
        return copy.path();
    }
    fail(error, copyError(path, source.failure() ? source.failureText() : copy.failureText()));
    if (copy.failedStep() != CheckedFile::Step::Open)
        QFile::remove(copy.path());
    return {};
}

void prune(qsizetype files, qint64 bytes)
{
    const QString place = folder();
    if (place.isEmpty())
        return;
    const QFileInfoList copies =
        QDir(place).entryInfoList(QDir::Files | QDir::Hidden, QDir::Time); // newest first
    qint64 total = 0;
    for (qsizetype i = 0; i < copies.size(); ++i) {
        total += copies.at(i).size();
        if (i > 0 && (i >= files || total > bytes))
            QFile::remove(copies.at(i).filePath());
    }
}

} // namespace runebook::Originals
