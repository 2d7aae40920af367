#include "scripting/python/PythonProbe.h"

#include "platform/FileBytes.h"
#include "platform/StandardFolders.h"
#include "platform/documents/FileSaver.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace runebook::PythonProbe {

using namespace Qt::StringLiterals;

namespace {

int timeLimitMs = 20'000;
constexpr qsizetype kKeptOutput = 4096;

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(PythonProbe)
};

QString helper()
{
    return QDir::cleanPath(StandardFolders::programData()
                           + "/../../libexec/runebook/runebook-python-probe"_L1);
}

QString stamp(const QString &path)
{
    const QFileInfo file(path);
    return u"%1 %2 %3"_s.arg(path).arg(file.size()).arg(file.lastModified().toMSecsSinceEpoch());
}

/// What an answer depends on: the library and a part of the standard library without which nothing starts.
QString identity(const QString &library, const QString &prefix)
{
    QString text = stamp(library);
    for (const QString &name : QDir(prefix + "/lib"_L1).entryList({u"python3*"_s}, QDir::Dirs)) {
        const QString modules = prefix + "/lib/"_L1 + name;
        text += u'\n' + stamp(modules) + u'\n' + stamp(modules + "/encodings/__init__.py"_L1);
    }
    return text;
}

QString noteFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation)
        + "/runebook/python-probe"_L1;
}

bool isKnown(const QString &text)
{
    constexpr qint64 kLongest = 1 << 16;
    return bytesOfSmallFile(noteFile(), kLongest, Links::Refuse) == text.toUtf8();
}

void remember(const QString &text)
{
    // Without the note the next start asks again; nothing else depends on it.
    QDir().mkpath(QFileInfo(noteFile()).path());
    const std::string utf8 = text.toStdString();
    static_cast<void>(
        FileSaver::replace(noteFile(), [&](const BlockSink &sink, Error *) { return sink(utf8); }));
}

/// Reads until the other end closes or time is up; false when it is.
bool readAll(int fd, QByteArray &output)
{
    const QDeadlineTimer deadline(timeLimitMs);
    char buffer[4096];
    while (true) {
        pollfd waiting {fd, POLLIN, 0};
        const int ready = ::poll(&waiting, 1, static_cast<int>(deadline.remainingTime()));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0)
            return false;
        const ssize_t count = ::read(fd, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return true;
        output = (output + QByteArray(buffer, count)).right(kKeptOutput);
    }
}

int waitFor(pid_t process)
{
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) { }
    return status;
}

/// Runs the helper, its error output in \a output; the status as waitpid tells it, or -1 when it did not run.
int run(const QString &library, const QString &prefix, QByteArray &output)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return -1;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, ends[1], 2);
    QByteArray words[] = {QFile::encodeName(helper()), QFile::encodeName(library), QFile::encodeName(prefix)};
    char *arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
    pid_t process = 0;
    const int failure = ::posix_spawnp(&process, arguments[0], &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    int status = -1;
    if (failure == 0) {
        if (!readAll(ends[0], output))
            ::kill(process, SIGKILL);
        status = waitFor(process);
    } else {
        output = std::strerror(failure);
    }
    ::close(ends[0]);
    return status;
}

} // namespace

void setTimeLimit(int milliseconds)
{
    timeLimitMs = milliseconds;
}

bool comesUp(const QString &library, const QString &prefix, Error *error)
{
    const QString text = identity(library, prefix);
    if (isKnown(text))
        return true;
    QByteArray output;
    if (run(library, prefix, output) == 0) {
        remember(text);
        return true;
    }
    return fail(error,
                {u"PythonError"_s, 1, Texts::tr("The Python at “%1” cannot be started.").arg(library),
                 QString::fromUtf8(output).trimmed().section(u'\n', -1), Texts::tr("Choose another one.")});
}

} // namespace runebook::PythonProbe
