#include "platform/documents/SavingLosses.h"

#include <QCoreApplication>
#include <QLocale>

namespace runebook {

using namespace Qt::StringLiterals;

QStringList SavingLosses::lines(qsizetype most) const
{
    QStringList lines;
    for (const SavingLoss &loss : listed.first(qMin(most, listed.size())))
        lines << loss.record + ": "_L1 + loss.sentence;
    if (listed.size() > most || count > listed.size()) {
        lines << QCoreApplication::translate("SavingLosses", "Records concerned in all: %1.")
                     .arg(QLocale().toString(qlonglong(count)));
    }
    return lines;
}

} // namespace runebook
