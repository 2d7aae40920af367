#include "editing/records/SortNumbering.h"

#include "platform/defaults/UserDefaults.h"

#include <algorithm>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

// Beyond this a number of digits is a mistake that would only fill the memory.
constexpr qint32 kMostDigits = 1000;

} // namespace

QString SortNumbering::prefixKey()
{
    return u"sortNamePrefix"_s;
}

QString SortNumbering::startKey()
{
    return u"sortNameStart"_s;
}

QString SortNumbering::stepKey()
{
    return u"sortNameStep"_s;
}

QString SortNumbering::digitsKey()
{
    return u"sortNameDigits"_s;
}

void SortNumbering::registerDefaults()
{
    UserDefaults::standard().registerDefaults(
        {{prefixKey(), u"a"_s}, {stepKey(), 1}, {startKey(), 1}, {digitsKey(), 3}});
}

SortNumbering SortNumbering::fromDefaults()
{
    const UserDefaults &defaults = UserDefaults::standard();
    return {defaults.stringForKey(prefixKey()), defaults.integerForKey(startKey()),
            defaults.integerForKey(stepKey()), defaults.integerForKey(digitsKey())};
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
