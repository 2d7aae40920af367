"""What scripts may rely on of the code editor and the tab bar, checked from inside."""

import gc
import sys
import unittest

from Foundation import *
from MainApp import *
import objc

JSTTextView = NSClassFromString("JSTTextView")
JSTDocument = NSClassFromString("JSTDocument")
VXTabBarControl = NSClassFromString("VXTabBarControl")


class Braces(unittest.TestCase):
    def test_braces(self):
        # The first question of all makes the lists, and knows none yet.
        self.assertFalse(TE_isOpeningBrace("{"))
        self.assertTrue(TE_isOpeningBrace("{") and TE_isOpeningBrace(ord("(")) and TE_isClosingBrace("»"))
        self.assertFalse(TE_isOpeningBrace("\U0001F600"))
        self.assertEqual(TE_findMatchingBraceForRangeInString(0, "(\U0001F600)"), (3, 1))
        self.assertEqual(TE_findMatchingBraceForRangeInString(0, "(a"), (NSNotFound, 0))


class TextViews(unittest.TestCase):
    def setUp(self):
        self.view = JSTTextView.alloc().init()
        self.view.setString_("if a:\n    b.c = 'é'\n")

    def test_text_and_selection(self):
        view = self.view
        self.assertEqual(view.string(), "if a:\n    b.c = 'é'\n")
        for wrong in ((), ("a", "b")):
            with self.assertRaises(TypeError):
                view.setString_(*wrong)
        view.setSelectedRange_((3, 1))
        self.assertEqual(view.selectedRange(), (3, 1))
        view.insertText_("ab")
        self.assertEqual(view.string(), "if ab:\n    b.c = 'é'\n")
        self.assertEqual(view.selectedRange(), (5, 0))
        view.setSelectedRange_([1000, 5])
        self.assertEqual(view.selectedRange(), (21, 0))
        for wrong in ((1,), (1, 2, 3), "12", ("a", "b"), 5, None, (1 << 40, 1)):
            with self.subTest(wrong=wrong), self.assertRaises((TypeError, OverflowError)):
                view.setSelectedRange_(wrong)

    def test_commands(self):
        view = self.view
        for command, code in (("commentSelection_", "# if a:"), ("shiftSelectedLinesRight_", "\tif a:"),
                              ("insertNewline_", "if a:\n\t")):
            view.setString_("if a:")
            view.setSelectedRange_((5, 0))
            getattr(view, command)(None)
            self.assertEqual(view.string(), code)

    def test_storage(self):
        storage = self.view.textStorage()
        self.assertEqual((storage.string(), storage.substringWithRange_((3, 1))), (self.view.string(), "a"))
        self.assertEqual(storage.doubleClickAtIndex_(12), (12, 1))
        self.assertEqual(storage.nextWordFromIndex_forward_(10, True), 11)
        storage.replaceCharactersInRange_withString_((0, 2), "while")
        self.assertTrue(self.view.string().startswith("while a:"))

    def test_attributes(self):
        storage = self.view.textStorage()
        link = "file:///some/file.py"
        storage.setAttributes_range_({"NSLink": link, "NSColor": "#ff0000"}, (3, 2))
        attributes, extent = storage.attributesAtIndex_effectiveRange_(3, None)
        self.assertEqual(extent, (3, 2))
        self.assertEqual((attributes["NSLink"], attributes["NSColor"]), (link, "#ff0000"))
        self.assertIn("NSFont", attributes)
        plain, extent = storage.attributesAtIndex_effectiveRange_(0, None)
        self.assertEqual(extent, (0, 3))
        self.assertNotIn("NSLink", plain)

    def test_colouring(self):
        document = JSTDocument.alloc().init()
        document.setSourceText_(self.view)
        self.assertEqual(document.sourceText(), self.view)
        self.assertEqual(self.view.delegate(), document)
        document.parseCode_(True)
        color = lambda at: self.view.textStorage().attributesAtIndex_effectiveRange_(at, None)[0]["NSColor"]
        self.assertNotEqual(color(17), color(3))
        self.assertTrue(document.isInStringOrComment_(17))
        document.setFontSize_(20)
        self.assertEqual(document.fontSize(), 20)

    def test_ruler(self):
        VXLineNumberView = NSClassFromString("VXLineNumberView")
        self.assertIsNone(self.view.lineNumberView())
        self.view.setupLineNumberview()
        own = self.view.lineNumberView()
        self.assertEqual((own.clientView(), own.leftMargin()), (self.view, 12))
        ruler = VXLineNumberView.alloc().initWithScrollView_(self.view)
        self.assertEqual(ruler.lineIndices(), [0, 6, 20])
        self.assertEqual(ruler.lineNumberForCharacterIndex_inText_(7, self.view.string()), 1)
        self.assertEqual(ruler.lineNumberForLocation_(100000), NSNotFound)
        ruler.setBackgroundColor_("#102030")
        self.assertEqual(ruler.backgroundColor(), "#102030")
        ruler.setBackgroundColor_(None)
        self.assertIsNone(ruler.backgroundColor())
        with self.assertRaises(RuntimeError):
            ruler.setTextColor_("no colour")


def tokens_of(tokenizer):
    end = NSClassFromString("TDToken").EOFToken()
    tokens = []
    while (token := tokenizer.nextToken()) is not end:
        tokens.append(token)
    return tokens


class Tokenizers(unittest.TestCase):
    def setUp(self):
        self.tokenizer = NSClassFromString("TDTokenizer").alloc().init()

    def test_tokens(self):
        tokenizer = self.tokenizer
        tokenizer.addSingleLineCommentStartSymbol_("#")
        tokenizer.addMultiLineCommentStartSymbol_endSymbol_("'''", "'''")
        tokenizer.setTokenizerState_from_to_(tokenizer.quoteState(), "'", 39)
        code = "x = 'é' + 12 # end\n'''a'''"
        tokenizer.setString_(code)
        tokens = tokens_of(tokenizer)
        self.assertEqual("".join(token.stringValue() for token in tokens), code)
        self.assertEqual([sum(getattr(token, "is" + kind)() for token in tokens)
                          for kind in ("Word", "QuotedString", "Number", "Comment")], [1, 1, 1, 2])
        self.assertEqual(tokens_of(tokenizer), [])
        tokenizer.setReader_(NSClassFromString("TDReader").alloc().init())
        self.assertEqual(len(tokens_of(tokenizer)), len(tokens))
        for wrong in ("", "ab", 1 << 20, None):
            with self.subTest(wrong=wrong), self.assertRaises((TypeError, OverflowError)):
                tokenizer.setTokenizerState_from_to_(tokenizer.quoteState(), wrong, 39)

    def test_documents_share_it(self):
        document = JSTDocument.alloc().initWithTokenizer_(self.tokenizer)
        self.assertEqual(document.tokenizer(), self.tokenizer)
        self.tokenizer.setKeywords_({"if": {"NSColor": "#ff0000"}})
        self.assertEqual(self.tokenizer.keywords()["if"]["NSColor"], "#ff0000")
        view = JSTTextView.alloc().init()
        view.setString_("if a")
        document.setSourceText_(view)
        color = lambda at: view.textStorage().attributesAtIndex_effectiveRange_(at, None)[0]["NSColor"]
        self.assertEqual(color(0), "#ff0000")
        document.setPreviousOutputTypingAttributes_({"NSColor": "#00ff00"})
        self.assertEqual(document.previousOutputTypingAttributes(), {"NSColor": "#00ff00"})
        document.setTokenizer_(NSClassFromString("TDTokenizer").alloc().init())
        self.assertNotEqual(color(0), "#ff0000")

    def test_postprocessing(self):
        document = JSTDocument.alloc().init()
        view = JSTTextView.alloc().init()
        document.setSourceText_(view)
        seen = []
        document.addPostProcessing_(lambda storage: seen.append(storage.string()))
        view.setString_("print(1)")
        document.parseCode_(True)
        self.assertEqual(seen[-1], "print(1)")
        count = len(seen)
        document.addPostProcessing_(None)
        document.parseCode_(True)
        self.assertEqual(len(seen), count)
        with self.assertRaises(TypeError):
            document.addPostProcessing_(5)

    def test_texts_with_attributes(self):
        VXCodeTextStorage = NSClassFromString("VXCodeTextStorage")
        first = VXCodeTextStorage.alloc().initWithAttributedString_("a\nb")
        self.assertEqual(VXCodeTextStorage.alloc().initWithAttributedString_(first).string(), "a\nb")
        self.assertEqual(VXCodeTextStorage.alloc().initWithAttributedString_(None).string(), "")


class Follower(NSObject):
    """A delegate of text views and tab bars that writes down what it is told."""

    def init(self):
        self = objc.super(Follower, self).init()
        self.told = []
        self.refuses = False
        return self

    def textDidChange_(self, view):
        self.told.append("text")

    def textView_shouldChangeTextInRange_replacementString_(self, view, extent, text):
        self.told.append((extent, text))
        return not self.refuses

    def textView_completions_forPartialWordRange_indexOfSelectedItem_(self, view, words, extent, index):
        return [view.string() + "More", "Other"], index + 1

    def tabBar_shouldCloseTabItem_(self, bar, item):
        self.told.append(("should", item.title()))
        return not self.refuses

    def tabBar_didSelectTabItem_(self, bar, item):
        self.told.append(("did select", bar.indexOfTabItem_(item)))

    def tabBar_toolTipForTabItem_(self, bar, item):
        return "tip"

    def tabBar_willCloseTabItem_(self, bar, item):
        raise SystemExit(3)


class Delegates(unittest.TestCase):
    def setUp(self):
        self.follower = Follower.alloc().init()

    def test_text_view(self):
        view = JSTTextView.alloc().init()
        view.setDelegate_(self.follower)
        self.assertIs(view.delegate(), self.follower)
        view.insertText_("ab")
        self.assertIn(((0, 0), "ab"), self.follower.told)
        self.follower.refuses = True
        view.insertText_("c")
        self.assertEqual(view.string(), "ab")
        words, selected = view.completionsForPartialWordRange_indexOfSelectedItem_((0, 2), 0)
        self.assertEqual((words[:2], selected), (["abMore", "Other"], 1))

    def test_tab_bar(self):
        bar = VXTabBarControl.alloc().init()
        bar.setCanCloseOnlyTab_(True)
        items = [JSTTextView.alloc().init() for _ in range(2)]
        for item in items:
            bar.addTabItem_(item)
        bar.setDelegate_(self.follower)
        self.assertIs(bar.delegate(), self.follower)
        bar.selectTabItemAtIndex_(1)
        self.assertEqual(self.follower.told, [("did select", 1)])
        self.follower.refuses = True
        bar.closeTabItem_(items[1])
        self.assertEqual(bar.countOfTabItems(), 2)
        self.follower.refuses = False
        # A delegate that ends the script does so when the operation is done.
        with self.assertRaises(SystemExit):
            bar.closeTabItem_(items[1])
        self.assertEqual(bar.countOfTabItems(), 1)
        self.assertEqual(bar.selectedTabItem(), items[0])

    def test_lists_of_objects(self):
        bar = VXTabBarControl.alloc().init()
        items = [JSTTextView.alloc().init() for _ in range(3)]
        bar.setViewControllers_(items)
        self.assertEqual(bar.tabItems, items)
        bar.tabItems = items[1:]
        self.assertEqual(bar.tabItems, items[1:])
        for wrong in ([None], ["x"], "x", 5):
            with self.subTest(wrong=wrong), self.assertRaises(TypeError):
                bar.setViewControllers_(wrong)

    def test_cells_and_archives(self):
        bar = VXTabBarControl.alloc().init()
        item = NSClassFromString("VXMacroViewController").alloc().init()
        item.setTitle_("one")
        bar.addTabItem_(item)
        self.assertEqual([cell.title for cell in bar.cells()], ["one"])
        self.assertEqual(bar.viewControllers(), [item])
        bar.setCellMinWidth_(77)
        archive = bar.encodeWithCoder()
        self.assertEqual(archive["PSMcellMinWidth"], 77)
        again = VXTabBarControl.alloc().initWithCoder_(archive)
        self.assertEqual((again.cellMinWidth, again.countOfTabItems()), (77, 0))

    def test_delegates_are_not_kept(self):
        view = JSTTextView.alloc().init()
        follower = Follower.alloc().init()
        before = {follower: hash(follower)}
        view.setDelegate_(follower)
        self.assertIn(follower, before)
        view.setDelegate_(self.follower)
        view.setDelegate_(follower)
        del follower, before
        gc.collect()
        view.insertText_("alive")
        self.assertIsNone(view.delegate())
        view.setDelegate_(None)

    def test_errors_in_delegates_are_printed(self):
        class Broken(NSObject):
            def textDidChange_(self, view):
                raise ValueError("expected by the test")
        broken = Broken.alloc().init()
        view = JSTTextView.alloc().init()
        view.setDelegate_(broken)
        view.insertText_("a")
        self.assertEqual(view.string(), "a")


class Records(unittest.TestCase):
    def test_archives(self):
        info = newInfo("x", unicodes=["0041"], altNames=["a", "b"], direction=-2, desc="d")
        archive = info.encodeWithCoder()
        self.assertEqual((archive["name"], archive["unicodes"]), ("x", ["0041"]))
        again = VXGlyphInfo.alloc().initWithCoder_(archive)
        self.assertEqual(dict(again), dict(info))
        self.assertIsNone(VXGlyphInfo.alloc().initWithCoder_({}).name)
        self.assertEqual((info.copyWithZone_(None).name, info.copyWithZone_(None).desc), ("x", None))

    def test_glyph_list(self):
        self.assertEqual(VXGlyphInfo.aglfn()["0041"], "A")

    def test_documents_of_records(self):
        doc, info = VXDocument.alloc().init(), newInfo("x")
        info.setDocument_(doc)
        self.assertEqual((info.document, doc.countOfInfos()), (doc, 0))
        info.name = "y"
        doc.undoManager().undo()
        self.assertEqual(info.name, "x")
        del doc
        gc.collect()
        processEvents()
        info.name = "z"
        info.setDocument_(None)
        self.assertIsNone(info.document)
        with self.assertRaises(RuntimeError):
            info.setDocument_(JSTTextView.alloc().init())

    def test_change_counts(self):
        doc = VXDocument.alloc().init()
        doc.addInfo_(newInfo("a"))
        token = doc.changeCountTokenForSaveOperation_(0)
        doc.updateChangeCountWithToken_forSaveOperation_(token, 0)
        self.assertFalse(doc.isDocumentEdited())
        doc.addInfo_(newInfo("b"))
        doc.updateChangeCountWithToken_forSaveOperation_(token, 0)
        self.assertTrue(doc.isDocumentEdited())

    def test_transformers(self):
        lists = NSClassFromString("VXArrayToStringTransformator").alloc().init()
        self.assertEqual(lists.transformedValue_(["a", "b"]), "a, b")
        self.assertEqual(lists.reverseTransformedValue_("a, b"), ["a", "b"])
        self.assertFalse(lists.allowsReverseTransformation())
        directions = NSClassFromString("VXDirectionToIndexValueTransformer").alloc().init()
        self.assertEqual([directions.transformedValue_(n) for n in (-2, -1, 0, 1, 2)], [0, 2, 1, 3, 0])
        self.assertEqual(directions.reverseTransformedValue_(3), 1)

    def test_previews(self):
        doc = currentDocument()
        pieces = doc.formatStringFromInfo_(doc["Aacute"])
        self.assertEqual("".join(piece["string"] for piece in pieces), doc.stringForInfo_(doc["Aacute"]))
        self.assertIsNone(VXDocument.fontForScript_size_("no such script", 12))
        pieces = VXDocument.formatInfoString_font_("ab", {"name": "Sans", "size": 20})
        self.assertEqual(["".join(piece["string"] for piece in pieces), pieces[0]["font"]["size"]], ["ab", 20])
        VXDocument.registerPreviewFont_forScript_("/no/such/font.ttf", "latin")
        self.assertEqual(VXDocument.previewFontForScript_("latin"), "/no/such/font.ttf")
        VXDocument.removePreviewFontForScript_("latin")
        self.assertIsNone(VXDocument.previewFontForScript_("latin"))


result = unittest.TextTestRunner(stream=sys.stdout).run(
    unittest.defaultTestLoader.loadTestsFromModule(sys.modules[__name__]))
print("checked", result.testsRun)
if not result.wasSuccessful():
    sys.exit(1)
