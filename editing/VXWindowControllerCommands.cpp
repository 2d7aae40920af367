// The commands of the document window on its selected records.
#include "editing/CodePointTokens.h"
#include "editing/DetailPane.h"
#include "editing/EditCommands.h"
#include "editing/EditNames.h"
#include "editing/FieldEditing.h"
#include "editing/GlyphColumns.h"
#include "editing/GlyphCellDelegate.h"
#include "editing/GlyphTableView.h"
#include "editing/GoToPanel.h"
#include "editing/ProblemsPane.h"
#include "editing/SortNameDialog.h"
#include "editing/SortNumbering.h"
#include "editing/VXFindReplaceWindowController.h"
#include "editing/VXSearchField.h"
#include "editing/VXWindowController.h"
#include "model/StringHelpers.h"
#include "platform/DesktopApplication.h"
#include "platform/DocumentController.h"
#include "platform/MemoryRoom.h"
#include "platform/PlainText.h"
#include "platform/UserDefaults.h"

#include <QApplication>
#include <QClipboard>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <new>
#include <numeric>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

/// Inserts the records of the clipboard behind the selected one, or at the end, as one step. They are read before
/// anything is changed.
InfoList pasteInto(VXDocument &document, const InfoList &selected, const QMimeData &clipboard, LeftOut &leftOut)
{
    InfoList pasted = infosOfClipboard(clipboard, leftOut);
    if (pasted.empty())
        return pasted;
    // The table, the selection, the undo history and what is known of problems grow as well.
    constexpr std::size_t kForEachRow = 64;
    constexpr std::size_t kForEachPasted = 896;
    ensureRoom(document.infos().size() * kForEachRow + pasted.size() * kForEachPasted);
    const UndoGroup group(document.undoManager(), editName(VXWindowController::tr("Paste"),
                                   VXWindowController::tr("Paste %1 Records"),
                                   static_cast<qsizetype>(pasted.size())));
    if (selected.size() != 1) {
        document.addInfos(pasted);
        return pasted;
    }
    IndexSet places(pasted.size());
    std::iota(places.begin(), places.end(), document.indexOfObjectInInfos(selected.front()) + 1);
    document.insertObjectsInInfosAtIndexes(pasted, places);
    return pasted;
}

} // namespace

bool VXWindowController::commitEditing()
{
    return commitEditing(nullptr);
}

bool VXWindowController::commitEditing(Error *refusal)
{
    Error reason;
    if (m_tableView->cellDelegate().commitEditor(&reason) && m_detailPane->commitEditing(&reason))
        return true;
    // Where the reason is shown must be seen, whichever window was asked to save, close or run.
    if (isVisible() && !isActiveWindow())
        DocumentController::shared().bringToFront(&m_document);
    return fail(refusal, reason);
}

void VXWindowController::copy()
{
    if (!commitEditing())
        return;
    if (std::unique_ptr<QMimeData> records = clipboardData(selectedInfos()))
        QApplication::clipboard()->setMimeData(records.release());
}

void VXWindowController::cut()
{
    if (!commitEditing())
        return;
    copy();
    const UndoGroup group(m_document.undoManager(),
                          editName(tr("Cut"), tr("Cut %1 Records"), m_infolistController->selectedCount()));
    delete_();
}

void VXWindowController::paste()
{
    const QMimeData *clipboard = QApplication::clipboard()->mimeData();
    if (!clipboard || !clipboard->hasText() || !commitEditing())
        return;
    InfoList pasted;
    LeftOut leftOut;
    try {
        pasted = pasteInto(m_document, selectedInfos(), *clipboard, leftOut);
    } catch (const std::bad_alloc &) {
        showMessage(tr("There is not enough memory for what is on the clipboard. Nothing was pasted."));
    }
    if (leftOut.records > 0)
        showMessage(leftOut.text());
    if (pasted.empty())
        return;
    try {
        m_infolistController->setSelectedObjects(pasted);
        revealRow(m_infolistController->rowOfObject(pasted.front()));
    } catch (const std::bad_alloc &) {
        // They are there; only to select them takes more than is left.
    }
}

void VXWindowController::delete_()
{
    if (m_infolistController->selectedCount() == 0 || !commitEditing())
        return;
    const UndoGroup group(
        m_document.undoManager(),
        editName(tr("Delete"), tr("Delete %1 Records"), m_infolistController->selectedCount()));
    m_infolistController->remove();
}

/// How many and which records a removal takes.
QString VXWindowController::removalText() const
{
    constexpr qsizetype kNamed = 6;
    const InfoList selected = selectedInfos();
    const auto number = [this](qsizetype count) { return locale().toString(static_cast<qlonglong>(count)); };
    QStringList names;
    for (qsizetype i = 0; i < qMin(std::ssize(selected), kNamed); ++i) {
        const QString name = cellDisplayText(*selected[static_cast<std::size_t>(i)], GlyphField::Name);
        names << (name.isEmpty() ? tr("(no name)") : name.left(60));
    }
    QString list = names.join(u", "_s);
    if (std::ssize(selected) > kNamed)
        list = tr("%1 and %2 more").arg(list, number(std::ssize(selected) - kNamed));
    return tr("%1 of %2 glyphs: %3").arg(number(std::ssize(selected)), number(m_document.countOfInfos()), list);
}

void VXWindowController::removeSelectedInfos()
{
    if (m_infolistController->selectedCount() == 0 || !commitEditing())
        return;
    auto *box = new QMessageBox(this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setIcon(QMessageBox::Warning);
    setPlainTexts(*box, tr("Do you really want to remove all selected entries?"), removalText());
    QPushButton *remove = box->addButton(tr("Remove"), QMessageBox::AcceptRole);
    QPushButton *cancel = box->addButton(tr("Cancel"), QMessageBox::RejectRole);
    box->setDefaultButton(remove);
    box->setEscapeButton(cancel);
    connect(remove, &QPushButton::clicked, this, [this] {
        const UndoGroup group(
            m_document.undoManager(),
            editName(tr("Remove"), tr("Remove %1 Records"), m_infolistController->selectedCount()));
        m_infolistController->remove();
    });
    box->open();
}

void VXWindowController::addInfo()
{
    if (!commitEditing())
        return;
    const UndoGroup group(m_document.undoManager(), tr("Add Glyph"));
    m_infolistController->add();
    revealRow(m_infolistController->selectionIndexes().empty()
                  ? -1
                  : m_infolistController->selectionIndexes().front());
    m_detailPane->editName();
}

void VXWindowController::duplicateSelectedInfos()
{
    const InfoList selected = selectedInfos();
    if (selected.empty() || !commitEditing())
        return;
    InfoList copies;
    IndexSet places;
    const qsizetype first = m_document.indexOfObjectInInfos(selected.back()) + 1;
    for (const InfoPtr &info : selected) {
        places.push_back(first + static_cast<qsizetype>(copies.size()));
        copies.push_back(info->copy());
    }
    const UndoGroup group(m_document.undoManager(),
                          editName(tr("Duplicate"), tr("Duplicate %1 Records"), std::ssize(copies)));
    m_document.insertObjectsInInfosAtIndexes(copies, places);
    m_infolistController->setSelectedObjects(copies);
    revealRow(m_infolistController->rowOfObject(copies.front()));
}

void VXWindowController::moveNameToAltName()
{
    if (!commitEditing())
        return;
    const LeftOut leftOut = moveNamesToAltNames(m_document, selectedInfos());
    if (leftOut.records > 0)
        showMessage(leftOut.text());
}

void VXWindowController::makeLegacyName()
{
    if (!commitEditing())
        return;
    const InfoList selected = selectedInfos();
    if (selected.empty())
        return;
    const UndoGroup group(m_document.undoManager(), tr("Make Legacy Name"));
    selected.front()->generateUniName();
}

void VXWindowController::setSortName()
{
    if (!commitEditing())
        return;
    SortNumbering::registerDefaults();
    m_sortNameDialog = new SortNameDialog(m_infolistController->selectedCount(), this);
    m_sortNameDialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_sortNameDialog, &QDialog::finished, this, [this](int code) {
        if (code != QDialog::Accepted)
            return;
        const SortNumbering numbering = SortNumbering::fromDefaults();
        const QStringList samples {numbering.nameForNumber(1), numbering.nameForNumber(-1)};
        if (const QString refusal = refusalOfEdited(GlyphField::SortName, samples); !refusal.isNull()) {
            showMessage(refusal);
            return;
        }
        const UndoGroup group(m_document.undoManager(),
                              editName(tr("Number Sort Names"), tr("Number Sort Names of %1 Records"),
                                       m_infolistController->selectedCount()));
        numbering.apply(selectedInfos());
    });
    m_sortNameDialog->open();
}

void VXWindowController::sortNameOK()
{
    if (m_sortNameDialog)
        m_sortNameDialog->accept();
}

void VXWindowController::sortNameCancel()
{
    if (m_sortNameDialog)
        m_sortNameDialog->reject();
}

void VXWindowController::performFindPanelAction(int tag)
{
    constexpr int kShowFind = 1;
    constexpr int kShowReplace = 12;
    if (tag == kShowFind) {
        m_searchField->setFocus(Qt::ShortcutFocusReason);
        m_searchField->selectAll();
    } else if (tag == kShowReplace && commitEditing()) {
        auto *panel = new VXFindReplaceWindowController;
        connect(panel, &VXFindReplaceWindowController::ended, panel, &QObject::deleteLater);
        if (m_infolistController->selectedCount() > 0)
            panel->setSelectedInfos(selectedInfos());
        else
            panel->setShownInfos(m_infolistController->arrangedObjects());
        QList<qsizetype> before;
        if (m_problems->isComplete()) {
            const auto counts = m_problems->counts();
            before = QList<qsizetype>(counts.begin(), counts.end());
        }
        connect(panel, &VXFindReplaceWindowController::replaced, this,
                [this, before](const ReplaceSummary &summary) { tellOfNewProblems(before, summary); });
        panel->runDialogModalForWindow(this, this);
    }
}

void VXWindowController::showInUnicodeChecker()
{
    const InfoList selected = selectedInfos();
    if (selected.size() != 1 || selected.front()->unicode().size() < 4)
        return;
    const quint32 codePoint = hexStringToInt(selected.front()->unicode());
    if (!DesktopApplication::showCharacter(
            UserDefaults::standard().stringForKey(u"VXUnicodeCheckerApplication"_s), codePoint))
        QApplication::beep();
}

void VXWindowController::selectAll()
{
    m_tableView->selectAll();
}

void VXWindowController::selectSame(const QString &key)
{
    const std::optional<GlyphField> field = fieldForKey(key);
    if (!field || !commitEditing())
        return;
    const InfoList same =
        infosWithSameValue(m_infolistController->arrangedObjects(), selectedInfos(), *field);
    m_infolistController->setSelectedObjectsKeepingCurrent(same);
}

void VXWindowController::goToInfo()
{
    auto *panel = new GoToPanel(m_document, this);
    connect(panel, &GoToPanel::chosen, this, &VXWindowController::showInfo);
    panel->open();
}

void VXWindowController::showInfo(const InfoPtr &info)
{
    if (!info || info->listings() == 0 || !commitEditing())
        return;
    if (m_infolistController->rowOfObject(info) < 0) {
        m_searchField->setStringValue(u""_s);
        if (m_problemsPane)
            m_problemsPane->setFiltering(false);
        filterInfos();
    }
    m_tableView->goToRow(static_cast<int>(m_infolistController->rowOfObject(info)));
    m_tableView->setFocus();
}

void VXWindowController::writeShownOrder()
{
    if (!commitEditing())
        return;
    m_infolistController->writeArrangedOrder();
    m_tableView->resetSortIndicator();
}

void VXWindowController::revealRow(qsizetype row)
{
    if (row >= 0)
        m_tableView->scrollTo(m_infolistController->index(static_cast<int>(row), 0));
}

QStringList VXWindowController::tokenFieldShouldAddObjectsAtIndex(QObject *, const QStringList &tokens,
                                                                  int) const
{
    return normalizedCodePointTokens(tokens);
}
