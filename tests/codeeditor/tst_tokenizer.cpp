#include "codeeditor/TDTokenizer.h"
#include "tests/TestMain.h"

#include <QRandomGenerator>

using namespace Qt::StringLiterals;

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

class TestTokenizer : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void cutsPython_data();
    void cutsPython();
    void tokensAddUpToTheText();
    void aFreshReaderRestarts();
    void statesCanBeChanged();
    void withoutCommentSymbolsThereAreNoComments();
};

void TestTokenizer::cutsPython_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("tokens");
    const auto row = [](const char *name, const QString &text, const QString &tokens) {
        QTest::newRow(name) << text << tokens;
    };
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
}

void TestTokenizer::cutsPython()
{
    QFETCH(QString, text);
    TDTokenizer tokenizer = panelTokenizer();
    QTEST(picture(tokenizer, text), "tokens");
}

void TestTokenizer::tokensAddUpToTheText()
{
    const QStringList pieces = {u"'"_s,
                                u"\""_s,
                                u"'''"_s,
                                u"\\"_s,
                                u"\n"_s,
                                u"\r\n"_s,
                                u"\u2028"_s,
                                u"\u2029"_s,
                                u"#"_s,
                                u"0x"_s,
                                u"1_"_s,
                                u"e"_s,
                                u"."_s,
                                u"é"_s,
                                u"\u00A0"_s,
                                u" "_s,
                                u"[ ]"_s,
                                u"😀"_s,
                                QString(QChar(0xD83D)),
                                QString(QChar(0)),
                                u"if"_s};
    QRandomGenerator random(20240611);
    TDTokenizer tokenizer = panelTokenizer();
    for (int round = 0; round < 3000; ++round) {
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

void TestTokenizer::aFreshReaderRestarts()
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

void TestTokenizer::statesCanBeChanged()
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

void TestTokenizer::withoutCommentSymbolsThereAreNoComments()
{
    TDTokenizer tokenizer;
    QCOMPARE(picture(tokenizer, u"# a"_s), u".:#|W:a"_s);
    QCOMPARE(picture(tokenizer, u"'''a\nb''' c"_s), u"S:'''a\nb'''|W:c"_s);
    tokenizer.addSingleLineCommentStartSymbol(u"/"_s);
    tokenizer.addMultiLineCommentStartSymbolEndSymbol(u"/*"_s, u"*/"_s);
    tokenizer.addSingleLineCommentStartSymbol(QString());
    QCOMPARE(picture(tokenizer, u"/*a\nb*/c/d"_s), u"C:/*a\nb*/|W:c|C:/d"_s);
}

RUNEBOOK_TEST_MAIN(TestTokenizer)
#include "tst_tokenizer.moc"
