// Three versions of a glyph data file, 2 % of the records changed on each side: `runebook --merge`, start and
// end of the process included, against `git merge-file` of the same files; the memory that it takes; and from
// the start of the process until the first conflict is seen in the window.
#include "benchmarks/BenchmarkSupport.h"

#include <QFile>
#include <QFileInfo>
#include <array>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kEvery = 50; // records between two changed ones

/// Changes a field of each fiftieth record from \a first on, of every hundredth of these on both sides, which
/// conflicts; each tenth is left out or gets a neighbour instead.
QByteArray edited(const QByteArray &base, int first, const QByteArray &word)
{
    QByteArray text;
    text.reserve(base.size() + base.size() / 100);
    int record = 0;
    for (qsizetype begin = 0; begin < base.size();) {
        const qsizetype end = base.indexOf('\n', begin) + 1;
        QByteArray line = base.mid(begin, end - begin);
        begin = end;
        const bool isRecord = line.startsWith("\t<glyph ");
        const int place = isRecord ? record++ : 0;
        const int change = place / kEvery;
        const bool isConflict = place % (kEvery * 100) == 0;
        if (isRecord && (isConflict || place % kEvery == first)) {
            if (!isConflict && change % 20 == 10)
                continue;
            if (!isConflict && change % 20 == 0)
                text += QByteArray(line).replace(" name=\"", " name=\"" + word);
            else
                line.replace(" category=\"", " category=\"" + word);
        }
        text += line;
    }
    return text;
}

/// Base, ours, theirs; made on first use.
std::array<QString, 3> versions(int records)
{
    const QString base = corpusFile(records, u"xml"_s);
    const QString folder = QFileInfo(base).path();
    std::array<QString, 3> paths {base, folder + u"/ours-%1.xml"_s.arg(records),
                                  folder + u"/theirs-%1.xml"_s.arg(records)};
    QFile file(base);
    if (QFile::exists(paths[2]) || !file.open(QIODevice::ReadOnly))
        return paths;
    const QByteArray text = file.readAll();
    for (const int side : {1, 2}) {
        QFile version(paths[std::size_t(side)]);
        if (version.open(QIODevice::WriteOnly))
            version.write(edited(text, side == 1 ? 10 : 30, side == 1 ? "Ours" : "Theirs"));
    }
    return paths;
}

/// Runs a program to its end; its peak memory in bytes, or -1 for a status beyond \a most.
qint64 peakOf(const QStringList &command, int most)
{
    std::vector<QByteArray> words;
    for (const QString &word : command)
        words.push_back(word.toLocal8Bit());
    std::vector<char *> arguments;
    for (QByteArray &word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", 1, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", 1, 0);
    pid_t process = 0;
    const int failure =
        posix_spawnp(&process, arguments.front(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    rusage used {};
    if (failure != 0 || wait4(process, &status, 0, &used) != process || !WIFEXITED(status)
        || WEXITSTATUS(status) > most)
        return -1;
    return qint64(used.ru_maxrss) * 1024;
}

qint64 mergeHere(int records)
{
    const auto [base, ours, theirs] = versions(records);
    return peakOf({QStringLiteral(RUNEBOOK_BUILD_DIR "/bin/runebook"), u"--merge"_s, base, ours, theirs,
                   u"--output"_s, scratchFile(u"merged.xml"_s)},
                  1);
}

void merge(benchmark::State &state, int records)
{
    versions(records);
    for ([[maybe_unused]] auto _ : state) {
        state.SetIterationTime(secondsFor([&] {
            if (mergeHere(records) < 0)
                state.SkipWithError("the files were not merged");
        }));
    }
}

void gitMergeFile(benchmark::State &state, int records)
{
    constexpr int kMostConflicts = 127; // that its status tells
    const std::array<QString, 3> files = versions(records);
    const QString merged = scratchFile(u"merged-by-git.xml"_s);
    for ([[maybe_unused]] auto _ : state) {
        QFile::remove(merged);
        QFile::copy(files[1], merged); // which it writes over
        state.SetIterationTime(secondsFor([&] {
            if (peakOf({u"git"_s, u"merge-file"_s, u"-q"_s, merged, files[0], files[2]}, kMostConflicts) < 0)
                state.SkipWithError("git did not merge the files");
        }));
    }
}

void mergeMemory(benchmark::State &state, int records)
{
    for ([[maybe_unused]] auto _ : state) {
        qint64 bytes = -1;
        state.SetIterationTime(secondsFor([&] { bytes = mergeHere(records); }));
        if (bytes < 0)
            state.SkipWithError("the files were not merged");
        state.counters["bytes"] = double(bytes);
    }
}

void firstConflict(benchmark::State &state, int records)
{
    const auto [base, ours, theirs] = versions(records);
    qputenv("RUNEBOOK_QUIT_AFTER_START", "1");
    const QString program = QStringLiteral(RUNEBOOK_BUILD_DIR "/bin/runebook");
    const QStringList arguments {u"--mergetool"_s, base, ours, theirs, scratchFile(u"resolved.xml"_s)};
    if (!runProgram(program, arguments)) { // also for the notes that the first start of all leaves
        state.SkipWithError("the window was not shown");
        return;
    }
    for ([[maybe_unused]] auto _ : state)
        state.SetIterationTime(secondsFor([&] { benchmark::DoNotOptimize(runProgram(program, arguments)); }));
}

void sizeOfFiles(benchmark::State &state, int records)
{
    qint64 size = 0;
    for (const QString &path : versions(records))
        size += QFileInfo(path).size();
    for ([[maybe_unused]] auto _ : state) {
        state.SetIterationTime(1e-9);
        state.counters["bytes"] = double(size);
    }
}

void registerAll()
{
    for (const int records : {150'000, 1'000'000}) {
        const QString name = u"merge/%1"_s.arg(records);
        addTimed(name, merge, records);
        addTimed(name + ":peer"_L1, gitMergeFile, records);
        const QString memory = u"merge-memory/%1"_s.arg(records);
        addTimed(memory, mergeMemory, records);
        addTimed(memory + ":peer"_L1, sizeOfFiles, records);
    }
    addTimed(u"merge-window/150000"_s, firstConflict, 150'000);
}

} // namespace

} // namespace runebook

RUNEBOOK_BENCHMARK_MAIN(runebook::registerAll)
