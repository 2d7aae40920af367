// Commands and loops of scripts over many records that must hold nothing up: scattered selections, copies by
// dragging, regular expressions over a million names, very long values, the list edited one record at a time.
#include "benchmarks/BenchmarkSupport.h"
#include "benchmarks/editing/OpenWindows.h"
#include "document/VXDocument.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/fields/TextBox.h"
#include "editing/fields/WholeValueDialog.h"
#include "editing/records/GlyphTableView.h"
#include "editing/search/SearchSettings.h"
#include "editing/search/VXSearchField.h"
#include "editing/window/DetailPane.h"
#include "editing/window/VXWindowController.h"
#include "platform/documents/Autosaver.h"

#include <QApplication>
#include <QMimeData>
#include <QPointer>
#include <algorithm>
#include <malloc.h>
#include <numeric>
#include <unistd.h>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// One scattered selection replaced by another, painted: the second of two "Select Records with the Same…".
void selectSame(benchmark::State &state, int records)
{
    VXWindowController &window = windowOf(records);
    RSRTVArrayController &list = *window.infolistController();
    for ([[maybe_unused]] auto _ : state) {
        list.setSelectionIndexes({0});
        window.selectSame(u"script"_s);
        QApplication::processEvents();
        state.SetIterationTime(secondsFor([&window] {
            window.selectSame(u"category"_s);
            window.tableView()->viewport()->repaint();
        }));
    }
}

/// Every third record, 10,000 at most.
IndexSet draggedRows(qsizetype count)
{
    IndexSet rows;
    for (qsizetype row = 0; row < count && rows.size() < 10'000; row += 3)
        rows.push_back(row);
    return rows;
}

/// Rows copied by dragging to the middle of the list, painted, or that undone.
void dragCopy(benchmark::State &state, int records, bool isUndo)
{
    VXWindowController &window = windowOf(records);
    RSRTVArrayController &list = *window.infolistController();
    UndoManager &history = *window.glyphDocument().undoManager();
    const IndexSet rows = draggedRows(list.countOfArrangedObjects());
    for ([[maybe_unused]] auto _ : state) {
        const std::unique_ptr<QMimeData> data(list.mimeDataForRows(rows));
        const auto copy = [&] {
            list.dropMimeData(data.get(), Qt::CopyAction, records / 2, 0, {});
            window.tableView()->viewport()->repaint();
        };
        const auto undo = [&] {
            history.undo();
            window.tableView()->viewport()->repaint();
        };
        const double copying = secondsFor(copy);
        QApplication::processEvents();
        const double undoing = secondsFor(undo);
        QApplication::processEvents();
        state.SetIterationTime(isUndo ? undoing : copying);
    }
}

/// The longest stretch for which typing has to wait while a regular expression is being looked for.
void patternHold(benchmark::State &state, int records)
{
    VXWindowController &window = windowOf(records);
    Settings::kSearchIsRegex.set(true);
    for ([[maybe_unused]] auto _ : state) {
        double longest = 0;
        for (const QString &text : {u".*a"_s, u".*al"_s, u".*alpha"_s}) {
            window.searchField()->setStringValue(text);
            longest = std::max(longest, secondsFor([&window] { window.filterInfos(); }));
            // The next key comes while the search is on its way; the last is awaited.
            for (int turns = 0; window.isFiltering() && (turns < 5 || text == ".*alpha"_L1); ++turns)
                longest = std::max(longest, secondsFor([] { QApplication::processEvents(); }));
        }
        state.SetIterationTime(longest);
    }
    Settings::kSearchIsRegex.set(false);
    window.searchField()->setStringValue({});
    window.filterInfos();
}

// Loops of scripts. Twice as many records may take little more than twice as long.

InfoList freshInfos(int count)
{
    InfoList infos;
    for (int i = 0; i < count; ++i) {
        infos.push_back(VXGlyphInfo::init());
        infos.back()->setName(u"glyph%1"_s.arg(i));
    }
    return infos;
}

enum class Loop { Add, Remove, RemoveAndFind, Replace, AddSorted };

/// A loop over all of \a count records, in a document with a window, in one step.
void editOneByOne(benchmark::State &state, int count, Loop loop)
{
    for ([[maybe_unused]] auto _ : state) {
        VXDocument document;
        InfoList infos = freshInfos(count);
        if (loop != Loop::Add && loop != Loop::AddSorted)
            document.setInfos(infos);
        VXWindowController window(document);
        if (loop == Loop::AddSorted)
            window.infolistController()->sort(1);
        window.show();
        QApplication::processEvents();
        const InfoList others = loop == Loop::Replace ? freshInfos(count) : InfoList();
        state.SetIterationTime(secondsFor([&] {
            const UndoGroup group(document.undoManager());
            for (int i = 0; i < count; ++i) {
                const auto at = static_cast<std::size_t>(i);
                if (loop == Loop::Add || loop == Loop::AddSorted)
                    document.addInfos({infos[at]});
                else if (loop == Loop::Remove)
                    document.removeInfo(infos[infos.size() - 1 - at]);
                else if (loop == Loop::RemoveAndFind)
                    document.removeObjectFromInfosAtIndex(document.indexOfObjectInInfos(infos[at]));
                else
                    document.replaceObjectInInfosAtIndexWithObject(i, others[at]);
            }
            window.infolistController()->countOfArrangedObjects();
        }));
    }
}

/// Names looked up and records edited in turns, while one record stands in a second document or does not.
void lookUps(benchmark::State &state, int count, bool isShared)
{
    VXDocument document;
    VXDocument other;
    document.setInfos(freshInfos(count));
    if (isShared)
        other.addInfo(document.objectInInfosAtIndex(1));
    int next = 0;
    for ([[maybe_unused]] auto _ : state) {
        next = (next + 7919) % count;
        benchmark::DoNotOptimize(document.infoForName(u"glyph%1"_s.arg(next)));
        document.objectInInfosAtIndex(next)->setScript(u"latin"_s);
    }
}

/// The memory that one field of one record, set over and over in one step, leaves until the step ends,
/// against a list of all changes.
void setMemory(benchmark::State &state, int times, bool isPeer)
{
    VXDocument document;
    document.setInfos(freshInfos(10));
    const InfoPtr info = document.objectInInfosAtIndex(3);
    for ([[maybe_unused]] auto _ : state) {
        const auto before = mallinfo2();
        std::vector<VXDocument::Change> all;
        const double seconds = secondsFor([&] {
            const UndoGroup group(document.undoManager());
            for (int i = 0; i < times; ++i) {
                info->setScript(i % 2 ? u"latin"_s : u"greek"_s);
                if (isPeer)
                    all.push_back({info, GlyphField::Script});
            }
        });
        const auto after = mallinfo2();
        state.SetIterationTime(seconds);
        state.counters["bytes"] = static_cast<double>(
            std::max<std::size_t>(1, after.uordblks + after.hblkhd - before.uordblks - before.hblkhd));
        document.flushChanges();
        document.undoManager()->removeAllActions();
    }
}

/// The longest step of choosing a record with a long value, editing another field of it, opening the sheet of
/// all of the value and typing there.
void longValue(benchmark::State &state, GlyphField field, const QString &value)
{
    VXDocument document;
    document.setInfos(freshInfos(1000));
    const InfoPtr info = document.objectInInfosAtIndex(500);
    setFieldFromText(document, {info}, field, value);
    VXWindowController window(document);
    window.show();
    QApplication::processEvents();
    for ([[maybe_unused]] auto _ : state) {
        double longest = 0;
        const auto step = [&longest](const auto &work) {
            longest = std::max(longest, secondsFor(work));
            for (int turn = 0; turn < 50; ++turn)
                longest = std::max(longest, secondsFor([] { QApplication::processEvents(); }));
        };
        window.infolistController()->setSelectionIndexes({0});
        QApplication::processEvents();
        step([&] { window.infolistController()->setSelectionIndexes({500}); });
        step([&] { setFieldFromText(document, {info}, GlyphField::Script, u"greek"_s); });
        step([&] { setFieldFromText(document, {info}, GlyphField::Script, u"latin"_s); });
        WholeValueDialog *sheet = nullptr;
        step([&] { sheet = window.detailPane()->editWhole(field); });
        step([&] { sheet->edit()->insertPlainText(u"a"_s); });
        step([&] { sheet->showPart(1); });
        sheet->reject();
        state.SetIterationTime(longest);
    }
    document.updateChangeCount(Document::ChangeCleared);
}

/// The longest time for which the window stands still while a description of so many letters, a quote among
/// them, is chosen, autosaved, searched, sorted, opened in its sheet, edited there and stored.
void longText(benchmark::State &state, qsizetype letters)
{
    VXDocument document;
    document.setInfos(freshInfos(1000));
    const InfoPtr info = document.objectInInfosAtIndex(500);
    info->setDesc(u"0123\"56789"_s.repeated(letters / 10));
    VXWindowController window(document);
    window.show();
    QApplication::processEvents();
    Settings::kSearchState.set(int(SearchMode::Description));
    RSRTVArrayController &list = *window.infolistController();
    for ([[maybe_unused]] auto _ : state) {
        double longest = 0;
        const auto step = [&](const char *name, const auto &work, const auto &isDone) {
            double hold = secondsFor(work);
            for (int turn = 0; turn < 50 || !isDone(); ++turn)
                hold = std::max(hold, secondsFor([] { QApplication::processEvents(QEventLoop::AllEvents); }));
            state.counters[name] = hold;
            longest = std::max(longest, hold);
        };
        const auto atOnce = [] { return true; };
        bool isSaved = false;
        const auto told =
            QObject::connect(&document.autosaver(), &Autosaver::finished, [&isSaved] { isSaved = true; });
        step(
            "choose", [&] { list.setSelectionIndexes({500}); }, atOnce);
        step(
            "edit", [&] { setFieldFromText(document, {info}, GlyphField::Script, u"greek"_s); }, atOnce);
        step(
            "autosave", [&] { document.autosaver().start(); }, [&isSaved] { return isSaved; });
        QObject::disconnect(told);
        const auto search = [&window](const QString &text) {
            return [&window, text] {
                window.searchField()->setStringValue(text);
                window.filterInfos();
            };
        };
        step("search", search(u"9x"_s), [&window] { return !window.isFiltering(); });
        step("key", search(u"90"_s), [&window] { return !window.isFiltering(); });
        step("clear", search({}), [&window] { return !window.isFiltering(); });
        step(
            "sort", [&] { list.sort(columnOfField(GlyphField::Desc)); }, atOnce);
        step(
            "unsort", [&] { list.sort(-1); }, atOnce);
        list.setSelectionIndexes({500});
        WholeValueDialog *sheet = nullptr;
        step(
            "open", [&] { sheet = window.detailPane()->editWhole(GlyphField::Desc); }, atOnce);
        step(
            "type", [&] { sheet->edit()->insertPlainText(u"a"_s); }, atOnce);
        step(
            "turn", [&] { sheet->showPart(sheet->partCount() / 2); }, atOnce);
        const QPointer<WholeValueDialog> open = sheet;
        step(
            "store", [&] { sheet->accept(); }, [&open] { return !open || !open->isVisible(); });
        step(
            "undo", [&] { document.undoManager()->undo(); }, atOnce);
        state.SetIterationTime(longest);
    }
    document.updateChangeCount(Document::ChangeCleared);
}

void addLongValues()
{
    QStringList names;
    QStringList codePoints;
    QString marks = u"e"_s;
    for (int i = 0; i < 300'000; ++i)
        names << u"other%1"_s.arg(i);
    for (int i = 0; i < 1'000'000; ++i)
        codePoints << QString::number(0x4E00 + i % 0x5000, 16);
    for (int i = 0; i < 100'000; ++i)
        marks += QChar(static_cast<char16_t>(0x300 + i % 0x30));
    addTimed(u"long-alt-names/300000"_s, longValue, GlyphField::AltNames, names.join(u", "_s));
    addTimed(u"long-code-points/1000000"_s, longValue, GlyphField::Unicodes, codePoints.join(u','));
    addTimed(u"long-marks/100000"_s, longValue, GlyphField::Marks, marks);
    addTimed(u"long-text/30000000"_s, longText, 30'000'000);
    constexpr qint64 kNeeded = qint64(8) << 30; // of which two thirds are taken
    if (qint64(sysconf(_SC_PHYS_PAGES)) * sysconf(_SC_PAGESIZE) > kNeeded)
        addTimed(u"long-text/300000000"_s, longText, 300'000'000);
    addTimed(u"long-description/600000"_s, longValue, GlyphField::Desc, u"abcdefghij"_s.repeated(60'000));
}

void addLoop(const QString &name, int count, Loop loop)
{
    addTimed(u"%1/%2"_s.arg(name).arg(count), editOneByOne, count, loop);
    addTimed(u"%1/%2:peer"_s.arg(name).arg(count), editOneByOne, count / 2, loop);
}

void registerAll()
{
    for (const int records : {35'000, 150'000}) {
        const QString size = QString::number(records);
        addTimed("hold-select-same/"_L1 + size, selectSame, records);
        addTimed("hold-drag-copy/"_L1 + size, dragCopy, records, false);
        addTimed("hold-drag-undo/"_L1 + size, dragCopy, records, true);
    }
    addTimed(u"hold-pattern/1000000"_s, patternHold, 1'000'000);
    addLongValues();
    addLoop(u"loop-add"_s, 35'000, Loop::Add);
    addLoop(u"loop-add-sorted"_s, 35'000, Loop::AddSorted);
    addLoop(u"loop-remove"_s, 35'000, Loop::Remove);
    addLoop(u"loop-remove-first"_s, 35'000, Loop::RemoveAndFind);
    addLoop(u"loop-replace"_s, 35'000, Loop::Replace);
    addRepeated(u"loop-shared/35000"_s, lookUps, 35'000, true);
    addRepeated(u"loop-shared/35000:peer"_s, lookUps, 35'000, false);
    addTimed(u"loop-set-memory/250000"_s, setMemory, 250'000, false);
    addTimed(u"loop-set-memory/250000:peer"_s, setMemory, 250'000, true);
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
