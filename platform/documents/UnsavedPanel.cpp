#include "platform/documents/UnsavedPanel.h"

#include "platform/PlainLabel.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

enum Column { Name, Place };
constexpr int kShownRows = 8;

} // namespace

UnsavedPanel::UnsavedPanel(const QList<Document *> &documents, QWidget *parent)
    : QDialog(parent), m_list(new QTreeWidget(this)), m_hint(plainLabel({}, this))
{
    setObjectName(u"unsavedDocuments"_s);
    setWindowTitle(tr("Unsaved Changes"));
    setAttribute(Qt::WA_DeleteOnClose);
    // All documents are asked about, so none of them can be edited meanwhile.
    setWindowModality(Qt::ApplicationModal);
    auto *question = plainLabel(
        tr("%1 documents have unsaved changes. Save them?").arg(QLocale().toString(documents.size())), this);
    QFont bold = question->font();
    bold.setBold(true);
    question->setFont(bold);

    m_list->setAccessibleName(tr("Documents with unsaved changes"));
    m_list->setHeaderLabels({tr("Save"), tr("Where")});
    m_list->setRootIsDecorated(false);
    m_list->setAllColumnsShowFocus(true);
    m_list->setAlternatingRowColors(true);
    m_list->setUniformRowHeights(true);
    for (Document *document : documents) {
        m_documents << document;
        const QString path = document->fileURL();
        auto *item = new QTreeWidgetItem(
            m_list, {document->windowTitle(), path.isEmpty() ? tr("no file yet") : QFileInfo(path).path()});
        item->setCheckState(Name, Qt::Checked);
    }
    m_list->setCurrentItem(m_list->topLevelItem(0));
    constexpr int kGap = 16;
    m_list->resizeColumnToContents(Name);
    m_list->setColumnWidth(Name, m_list->columnWidth(Name) + kGap);
    const int rows = qBound(2, m_list->topLevelItemCount(), kShownRows);
    m_list->setMinimumSize(460,
                           m_list->header()->sizeHint().height() + rows * m_list->sizeHintForRow(0)
                               + 2 * m_list->frameWidth());

    auto *buttons = new QDialogButtonBox(this);
    m_save = buttons->addButton(QString(), QDialogButtonBox::AcceptRole);
    QPushButton *discard = buttons->addButton(tr("&Discard All"), QDialogButtonBox::DestructiveRole);
    QPushButton *cancel = buttons->addButton(QDialogButtonBox::Cancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(question);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_hint);
    layout->addWidget(buttons);
    m_save->setDefault(true);
    m_save->setFocus();
    connect(m_save, &QPushButton::clicked, this, [this] { decide(toSave()); });
    connect(discard, &QPushButton::clicked, this, [this] { decide({}); });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_list, &QTreeWidget::itemChanged, this, &UnsavedPanel::showChoice);
    showChoice();
}

QList<Document *> UnsavedPanel::toSave() const
{
    QList<Document *> chosen;
    for (int row = 0; row < m_list->topLevelItemCount(); ++row) {
        Document *document = m_documents.at(row);
        if (document && m_list->topLevelItem(row)->checkState(Name) == Qt::Checked)
            chosen << document;
    }
    return chosen;
}

void UnsavedPanel::showChoice()
{
    const qsizetype chosen = toSave().size();
    const bool isAll = chosen == m_documents.size();
    m_save->setText(
        isAll ? tr("&Save All")
              : tr("&Save %1 of %2").arg(QLocale().toString(chosen), QLocale().toString(m_documents.size())));
    m_save->setEnabled(chosen > 0);
    m_hint->setText(isAll ? tr("Take away the tick of a document to close it without saving.")
                          : tr("What has no tick is closed without saving; its changes are lost."));
}

void UnsavedPanel::decide(const QList<Document *> &documents)
{
    accept();
    Q_EMIT decided(documents);
}

} // namespace runebook
