// What a program that ended unexpectedly leaves, what the next one makes of it, and what is kept of files
// before they lose something.
#include "document/AutosaveForm.h"
#include "document/GlyphDataWriter.h"
#include "platform/Background.h"
#include "platform/StandardFolders.h"
#include "platform/documents/AutosaveFolder.h"
#include "platform/documents/Autosaver.h"
#include "platform/documents/Originals.h"
#include "platform/documents/Recovery.h"
#include "platform/documents/RescueFiles.h"
#include "tests/Oddities.h"
#include "tests/OtherProcess.h"
#include "tests/Table.h"
#include "tests/document/DocumentFiles.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSemaphore>
#include <QUuid>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

const QByteArray kFile = GlyphDataWriter::header(2).c_str()
    + QByteArray("\t<glyph name=\"a\" category=\"Letter\" />\n\t<glyph name=\"b\" category=\"Letter\" />\n")
    + "</glyphData>\n";

/// The glyph data file that an autosaved content begins with.
QByteArray autosavedFile(const QString &path)
{
    const QByteArray content = contentOf(path);
    return content.left(content.lastIndexOf("<!-- runebook autosave"));
}

/// Opens the file, or makes a new document without one, renames the first record and autosaves.
void editAndAutosave(const QString &path)
{
    auto *document = path.isEmpty() ? newDocument() : openDocument(path);
    if (path.isEmpty())
        document->addInfo(VXGlyphInfo::init());
    document->objectInInfosAtIndex(0)->setName(u"recovered"_s);
    if (!document->autosave())
        qFatal("not autosaved");
}

constexpr OtherProcess::Work kWorks[] {
    {"edit",
     [](const QString &path) {
         setUpController();
         editAndAutosave(path);
     }},
    {"offer",
     [](const QString &) {
         auto *held = new Recovery;
         if (held->find().size() != 1)
             qFatal("nothing found");
     }},
};

QStringList folders()
{
    return AutosaveFolder::others();
}

QStringList contentsIn(const QString &folder, const QString &pattern)
{
    QStringList paths;
    for (const QString &name : QDir(folder).entryList({pattern}, QDir::Files))
        paths << folder + u'/' + name;
    return paths;
}

} // namespace

class DocumentRecoveryTest : public DocumentFiles
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        DocumentFiles::init();
        qputenv("XDG_DATA_HOME", QFile::encodeName(path(u"data"_s)));
        write(path(u"a.xml"_s), kFile);
        write(path(u"a.txt"_s), "name\tunicode\tnote\nA\t41\tx\n");
    }

    // the first: nothing was freed yet in which a large block would fit
    void survivesLackOfMemory()
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        QSKIP("sanitizer-memory: the sanitizers take more address space than any limit leaves");
#endif
        QByteArray large = kFile;
        const QByteArray line = "\t<glyph name=\"a\" category=\"Letter\" />\n";
        large.insert(large.indexOf(line), line.repeated(400'000));
        write(path(u"large.xml"_s), large);
        const pid_t child = ::fork();
        if (child == 0) {
            VXDocument document;
            bool isGood = document.readFromURLOfType(path(u"a.xml"_s), u"public.xml"_s);
            int failures = 0;
            // More and more room, beginning with less than the file itself.
            for (const rlim_t room : {4, 8, 16, 32, 64, 128}) {
                long pages = 0;
                QFile status(u"/proc/self/statm"_s);
                if (status.open(QIODevice::ReadOnly))
                    pages = status.readAll().split(' ').first().toLong();
                const auto used = static_cast<rlim_t>(pages) * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE));
                const rlimit limit {used + (room << 20), RLIM_INFINITY};
                ::setrlimit(RLIMIT_AS, &limit);
                Error error;
                const bool isRead = document.readFromURLOfType(path(u"large.xml"_s), u"public.xml"_s, &error);
                const rlimit none {RLIM_INFINITY, RLIM_INFINITY};
                ::setrlimit(RLIMIT_AS, &none);
                if (!isRead) {
                    ++failures;
                    isGood &= error.text().contains(u"large.xml"_s) && document.countOfInfos() == 2;
                } else {
                    isGood &= document.readFromURLOfType(path(u"a.xml"_s), u"public.xml"_s);
                }
                isGood &= document.infos().front()->name() == u"a";
            }
            ::_exit(isGood && failures > 0 ? 0 : 1 + failures);
        }
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY2(WIFEXITED(status), "it crashed");
        QCOMPARE(WEXITSTATUS(status), 0);
    }

    // note: what is made of it
    // isFound: the original
    TABLE(recovers, (const QString &file, const QByteArray &note, bool isFound), {
        row("a file", "a.xml", "whole", true);
        row("a table", "a.txt", "whole", true);
        row("a new document", "", "whole", false);
        row("no note", "a.xml", QByteArray(), false);
        row("a note that is none", "a.xml", QByteArray("\xFF\x00{{", 4), false);
        row("a note of other things", "a.xml", QByteArray(R"({"originalPath": 7})"), false);
    })
    {
        const QString original = file.isEmpty() ? QString() : path(file);
        const QByteArray before = original.isEmpty() ? QByteArray() : contentOf(original);
        const OtherProcess crashed(OtherProcess::End::Dies, "edit", original);
        QCOMPARE(folders().size(), 1);
        const QString folder = folders().first();
        if (note.isEmpty())
            QVERIFY(QFile::remove(contentsIn(folder, u"*.json"_s).first()));
        else if (note != "whole")
            write(contentsIn(folder, u"*.json"_s).first(), note);

        Recovery recovery;
        QCOMPARE(recovery.find().size(), 1);
        QCOMPARE(recovery.find().size(), 1);
        const RecoverableContent content = recovery.contents().first();
        QCOMPARE(content.originalPath, isFound ? original : QString());
        QVERIFY(!content.displayName.isEmpty() && content.savedAt.isValid() && content.size > 0);
        QVERIFY(!content.hasOriginalChanged);

        Error error;
        auto *document = qobject_cast<VXDocument *>(recovery.restore(content, &error));
        QVERIFY2(document, qPrintable(error.text()));
        QCOMPARE(document->objectInInfosAtIndex(0)->name(), u"recovered"_s);
        QVERIFY(document->isDocumentEdited());
        QCOMPARE(document->fileURL(), content.originalPath);
        if (!original.isEmpty())
            QCOMPARE(contentOf(original), before);
        // It is autosaved anew, and nothing else is left.
        QVERIFY(QFile::exists(document->autosavedContentsURL()));
        QVERIFY(recovery.contents().isEmpty());
        QVERIFY(folders().isEmpty());
        if (isFound) {
            QVERIFY2(document->saveDocument(&error), qPrintable(error.text()));
            const bool isTable = file == u"a.txt";
            QCOMPARE(
                contentOf(original),
                QByteArray(before).replace(isTable ? "A" : "\"a\"", isTable ? "recovered" : "\"recovered\""));
        }
    }

    void leavesTheLivingAlone()
    {
        OtherProcess running(OtherProcess::End::Stays, "edit", path(u"a.xml"_s));
        QCOMPARE(folders().size(), 1);
        Recovery recovery;
        QVERIFY(recovery.find().isEmpty());
        editAndAutosave(path(u"a.txt"_s)); // this process's own is none either
        QVERIFY(recovery.find().isEmpty());
        running.die();
        QCOMPARE(recovery.find().size(), 1);
        QCOMPARE(recovery.contents().first().originalPath, path(u"a.xml"_s));
    }

    void sharesNothing()
    {
        const OtherProcess crashed(OtherProcess::End::Dies, "edit", path(u"a.xml"_s));
        {
            OtherProcess offering(OtherProcess::End::Stays, "offer");
            Recovery recovery;
            QVERIFY(recovery.find().isEmpty());
            offering.die();
            QCOMPARE(recovery.find().size(), 1);
        }
        Recovery later; // nobody decided, so it is offered again
        QCOMPARE(later.find().size(), 1);
    }

    void restoresBesideAnEditedDocument()
    {
        const OtherProcess crashed(OtherProcess::End::Dies, "edit", path(u"a.xml"_s));
        VXDocument *open = openDocument(path(u"a.xml"_s));
        open->objectInInfosAtIndex(1)->setName(u"edited"_s);
        Recovery recovery;
        Document *document = recovery.restore(recovery.find().first());
        QVERIFY(document && document != open);
        QVERIFY(document->fileURL().isEmpty());
        QCOMPARE(document->displayName(), u"a.xml"_s);
        QCOMPARE(open->objectInInfosAtIndex(1)->name(), u"edited"_s);
    }

    void autosavesWhatIsOnlyHere()
    {
        VXDocument *document = openDocument(path(u"a.xml"_s));
        const double delay = controller().autosavingDelay();
        controller().setAutosavingDelay(0.01);
        QVERIFY(QFile::remove(path(u"a.xml"_s)));
        QCOMPARE(document->fileWatch().check(), FileWatch::Change::Removed);
        QVERIFY(document->isDocumentEdited());
        QTRY_COMPARE(autosavedFile(document->autosavedContentsURL()), kFile);
        QVERIFY(document->saveDocument()); // nothing there to be lost
        controller().setAutosavingDelay(delay);
    }

    void asksWhenTheOriginalHasChanged()
    {
        const OtherProcess crashed(OtherProcess::End::Dies, "edit", path(u"a.xml"_s));
        const QByteArray theirs = QByteArray(kFile).replace("\"b\"", "\"theirs\"");
        write(path(u"a.xml"_s), theirs);
        Recovery recovery;
        QVERIFY(recovery.find().first().hasOriginalChanged);
        Document *document = recovery.restore(recovery.contents().first());
        QVERIFY(document);
        Error error;
        QVERIFY(!document->saveDocument(&error));
        QCOMPARE(error.domain, u"ChangedOnDiskError"_s);
        QCOMPARE(contentOf(path(u"a.xml"_s)), theirs);
        document->keepMine();
        QVERIFY(document->saveDocument(&error));
        QVERIFY(contentOf(path(u"a.xml"_s)).contains("recovered"));
    }

    void discards()
    {
        const OtherProcess crashed(OtherProcess::End::Dies, "edit", path(u"a.xml"_s));
        Recovery recovery;
        QSignalSpy changed(&recovery, &Recovery::contentsChanged);
        QVERIFY(recovery.discard(recovery.find().first()));
        QVERIFY(recovery.contents().isEmpty());
        QCOMPARE(changed.size(), 2);
        QVERIFY(folders().isEmpty());
        QCOMPARE(contentOf(path(u"a.xml"_s)), kFile);
        QVERIFY(controller().documentList().isEmpty());
    }

    TABLE(passesOverForgedThings, (const QString &rescue, const QString &laid), {
        // A note of a save that nobody made: what it names besides a.xml, and what is laid there.
        row("the file itself", "a.xml", "");
        row("the file by another way", "./a.xml", "");
        row("somebody's file of the same content", "b.xml", "");
        row("somebody's file, as if unfinished", "c.xml", "");
        row("second name of the file", ".a.xml.runebook-rescue", "name");
        row("link to the file", ".a.xml.runebook-rescue", "link");
        row("pipe", ".a.xml.runebook-rescue", "pipe");
        row("device", ".a.xml.runebook-rescue", "device");
        row("link to a folder of somebody's among the autosaves", "b.xml", "folder");
        row("pipe as a note", "b.xml", "note");
    })
    {
        const QStringList names {u"a.xml"_s, u"b.xml"_s, u"c.xml.part"_s, u"keep.txt"_s};
        for (const QString &name : names)
            write(path(name), kFile);
        const QString place = path(rescue);
        const QString notes = StandardFolders::userData() + "/Rescue/"_L1;
        const QString autosaves = StandardFolders::userData() + "/Autosave/"_L1;
        QVERIFY(QDir().mkpath(notes) && QDir().mkpath(autosaves));
        bool isLaid = true;
        if (laid == "name"_L1)
            isLaid =
                ::link(QFile::encodeName(path(u"a.xml"_s)).constData(), QFile::encodeName(place).constData())
                == 0;
        else if (laid == "link"_L1)
            isLaid = QFile::link(path(u"a.xml"_s), place);
        else if (laid == "pipe"_L1 || laid == "device"_L1)
            isLaid = makeOddity(laid, place);
        const QString folderLink = autosaves + QUuid::createUuid().toString(QUuid::WithoutBraces);
        if (laid == "folder"_L1)
            QVERIFY(QFile::link(m_folder->path(), folderLink));
        const QString note = notes + "forged.saving"_L1;
        if (laid == "note"_L1)
            QVERIFY(makeOddity(u"pipe"_s, note));
        else
            write(
                note,
                QJsonDocument(QJsonObject {{u"target"_s, path(u"a.xml"_s)}, {u"rescue"_s, place}}).toJson());
        if (!isLaid)
            QSKIP("device-node: only root may make one");
        const auto before = whatIsAt(place);
        Recovery recovery;
        recovery.find();
        QVERIFY(recovery.findFor(path(u"a.xml"_s)).isEmpty());
        for (const QString &name : names)
            QCOMPARE(contentOf(path(name)), kFile);
        QCOMPARE(whatIsAt(place), before);
        QFile::remove(note);
        QFile::remove(folderLink);
    }

    // isLeft: the file itself, before anybody decides
    TABLE(findsRescueFiles,
          (const QString &suffix, const QByteArray &content, bool isInUse, int found, bool isLeft), {
              const QByteArray fresh = QByteArray(kFile).replace("\"a\"", "\"recovered\"");
              row("whole", "", fresh, false, 1, true);
              row("second", "-1", fresh, false, 1, true);
              row("as the file is", "", kFile, false, 0, false);
              row("unfinished", ".part", fresh, false, 0, false);
              row("of a save that goes on", "", fresh, true, 0, true);
              row("unfinished, going on", ".part", fresh, true, 0, true);
          })
    {
        const QString rescue = path(u".a.xml.runebook-rescue"_s) + suffix;
        write(rescue, content);
        QVERIFY(!RescueFiles::note(path(u"a.xml"_s), path(u".a.xml.runebook-rescue"_s)).isEmpty());
        const int lock = ::open(QFile::encodeName(rescue).constData(), O_RDONLY);
        QVERIFY(!isInUse || ::flock(lock, LOCK_EX | LOCK_NB) == 0);
        Recovery recovery;
        if (suffix != u"-1") // that one is found when its file is opened
            recovery.find();
        QCOMPARE(recovery.findFor(path(u"a.xml"_s)).size(), found);
        QCOMPARE(QFile::exists(rescue), isLeft);
        if (found) {
            auto *document = qobject_cast<VXDocument *>(recovery.restore(recovery.contents().first()));
            QVERIFY(document);
            QCOMPARE(document->objectInInfosAtIndex(0)->name(), u"recovered"_s);
            QCOMPARE(document->fileURL(), path(u"a.xml"_s));
            QVERIFY(!QFile::exists(rescue));
        }
        ::close(lock);
    }

    void comparesWithTheOriginal()
    {
        const OtherProcess crashed(OtherProcess::End::Dies, "edit", path(u"a.xml"_s));
        Recovery recovery;
        const auto [original, recovered] = recovery.openToCompare(recovery.find().first());
        QVERIFY(original && recovered);
        QCOMPARE(original->displayName(), u"a.xml (on disk)"_s);
        QCOMPARE(recovered->displayName(), u"a.xml (recovered)"_s);
        QVERIFY(!original->isDocumentEdited() && original->fileURL().isEmpty());
        QCOMPARE(recovery.contents().size(), 1);
        QVERIFY(QFile::remove(path(u"a.xml"_s)));
        Error error;
        QCOMPARE(recovery.openToCompare(recovery.contents().first(), &error).first, nullptr);
        QVERIFY(!error.description.isEmpty());
    }

    void printsInSlices()
    {
        VXDocument document;
        InfoList infos;
        for (int i = 0; i < 3000; ++i) {
            infos.push_back(VXGlyphInfo::init());
            infos.back()->setName(u"glyph%1"_s.arg(i));
        }
        document.setInfos(infos);
        std::string whole;
        GlyphDataWriter(document.infos(), 2)(
            [&whole](std::string_view block) {
                whole += block;
                return true;
            },
            nullptr);
        // Changed in the middle at any moment, the text is given up; unchanged, it is the same.
        for (const int editedAfter : {-1, 0, 1, 20}) {
            const std::unique_ptr<SlicedContent> slices = document.slicedContent();
            std::string printed;
            SlicedContent::Progress progress = SlicedContent::Progress::Unfinished;
            int i = 0;
            for (; progress == SlicedContent::Progress::Unfinished; ++i) {
                if (i == editedAfter)
                    document.objectInInfosAtIndex(2999)->setDesc(u"edited %1"_s.arg(i));
                progress = slices->printMore(printed, std::chrono::microseconds(0));
            }
            QVERIFY(editedAfter < 0 ? i > 20
                                    : i == editedAfter + 1); // there were slices, and no more than that
            QCOMPARE(progress,
                     editedAfter < 0 ? SlicedContent::Progress::Finished : SlicedContent::Progress::Outdated);
            if (editedAfter < 0) {
                const QByteArray bytes = QByteArray::fromStdString(printed);
                QCOMPARE(bytes.first(qsizetype(whole.size())), QByteArray::fromStdString(whole));
                const AutosavedContent read = readAutosavedContent(bytes);
                QVERIFY(read.isWhole);
                QCOMPARE(read.infos.size(), infos.size());
            }
        }
    }

    void autosavesWhileTheDocumentMovesOn()
    {
        // Another thread writes meanwhile: what lies there is always one whole state.
        auto *open = openDocument(path(u"a.xml"_s));
        QSignalSpy finished(&open->autosaver(), &Autosaver::finished);
        for (int i = 0; i < 20; ++i) {
            open->objectInInfosAtIndex(0)->setName(u"n%1"_s.arg(i));
            open->autosaver().start();
            QTRY_COMPARE(finished.size(), i + 1);
            QCOMPARE(autosavedFile(open->autosavedContentsURL()),
                     QByteArray(kFile).replace("\"a\"", "\"n" + QByteArray::number(i) + '"'));
        }
        // One that was given up may still be written while the next one is.
        for (int i = 0; i < 100; ++i) {
            open->objectInInfosAtIndex(0)->setName(u"given.up%1"_s.arg(i));
            open->autosaver().start();
            QCoreApplication::processEvents(); // prints it; another thread goes on
            QVERIFY(open->autosaver().saveNow(nullptr));
            finished.clear();
            open->objectInInfosAtIndex(0)->setName(u"m%1"_s.arg(i));
            open->autosaver().start();
            QTRY_COMPARE(finished.size(), 1);
            QVERIFY(finished.first().first().toBool());
            QCOMPARE(autosavedFile(open->autosavedContentsURL()),
                     QByteArray(kFile).replace("\"a\"", "\"m" + QByteArray::number(i) + '"'));
        }
        // Given up while it is printed, or waits for a thread: what is written then is not left behind.
        const QString folder = QFileInfo(open->autosavedContentsURL()).path();
        for (const int turns : {0, 5}) {
            QSemaphore gate;
            for (int thread = 0; thread < 2; ++thread)
                runInBackground([&gate] { gate.acquire(); });
            const auto pass = [](int count) {
                for (; count > 0; --count)
                    QCoreApplication::processEvents();
            };
            open->objectInInfosAtIndex(0)->setName(u"last%1"_s.arg(turns));
            open->autosaver().start();
            pass(turns);
            open->autosaver().remove();
            pass(5);
            gate.release(2);
            waitForBackground();
            QCOMPARE(contentsIn(folder, u"*.xml*"_s) + contentsIn(folder, u"*.json"_s), QStringList());
        }
    }

    void tellsAFailingAutosaveOnce()
    {
        VXDocument *document = openDocument(path(u"a.xml"_s));
        document->objectInInfosAtIndex(0)->setName(u"x"_s);
        QSignalSpy told(&ErrorPresenter::shared(), &ErrorPresenter::presented);
        QSignalSpy finished(&document->autosaver(), &Autosaver::finished);
        qputenv("XDG_DATA_HOME", "/dev/null/none");
        for (int i = 1; i <= 3; ++i) {
            document->autosaver().start();
            QTRY_COMPARE(finished.size(), i);
            QCOMPARE(finished.last().first().toBool(), false);
        }
        QCOMPARE(told.size(), 1);
        QCOMPARE(told.first().first().value<Error>().domain, u"AutosaveError"_s);
        Error error;
        QVERIFY(!document->autosave(&error) && !error.description.isEmpty()
                && document->autosavedContentsURL().isEmpty());
        qputenv("XDG_DATA_HOME", QFile::encodeName(path(u"data"_s)));
        document->autosaver().start();
        QTRY_COMPARE(finished.size(), 4);
        QCOMPARE(finished.last().first().toBool(), true);
        QVERIFY(contentOf(document->autosavedContentsURL()).contains("\"x\""));
    }

    // told: words of the sentences, in their order
    TABLE(tellsWhatSavingChanges, (const QByteArray &content, const QString &told), {
        const auto with = [](const QByteArray &from, const QByteArray &to) {
            return QByteArray(kFile).replace(from, to);
        };
        row("own form", kFile, "");
        row("comments", with("\t<glyph name=\"b\"", "<!-- x -->\n\t<glyph name=\"b\""), "comment");
        row("CR LF", with("/>\n", "/>\r\n"), "CR LF");
        row("byte order mark", "\xEF\xBB\xBF" + kFile, "byte order mark|header");
        row("unknown attribute", with("category=", "weight="), "2 unknown attributes");
        row("code points", with("name=\"a\"", "name=\"a\" unicodes=\"1,2,3\""), "two code points");
        row("code points, version 1",
            with("name=\"a\"", "name=\"a\" unicodes=\"1,2,3\"")
                .replace(0, qsizetype(GlyphDataWriter::header(2).size()), GlyphDataWriter::header(1).c_str()),
            "two code points");
        row("other lines", with("\t<glyph name=\"b\"", "note\n\t<glyph name=\"b\""), "no glyph");
        row("other header", with("<!ELEMENT glyph EMPTY>\n", ""), "header");
        row("not UTF-8", with("\"a\"", "\"\xFF\""), "could not be read");
    })
    {
        write(path(u"a.xml"_s), content);
        VXDocument *document = openDocument(path(u"a.xml"_s));
        const QStringList sentences = document->savingWillChange();
        const QStringList words = told.split(u'|', Qt::SkipEmptyParts);
        QCOMPARE(sentences.size(), words.size());
        for (qsizetype i = 0; i < words.size(); ++i)
            QVERIFY2(sentences.at(i).contains(words.at(i)), qPrintable(sentences.at(i)));
        QVERIFY(!told.contains(u"header"_s) || !document->readNotes().isEmpty());
        // What is told is true: whenever nothing is, the file comes out as it was.
        QVERIFY(document->saveDocument());
        QCOMPARE(contentOf(path(u"a.xml"_s)) == content, told.isEmpty());
        QVERIFY(document->savingWillChange().isEmpty());
        QCOMPARE(QDir(Originals::folder()).entryList(QDir::Files).size(), told.isEmpty() ? 0 : 1);
    }

    void thirdCodePointIsToldAndGone()
    {
        write(path(u"a.xml"_s), "<glyph name=\"a\"/>");
        VXDocument *document = openDocument(path(u"a.xml"_s));
        QVERIFY(document->saveDocument());
        QVERIFY(document->savingWillChange().isEmpty());
        const InfoPtr info = document->objectInInfosAtIndex(0);
        const QStringList three {u"0041"_s, u"0042"_s, u"0043"_s};
        info->setUnicodes(three);
        QCOMPARE(document->savingLosses(document->fileType()).count, 1);
        document->acceptSavingLosses();
        QVERIFY(document->saveDocument());
        // The records are what the file holds, and what it lost can be taken back.
        VXDocument read;
        QVERIFY(read.readFromURLOfType(path(u"a.xml"_s), u"public.xml"_s));
        QCOMPARE(info->unicodes(), read.objectInInfosAtIndex(0)->unicodes());
        QVERIFY(info->unicodes() != three);
        QVERIFY(!document->isDocumentEdited());
        QVERIFY(document->savingWillChange().isEmpty());
        document->undoManager()->undo();
        QCOMPARE(info->unicodes(), three);
        QVERIFY(document->isDocumentEdited());
    }

    void keepsTheOriginalOnce()
    {
        const QByteArray content =
            QByteArray(kFile).replace("\t<glyph name=\"b\"", "<!-- x -->\n\t<glyph name=\"b\"");
        write(path(u"a.xml"_s), content);
        QSignalSpy told(&ErrorPresenter::shared(), &ErrorPresenter::presented);
        VXDocument *document = openDocument(path(u"a.xml"_s));
        for (int i = 0; i < 3; ++i) {
            document->objectInInfosAtIndex(0)->setName(u"n%1"_s.arg(i));
            QVERIFY(document->saveDocument());
        }
        const QStringList copies = QDir(Originals::folder()).entryList(QDir::Files);
        QCOMPARE(copies.size(), 1);
        const QString copy = Originals::folder() + u'/' + copies.first();
        QCOMPARE(contentOf(copy), content);
        QVERIFY(copies.first().startsWith(u"a ") && copies.first().endsWith(u".xml"));
        QCOMPARE(told.size(), 1);
        QVERIFY(told.first().first().value<Error>().text().contains(copy));
    }

    void refusesToLoseWithoutACopy()
    {
        const QByteArray content = "<!-- x -->\n" + kFile;
        write(path(u"a.xml"_s), content);
        VXDocument *document = openDocument(path(u"a.xml"_s));
        qputenv("XDG_DATA_HOME", "/dev/null/none");
        Error error;
        QVERIFY(!document->saveDocument(&error));
        QVERIFY(error.text().contains(path(u"a.xml"_s)));
        QCOMPARE(contentOf(path(u"a.xml"_s)), content);
        QVERIFY(document->saveToURLOfType(path(u"b.xml"_s), u"public.xml"_s, &error));
        QVERIFY(document->savingWillChange().isEmpty());
        QCOMPARE(contentOf(path(u"a.xml"_s)), content);
    }

    void boundsTheOriginals()
    {
        QStringList copies;
        for (int i = 0; i < 6; ++i) {
            copies << Originals::keepCopy(path(u"a.xml"_s));
            QVERIFY(!copies.last().isEmpty());
            QFile file(copies.last());
            QVERIFY(file.open(QIODevice::ReadWrite));
            QVERIFY(file.setFileTime(QDateTime::currentDateTime().addDays(i - 6),
                                     QFileDevice::FileModificationTime));
        }
        const auto left = [&copies] {
            return std::count_if(copies.begin(), copies.end(),
                                 [](auto &copy) { return QFile::exists(copy); });
        };
        Originals::prune(4, 1 << 20);
        QCOMPARE(left(), 4);
        QVERIFY(!QFile::exists(copies.at(1)) && QFile::exists(copies.at(2)));
        Originals::prune(4, 2 * kFile.size());
        QCOMPARE(left(), 2);
        Originals::prune(4, 1);
        QCOMPARE(left(), 1);
        QVERIFY(QFile::exists(copies.last()));
    }

    void reloadsOnlyWhatItCanRead()
    {
        VXDocument *document = openDocument(path(u"a.xml"_s));
        write(path(u"a.xml"_s), "<glyph name=\"\xFF\"/>");
        Error error;
        QVERIFY(!document->revertToSaved(&error));
        QVERIFY(!error.text().isEmpty());
        QCOMPARE(document->countOfInfos(), 2);
        write(path(u"a.xml"_s), "<glyph name=\"x\"/>");
        QVERIFY(document->revertToSaved(&error));
        QCOMPARE(document->countOfInfos(), 1);
        QCOMPARE(document->fileWatch().check(), FileWatch::Change::None);
    }
};

RUNEBOOK_TEST_MAIN_WITH(DocumentRecoveryTest, kWorks)
#include "DocumentRecoveryTest.moc"
