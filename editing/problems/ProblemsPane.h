#pragma once

#include "editing/problems/ProblemsModel.h"

#include <QToolButton>
#include <QWidget>

class QHBoxLayout;
class QLabel;
class QStackedWidget;
class QTableView;
class QTreeWidget;
class QTreeWidgetItem;

namespace runebook {

class ProblemListCommands;

/// Lists what is wrong with a document: the kinds with their counts, the problems of the chosen kind, and
/// the commands on them.
class ProblemsPane : public QWidget
{
    Q_OBJECT
public:
    /// Accepts places of the document's list; null accepts all.
    using Condition = std::function<bool(qsizetype place)>;

    explicit ProblemsPane(Problems &problems, QWidget *parent = nullptr);
    ~ProblemsPane() override;

    /// Nothing: all kinds but hints.
    void showKind(std::optional<ProblemKind> kind);
    std::optional<ProblemKind> kind() const { return m_model->kind(); }
    QTableView *table() const { return m_table; }
    QTreeWidget *kinds() const { return m_kinds; }
    /// Goes to the problem \a step rows further, round the ends of the list.
    void goToProblem(int step);
    /// Whether the table of records is to show the listed ones only.
    bool isFiltering() const { return m_filterButton->isChecked(); }
    void setFiltering(bool filters) { m_filterButton->setChecked(filters); }
    void fixSelected();
    void fixAll();
    /// All that is listed, into a file that is asked for.
    void saveList();
    /// The same into a file of that name; false when it could not be written.
    bool saveList(const QString &path);

Q_SIGNALS:
    void showRequested(const InfoPtr &info);
    void conditionChanged(const runebook::ProblemsPane::Condition &condition);
    void closeRequested();
    /// After a fix: how many records were changed, and a word on those that could not be.
    void fixed(qsizetype records, const QString &leftOut);

protected:
    void showEvent(QShowEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    /// Keeps the keys of the Edit menu in the list while it has the focus.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool takesEditKey(QKeyEvent &key, bool acts);
    void buildHeader(QHBoxLayout &header);
    QWidget *buildKinds();
    QWidget *buildProblems();
    void addKinds(const QString &title, ProblemKindSet kinds, const QString &meaning = {});
    void showKinds(ProblemKindSet kinds);
    void problemsChanged();
    void showCounts();
    void showState();
    void updateFixes();
    void chooseKind();
    void jump(const QModelIndex &index);
    void rememberRow();
    void restoreRow();
    std::vector<Problem> selectedProblems() const;
    void fix(std::span<const Problem> problems);
    void announceCondition();
    Condition condition() const;

    Problems &m_problems;
    ProblemsModel *m_model;
    ProblemListCommands *m_list;
    QLabel *m_title = nullptr;
    QLabel *m_meaning = nullptr;
    QLabel *m_empty = nullptr;
    QTreeWidget *m_kinds = nullptr;
    QTableView *m_table = nullptr;
    QStackedWidget *m_pages = nullptr;
    QToolButton *m_filterButton = nullptr;
    QToolButton *m_fixButton = nullptr;
    QToolButton *m_fixAllButton = nullptr;
    Problem m_current;
    int m_currentRow = -1;
    bool m_isStale = true;
};

/// Tells in the status bar how many problems there are; a click shows or hides the pane.
class ProblemsButton : public QToolButton
{
    Q_OBJECT
public:
    explicit ProblemsButton(const Problems &problems, QWidget *parent = nullptr);

private:
    void showCount();

    const Problems &m_problems;
};

} // namespace runebook
