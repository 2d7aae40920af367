// Cells pasted by key into all records of a document: from the text on the clipboard to the notice of what
// has changed.
#include "benchmarks/BenchmarkSupport.h"
#include "document/VXDocument.h"
#include "editing/tables/PastePlan.h"
#include "editing/tables/TableClipboard.h"

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

const std::vector<GlyphField> kFields {GlyphField::Name,   GlyphField::Unicodes,   GlyphField::Category,
                                       GlyphField::Script, GlyphField::Production, GlyphField::Desc};

/// All records as a spreadsheet gives them back, two fields of each edited.
QString editedCells(const VXDocument &document)
{
    const QString cells = tableData(document.infos(), kFields)->text();
    QStringList lines = cells.split(u'\n', Qt::SkipEmptyParts);
    for (qsizetype i = 1; i < lines.size(); ++i) {
        QStringList row = lines.at(i).split(u'\t');
        row[2] = u"Edited"_s;
        row.last() += u" edited"_s;
        lines[i] = row.join(u'\t');
    }
    return lines.join(u'\n');
}

/// What was pasted; the notice to observers included.
PastePlan::Counts paste(VXDocument &document, const QString &cells)
{
    const PasteTarget target {document, {}, {}};
    const PastedTable table = tableOfText(cells);
    const PastePlan plan(table, usualChoices(table, {}, target), target);
    {
        const UndoGroup group(document.undoManager());
        PastePlan::Progress progress;
        while (!plan.apply(document, document.countOfInfos(), QDeadlineTimer(8), progress)) { }
    }
    document.flushChanges();
    return plan.counts();
}

void runPaste(benchmark::State &state, int records)
{
    for ([[maybe_unused]] auto _ : state) {
        VXDocument document;
        document.readFromURLOfType(corpusFile(records, u"xml"_s), u"public.xml"_s);
        const QString cells = editedCells(document);
        touchMemory(100'000'000);
        PastePlan::Counts counts;
        state.SetIterationTime(secondsFor([&] { counts = paste(document, cells); }));
        if (counts.records < records / 10 * 9)
            state.SkipWithError("hardly anything was pasted");
    }
}

void registerAll()
{
    for (const int records : {35'000, 150'000})
        addTimed("paste-table/"_L1 + QString::number(records), runPaste, records);
}

} // namespace

} // namespace runebook

RUNEBOOK_BENCHMARK_MAIN(runebook::registerAll)
