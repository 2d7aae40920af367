#include "editing/problems/ProblemListText.h"

#include "editing/fields/GlyphColumns.h"
#include "platform/ShownText.h"

#include <QCoreApplication>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(ProblemListText)
};

/// In one line, without what separates cells.
QString cell(QString text, ProblemListForm form)
{
    text = shownText(cellDisplayText(text), kMostInMessage).replace(u'\t', u' ').replace(u'\n', u' ');
    if (form != ProblemListForm::Commas)
        return text;
    return text.contains(u',') || text.contains(u'"') ? u'"' + text.replace(u'"', u"\"\""_s) + u'"' : text;
}

/// As spreadsheets leave them alone: "0041" would become 41.
QString codePoints(const Problem &problem)
{
    QStringList texts;
    for (const QString &code : problem.info ? problem.info->unicodes().mid(0, 8) : QStringList())
        texts += "U+"_L1 + code;
    return texts.join(u' ');
}

} // namespace

ProblemListForm problemListFormOf(const QString &path)
{
    if (path.endsWith(".csv"_L1, Qt::CaseInsensitive))
        return ProblemListForm::Commas;
    return path.endsWith(".tsv"_L1, Qt::CaseInsensitive) ? ProblemListForm::Tabs : ProblemListForm::Text;
}

QString textOfProblems(const Problems &problems, std::span<const Problem> list, ProblemListForm form,
                       const WorkProgress &progress)
{
    const bool isText = form == ProblemListForm::Text;
    const QChar separator = form == ProblemListForm::Commas ? u',' : u'\t';
    QString text;
    const auto add = [&](const QStringList &cells) {
        QStringList row;
        for (const QString &each : cells)
            row += cell(each, form);
        text += row.join(separator) + u'\n';
    };
    if (!isText)
        add({Texts::tr("Kind"), fieldTitle(GlyphField::Name), fieldTitle(GlyphField::Unicodes),
             Texts::tr("Problem")});
    CountedWork work(progress, list.size());
    for (const Problem &problem : list) {
        if (!work.goOn())
            return {};
        const QString kind = titleOfProblemKind(problem.kind);
        const QString name = problem.info ? problem.info->name() : Texts::tr("(file)");
        const QString explanation = problems.explanation(problem);
        if (isText)
            text += Texts::tr("%1: %2: %3").arg(kind, cell(name, form), cell(explanation, form)) + u'\n';
        else
            add({kind, name, codePoints(problem), explanation});
    }
    return text;
}

} // namespace runebook
