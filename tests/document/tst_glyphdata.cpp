// Whole glyph data files: each file of tests/data/glyphdata is read and saved again. It comes out as
// NAME.saved.xml says, or as it was where there is none.
#include "document/GlyphDataReader.h"
#include "document/GlyphDataWriter.h"
#include "document/VXDocument.h"
#include "tests/TestMain.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

const QString kFolder = QStringLiteral(RUNEBOOK_TEST_DATA "/glyphdata/");

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

/// Touches every record without changing it, so that each line is printed field by field.
void touchAll(VXDocument &document)
{
    for (const InfoPtr &info : document.infos())
        info->setScript(info->script());
}

} // namespace

class TestGlyphData : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void savesAsExpected_data();
    void savesAsExpected();
    void savingTwiceChangesNothingMore_data();
    void savingTwiceChangesNothingMore();
    void tellsWhatASaveWouldLose_data();
    void tellsWhatASaveWouldLose();
    void writesTheRecordOfEveryVersion();
    void refusesWhatIsNoText_data();
    void refusesWhatIsNoText();
    void writesNothingElse();
    void tellsOnceOfManyUnknownEntries();
};

void TestGlyphData::savesAsExpected_data()
{
    QTest::addColumn<QString>("name");
    const QStringList files = QDir(kFolder).entryList({u"*.xml"_s}, QDir::Files, QDir::Name);
    for (const QString &file : files) {
        if (!file.endsWith(u".saved.xml"_s))
            QTest::newRow(qPrintable(file)) << file.chopped(4);
    }
    QVERIFY(files.size() > 40);
}

void TestGlyphData::savesAsExpected()
{
    QFETCH(const QString, name);
    const QString source = kFolder + name + u".xml"_s;
    const QString saved = kFolder + name + u".saved.xml"_s;
    const QByteArray expected = contentOf(QFile::exists(saved) ? saved : source);

    const QTemporaryDir folder;
    const QString copy = folder.filePath(u"copy.xml"_s);
    QVERIFY(QFile::copy(source, copy));
    VXDocument document;
    QVERIFY(document.readFromURLOfType(copy, u"public.xml"_s));
    QVERIFY(document.readError().domain.isEmpty());
    Error error;
    QVERIFY2(document.writeToURLOfType(copy, u"public.xml"_s, &error), qPrintable(error.text()));
    QCOMPARE(contentOf(copy), expected);

    touchAll(document);
    QVERIFY(document.writeToURLOfType(copy, u"public.xml"_s));
    QCOMPARE(contentOf(copy), expected);
    document.undoManager()->undo();
    QVERIFY(document.writeToURLOfType(copy, u"public.xml"_s));
    QCOMPARE(contentOf(copy), expected);
}

void TestGlyphData::savingTwiceChangesNothingMore_data()
{
    savesAsExpected_data();
}

void TestGlyphData::savingTwiceChangesNothingMore()
{
    QFETCH(const QString, name);
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

void TestGlyphData::tellsWhatASaveWouldLose_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("lost");
    const auto row = [](const char *name, const char *lost) {
        QTest::newRow(name) << QString::fromLatin1(name) << QString::fromLatin1(lost);
    };
    row("version1", "");
    row("version2", "");
    row("empty", "");
    row("nothing", "");
    row("no-blank-at-the-end", "meaning"); // a name that the line does not have
    row("other-order", "");
    row("entities", "");
    row("no-final-newline", "");
    row("refused-marks-as-accents", "");
    row("crlf", "carriage returns, header");
    row("byte-order-mark", "mark, header");
    row("not-glyph-data", "header");
    row("only-a-line-feed", "");
    row("no-header-neither", "header");
    row("format9", "header");
    row("comments", "comments, rest, lines");
    row("comment-never-ends", "lines");
    row("unknown-attributes", "attributes");
    row("code-points", "code points");
    row("non-ascii", "rest");
    row("refused-marks", "dropped");
    row("all-on-one-line", "header, rest");
    row("other-lines", "lines");
}

void TestGlyphData::tellsWhatASaveWouldLose()
{
    QFETCH(const QString, name);
    GlyphDataReader reader;
    reader.read(contentOf(kFolder + name + u".xml"_s));
    const ReadNotes &notes = reader.notes();
    QStringList lost;
    const auto add = [&lost](bool is, const char *what) {
        if (is)
            lost << QString::fromLatin1(what);
    };
    add(notes.hasCarriageReturns, "carriage returns");
    add(notes.hasByteOrderMark, "mark");
    add(notes.hasForeignHeader, "header");
    add(notes.count(ReadNotes::Comment), "comments");
    add(notes.count(ReadNotes::UnknownAttribute), "attributes");
    add(notes.count(ReadNotes::UnreadRest), "rest");
    add(notes.count(ReadNotes::CodePoints), "code points");
    add(notes.count(ReadNotes::DroppedAttribute), "dropped");
    add(notes.count(ReadNotes::ForeignLine), "lines");
    add(notes.count(ReadNotes::OtherMeaning), "meaning");
    QTEST(lost.join(u", "_s), "lost");
    QCOMPARE(notes.isEmpty(), lost.isEmpty());
}

void TestGlyphData::writesTheRecordOfEveryVersion()
{
    VXDocument document;
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"a.xml"_s);
    const QByteArray header1 = contentOf(kFolder + u"empty-version1.xml"_s).chopped(13);
    const QByteArray header2 = contentOf(kFolder + u"empty.xml"_s).chopped(13);
    const InfoPtr info = VXGlyphInfo::init();
    info->setUnicode(u"0041"_s);
    info->setMarks(u"m"_s);
    document.addInfo(info);
    const QMap<int, QByteArray> expected {
        {0, header2 + "\t<glyph name=\"unknown\" direction=\"LTR\" marks=\"m\" />\n</glyphData>\n"},
        {1,
         header1
             + "\t<glyph unicode=\"0041\" name=\"unknown\" direction=\"LTR\" accents=\"m\" />\n"
               "</glyphData>\n"},
        {3,
         header2
             + "\t<glyph unicode=\"0041\" name=\"unknown\" direction=\"LTR\" marks=\"m\" />\n"
               "</glyphData>\n"},
    };
    QCOMPARE(document.fileVersion(), 2);
    for (auto version = expected.begin(); version != expected.end(); ++version) {
        document.setFileVersion(version.key());
        QVERIFY(document.writeToURLOfType(path, u"public.xml"_s));
        QCOMPARE(contentOf(path), version.value());
    }
}

void TestGlyphData::refusesWhatIsNoText_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("single byte") << QByteArray("<glyph name=\"\xFF\" />");
    QTest::newRow("cut character") << QByteArray("<glyph name=\"a\" />\xE2\x82");
    QTest::newRow("surrogate") << QByteArray("<glyph name=\"\xED\xA0\x80\" />");
    QTest::newRow("overlong") << QByteArray("<glyph name=\"\xC0\xAF\" />");
    QTest::newRow("UTF-16") << QByteArray("\xFF\xFE<\0g\0", 6);
}

void TestGlyphData::refusesWhatIsNoText()
{
    QFETCH(const QByteArray, bytes);
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"a.xml"_s);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    file.close();
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

void TestGlyphData::writesNothingElse()
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

void TestGlyphData::tellsOnceOfManyUnknownEntries()
{
    constexpr int kEntries = 100'000;
    QByteArray text = GlyphDataWriter::header(2).c_str();
    for (int i = 0; i < kEntries; ++i) {
        const QByteArray number = QByteArray::number(i);
        text += "\t<glyph name=\"a" + number + "\" many" + number + "=\"%2\" />\n";
    }
    text += "</glyphData>\n";
    const QSignalSpy presented(&ErrorPresenter::shared(), &ErrorPresenter::presented);
    GlyphDataReader reader;
    QCOMPARE(reader.read(text).size(), std::size_t(kEntries));
    QCOMPARE(presented.size(), 1);
    QCOMPARE(presented.first().first().value<Error>().failureReason,
             u"There are 100000 unknown entries in the file, the first: many0 = %2"_s);
}

RUNEBOOK_TEST_MAIN(TestGlyphData)
#include "tst_glyphdata.moc"
