#include "editing/compare/ReportCommands.h"

#include "editing/compare/CommandRow.h"
#include "editing/compare/CompareReport.h"
#include "editing/compare/CompareSettings.h"
#include "platform/CheckedFile.h"
#include "platform/LongWork.h"
#include "platform/TurningWindows.h"
#include "platform/documents/DocumentPanels.h"

#include <QClipboard>
#include <QFileDialog>
#include <QGuiApplication>
#include <fcntl.h>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

using Row = CommandRow<ReportCommands, ReportCommands::Command>;
using Scope = ReportCommands::Scope;

const std::vector<Row> &commandRows()
{
    static const std::vector<Row> rows {
        {ReportCommands::CopyReport,
         QT_TR_NOOP("Copy &Report"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_T},
         [](ReportCommands &reports) { reports.copy(Scope::All); }},
        {ReportCommands::CopyReportOfSelected,
         QT_TR_NOOP("Copy Report of Se&lected"),
         {Qt::CTRL | Qt::Key_T},
         [](ReportCommands &reports) { reports.copy(Scope::Selected); }},
        {ReportCommands::SaveReport,
         QT_TR_NOOP("Save &Report…"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_S},
         [](ReportCommands &reports) { reports.askWhereToSave(Scope::All); }},
        {ReportCommands::SaveReportOfSelected,
         QT_TR_NOOP("Save Report of Se&lected…"),
         {Qt::CTRL | Qt::SHIFT | Qt::Key_E},
         [](ReportCommands &reports) { reports.askWhereToSave(Scope::Selected); }},
        {ReportCommands::JsonReports,
         QT_TR_NOOP("Reports as &JSON"),
         {Qt::CTRL | Qt::Key_J},
         [](ReportCommands &) {
             Settings::kReportsComparisonsAsJson.set(!Settings::kReportsComparisonsAsJson.value());
         }},
    };
    return rows;
}

ReportFormat chosenFormat()
{
    return Settings::kReportsComparisonsAsJson.value() ? ReportFormat::Json : ReportFormat::Text;
}

/// Of the whole time; the rest goes into the text.
constexpr double kPartOfPairing = 0.3;

QString nameOf(const VXDocument &document)
{
    return document.fileURL().isEmpty() ? document.displayName() : document.fileURL();
}

} // namespace

ReportCommands::ReportCommands(const ComparedDocuments &documents, ShownRecords &records, QWidget &window)
    : m_documents(documents), m_records(records), m_window(window)
{
    for (const Row &row : commandRows())
        m_actions[row.command] = row.makeAction(tr(row.text), *this, this);
    m_actions[JsonReports]->setCheckable(true);
    const auto show = [this] {
        m_actions[JsonReports]->setChecked(Settings::kReportsComparisonsAsJson.value());
    };
    Settings::kReportsComparisonsAsJson.onChange(this, show);
    show();
}

void ReportCommands::validate()
{
    const bool areTwo = m_documents.areTwo();
    for (const Command command : {CopyReport, SaveReport})
        m_actions[command]->setEnabled(areTwo);
    for (const Command command : {CopyReportOfSelected, SaveReportOfSelected})
        m_actions[command]->setEnabled(areTwo && m_records.hasAny());
}

QString ReportCommands::report(Scope scope, ReportFormat format, const WorkProgress &progress)
{
    const VXDocument *left = m_documents.document(ComparedDocuments::Left);
    const VXDocument *right = m_documents.document(ComparedDocuments::Right);
    if (!left || !right)
        return {};
    if (scope == Scope::Selected)
        m_records.finish();
    const bool isAll = scope == Scope::All;
    // Copies: while progress is shown, files may be read again.
    const InfoList leftInfos = isAll ? left->infos() : m_records.infos(ComparedDocuments::Left);
    const InfoList rightInfos = isAll ? right->infos() : m_records.infos(ComparedDocuments::Right);
    const QString leftName = nameOf(*left);
    const QString rightName = nameOf(*right);
    const CompareKey key = Settings::kCompareKey.value();
    const auto inPart = [&progress](double from, double to) -> WorkProgress {
        if (!progress)
            return {};
        return [&progress, from, to](double part) { return progress(from + part * (to - from)); };
    };
    FileDifference difference;
    difference.leftCount = std::ssize(leftInfos);
    difference.rightCount = std::ssize(rightInfos);
    std::optional<std::vector<RecordPair>> pairs =
        differingPairs(leftInfos, rightInfos, key, inPart(0, kPartOfPairing));
    if (!pairs)
        return {};
    difference.pairs = std::move(*pairs);
    QString text;
    QTextStream out(&text);
    const bool isWhole =
        writeReport(out, leftName, rightName, difference, key, format, inPart(kPartOfPairing, 1));
    return isWhole ? text : QString();
}

bool ReportCommands::save(const QString &path, Scope scope, ReportFormat format)
{
    return write(path, report(scope, format));
}

bool ReportCommands::write(const QString &path, const QString &report)
{
    CheckedFile file(path, O_WRONLY | O_CREAT | O_TRUNC);
    const TurningWindows turning(tr("Saving the report…"), &m_window);
    doApart(report.size(), [&file, &report] {
        file.write(report.toStdString());
        file.settle();
        file.close();
    });
    if (file.failure() != 0)
        DocumentPanels::present({u"WriteError"_s, 1, file.failureText(), {}, {}}, &m_window);
    return file.failure() == 0;
}

void ReportCommands::copy(Scope scope)
{
    const QString text = reportWithProgress(scope, tr("Copying the report…"));
    if (!text.isNull())
        QGuiApplication::clipboard()->setText(text);
}

/// Null when somebody has stopped it.
QString ReportCommands::reportWithProgress(Scope scope, const QString &title)
{
    LongWork work(title, &m_window);
    return report(scope, chosenFormat(), [&work](double part) { return work.goOn(part); });
}

void ReportCommands::askWhereToSave(Scope scope)
{
    const bool isJson = chosenFormat() == ReportFormat::Json;
    auto *panel = new QFileDialog(&m_window, tr("Save Report"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setNameFilters({isJson ? tr("JSON (*.json)") : tr("Text (*.txt)")});
    panel->setDefaultSuffix(isJson ? u"json"_s : u"txt"_s);
    panel->selectFile(isJson ? tr("Differences.json") : tr("Differences.txt"));
    connect(panel, &QFileDialog::fileSelected, this, [this, scope](const QString &path) {
        const QString text = reportWithProgress(scope, tr("Making the report…"));
        if (!text.isNull())
            write(path, text);
    });
    panel->open();
}

} // namespace runebook
