#include "editing/window/DetailPane.h"

#include "editing/fields/ErrorBubble.h"
#include "editing/fields/PendingTexts.h"
#include "editing/fields/VXValidatingTextField.h"
#include "editing/fields/WholeValueDialog.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/window/CommonValues.h"
#include "editing/window/PaneRow.h"
#include "editing/window/PreviewLabel.h"
#include "model/FieldTable.h"
#include "platform/CallLater.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QToolButton>
#include <QVBoxLayout>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kLeastPreview = 84;
constexpr int kMostPreview = 170;

} // namespace

DetailPane::DetailPane(VXDocument &document, const RSRTVArrayController &list, QWidget *parent)
    : QWidget(parent),
      m_document(document),
      m_list(list),
      m_values(new CommonValues(this)),
      m_previewLabel(new PreviewLabel(this)),
      m_emptyLabel(new QLabel(tr("Select a record to see and edit its fields."), this)),
      m_form(new QWidget)
{
    setAccessibleName(tr("Fields of the selected records"));
    m_emptyLabel->setAlignment(Qt::AlignCenter);
    m_emptyLabel->setWordWrap(true);
    auto *grid = new QGridLayout(m_form);
    grid->setContentsMargins(12, 4, 12, 12);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(4);
    grid->setColumnStretch(1, 1);
    buildRows();
    auto *scroll = new QScrollArea(this);
    scroll->setWidget(m_form);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFocusPolicy(Qt::NoFocus);
    auto *preview = new QVBoxLayout;
    preview->setContentsMargins(12, 12, 12, 8);
    preview->addWidget(m_previewLabel);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(preview);
    layout->addWidget(m_emptyLabel, 1);
    layout->addWidget(scroll, 1);
    setMinimumWidth(240);
    connect(m_values, &CommonValues::foundMixed, this, &DetailPane::showMixed);
    m_scrollArea = scroll;
    m_document.addPendingTexts(this, [this] { return pendingTexts(); });
    connect(&m_document, &VXDocument::infosChanged, this, &DetailPane::validateFields);
    connect(&m_document, &VXDocument::infosInserted, this, &DetailPane::validateFields);
    connect(&m_document, &VXDocument::infosRemoved, this, &DetailPane::validateFields);
}

DetailPane::~DetailPane()
{
    // The rows outlive what they would speak to.
    for (const PaneRow *row : m_rows)
        row->disconnect(this);
}

// Building

void DetailPane::buildRows()
{
    constexpr auto kFields = fieldsBy<[](const FieldRow &row) { return row.editor != FieldEditor::None; }>();
    auto &grid = static_cast<QGridLayout &>(*m_form->layout());
    for (const GlyphField field : kFields) {
        m_rows.push_back(new PaneRow(field, grid, static_cast<int>(m_rows.size()), this));
        connectRow(*m_rows.back());
    }
    // The last one takes what room there is.
    grid.setRowStretch(PaneRow::kGridLines * static_cast<int>(m_rows.size() - 1), 1);
}

void DetailPane::connectRow(PaneRow &row)
{
    connect(&row, &PaneRow::textChanged, this, &DetailPane::noteTyping);
    connect(&row, &PaneRow::left, this, [this, &row] { commitRow(row, Stay::Leaving); });
    connect(&row, &PaneRow::entered, this, [this, &row] { commitRow(row, Stay::HoldsFocus); });
    connect(&row, &PaneRow::takeBackRequested, this, [this, &row] { takeBack(row); });
    connect(&row, &PaneRow::wholeRequested, this, [this, &row] { editWhole(row.field()); });
    connect(&row, &PaneRow::wholePasted, this, [this, &row](const QString &text, qsizetype caret) {
        if (!shownInfos().empty())
            editWhole(row.field())->setText(text, caret);
    });
    connect(&row, &PaneRow::recordRequested, this, [this, &row] {
        const QString name = repeatingName(m_document, row.text().split(kListSeparator));
        Q_EMIT showRequested(m_document.infoForName(name));
    });
    connect(&row, &PaneRow::remarkChanged, this, &DetailPane::fitPreview, Qt::QueuedConnection);
}

/// The fields first; the preview takes what they leave, so that none of them is under the fold of a small
/// window.
void DetailPane::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    fitPreview();
}

void DetailPane::fitPreview()
{
    const QMargins margins = layout()->itemAt(0)->layout()->contentsMargins();
    const int left = height() - margins.top() - margins.bottom() - m_form->minimumSizeHint().height();
    m_previewLabel->setFixedHeight(qBound(kLeastPreview, left, kMostPreview));
}

// Showing

const InfoList &DetailPane::shownInfos() const
{
    return m_values->infos();
}

void DetailPane::showSelection()
{
    InfoList selected = m_list.selectedObjects();
    if (selected != shownInfos()) {
        if (!commitEditing())
            takeBackRefused();
        m_values->setInfos(std::move(selected));
        for (PaneRow *row : m_rows)
            showRow(*row);
    } else {
        // The same records, changed from elsewhere: what is being typed stays.
        for (PaneRow *row : m_rows) {
            if (!row->isChanged())
                showRow(*row);
        }
    }
    m_emptyLabel->setVisible(shownInfos().empty());
    m_scrollArea->setVisible(!shownInfos().empty());
    validateFields();
    showPreview();
}

void DetailPane::showRow(PaneRow &row)
{
    showValue(row, m_values->valueOf(row.field()));
}

void DetailPane::showValue(PaneRow &row, const CommonValue &value)
{
    m_isShowing = true;
    row.show(value);
    // One name for several records cannot be.
    row.editor()->setEnabled(row.field() != GlyphField::Name || shownInfos().size() == 1);
    m_isShowing = false;
}

void DetailPane::showMixed(GlyphField field)
{
    if (PaneRow *row = rowOf(field); row && !row->isChanged())
        showValue(*row, {{}, 0, true});
}

WholeValueDialog *DetailPane::editWhole(GlyphField field)
{
    auto *sheet = new WholeValueDialog(m_document, shownInfos(), field, window());
    connect(sheet, &WholeValueDialog::remarked, this, &DetailPane::remarked);
    sheet->open();
    return sheet;
}

void DetailPane::showPreview()
{
    if (shownInfos().size() == 1)
        m_previewLabel->setFormattedText(m_document.formatStringFromInfo(shownInfos().front()));
    else
        m_previewLabel->clear();
}

void DetailPane::editName()
{
    if (auto *line = qobject_cast<QLineEdit *>(editorOf(GlyphField::Name)); line && isVisibleTo(window())) {
        line->setFocus();
        line->selectAll();
    }
}

QWidget *DetailPane::editorOf(GlyphField field) const
{
    const PaneRow *row = rowOf(field);
    return row ? row->editor() : nullptr;
}

QWidget *DetailPane::firstEditor() const
{
    const auto isUsable = [](const PaneRow *row) {
        return row->editor()->isVisible() && row->editor()->isEnabled();
    };
    const auto row = std::find_if(m_rows.begin(), m_rows.end(), isUsable);
    return row == m_rows.end() ? nullptr : (*row)->editor();
}

PaneRow *DetailPane::rowOf(const QObject *editor) const
{
    const auto row = std::find_if(m_rows.begin(), m_rows.end(),
                                  [editor](const PaneRow *each) { return each->editor() == editor; });
    return row == m_rows.end() ? nullptr : *row;
}

PaneRow *DetailPane::rowOf(GlyphField field) const
{
    const auto row = std::find_if(m_rows.begin(), m_rows.end(),
                                  [field](const PaneRow *each) { return each->field() == field; });
    return row == m_rows.end() ? nullptr : *row;
}

// Editing

void DetailPane::setFieldDelegate(QObject *delegate)
{
    for (const PaneRow *row : m_rows) {
        if (VXValidatingTextField *field = row->validatingField())
            field->setDelegate(delegate);
    }
}

void DetailPane::noteTyping()
{
    if (!m_isShowing && !shownInfos().empty())
        m_document.pendingTextChanged();
}

QJsonArray DetailPane::pendingTexts() const
{
    QJsonArray texts;
    for (const PaneRow *row : m_rows) {
        if (!shownInfos().empty() && row->isChanged())
            texts << pendingText(m_document, shownInfos(), row->field(), row->text());
    }
    return texts;
}

bool DetailPane::commitEditing(Error *refusal)
{
    return std::all_of(m_rows.begin(), m_rows.end(),
                       [&](PaneRow *row) { return commitRow(*row, Stay::HoldsFocus, refusal); });
}

bool DetailPane::commitRow(PaneRow &row, Stay stay, Error *refusal)
{
    const InfoList &infos = shownInfos();
    if (m_isShowing || infos.empty())
        return true;
    const QString remark = row.settle();
    if (row.isChanged()) {
        const QString text = row.text();
        if (const Error reason = objectionToText(m_document, infos, row.field(), text);
            !reason.domain.isEmpty()) {
            sayRefusal(row, reason, stay);
            return fail(refusal, reason);
        }
        // First: telling of the change comes back here.
        row.setTaken();
        setFieldFromText(m_document, infos, row.field(), text);
        m_document.flushChanges();
        if (const std::optional<FieldRemark> loss = remarkOnValue(m_document, infos, row.field()))
            Q_EMIT remarked(*loss);
    }
    if (!remark.isNull())
        callLater(row.editor(), [editor = row.editor(), remark] { ErrorBubble::remark(editor, remark); });
    return true;
}

void DetailPane::sayRefusal(PaneRow &row, const Error &reason, Stay stay)
{
    FieldRemark remark = remarkOnRefusal(m_document, shownInfos(), row.field(), row.text(), reason);
    if (!remark.offer.isEmpty()) {
        remark.takeOffer = [this, &row, take = remark.takeOffer] {
            takeBack(row);
            take();
        };
        Q_EMIT remarked(remark);
    }
    if (stay == Stay::HoldsFocus) {
        m_scrollArea->ensureWidgetVisible(row.editor());
        row.editor()->setFocus();
        ErrorBubble::show(row.editor(), reason);
        return;
    }
    // A field that is left shows its mark; the others say it, after the event that takes bubbles away.
    const auto *marked = row.validatingField();
    if (!marked || marked->errorHint().isEmpty())
        callLater(row.editor(), [editor = row.editor(), reason] { ErrorBubble::show(editor, reason); });
}

/// Where the records are another program's or script's choice, a refused text has no place to stay.
void DetailPane::takeBackRefused()
{
    for (PaneRow *row : m_rows) {
        if (!row->isChanged())
            continue;
        const Error reason = objectionToText(m_document, shownInfos(), row->field(), row->text());
        Q_EMIT remarked({tr("“%1” was not taken: %2").arg(row->text(), reason.text()), {}, {}});
        showRow(*row);
    }
}

bool DetailPane::hasPendingText(const QObject *editor) const
{
    const PaneRow *row = rowOf(editor);
    return row && !shownInfos().empty() && row->hasPendingText();
}

void DetailPane::revert(const QObject *editor)
{
    if (PaneRow *row = rowOf(editor))
        takeBack(*row);
}

void DetailPane::takeBack(PaneRow &row)
{
    showRow(row);
    validateFields();
}

/// What may stand in a field depends on all records, so it is asked again whenever one has changed.
void DetailPane::validateFields()
{
    for (const PaneRow *row : m_rows) {
        if (VXValidatingTextField *field = row->validatingField())
            field->validateAgain();
    }
}

bool DetailPane::textFieldHasValidContent(QObject *object)
{
    const PaneRow *row = rowOf(object);
    VXValidatingTextField *field = row ? row->validatingField() : nullptr;
    if (!field)
        return true;
    // Several records have no one name to object to.
    const bool isAsked = !shownInfos().empty() && field->isEnabled() && !row->isCut();
    const Error reason =
        isAsked ? objectionToText(m_document, shownInfos(), row->field(), field->text()) : Error();
    const QString hint = reason.description.section(u'\n', 0, 0);
    field->setErrorHint(hint);
    const bool isSomebodys =
        !row->isCut() && !repeatingName(m_document, field->text().split(kListSeparator)).isNull();
    field->extraButton()->setVisible(!hint.isEmpty() && isSomebodys);
    return hint.isEmpty();
}

} // namespace runebook
