#pragma once

#include <QList>
#include <QMetaType>
#include <QObject>
#include <QVariant>

/// Compares dotted versions such as "3.11.2" by their first three numbers. Stateless.
class VXVersionComparator
{
    Q_GADGET
public:
    /// The numbers of \a value (a text, or a number that counts as one component), filled up with 0 to at
    /// least three. Each component is freed of what is no digit at both ends and read up to the next
    /// character that is none, "10b2" as 10; numbers end at the limits of 32 bits. An absent or empty value
    /// gives the one entry 0.
    Q_INVOKABLE static QList<int> normaliseValuedArrayFromString(const QVariant &value);
    /// 1 when \a a is greater, -1 when it is smaller, 0 when they are equal. Throws std::out_of_range when a
    /// version is absent or empty and the first numbers do not decide.
    Q_INVOKABLE static int compareVersionWithVersion(const QVariant &a, const QVariant &b);
    /// True exactly when \a a is greater than \a b; throws like compareVersionWithVersion.
    Q_INVOKABLE static bool isVersionGreaterThanVersion(const QVariant &a, const QVariant &b);
};

Q_DECLARE_METATYPE(VXVersionComparator)
