// Large files are read and checked in parts: where these meet must never show.
#include "platform/CheckedFile.h"
#include "platform/FileBytes.h"
#include "platform/FilePath.h"
#include "tests/Oddities.h"
#include "tests/TestMain.h"

#include <QRandomGenerator>
#include <QTemporaryFile>
#include <QUtf8StringView>
#include <fcntl.h>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

constexpr qsizetype kLarge = 33'000'000; // enough for eight parts

} // namespace

class tst_FileBytes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyByteIsRead_data()
    {
        QTest::addColumn<qsizetype>("size");
        for (const qsizetype size : {qsizetype(0), qsizetype(1), qsizetype(8'388'608), kLarge})
            QTest::addRow("%lld bytes", size) << size;
    }
    void everyByteIsRead()
    {
        QFETCH(const qsizetype, size);
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

    void charactersAcrossParts_data()
    {
        QTest::addColumn<QByteArray>("character");
        QTest::newRow("two bytes") << QByteArray("\u00E9");
        QTest::newRow("three bytes") << QByteArray("\u20AC");
        QTest::newRow("four bytes") << QByteArray("\U0001D11E");
        QTest::newRow("a lone second byte") << QByteArray("\x80");
        QTest::newRow("a lone first byte") << QByteArray("\xC3");
    }
    void charactersAcrossParts()
    {
        QFETCH(const QByteArray, character);
        const QByteArray text = character.repeated(kLarge / character.size());
        for (int shift = 0; shift < 4; ++shift) {
            const QByteArray shifted = QByteArray(shift, 'a') + text;
            QCOMPARE(isUtf8(shifted), QUtf8StringView(shifted).isValidUtf8());
        }
    }

    void namesAreBytes()
    {
        QRandomGenerator random(3);
        for (int round = 0; round < 2'000; ++round) {
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

    void onlyPlainFilesAreRead_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char *kind : {"pipe", "device", "folder", "link"})
            QTest::newRow(kind) << QString::fromLatin1(kind);
    }
    void onlyPlainFilesAreRead()
    {
        QFETCH(const QString, kind);
        const QTemporaryDir folder;
        QFile elsewhere(folder.filePath(u"elsewhere"_s));
        QVERIFY(elsewhere.open(QIODevice::WriteOnly) && elsewhere.write("text") == 4 && elsewhere.flush());
        if (!makeOddity(kind, folder.filePath(u"odd"_s)))
            QSKIP("device-node: only root may make one");
        QVERIFY(!bytesOfSmallFile(folder.filePath(u"odd"_s), 4, Links::Refuse));
        QCOMPARE(bytesOfSmallFile(folder.filePath(u"odd"_s), 4).has_value(), kind == "link"_L1);
        QCOMPARE(bytesOfSmallFile(elsewhere.fileName(), 4), QByteArray("text"));
        QVERIFY(!bytesOfSmallFile(elsewhere.fileName(), 3));
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
};

RUNEBOOK_TEST_MAIN(tst_FileBytes)

#include "tst_filebytes.moc"
