#include "editing/window/ReplaceCommand.h"

#include "document/VXDocument.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/problems/Problems.h"
#include "editing/records/GlyphTableView.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/replace/FindReplace.h"
#include "editing/replace/VXFindReplaceWindowController.h"
#include "model/FieldTable.h"
#include "platform/MessageBar.h"

#include <QLocale>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

/// What happened and what was left out, each in a line of its own.
QString lines(const QString &happened, const QString &leftOut)
{
    return (happened + u'\n' + leftOut).trimmed();
}

/// Of the field that a column shows; 0 for one in which nothing is replaced.
int replaceTagOf(int column)
{
    return rowOf(glyphColumns()[static_cast<std::size_t>(column)].field).replaceTag;
}

} // namespace

ReplaceCommand::ReplaceCommand(const WindowParts &parts, Problems &problems, QObject *parent)
    : QObject(parent), m_parts(parts), m_problems(problems)
{
}

void ReplaceCommand::run()
{
    if (!m_parts.commitEditing())
        return;
    auto *panel = new VXFindReplaceWindowController;
    connect(panel, &VXFindReplaceWindowController::ended, panel, &QObject::deleteLater);
    const int column = m_parts.table.currentIndex().column();
    if (const int tag = column < 0 ? 0 : replaceTagOf(column); tag != 0)
        panel->selectItemWithTag(tag);
    if (m_parts.list.selectedCount() > 0)
        panel->setSelectedInfos(m_parts.list.selectedObjects());
    else
        panel->setShownInfos(m_parts.list.arrangedObjects());
    QList<qsizetype> before;
    if (m_problems.isComplete()) {
        const auto counts = m_problems.counts();
        before = QList<qsizetype>(counts.begin(), counts.end());
    }
    connect(panel, &VXFindReplaceWindowController::replaced, this,
            [this, before](const ReplaceSummary &summary) { tellOfNewProblems(before, summary); });
    panel->runDialogModalForWindow(&m_parts.window, &m_parts.window);
}

void ReplaceCommand::tellOfNewProblems(const QList<qsizetype> &before, const ReplaceSummary &summary)
{
    m_parts.document.flushChanges();
    const QString leftOut = summary.leftOut.text();
    if (!leftOut.isNull())
        m_parts.showMessage(leftOut);
    if (before.isEmpty()) {
        const qsizetype spoilt = summary.problems.invalid + summary.problems.repeated;
        if (!summary.problems.isEmpty())
            m_parts.showMessage(lines(tr("Names that became invalid or repeated: %1.")
                                          .arg(QLocale().toString(static_cast<qlonglong>(spoilt))),
                                      leftOut));
        return;
    }
    if (m_problems.isComplete()) {
        showNewProblems(before, leftOut);
        return;
    }
    auto *connection = new QObject(this);
    connect(&m_problems, &Problems::completed, connection, [this, connection, before, leftOut] {
        connection->deleteLater();
        showNewProblems(before, leftOut);
    });
}

void ReplaceCommand::showNewProblems(const QList<qsizetype> &before, const QString &leftOut)
{
    QStringList kinds;
    for (const ProblemKind kind : allProblemKinds()) {
        const qsizetype more = m_problems.count(kind) - before.at(static_cast<qsizetype>(kind));
        if (more > 0)
            kinds << tr("%1 (%2 more)")
                         .arg(titleOfProblemKind(kind), QLocale().toString(static_cast<qlonglong>(more)));
    }
    if (!kinds.isEmpty())
        m_parts.messages.showMessage(
            lines(tr("The replacement has led to problems: %1. View > Show Problems lists them.")
                      .arg(kinds.join(u", "_s)),
                  leftOut),
            MessageBar::Stay::UntilClosed);
}

} // namespace runebook
