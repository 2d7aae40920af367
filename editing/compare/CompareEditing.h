#pragma once

#include "editing/compare/CompareHistory.h"
#include "editing/compare/ListedChange.h"

class QAction;
class QMenu;

namespace runebook {

class CompareSheet;

/// Undo and redo of what was done last in either document, their histories, saving them, and copying of what
/// is shown as text.
class CompareEditing : public QObject
{
    Q_OBJECT
public:
    enum Command { Save, Undo, Redo, CopyText, CommandCount };

    CompareEditing(ComparedDocuments &documents, ListedChange &change, const CompareSheet &sheet,
                   QWidget &window);

    QAction *action(Command command) const { return m_actions[command]; }
    void addHistory(QMenu &menu, ComparedDocuments::Side side);
    void undo();
    void redo();
    /// Saves both documents, if changed.
    void save();
    void copyText();
    void validate();

Q_SIGNALS:
    /// A step was chosen in a history.
    void wentInHistory();

private:
    VXDocument *toUndo() const;
    VXDocument *toRedo() const;
    void step(VXDocument *target, void (UndoManager::*way)());
    bool isUnsaved(ComparedDocuments::Side side) const;
    void showStep(Command command, const VXDocument *document, const QString &name);

    ComparedDocuments &m_documents;
    ListedChange &m_change;
    const CompareSheet &m_sheet;
    QWidget &m_window;
    CompareHistory m_history;
    std::array<QAction *, CommandCount> m_actions {};
};

} // namespace runebook
