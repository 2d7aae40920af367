"""What makes scripts pleasant to write, checked from inside: run on a copy of the sample."""

import copy
import inspect
import io
import logging
import pickle
import pydoc
import sys
import unittest
import weakref

from Foundation import *
from MainApp import *

Doc = sys.modules["__main__"].Doc


class Help(unittest.TestCase):
    def test_operations_classes_and_fields_tell_what_they_do(self):
        text = pydoc.render_doc(VXDocument.insertObject_inInfosAtIndex_, renderer=pydoc.plaintext)
        for part in ("insertObject_inInfosAtIndex_(info: VXGlyphInfo, index: int)", "IndexError"):
            self.assertIn(part, text)
        text = pydoc.render_doc(VXDocument.readXMLFromURL_error_, renderer=pydoc.plaintext)
        self.assertIn("Tuple[Optional[List[VXGlyphInfo]], Optional[Error]]", text)
        self.assertIn("Raises objc.error", pydoc.render_doc(VXDocument.readXMLFromURL_))
        self.assertIn("undo history", VXDocument.__doc__)
        self.assertIn("name: str", VXGlyphInfo.__dict__["name"].__doc__)
        self.assertIn("cannot be set", VXGlyphInfo.__dict__["document"].__doc__)
        for cls in (VXDocument, VXGlyphInfo, NSClassFromString("JSTTextView"), type(Doc.undoManager())):
            self.assertIn(cls.__name__, pydoc.render_doc(cls))

    def test_signatures(self):
        self.assertEqual(str(inspect.signature(Doc.objectInInfosAtIndex_)), "(index: 'int', /) -> 'VXGlyphInfo'")
        self.assertEqual(list(inspect.signature(VXDocument.infoForKey_values_).parameters), ["key", "values"])
        self.assertEqual(list(inspect.signature(Doc.undoManager().undo).parameters), [])

    def test_listings_have_the_usual_spellings(self):
        class Derived(NSObject):
            def seen_(self, thing):
                pass

        page = pydoc.render_doc(VXDocument, renderer=pydoc.plaintext)
        for names in (dir(Doc), dir(VXDocument), page):
            self.assertIn("insertObject_inInfosAtIndex_", names)
            for other in ("insertObjectInInfosAtIndex_", "insert_object_inInfosAtIndex_", "insertObjectInInfosAtIndex("):
                self.assertNotIn(other, names)
        for names in (dir(Derived), dir(Derived())):
            self.assertIn("seen_", names)
            self.assertIn("alloc", names)

    def test_calls_by_every_way_are_one(self):
        by_hand = VXDocument.infoForName_
        for found in (Doc.infoForName_("A"), by_hand(Doc, "A"), by_hand(*(Doc, "A")),
                      by_hand.__call__(Doc, "A"), (lambda f: f("A"))(Doc.infoForName_)):
            self.assertEqual(found.name, "A")
        for wrong in (lambda: Doc.infoForName_(name="A"), lambda: by_hand(Doc, **{"name": "A"}),
                      lambda: Doc["A"].name(1), lambda: Doc["A"].setName_(value="B"), lambda: by_hand()):
            with self.assertRaises(TypeError):
                wrong()


class Records(unittest.TestCase):
    def setUp(self):
        self.info = newInfo("a", category="Letter", unicodes=["0041", "0042"], desc="d", altNames=["b"], case=1)

    def test_are_mappings(self):
        info = self.info
        self.assertEqual((len(info), FIELDS[:2], FIELDS[9:11], FIELDS[-1]),
                         (17, ("name", "category"), ("direction", "sortName"), "decompose"))
        self.assertEqual(dict(info.items()), dict(info))
        self.assertEqual((info.get("category"), info.get("none"), info.get("none", 3)), ("Letter", None, 3))
        self.assertIn("category", info)

    def test_are_copied_whole(self):
        full = Doc["A"]
        for info in (self.info, full):
            for again in (copy.copy(info), copy.deepcopy(info), pickle.loads(pickle.dumps(info))):
                self.assertEqual(dict(again), dict(info))
                self.assertNotEqual(again, info)
                self.assertIsNone(again.document)

    def test_weak_references(self):
        ended = []
        info = newInfo("weak")
        reference = weakref.ref(info, lambda _: ended.append(1))
        self.assertIs(reference(), info)
        del info
        self.assertEqual(ended, [1])
        self.assertIsNotNone(weakref.ref(Doc)())

    def test_new_records_take_what_records_answer(self):
        self.assertEqual(newInfo(unicode="0041").unicodes, ["0041"])
        self.assertEqual(newInfo("x", production="uni0041", index=3).index, 3)
        for wrong in ({"noField": 1}, {"fields": 2}):
            with self.assertRaises(TypeError):
                newInfo(**wrong)
        self.assertNotIn(None, Doc)
        self.assertNotIn(3, Doc)


class Streams(unittest.TestCase):
    def test_are_streams(self):
        for stream in (sys.stdout, sys.stderr):
            self.assertEqual(stream.write(""), 0)
            self.assertEqual(stream.encoding, "utf-8")
            self.assertIn(stream.isatty(), (True, False))
            self.assertTrue(stream.writable())
            stream.flush()
        self.assertEqual(sys.stdout.fileno(), 1)
        self.assertEqual(sys.stdout.write("é"), 1)
        sys.stdout.writelines(["a", "b"])
        sys.stdout.buffer.write("ü".encode())
        print(file=sys.stdout, flush=True)
        with self.assertRaises(TypeError):
            sys.stdout.write(3)
        import TesselOut
        self.assertEqual(TesselOut.write(""), "")

    def test_libraries_work_on_them(self):
        import doctest
        runner = doctest.DocTestRunner()
        for test in doctest.DocTestFinder().find(newInfo, globs={"newInfo": newInfo}):
            runner.run(test)
        self.assertEqual((runner.failures, runner.tries), (0, 1))
        handler = logging.StreamHandler(sys.stdout)
        logging.getLogger("comfort").addHandler(handler)
        logging.getLogger("comfort").warning("logged")
        logging.getLogger("comfort").removeHandler(handler)


result = unittest.TextTestRunner(sys.stdout).run(unittest.defaultTestLoader.loadTestsFromModule(
    sys.modules["__main__"]))
print("checked", result.testsRun)
sys.exit(0 if result.wasSuccessful() else 1)
