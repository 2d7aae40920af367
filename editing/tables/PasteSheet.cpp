#include "editing/tables/PasteSheet.h"

#include "document/TableFields.h"
#include "editing/fields/GlyphColumns.h"
#include "editing/fields/PreviewTable.h"
#include "editing/tables/PastePreviewModel.h"
#include "platform/PlainLabel.h"
#include "platform/ScrolledForm.h"
#include "platform/ShownText.h"
#include "platform/TurningWindows.h"
#include "platform/WindowPlacement.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kMostInName = 24; // characters of a heading or a sample
constexpr int kRefusalsShown = 200;

QString shortened(const QString &text)
{
    return text.size() > kMostInName ? beginningOf(text, kMostInName).toString() + u'…' : text;
}

} // namespace

PasteSheet::PasteSheet(PastedTable table, std::vector<GlyphField> columns, PasteTarget target,
                       QWidget *parent)
    : QDialog(parent, parent ? Qt::Sheet : Qt::Dialog),
      m_table(std::move(table)),
      m_shownColumns(std::move(columns)),
      m_target(std::move(target)),
      m_preview(new PastePreviewModel(this))
{
    setObjectName(u"pasteSheet"_s);
    setWindowModality(Qt::WindowModal);
    setWindowTitle(tr("Paste Table"));
    m_choices = usualChoices(m_table, m_shownColumns, m_target);
    auto *parts = new QSplitter(this);
    parts->setChildrenCollapsible(false);
    parts->addWidget(makeOptions());
    parts->addWidget(makePreview());
    parts->setStretchFactor(1, 1);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    m_paste = buttons->addButton(tr("&Paste"), QDialogButtonBox::AcceptRole);
    m_paste->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    m_summary->setWordWrap(true);
    m_summary->setAccessibleName(tr("What the paste will do"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(parts, 1);
    layout->addWidget(m_summary);
    layout->addWidget(buttons);
    resize(fontMetrics().averageCharWidth() * 130, fontMetrics().height() * 30);
    WindowPlacement::fitIntoScreen(*this);
    makeColumns();
    refresh();
    m_view->fitColumns();
    m_paste->setFocus();
}

PasteSheet::~PasteSheet()
{
    m_preview->setPlan(nullptr, nullptr, {});
}

// Building

QWidget *PasteSheet::makeOptions()
{
    auto *inner = new QWidget;
    auto *form = new QFormLayout(inner);
    form->setContentsMargins(0, 0, form->contentsMargins().right(), 0);
    form->setRowWrapPolicy(QFormLayout::WrapAllRows);
    m_headings = new QCheckBox(tr("First row holds &headings"), inner);
    m_headings->setChecked(m_choices.hasHeadings);
    connect(m_headings, &QCheckBox::toggled, this, &PasteSheet::takeHeadings);
    form->addRow(m_headings);
    m_rows = new QComboBox(inner);
    fillRowChoices();
    connect(m_rows, &QComboBox::currentIndexChanged, this, &PasteSheet::takeRows);
    form->addRow(tr("&Rows:"), m_rows);
    m_rows->setAccessibleName(tr("Rows"));
    m_sizesLabel = plainLabel({}, inner);
    m_sizesLabel->setWordWrap(true);
    m_sizes = new QComboBox(inner);
    m_sizesLabel->setBuddy(m_sizes);
    connect(m_sizes, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (index < 0)
            return;
        m_choices.sizes = PasteSizes(m_sizes->currentData().toInt());
        refresh();
    });
    form->addRow(m_sizesLabel);
    form->addRow(m_sizes);
    m_addsUnmatched = addOption(*form, tr("Rows that match nothing become &new records"),
                                &PasteChoices::addsUnmatched, false);
    addOption(*form, tr("&Empty cells leave values as they are"), &PasteChoices::takesEmpty, true);
    addOption(*form, tr("Paste nothing while values are &invalid"), &PasteChoices::stopsAtInvalid, false);
    auto *title = new QLabel(tr("Columns:"), inner);
    form->addRow(title);
    auto *columns = new QWidget(inner);
    m_columnsForm = new QFormLayout(columns);
    m_columnsForm->setContentsMargins({});
    m_columnsForm->setRowWrapPolicy(QFormLayout::WrapLongRows);
    form->addRow(columns);
    return new ScrolledForm(inner, this);
}

QCheckBox *PasteSheet::addOption(QFormLayout &form, const QString &text, bool PasteChoices::*option,
                                 bool isReversed)
{
    auto *box = new QCheckBox(text, form.parentWidget());
    box->setChecked(m_choices.*option != isReversed);
    connect(box, &QCheckBox::toggled, this, [this, option, isReversed](bool isOn) {
        m_choices.*option = isOn != isReversed;
        refresh();
    });
    form.addRow(box);
    return box;
}

QWidget *PasteSheet::makePreview()
{
    auto *side = new QSplitter(Qt::Vertical, this);
    side->setChildrenCollapsible(false);
    m_view = new PreviewTable(side);
    m_view->setModel(m_preview);
    m_refusals = new QListWidget(side);
    m_refusals->setAccessibleName(tr("Invalid values"));
    m_refusals->setWordWrap(true);
    m_refusals->hide();
    connect(m_refusals, &QListWidget::currentRowChanged, this, [this](int at) {
        if (at < 0 || at >= std::ssize(m_plan.refusals()))
            return;
        const PastePlan::Refusal &refusal = m_plan.refusals()[static_cast<std::size_t>(at)];
        m_view->setCurrentIndex(
            m_preview->index(static_cast<int>(refusal.row), m_preview->columnOf(refusal.field)));
    });
    side->setStretchFactor(0, 4);
    side->setStretchFactor(1, 1);
    m_summary = plainLabel({}, this);
    return side;
}

void PasteSheet::fillRowChoices()
{
    const auto add = [this](const QString &text, PasteRows rows, CompareKey key = CompareKey::Name) {
        m_rows->addItem(text, int(rows));
        m_rows->setItemData(m_rows->count() - 1, int(key), Qt::UserRole + 1);
        if (m_choices.rows == rows && m_choices.key == key)
            m_rows->setCurrentIndex(m_rows->count() - 1);
    };
    add(tr("Into the records with the same name"), PasteRows::ByKey, CompareKey::Name);
    add(tr("Into the records with the same code point"), PasteRows::ByKey, CompareKey::Unicode);
    add(tr("Into the records with the same production name"), PasteRows::ByKey, CompareKey::Production);
    if (!m_target.selected.empty())
        add(tr("Into the selected records (%1)").arg(locale().toString(qlonglong(m_target.selected.size()))),
            PasteRows::OntoSelection);
    add(tr("As new records"), PasteRows::AsNew);
    m_rows->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_rows->setMinimumContentsLength(int(kMostInName));
}

QString PasteSheet::nameOfColumn(qsizetype column) const
{
    if (m_choices.hasHeadings && !m_table.cell(0, column).isEmpty())
        return shortened(m_table.cell(0, column).simplified());
    const QString sample = m_table.rows.empty() ? QString() : m_table.cell(0, column).simplified();
    const QString number = locale().toString(qlonglong(column + 1));
    return sample.isEmpty() ? tr("Column %1").arg(number)
                            : tr("Column %1 (%2…)").arg(number, shortened(sample));
}

void PasteSheet::makeColumns()
{
    while (m_columnsForm->rowCount() > 0)
        m_columnsForm->removeRow(0);
    m_fields.clear();
    for (qsizetype column = 0; column < m_table.columns; ++column) {
        m_fields.push_back(makeColumn(column));
        auto *label = plainLabel(nameOfColumn(column), m_columnsForm->parentWidget());
        label->setBuddy(m_fields.back());
        m_columnsForm->addRow(label, m_fields.back());
    }
}

QComboBox *PasteSheet::makeColumn(qsizetype column)
{
    auto *box = new QComboBox(m_columnsForm->parentWidget());
    box->setAccessibleName(tr("Field for %1").arg(nameOfColumn(column)));
    box->addItem(tr("(left out)"));
    for (const GlyphField field : tableFields()) {
        box->addItem(fieldTitle(field), int(field));
        if (m_choices.fields[static_cast<std::size_t>(column)] == field)
            box->setCurrentIndex(box->count() - 1);
    }
    connect(box, &QComboBox::currentIndexChanged, this, [this, box, column] {
        const QVariant field = box->currentData();
        setField(column, field.isValid() ? std::optional(GlyphField(field.toInt())) : std::nullopt);
    });
    return box;
}

// Choosing

void PasteSheet::setField(qsizetype column, std::optional<GlyphField> field)
{
    const qsizetype other = field ? m_choices.columnOf(*field) : -1;
    m_choices.fields[static_cast<std::size_t>(column)] = field;
    if (other >= 0 && other != column) {
        // A field takes one column: the other one gives it away.
        m_choices.fields[static_cast<std::size_t>(other)] = {};
        const QSignalBlocker quiet(m_fields[static_cast<std::size_t>(other)]);
        m_fields[static_cast<std::size_t>(other)]->setCurrentIndex(0);
    }
    refresh();
    m_view->fitColumns();
}

void PasteSheet::takeHeadings(bool hasHeadings)
{
    m_choices.hasHeadings = hasHeadings;
    makeColumns();
    refresh();
}

void PasteSheet::takeRows()
{
    m_choices.rows = PasteRows(m_rows->currentData().toInt());
    m_choices.key = CompareKey(m_rows->currentData(Qt::UserRole + 1).toInt());
    refresh();
}

// Showing

void PasteSheet::refresh()
{
    m_preview->setPlan(nullptr, nullptr, {});
    {
        const TurningWindows turning(tr("Looking what changes…"), isVisible() ? this : parentWidget());
        m_plan = PastePlan::madeApart(m_table, m_choices, m_target);
    }
    m_preview->setPlan(&m_plan, &m_table, m_choices);
    const QString obstacle = m_plan.obstacle();
    m_summary->setText(obstacle.isNull() || obstacle == m_plan.summary()
                           ? m_plan.summary()
                           : obstacle + u' ' + m_plan.summary());
    m_paste->setEnabled(obstacle.isNull());
    m_addsUnmatched->setEnabled(m_choices.rows == PasteRows::ByKey
                                || m_choices.sizes == PasteSizes::GoOnBelow);
    showSizes();
    showRefusals();
}

void PasteSheet::showSizes()
{
    const qsizetype rows = std::ssize(m_table.rows) - (m_choices.hasHeadings ? 1 : 0);
    const qsizetype selected = std::ssize(m_target.selected);
    const bool isAsked = m_choices.rows == PasteRows::OntoSelection && rows != selected;
    m_sizesLabel->setVisible(isAsked);
    m_sizes->setVisible(isAsked);
    if (!isAsked)
        return;
    const QSignalBlocker quiet(m_sizes);
    m_sizesLabel->setText(
        tr("Rows: %1. Selected records: %2.").arg(locale().toString(rows), locale().toString(selected)));
    m_sizes->clear();
    m_sizes->setPlaceholderText(tr("Choose what to do…"));
    m_sizes->setAccessibleName(tr("When there are other than so many rows"));
    if (rows > selected) {
        m_sizes->addItem(tr("Go on with the records below"), int(PasteSizes::GoOnBelow));
        m_sizes->addItem(tr("Leave out the rest of the rows"), int(PasteSizes::OnlyFitting));
    } else {
        m_sizes->addItem(tr("Repeat the rows"), int(PasteSizes::Repeat));
        m_sizes->addItem(tr("Leave the rest of the records"), int(PasteSizes::OnlyFitting));
    }
    m_sizes->setCurrentIndex(m_choices.sizes ? m_sizes->findData(int(*m_choices.sizes)) : -1);
    if (m_sizes->currentIndex() < 0 && m_choices.sizes) {
        m_choices.sizes.reset(); // the answer to another question
        refresh();
    }
}

void PasteSheet::showRefusals()
{
    const QSignalBlocker quiet(m_refusals);
    m_refusals->clear();
    const auto &refusals = m_plan.refusals();
    for (const PastePlan::Refusal &refusal : refusals) {
        if (m_refusals->count() == kRefusalsShown) {
            m_refusals->addItem(
                tr("And %1 more.").arg(locale().toString(qlonglong(std::ssize(refusals) - kRefusalsShown))));
            break;
        }
        m_refusals->addItem(m_plan.sentence(refusal));
    }
    m_refusals->setVisible(!refusals.empty());
}

} // namespace runebook
