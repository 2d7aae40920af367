#include "benchmarks/BenchmarkSupport.h"
#include "document/VXDocument.h"
#include "platform/StandardFolders.h"
#include "platform/documents/DocumentController.h"
#include "scripting/menu/HeadlessConsole.h"
#include "scripting/menu/VXScriptingHandler.h"
#include "scripting/python/PythonFunctions.h"
#include "scripting/python/PythonPlaces.h"
#include "scripting/python/ScriptConsole.h"
#include "scripting/python/ScriptRun.h"

#include <QCoreApplication>
#include <QFile>
#include <fcntl.h>
#include <unistd.h>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

constexpr int kRecords = 35'000;
constexpr int kLines = 1'000'000;

/// The document of the corpus, opened once and frontmost.
VXDocument &corpus()
{
    static VXDocument *const document = [] {
        auto *opened = new VXDocument;
        opened->readFromURLOfType(corpusFile(kRecords, u"xml"_s), u"public.xml"_s);
        DocumentController::shared().addDocument(opened);
        return opened;
    }();
    return *document;
}

/// Runs \a code with the interpreter warm, and takes the time of the part that measures itself into "took".
double timed(const char *code)
{
    VXScriptingHandler::sharedHandler();
    const PythonLock lock;
    const ScriptRun run(u"Benchmark"_s);
    if (!vxRun_SimpleString(code, "benchmark"))
        return -1;
    PyObject *globals = vxPyModule_GetDict(vxPyImport_AddModule("__main__"));
    return py.PyFloat_AsDouble(py.PyDict_GetItemString(globals, "took"));
}

void report(benchmark::State &state, double seconds)
{
    if (seconds < 0)
        state.SkipWithError("the script failed");
    state.SetIterationTime(std::max(seconds, 1e-9));
}

/// Sets a field of every record of the corpus from another field; \a step is what a script writes for one.
/// Plain: the same of objects of Python's own.
void records(benchmark::State &state, const char *step, bool plain)
{
    if (corpus().countOfInfos() != kRecords) {
        state.SkipWithError("no corpus");
        return;
    }
    constexpr char kBridge[] = "from MainApp import currentDocument\n"
                               "glyphs = lambda: currentDocument().infos\n";
    constexpr char kPlain[] = "class Glyph:\n"
                              "    def __init__(self, name): self._name, self._sortName = name, None\n"
                              "    def get(self): return self._name\n"
                              "    def setSortName_(self, value): self._sortName = value\n"
                              "    name = property(get)\n"
                              "    sortName = property(None, setSortName_)\n"
                              "made = [Glyph('glyph%d' % i) for i in range(35000)]\n"
                              "glyphs = lambda: made\n";
    const QByteArray code = QByteArray(plain ? kPlain : kBridge)
        + "import time\nstart = time.perf_counter()\nfor info in glyphs():\n    " + step
        + "\ntook = time.perf_counter() - start\n";
    for (auto _ : state)
        report(state, timed(code.constData()));
    corpus().undoManager()->removeAllActions();
}

/// The standard output leads to a file while the object lives.
class OutputToFile
{
public:
    OutputToFile()
    {
        const QByteArray path = QFile::encodeName(scratchFile(u"printed.txt"_s));
        const int file = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        m_saved = ::dup(STDOUT_FILENO);
        ::dup2(file, STDOUT_FILENO);
        ::close(file);
    }
    ~OutputToFile()
    {
        ::dup2(m_saved, STDOUT_FILENO);
        ::close(m_saved);
    }

private:
    int m_saved;
};

void printing(benchmark::State &state, bool plain)
{
    const QByteArray path = scratchFile(u"peer.txt"_s).toUtf8();
    const QByteArray target = plain ? "open('" + path + "', 'w')" : QByteArray("sys.stdout");
    const QByteArray code = "import sys, time\n"
                            "target = "
        + target
        + "\n"
          "start = time.perf_counter()\n"
          "for i in range("
        + QByteArray::number(kLines)
        + "):\n"
          "    print('a line of a script', file=target)\n"
          "target.flush()\n"
          "took = time.perf_counter() - start\n";
    for (auto _ : state) {
        const OutputToFile file;
        HeadlessConsole console;
        setScriptConsole(&console);
        double seconds = timed(code.constData());
        // What is held back belongs to the printing.
        seconds += secondsFor([&console] { console.flush(); });
        setScriptConsole(nullptr);
        report(state, seconds);
    }
}

/// What a million operations leave behind, in bytes.
void callMemory(benchmark::State &state)
{
    const auto resident = [] {
        QFile file(u"/proc/self/statm"_s);
        return file.open(QIODevice::ReadOnly)
            ? file.readAll().split(' ').value(1).toLongLong() * ::getpagesize()
            : 0;
    };
    constexpr char kCalls[] = "from MainApp import newInfo, currentDocument\n"
                              "free, doc = newInfo('x'), currentDocument()\n"
                              "for i in range(500000):\n"
                              "    free.setDesc_(free.name)\n"
                              "    doc.infoForName_('A')\n"
                              "took = 0.0\n";
    corpus();
    timed(kCalls);
    for (auto _ : state) {
        const qint64 before = resident();
        report(state, timed(kCalls));
        state.counters["bytes"] = static_cast<double>(std::max<qint64>(1, resident() - before));
    }
}

/// What bringing the interpreter up adds to a program, in a process of its own; against the interpreter's own
/// program doing nothing.
void starting(benchmark::State &state, bool plain)
{
    const QString python =
        pythonPrefix(VXScriptingHandler::sharedHandler()->currentPythonPath()) + "/bin/python3"_L1;
    const QString own = QCoreApplication::applicationFilePath();
    bool hasRun = true;
    const auto run = [&hasRun](const QString &program, const QStringList &arguments) {
        return secondsFor([&] { hasRun = runProgram(program, arguments) && hasRun; });
    };
    for (auto _ : state) {
        const double seconds = plain ? run(python, {u"-c"_s, u"pass"_s})
                                     : run(own, {u"--start"_s}) - run(own, {u"--start-nothing"_s});
        report(state, hasRun ? std::max(seconds, 1e-6) : -1);
    }
}

void registerAll()
{
    StandardFolders::setProgramData(QStringLiteral(RUNEBOOK_BUILD_DIR "/share/runebook"));
    constexpr const char *kProperties = "info.sortName = info.name";
    constexpr const char *kOperations = "info.setSortName_(info.name)";
    for (const bool plain : {false, true}) {
        const QString suffix = plain ? u":peer"_s : QString();
        addTimed(u"script-records/35000"_s + suffix, records, kProperties, plain);
        addTimed(u"script-operations/35000"_s + suffix, records, kOperations, plain);
    }
    addTimed(u"script-print/1000000"_s, printing, false);
    addTimed(u"script-print/1000000:peer"_s, printing, true);
    addTimed(u"script-memory/1000000"_s, callMemory);
    addTimed(u"script-start/1"_s, starting, false);
    addTimed(u"script-start/1:peer"_s, starting, true);
}

} // namespace

int main(int argc, char *argv[])
{
    const QTemporaryDir home;
    const QByteArray argument(argc > 1 ? argv[1] : "");
    // The programs whose starts are compared keep the folders that the benchmark gave them.
    const bool isStart = argument.startsWith("--start");
    if (!isStart)
        useBenchmarkHome(home.path());
    const QGuiApplication app(argc, argv);
    registerAll();
    if (isStart) {
        if (argument == "--start")
            VXScriptingHandler::sharedHandler();
        return argument == "--start" && !VXScriptingHandler::isPythonRunning() ? 1 : 0;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
