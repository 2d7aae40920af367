#include "codeeditor/BraceMatching.h"
#include "codeeditor/LineEditing.h"
#include "codeeditor/LineTable.h"
#include "codeeditor/TDTokenizer.h"
#include "platform/defaults/UserDefaults.h"
#include "tests/Rounds.h"
#include "tests/Table.h"
#include "tests/TestMain.h"

#include <QRandomGenerator>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

/// The tokenizer as the macro panel sets it up.
TDTokenizer panelTokenizer()
{
    TDTokenizer tokenizer;
    tokenizer.addSingleLineCommentStartSymbol(u"#"_s);
    tokenizer.addMultiLineCommentStartSymbolEndSymbol(u"'''"_s, u"'''"_s);
    tokenizer.setTokenizerStateFromTo(tokenizer.quoteState(), 39, 39);
    return tokenizer;
}

QChar letterOf(const TDToken &token)
{
    return token.isQuotedString() ? u'S'
        : token.isNumber()        ? u'N'
        : token.isComment()       ? u'C'
        : token.isWord()          ? u'W'
        : token.isWhitespace()    ? u'_'
                                  : u'.';
}

/// A text's tokens as a picture: kind, colon, characters; parted by "|". White space that parts tokens is
/// left out where \a blanks is false.
QString picture(TDTokenizer &tokenizer, const QString &text, bool blanks = false)
{
    QStringList parts;
    tokenizer.setString(text);
    tokenizer.setReader(TDReader());
    for (const TDToken *token = tokenizer.nextToken(); token != TDToken::EOFToken();
         token = tokenizer.nextToken()) {
        if (blanks || !token->isWhitespace())
            parts << letterOf(*token) + u':' + token->stringValue().toString();
    }
    return parts.join(u'|');
}

} // namespace

using runebook::BraceLists;
using runebook::TextRange;

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

/// Code as text: tokens, braces, lines and how they are edited.
class CodeTextTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    TABLE(cutsPython, (const QString &text, const QString &tokens), {
        row("nothing", u""_s, u""_s);
        row("word", u"print"_s, u"W:print"_s);
        row("underscores and digits", u"_a1_ __b__"_s, u"W:_a1_|W:__b__"_s);
        row("letters of other scripts", u"größe имя 字"_s, u"W:größe|W:имя|W:字"_s);
        row("letters outside the BMP", u"𝐀b"_s, u"W:𝐀b"_s);
        row("combining mark inside a word", u"e\u0301t"_s, u"W:e\u0301t"_s);
        row("dotted name", u"a.b"_s, u"W:a|.:.|W:b"_s);
        row("integers", u"0 12 1_000"_s, u"N:0|N:12|N:1_000"_s);
        row("bases", u"0x1F 0XfF 0b01 0o17 0x_a"_s, u"N:0x1F|N:0XfF|N:0b01|N:0o17|N:0x_a"_s);
        row("fractions", u"1.5 .5 1. 1_0.0_1"_s, u"N:1.5|N:.5|N:1.|N:1_0.0_1"_s);
        row("exponents", u"1e5 1.E-3 .5e+1_0"_s, u"N:1e5|N:1.E-3|N:.5e+1_0"_s);
        row("imaginary", u"2j 1.5J 1e3j"_s, u"N:2j|N:1.5J|N:1e3j"_s);
        row("number and word grown together", u"12ab"_s, u"N:12|W:ab"_s);
        row("prefix without digits", u"0xg"_s, u"N:0|W:xg"_s);
        row("binary stops at 2", u"0b12"_s, u"N:0b1|N:2"_s);
        row("exponent without digits", u"1e+"_s, u"N:1|W:e|.:+"_s);
        row("underscore at the end", u"1_"_s, u"N:1|W:_"_s);
        row("two dots", u"1..real"_s, u"N:1.|.:.|W:real"_s);
        row("double quotes", u"\"a b\" c"_s, u"S:\"a b\"|W:c"_s);
        row("single quotes", u"'a b' c"_s, u"S:'a b'|W:c"_s);
        row("other quote inside", u"\"it's\" 'a\"b'"_s, u"S:\"it's\"|S:'a\"b'"_s);
        row("escaped quote", u"'a\\'b' c"_s, u"S:'a\\'b'|W:c"_s);
        row("escaped backslash", u"'a\\\\' c"_s, u"S:'a\\\\'|W:c"_s);
        row("unfinished string ends with its line", u"'abc\nd"_s, u"S:'abc|W:d"_s);
        row("unfinished at carriage return", u"\"abc\rd"_s, u"S:\"abc|W:d"_s);
        row("unfinished at paragraph separator", u"\"abc\u2029d"_s, u"S:\"abc|W:d"_s);
        row("line separator does not end a string", u"'a\u2028b' c"_s, u"S:'a\u2028b'|W:c"_s);
        row("backslash carries a string over the line", u"'a\\\nb' c"_s, u"S:'a\\\nb'|W:c"_s);
        row("backslash before CR LF", u"'a\\\r\nb' c"_s, u"S:'a\\\r\nb'|W:c"_s);
        row("backslash at the very end", u"'a\\"_s, u"S:'a\\"_s);
        row("empty strings", u"'' \"\""_s, u"S:''|S:\"\""_s);
        row("prefixed string", u"r'a' f\"b\""_s, u"W:r|S:'a'|W:f|S:\"b\""_s);
        row("three double quotes", u"\"\"\"a\n\"b\" \"\"\" c"_s, u"S:\"\"\"a\n\"b\" \"\"\"|W:c"_s);
        row("three double quotes, unfinished", u"\"\"\"a\nb"_s, u"S:\"\"\"a\nb"_s);
        row("three apostrophes are a comment", u"'''a\n'b' ''' c"_s, u"C:'''a\n'b' '''|W:c"_s);
        row("three apostrophes, unfinished", u"'''a\nb"_s, u"C:'''a\nb"_s);
        row("escape inside three apostrophes", u"'''a\\''' ''' c"_s, u"C:'''a\\''' '''|W:c"_s);
        row("four apostrophes", u"''''a'''b"_s, u"C:''''a'''|W:b"_s);
        row("comment", u"a # b 'c'\nd"_s, u"W:a|C:# b 'c'|W:d"_s);
        row("comment at the end", u"#"_s, u"C:#"_s);
        row("comment sign in a string", u"'#' a"_s, u"S:'#'|W:a"_s);
        row("apostrophe in a comment", u"# don't\nb"_s, u"C:# don't|W:b"_s);
        row("symbols", u"(a==b)"_s, u".:(|W:a|.:=|.:=|W:b|.:)"_s);
        row("symbol outside the BMP is one token", u"😀"_s, u".:😀"_s);
        row("NUL", u"a"_s + QChar(0) + u"b"_s, u"W:a|.:"_s + QChar(0) + u"|W:b"_s);
        row("lone surrogates", QString(QChar(0xD800)) + u'a' + QChar(0xDC00),
            u".:"_s + QChar(0xD800) + u"|W:a|.:"_s + QChar(0xDC00));
    })
    {
        TDTokenizer tokenizer = panelTokenizer();
        QCOMPARE(picture(tokenizer, text), tokens);
    }

    void tokensAddUpToTheText()
    {
        const QStringList pieces =
            u"'|\"|'''|\\|\n|\r\n|\u2028|\u2029|#|0x|1_|e|.|é|\u00A0| |[ ]|😀|if"_s.split(u'|')
            << QChar(0xD83D) << QChar(0);
        QRandomGenerator random(20240611);
        TDTokenizer tokenizer = panelTokenizer();
        for (int round = 0; round < rounds(3000); ++round) {
            QString text;
            for (int i = random.bounded(30); i > 0; --i)
                text += pieces[random.bounded(int(pieces.size()))];
            QString joined;
            tokenizer.setString(text);
            for (const TDToken *token = tokenizer.nextToken(); token != TDToken::EOFToken();
                 token = tokenizer.nextToken()) {
                QVERIFY2(!token->stringValue().isEmpty(), qPrintable(text));
                joined += token->stringValue();
            }
            QCOMPARE(joined, text);
        }
    }

    void aFreshReaderRestarts()
    {
        TDTokenizer tokenizer = panelTokenizer();
        tokenizer.setString(u"a b"_s);
        QCOMPARE(tokenizer.nextToken()->stringValue().toString(), u"a"_s);
        tokenizer.setReader(TDReader());
        QCOMPARE(tokenizer.nextToken()->stringValue().toString(), u"a"_s);
        tokenizer.nextToken();
        QCOMPARE(tokenizer.nextToken()->stringValue().toString(), u"b"_s);
        QCOMPARE(tokenizer.nextToken(), TDToken::EOFToken());
        QCOMPARE(tokenizer.nextToken(), TDToken::EOFToken());
    }

    void statesCanBeChanged()
    {
        TDTokenizer tokenizer = panelTokenizer();
        tokenizer.setTokenizerStateFromTo(tokenizer.whitespaceState(), u'[', u'[');
        QCOMPARE(picture(tokenizer, u"a[ b"_s, true), u"W:a|_:[ |W:b"_s);
        tokenizer.setTokenizerStateFromTo(tokenizer.quoteState(), u'|', u'|');
        QCOMPARE(picture(tokenizer, u"|a b|c"_s), u"S:|a b||W:c"_s);
        tokenizer.setTokenizerStateFromTo(tokenizer.symbolState(), u'\'', u'\'');
        QCOMPARE(picture(tokenizer, u"'a'"_s), u".:'|W:a|.:'"_s);
        tokenizer.setTokenizerStateFromTo(tokenizer.wordState(), 0x2190, 0x21FF);
        QCOMPARE(picture(tokenizer, u"\u2192x"_s), u"W:\u2192x"_s);
    }

    void withoutCommentSymbolsThereAreNoComments()
    {
        TDTokenizer tokenizer;
        QCOMPARE(picture(tokenizer, u"# a"_s), u".:#|W:a"_s);
        QCOMPARE(picture(tokenizer, u"'''a\nb''' c"_s), u"S:'''a\nb'''|W:c"_s);
        tokenizer.addSingleLineCommentStartSymbol(u"/"_s);
        tokenizer.addMultiLineCommentStartSymbolEndSymbol(u"/*"_s, u"*/"_s);
        tokenizer.addSingleLineCommentStartSymbol(QString());
        QCOMPARE(picture(tokenizer, u"/*a\nb*/c/d"_s), u"C:/*a\nb*/|W:c|C:/d"_s);
    }

    /// The first call of the process makes the lists and answers no.
    void initTestCase()
    {
        QVERIFY(!TE_isOpeningBrace(u'('));
        QVERIFY(TE_isOpeningBrace(u'('));
        QVERIFY(TE_isOpeningBrace(u'\u00AB'));
        QVERIFY(TE_isClosingBrace(u'\u00BB'));
        QVERIFY(!TE_isClosingBrace(u'('));
        QVERIFY(!TE_isOpeningBrace(u'<'));
    }

    void theListsStayAsFirstMade()
    {
        auto &defaults = runebook::UserDefaults::standard();
        defaults.setObjectForKey(u"<"_s, u"TEOpeningBracesCharacters"_s);
        defaults.setObjectForKey(u">"_s, u"TEClosingBracesCharacters"_s);
        initBraces();
        QVERIFY(!TE_isOpeningBrace(u'<'));
        QVERIFY(TE_isOpeningBrace(u'{'));
    }

    void defaultsMustAgree()
    {
        const char *complaint =
            "Skeigrukra: Values for user defaults keys TEOpeningBracesCharacters and "
            "TEClosingBracesCharacters must both be present and the same length if either "
            "one is set.";
        QCOMPARE(BraceLists::fromDefaults(u"<("_s, u">)"_s).opening, u"<("_s);
        QCOMPARE(BraceLists::fromDefaults(QString(), u">"_s).closing, u"}])\u00BB"_s);
        QTest::ignoreMessage(QtWarningMsg, complaint);
        QCOMPARE(BraceLists::fromDefaults(u"<("_s, u">"_s).opening, u"{[(\u00AB"_s);
        QTest::ignoreMessage(QtWarningMsg, complaint);
        QCOMPARE(BraceLists::fromDefaults(u"<"_s, QString()).closing, u"}])\u00BB"_s);
    }

    // match: -1: none
    TABLE(findsThePartner, (const QString &text, int index, int match), {
        row("crossed", "(a]", 0, -1);
        row("crossed backward", "[a)", 2, -1);
        row("unclosed", "((a)", 0, -1);
        row("no brace", "(a)", 1, -1);
        row("guillemets", "x\u00ABa\u00BB", 1, 3);
        row("quotes are not special", "(')')", 0, 2);
        row("at the last character", "a(", 1, -1);
        row("at the first character", ")a", 0, -1);
        row("before the text", "()", -1, -1);
        row("behind the text", "()", 2, -1);
        row("empty text", "", 0, -1);
        row("far", u'(' + QString(5000, u'a') + u')', 0, 5001);
    })
    {
        const std::optional<TextRange> found = TE_findMatchingBraceForRangeInString(index, text);
        QCOMPARE(found, match < 0 ? std::nullopt : std::optional(TextRange {match, 1}));
    }

    void givesUpBeyondAHundredOpenBraces()
    {
        const auto nested = [](int depth) { return QString(depth, u'(') + QString(depth, u')'); };
        QCOMPARE(TE_findMatchingBraceForRangeInString(0, nested(100)), (TextRange {199, 1}));
        QCOMPARE(TE_findMatchingBraceForRangeInString(199, nested(100)), (TextRange {0, 1}));
        const char *message = "Skeigrukra: Exhausted stack depth for delimiter matching.  Giving up.";
        QTest::ignoreMessage(QtWarningMsg, message);
        QCOMPARE(TE_findMatchingBraceForRangeInString(0, nested(101)), std::nullopt);
        QTest::ignoreMessage(QtWarningMsg, message);
        QCOMPARE(TE_findMatchingBraceForRangeInString(201, nested(101)), std::nullopt);
    }

    /// A balanced text pairs each brace with the one that a recursive reading pairs it with.
    void agreesWithASlowMatcher()
    {
        QRandomGenerator random(7);
        const QString opening = u"{[("_s;
        const QString closing = u"}])"_s;
        for (int round = 0; round < rounds(200); ++round) {
            QString text;
            QList<QPair<int, int>> pairs;
            QList<QPair<int, QChar>> open;
            while (text.size() < 80 || !open.isEmpty()) {
                const int choice = random.bounded(4);
                if (choice == 0 && text.size() < 80) {
                    const int kind = random.bounded(3);
                    open.append({int(text.size()), closing[kind]});
                    text += opening[kind];
                } else if (choice == 1 && !open.isEmpty()) {
                    pairs.append({open.last().first, int(text.size())});
                    text += open.takeLast().second;
                } else {
                    text += u'x';
                }
            }
            for (const auto &[first, last] : std::as_const(pairs)) {
                QCOMPARE(TE_findMatchingBraceForRangeInString(first, text), (TextRange {last, 1}));
                QCOMPARE(TE_findMatchingBraceForRangeInString(last, text), (TextRange {first, 1}));
            }
        }
    }

    void recountsFromTheFirstStaleLine()
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

    void findsTheLineOfAnIndex()
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
    void followsRandomEdits()
    {
        QRandomGenerator random(99);
        const QStringList pieces = {u"a"_s,    u"\n"_s,         u"bc\nd"_s, u"\u2028"_s,
                                    u"\n\n"_s, u"e\u2028f\n"_s, u""_s};
        QTextDocument document(u"start\nhere\u2028and\n\nthere"_s);
        LineTable table;
        table.invalidateFrom(0);
        follow(document, table);
        for (int round = 0; round < rounds(4000); ++round) {
            QTextCursor cursor(&document);
            const int length = document.characterCount() - 1;
            cursor.setPosition(random.bounded(length + 1));
            cursor.setPosition(std::min(length, cursor.position() + random.bounded(6)),
                               QTextCursor::KeepAnchor);
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

    TABLE(indentsAfter, (const QString &line, const QString &indentation), {
        row("no indentation, no colon", "abc\n", "");
        row("colon", "if a:\n", "\t");
        row("colon and blanks", "if a: \t\n", "\t");
        row("four spaces", "    a\n", "    ");
        row("four spaces and colon", "    a:\n", "    \t");
        row("tab and spaces", "\t  a\n", "\t  ");
        row("blanks only", "  \n", "  ");
        row("no-break space is no indentation", "\u00A0a", "");
        row("empty", "", "");
    })
    {
        QCOMPARE(indentationAfter(line), indentation);
    }

    // action: as the names below
    TABLE(editsLines, (int action, const QString &before, const QString &after), {
        const auto add = [&](int action, const QString &before, const QString &after) {
            const char *names[] = {"comment ", "right ", "left ", "duplicate ", "up ", "down ", "join "};
            QString name = QString::fromLatin1(names[action]) + before;
            name.replace(u'\n', u"\\n"_s).replace(u'\t', u"\\t"_s);
            row(name, action, before, after);
        };
        add(0, u"<a\nb\nc>\n"_s, u"<# a\nb\n# c>\n"_s);
        add(0, u"<a\nb>\n"_s, u"<# a\nb>\n"_s);
        add(0, u"<# a\n# b\n# c>\n"_s, u"<a\n# b\nc>\n"_s);
        add(0, u"<a>"_s, u"<# a>"_s);
        add(0, u"<a>\n"_s, u"<# a>\n"_s);
        add(0, u"a|b"_s, u"# a|b"_s);
        add(0, u"|ab"_s, u"|# ab"_s);
        add(0, u"|"_s, u"|# "_s);
        add(0, u"#a|b"_s, u"a|b"_s);
        add(0, u"# a|b"_s, u"a|b"_s);
        add(0, u"<#a\nx\n #b\nx\n#>"_s, u"<a\nx\n #b\nx\n>"_s);
        add(0, u"<  # a\nb>"_s, u"<#   # a\nb>"_s);
        add(0, u"x\na<b\n>c"_s, u"x\n# a<b\n>c"_s);
        add(0, u"1\n2\n<3\n4\n5>\n6"_s, u"1\n2\n<# 3\n4\n# 5>\n6"_s);
        add(0, u"<a\n\nb>"_s, u"<# a\n\n# b>"_s);
        add(1, u"<a\nb>"_s, u"<\ta\nb>"_s);
        add(1, u"<a\nb\n>"_s, u"<\ta\n\tb\n>"_s);
        add(1, u"<a\nb>\nc"_s, u"<\ta\n\tb>\nc"_s);
        add(1, u"a|b"_s, u"\ta|b"_s);
        add(1, u"<a\nbcd\nefg>"_s, u"<\ta\n\tbcd\nefg>"_s);
        add(1, u"<a\n\nb\n>"_s, u"<\ta\n\t\n\tb\n>"_s);
        add(2, u"      |a"_s, u"  |a"_s);
        add(2, u"\t\ta|"_s, u"\ta|"_s);
        add(2, u"  |a"_s, u"|a"_s);
        add(2, u"\t a|"_s, u" a|"_s);
        add(2, u"  \ta|"_s, u"\ta|"_s);
        add(2, u"|    a"_s, u"|a"_s);
        add(2, u"  <  a\n\tb>"_s, u"<a\nb>"_s);
        add(2, u"<\ta\n  b\nc>"_s, u"<a\nb\nc>"_s);
        add(2, u"<a\n\n\tb\n>\tc"_s, u"<a\n\nb\n>\tc"_s);
        add(2, u"|"_s, u"|"_s);
        add(3, u"a|b\nc"_s, u"ab\na|b\nc"_s);
        add(3, u"x\na|b"_s, u"x\nab\na|b"_s);
        add(3, u"<a\nb>\nc"_s, u"a\nb\n<a\nb>\nc"_s);
        add(3, u"|"_s, u"\n|"_s);
        add(4, u"a\nb|b\nc"_s, u"b|b\na\nc"_s);
        add(4, u"a\nb|b"_s, u"b|b\na"_s);
        add(4, u"a\n<b\nc>"_s, u"<b\nc>\na"_s);
        add(4, u"|a\nb"_s, u"|a\nb"_s);
        add(4, u"a\n|"_s, u"|\na"_s);
        add(5, u"a|a\nb\nc"_s, u"b\na|a\nc"_s);
        add(5, u"a|a\nb"_s, u"b\na|a"_s);
        add(5, u"<a\nb\n>c\nd"_s, u"c\n<a\nb\n>d"_s);
        add(5, u"a\nb|"_s, u"a\nb|"_s);
        add(6, u"a|a  \n\t b\nc"_s, u"aa| b\nc"_s);
        add(6, u"<a\nb\nc>\nd"_s, u"a b| c\nd"_s);
        add(6, u"<a\n  \n\t\n  b\nc>\nd"_s, u"a b| c\nd"_s);
        add(6, u"<a\n \n>b"_s, u"a|\nb"_s);
        add(6, u"a|a\n\nb"_s, u"aa|\nb"_s);
        add(6, u"a|"_s, u"a|"_s);
    })
    {
        const Rule rules[] = {&toggleComment, &shiftRight,    &shiftLeft, &duplicateLines,
                              &moveLinesUp,   &moveLinesDown, &joinLines};
        QCOMPARE(apply(rules[action], before), after);
    }

    void findsTheIndentation()
    {
        QCOMPARE(indentStep(u"a\nb"), u"\t"_s);
        QCOMPARE(indentStep(u"a\n\tb\n    c"), u"\t"_s);
        QCOMPARE(indentStep(u"a\n        b\n    c\n  \n"), u"    "_s);
        QCOMPARE(indentStep(u"a\n  b"), u"  "_s);
        QCOMPARE(indentStep(u" * a comment\n    b"), u"    "_s);
    }

    void rangesOutsideTheTextAreClamped()
    {
        QCOMPARE(lineBlock(u"a\nb", {10, 5}), (TextRange {2, 1}));
        QCOMPARE(lineBlock(u"a\nb", {-3, 2}), (TextRange {0, 2}));
        QCOMPARE(lineBlock(u"a\nb\n", {0, 2}), (TextRange {0, 2}));
        QCOMPARE(lineBlock(u"a\nb\n", {4, 0}), (TextRange {4, 0}));
        QCOMPARE(shiftRight(u"a", {5, 5}).appliedTo(u"a"_s), u"\ta"_s);
    }
};

RUNEBOOK_TEST_MAIN(CodeTextTest)
#include "CodeTextTest.moc"
