#include "editing/window/RecoveryPanel.h"

#include "editing/compare/CompareDocuments.h"
#include "platform/PlainLabel.h"
#include "platform/PlainText.h"
#include "platform/documents/DocumentController.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

QString placeOf(const RecoverableContent &content)
{
    if (content.originalPath.isEmpty())
        return content.kind == RecoverableContent::Kind::Rescue ? RecoveryPanel::tr("unknown")
                                                                : RecoveryPanel::tr("never saved");
    const QString folder = QFileInfo(content.originalPath).absolutePath();
    const QString home = QDir::homePath();
    return folder == home || folder.startsWith(home + u'/') ? u'~' + folder.mid(home.size()) : folder;
}

QString stateOf(const RecoverableContent &content)
{
    if (content.kind == RecoverableContent::Kind::Rescue)
        return RecoveryPanel::tr("Interrupted save; the file may be damaged");
    if (content.originalPath.isEmpty())
        return RecoveryPanel::tr("New document");
    if (!QFileInfo::exists(content.originalPath))
        return RecoveryPanel::tr("Unsaved changes; the file is gone");
    return content.hasOriginalChanged ? RecoveryPanel::tr("Unsaved changes; the file has changed since")
                                      : RecoveryPanel::tr("Unsaved changes");
}

} // namespace

RecoveryPanel *RecoveryPanel::offer()
{
    static QPointer<RecoveryPanel> panel;
    if (panel)
        return panel;
    panel = new RecoveryPanel;
    connect(qApp, &QCoreApplication::aboutToQuit, panel, [] { delete panel; });
    connect(&DocumentController::shared(), &DocumentController::fileOpened, panel, [](const QString &path) {
        panel->m_recovery.findFor(path);
        panel->showIfNeeded();
    });
    panel->m_recovery.find();
    // In front of the windows that open meanwhile.
    QTimer::singleShot(0, panel, &RecoveryPanel::showIfNeeded);
    return panel;
}

RecoveryPanel::RecoveryPanel(QWidget *parent) : QDialog(parent)
{
    setWindowTitle(tr("Recovered Documents"));
    setModal(false);
    build();
    connect(&m_recovery, &Recovery::contentsChanged, this, &RecoveryPanel::showContents);
    connect(m_list, &QTreeWidget::itemSelectionChanged, this, &RecoveryPanel::showActions);
    connect(m_list, &QTreeWidget::itemDoubleClicked, this, &RecoveryPanel::restore);
    showContents();
    resize(760, 320);
}

void RecoveryPanel::build()
{
    auto *heading = plainLabel(tr("Runebook ended before these documents were saved. Nothing is written over "
                                  "until you save a restored document."),
                               this);
    heading->setWordWrap(true);
    m_list = new QTreeWidget(this);
    m_list->setAccessibleName(tr("Documents that can be restored"));
    m_list->setHeaderLabels({tr("Document"), tr("Folder"), tr("Kept"), tr("Size"), tr("State")});
    m_list->setRootIsDecorated(false);
    m_list->setAlternatingRowColors(true);
    m_list->setUniformRowHeights(true);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->header()->setStretchLastSection(true);
    heading->setBuddy(m_list);
    m_message = plainLabel({}, this);
    m_message->setWordWrap(true);
    m_message->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_message->hide();

    auto *buttons = new QDialogButtonBox(this);
    m_restore = buttons->addButton(tr("&Restore"), QDialogButtonBox::AcceptRole);
    m_compare = buttons->addButton(tr("&Compare with File"), QDialogButtonBox::ActionRole);
    m_discard = buttons->addButton(tr("&Discard…"), QDialogButtonBox::DestructiveRole);
    QPushButton *later = buttons->addButton(tr("&Not Now"), QDialogButtonBox::RejectRole);
    m_restore->setDefault(true);
    connect(m_restore, &QPushButton::clicked, this, &RecoveryPanel::restore);
    connect(m_compare, &QPushButton::clicked, this, &RecoveryPanel::compare);
    connect(m_discard, &QPushButton::clicked, this, &RecoveryPanel::discard);
    connect(later, &QPushButton::clicked, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(heading);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_message);
    layout->addWidget(buttons);
}

void RecoveryPanel::showIfNeeded()
{
    showContents();
    if (m_recovery.contents().isEmpty())
        return;
    show();
    raise();
}

void RecoveryPanel::showContents()
{
    const QStringList selected = [this] {
        QStringList paths;
        for (const RecoverableContent &content : chosen())
            paths << content.contentPath;
        return paths;
    }();
    m_list->clear();
    for (const RecoverableContent &content : m_recovery.contents()) {
        auto *item =
            new QTreeWidgetItem(m_list,
                                {content.displayName, placeOf(content),
                                 QLocale().toString(content.savedAt.toLocalTime(), QLocale::ShortFormat),
                                 QLocale().formattedDataSize(content.size), stateOf(content)});
        item->setData(0, Qt::UserRole, content.contentPath);
        for (int column : {0, 1})
            item->setToolTip(column, escapedToolTip(content.originalPath));
        item->setSelected(selected.contains(content.contentPath));
    }
    for (int column = 0; column < m_list->columnCount(); ++column) {
        m_list->resizeColumnToContents(column);
        constexpr int kWidest = 260;
        m_list->setColumnWidth(column, qMin(m_list->columnWidth(column) + 12, kWidest));
    }
    if (chosen().isEmpty() && m_list->topLevelItemCount() > 0)
        m_list->setCurrentItem(m_list->topLevelItem(0));
    showActions();
}

QList<RecoverableContent> RecoveryPanel::chosen() const
{
    QList<RecoverableContent> contents;
    for (const RecoverableContent &content : m_recovery.contents()) {
        for (const QTreeWidgetItem *item : m_list->selectedItems()) {
            if (item->data(0, Qt::UserRole).toString() == content.contentPath)
                contents << content;
        }
    }
    return contents;
}

void RecoveryPanel::showActions()
{
    const QList<RecoverableContent> contents = chosen();
    m_restore->setEnabled(!contents.isEmpty());
    m_discard->setEnabled(!contents.isEmpty());
    m_compare->setEnabled(contents.size() == 1 && QFileInfo::exists(contents.front().originalPath));
}

void RecoveryPanel::restore()
{
    restoreNow(chosen());
}

void RecoveryPanel::restoreFrom(qint64 process)
{
    QList<RecoverableContent> contents;
    for (const RecoverableContent &content : m_recovery.contents()) {
        if (content.kind == RecoverableContent::Kind::Autosave && content.process == process)
            contents << content;
    }
    restoreNow(contents);
}

void RecoveryPanel::restoreNow(const QList<RecoverableContent> &contents)
{
    QStringList errors;
    for (const RecoverableContent &content : contents) {
        Error error;
        m_recovery.restore(content, &error);
        if (!error.domain.isEmpty())
            errors << error.text();
    }
    showErrors(errors);
}

void RecoveryPanel::compare()
{
    const QList<RecoverableContent> contents = chosen();
    if (contents.size() != 1)
        return;
    Error error;
    const auto [original, recovered] = m_recovery.openToCompare(contents.front(), &error);
    auto *left = qobject_cast<VXDocument *>(original);
    auto *right = qobject_cast<VXDocument *>(recovered);
    if (left && right)
        compareDocuments(*left, *right, {left, right});
    showErrors(error.domain.isEmpty() ? QStringList() : QStringList {error.text()});
}

void RecoveryPanel::discard()
{
    const QList<RecoverableContent> contents = chosen();
    if (contents.isEmpty())
        return;
    auto *box = new QMessageBox(this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setIcon(QMessageBox::Warning);
    setPlainTexts(*box,
                  contents.size() == 1
                      ? tr("Discard what was kept of “%1”?").arg(contents.front().displayName)
                      : tr("Discard what was kept of %1 documents?").arg(locale().toString(contents.size())),
                  tr("It cannot be brought back."));
    QPushButton *button = box->addButton(tr("&Discard"), QMessageBox::DestructiveRole);
    box->setDefaultButton(box->addButton(QMessageBox::Cancel));
    connect(button, &QPushButton::clicked, this, [this, contents] { discardNow(contents); });
    box->open();
}

void RecoveryPanel::discardNow(const QList<RecoverableContent> &contents)
{
    QStringList errors;
    for (const RecoverableContent &content : contents) {
        Error error;
        if (!m_recovery.discard(content, &error))
            errors << error.text();
    }
    showErrors(errors);
}

void RecoveryPanel::showErrors(const QStringList &errors)
{
    m_message->setText(errors.join(u'\n'));
    m_message->setVisible(!errors.isEmpty());
    if (errors.isEmpty() && m_recovery.contents().isEmpty())
        accept();
}

} // namespace runebook
