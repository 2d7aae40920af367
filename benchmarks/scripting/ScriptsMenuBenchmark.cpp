#include "benchmarks/BenchmarkSupport.h"
#include "platform/StandardFolders.h"
#include "scripting/menu/ScriptFile.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/python/ScriptConsole.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QRandomGenerator>
#include <fcntl.h>
#include <unistd.h>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr int kFolders = 50;
constexpr int kScriptsInFolder = 100;

class Panel final : public QObject, public ScriptConsole
{
public:
    void setWrite(const QString &) override { }
    void setWriteError(const QString &) override { }
};

QString scriptFolder()
{
    return VXScriptingHandler::applicationSupportFolder() + "/Scripts"_L1;
}

/// Scripts of 500 to 8,000 bytes, most with a title, every second of these with a docstring.
QStringList makeScripts()
{
    QRandomGenerator random(1);
    QStringList paths;
    for (int folder = 0; folder < kFolders; ++folder) {
        const QString path = scriptFolder() + u"/Folder %1"_s.arg(folder);
        QDir().mkpath(path);
        for (int number = 0; number < kScriptsInFolder; ++number) {
            QByteArray text = "#!/usr/bin/env python3\n";
            if (number % 10 != 0)
                text += "# MenuTitle: Script " + QByteArray::number(number) + '\n';
            if (number % 2 == 0)
                text += "__doc__ = \"\"\"\nWhat this script does — in a line.\n\"\"\"\n";
            text += QByteArray("for info in Doc:\n    info.sortName = info.name\n")
                        .repeated(random.bounded(8, 140));
            paths << path + u"/script %1.py"_s.arg(number);
            QFile file(paths.last());
            if (file.open(QIODevice::WriteOnly))
                file.write(text);
        }
    }
    return paths;
}

const QStringList &scripts()
{
    static const QStringList paths = makeScripts();
    return paths;
}

/// The first 4 kB of each, with nothing done to them.
void readBeginnings(benchmark::State &state)
{
    std::vector<QByteArray> names;
    for (const QString &path : scripts())
        names.push_back(QFile::encodeName(path));
    for (auto _ : state) {
        state.SetIterationTime(secondsFor([&names] {
            char buffer[4096];
            for (const QByteArray &name : names) {
                const int file = ::open(name.constData(), O_RDONLY | O_CLOEXEC);
                benchmark::DoNotOptimize(::read(file, buffer, sizeof buffer));
                ::close(file);
            }
        }));
    }
}

void readScripts(benchmark::State &state)
{
    for (auto _ : state) {
        state.SetIterationTime(secondsFor([] {
            for (const QString &path : scripts())
                benchmark::DoNotOptimize(ScriptFile::read(path));
        }));
    }
}

void fillMenu(benchmark::State &state)
{
    VXScriptingHandler *handler = VXScriptingHandler::sharedHandler();
    handler->reloadScriptMenu();
    for (auto _ : state) {
        state.SetIterationTime(secondsFor([handler] { handler->reloadScriptMenu(); }));
        // The old items go when the event loop turns, as they do in the program.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    if (VXScriptingHandler::scriptPathDict().size() < kFolders * kScriptsInFolder * 9 / 10)
        state.SkipWithError("scripts are missing in the menu");
}

} // namespace

int main(int argc, char *argv[])
{
    const QTemporaryDir home;
    useBenchmarkHome(home.path());
    const QApplication app(argc, argv);
    StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
    scripts();
    Panel panel;
    VXScriptingHandler::sharedHandler()->setMacroPanelController(&panel);
    addTimed(u"scripts-read/5000"_s, readScripts);
    addTimed(u"scripts-read/5000:peer"_s, readBeginnings);
    addTimed(u"scripts-menu/5000"_s, fillMenu);
    addTimed(u"scripts-menu/5000:peer"_s, readBeginnings);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
