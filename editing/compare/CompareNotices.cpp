#include "editing/compare/CompareNotices.h"

#include "editing/compare/CompareSettings.h"
#include "editing/compare/Overlooked.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>

namespace runebook {

using namespace Qt::StringLiterals;

CompareNotices::CompareNotices(ComparedDocuments &documents, ListedKeys &keys, const ShownRecords &records,
                               const Widgets &widgets)
    : m_documents(documents), m_keys(keys), m_records(records), m_widgets(widgets)
{
    for (QLabel *label : {widgets.text, widgets.note})
        label->setTextFormat(Qt::PlainText);
    connect(widgets.cancel, &QPushButton::clicked, &keys, &ListedKeys::cancel);
    connect(widgets.refresh, &QPushButton::clicked, &keys, &ListedKeys::update);
}

void CompareNotices::show()
{
    const bool isFinding = m_keys.isFinding();
    m_widgets.progressRow->setVisible(isFinding);
    if (isFinding)
        m_widgets.progress->setValue(static_cast<int>(m_keys.progress() * m_widgets.progress->maximum()));
    m_widgets.staleBar->setVisible(m_keys.isStale());

    const bool hasRecords = m_records.hasAny();
    m_widgets.pages->setCurrentWidget(hasRecords ? m_widgets.recordsPage : m_widgets.textPage);
    if (!hasRecords)
        m_widgets.text->setText(emptyText());
    const QString note = hasRecords ? noteText() : QString();
    m_widgets.note->setText(note);
    m_widgets.note->setVisible(!note.isEmpty());
}

/// What stands in place of the records when there are none: why, and what to do.
QString CompareNotices::emptyText() const
{
    if (m_keys.isFinding())
        return tr("Comparing…");
    if (m_keys.isCancelled())
        return tr("The comparison was cancelled.\n\nPress F5 to compare again.");
    switch (m_documents.choice(ComparedDocuments::Left).rowCount()) {
    case 0:
        return tr("No document is open.\n\nOpen two documents, then show this window again to compare them.");
    case 1:
        return tr(
            "Only one document is open.\n\nOpen another one, then show this window again to compare them.");
    default:
        break;
    }
    if (!m_documents.document(ComparedDocuments::Left) || !m_documents.document(ComparedDocuments::Right))
        return tr("A document was closed.\n\nChoose another one above.");
    if (!m_documents.areTwo())
        return tr("Both sides show the same document.\n\nChoose another one on one side.");
    if (m_keys.list().rowCount() > 0)
        return tr("Choose a glyph in the list to see its records.");
    return textOfEmptyList();
}

QString CompareNotices::textOfEmptyList() const
{
    QString text;
    switch (Settings::kCompareMode.value()) {
    case CompareMode::OnlyRight:
        text = tr("Every glyph on the right is also on the left.");
        break;
    case CompareMode::OnlyLeft:
        text = tr("Every glyph on the left is also on the right.");
        break;
    case CompareMode::Different:
        text = tr("No glyph that both documents have differs.");
        break;
    }
    for (const CompareMode mode : {CompareMode::OnlyRight, CompareMode::OnlyLeft, CompareMode::Different}) {
        if (m_keys.count(mode) > 0)
            return text + u"\n\n"_s + tr("There are differences of another kind: choose above the list.");
    }
    return text;
}

/// A word on records that are listed although no field tells why.
QString CompareNotices::noteText() const
{
    const InfoList &left = m_records.infos(ComparedDocuments::Left);
    const InfoList &right = m_records.infos(ComparedDocuments::Right);
    if (Settings::kCompareMode.value() != CompareMode::Different || left.size() != 1 || right.size() != 1)
        return {};
    const CompareOptions options = overlookedOptions();
    if (differingBits(*left.front(), *right.front(), options) != 0)
        return {};
    if (countAsEqual(left.front(), right.front(), options))
        return tr("These records are equal now.");
    return tr(
        "These records agree in every field. They are listed because records without a description always "
        "count as different.");
}

} // namespace runebook
