// What the compare window overlooks, what it counts, and the reports that it gives.
#include "editing/compare/CompareMenus.h"
#include "editing/compare/CompareReport.h"
#include "editing/compare/CompareSettings.h"
#include "editing/compare/VXCompareDataWindow.h"
#include "editing/fields/GlyphColumns.h"
#include "platform/CheckedFile.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentPanels.h"
#include "ui_VXCompareDataWindow.h"

#include <QClipboard>
#include <QFileDialog>
#include <QGuiApplication>
#include <bit>
#include <fcntl.h>

using namespace runebook;
using namespace Qt::StringLiterals;

// Overlooking

CompareOptions VXCompareDataWindow::options() const
{
    CompareOptions options;
    options.ignoresCase = Settings::kComparesWithoutCase.value();
    options.ignoresSpaces = Settings::kComparesWithoutSpaces.value();
    for (const QString &key : Settings::kComparesWithoutFields.value()) {
        if (const std::optional<GlyphField> field = fieldForKey(key))
            options.ignoredFields |= bitOf(*field);
    }
    return options;
}

void VXCompareDataWindow::toggleIgnoreCase()
{
    Settings::kComparesWithoutCase.set(!Settings::kComparesWithoutCase.value());
}

void VXCompareDataWindow::toggleIgnoreSpaces()
{
    Settings::kComparesWithoutSpaces.set(!Settings::kComparesWithoutSpaces.value());
}

void VXCompareDataWindow::setFieldIgnored(const QString &key, bool isIgnored)
{
    QStringList keys = Settings::kComparesWithoutFields.value();
    keys.removeAll(key);
    if (isIgnored)
        keys << key;
    Settings::kComparesWithoutFields.setOrReset(keys);
}

/// "Overlooked: case, Description"; null where nothing is.
QString VXCompareDataWindow::overlooked() const
{
    const CompareOptions options = this->options();
    QStringList words;
    if (options.ignoresCase)
        words << tr("case");
    if (options.ignoresSpaces)
        words << tr("spaces");
    for (const ComparedField &field : comparedFields()) {
        if (options.ignores(field.field))
            words << titleOf(field);
    }
    return words.isEmpty() ? QString() : tr("Overlooked: %1").arg(words.join(u", "_s));
}

// Counts of fields

/// The field that the listed records are to differ in; nothing for any.
std::optional<GlyphField> VXCompareDataWindow::filteredField() const
{
    return fieldForKey(m_ui->fieldFilter->currentData().toString());
}

/// Offers each field in which records differ with their number. The choice stays while it is offered.
void VXCompareDataWindow::showFieldCounts()
{
    const QString chosen = m_ui->fieldFilter->currentData().toString();
    std::array<qsizetype, 32> counts {};
    for (const FieldBits bits : m_found.fields) {
        for (FieldBits rest = bits; rest != 0; rest &= rest - 1)
            ++counts.at(static_cast<std::size_t>(std::countr_zero(rest)));
    }
    m_ui->fieldFilter->clear();
    m_ui->fieldFilter->addItem(tr("Any Field"), QString());
    for (qsizetype i = 0; i < comparedFields().size(); ++i) {
        const qsizetype count = counts.at(static_cast<std::size_t>(i));
        if (count > 0) {
            const ComparedField &field = comparedFields().at(i);
            m_ui->fieldFilter->addItem(u"%1  %2"_s.arg(titleOf(field), locale().toString(qlonglong(count))),
                                       keyOfField(field.field));
        }
    }
    const int row = m_ui->fieldFilter->findData(chosen);
    m_ui->fieldFilter->setCurrentIndex(row < 0 ? 0 : row);
    m_ui->fieldFilterRow->setVisible(mode() == CompareMode::Different && m_ui->fieldFilter->count() > 1);
}

/// Those of the keys found that the chosen field lets through.
QStringList VXCompareDataWindow::keysToList() const
{
    const std::optional<GlyphField> field = filteredField();
    if (!field || m_comparedMode != CompareMode::Different)
        return m_found.keys;
    QStringList keys;
    const FieldBits bit = bitOf(*field);
    for (std::size_t i = 0; i < m_found.fields.size(); ++i) {
        if (m_found.fields[i] & bit)
            keys << m_found.keys.at(static_cast<qsizetype>(i));
    }
    return keys;
}

void VXCompareDataWindow::filterByField(const QString &key)
{
    const int row = m_ui->fieldFilter->findData(key);
    m_ui->fieldFilter->setCurrentIndex(row < 0 ? 0 : row);
    showKeys(keysToList());
}

// Reports

QString VXCompareDataWindow::reportOfFormat(const QString &scope, const QString &format)
{
    const VXDocument *left = document(CompareSheet::Left);
    const VXDocument *right = document(CompareSheet::Right);
    if (!left || !right)
        return {};
    const bool isAll = scope != "selected"_L1;
    const InfoList &leftInfos = isAll ? left->infos() : leftInfoList()->infos();
    const InfoList &rightInfos = isAll ? right->infos() : rightInfoList()->infos();
    FileDifference difference;
    difference.leftCount = std::ssize(leftInfos);
    difference.rightCount = std::ssize(rightInfos);
    difference.pairs = differingPairs(leftInfos, rightInfos, key());
    const auto nameOf = [](const VXDocument &document) {
        return document.fileURL().isEmpty() ? document.displayName() : document.fileURL();
    };
    QString text;
    QTextStream out(&text);
    writeReport(out, nameOf(*left), nameOf(*right), difference, key(),
                format == "json"_L1 ? ReportFormat::Json : ReportFormat::Text);
    return text;
}

bool VXCompareDataWindow::saveReportOfFormat(const QString &path, const QString &scope, const QString &format)
{
    CheckedFile file(path, O_WRONLY | O_CREAT | O_TRUNC);
    file.write(reportOfFormat(scope, format).toStdString());
    file.settle();
    file.close();
    if (file.failure() != 0)
        DocumentPanels::present({u"WriteError"_s, 1, file.failureText(), {}, {}}, this);
    return file.failure() == 0;
}

namespace {

QString reportFormat()
{
    return Settings::kReportsComparisonsAsJson.value() ? u"json"_s : u"text"_s;
}

} // namespace

void VXCompareDataWindow::toggleJsonReports()
{
    Settings::kReportsComparisonsAsJson.set(!Settings::kReportsComparisonsAsJson.value());
}

void VXCompareDataWindow::copyReport()
{
    QGuiApplication::clipboard()->setText(reportOfFormat(u"all"_s, reportFormat()));
}

void VXCompareDataWindow::copyReportOfSelected()
{
    QGuiApplication::clipboard()->setText(reportOfFormat(u"selected"_s, reportFormat()));
}

void VXCompareDataWindow::askToSaveReport()
{
    askWhereToSave(u"all"_s);
}

void VXCompareDataWindow::askToSaveReportOfSelected()
{
    askWhereToSave(u"selected"_s);
}

void VXCompareDataWindow::askWhereToSave(const QString &scope)
{
    const bool isJson = reportFormat() == "json"_L1;
    auto *panel = new QFileDialog(this, tr("Save Report"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setNameFilters({isJson ? tr("JSON (*.json)") : tr("Text (*.txt)")});
    panel->setDefaultSuffix(isJson ? u"json"_s : u"txt"_s);
    panel->selectFile(isJson ? tr("Differences.json") : tr("Differences.txt"));
    connect(panel, &QFileDialog::fileSelected, this,
            [this, scope](const QString &path) { saveReportOfFormat(path, scope, reportFormat()); });
    panel->open();
}
