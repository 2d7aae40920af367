"""What no script may break, checked from inside: run on a copy of the sample."""

import copy
import gc
import itertools
import pickle
import sys
import unittest

from AppKit import NSApplication
from Foundation import *
from MainApp import *
import objc

PATH = sys.modules["__main__"].Doc.fileURL()


def doc():
    return currentDocument()


def holder():
    """An object of the program that takes any value."""
    return NSUserDefaults.standardUserDefaults()


class Arguments(unittest.TestCase):
    def test_what_contains_itself_or_has_no_end_raises(self):
        ring, chain, wide = {}, [], []
        ring["ring"] = ring
        chain.append(chain)
        for _ in range(60):
            wide = [wide, wide]
        for value in (ring, chain, [ring], {"a": chain}, wide, itertools.count(), itertools.repeat("x")):
            with self.assertRaises((RecursionError, ValueError)):
                holder().setObject_forKey_(value, "trust")
        deep = "x"
        for _ in range(80):
            deep = [deep]
        holder().setObject_forKey_(deep, "trust")
        self.assertEqual(holder().objectForKey_("trust"), deep)
        holder().removeObjectForKey_("trust")

    def test_arguments_are_read_before_the_receiver(self):
        def closing(document, item):
            document.close()
            for _ in range(3):
                processEvents()
            yield item

        for change in (
                lambda document, items: document.setInfos_(items),
                lambda document, items: setattr(document, "infos", items),
                lambda document, items: document.addInfos_(items),
                lambda document, items: document.insertObjects_inInfosAtIndexes_(items, [0])):
            with self.assertRaises(ReferenceError):
                document = openDocument(PATH) if doc() is None else newDocument()
                change(document, closing(document, newInfo("x")))

    def test_values_that_change_their_map(self):
        values = {}

        class Number(NSObject):
            def __iter__(self):
                values.clear()
                gc.collect()
                return iter(["a"])

            def __index__(self):
                values.clear()
                return 1

        class Items:
            def __iter__(self):
                values.clear()
                gc.collect()
                return iter(["a"])

        values.update((str(i), Items()) for i in range(50))
        holder().setObject_forKey_(values, "trust")
        self.assertEqual(len(holder().objectForKey_("trust")), 50)
        holder().removeObjectForKey_("trust")
        with self.assertRaises(TypeError):
            holder().setObject_forKey_({None: 1}, "trust")

    def test_a_generator_is_read_once(self):
        holder().setObject_forKey_((i for i in range(3)), "trust")
        self.assertEqual(holder().objectForKey_("trust"), [0, 1, 2])
        holder().setObject_forKey_(iter(["a", 1]), "trust")
        self.assertEqual(holder().objectForKey_("trust"), ["a", 1])
        holder().removeObjectForKey_("trust")
        info = newInfo("x")
        info.altNames = (name for name in "ab")
        self.assertEqual(info.altNames, ["a", "b"])

    def test_keywords_and_wrong_objects(self):
        with self.assertRaises(TypeError):
            doc().objectInInfosAtIndex_(index=3)
        with self.assertRaises(TypeError):
            doc().countOfInfos(wrong=1)
        with self.assertRaises(TypeError):
            VXGlyphInfo(name="x")
        with self.assertRaises(TypeError):
            VXDocument.__dict__["countOfInfos"](VXGlyphInfo)

    def test_what_was_only_allocated(self):
        for made in (VXDocument.alloc(), NSClassFromString("VXVersionComparator").alloc(),
                     NSClassFromString("JSTDocument").alloc()):
            for name in ("countOfInfos", "fileURL", "tokenizer"):
                with self.assertRaises((ReferenceError, AttributeError)):
                    getattr(made, name)()
        with self.assertRaises(ReferenceError):
            VXGlyphInfo.alloc().isEqualToInfo_(newInfo("x"))

    def test_indexes(self):
        count, info = doc().countOfInfos(), newInfo("x")
        for call in (lambda: doc().objectInInfosAtIndex_(count), lambda: doc().objectInInfosAtIndex_(-1),
                     lambda: doc().insertObject_inInfosAtIndex_(info, count + 1),
                     lambda: doc().insertObjects_inInfosAtIndexes_([info], [count + 1]),
                     lambda: doc().insertObjects_inInfosAtIndexes_([info], [0, 1]),
                     lambda: doc().removeObjectFromInfosAtIndex_(count),
                     lambda: doc().removeObjectsFromInfosAtIndexes_([0, count]),
                     lambda: doc().replaceObjectInInfosAtIndex_withObject_(count, info)):
            with self.assertRaises(IndexError):
                call()
        self.assertEqual(doc().countOfInfos(), count)


class Values(unittest.TestCase):
    def test_lists_of_the_program_cannot_be_changed(self):
        info = newInfo("x", altNames=["a", "b"])
        for change in (lambda names: names.append("c"), lambda names: names.sort(),
                       lambda names: names.__setitem__(0, "c"), lambda names: names.pop(),
                       lambda names: names.__iadd__(["c"]), lambda names: names.clear()):
            with self.assertRaisesRegex(TypeError, r"list\(.*assign"):
                change(info.altNames)
        self.assertEqual(info.altNames, ["a", "b"])
        for again in (list(info.altNames), copy.copy(info.altNames), copy.deepcopy(info.altNames),
                      pickle.loads(pickle.dumps(info.altNames)), info.altNames.mutableCopy()):
            again.append("c")
            info.altNames = again
            self.assertEqual(info.altNames.count(), 3)
            info.altNames = ["a", "b"]

    def test_what_is_gone_stays_in_sets(self):
        document = newDocument()
        known = {document: 1}
        before = hash(document)
        document.close()
        for _ in range(3):
            processEvents()
        self.assertEqual(hash(document), before)
        self.assertEqual(known[document], 1)
        self.assertNotEqual(document, newDocument())
        documents()[0].close()

    def test_settings_go_round(self):
        ruler = NSClassFromString("VXLineNumberView").alloc().init()
        ruler = ruler.initWithCoder_({"font": {"name": "Sans", "size": 14.0, "bold": True, "italic": False},
                                      "textColor": "#ff0000", "drawsDivider": True})
        again = ruler.initWithCoder_(ruler.encodeWithCoder())
        self.assertEqual(again.encodeWithCoder(), ruler.encodeWithCoder())
        self.assertEqual(again.encodeWithCoder()["font"]["bold"], True)
        tokenizer = NSClassFromString("TDTokenizer").alloc().init()
        words = {"def": {"NSColor": "#0000ff", "NSFont": {"name": "Sans", "size": 9.0, "bold": True, "italic": False}},
                 "VXForegroundColorXYZ": "#123456"}
        tokenizer.setKeywords_(words)
        self.assertEqual(tokenizer.keywords(), words)
        tokenizer.setKeywords_(tokenizer.keywords())
        self.assertEqual(tokenizer.keywords(), words)
        with self.assertRaises(Exception):
            tokenizer.setKeywords_({"VXForegroundColorXYZ": "no colour"})


class Callbacks(unittest.TestCase):
    def test_a_menu_that_asks_itself(self):
        class Filler(NSObject):
            def menuNeedsUpdate_(self, menu):
                self.counts.append(menu.numberOfItems())

        filler = Filler.alloc().init()
        filler.counts = []
        menu = VXScriptingHandler.sharedHandler().scriptMenu()
        menu.setDelegate_(filler)
        menu.numberOfItems()
        menu.setDelegate_(None)
        self.assertEqual(len(filler.counts), 1)

    def test_what_ends_a_script_comes_through(self):
        class Sender(NSObject):
            def tag(self):
                raise SystemExit(5)

        def leave(note):
            raise KeyboardInterrupt

        center = NSNotificationCenter.defaultCenter()
        token = center.addObserverForName_object_queue_usingBlock_("Trust", None, None, leave)
        with self.assertRaises(KeyboardInterrupt):
            center.postNotificationName_object_("Trust", None)
        center.removeObserver_(token)
        center.postNotificationName_object_("Trust", None)
        with self.assertRaises(SystemExit):
            doc().objectInInfosAtIndex_(Sender.alloc().init())

    def test_tabs_are_told_of(self):
        told = []
        center = NSNotificationCenter.defaultCenter()
        tokens = [center.addObserverForName_object_queue_usingBlock_(
            name, None, None, lambda note: told.append(note.name()))
            for name in ("TabDidOpenNotification", "TabWillCloseNotification")]
        bar = NSClassFromString("VXTabBarControl").alloc().init()
        item = NSClassFromString("JSTDocument").alloc().init()
        bar.setCanCloseOnlyTab_(True)
        bar.addTabItem_(item)
        bar.closeTabItem_(item)
        for token in tokens:
            center.removeObserver_(token)
        self.assertEqual(told, ["TabDidOpenNotification", "TabWillCloseNotification"])


class Namespace(unittest.TestCase):
    def test_undo_groups_left_open(self):
        # The rest is checked from outside: the run closes them.
        doc().undoManager().beginUndoGrouping()
        doc().undoManager().beginUndoGrouping()
        doc()[0].name = "left open"


result = unittest.TextTestRunner(sys.stdout).run(unittest.defaultTestLoader.loadTestsFromModule(
    sys.modules["__main__"]))
print("checked", result.testsRun)
sys.exit(0 if result.wasSuccessful() else 1)
