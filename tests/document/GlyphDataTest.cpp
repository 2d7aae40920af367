#include "document/GlyphDataReader.h"
#include "document/GlyphDataWriter.h"
#include "document/GlyphLines.h"
#include "document/TabbedTable.h"
#include "document/VXDocument.h"
#include "tests/Files.h"
#include "tests/Rounds.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/model/PlainRecord.h"

#include <QRandomGenerator>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace runebook;

// Whole glyph data files: each file of tests/data/glyphdata is read and saved again. It comes out as
// NAME.saved.xml says, or as it was where there is none.

namespace {

const QString kFolder = QStringLiteral(RUNEBOOK_TEST_DATA "/glyphdata/");

/// Touches every record without changing it, so that each line is printed field by field.
void touchAll(VXDocument &document)
{
    for (const InfoPtr &info : document.infos())
        info->setScript(info->script());
}

} // namespace

// Large files are read in stretches by several threads: how many there are must never show.

namespace {

/// Everything that a reading gives, as one text.
QByteArray pictureOf(const GlyphLines &lines)
{
    QString text;
    for (const InfoPtr &info : lines.infos) {
        text += info->lineXMLFormatVersion(2);
        text += info->unchangedLine(1).empty() ? u'-' : u'1';
        text += info->unchangedLine(2).empty() ? u'-' : u'2';
    }
    for (const ReadNotes::Note &note : lines.notes.notes)
        text += u"\n%1 %2 %3"_s.arg(note.kind).arg(note.record).arg(note.text);
    for (const qsizetype count : lines.notes.counts)
        text += u" %1"_s.arg(count);
    QStringList unknown;
    for (const auto &[key, value] : lines.notes.unknownAttributes)
        unknown << key + u'=' + value;
    return (text + unknown.join(u' ')
            + u" %1 %2"_s.arg(lines.versionHint).arg(lines.notes.hasCarriageReturns))
        .toUtf8();
}

QByteArray randomFile(QRandomGenerator &random)
{
    const QByteArrayList pieces {
        "\t<glyph unicode=\"0041\" name=\"A\" category=\"Letter\" />\n",
        "\t<glyph name=\"B\" case=\"upper\" description=\"\u00E9\" />\n",
        "\t<glyph name=\"C\" accents=\"top\" /> \r\n",
        "\t<glyph name=\"D\" size=\"1\" />\n",
        "\t<glyph name=\"E\" unicode=\"0041\" unicode2=\"0042\" unicode3=\"0043\" />\n",
        "<glyph category=\"Mark\" <!-- here --> name=\"F\" />\n",
        "some other line\n",
        "<!-- a comment\n",
        "in lines -->\n",
        "\n",
    };
    QByteArray file = "<glyph name=\"first\" />\n";
    for (int i = random.bounded(60); i > 0; --i)
        file += pieces.at(random.bounded(pieces.size()));
    return random.bounded(4) ? file : file.chopped(1);
}

} // namespace

// Tables: each file of tests/data/tables is read; NAME.expected has one line for each record, or the error.

namespace {

const QString kTables = QStringLiteral(RUNEBOOK_TEST_DATA "/tables/");
const QByteArray kExportHeader = "unicode\tname\tsortName\tsortNameKeep\tdecompose\tcategory\tsubCategory\t"
                                 "script\tproduction\taltNames\tdesc\tanchors\taccents\n";

} // namespace

/// Whole files: each of tests/data/glyphdata is read and saved again and comes out as NAME.saved.xml says, or
/// as it was where there is none; files of random lines; tables.
class GlyphDataTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    TABLE(savesAsExpected, (const QString &name), {
        const QStringList files = QDir(kFolder).entryList({u"*.xml"_s}, QDir::Files, QDir::Name);
        QVERIFY(files.size() > 40);
        for (const QString &file : files) {
            if (!file.endsWith(u".saved.xml"_s))
                row(file, file.chopped(4));
        }
    })
    {
        const QString source = kFolder + name + u".xml"_s;
        const QString saved = kFolder + name + u".saved.xml"_s;
        const QByteArray expected = contentOf(QFile::exists(saved) ? saved : source);

        const QTemporaryDir folder;
        const QString copy = folder.filePath(u"copy.xml"_s);
        QVERIFY(QFile::copy(source, copy));
        VXDocument document;
        QVERIFY(document.readFromURLOfType(copy, u"public.xml"_s));
        QVERIFY(document.readError().domain.isEmpty());
        // Nothing is told exactly where the file comes out as it was, but for an end that was missing.
        if (contentOf(source).endsWith("</glyphData>\n") && document.countOfInfos() > 0)
            QCOMPARE(document.savingWillChange().isEmpty(), expected == contentOf(source));
        Error error;
        QVERIFY2(document.writeToURLOfType(copy, u"public.xml"_s, &error), qPrintable(error.text()));
        QCOMPARE(contentOf(copy), expected);

        touchAll(document);
        QVERIFY(document.writeToURLOfType(copy, u"public.xml"_s));
        QCOMPARE(contentOf(copy), expected);
        document.undoManager()->undo();
        QVERIFY(document.writeToURLOfType(copy, u"public.xml"_s));
        QCOMPARE(contentOf(copy), expected);

        // Saving twice changes nothing more.
        // A case without word is lost the second time: it is written as a word that nothing reads.
        if (name == u"case-other")
            return;
        const auto written = [](const QByteArray &bytes) {
            GlyphDataReader reader;
            const InfoList infos = reader.read(bytes);
            std::string text;
            const BlockSink sink = [&text](std::string_view block) {
                text += block;
                return true;
            };
            GlyphDataWriter(infos, reader.fileVersion())(sink, nullptr);
            return QByteArray::fromStdString(text);
        };
        const QByteArray once = written(contentOf(kFolder + name + u".xml"_s));
        QCOMPARE(written(once), once);
    }

    void writesTheRecordOfEveryVersion()
    {
        VXDocument document;
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"a.xml"_s);
        const InfoPtr info = VXGlyphInfo::init();
        info->setUnicode(u"0041"_s);
        info->setMarks(u"m"_s);
        document.addInfo(info);
        QCOMPARE(document.fileVersion(), 2);
        for (const int version : {0, 1, 2, 3}) {
            document.setFileVersion(version);
            QVERIFY(document.writeToURLOfType(path, u"public.xml"_s));
            const QString empty = version == 1 ? u"empty-version1.xml"_s : u"empty.xml"_s;
            const QByteArray line = PlainRecord::of(*info).line(version).toUtf8();
            QCOMPARE(contentOf(path),
                     contentOf(kFolder + empty).replace("</glyphData>", line + "</glyphData>"));
        }
    }

    TABLE(refusesWhatIsNoText, (const QByteArray &bytes), {
        row("single byte", QByteArray("<glyph name=\"\xFF\" />"));
        row("UTF-16", QByteArray("\xFF\xFE<\0g\0", 6));
    })
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"a.xml"_s);
        write(path, bytes);
        VXDocument document;
        Error error;
        QVERIFY(!document.readXMLFromURL(path, &error));
        QVERIFY(!error.description.isEmpty() && !error.failureReason.isEmpty());
        // Opened, it is an empty document that knows why.
        document.addInfo(VXGlyphInfo::init());
        QVERIFY(document.readFromURLOfType(path, u"public.xml"_s));
        QCOMPARE(document.countOfInfos(), 0);
        QCOMPARE(document.readError().domain, error.domain);
        QCOMPARE(contentOf(path), bytes);
    }

    void writesNothingElse()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"a.xml"_s);
        VXDocument document;
        Error error;
        QVERIFY(!document.writeToURLOfType(path, u"public.jpeg"_s, &error));
        QVERIFY(error.domain.isEmpty());
        QVERIFY(!QFile::exists(path));
        QVERIFY(!document.readFromURLOfType(kFolder + u"version2.xml"_s, u"public.jpeg"_s));
        QCOMPARE(document.countOfInfos(), 0);
        QCOMPARE(document.autosavingFileType(), u"public.xml"_s);
        QVERIFY(!document.autosavesInPlace());
        QCOMPARE(document.windowNibName(), u"VXDocument_11"_s);
    }

    void stretchesNeverShow()
    {
        QRandomGenerator random(20);
        for (int round = 0; round < rounds(300); ++round) {
            const QByteArray file = randomFile(random);
            const std::size_t mostNotes = random.bounded(2) ? 1000 : std::size_t(random.bounded(8));
            const QByteArray expected = pictureOf(readGlyphLines(file, 0, 1, mostNotes));
            for (const int stretches : {2, 3, 7, 1000})
                QCOMPARE(pictureOf(readGlyphLines(file, 0, stretches, mostNotes)), expected);
        }
    }

    TABLE(reads, (const QString &name), {
        for (const QString &file : QDir(kTables).entryList({u"*.txt"_s}, QDir::Files, QDir::Name))
            row(file, file.chopped(4));
    })
    {
        VXDocument document;
        Error error;
        const std::optional<InfoList> infos = document.readTabbedFromURL(kTables + name + u".txt"_s, &error);
        QString result;
        if (!infos) {
            result = u"error: %1/%2 %3"_s.arg(error.domain).arg(error.code).arg(error.recoverySuggestion);
            // The words for short lines and files that are no text are the program's own.
            if (name == u"too-few-fields" || name == u"not-utf8")
                result = result.section(u' ', 0, 1);
            result += u'\n';
        } else {
            for (const InfoPtr &info : *infos)
                result += PlainRecord::of(*info).toString() + u'\n';
        }
        QCOMPARE(result, QString::fromUtf8(contentOf(kTables + name + u".expected"_s)));
    }

    void opensLeniently()
    {
        VXDocument document;
        document.addInfo(VXGlyphInfo::init());
        document.setFileVersion(1); // which a table leaves
        const QTemporaryDir folder;
        const QString invalid = write(folder.filePath(u"a.txt"_s), "name\tindex\nA\t1\n");
        QVERIFY(document.readFromURLOfType(invalid, u"public.plain-text"_s));
        QCOMPARE(document.countOfInfos(), 0);
        QCOMPARE(document.readError().recoverySuggestion,
                 u"The tabbed file contains an invalid field: index"_s);
        QVERIFY(document.readFromURLOfType(kTables + u"usual.txt"_s, u"public.plain-text"_s));
        QCOMPARE(document.countOfInfos(), 2);
        QCOMPARE(document.fileVersion(), 1);
        QCOMPARE(document.objectInInfosAtIndex(1)->document(), &document);
        QVERIFY(document.readError().domain.isEmpty());
        QVERIFY(!document.undoManager()->canUndo() || document.undoManager()->stack()->count() == 0);
    }

    void reportsUnknownKeysOnce()
    {
        QSignalSpy presented(&ErrorPresenter::shared(), &ErrorPresenter::presented);
        const QByteArray table = "name\tcolour\nA\tred\nB\tblue\n";
        QCOMPARE(TabbedReader().read(table)->size(), 2u);
        QTRY_COMPARE(presented.size(), 1);
        QCOMPARE(presented.first().first().value<Error>().failureReason,
                 u"There is an unknown entry in the file: colour = test"_s);
        QVERIFY(TabbedReader().read(table));
        QCoreApplication::processEvents();
        QCOMPARE(presented.size(), 1);
    }

    void saysWhichLineIsShort()
    {
        for (const QByteArray &end : {"\n"_ba, "\r\n"_ba, "\r"_ba}) {
            Error error;
            QVERIFY(
                !TabbedReader().read(QByteArray("name\tunicode\nA\t41\n\nBb\n").replace("\n", end), &error));
            QVERIFY2(error.description.startsWith(u"Line 4 "_s), qPrintable(error.description));
        }
    }

    void readsLargeTablesInParts()
    {
        constexpr int kRows = 400'000; // enough for every processor
        QByteArray table = "name\tdesc\n";
        for (int i = 0; i < kRows; ++i)
            table += "g" + QByteArray::number(i) + "\tsome words on it, \u00E9 \u20AC\n";
        const auto infos = TabbedReader().read(table);
        QCOMPARE(infos->size(), std::size_t(kRows));
        for (int i = 0; i < kRows; i += 991)
            QCOMPARE(infos->at(static_cast<std::size_t>(i))->name(), u"g%1"_s.arg(i));

        // The first of two short lines is told, with its number in the whole file, an empty line counted.
        table.replace("g399000\t", "g399000 ");
        table.replace("g200000\t", "\ng200000 ");
        Error error;
        QVERIFY(!TabbedReader().read(table, &error));
        QVERIFY2(error.description.contains(u"200003"_s), qPrintable(error.description));
    }

    void writesAnEmptyDocument()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"a.txt"_s);
        VXDocument document;
        QVERIFY(document.writeToURLOfType(path, u"public.plain-text"_s));
        QCOMPARE(contentOf(path), kExportHeader);
    }

    void failsToWriteRecords()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"a.txt"_s);
        VXDocument document;
        document.addInfo(VXGlyphInfo::init());
        for (const bool isThere : {false, true}) {
            if (isThere) {
                write(path, "old");
            }
            Error error;
            QVERIFY(!document.writeToURLOfType(path, u"public.plain-text"_s, &error));
            QVERIFY2(error.description.contains(u"accents"_s), qPrintable(error.description));
            QCOMPARE(contentOf(path), isThere ? QByteArray("old") : QByteArray("(unreadable)"));
            QVERIFY(document.isDocumentEdited());
        }
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList {u"a.txt"_s});
    }

    void readsItsOwnColumns()
    {
        // What the other twelve columns print reads back as it was.
        QStringList keys = QString::fromLatin1(kExportHeader).trimmed().split(u'\t');
        keys.removeLast();
        const InfoPtr info = VXGlyphInfo::init();
        info->setUnicode(u"1F600"_s);
        info->setAltNames(u"x, y"_s);
        for (const QString &key : keys) {
            if (key != u"unicode" && key != u"altNames")
                info->setValueForKey(QString(u"v "_s + key), key);
        }
        const QString line = info->lineTabbed(keys);
        QCOMPARE(line,
                 u"0x1F600\tv name\tv sortName\tv sortNameKeep\tv decompose\tv category\tv subCategory\t"
                 "v script\tv production\tx, y\tv desc\tv anchors"_s);
        const auto read = TabbedReader().read((keys.join(u'\t') + u'\n' + line).toUtf8());
        QCOMPARE(PlainRecord::of(*read->front()).toString(), PlainRecord::of(*info).toString());
        QCOMPARE(read->front()->unicodeChar(), 0x1F600u);
    }
};

RUNEBOOK_TEST_MAIN(GlyphDataTest)
#include "GlyphDataTest.moc"
