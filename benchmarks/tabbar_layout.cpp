// Lays out a bar with many tabs, once for each way to give them their widths. Nobody may wait for it longer
// than a frame (16 ms).
#include "benchmarks/BenchmarkSupport.h"
#include "tabbar/VXTabBarControl.h"

#include <QApplication>

using namespace Qt::StringLiterals;

namespace {

class Tab : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString title MEMBER m_title NOTIFY titleChanged)
public:
    Tab(const QString &title, QObject *parent) : QObject(parent), m_title(title) { }
Q_SIGNALS:
    void titleChanged();

private:
    QString m_title;
};

struct Way {
    QLatin1StringView name;
    bool fitted;
    bool fullWidth;
    bool overflowMenu;
};

constexpr Way kWays[] = {
    {"optimum"_L1, false, false, true},
    {"full"_L1, false, true, true},
    {"fitted"_L1, true, false, true},
    {"squeezed"_L1, true, false, false},
};

/// A shown bar of 1,200 points with \a count tabs whose titles are as unlike as those of macros.
std::unique_ptr<VXTabBarControl> makeBar(const Way &way, int count)
{
    auto bar = std::make_unique<VXTabBarControl>();
    bar->setSizeCellsToFit(way.fitted);
    bar->setUseFullWidth(way.fullWidth);
    bar->setUseOverflowMenu(way.overflowMenu);
    bar->resize(1200, bar->height());
    bar->setDisableUpdates(true);
    for (int index = 0; index < count; ++index)
        bar->addTabItem(new Tab(u"Macro %1 %2"_s.arg(index).arg(QString(index % 23, u'n')), bar.get()));
    bar->setDisableUpdates(false);
    bar->selectTabItemAtIndex(uint(count / 2));
    bar->show();
    QApplication::processEvents();
    return bar;
}

/// A resize, as a user's drag at the window's edge brings: no width can be kept.
void layOut(benchmark::State &state, const Way &way, int count)
{
    const std::unique_ptr<VXTabBarControl> bar = makeBar(way, count);
    int width = 1200;
    for ([[maybe_unused]] auto _ : state) {
        width = width == 1200 ? 1190 : 1200;
        bar->resize(width, bar->height());
    }
}

/// The first layout, when no title has been measured yet.
void layOutFresh(benchmark::State &state, const Way &way, int count)
{
    const std::unique_ptr<VXTabBarControl> bar = makeBar(way, count);
    QFont fonts[] = {bar->font(), bar->font()};
    fonts[1].setLetterSpacing(QFont::AbsoluteSpacing, 0.5); // as high, but every title is measured anew
    int round = 0;
    for ([[maybe_unused]] auto _ : state)
        bar->setFont(fonts[++round % 2]);
}

void registerAll()
{
    for (const Way &way : kWays) {
        for (const int count : {30, 1000}) {
            const QString size = u"/%1"_s.arg(count);
            runebook::addRepeated(u"tabs-resize-"_s + way.name + size,
                                  [&way, count](benchmark::State &state) { layOut(state, way, count); });
            runebook::addRepeated(u"tabs-measure-"_s + way.name + size,
                                  [&way, count](benchmark::State &state) { layOutFresh(state, way, count); });
        }
    }
}

} // namespace

/// As RUNEBOOK_BENCHMARK_MAIN has it, but widgets need the larger application object.
int main(int argc, char *argv[])
{
    const QTemporaryDir home;
    runebook::useBenchmarkHome(home.path());
    const QApplication app(argc, argv);
    registerAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

#include "tabbar_layout.moc"
