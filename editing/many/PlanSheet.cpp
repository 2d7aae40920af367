#include "editing/many/PlanSheet.h"

#include "editing/fields/PreviewTable.h"
#include "editing/many/PlanModel.h"
#include "platform/PlainLabel.h"
#include "platform/ScrolledForm.h"
#include "platform/WindowPlacement.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kSliceMs = 8;

} // namespace

PlanSheet::PlanSheet(VXDocument &document, const QString &title, const QString &doIt, QWidget *parent)
    : QDialog(parent, parent ? Qt::Sheet : Qt::Dialog),
      m_document(document),
      m_doIt(doIt),
      m_model(new PlanModel(this)),
      m_view(new PreviewTable(this)),
      m_summary(plainLabel({}, this)),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Cancel, this)),
      m_accept(m_buttons->addButton(doIt, QDialogButtonBox::AcceptRole))
{
    setWindowModality(Qt::WindowModal);
    setWindowTitle(title);
    m_view->setModel(m_model);
    m_view->horizontalHeader()->setStretchLastSection(true);
    m_summary->setWordWrap(true);
    m_summary->setAccessibleName(tr("What will be done"));
    m_accept->setDefault(true);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    for (QTimer *timer : {&m_refreshTimer, &m_planTimer, &m_countTimer})
        timer->setSingleShot(true);
    connect(&m_refreshTimer, &QTimer::timeout, this, &PlanSheet::refresh);
    connect(&m_planTimer, &QTimer::timeout, this, &PlanSheet::planMore);
    connect(&m_countTimer, &QTimer::timeout, this, &PlanSheet::showCounts);
    connect(m_model, &PlanModel::takenChanged, this, [this] { m_countTimer.start(0); });
    connect(&document, &VXDocument::infosInserted, this, &PlanSheet::refreshLater);
    connect(&document, &VXDocument::infosRemoved, this, &PlanSheet::refreshLater);
    connect(&document, &VXDocument::infoReplaced, this, &PlanSheet::refreshLater);
    connect(&document, &VXDocument::infosReset, this, &PlanSheet::refreshLater);
    connect(&document, &VXDocument::infosChanged, this, &PlanSheet::refreshLater);
}

PlanSheet::~PlanSheet()
{
    m_model->setPlan(nullptr);
}

void PlanSheet::setOptions(QWidget *form, QWidget *first)
{
    auto *parts = new QSplitter(this);
    parts->setChildrenCollapsible(false);
    parts->addWidget(new ScrolledForm(form, parts));
    parts->addWidget(m_view);
    parts->setStretchFactor(1, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(parts, 1);
    layout->addWidget(m_summary);
    layout->addWidget(m_buttons);
    QWidget *before = first;
    for (QWidget *option : form->findChildren<QWidget *>()) {
        if (option == first || option->window() != this || !(option->focusPolicy() & Qt::TabFocus))
            continue;
        setTabOrder(before, option);
        before = option;
    }
    setTabOrder(before, m_view);
    setTabOrder(m_view, m_accept);
    resize(fontMetrics().averageCharWidth() * 120, fontMetrics().height() * 27);
    WindowPlacement::fitIntoScreen(*this);
    first->setFocus();
    if (auto *line = qobject_cast<QLineEdit *>(first))
        line->selectAll();
    refresh();
    m_view->fitColumns();
}

void PlanSheet::refreshLater()
{
    m_accept->setEnabled(false);
    m_refreshTimer.start(0);
}

void PlanSheet::refresh()
{
    m_refreshTimer.stop();
    m_model->setPlan(nullptr);
    m_plan = makePlan();
    m_model->setPlan(m_plan.get());
    planMore();
    m_view->fitColumns();
}

void PlanSheet::planMore()
{
    m_isWhole = m_plan->planMore(QDeadlineTimer(kSliceMs));
    m_model->showMore();
    showCounts();
    if (!m_isWhole)
        m_planTimer.start(0);
}

void PlanSheet::showCounts()
{
    const QString obstacle = m_plan->obstacle();
    QString text = obstacle.isNull() ? m_plan->summary() : obstacle;
    if (!m_isWhole)
        text = tr("Looking… %1 %").arg(int(m_plan->planned() * 100));
    m_summary->setText(text);
    const qsizetype count = m_isWhole && obstacle.isNull() ? m_plan->countOfTaken() : 0;
    m_accept->setText(count > 0 ? m_doIt + u' ' + locale().toString(qlonglong(count)) : m_doIt);
    m_accept->setEnabled(count > 0);
}

std::unique_ptr<RecordPlan> PlanSheet::takePlan()
{
    m_model->setPlan(nullptr);
    return std::move(m_plan);
}

void PlanSheet::accept()
{
    // What has changed meanwhile is looked at first.
    m_document.flushChanges();
    if (m_refreshTimer.isActive())
        refresh();
    if (!m_isWhole || !m_plan->obstacle().isNull() || m_plan->countOfTaken() == 0)
        return;
    remember();
    m_document.disconnect(this);
    QDialog::accept();
}

} // namespace runebook
