#include "app/SingleInstance.h"
#include "platform/defaults/UserDefaults.h"
#include "tests/Oddities.h"
#include "tests/Table.h"
#include "tests/TestMain.h"

#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QSignalSpy>
#include <atomic>
#include <thread>

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace runebook;
using namespace Qt::StringLiterals;

namespace {

/// Claims in a thread of its own, as the other start waits while this one serves.
SingleInstance::Role claimElsewhere(const QString &socket, const QStringList &files, int limitMs = 3'000)
{
    SingleInstance::Role role = SingleInstance::Role::First;
    std::atomic<bool> isDone = false;
    std::thread thread([&] {
        SingleInstance second(socket);
        second.setTimeLimit(limitMs);
        role = second.claim(files);
        isDone = true;
    });
    const bool hasEnded = QTest::qWaitFor([&isDone] { return isDone.load(); }, 30'000);
    thread.join();
    return hasEnded ? role : SingleInstance::Role::First;
}

QString program()
{
    return QStringLiteral(RUNEBOOK_BUILD_DIR "/bin/runebook");
}

} // namespace

/// Several starts of the program: objects beside each other, and real processes.
class InstanceTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_socket = m_folder->filePath(u"socket"_s);
    }

    TABLE(handsFilesToTheFirst, (const QStringList &files), {
        QStringList many;
        for (int i = 0; i < 1'000; ++i)
            many << u"/home/somebody/a folder/file number %1.xml"_s.arg(i);
        row("none", {});
        row("one", {u"/a b/é€𝄞.xml"_s});
        row("1,000", many);
    })
    {
        SingleInstance first(m_socket);
        QSignalSpy received(&first, &SingleInstance::filesReceived);
        QCOMPARE(first.claim({}), SingleInstance::Role::First);
        for (int start = 1; start <= 2; ++start) {
            QCOMPARE(claimElsewhere(m_socket, files), SingleInstance::Role::Second);
            QCOMPARE(received.size(), start);
            QCOMPARE(received.last().at(0).toStringList(), files);
        }
    }

    void listensForItsUserAlone()
    {
        SingleInstance first(m_socket);
        QCOMPARE(first.claim({}), SingleInstance::Role::First);
        struct stat info {
        };
        QCOMPARE(::stat(QFile::encodeName(m_socket).constData(), &info), 0);
        QVERIFY(S_ISSOCK(info.st_mode));
        QCOMPARE(info.st_mode & 077, mode_t(0));
        QCOMPARE(info.st_uid, ::getuid());
    }

    void takesOverFromTheDead()
    {
        // What a killed program leaves: a socket nobody listens at, and a lock of a process that is no more.
        QProcess dead;
        dead.start(u"/bin/true"_s);
        QVERIFY(dead.waitForStarted());
        const qint64 number = dead.processId();
        QVERIFY(dead.waitForFinished());
        QFile lock(m_socket + ".lock"_L1);
        QVERIFY(lock.open(QIODevice::WriteOnly));
        lock.write(QByteArray::number(number) + "\nrunebook\n" + QSysInfo::machineHostName().toUtf8() + '\n');
        lock.close();
        {
            QLocalServer server;
            QVERIFY(server.listen(m_socket));
            QCOMPARE(::link(qPrintable(m_socket), qPrintable(m_socket + ".kept"_L1)), 0);
        }
        QVERIFY(QFile::rename(m_socket + ".kept"_L1, m_socket));
        SingleInstance first(m_socket);
        QCOMPARE(first.claim({}), SingleInstance::Role::First);
        QCOMPARE(claimElsewhere(m_socket, {u"/a.xml"_s}), SingleInstance::Role::Second);
    }

    void doesNotWaitForTheStuck()
    {
        // Holds the lock and the socket, and never answers.
        QLockFile lock(m_socket + ".lock"_L1);
        QVERIFY(lock.tryLock(0));
        QLocalServer stuck;
        QVERIFY(stuck.listen(m_socket));
        SingleInstance second(m_socket);
        second.setTimeLimit(200);
        QCOMPARE(second.claim({u"/a.xml"_s}), SingleInstance::Role::Alone);
    }

    TABLE(survivesStrangers, (const QByteArray &bytes), {
        row("nothing", "");
        row("another language", "GET / HTTP/1.1\r\n\r\n");
        row("a size without end", QByteArray("\x52\x75\x6e\x31\xff\xff\xff\xf0", 8));
        row("half a message", QByteArray("\x52\x75\x6e\x31\x00\x00", 6));
        row("relative paths",
            QByteArray("\x52\x75\x6e\x31\x00\x00\x00\x05"
                       "a.xml",
                       13));
    })
    {
        SingleInstance first(m_socket);
        first.setTimeLimit(300);
        QSignalSpy received(&first, &SingleInstance::filesReceived);
        QCOMPARE(first.claim({}), SingleInstance::Role::First);
        QLocalSocket stranger;
        stranger.connectToServer(m_socket);
        stranger.write(bytes);
        QTRY_COMPARE(stranger.state(), QLocalSocket::UnconnectedState); // it is not kept waiting for ever
        for (const QList<QVariant> &arguments : received)
            QCOMPARE(arguments.at(0).toStringList(), QStringList());
        QCOMPARE(claimElsewhere(m_socket, {u"/a.xml"_s}), SingleInstance::Role::Second);
        QCOMPARE(received.last().at(0).toStringList(), QStringList {u"/a.xml"_s});
    }

    void standsAloneWithoutASocket()
    {
        QCOMPARE(SingleInstance(QString()).claim({}), SingleInstance::Role::Alone);
        SingleInstance nowhere(u"/dev/null/socket"_s); // where waiting for others would be for nothing
        nowhere.setTimeLimit(120'000);
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(nowhere.claim({}), SingleInstance::Role::Alone);
        QVERIFY(clock.elapsed() < 60'000);
        QCOMPARE(SingleInstance(m_folder->filePath(u"x"_s.repeated(200))).claim({}),
                 SingleInstance::Role::Alone);
    }

    // suffix: of what is none
    TABLE(passesOverOddities, (const QString &suffix, const QString &kind), {
        for (const QString &kind : {u"pipe"_s, u"device"_s, u"folder"_s, u"link"_s, u"file"_s}) {
            row(kind + " for the socket"_L1, "", kind);
            if (kind != "file"_L1)
                row(kind + " for the lock"_L1, ".lock", kind);
        }
    })
    {
        const QString place = m_socket + suffix;
        QFile plain(kind == "link"_L1 ? m_folder->filePath(u"elsewhere"_s) : place);
        if (kind == "file"_L1 || kind == "link"_L1)
            QVERIFY(plain.open(QIODevice::WriteOnly) && plain.write("somebody's") > 0 && plain.flush());
        if (kind != "file"_L1 && !makeOddity(kind, place))
            QSKIP("device-node: only root may make one");
        const auto before = whatIsAt(place);
        QElapsedTimer clock;
        clock.start();
        SingleInstance instance(m_socket);
        QCOMPARE(instance.claim({u"/a.xml"_s}), SingleInstance::Role::Alone);
        QVERIFY2(clock.elapsed() < 2'500, "it waited");
        QCOMPARE(whatIsAt(place), before);
        if (plain.isOpen())
            QCOMPARE(plain.size(), 10);
    }

    void makesOneProgramOfTwoStarts()
    {
        qputenv("XDG_RUNTIME_DIR", m_folder->path().toLocal8Bit());
        const QString sample = QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/sample.xml");
        QProcess first;
        first.start(program(), {sample});
        QVERIFY(first.waitForStarted());
        const auto isListening = [this] {
            return !QDir(m_folder->path()).entryList({u"runebook-*"_s}, QDir::System | QDir::Files).isEmpty();
        };
        QVERIFY(QTest::qWaitFor(isListening, 20'000));
        QProcess second;
        second.start(program(), {sample});
        QVERIFY(second.waitForFinished(20'000));
        QCOMPARE(second.exitCode(), 0);
        QCOMPARE(first.state(), QProcess::Running);
        // What a later one is given opens in the first.
        const QString added = m_folder->filePath(u"added.xml"_s);
        QVERIFY(QFile::copy(sample, added));
        QCOMPARE(QProcess::execute(program(), {added}), 0);
        const auto isOpen = [&] {
            return UserDefaults(qEnvironmentVariable("RUNEBOOK_DEFAULTS"))
                .objectForKey(u"RecentFiles"_s)
                .toStringList()
                .contains(added);
        };
        QVERIFY(QTest::qWaitFor(isOpen, 20'000));
        // With settings of its own a program is another one.
        QProcessEnvironment others = QProcessEnvironment::systemEnvironment();
        others.insert(u"RUNEBOOK_DEFAULTS"_s, m_folder->filePath(u"others.conf"_s));
        others.insert(u"RUNEBOOK_QUIT_AFTER_START"_s, u"1"_s);
        QProcess other;
        other.setProcessEnvironment(others);
        other.start(program(), {added});
        QVERIFY(other.waitForFinished(20'000));
        QCOMPARE(
            UserDefaults(m_folder->filePath(u"others.conf"_s)).objectForKey(u"RecentFiles"_s).toStringList(),
            QStringList {added});
        QProcess own;
        own.start(program(), {u"--new-instance"_s, sample});
        QVERIFY(!own.waitForFinished(1'500));
        own.kill();
        own.waitForFinished();
        // Killed, it leaves its socket behind, and the next start is the first one again.
        first.kill();
        QVERIFY(first.waitForFinished());
        QVERIFY(isListening());
        QProcess next;
        next.start(program(), {sample});
        QVERIFY(!next.waitForFinished(1'500));
        next.kill();
        next.waitForFinished();
    }

    TABLE(startsWithoutAHome, (const QString &home), {
        row("none", "");
        row("missing", "no such/folder"); // in the test's own folder
        row("cannot be written", "/proc/self");
        row("a file", "/dev/null");
    })
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *variable : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR",
                                     "RUNEBOOK_DEFAULTS", "HOME"})
            environment.remove(QString::fromLatin1(variable));
        if (!home.isEmpty())
            environment.insert(u"HOME"_s, QDir(m_folder->path()).filePath(home));
        environment.insert(u"RUNEBOOK_QUIT_AFTER_START"_s, u"1"_s);
        process.setProcessEnvironment(environment);
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(program(),
                      {u"--new-instance"_s, QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/sample.xml")});
        QVERIFY(process.waitForFinished(30'000));
        const QByteArray output = process.readAll();
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QVERIFY2(process.exitCode() == 0, output.constData());
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_socket;
};

RUNEBOOK_TEST_MAIN(InstanceTest)
#include "InstanceTest.moc"
