// How long autosaving a document keeps the user waiting at a stretch, and how long it takes in all.
#include "benchmarks/BenchmarkSupport.h"
#include "document/VXDocument.h"
#include "platform/documents/Autosaver.h"

#include <QCoreApplication>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Times {
    double longest = 0; ///< that the main thread was held at a stretch, seconds
    double total = 0; ///< until the autosaved file was there, seconds
};

/// Edits one record and autosaves, handling events one round at a time as the program does.
Times autosaved(VXDocument &document)
{
    static int edits = 0;
    document.objectInInfosAtIndex(0)->setName(u"edited%1"_s.arg(++edits));
    QCoreApplication::processEvents();
    Times times;
    bool isFinished = false;
    bool isSaved = false;
    QObject context;
    QObject::connect(&document.autosaver(), &Autosaver::finished, &context, [&](bool saved) {
        isFinished = true;
        isSaved = saved;
    });
    times.total = secondsFor([&] {
        times.longest = secondsFor([&] { document.autosaver().start(); });
        while (!isFinished)
            times.longest = std::max(times.longest, secondsFor([] { QCoreApplication::processEvents(); }));
    });
    return isSaved ? times : Times();
}

void autosave(benchmark::State &state, int records, double Times::*time)
{
    VXDocument document;
    document.readFromURLOfType(corpusFile(records, u"xml"_s), u"public.xml"_s);
    autosaved(document);
    for ([[maybe_unused]] auto _ : state) {
        const Times times = autosaved(document);
        state.SetIterationTime(times.*time);
        if (times.total == 0)
            state.SkipWithError("the document was not autosaved");
    }
}

void registerAll()
{
    for (const int records : {35'000, 150'000, 1'000'000}) {
        addTimed(u"autosave-hold/%1"_s.arg(records), autosave, records, &Times::longest);
        addTimed(u"autosave-total/%1"_s.arg(records), autosave, records, &Times::total);
    }
}

} // namespace

} // namespace runebook

RUNEBOOK_BENCHMARK_MAIN(runebook::registerAll)
