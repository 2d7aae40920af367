// Saving a document over its file, synced, against a plain synced copy of the same bytes; as a table, against
// a table tool that writes the same one.
#include "benchmarks/BenchmarkSupport.h"
#include "document/FileFormats.h"
#include "document/VXDocument.h"

#include <QFile>
#include <map>
#include <unistd.h>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

enum class Edited { None, Tenth };

/// A document as it is when somebody saves it: read from a file and saved there before.
struct Opened {
    Opened(int records, Edited edited)
    {
        document.readFromURLOfType(corpusFile(records, u"xml"_s), u"public.xml"_s);
        path = scratchFile(u"saved-%1.xml"_s.arg(records));
        copyPath = scratchFile(u"copied-%1.xml"_s.arg(records));
        if (edited == Edited::Tenth) {
            for (qsizetype i = 0; i < document.countOfInfos(); i += 10)
                document.objectInInfosAtIndex(i)->setSortName(u"sorted%1"_s.arg(i));
            document.flushChanges();
        }
        isReady = save() && runProgram(u"cp"_s, {path, copyPath});
    }
    bool save() { return document.writeToURLOfType(path, u"public.xml"_s); }

    VXDocument document;
    QString path;
    QString copyPath;
    bool isReady = false;
};

Opened &opened(int records, Edited edited)
{
    static std::map<std::pair<int, Edited>, std::unique_ptr<Opened>> all;
    std::unique_ptr<Opened> &one = all[{records, edited}];
    if (!one)
        one = std::make_unique<Opened>(records, edited);
    return *one;
}

void saveDocument(benchmark::State &state, int records, Edited edited)
{
    Opened &saved = opened(records, edited);
    for ([[maybe_unused]] auto _ : state) {
        ::sync();
        bool wasSaved = false;
        state.SetIterationTime(secondsFor([&] { wasSaved = saved.save(); }));
        if (!wasSaved || !saved.isReady)
            state.SkipWithError("the document was not saved");
    }
}

void copySynced(benchmark::State &state, int records, Edited edited)
{
    const Opened &saved = opened(records, edited);
    const QStringList arguments {u"if="_s + saved.path, u"of="_s + saved.copyPath, u"bs=1M"_s,
                                 u"conv=fsync"_s, u"status=none"_s};
    for ([[maybe_unused]] auto _ : state) {
        ::sync();
        bool wasCopied = false;
        state.SetIterationTime(secondsFor([&] { wasCopied = runProgram(u"dd"_s, arguments); }));
        if (!wasCopied || !saved.isReady)
            state.SkipWithError("dd did not copy the file");
    }
}

/// The document with a column for each field, over the table that is there, synced.
void exportTable(benchmark::State &state, int records)
{
    Opened &exported = opened(records, Edited::None);
    const QString path = scratchFile(u"exported-%1.csv"_s.arg(records));
    const auto save = [&] { return exported.document.writeToURLOfType(path, kCommaTableType); };
    exported.isReady &= save();
    for ([[maybe_unused]] auto _ : state) {
        ::sync();
        bool wasSaved = false;
        state.SetIterationTime(secondsFor([&] { wasSaved = save(); }));
        if (!wasSaved || !exported.isReady)
            state.SkipWithError("the table was not written");
    }
}

void exportWithMiller(benchmark::State &state, int records)
{
    const QString path = scratchFile(u"exported-%1.csv"_s.arg(records));
    if (!opened(records, Edited::None).document.writeToURLOfType(path, kCommaTableType))
        state.SkipWithError("there is no table");
    for ([[maybe_unused]] auto _ : state) {
        bool wasWritten = false;
        const auto run = [&] { return runProgram(u"mlr"_s, {u"--csv"_s, u"cat"_s, path}); };
        state.SetIterationTime(secondsFor([&] { wasWritten = run(); }));
        if (!wasWritten)
            state.SkipWithError("mlr did not write the table");
    }
}

void registerAll()
{
    addTimed(u"export-table/150000"_s, exportTable, 150'000);
    addTimed(u"export-table/150000:peer"_s, exportWithMiller, 150'000);
    for (const int records : {150'000, 1'000'000}) {
        const QString edited = u"save-edited/%1"_s.arg(records);
        addTimed(edited, saveDocument, records, Edited::Tenth);
        addTimed(edited + ":peer"_L1, copySynced, records, Edited::Tenth);
        const QString unchanged = u"save/%1"_s.arg(records);
        addTimed(unchanged, saveDocument, records, Edited::None);
        addTimed(unchanged + ":peer"_L1, copySynced, records, Edited::None);
    }
}

} // namespace

} // namespace runebook

RUNEBOOK_BENCHMARK_MAIN(runebook::registerAll)
