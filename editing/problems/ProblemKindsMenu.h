#pragma once

#include "editing/problems/ProblemKinds.h"

#include <QMenu>

namespace runebook {

/// The kinds of problems to look for, checked; the choice is remembered and holds for all windows.
class ProblemKindsMenu : public QMenu
{
    Q_OBJECT
public:
    explicit ProblemKindsMenu(QWidget *parent);

private:
    void fill();
    void showChoice();
    QAction *addToggle(const QString &text, ProblemKindSet kinds);

    std::vector<std::pair<QAction *, ProblemKindSet>> m_toggles;
};

} // namespace runebook
