#include "editing/many/EntriesSheet.h"

#include "editing/fields/GlyphColumns.h"
#include "editing/fields/PreviewTable.h"
#include "editing/many/EntriesModel.h"
#include "editing/many/ManySettings.h"
#include "model/FieldTable.h"
#include "platform/PlainLabel.h"
#include "platform/WindowPlacement.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <limits>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kSliceMs = 8;
constexpr int kRefusalsShown = 200;

QString number(qsizetype count)
{
    return QLocale().toString(qlonglong(count));
}

} // namespace

EntriesSheet::EntriesSheet(const VXDocument &document, InfoList infos, std::optional<GlyphField> field,
                           QWidget *parent)
    : QDialog(parent, parent ? Qt::Sheet : Qt::Dialog),
      m_document(document),
      m_infos(std::move(infos)),
      m_model(new EntriesModel(this))
{
    setObjectName(u"entriesSheet"_s);
    setWindowModality(Qt::WindowModal);
    setWindowTitle(m_infos.size() == 1
                       ? tr("Add or Remove Entries of One Record")
                       : tr("Add or Remove Entries of %1 Records").arg(number(std::ssize(m_infos))));
    const std::optional<GlyphField> last = fieldForKey(Settings::kEntriesField.value());
    makeControls(field.value_or(last && hasEntries(*last) ? *last : fieldsWithEntries().front()));
    layOut();
    for (QTimer *timer : {&m_countTimer, &m_planTimer, &m_refreshTimer})
        timer->setSingleShot(true);
    connect(&m_countTimer, &QTimer::timeout, this, &EntriesSheet::countMore);
    connect(&m_planTimer, &QTimer::timeout, this, &EntriesSheet::planMore);
    connect(&m_refreshTimer, &QTimer::timeout, this, &EntriesSheet::countAgain);
    connect(m_model, &EntriesModel::wishesChanged, this, &EntriesSheet::planAgain);
    connect(&document, &VXDocument::infosChanged, this, [this] { m_refreshTimer.start(0); });
    countAgain();
    m_added->setFocus();
}

EntriesSheet::~EntriesSheet() = default;

// Building

void EntriesSheet::makeControls(GlyphField chosen)
{
    m_field = new QComboBox(this);
    m_field->setAccessibleName(tr("Field"));
    for (const GlyphField each : fieldsWithEntries()) {
        m_field->addItem(fieldTitle(each), int(each));
        if (each == chosen)
            m_field->setCurrentIndex(m_field->count() - 1);
    }
    connect(m_field, &QComboBox::currentIndexChanged, this, &EntriesSheet::countAgain);
    m_added = new QLineEdit(this);
    m_added->setMaxLength(std::numeric_limits<int>::max());
    m_added->setAccessibleName(tr("Add to all"));
    m_added->setPlaceholderText(tr("One entry, or several separated by commas"));
    connect(m_added, &QLineEdit::textChanged, this, &EntriesSheet::planAgain);
    m_view = new PreviewTable(this);
    m_view->setAccessibleName(tr("Entries"));
    m_view->setModel(m_model);
    m_view->horizontalHeader()->setStretchLastSection(true);
    m_summary = plainLabel({}, this);
    m_summary->setWordWrap(true);
    m_summary->setAccessibleName(tr("What will be done"));
    m_refusals = new QListWidget(this);
    m_refusals->setAccessibleName(tr("Records that are left as they are"));
    m_refusals->setWordWrap(true);
    m_refusals->setMaximumHeight(fontMetrics().height() * 5);
    m_refusals->hide();
}

void EntriesSheet::layOut()
{
    auto *form = new QFormLayout;
    form->addRow(tr("&Field:"), m_field);
    form->addRow(tr("&Add to all:"), m_added);
    auto *label =
        new QLabel(tr("&Entries now: a tick adds one to all, taking the tick away removes it."), this);
    label->setWordWrap(true);
    label->setBuddy(m_view);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    m_accept = buttons->addButton(tr("&Change"), QDialogButtonBox::AcceptRole);
    m_accept->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(label);
    layout->addWidget(m_view, 1);
    layout->addWidget(m_summary);
    layout->addWidget(m_refusals);
    layout->addWidget(buttons);
    resize(fontMetrics().averageCharWidth() * 80, fontMetrics().height() * 24);
    WindowPlacement::fitIntoScreen(*this);
}

// Finding out

GlyphField EntriesSheet::field() const
{
    return GlyphField(m_field->currentData().toInt());
}

void EntriesSheet::countAgain()
{
    m_refreshTimer.stop();
    m_counts = EntryCounts(m_infos, field());
    m_model->setCounts({}, std::ssize(m_infos));
    countMore();
    planAgain();
}

void EntriesSheet::countMore()
{
    if (!m_counts.goOn(QDeadlineTimer(kSliceMs))) {
        m_countTimer.start(0);
        return;
    }
    m_countTimer.stop();
    m_model->setCounts(m_counts.counts(), std::ssize(m_infos));
    m_view->fitColumns();
    if (m_model->rowCount() > 0)
        m_view->setCurrentIndex(m_model->index(0, 0));
}

void EntriesSheet::planAgain()
{
    EntryChange change = m_model->change(field());
    TypedEntries typed = typedEntries(field(), m_added->text());
    m_objection = typed.objection;
    change.added << typed.entries;
    change.added.removeDuplicates();
    m_plan = std::make_unique<EntryPlan>(m_document, m_infos, change);
    planMore();
}

void EntriesSheet::planMore()
{
    m_isWhole = m_plan->planMore(QDeadlineTimer(kSliceMs));
    showPlan();
    if (!m_isWhole)
        m_planTimer.start(0);
}

void EntriesSheet::showPlan()
{
    const qsizetype count = m_isWhole && m_objection.isNull() ? std::ssize(m_plan->changing()) : 0;
    m_accept->setEnabled(count > 0);
    m_accept->setText(count > 0 ? tr("&Change %1").arg(number(count)) : tr("&Change"));
    if (!m_objection.isNull())
        m_summary->setText(m_objection);
    else if (!m_isWhole || m_countTimer.isActive())
        m_summary->setText(tr("Looking…"));
    else
        m_summary->setText(m_plan->summary());
    showRefusals();
}

void EntriesSheet::showRefusals()
{
    m_refusals->clear();
    const auto &refusals = m_plan->refusals();
    for (const EntryPlan::Refusal &refusal : refusals) {
        if (m_refusals->count() == kRefusalsShown) {
            m_refusals->addItem(tr("And %1 more.").arg(number(std::ssize(refusals) - kRefusalsShown)));
            break;
        }
        m_refusals->addItem(
            tr("%1: %2").arg(cellDisplayText(*refusal.info, GlyphField::Name), refusal.reason));
    }
    m_refusals->setVisible(m_isWhole && !refusals.empty());
}

void EntriesSheet::accept()
{
    if (m_refreshTimer.isActive())
        countAgain();
    if (!m_accept->isEnabled())
        return;
    Settings::kEntriesField.set(keyOfField(field()));
    m_document.disconnect(this);
    QDialog::accept();
}

} // namespace runebook
