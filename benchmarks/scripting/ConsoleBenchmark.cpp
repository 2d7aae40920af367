#include "benchmarks/BenchmarkSupport.h"
#include "document/VXDocument.h"
#include "platform/StandardFolders.h"
#include "platform/documents/DocumentController.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/panel/ConsoleView.h"
#include "scripting/panel/LiveCompletion.h"
#include "scripting/python/RunPump.h"
#include "scripting/python/ScriptConsole.h"
#include "scripting/python/ScriptRun.h"
#include "scripting/python/ScriptRunEntries.h"

#include <QApplication>
#include <QFile>
#include <QProcess>
#include <cstdio>
#include <optional>
#include <unistd.h>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

using Clock = std::chrono::steady_clock;

/// The panel's console in a window, and when it last had the thread.
class Window final : public ScriptConsole
{
public:
    Window()
    {
        m_view.resize(800, 500);
        m_view.show();
        QCoreApplication::processEvents();
        setScriptConsole(this);
        RunPump &pump = RunPump::shared();
        pump.start();
        QObject::connect(&pump, &RunPump::pumped, &m_view, [this] {
            m_view.showPending();
            turn();
        });
    }
    ~Window() override { setScriptConsole(nullptr); }

    void setWrite(const QString &text) override { m_view.append(text, ConsoleView::Kind::Output); }
    void setWriteError(const QString &text) override { m_view.append(text, ConsoleView::Kind::Error); }

    /// Runs \a code and lets the event loop turn until all of its output is shown.
    void run(const char *code)
    {
        m_last = Clock::now();
        m_longest = {};
        runPanelCode(QString::fromLatin1(code));
        turn();
        while (m_view.hasPending()) {
            QCoreApplication::processEvents();
            turn();
        }
    }
    /// The longest time in which the window stood still, in seconds.
    double longestGap() const { return m_longest.count(); }
    ConsoleView &view() { return m_view; }

private:
    void turn()
    {
        const Clock::time_point now = Clock::now();
        m_longest = std::max<std::chrono::duration<double>>(m_longest, now - m_last);
        m_last = now;
    }

    ConsoleView m_view;
    Clock::time_point m_last;
    std::chrono::duration<double> m_longest {};
};

constexpr char kLines[] =
    "for i in range(1000000): print('%07d a line of output such as scripts write' % i)\n";
constexpr char kOneWrite[] = "print('a line of output such as scripts write, fifty\\n' * 1000000)\n";
constexpr char kOneLine[] = "print('a line without an end ' * 2000000)\n";

bool hasPython()
{
    VXScriptingHandler::sharedHandler();
    return VXScriptingHandler::isPythonRunning();
}

/// 50 MB of output in one run: how long the window stands still at most.
void gap(benchmark::State &state, const char *code)
{
    if (!hasPython()) {
        state.SkipWithError("no Python");
        return;
    }
    Window window;
    window.run("pass");
    for (auto _ : state) {
        window.run(code);
        state.SetIterationTime(window.longestGap());
    }
}

qint64 resident()
{
    QFile file(u"/proc/self/statm"_s);
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLongLong() * ::getpagesize()
                                          : 0;
}

constexpr char kKeptLines[] =
    "for i in range(100000): print('%07d a line of output such as scripts write' % i)\n";

/// Prints how much memory the output of \a code has left.
int measureMemory(const char *code)
{
    if (!hasPython())
        return 1;
    Window window;
    window.run("pass");
    const qint64 before = resident();
    window.run(code);
    return std::printf("%lld\n", static_cast<long long>(resident() - before)) > 0 ? 0 : 1;
}

/// What 50 MB of output leave in memory, against a console that was given the kept lines and nothing else.
/// Each in a process of its own: one would use again what the other gave back.
void memory(benchmark::State &state, bool keptOnly)
{
    for ([[maybe_unused]] auto _ : state) {
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(),
                    {u"--measure"_s, keptOnly ? u"kept"_s : u"all"_s});
        state.SetIterationTime(secondsFor([&] { child.waitForFinished(-1); }));
        const qint64 bytes = child.readAllStandardOutput().trimmed().toLongLong();
        if (bytes <= 0)
            state.SkipWithError("nothing was measured");
        state.counters["bytes"] = static_cast<double>(bytes);
    }
}

/// From Stop to the end of the run, half a second after its start.
void stopping(benchmark::State &state, const char *code)
{
    if (!hasPython()) {
        state.SkipWithError("no Python");
        return;
    }
    Window window;
    for (auto _ : state) {
        std::optional<Clock::time_point> stoppedAt;
        const Clock::time_point start = Clock::now();
        QObject::connect(&RunPump::shared(), &RunPump::pumped, &window.view(), [&] {
            if (stoppedAt || Clock::now() - start < std::chrono::milliseconds(500))
                return;
            stoppedAt = Clock::now();
            RunPump::shared().stop();
        });
        runPanelCode(QString::fromLatin1(code));
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - *stoppedAt).count());
    }
}

/// Names after "Doc." with a large document open.
void completion(benchmark::State &state)
{
    constexpr int kRecords = 1'000'000;
    auto *document = new VXDocument;
    if (!hasPython() || !document->readFromURLOfType(corpusFile(kRecords, u"xml"_s), u"public.xml"_s)) {
        state.SkipWithError("no Python or no corpus");
        return;
    }
    DocumentController::shared().addDocument(document);
    runPanelCode(u"pass"_s);
    for (auto _ : state) {
        state.SetIterationTime(secondsFor([&state] {
            if (!liveCompletions(u"Doc.inf"_s).contains(u"Doc.infos"_s))
                state.SkipWithError("no answer");
        }));
    }
    DocumentController::shared().releaseAll();
}

void registerAll()
{
    StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
    addTimed(u"console-lines/50"_s, gap, kLines);
    addTimed(u"console-write/50"_s, gap, kOneWrite);
    addTimed(u"console-line/50"_s, gap, kOneLine);
    addTimed(u"console-memory/50"_s, memory, false);
    addTimed(u"console-memory/50:peer"_s, memory, true);
    addTimed(u"stop-loop/1"_s, stopping, "while True: pass\n");
    addTimed(u"stop-sleep/1"_s, stopping, "import time\ntime.sleep(60)\n");
    addTimed(u"stop-regex/1"_s, stopping, "import re\nre.match('(a+)+$', 'a' * 60 + 'b')\n");
    addTimed(u"stop-printing/1"_s, stopping, "while True: print('x' * 50)\n");
    addTimed(u"complete-live/1000000"_s, completion);
}

} // namespace

int main(int argc, char *argv[])
{
    const QTemporaryDir home;
    useBenchmarkHome(home.path());
    const QApplication app(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], "--measure") == 0)
        return measureMemory(qstrcmp(argv[2], "kept") == 0 ? kKeptLines : kLines);
    registerAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
