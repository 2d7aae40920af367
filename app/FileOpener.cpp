#include "app/FileOpener.h"

#include "platform/TurningWindows.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentPanels.h"
#include "platform/documents/DocumentWindows.h"

#include <QFileInfo>
#include <QLocale>
#include <QProgressDialog>
#include <QTimer>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kShownFailures = 8;

} // namespace

FileOpener::~FileOpener()
{
    delete m_progress;
}

void FileOpener::open(const QStringList &paths)
{
    const bool isBusy = isOpening();
    for (const QString &path : paths)
        m_paths << (path.startsWith("file:"_L1) ? path : QFileInfo(path).absoluteFilePath());
    m_paths.removeDuplicates();
    const bool isMany = m_paths.size() > kFew;
    if (!isBusy && !m_paths.isEmpty())
        openNext();
    if (isMany)
        openBehind();
}

void FileOpener::openNext()
{
    if (m_paths.isEmpty())
        return;
    const QString path = m_paths.takeFirst();
    Error error;
    const TurningWindows turning(DocumentPanels::openingTitle(path), DocumentWindows::front());
    if (!DocumentController::shared().openDocumentWithContentsOfURLDisplay(path, true, &error)
        && ++m_failureCount <= kShownFailures)
        m_failures << error.text();
    showProgress();
    if (m_paths.isEmpty())
        finish();
    else
        QTimer::singleShot(0, this, &FileOpener::openNext);
}

/// From now on nothing comes in front of the window that is there.
void FileOpener::openBehind()
{
    if (m_paths.isEmpty() || m_progress)
        return;
    m_openingMany.emplace();
    m_progress = new QProgressDialog(DocumentWindows::front());
    m_progress->setObjectName(u"openingFiles"_s);
    m_progress->setAttribute(Qt::WA_DeleteOnClose);
    m_progress->setAttribute(Qt::WA_ShowWithoutActivating);
    m_progress->setAttribute(Qt::WA_QuitOnClose, false);
    m_progress->setWindowModality(Qt::NonModal);
    m_progress->setWindowTitle(tr("Opening Files"));
    m_progress->setAutoReset(false);
    m_progress->setMinimumDuration(0);
    // However it is closed; the button and the key tell of it differently.
    connect(m_progress, &QProgressDialog::canceled, this, &FileOpener::cancel);
    connect(m_progress, &QDialog::rejected, this, &FileOpener::cancel);
    showProgress();
    m_progress->show();
}

void FileOpener::showProgress()
{
    if (!m_progress)
        return;
    // The bar ends where the last file will have been opened; more may have come meanwhile.
    const auto left = static_cast<int>(m_paths.size());
    const int done = qMax(m_progress->value(), 0) + 1;
    m_progress->setMaximum(done + left);
    m_progress->setValue(done);
    m_progress->setLabelText(tr("Opening files: %n left.", nullptr, left));
}

void FileOpener::cancel()
{
    if (!m_openingMany)
        return; // it goes by itself at the end
    m_paths.clear();
    finish();
}

void FileOpener::finish()
{
    if (m_progress)
        m_progress->deleteLater();
    m_progress = nullptr;
    m_openingMany.reset();
    const QStringList failures = std::exchange(m_failures, {});
    const qsizetype count = std::exchange(m_failureCount, 0);
    Q_EMIT finished();
    if (count == 0)
        return;
    const QString text = count == 1
        ? tr("A file could not be opened.")
        : tr("%1 files could not be opened.").arg(QLocale().toString(static_cast<qlonglong>(count)));
    DocumentPanels::present({{}, 0, text, failures.join(u'\n'), {}}, DocumentWindows::front());
}

} // namespace runebook
