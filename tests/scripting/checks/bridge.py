"""What scripts may rely on, checked from inside: run on a copy of the sample."""

import sys
import unittest

from AppKit import NSApplication, NSDocumentController
from Foundation import *
from MainApp import *
import objc

PATH = sys.modules["__main__"].Doc.fileURL()


def doc():
    return NSApplication.sharedApplication().orderedDocuments().firstObject()


class Selectors(unittest.TestCase):
    def test_labels_are_arguments(self):
        info = newInfo("one")
        doc().insertObject_inInfosAtIndex_(info, 3)
        self.assertEqual(doc().objectInInfosAtIndex_(3), info)
        self.assertEqual(doc().indexOfObjectInInfos_(info), 3)
        doc().removeObjectFromInfosAtIndex_(3)
        self.assertNotIn(info, doc())

    def test_a_sender_may_be_given(self):
        other = VXDocument.alloc().init()
        self.assertEqual(other.countOfInfos(), 0)
        other.undoManager().undo_(None)

    def test_out_arguments(self):
        line = '<glyph unicode="0041" name="A" case="upper" />'
        info, hint = VXGlyphInfo.alloc().initWithLineXML_fileVersion_(line, None)
        self.assertEqual((info.name, hint), ("A", 2))
        nothing, hint = VXGlyphInfo.alloc().initWithLineXML_fileVersion_("no line", None)
        self.assertIsNone(nothing)
        infos, error = doc().readXMLFromURL_error_(PATH, None)
        self.assertGreater(infos.count(), 2000)
        self.assertIsNone(error)

    def test_errors_come_in_the_tuple_or_are_raised(self):
        infos, error = doc().readXMLFromURL_error_("/no/such.xml", None)
        self.assertIsNone(infos)
        self.assertTrue(error.localizedDescription())
        with self.assertRaises(objc.error) as raised:
            doc().readXMLFromURL_("/no/such.xml")
        self.assertEqual(raised.exception.domain(), error.domain)
        with self.assertRaises(objc.error):
            openDocument("/no/such.xml")

    def test_wrong_calls_raise(self):
        info = newInfo("x")
        for call, kind in [
                (lambda: doc().noSuchOperation_(1), AttributeError),
                (lambda: doc().insertObject_inInfosAtIndex_(info), TypeError),
                (lambda: doc().insertObject_inInfosAtIndex_(info, "3"), TypeError),
                (lambda: doc().insertObject_inInfosAtIndex_(None, 3), TypeError),
                (lambda: doc().insertObject_inInfosAtIndex_("x", 3), TypeError),
                (lambda: doc().addInfos_([info, None]), TypeError),
                (lambda: VXGlyphInfo(name="x"), TypeError),
                (lambda: NSClassFromString(5), TypeError),
                (lambda: doc().addInfos_(5), TypeError),
                (lambda: doc().objectInInfosAtIndex_(1 << 80), OverflowError),
                (lambda: doc().removeObjectsFromInfosAtIndexes_([-1]), IndexError),
                (lambda: info.setName_(5), TypeError),
                (lambda: info.setAltNames_([1]), TypeError),
                (lambda: setattr(info, "nmae", "y"), AttributeError),
                (lambda: setattr(info, "unicodeChar", 5), AttributeError),
                (lambda: VXGlyphInfo.alloc().name, ReferenceError),
                (lambda: VXGlyphInfo.setName_(doc(), "x"), TypeError),
                (lambda: VXDocument.infos.__get__(info), TypeError),
                (lambda: objc.lookUpClass("NoSuchClass"), NameError),
                (lambda: NSClassFromString("UndoManager").alloc(), TypeError)]:
            with self.subTest(kind=kind.__name__), self.assertRaises(kind):
                call()

    def test_says_what_is_wrong_with_a_call(self):
        handler = __import__("_runebook").sharedObject("scriptingHandler")
        for call, words in [
                (lambda: doc().insertObject_inInfosAtIndex_(newInfo("x")), "takes 2 arguments, not 1"),
                (lambda: doc().readXMLFromURL_error_(PATH), "takes 2 arguments, not 1"),
                (lambda: newInfo("x").setName_("a", "b"), "takes 1 arguments, not 2"),
                (lambda: handler.isSupportedPythonVersion_(), "takes 2 or 1 arguments, not 0"),
                (lambda: handler.setPythonFrameworks_([5]), "dict"),
                (lambda: __import__("_runebook").selectors(3), "a class is needed")]:
            with self.assertRaises(TypeError) as raised:
                call()
            self.assertIn(words, str(raised.exception))

    def test_operations_of_classes(self):
        compare = VXVersionComparator.isVersion_greaterThanVersion_
        self.assertTrue(compare("3.10", "3.9"))
        self.assertRaises(IndexError, compare, "0", "")
        self.assertEqual(VXGlyphInfo.stringFromCase_(1), "upper")
        self.assertIsNone(VXGlyphInfo.stringFromCase_(0))
        self.assertEqual(VXGlyphInfo.categories().firstObject(), "Letter")
        self.assertEqual(VXDocument.countOfInfos(doc()), len(doc()))
        self.assertIs(NSClassFromString("VXGlyphInfo"), VXGlyphInfo)
        self.assertIsNone(NSClassFromString("NoSuchClass"))

    def test_listings(self):
        names = dir(doc())
        for name in ("insertObject_inInfosAtIndex_", "infoForName_", "infos", "undoManager"):
            self.assertIn(name, names)
        self.assertNotIn("deleteLater", names)


class Values(unittest.TestCase):
    def test_absent_is_not_empty(self):
        info = newInfo("x")
        self.assertIsNone(info.marks)
        self.assertIsNone(info.marks())
        info.marks = ""
        self.assertEqual((info.marks, info.marks()), ("", ""))
        info.setMarks_(None)
        self.assertIsNone(info.marks)

    def test_properties_answer_both_habits(self):
        info = newInfo("x", unicodes=["0041"], direction=1)
        self.assertEqual((info.name, info.name()), ("x", "x"))
        name, direction, codes = info.name, info.direction, info.unicodes
        self.assertEqual((name(), direction(), codes()), ("x", 1, ["0041"]))
        self.assertEqual(getattr(info, "name")(), "x")
        self.assertEqual(list(map(VXGlyphInfo.name, [info])), ["x"])
        self.assertIsInstance(name, str)

    def test_texts_survive(self):
        info = newInfo("x")
        for text in ("", "é", "\U0001F600", "\ufeffbom", "a\0b", "\ud800", "line\nbreak", "x" * 100000, None):
            for field, operation in ((VXGlyphInfo.desc, info.setDesc_), (VXGlyphInfo.category, info.setCategory_)):
                field.__set__(info, text)
                self.assertEqual((field(info), type(field.__get__(info))), (text, NSString if text is not None
                                                                          else type(None)))
                operation("other")
                operation(NSString(text) if text else text)
                self.assertEqual(field(info), text)
        line = '<glyph name="\ufeffé\U0001F600" category="" anchors="a" />'
        read = [VXGlyphInfo.alloc().initWithLineXML_fileVersion_(line, None)[0], *doc().infos[:300]]
        self.assertEqual(read[0].name, "\ufeffé\U0001F600")
        for info in read:
            for key in FIELDS:
                self.assertEqual(getattr(info, key), info.valueForKey_(key))

    def test_lists(self):
        infos = doc().infos
        self.assertEqual(infos.count(), len(doc()))
        self.assertEqual(infos.firstObject(), infos[0])
        self.assertEqual(infos.objectAtIndex_(1), infos[1])
        self.assertRaises(IndexError, infos.objectAtIndex_, len(infos))
        self.assertIsNone(NSMutableArray.array().firstObject())
        self.assertEqual(NSArray([1, 2]).indexOfObject_(3), NSNotFound)

    def test_by_key(self):
        info = newInfo("x")
        self.assertTrue(info.setValue_forKey_("Letter", "category"))
        self.assertEqual(info.valueForKey_("category"), "Letter")
        self.assertRaises(objc.error, info.valueForKey_, "nonsense")
        self.assertEqual(info["case"], 0)
        info["altNames"] = ["a", "b"]
        self.assertEqual(dict(info)["altNames"], ["a", "b"])
        self.assertRaises(KeyError, lambda: info["nonsense"])
        self.assertEqual(doc().valueForKey_("fileVersion"), 2)

    def test_look_ups(self):
        self.assertEqual(doc()["A"].unicode, "0041")
        self.assertRaises(KeyError, lambda: doc()["no such"])
        self.assertEqual(doc().infoForUnicode_("0041"), doc()["A"])
        found = doc().infoForKey_values_("name", ["A", "B"])
        self.assertEqual([info.name for info in found], ["A", "B"])
        self.assertIsNone(doc().infoForKey_values_("name", ["no such"]))
        self.assertEqual(doc()[-1], doc().infos[-1])
        self.assertEqual(len(doc()[2:5]), 3)

    def test_identity(self):
        self.assertEqual(doc(), doc())
        self.assertEqual(doc()["A"], doc()["A"])
        self.assertEqual(hash(doc()["A"]), hash(doc()["A"]))
        self.assertNotEqual(doc()["A"], doc()["B"])
        self.assertEqual(len({doc()["A"], doc()["A"], doc()["B"]}), 2)
        self.assertEqual(doc()["A"].document, doc())

    def test_records_outlive_their_document(self):
        other = VXDocument.alloc().init()
        NSDocumentController.sharedDocumentController().addDocument_(other)
        info = newInfo("kept")
        other.addInfo_(info)
        other.close()
        processEvents()
        self.assertEqual(info.name, "kept")
        info.name = "still"
        self.assertEqual(info.name, "still")

    def test_helpers(self):
        self.assertEqual(hexStringToInt("00e9"), 233)
        self.assertEqual(hexStringFromInt(-10), "-000A")
        self.assertEqual(stringWithChar(0x1F600), "\U0001F600")
        self.assertEqual(character32AtIndex("a\U0001F600", 1), (0x1F600, 2))
        self.assertRaises(IndexError, character32AtIndex, "a", 5)
        self.assertEqual(rangeOfLine("a\nbc", 2), (2, 2))
        data = unicodeData("00E9")
        self.assertEqual(data, unicodeData(0xE9))
        self.assertEqual((data["name"], data["category"], data["block"], data["script"], data["upper"], data["mirrored"],
                          data["decomposition"], data["decompositionTag"]),
                         ("LATIN SMALL LETTER E WITH ACUTE", "Ll", "Latin-1 Supplement", "Latin", 0xC9, False,
                          [0x65, 0x301], None))
        self.assertEqual(unicodeData(10)["aliases"][0], "LINE FEED")
        self.assertIsNone(unicodeData(0x378))
        self.assertRaises(ValueError, unicodeData, 0x110000)
        self.assertEqual(len(UUID()), 36)
        self.assertRaises(RuntimeError, askString, "Name?")

    def test_settings_and_places(self):
        defaults = NSUserDefaults.standardUserDefaults()
        defaults.setObject_forKey_(["a"], "checkKey")
        self.assertEqual(defaults.arrayForKey_("checkKey"), ["a"])
        defaults.setObject_forKey_(None, "checkKey")
        self.assertIsNone(defaults.objectForKey_("checkKey"))
        url = NSURL.fileURLWithPath_("/a b/c.xml")
        self.assertEqual((url.path(), url.absoluteString()), ("/a b/c.xml", "file:///a%20b/c.xml"))
        board = NSPasteboard.generalPasteboard()
        board.clearContents()
        board.setString_forType_("copied", NSPasteboardTypeString)
        self.assertEqual(board.stringForType_(NSPasteboardTypeString), "copied")


class Editing(unittest.TestCase):
    def test_undo_inside_of_a_run(self):
        manager, name = doc().undoManager(), doc()[0].name
        doc()[0].name = "changed"
        manager.undo()
        self.assertEqual((doc()[0].name, manager.canRedo()), (name, True))
        manager.redo()
        self.assertEqual(doc()[0].name, "changed")
        manager.undo()

    def test_removing_while_iterating(self):
        other = newDocument()
        other.addInfos_([newInfo("r%d" % i) for i in range(100)])
        for info in other:
            other.removeInfo_(info)
        self.assertEqual(len(other), 0)
        other.close()

    def test_closed_documents_are_told_apart(self):
        other = newDocument()
        other.close()
        processEvents()
        self.assertNotIn(other, documents())
        self.assertRaises(ReferenceError, other.countOfInfos)

    def test_files(self):
        import os, tempfile
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "new.xml")
            other = newDocument()
            other.addInfo_(newInfo("é", desc="x"))
            self.assertTrue(other.saveToURL_ofType_(NSURL.fileURLWithPath_(path), "public.xml"))
            other.close()
            opened = openDocument(path)
            self.assertEqual([info.name for info in opened], ["é"])
            opened.close()

    def test_other_threads_are_refused(self):
        import threading
        raised = []

        def work():
            try:
                doc().countOfInfos()
            except RuntimeError as error:
                raised.append(error)

        thread = threading.Thread(target=work)
        thread.start()
        thread.join()
        self.assertEqual(len(raised), 1)


class Classes(unittest.TestCase):
    def test_subclasses_and_notifications(self):
        class Observer(NSObject):
            def init(self):
                self = objc.super(Observer, self).init()
                self.seen = []
                return self

            def changed_(self, note):
                self.seen.append((note.name(), note.userInfo()))

        observer = Observer.alloc().init()
        center = NSNotificationCenter.defaultCenter()
        center.addObserver_selector_name_object_(observer, "changed:", "Check", None)
        center.postNotificationName_object_userInfo_("Check", doc(), {"key": 1})
        center.postNotificationName_object_("Other", None)
        center.removeObserver_(observer)
        center.postNotificationName_object_("Check", None)
        self.assertEqual(observer.seen, [("Check", {"key": 1})])
        self.assertTrue(observer.respondsToSelector_("changed:"))
        self.assertTrue(observer.isKindOfClass_(NSObject))

    def test_functions_observe_and_may_fail(self):
        seen = []
        center = NSNotificationCenter.defaultCenter()
        token = center.addObserverForName_object_queue_usingBlock_(
            "Check", None, None, lambda note: seen.append(note.object()))
        center.postNotificationName_object_("Check", doc())
        center.removeObserver_(token)
        self.assertEqual(seen, [doc()])

    def test_many_calls_leave_memory_where_it_was(self):
        import resource
        other = newInfo("x")
        for _ in range(20000):
            other.setDesc_(other.name)
        before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
        for _ in range(200000):
            other.setDesc_(other.name)
            doc().infoForName_("B")
        after = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
        self.assertLess(after - before, 4096)


result = unittest.TextTestRunner(stream=sys.stdout, verbosity=0).run(
    unittest.defaultTestLoader.loadTestsFromModule(sys.modules["__main__"]))
print("checked", result.testsRun)
sys.exit(0 if result.wasSuccessful() else 1)
