#include "editing/window/DetailPane.h"

#include "editing/fields/ErrorBubble.h"
#include "editing/fields/PendingTexts.h"
#include "editing/fields/VXValidatingTextField.h"
#include "editing/fields/WholeValueDialog.h"
#include "editing/records/RSRTVArrayController.h"
#include "editing/window/CommonValues.h"
#include "editing/window/PaneForm.h"
#include "editing/window/PaneRow.h"
#include "editing/window/PreviewLabel.h"
#include "platform/CallLater.h"

#include <QLineEdit>
#include <QToolButton>
#include <QVBoxLayout>

namespace runebook {

using namespace Qt::StringLiterals;

DetailPane::DetailPane(VXDocument &document, const RSRTVArrayController &list, QWidget *parent)
    : QWidget(parent),
      m_document(document),
      m_list(list),
      m_values(new CommonValues(this)),
      m_form(new PaneForm(this))
{
    setAccessibleName(tr("Fields of the selected records"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_form);
    for (PaneRow *row : m_form->rows())
        connectRow(*row);
    connect(m_values, &CommonValues::foundMixed, this, &DetailPane::showMixed);
    m_document.addPendingTexts(this, [this] { return pendingTexts(); });
    connect(&m_document, &VXDocument::infosChanged, this, &DetailPane::validateFields);
    connect(&m_document, &VXDocument::infosInserted, this, &DetailPane::validateFields);
    connect(&m_document, &VXDocument::infosRemoved, this, &DetailPane::validateFields);
}

DetailPane::~DetailPane()
{
    // The rows outlive what they would speak to.
    for (const PaneRow *row : m_form->rows())
        row->disconnect(this);
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
    connect(&row, &PaneRow::entriesRequested, this, [this, &row] { Q_EMIT entriesRequested(row.field()); });
    connect(&row, &PaneRow::recordRequested, this, [this, &row] {
        const QString name = repeatingName(m_document, row.text().split(kListSeparator));
        Q_EMIT showRequested(m_document.infoForName(name));
    });
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
        for (PaneRow *row : m_form->rows())
            showRow(*row);
    } else {
        // The same records, changed from elsewhere: what is being typed stays.
        for (PaneRow *row : m_form->rows()) {
            if (!row->isChanged())
                showRow(*row);
        }
    }
    m_form->setRowsShown(!shownInfos().empty());
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
    row.offerEntries(shownInfos().size() > 1);
    // One name for several records cannot be.
    row.editor()->setEnabled(row.field() != GlyphField::Name || shownInfos().size() == 1);
    m_isShowing = false;
}

void DetailPane::showMixed(GlyphField field)
{
    if (PaneRow *row = m_form->rowOf(field); row && !row->isChanged())
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
        previewLabel()->setFormattedText(m_document.formatStringFromInfo(shownInfos().front()));
    else
        previewLabel()->clear();
}

void DetailPane::editName()
{
    if (auto *line = qobject_cast<QLineEdit *>(editorOf(GlyphField::Name)); line && isVisibleTo(window())) {
        line->setFocus();
        line->selectAll();
    }
}

PreviewLabel *DetailPane::previewLabel() const
{
    return m_form->previewLabel();
}

QWidget *DetailPane::editorOf(GlyphField field) const
{
    const PaneRow *row = m_form->rowOf(field);
    return row ? row->editor() : nullptr;
}

QWidget *DetailPane::firstEditor() const
{
    return m_form->firstEditor();
}

// Editing

void DetailPane::setFieldDelegate(QObject *delegate)
{
    for (const PaneRow *row : m_form->rows()) {
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
    for (const PaneRow *row : m_form->rows()) {
        if (!shownInfos().empty() && row->isChanged())
            texts << pendingText(m_document, shownInfos(), row->field(), row->text());
    }
    return texts;
}

bool DetailPane::commitEditing(Error *refusal)
{
    return std::all_of(m_form->rows().begin(), m_form->rows().end(),
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
        m_form->scrollTo(*row.editor());
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
    for (PaneRow *row : m_form->rows()) {
        if (!row->isChanged())
            continue;
        const Error reason = objectionToText(m_document, shownInfos(), row->field(), row->text());
        Q_EMIT remarked({tr("“%1” was not taken: %2").arg(row->text(), reason.text()), {}, {}});
        showRow(*row);
    }
}

bool DetailPane::hasPendingText(const QObject *editor) const
{
    const PaneRow *row = m_form->rowOf(editor);
    return row && !shownInfos().empty() && row->hasPendingText();
}

void DetailPane::revert(const QObject *editor)
{
    if (PaneRow *row = m_form->rowOf(editor))
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
    for (const PaneRow *row : m_form->rows()) {
        if (VXValidatingTextField *field = row->validatingField())
            field->validateAgain();
    }
}

bool DetailPane::textFieldHasValidContent(QObject *object)
{
    const PaneRow *row = m_form->rowOf(object);
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
