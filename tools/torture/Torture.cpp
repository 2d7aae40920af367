#include "tools/torture/Torture.h"

#include "platform/documents/FileSaver.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <csignal>
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace torture {

using namespace Qt::StringLiterals;
using namespace runebook;

QString Bench::freshFolder()
{
    const QString folder = m_folder + u'/' + QString::number(++m_count);
    for (const char *sub : {"work", "data"})
        QDir().mkpath(folder + u'/' + QString::fromLatin1(sub));
    qputenv("XDG_DATA_HOME", QFile::encodeName(folder + "/data"_L1));
    return folder + "/work"_L1;
}

int inChildFor(int microseconds, const std::function<int()> &work)
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(work());
    if (microseconds >= 0) {
        ::usleep(static_cast<useconds_t>(microseconds));
        ::kill(child, SIGKILL);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) { }
    return status;
}

int inChild(const std::function<int()> &work)
{
    return inChildFor(-1, work);
}

namespace {

template <typename Function> Function *inLibrary(const char *name)
{
    auto *function = reinterpret_cast<Function *>(::dlsym(RTLD_DEFAULT, name));
    if (!function)
        qFatal("the library of faults is not loaded");
    return function;
}

} // namespace

void arm(const QString &folder, const Fault &fault)
{
    static const auto library = inLibrary<decltype(torture_arm)>("torture_arm");
    library(QFile::encodeName(folder).constData(), &fault);
}

QByteArray disarm()
{
    static const auto library = inLibrary<decltype(torture_disarm)>("torture_disarm");
    return library();
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly) ? file.readAll()
                                                                      : QByteArray("(unreadable)");
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot prepare %s", qPrintable(path));
}

QStringList rescueFiles(const QString &path)
{
    QStringList found;
    for (const QString &folder :
         {QFileInfo(path).absolutePath(), qEnvironmentVariable("XDG_DATA_HOME") + "/runebook/Rescue"_L1}) {
        const QDir files(folder);
        for (const QString &name : files.entryList({u"*.runebook-rescue*"_s}, QDir::Files | QDir::Hidden)) {
            if (!name.endsWith(".part"_L1))
                found << files.filePath(name);
        }
    }
    return found;
}

QByteArray textOf(int generation, int size)
{
    const QByteArray line = "generation " + QByteArray::number(generation) + "\n";
    return line.repeated(size / int(line.size()) + 1);
}

bool save(const QString &path, const QByteArray &bytes, QString *error)
{
    Error reason;
    const bool isSaved = FileSaver::save(
        path,
        [&bytes](const BlockSink &sink, Error *) {
            constexpr qsizetype kBlock = 64 * 1024;
            for (qsizetype begin = 0; begin < bytes.size(); begin += kBlock) {
                const QByteArrayView block =
                    QByteArrayView(bytes).sliced(begin).first(qMin(kBlock, bytes.size() - begin));
                if (!sink({block.data(), std::size_t(block.size())}))
                    return false;
            }
            return true;
        },
        &reason);
    *error = reason.description + u'\n' + reason.failureReason + u'\n' + reason.recoverySuggestion;
    return isSaved;
}

void judgeSave(Figures &figures, const QString &what, const QString &path, const QByteArray &old,
               const QByteArray &fresh, bool isAcknowledged)
{
    ++figures.runs;
    const QByteArray now = QFileInfo::exists(path) ? contentOf(path) : QByteArray();
    if (now == fresh) {
        ++figures.renewed;
        return;
    }
    if (isAcknowledged)
        figures.violations << what + ": the save said that it went well, but the file is another"_L1;
    if (now == old) {
        ++figures.kept;
        return;
    }
    for (const QString &rescue : rescueFiles(path)) {
        if (contentOf(rescue) == fresh) {
            ++figures.rescued;
            return;
        }
    }
    figures.violations << what + ": neither the old nor the new text is whole"_L1;
}

} // namespace torture
