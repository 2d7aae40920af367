#include "editing/window/PaneForm.h"

#include "editing/window/PaneRow.h"
#include "editing/window/PreviewLabel.h"
#include "model/FieldTable.h"

#include <QGridLayout>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>

namespace runebook {

namespace {

constexpr int kLeastPreview = 84;
constexpr int kMostPreview = 170;

} // namespace

PaneForm::PaneForm(QWidget *parent)
    : QWidget(parent),
      m_previewLabel(new PreviewLabel(this)),
      m_emptyLabel(new QLabel(tr("Select a record to see and edit its fields."), this)),
      m_fields(new QWidget),
      m_scrollArea(new QScrollArea(this))
{
    m_emptyLabel->setAlignment(Qt::AlignCenter);
    m_emptyLabel->setWordWrap(true);
    buildRows();
    m_scrollArea->setWidget(m_fields);
    m_scrollArea->setWidgetResizable(true);
    m_scrollArea->setFrameShape(QFrame::NoFrame);
    m_scrollArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scrollArea->setFocusPolicy(Qt::NoFocus);
    auto *preview = new QVBoxLayout;
    preview->setContentsMargins(12, 12, 12, 8);
    preview->addWidget(m_previewLabel);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(preview);
    layout->addWidget(m_emptyLabel, 1);
    layout->addWidget(m_scrollArea, 1);
    setMinimumWidth(240);
}

void PaneForm::buildRows()
{
    constexpr auto kFields = fieldsBy<[](const FieldRow &row) { return row.editor != FieldEditor::None; }>();
    auto *grid = new QGridLayout(m_fields);
    grid->setContentsMargins(12, 4, 12, 12);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(4);
    grid->setColumnStretch(1, 1);
    for (const GlyphField field : kFields) {
        auto *row = new PaneRow(field, *grid, static_cast<int>(m_rows.size()), this);
        connect(row, &PaneRow::remarkChanged, this, &PaneForm::fitPreview, Qt::QueuedConnection);
        m_rows.push_back(row);
    }
    // The last one takes what room there is.
    grid->setRowStretch(PaneRow::kGridLines * static_cast<int>(m_rows.size() - 1), 1);
}

/// The fields first; the preview takes what they leave, so that none of them is under the fold of a small
/// window.
void PaneForm::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    fitPreview();
}

void PaneForm::fitPreview()
{
    const QMargins margins = layout()->itemAt(0)->layout()->contentsMargins();
    const int left = height() - margins.top() - margins.bottom() - m_fields->minimumSizeHint().height();
    m_previewLabel->setFixedHeight(qBound(kLeastPreview, left, kMostPreview));
}

void PaneForm::setRowsShown(bool areShown)
{
    m_emptyLabel->setVisible(!areShown);
    m_scrollArea->setVisible(areShown);
}

void PaneForm::scrollTo(QWidget &editor)
{
    m_scrollArea->ensureWidgetVisible(&editor);
}

QWidget *PaneForm::firstEditor() const
{
    const auto isUsable = [](const PaneRow *row) {
        return row->editor()->isVisible() && row->editor()->isEnabled();
    };
    const auto row = std::find_if(m_rows.begin(), m_rows.end(), isUsable);
    return row == m_rows.end() ? nullptr : (*row)->editor();
}

PaneRow *PaneForm::rowOf(const QObject *editor) const
{
    const auto row = std::find_if(m_rows.begin(), m_rows.end(),
                                  [editor](const PaneRow *each) { return each->editor() == editor; });
    return row == m_rows.end() ? nullptr : *row;
}

PaneRow *PaneForm::rowOf(GlyphField field) const
{
    const auto row = std::find_if(m_rows.begin(), m_rows.end(),
                                  [field](const PaneRow *each) { return each->field() == field; });
    return row == m_rows.end() ? nullptr : *row;
}

} // namespace runebook
