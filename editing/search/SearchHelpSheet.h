#pragma once

#include "editing/search/SearchExamples.h"

#include <QDialog>

class QTreeWidget;
class QTreeWidgetItem;

namespace runebook {

/// A short sheet with examples for every mode of the search. A click on one, or Enter, hands it over and
/// closes the sheet.
class SearchHelpSheet : public QDialog
{
    Q_OBJECT
public:
    explicit SearchHelpSheet(QWidget *parent);
    QSize sizeHint() const override;

Q_SIGNALS:
    void chosen(const runebook::SearchExample &example);

private:
    void addExamples();
    void choose(QTreeWidgetItem *item);

    QList<SearchExample> m_examples;
    QTreeWidget *m_list;
};

} // namespace runebook
