// The count of all problems of a document: the first look at every record, and how long an edit or a slice of
// the look holds the window.
#include "benchmarks/BenchmarkSupport.h"
#include "editing/problems/Problems.h"

#include <QHash>
#include <map>

namespace runebook {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr std::size_t kTouched = 2'000'000'000;
constexpr auto kSlice = 5ms; // as the program has them

VXDocument &documentOf(int records)
{
    static std::map<int, std::unique_ptr<VXDocument>> all;
    std::unique_ptr<VXDocument> &document = all[records];
    if (!document) {
        touchMemory(kTouched);
        document = std::make_unique<VXDocument>();
        document->readFromURLOfType(corpusFile(records, u"xml"_s), u"public.xml"_s);
    }
    return *document;
}

void firstLook(benchmark::State &state, int records)
{
    VXDocument &document = documentOf(records);
    for ([[maybe_unused]] auto _ : state) {
        state.SetIterationTime(secondsFor([&document] {
            Problems problems(document);
            while (!problems.areProblemsCounted())
                problems.runFor(0ms);
            benchmark::DoNotOptimize(problems.total());
        }));
    }
}

/// What follows: the hints.
void hints(benchmark::State &state, int records)
{
    VXDocument &document = documentOf(records);
    for ([[maybe_unused]] auto _ : state) {
        Problems problems(document);
        while (!problems.areProblemsCounted())
            problems.runFor(0ms);
        state.SetIterationTime(secondsFor([&problems] { problems.finish(); }));
    }
}

/// What finding duplicate names alone takes: every name as a text, counted in a hash.
void namesInAHash(benchmark::State &state, int records)
{
    const VXDocument &document = documentOf(records);
    for ([[maybe_unused]] auto _ : state) {
        state.SetIterationTime(secondsFor([&document] {
            QHash<QString, int> counts;
            for (const InfoPtr &info : document.infos())
                ++counts[info->name()];
            benchmark::DoNotOptimize(counts);
        }));
    }
}

double longestSlice(Problems &problems)
{
    double longest = 0;
    for (bool isComplete = false; !isComplete;)
        longest = qMax(longest, secondsFor([&] { isComplete = problems.runFor(kSlice); }));
    return longest;
}

/// The longest time that a slice of the first look holds the window.
void slice(benchmark::State &state, int records)
{
    for ([[maybe_unused]] auto _ : state) {
        Problems problems(documentOf(records));
        state.SetIterationTime(longestSlice(problems));
    }
}

/// The same after an edit of every record, when no line is any more as it was read.
void sliceAfterEdit(benchmark::State &state, int records)
{
    VXDocument document;
    document.readFromURLOfType(corpusFile(records, u"xml"_s), u"public.xml"_s);
    for ([[maybe_unused]] auto _ : state) {
        Problems problems(document);
        problems.finish();
        document.undoManager()->setRegistrationEnabled(false);
        for (const InfoPtr &info : document.infos())
            info->setSortName(u"a"_s);
        document.flushChanges();
        state.SetIterationTime(longestSlice(problems));
    }
}

/// One name changed until the counts are right again.
void oneEdit(benchmark::State &state, int records)
{
    VXDocument &document = documentOf(records);
    Problems problems(document);
    problems.finish();
    const InfoPtr info = document.objectInInfosAtIndex(records / 2);
    const QString name = info->name();
    document.undoManager()->setRegistrationEnabled(false);
    bool isOther = false;
    for ([[maybe_unused]] auto _ : state) {
        isOther = !isOther;
        info->setName(isOther ? u"a name with spaces"_s : name);
        document.flushChanges();
        if (!problems.isComplete())
            state.SkipWithError("not followed at once");
    }
    info->setName(name);
    document.flushChanges();
    document.undoManager()->setRegistrationEnabled(true);
}

void registerAll()
{
    for (const int records : {150'000, 1'000'000}) {
        addTimed(u"problems/%1"_s.arg(records), firstLook, records);
        addTimed(u"problems-hints/%1"_s.arg(records), hints, records);
        addTimed(u"problems/%1:peer"_s.arg(records), namesInAHash, records);
        addTimed(u"problems-slice/%1"_s.arg(records), slice, records);
        addTimed(u"problems-slice-edited/%1"_s.arg(records), sliceAfterEdit, records);
        addRepeated(u"problems-edit/%1"_s.arg(records), oneEdit, records);
    }
}

} // namespace

} // namespace runebook

RUNEBOOK_BENCHMARK_MAIN(runebook::registerAll)
