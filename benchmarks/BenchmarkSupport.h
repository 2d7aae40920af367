#pragma once

#include <QGuiApplication>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <chrono>

// A benchmark is named "what/size", its peer on the same data "what/size:peer"; tools/bench-table runs the
// two in turns and compares their medians. A counter "bytes" stands in for the time where memory is compared.

/// The main function of a benchmark program; \a registerAll adds its benchmarks. Defaults and the user's
/// folders lead to a folder that goes at the end.
#define RUNEBOOK_BENCHMARK_MAIN(registerAll)                                                                 \
    int main(int argc, char *argv[])                                                                         \
    {                                                                                                        \
        const QTemporaryDir home;                                                                            \
        runebook::useBenchmarkHome(home.path());                                                             \
        const QGuiApplication app(argc, argv);                                                               \
        registerAll();                                                                                       \
        benchmark::Initialize(&argc, argv);                                                                  \
        if (benchmark::ReportUnrecognizedArguments(argc, argv))                                              \
            return 2;                                                                                        \
        benchmark::RunSpecifiedBenchmarks();                                                                 \
        return 0;                                                                                            \
    }

namespace runebook {

/// Offscreen, and with folders of its own for everything that the program keeps of the user's.
void useBenchmarkHome(const QString &path);

/// A file of the corpus, such as "glyphs-150000.xml"; tools/bench makes them.
QString corpusFile(int records, const QString &extension);
/// A file for a benchmark to write, on the disk that holds the corpus.
QString scratchFile(const QString &name);

/// Writes to so much fresh memory once and gives it back. The first touch of memory that the machine has not
/// handed out before can take many times as long as any later one; no benchmark shall pay for that.
void touchMemory(qint64 bytes);

/// Runs another program, its output thrown away, and waits for it; false when it fails.
[[nodiscard]] bool runProgram(const QString &program, const QStringList &arguments);

/// How long \a work takes, in seconds.
template <typename Work> double secondsFor(Work &&work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Adds a benchmark that tells its own times through SetIterationTime, one a repetition.
template <typename Function, typename... Arguments>
void addTimed(const QString &name, Function function, Arguments... arguments)
{
    benchmark::RegisterBenchmark(name.toUtf8().constData(),
                                 [=](benchmark::State &state) { function(state, arguments...); })
        ->Iterations(1)
        ->UseManualTime();
}

/// Adds a benchmark of something short, repeated as often as it takes to measure it.
template <typename Function, typename... Arguments>
void addRepeated(const QString &name, Function function, Arguments... arguments)
{
    benchmark::RegisterBenchmark(name.toUtf8().constData(),
                                 [=](benchmark::State &state) { function(state, arguments...); });
}

} // namespace runebook
