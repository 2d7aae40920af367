#include "app/tabbar/TabWidths.h"

#include "tests/TestMain.h"

#include <QRandomGenerator>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

enum Mode { Optimum, Fit, Full };

TabWidthRules rules(Mode mode, bool overflow, int min = 100, int max = 280, int optimum = 130)
{
    return {mode == Fit, mode == Full, overflow, min, max, optimum};
}

QString text(const QList<qreal> &widths)
{
    QStringList words;
    for (const qreal width : widths)
        words.append(QString::number(width));
    return words.join(u' ');
}

/// A tab bar's widths told once more, as slowly and plainly as possible: the fitted ones.
QList<qreal> plainFittedWidths(const QList<qreal> &desired, qreal available, const TabWidthRules &rules)
{
    QList<qreal> widths;
    const auto total = [&widths] { return std::accumulate(widths.begin(), widths.end(), 0.0); };
    for (const qreal own : desired) {
        qreal candidate = std::ceil(std::min<qreal>(own, rules.cellMaxWidth));
        if (total() + candidate >= available) {
            candidate = std::min<qreal>(candidate, rules.cellMinWidth);
            qsizetype tab = widths.size();
            for (int idle = 0; total() + candidate > available && idle < widths.size();) {
                tab = tab == 0 ? widths.size() - 1 : tab - 1;
                const bool shrinks = widths[tab] > rules.cellMinWidth;
                widths[tab] -= shrinks ? 1 : 0;
                idle = shrinks ? 0 : idle + 1;
            }
            if (total() + candidate > available)
                break;
        }
        widths.append(candidate);
    }
    return widths;
}

} // namespace

class TabWidthsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void horizontal_data();
    void horizontal();
    void fittedAgainstPlainModel();
    void widthsNeverLeaveTheBar();
    void vertical_data();
    void vertical();
    void shown_data();
    void shown();
    void selectionAfterClosing_data();
    void selectionAfterClosing();
};

void TabWidthsTest::horizontal_data()
{
    QTest::addColumn<QList<qreal>>("desired");
    QTest::addColumn<int>("available");
    QTest::addColumn<TabWidthRules>("rules");
    QTest::addColumn<QString>("expected");
    const auto same = [](int count, qreal desired) { return QList<qreal>(count, desired); };

    QTest::newRow("no tabs") << same(0, 0) << 500 << rules(Optimum, true) << u""_s;
    QTest::newRow("3 of 130 have room") << same(3, 50) << 500 << rules(Optimum, true) << u"130 130 130"_s;
    QTest::newRow("5 of 130 share 500")
        << same(5, 50) << 500 << rules(Optimum, true) << u"100 100 100 100 100"_s;
    QTest::newRow("6 of 130: the sixth goes")
        << same(6, 50) << 500 << rules(Optimum, true) << u"100 100 100 100 100"_s;
    QTest::newRow("filling exactly is sharing") << same(2, 50) << 260 << rules(Optimum, true) << u"130 130"_s;
    QTest::newRow("a share of fractions")
        << same(4, 50) << 450 << rules(Optimum, true) << u"112.5 112.5 112.5 112.5"_s;
    QTest::newRow("not even one fits") << same(2, 50) << 90 << rules(Optimum, true) << u""_s;
    QTest::newRow("a bar without room") << same(2, 50) << -20 << rules(Optimum, true) << u""_s;

    QTest::newRow("no menu: all share")
        << same(6, 50) << 500 << rules(Optimum, false) << u"83 83 83 83 83 83"_s;
    QTest::newRow("no menu: room for all") << same(3, 50) << 500 << rules(Optimum, false) << u"130 130 130"_s;
    QTest::newRow("no menu, no room") << same(2, 50) << -20 << rules(Optimum, false) << u"0 0"_s;
    QTest::newRow("no menu, fitted: the small keep theirs")
        << QList<qreal> {50, 300, 300} << 400 << rules(Fit, false) << u"50 133 133"_s;

    QTest::newRow("full: shares") << same(2, 50) << 500 << rules(Full, true) << u"250 250"_s;
    QTest::newRow("full: the maximum is for fitted tabs")
        << same(1, 50) << 900 << rules(Full, true) << u"900"_s;
    QTest::newRow("full: a long title pushes until all share")
        << QList<qreal> {300, 50, 50} << 510 << rules(Full, true) << u"170 170 170"_s;
    QTest::newRow("full: the sixth goes")
        << same(6, 100) << 550 << rules(Full, true) << u"100 100 100 100 100"_s;

    QTest::newRow("fitted: rounded up")
        << QList<qreal> {110.2, 120.0} << 500 << rules(Fit, true) << u"111 120"_s;
    QTest::newRow("fitted: capped") << QList<qreal> {400} << 500 << rules(Fit, true) << u"280"_s;
    QTest::newRow("fitted: last tabs shrink first, round and round")
        << QList<qreal> {120, 120, 120} << 316 << rules(Fit, true) << u"108 108 100"_s;
    QTest::newRow("fitted: an odd point comes from the last")
        << QList<qreal> {120, 120, 120} << 317 << rules(Fit, true) << u"109 108 100"_s;
    QTest::newRow("fitted: at the minimum nothing is left")
        << QList<qreal> {120, 120, 120} << 299 << rules(Fit, true) << u"100 100"_s;
    QTest::newRow("fitted: a small candidate needs no minimum")
        << QList<qreal> {120, 40} << 160 << rules(Fit, true) << u"120 40"_s;
}

void TabWidthsTest::horizontal()
{
    QFETCH(const QList<qreal>, desired);
    QFETCH(const int, available);
    QFETCH(const TabWidthRules, rules);
    QFETCH(const QString, expected);
    QCOMPARE(text(tabWidths(desired, available, rules)), expected);
}

void TabWidthsTest::fittedAgainstPlainModel()
{
    QRandomGenerator random(7);
    for (int round = 0; round < 2000; ++round) {
        QList<qreal> desired(random.bounded(12));
        std::ranges::generate(desired, [&random] { return 20 + random.bounded(300.0); });
        const int available = random.bounded(1200);
        const TabWidthRules fitted = rules(Fit, true, 60 + random.bounded(60), 150 + random.bounded(100));
        QCOMPARE(text(tabWidths(desired, available, fitted)),
                 text(plainFittedWidths(desired, available, fitted)));
    }
}

void TabWidthsTest::widthsNeverLeaveTheBar()
{
    QRandomGenerator random(11);
    for (int round = 0; round < 3000; ++round) {
        QList<qreal> desired(1 + random.bounded(40));
        std::ranges::generate(desired, [&random] { return random.bounded(400.0); });
        const int available = random.bounded(2000);
        const QList<qreal> widths = tabWidths(desired, available, rules(Mode(random.bounded(3)), true));
        QVERIFY(widths.size() <= desired.size());
        const qreal total = std::accumulate(widths.begin(), widths.end(), 0.0);
        QVERIFY2(total <= available + 1e-6, qPrintable(text(widths)));
    }
}

void TabWidthsTest::vertical_data()
{
    QTest::addColumn<int>("available");
    QTest::addColumn<bool>("overflow");
    QTest::addColumn<int>("expected");
    QTest::newRow("room for all") << 300 << true << 5;
    QTest::newRow("exactly") << 150 << true << 5;
    QTest::newRow("one point short") << 149 << true << 4;
    QTest::newRow("none") << -3 << true << 0;
    QTest::newRow("no menu") << 10 << false << 5;
}

void TabWidthsTest::vertical()
{
    QFETCH(const int, available);
    QFETCH(const bool, overflow);
    QTEST(int(verticalTabCount(5, available, 30, overflow)), "expected");
}

void TabWidthsTest::shown_data()
{
    QTest::addColumn<int>("places");
    QTest::addColumn<int>("kept");
    QTest::addColumn<QList<int>>("expected");
    QTest::newRow("the first ones") << 3 << -1 << QList<int> {0, 1, 2};
    QTest::newRow("the kept one is among them") << 3 << 2 << QList<int> {0, 1, 2};
    QTest::newRow("the kept one takes the last place") << 3 << 4 << QList<int> {0, 1, 4};
    QTest::newRow("no place at all") << 0 << 4 << QList<int> {};
    QTest::newRow("more places than tabs") << 9 << 4 << QList<int> {0, 1, 2, 3, 4};
}

void TabWidthsTest::shown()
{
    QFETCH(const int, places);
    QFETCH(const int, kept);
    QTEST(shownTabs(places, 5, kept), "expected");
}

void TabWidthsTest::selectionAfterClosing_data()
{
    QTest::addColumn<uint>("selection");
    QTest::addColumn<uint>("closed");
    QTest::addColumn<uint>("expected");
    QTest::newRow("[A] B, closing A") << 0U << 0U << 0U;
    QTest::newRow("[A] B, closing B") << 0U << 1U << 0U;
    QTest::newRow("A [B] C, closing C") << 1U << 2U << 1U;
    QTest::newRow("A [B] C, closing B") << 1U << 1U << 0U;
    QTest::newRow("A B [C], closing A") << 2U << 0U << 1U;
}

void TabWidthsTest::selectionAfterClosing()
{
    QFETCH(const uint, selection);
    QFETCH(const uint, closed);
    QTEST(indexAfterClosing(selection, closed), "expected");
}

RUNEBOOK_TEST_MAIN(TabWidthsTest)
#include "TabWidthsTest.moc"
