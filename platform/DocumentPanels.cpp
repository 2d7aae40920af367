#include "platform/DocumentPanels.h"

#include "platform/DocumentController.h"
#include "platform/PlainText.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>

namespace runebook::DocumentPanels {

using namespace Qt::StringLiterals;

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("DocumentPanels", text);
}

QString filterOf(const DocumentType &type)
{
    QStringList patterns;
    for (const QString &extension : type.extensions)
        patterns << "*."_L1 + extension;
    return type.title + " ("_L1 + patterns.join(u' ') + u')';
}

QStringList allFilters()
{
    QStringList filters;
    for (const DocumentType &type : DocumentController::shared().types())
        filters << filterOf(type);
    return filters;
}

QMessageBox *makeSheet(QMessageBox::Icon icon, const QString &text, const QString &more, QWidget *parent)
{
    auto *box = new QMessageBox(parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    box->setIcon(icon);
    setPlainTexts(*box, text, more);
    return box;
}

void finish(const std::function<void(bool)> &then, bool done)
{
    if (then)
        then(done);
}

/// Opens one file; a failure is put behind the others.
void openOne(const QString &path, QStringList &failures)
{
    Error error;
    if (!DocumentController::shared().openDocumentWithContentsOfURLDisplay(path, true, &error))
        failures << error.text();
}

} // namespace

void present(const Error &error, QWidget *parent)
{
    const QString title = error.description.isEmpty() ? tr("Something went wrong.") : error.description;
    QStringList more;
    for (const QString &sentence : {error.failureReason, error.recoverySuggestion}) {
        if (!sentence.isEmpty())
            more << sentence;
    }
    makeSheet(QMessageBox::Warning, title, more.join(u'\n'), parent)->open();
}

void open(QWidget *parent)
{
    auto *panel = new QFileDialog(parent, tr("Open"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::ExistingFiles);
    QStringList patterns;
    for (const DocumentType &type : DocumentController::shared().types()) {
        for (const QString &extension : type.extensions)
            patterns << "*."_L1 + extension;
    }
    panel->setNameFilters(QStringList {tr("All documents") + " ("_L1 + patterns.join(u' ') + u')'} + allFilters());
    if (const QStringList recent = DocumentController::shared().recentFiles(); !recent.isEmpty())
        panel->setDirectory(QFileInfo(recent.front()).absolutePath());
    QObject::connect(panel, &QFileDialog::filesSelected, panel,
                     [parent](const QStringList &paths) { openFiles(paths, parent); });
    panel->open();
}

void openFiles(const QStringList &paths, QWidget *parent)
{
    QStringList failures;
    for (const QString &path : paths)
        openOne(path, failures);
    if (!failures.isEmpty())
        present({{}, 0, tr("%n file(s) could not be opened.").replace("%n"_L1, QString::number(failures.size())),
                 failures.mid(0, 8).join(u'\n'), {}},
                parent);
}

void save(Document &document, QWidget *parent, std::function<void(bool)> then)
{
    if (document.fileURL().isEmpty()) {
        saveAs(document, parent, std::move(then));
        return;
    }
    Error error;
    const bool saved = document.saveDocument(&error);
    if (!saved)
        present(error, parent);
    finish(then, saved);
}

void saveAs(Document &document, QWidget *parent, std::function<void(bool)> then)
{
    auto *panel = new QFileDialog(parent, tr("Save As"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setNameFilters(allFilters());
    const DocumentController &controller = DocumentController::shared();
    if (!controller.types().isEmpty())
        panel->setDefaultSuffix(controller.types().front().extensions.value(0));
    panel->selectFile(document.fileURL().isEmpty() ? document.displayName() : document.fileURL());
    QPointer<Document> guarded(&document);
    QObject::connect(panel, &QFileDialog::finished, panel, [panel, parent, guarded, then](int result) {
        if (result != QDialog::Accepted || !guarded) {
            finish(then, false);
            return;
        }
        const QString path = panel->selectedFiles().value(0);
        QString type = DocumentController::shared().typeForURL(path);
        if (type.isEmpty())
            type = DocumentController::shared().types().front().name;
        Error error;
        const bool saved = guarded->saveToURLOfType(path, type, &error);
        if (!saved)
            present(error, parent);
        finish(then, saved);
    });
    panel->open();
}

void revert(Document &document, QWidget *parent)
{
    QPointer<Document> guarded(&document);
    const auto reload = [guarded, parent] {
        Error error;
        if (guarded && !guarded->revertToSaved(&error))
            present(error, parent);
    };
    if (!document.isDocumentEdited()) {
        reload();
        return;
    }
    QMessageBox *box = makeSheet(QMessageBox::Question,
                                 tr("Go back to the saved version of “%1”?").arg(document.displayName()),
                                 tr("What was changed since the last save will be lost."), parent);
    QPushButton *revertButton = box->addButton(tr("Revert"), QMessageBox::DestructiveRole);
    box->addButton(QMessageBox::Cancel);
    QObject::connect(revertButton, &QPushButton::clicked, box, reload);
    box->open();
}

void close(Document &document, std::function<void(bool)> then)
{
    document.commitEditing();
    if (!document.isDocumentEdited()) {
        document.close();
        finish(then, true);
        return;
    }
    QMessageBox *box = makeSheet(QMessageBox::Warning,
                                 tr("Save the changes to “%1”?").arg(document.displayName()),
                                 tr("They will be lost if you do not save them."), document.windowController());
    box->setStandardButtons(QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel);
    box->setDefaultButton(QMessageBox::Save);
    QPointer<Document> guarded(&document);
    QObject::connect(box, &QMessageBox::finished, box, [guarded, then](int answer) {
        if (!guarded || answer == QMessageBox::Cancel) {
            finish(then, false);
        } else if (answer == QMessageBox::Discard) {
            guarded->close();
            finish(then, true);
        } else if (answer == QMessageBox::Save) {
            save(*guarded, guarded->windowController(), [guarded, then](bool saved) {
                if (saved && guarded)
                    guarded->close();
                finish(then, saved);
            });
        } else {
            finish(then, false);
        }
    });
    box->open();
}

void closeAll(std::function<void(bool)> then)
{
    const QList<Document *> documents = DocumentController::shared().documentList();
    if (documents.isEmpty()) {
        finish(then, true);
        return;
    }
    close(*documents.front(), [then](bool closed) {
        if (closed)
            closeAll(then);
        else
            finish(then, false);
    });
}

} // namespace runebook::DocumentPanels
