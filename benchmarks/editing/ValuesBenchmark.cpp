// The panel of values in a window: from a click on a value to the filtered table, and the counts.
#include "benchmarks/BenchmarkSupport.h"
#include "benchmarks/editing/OpenWindows.h"
#include "editing/records/GlyphTableView.h"
#include "editing/values/ValuesPanel.h"

#include <QApplication>
#include <QHash>
#include <QTest>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// The panel of a window with the values of \a field, counted and at rest.
ValuesPanel &panelOf(int records, const QString &field)
{
    VXWindowController &window = windowOf(records);
    if (!window.showValues(field))
        std::abort();
    ValuesPanel &panel = *window.valuesPanel();
    panel.filter().setFilter({});
    const auto isAtRest = [&panel] { return panel.counts().isComplete() && panel.model().isUpToDate(); };
    QTest::qWait(0);
    if (!QTest::qWaitFor(isAtRest, 60'000))
        std::abort();
    QTest::qWait(300); // idle time, in which a click is prepared
    return panel;
}

void clickAt(const ValuesPanel &panel, const QModelIndex &index)
{
    QTest::mouseClick(panel.view().viewport(), Qt::LeftButton, {}, panel.view().visualRect(index).center());
}

/// One value after the other is clicked, and the table painted.
void click(benchmark::State &state, int records, const QString &field)
{
    const ValuesPanel &panel = panelOf(records, field);
    VXWindowController &window = windowOf(records);
    int row = 0;
    for ([[maybe_unused]] auto _ : state) {
        row = (row + 1) % qMin(6, panel.model().rowCount());
        const QModelIndex index = panel.model().index(row, ValuesModel::ValueColumn);
        const auto count = panel.model().lineOf(row).section(u'\t', 1).trimmed().toLongLong();
        state.SetIterationTime(secondsFor([&] {
            clickAt(panel, index);
            window.tableView()->viewport()->repaint();
        }));
        if (window.infolistController()->countOfArrangedObjects() != count)
            state.SkipWithError("the table shows other records than the value has");
        QApplication::processEvents();
        const bool isAtRest = QTest::qWaitFor([&panel] { return panel.model().isUpToDate(); }, 10'000);
        if (!isAtRest)
            state.SkipWithError("the values were not counted");
    }
    panelOf(records, field);
}

void grepCategory(benchmark::State &state, int records)
{
    const QByteArray bytes = [records] {
        QFile file(corpusFile(records, u"xml"_s));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }();
    for ([[maybe_unused]] auto _ : state)
        state.SetIterationTime(
            secondsFor([&bytes] { benchmark::DoNotOptimize(bytes.count("category=\"Letter\"")); }));
}

/// All values of a field counted anew, without a window; by a plain hash of texts beside it.
void count(benchmark::State &state, int records, const QString &field)
{
    const VXDocument &document = windowOf(records).glyphDocument();
    for ([[maybe_unused]] auto _ : state) {
        ValueCounts counts(document, *FieldAspect::of(field));
        state.SetIterationTime(secondsFor([&counts] { counts.finish(); }));
    }
}

void countInHash(benchmark::State &state, int records, GlyphField field)
{
    const VXDocument &document = windowOf(records).glyphDocument();
    for ([[maybe_unused]] auto _ : state) {
        state.SetIterationTime(secondsFor([&] {
            QHash<QString, int> counts;
            for (const InfoPtr &info : document.infos())
                ++counts[info->stringValue(field)];
            benchmark::DoNotOptimize(counts);
        }));
    }
}

/// The longest slice of counting all values.
void longestSlice(benchmark::State &state, int records, const QString &field)
{
    const VXDocument &document = windowOf(records).glyphDocument();
    for ([[maybe_unused]] auto _ : state) {
        ValueCounts counts(document, *FieldAspect::of(field));
        double longest = 0;
        bool isDone = false;
        while (!isDone)
            longest =
                std::max(longest, secondsFor([&] { isDone = counts.runFor(std::chrono::milliseconds(5)); }));
        state.SetIterationTime(longest);
    }
}

void registerAll()
{
    for (const int records : {35'000, 150'000, 1'000'000}) {
        addTimed(u"values-click/%1"_s.arg(records), click, records, u"category"_s);
        addTimed(u"values-click/%1:peer"_s.arg(records), grepCategory, records);
        addTimed(u"values-click-suffix/%1"_s.arg(records), click, records, u"suffix"_s);
        addTimed(u"values-count/%1"_s.arg(records), count, records, u"category"_s);
        addTimed(u"values-count/%1:peer"_s.arg(records), countInHash, records, GlyphField::Category);
        addTimed(u"values-slice/%1"_s.arg(records), longestSlice, records, u"name"_s);
    }
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
