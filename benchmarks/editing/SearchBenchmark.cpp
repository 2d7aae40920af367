// Searching while typing, mode "All", against grep over the file.
#include "benchmarks/BenchmarkSupport.h"
#include "document/VXDocument.h"
#include "editing/search/SearchColumns.h"
#include "editing/search/SearchFilter.h"

#include <QProcess>
#include <map>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t kTouched = 2'000'000'000;

/// From a letter that half of all names have to a word that few have.
const QStringList &words()
{
    static const QStringList all {u"a"_s, u"uni"_s, u"alpha"_s, u"adieresis"_s, u"0041"_s};
    return all;
}

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

qsizetype search(SearchColumns &columns, const SearchSettings &settings, const QString &text)
{
    const SearchResult result = SearchFilter(settings).result(text);
    const std::optional<IndexSet> places = columns.placesPassing(*result.predicate);
    return places ? static_cast<qsizetype>(places->size()) : -1;
}

void searchWords(benchmark::State &state, SearchColumns &columns, const SearchSettings &settings,
                 const QStringList &texts)
{
    for (const QString &text : texts) {
        if (search(columns, settings, text) <= 0)
            state.SkipWithError("nothing found");
    }
}

/// One keystroke for each word, the columns being there.
void keystrokes(benchmark::State &state, int records)
{
    SearchColumns columns(documentOf(records));
    searchWords(state, columns, {}, words());
    for ([[maybe_unused]] auto _ : state)
        searchWords(state, columns, {}, words());
}

/// The same after a hundred records were renamed, which the columns have not seen.
void keystrokesAfterEdits(benchmark::State &state, int records)
{
    VXDocument &document = documentOf(records);
    SearchColumns columns(document);
    searchWords(state, columns, {}, words());
    for ([[maybe_unused]] auto _ : state) {
        for (qsizetype i = 0; i < 100; ++i)
            columns.noteChange({document.objectInInfosAtIndex(i * 311), GlyphField::Name});
        searchWords(state, columns, {}, words());
    }
}

/// The first keystroke after opening, when no idle moment has made the columns.
void firstKeystroke(benchmark::State &state, int records)
{
    const VXDocument &document = documentOf(records);
    for ([[maybe_unused]] auto _ : state) {
        SearchColumns columns(document);
        searchWords(state, columns, {}, {u"alpha"_s});
    }
}

void regularExpression(benchmark::State &state, int records)
{
    SearchColumns columns(documentOf(records));
    const SearchSettings settings {0, false, true};
    for ([[maybe_unused]] auto _ : state)
        searchWords(state, columns, settings, {u"[a-z]+acute"_s});
}

void grep(benchmark::State &state, int records, const QStringList &options, const QStringList &texts)
{
    // What users have; under the C locale grep is slower.
    qputenv("LC_ALL", "C.UTF-8");
    for ([[maybe_unused]] auto _ : state) {
        bool found = true;
        state.SetIterationTime(secondsFor([&] {
            for (const QString &text : texts) {
                // Its output has to be read: into the null device it would stop at the first match.
                QProcess process;
                process.start(u"grep"_s, options + QStringList {text, corpusFile(records, u"xml"_s)});
                found &= process.waitForFinished(-1) && process.readAllStandardOutput().toInt() > 0;
            }
        }));
        if (!found)
            state.SkipWithError("grep found nothing");
    }
}

void registerAll()
{
    const QStringList fixed {u"-c"_s, u"-i"_s, u"-F"_s};
    for (const int records : {35'000, 150'000, 1'000'000}) {
        const auto add = [records](const QString &what, auto function, const QStringList &options,
                                   const QStringList &texts) {
            const QString name = u"%1/%2"_s.arg(what).arg(records);
            addRepeated(name, function, records);
            addTimed(name + ":peer"_L1, grep, records, options, texts);
        };
        add(u"search"_s, keystrokes, fixed, words());
        add(u"search-edited"_s, keystrokesAfterEdits, fixed, words());
        add(u"search-first"_s, firstKeystroke, fixed, {u"alpha"_s});
        add(u"search-regex"_s, regularExpression, {u"-c"_s, u"-E"_s}, {u" name=\"[a-z]+acute\""_s});
    }
}

} // namespace

} // namespace runebook

RUNEBOOK_BENCHMARK_MAIN(runebook::registerAll)
