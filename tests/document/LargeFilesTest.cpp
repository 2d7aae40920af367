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

} // namespace

using Make = std::function<QByteArray()>;

class LargeFilesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    // times: the size of the file that reading may take besides
    TABLE(readsInProportion, (int records, int times, const Make &make), {
        row("one value of 100 MB", 1, 4,
            [] { return "<glyph name=\"" + QByteArray(100 * kMega, 'a') + "\" />"; });
        row("one line of 100 MB without end", 1, 4,
            [] { return "<glyph name=\"" + QByteArray(100 * kMega, 'a'); });
        row("100 MB of non-ASCII", 1, 4,
            [] { return "<glyph name=\"" + QByteArray("é").repeated(50 * kMega); });
        row("100 MB of NUL", 1, 4, [] { return "<glyph " + QByteArray(100 * kMega, '\0'); });
        row("100 MB of blanks", 1, 2, [] { return "<glyph a" + QByteArray(100 * kMega, ' ') + "b"; });
        row("20 MB of wide blanks", 1, 2,
            [] { return "<glyph a" + QByteArray("\u2003").repeated(7 * kMega) + "b"; });
        row("100 MB of quotes", 1, 2, [] { return "<glyph " + QByteArray(100 * kMega, '"'); });
        row("20 MB of equals signs", 1, 2, [] { return "<glyph " + QByteArray(20 * kMega, '='); });
        row("no glyph in 100 MB", 0, 1, [] { return QByteArray("<glyph").repeated(16 * kMega); });
        row("a comment of 100 MB", 1, 4,
            [] { return "<glyph name=\"a\" <!--" + QByteArray("<!-- ").repeated(20 * kMega) + "--> />"; });
        // As much as the records would take that the comment hides: threads read ahead before it is known.
        row("a comment that never ends", 1, 30,
            [] { return "<glyph name=\"a\" /><!--\n" + QByteArray("<glyph />\n").repeated(10 * kMega); });
        row("comment marks in one line", 1, 4,
            [] { return "<glyph name=\"a\" " + QByteArray("--><!--").repeated(3 * kMega); });
        row("a comment mark in every line", 400'000, 30,
            [] { return QByteArray("<glyph name=\"a\" /><!-- -->\n").repeated(400'000); });
        row("10^6 unknown attributes, one key", 1, 4,
            [] { return "<glyph " + QByteArray("zoo=\"abc\" ").repeated(kMega) + "/>"; });
        row("10^6 unknown attributes, as many keys", 1, 4, [] {
            QByteArray line = "<glyph ";
            for (int i = 0; i < kMega; ++i)
                line += "key" + QByteArray::number(i) + "=\"v\" ";
            return line + "/>";
        });
        row("10^6 attributes of one field", 1, 4,
            [] { return "<glyph " + QByteArray("name=\"abc\" ").repeated(kMega) + "/>"; });
        row("10^6 code points", 1, 20,
            [] { return "<glyph " + QByteArray("unicode2=\"0041\" ").repeated(kMega) + "/>"; });
        row("10^6 code points in one value", 1, 60,
            [] { return "<glyph unicodes=\"" + QByteArray("0041,").repeated(kMega) + "\" />"; });
        row("10^6 other lines", 1, 4,
            [] { return "<glyph />\n" + QByteArray("some text\n").repeated(kMega); });
        row("10^6 line feeds", 1, 20, [] { return "<glyph />\n" + QByteArray(kMega, '\n'); });
    })
    {
        const QByteArray bytes = make();
        forgetPeak();
        const qint64 before = peakMemory();
        GlyphDataReader reader;
        const InfoList infos = reader.read(bytes);
        QCOMPARE(int(infos.size()), records);
        const qint64 taken = peakMemory() - before;
        QVERIFY2(taken <= bytes.size() * times + (8 << 20),
                 qPrintable(u"%1 MB for %2 MB"_s.arg(taken >> 20).arg(bytes.size() >> 20)));
    }

    // records: -1: an error
    TABLE(readsTablesInProportion, (int records, int times, const Make &make), {
        row("a header of 10^7 tabs", 0, 8, [] { return QByteArray(10 * kMega, '\t'); });
        row("10^7 keys and values", 1, 8,
            [] { return QByteArray(10 * kMega, '\t') + '\n' + QByteArray(10 * kMega, '\t') + '\n'; });
        row("a header of 100 MB", -1, 4, [] { return QByteArray(100 * kMega, 'a'); });
        row("a value of 100 MB", 1, 4, [] { return "name\tdesc\nA\t" + QByteArray(100 * kMega, 'b'); });
        row("a value of quotes", 1, 2, [] { return "name\tdesc\nA\t" + QByteArray(100 * kMega, '"'); });
        row("10^6 invalid keys", -1, 40, [] { return QByteArray("case\t").repeated(kMega); });
        row("10^7 line ends", 0, 2, [] { return "name\tdesc\n" + QByteArray(10 * kMega, '\v'); });
        row("100 MB without line feed", 1, 2,
            [] { return "name\tdesc\rA\t" + QByteArray("\xE2\x80\xA7").repeated(33 * kMega); });
        row("100 MB of NUL", -1, 4, [] { return QByteArray(100 * kMega, '\0'); });
    })
    {
        const QByteArray bytes = make();
        forgetPeak();
        const qint64 before = peakMemory();
        Error error;
        const std::optional<InfoList> infos = TabbedReader().read(bytes, &error);
        QCOMPARE(infos ? int(infos->size()) : -1, records);
        const qint64 taken = peakMemory() - before;
        QVERIFY2(taken <= bytes.size() * times + (8 << 20),
                 qPrintable(u"%1 MB for %2 MB"_s.arg(taken >> 20).arg(bytes.size() >> 20)));
    }

    void tellsOfManyUnknownKeysInOneLine()
    {
        int presented = 0;
        connect(&ErrorPresenter::shared(), &ErrorPresenter::presented, this, [&presented] { ++presented; });
        constexpr int kKeys = 200'000;
        QByteArray line("<glyph name=\"a\" ");
        for (int i = 0; i < kKeys; ++i)
            line += "key" + QByteArray::number(i) + "=\"v\" ";
        const QByteArray bytes = (line + "/>\n").repeated(2);
        GlyphDataReader reader;
        QCOMPARE(reader.read(bytes).size(), 2u);
        QTRY_COMPARE(presented, 1); // with their number: a line for each would bury what matters
        QCOMPARE(reader.notes().count(ReadNotes::UnknownAttribute), 2 * kKeys);
        QVERIFY(reader.notes().notes.size() <= 1'000);
        reader.read(bytes);
        QCoreApplication::processEvents();
        QCOMPARE(presented, 2); // once for each reading
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
            bytes += "\t<glyph unicode=\"" + QByteArray::number(random.bounded(65536), 16).toUpper()
                + "\" name=\"n" + QByteArray::number(bytes.size()) + '"';
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
