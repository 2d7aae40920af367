#include "editing/compare/ReportCommands.h"

#include "editing/compare/CommandRow.h"
#include "editing/compare/CompareReport.h"
#include "editing/compare/CompareSettings.h"
#include "platform/CheckedFile.h"
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

QString ReportCommands::report(Scope scope, ReportFormat format)
{
    const VXDocument *left = m_documents.document(ComparedDocuments::Left);
    const VXDocument *right = m_documents.document(ComparedDocuments::Right);
    if (!left || !right)
        return {};
    if (scope == Scope::Selected)
        m_records.finish();
    const bool isAll = scope == Scope::All;
    const InfoList &leftInfos = isAll ? left->infos() : m_records.infos(ComparedDocuments::Left);
    const InfoList &rightInfos = isAll ? right->infos() : m_records.infos(ComparedDocuments::Right);
    FileDifference difference;
    difference.leftCount = std::ssize(leftInfos);
    difference.rightCount = std::ssize(rightInfos);
    difference.pairs = differingPairs(leftInfos, rightInfos, Settings::kCompareKey.value());
    QString text;
    QTextStream out(&text);
    writeReport(out, nameOf(*left), nameOf(*right), difference, Settings::kCompareKey.value(), format);
    return text;
}

bool ReportCommands::save(const QString &path, Scope scope, ReportFormat format)
{
    CheckedFile file(path, O_WRONLY | O_CREAT | O_TRUNC);
    file.write(report(scope, format).toStdString());
    file.settle();
    file.close();
    if (file.failure() != 0)
        DocumentPanels::present({u"WriteError"_s, 1, file.failureText(), {}, {}}, &m_window);
    return file.failure() == 0;
}

void ReportCommands::copy(Scope scope)
{
    QGuiApplication::clipboard()->setText(report(scope, chosenFormat()));
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
    connect(panel, &QFileDialog::fileSelected, this,
            [this, scope](const QString &path) { save(path, scope, chosenFormat()); });
    panel->open();
}

} // namespace runebook
