#pragma once

#include "editing/merge/MergeOpening.h"

#include <QDialog>
#include <QTimer>

class QComboBox;
class QLabel;
class QProgressBar;
class QPushButton;

namespace runebook {

/// Asks for what is to be merged: base, ours and theirs, each an open document, what its file holds, or
/// another file. Says what is wrong without going; while the merge is made it can be stopped.
class MergeDialog : public QDialog
{
    Q_OBJECT
public:
    /// Shows the dialog, which deletes itself.
    static MergeDialog *open(QWidget *parent);

    explicit MergeDialog(QWidget *parent = nullptr);
    ~MergeDialog() override;

    /// Chooses a file for a side.
    void setFile(MergeSide side, const QString &path);
    QComboBox *chooser(MergeSide side) const { return m_choosers[std::size_t(side)]; }
    QString errorText() const;
    void merge();

Q_SIGNALS:
    void merged(runebook::MergeWindow *window);

private:
    void fill(QComboBox &chooser);
    void askForFile(MergeSide side);
    void showReady();
    void showError(const QString &text);
    std::optional<MergeSource> sourceOf(MergeSide side) const;
    void finish(PreparedMerge prepared, const MergeTitles &titles);

    std::array<QComboBox *, 3> m_choosers {};
    QComboBox *m_key;
    QLabel *m_error;
    QProgressBar *m_progress;
    std::shared_ptr<MergeProgress> m_merging; ///< what goes on; ends with the dialog
    QTimer m_look;
    QPushButton *m_merge;
    QWidget *m_form;
};

} // namespace runebook
