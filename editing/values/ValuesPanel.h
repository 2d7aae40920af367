#pragma once

#include "editing/search/CurrentFilter.h"
#include "editing/values/ValuesView.h"

#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;

namespace runebook {

/// The panel of values: a field, the values that the shown records have in it with their numbers, and a line
/// that looks for some of them. What is chosen in it are conditions of the window's filter.
class ValuesPanel : public QWidget
{
    Q_OBJECT
public:
    ValuesPanel(const VXDocument &document, CurrentFilter &filter, QWidget *parent);
    ~ValuesPanel() override;

    CurrentFilter &filter() const { return m_filter; }
    ValueCounts &counts() const { return *m_counts; }
    ValuesModel &model() const { return *m_model; }
    ValuesView &view() const { return *m_view; }
    QComboBox &field() const { return *m_field; }
    QLineEdit &searchLine() const { return *m_search; }
    /// What is shown below the list.
    QString statusText() const;
    const FieldAspect &aspect() const { return m_counts->aspect(); }
    void setAspect(const FieldAspect &aspect);

Q_SIGNALS:
    void aspectChanged();
    /// Somebody typed another text over a value; neither has to be there.
    void renameRequested(const QString &from, const QString &to);
    /// Why a value cannot be renamed.
    void remarked(const QString &text);
    void closeRequested();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget *buildHeader();
    void buildSearch();
    void connectView();
    void chooseField();
    void followFilter();
    void choose(const QString &value, ValuesView::Choice choice);
    void setChosen(const ChosenValues &chosen);
    void showMenu(const QPoint &place);
    void setSearch(const QString &text);
    void setSort(int column, Qt::SortOrder direction);
    void rememberRow();
    void restoreRow();
    void showStatus();

    CurrentFilter &m_filter;
    ValueCounts *m_counts;
    ValuesModel *m_model;
    QComboBox *m_field;
    QLineEdit *m_search;
    ValuesView *m_view;
    QLabel *m_status;
    ChosenValues m_chosenBefore; ///< the latest choice
    QString m_currentText;
    int m_currentRow = -1;
    int m_scrolled = 0;
};

} // namespace runebook
