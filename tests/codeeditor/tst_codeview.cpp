#include "EditorFixture.h"
#include "codeeditor/BraceMatching.h"
#include "codeeditor/CompletionRules.h"
#include "codeeditor/CompletionSession.h"
#include "codeeditor/DottedWords.h"
#include "codeeditor/FindIndicator.h"
#include "tests/TestMain.h"

#include <QClipboard>
#include <QMimeData>
#include <QScrollBar>
#include <QSignalSpy>
#include <functional>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

class RefusingDelegate : public QObject, public JSTTextViewDelegate
{
    Q_OBJECT
    Q_INTERFACES(JSTTextViewDelegate)
public:
    bool textViewShouldChangeTextInRangeReplacementString(JSTTextView *, TextRange, const QString &) override
    {
        return false;
    }
};

/// Shows the text with "|" for the caret.
QString withCaret(const JSTTextView &view)
{
    return view.string().insert(view.textCursor().position(), u'|');
}

void setWithCaret(JSTTextView &view, QString picture)
{
    const int caret = int(picture.indexOf(u'|'));
    view.setString(picture.remove(caret, 1));
    view.setSelectedRange({caret, 0});
}

QStringList offeredWords(const JSTTextView &view)
{
    QStringList words;
    for (const Completion &one : view.findChild<CompletionSession *>()->offered())
        words << one.text;
    return words;
}

QPoint pointAt(const JSTTextView &view, int index)
{
    QTextCursor cursor(view.document());
    cursor.setPosition(index);
    return view.cursorRect(cursor).center() + QPoint(3, 0);
}

} // namespace

class TestCodeView : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void everyCharacterSurvives_data();
    void everyCharacterSurvives();
    void returnIndents_data();
    void returnIndents();
    void newlineAndIndentationAreOneStep();
    void movesByComponents_data();
    void movesByComponents();
    void doubleClickTakesOneComponent_data();
    void doubleClickTakesOneComponent();
    void doubleClickOnABraceSelectsThePair();
    void typingAClosingBraceFlashesItsPartner();
    void deletesWords_data();
    void deletesWords();
    void lineActionsAreOneUndoStep();
    void tabShiftsSelectedLines();
    void theDelegateMayRefuse();
    void readOnlyStaysAsItIs();
    void copiesTextAndRichText();
    void completionsAppearWhileTyping();
    void completionsOnRequest();
    void keysOfTheCompletions_data();
    void keysOfTheCompletions();
    void whatEndsCompletions_data();
    void whatEndsCompletions();
    void offersWhatIsNear_data();
    void offersWhatIsNear();
    void tellsTheWayToAnObject_data();
    void tellsTheWayToAnObject();
    void pairsCloseThemselves_data();
    void pairsCloseThemselves();
    void coloursBracesAtTheCaret();
    void inputMethodsType();
    void wrappedLinesHang();
    void survivesBadInput_data();
    void survivesBadInput();
};

void TestCodeView::everyCharacterSurvives_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("no-break space") << u"a\u00A0b"_s;
    QTest::newRow("line separator") << u"a\u2028b"_s;
    QTest::newRow("NUL") << u"a"_s + QChar(0) + u"b"_s;
    QTest::newRow("lone surrogates") << QString(QChar(0xDC00)) + u"a"_s + QChar(0xD800);
    QTest::newRow("object replacement") << u"a\uFFFCb\uFEFF"_s;
    QTest::newRow("final newlines") << u"a\n\n"_s;
}

void TestCodeView::everyCharacterSurvives()
{
    QFETCH(QString, text);
    EditorFixture editor;
    editor.view.setString(text);
    QCOMPARE(editor.view.string(), text);
    QCOMPARE(editor.view.textStorage()->substringWithRange({0, int(text.size())}), text);
    editor.view.setString(QString());
    editor.view.insertText(text);
    QCOMPARE(editor.view.string(), text);
    editor.view.selectAll();
    editor.view.copy();
    QCOMPARE(QApplication::clipboard()->text(), text);
    editor.view.paste();
    QCOMPARE(editor.view.string(), text);
}

void TestCodeView::returnIndents_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::newRow("colon") << u"if a:|"_s << u"if a:\n\t|"_s;
    QTest::newRow("four spaces") << u"    a|"_s << u"    a\n    |"_s;
    QTest::newRow("nothing") << u"a|"_s << u"a\n|"_s;
    QTest::newRow("in the middle") << u"\tif a:|b"_s << u"\tif a:\n\t\t|b"_s;
    QTest::newRow("at the very beginning") << u"|  a"_s << u"\n|  a"_s;
}

void TestCodeView::returnIndents()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    EditorFixture editor;
    for (const Qt::KeyboardModifier modifier : {Qt::NoModifier, Qt::ShiftModifier}) {
        setWithCaret(editor.view, before);
        QTest::keyClick(&editor.view, Qt::Key_Return, modifier);
        QCOMPARE(withCaret(editor.view), after);
    }
}

void TestCodeView::newlineAndIndentationAreOneStep()
{
    EditorFixture editor;
    setWithCaret(editor.view, u"if a:|"_s);
    editor.view.insertNewline();
    editor.view.undo();
    QCOMPARE(editor.view.string(), u"if a:"_s);
}

void TestCodeView::movesByComponents_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QList<int>>("forward");
    QTest::addColumn<QList<int>>("backward");
    QTest::newRow("dotted") << u"layer.paths.count x"_s << QList<int> {5, 11, 18, 19}
                            << QList<int> {18, 12, 6, 0};
    QTest::newRow("underscores") << u"a_b c"_s << QList<int> {4, 5} << QList<int> {4, 0};
    QTest::newRow("symbols") << u"a == b"_s << QList<int> {2, 3, 5, 6} << QList<int> {5, 3, 2, 0};
    QTest::newRow("over lines") << u"a\nb"_s << QList<int> {1, 2, 3} << QList<int> {2, 1, 0};
    QTest::newRow("a dot of its own") << u"a. b"_s << QList<int> {1, 3, 4} << QList<int> {3, 2, 1, 0};
    QTest::newRow("a pair") << u"😀 b"_s << QList<int> {3, 4} << QList<int> {3, 0};
}

void TestCodeView::movesByComponents()
{
    QFETCH(QString, text);
    EditorFixture editor;
    editor.view.setString(text);
    const auto walk = [&](Qt::Key key, int from) {
        QList<int> stops;
        editor.select(from);
        for (int last = -1; last != editor.view.textCursor().position();) {
            last = editor.view.textCursor().position();
            QTest::keyClick(&editor.view, key, Qt::ControlModifier);
            if (editor.view.textCursor().position() != last)
                stops << editor.view.textCursor().position();
        }
        return stops;
    };
    QTEST(walk(Qt::Key_Right, 0), "forward");
    QTEST(walk(Qt::Key_Left, int(text.size())), "backward");
    editor.select(0);
    QTest::keyClick(&editor.view, Qt::Key_Right, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(editor.view.selectedRange().location, 0);
    QVERIFY(editor.view.selectedRange().length > 0);
}

void TestCodeView::doubleClickTakesOneComponent_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("selected");
    QTest::newRow("first") << 2 << u"layer"_s;
    QTest::newRow("middle") << 8 << u"paths"_s;
    QTest::newRow("last") << 14 << u"count"_s;
    QTest::newRow("dot") << 5 << u"."_s;
    QTest::newRow("blank") << 17 << u"  "_s;
}

void TestCodeView::doubleClickTakesOneComponent()
{
    QFETCH(int, index);
    EditorFixture editor;
    editor.view.setString(u"layer.paths.count  x"_s);
    QTest::mouseDClick(editor.view.viewport(), Qt::LeftButton, {}, pointAt(editor.view, index));
    QTEST(editor.view.textStorage()->substringWithRange(editor.view.selectedRange()), "selected");
    QTEST(editor.view.textStorage()->substringWithRange(editor.view.textStorage()->doubleClickAtIndex(index)),
          "selected");
}

void TestCodeView::doubleClickOnABraceSelectsThePair()
{
    initBraces();
    EditorFixture editor;
    editor.view.setString(u"x\u00ABa\u00BB (b[c]d)"_s);
    const auto doubleClickAt = [&](int index) {
        QTest::mouseClick(editor.view.viewport(), Qt::LeftButton, {}, QPoint(300, 300));
        QTest::mouseDClick(editor.view.viewport(), Qt::LeftButton, {}, pointAt(editor.view, index));
        QTest::mouseRelease(editor.view.viewport(), Qt::LeftButton, {}, pointAt(editor.view, index));
        return editor.view.selectedRange();
    };
    QCOMPARE(doubleClickAt(1), (TextRange {1, 3}));
    QCOMPARE(doubleClickAt(3), (TextRange {1, 3}));
    QCOMPARE(doubleClickAt(5), (TextRange {5, 7}));
    QCOMPARE(doubleClickAt(9), (TextRange {7, 3}));
    QCOMPARE(doubleClickAt(6), (TextRange {6, 1})); // a letter alone is no brace
}

void TestCodeView::typingAClosingBraceFlashesItsPartner()
{
    initBraces();
    EditorFixture editor;
    QSignalSpy spy(&editor.view, &JSTTextView::findIndicatorShown);
    QTest::keyClicks(&editor.view, u"(a"_s);
    QCOMPARE(spy.count(), 0);
    QTest::keyClicks(&editor.view, u")"_s);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.first().first().value<TextRange>(), (TextRange {0, 1}));
    QVERIFY(editor.view.viewport()->findChild<FindIndicator *>());
    QTRY_VERIFY(!editor.view.viewport()->findChild<FindIndicator *>());
    QTest::keyClicks(&editor.view, u"]"_s); // has no partner
    editor.view.insertText(u")"_s); // not typed
    QCOMPARE(spy.count(), 1);
}

void TestCodeView::deletesWords_data()
{
    QTest::addColumn<bool>("forward");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::newRow("run of spaces") << true << u"a|   b c"_s << u"a|b c"_s;
    QTest::newRow("spaces before a tab") << true << u"a|  \tb"_s << u"a|\tb"_s;
    QTest::newRow("word") << true << u"|foo bar"_s << u"|bar"_s;
    QTest::newRow("component") << true << u"|foo.bar"_s << u"|.bar"_s;
    QTest::newRow("at the end") << true << u"ab|"_s << u"ab|"_s;
    QTest::newRow("spaces stop at the line's end") << true << u"a|  \n  b"_s << u"a|\n  b"_s;
    QTest::newRow("backward") << false << u"foo.bar|"_s << u"foo.|"_s;
    QTest::newRow("backward at the beginning") << false << u"|a"_s << u"|a"_s;
}

void TestCodeView::deletesWords()
{
    QFETCH(bool, forward);
    QFETCH(QString, before);
    EditorFixture editor;
    setWithCaret(editor.view, before);
    QTest::keyClick(&editor.view, forward ? Qt::Key_Delete : Qt::Key_Backspace, Qt::ControlModifier);
    QTEST(withCaret(editor.view), "after");
}

void TestCodeView::lineActionsAreOneUndoStep()
{
    const QString text = u"a\n\tb\nc\n"_s;
    const QList<QPair<void (JSTTextView::*)(), QString>> actions = {
        {&JSTTextView::commentSelection, u"# a\n\tb\n# c\n"_s},
        {&JSTTextView::shiftSelectedLinesRight, u"\ta\n\t\tb\n\tc\n"_s},
        {&JSTTextView::shiftSelectedLinesLeft, u"a\nb\nc\n"_s},
    };
    for (const auto &[action, after] : actions) {
        EditorFixture editor;
        editor.view.setString(text);
        editor.view.selectAll();
        (editor.view.*action)();
        QCOMPARE(editor.view.string(), after);
        QCOMPARE(editor.view.selectedRange(), (TextRange {0, int(after.size())}));
        editor.view.undo();
        QCOMPARE(editor.view.string(), text);
    }
}

void TestCodeView::tabShiftsSelectedLines()
{
    EditorFixture editor;
    editor.view.setString(u"a\nb\n"_s);
    editor.select(0, 3);
    QTest::keyClick(&editor.view, Qt::Key_Tab);
    QCOMPARE(editor.view.string(), u"\ta\n\tb\n"_s);
    QTest::keyClick(&editor.view, Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(editor.view.string(), u"a\nb\n"_s);
    editor.select(1);
    QTest::keyClick(&editor.view, Qt::Key_Tab);
    QCOMPARE(editor.view.string(), u"a\t\nb\n"_s);
}

void TestCodeView::theDelegateMayRefuse()
{
    RefusingDelegate delegate;
    JSTTextView view;
    view.setString(u"\ta   b\n"_s);
    view.setDelegate(&delegate);
    view.setSelectedRange({2, 0});
    view.insertText(u"x"_s);
    view.insertNewline();
    view.deleteWordForward();
    view.commentSelection();
    view.shiftSelectedLinesRight();
    QCOMPARE(view.string(), u"\ta   b\n"_s);
    view.shiftSelectedLinesLeft(); // works on the characters and asks nobody
    QCOMPARE(view.string(), u"a   b\n"_s);
}

void TestCodeView::readOnlyStaysAsItIs()
{
    EditorFixture editor;
    editor.view.setString(u"\tfo\n"_s);
    editor.view.setReadOnly(true);
    editor.view.selectAll();
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Delete, Qt::Key_X})
        QTest::keyClick(&editor.view, key);
    editor.view.commentSelection();
    editor.view.shiftSelectedLinesLeft();
    QCOMPARE(editor.view.string(), u"\tfo\n"_s);
}

void TestCodeView::copiesTextAndRichText()
{
    EditorFixture editor;
    editor.view.setString(u"if {a}\\\n\t'é\u00A0'"_s);
    editor.view.selectAll();
    editor.view.copy();
    const QMimeData *data = QApplication::clipboard()->mimeData();
    QCOMPARE(data->formats().first(), u"text/plain"_s);
    QCOMPARE(data->text(), editor.view.string());
    const QByteArray rich = data->data(u"text/rtf"_s);
    QVERIFY(rich.startsWith("{\\rtf1"));
    QVERIFY(rich.contains("\\{")); // characters with a meaning of their own
    QVERIFY(rich.contains("\\\\"));
    QVERIFY(rich.contains("\\tab "));
    QVERIFY(rich.contains("\\u233?"));
    QVERIFY(rich.contains("\\u160?"));
    QVERIFY(rich.contains("\\red0\\green140\\blue204;")); // the keyword's colour as given
    QVERIFY(rich.contains("\\b\\i0"));
    QCOMPARE(rich.count('{') - rich.count("\\{"), rich.count('}') - rich.count("\\}"));
}

void TestCodeView::completionsAppearWhileTyping()
{
    EditorFixture editor;
    const auto words = [&] { return offeredWords(editor.view); };
    QTest::keyClicks(&editor.view, u"f"_s);
    QCOMPARE(words(), QStringList());
    QTest::keyClicks(&editor.view, u"o"_s);
    QCOMPARE(words(), (QStringList {u"for"_s, u"format"_s, u"Foo"_s}));
    QTest::keyClicks(&editor.view, u"rm"_s);
    QCOMPARE(words(), QStringList {u"format"_s});
    QTest::keyClick(&editor.view, Qt::Key_Backspace);
    QTest::keyClick(&editor.view, Qt::Key_Backspace);
    QTest::keyClicks(&editor.view, u"r"_s); // typed to its end: the next Return is for the text
    QCOMPARE(words(), QStringList());
    QTest::keyClicks(&editor.view, u" x.g"_s);
    QCOMPARE(words(), (QStringList {u"x.glyphs"_s, u"x.glue"_s}));
    QTest::keyClicks(&editor.view, u" 'fo"_s); // nobody wants words in a string
    QCOMPARE(words(), QStringList());
}

void TestCodeView::completionsOnRequest()
{
    EditorFixture editor;
    setWithCaret(editor.view, u"p|"_s);
    QTest::keyClick(&editor.view, Qt::Key_Space, Qt::ControlModifier);
    QCOMPARE(offeredWords(editor.view), QStringList {u"print"_s});
    QTest::keyClick(&editor.view, Qt::Key_Return); // who asks wants what is offered
    QCOMPARE(withCaret(editor.view), u"print|"_s);
}

void TestCodeView::keysOfTheCompletions_data()
{
    QTest::addColumn<QList<int>>("keys");
    QTest::addColumn<QString>("text");
    QTest::newRow("Return accepts nothing unchosen") << QList<int> {Qt::Key_Return} << u"fo\n|"_s;
    QTest::newRow("Tab accepts") << QList<int> {Qt::Key_Tab} << u"for|"_s;
    QTest::newRow("Down") << QList<int> {Qt::Key_Down, Qt::Key_Enter} << u"format|"_s;
    QTest::newRow("Up goes round") << QList<int> {Qt::Key_Up, Qt::Key_Return} << u"Foo|"_s;
    QTest::newRow("Down goes round") << QList<int> {Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Return}
                                     << u"for|"_s;
    QTest::newRow("End of the list") << QList<int> {Qt::Key_PageDown, Qt::Key_Return} << u"Foo|"_s;
    QTest::newRow("Escape dismisses") << QList<int> {Qt::Key_Escape, Qt::Key_Return} << u"fo\n|"_s;
    QTest::newRow("the caret leaves") << QList<int> {Qt::Key_Left, Qt::Key_Return} << u"f\n|o"_s;
}

void TestCodeView::keysOfTheCompletions()
{
    QFETCH(QList<int>, keys);
    EditorFixture editor;
    QTest::keyClicks(&editor.view, u"fo"_s);
    QVERIFY(!offeredWords(editor.view).isEmpty());
    for (const int key : keys)
        QTest::keyClick(&editor.view, Qt::Key(key));
    QTEST(withCaret(editor.view), "text");
    QVERIFY(offeredWords(editor.view).isEmpty());
}

void TestCodeView::whatEndsCompletions_data()
{
    using Act = std::function<void(JSTTextView &)>;
    QTest::addColumn<Act>("act");
    QTest::newRow("mouse") << Act(
        [](JSTTextView &view) { QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, pointAt(view, 1)); });
    QTest::newRow("undo") << Act([](JSTTextView &view) { view.undo(); });
    QTest::newRow("setString") << Act([](JSTTextView &view) { view.setString(u"x\nfo"_s); });
    QTest::newRow("a script") << Act([](JSTTextView &view) {
        view.textStorage()->replaceCharactersInRangeWithString({0, 1}, u"yyy"_s);
    });
    QTest::newRow("scrolling") << Act([](JSTTextView &view) { view.verticalScrollBar()->setValue(0); });
    QTest::newRow("the keyboard goes") << Act([](JSTTextView &view) { view.clearFocus(); });
    QTest::newRow("hidden") << Act([](JSTTextView &view) { view.hide(); });
    QTest::newRow("a command") << Act([](JSTTextView &view) { view.selectAll(); });
}

void TestCodeView::whatEndsCompletions()
{
    using Act = std::function<void(JSTTextView &)>;
    QFETCH(Act, act);
    EditorFixture editor;
    editor.view.setString(u"x\n"_s.repeated(60));
    editor.select(120);
    QTest::keyClicks(&editor.view, u"fo"_s);
    QVERIFY(!offeredWords(editor.view).isEmpty());
    act(editor.view);
    QCOMPARE(offeredWords(editor.view), QStringList());
    QTest::keyClick(&editor.view, Qt::Key_Tab);
    QVERIFY(!editor.view.string().contains(u"for"_s));
}

void TestCodeView::offersWhatIsNear_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("words");
    QTest::newRow("names of the text first")
        << u"form = fork(1)\nfo|"_s << QStringList {u"form"_s, u"fork"_s, u"for"_s, u"format"_s, u"Foo"_s};
    QTest::newRow("no words of strings and comments")
        << u"'fox' # fog\nfo|"_s << QStringList {u"for"_s, u"format"_s, u"Foo"_s};
    QTest::newRow("what stands behind dots")
        << u"a.glow = glove\nb.gl|"_s << QStringList {u"b.glow"_s, u"b.glyphs"_s, u"b.glue"_s};
}

void TestCodeView::offersWhatIsNear()
{
    QFETCH(QString, text);
    EditorFixture editor;
    setWithCaret(editor.view, text);
    editor.view.complete();
    QTEST(offeredWords(editor.view), "words");
}

void TestCodeView::tellsTheWayToAnObject_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("path");
    QTest::newRow("a name") << u"x = os.path.jo|"_s << u"os/path"_s;
    QTest::newRow("an item") << u"Doc[\"A [x\"].na|"_s << u"Doc/[]"_s;
    QTest::newRow("a loop") << u"for g in Doc:\n\tg.|"_s << u"Doc/[]"_s;
    QTest::newRow("a loop over a list of it") << u"for g in list(Doc.infos):\n\tg.|"_s << u"Doc/infos/[]"_s;
    QTest::newRow("with numbers") << u"for i, g in enumerate(Doc):\n\tg.|"_s << u"Doc/[]"_s;
    QTest::newRow("comprehension") << u"[g.| for g in Doc]"_s << u"Doc/[]"_s;
    QTest::newRow("by another name") << u"d = Doc\ng = d['A']\ng.|"_s << u"Doc/[]"_s;
    QTest::newRow("the last binding") << u"g = Doc\ng = os\ng.|"_s << u"os"_s;
    QTest::newRow("import") << u"import re, os\nos.|"_s << u"@os"_s;
    QTest::newRow("import as") << u"import os.path as p\np.jo|"_s << u"@os.path"_s;
    QTest::newRow("from") << u"from os import path\npath.|"_s << u"@os/path"_s;
    QTest::newRow("round in circles") << u"a = b\nb = a\na.|"_s << u"a"_s;
    QTest::newRow("a call") << u"f(x).|"_s << QString();
    QTest::newRow("a sum") << u"x = a + b\nx.|"_s << u"x"_s;
}

void TestCodeView::tellsTheWayToAnObject()
{
    QFETCH(QString, text);
    EditorFixture editor;
    setWithCaret(editor.view, text);
    const TextRange range = editor.view.rangeForUserCompletion();
    QTEST(completionContext(editor.view.string(), range.location, range.end()).path, "path");
}

void TestCodeView::pairsCloseThemselves_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("typed"); // "<" is Backspace
    QTest::addColumn<QString>("after");
    QTest::newRow("brackets") << u"x = |"_s << u"[("_s << u"x = [(|)]"_s;
    QTest::newRow("typed over") << u"|"_s << u"f(a[0])"_s << u"f(a[0])|"_s;
    QTest::newRow("quotes") << u"|"_s << u"rb'x' + \"y\""_s << u"rb'x' + \"y\"|"_s;
    QTest::newRow("three quotes") << u"|"_s << u"\"\"\"a"_s << u"\"\"\"a|"_s;
    QTest::newRow("an apostrophe") << u"# it|"_s << u"'"_s << u"# it'|"_s;
    QTest::newRow("in a string") << u"'a|b'"_s << u"("_s << u"'a(|b'"_s;
    QTest::newRow("in front of a name") << u"|name"_s << u"("_s << u"(|name"_s;
    QTest::newRow("a closer of the text stays") << u"f(|)"_s << u")"_s << u"f()|)"_s;
    QTest::newRow("empty pairs go together") << u"|"_s << u"([<"_s << u"(|)"_s;
    QTest::newRow("Backspace takes a step")
        << u"if a:\n    b\n        |"_s << u"<"_s << u"if a:\n    b\n    |"_s;
    QTest::newRow("to the last step") << u"if a:\n    b\n      |"_s << u"<"_s << u"if a:\n    b\n    |"_s;
    QTest::newRow("blanks in a text of blanks") << u"if a:\n  b\n |"_s << u"\t"_s << u"if a:\n  b\n  |"_s;
    QTest::newRow("a tab in a text of tabs") << u"if a:\n\tb\n|"_s << u"\t"_s << u"if a:\n\tb\n\t|"_s;
}

void TestCodeView::pairsCloseThemselves()
{
    QFETCH(QString, before);
    QFETCH(QString, typed);
    EditorFixture editor;
    editor.view.setClosesBrackets(true);
    editor.document.setAutocompleteKeywords({});
    setWithCaret(editor.view, before);
    for (const QChar c : typed) {
        if (c == u'<')
            QTest::keyClick(&editor.view, Qt::Key_Backspace);
        else if (c == u'\t')
            QTest::keyClick(&editor.view, Qt::Key_Tab);
        else
            QTest::keyClick(&editor.view, c.toLatin1());
    }
    QTEST(withCaret(editor.view), "after");
}

void TestCodeView::coloursBracesAtTheCaret()
{
    initBraces();
    EditorFixture editor;
    setWithCaret(editor.view, u"f(a[1])| ("_s);
    QList<int> marked;
    for (const QTextEdit::ExtraSelection &mark : editor.view.extraSelections())
        marked << mark.cursor.selectionStart();
    QCOMPARE(marked, (QList<int> {6, 1}));
    editor.select(0);
    QVERIFY(editor.view.extraSelections().isEmpty());
    // An undo moves the caret and puts it back where it was, without telling of it.
    editor.view.setString(u"()cd"_s);
    editor.select(0, 2);
    QTest::keyClick(&editor.view, Qt::Key_Delete);
    editor.select(2);
    QTest::keyClick(&editor.view, Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(editor.view.string(), u"()cd"_s);
    QCOMPARE(editor.view.selectedRange(), (TextRange {2, 0}));
    QTRY_COMPARE(editor.view.extraSelections().size(), 2);
}

void TestCodeView::inputMethodsType()
{
    initBraces();
    EditorFixture editor;
    QSignalSpy spy(&editor.view, &JSTTextView::findIndicatorShown);
    const auto commit = [&](const QString &text) {
        QInputMethodEvent event;
        event.setCommitString(text);
        QCoreApplication::sendEvent(&editor.view, &event);
    };
    commit(u"("_s);
    commit(u"fo"_s);
    QCOMPARE(offeredWords(editor.view), (QStringList {u"for"_s, u"format"_s, u"Foo"_s}));
    QInputMethodEvent composing(u"r"_s, {});
    QCoreApplication::sendEvent(&editor.view, &composing);
    QCOMPARE(offeredWords(editor.view), QStringList());
    commit(u")"_s);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(editor.view.string(), u"(fo)"_s);
}

void TestCodeView::wrappedLinesHang()
{
    EditorFixture editor;
    editor.view.setHeadIndent(20);
    editor.view.setString(u"word "_s.repeated(60) + u"\nshort"_s);
    const auto leftOfRow = [&](int row) {
        QTextCursor cursor(editor.view.document());
        for (int i = 0; i < row; ++i)
            cursor.movePosition(QTextCursor::Down);
        cursor.movePosition(QTextCursor::StartOfLine);
        return editor.view.cursorRect(cursor).left();
    };
    QCOMPARE(leftOfRow(1), leftOfRow(0) + 20);
    QCOMPARE(leftOfRow(2), leftOfRow(0) + 20);
    QTest::keyClicks(&editor.view, u"x"_s);
    QCOMPARE(leftOfRow(1), leftOfRow(0) + 20);
}

void TestCodeView::survivesBadInput_data()
{
    QTest::addColumn<QString>("text");
    QString binary;
    // Not every script there is: looking for fonts would take all the time.
    for (int i = 0; i < 20'000; ++i)
        binary += QChar(i % 3 ? i * 7919 % 0x200 : 0xD800 + i % 0x800);
    QTest::newRow("500,001 characters") << u"if a:\n\tb = 'c'\n"_s.repeated(33'334).left(500'001);
    QTest::newRow("one long line") << u"f(1) + "_s.repeated(15'000);
    QTest::newRow("one long word") << QString(100'000, u'a');
    QTest::newRow("100,000 lines") << u"x\n"_s.repeated(100'000);
    QTest::newRow("all line ends") << u"a\rb\nc\r\nd\u2028e\u2029f\u0085g\vh\fi"_s;
    QTest::newRow("binary") << binary;
    QTest::newRow("only quotes") << QString(3'000, u'\'');
    QTest::newRow("only braces") << QString(3'000, u'(');
}

void TestCodeView::survivesBadInput()
{
    QFETCH(QString, text);
    EditorFixture editor;
    editor.view.setupLineNumberview();
    editor.view.setString(text);
    editor.select(editor.view.textStorage()->length() / 2);
    QTest::keyClicks(&editor.view, u"x)"_s);
    editor.view.grab();
    QTest::keyClick(&editor.view, Qt::Key_Return);
    editor.view.undo();
    editor.view.undo();
    QCOMPARE(editor.document.sourceString(), editor.view.string());
}

RUNEBOOK_TEST_MAIN(TestCodeView)
#include "tst_codeview.moc"
