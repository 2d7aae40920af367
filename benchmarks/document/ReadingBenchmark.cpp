// From a file to a document: glyph data against an XML library, tables against a table tool.
#include "benchmarks/BenchmarkSupport.h"
#include "document/VXDocument.h"

#include <QFileInfo>
#include <pugixml.hpp>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

// More than either side needs for a file.
constexpr qint64 kMemoryPerByte = 5;

void readDocument(benchmark::State &state, int records, const QString &extension, const QString &type)
{
    const QString path = corpusFile(records, extension);
    for ([[maybe_unused]] auto _ : state) {
        touchMemory(QFileInfo(path).size() * kMemoryPerByte);
        // Both sides give their memory back outside the measured time, as a program does that shows a file.
        VXDocument document;
        bool wasRead = false;
        state.SetIterationTime(secondsFor([&] { wasRead = document.readFromURLOfType(path, type); }));
        if (!wasRead || document.countOfInfos() != records)
            state.SkipWithError("the document was not read");
    }
}

/// Looks at every attribute of every element once; the sum keeps the compiler from leaving that out.
std::size_t visit(const pugi::xml_node &parent)
{
    std::size_t sum = 0;
    for (const pugi::xml_node &node : parent) {
        for (const pugi::xml_attribute &attribute : node.attributes())
            sum += static_cast<unsigned char>(*attribute.name())
                + static_cast<unsigned char>(*attribute.value());
        sum += visit(node);
    }
    return sum;
}

void readWithPugixml(benchmark::State &state, int records)
{
    const QByteArray path = corpusFile(records, u"xml"_s).toLocal8Bit();
    for ([[maybe_unused]] auto _ : state) {
        touchMemory(QFileInfo(QString::fromLocal8Bit(path)).size() * kMemoryPerByte);
        pugi::xml_document document;
        state.SetIterationTime(secondsFor([&] {
            if (!document.load_file(path.constData()))
                state.SkipWithError("pugixml did not read the file");
            benchmark::DoNotOptimize(visit(document));
        }));
    }
}

void readWithMiller(benchmark::State &state, int records)
{
    const QString path = corpusFile(records, u"tsv"_s);
    for ([[maybe_unused]] auto _ : state) {
        // Every field of every line is parsed, and nothing has to be written.
        const auto run = [&] { return runProgram(u"mlr"_s, {u"--tsv"_s, u"filter"_s, u"false"_s, path}); };
        state.SetIterationTime(secondsFor([&] {
            if (!run())
                state.SkipWithError("mlr did not read the table");
        }));
    }
}

void registerAll()
{
    for (const int records : {150'000, 1'000'000}) {
        const QString read = u"read/%1"_s.arg(records);
        addTimed(read, readDocument, records, u"xml"_s, u"public.xml"_s);
        addTimed(read + ":peer"_L1, readWithPugixml, records);
        const QString table = u"read-table/%1"_s.arg(records);
        addTimed(table, readDocument, records, u"tsv"_s, u"public.plain-text"_s);
        addTimed(table + ":peer"_L1, readWithMiller, records);
    }
}

} // namespace

} // namespace runebook

RUNEBOOK_BENCHMARK_MAIN(runebook::registerAll)
