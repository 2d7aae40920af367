// Two versions of a glyph data file, 2 % of the records changed: the comparison of open documents, of the
// files, and what the window needs to show the records of a key. The peer is diff of the two files.
#include "benchmarks/BenchmarkSupport.h"
#include "document/VXDocument.h"
#include "editing/compare/CompareReport.h"
#include "editing/compare/CompareSettings.h"
#include "editing/compare/VXCompareDataWindow.h"
#include "platform/documents/DocumentController.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QLabel>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// The changed version of a corpus file; made on first use.
QString editedFile(int records)
{
    const QString path = QFileInfo(corpusFile(records, u"xml"_s)).path() + u"/edited-%1.xml"_s.arg(records);
    const QString part = path + ".part"_L1;
    const bool made = QFile::exists(path)
        || (runProgram(u"python3"_s,
                       {QStringLiteral(RUNEBOOK_CORPUS_TOOL), u"--records"_s, QString::number(records),
                        u"--changes"_s, u"0.02"_s, u"--out"_s, part})
            && QFile::rename(part, path));
    return made ? path : QString();
}

/// Both versions as open documents, read once for all repetitions.
struct Pair {
    VXDocument *left;
    VXDocument *right;
};

Pair openPair(int records)
{
    static QHash<int, Pair> pairs;
    if (!pairs.contains(records)) {
        const auto open = [](const QString &path) {
            auto *document = new VXDocument;
            document->readFromURLOfType(path, u"public.xml"_s);
            document->setFileURL(path);
            DocumentController::shared().addDocument(document);
            return document;
        };
        VXDocument *right = open(editedFile(records));
        pairs.insert(records, {open(corpusFile(records, u"xml"_s)), right});
    }
    return pairs.value(records);
}

void compareDocuments(benchmark::State &state, int records)
{
    const Pair pair = openPair(records);
    for ([[maybe_unused]] auto _ : state) {
        qsizetype keys = 0;
        state.SetIterationTime(secondsFor([&] {
            KeyComparison comparison(pair.left->infos(), pair.right->infos(), CompareKey::Name,
                                     CompareMode::Different);
            comparison.finish(CompareMode::Different);
            keys = comparison.keys(CompareMode::Different).size();
        }));
        if (keys < records / 100)
            state.SkipWithError("the documents were not compared");
    }
}

void compareFilesOnDisk(benchmark::State &state, int records)
{
    const QString left = corpusFile(records, u"xml"_s);
    const QString right = editedFile(records);
    for ([[maybe_unused]] auto _ : state) {
        QFile nowhere(u"/dev/null"_s);
        CompareResult result = FilesUnreadable;
        if (nowhere.open(QIODevice::WriteOnly)) {
            state.SetIterationTime(secondsFor([&] {
                QTextStream out(&nowhere);
                result = compareFiles(left, right, CompareKey::Name, ReportFormat::Text, out);
            }));
        }
        if (result != FilesDifferent)
            state.SkipWithError("the files were not compared");
    }
}

void diff(benchmark::State &state, int records)
{
    // Its status is 1 where files differ; anything above is a failure.
    const QStringList arguments {u"-c"_s, u"diff \"$0\" \"$1\" >/dev/null || test $? -eq 1"_s,
                                 corpusFile(records, u"xml"_s), editedFile(records)};
    for ([[maybe_unused]] auto _ : state) {
        state.SetIterationTime(secondsFor([&] {
            if (!runProgram(u"sh"_s, arguments))
                state.SkipWithError("diff failed");
        }));
    }
}

/// From choosing the next key to the window drawn.
void chooseKey(benchmark::State &state, int records)
{
    openPair(records);
    Settings::kCompareMode.set(CompareMode::Different);
    VXCompareDataWindow window;
    window.showWindow();
    window.filteredKeys();
    while (window.countOfKeysInMode(0) < 0)
        QCoreApplication::processEvents();
    window.grab();
    for ([[maybe_unused]] auto _ : state) {
        window.selectNextDifference();
        benchmark::DoNotOptimize(window.grab());
    }
}

/// A window over two versions of which 10,000 records differ, all of them listed, and nothing going on.
std::unique_ptr<VXCompareDataWindow> windowWithDifferences(int records)
{
    constexpr std::size_t kDifferences = 10'000;
    static QHash<int, VXDocument *> changed;
    const Pair pair = openPair(records);
    if (!changed.contains(records)) {
        auto *document = new VXDocument;
        document->readFromURLOfType(corpusFile(records, u"xml"_s), u"public.xml"_s);
        document->undoManager()->setRegistrationEnabled(false);
        const std::size_t step = document->infos().size() / kDifferences;
        for (std::size_t i = 0; i < kDifferences; ++i) {
            document->infos()[i * step]->setCategory(u"Changed"_s);
            document->infos()[i * step]->setDesc(u"changed"_s);
        }
        document->undoManager()->setRegistrationEnabled(true);
        DocumentController::shared().addDocument(document);
        changed.insert(records, document);
    }
    Settings::kCompareMode.set(CompareMode::Different);
    auto window = std::make_unique<VXCompareDataWindow>();
    window->showDocuments(changed.value(records), pair.left);
    window->filteredKeys();
    while (window->countOfKeysInMode(0) < 0)
        QCoreApplication::processEvents();
    return window;
}

/// All records listed taken across, and the list made anew.
void takeAll(benchmark::State &state, int records)
{
    const auto window = windowWithDifferences(records);
    const auto *document = window->rightDocList()->document();
    for ([[maybe_unused]] auto _ : state) {
        state.SetIterationTime(secondsFor([&] {
            window->takeAllRight();
            window->filteredKeys();
        }));
        if (!document->isDocumentEdited())
            state.SkipWithError("nothing was taken");
        window->undo();
    }
}

/// The same taken back.
void undoTakeAll(benchmark::State &state, int records)
{
    const auto window = windowWithDifferences(records);
    const auto *document = window->rightDocList()->document();
    for ([[maybe_unused]] auto _ : state) {
        window->takeAllRight();
        state.SetIterationTime(secondsFor([&] {
            window->undo();
            window->filteredKeys();
        }));
        if (document->isDocumentEdited())
            state.SkipWithError("it was not taken back");
    }
}

/// All keys chosen: the longest time that the window is held until all of their records are shown. Records
/// without descriptions always differ, so here each has a key in the list.
void chooseAll(benchmark::State &state, int records)
{
    const Pair pair = openPair(records);
    for (VXDocument *document : {pair.left, pair.right}) {
        document->undoManager()->setRegistrationEnabled(false);
        for (const InfoPtr &info : document->infos())
            info->setDesc(QString());
        document->flushChanges();
    }
    Settings::kCompareMode.set(CompareMode::Different);
    VXCompareDataWindow window;
    window.showWindow();
    const auto indexOf = [&window](VXDocument *document) {
        return static_cast<int>(window.leftDocList()->arrangedObjects().indexOf(document));
    };
    window.leftDocList()->setSelectionIndex(indexOf(pair.left));
    window.rightDocList()->setSelectionIndex(indexOf(pair.right));
    window.filteredKeys();
    while (window.countOfKeysInMode(0) < 0)
        QCoreApplication::processEvents();
    if (window.filteredKeys()->rowCount() < records / 2)
        state.SkipWithError("too few keys");
    const auto *position = window.findChild<QLabel *>(u"positionLabel"_s);
    auto *keys = window.findChild<QAbstractItemView *>(u"keyView"_s);
    for ([[maybe_unused]] auto _ : state) {
        double longest = secondsFor([keys] { keys->selectAll(); });
        while (position->text().endsWith(u'…'))
            longest = qMax(longest, secondsFor([] { QCoreApplication::processEvents(); }));
        state.SetIterationTime(longest);
    }
}

void registerAll()
{
    for (const int records : {150'000, 1'000'000}) {
        const QString documents = u"compare/%1"_s.arg(records);
        addTimed(documents, compareDocuments, records);
        addTimed(documents + ":peer"_L1, diff, records);
        const QString files = u"compare-files/%1"_s.arg(records);
        addTimed(files, compareFilesOnDisk, records);
        addTimed(files + ":peer"_L1, diff, records);
        addRepeated(u"compare-key/%1"_s.arg(records), chooseKey, records);
        addTimed(u"compare-take/%1"_s.arg(records), takeAll, records);
        const QString undo = u"compare-take-undo/%1"_s.arg(records);
        addTimed(undo, undoTakeAll, records);
        addTimed(undo + ":peer"_L1, takeAll, records);
    }
    // Last, as it changes the documents.
    for (const int records : {150'000, 1'000'000})
        addTimed(u"compare-all-keys/%1"_s.arg(records), chooseAll, records);
}

} // namespace

} // namespace runebook

int main(int argc, char *argv[])
{
    const QTemporaryDir home;
    runebook::useBenchmarkHome(home.path());
    const QApplication app(argc, argv); // the window needs widgets, unlike the other programs
    runebook::registerAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
