#pragma once

#include <QDialog>

class QLabel;
class QListWidget;
class QListWidgetItem;
class QPushButton;

namespace runebook {

/// The saved filters as a list, in which each can be renamed (F2) and deleted. What is done is done at once.
class SavedFiltersSheet : public QDialog
{
    Q_OBJECT
public:
    explicit SavedFiltersSheet(QWidget *parent);

private:
    void fill(const QString &current);
    void showChoice();
    void rename(QListWidgetItem *item);
    void removeCurrent();

    QListWidget *m_list;
    QLabel *m_text;
    QPushButton *m_rename = nullptr;
    QPushButton *m_remove = nullptr;
};

} // namespace runebook
