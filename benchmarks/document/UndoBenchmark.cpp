// A setter call for each record as one undo step, taken back and made again.
#include "benchmarks/BenchmarkSupport.h"
#include "document/VXDocument.h"

#include <memory>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kRecords = 150'000;

enum class Part { Edit, Undo, Redo };
enum class Field { Plain, Indexed }; // the indexes have to follow a name, not a sort name

struct Prepared {
    Prepared()
    {
        document.readFromURLOfType(corpusFile(kRecords, u"xml"_s), u"public.xml"_s);
        document.infoForName(u"A"_s);
        for (int i = 0; i < kRecords; ++i)
            texts << u"glyph%1.changed"_s.arg(i);
    }
    VXDocument document;
    QStringList texts;
};

Prepared &prepared()
{
    static Prepared one;
    return one;
}

void edit(Prepared &on, Field field)
{
    const UndoGroup group(on.document.undoManager());
    qsizetype next = 0;
    for (const InfoPtr &info : on.document.infos()) {
        const QString &text = on.texts.at(next++);
        field == Field::Plain ? info->setSortName(text) : info->setName(text);
    }
}

/// Runs through edit, undo and redo and measures one of them, each with the notice to observers at its end.
void runPart(benchmark::State &state, Field field, Part measured)
{
    Prepared &on = prepared();
    UndoManager &history = *on.document.undoManager();
    const auto step = [&](Part part, auto &&work) {
        const double seconds = secondsFor([&] {
            work();
            on.document.flushChanges();
        });
        if (part == measured)
            state.SetIterationTime(seconds);
    };
    for ([[maybe_unused]] auto _ : state) {
        touchMemory(100'000'000);
        step(Part::Edit, [&] { edit(on, field); });
        step(Part::Undo, [&] { history.undo(); });
        step(Part::Redo, [&] { history.redo(); });
        const InfoPtr last = on.document.infos().back();
        if ((field == Field::Plain ? last->sortName() : last->name()) != on.texts.back())
            state.SkipWithError("the edit was not made again");
        history.undo();
        history.removeAllActions();
        on.document.flushChanges();
    }
}

void registerAll()
{
    for (const Field field : {Field::Plain, Field::Indexed}) {
        const QString what = field == Field::Plain ? u"sort-names"_s : u"names"_s;
        for (const Part part : {Part::Undo, Part::Redo}) {
            const QString name =
                u"%1-%2/%3"_s.arg(part == Part::Undo ? u"undo"_s : u"redo"_s, what).arg(kRecords);
            addTimed(name, runPart, field, part);
            addTimed(name + ":peer"_L1, runPart, field, Part::Edit);
        }
    }
}

} // namespace

} // namespace runebook

RUNEBOOK_BENCHMARK_MAIN(runebook::registerAll)
