#include "platform/VXVersionComparator.h"

#include <limits>
#include <stdexcept>

namespace {

constexpr qsizetype kComparedNumbers = 3;

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

int leadingNumber(QStringView component)
{
    while (!component.isEmpty() && !isDigit(component.front()))
        component = component.mid(1);
    constexpr qint64 kLimit = std::numeric_limits<int>::max();
    qint64 number = 0;
    for (const QChar character : component) {
        if (!isDigit(character))
            break;
        number = std::min<qint64>(kLimit, number * 10 + (character.unicode() - u'0'));
    }
    return static_cast<int>(number);
}

int numberAt(const QList<int> &numbers, qsizetype place)
{
    if (place >= numbers.size())
        throw std::out_of_range("an empty version was compared");
    return numbers[place];
}

} // namespace

QList<int> VXVersionComparator::normaliseValuedArrayFromString(const QVariant &value)
{
    if (!value.isValid() || value.isNull())
        return {0};
    QList<int> numbers;
    if (value.typeId() == QMetaType::QString) {
        const QString text = value.toString();
        if (text.isEmpty())
            return {0};
        for (const QStringView component : QStringView(text).split(u'.'))
            numbers << leadingNumber(component);
    } else {
        numbers << static_cast<int>(value.toDouble());
    }
    while (numbers.size() < kComparedNumbers)
        numbers << 0;
    return numbers;
}

int VXVersionComparator::compareVersionWithVersion(const QVariant &a, const QVariant &b)
{
    const QList<int> left = normaliseValuedArrayFromString(a);
    const QList<int> right = normaliseValuedArrayFromString(b);
    for (qsizetype place = 0; place < kComparedNumbers; ++place) {
        const int leftNumber = numberAt(left, place);
        const int rightNumber = numberAt(right, place);
        if (leftNumber != rightNumber)
            return leftNumber > rightNumber ? 1 : -1;
    }
    return 0;
}

bool VXVersionComparator::isVersionGreaterThanVersion(const QVariant &a, const QVariant &b)
{
    return compareVersionWithVersion(a, b) > 0;
}
