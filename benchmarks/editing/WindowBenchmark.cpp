// What a user of the document window waits for: keystrokes, sorting, pasting, jumps.
#include "benchmarks/BenchmarkSupport.h"
#include "benchmarks/editing/OpenWindows.h"
#include "document/VXDocument.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/records/GlyphTableView.h"
#include "editing/records/SortOrder.h"
#include "editing/search/VXSearchField.h"
#include "editing/window/EditCommands.h"
#include "editing/window/VXWindowController.h"

#include <QApplication>
#include <QClipboard>
#include <QCollator>
#include <QMimeData>
#include <QProcess>
#include <QScrollBar>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// A letter typed into the search field until the table has its new rows, and until they are painted.
void keystroke(benchmark::State &state, int records, bool isPainted)
{
    VXWindowController &window = windowOf(records);
    window.searchField()->setStringValue(u"alph"_s);
    window.filterInfos();
    QApplication::processEvents();
    bool isLonger = false;
    for ([[maybe_unused]] auto _ : state) {
        isLonger = !isLonger;
        window.searchField()->setStringValue(isLonger ? u"alpha"_s : u"alph"_s);
        window.filterInfos();
        if (isPainted)
            window.tableView()->viewport()->repaint();
    }
    window.searchField()->setStringValue(u""_s);
    window.filterInfos();
}

void grep(benchmark::State &state, int records)
{
    for ([[maybe_unused]] auto _ : state)
        state.SetIterationTime(secondsFor([records] {
            // Its output is read: with nowhere to put it, grep stops at the first line found.
            QProcess process;
            process.start(u"grep"_s, {u"-c"_s, u"-i"_s, u"-F"_s, u"alpha"_s, corpusFile(records, u"xml"_s)});
            if (!process.waitForFinished(-1) || process.readAllStandardOutput().toInt() <= 0)
                std::abort();
        }));
}

void sortColumn(benchmark::State &state, int records, GlyphField field)
{
    const InfoList &infos = windowOf(records).glyphDocument().infos();
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(sortedPlaces(infos, field, Qt::AscendingOrder));
}

void collatorSort(benchmark::State &state, int records, GlyphField field)
{
    const InfoList &infos = windowOf(records).glyphDocument().infos();
    QCollator collator(QLocale(QLocale::English, QLocale::UnitedStates));
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    for ([[maybe_unused]] auto _ : state) {
        QStringList texts;
        texts.reserve(static_cast<qsizetype>(infos.size()));
        for (const InfoPtr &info : infos)
            texts << info->displayText(field);
        std::stable_sort(texts.begin(), texts.end(), collator);
        benchmark::DoNotOptimize(texts);
    }
}

/// Lines on the clipboard pasted into an empty document, until the window shows them.
void paste(benchmark::State &state, int records)
{
    const QString lines = clipboardData(windowOf(records).glyphDocument().infos())->text();
    for ([[maybe_unused]] auto _ : state) {
        VXDocument document;
        VXWindowController window(document);
        window.show();
        QApplication::processEvents();
        QApplication::clipboard()->setText(lines);
        state.SetIterationTime(secondsFor([&window] {
            window.paste();
            window.tableView()->viewport()->repaint();
        }));
    }
}

void open(benchmark::State &state, int records)
{
    const QString path = corpusFile(records, u"xml"_s);
    for ([[maybe_unused]] auto _ : state) {
        state.SetIterationTime(secondsFor([&path] {
            VXDocument document;
            document.readFromURLOfType(path, u"public.xml"_s);
            VXWindowController window(document);
            window.show();
            QApplication::processEvents();
            window.tableView()->viewport()->repaint();
        }));
    }
}

/// The scroll bar thrown to another place, and the rows there painted.
void jump(benchmark::State &state, int records)
{
    GlyphTableView *table = windowOf(records).tableView();
    QScrollBar *bar = table->verticalScrollBar();
    int place = 0;
    for ([[maybe_unused]] auto _ : state) {
        place = static_cast<int>((place + bar->maximum() * qint64(7) / 17 + 1) % bar->maximum());
        bar->setValue(place);
        table->viewport()->repaint();
    }
}

void selectAll(benchmark::State &state, int records)
{
    VXWindowController &window = windowOf(records);
    for ([[maybe_unused]] auto _ : state) {
        window.infolistController()->setSelectionIndexes({0});
        state.SetIterationTime(secondsFor([&window] {
            window.selectAll();
            window.tableView()->viewport()->repaint();
        }));
    }
}

void registerAll()
{
    for (const int records : {35'000, 150'000}) {
        addRepeated(u"window-key/%1"_s.arg(records), keystroke, records, false);
        addTimed(u"window-key/%1:peer"_s.arg(records), grep, records);
        addRepeated(u"window-key-painted/%1"_s.arg(records), keystroke, records, true);
        addRepeated(u"window-jump/%1"_s.arg(records), jump, records);
        addTimed(u"window-select-all/%1"_s.arg(records), selectAll, records);
        for (const GlyphField field : {GlyphField::Name, GlyphField::Production, GlyphField::Desc}) {
            const QString name = u"sort-%1/%2"_s.arg(keyOfField(field)).arg(records);
            addRepeated(name, sortColumn, records, field);
            addRepeated(name + ":peer"_L1, collatorSort, records, field);
        }
    }
    addTimed(u"window-paste/35000"_s, paste, 35'000);
    addTimed(u"window-paste/35000:peer"_s, open, 35'000);
}

} // namespace

} // namespace runebook

int main(int argc, char *argv[])
{
    const QTemporaryDir home;
    runebook::useBenchmarkHome(home.path());
    const QApplication app(argc, argv);
    runebook::registerAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    runebook::closeWindows();
    return 0;
}
