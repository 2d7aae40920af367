#pragma once

#include "editing/merge/MergeDetails.h"
#include "editing/merge/MergeRecords.h"

#include <QMainWindow>
#include <QTimer>

class QLabel;
class QListView;
class QTabBar;

namespace runebook {

/// Shows a merge: the records that conflict, and those taken from either side; of each the fields that
/// differ, ours, base and theirs side by side. Conflicts are resolved in the result, an open document, as
/// steps of its history. Deletes itself when it is closed, and closes with the document.
class MergeWindow : public QMainWindow
{
    Q_OBJECT
public:
    MergeWindow(std::unique_ptr<MergeResolution> resolution, const MergeTitles &titles,
                QWidget *parent = nullptr);
    ~MergeWindow() override;

    const MergeResolution &resolution() const { return *m_resolution; }
    QAction *action(MergeMenus::Command command) const { return m_menus->action(command); }
    MergeSheet *sheet() const { return m_details->sheet(); }
    QListView *list() const { return m_list; }
    /// Hands over what is being typed; false when it is refused.
    Q_INVOKABLE bool commitEditing() { return sheet()->commit(); }

public: // commands
    void saveDocument();
    void saveDocumentAs();
    void undo();
    void redo();
    void copyText();
    void showMode(MergeMode mode);
    /// Behind the last conflict comes the first again.
    void goToNextConflict() { goToConflict(1); }
    void goToPreviousConflict() { goToConflict(-1); }
    /// Takes the record that is shown, of all that conflicts in it; the next conflict is shown.
    void takeRecord(MergeSide side);
    /// Takes the field that has the focus, or the first open one.
    void takeField(MergeSide side);
    /// Takes the record that is shown as renamed by the side that seems to have removed it.
    void takeRename();
    void takeAll(MergeSide side);

Q_SIGNALS:
    void closed();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void buildContent();
    void perform(MergeMenus::Command command);
    void watchDocument();

    qsizetype currentNumber() const;
    void showRow(int row);
    void goToConflict(int step);
    void goOn();
    void showRecord();
    void showState();
    void refresh();
    void askToClose(qsizetype open, bool isAlone);

    std::unique_ptr<MergeResolution> m_resolution;
    MergeMenus *m_menus;
    MergeRecords *m_records;
    MergeDetails *m_details;
    QTabBar *m_modes = nullptr;
    QListView *m_list = nullptr;
    QLabel *m_state = nullptr;
    QTimer m_refresh;
    int m_firstStep = 0; ///< of the document's history that this window may undo
    bool m_closesOpen = false;
};

} // namespace runebook
