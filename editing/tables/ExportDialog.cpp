#include "editing/tables/ExportDialog.h"

#include "editing/fields/GlyphColumns.h"
#include "editing/fields/SignalColors.h"
#include "platform/LongWork.h"
#include "platform/PlainLabel.h"
#include "platform/ScrolledForm.h"
#include "platform/WindowPlacement.h"
#include "platform/documents/DocumentPanels.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDeadlineTimer>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kSliceMs = 8;
constexpr int kTabStop = 16; // characters; wider than most headings

} // namespace

ExportDialog::ExportDialog(std::array<InfoList, 3> records, QString ownFile, QWidget *parent)
    : QDialog(parent, parent ? Qt::Sheet : Qt::Dialog),
      m_records(std::move(records)),
      m_ownFile(std::move(ownFile))
{
    setObjectName(u"exportDialog"_s);
    setWindowModality(Qt::WindowModal);
    setWindowTitle(tr("Export Table"));
    auto *top = new QHBoxLayout;
    top->addWidget(makeFields(), 1);
    top->addWidget(makeForm(), 1);
    m_preview = new QPlainTextEdit(this);
    m_preview->setReadOnly(true);
    m_preview->setTabChangesFocus(true);
    m_preview->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_preview->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_preview->setTabStopDistance(QFontMetricsF(m_preview->font()).averageCharWidth() * kTabStop);
    m_preview->setAccessibleName(tr("Preview"));
    m_losses = plainLabel({}, this);
    m_losses->setWordWrap(true);
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, SignalColors::warningText(colors));
    m_losses->setPalette(colors);
    m_losses->hide();
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    m_export = buttons->addButton(tr("&Export…"), QDialogButtonBox::AcceptRole);
    m_export->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &ExportDialog::askForFile);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top, 3);
    layout->addWidget(m_preview, 2);
    layout->addWidget(m_losses);
    layout->addWidget(buttons);
    m_refreshTimer.setSingleShot(true);
    connect(&m_refreshTimer, &QTimer::timeout, this, &ExportDialog::refresh);
    connect(&m_lossTimer, &QTimer::timeout, this, &ExportDialog::countLosses);
    fillForm(TableChoices::remembered());
    resize(fontMetrics().averageCharWidth() * 95, fontMetrics().height() * 28);
    WindowPlacement::fitIntoScreen(*this);
    refresh();
    m_fields->setFocus();
}

ExportDialog::~ExportDialog() = default;

// Building

QWidget *ExportDialog::makeFields()
{
    auto *box = new QWidget(this);
    m_fields = new QListWidget(box);
    m_fields->setDragDropMode(QAbstractItemView::InternalMove);
    m_fields->setAccessibleName(tr("Fields"));
    auto *label = new QLabel(tr("&Fields, in their order:"), box);
    label->setBuddy(m_fields);
    auto *buttons = new QHBoxLayout;
    const auto addStep = [&](const QString &text, const QKeySequence &key, int step) {
        auto *button = new QPushButton(text, box);
        button->setAutoDefault(false);
        button->setToolTip(key.toString(QKeySequence::NativeText));
        connect(button, &QPushButton::clicked, this, [this, step] { moveField(step); });
        buttons->addWidget(button);
    };
    addStep(tr("&Up"), QKeySequence(Qt::ALT | Qt::Key_Up), -1);
    addStep(tr("&Down"), QKeySequence(Qt::ALT | Qt::Key_Down), 1);
    m_fields->installEventFilter(this);
    auto *layout = new QVBoxLayout(box);
    layout->setContentsMargins({});
    layout->addWidget(label);
    layout->addWidget(m_fields, 1);
    layout->addLayout(buttons);
    connect(m_fields, &QListWidget::itemChanged, this, &ExportDialog::choicesHaveChanged);
    for (const auto signal : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        connect(m_fields->model(), signal, this, &ExportDialog::choicesHaveChanged);
    connect(m_fields->model(), &QAbstractItemModel::rowsMoved, this, &ExportDialog::choicesHaveChanged);
    return box;
}

QWidget *ExportDialog::makeForm()
{
    auto *inner = new QWidget;
    auto *form = new QFormLayout(inner);
    form->setContentsMargins({});
    form->setRowWrapPolicy(QFormLayout::WrapAllRows);
    m_which = addChoice(*form, tr("&Records:"), tr("Records"));
    m_headings = addChoice(*form, tr("&Headings:"), tr("Headings"));
    m_separator = addChoice(*form, tr("&Separator:"), tr("Separator"));
    m_mark = new QCheckBox(tr("&Byte order mark"), inner);
    m_mark->setToolTip(tr("Some spreadsheets read a file as UTF-8 only with it."));
    connect(m_mark, &QCheckBox::toggled, this, &ExportDialog::choicesHaveChanged);
    form->addRow(m_mark);
    return new ScrolledForm(inner, this);
}

QComboBox *ExportDialog::addChoice(QFormLayout &form, const QString &label, const QString &name)
{
    auto *box = new QComboBox(form.parentWidget());
    box->setAccessibleName(name);
    connect(box, &QComboBox::currentIndexChanged, this, &ExportDialog::choicesHaveChanged);
    form.addRow(label, box);
    return box;
}

void ExportDialog::fillForm(const TableChoices &choices)
{
    for (const GlyphField field : choices.order) {
        auto *item = new QListWidgetItem(fieldTitle(field), m_fields);
        item->setData(Qt::UserRole, int(field));
        const bool isTaken =
            std::find(choices.fields.begin(), choices.fields.end(), field) != choices.fields.end();
        item->setFlags((item->flags() | Qt::ItemIsUserCheckable) & ~Qt::ItemIsDropEnabled);
        item->setCheckState(isTaken ? Qt::Checked : Qt::Unchecked);
    }
    m_fields->setCurrentRow(0);
    const auto addRecords = [this](const QString &text, TableRecords which) {
        const std::size_t count = m_records[static_cast<std::size_t>(which)].size();
        if (count > 0 || which == TableRecords::All)
            m_which->addItem(text.arg(locale().toString(qlonglong(count))), int(which));
    };
    addRecords(tr("All (%1)"), TableRecords::All);
    addRecords(tr("Those shown (%1)"), TableRecords::Shown);
    addRecords(tr("Those selected (%1)"), TableRecords::Selected);
    m_which->setCurrentIndex(qMax(0, m_which->findData(int(choices.records))));
    m_headings->addItem(tr("Keys (name, subCategory)"), false);
    m_headings->addItem(tr("Titles (Name, Subcategory)"), true);
    m_headings->setCurrentIndex(choices.hasTitles ? 1 : 0);
    m_separator->addItem(tr("Tab"), int('\t'));
    m_separator->addItem(tr("Comma"), int(','));
    m_separator->addItem(tr("Semicolon"), int(';'));
    m_separator->setCurrentIndex(m_separator->findData(int(choices.separator)));
    m_mark->setChecked(choices.hasByteOrderMark);
}

// Choosing

bool ExportDialog::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress && watched == m_fields) {
        const auto *press = static_cast<QKeyEvent *>(event);
        const bool isStep = press->key() == Qt::Key_Up || press->key() == Qt::Key_Down;
        if (isStep && press->modifiers().testFlag(Qt::AltModifier)) {
            moveField(press->key() == Qt::Key_Up ? -1 : 1);
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

TableChoices ExportDialog::choices() const
{
    TableChoices choices;
    for (int row = 0; row < m_fields->count(); ++row) {
        const QListWidgetItem *item = m_fields->item(row);
        choices.order.push_back(GlyphField(item->data(Qt::UserRole).toInt()));
        if (item->checkState() == Qt::Checked)
            choices.fields.push_back(choices.order.back());
    }
    choices.records = TableRecords(m_which->currentData().toInt());
    choices.hasTitles = m_headings->currentData().toBool();
    choices.separator = static_cast<char>(m_separator->currentData().toInt());
    choices.hasByteOrderMark = m_mark->isChecked();
    return choices;
}

const InfoList &ExportDialog::records() const
{
    return m_records[static_cast<std::size_t>(m_which->currentData().toInt())];
}

void ExportDialog::moveField(int step)
{
    const int row = m_fields->currentRow();
    const int target = row + step;
    if (row < 0 || target < 0 || target >= m_fields->count())
        return;
    m_fields->insertItem(target, m_fields->takeItem(row));
    m_fields->setCurrentRow(target);
}

void ExportDialog::choicesHaveChanged()
{
    m_refreshTimer.start(0);
}

void ExportDialog::refresh()
{
    const TableChoices chosen = choices();
    m_form = tableForm(chosen);
    m_export->setEnabled(!chosen.fields.empty());
    m_preview->setPlainText(chosen.fields.empty() ? tr("No field is ticked.")
                                                  : tablePreview(records(), chosen));
    m_lossCount = {};
    m_lossTimer.start(0);
}

void ExportDialog::countLosses()
{
    const QDeadlineTimer deadline(kSliceMs);
    if (!m_lossCount.goOn(records(), *m_form, [&deadline] { return deadline.hasExpired(); }))
        return;
    m_lossTimer.stop();
    m_losses->setText(m_lossCount.text());
    m_losses->setVisible(m_lossCount.records > 0);
}

// Doing it

void ExportDialog::askForFile()
{
    auto *panel = new QFileDialog(this, tr("Export Table"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    const QString suffix = suffixOf(choices());
    panel->setNameFilters({tr("Tables (*.tsv *.csv *.txt)"), tr("All files (*)")});
    panel->setDefaultSuffix(suffix);
    const QFileInfo own(m_ownFile);
    if (!m_ownFile.isEmpty())
        panel->setDirectory(own.absolutePath());
    panel->selectFile((m_ownFile.isEmpty() ? tr("Glyphs") : own.completeBaseName()) + u'.' + suffix);
    connect(panel, &QFileDialog::fileSelected, this, &ExportDialog::exportTo);
    panel->open();
}

void ExportDialog::exportTo(const QString &path)
{
    if (const Error objection = objectionToTarget(path, m_ownFile); !objection.domain.isEmpty()) {
        DocumentPanels::present(objection, this);
        return;
    }
    const TableChoices chosen = choices();
    chosen.remember();
    const InfoList exportedInfos = records();
    Error error;
    bool isWritten = false;
    {
        LongWork work(tr("Exporting…"), this);
        isWritten = exportTable(
            exportedInfos, chosen, path, [&work](double part) { return work.goOn(part); }, &error);
    }
    if (isWritten) {
        accept();
        Q_EMIT exported(std::ssize(exportedInfos), path);
    } else if (!error.domain.isEmpty()) {
        DocumentPanels::present(error, this);
    }
}

} // namespace runebook
