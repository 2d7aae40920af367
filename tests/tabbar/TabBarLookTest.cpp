#include "tabbar/PSMYosemiteStyle.h"
#include "tabbar/TabStyles.h"
#include "tabbar/TabWidths.h"
#include "tests/Rounds.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/tabbar/TabBarFixture.h"

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

// What can be checked of the drawing without an eye.

namespace {

QPalette paletteOf(bool dark)
{
    QPalette palette;
    palette.setColor(QPalette::Window, dark ? QColor(43, 43, 46) : QColor(239, 239, 241));
    palette.setColor(QPalette::WindowText, dark ? QColor(230, 230, 232) : QColor(30, 30, 32));
    palette.setColor(QPalette::Highlight, QColor(50, 120, 235));
    return palette;
}

double luminance(const QColor &color)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor &one, const QColor &other)
{
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

} // namespace

/// How wide tabs are and how they look.
class TabBarLookTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    TABLE(horizontal,
          (const QList<qreal> &desired, int available, const TabWidthRules &rules, const QString &expected), {
              const auto same = [](int count, qreal desired) { return QList<qreal>(count, desired); };

              row("no tabs", same(0, 0), 500, rules(Optimum, true), "");
              row("3 of 130 have room", same(3, 50), 500, rules(Optimum, true), "130 130 130");
              row("5 of 130 share 500", same(5, 50), 500, rules(Optimum, true), "100 100 100 100 100");
              row("6 of 130: the sixth goes", same(6, 50), 500, rules(Optimum, true), "100 100 100 100 100");
              row("filling exactly is sharing", same(2, 50), 260, rules(Optimum, true), "130 130");
              row("a share of fractions", same(4, 50), 450, rules(Optimum, true), "112.5 112.5 112.5 112.5");
              row("not even one fits", same(2, 50), 90, rules(Optimum, true), "");
              row("a bar without room", same(2, 50), -20, rules(Optimum, true), "");

              row("no menu: all share", same(6, 50), 500, rules(Optimum, false), "83 83 83 83 83 83");
              row("no menu: room for all", same(3, 50), 500, rules(Optimum, false), "130 130 130");
              row("no menu, no room", same(2, 50), -20, rules(Optimum, false), "0 0");
              row("no menu, fitted: the small keep theirs", QList<qreal> {50, 300, 300}, 400,
                  rules(Fit, false), "50 133 133");

              row("full: shares", same(2, 50), 500, rules(Full, true), "250 250");
              row("full: the maximum is for fitted tabs", same(1, 50), 900, rules(Full, true), "900");
              row("full: a long title pushes until all share", QList<qreal> {300, 50, 50}, 510,
                  rules(Full, true), "170 170 170");
              row("full: the sixth goes", same(6, 100), 550, rules(Full, true), "100 100 100 100 100");

              row("fitted: last tabs shrink first, round and round", QList<qreal> {120, 120, 120}, 316,
                  rules(Fit, true), "108 108 100");
              row("fitted: at the minimum nothing is left", QList<qreal> {120, 120, 120}, 299,
                  rules(Fit, true), "100 100");
          })
    {
        QCOMPARE(text(tabWidths(desired, available, rules)), expected);
    }

    void fittedAgainstPlainModel()
    {
        QRandomGenerator random(7);
        for (int round = 0; round < rounds(2000); ++round) {
            QList<qreal> desired(random.bounded(12));
            std::ranges::generate(desired, [&random] { return 20 + random.bounded(300.0); });
            const int available = random.bounded(1200);
            const TabWidthRules fitted = rules(Fit, true, 60 + random.bounded(60), 150 + random.bounded(100));
            QCOMPARE(text(tabWidths(desired, available, fitted)),
                     text(plainFittedWidths(desired, available, fitted)));
        }
    }

    void widthsNeverLeaveTheBar()
    {
        QRandomGenerator random(11);
        for (int round = 0; round < rounds(3000); ++round) {
            QList<qreal> desired(1 + random.bounded(40));
            std::ranges::generate(desired, [&random] { return random.bounded(400.0); });
            const int available = random.bounded(2000);
            const QList<qreal> widths = tabWidths(desired, available, rules(Mode(random.bounded(3)), true));
            QVERIFY(widths.size() <= desired.size());
            const qreal total = std::accumulate(widths.begin(), widths.end(), 0.0);
            QVERIFY2(total <= available + 1e-6, qPrintable(text(widths)));
        }
    }

    TABLE(vertical, (int available, bool overflow, int expected), {
        row("room for all", 300, true, 5);
        row("exactly", 150, true, 5);
        row("one point short", 149, true, 4);
        row("none", -3, true, 0);
        row("no menu", 10, false, 5);
    })
    {
        QCOMPARE(int(verticalTabCount(5, available, 30, overflow)), expected);
    }

    TABLE(shown, (int places, int kept, const QList<int> &expected), {
        row("the first ones", 3, -1, QList<int> {0, 1, 2});
        row("the kept one is among them", 3, 2, QList<int> {0, 1, 2});
        row("the kept one takes the last place", 3, 4, QList<int> {0, 1, 4});
        row("no place at all", 0, 4, QList<int> {});
        row("more places than tabs", 9, 4, QList<int> {0, 1, 2, 3, 4});
    })
    {
        QCOMPARE(shownTabs(places, 5, kept), expected);
    }

    /// Titles are legible, and each state has to show: no two of them may look the same.
    TABLE(paintsEveryState, (const QString &style, bool dark, bool active), {
        for (const QString &style : {u"Yosemite"_s, u"BigSur"_s}) {
            for (const bool dark : {false, true}) {
                for (const bool active : {false, true})
                    row(style + (dark ? ", dark"_L1 : ", light"_L1) + (active ? ""_L1 : ", inactive"_L1),
                        style, dark, active);
            }
        }
    })
    {
        const PSMTabStyle::Colors colors = tabStyleNamed(style)->colors(paletteOf(dark), active);
        for (const QColor &ground : {colors.bar, colors.hoveredTab})
            QVERIFY2(contrast(colors.title, ground) >= 4.5, qPrintable(colors.title.name() + ground.name()));
        QVERIFY(contrast(colors.selectedTitle, colors.selectedTab) >= 4.5);
        QVERIFY(colors.selectedTab != colors.bar);
        QVERIFY(colors.selectedTab != colors.hoveredTab);

        Panel panel(2);
        panel.bar->setStyleNamed(style);
        panel.window.setPalette(paletteOf(dark));
        panel.window.show();
        panel.bar->selectTabItemAtIndex(1);
        PSMTabBarCell *cell = panel.bar->cells().first();
        QList<QImage> pictures;
        const auto take = [&] {
            const QImage picture = panel.bar->grab(cell->frame().toRect()).toImage();
            QVERIFY(!pictures.contains(picture));
            pictures.append(picture);
            const QColor ground = cell->is(PSMTabBarCell::Selected) ? colors.selectedTab
                : cell->is(PSMTabBarCell::Hovered)                  ? colors.hoveredTab
                                                                    : colors.bar;
            QCOMPARE(picture.pixelColor(12, picture.height() / 2).name(), ground.name());
            double best = 0; // of what is written there
            for (int x = 30; x < picture.width() - 4; ++x) {
                for (int y = 4; y < picture.height() - 4; ++y)
                    best = std::max(best, contrast(picture.pixelColor(x, y), ground));
            }
            QVERIFY(best > 3);
        };
        take();
        cell->setState(PSMTabBarCell::Hovered, true);
        take();
        cell->setState(PSMTabBarCell::CloseHovered, true);
        take();
        cell->setState(PSMTabBarCell::ClosePressed, true);
        take();
        panel.bar->selectTabItemAtIndex(0);
        take();
    }

    TABLE(showsTitles, (const QString &one, const QString &other, int width, bool differs), {
        row("one letter", "i", "", 130, true);
        row("one letter, narrow", "i", "", 50, true);
        row("a word", "Macro 1", "Macro 2", 130, true);
        row("cut before they part", "A long title in a narrow tab, 1", "A long title in a narrow tab, 2", 100,
            false);
        row("no room at all", "Macro 1", "", 40, false);
    })
    {
        Panel panel(2);
        panel.bar->setCellOptimumWidth(width);
        panel.bar->setCellMinWidth(20);
        panel.window.show();
        const auto picture = [&panel](const QString &title) {
            panel.items.last()->setTitle(title);
            return panel.bar->grab(panel.bar->cells().last()->frame().toRect()).toImage();
        };
        const QImage first = picture(one);
        QCOMPARE(first != picture(other), differs);
    }

    void knowsItsStyles()
    {
        VXTabBarControl bar;
        QCOMPARE(bar.property("style").toString(), u"Yosemite"_s);
        bar.setStyleNamed(u"BigSur"_s);
        QCOMPARE(bar.tabStyle().name(), u"BigSur"_s);
        bar.setStyleNamed(u"Aqua"_s);
        QCOMPARE(bar.tabStyle().name(), u"BigSur"_s);
        bar.setTabStyle(std::make_unique<PSMYosemiteStyle>());
        QCOMPARE(bar.styleName(), u"Yosemite"_s);
    }

    void growsWithTheFont()
    {
        Panel panel(2);
        panel.window.show();
        const int before = panel.bar->height();
        QFont font = panel.bar->font();
        font.setPointSizeF(font.pointSizeF() * 3);
        panel.bar->setFont(font);
        QVERIFY(panel.bar->height() > before);
        QCOMPARE(panel.bar->cells().first()->frame().height(), panel.bar->height());
        // So do tabs as wide as their titles.
        panel.bar->setSizeCellsToFit(true);
        panel.items.first()->setTitle(u"A title of some length"_s);
        const qreal wide = panel.bar->cells().first()->frame().width();
        font.setPointSizeF(font.pointSizeF() / 3);
        panel.bar->setFont(font);
        QVERIFY(panel.bar->cells().first()->frame().width() < wide);
    }
};

RUNEBOOK_TEST_MAIN(TabBarLookTest)
#include "TabBarLookTest.moc"
