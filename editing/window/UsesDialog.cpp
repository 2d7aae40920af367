#include "editing/window/UsesDialog.h"

#include "editing/window/UsesModel.h"
#include "platform/PlainLabel.h"
#include "platform/ShownText.h"
#include "platform/WindowPlacement.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>
#include <unordered_set>

namespace runebook {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QString numberText(qsizetype number)
{
    return QLocale().toString(static_cast<qlonglong>(number));
}

} // namespace

UsesDialog::UsesDialog(const QString &title, NameUsesSearch *search, QWidget *parent)
    : QDialog(parent),
      m_search(search),
      m_model(new UsesModel(this)),
      m_view(new QTableView(this)),
      m_summary(plainLabel({}, this))
{
    constexpr auto kAtOnce = 30ms; // what is found so soon is there when the window comes up
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(u"usesDialog"_s);
    setWindowTitle(shownText(title, kMostInMessage));
    m_search->setParent(this);
    m_search->runFor(kAtOnce);
    m_isRenaming = m_search->uses().isRenaming();
    buildList();
    auto *buttons = new QDialogButtonBox(this);
    buildButtons(*buttons);
    m_summary->setWordWrap(true);
    m_summary->setAccessibleName(tr("What was found"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_summary);
    layout->addWidget(m_view, 1);
    layout->addWidget(buttons);
    resize(fontMetrics().averageCharWidth() * (m_isRenaming ? 120 : 90), fontMetrics().height() * 22);
    WindowPlacement::fitIntoScreen(*this);
    connect(m_search, &NameUsesSearch::restarting, this, [this] { m_model->setUses(nullptr); });
    connect(m_search, &NameUsesSearch::finished, this, &UsesDialog::showFound);
    connect(m_model, &UsesModel::chosenChanged, this, &UsesDialog::showSummary);
    showFound();
    m_view->setFocus();
}

UsesDialog::~UsesDialog()
{
    m_model->disconnect(this);
    m_model->setUses(nullptr);
}

// Building

void UsesDialog::buildList()
{
    m_view->setAccessibleName(tr("Uses"));
    m_view->setModel(m_model);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setTabKeyNavigation(false);
    m_view->setWordWrap(false);
    m_view->setShowGrid(false);
    m_view->setAlternatingRowColors(true);
    m_view->verticalHeader()->hide();
    m_view->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    m_view->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_view->horizontalHeader()->setStretchLastSection(true);
    m_view->horizontalHeader()->setHighlightSections(false);
    m_view->installEventFilter(this);
    connect(m_view, &QTableView::doubleClicked, this, &UsesDialog::showCurrent);
}

void UsesDialog::buildButtons(QDialogButtonBox &buttons)
{
    if (m_isRenaming) {
        m_rename = buttons.addButton(tr("&Rename"), QDialogButtonBox::ActionRole);
        m_rename->setDefault(true);
        connect(m_rename, &QPushButton::clicked, this, &UsesDialog::followRequested);
    } else {
        m_select = buttons.addButton(tr("&Select in the Table"), QDialogButtonBox::ActionRole);
        m_select->setAutoDefault(false);
        connect(m_select, &QPushButton::clicked, this, &UsesDialog::selectAllInTable);
    }
    m_show = buttons.addButton(tr("S&how Record"), QDialogButtonBox::ActionRole);
    m_show->setAutoDefault(false);
    connect(m_show, &QPushButton::clicked, this, &UsesDialog::showCurrent);
    QPushButton *close = buttons.addButton(m_isRenaming ? QDialogButtonBox::Cancel : QDialogButtonBox::Close);
    close->setAutoDefault(false);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
}

// Showing

void UsesDialog::showFound()
{
    m_model->setUses(m_search->isComplete() ? &m_search->uses() : nullptr);
    if (m_search->isComplete() && !std::exchange(m_wasFilled, true)) {
        m_view->resizeColumnsToContents();
        const int widest = fontMetrics().averageCharWidth() * 36;
        for (int column = 0; column < m_model->columnCount(); ++column)
            m_view->setColumnWidth(column, qMin(m_view->columnWidth(column) + 16, widest));
    }
    if (m_model->rowCount() > 0)
        m_view->selectRow(0);
    showSummary();
}

void UsesDialog::showSummary()
{
    const bool hasRows = m_model->rowCount() > 0;
    m_show->setEnabled(hasRows);
    if (m_select)
        m_select->setEnabled(hasRows);
    if (m_rename)
        m_rename->setEnabled(m_model->countOfChosen() > 0);
    if (!m_search->isComplete()) {
        m_summary->setText(tr("Looking…"));
        return;
    }
    const NameUses &uses = m_search->uses();
    QString text = !hasRows ? (m_isRenaming ? tr("No other record names it.") : tr("No record uses it."))
        : m_isRenaming
        ? tr("%1 of %2 uses in %3 records will be renamed. Space ticks or unticks the selected rows.")
              .arg(numberText(m_model->countOfChosen()), numberText(m_model->rowCount()),
                   numberText(uses.countOfRecords()))
        : tr("Used in %1 records. Return shows the record.").arg(numberText(uses.countOfRecords()));
    if (!m_isRenaming && hasRows && uses.countOfRecords() == 1)
        text = tr("Used in one record. Return shows it.");
    if (uses.leftOut().records > 0)
        text += u'\n' + uses.leftOut().text();
    m_summary->setText(text);
}

bool UsesDialog::isChosen(std::size_t use) const
{
    return m_model->isChosen(use);
}

// Acting

bool UsesDialog::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_view && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Space && m_isRenaming) {
            toggleSelected();
            return true;
        }
        if ((key == Qt::Key_Return || key == Qt::Key_Enter) && !m_isRenaming) {
            showCurrent();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void UsesDialog::toggleSelected()
{
    const QModelIndex current = m_view->currentIndex();
    if (current.isValid())
        m_model->setChosen(m_view->selectionModel()->selectedRows(),
                           !m_model->isChosen(static_cast<std::size_t>(current.row())));
}

void UsesDialog::showCurrent()
{
    if (const NameUse *use = m_model->useAt(m_view->currentIndex()))
        Q_EMIT showRequested(InfoPtr(use->info)); // which may change what is shown here
}

void UsesDialog::selectAllInTable()
{
    InfoList infos;
    std::unordered_set<const VXGlyphInfo *> known;
    for (const NameUse &use : m_search->uses().uses()) {
        if (known.insert(use.info.get()).second)
            infos.push_back(use.info);
    }
    Q_EMIT selectRequested(infos);
}

} // namespace runebook
