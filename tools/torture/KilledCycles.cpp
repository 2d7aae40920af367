// A program that edits, autosaves and saves is killed at any moment, again and again; nothing that it said
// was kept may be lost.
#include "tools/torture/Torture.h"

#include "document/VXDocument.h"
#include "platform/documents/Autosaver.h"
#include "platform/documents/DocumentController.h"
#include "platform/documents/Recovery.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace torture {

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

DocumentController &readyController()
{
    DocumentController &controller = DocumentController::shared();
    controller.setDocumentFactory([] { return new VXDocument; });
    controller.addType({u"public.xml"_s, {u"xml"_s}, u"Glyph data"_s});
    return controller;
}

/// The generation that every record of the file tells; -1 when they disagree or the file is cut.
int generationOf(const QString &path)
{
    QByteArray bytes = contentOf(path);
    // Behind an autosaved content a comment tells how much there must be.
    if (const qsizetype comment = bytes.lastIndexOf("<!-- runebook autosave");
        comment > 0 && bytes.endsWith("-->\n"))
        bytes.truncate(comment);
    if (!bytes.endsWith("</glyphData>\n"))
        return -1;
    constexpr QByteArrayView kMark = "sortName=\"";
    int generation = -1;
    qsizetype marked = 0;
    for (qsizetype i = bytes.indexOf(kMark); i >= 0; i = bytes.indexOf(kMark, i + 1)) {
        const qsizetype begin = i + kMark.size();
        const int found = bytes.mid(begin, bytes.indexOf('"', begin) - begin).toInt();
        if (marked++ > 0 && found != generation)
            return -1;
        generation = found;
    }
    return marked > 0 && marked == bytes.count("<glyph ") ? generation : -1;
}

/// What the program under torture does until it is killed. After each thing that it says is kept it writes
/// its generation into the file \a promises, beyond the reach of any crash of its own.
int editForEver(const QString &path, const QString &promises, unsigned seed)
{
    int count = 0;
    QCoreApplication app(count, nullptr);
    auto *document = static_cast<VXDocument *>(
        readyController().openDocumentWithContentsOfURLDisplay(path, false, nullptr));
    if (!document || document->infos().empty())
        return 1;
    const int log = ::open(QFile::encodeName(promises).constData(), O_WRONLY | O_APPEND | O_CREAT, 0600);
    std::mt19937 random(seed);
    for (int generation = document->infos().front()->sortName().toInt() + 1;; ++generation) {
        {
            const UndoGroup group(document->undoManager());
            for (const InfoPtr &info : document->infos())
                info->setSortName(QString::number(generation));
        }
        QCoreApplication::processEvents();
        bool isKept = false;
        switch (random() % 3) {
        case 0:
            isKept = document->saveDocument();
            break;
        case 1:
            isKept = document->autosave();
            break;
        default:
            QObject::connect(&document->autosaver(), &Autosaver::finished, document,
                             [&isKept](bool isSaved) { isKept = isSaved; });
            document->autosaver().start();
            for (QElapsedTimer patience =
                     [] {
                         QElapsedTimer t;
                         t.start();
                         return t;
                     }();
                 document->autosaver().isBusy() && patience.elapsed() < 2000;)
                QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
            document->autosaver().disconnect(document);
        }
        const QByteArray promise = QByteArray::number(generation) + '\n';
        if (isKept && ::write(log, promise.constData(), std::size_t(promise.size())) < 0)
            return 2;
    }
}

/// The next start: finds, restores the newest, saves it. The answer is the newest generation, -1 when
/// something is wrong, which \a problem tells.
int recoverNewest(const QString &path, QString *problem)
{
    int count = 0;
    QCoreApplication app(count, nullptr);
    readyController();
    Recovery recovery;
    const int inFile = generationOf(path);
    int newest = inFile;
    std::optional<RecoverableContent> best;
    recovery.find();
    for (const RecoverableContent &content : recovery.findFor(path)) {
        const int generation = generationOf(content.contentPath);
        if (content.originalPath != path || generation < 0)
            *problem = u"a leftover is not whole or of unknown origin: "_s + content.contentPath;
        if (generation > newest) {
            newest = generation;
            best = content;
        }
    }
    if (best) {
        const QByteArray before = contentOf(path);
        Error error;
        Document *document = recovery.restore(*best, &error);
        if (!document || !document->isDocumentEdited() || document->fileURL() != path)
            *problem = u"not restored: "_s + error.text();
        else if (contentOf(path) != before)
            *problem = u"restoring touched the file"_s;
        else if (!document->saveDocument(&error)) {
            document->keepMine(); // the killed save had begun to write
            if (error.domain != "ChangedOnDiskError"_L1 || !document->saveDocument(&error))
                *problem = u"not saved after restoring: "_s + error.text();
        }
    }
    while (!recovery.contents().isEmpty() && recovery.discard(recovery.contents().front())) { }
    if (generationOf(path) != newest)
        *problem = u"the restored document did not get into the file"_s;
    DocumentController::shared().releaseAll();
    return problem->isEmpty() ? newest : -1;
}

QByteArray glyphData(int records)
{
    QByteArray lines = "<glyphData format=\"2\">\n";
    for (int i = 0; i < records; ++i)
        lines += "\t<glyph name=\"g" + QByteArray::number(i) + "\" sortName=\"1\" category=\"Letter\" />\n";
    return lines + "</glyphData>\n";
}

} // namespace

Figures killCycles(Bench &bench, double seconds)
{
    Figures figures {u"killed at any moment while editing"_s};
    constexpr int kCyclesInOneFolder = 20;
    QElapsedTimer clock;
    clock.start();
    QString path;
    for (int cycle = 0; clock.elapsed() < seconds * 1000; ++cycle) {
        if (cycle % kCyclesInOneFolder == 0) {
            path = bench.freshFolder() + "/data.xml"_L1;
            write(path, glyphData(20 + bench.below(3000)));
        }
        const QString promises = QFileInfo(path).path() + "/promises.txt"_L1;
        const QString answer = QFileInfo(path).path() + "/answer.txt"_L1;
        QFile::remove(promises);
        const int started = generationOf(path);
        const unsigned seed = bench.random();
        const int status =
            inChildFor(3000 + bench.below(70'000), [&] { return editForEver(path, promises, seed); });
        const QString what = u"cycle %1"_s.arg(cycle);
        if (!WIFSIGNALED(status))
            figures.violations << what + ": ended by itself"_L1;
        const int promised = qMax(started, contentOf(promises).trimmed().split('\n').last().toInt());
        const int inFile = generationOf(path);
        ++figures.runs;
        ++(inFile < 0 ? figures.rescued : inFile == started ? figures.kept : figures.renewed);
        inChild([&] {
            QString problem;
            const int newest = recoverNewest(path, &problem);
            write(answer, QByteArray::number(newest) + ' ' + problem.toUtf8());
            return 0;
        });
        const QByteArray said = contentOf(answer);
        QFile::remove(answer);
        const int newest = said.split(' ').first().toInt();
        if (newest < promised)
            figures.violations << what
                    + u": %1 was promised, but: %2"_s.arg(promised).arg(QString::fromUtf8(said));
    }
    return figures;
}

} // namespace torture
