#include "codeeditor/CodeColors.h"
#include "codeeditor/FormatOverlay.h"
#include "tests/Fingerprint.h"
#include "tests/Rounds.h"
#include "tests/Table.h"
#include "tests/TestMain.h"
#include "tests/codeeditor/EditorFixture.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryFile>
#include <QTextBlock>

using namespace Qt::StringLiterals;
using namespace runebook;

namespace {

QPalette paletteOf(const char *text, const char *base)
{
    QPalette palette;
    palette.setColor(QPalette::Text, QColor(QLatin1StringView(text)));
    palette.setColor(QPalette::Base, QColor(QLatin1StringView(base)));
    return palette;
}

/// Everything that lies over the blocks, as text.
QStringList overlays(const QTextDocument &document)
{
    QStringList lines;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        QString line;
        for (const auto &range : overlayOf(block)) {
            line += u"%1+%2=%3 "_s.arg(range.start)
                        .arg(range.length)
                        .arg(range.format.property(kGivenColorProperty).value<QColor>().name());
        }
        lines << line;
    }
    return lines;
}

class RecordingDelegate : public QObject, public JSTTextViewDelegate
{
    Q_OBJECT
    Q_INTERFACES(JSTTextViewDelegate)
public:
    int textChanges = 0;
    int selectionChanges = 0;
    void textDidChange(JSTTextView *) override { ++textChanges; }
    void textViewDidChangeSelection(JSTTextView *) override { ++selectionChanges; }
    QStringList textViewCompletionsForPartialWordRangeIndexOfSelectedItem(JSTTextView *, const QStringList &,
                                                                          TextRange, int *index) override
    {
        *index = 1;
        return {u"fromDelegate"_s};
    }
};

} // namespace

class JSTDocumentTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void theTableHasItsEntries()
    {
        const QFont regular(u"monospace"_s);
        const QPalette palette;
        const QVariantHash table = defaultKeywordAttributes({regular, std::nullopt, std::nullopt}, palette);
        // Comment, 34 different keywords, 3 objects, 72 built-ins, 24 kinds of white space.
        QStringList words = table.keys();
        words.sort();
        QCOMPARE(words.size(), 1 + 34 + 3 + 72 + 24);
        QCOMPARE(fingerprintOf(words), QByteArray("4e38964dfd677ed0ff287aa3df2db859"));
        QCOMPARE(table.value(u"VXCommmentAttributes"_s).toMap().value(u"NSFont"_s).value<QFont>(), regular);
        QVERIFY(!table.value(u"def"_s).toMap().contains(u"NSFont"_s));
        QCOMPARE(table.value(u"print"_s).toMap().value(u"NSColor"_s).value<QColor>(),
                 QColor::fromRgbF(0.0F, 0.55F, 0.8F));
        QCOMPARE(table.value(u"Tessel"_s).toMap().value(u"NSColor"_s).value<QColor>(),
                 QColor::fromRgbF(0.2F, 0.4F, 0.16F));
        QCOMPARE(table.value(u"xrange"_s).toMap().value(u"NSColor"_s).value<QColor>(),
                 QColor::fromRgbF(0.5F, 0.28F, 0.0F));
        QVERIFY(table.contains(u"["_s));
        QVERIFY(!table.contains(u"\t"_s));
        QVERIFY(!defaultKeywordAttributes({}, palette).contains(u"VXCommmentAttributes"_s));
    }

    void coloursTokens()
    {
        EditorFixture editor;
        editor.view.setString(u"print Print 'a' 0x1F # c\nlen\n'''x\ny''' Font z"_s);
        QCOMPARE(editor.colorAt(0), keywordColor());
        QVERIFY(editor.fontAt(0).bold());
        QCOMPARE(editor.colorAt(5), tertiaryLabelColor(editor.view.palette())); // white space
        QCOMPARE(editor.colorAt(6), editor.view.palette().color(QPalette::Text)); // "Print" is no keyword
        QCOMPARE(editor.colorAt(12), quotedStringColor());
        QCOMPARE(editor.colorAt(16), numberColor());
        QCOMPARE(editor.colorAt(21), secondaryLabelColor(editor.view.palette()));
        QVERIFY(editor.fontAt(23).italic());
        QCOMPARE(editor.colorAt(25), builtinColor());
        QVERIFY(editor.fontAt(29).italic()); // the block comment, over both its lines
        QVERIFY(editor.fontAt(34).italic());
        QCOMPARE(editor.colorAt(39), scriptingObjectColor());
        TextRange range;
        editor.view.textStorage()->attributesAtIndexEffectiveRange(2, &range);
        QCOMPARE(range, (TextRange {0, 5}));
        QVERIFY(editor.attributesAt(-1).isEmpty());
        QVERIFY(editor.attributesAt(1000).isEmpty());
    }

    void shortTextKeepsWhatItHas()
    {
        EditorFixture editor;
        editor.view.setString(u"1"_s);
        QCOMPARE(editor.colorAt(0), editor.view.palette().color(QPalette::Text));
        editor.select(1);
        editor.view.insertText(u"2"_s);
        QCOMPARE(editor.colorAt(0), numberColor());
        QTest::keyClick(&editor.view, Qt::Key_Backspace);
        QCOMPARE(editor.colorAt(0), editor.view.palette().color(QPalette::Text));
    }

    void convertsFontsToTheFontSize()
    {
        EditorFixture editor;
        const auto tableWith = [](qreal size) {
            QFont font(u"monospace"_s);
            font.setPointSizeF(size);
            return QVariantHash {{u"def"_s, QVariantMap {{u"NSFont"_s, font}}}};
        };
        editor.view.setString(u"def x"_s);
        editor.document.tokenizer()->setKeywords(tableWith(12));
        editor.document.colour(JSTDocument::Pass::Always);
        QCOMPARE(editor.fontAt(0).pointSizeF(), 13.0);
        editor.document.tokenizer()->setKeywords(tableWith(12.6));
        editor.document.colour(JSTDocument::Pass::Always);
        QCOMPARE(editor.fontAt(0).pointSizeF(), 12.6);
    }

    void entriesThatAreNoDictionaryPaintNothing()
    {
        EditorFixture editor;
        editor.document.tokenizer()->setKeywords({{u"def"_s, u"red"_s}, {u"if"_s, QColor(Qt::red)}});
        editor.view.setString(u"def if"_s);
        QCOMPARE(editor.colorAt(0), editor.view.palette().color(QPalette::Text));
        QCOMPARE(editor.colorAt(4), editor.view.palette().color(QPalette::Text));
    }

    void theTableMayChangeTheDefaultColour()
    {
        EditorFixture editor;
        const QColor own(0x10, 0x20, 0x30);
        editor.document.tokenizer()->setKeywords({{u"VXForegroundColorXYZ"_s, own}});
        editor.view.setString(u"word (1)"_s);
        QCOMPARE(editor.colorAt(0), own);
        QCOMPARE(editor.colorAt(5), own);
        QCOMPARE(editor.colorAt(6), numberColor());
        editor.select(4);
        editor.view.insertText(u"s"_s);
        QCOMPARE(editor.colorAt(4), own);
    }

    void leavesUndoSelectionAndModifiedAlone()
    {
        EditorFixture editor;
        editor.view.setString(u"if a: b"_s);
        QVERIFY(!editor.view.document()->isModified());
        QVERIFY(!editor.view.document()->isUndoAvailable());
        editor.select(3, 2);
        editor.document.setFontSize(20);
        QCOMPARE(editor.view.selectedRange(), (TextRange {3, 2}));
        QVERIFY(!editor.view.document()->isModified());
        QVERIFY(!editor.view.document()->isUndoAvailable());
        editor.select(0);
        editor.view.insertText(u"'"_s);
        QCOMPARE(editor.view.document()->availableUndoSteps(), 1);
        editor.view.undo();
        QCOMPARE(editor.view.string(), u"if a: b"_s);
        QCOMPARE(editor.colorAt(0), keywordColor());
    }

    /// Random edits, undo and redo among them: at every step the looks are those of an editor that was given
    /// the same text at once.
    void editsColourLikeAWholePass()
    {
        EditorFixture editor;
        EditorFixture fresh;
        QRandomGenerator random(4711);
        const QStringList pieces = {u"if "_s, u"'"_s,      u"\""_s,  u"'''"_s, u"\"\"\""_s,
                                    u"\\"_s,  u"\n"_s,     u"# "_s,  u"1"_s,   u"e+"_s,
                                    u"0x"_s,  u"_"_s,      u"len"_s, u" "_s,   u"é"_s,
                                    u"x"_s,   u"\u2028"_s, u"."_s,   u"("_s,   u"if a:\n\tprint('b') # c\n"_s,
                                    u""_s};
        QString copy; // kept by what is told of the edits
        connect(editor.view.textStorage(), &VXCodeTextStorage::edited, &editor.view,
                [&](VXCodeTextStorage::EditKind, TextRange range, int change) {
                    QVERIFY(range.end() <= copy.size());
                    copy.replace(range.location, range.length,
                                 editor.view.string().sliced(range.location, range.length + change));
                });
        editor.view.setString(u"for x in y:\n\tprint('''a''', 1.5e+3)\n# end\n"_s);
        for (int round = 0; round < rounds(1500); ++round) {
            const int length = editor.view.textStorage()->length();
            const int from = random.bounded(length + 1);
            switch (random.bounded(10)) {
            case 0:
                editor.view.undo();
                break;
            case 1:
                editor.view.redo();
                break;
            case 2:
                random.bounded(40) ? editor.view.commentSelection() : editor.view.setString(u"new"_s);
                break;
            default:
                editor.select(from, random.bounded(length > 300 ? 80 : 4));
                editor.view.insertText(pieces[random.bounded(int(pieces.size()))]);
            }
            QCOMPARE(copy, editor.view.string());
            fresh.view.setString(editor.view.string());
            QCOMPARE(editor.document.sourceString(), editor.view.string());
            if (editor.view.textStorage()->length() > 1)
                QCOMPARE(overlays(*editor.view.document()), overlays(*fresh.view.document()));
        }
    }

    void stopsBehindTheColouredLength()
    {
        EditorFixture editor;
        const QString line = u"if 12345\n"_s;
        const int lines = TokenRuns::kColouredLength / int(line.size()) + 2;
        editor.view.setString(line.repeated(lines));
        const int last = (lines - 1) * int(line.size());
        QVERIFY(last > TokenRuns::kColouredLength);
        QCOMPARE(editor.colorAt(0), keywordColor());
        QCOMPARE(editor.colorAt(last), editor.view.palette().color(QPalette::Text));

        // What an edit moves over the end of the coloured length follows when typing pauses.
        const int inside = last - 2 * int(line.size());
        QCOMPARE(editor.colorAt(inside), keywordColor());
        editor.select(0);
        editor.view.insertText(line.repeated(4));
        const int moved = inside + 4 * int(line.size());
        QTRY_COMPARE(editor.colorAt(moved), editor.view.palette().color(QPalette::Text));
    }

    /// Each row of a long line moves all pieces behind it, so that those are counted; attributes are told all
    /// the same.
    void paintsSoManyPiecesOfALongLine()
    {
        EditorFixture editor;
        const QString piece = u"if 12345 "_s;
        editor.view.setString(piece.repeated(10'000));
        const auto pieces = editor.view.document()->firstBlock().layout()->formats().size();
        QVERIFY(pieces
                <= TokenRuns::kMostPiecesUnshaped + 2); // the last one with a gap in front, and the rest
        for (const int index : {0, 9'000 * int(piece.size())}) {
            QCOMPARE(editor.colorAt(index), keywordColor());
            QVERIFY(editor.colorAt(index + 3) != keywordColor());
        }
    }

    void runsThePostprocessingBlock()
    {
        EditorFixture editor;
        int calls = 0;
        editor.document.addPostProcessing([&](VXCodeTextStorage *storage) {
            ++calls;
            storage->setAttributesRange({{u"NSColor"_s, QColor(Qt::magenta)}}, {0, 1});
        });
        editor.view.setString(u"if a"_s);
        QCOMPARE(calls, 1);
        QCOMPARE(editor.colorAt(0), QColor(Qt::magenta));
        QCOMPARE(editor.colorAt(1), keywordColor());
        editor.document.colour(JSTDocument::Pass::WhenChanged); // nothing changed
        QCOMPARE(calls, 1);
        editor.document.addPostProcessing({});
        editor.document.colour(JSTDocument::Pass::Always);
        QCOMPARE(editor.colorAt(0), keywordColor());
    }

    /// What is painted can be read; what is asked for is the given colour.
    TABLE(colourFollowsThePalette, (const QPalette &palette), {
        row("light", paletteOf("#000000", "#ffffff"));
        row("dark", paletteOf("#e6e6e6", "#1e1e20"));
        row("black", paletteOf("#ffffff", "#000000"));
        row("middle grey", paletteOf("#000000", "#909090"));
    })
    {
        EditorFixture editor;
        editor.view.setString(u"print 'a' 12 len Font # c"_s);
        editor.view.setPalette(palette);
        const QColor base = palette.color(QPalette::Base);
        int painted = 0;
        for (const auto &range : overlayOf(editor.view.document()->firstBlock())) {
            ++painted;
            const QColor color = range.format.foreground().color();
            QVERIFY2(contrastRatio(color, base) >= 4.5, qPrintable(color.name()));
            const QColor given = range.format.property(kGivenColorProperty).value<QColor>();
            if (contrastRatio(given, base) >= 4.5)
                QCOMPARE(color, given);
            else
                QVERIFY(std::abs(given.hslHue() - color.hslHue()) <= 2);
        }
        QCOMPARE(painted, 6);
        QCOMPARE(editor.colorAt(0), keywordColor());
        QCOMPARE(editor.colorAt(6), quotedStringColor());
    }

    void setFontSizeRecolours()
    {
        EditorFixture editor;
        editor.view.setString(u"if 1"_s);
        editor.document.setFontSize(20);
        QCOMPARE(editor.view.font().pointSize(), 20);
        QCOMPARE(editor.fontAt(0).pointSize(), 20);
        editor.document.setFontSize(3);
        QCOMPARE(editor.document.fontSize(), 6); // not smaller while colouring
        QCOMPARE(editor.fontAt(0).pointSize(), 6);
        JSTTextView view;
        JSTDocument before;
        before.setFontSize(3);
        before.setSourceText(&view);
        QCOMPARE(before.fontSize(), 6);
        QCOMPARE(view.font().pointSize(), editor.view.font().pointSize());
    }

    /// Edits of random places, beside a list with one number for each character.
    void attributesMoveWithTheirText()
    {
        QRandomGenerator random(10);
        VXCodeTextStorage storage;
        QString text;
        QList<int> sizes; // the font size of each character, 0 for none
        for (int step = 0; step < rounds(600); ++step) {
            const int from = random.bounded(int(text.size()) + 1);
            const int count = std::min(random.bounded(6), int(text.size()) - from);
            if (random.bounded(3) == 0) {
                const int size = 5 + random.bounded(4);
                storage.setAttributesRange({{u"NSFont"_s, QFont(u"Nobody's"_s, size)}}, {from, count});
                std::fill_n(sizes.begin() + from, count, size);
            } else {
                const QString put = u"ab\ncd"_s.first(random.bounded(6));
                const int heir = sizes.value(count > 0 || from == 0 ? from : from - 1);
                storage.replaceCharactersInRangeWithString({from, count}, put);
                text.replace(from, count, put);
                sizes.remove(from, count);
                sizes.insert(from, put.size(), heir);
            }
            QCOMPARE(storage.string(), text);
            const VXCodeTextStorage copy(&storage);
            for (const VXCodeTextStorage *one : {static_cast<const VXCodeTextStorage *>(&storage), &copy}) {
                for (int at = 0; at < text.size(); ++at) {
                    if (text[at] == u'\n')
                        continue; // a break has no looks
                    TextRange range;
                    const QFont font =
                        one->attributesAtIndexEffectiveRange(at, &range).value(u"NSFont"_s).value<QFont>();
                    QCOMPARE(font.family() == u"Nobody's"_s ? font.pointSize() : 0, sizes[at]);
                    QVERIFY(range.location <= at && at < range.end());
                    QCOMPARE(sizes.mid(range.location, range.length).count(sizes[at]), range.length);
                }
            }
        }
    }

    TABLE(completes, (const QString &text, const QStringList &words), {
        row("any mix of case, in list order", "fo", QStringList {u"for"_s, u"format"_s, u"Foo"_s});
        row("upper case", "FO", QStringList {u"for"_s, u"format"_s, u"Foo"_s});
        row("behind a dot", "Font.gl", QStringList {u"Font.glyphs"_s, u"Font.glue"_s});
        row("behind two dots", "a.b.gly", QStringList {u"a.b.glyphs"_s});
        row("words do not follow dots", "Font.fo", QStringList {});
        row("nothing fits", "xyz", QStringList {});
    })
    {
        EditorFixture editor;
        editor.view.setString(u"= "_s + text);
        int selected = 7;
        QCOMPARE(editor.view.completionsForPartialWordRange({2, int(text.size())}, &selected), words);
        QCOMPARE(selected, 7);
    }

    void asksTheDelegateToo()
    {
        RecordingDelegate delegate;
        EditorFixture editor;
        editor.document.setDelegate(&delegate);
        editor.view.setString(u"fo"_s);
        int selected = 0;
        QCOMPARE(editor.view.completionsForPartialWordRange({0, 2}, &selected),
                 (QStringList {u"for"_s, u"format"_s, u"Foo"_s, u"fromDelegate"_s}));
        QCOMPARE(selected, 1);
        QCOMPARE(delegate.textChanges, 1);
        editor.select(1);
        QVERIFY(delegate.selectionChanges > 0);
        editor.document.setAutocompleteKeywords({});
        QCOMPARE(editor.view.completionsForPartialWordRange({0, 2}, &selected),
                 QStringList {u"fromDelegate"_s});
    }

    void theInertCheckOnlyLooksAtCharacters()
    {
        EditorFixture editor;
        const auto check = [&](const QString &text) {
            return editor.document.textView_ShouldChangeTextInRangeReplacementString(&editor.view, {}, text);
        };
        QVERIFY(check(u"abc\u00FE"_s));
        QVERIFY(!check(u"abc\u00FF"_s));
        editor.view.insertText(u"\u00FF"_s); // nobody asks it
        QCOMPARE(editor.view.string(), u"\u00FF"_s);
    }

    void readsCompletionWords()
    {
        const QStringList words =
            completionWords(QStringLiteral(RUNEBOOK_SOURCE_DIR "/resources/MacroKeywords.plist"));
        for (const QString &word :
             {u"lambda"_s, u"enumerate"_s, u"Doc"_s, u".setName_"_s, u".infoForName_"_s})
            QVERIFY2(words.contains(word), qPrintable(word));
        QCOMPARE(QSet<QString>(words.begin(), words.end()).size(), words.size());
        QCOMPARE(completionWords(u"/no/such/file.plist"_s), QStringList());
        QTemporaryFile broken;
        QVERIFY(broken.open());
        broken.write("<plist version=\"1.0\"><dict><key>a</key><string>b</string></dict></plist>");
        broken.close();
        QCOMPARE(completionWords(broken.fileName()), QStringList());
    }
};

RUNEBOOK_TEST_MAIN(JSTDocumentTest)
#include "JSTDocumentTest.moc"
