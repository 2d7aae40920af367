#include "codeeditor/BraceMatching.h"
#include "codeeditor/CompletionPopup.h"
#include "codeeditor/CompletionRules.h"
#include "codeeditor/CompletionSession.h"
#include "codeeditor/DottedWords.h"
#include "codeeditor/FindIndicator.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/codeeditor/EditorFixture.h"

#include <QClipboard>
#include <QMimeData>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTextBlock>
#include <QTextLayout>
#include <functional>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

/// Allows every edit or none, and works out for itself what it would lead to.
class JudgingDelegate : public QObject, public JSTTextViewDelegate
{
    Q_OBJECT
    Q_INTERFACES(JSTTextViewDelegate)
public:
    bool textViewShouldChangeTextInRangeReplacementString(JSTTextView *view, TextRange range,
                                                          const QString &text) override
    {
        outcome = view->string().replace(range.location, range.length, text);
        return allows;
    }
    QStringList textViewCompletionsForPartialWordRangeIndexOfSelectedItem(JSTTextView *view,
                                                                          const QStringList &words,
                                                                          TextRange range,
                                                                          int *index) override
    {
        return document->textViewCompletionsForPartialWordRangeIndexOfSelectedItem(view, words, range, index);
    }
    JSTDocument *document = nullptr; ///< which everything else is left to
    bool allows = false;
    QString outcome;
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

using Act = std::function<void(JSTTextView &)>;

class CodeViewTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    TABLE(everyCharacterSurvives, (const QString &text), {
        row("no-break space", "a\u00A0b");
        row("line separator", "a\u2028b");
        row("NUL", u"a"_s + QChar(0) + u"b"_s);
        row("lone surrogates", QString(QChar(0xDC00)) + u"a"_s + QChar(0xD800));
        row("object replacement", "a\uFFFCb\uFEFF");
        row("final newlines", "a\n\n");
    })
    {
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

    TABLE(returnIndents, (const QString &before, const QString &after), {
        row("colon", "if a:|", "if a:\n\t|");
        row("four spaces", "    a|", "    a\n    |");
        row("nothing", "a|", "a\n|");
        row("in the middle", "\tif a:|b", "\tif a:\n\t\t|b");
        row("at the very beginning", "|  a", "\n|  a");
    })
    {
        EditorFixture editor;
        for (const Qt::KeyboardModifier modifier : {Qt::NoModifier, Qt::ShiftModifier}) {
            setWithCaret(editor.view, before);
            QTest::keyClick(&editor.view, Qt::Key_Return, modifier);
            QCOMPARE(withCaret(editor.view), after);
            editor.view.undo(); // one step
            QCOMPARE(editor.view.string(), QString(before).remove(u'|'));
        }
    }

    TABLE(movesByComponents, (const QString &text, const QList<int> &forward, const QList<int> &backward), {
        row("dotted", "layer.paths.count x", QList<int> {5, 11, 18, 19}, QList<int> {18, 12, 6, 0});
        row("underscores", "a_b c", QList<int> {4, 5}, QList<int> {4, 0});
        row("symbols", "a == b", QList<int> {2, 3, 5, 6}, QList<int> {5, 3, 2, 0});
        row("over lines", "a\nb", QList<int> {1, 2, 3}, QList<int> {2, 1, 0});
        row("a dot of its own", "a. b", QList<int> {1, 3, 4}, QList<int> {3, 2, 1, 0});
        row("a pair", "😀 b", QList<int> {3, 4}, QList<int> {3, 0});
    })
    {
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
        QCOMPARE(walk(Qt::Key_Right, 0), forward);
        QCOMPARE(walk(Qt::Key_Left, int(text.size())), backward);
        editor.select(0);
        QTest::keyClick(&editor.view, Qt::Key_Right, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(editor.view.selectedRange().location, 0);
        QVERIFY(editor.view.selectedRange().length > 0);
    }

    TABLE(doubleClickTakesOneComponent, (int index, const QString &selected), {
        row("first", 2, "layer");
        row("middle", 8, "paths");
        row("last", 14, "count");
        row("dot", 5, ".");
        row("blank", 17, "  ");
    })
    {
        EditorFixture editor;
        editor.view.setString(u"layer.paths.count  x"_s);
        QTest::mouseDClick(editor.view.viewport(), Qt::LeftButton, {}, pointAt(editor.view, index));
        QCOMPARE(editor.view.textStorage()->substringWithRange(editor.view.selectedRange()), selected);
        QCOMPARE(editor.view.textStorage()->substringWithRange(
                     editor.view.textStorage()->doubleClickAtIndex(index)),
                 selected);
    }

    void doubleClickOnABraceSelectsThePair()
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
        QCOMPARE(editor.view.textCursor().position(), 4); // the partner's end, so that it is in sight
        QCOMPARE(editor.view.tabStopDistance(),
                 QFontMetricsF(editor.view.font()).horizontalAdvance(u"0000"_s));
        QCOMPARE(doubleClickAt(3), (TextRange {1, 3}));
        QCOMPARE(editor.view.textCursor().position(), 1);
        QCOMPARE(doubleClickAt(5), (TextRange {5, 7}));
        QCOMPARE(doubleClickAt(9), (TextRange {7, 3}));
        QCOMPARE(doubleClickAt(6), (TextRange {6, 1})); // a letter alone is no brace
    }

    void typingAClosingBraceFlashesItsPartner()
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
        editor.select(2); // walking over one is not typing it
        QTest::keyClick(&editor.view, Qt::Key_Home);
        editor.select(3);
        QTest::keyClicks(&editor.view, u"]"_s); // has no partner
        editor.view.insertText(u")"_s); // not typed
        QCOMPARE(spy.count(), 1);
    }

    TABLE(deletesWords, (bool forward, const QString &before, const QString &after), {
        row("run of spaces", true, "a|   b c", "a|b c");
        row("spaces before a tab", true, "a|  \tb", "a|\tb");
        row("word", true, "|foo bar", "|bar");
        row("component", true, "|foo.bar", "|.bar");
        row("at the end", true, "ab|", "ab|");
        row("spaces stop at the line's end", true, "a|  \n  b", "a|\n  b");
        row("backward", false, "foo.bar|", "foo.|");
        row("backward at the beginning", false, "|a", "|a");
    })
    {
        EditorFixture editor;
        setWithCaret(editor.view, before);
        QTest::keyClick(&editor.view, forward ? Qt::Key_Delete : Qt::Key_Backspace, Qt::ControlModifier);
        QCOMPARE(withCaret(editor.view), after);
    }

    void lineActionsAreOneUndoStep()
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

    void tabShiftsSelectedLines()
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

    void editsAreAskedAbout()
    {
        JudgingDelegate judge;
        const QString text = u"\tfo   b\n"_s;
        for (const bool isReadOnly : {false, true}) {
            for (const bool isAllowed : {false, true}) {
                EditorFixture editor;
                JSTTextView &view = editor.view;
                isReadOnly ? view.setReadOnly(true) : view.setDelegate(&judge);
                judge.allows = isAllowed;
                judge.document = &editor.document;
                // A delegate is not asked about single keys.
                const QList<std::function<void()>> edits {
                    [&] { view.insertText(u"x"_s); },
                    [&] { QTest::keyClick(&view, Qt::Key_Return); },
                    [&] { QTest::keyClick(&view, Qt::Key_Delete, Qt::ControlModifier); },
                    [&] { view.commentSelection(); },
                    [&] { view.shiftSelectedLinesRight(); },
                    [&] { isReadOnly ? QTest::keyClicks(&view, u"x\t\b"_s) : void(); },
                };
                for (const auto &edit : edits) {
                    view.setString(text);
                    view.setSelectedRange({3, 0});
                    judge.outcome = text;
                    edit();
                    QCOMPARE(view.string(), isAllowed ? judge.outcome : text);
                    QCOMPARE(judge.outcome != text, !isReadOnly && &edit != &edits.last());
                }
                view.setString(text);
                view.setSelectedRange({3, 0});
                QTest::keyClick(&view, Qt::Key_Space, Qt::ControlModifier);
                QCOMPARE(offeredWords(view).isEmpty(), isReadOnly);
                QCOMPARE(view.testAttribute(Qt::WA_InputMethodEnabled), !isReadOnly); // or none is asked
                view.shiftSelectedLinesLeft(); // works on the characters and asks no delegate
                QCOMPARE(view.string(), isReadOnly ? text : u"fo   b\n"_s);
            }
        }
    }

    void copiesTextAndRichText()
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

    void completionsAppearWhileTyping()
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

    void completionsOnRequest()
    {
        EditorFixture editor;
        setWithCaret(editor.view, u"p|"_s);
        QTest::keyClick(&editor.view, Qt::Key_Space, Qt::ControlModifier);
        QCOMPARE(offeredWords(editor.view), QStringList {u"print"_s});
        QTest::keyClick(&editor.view, Qt::Key_Return); // who asks wants what is offered
        QCOMPARE(withCaret(editor.view), u"print|"_s);
    }

    TABLE(keysOfTheCompletions, (const QList<int> &keys, const QString &text), {
        row("Return accepts nothing unchosen", QList<int> {Qt::Key_Return}, "fo\n|");
        row("Tab accepts", QList<int> {Qt::Key_Tab}, "for|");
        row("Down", QList<int> {Qt::Key_Down, Qt::Key_Enter}, "format|");
        row("Up goes round", QList<int> {Qt::Key_Up, Qt::Key_Return}, "Foo|");
        row("Down goes round", QList<int> {Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Return}, "for|");
        row("End of the list", QList<int> {Qt::Key_PageDown, Qt::Key_Return}, "Foo|");
        row("Escape dismisses", QList<int> {Qt::Key_Escape, Qt::Key_Return}, "fo\n|");
        row("the caret leaves", QList<int> {Qt::Key_Left, Qt::Key_Return}, "f\n|o");
    })
    {
        EditorFixture editor;
        QTest::keyClicks(&editor.view, u"fo"_s);
        QVERIFY(!offeredWords(editor.view).isEmpty());
        for (const int key : keys)
            QTest::keyClick(&editor.view, Qt::Key(key));
        QCOMPARE(withCaret(editor.view), text);
        QVERIFY(offeredWords(editor.view).isEmpty());
    }

    TABLE(whatEndsCompletions, (const Act &act), {
        row("mouse", Act([](JSTTextView &view) {
                QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, pointAt(view, 1));
            }));
        row("two clicks into an empty line", Act([](JSTTextView &view) {
                QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, pointAt(view, 118));
            }));
        row("undo", Act([](JSTTextView &view) { view.undo(); }));
        row("setString", Act([](JSTTextView &view) { view.setString(u"x\nfo"_s); }));
        row("a script", Act([](JSTTextView &view) {
                view.textStorage()->replaceCharactersInRangeWithString({0, 1}, u"yyy"_s);
            }));
        row("scrolling", Act([](JSTTextView &view) { view.verticalScrollBar()->setValue(0); }));
        row("the keyboard goes", Act([](JSTTextView &view) { view.clearFocus(); }));
        row("hidden", Act([](JSTTextView &view) { view.hide(); }));
        row("a command", Act([](JSTTextView &view) { view.selectAll(); }));
    })
    {
        EditorFixture editor;
        editor.view.setString(u"x\n"_s.repeated(59) + u"\n\n"_s);
        editor.select(120);
        QTest::keyClicks(&editor.view, u"fo"_s);
        QVERIFY(!offeredWords(editor.view).isEmpty());
        act(editor.view);
        QCOMPARE(offeredWords(editor.view), QStringList());
        QTest::keyClick(&editor.view, Qt::Key_Tab);
        QVERIFY(!editor.view.string().contains(u"for"_s));
    }

    TABLE(offersWhatIsNear, (const QString &text, const QStringList &words), {
        row("names of the text first", "form = fork(1)\nfo|",
            QStringList {u"form"_s, u"fork"_s, u"for"_s, u"format"_s, u"Foo"_s});
        row("no words of strings and comments", "'fox' # fog\nfo|",
            QStringList {u"for"_s, u"format"_s, u"Foo"_s});
        row("what stands behind dots", "a.glow = glove\nb.gl|",
            QStringList {u"b.glow"_s, u"b.glyphs"_s, u"b.glue"_s});
    })
    {
        EditorFixture editor;
        setWithCaret(editor.view, text);
        editor.view.complete();
        QCOMPARE(offeredWords(editor.view), words);
    }

    TABLE(tellsTheWayToAnObject, (const QString &text, const QString &path), {
        row("a name", "x = os.path.jo|", "os/path");
        row("an item", "Doc[\"A [x\"].na|", "Doc/[]");
        row("a loop", "for g in Doc:\n\tg.|", "Doc/[]");
        row("a loop over a list of it", "for g in list(Doc.infos):\n\tg.|", "Doc/infos/[]");
        row("with numbers", "for i, g in enumerate(Doc):\n\tg.|", "Doc/[]");
        row("comprehension", "[g.| for g in Doc]", "Doc/[]");
        row("by another name", "d = Doc\ng = d['A']\ng.|", "Doc/[]");
        row("the last binding", "g = Doc\ng = os\ng.|", "os");
        row("import", "import re, os\nos.|", "@os");
        row("import as", "import os.path as p\np.jo|", "@os.path");
        row("from", "from os import path\npath.|", "@os/path");
        row("round in circles", "a = b\nb = a\na.|", "a");
        row("a call", "f(x).|", QString());
        row("a sum", "x = a + b\nx.|", "x");
    })
    {
        EditorFixture editor;
        setWithCaret(editor.view, text);
        const TextRange range = editor.view.rangeForUserCompletion();
        QCOMPARE(completionContext(editor.view.string(), range.location, range.end()).path, path);
    }

    // typed: "<" is Backspace
    TABLE(pairsCloseThemselves, (const QString &before, const QString &typed, const QString &after), {
        row("brackets", "x = |", "[(", "x = [(|)]");
        row("typed over", "|", "f(a[0])", "f(a[0])|");
        row("quotes", "|", "rb'x' + \"y\"", "rb'x' + \"y\"|");
        row("three quotes", "|", "\"\"\"a", "\"\"\"a|");
        row("an apostrophe", "# it|", "'", "# it'|");
        row("in a string", "'a|b'", "(", "'a(|b'");
        row("in front of a name", "|name", "(", "(|name");
        row("a closer of the text stays", "f(|)", ")", "f()|)");
        row("empty pairs go together", "|", "([<", "(|)");
        row("Backspace takes a step", "if a:\n    b\n        |", "<", "if a:\n    b\n    |");
        row("to the last step", "if a:\n    b\n      |", "<", "if a:\n    b\n    |");
        row("blanks in a text of blanks", "if a:\n  b\n |", "\t", "if a:\n  b\n  |");
        row("a tab in a text of tabs", "if a:\n\tb\n|", "\t", "if a:\n\tb\n\t|");
    })
    {
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
        QCOMPARE(withCaret(editor.view), after);
    }

    void coloursBracesAtTheCaret()
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

    void inputMethodsType()
    {
        initBraces();
        EditorFixture editor;
        QSignalSpy spy(&editor.view, &JSTTextView::findIndicatorShown);
        const auto commit = [&](const QString &text) {
            QInputMethodEvent event;
            event.setCommitString(text);
            QCoreApplication::sendEvent(&editor.view, &event);
        };
        commit(u"漢字"_s);
        editor.view.undo(); // one step
        QCOMPARE(editor.view.string(), QString());
        commit(u"("_s);
        commit(u"fo"_s);
        QCOMPARE(offeredWords(editor.view), (QStringList {u"for"_s, u"format"_s, u"Foo"_s}));
        const auto *popup = editor.view.findChild<CompletionPopup *>();
        QTRY_VERIFY(popup && popup->isVisible());
        const QPoint caret = editor.view.viewport()->mapToGlobal(editor.view.cursorRect().bottomLeft());
        QVERIFY(std::abs(popup->mapToGlobal(QPoint()).y() - caret.y()) < 20); // right below what is typed
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QCoreApplication::sendEvent(&editor.view, &escape);
        QVERIFY(escape.isAccepted()); // it takes the offers away, and nothing behind them
        QInputMethodEvent composing(u"a"_s, {});
        composing.setCommitString(u"rm"_s); // with these letters done, on to the next
        QCoreApplication::sendEvent(&editor.view, &composing);
        QCOMPARE(offeredWords(editor.view), QStringList());
        commit(u")"_s);
        QCOMPARE(spy.count(), 1);
        QCOMPARE(editor.view.string(), u"(form)"_s);
        // What is being composed stands in no text: the colours are those around it.
        editor.view.setString(u"for x in 'abcd':"_s);
        editor.select(12);
        const auto colours = [&editor] { // as they are drawn
            const QTextLayout &layout = *editor.view.document()->firstBlock().layout();
            QList<QColor> each(editor.view.string().size() + layout.preeditAreaText().size());
            for (const QTextLayout::FormatRange &range : layout.formats())
                std::fill_n(each.begin() + range.start, range.length, range.format.foreground().color());
            if (!layout.preeditAreaText().isEmpty())
                each.remove(layout.preeditAreaPosition(), layout.preeditAreaText().size());
            return each;
        };
        const QList<QColor> before = colours();
        QVERIFY(before.at(10) != before.at(4) && before.at(0) != before.at(4));
        for (const QString &text : {u"zz"_s, u"z"_s, u""_s}) {
            QInputMethodEvent event(text, {});
            QCoreApplication::sendEvent(&editor.view, &event);
            editor.document.colour(JSTDocument::Pass::Always);
            QCOMPARE(colours(), before);
        }
    }

    void wrappedLinesHang()
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

    TABLE(survivesBadInput, (const QString &text), {
        QString binary;
        // Not every script there is: looking for fonts would take all the time.
        for (int i = 0; i < 20'000; ++i)
            binary += QChar(i % 3 ? i * 7919 % 0x200 : 0xD800 + i % 0x800);
        row("500,001 characters", u"if a:\n\tb = 'c'\n"_s.repeated(33'334).left(500'001));
        row("one long line", u"f(1) + "_s.repeated(15'000));
        row("one long word", QString(100'000, u'a'));
        row("100,000 lines", u"x\n"_s.repeated(100'000));
        row("all line ends", "a\rb\nc\r\nd\u2028e\u2029f\u0085g\vh\fi");
        row("binary", binary);
        row("only quotes", QString(3'000, u'\''));
        row("only braces", QString(3'000, u'('));
    })
    {
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
};

RUNEBOOK_TEST_MAIN(CodeViewTest)
#include "CodeViewTest.moc"
