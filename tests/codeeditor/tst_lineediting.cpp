#include "codeeditor/LineEditing.h"
#include "tests/TestMain.h"

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

/// A text with its selection: "a[b]c"; one "|" is a caret.
QString withSelection(QString text, TextRange selection)
{
    if (selection.length == 0)
        return text.insert(selection.location, u'|');
    return text.insert(selection.end(), u'>').insert(selection.location, u'<');
}

TextRange takeSelection(QString &picture)
{
    if (const qsizetype caret = picture.indexOf(u'|'); caret >= 0) {
        picture.remove(caret, 1);
        return {int(caret), 0};
    }
    const int first = int(picture.indexOf(u'<'));
    picture.remove(first, 1);
    const int last = int(picture.indexOf(u'>'));
    picture.remove(last, 1);
    return {first, last - first};
}

using Rule = LineEdit (*)(QStringView, TextRange);

QString apply(Rule rule, QString picture)
{
    const TextRange selection = takeSelection(picture);
    const LineEdit edit = rule(picture, selection);
    const QString text = edit.appliedTo(picture);
    return withSelection(text, edit.selection.clampedTo(int(text.size())));
}

} // namespace

class TestLineEditing : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void indentsAfter_data();
    void indentsAfter();
    void editsLines_data();
    void editsLines();
    void findsTheIndentation();
    void rangesOutsideTheTextAreClamped();
};

void TestLineEditing::indentsAfter_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("indentation");
    QTest::newRow("no indentation, no colon") << u"abc\n"_s << u""_s;
    QTest::newRow("colon") << u"if a:\n"_s << u"\t"_s;
    QTest::newRow("colon and blanks") << u"if a: \t\n"_s << u"\t"_s;
    QTest::newRow("four spaces") << u"    a\n"_s << u"    "_s;
    QTest::newRow("four spaces and colon") << u"    a:\n"_s << u"    \t"_s;
    QTest::newRow("tab and spaces") << u"\t  a\n"_s << u"\t  "_s;
    QTest::newRow("blanks only") << u"  \n"_s << u"  "_s;
    QTest::newRow("no-break space is no indentation") << u"\u00A0a"_s << u""_s;
    QTest::newRow("empty") << u""_s << u""_s;
}

void TestLineEditing::indentsAfter()
{
    QFETCH(QString, line);
    QTEST(indentationAfter(line), "indentation");
}

void TestLineEditing::editsLines_data()
{
    QTest::addColumn<int>("action"); // as the names below
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    const auto row = [](int action, const QString &before, const QString &after) {
        const char *names[] = {"comment ", "right ", "left ", "duplicate ", "up ", "down ", "join "};
        QString name = QString::fromLatin1(names[action]) + before;
        name.replace(u'\n', u"\\n"_s).replace(u'\t', u"\\t"_s);
        QTest::newRow(qPrintable(name)) << action << before << after;
    };
    row(0, u"<a\nb\nc>\n"_s, u"<# a\nb\n# c>\n"_s);
    row(0, u"<a\nb>\n"_s, u"<# a\nb>\n"_s);
    row(0, u"<# a\n# b\n# c>\n"_s, u"<a\n# b\nc>\n"_s);
    row(0, u"<a>"_s, u"<# a>"_s);
    row(0, u"<a>\n"_s, u"<# a>\n"_s);
    row(0, u"a|b"_s, u"# a|b"_s);
    row(0, u"|ab"_s, u"|# ab"_s);
    row(0, u"|"_s, u"|# "_s);
    row(0, u"#a|b"_s, u"a|b"_s);
    row(0, u"# a|b"_s, u"a|b"_s);
    row(0, u"<#a\nx\n #b\nx\n#>"_s, u"<a\nx\n #b\nx\n>"_s);
    row(0, u"<  # a\nb>"_s, u"<#   # a\nb>"_s);
    row(0, u"x\na<b\n>c"_s, u"x\n# a<b\n>c"_s);
    row(0, u"1\n2\n<3\n4\n5>\n6"_s, u"1\n2\n<# 3\n4\n# 5>\n6"_s);
    row(0, u"<a\n\nb>"_s, u"<# a\n\n# b>"_s);
    row(1, u"<a\nb>"_s, u"<\ta\nb>"_s);
    row(1, u"<a\nb\n>"_s, u"<\ta\n\tb\n>"_s);
    row(1, u"<a\nb>\nc"_s, u"<\ta\n\tb>\nc"_s);
    row(1, u"a|b"_s, u"\ta|b"_s);
    row(1, u"<a\nbcd\nefg>"_s, u"<\ta\n\tbcd\nefg>"_s);
    row(1, u"<a\n\nb\n>"_s, u"<\ta\n\t\n\tb\n>"_s);
    row(2, u"      |a"_s, u"  |a"_s);
    row(2, u"\t\ta|"_s, u"\ta|"_s);
    row(2, u"  |a"_s, u"|a"_s);
    row(2, u"\t a|"_s, u" a|"_s);
    row(2, u"  \ta|"_s, u"\ta|"_s);
    row(2, u"|    a"_s, u"|a"_s);
    row(2, u"  <  a\n\tb>"_s, u"<a\nb>"_s);
    row(2, u"<\ta\n  b\nc>"_s, u"<a\nb\nc>"_s);
    row(2, u"<a\n\n\tb\n>\tc"_s, u"<a\n\nb\n>\tc"_s);
    row(2, u"|"_s, u"|"_s);
    row(3, u"a|b\nc"_s, u"ab\na|b\nc"_s);
    row(3, u"x\na|b"_s, u"x\nab\na|b"_s);
    row(3, u"<a\nb>\nc"_s, u"a\nb\n<a\nb>\nc"_s);
    row(3, u"|"_s, u"\n|"_s);
    row(4, u"a\nb|b\nc"_s, u"b|b\na\nc"_s);
    row(4, u"a\nb|b"_s, u"b|b\na"_s);
    row(4, u"a\n<b\nc>"_s, u"<b\nc>\na"_s);
    row(4, u"|a\nb"_s, u"|a\nb"_s);
    row(4, u"a\n|"_s, u"|\na"_s);
    row(5, u"a|a\nb\nc"_s, u"b\na|a\nc"_s);
    row(5, u"a|a\nb"_s, u"b\na|a"_s);
    row(5, u"<a\nb\n>c\nd"_s, u"c\n<a\nb\n>d"_s);
    row(5, u"a\nb|"_s, u"a\nb|"_s);
    row(6, u"a|a  \n\t b\nc"_s, u"aa| b\nc"_s);
    row(6, u"<a\nb\nc>\nd"_s, u"a b| c\nd"_s);
    row(6, u"<a\n  \n\t\n  b\nc>\nd"_s, u"a b| c\nd"_s);
    row(6, u"<a\n \n>b"_s, u"a|\nb"_s);
    row(6, u"a|a\n\nb"_s, u"aa|\nb"_s);
    row(6, u"a|"_s, u"a|"_s);
}

void TestLineEditing::editsLines()
{
    QFETCH(int, action);
    QFETCH(QString, before);
    const Rule rules[] = {&toggleComment, &shiftRight,  &shiftLeft, &duplicateLines,
                          &moveLinesUp,   &moveLinesDown, &joinLines};
    QTEST(apply(rules[action], before), "after");
}

void TestLineEditing::findsTheIndentation()
{
    QCOMPARE(indentStep(u"a\nb"), u"\t"_s);
    QCOMPARE(indentStep(u"a\n\tb\n    c"), u"\t"_s);
    QCOMPARE(indentStep(u"a\n        b\n    c\n  \n"), u"    "_s);
    QCOMPARE(indentStep(u"a\n  b"), u"  "_s);
    QCOMPARE(indentStep(u" * a comment\n    b"), u"    "_s);
}

void TestLineEditing::rangesOutsideTheTextAreClamped()
{
    QCOMPARE(lineBlock(u"a\nb", {10, 5}), (TextRange {2, 1}));
    QCOMPARE(lineBlock(u"a\nb", {-3, 2}), (TextRange {0, 2}));
    QCOMPARE(lineBlock(u"a\nb\n", {0, 2}), (TextRange {0, 2}));
    QCOMPARE(lineBlock(u"a\nb\n", {4, 0}), (TextRange {4, 0}));
    QCOMPARE(shiftRight(u"a", {5, 5}).appliedTo(u"a"_s), u"\ta"_s);
}

RUNEBOOK_TEST_MAIN(TestLineEditing)
#include "tst_lineediting.moc"
