// What can be checked of the drawing without an eye.
#include "TabBarFixture.h"

#include "app/tabbar/PSMYosemiteStyle.h"
#include "tests/TestMain.h"

using namespace Qt::StringLiterals;

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

class TabBarLookTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void titlesAreLegible_data();
    void titlesAreLegible();
    void paintsEveryState_data();
    void paintsEveryState();
    void showsTitles_data();
    void showsTitles();
    void knowsItsStyles();
    void growsWithTheFont();
};

void TabBarLookTest::titlesAreLegible_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<bool>("dark");
    QTest::addColumn<bool>("active");
    for (const QString &style : {u"Yosemite"_s, u"BigSur"_s}) {
        for (const bool dark : {false, true}) {
            for (const bool active : {false, true})
                QTest::addRow("%s, %s, %s window", qPrintable(style), dark ? "dark" : "light",
                              active ? "active" : "inactive")
                    << style << dark << active;
        }
    }
}

void TabBarLookTest::titlesAreLegible()
{
    QFETCH(const QString, style);
    QFETCH(const bool, dark);
    QFETCH(const bool, active);
    const PSMTabStyle::Colors colors = PSMTabStyle::named(style)->colors(paletteOf(dark), active);
    for (const QColor &ground : {colors.bar, colors.hoveredTab})
        QVERIFY2(contrast(colors.title, ground) >= 4.5, qPrintable(colors.title.name() + ground.name()));
    QVERIFY(contrast(colors.selectedTitle, colors.selectedTab) >= 4.5);
    QVERIFY(colors.selectedTab != colors.bar);
    QVERIFY(colors.selectedTab != colors.hoveredTab);
}

void TabBarLookTest::paintsEveryState_data()
{
    titlesAreLegible_data();
}

/// Each state has to show: no two of them may look the same.
void TabBarLookTest::paintsEveryState()
{
    QFETCH(const QString, style);
    QFETCH(const bool, dark);
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

void TabBarLookTest::showsTitles_data()
{
    QTest::addColumn<QString>("one");
    QTest::addColumn<QString>("other");
    QTest::addColumn<int>("width");
    QTest::addColumn<bool>("differs");
    QTest::newRow("one letter") << u"i"_s << u""_s << 130 << true;
    QTest::newRow("one letter, narrow") << u"i"_s << u""_s << 50 << true;
    QTest::newRow("a word") << u"Macro 1"_s << u"Macro 2"_s << 130 << true;
    QTest::newRow("cut before they part")
        << u"A long title in a narrow tab, 1"_s << u"A long title in a narrow tab, 2"_s << 100 << false;
    QTest::newRow("no room at all") << u"Macro 1"_s << u""_s << 40 << false;
}

void TabBarLookTest::showsTitles()
{
    QFETCH(const QString, one);
    QFETCH(const QString, other);
    QFETCH(const int, width);
    Panel panel(2);
    panel.bar->setCellOptimumWidth(width);
    panel.bar->setCellMinWidth(20);
    panel.window.show();
    const auto picture = [&panel](const QString &title) {
        panel.items.last()->setTitle(title);
        return panel.bar->grab(panel.bar->cells().last()->frame().toRect()).toImage();
    };
    const QImage first = picture(one);
    QTEST(first != picture(other), "differs");
}

void TabBarLookTest::knowsItsStyles()
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

void TabBarLookTest::growsWithTheFont()
{
    Panel panel(2);
    panel.window.show();
    const int before = panel.bar->height();
    QFont font = panel.bar->font();
    font.setPointSizeF(font.pointSizeF() * 3);
    panel.bar->setFont(font);
    QVERIFY(panel.bar->height() > before);
    QCOMPARE(panel.bar->cells().first()->frame().height(), panel.bar->height());
}

RUNEBOOK_TEST_MAIN(TabBarLookTest)
#include "TabBarLookTest.moc"
