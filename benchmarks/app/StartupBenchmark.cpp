#include "benchmarks/BenchmarkSupport.h"

#include <QFile>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

const QString kPrograms = QStringLiteral(RUNEBOOK_BUILD_DIR);

/// From the start of the process to its end, which comes as soon as the window is painted and, where there is
/// \a file, as soon as Python is loaded, the Scripts menu filled and the file shown.
void start(benchmark::State &state, const QString &file)
{
    const QString program =
        file.isEmpty() ? kPrograms + u"/benchmarks/bare_window"_s : kPrograms + u"/bin/runebook"_s;
    const QStringList arguments = file.isEmpty() ? QStringList() : QStringList {u"--new-instance"_s, file};
    if (!file.isEmpty() && !QFile::exists(file)) {
        state.SkipWithError("no such file");
        return;
    }
    qputenv("RUNEBOOK_QUIT_AFTER_START", "1");
    const auto once = [&] { return runProgram(program, arguments); };
    if (!once()) { // also for the notes that the first start of all leaves
        state.SkipWithError("the program failed");
        return;
    }
    for (auto _ : state)
        state.SetIterationTime(secondsFor([&] { benchmark::DoNotOptimize(once()); }));
}

void registerAll()
{
    const QString sample = QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/sample.xml");
    constexpr int kRecords = 35'000;
    addTimed(u"start/2395"_s, start, sample);
    addTimed(u"start/2395:peer"_s, start, QString());
    addTimed(u"start/35000"_s, start, corpusFile(kRecords, u"xml"_s));
    addTimed(u"start/35000:peer"_s, start, QString());
}

} // namespace

RUNEBOOK_BENCHMARK_MAIN(registerAll)
