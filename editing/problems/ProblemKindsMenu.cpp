#include "editing/problems/ProblemKindsMenu.h"

#include "editing/problems/ProblemSettings.h"

namespace runebook {

ProblemKindsMenu::ProblemKindsMenu(QWidget *parent) : QMenu(parent)
{
    setToolTipsVisible(true);
    connect(this, &QMenu::aboutToShow, this, &ProblemKindsMenu::fill);
}

void ProblemKindsMenu::fill()
{
    if (!m_toggles.empty()) {
        showChoice();
        return;
    }
    addToggle(tr("All &Hints"), kHintKinds);
    for (const ProblemKind kind : allProblemKinds()) {
        if (isHint(kind))
            addToggle(titleOfProblemKind(kind), setOf(kind))->setToolTip(meaningOfProblemKind(kind));
    }
    addSeparator();
    for (const ProblemKind kind : allProblemKinds()) {
        if (kOptionalKinds & ~kHintKinds & setOf(kind))
            addToggle(titleOfProblemKind(kind), setOf(kind))->setToolTip(meaningOfProblemKind(kind));
    }
    showChoice();
}

QAction *ProblemKindsMenu::addToggle(const QString &text, ProblemKindSet kinds)
{
    QAction *action = addAction(text);
    action->setCheckable(true);
    connect(action, &QAction::triggered, this, [kinds](bool isChecked) {
        const ProblemKindSet leftOut = leftOutProblems();
        setLeftOutProblems(isChecked ? leftOut & ~kinds : leftOut | kinds);
    });
    m_toggles.emplace_back(action, kinds);
    return action;
}

void ProblemKindsMenu::showChoice()
{
    const ProblemKindSet leftOut = leftOutProblems();
    for (const auto &[action, kinds] : m_toggles)
        action->setChecked((leftOut & kinds) == 0);
}

} // namespace runebook
