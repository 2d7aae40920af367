// Find and replace over all records of a document: the edit, its undo, and what the undo step keeps.
#include "benchmarks/BenchmarkSupport.h"
#include "document/VXDocument.h"
#include "editing/replace/FindReplace.h"

#include <malloc.h>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kRecords = 150'000;
constexpr qsizetype kShown = 100;

enum class Part { Command, Edit, Undo }; // the command counts spoilt names before it edits
enum class Field { Descriptions, Names }; // all records change; four of five do, and an index follows

struct Prepared {
    Prepared()
    {
        document.readFromURLOfType(corpusFile(kRecords, u"xml"_s), u"public.xml"_s);
        document.infoForName(u"A"_s); // names are looked up while a document is edited
    }
    VXDocument document;
    const FindReplace descriptions {u"E"_s, u"e"_s, FindReplace::Desc};
    const FindReplace names {u"u"_s, u"v"_s, FindReplace::Name};
    const FindReplace &replacement(Field field) const { return field == Field::Names ? names : descriptions; }
};

Prepared &prepared()
{
    static Prepared one;
    return one;
}

/// The edit as one undo step, the notice to observers included.
ReplaceSummary replaceAll(Prepared &on, Field field)
{
    ReplaceSummary summary;
    {
        const UndoGroup group(on.document.undoManager());
        summary = on.replacement(field).apply(on.document.infos());
    }
    on.document.flushChanges();
    return summary;
}

void undo(Prepared &on)
{
    on.document.undoManager()->undo();
    on.document.flushChanges();
}

void forget(Prepared &on)
{
    on.document.undoManager()->removeAllActions();
    on.document.setInfos({});
    on.document.readFromURLOfType(corpusFile(kRecords, u"xml"_s), u"public.xml"_s);
    on.document.infoForName(u"A"_s);
}

void runReplace(benchmark::State &state, Field field, Part measured)
{
    Prepared &on = prepared();
    for ([[maybe_unused]] auto _ : state) {
        forget(on);
        touchMemory(100'000'000);
        const InfoList &infos = on.document.infos();
        const double counting =
            secondsFor([&] { benchmark::DoNotOptimize(on.replacement(field).nameProblems(infos, infos)); });
        const double edit = secondsFor([&] {
            if (replaceAll(on, field).records < kRecords / 4 * 3)
                state.SkipWithError("hardly anything was replaced");
        });
        const double taken = secondsFor([&] { undo(on); });
        state.SetIterationTime(measured == Part::Command    ? counting + edit
                                   : measured == Part::Edit ? edit
                                                            : taken);
    }
}

/// The preview after a keystroke, problems of names included.
void runPreview(benchmark::State &state)
{
    Prepared &on = prepared();
    forget(on);
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(on.names.preview(on.document.infos(), kShown));
        benchmark::DoNotOptimize(on.names.nameProblems(on.document.infos(), on.document.infos()));
    }
}

void runSed(benchmark::State &state)
{
    for ([[maybe_unused]] auto _ : state) {
        state.SetIterationTime(secondsFor([&] {
            if (!runProgram(u"sed"_s, {u"s/a/b/g"_s, corpusFile(kRecords, u"xml"_s)}))
                state.SkipWithError("sed failed");
        }));
    }
}

qint64 heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<qint64>(info.uordblks + info.hblkhd);
}

/// The memory that the edit leaves occupied, new texts and old values, against one byte a changed field.
void runMemory(benchmark::State &state, bool isPeer)
{
    Prepared &on = prepared();
    for ([[maybe_unused]] auto _ : state) {
        forget(on);
        const qint64 before = heapBytes();
        const ReplaceSummary summary = replaceAll(on, Field::Descriptions);
        state.counters["bytes"] = static_cast<double>(isPeer ? summary.records : heapBytes() - before);
        state.SetIterationTime(1);
    }
}

void registerAll()
{
    const QString size = QString::number(kRecords);
    for (const Field field : {Field::Descriptions, Field::Names}) {
        const QString names = field == Field::Names ? u"-names/"_s + size : u'/' + size;
        addTimed("replace"_L1 + names, runReplace, field, Part::Command);
        addTimed("replace"_L1 + names + ":peer"_L1, runSed);
        addTimed("replace-undo"_L1 + names, runReplace, field, Part::Undo);
        addTimed("replace-undo"_L1 + names + ":peer"_L1, runReplace, field, Part::Edit);
    }
    addTimed("replace-memory/"_L1 + size, runMemory, false);
    addTimed("replace-memory/"_L1 + size + ":peer"_L1, runMemory, true);
    addRepeated("replace-preview/"_L1 + size, runPreview);
}

} // namespace

} // namespace runebook

RUNEBOOK_BENCHMARK_MAIN(runebook::registerAll)
