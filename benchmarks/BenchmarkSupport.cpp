#include "benchmarks/BenchmarkSupport.h"

#include <QDir>
#include <QProcess>
#include <QStringList>
#include <cstring>
#include <sys/mman.h>

namespace runebook {

using namespace Qt::StringLiterals;

void useBenchmarkHome(const QString &path)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("XDG_DATA_HOME", path.toLocal8Bit());
    qputenv("RUNEBOOK_DEFAULTS", (path + "/defaults.ini"_L1).toLocal8Bit());
}

QString corpusFile(int records, const QString &extension)
{
    return u"%1/glyphs-%2.%3"_s.arg(QStringLiteral(RUNEBOOK_CORPUS)).arg(records).arg(extension);
}

QString scratchFile(const QString &name)
{
    const QString folder = QStringLiteral(RUNEBOOK_CORPUS) + "/scratch"_L1;
    QDir().mkpath(folder);
    return folder + u'/' + name;
}

void touchMemory(qint64 bytes)
{
    const auto size = static_cast<std::size_t>(bytes);
    void *memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return;
    std::memset(memory, 1, size);
    ::munmap(memory, size);
}

bool runProgram(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    return process.waitForFinished(-1) && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0;
}

} // namespace runebook
