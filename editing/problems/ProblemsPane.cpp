#include "editing/problems/ProblemsPane.h"

#include "editing/problems/ProblemFixes.h"
#include "editing/problems/ProblemKindsMenu.h"
#include "editing/problems/ProblemListCommands.h"
#include "platform/PlainLabel.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QSplitter>
#include <QStackedWidget>
#include <QTableView>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <unordered_set>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kKindRole = Qt::UserRole;
constexpr qsizetype kTriedFixes = 200; // of a large selection, to tell whether there is something to fix

QString numberText(qsizetype number)
{
    return QLocale().toString(static_cast<qlonglong>(number));
}

QToolButton *textButton(const QString &text, QWidget *parent)
{
    auto *button = new QToolButton(parent);
    button->setText(text);
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    button->setFocusPolicy(Qt::StrongFocus);
    return button;
}

} // namespace

ProblemsPane::ProblemsPane(Problems &problems, QWidget *parent)
    : QWidget(parent),
      m_problems(problems),
      m_model(new ProblemsModel(problems, this)),
      m_list(new ProblemListCommands(problems, *this))
{
    setAccessibleName(tr("Problems"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto *header = new QHBoxLayout;
    header->setContentsMargins(10, 4, 6, 4);
    buildHeader(*header);
    layout->addLayout(header);
    auto *split = new QSplitter(Qt::Horizontal, this);
    split->setHandleWidth(1);
    split->setChildrenCollapsible(false);
    split->addWidget(buildKinds());
    split->addWidget(buildProblems());
    split->setStretchFactor(1, 1);
    split->setSizes({250, 750});
    layout->addWidget(split, 1);

    connect(&m_problems, &Problems::changed, this, &ProblemsPane::problemsChanged);
    connect(m_model, &ProblemsModel::rowsAboutToChange, this, &ProblemsPane::rememberRow);
    connect(m_model, &ProblemsModel::rowsChanged, this, &ProblemsPane::restoreRow);
    showCounts();
    m_kinds->setCurrentItem(m_kinds->topLevelItem(0));
}

ProblemsPane::~ProblemsPane() = default;

// Building

void ProblemsPane::buildHeader(QHBoxLayout &header)
{
    m_title = plainLabel({}, this);
    QFont bold = m_title->font();
    bold.setBold(true);
    m_title->setFont(bold);
    m_filterButton = textButton(tr("&Only These in the Table"), this);
    m_filterButton->setCheckable(true);
    m_filterButton->setToolTip(tr("Shows only the records of the chosen kind in the table above."));
    connect(m_filterButton, &QToolButton::toggled, this, &ProblemsPane::announceCondition);
    m_fixButton = textButton(tr("Fi&x Selected"), this);
    connect(m_fixButton, &QToolButton::clicked, this, &ProblemsPane::fixSelected);
    m_fixAllButton = textButton(tr("Fix &All"), this);
    connect(m_fixAllButton, &QToolButton::clicked, this, &ProblemsPane::fixAll);
    auto *kinds = textButton(tr("&Kinds"), this);
    kinds->setToolTip(tr("Chooses the kinds of problems and hints that are looked for."));
    kinds->setPopupMode(QToolButton::InstantPopup);
    kinds->setMenu(new ProblemKindsMenu(kinds));
    auto *close = new QToolButton(this);
    close->setIcon(QIcon(u":/icons/clear.svg"_s));
    close->setAutoRaise(true);
    close->setFocusPolicy(Qt::StrongFocus);
    close->setAccessibleName(tr("Close the problems pane"));
    close->setToolTip(close->accessibleName());
    connect(close, &QToolButton::clicked, this, &ProblemsPane::closeRequested);
    header.setSpacing(6);
    header.addWidget(m_title);
    header.addStretch(1);
    for (QToolButton *button : {m_filterButton, m_fixButton, m_fixAllButton, kinds, close})
        header.addWidget(button);
}

QWidget *ProblemsPane::buildKinds()
{
    m_kinds = new QTreeWidget(this);
    m_kinds->setAccessibleName(tr("Kinds of problems"));
    m_kinds->setFrameShape(QFrame::NoFrame);
    m_kinds->setColumnCount(2);
    m_kinds->setHeaderHidden(true);
    m_kinds->setRootIsDecorated(false);
    m_kinds->setUniformRowHeights(true);
    m_kinds->setTabKeyNavigation(false);
    m_kinds->header()->setStretchLastSection(false);
    m_kinds->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_kinds->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    addKinds(tr("All problems"), kAllProblemKinds & ~kHintKinds);
    for (const ProblemKind kind : allProblemKinds()) {
        if (!isHint(kind))
            addKinds(titleOfProblemKind(kind), setOf(kind), meaningOfProblemKind(kind));
    }
    addKinds(tr("All hints"), kHintKinds);
    for (const ProblemKind kind : allProblemKinds()) {
        if (isHint(kind))
            addKinds(titleOfProblemKind(kind), setOf(kind), meaningOfProblemKind(kind));
    }
    connect(m_kinds, &QTreeWidget::currentItemChanged, this, &ProblemsPane::chooseKind);
    return m_kinds;
}

void ProblemsPane::addKinds(const QString &title, ProblemKindSet kinds, const QString &meaning)
{
    auto *item = new QTreeWidgetItem(m_kinds);
    item->setText(0, title);
    item->setData(0, kKindRole, kinds);
    item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
    item->setSizeHint(0, {0, m_kinds->fontMetrics().height() + 6});
    item->setToolTip(0, meaning);
}

QWidget *ProblemsPane::buildProblems()
{
    auto *side = new QWidget(this);
    auto *layout = new QVBoxLayout(side);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_meaning = plainLabel({}, side);
    m_meaning->setWordWrap(true);
    m_meaning->setContentsMargins(8, 3, 8, 3);
    m_table = new QTableView(side);
    m_table->setModel(m_model);
    m_table->setAccessibleName(tr("Problems of the chosen kind"));
    m_table->setFrameShape(QFrame::NoFrame);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setAlternatingRowColors(true);
    m_table->setShowGrid(false);
    m_table->setWordWrap(false);
    m_table->setTabKeyNavigation(false);
    m_table->setCornerButtonEnabled(false);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() + 6);
    QHeaderView *columns = m_table->horizontalHeader();
    columns->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    columns->setHighlightSections(false);
    columns->setStretchLastSection(true);
    columns->resizeSection(ProblemsModel::NameColumn, 170);
    columns->resizeSection(ProblemsModel::UnicodeColumn, 100);
    // A header asks of every row whether it is selected each time it is painted.
    columns->setSelectionModel(new QItemSelectionModel(m_model, columns));
    m_table->installEventFilter(this);
    connect(m_table, &QTableView::doubleClicked, this, &ProblemsPane::jump);
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ProblemsPane::updateFixes);
    m_empty = plainLabel({}, side);
    m_empty->setAlignment(Qt::AlignCenter);
    m_pages = new QStackedWidget(side);
    m_pages->addWidget(m_table);
    m_pages->addWidget(m_empty);
    layout->addWidget(m_meaning);
    layout->addWidget(m_pages, 1);
    return side;
}

// What is shown

void ProblemsPane::showKind(std::optional<ProblemKind> kind)
{
    showKinds(kind ? setOf(*kind) : kAllProblemKinds & ~kHintKinds);
}

void ProblemsPane::showKinds(ProblemKindSet kinds)
{
    for (int row = 0; row < m_kinds->topLevelItemCount(); ++row) {
        QTreeWidgetItem *item = m_kinds->topLevelItem(row);
        if (item->data(0, kKindRole).toULongLong() == kinds)
            m_kinds->setCurrentItem(item);
    }
}

void ProblemsPane::chooseKind()
{
    const QTreeWidgetItem *item = m_kinds->currentItem();
    if (!item)
        return;
    m_currentRow = -1;
    m_model->setKinds(item->data(0, kKindRole).toULongLong());
    const std::optional<ProblemKind> chosen = kind();
    m_meaning->setText(chosen ? meaningOfProblemKind(*chosen) : QString());
    m_meaning->setVisible(chosen.has_value());
    showCounts();
    updateFixes();
    if (isFiltering())
        announceCondition();
}

void ProblemsPane::problemsChanged()
{
    m_isStale = true;
    if (!isVisible())
        return;
    showCounts();
    if (m_problems.isComplete()) {
        m_isStale = false;
        m_model->refresh();
    }
}

void ProblemsPane::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (m_isStale)
        problemsChanged();
}

void ProblemsPane::showCounts()
{
    for (int row = 0; row < m_kinds->topLevelItemCount(); ++row) {
        QTreeWidgetItem *item = m_kinds->topLevelItem(row);
        const qsizetype count = m_problems.total(item->data(0, kKindRole).toULongLong());
        item->setText(1, numberText(count));
        item->setData(0, Qt::AccessibleTextRole, tr("%1: %2").arg(item->text(0), item->text(1)));
        item->setHidden(count == 0 && row > 0 && item != m_kinds->currentItem());
    }
    m_title->setText(
        m_problems.isComplete()
            ? tr("Problems")
            : tr("Problems – checking, %1 %").arg(static_cast<int>(100 * m_problems.progress())));
    showState();
}

void ProblemsPane::showState()
{
    const bool isEmpty = m_model->rowCount() == 0;
    m_pages->setCurrentWidget(isEmpty ? static_cast<QWidget *>(m_empty) : m_table);
    m_empty->setText(m_problems.isComplete() && m_model->isComplete()
                         ? (kind() ? tr("No problem of this kind is left.") : tr("No problems were found."))
                         : tr("Checking…"));
}

void ProblemsPane::rememberRow()
{
    const int row = m_table->currentIndex().row();
    if (row < 0)
        return;
    m_currentRow = row;
    m_current = m_model->problems()[static_cast<std::size_t>(row)];
}

void ProblemsPane::restoreRow()
{
    if (m_currentRow >= 0 && m_model->rowCount() > 0) {
        // Of a problem that has gone the next one takes the place.
        const int found = m_model->rowOf(m_current, m_currentRow);
        const int row = found >= 0 ? found : qMin(m_currentRow, m_model->rowCount() - 1);
        m_table->selectRow(row);
    }
    showState();
    updateFixes();
}

// Commands

void ProblemsPane::jump(const QModelIndex &index)
{
    if (!index.isValid())
        return;
    if (const InfoPtr info = m_model->problems()[static_cast<std::size_t>(index.row())].info)
        Q_EMIT showRequested(info);
}

void ProblemsPane::goToProblem(int step)
{
    const int count = m_model->rowCount();
    if (count == 0)
        return;
    const int current = m_table->currentIndex().row();
    const int row = current < 0 ? (step > 0 ? 0 : count - 1) : (current + step + count) % count;
    // Not selectRow(): with Shift, which the key for going back needs, it would select all between.
    m_table->selectionModel()->setCurrentIndex(
        m_model->index(row, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_table->scrollTo(m_model->index(row, 0));
    jump(m_model->index(row, 0));
}

void ProblemsPane::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && m_table->hasFocus())
        jump(m_table->currentIndex());
    else if (event->key() == Qt::Key_Escape)
        Q_EMIT closeRequested();
    else
        QWidget::keyPressEvent(event);
}

bool ProblemsPane::eventFilter(QObject *watched, QEvent *event)
{
    const bool isKey = event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress;
    if (!isKey || watched != m_table
        || !takesEditKey(static_cast<QKeyEvent &>(*event), event->type() == QEvent::KeyPress))
        return QWidget::eventFilter(watched, event);
    event->accept();
    return true;
}

/// Whether a key means the list of problems and not the records of the window; nothing can be cut from it or
/// pasted into it.
bool ProblemsPane::takesEditKey(QKeyEvent &key, bool acts)
{
    const bool copies = key.matches(QKeySequence::Copy);
    const bool selects = key.matches(QKeySequence::SelectAll);
    if (copies && acts)
        m_list->copy(selectedProblems());
    if (selects && acts)
        m_table->selectAll();
    return copies || selects || key.matches(QKeySequence::Cut) || key.matches(QKeySequence::Paste)
        || key.matches(QKeySequence::Delete);
}

void ProblemsPane::saveList()
{
    const std::span<const Problem> rows = m_model->problems();
    m_list->askWhereToSave({rows.begin(), rows.end()});
}

bool ProblemsPane::saveList(const QString &path)
{
    return m_list->save(path, m_model->problems());
}

/// In the order of the list.
std::vector<Problem> ProblemsPane::selectedProblems() const
{
    std::vector<Problem> selected;
    QItemSelection ranges = m_table->selectionModel()->selection();
    std::sort(ranges.begin(), ranges.end(),
              [](const QItemSelectionRange &a, const QItemSelectionRange &b) { return a.top() < b.top(); });
    for (const QItemSelectionRange &range : std::as_const(ranges)) {
        const std::span<const Problem> rows = m_model->problems();
        selected.insert(selected.end(), rows.begin() + range.top(), rows.begin() + range.bottom() + 1);
    }
    return selected;
}

void ProblemsPane::updateFixes()
{
    const QString title = kind() ? ProblemFixes::titleFor(*kind()) : QString();
    m_fixAllButton->setEnabled(!title.isNull() && m_model->rowCount() > 0);
    const QString all = tr("Fixes all problems of this kind that need no decision: %1.").arg(title);
    m_fixAllButton->setToolTip(title.isNull() ? tr("Problems of this kind need a decision.") : all);

    bool canFix = false;
    qsizetype tried = 0;
    for (const QItemSelectionRange &range : m_table->selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom() && !canFix && tried < kTriedFixes; ++row, ++tried) {
            const Problem &problem = m_model->problems()[static_cast<std::size_t>(row)];
            canFix = problem.info && ProblemFixes::canFix(m_problems.document(), problem.kind, *problem.info);
        }
    }
    m_fixButton->setEnabled(canFix || tried == kTriedFixes);
    m_fixButton->setToolTip(m_fixButton->isEnabled()
                                ? tr("Fixes the selected problems as far as they need no decision.")
                                : tr("The selected problems need a decision."));
}

void ProblemsPane::fixSelected()
{
    fix(selectedProblems());
}

void ProblemsPane::fixAll()
{
    const std::span<const Problem> rows = m_model->problems();
    fix(std::vector<Problem>(rows.begin(), rows.end()));
}

void ProblemsPane::fix(std::span<const Problem> problems)
{
    if (!m_problems.document().commitEditing())
        return;
    LeftOut leftOut;
    const qsizetype records = ProblemFixes::apply(m_problems.document(), problems, &leftOut);
    m_problems.document().flushChanges();
    Q_EMIT fixed(records, leftOut.text());
}

// Filter

ProblemsPane::Condition ProblemsPane::condition() const
{
    if (!isFiltering())
        return {};
    const ProblemKindSet kinds = m_model->kinds();
    if (!(kinds & ~kRecordKinds))
        return [this, kinds](qsizetype place) { return m_problems.hasProblemOf(kinds, place); };
    std::unordered_set<const VXGlyphInfo *> concerned;
    for (const Problem &problem : m_model->problems())
        concerned.insert(problem.info.get());
    return [this, concerned](qsizetype place) {
        return concerned.count(m_problems.document().objectInInfosAtIndex(place).get()) > 0;
    };
}

void ProblemsPane::announceCondition()
{
    Q_EMIT conditionChanged(condition());
}

// ProblemsButton

ProblemsButton::ProblemsButton(const Problems &problems, QWidget *parent)
    : QToolButton(parent), m_problems(problems)
{
    setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    setCheckable(true);
    setAutoRaise(true);
    setFocusPolicy(Qt::TabFocus);
    setToolTip(tr("Show or hide the problems pane"));
    connect(&problems, &Problems::changed, this, &ProblemsButton::showCount);
    showCount();
}

void ProblemsButton::showCount()
{
    const qsizetype total = m_problems.total();
    QString text = total == 0 && m_problems.isComplete() ? tr("No problems")
        : total == 1                                     ? tr("1 problem")
                                                         : tr("%1 problems").arg(numberText(total));
    if (const qsizetype hints = m_problems.hints(); hints > 0)
        text = hints == 1 ? tr("%1, 1 hint").arg(text) : tr("%1, %2 hints").arg(text, numberText(hints));
    if (!m_problems.isComplete())
        text += u'…';
    setText(text);
    setAccessibleName(text);
    // A warning sign stands where something is to be warned of.
    setIcon(total > 0                     ? QIcon(u":/icons/problems.svg"_s)
                : m_problems.isComplete() ? QIcon(u":/icons/check.svg"_s)
                                          : QIcon());
}

} // namespace runebook
