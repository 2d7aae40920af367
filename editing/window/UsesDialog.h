#pragma once

#include "editing/window/NameUsesSearch.h"

#include <QDialog>

class QDialogButtonBox;
class QLabel;
class QPushButton;
class QTableView;

namespace runebook {

class UsesModel;

/// Lists who uses names: record, field, value. Return and a double click show the record; the window stays
/// open beside the table. Where names are followed, each use has a tick, and a button renames those ticked.
class UsesDialog : public QDialog
{
    Q_OBJECT
public:
    /// \a search, which becomes the dialog's, is not started yet.
    UsesDialog(const QString &title, NameUsesSearch *search, QWidget *parent);
    ~UsesDialog() override;

    NameUsesSearch &search() const { return *m_search; }
    bool isChosen(std::size_t use) const;

Q_SIGNALS:
    void showRequested(const InfoPtr &info);
    void selectRequested(const InfoList &infos);
    /// The ticked uses are to follow.
    void followRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildList();
    void buildButtons(QDialogButtonBox &buttons);
    void showFound();
    void showSummary();
    void toggleSelected();
    void showCurrent();
    void selectAllInTable();

    NameUsesSearch *m_search;
    bool m_isRenaming = false;
    UsesModel *m_model;
    QTableView *m_view;
    QLabel *m_summary;
    QPushButton *m_rename = nullptr;
    QPushButton *m_show = nullptr;
    QPushButton *m_select = nullptr;
    bool m_wasFilled = false;
};

} // namespace runebook
