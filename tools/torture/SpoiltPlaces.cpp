// Disks that are full, folders that may not be written, files that are none any more, and other programs.
#include "tools/torture/Torture.h"

#include "document/VXDocument.h"
#include "platform/documents/DocumentController.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstring>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace torture {

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

const QByteArray kOld = textOf(1, 100'000);
const QByteArray kFresh = textOf(2, 160'000);
const QByteArray kTheirs = textOf(9, 120'000);

/// What another program does to the file.
struct Outsider {
    const char *name;
    void (*act)();
    QByteArray leaves; ///< the content after that
    bool asks; ///< whether saving over the result must be asked about
};

QString outsidersTarget;

const Outsider kOutsiders[] = {
    {"written in place", [] { write(outsidersTarget, kTheirs); }, kTheirs, true},
    {"replaced by rename",
     [] {
         write(outsidersTarget + ".theirs"_L1, kTheirs);
         std::rename(QFile::encodeName(outsidersTarget + ".theirs"_L1).constData(),
                     QFile::encodeName(outsidersTarget).constData());
     },
     kTheirs, true},
    {"emptied", [] { QFile::resize(outsidersTarget, 0); }, {}, true},
    {"removed", [] { QFile::remove(outsidersTarget); }, {}, false},
};

/// Runs a child that leaves the figures of its own in a file, and adds them.
void addFromChild(Figures &figures, const QString &reportPath, const std::function<void(Figures &)> &work)
{
    const int status = inChild([&] {
        Figures own;
        work(own);
        QByteArray report = QByteArray::number(own.runs) + ' ' + QByteArray::number(own.kept) + ' '
            + QByteArray::number(own.renewed) + ' ' + QByteArray::number(own.rescued) + ' '
            + QByteArray::number(own.told);
        for (const QString &line : {own.skipped, own.violations.join(u'\n')})
            report += '\n' + line.toUtf8();
        write(reportPath, report);
        return 0;
    });
    const QList<QByteArray> lines = contentOf(reportPath).split('\n');
    const QList<QByteArray> numbers = lines.value(0).split(' ');
    if (status != 0 || numbers.size() != 5) {
        figures.violations << u"a child ended with status %1"_s.arg(status);
        return;
    }
    int *counts[] = {&figures.runs, &figures.kept, &figures.renewed, &figures.rescued, &figures.told};
    for (int i = 0; i < 5; ++i)
        *counts[i] += numbers.at(i).toInt();
    if (!lines.value(1).isEmpty())
        figures.skipped = QString::fromUtf8(lines.value(1));
    for (const QByteArray &violation : lines.mid(2)) {
        if (!violation.isEmpty())
            figures.violations << QString::fromUtf8(violation);
    }
}

/// Saves where saving cannot go well and looks at what is left.
void saveInVain(Figures &figures, const QString &what, const QString &path)
{
    const bool isFile = QFileInfo(path).isFile();
    QString error;
    if (save(path, kFresh, &error) || QFileInfo(path).isFile() != isFile
        || (isFile && contentOf(path) != kOld))
        figures.violations << what + ": saved, or left something else: "_L1 + error;
    else
        ++figures.kept;
    figures.told += error.contains(path);
    ++figures.runs;
}

void changeWhileSaving(Bench &bench, Figures &figures, const Outsider &outsider)
{
    QByteArray calls = "x";
    qsizetype lastChecked = 0; // beyond it the save is over but for tidying up
    for (int place = 0; place <= calls.size(); ++place) {
        const QString folder = bench.freshFolder();
        const QString path = folder + "/data.xml"_L1;
        outsidersTarget = path;
        write(path, kOld);
        QString error;
        arm(QFileInfo(folder).path() + u'/', {place ? Action::Run : Action::Count, place, 0, outsider.act});
        const bool isSaved = save(path, kFresh, &error);
        const QByteArray counted = disarm();
        if (place == 0) {
            calls = counted;
            lastChecked = calls.lastIndexOf(char(Call::Sync)) + 2; // the file is synced, asked, compared
        }
        judgeSave(figures, u"%1 at call %2 of a save"_s.arg(QString::fromLatin1(outsider.name)).arg(place),
                  path, place ? outsider.leaves : kOld, kFresh, isSaved && place <= lastChecked);
    }
}

/// A document whose file another program changes after one of its steps must not write over it unasked.
void changeBetweenSteps(Figures &figures, const QString &folder, const Outsider &outsider, int step)
{
    int count = 0;
    QCoreApplication app(count, nullptr);
    DocumentController &controller = DocumentController::shared();
    controller.setDocumentFactory([] { return new VXDocument; });
    controller.addType({u"public.xml"_s, {u"xml"_s}, u"Glyph data"_s});
    const QString path = folder + "/data.xml"_L1;
    outsidersTarget = path;
    VXDocument made;
    made.addInfo(VXGlyphInfo::init());
    Error error;
    bool isReady = made.saveToURLOfType(path, u"public.xml"_s, &error);
    Document *document = controller.openDocumentWithContentsOfURLDisplay(path, false, &error);
    const std::function<void()> steps[] = {
        [] {}, [document] { static_cast<VXDocument *>(document)->addInfo(VXGlyphInfo::init()); },
        [document, &isReady] { isReady &= document->autosave(); }};
    for (int i = 0; i < 3 && document; ++i) {
        steps[i]();
        if (i == step)
            outsider.act();
    }
    const QByteArray theirs = QFileInfo::exists(path) ? contentOf(path) : QByteArray();
    const bool isSaved = document && document->saveDocument(&error);
    const bool isUntouched = (QFileInfo::exists(path) ? contentOf(path) : QByteArray()) == theirs;
    const QString what = u"%1 after step %2"_s.arg(QString::fromLatin1(outsider.name)).arg(step);
    ++figures.runs;
    if (!isReady || !document || isSaved == outsider.asks || (outsider.asks && !isUntouched))
        figures.violations << what + ": was written over unasked, or not saved: "_L1 + error.text();
    figures.kept += outsider.asks && isUntouched;
    figures.told += outsider.asks && error.domain == "ChangedOnDiskError"_L1;
    if (!outsider.asks)
        ++figures.renewed;
    if (outsider.asks && document) {
        document->keepMine();
        if (!document->saveDocument(&error) || contentOf(path) == theirs)
            figures.violations << what + ": could not be saved when the user wanted it"_L1;
    }
    controller.releaseAll();
}

} // namespace

Figures fillDisk(Bench &bench)
{
    Figures figures {u"a disk of its own runs full"_s};
    const QString folder = bench.freshFolder();
    addFromChild(figures, folder + "/report"_L1, [&](Figures &own) {
        if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
            own.skipped = u"may not mount: %1"_s.arg(QString::fromLocal8Bit(std::strerror(errno)));
            return;
        }
        const QString disk = folder + "/disk"_L1;
        QDir().mkpath(disk);
        const QString path = disk + "/data.xml"_L1;
        // From no room beyond the old file to room for everything.
        for (int size = 112; size <= 480 && own.skipped.isEmpty(); size += 6) {
            const QByteArray options = "size=" + QByteArray::number(size) + 'k';
            if (::mount("tmpfs", QFile::encodeName(disk).constData(), "tmpfs", 0, options.constData()) != 0) {
                own.skipped = u"no tmpfs: %1"_s.arg(QString::fromLocal8Bit(std::strerror(errno)));
                return;
            }
            write(path, kOld);
            QString error;
            const bool isSaved = save(path, kFresh, &error);
            judgeSave(own, u"tmpfs of %1 kB"_s.arg(size), path, kOld, kFresh, isSaved);
            own.told += !isSaved && error.contains(path);
            ::umount2(QFile::encodeName(disk).constData(), MNT_DETACH);
        }
    });
    return figures;
}

Figures spoilPlace(Bench &bench)
{
    Figures figures {u"folder read-only; file turned into something else"_s};
    const QString folder = bench.freshFolder();
    const QString path = folder + "/data.xml"_L1;
    write(path, kOld);
    addFromChild(figures, folder + "/report"_L1, [&](Figures &own) {
        ::chmod(QFile::encodeName(path).constData(), 0444);
        ::chmod(QFile::encodeName(folder).constData(), 0555);
        qputenv("XDG_DATA_HOME", "/dev/null/none"); // no other place for a rescue file
        if (::geteuid() == 0 && ::seteuid(65534) != 0) {
            own.skipped = u"cannot become a plain user"_s;
            return;
        }
        saveInVain(own, u"read-only"_s, path);
        if (::geteuid() != ::getuid() && ::seteuid(::getuid()) != 0)
            own.violations << u"cannot become root again"_s;
        ::chmod(QFile::encodeName(folder).constData(), 0755);
    });
    QFile::remove(path);
    QDir().mkpath(path);
    saveInVain(figures, u"turned into a folder"_s, path);
    QDir().rmdir(path);
    ::mkfifo(QFile::encodeName(path).constData(), 0600);
    saveInVain(figures, u"turned into a pipe"_s, path);
    QFile::remove(path);
    QFile::link(u"/dev/full"_s, path);
    saveInVain(figures, u"turned into a device"_s, path);
    return figures;
}

Figures changeFromOutside(Bench &bench)
{
    Figures figures {u"changed from outside at every step"_s};
    for (const Outsider &outsider : kOutsiders) {
        changeWhileSaving(bench, figures, outsider);
        for (int step = 0; step < 3; ++step) {
            const QString folder = bench.freshFolder();
            addFromChild(figures, folder + "/report"_L1,
                         [&](Figures &own) { changeBetweenSteps(own, folder, outsider, step); });
        }
    }
    return figures;
}

} // namespace torture
