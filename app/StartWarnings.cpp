#include "app/StartWarnings.h"

#include "platform/PlainLabel.h"
#include "platform/defaults/DefaultsProblem.h"
#include "platform/documents/DocumentPanels.h"
#include "platform/documents/DocumentWindows.h"

#include <QCoreApplication>
#include <QMessageBox>

using namespace Qt::StringLiterals;

namespace runebook {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(StartWarnings)
};

} // namespace

void StartWarnings::warnOfDamagedDefaults()
{
    const DefaultsProblem problem = takeDefaultsProblem();
    if (!problem.isThere)
        return;
    QWidget *window = DocumentWindows::front();
    const QString text = problem.keptAt.isEmpty() ? Texts::tr("Your settings cannot be read.")
                                                  : Texts::tr("Your settings were damaged.");
    const QString more = problem.keptAt.isEmpty()
        ? Texts::tr("The file “%1” is not readable; changes to the settings last until the program ends.")
              .arg(problem.file)
        : Texts::tr("The program starts with fresh ones; the damaged file was kept as “%1”.")
              .arg(problem.keptAt);
    DocumentPanels::present({u"DefaultsError"_s, 1, text, more, {}}, window);
}

void StartWarnings::showPythonWarning(const QString &message, const QString &advice)
{
    auto *box = new QMessageBox;
    box->setObjectName(u"pythonWarning"_s);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setAttribute(Qt::WA_QuitOnClose, false);
    box->setWindowModality(Qt::NonModal);
    box->setIcon(QMessageBox::Warning);
    setPlainTexts(*box, message, advice);
    box->setStandardButtons(QMessageBox::Ok);
    box->show();
}

} // namespace runebook
