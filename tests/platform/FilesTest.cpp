#include "tests/Files.h"
#include "platform/CheckedFile.h"
#include "platform/FileBytes.h"
#include "platform/FilePath.h"
#include "platform/documents/FileWatch.h"
#include "tests/Oddities.h"
#include "tests/Rounds.h"
#include "tests/Table.h"
#include "tests/TestMain.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryFile>
#include <QUtf8StringView>

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace runebook;

// Large files are read and checked in parts: where these meet must never show.

namespace {

constexpr qsizetype kLarge = 33'000'000; // enough for eight parts

} // namespace

// What other programs do to an open file, and what counts as nothing.

using Change = FileWatch::Change;

namespace {

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

/// Bytes of files, names of files, and files that other programs change.
class FilesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    TABLE(everyByteIsRead, (qsizetype size), {
        for (const qsizetype size : {qsizetype(0), qsizetype(1), qsizetype(8'388'608), kLarge})
            row(QString::number(size), size);
    })
    {
        QRandomGenerator random(1);
        QByteArray content(size, '\0');
        for (qsizetype i = 0; i < size; i += 1009)
            content[i] = static_cast<char>(random.bounded(256));
        QTemporaryFile file;
        QVERIFY(file.open());
        QCOMPARE(file.write(content), size);
        QVERIFY(file.flush());
        QString reason;
        QVERIFY(bytesOfFile(CheckedFile(file.fileName(), O_RDONLY), &reason) == content);
    }

    void failureHasAReason()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        QVERIFY(file.resize(100));
        QString reason;
        QVERIFY(!bytesOfFile(CheckedFile(file.fileName(), O_WRONLY), &reason));
        QVERIFY(!reason.isEmpty());
    }

    TABLE(charactersAcrossParts, (const QByteArray &character), {
        row("two bytes", "\u00E9");
        row("three bytes", "\u20AC");
        row("four bytes", "\U0001D11E");
        row("a lone second byte", "\x80");
        row("a lone first byte", "\xC3");
    })
    {
        const QByteArray text = character.repeated(kLarge / character.size());
        for (int shift = 0; shift < 4; ++shift) {
            const QByteArray shifted = QByteArray(shift, 'a') + text;
            QCOMPARE(isUtf8(shifted), QUtf8StringView(shifted).isValidUtf8());
        }
    }

    void namesAreBytes()
    {
        QRandomGenerator random(3);
        for (int round = 0; round < rounds(2'000); ++round) {
            QByteArray name = "/";
            for (int i = random.bounded(12); i >= 0; --i) {
                if (random.bounded(2))
                    name += QString(QChar(0xD7F0 + random.bounded(8))).toUtf8() + "\U0001D11E";
                else
                    name += static_cast<char>(1 + random.bounded(255));
            }
            const QString path = pathFromNative(name);
            QCOMPARE(nativePath(path), name);
            QCOMPARE(pathFromURL(portablePath(path)), path);
            QVERIFY(QUtf8StringView(portablePath(path).toUtf8()).isValidUtf8());
            QCOMPARE(shownPath(path) == path, QUtf8StringView(name).isValidUtf8());
        }
    }

    void oneFileMayHaveManyNames()
    {
        const QTemporaryDir folder;
        const QString file = write(folder.filePath(u"a"_s), "x"), link = folder.filePath(u"link"_s);
        const QString other = write(folder.filePath(u"b"_s), "x"), none = folder.filePath(u"none"_s);
        QVERIFY(QFile::link(file, link));
        QVERIFY(isSameFile(file, link) && isSameFile(file, folder.filePath(u"./x/../a"_s)));
        QVERIFY(!isSameFile(file, other) && !isSameFile(file, none));
        QVERIFY(isSameFile(none, none) && !isSameFile(none, folder.filePath(u"nothing"_s)));
    }

    TABLE(onlyPlainFilesAreRead, (const QString &kind), {
        for (const char *kind : {"pipe", "device", "folder", "link"})
            row(kind, kind);
    })
    {
        const QTemporaryDir folder;
        const QString elsewhere = write(folder.filePath(u"elsewhere"_s), "text");
        if (!makeOddity(kind, folder.filePath(u"odd"_s)))
            QSKIP("device-node: only root may make one");
        QVERIFY(!bytesOfSmallFile(folder.filePath(u"odd"_s), 4, Links::Refuse));
        QCOMPARE(bytesOfSmallFile(folder.filePath(u"odd"_s), 4).has_value(), kind == "link"_L1);
        QCOMPARE(bytesOfSmallFile(elsewhere, 4), QByteArray("text"));
        QVERIFY(!bytesOfSmallFile(elsewhere, 3));
    }

    void oneBadByteAnywhere()
    {
        QRandomGenerator random(2);
        const QByteArray text = QByteArray("\u20AC").repeated(kLarge / 3);
        for (int part = 1; part < 8; ++part) {
            QByteArray damaged = text;
            // Around the places where parts may meet.
            damaged[text.size() * part / 8 + random.bounded(-4, 5)] = 'a';
            QVERIFY(!isUtf8(damaged));
        }
        QVERIFY(isUtf8(text));
        QVERIFY(!isUtf8(text.chopped(1)));
    }

    void init()
    {
        m_path = m_folder.filePath(u"a.xml"_s);
        QFile::remove(m_path);
        write(m_path, "old text");
    }

    TABLE(notices, (const Act &act, Change change), {
        row(
            "longer", [](auto &path) { write(path, "another old text"); }, Change::Changed);
        row(
            "same length", [](auto &path) { write(path, "new text"); }, Change::Changed);
        row(
            "emptied", [](auto &path) { QFile::resize(path, 0); }, Change::Emptied);
        row(
            "replaced", [](auto &path) { replace(path, "their text"); }, Change::Replaced);
        row(
            "replaced by the same", [](auto &path) { replace(path, "old text"); }, Change::None);
        row(
            "removed", [](auto &path) { QFile::remove(path); }, Change::Removed);
        row(
            "moved away", [](auto &path) { QFile::rename(path, path + u".moved"_s); }, Change::Removed);
        row("touched", touch, Change::None);
        row(
            "written the same", [](auto &path) { write(path, "old text"); }, Change::None);
        row(
            "mode", [](auto &path) { QFile::setPermissions(path, QFile::ReadOwner); }, Change::None);
    })
    {
        FileWatch watch;
        watch.watch(m_path, FileState::of(m_path));
        QTRY_VERIFY(watch.knownHash());
        QSignalSpy changed(&watch, &FileWatch::changed);
        act(m_path);
        if (change == Change::None) {
            QTRY_VERIFY(watch.known() == FileState::of(m_path)); // it has looked
            QCOMPARE(changed.size(), 0);
        } else {
            QTRY_COMPARE(changed.size(), 1);
            QCOMPARE(changed.first().first().value<Change>(), change);
        }
        QCOMPARE(watch.change(), change);
        QFile::remove(m_path + u".moved"_s);

        // Asked before it noticed.
        init();
        FileWatch asked;
        asked.watch(m_path, FileState::of(m_path));
        QTRY_VERIFY(asked.knownHash());
        QSignalSpy told(&asked, &FileWatch::changed);
        act(m_path);
        QCOMPARE(asked.check(), change);
        QCOMPARE(asked.check(), change);
        QCOMPARE(told.size(), change == Change::None ? 0 : 1);
        asked.takeAsKnown();
        QCOMPARE(asked.check(), Change::None);
        QFile::remove(m_path + u".moved"_s);
    }

    void keepsWatchingWhatIsReplaced()
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

    void findsTheOldContentAgain()
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

    void leavesOwnSavesAlone()
    {
        FileWatch watch;
        watch.watch(m_path, FileState::of(m_path));
        QSignalSpy changed(&watch, &FileWatch::changed);
        write(m_path, "saved by ourselves");
        watch.takeAsKnown();
        // Notices come in their order: whoever has one of the other file had time for those before.
        const QString later = m_folder.filePath(u"later.xml"_s);
        write(later, "x");
        FileWatch other;
        other.watch(later, FileState::of(later));
        QSignalSpy otherChanged(&other, &FileWatch::changed);
        write(later, "xy");
        QTRY_COMPARE(otherChanged.size(), 1);
        QCOMPARE(changed.size(), 0);
        watch.watch({}, {});
        write(m_path, "nobody looks");
        write(later, "xyz");
        QTRY_COMPARE(otherChanged.size(), 2);
        QCOMPARE(changed.size(), 0);
        QCOMPARE(watch.check(), Change::None);
    }

    void noticesWhatHappenedWhileReading()
    {
        const FileState before = FileState::of(m_path);
        write(m_path, "changed while it was read");
        FileWatch watch;
        watch.watch(m_path, before);
        QSignalSpy changed(&watch, &FileWatch::changed);
        QTRY_COMPARE(changed.size(), 1);
        QVERIFY(!watch.knownHash()); // of a content that is gone
    }

    TABLE(tellsContentsApart, (const QByteArray &one, const QByteArray &other), {
        const QByteArray large = QByteArray("0123456789").repeated(200'000);
        row("nothing, a zero", QByteArray(), QByteArray(1, '\0'));
        row("zeros", QByteArray(8, '\0'), QByteArray(9, '\0'));
        row("order", "abcdefgh12345678", "12345678abcdefgh");
        row("last byte", large + 'a', large + 'b');
        row("first byte", 'a' + large, 'b' + large);
        row("beyond a block", large, large + large);
    })
    {
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

private:
    QTemporaryDir m_folder;
    QString m_path;
};

RUNEBOOK_TEST_MAIN(FilesTest)
#include "FilesTest.moc"
