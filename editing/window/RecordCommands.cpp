#include "editing/window/RecordCommands.h"

#include "editing/fields/EditNames.h"
#include "editing/fields/FieldEditing.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/records/GlyphTableView.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/records/SortNameDialog.h"
#include "editing/records/SortNumbering.h"
#include "editing/window/DetailPane.h"
#include "editing/window/EditCommands.h"
#include "editing/window/NameCommands.h"
#include "editing/window/WindowSettings.h"
#include "model/StringHelpers.h"
#include "platform/DesktopApplication.h"
#include "platform/MemoryRoom.h"
#include "platform/PlainLabel.h"
#include "platform/TurningWindows.h"

#include <QApplication>
#include <QClipboard>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <new>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// Inserts the records of the clipboard behind the selected one, or at the end, as one step. They are read
/// before anything is changed.
InfoList pasteInto(VXDocument &document, const InfoList &selected, const QMimeData &clipboard,
                   LeftOut &leftOut)
{
    InfoList pasted = infosOfClipboard(clipboard, leftOut);
    if (pasted.empty())
        return pasted;
    // The table, the selection, the undo history and what is known of problems grow as well.
    constexpr std::size_t kForEachRow = 64;
    constexpr std::size_t kForEachPasted = 896;
    ensureRoom(document.infos().size() * kForEachRow + pasted.size() * kForEachPasted);
    const UndoGroup group(document.undoManager(), editNameOf(RecordCommands::tr("Paste %1"), pasted));
    if (selected.size() != 1) {
        document.addInfos(pasted);
        return pasted;
    }
    const qsizetype first = document.indexOfObjectInInfos(selected.front()) + 1;
    document.insertObjectsInInfosAtIndexes(pasted, IndexSet::run(first, pasted.size()));
    return pasted;
}

} // namespace

RecordCommands::RecordCommands(const WindowParts &parts, QObject *parent)
    : QObject(parent), m_parts(parts) { }

InfoList RecordCommands::selectedInfos() const
{
    return m_parts.list.selectedObjects();
}

void RecordCommands::copy()
{
    if (!m_parts.commitEditing())
        return;
    const TurningWindows turning(tr("Copying…"), QApplication::activeWindow());
    if (std::unique_ptr<QMimeData> records = clipboardData(selectedInfos()))
        QApplication::clipboard()->setMimeData(records.release());
}

void RecordCommands::cut()
{
    if (!m_parts.commitEditing())
        return;
    copy();
    const UndoGroup group(m_parts.document.undoManager(), editNameOf(tr("Cut %1"), selectedInfos()));
    deleteSelected();
}

void RecordCommands::paste()
{
    if (m_parts.commitEditing() && !pasteRecords())
        Q_EMIT foreignPasteRequested();
}

/// False when there are none on the clipboard.
bool RecordCommands::pasteRecords()
{
    const QMimeData *clipboard = QApplication::clipboard()->mimeData();
    if (!clipboard || !clipboard->hasText())
        return false;
    InfoList pasted;
    LeftOut leftOut;
    const TurningWindows turning(tr("Pasting…"), QApplication::activeWindow());
    try {
        pasted = pasteInto(m_parts.document, selectedInfos(), *clipboard, leftOut);
    } catch (const std::bad_alloc &) {
        m_parts.showMessage(
            tr("There is not enough memory for what is on the clipboard. Nothing was pasted."));
        return true;
    }
    if (leftOut.records > 0)
        m_parts.showMessage(leftOut.text());
    if (pasted.empty())
        return leftOut.records > 0;
    try {
        m_parts.list.setSelectedObjects(pasted);
        revealRow(m_parts.list.rowOfObject(pasted.front()));
    } catch (const std::bad_alloc &) {
        // They are there; only to select them takes more than is left.
    }
    return true;
}

void RecordCommands::deleteSelected()
{
    if (m_parts.list.selectedCount() == 0 || !m_parts.commitEditing())
        return;
    const UndoGroup group(m_parts.document.undoManager(), editNameOf(tr("Delete %1"), selectedInfos()));
    m_parts.list.remove();
}

/// How many and which records a removal takes.
QString RecordCommands::removalText() const
{
    constexpr qsizetype kNamed = 6;
    const InfoList selected = selectedInfos();
    const auto number = [](qsizetype count) { return QLocale().toString(static_cast<qlonglong>(count)); };
    QStringList names;
    for (qsizetype i = 0; i < qMin(std::ssize(selected), kNamed); ++i) {
        const QString name = cellDisplayText(*selected[static_cast<std::size_t>(i)], GlyphField::Name);
        names << (name.isEmpty() ? tr("(no name)") : name.left(60));
    }
    QString list = names.join(u", "_s);
    if (std::ssize(selected) > kNamed)
        list = tr("%1 and %2 more").arg(list, number(std::ssize(selected) - kNamed));
    return tr("%1 of %2 glyphs: %3")
        .arg(number(std::ssize(selected)), number(m_parts.document.countOfInfos()), list);
}

void RecordCommands::remove()
{
    if (m_parts.list.selectedCount() == 0 || !m_parts.commitEditing())
        return;
    auto *box = new QMessageBox(&m_parts.window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setIcon(QMessageBox::Warning);
    setPlainTexts(*box, tr("Do you really want to remove all selected entries?"), removalText());
    NameCommands::tellOfUses(*box, m_parts.document, selectedInfos());
    QPushButton *remove = box->addButton(tr("Remove"), QMessageBox::AcceptRole);
    QPushButton *cancel = box->addButton(tr("Cancel"), QMessageBox::RejectRole);
    box->setDefaultButton(remove);
    box->setEscapeButton(cancel);
    connect(remove, &QPushButton::clicked, this, [this] {
        const UndoGroup group(m_parts.document.undoManager(), editNameOf(tr("Remove %1"), selectedInfos()));
        m_parts.list.remove();
    });
    box->open();
}

void RecordCommands::add()
{
    if (!m_parts.commitEditing())
        return;
    const UndoGroup group(m_parts.document.undoManager(), tr("Add Glyph"));
    m_parts.list.add();
    revealRow(m_parts.list.selectionIndexes().empty() ? -1 : m_parts.list.selectionIndexes().front());
    m_parts.pane.editName();
}

void RecordCommands::moveNamesToAltNames()
{
    if (!m_parts.commitEditing())
        return;
    const LeftOut leftOut = runebook::moveNamesToAltNames(m_parts.document, selectedInfos());
    if (leftOut.records > 0)
        m_parts.showMessage(leftOut.text());
}

void RecordCommands::makeLegacyName()
{
    if (!m_parts.commitEditing())
        return;
    const InfoList selected = selectedInfos();
    if (selected.empty())
        return;
    const UndoGroup group(m_parts.document.undoManager(),
                          editNameOf(tr("Make Legacy Name of %1"), {selected.front()}));
    selected.front()->generateUniName();
}

void RecordCommands::numberSortNames()
{
    if (!m_parts.commitEditing())
        return;
    SortNumbering::registerDefaults();
    m_sortNameDialog = new SortNameDialog(m_parts.list.selectedCount(), &m_parts.window);
    m_sortNameDialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_sortNameDialog, &QDialog::finished, this, [this](int code) {
        if (code != QDialog::Accepted)
            return;
        const SortNumbering numbering = SortNumbering::fromDefaults();
        const QStringList samples {numbering.nameForNumber(1), numbering.nameForNumber(-1)};
        if (const QString refusal = refusalOfEdited(GlyphField::SortName, samples); !refusal.isNull()) {
            m_parts.showMessage(refusal);
            return;
        }
        const UndoGroup group(m_parts.document.undoManager(),
                              editNameOf(tr("Number Sort Names of %1"), selectedInfos()));
        numbering.apply(selectedInfos());
    });
    m_sortNameDialog->open();
}

SortNameDialog *RecordCommands::sortNameDialog() const
{
    return m_sortNameDialog;
}

void RecordCommands::showInCharacterApplication()
{
    const InfoList selected = selectedInfos();
    if (selected.size() != 1 || selected.front()->unicode().size() < 4)
        return;
    const quint32 codePoint = hexStringToInt(selected.front()->unicode());
    if (!DesktopApplication::showCharacter(Settings::kCharacterApplication.value(), codePoint))
        QApplication::beep();
}

void RecordCommands::selectAll()
{
    m_parts.table.selectAll();
}

void RecordCommands::selectSame(GlyphField field)
{
    if (!m_parts.commitEditing())
        return;
    const InfoList same = infosWithSameValue(m_parts.list.arrangedObjects(), selectedInfos(), field);
    m_parts.list.setSelectedObjectsKeepingCurrent(same);
}

void RecordCommands::writeShownOrder()
{
    if (!m_parts.commitEditing())
        return;
    m_parts.list.writeArrangedOrder();
    m_parts.table.resetSortIndicator();
}

void RecordCommands::revealRow(qsizetype row)
{
    if (row >= 0)
        m_parts.table.scrollTo(m_parts.list.index(static_cast<int>(row), 0));
}

} // namespace runebook
