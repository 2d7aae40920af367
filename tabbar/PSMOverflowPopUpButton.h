#pragma once

#include <QToolButton>

/// The button at the end of a tab bar whose menu holds the tabs that found no room. It pulls its menu down
/// on a press; the bar fills the menu when it is about to show. A dot tells that the selected tab is inside.
class PSMOverflowPopUpButton : public QToolButton
{
    Q_OBJECT
public:
    explicit PSMOverflowPopUpButton(QWidget *parent);

    /// How many tabs the menu would hold, told by the tool tip; whether one of them is the selected one.
    void setContent(qsizetype hiddenTabs, bool holdsSelection);
    bool holdsSelection() const { return m_holdsSelection; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool m_holdsSelection = false;
};
