#include "codeeditor/LineTable.h"
#include "tests/TestMain.h"

#include <QRandomGenerator>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

using namespace Qt::StringLiterals;
using runebook::LineTable;

namespace {

QString textOf(const QTextDocument &document)
{
    return document.toRawText().replace(QChar::ParagraphSeparator, u'\n');
}

/// The table as its definition has it.
QList<int> slowTable(const QString &text)
{
    QList<int> starts {0};
    for (int i = 0; i < text.size(); ++i) {
        if (text[i] == u'\n' || text[i] == QChar::LineSeparator)
            starts.append(i + 1);
    }
    return starts;
}

void follow(QTextDocument &document, LineTable &table)
{
    document.documentLayout(); // a document without a layout announces nothing
    QObject::connect(&document, &QTextDocument::contentsChange, &document, [&](int from, int, int added) {
        table.noteEdit(from, added, document.characterCount() - 1);
    });
}

} // namespace

class TestLineTable : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void countsLines_data();
    void countsLines();
    void recountsFromTheFirstStaleLine();
    void findsTheLineOfAnIndex();
    void followsRandomEdits();
};

void TestLineTable::countsLines_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QList<int>>("starts");
    QTest::newRow("empty") << u""_s << QList<int> {0};
    QTest::newRow("a") << u"a"_s << QList<int> {0};
    QTest::newRow("a and a newline") << u"a\n"_s << QList<int> {0, 2};
    QTest::newRow("CR, LF, CR LF") << u"a\rb\nc\r\nd"_s << QList<int> {0, 2, 4, 6};
    QTest::newRow("line separator") << u"a\u2028b\u2028"_s << QList<int> {0, 2, 4};
    QTest::newRow("next line is no break here") << u"a\u0085b"_s << QList<int> {0};
}

void TestLineTable::countsLines()
{
    QFETCH(QString, text);
    QTextDocument document;
    document.setPlainText(text);
    LineTable table;
    table.invalidateFrom(0);
    table.recount(document);
    QVERIFY(!table.isStale());
    QTEST(table.starts(), "starts");
}

void TestLineTable::recountsFromTheFirstStaleLine()
{
    QTextDocument document(QString(u"line\n"_s).repeated(1000));
    LineTable table;
    table.invalidateFrom(0);
    table.recount(document);
    QCOMPARE(table.starts().size(), 1001);
    follow(document, table);

    QTextCursor cursor(document.findBlockByNumber(499));
    cursor.insertText(u"x"_s);
    QCOMPARE(table.staleFrom(), 499 * 5);
    table.recount(document);
    QCOMPARE(table.starts()[499], 499 * 5);
    QCOMPARE(table.starts()[500], 500 * 5 + 1);

    cursor.setPosition(document.findBlockByNumber(990).position());
    cursor.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    table.recount(document);
    QCOMPARE(table.starts().size(), 991);
}

void TestLineTable::findsTheLineOfAnIndex()
{
    const QList<int> starts {0, 2, 5, 5 + 7};
    QCOMPARE(LineTable::lineContaining(starts, 0), 0);
    QCOMPARE(LineTable::lineContaining(starts, 1), 0);
    QCOMPARE(LineTable::lineContaining(starts, 2), 1);
    QCOMPARE(LineTable::lineContaining(starts, 11), 2);
    QCOMPARE(LineTable::lineContaining(starts, 99), 3);
    QCOMPARE(LineTable::lineContaining({0}, 99), 0);
    QCOMPARE(LineTable::lineContaining({}, 99), 0);
}

/// Typing, pasting, cutting, undo and redo, several edits between two looks: always the table of a full
/// count.
void TestLineTable::followsRandomEdits()
{
    QRandomGenerator random(99);
    const QStringList pieces = {u"a"_s, u"\n"_s, u"bc\nd"_s, u"\u2028"_s, u"\n\n"_s, u"e\u2028f\n"_s, u""_s};
    QTextDocument document(u"start\nhere\u2028and\n\nthere"_s);
    LineTable table;
    table.invalidateFrom(0);
    follow(document, table);
    for (int round = 0; round < 4000; ++round) {
        QTextCursor cursor(&document);
        const int length = document.characterCount() - 1;
        cursor.setPosition(random.bounded(length + 1));
        cursor.setPosition(std::min(length, cursor.position() + random.bounded(6)), QTextCursor::KeepAnchor);
        switch (random.bounded(8)) {
        case 0:
            document.undo();
            break;
        case 1:
            document.redo();
            break;
        case 2:
            if (length > 200)
                document.setPlainText(u"anew\n"_s);
            break;
        case 3:
            table.invalidateFrom(random.bounded(length + 1));
            break;
        default:
            cursor.insertText(pieces[random.bounded(int(pieces.size()))]);
        }
        if (random.bounded(3) == 0) {
            table.recount(document);
            QCOMPARE(table.starts(), slowTable(textOf(document)));
        }
    }
}

RUNEBOOK_TEST_MAIN(TestLineTable)
#include "tst_linetable.moc"
