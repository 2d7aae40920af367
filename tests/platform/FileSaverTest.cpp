// Saving in place: what stays of the old file, and what lies where when it fails.
#include "platform/documents/FileSaver.h"
#include "platform/CheckedFile.h"
#include "platform/StandardFolders.h"
#include "tests/Files.h"
#include "tests/Oddities.h"
#include "tests/Table.h"
#include "tests/TestMain.h"

#include <QScopeGuard>
#include <QThread>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

const QByteArray kOld = "the old text\n";

ContentProducer content(const QByteArray &bytes)
{
    return [bytes](const BlockSink &sink, Error *) {
        for (qsizetype i = 0; i < bytes.size(); i += 100'000) {
            const QByteArray block = bytes.mid(i, 100'000);
            if (!sink({block.constData(), static_cast<std::size_t>(block.size())}))
                return false;
        }
        return true;
    };
}

QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System);
}

struct stat statusOf(const QString &path)
{
    struct stat status = {};
    ::stat(QFile::encodeName(path).constData(), &status);
    return status;
}

/// No file may grow beyond that size while it lives: a full disk for one program.
class FullDisk
{
public:
    explicit FullDisk(rlim_t size)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_old);
        const rlimit limit {size, m_old.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &m_old); }
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

private:
    rlimit m_old = {};
};

/// Whoever runs the tests may write everywhere; a plain user may not.
class PlainUser
{
public:
    PlainUser() { isPlain = ::geteuid() != 0 || ::seteuid(65534) == 0; }
    ~PlainUser()
    {
        if (::getuid() == 0 && ::seteuid(0) != 0)
            qFatal("cannot become root again");
    }
    PlainUser(const PlainUser &) = delete;
    PlainUser &operator=(const PlainUser &) = delete;
    bool isPlain = false;
};

} // namespace

class FileSaverTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        QVERIFY(QFile::setPermissions(m_folder->path(), QFile::Permissions(0x7777)));
    }

    TABLE(writesAnyLength, (const QByteArray &bytes), {
        row("nothing", QByteArray());
        row("shorter", "new");
        row("same length", QByteArray(kOld.size(), 'x'));
        row("several blocks", QByteArray("0123456789").repeated(300'000));
    })
    {
        Error error;
        QVERIFY(FileSaver::save(path(u"new.xml"_s), content(bytes), &error));
        QCOMPARE(contentOf(path(u"new.xml"_s)), bytes);
        write(path(u"old.xml"_s), kOld);
        QVERIFY(FileSaver::save(path(u"old.xml"_s), content(bytes), &error));
        QCOMPARE(contentOf(path(u"old.xml"_s)), bytes);
        QVERIFY(error.domain.isEmpty());
        QCOMPARE(filesIn(m_folder->path()), QStringList({u"new.xml"_s, u"old.xml"_s}));
    }

    void keepsTheFileItself()
    {
        const QString name = path(u"a.xml"_s);
        write(name, kOld);
        QCOMPARE(::chmod(QFile::encodeName(name).constData(), 0604), 0);
        QCOMPARE(::link(QFile::encodeName(name).constData(), QFile::encodeName(path(u"b.xml"_s)).constData()),
                 0);
        const bool hasAttribute =
            ::setxattr(QFile::encodeName(name).constData(), "user.label", "kept", 4, 0) == 0;
        QVERIFY(hasAttribute || errno == ENOTSUP);
        const struct stat before = statusOf(name);
        QVERIFY(FileSaver::save(name, content("new")));
        char label[8] = {};
        ::getxattr(QFile::encodeName(name).constData(), "user.label", label, sizeof label);
        QCOMPARE(QByteArray(label), hasAttribute ? QByteArray("kept") : QByteArray());
        const struct stat after = statusOf(name);
        QCOMPARE(after.st_ino, before.st_ino);
        QCOMPARE(after.st_mode, before.st_mode);
        QCOMPARE(after.st_nlink, nlink_t(2));
        QCOMPARE(contentOf(path(u"b.xml"_s)), QByteArray("new"));
    }

    void followsLinks()
    {
        QVERIFY(QDir(m_folder->path()).mkdir(u"sub"_s));
        write(path(u"sub/a.xml"_s), kOld);
        QVERIFY(QFile::link(u"sub/a.xml"_s, path(u"link.xml"_s)));
        QVERIFY(FileSaver::save(path(u"link.xml"_s), content("new")));
        QVERIFY(QFileInfo(path(u"link.xml"_s)).isSymLink());
        QCOMPARE(contentOf(path(u"sub/a.xml"_s)), QByteArray("new"));
        QCOMPARE(filesIn(path(u"sub"_s)), QStringList {u"a.xml"_s});
    }

    TABLE(refusesOtherThings, (const QString &name), {
        row("folder", ".");
        row("missing folder", "none/a.xml");
        row("file as folder", "file/a.xml");
        row("device", "device");
        row("pipe", "pipe");
        row("link to nowhere", "dangling");
        row("no name", "");
    })
    {
        write(path(u"file"_s), kOld);
        QCOMPARE(::mkfifo(QFile::encodeName(path(u"pipe"_s)).constData(), 0600), 0);
        QVERIFY(QFile::link(u"none/x"_s, path(u"dangling"_s)));
        if (!makeDevice(path(u"device"_s)) && name == "device"_L1)
            QSKIP("device-node: only root may make one");
        const QStringList before = filesIn(m_folder->path());
        const bool isInFolder = !name.isEmpty() && !name.startsWith(u'/');
        Error error;
        QVERIFY(!FileSaver::save(isInFolder ? path(name) : name, content("new"), &error));
        QCOMPARE(error.domain, u"SaveError"_s);
        QVERIFY(!error.description.isEmpty() && !error.failureReason.isEmpty());
        QCOMPARE(filesIn(m_folder->path()), before);
        QVERIFY(!FileSaver::save(isInFolder ? path(name) : name, content("new")));
    }

    void leavesAReadOnlyFile()
    {
        const QString name = path(u"a.xml"_s);
        write(name, kOld);
        QCOMPARE(::chmod(QFile::encodeName(name).constData(), 0444), 0);
        const PlainUser user;
        QVERIFY(user.isPlain);
        Error error;
        QVERIFY(!FileSaver::save(name, content("new"), &error));
        QCOMPARE(error.code, EACCES);
        QVERIFY(error.description.contains(name));
        QCOMPARE(contentOf(name), kOld);
        QCOMPARE(filesIn(m_folder->path()), QStringList {u"a.xml"_s});
    }

    void rescuesElsewhere()
    {
        // The folder takes no further file: the rescue file goes to the user's data.
        const QString name = path(u"a.xml"_s);
        write(name, kOld);
        QVERIFY(QFile::setPermissions(name, QFile::Permissions(0x6666)));
        QVERIFY(QFile::setPermissions(m_folder->path(), QFile::Permissions(0x5555)));
        const QString own = StandardFolders::userData();
        QVERIFY(QDir(own).mkpath(u"Rescue"_s));
        for (QDir folder(own + u"/Rescue"_s);
             folder.path().startsWith(QDir::homePath()) || folder.path() == QDir::homePath();) {
            QVERIFY(QFile::setPermissions(folder.path(), QFile::Permissions(0x7777)));
            folder.setPath(QFileInfo(folder.path()).path());
        }
        bool wasRescued = false;
        {
            const PlainUser user;
            QVERIFY(user.isPlain);
            const ContentProducer look = [&](const BlockSink &sink, Error *error) {
                wasRescued = content("new")(sink, error);
                // Still without its proper name, beside the note for the next start.
                wasRescued &= filesIn(own + u"/Rescue"_s).filter(u".runebook-rescue.part"_s).size() == 1;
                return true;
            };
            Error error;
            QVERIFY2(FileSaver::save(name, look, &error), qPrintable(error.text()));
        }
        QVERIFY(wasRescued);
        QCOMPARE(contentOf(name), QByteArray("new"));
        QVERIFY(filesIn(own + u"/Rescue"_s).isEmpty());
    }

    TABLE(fullDiskBeforeTheFile, (int space, bool isThere), {
        row("none", 0, true);
        row("within the first block", 60'000, true);
        row("between blocks", 200'000, true);
        row("one byte too few", 299'999, true);
        row("a new file", 100, false);
    })
    {
        const QString name = path(u"a.xml"_s);
        if (isThere)
            write(name, kOld);
        Error error;
        bool saved = true;
        {
            const FullDisk full(static_cast<rlim_t>(space));
            saved = FileSaver::save(name, content(QByteArray(300'000, 'n')), &error);
        }
        QVERIFY(!saved);
        QCOMPARE(error.code, EFBIG);
        QVERIFY(error.recoverySuggestion.contains(name));
        QCOMPARE(contentOf(name), isThere ? kOld : QByteArray("(unreadable)"));
        QCOMPARE(filesIn(m_folder->path()).size(), isThere ? 1 : 0);
    }

    void fullDiskWithinTheFile()
    {
        // The disk fills up once the rescue file is whole.
        const QString name = path(u"a.xml"_s);
        write(name, kOld);
        const QByteArray bytes(300'000, 'n');
        std::unique_ptr<FullDisk> full;
        Error error;
        const bool saved = FileSaver::save(
            name,
            [&](const BlockSink &sink, Error *reason) {
                const bool produced = content(bytes)(sink, reason);
                full = std::make_unique<FullDisk>(100);
                return produced;
            },
            &error);
        full.reset();
        QVERIFY(!saved);
        QCOMPARE(error.code, EFBIG);
        const QString rescue = path(u".a.xml.runebook-rescue"_s);
        QVERIFY2(error.recoverySuggestion.contains(rescue), qPrintable(error.recoverySuggestion));
        QCOMPARE(contentOf(rescue), bytes);
        QCOMPARE(statusOf(rescue).st_mode & 0777, mode_t(0600));
    }

    void passesOnWhyThereIsNoContent()
    {
        const ContentProducer refusing = [](const BlockSink &sink, Error *error) {
            sink("begun");
            return fail(error, {u"User"_s, 7, u"No."_s, {}, {}});
        };
        write(path(u"old.xml"_s), kOld);
        for (const QString &name : {u"old.xml"_s, u"new.xml"_s}) {
            Error error;
            QVERIFY(!FileSaver::save(path(name), refusing, &error));
            QCOMPARE(error.domain, u"User"_s);
            QCOMPARE(error.code, 7);
            QVERIFY(!error.recoverySuggestion.isEmpty());
            QVERIFY(!FileSaver::replace(path(name), refusing, &error));
            QCOMPARE(error.code, 7);
        }
        QCOMPARE(contentOf(path(u"old.xml"_s)), kOld);
        QCOMPARE(filesIn(m_folder->path()), QStringList {u"old.xml"_s});
    }

    void writesOnlyOverWhatItKnows()
    {
        const QString name = path(u"a.xml"_s);
        write(name, kOld);
        SavedState state {FileState::of(name), {}};
        QVERIFY(FileSaver::save(name, content("first"), nullptr, &state));
        QCOMPARE(state.after, FileState::of(name));
        // Once more from what was there before.
        Error error;
        QVERIFY(!FileSaver::save(name, content("second"), &error, &state));
        QCOMPARE(error.code, EBUSY);
        QCOMPARE(contentOf(name), QByteArray("first"));
        QCOMPARE(filesIn(m_folder->path()), QStringList {u"a.xml"_s});
    }

    void waitsForAnotherSaver()
    {
        const QString name = path(u"a.xml"_s);
        write(name, kOld);
        CheckedFile other(name, O_RDWR);
        QVERIFY(other.lock());
        std::thread leaving([&other] {
            QThread::msleep(50);
            other.close();
        });
        QVERIFY(FileSaver::save(name, content("new")));
        leaving.join();
        QCOMPARE(contentOf(name), QByteArray("new"));
        const CheckedFile reader(name, O_RDONLY);
        CheckedFile shared(name, O_RDONLY);
        QVERIFY(shared.lock(CheckedFile::Lock::Shared));
        Error error;
        QVERIFY(!FileSaver::save(name, content("newer"), &error));
        QCOMPARE(error.code, EBUSY);
        QCOMPARE(contentOf(name), QByteArray("new"));
    }

    /// Two processes each add one to their own line of a file, as fast as they can, from what they have read.
    void losesNoChangeOfTwoSavers()
    {
        constexpr int kRounds = 500;
        const QString name = path(u"a.txt"_s);
        write(name, "0\n0\n");
        const auto addOnes = [&name](int own) {
            int saved = 0;
            for (int round = 0; round < kRounds; ++round) {
                CheckedFile file(name, O_RDONLY);
                if (!file.lock(CheckedFile::Lock::Shared, CheckedFile::kPatience))
                    continue;
                SavedState state {FileState::of(file.descriptor()), {}};
                QList<QByteArray> lines = contentOf(name).split('\n');
                file.close();
                lines[own] = QByteArray::number(lines.value(own).toInt() + 1);
                saved += FileSaver::save(name, content(lines.join('\n')), nullptr, &state);
            }
            return saved;
        };
        int ends[2] = {};
        QCOMPARE(::pipe(ends), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            const int saved = addOnes(1);
            ::_exit(::write(ends[1], &saved, sizeof saved) == sizeof saved ? 0 : 1);
        }
        const int mine = addOnes(0);
        int theirs = 0;
        QCOMPARE(::read(ends[0], &theirs, sizeof theirs), ssize_t(sizeof theirs));
        ::waitpid(child, nullptr, 0);
        ::close(ends[0]);
        ::close(ends[1]);
        QCOMPARE(contentOf(name), QByteArray::number(mine) + '\n' + QByteArray::number(theirs) + '\n');
        QVERIFY2(mine + theirs > kRounds / 2 && mine + theirs < 2 * kRounds, "they have not met");
        QCOMPARE(filesIn(m_folder->path()), QStringList {u"a.txt"_s});
    }

    void sparesOldRescueFiles()
    {
        const QString name = path(u"a.xml"_s);
        write(name, kOld);
        const QStringList rescued {path(u".a.xml.runebook-rescue"_s), path(u".a.xml.runebook-rescue-1"_s)};
        for (const QString &old : rescued)
            write(old, "somebody's work");
        QVERIFY(FileSaver::save(name, content("new")));
        QCOMPARE(contentOf(name), QByteArray("new"));
        for (const QString &old : rescued)
            QCOMPARE(contentOf(old), QByteArray("somebody's work"));
        QCOMPARE(filesIn(m_folder->path()).size(), 3);
    }

    void replaces()
    {
        const QString name = path(u"a.xml"_s);
        QVERIFY(FileSaver::replace(name, content(kOld)));
        QCOMPARE(contentOf(name), kOld);
        QVERIFY(FileSaver::replace(name, content("new")));
        QCOMPARE(contentOf(name), QByteArray("new"));
        bool saved = true;
        Error error;
        {
            const FullDisk full(100);
            saved = FileSaver::replace(name, content(QByteArray(300, 'n')), &error);
        }
        QVERIFY(!saved);
        QCOMPARE(error.code, EFBIG);
        QCOMPARE(contentOf(name), QByteArray("new"));
        QVERIFY(!FileSaver::replace(path(u"none/a.xml"_s), content("new"), &error));
        QCOMPARE(filesIn(m_folder->path()), QStringList {u"a.xml"_s});
    }

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    std::unique_ptr<QTemporaryDir> m_folder;
};

RUNEBOOK_TEST_MAIN(FileSaverTest)
#include "FileSaverTest.moc"
