// Large files are read and checked in parts: where these meet must never show.
#include "platform/FileBytes.h"
#include "tests/TestMain.h"

#include <QRandomGenerator>
#include <QTemporaryFile>
#include <QUtf8StringView>

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
        QVERIFY(bytesOfFile(file, &reason) == content);
    }

    void failureHasAReason()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        QFile writeOnly(file.fileName());
        QVERIFY(file.resize(100));
        QVERIFY(writeOnly.open(QIODevice::WriteOnly | QIODevice::Append));
        QString reason;
        QVERIFY(!bytesOfFile(writeOnly, &reason));
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
