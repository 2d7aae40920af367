#pragma once

#include "editing/problems/ProblemsPane.h"
#include "editing/window/WindowParts.h"

class QSplitter;

namespace runebook {

/// What is wrong with the document of a window: the pane that lists it below the table, made when it is shown
/// for the first time, and the button that opens it. Whether it is shown, and how high, is remembered.
class WindowProblems : public QObject
{
    Q_OBJECT
public:
    /// The pane becomes the second part of \a split; the button stands where its maker puts it.
    WindowProblems(const WindowParts &parts, QSplitter &split, QObject *parent);

    Problems &problems() const { return *m_problems; }
    /// Null until it is shown for the first time.
    ProblemsPane *pane() const { return m_pane; }
    ProblemsButton *button() const { return m_button; }
    bool isShown() const;
    void setShown(bool isShown);
    /// Shows the record of the problem \a step rows further in the pane, which is opened for it.
    void fixSelected();
    void saveList();
    void goTo(int step);
    /// The records that the pane hides are shown again.
    void showAll();

Q_SIGNALS:
    void shownChanged();
    void showRequested(const InfoPtr &info);
    void conditionChanged(const runebook::ProblemsPane::Condition &condition);

private:
    void buildPane();

    WindowParts m_parts;
    QSplitter &m_split;
    Problems *m_problems;
    ProblemsPane *m_pane = nullptr;
    ProblemsButton *m_button;
};

} // namespace runebook
