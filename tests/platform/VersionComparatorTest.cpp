#include "platform/VXVersionComparator.h"
#include "tests/Table.h"
#include "tests/TestMain.h"

#include <stdexcept>

using namespace runebook;
using namespace Qt::StringLiterals;

/// The order of versions.
class VersionComparatorTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    TABLE(normalisesVersions, (const QVariant &value, const QList<int> &numbers), {
        row("3.11.2", QVariant(u"3.11.2"_s), QList<int> {3, 11, 2});
        row("filled up", QVariant(u"3"_s), QList<int> {3, 0, 0});
        row("longer lists stay", QVariant(u"1.2.3.4.5"_s), QList<int> {1, 2, 3, 4, 5});
        row("inner letters end the number", QVariant(u"1.10b2"_s), QList<int> {1, 10, 0});
        row("outer letters go", QVariant(u"v3.2-beta"_s), QList<int> {3, 2, 0});
        row("a sign is no digit", QVariant(u"-2.+3"_s), QList<int> {2, 3, 0});
        row("no digits", QVariant(u"beta"_s), QList<int> {0, 0, 0});
        row("empty components", QVariant(u"1..2"_s), QList<int> {1, 0, 2});
        row("other scripts' digits", QVariant(u"\u0661.2"_s), QList<int> {0, 2, 0});
        row("beyond 32 bits", QVariant(u"99999999999999999999"_s), QList<int> {2147483647, 0, 0});
        row("a number", QVariant(3.9), QList<int> {3, 0, 0});
        row("absent", QVariant(), QList<int> {0});
        row("empty", QVariant(u""_s), QList<int> {0});
        row("null text", QVariant(QString()), QList<int> {0});
    })
    {
        QCOMPARE(VXVersionComparator::normaliseValuedArrayFromString(value), numbers);
    }

    TABLE(comparesVersions, (const QString &a, const QString &b, int order), {
        row("numbers, not texts", "3.10", "3.9", 1);
        row("missing numbers are 0", "3.11", "3.11.0", 0);
        row("3.11.999 < 3.12", "3.11.999", "3.12", -1);
        row("release candidate", "1.0rc1", "1.0", 0);
        row("fourth number ignored", "1.2.3.9", "1.2.3.1", 0);
        row("decided before the gap", "2", QString(), 1);
        row("decided the other way", "", "1", -1);
    })
    {
        QCOMPARE(VXVersionComparator::compareVersionWithVersion(a, b), order);
        QCOMPARE(VXVersionComparator::compareVersionWithVersion(b, a), -order);
        QCOMPARE(VXVersionComparator::isVersionGreaterThanVersion(a, b), order > 0);
        QCOMPARE(VXVersionComparator::isVersionGreaterThanVersion(b, a), order < 0);
    }

    void failsOnEmptyVersions()
    {
        QVERIFY_EXCEPTION_THROWN(VXVersionComparator::compareVersionWithVersion(u"0"_s, u""_s),
                                 std::out_of_range);
        QVERIFY_EXCEPTION_THROWN(VXVersionComparator::isVersionGreaterThanVersion({}, {}), std::out_of_range);
    }
};

RUNEBOOK_TEST_MAIN(VersionComparatorTest)
#include "VersionComparatorTest.moc"
