#include "app/FileOpener.h"

#include "platform/DocumentController.h"
#include "platform/DocumentPanels.h"
#include "platform/PlainText.h"

#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kShownFailures = 8;

QWidget *frontWindow()
{
    const QList<Document *> &documents = DocumentController::shared().documentList();
    return documents.isEmpty() ? nullptr : documents.front()->windowController();
}

} // namespace

FileOpener::~FileOpener()
{
    delete m_question;
}

void FileOpener::open(const QStringList &paths)
{
    const bool isBusy = isOpening();
    for (const QString &path : paths)
        m_paths << (path.startsWith("file:"_L1) ? path : QFileInfo(path).absoluteFilePath());
    m_paths.removeDuplicates();
    if (isBusy || m_paths.isEmpty())
        return;
    const bool isMany = m_paths.size() > kAsksAbove;
    openNext();
    if (isMany)
        ask();
}

void FileOpener::openNext()
{
    if (m_paths.isEmpty() || m_question)
        return;
    const QString path = m_paths.takeFirst();
    Error error;
    if (!DocumentController::shared().openDocumentWithContentsOfURLDisplay(path, true, &error)
        && ++m_failureCount <= kShownFailures)
        m_failures << error.text();
    if (m_paths.isEmpty())
        finish();
    else
        QTimer::singleShot(0, this, &FileOpener::openNext);
}

void FileOpener::ask()
{
    auto *box = new QMessageBox(frontWindow());
    m_question = box;
    box->setObjectName(u"manyFiles"_s);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIcon(QMessageBox::Question);
    setPlainTexts(*box, tr("Open %1 more files?").arg(m_paths.size()), tr("Each gets a window of its own."));
    box->addButton(tr("&Open All"), QMessageBox::AcceptRole);
    QPushButton *some = box->addButton(tr("Open &%1").arg(kAsksAbove), QMessageBox::AcceptRole);
    QPushButton *none = box->addButton(tr("Open &None of Them"), QMessageBox::RejectRole);
    box->setDefaultButton(some);
    box->setEscapeButton(none);
    connect(box, &QMessageBox::finished, this, [this, box, some, none] {
        if (box->clickedButton() == some)
            m_paths = m_paths.mid(0, kAsksAbove);
        else if (box->clickedButton() == none)
            m_paths.clear();
        m_question = nullptr;
        m_paths.isEmpty() ? finish() : openNext();
    });
    box->setWindowModality(box->parentWidget() ? Qt::WindowModal : Qt::NonModal);
    box->show();
}

void FileOpener::finish()
{
    const QStringList failures = std::exchange(m_failures, {});
    const qsizetype count = std::exchange(m_failureCount, 0);
    Q_EMIT finished();
    if (count == 0)
        return;
    const QString text =
        count == 1 ? tr("A file could not be opened.") : tr("%1 files could not be opened.").arg(count);
    DocumentPanels::present({{}, 0, text, failures.join(u'\n'), {}}, frontWindow());
}

} // namespace runebook
