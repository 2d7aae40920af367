#pragma once

#include "editing/search/FieldCondition.h"

#include <QToolButton>

namespace runebook {

/// One condition in the row above a table. Pressing it edits the condition, its cross or Delete takes it
/// away, Ctrl+Space switches it off and on, "-" turns it round; its menu offers the same.
class FilterChip : public QToolButton
{
    Q_OBJECT
public:
    FilterChip(const FieldCondition &condition, int number, QWidget *bar);

    int number() const { return m_number; }
    QSize sizeHint() const override;

Q_SIGNALS:
    void editRequested(int number);
    void removeRequested(int number);
    /// The condition is to become that.
    void changeRequested(int number, const runebook::FieldCondition &condition);

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    QRect crossRect() const;
    void negate();
    void switchOver();

    FieldCondition m_condition;
    int m_number;
    bool m_isCrossPressed = false;
};

} // namespace runebook
