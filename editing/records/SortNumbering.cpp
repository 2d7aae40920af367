#include "editing/records/SortNumbering.h"

#include "editing/records/RecordSettings.h"

#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

// Beyond this a number of digits is a mistake that would only fill the memory.
constexpr qint32 kMostDigits = 1000;

} // namespace

void SortNumbering::registerDefaults()
{
    Settings::kSortNamePrefix.registerFallback();
    Settings::kSortNameStart.registerFallback();
    Settings::kSortNameStep.registerFallback();
    Settings::kSortNameDigits.registerFallback();
}

SortNumbering SortNumbering::fromDefaults()
{
    return {Settings::kSortNamePrefix.value(), Settings::kSortNameStart.value(),
            Settings::kSortNameStep.value(), Settings::kSortNameDigits.value()};
}

QString SortNumbering::nameForNumber(qint32 number) const
{
    const qsizetype width = std::clamp(digits, -kMostDigits, kMostDigits);
    const QString sign = number < 0 ? u"-"_s : QString();
    const QString value = QString::number(std::abs(qint64(number)));
    if (width < 0)
        return prefix + (sign + value).leftJustified(-width);
    return prefix + sign + value.rightJustified(width - sign.size(), u'0');
}

qint32 SortNumbering::numberAt(qsizetype place) const
{
    return static_cast<qint32>(static_cast<quint32>(start)
                               + static_cast<quint32>(step) * static_cast<quint32>(place));
}

void SortNumbering::apply(const InfoList &infos) const
{
    qsizetype place = 0;
    for (const InfoPtr &info : infos)
        info->setSortName(nameForNumber(numberAt(place++)));
}

} // namespace runebook
