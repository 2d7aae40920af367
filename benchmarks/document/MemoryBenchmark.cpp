// The memory that opening, editing and saving a large file take, each measured in a process of its own.
#include "benchmarks/BenchmarkSupport.h"
#include "document/VXDocument.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <cstdio>
#include <pugixml.hpp>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr int kRecords = 1'000'000;

QString corpusPath()
{
    return corpusFile(kRecords, u"xml"_s);
}

/// A value of /proc/self/status, in bytes: VmHWM is the most memory held so far, VmRSS what is held now.
qint64 statusValue(const QByteArray &key)
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(key + ':'))
            return line.mid(key.size() + 1).simplified().split(' ').first().toLongLong() * 1024;
    }
    return -1;
}

qint64 openDocument()
{
    VXDocument document;
    if (!document.readFromURLOfType(corpusPath(), u"public.xml"_s) || document.countOfInfos() != kRecords)
        return -1;
    return statusValue("VmHWM");
}

qint64 openWithPugixml()
{
    pugi::xml_document document;
    return document.load_file(corpusPath().toLocal8Bit().constData()) ? statusValue("VmHWM") : -1;
}

/// What \a work takes at its peak beyond what is held before.
template <typename Work> qint64 peakOf(const Work &work)
{
    const qint64 before = statusValue("VmRSS");
    QFile marks(u"/proc/self/clear_refs"_s);
    if (!marks.open(QIODevice::WriteOnly) || marks.write("5") != 1) // forgets the peak so far
        return -1;
    marks.close();
    work();
    return statusValue("VmHWM") - before;
}

/// One field of all records, as one step.
void editAll(VXDocument &document)
{
    const UndoGroup group(document.undoManager());
    int number = 0;
    for (const InfoPtr &info : document.infos())
        info->setSortName(u"glyph%1.changed"_s.arg(number++));
    document.flushChanges();
}

qint64 editDocument()
{
    VXDocument document;
    document.readFromURLOfType(corpusPath(), u"public.xml"_s);
    return peakOf([&document] {
        editAll(document);
        document.undoManager()->undo();
        document.flushChanges();
    });
}

qint64 saveDocument()
{
    VXDocument document;
    document.readFromURLOfType(corpusPath(), u"public.xml"_s);
    editAll(document);
    const QString path = scratchFile(u"saved.xml"_s);
    bool isSaved = false;
    const qint64 bytes = peakOf([&] { isSaved = document.writeToURLOfType(path, u"public.xml"_s); });
    return isSaved ? std::max<qint64>(bytes, 1) : -1;
}

qint64 fileSize()
{
    return QFileInfo(corpusPath()).size();
}

struct Measurement {
    QString name;
    qint64 (*bytes)();
};

const Measurement kMeasurements[] {
    {u"open-memory/%1"_s.arg(kRecords), openDocument},
    {u"open-memory/%1:peer"_s.arg(kRecords), fileSize},
    {u"open-memory-tree/%1"_s.arg(kRecords), openDocument},
    {u"open-memory-tree/%1:peer"_s.arg(kRecords), openWithPugixml},
    {u"edit-memory/%1"_s.arg(kRecords), editDocument},
    {u"edit-memory/%1:peer"_s.arg(kRecords), fileSize},
    {u"save-memory/%1"_s.arg(kRecords), saveDocument},
    {u"save-memory/%1:peer"_s.arg(kRecords), fileSize},
};

/// Takes the measurement of that name in this process and prints it.
int measureHere(const QString &name)
{
    for (const Measurement &measurement : kMeasurements) {
        if (measurement.name == name)
            return std::printf("%lld\n", measurement.bytes()) > 0 ? 0 : 1;
    }
    return 2;
}

void measureInChild(benchmark::State &state, const QString &name)
{
    for ([[maybe_unused]] auto _ : state) {
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(), {u"--measure"_s, name});
        state.SetIterationTime(secondsFor([&] { child.waitForFinished(-1); }));
        const qint64 bytes = child.readAllStandardOutput().trimmed().toLongLong();
        if (bytes <= 0)
            state.SkipWithError("nothing was measured");
        state.counters["bytes"] = static_cast<double>(bytes);
    }
}

void registerAll()
{
    for (const Measurement &measurement : kMeasurements)
        addTimed(measurement.name, measureInChild, measurement.name);
}

} // namespace

} // namespace runebook

int main(int argc, char *argv[])
{
    const QTemporaryDir home;
    runebook::useBenchmarkHome(home.path());
    const QCoreApplication app(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], "--measure") == 0)
        return runebook::measureHere(QString::fromLocal8Bit(argv[2]));
    runebook::registerAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
