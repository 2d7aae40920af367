#include "editing/problems/ProblemListCommands.h"

#include "platform/CheckedFile.h"
#include "platform/LongWork.h"
#include "platform/TurningWindows.h"
#include "platform/documents/DocumentPanels.h"

#include <QClipboard>
#include <QFileDialog>
#include <QGuiApplication>
#include <fcntl.h>

namespace runebook {

using namespace Qt::StringLiterals;

ProblemListCommands::ProblemListCommands(const Problems &problems, QWidget &window)
    : QObject(&window), m_problems(problems), m_window(window)
{
}

QString ProblemListCommands::textWithProgress(std::span<const Problem> list, ProblemListForm form,
                                              const QString &title)
{
    LongWork work(title, &m_window);
    return textOfProblems(m_problems, list, form, [&work](double part) { return work.goOn(part); });
}

void ProblemListCommands::copy(const std::vector<Problem> &list)
{
    if (list.empty())
        return;
    const QString text = textWithProgress(list, ProblemListForm::Tabs, tr("Copying the list…"));
    if (!text.isNull())
        QGuiApplication::clipboard()->setText(text);
}

bool ProblemListCommands::save(const QString &path, std::span<const Problem> list)
{
    const QString text = textWithProgress(list, problemListFormOf(path), tr("Making the list…"));
    if (text.isNull() && !list.empty())
        return false;
    CheckedFile file(path, O_WRONLY | O_CREAT | O_TRUNC);
    const TurningWindows turning(tr("Saving the list…"), &m_window);
    doApart(text.size(), [&file, &text] {
        file.write(text.toStdString());
        file.settle();
        file.close();
    });
    if (file.failure() != 0)
        DocumentPanels::present({u"WriteError"_s, 1, file.failureText(), {}, {}}, &m_window);
    return file.failure() == 0;
}

void ProblemListCommands::askWhereToSave(const std::vector<Problem> &list)
{
    auto *panel = new QFileDialog(&m_window, tr("Save List of Problems"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    const QStringList filters {tr("Text (*.txt)"), tr("Table with tabs (*.tsv)"),
                               tr("Table with commas (*.csv)")};
    const QStringList suffixes {u"txt"_s, u"tsv"_s, u"csv"_s};
    panel->setNameFilters(filters);
    panel->setDefaultSuffix(suffixes.first());
    panel->selectFile(tr("Problems.txt"));
    connect(panel, &QFileDialog::filterSelected, panel, [panel, filters, suffixes](const QString &filter) {
        panel->setDefaultSuffix(suffixes.value(filters.indexOf(filter)));
    });
    connect(panel, &QFileDialog::fileSelected, this, [this, list](const QString &path) { save(path, list); });
    panel->open();
}

} // namespace runebook
