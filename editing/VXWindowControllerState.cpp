// What the document window shows besides its records: the problems, and its own state for the next start.
#include "editing/FindReplace.h"
#include "editing/GlyphTableView.h"
#include "platform/MessageBar.h"
#include "editing/ProblemsPane.h"
#include "editing/VXSearchField.h"
#include "editing/VXSimpleSplitView.h"
#include "editing/VXWindowController.h"
#include "platform/UserDefaults.h"

#include <QScrollBar>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

const QString kPaneShown = u"ProblemsPaneShown"_s;
const QString kPaneHeight = u"ProblemsPaneHeight"_s;
constexpr int kUsualPaneHeight = 220;

} // namespace

// Problems

void VXWindowController::buildProblemsPane()
{
    m_problemsPane = new ProblemsPane(*m_problems, m_contentSplit);
    m_contentSplit->addWidget(m_problemsPane);
    m_contentSplit->setStretchFactor(0, 1);
    m_contentSplit->setStretchFactor(1, 0);
    const int stored = UserDefaults::standard().integerForKey(kPaneHeight);
    const int height = stored > 0 ? stored : kUsualPaneHeight;
    m_contentSplit->setSizes({qMax(height, m_contentSplit->height() - height), height});
    connect(m_contentSplit, &QSplitter::splitterMoved, this, [this] {
        UserDefaults::standard().setObjectForKey(m_contentSplit->sizes().value(1), kPaneHeight);
    });
    connect(m_problemsPane, &ProblemsPane::showRequested, this, &VXWindowController::showInfo);
    connect(m_problemsPane, &ProblemsPane::conditionChanged, this, &VXWindowController::filterByProblems);
    connect(m_problemsPane, &ProblemsPane::closeRequested, this, [this] { setProblemsShown(false); });
    connect(m_problemsPane, &ProblemsPane::fixed, this, [this](qsizetype records, const QString &leftOut) {
        showMessage((tr("Records fixed: %1").arg(locale().toString(qlonglong(records))) + u'\n' + leftOut).trimmed());
    });
}

bool VXWindowController::isProblemsShown() const
{
    return m_problemsPane && !m_problemsPane->isHidden();
}

void VXWindowController::setProblemsShown(bool isShown)
{
    if (isShown && !m_problemsPane)
        buildProblemsPane();
    if (m_problemsPane) {
        const bool hadFocus = m_problemsPane->isAncestorOf(QApplication::focusWidget());
        m_problemsPane->setVisible(isShown);
        if (!isShown) {
            m_problemsPane->setFiltering(false);
            if (hadFocus)
                m_tableView->setFocus();
        }
    }
    m_problemsButton->setChecked(isShown);
    UserDefaults::standard().setObjectForKey(isShown, kPaneShown);
    Q_EMIT stateChanged();
}

void VXWindowController::goToProblem(int step)
{
    if (!isProblemsShown())
        setProblemsShown(true);
    m_problemsPane->goToProblem(step);
}

void VXWindowController::filterByProblems(const std::function<bool(qsizetype)> &condition)
{
    m_isFiltering = true;
    m_infolistController->setCondition(condition);
    filterWasApplied(m_searchField->problem());
}

void VXWindowController::tellOfNewProblems(const QList<qsizetype> &before, const ReplaceSummary &summary)
{
    m_document.flushChanges();
    const QString leftOut = summary.leftOut.text();
    if (!leftOut.isNull())
        showMessage(leftOut);
    if (before.isEmpty()) {
        if (!summary.problems.isEmpty())
            showMessage((tr("Names that became invalid or repeated: %1.")
                             .arg(locale().toString(summary.problems.invalid + summary.problems.repeated))
                         + u'\n' + leftOut)
                            .trimmed());
        return;
    }
    if (m_problems->isComplete()) {
        showNewProblems(before, leftOut);
        return;
    }
    auto *connection = new QObject(this);
    connect(m_problems, &Problems::completed, connection, [this, connection, before, leftOut] {
        connection->deleteLater();
        showNewProblems(before, leftOut);
    });
}

void VXWindowController::showNewProblems(const QList<qsizetype> &before, const QString &leftOut)
{
    QStringList kinds;
    for (const ProblemKind kind : allProblemKinds()) {
        const qsizetype more = m_problems->count(kind) - before.at(static_cast<qsizetype>(kind));
        if (more > 0)
            kinds << tr("%1 (%2 more)").arg(titleOfProblemKind(kind), locale().toString(qlonglong(more)));
    }
    if (!kinds.isEmpty())
        m_messageBar->showMessage(
            (tr("The replacement has led to problems: %1. View > Show Problems lists them.")
                 .arg(kinds.join(u", "_s))
             + u'\n' + leftOut)
                .trimmed(),
            MessageBar::Stay::UntilClosed);
}

// Restoration

QVariantMap VXWindowController::windowWillEncodeRestorableState() const
{
    QVariantList rows;
    for (const qsizetype row : m_infolistController->selectionIndexes())
        rows << row;
    return {{u"selectedInfos"_s, rows},
            {u"searchField"_s, m_searchField->stringValue()},
            {u"columns"_s, m_tableView->columnState()},
            {u"topRow"_s, m_tableView->rowAt(0)},
            {u"geometry"_s, saveGeometry()},
            {u"sidebar"_s, isSidebarShown()},
            {u"divider"_s, dividerState()},
            {u"problems"_s, isProblemsShown()},
            {u"problemsDivider"_s, m_contentSplit->saveState()}};
}

void VXWindowController::windowWillEncodeRestorableState(QObject *, QVariantMap *state) const
{
    if (state)
        *state = windowWillEncodeRestorableState();
}

void VXWindowController::windowDidDecodeRestorableState(QObject *, const QVariantMap &state)
{
    windowDidDecodeRestorableState(state);
}

void VXWindowController::windowDidDecodeRestorableState(const QVariantMap &state)
{
    // The rows that were selected are rows of that order and that search, so these come first.
    if (state.contains(u"geometry"_s))
        restoreGeometry(state.value(u"geometry"_s).toByteArray());
    if (state.contains(u"sidebar"_s)) {
        setSidebarShown(state.value(u"sidebar"_s).toBool());
        restoreDivider(state.value(u"divider"_s).toByteArray());
    }
    if (state.contains(u"problems"_s)) {
        setProblemsShown(state.value(u"problems"_s).toBool());
        if (isProblemsShown())
            m_contentSplit->restoreState(state.value(u"problemsDivider"_s).toByteArray());
    }
    if (state.contains(u"columns"_s))
        m_tableView->restoreColumnState(state.value(u"columns"_s).toByteArray());
    const QString search = state.value(u"searchField"_s).toString();
    if (!search.isEmpty()) {
        m_searchField->setStringValue(search);
        filterInfos();
    }
    m_infolistController->setSelectionIndexes(
        m_infolistController->indexSetFromRows(state.value(u"selectedInfos"_s).toList()));
    if (const int top = state.value(u"topRow"_s, -1).toInt(); top >= 0)
        m_tableView->scrollTo(m_infolistController->index(top, 0), QAbstractItemView::PositionAtTop);
    setActiveInfo();
}
