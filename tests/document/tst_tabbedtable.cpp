// Tables: each file of tests/data/tables is read; NAME.expected has one line for each record, or the error.
#include "document/TabbedTable.h"
#include "document/VXDocument.h"
#include "tests/TestMain.h"
#include "tests/model/PlainRecord.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

const QString kFolder = QStringLiteral(RUNEBOOK_TEST_DATA "/tables/");
const QByteArray kExportHeader = "unicode\tname\tsortName\tsortNameKeep\tdecompose\tcategory\tsubCategory\t"
                                 "script\tproduction\taltNames\tdesc\tanchors\taccents\n";

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

} // namespace

class TestTabbedTable : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void reads_data();
    void reads();
    void opensLeniently();
    void leavesTheVersion();
    void reportsUnknownKeysOnce();
    void saysWhichLineIsShort();
    void readsLargeTablesInParts();
    void writesAnEmptyDocument();
    void failsToWriteRecords();
    void readsItsOwnColumns();
};

void TestTabbedTable::reads_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &file : QDir(kFolder).entryList({u"*.txt"_s}, QDir::Files, QDir::Name))
        QTest::newRow(qPrintable(file)) << file.chopped(4);
}

void TestTabbedTable::reads()
{
    QFETCH(const QString, name);
    VXDocument document;
    Error error;
    const std::optional<InfoList> infos = document.readTabbedFromURL(kFolder + name + u".txt"_s, &error);
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
    QCOMPARE(result, QString::fromUtf8(contentOf(kFolder + name + u".expected"_s)));
}

void TestTabbedTable::opensLeniently()
{
    VXDocument document;
    document.addInfo(VXGlyphInfo::init());
    QVERIFY(document.readFromURLOfType(kFolder + u"invalid-key.txt"_s, u"public.plain-text"_s));
    QCOMPARE(document.countOfInfos(), 0);
    QCOMPARE(document.readError().recoverySuggestion,
             u"The tabbed file contains an invalid field: direction"_s);
    QVERIFY(document.readFromURLOfType(kFolder + u"usual.txt"_s, u"public.plain-text"_s));
    QCOMPARE(document.countOfInfos(), 2);
    QCOMPARE(document.objectInInfosAtIndex(1)->document(), &document);
    QVERIFY(document.readError().domain.isEmpty());
    QVERIFY(!document.undoManager()->canUndo() || document.undoManager()->stack()->count() == 0);
}

void TestTabbedTable::leavesTheVersion()
{
    VXDocument document;
    document.setFileVersion(1);
    QVERIFY(document.readTabbedFromURL(kFolder + u"usual.txt"_s));
    QCOMPARE(document.fileVersion(), 1);
}

void TestTabbedTable::reportsUnknownKeysOnce()
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

void TestTabbedTable::saysWhichLineIsShort()
{
    for (const QByteArray &end : {"\n"_ba, "\r\n"_ba, "\r"_ba}) {
        Error error;
        QVERIFY(!TabbedReader().read(QByteArray("name\tunicode\nA\t41\n\nBb\n").replace("\n", end), &error));
        QVERIFY2(error.description.startsWith(u"Line 4 "_s), qPrintable(error.description));
    }
}

void TestTabbedTable::writesAnEmptyDocument()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"a.txt"_s);
    VXDocument document;
    QVERIFY(document.writeToURLOfType(path, u"public.plain-text"_s));
    QCOMPARE(contentOf(path), kExportHeader);
}

void TestTabbedTable::failsToWriteRecords()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"a.txt"_s);
    VXDocument document;
    document.addInfo(VXGlyphInfo::init());
    for (const bool isThere : {false, true}) {
        if (isThere) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write("old") == 3);
        }
        Error error;
        QVERIFY(!document.writeToURLOfType(path, u"public.plain-text"_s, &error));
        QVERIFY2(error.description.contains(u"accents"_s), qPrintable(error.description));
        QCOMPARE(contentOf(path), isThere ? QByteArray("old") : QByteArray("(unreadable)"));
        QVERIFY(!document.saveToURLOfType(path, u"public.plain-text"_s, &error));
        QVERIFY(document.isDocumentEdited());
        QVERIFY(document.fileURL().isEmpty());
    }
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList {u"a.txt"_s});
}

void TestTabbedTable::readsLargeTablesInParts()
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

void TestTabbedTable::readsItsOwnColumns()
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

RUNEBOOK_TEST_MAIN(TestTabbedTable)
#include "tst_tabbedtable.moc"
