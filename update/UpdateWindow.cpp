#include "update/UpdateWindow.h"

#include "platform/Error.h"
#include "platform/PlainLabel.h"
#include "platform/PlainText.h"
#include "platform/Unattended.h"
#include "update/PageView.h"
#include "update/SUUpdater.h"

#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kLongestName = 100;

QString notesOf(const SUAppcastItem &item)
{
    if (!item.itemDescription.trimmed().isEmpty())
        return item.itemDescription;
    return "<p>"_L1 + UpdateWindow::tr("The feed does not tell what is new.") + "</p>"_L1;
}

} // namespace

UpdateWindow::UpdateWindow(const SUAppcastItem &item, const QString &currentVersion, QWidget *parent)
    : QDialog(parent)
{
    setObjectName(u"updateWindow"_s);
    setWindowTitle(tr("Update"));
    auto *layout = new QVBoxLayout(this);
    QLabel *heading =
        plainLabel(tr("Version %1 is available").arg(item.displayVersionString.left(kLongestName)), this);
    QFont large = heading->font();
    large.setPointSizeF(large.pointSizeF() * 1.3);
    large.setBold(true);
    heading->setFont(large);
    heading->setWordWrap(true);
    layout->addWidget(heading);
    layout->addWidget(plainLabel(tr("You have version %1.").arg(currentVersion), this));

    auto *notes = new PageView(this);
    notes->setAccessibleName(tr("What is new"));
    notes->setPage(notesOf(item));
    layout->addWidget(notes, 1);
    addButtons(item);
    resize(560, 460);
}

void UpdateWindow::addButtons(const SUAppcastItem &item)
{
    auto *buttons = new QDialogButtonBox(this);
    QPushButton *skip = buttons->addButton(tr("&Skip This Version"), QDialogButtonBox::ResetRole);
    connect(skip, &QPushButton::clicked, this, &UpdateWindow::skipRequested);
    connect(skip, &QPushButton::clicked, this, &QDialog::reject);
    if (PageFetcher::isAllowed(item.releaseNotesURL)) {
        QPushButton *notes = buttons->addButton(tr("All &Notes"), QDialogButtonBox::HelpRole);
        connect(notes, &QPushButton::clicked, this,
                [url = item.releaseNotesURL] { QDesktopServices::openUrl(url); });
    }
    buttons->addButton(tr("&Later"), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    if (PageFetcher::isAllowed(item.infoURL)) {
        QPushButton *open = buttons->addButton(tr("Open &Download Page"), QDialogButtonBox::AcceptRole);
        open->setToolTip(escapedToolTip(item.infoURL.toDisplayString().left(kLongestName)));
        open->setDefault(true);
        connect(open, &QPushButton::clicked, this, [url = item.infoURL] { QDesktopServices::openUrl(url); });
        connect(open, &QPushButton::clicked, this, &QDialog::accept);
        open->setFocus();
    }
    layout()->addWidget(buttons);
}

UpdatePresenter::UpdatePresenter(SUUpdater &updater) : QObject(&updater), m_updater(updater)
{
    connect(&updater, &SUUpdater::foundUpdate, this, [this](SUAppcastItem *item) { showUpdate(*item); });
    connect(&updater, &SUUpdater::foundNothingNewer, this, [this] {
        tell(tr("Runebook is up to date."), tr("You have version %1.").arg(m_updater.currentVersion()));
    });
    connect(&updater, &SUUpdater::failed, this, [this](const Error &error) {
        QStringList more {error.failureReason, error.recoverySuggestion};
        more.removeAll(QString());
        tell(error.description, more.join(u'\n'));
    });
}

UpdatePresenter::~UpdatePresenter()
{
    delete m_window;
}

void UpdatePresenter::showUpdate(const SUAppcastItem &item)
{
    if (isUnattended()) {
        tell(UpdateWindow::tr("Version %1 is available").arg(item.displayVersionString.left(kLongestName)),
             {});
        return;
    }
    auto *window = new UpdateWindow(item, m_updater.currentVersion());
    const QString version = item.versionString;
    connect(window, &UpdateWindow::skipRequested, this, [this, version] { m_updater.skipVersion(version); });
    replaceWindow(window);
}

void UpdatePresenter::tell(const QString &text, const QString &more)
{
    if (isUnattended()) {
        ErrorPresenter::shared().present({u"UpdateError"_s, 0, text, {}, more});
        return;
    }
    auto *box = new QMessageBox;
    box->setObjectName(u"updateMessage"_s);
    box->setWindowTitle(tr("Update"));
    box->setIcon(QMessageBox::Information);
    setPlainTexts(*box, text, more);
    replaceWindow(box);
}

void UpdatePresenter::replaceWindow(QWidget *window)
{
    delete m_window;
    m_window = window;
    window->setAttribute(Qt::WA_DeleteOnClose);
    // Not the last window: closing a message does not end the program.
    window->setAttribute(Qt::WA_QuitOnClose, false);
    window->setWindowModality(Qt::NonModal);
    window->show();
    window->raise();
    window->activateWindow();
}

} // namespace runebook
