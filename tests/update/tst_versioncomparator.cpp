#include "app/update/VXVersionComparator.h"
#include "tests/TestMain.h"

#include <stdexcept>

using namespace Qt::StringLiterals;

class VersionComparatorTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void normalises_data();
    void normalises();
    void compares_data();
    void compares();
    void failsOnEmptyVersions();
};

void VersionComparatorTest::normalises_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QList<int>>("numbers");
    QTest::newRow("3.11.2") << QVariant(u"3.11.2"_s) << QList<int> {3, 11, 2};
    QTest::newRow("filled up") << QVariant(u"3"_s) << QList<int> {3, 0, 0};
    QTest::newRow("longer lists stay") << QVariant(u"1.2.3.4.5"_s) << QList<int> {1, 2, 3, 4, 5};
    QTest::newRow("inner letters end the number") << QVariant(u"1.10b2"_s) << QList<int> {1, 10, 0};
    QTest::newRow("outer letters go") << QVariant(u"v3.2-beta"_s) << QList<int> {3, 2, 0};
    QTest::newRow("a sign is no digit") << QVariant(u"-2.+3"_s) << QList<int> {2, 3, 0};
    QTest::newRow("no digits") << QVariant(u"beta"_s) << QList<int> {0, 0, 0};
    QTest::newRow("empty components") << QVariant(u"1..2"_s) << QList<int> {1, 0, 2};
    QTest::newRow("other scripts' digits") << QVariant(u"\u0661.2"_s) << QList<int> {0, 2, 0};
    QTest::newRow("beyond 32 bits") << QVariant(u"99999999999999999999"_s) << QList<int> {2147483647, 0, 0};
    QTest::newRow("a number") << QVariant(3.9) << QList<int> {3, 0, 0};
    QTest::newRow("absent") << QVariant() << QList<int> {0};
    QTest::newRow("empty") << QVariant(u""_s) << QList<int> {0};
    QTest::newRow("null text") << QVariant(QString()) << QList<int> {0};
}

void VersionComparatorTest::normalises()
{
    QFETCH(QVariant, value);
    QTEST(VXVersionComparator::normaliseValuedArrayFromString(value), "numbers");
}

void VersionComparatorTest::compares_data()
{
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<int>("order");
    QTest::newRow("numbers, not texts") << u"3.10"_s << u"3.9"_s << 1;
    QTest::newRow("missing numbers are 0") << u"3.11"_s << u"3.11.0"_s << 0;
    QTest::newRow("3.11.999 < 3.12") << u"3.11.999"_s << u"3.12"_s << -1;
    QTest::newRow("release candidate") << u"1.0rc1"_s << u"1.0"_s << 0;
    QTest::newRow("fourth number ignored") << u"1.2.3.9"_s << u"1.2.3.1"_s << 0;
    QTest::newRow("decided before the gap") << u"2"_s << QString() << 1;
    QTest::newRow("decided the other way") << u""_s << u"1"_s << -1;
}

void VersionComparatorTest::compares()
{
    QFETCH(QString, a);
    QFETCH(QString, b);
    QFETCH(int, order);
    QCOMPARE(VXVersionComparator::compareVersionWithVersion(a, b), order);
    QCOMPARE(VXVersionComparator::compareVersionWithVersion(b, a), -order);
    QCOMPARE(VXVersionComparator::isVersionGreaterThanVersion(a, b), order > 0);
    QCOMPARE(VXVersionComparator::isVersionGreaterThanVersion(b, a), order < 0);
}

void VersionComparatorTest::failsOnEmptyVersions()
{
    QVERIFY_EXCEPTION_THROWN(VXVersionComparator::compareVersionWithVersion(u"0"_s, u""_s),
                             std::out_of_range);
    QVERIFY_EXCEPTION_THROWN(VXVersionComparator::isVersionGreaterThanVersion({}, {}), std::out_of_range);
}

RUNEBOOK_TEST_MAIN(VersionComparatorTest)
#include "tst_versioncomparator.moc"
