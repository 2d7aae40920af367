#include "editing/problems/ProblemsModel.h"

#include "editing/fields/GlyphColumns.h"
#include "platform/PlainText.h"
#include "platform/ShownText.h"

namespace runebook {

using namespace std::chrono_literals;

namespace {

constexpr auto kSlice = 5ms;
constexpr qsizetype kStep = 4096;

bool isSame(const Problem &a, const Problem &b)
{
    return a.kind == b.kind && a.info == b.info && a.part == b.part;
}

} // namespace

ProblemsModel::ProblemsModel(const Problems &problems, QObject *parent)
    : QAbstractTableModel(parent), m_problems(problems)
{
    m_timer.setInterval(0ms);
    connect(&m_timer, &QTimer::timeout, this, &ProblemsModel::gather);
}

void ProblemsModel::setKinds(ProblemKindSet kinds)
{
    m_kinds = kinds;
    refresh();
}

std::optional<ProblemKind> ProblemsModel::kind() const
{
    for (const ProblemKind each : allProblemKinds()) {
        if (m_kinds == setOf(each))
            return each;
    }
    return {};
}

void ProblemsModel::refresh()
{
    m_gathered.clear();
    m_next = 0;
    m_timer.start();
    gather();
}

void ProblemsModel::gather()
{
    const auto end = std::chrono::steady_clock::now() + kSlice;
    const qsizetype count = m_problems.document().countOfInfos();
    const bool looksAtRecords = m_kinds & kRecordKinds;
    while (looksAtRecords && m_next < count) {
        const qsizetype next = qMin(m_next + kStep, count);
        m_problems.appendOf(m_kinds, m_next, next, m_gathered);
        m_next = next;
        if (std::chrono::steady_clock::now() > end && m_next < count)
            return;
    }
    m_timer.stop();
    if (m_kinds & ~kRecordKinds)
        m_problems.appendRead(kind(), m_gathered);
    Q_EMIT rowsAboutToChange();
    beginResetModel();
    m_rows = std::exchange(m_gathered, {});
    endResetModel();
    Q_EMIT rowsChanged();
}

int ProblemsModel::rowOf(const Problem &problem, int likelyRow) const
{
    const auto count = static_cast<int>(m_rows.size());
    for (int i = 0; i < count; ++i) {
        // Both ways from the likely row: a problem seldom moves far.
        for (const int row : {likelyRow + i, likelyRow - i}) {
            if (row >= 0 && row < count && isSame(m_rows[static_cast<std::size_t>(row)], problem))
                return row;
        }
    }
    return -1;
}

int ProblemsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int ProblemsModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ProblemsModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole))
        return {};
    const Problem &problem = m_rows[static_cast<std::size_t>(index.row())];
    QString text;
    switch (index.column()) {
    case NameColumn:
        text = problem.info ? cellDisplayText(*problem.info, GlyphField::Name) : tr("(file)");
        break;
    case UnicodeColumn:
        text = problem.info ? cellDisplayText(*problem.info, GlyphField::Unicodes) : QString();
        break;
    default:
        text = m_problems.explanation(problem);
        // Under a heading of their own kind these would only repeat it.
        if (!kind() && problem.kind >= kFirstReadProblem && problem.kind != ProblemKind::FileForm)
            text = tr("%1: %2").arg(titleOfProblemKind(problem.kind), text);
        break;
    }
    text = shownText(text, kMostInMessage);
    return role == Qt::ToolTipRole ? escapedToolTip(text) : text;
}

QVariant ProblemsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case NameColumn:
        return fieldTitle(GlyphField::Name);
    case UnicodeColumn:
        return fieldTitle(GlyphField::Unicodes);
    default:
        return tr("Problem");
    }
}

} // namespace runebook
