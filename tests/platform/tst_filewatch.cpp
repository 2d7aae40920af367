// What other programs do to an open file, and what counts as nothing.
#include "platform/FileWatch.h"
#include "tests/TestMain.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace runebook;
using Change = FileWatch::Change;

namespace {

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

void replace(const QString &path, const QByteArray &bytes)
{
    write(path + u".new"_s, bytes);
    QCOMPARE(
        std::rename(QFile::encodeName(path + u".new"_s).constData(), QFile::encodeName(path).constData()), 0);
}

void touch(const QString &path)
{
    QCOMPARE(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), nullptr, 0), 0);
}

using Act = std::function<void(const QString &)>;

} // namespace

Q_DECLARE_METATYPE(Act)

class TestFileWatch : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void notices_data();
    void notices();
    void isAskedBeforeItNotices_data() { notices_data(); }
    void isAskedBeforeItNotices();
    void keepsWatchingWhatIsReplaced();
    void findsTheOldContentAgain();
    void leavesOwnSavesAlone();
    void noticesWhatHappenedWhileReading();
    void tellsContentsApart_data();
    void tellsContentsApart();

private:
    QTemporaryDir m_folder;
    QString m_path;
};

void TestFileWatch::init()
{
    m_path = m_folder.filePath(u"a.xml"_s);
    QFile::remove(m_path);
    write(m_path, "old text");
}

void TestFileWatch::notices_data()
{
    QTest::addColumn<Act>("act");
    QTest::addColumn<Change>("change");
    QTest::newRow("longer") << Act([](auto &path) { write(path, "another old text"); }) << Change::Changed;
    QTest::newRow("same length") << Act([](auto &path) { write(path, "new text"); }) << Change::Changed;
    QTest::newRow("emptied") << Act([](auto &path) { QFile::resize(path, 0); }) << Change::Emptied;
    QTest::newRow("replaced") << Act([](auto &path) { replace(path, "their text"); }) << Change::Replaced;
    QTest::newRow("replaced by the same")
        << Act([](auto &path) { replace(path, "old text"); }) << Change::None;
    QTest::newRow("removed") << Act([](auto &path) { QFile::remove(path); }) << Change::Removed;
    QTest::newRow("moved away") << Act([](auto &path) { QFile::rename(path, path + u".moved"_s); })
                                << Change::Removed;
    QTest::newRow("touched") << Act(touch) << Change::None;
    QTest::newRow("written the same") << Act([](auto &path) { write(path, "old text"); }) << Change::None;
    QTest::newRow("mode") << Act([](auto &path) { QFile::setPermissions(path, QFile::ReadOwner); })
                          << Change::None;
}

void TestFileWatch::notices()
{
    QFETCH(const Act, act);
    QFETCH(const Change, change);
    FileWatch watch;
    watch.watch(m_path, FileState::of(m_path));
    QTRY_VERIFY(watch.knownHash());
    QSignalSpy changed(&watch, &FileWatch::changed);
    act(m_path);
    if (change == Change::None) {
        QTest::qWait(1200); // long enough for a notice and a look
        QCOMPARE(changed.size(), 0);
    } else {
        QTRY_COMPARE(changed.size(), 1);
        QCOMPARE(changed.first().first().value<Change>(), change);
    }
    QCOMPARE(watch.change(), change);
    QFile::remove(m_path + u".moved"_s);
}

void TestFileWatch::isAskedBeforeItNotices()
{
    QFETCH(const Act, act);
    QFETCH(const Change, change);
    FileWatch watch;
    watch.watch(m_path, FileState::of(m_path));
    QTRY_VERIFY(watch.knownHash());
    QSignalSpy changed(&watch, &FileWatch::changed);
    act(m_path);
    QCOMPARE(watch.check(), change);
    QCOMPARE(watch.check(), change);
    QCOMPARE(changed.size(), change == Change::None ? 0 : 1);
    watch.takeAsKnown();
    QCOMPARE(watch.check(), Change::None);
    QFile::remove(m_path + u".moved"_s);
}

void TestFileWatch::keepsWatchingWhatIsReplaced()
{
    FileWatch watch;
    watch.watch(m_path, FileState::of(m_path));
    QSignalSpy changed(&watch, &FileWatch::changed);
    for (int i = 1; i <= 3; ++i) {
        replace(m_path, "version " + QByteArray::number(i));
        QTRY_COMPARE(changed.size(), i);
        // The new file may get the number of the old one.
        QVERIFY(watch.change() == Change::Replaced || watch.change() == Change::Changed);
    }
    QFile::remove(m_path);
    QTRY_COMPARE(watch.change(), Change::Removed);
    write(m_path, "there again");
    QTRY_VERIFY(watch.change() == Change::Replaced || watch.change() == Change::Changed);
}

void TestFileWatch::findsTheOldContentAgain()
{
    FileWatch watch;
    watch.watch(m_path, FileState::of(m_path));
    QTRY_VERIFY(watch.knownHash());
    QSignalSpy changed(&watch, &FileWatch::changed);
    write(m_path, "other text");
    QTRY_COMPARE(changed.size(), 1);
    write(m_path, "old text");
    QTRY_COMPARE(changed.size(), 2);
    QCOMPARE(changed.last().first().value<Change>(), Change::None);
}

void TestFileWatch::leavesOwnSavesAlone()
{
    FileWatch watch;
    watch.watch(m_path, FileState::of(m_path));
    QSignalSpy changed(&watch, &FileWatch::changed);
    write(m_path, "saved by ourselves");
    watch.takeAsKnown();
    QTest::qWait(1200);
    QCOMPARE(changed.size(), 0);
    watch.watch({}, {});
    write(m_path, "nobody looks");
    QTest::qWait(400);
    QCOMPARE(changed.size(), 0);
    QCOMPARE(watch.check(), Change::None);
}

void TestFileWatch::noticesWhatHappenedWhileReading()
{
    const FileState before = FileState::of(m_path);
    write(m_path, "changed while it was read");
    FileWatch watch;
    watch.watch(m_path, before);
    QSignalSpy changed(&watch, &FileWatch::changed);
    QTRY_COMPARE(changed.size(), 1);
    QVERIFY(!watch.knownHash()); // of a content that is gone
}

void TestFileWatch::tellsContentsApart_data()
{
    QTest::addColumn<QByteArray>("one");
    QTest::addColumn<QByteArray>("other");
    const QByteArray large = QByteArray("0123456789").repeated(200'000);
    QTest::newRow("nothing, a zero") << QByteArray() << QByteArray(1, '\0');
    QTest::newRow("zeros") << QByteArray(8, '\0') << QByteArray(9, '\0');
    QTest::newRow("order") << QByteArray("abcdefgh12345678") << QByteArray("12345678abcdefgh");
    QTest::newRow("last byte") << large + 'a' << large + 'b';
    QTest::newRow("first byte") << 'a' + large << 'b' + large;
    QTest::newRow("beyond a block") << large << large + large;
}

void TestFileWatch::tellsContentsApart()
{
    QFETCH(const QByteArray, one);
    QFETCH(const QByteArray, other);
    const QString second = m_folder.filePath(u"b.xml"_s);
    write(m_path, one);
    write(second, one);
    QVERIFY(contentHash(m_path) && contentHash(m_path) == contentHash(second));
    QVERIFY(haveSameContent(m_path, second));
    write(second, other);
    QVERIFY(contentHash(m_path) != contentHash(second));
    QVERIFY(!haveSameContent(m_path, second));
    QVERIFY(!contentHash(m_folder.path()));
    QVERIFY(!haveSameContent(m_path, m_folder.filePath(u"none"_s)));
}

RUNEBOOK_TEST_MAIN(TestFileWatch)
#include "tst_filewatch.moc"
