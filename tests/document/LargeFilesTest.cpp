// Files that are large or strange in ways that a person does not write by hand: read in proportion to their
// size, and as the plain reader reads them.
#include "document/GlyphDataReader.h"
#include "document/TabbedTable.h"
#include "document/VXDocument.h"
#include "tests/Files.h"
#include "tests/Rounds.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/document/PlainFile.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardPaths>
#include <malloc.h>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

/// The most memory this process had so far, in bytes; 0 where the sanitizers count their own as well.
qint64 peakMemory()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return 0;
#else
    for (const QByteArray &line : contentOf(u"/proc/self/status"_s).split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').first().toLongLong() * 1024;
    }
    return 0;
#endif
}

// The rows are called by the sizes of tools/long; otherwise they are a quarter of that.
const int kMega = isLongProof() ? 1'000'000 : 250'000;

void forgetPeak()
{
    malloc_trim(0);
    QFile file(u"/proc/self/clear_refs"_s);
    if (file.open(QIODevice::WriteOnly))
        file.write("5");
}

/// What reading takes is at most so many \a times the size of the file, which is \a text with all that stands
/// behind odd bars repeated; "%0" is a NUL there and "%1" a number.
void checkMemory(const QByteArray &text, int count, int times,
                 const std::function<void(const QByteArray &)> &read)
{
    QByteArray bytes;
    const QByteArrayList parts = text.split('|');
    for (qsizetype i = 0; i < parts.size(); ++i) {
        if (i % 2 == 0)
            bytes += parts[i];
        else if (!parts[i].contains("%1"))
            bytes += QByteArray(parts[i]).replace("%0", QByteArray(1, '\0')).repeated(count);
        for (int number = 0; number < count && parts[i].contains("%1"); ++number)
            bytes += QByteArray(parts[i]).replace("%1", QByteArray::number(number));
    }
    forgetPeak();
    const qint64 before = peakMemory();
    read(bytes);
    const qint64 taken = peakMemory() - before;
    QVERIFY2(taken <= bytes.size() * times + (8 << 20),
             qPrintable(u"%1 MB for %2 MB"_s.arg(taken >> 20).arg(bytes.size() >> 20)));
}

} // namespace

class LargeFilesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    // times: the size of the file that reading may take besides
    // text: before "|" and behind the second one, and between them what is repeated
    TABLE(readsInProportion, (int records, int times, const QByteArray &text, int count), {
        row("one value of 100 MB", 1, 4, "<glyph name=\"|a|\" />", 100 * kMega);
        row("one line of 100 MB without end", 1, 4, "<glyph name=\"|a|", 100 * kMega);
        row("100 MB of non-ASCII", 1, 4, "<glyph name=\"|é|", 50 * kMega);
        row("100 MB of NUL", 1, 4, "<glyph |%0|", 100 * kMega);
        row("100 MB of blanks", 1, 2, "<glyph a| |b", 100 * kMega);
        row("20 MB of wide blanks", 1, 2, "<glyph a|\u2003|b", 7 * kMega);
        row("100 MB of quotes", 1, 2, "<glyph |\"|", 100 * kMega);
        row("20 MB of equals signs", 1, 2, "<glyph |=|", 20 * kMega);
        row("no glyph in 100 MB", 0, 1, "|<glyph|", 16 * kMega);
        row("a comment of 100 MB", 1, 4, "<glyph name=\"a\" <!--|<!-- |--> />", 20 * kMega);
        // As much as the records would take that the comment hides: threads read ahead before it is known.
        row("a comment that never ends", 1, 30, "<glyph name=\"a\" /><!--\n|<glyph />\n|", 10 * kMega);
        row("comment marks in one line", 1, 4, "<glyph name=\"a\" |--><!--|", 3 * kMega);
        row("a comment mark in every line", 400'000, 30, "|<glyph name=\"a\" /><!-- -->\n|", 400'000);
        row("10^6 unknown attributes, one key", 1, 4, "<glyph |zoo=\"abc\" |/>", kMega);
        row("10^6 unknown attributes, as many keys", 1, 4, "<glyph |key%1=\"v\" |/>", kMega);
        row("10^6 attributes of one field", 1, 4, "<glyph |name=\"abc\" |/>", kMega);
        row("10^6 code points", 1, 20, "<glyph |unicode2=\"0041\" |/>", kMega);
        row("10^6 code points in one value", 1, 60, "<glyph unicodes=\"|0041,|\" />", kMega);
        row("10^6 other lines", 1, 4, "<glyph />\n|some text\n|", kMega);
        row("10^6 line feeds", 1, 20, "<glyph />\n|\n|", kMega);
    })
    {
        checkMemory(text, count, times, [records](const QByteArray &bytes) {
            QCOMPARE(int(GlyphDataReader().read(bytes).size()), records);
        });
    }

    // records: -1: an error
    TABLE(readsTablesInProportion, (int records, int times, const QByteArray &text, int count), {
        row("a header of 10^7 tabs", 0, 8, "|\t|", 10 * kMega);
        row("10^7 keys and values", 1, 8, "|\t|\n|\t|\n", 10 * kMega);
        row("a header of 100 MB", -1, 4, "|a|", 100 * kMega);
        row("a value of 100 MB", 1, 4, "name\tdesc\nA\t|b|", 100 * kMega);
        row("a value of quotes", 1, 2, "name\tdesc\nA\t|\"|", 100 * kMega);
        row("10^6 invalid keys", -1, 40, "|case\t|", kMega);
        row("10^7 line ends", 0, 2, "name\tdesc\n|\v|", 10 * kMega);
        row("100 MB without line feed", 1, 2, "name\tdesc\rA\t|\u2027|", 33 * kMega);
        row("100 MB of NUL", -1, 4, "|%0|", 100 * kMega);
    })
    {
        checkMemory(text, count, times, [records](const QByteArray &bytes) {
            Error error;
            const std::optional<InfoList> infos = TabbedReader().read(bytes, &error);
            QCOMPARE(infos ? int(infos->size()) : -1, records);
        });
    }

    void tellsOfManyUnknownKeysInOneLine()
    {
        const QSignalSpy presented(&ErrorPresenter::shared(), &ErrorPresenter::presented);
        constexpr int kKeys = 200'000;
        QByteArray line("<glyph name=\"a\" ");
        for (int i = 0; i < kKeys; ++i)
            line += "key" + QByteArray::number(i) + "=\"v\" ";
        const QByteArray bytes = (line + "/>\n").repeated(2);
        GlyphDataReader reader;
        QCOMPARE(reader.read(bytes).size(), 2u);
        QTRY_COMPARE(presented.size(), 1); // with their number: a line for each would bury what matters
        QCOMPARE(reader.notes().count(ReadNotes::UnknownAttribute), 2 * kKeys);
        QVERIFY(reader.notes().notes.size() <= 1'000);
        reader.read(bytes);
        QCoreApplication::processEvents();
        QCOMPARE(presented.size(), 2); // once for each reading
        QCOMPARE(presented.first().first().value<Error>().failureReason,
                 u"There are 400000 unknown entries in the file, the first: key0 = v"_s);
    }

    TABLE(agreesOnLargeFiles, (const QByteArray &comments), {
        row("without comments", QByteArray());
        row("comments in lines", "<!-- c -->");
        row("comments over lines", "<!-- c\n\n<glyph name=\"lost\" /> -->");
        row("a comment over most", "<!--");
    })
    {
        // Large enough to be read in several stretches, which comments may span.
        QRandomGenerator random(5);
        QByteArray bytes = "<glyphData>\n";
        while (bytes.size() < 9'000'000) {
            bytes += (random.bounded(500) ? "\t" : "\u0085") + "<glyph unicode=\""_ba
                + QByteArray::number(random.bounded(65536), 16).toUpper() + "\" name=\"n"
                + QByteArray::number(bytes.size()) + '"';
            if (random.bounded(8) == 0)
                bytes += " description=\"é" + QByteArray(random.bounded(300), 'd') + "\"";
            if (random.bounded(2'000) == 0)
                bytes += random.bounded(2) ? " accents=\"m\"" : " case=\"upper\"";
            bytes += " />";
            if (random.bounded(3) == 0 && (comments != "<!--" || bytes.size() > 3'000'000))
                bytes += comments;
            bytes += random.bounded(50) ? "\n" : "\r\n";
        }
        GlyphDataReader reader;
        const InfoList infos = reader.read(bytes);
        const PlainFile expected = PlainFile::ofText(QString::fromUtf8(bytes));
        QCOMPARE(int(reader.fileVersion()), expected.version);
        QCOMPARE(infos.size(), expected.records.size());
        for (std::size_t i = 0; i < infos.size(); ++i) {
            const PlainRecord record = PlainRecord::of(*infos[i]);
            QVERIFY2(record == expected.records[i],
                     qPrintable(record.toString() + u'\n' + expected.records[i].toString()));
        }
    }

    TABLE(roundTripsTheCorpus, (int version), {
        row("version 1", 1);
        row("version 2", 2);
    })
    {
        const QString python = QStandardPaths::findExecutable(u"python3"_s);
        QVERIFY(!python.isEmpty());
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"corpus.xml"_s);
        QProcess maker;
        maker.start(python,
                    {QStringLiteral(RUNEBOOK_SOURCE_DIR "/tools/make_glyph_corpus.py"), u"--records"_s,
                     u"3000"_s, u"--version"_s, QString::number(version), u"--ascii"_s, u"--out"_s, path});
        QVERIFY(maker.waitForFinished(120'000));
        QVERIFY2(maker.exitCode() == 0, maker.readAllStandardError().constData());
        const QByteArray read = contentOf(path);
        QCOMPARE(read.count("\t<glyph "), 3'000);
        // Of a third code point the writer makes the second one again.
        static const QRegularExpression third(u" unicode2=\"(\\w+)\" unicode3=\"\\w+\""_s);
        const QByteArray original =
            QString::fromUtf8(read).replace(third, u" unicode2=\"\\1\" unicode3=\"\\1\""_s).toUtf8();

        VXDocument document;
        const auto saved = [&] {
            const bool isSaved = document.writeToURLOfType(path, u"public.xml"_s);
            return isSaved ? contentOf(path) : QByteArray("(not saved)");
        };
        QVERIFY(document.readFromURLOfType(path, u"public.xml"_s));
        QCOMPARE(document.countOfInfos(), 3'000);
        QCOMPARE(document.fileVersion(), version);
        QVERIFY2(saved() == original, "saved as it was read");

        // The edited line, found in the file itself.
        const InfoPtr info = document.objectInInfosAtIndex(1'234);
        const QByteArray name = " name=\"" + info->name().toUtf8() + '"';
        QCOMPARE(original.count(name), 1);
        QByteArray edited = original;
        edited.replace(name, " name=\"edited\"");
        info->setName(u"edited"_s);
        QVERIFY2(saved() == edited, "one name edited");
        document.undoManager()->undo();
        QVERIFY2(saved() == original, "undone");
        document.undoManager()->redo();
        QVERIFY2(saved() == edited, "redone");
        document.undoManager()->undo();
        for (const InfoPtr &each : document.infos())
            each->setScript(each->script());
        QVERIFY2(saved() == original, "every line printed field by field");
        // Nothing but third code points was lost, and each of these was noted.
        QCOMPARE(document.readNotes().count(ReadNotes::CodePoints), read.count(" unicode3="));
        QCOMPARE(std::ssize(document.readNotes().notes), read.count(" unicode3="));
    }
};

RUNEBOOK_TEST_MAIN(LargeFilesTest)
#include "LargeFilesTest.moc"
