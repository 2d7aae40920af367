#include "app/SingleInstance.h"
#include "tests/Oddities.h"
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

/// Several starts of the program: objects beside each other, and real processes.
class InstanceTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void handsFilesToTheFirst_data();
    void handsFilesToTheFirst();
    void listensForItsUserAlone();
    void takesOverFromTheDead();
    void doesNotWaitForTheStuck();
    void survivesStrangers_data();
    void survivesStrangers();
    void standsAloneWithoutASocket();
    void passesOverOddities_data();
    void passesOverOddities();
    void makesOneProgramOfTwoStarts();
    void startsWithoutAHome_data();
    void startsWithoutAHome();

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_socket;
};

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

void InstanceTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_socket = m_folder->filePath(u"socket"_s);
}

void InstanceTest::handsFilesToTheFirst_data()
{
    QTest::addColumn<QStringList>("files");
    QStringList many;
    for (int i = 0; i < 1'000; ++i)
        many << u"/home/somebody/a folder/file number %1.xml"_s.arg(i);
    QTest::newRow("none") << QStringList();
    QTest::newRow("one") << QStringList {u"/a b/é€𝄞.xml"_s};
    QTest::newRow("1,000") << many;
}

void InstanceTest::handsFilesToTheFirst()
{
    QFETCH(QStringList, files);
    SingleInstance first(m_socket);
    QSignalSpy received(&first, &SingleInstance::filesReceived);
    QCOMPARE(first.claim({}), SingleInstance::Role::First);
    for (int start = 1; start <= 2; ++start) {
        QCOMPARE(claimElsewhere(m_socket, files), SingleInstance::Role::Second);
        QCOMPARE(received.size(), start);
        QCOMPARE(received.last().at(0).toStringList(), files);
    }
}

void InstanceTest::listensForItsUserAlone()
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

void InstanceTest::takesOverFromTheDead()
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

void InstanceTest::doesNotWaitForTheStuck()
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

void InstanceTest::survivesStrangers_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("another language") << QByteArray("GET / HTTP/1.1\r\n\r\n");
    QTest::newRow("a size without end") << QByteArray("\x52\x75\x6e\x31\xff\xff\xff\xf0", 8);
    QTest::newRow("half a message") << QByteArray("\x52\x75\x6e\x31\x00\x00", 6);
    QTest::newRow("relative paths") << QByteArray("\x52\x75\x6e\x31\x00\x00\x00\x05"
                                                  "a.xml",
                                                  13);
}

void InstanceTest::survivesStrangers()
{
    QFETCH(QByteArray, bytes);
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

void InstanceTest::standsAloneWithoutASocket()
{
    QCOMPARE(SingleInstance(QString()).claim({}), SingleInstance::Role::Alone);
    QCOMPARE(SingleInstance(u"/dev/null/socket"_s).claim({}), SingleInstance::Role::Alone);
    QCOMPARE(SingleInstance(m_folder->filePath(u"x"_s.repeated(200))).claim({}), SingleInstance::Role::Alone);
}

void InstanceTest::passesOverOddities_data()
{
    QTest::addColumn<QString>("suffix"); // of what is none
    QTest::addColumn<QString>("kind");
    for (const QString &kind : {u"pipe"_s, u"device"_s, u"folder"_s, u"link"_s, u"file"_s}) {
        QTest::addRow("%s for the socket", qPrintable(kind)) << QString() << kind;
        if (kind != "file"_L1)
            QTest::addRow("%s for the lock", qPrintable(kind)) << u".lock"_s << kind;
    }
}

void InstanceTest::passesOverOddities()
{
    QFETCH(const QString, suffix);
    QFETCH(const QString, kind);
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

void InstanceTest::makesOneProgramOfTwoStarts()
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

void InstanceTest::startsWithoutAHome_data()
{
    QTest::addColumn<QString>("home");
    QTest::newRow("none") << QString();
    QTest::newRow("missing") << u"/no/such/folder"_s;
    QTest::newRow("cannot be written") << u"/proc/self"_s;
    QTest::newRow("a file") << u"/dev/null"_s;
}

void InstanceTest::startsWithoutAHome()
{
    QFETCH(QString, home);
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *variable : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR",
                                 "RUNEBOOK_DEFAULTS", "HOME"})
        environment.remove(QString::fromLatin1(variable));
    if (!home.isEmpty())
        environment.insert(u"HOME"_s, home);
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

RUNEBOOK_TEST_MAIN(InstanceTest)
#include "InstanceTest.moc"
