#include "platform/documents/SaveSheets.h"

#include "platform/PlainLabel.h"

#include <QCoreApplication>
#include <QPushButton>

namespace runebook::SaveSheets {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(SaveSheets)
};

struct Choice {
    QString text;
    QMessageBox::ButtonRole role;
    Answer answer;
};

/// Shows the sheet with these buttons and Cancel; closing it cancels. The first choice is the usual one.
void ask(QMessageBox *box, const QList<Choice> &choices, const Then &then)
{
    QHash<QAbstractButton *, Answer> answers;
    for (const Choice &choice : choices) {
        QPushButton *button = box->addButton(choice.text, choice.role);
        answers.insert(button, choice.answer);
        if (answers.size() == 1)
            box->setDefaultButton(button);
    }
    box->setEscapeButton(box->addButton(QMessageBox::Cancel));
    QObject::connect(box, &QMessageBox::finished, box, [box, answers, then](int) {
        then(answers.value(box->clickedButton(), Answer::Cancel));
    });
    box->open();
}

QString changeText(const Document &document)
{
    const QString name = document.displayName();
    switch (document.fileWatch().change()) {
    case FileWatch::Change::Emptied:
        return Texts::tr("Another program has emptied “%1”.").arg(name);
    case FileWatch::Change::Replaced:
        return Texts::tr("Another program has put another file in the place of “%1”.").arg(name);
    default:
        return Texts::tr("Another program has changed “%1”.").arg(name);
    }
}

bool isChangedOnDisk(Document &document)
{
    const FileWatch::Change change = document.fileWatch().check();
    return change != FileWatch::Change::None && change != FileWatch::Change::Removed;
}

/// Asks whether the file may come out differently.
void askAboutChanges(Document &document, QWidget *parent, const Then &then)
{
    const QStringList changes = document.savingWillChange();
    if (changes.isEmpty()) {
        then(Answer::Save);
        return;
    }
    QMessageBox *box = make(
        QMessageBox::Warning,
        Texts::tr("Saving “%1” changes more in the file than you have edited.").arg(document.displayName()),
        changes.join(u'\n') + "\n\n"_L1 + Texts::tr("A copy of the file as it is now will be kept."), parent);
    ask(box,
        {{Texts::tr("&Save"), QMessageBox::AcceptRole, Answer::Save},
         {Texts::tr("Save &As…"), QMessageBox::ActionRole, Answer::SaveAs}},
        then);
}

} // namespace

QMessageBox *make(QMessageBox::Icon icon, const QString &text, const QString &more, QWidget *parent)
{
    auto *box = new QMessageBox(parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    box->setIcon(icon);
    setPlainTexts(*box, text, more);
    return box;
}

void askBeforeSaving(Document &document, QWidget *parent, const Then &then)
{
    if (!isChangedOnDisk(document)) {
        askAboutChanges(document, parent, then);
        return;
    }
    QMessageBox *box = make(
        QMessageBox::Warning, changeText(document),
        Texts::tr(
            "Saving writes over what is in the file now. What the other program has written will be lost."),
        parent);
    const QPointer<Document> guarded(&document);
    ask(box,
        {{Texts::tr("Save &As…"), QMessageBox::AcceptRole, Answer::SaveAs},
         {Texts::tr("&Write Over It"), QMessageBox::DestructiveRole, Answer::Save}},
        [guarded, parent, then](Answer answer) {
            if (!guarded)
                return;
            if (answer != Answer::Save) {
                then(answer);
                return;
            }
            guarded->keepMine();
            askAboutChanges(*guarded, parent, then);
        });
}

void showFailure(const Error &error, QWidget *parent, const Then &then)
{
    QStringList more;
    for (const QString &sentence : {error.failureReason, error.recoverySuggestion}) {
        if (!sentence.isEmpty())
            more << sentence;
    }
    QMessageBox *box = make(QMessageBox::Critical, error.description, more.join("\n\n"_L1), parent);
    box->setObjectName(u"saveFailure"_s);
    ask(box,
        {{Texts::tr("&Retry"), QMessageBox::AcceptRole, Answer::Save},
         {Texts::tr("Save &As…"), QMessageBox::ActionRole, Answer::SaveAs},
         {Texts::tr("&Discard Changes and Close"), QMessageBox::DestructiveRole, Answer::Discard}},
        then);
}

} // namespace runebook::SaveSheets
