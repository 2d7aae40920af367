#include "editing/many/RecordPlan.h"

#include "model/NameRules.h"

#include <QCoreApplication>

namespace runebook {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(RecordPlan)
};

} // namespace

void RecordPlan::setTaken(qsizetype row, bool isTaken)
{
    if (isTaken)
        m_untaken.remove(row);
    else if (!remark(row).isLeftOut)
        m_untaken.insert(row);
}

QString RecordPlan::firstTaken() const
{
    for (qsizetype row = 0; row < countOfRows(); ++row) {
        if (isTaken(row))
            return text(row, 0);
    }
    return {};
}

QString NewNames::objectionTo(const QString &name)
{
    if (const NameObjection objection = objectionToName(QStringView(name)); objection != NameObjection::None)
        return textOfObjection(objection).section(u'\n', 0, 0);
    if (m_document.infoForName(name) || m_given.contains(name)) {
        ++m_taken;
        return Texts::tr("Is there already");
    }
    m_given.insert(name);
    return {};
}

} // namespace runebook
