#include "platform/documents/DocumentPanels.h"

#include "platform/FilePath.h"
#include "platform/TurningWindows.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/DocumentWindows.h"
#include "platform/documents/LossSheet.h"
#include "platform/documents/SaveSheets.h"
#include "platform/documents/UnsavedPanel.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>

namespace runebook::DocumentPanels {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(DocumentPanels)
};

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

void finish(const std::function<void(bool)> &then, bool done)
{
    if (then)
        then(done);
}

/// Opens one file; a failure is put behind the others.
void openOne(const QString &path, QStringList &failures)
{
    Error error;
    const TurningWindows turning(openingTitle(path));
    if (!DocumentController::shared().openDocumentWithContentsOfURLDisplay(path, true, &error))
        failures << error.text();
}

/// What became of a document that was to be saved.
enum class Outcome { Saved, Kept, Discarded };
using Ended = std::function<void(Outcome outcome)>;
using Guarded = QPointer<Document>;

void saveWithOutcome(Document &document, QWidget *parent, const Ended &ended);
void saveAsWithOutcome(Document &document, QWidget *parent, const Ended &ended);

/// Tries once; \a save is what a retry calls.
void trySaving(const Guarded &document, QWidget *parent, const Ended &ended,
               const std::function<bool(Document &document, Error *error)> &save)
{
    Error error;
    const auto isSaved = [&] {
        const TurningWindows turning(Texts::tr("Saving “%1”…").arg(document->displayName()), parent);
        return save(*document, &error);
    };
    if (isSaved()) {
        ended(Outcome::Saved);
        return;
    }
    SaveSheets::showFailure(error, parent, [=](SaveSheets::Answer answer) {
        if (!document || answer == SaveSheets::Answer::Cancel) {
            ended(Outcome::Kept);
        } else if (answer == SaveSheets::Answer::Save) {
            trySaving(document, parent, ended, save);
        } else if (answer == SaveSheets::Answer::SaveAs) {
            saveAsWithOutcome(*document, parent, ended);
        } else {
            document->close();
            ended(Outcome::Discarded);
        }
    });
}

/// Asks first about the values that a save as \a type would not keep.
void saveUnlessItLoses(const Guarded &document, QWidget *parent, const QString &type, const Ended &ended,
                       const std::function<bool(Document &document, Error *error)> &save)
{
    LossSheet::ask(*document, type, parent, [=](bool mayBeSaved) {
        if (mayBeSaved && document)
            trySaving(document, parent, ended, save);
        else
            ended(Outcome::Kept);
    });
}

void saveWithOutcome(Document &document, QWidget *parent, const Ended &ended)
{
    if (document.fileURL().isEmpty()) {
        saveAsWithOutcome(document, parent, ended);
        return;
    }
    const Guarded guarded(&document);
    SaveSheets::askBeforeSaving(document, parent, [=](SaveSheets::Answer answer) {
        if (!guarded || answer == SaveSheets::Answer::Cancel)
            ended(Outcome::Kept);
        else if (answer == SaveSheets::Answer::SaveAs)
            saveAsWithOutcome(*guarded, parent, ended);
        else
            saveUnlessItLoses(guarded, parent, guarded->fileType(), ended,
                              [](Document &saved, Error *error) { return saved.saveDocument(error); });
    });
}

void saveAsWithOutcome(Document &document, QWidget *parent, const Ended &ended)
{
    auto *panel = new QFileDialog(parent, Texts::tr("Save As"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setNameFilters(allFilters());
    const DocumentController &controller = DocumentController::shared();
    if (!controller.types().isEmpty())
        panel->setDefaultSuffix(controller.types().front().extensions.value(0));
    // A name without suffix gets that of the kind that was chosen.
    QObject::connect(panel, &QFileDialog::filterSelected, panel, [panel](const QString &filter) {
        const QStringList filters = allFilters();
        if (const qsizetype chosen = filters.indexOf(filter); chosen >= 0)
            panel->setDefaultSuffix(DocumentController::shared().types().at(chosen).extensions.value(0));
    });
    panel->selectFile(document.fileURL().isEmpty() ? document.displayName() : document.fileURL());
    const Guarded guarded(&document);
    QObject::connect(panel, &QFileDialog::finished, panel, [=](int result) {
        const QString path = panel->selectedFiles().value(0);
        if (result != QDialog::Accepted || !guarded || path.isEmpty()) {
            ended(Outcome::Kept);
            return;
        }
        QString type = DocumentController::shared().typeForURL(path);
        if (type.isEmpty())
            type = DocumentController::shared().types().front().name;
        saveUnlessItLoses(guarded, parent, type, ended, [path, type](Document &saved, Error *error) {
            return saved.saveToURLOfType(path, type, error);
        });
    });
    panel->open();
}

/// Saves one after the other; only when all are safe is everything closed, saved or not.
void saveAllThenClose(QList<Guarded> documents, const std::function<void(bool)> &then)
{
    while (!documents.isEmpty() && !documents.front())
        documents.removeFirst();
    if (documents.isEmpty()) {
        for (Document *document : QList<Document *>(DocumentController::shared().documentList()))
            document->close();
        finish(then, true);
        return;
    }
    Document &next = *documents.takeFirst();
    saveWithOutcome(next, DocumentWindows::of(next), [documents, then](Outcome outcome) {
        if (outcome == Outcome::Kept)
            finish(then, false);
        else
            saveAllThenClose(documents, then);
    });
}

void closeOneByOne(const std::function<void(bool)> &then)
{
    const QList<Document *> documents = DocumentController::shared().documentList();
    if (documents.isEmpty()) {
        finish(then, true);
        return;
    }
    close(*documents.front(), [then](bool closed) {
        if (closed)
            closeOneByOne(then);
        else
            finish(then, false);
    });
}

} // namespace

QString openingTitle(const QString &path)
{
    return Texts::tr("Opening “%1”…").arg(shownPath(QFileInfo(path).fileName()));
}

void present(const Error &error, QWidget *parent)
{
    const QString title =
        error.description.isEmpty() ? Texts::tr("Something went wrong.") : error.description;
    QStringList more;
    for (const QString &sentence : {error.failureReason, error.recoverySuggestion}) {
        if (!sentence.isEmpty())
            more << sentence;
    }
    SaveSheets::make(QMessageBox::Warning, title, more.join(u'\n'), parent)->open();
}

void open(QWidget *parent)
{
    auto *panel = new QFileDialog(parent, Texts::tr("Open"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::ExistingFiles);
    QStringList patterns;
    for (const DocumentType &type : DocumentController::shared().types()) {
        for (const QString &extension : type.extensions)
            patterns << "*."_L1 + extension;
    }
    panel->setNameFilters(QStringList {Texts::tr("All documents") + " ("_L1 + patterns.join(u' ') + u')'}
                          + allFilters());
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
        present(
            {{},
             0,
             Texts::tr("%n file(s) could not be opened.").replace("%n"_L1, QString::number(failures.size())),
             failures.mid(0, 8).join(u'\n'),
             {}},
            parent);
}

void save(Document &document, QWidget *parent, std::function<void(bool)> then)
{
    if (!document.commitEditing()) {
        finish(then, false);
        return;
    }
    saveWithOutcome(document, parent, [then](Outcome outcome) { finish(then, outcome == Outcome::Saved); });
}

void saveAs(Document &document, QWidget *parent, std::function<void(bool)> then)
{
    if (!document.commitEditing()) {
        finish(then, false);
        return;
    }
    saveAsWithOutcome(document, parent, [then](Outcome outcome) { finish(then, outcome == Outcome::Saved); });
}

void revert(Document &document, QWidget *parent)
{
    if (!document.commitEditing())
        return;
    QPointer<Document> guarded(&document);
    const auto reload = [guarded, parent] {
        Error error;
        const TurningWindows turning(guarded ? openingTitle(guarded->fileURL()) : QString(), parent);
        if (guarded && !guarded->revertToSaved(&error))
            present(error, parent);
    };
    if (!document.isDocumentEdited()) {
        reload();
        return;
    }
    QMessageBox *box = SaveSheets::make(
        QMessageBox::Question, Texts::tr("Go back to the saved version of “%1”?").arg(document.displayName()),
        Texts::tr("What was changed since the last save will be lost."), parent);
    QPushButton *revertButton = box->addButton(Texts::tr("Revert"), QMessageBox::DestructiveRole);
    box->addButton(QMessageBox::Cancel);
    QObject::connect(revertButton, &QPushButton::clicked, box, reload);
    box->open();
}

void close(Document &document, std::function<void(bool)> then)
{
    if (!document.commitEditing()) {
        finish(then, false);
        return;
    }
    if (!document.isDocumentEdited()) {
        document.close();
        finish(then, true);
        return;
    }
    QMessageBox *box = SaveSheets::make(
        QMessageBox::Warning, Texts::tr("Save the changes to “%1”?").arg(document.windowTitle()),
        Texts::tr("They will be lost if you do not save them."), DocumentWindows::of(document));
    box->setStandardButtons(QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel);
    box->setDefaultButton(QMessageBox::Save);
    // The standard texts come without keys of their own.
    box->button(QMessageBox::Save)->setText(Texts::tr("&Save"));
    box->button(QMessageBox::Discard)->setText(Texts::tr("&Discard"));
    QPointer<Document> guarded(&document);
    QObject::connect(box, &QMessageBox::finished, box, [guarded, then](int answer) {
        if (!guarded || answer == QMessageBox::Cancel) {
            finish(then, false);
        } else if (answer == QMessageBox::Discard) {
            guarded->close();
            finish(then, true);
        } else if (answer == QMessageBox::Save) {
            saveWithOutcome(*guarded, DocumentWindows::of(*guarded), [guarded, then](Outcome outcome) {
                if (outcome == Outcome::Saved && guarded)
                    guarded->close();
                finish(then, outcome != Outcome::Kept);
            });
        } else {
            finish(then, false);
        }
    });
    box->open();
}

void closeAll(std::function<void(bool)> then)
{
    // All before the first: what one window refuses shall not be known after others have closed.
    if (!DocumentController::shared().commitEditing()) {
        finish(then, false);
        return;
    }
    QList<Document *> edited;
    for (Document *document : QList<Document *>(DocumentController::shared().documentList())) {
        if (document->isDocumentEdited())
            edited << document;
    }
    if (edited.size() < 2) {
        closeOneByOne(then);
        return;
    }
    auto *panel = new UnsavedPanel(edited, DocumentWindows::of(*edited.front()));
    const auto answered = std::make_shared<bool>(false);
    QObject::connect(panel, &UnsavedPanel::decided, qApp, [answered, then](const QList<Document *> &chosen) {
        *answered = true;
        QList<Guarded> guarded;
        for (Document *document : chosen)
            guarded << document;
        saveAllThenClose(guarded, then);
    });
    QObject::connect(panel, &QObject::destroyed, qApp, [answered, then] {
        if (!*answered)
            finish(then, false);
    });
    panel->open();
}

} // namespace runebook::DocumentPanels
