#include "editing/compare/CompareEditing.h"

#include "editing/compare/CommandRow.h"
#include "editing/compare/CompareSheet.h"
#include "platform/MenuText.h"
#include "platform/UndoManager.h"
#include "platform/documents/CommonMenus.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentPanels.h"

#include <QMenu>
#include <QPlainTextEdit>

namespace runebook {

namespace {

using Row = CommandRow<CompareEditing, CompareEditing::Command>;

const std::vector<Row> &commandRows()
{
    static const std::vector<Row> rows {
        {CompareEditing::Save, QT_TR_NOOP("&Save"), standardKeys(QKeySequence::Save), &CompareEditing::save},
        {CompareEditing::Undo, QT_TR_NOOP("&Undo"), standardKeys(QKeySequence::Undo), &CompareEditing::undo},
        {CompareEditing::Redo, QT_TR_NOOP("&Redo"), standardKeys(QKeySequence::Redo), &CompareEditing::redo},
        {CompareEditing::CopyText, QT_TR_NOOP("&Copy Text"), standardKeys(QKeySequence::Copy),
         &CompareEditing::copyText},
    };
    return rows;
}

} // namespace

CompareEditing::CompareEditing(ComparedDocuments &documents, ListedChange &change, const CompareSheet &sheet,
                               QWidget &window)
    : m_documents(documents), m_change(change), m_sheet(sheet), m_window(window)
{
    for (const Row &row : commandRows())
        m_actions[row.command] = row.makeAction(tr(row.text), *this, this);
    connect(&documents, &ComparedDocuments::chosen, this, [this] {
        for (const ComparedDocuments::Side side : ComparedDocuments::kSides)
            m_history.follow(m_documents.document(side));
    });
    connect(&m_history, &CompareHistory::changed, this, &CompareEditing::validate);
}

void CompareEditing::addHistory(QMenu &menu, ComparedDocuments::Side side)
{
    QMenu *history = menu.addMenu(side == ComparedDocuments::Left ? tr("&History of the Left")
                                                                  : tr("Histor&y of the Right"));
    connect(history, &QMenu::aboutToShow, this, [this, history, side] {
        if (VXDocument *document = m_documents.document(side))
            CommonMenus::fillHistory(*history, m_window, *document->undoManager());
        else
            history->clear();
    });
    // After the command, which hears of the choice later than the menu does.
    connect(history, &QMenu::triggered, this, &CompareEditing::wentInHistory, Qt::QueuedConnection);
}

// History

VXDocument *CompareEditing::toUndo() const
{
    return m_history.toUndo(m_documents.document(ComparedDocuments::Left),
                            m_documents.document(ComparedDocuments::Right));
}

VXDocument *CompareEditing::toRedo() const
{
    return m_history.toRedo(m_documents.document(ComparedDocuments::Left),
                            m_documents.document(ComparedDocuments::Right));
}

void CompareEditing::undo()
{
    step(toUndo(), &UndoManager::undo);
}

void CompareEditing::redo()
{
    step(toRedo(), &UndoManager::redo);
}

void CompareEditing::step(VXDocument *target, void (UndoManager::*way)())
{
    if (target && DocumentController::shared().commitEditing())
        m_change.step(*target, way);
}

// Saving and copying

bool CompareEditing::isUnsaved(ComparedDocuments::Side side) const
{
    const VXDocument *document = m_documents.document(side);
    return document && document->isDocumentEdited() && !isOnlyToCompare(document);
}

void CompareEditing::save()
{
    if (!DocumentController::shared().commitEditing())
        return;
    for (const ComparedDocuments::Side side : ComparedDocuments::kSides) {
        if (isUnsaved(side))
            DocumentPanels::save(*m_documents.document(side), &m_window, [this](bool) { validate(); });
    }
}

void CompareEditing::copyText()
{
    if (QPlainTextEdit *field = m_sheet.focusedText())
        field->copy();
}

// What can be done

void CompareEditing::validate()
{
    const QPlainTextEdit *field = m_sheet.focusedText();
    m_actions[CopyText]->setEnabled(field && field->textCursor().hasSelection());
    m_actions[Save]->setEnabled(isUnsaved(ComparedDocuments::Left) || isUnsaved(ComparedDocuments::Right));
    VXDocument *undone = toUndo();
    showStep(Undo, undone, undone ? undone->undoManager()->stack()->undoText() : QString());
    VXDocument *redone = toRedo();
    showStep(Redo, redone, redone ? redone->undoManager()->stack()->redoText() : QString());
}

/// Names the step that a command would take, in the document that it is a step of.
void CompareEditing::showStep(Command command, const VXDocument *document, const QString &name)
{
    QAction *action = m_actions[command];
    action->setEnabled(document);
    if (!document) {
        action->setText(command == Undo ? tr("&Undo") : tr("&Redo"));
        return;
    }
    const QString text = command == Undo ? tr("&Undo %1 in %2") : tr("&Redo %1 in %2");
    action->setText(
        text.arg(menuText(name.isEmpty() ? tr("Change") : name), menuText(document->windowTitle())));
}

} // namespace runebook
