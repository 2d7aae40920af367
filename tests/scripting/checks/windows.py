"""What scripts may do with the program's windows, checked from inside on two open copies of the sample."""

import sys
import time
import unittest

from AppKit import NSApplication
from Foundation import *
from MainApp import *

DESCRIPTION_TAG = 7
ONLY_LEFT, DIFFERENT = 1, 2


def left():
    return documents()[0]


def window():
    if left().windowController() is None:
        left().makeWindowControllers()
    return left().windowController()


class DocumentWindow(unittest.TestCase):
    def test_search(self):
        shown = window().infolistController()
        window().searchField().setStringValue_("Aacute")
        window().filterInfos()
        self.assertEqual(window().searchField().stringValue(), "Aacute")
        self.assertTrue(all("aacute" in info.name.lower() for info in shown.arrangedObjects()))
        self.assertTrue(0 < shown.arrangedObjects().count() < len(left()))
        self.assertTrue(shown.setFilterPredicate_("name == 'A'"))
        self.assertEqual([info.name for info in shown.arrangedObjects()], ["A"])
        shown.setFilterPredicate_(None)
        window().searchField().setStringValue_("")
        window().filterInfos()
        self.assertEqual(shown.arrangedObjects().count(), len(left()))

    def test_selection_and_commands(self):
        shown = window().infolistController()
        shown.setSelectionIndexes_([0, 2])
        self.assertEqual(shown.selectionIndexes(), [0, 2])
        self.assertEqual(window().selectedInfos().count(), 2)
        window().copy_(None)
        text = NSPasteboard.generalPasteboard().stringForType_(NSPasteboardTypeString)
        self.assertEqual(text.count("<glyph "), 2)
        count = len(left())
        window().delete_(None)
        self.assertEqual(len(left()), count - 2)
        left().undoManager().undo()
        self.assertEqual(len(left()), count)
        self.assertTrue(window().title())

    def test_delegate(self):
        class Follower(NSObject):
            def arrayController_didCopyObject_copy_(self, controller, source, copy):
                self.copied = (controller, source.name, copy.document)

        shown = window().infolistController()
        follower = Follower.alloc().init()
        shown.setDelegate_(follower)
        shown.copyObjectsInArrangedObjectsFromIndexes_toIndex_([0], 2)
        self.assertEqual(follower.copied, (shown, "A", left()))
        shown.setDelegate_(None)
        left().undoManager().undo()

    def test_menus(self):
        bar = window().menuBar()
        self.assertEqual(NSApplication.sharedApplication().mainMenu(), bar)
        edit = bar.itemWithTitle_("Edit").submenu()
        titles = [item.title() for item in edit.itemArray() if not item.isSeparatorItem()]
        self.assertIn("Find and Replace…", titles)
        scripts = VXScriptingHandler.sharedHandler().scriptMenu()
        self.assertEqual(bar.itemWithTag_(15).submenu(), scripts)
        shown = window().infolistController()
        shown.setSelectionIndexes_([0])
        item = edit.itemWithTitle_("Duplicate")
        self.assertTrue(item.isEnabled())
        count = len(left())
        item.trigger()
        self.assertEqual(len(left()), count + 1)
        left().undoManager().undo()


class FindAndReplace(unittest.TestCase):
    def setUp(self):
        window().infolistController().setSelectedObjects_([left()["A"], left()["B"]])
        window().performFindPanelAction_(12)
        self.dialog = window().outlet_("VXFindReplaceWindowController")

    def test_replaces_in_the_selected_records(self):
        dialog, infos = self.dialog, [left()["A"], left()["B"]]
        before = [info.desc for info in infos]
        dialog.selectItemWithTag_(DESCRIPTION_TAG)
        self.assertEqual(dialog.selectedTag(), DESCRIPTION_TAG)
        self.assertEqual(dialog.outlet_("fieldPopup").selectedTag(), DESCRIPTION_TAG)
        dialog.outlet_("findField").setStringValue_("CAPITAL")
        dialog.outlet_("replaceField").setStringValue_("BIG")
        dialog.doReplace_(None)
        time.sleep(0.02)  # it begins when the dialog is gone
        processEvents()
        self.assertEqual([info.desc for info in infos],
                         [text.replace("CAPITAL", "BIG") for text in before])
        self.assertNotEqual(infos[0].desc, before[0])
        left().undoManager().undo()
        self.assertEqual([info.desc for info in infos], before)

    def test_popups(self):
        popup = self.dialog.outlet_("fieldPopup")
        self.assertEqual(popup.itemTitles().count(), 8)
        self.assertTrue(popup.selectItemWithTag_(3))
        self.assertEqual(self.dialog.selectedTag(), 3)
        self.assertTrue(popup.selectItemWithTitle_(popup.itemTitles()[0]))
        self.assertEqual(self.dialog.selectedTag(), 2)
        self.assertFalse(popup.selectItemWithTag_(99))
        self.dialog.cancel_(None)


class Compare(unittest.TestCase):
    def test_compares_and_copies(self):
        right = documents()[1]
        right["B"].category = "Number"
        right.removeInfo_(right["C"])
        compare = NSApplication.sharedApplication().delegate().compareWindow()
        compare.showWindow_(None)
        self.assertEqual(compare.filterKey(), "name")
        open_ones = list(compare.leftDocList().arrangedObjects())
        compare.leftDocList().setSelectionIndex_(open_ones.index(left()))
        compare.rightDocList().setSelectionIndex_(open_ones.index(right))
        self.assertEqual(compare.rightDocList().selectedObjects(), [right])

        self.choose(compare, DIFFERENT)
        self.assertEqual(compare.filteredKeys().arrangedObjects(), ["B"])
        compare.filteredKeys().setSelectionIndexes_([0])
        compare.updateContent()
        self.assertEqual(compare.leftInfoList().selectedObjects(), [left()["B"]])
        self.assertEqual(compare.rightInfoList().selectedObjects(), [right["B"]])

        self.choose(compare, ONLY_LEFT)
        self.assertEqual(compare.filteredKeys().arrangedObjects(), ["C"])
        compare.filteredKeys().setSelectionIndexes_([0])
        compare.updateContent()
        compare.copyAllRight_(None)
        self.assertIn("C", right)
        self.assertEqual(right["C"].unicodes, left()["C"].unicodes)
        right.undoManager().undo()

    def choose(self, compare, mode):
        NSUserDefaults.standardUserDefaults().setObject_forKey_(mode, "FilterMode")
        compare.updateFilters()


result = unittest.TextTestRunner(stream=sys.stdout, verbosity=0).run(
    unittest.defaultTestLoader.loadTestsFromModule(sys.modules["__main__"]))
print("checked", result.testsRun)
sys.exit(0 if result.wasSuccessful() else 1)
