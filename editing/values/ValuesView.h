#pragma once

#include "editing/values/ValueDelegate.h"

#include <QTableView>

namespace runebook {

/// The list of values: a click or a key chooses one, with Ctrl besides others, with Alt or Shift it is left
/// out; F2 and a double click rename it.
class ValuesView : public QTableView
{
    Q_OBJECT
public:
    enum class Choice { Only, Too, Without };
    ValuesView(ValuesModel &model, QWidget *parent);

    ValueDelegate &delegate() const { return *m_delegate; }
    QString currentText() const { return currentIndex().data(ValuesModel::TextRole).toString(); }
    void renameCurrent();
    /// The current line, or all, as text.
    void copyCurrent() const;
    void copyAll() const;

Q_SIGNALS:
    void chosen(const QString &value, runebook::ValuesView::Choice choice);
    /// The second click of two, whose first has chosen already.
    void choiceTakenBack();
    void renameRefused();
    /// Typed where nothing takes text: it is looked for.
    void searchTyped(const QString &text);

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex &index,
                                                         const QEvent *event) const override;

private:
    void choose(const QModelIndex &index, Qt::KeyboardModifiers modifiers);
    bool takesEditKey(QKeyEvent &key, bool acts);

    ValuesModel &m_model;
    ValueDelegate *m_delegate;
    QPersistentModelIndex m_pressed;
};

} // namespace runebook
