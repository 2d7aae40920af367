#include "scripting/ConsoleText.h"
#include "tests/TestMain.h"

#include <QFile>

using namespace runebook;
using namespace Qt::StringLiterals;

class ConsoleTextTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void cleansUpMessages_data();
    void cleansUpMessages();
    void marksErrors_data();
    void marksErrors();
    void linksFiles();
    void namesAllErrorsInOrder();
};

/// The text with what is marked in it: *bold*, [linked](path:line).
static QString picture(const QString &output)
{
    const ConsoleText console = ConsoleText::fromOutput(output);
    QMap<qsizetype, QString> marks;
    for (const UnitRange &range : console.emphasised) {
        marks[range.location].append(u'*');
        marks[range.location + range.length].prepend(u'*');
    }
    for (const FileLink &link : console.links) {
        marks[link.range.location].append(u'[');
        marks[link.range.location + link.range.length].prepend(u"](%1:%2)"_s.arg(link.path, link.line));
    }
    QString text = console.text;
    for (auto mark = marks.constEnd(); mark != marks.constBegin();) {
        --mark;
        text.insert(mark.key(), mark.value());
    }
    return text;
}

void ConsoleTextTest::cleansUpMessages_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("cleaned");
    QTest::newRow("once") << u"File \"a\", line 1, in <module>\n"_s << u"File \"a\", line 1\n"_s;
    QTest::newRow("the first only") << u", in <module>, in <module>"_s << u", in <module>"_s;
    QTest::newRow("functions stay") << u"line 1, in f"_s << u"line 1, in f"_s;
    QTest::newRow("empty") << u""_s << u""_s;
}

void ConsoleTextTest::cleansUpMessages()
{
    QFETCH(QString, message);
    QTEST(cleanupErrorMessage(message), "cleaned");
}

void ConsoleTextTest::marksErrors_data()
{
    QTest::addColumn<QString>("output");
    QTest::addColumn<QString>("marked");
    QTest::newRow("an error") << u"KeyError: 'a'"_s << u"*KeyError*: 'a'"_s;
    QTest::newRow("the second one not") << u"KeyError KeyError"_s << u"*KeyError* KeyError"_s;
    QTest::newRow("only the word") << u"Traceback (most recent call last):\n"_s
                                   << u"*Traceback* (most recent call last):\n"_s;
    QTest::newRow("no heading") << u"Traceback of a tour"_s << u"Traceback of a tour"_s;
    QTest::newRow("macro") << u"File \"<string>\", line 4"_s << u"[File \"<macro>\", line 4](<string>:4)"_s;
    QTest::newRow("macro panel") << u"  File \"macro panel\", line 12\nNameError: x"_s
                                 << u"  [File \"<macro>\", line 12](<string>:12)\n*NameError*: x"_s;
    QTest::newRow("with a colon") << u"File: \"<string>\", line 4"_s
                                  << u"[File: \"<macro>\", line 4](<string>:4)"_s;
    QTest::newRow("without a number")
        << u"File \"<string>\", line x"_s << u"[File \"<macro>\", line ](<string>:)x"_s;
    QTest::newRow("no such file") << u"File \"/no/such.py\", line 4"_s << u"File \"/no/such.py\", line 4"_s;
    QTest::newRow("two") << u"File \"<string>\", line 1\nFile \"<string>\", line 2\nTypeError"_s
                         << u"[File \"<macro>\", line 1](<string>:1)\n[File \"<macro>\", line "
                            "2](<string>:2)\n*TypeError*"_s;
}

void ConsoleTextTest::marksErrors()
{
    QFETCH(QString, output);
    QTEST(picture(output), "marked");
}

void ConsoleTextTest::linksFiles()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"OSError file.py"_s);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(
        picture(u"Traceback (most recent call last):\n  File \"%1\", line 7\nKeyError: 1"_s.arg(path)),
        u"*Traceback* (most recent call last):\n  [File \"OSError file.py\", line 7](%1:7)\n*KeyError*: 1"_s
            .arg(path));
}

void ConsoleTextTest::namesAllErrorsInOrder()
{
    QCOMPARE(errorNames().size(), 31);
    QCOMPARE(errorNames().first(), u"AssertionError"_s);
    QCOMPARE(errorNames().indexOf(u"OSError"_s), 12);
    QCOMPARE(errorNames().last(), u"BadPrototypeError"_s);
}

RUNEBOOK_TEST_MAIN(ConsoleTextTest)
#include "tst_consoletext.moc"
