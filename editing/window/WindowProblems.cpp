#include "editing/window/WindowProblems.h"

#include "editing/problems/ProblemSettings.h"
#include "editing/records/GlyphTableView.h"
#include "editing/window/WindowSettings.h"

#include <QApplication>
#include <QLocale>
#include <QSplitter>

namespace runebook {

using namespace Qt::StringLiterals;

WindowProblems::WindowProblems(const WindowParts &parts, QSplitter &split, QObject *parent)
    : QObject(parent),
      m_parts(parts),
      m_split(split),
      m_problems(new Problems(parts.document, this)),
      m_button(new ProblemsButton(*m_problems, &parts.window))
{
    connect(m_button, &QToolButton::clicked, this, &WindowProblems::setShown);
    const auto leaveOut = [this] { m_problems->setLeftOut(leftOutProblems()); };
    Settings::kLeftOutProblems.onChange(this, leaveOut);
    leaveOut();
}

void WindowProblems::buildPane()
{
    m_pane = new ProblemsPane(*m_problems, &m_split);
    m_split.addWidget(m_pane);
    m_split.setStretchFactor(0, 1);
    m_split.setStretchFactor(1, 0);
    const int height = Settings::kProblemsHeight.value();
    m_split.setSizes({qMax(height, m_split.height() - height), height});
    connect(&m_split, &QSplitter::splitterMoved, this,
            [this] { Settings::kProblemsHeight.set(m_split.sizes().value(1)); });
    connect(m_pane, &ProblemsPane::showRequested, this, &WindowProblems::showRequested);
    connect(m_pane, &ProblemsPane::conditionChanged, this, &WindowProblems::conditionChanged);
    connect(m_pane, &ProblemsPane::closeRequested, this, [this] { setShown(false); });
    connect(m_pane, &ProblemsPane::fixed, this, [this](qsizetype records, const QString &leftOut) {
        const QString fixed =
            tr("Records fixed: %1").arg(QLocale().toString(static_cast<qlonglong>(records)));
        m_parts.showMessage((fixed + u'\n' + leftOut).trimmed());
    });
}

bool WindowProblems::isShown() const
{
    return m_pane && !m_pane->isHidden();
}

void WindowProblems::setShown(bool isShown)
{
    if (isShown && !m_pane)
        buildPane();
    if (m_pane) {
        const bool hadFocus = m_pane->isAncestorOf(QApplication::focusWidget());
        m_pane->setVisible(isShown);
        if (!isShown) {
            m_pane->setFiltering(false);
            if (hadFocus)
                m_parts.table.setFocus();
        }
    }
    m_button->setChecked(isShown);
    Settings::kProblemsShown.set(isShown);
    Q_EMIT shownChanged();
}

void WindowProblems::goTo(int step)
{
    if (!isShown())
        setShown(true);
    m_pane->goToProblem(step);
}

void WindowProblems::fixSelected()
{
    if (!isShown())
        setShown(true);
    m_pane->fixSelected();
}

void WindowProblems::saveList()
{
    if (!isShown())
        setShown(true);
    m_pane->saveList();
}

void WindowProblems::showAll()
{
    if (m_pane)
        m_pane->setFiltering(false);
}

} // namespace runebook
