#include "editing/window/TableCommands.h"

#include "document/TableReader.h"
#include "editing/fields/FieldEditing.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/records/GlyphTableView.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/tables/ExportDialog.h"
#include "editing/tables/PasteSheet.h"
#include "editing/tables/TableClipboard.h"
#include "platform/CallLater.h"
#include "platform/LongWork.h"
#include "platform/MemoryRoom.h"
#include "platform/PlainLabel.h"
#include "platform/TurningWindows.h"
#include "platform/Unattended.h"
#include "platform/UndoManager.h"

#include <QApplication>
#include <QClipboard>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <new>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kSliceMs = 8;

Error refusal(const QString &text)
{
    return {u"TableError"_s, 1, text, {}, {}};
}

QString number(qsizetype count)
{
    return QLocale().toString(qlonglong(count));
}

} // namespace

TableCommands::TableCommands(const WindowParts &parts, QObject *parent) : QObject(parent), m_parts(parts)
{
    m_parts.table.setDragData(
        [this] { return tableDataOnDemand(m_parts.list.selectedObjects(), m_parts.table.shownFields()); });
}

InfoList TableCommands::infosOf(TableRecords which) const
{
    switch (which) {
    case TableRecords::Selected:
        return m_parts.list.selectedObjects();
    case TableRecords::Shown:
        return m_parts.list.arrangedObjects();
    case TableRecords::All:
        break;
    }
    return m_parts.document.infos();
}

// Copying

void TableCommands::copyAsTable()
{
    if (!m_parts.commitEditing())
        return;
    const bool hasSelection = m_parts.list.selectedCount() > 0;
    const InfoList infos = infosOf(hasSelection ? TableRecords::Selected : TableRecords::Shown);
    const TurningWindows turning(tr("Copying…"), QApplication::activeWindow());
    if (std::unique_ptr<QMimeData> data = tableData(infos, m_parts.table.shownFields()))
        QApplication::clipboard()->setMimeData(data.release());
}

// Pasting

PasteTarget TableCommands::target() const
{
    PasteTarget target {m_parts.document, m_parts.list.selectedObjects(), {}};
    if (target.selected.empty())
        return target;
    const InfoList shown = m_parts.list.arrangedObjects();
    const qsizetype first = m_parts.list.rowOfObject(target.selected.front());
    target.below.assign(shown.begin() + qMax<qsizetype>(0, first), shown.end());
    return target;
}

/// The fields of the columns that are shown, from the current one on.
std::vector<GlyphField> TableCommands::columnsFromCurrent() const
{
    std::vector<GlyphField> fields = m_parts.table.shownFields();
    const int current = m_parts.table.currentIndex().column();
    if (current < 0)
        return fields;
    const auto it =
        std::find(fields.begin(), fields.end(), glyphColumns()[static_cast<std::size_t>(current)].field);
    if (it != fields.end())
        fields.erase(fields.begin(), it);
    return fields;
}

void TableCommands::pasteCells()
{
    const QMimeData *clipboard = QApplication::clipboard()->mimeData();
    if (!clipboard || !mayHoldTable(*clipboard))
        return;
    PastedTable table = tableOfClipboard(*clipboard);
    if (table.isEmpty())
        return;
    if (isUnattended()) {
        Error error;
        if (paste(table, usualChoices(table, columnsFromCurrent(), target()), &error).isNull())
            m_parts.showMessage(error.text());
        return;
    }
    if (!table.isOneCell() || !askAboutOneCell(table))
        openSheet(std::move(table));
}

/// False when there is nowhere to put the value.
bool TableCommands::askAboutOneCell(const PastedTable &table)
{
    const InfoList selected = m_parts.list.selectedObjects();
    const std::vector<GlyphField> columns = columnsFromCurrent();
    if (selected.empty() || columns.empty())
        return false;
    const GlyphField field = columns.front();
    const QString value = table.cell(0, 0);
    auto *box = new QMessageBox(&m_parts.window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setIcon(QMessageBox::Question);
    const QString question = selected.size() == 1
        ? tr("Paste into %1 of the selected record?").arg(fieldTitle(field))
        : tr("Paste into %1 of all %2 selected records?")
              .arg(fieldTitle(field), number(std::ssize(selected)));
    setPlainTexts(*box, question, tr("The new value is “%1”.").arg(cellDisplayText(value)));
    QPushButton *paste = box->addButton(tr("Paste"), QMessageBox::AcceptRole);
    box->setEscapeButton(box->addButton(tr("Cancel"), QMessageBox::RejectRole));
    box->setDefaultButton(paste);
    connect(paste, &QPushButton::clicked, this, [this, field, value] {
        Error error;
        if (!setFieldFromText(m_parts.document, m_parts.list.selectedObjects(), field, value, &error))
            m_parts.showMessage(error.text());
    });
    box->open();
    return true;
}

void TableCommands::openSheet(PastedTable table)
{
    auto *sheet = new PasteSheet(std::move(table), columnsFromCurrent(), target(), &m_parts.window);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    // Once the sheet is closed: long work turns the event loop, which may delete the sheet in the middle of
    // it.
    connect(sheet, &QDialog::accepted, this, [this, sheet] {
        callLater(this, [this, pasted = sheet->table(), choices = sheet->choices()] {
            Error error;
            if (paste(pasted, choices, &error).isNull() && !error.domain.isEmpty())
                m_parts.showMessage(error.text());
        });
    });
    sheet->open();
}

QString TableCommands::pasteText(const QString &text, Error *error)
{
    const PastedTable table = tableOfText(text);
    if (!m_parts.commitEditing(error))
        return {};
    return paste(table, usualChoices(table, columnsFromCurrent(), target()), error);
}

PastePlan TableCommands::planned(const PastedTable &table, const PasteChoices &choices) const
{
    const TurningWindows turning(tr("Pasting…"), QApplication::activeWindow());
    return PastePlan::madeApart(table, choices, target());
}

/// Null without an error when the user has stopped it.
QString TableCommands::paste(const PastedTable &table, const PasteChoices &choices, Error *error)
{
    try {
        const PastePlan plan = planned(table, choices);
        if (const QString obstacle = plan.obstacle(); !obstacle.isNull())
            return fail(error, refusal(obstacle)), QString();
        constexpr std::size_t kForEachChange = 64;
        constexpr std::size_t kForEachAdded = 896;
        ensureRoom(std::size_t(plan.counts().fields) * kForEachChange
                   + std::size_t(plan.counts().added) * kForEachAdded);
        const InfoList selected = m_parts.list.selectedObjects();
        VXDocument &document = m_parts.document;
        // As records are pasted.
        const qsizetype place = choices.rows == PasteRows::AsNew && selected.size() == 1
            ? document.indexOfObjectInInfos(selected.front()) + 1
            : document.countOfInfos();
        LongWork work(tr("Pasting…"), &m_parts.window);
        const UndoGroup group(document.undoManager(), tr("Paste Table"));
        PastePlan::Progress progress;
        while (!plan.apply(document, place, QDeadlineTimer(kSliceMs), progress)) {
            if (!work.goOn(double(progress.next) / double(plan.rows().size()))) {
                document.undoManager()->abandonGroup();
                return {};
            }
        }
        if (!progress.added.empty()) {
            m_parts.list.setSelectedObjects(progress.added);
            // The message takes the place of the last rows.
            QTimer::singleShot(0, this, [this, first = progress.added.front()] {
                const qsizetype row = m_parts.list.rowOfObject(first);
                m_parts.table.scrollTo(m_parts.list.index(static_cast<int>(row), 0));
            });
        }
        m_parts.showMessage(plan.summary());
        return plan.summary();
    } catch (const std::bad_alloc &) {
        fail(error,
             refusal(tr("There is not enough memory for what is on the clipboard. Nothing was pasted.")));
        return {};
    }
}

// Exporting

void TableCommands::exportTable()
{
    if (!m_parts.commitEditing())
        return;
    auto *dialog = new ExportDialog(
        {infosOf(TableRecords::All), infosOf(TableRecords::Shown), infosOf(TableRecords::Selected)},
        m_parts.document.fileURL(), &m_parts.window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &ExportDialog::exported, this, [this](qsizetype records, const QString &path) {
        m_parts.showMessage(
            tr("Exported to “%1”. Records: %2.").arg(QFileInfo(path).fileName(), number(records)));
    });
    dialog->open();
}

bool TableCommands::exportTable(const QString &path, const QStringList &fields, const QString &records,
                                Error *error)
{
    if (!m_parts.commitEditing(error))
        return false;
    TableChoices choices;
    for (const QString &key : fields) {
        const std::optional<GlyphField> field = fieldOfHeading(key);
        if (!field)
            return fail(error, refusal(tr("“%1” is no field.").arg(key)));
        choices.fields.push_back(*field);
    }
    if (fields.isEmpty())
        choices.fields.assign(tableFields().begin(), tableFields().end());
    choices.separator = separatorOfSuffix(path);
    const qsizetype which = QStringList {u"all"_s, u"shown"_s, u"selected"_s}.indexOf(records);
    if (which < 0)
        return fail(error, refusal(tr("“%1” is none of all, shown, selected.").arg(records)));
    if (const Error objection = objectionToTarget(path, m_parts.document.fileURL());
        !objection.domain.isEmpty())
        return fail(error, objection);
    return runebook::exportTable(
        infosOf(TableRecords(which)), choices, path, [](double) { return true; }, error);
}

} // namespace runebook
