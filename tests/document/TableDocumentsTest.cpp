// Documents that are tables: opened, saved as the tables that they are, restored and read again.
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/document/DocumentFiles.h"

using namespace runebook;

namespace {

const QByteArray kTable = "\"Name\";unicode;note;case\r\n"
                          "A;0041;\"x; y\";\r\n"
                          "\r\n"
                          "\"B\";U+0042;;upper\r\n"
                          "C;;last;";

QStringList lossesOf(const VXDocument &document, const QString &type)
{
    return document.savingLosses(type).lines(9);
}

} // namespace

class TableDocumentsTest : public DocumentFiles
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        DocumentFiles::initTestCase();
        controller().addType({kCsv, {u"csv"_s}, u"Comma"_s});
    }
    void init()
    {
        DocumentFiles::init();
        qputenv("XDG_DATA_HOME", QFile::encodeName(path(u"data"_s)));
        write(path(u"a.csv"_s), kTable);
    }

    /// What was edited is all that a save changes; what is new stands there in the table's own manner.
    void savesTheTableThatItIs()
    {
        VXDocument *document = openDocument(path(u"a.csv"_s));
        QCOMPARE(document->countOfInfos(), 3);
        document->noteSilentChange();
        save(*document);
        QCOMPARE(contentOf(path(u"a.csv"_s)), kTable);

        document->objectInInfosAtIndex(1)->setUnicodes({u"0042"_s, u"1F600"_s});
        document->objectInInfosAtIndex(0)->setName(u"A\""_s);
        const InfoPtr added = VXGlyphInfo::init();
        added->setName(u"new"_s);
        added->setUnicode(u"004E"_s);
        document->addInfo(added);
        QVERIFY(lossesOf(*document, kCsv).isEmpty());
        save(*document);
        QByteArray expected = QByteArray(kTable).replace("A;", "\"A\"\"\";").replace("U+0042", "0042, 1F600");
        QCOMPARE(contentOf(path(u"a.csv"_s)), expected + "\r\nnew;004E;;");
        for (int i = 0; i < 3; ++i)
            document->undoManager()->undo();
        save(*document);
        QCOMPARE(contentOf(path(u"a.csv"_s)), kTable);
        document->removeObjectFromInfosAtIndex(0);
        save(*document);
        QCOMPARE(contentOf(path(u"a.csv"_s)), QByteArray(kTable).replace("A;0041;\"x; y\";\r\n\r\n", ""));
    }

    /// A value without a column is told before it is lost, once; glyph data keeps it, and lacks the column.
    void tellsOnceWhatATableLacks()
    {
        VXDocument *document = openDocument(path(u"a.csv"_s));
        const InfoPtr info = document->objectInInfosAtIndex(0);
        info->setScript(u"latin"_s);
        const QStringList lost {u"A: Script would be lost: the table has no column for it."_s};
        QCOMPARE(lossesOf(*document, kCsv), lost);
        Error error;
        QVERIFY(!document->saveDocument(&error));
        QCOMPARE(error.domain, u"SavingLossesError"_s);
        QCOMPARE(document->fixSavingLosses(), 0);
        document->acceptSavingLosses();
        save(*document);
        QCOMPARE(contentOf(path(u"a.csv"_s)), kTable);
        document->objectInInfosAtIndex(2)->setName(u"D"_s);
        save(*document);

        const QStringList columns {
            u"The table: The column “note” is left out: it is no field of glyph data."_s};
        QCOMPARE(lossesOf(*document, kXml), columns);
        document->acceptSavingLosses();
        QVERIFY2(document->saveToURLOfType(path(u"a.xml"_s), kXml, &error), qPrintable(error.text()));
        QVERIFY(contentOf(path(u"a.xml"_s)).contains("name=\"A\" script=\"latin\""));
        VXDocument read;
        QVERIFY(read.readFromURLOfType(path(u"a.xml"_s), kXml));
        QCOMPARE(read.countOfInfos(), 3);
    }

    /// Any document becomes a table, and a table one with another separator.
    void savesAsTables()
    {
        write(path(u"a.xml"_s),
              "<glyphData>\n<glyph unicode=\"0041\" name=\"A\" altNames=\"a, b\" />\n</glyphData>\n");
        Error error;
        VXDocument *document = openDocument(path(u"a.xml"_s));
        QVERIFY2(document->saveToURLOfType(path(u"b.csv"_s), kCsv, &error), qPrintable(error.text()));
        QVERIFY(contentOf(path(u"b.csv"_s)).startsWith("name,unicode,category,"));
        QVERIFY(contentOf(path(u"b.csv"_s)).contains("\nA,0x0041,"));
        QVERIFY(contentOf(path(u"b.csv"_s)).contains(",\"a, b\","));
        QCOMPARE(document->fileType(), kCsv);
        VXDocument *table = openDocument(path(u"a.csv"_s));
        QVERIFY(table->saveToURLOfType(path(u"c.txt"_s), kTxt, &error));
        QCOMPARE(contentOf(path(u"c.txt"_s)),
                 "Name\tunicode\tnote\tcase\r\nA\t0041\tx; y\t\r\nB\t0042\t\tupper\r\nC\t\tlast\t");
        // The export of scripts is the defined one.
        QVERIFY(!table->writeToURLOfType(path(u"c.txt"_s), kTxt, &error));
        QVERIFY(error.description.contains(u"accents"_s));
    }

    /// A row that is none opens an empty document; what can be read is there when it is asked for, and a save
    /// keeps the rest.
    void opensWhatCanBeRead()
    {
        const QByteArray table = "name\tcase\nA\tupper\nB\nC\tup\nD\t\"x\n";
        write(path(u"a.txt"_s), table);
        VXDocument *document = openDocument(path(u"a.txt"_s));
        QCOMPARE(document->countOfInfos(), 0);
        QCOMPARE(document->readError().failureReason,
                 u"Line 3, column 2 (case): the row has 1 of 2 cells."_s);
        Error error;
        QVERIFY2(document->readWhatCanBeRead(&error), qPrintable(error.text()));
        QVERIFY(document->readError().domain.isEmpty() && !document->isDocumentEdited());
        QCOMPARE(document->countOfInfos(), 2);
        QCOMPARE(document->readNotes().count(ReadNotes::TableProblem), 3);
        QVERIFY(document->savingWillChange().isEmpty());
        document->objectInInfosAtIndex(0)->setName(u"E"_s);
        save(*document);
        QCOMPARE(contentOf(path(u"a.txt"_s)), QByteArray(table).replace("A\t", "E\t"));
        QVERIFY(lossesOf(*document, kXml).join(u' ').contains(u"Rows that could not be read"_s));

        write(path(u"b.txt"_s), "nothing\there\n");
        document = openDocument(path(u"b.txt"_s));
        QVERIFY(!document->readWhatCanBeRead(&error));
        QVERIFY(!document->readError().domain.isEmpty());
    }

    /// Rows stay with their records when another program has changed the file.
    void keepsRowsWhenTheFileIsReadAgain()
    {
        VXDocument *document = openDocument(path(u"a.csv"_s));
        const InfoPtr info = document->objectInInfosAtIndex(0);
        const QByteArray changed =
            QByteArray(kTable).replace("x; y", "z").replace("upper", "lower") + "\r\nD;;;\r\n";
        write(path(u"a.csv"_s), changed);
        Error error;
        QVERIFY2(document->reload(Document::Reload::IfSound, &error), qPrintable(error.text()));
        QCOMPARE(document->objectInInfosAtIndex(0), info);
        QCOMPARE(document->objectInInfosAtIndex(1)->caseValue(), int(VXGlyphInfo::lower));
        document->noteSilentChange();
        save(*document);
        QCOMPARE(contentOf(path(u"a.csv"_s)), changed);
        info->setName(u"E"_s);
        save(*document);
        QCOMPARE(contentOf(path(u"a.csv"_s)), QByteArray(changed).replace("A;", "E;"));
    }

private:
    const QString kCsv = u"public.comma-separated-values-text"_s;
    const QString kTxt = u"public.plain-text"_s;
    const QString kXml = u"public.xml"_s;

    static void save(VXDocument &document)
    {
        Error error;
        QVERIFY2(document.saveDocument(&error), qPrintable(error.text()));
    }
};

RUNEBOOK_TEST_MAIN(TableDocumentsTest)
#include "TableDocumentsTest.moc"
