"""The commands of the editing windows, driven by selector as a script drives them."""

import gc
import json
import os
import sys
import tempfile
import time
import unittest

from AppKit import *
from Foundation import *
from MainApp import *

MATCH_CASE, REGEX = 2001, 2002


def make_document(*names, **fields):
    """An open document with a window and records of these names."""
    doc = newDocument()
    doc.setInfos_([newInfo(name, **fields) for name in names])
    doc.makeWindowControllers()
    return doc, doc.windowController()


def names(infos):
    return " ".join(info.name for info in infos)


def pasteboard():
    return NSPasteboard.generalPasteboard().stringForType_(NSPasteboardTypeString)


def set_pasteboard(text):
    NSPasteboard.generalPasteboard().setString_forType_(text, NSPasteboardTypeString)


def defaults():
    return NSUserDefaults.standardUserDefaults()


class Sender(NSObject):
    def tag(self):
        return self.number


def sender(number):
    made = Sender.alloc().init()
    made.number = number
    return made


class EditingTest(unittest.TestCase):
    def open(self, *given, **fields):
        self.doc, self.window = make_document(*given, **fields)
        self.list = self.window.infolistController()
        self.addCleanup(self.doc.close)

    def select(self, *rows):
        self.assertTrue(self.list.setSelectionIndexes_(rows))

    def undone(self):
        """The records after one step back."""
        self.doc.undoManager().undo()
        return names(self.doc)


class Search(EditingTest):
    def setUp(self):
        self.open("A", "a", "Adieresis", "b_a", "_part.b")
        for info, code in zip(self.doc, ("0041", "0061", "00C4", "0042", "0043")):
            info.unicodes = [code]
        self.reset()
        self.addCleanup(self.reset)

    def reset(self):
        for key in ("SearchState", "SearchStateMatchCase", "SearchStateRegex"):
            defaults().setObject_forKey_(0, key)

    def found(self, text):
        field = self.window.searchField()
        field.setStringValue_(text)
        self.window.filterInfos_(None)
        self.assertFalse(self.window.isFiltering())
        return names(self.list.arrangedObjects())

    def test_menu(self):
        menu = self.window.searchFieldMenu()
        name, match_case, regex = (menu.itemWithTag_(tag) for tag in (2, MATCH_CASE, REGEX))
        self.assertEqual([item.title() for item in (name, match_case, regex)], ["Name", "Match Case", "Regex"])
        self.window.searchMode_(name)
        self.assertTrue(self.window.validateMenuItem_(name))
        self.assertEqual((name.state(), match_case.state(), regex.state()), (1, 0, 0))
        self.window.searchMode_(sender(REGEX))
        self.assertEqual([self.window.validateMenuItem_(item) for item in (name, match_case, regex)],
                         [False, False, True])
        self.assertEqual(self.found("."), "A a")
        self.doc.setInfos_([newInfo("a" * 20 + str(i)) for i in range(20000)])
        self.assertEqual(self.found("(a|b)*(a|c)*19999"), "a" * 20 + "19999")  # found before the script goes on
        self.window.searchMode_(regex)
        self.assertEqual(defaults().integerForKey_("SearchState"), 2)

    def test_filter_and_subtitle(self):
        self.doc.updateChangeCount_(2)
        self.assertEqual(self.window.windowTitleForDocumentDisplayName_("x"), "x")
        self.assertEqual(self.window.subtitle(), "5 infos")
        self.assertEqual(self.window.filterString_forKey_search_(True, "name", "x"), 'name contains[d] "x"')
        self.assertEqual(self.window.filterString_forKey_search_(False, "name", "x"), 'name contains[cd] "x"')
        self.window.searchMode_(2)
        self.assertEqual(self.found("b"), "b_a _part.b")
        self.assertEqual(self.list.filterPredicate(), 'name contains[cd] "b"')
        self.assertEqual(self.window.subtitle(), "2/5 infos")
        self.assertFalse(self.list.draggingEnabled())
        self.doc["A"].name = "Alpha"
        self.window.synchronizeWindowTitleWithDocumentName()
        self.assertEqual(self.window.subtitle(), "2/5 infos - Edited")
        self.assertEqual(self.window.title(), self.doc.displayName())
        self.window.searchField().setStringValue_("")
        self.window.controlTextDidChange_(self.window.searchField())
        self.assertIsNone(self.list.filterPredicate())
        self.assertTrue(self.list.draggingEnabled())
        self.assertTrue(self.list.setFilterPredicate_("name == 'a'"))
        self.assertEqual(names(self.list.arrangedObjects()), "a")

    def test_conditions(self):
        self.assertTrue(self.window.setFilter_('suffix == ".b" || nameLength == 1'))
        self.assertEqual(names(self.list.arrangedObjects()), self.found(""))
        self.assertEqual(self.window.filter(), 'suffix == ".b" || nameLength == 1')
        self.assertEqual(self.found("b"), "_part.b")
        done, error = self.window.setFilter_error_("script = latin", None)
        self.assertFalse(done)
        self.assertIn("quotation marks", error.localizedFailureReason())
        defaults().setObject_forKey_({"one letter": "nameLength == 1"}, "SavedFilters")
        self.assertEqual(list(self.window.savedFilters()), ["one letter"])
        self.assertTrue(self.window.setFilter_("one letter"))
        self.assertEqual(self.window.filter(), "nameLength == 1")
        self.assertTrue(self.window.setFilter_(""))
        self.assertEqual(names(self.list.arrangedObjects()), "b_a _part.b")
        defaults().removeObjectForKey_("SavedFilters")


class Commands(EditingTest):
    def test_outlets(self):
        self.open("A", "b", unicodes=["0041"], production="uni0041", altNames=["x", "y"])
        self.select(0)
        window = self.window
        self.assertTrue(window.hasObservation())
        self.assertEqual(window.window(), window)
        for key in ("Unicode", "SortName", "Legacy"):
            self.assertTrue(window.valueForKey_("infoLable" + key).stringValue(), key)
        with self.assertRaises(AttributeError):
            window.infoLableNothing()
        self.assertEqual(window.previewLabel().stringValue(), "A")
        self.assertEqual(window.unicodesField().objectValue(), ["0041"])
        self.assertEqual(window.productionNameField().stringValue(), "uni0041")
        self.assertEqual(window.altNameField().stringValue(), "x, y")
        self.assertIn("Letter", window.categories())
        self.assertEqual(window.category().stringValue(), "")
        self.select(0, 1)
        self.assertEqual(window.previewLabel().stringValue(), "")
        window.observeValueForKeyPath_ofObject_change_context_("selection", self.list, None, None)
        window.awakeFromNib()
        self.assertTrue(window.hasObservation())

    def test_editing_by_fields(self):
        self.open("A", "b", altNames=[])
        self.select(0)
        self.window.unicodesField().setObjectValue_(["e9", "1f600", "00g1"])
        self.window.category().setStringValue_("Letter")
        self.window.name().setStringValue_("Alpha")
        self.window.commitEditing()
        info = self.doc[0]
        self.assertEqual((info.unicodes(), info.category(), info.name()), (["00E9", "1F600"], "Letter", "Alpha"))
        field = self.window.altNameField()
        field.setStringValue_("a.sc, b")
        self.assertFalse(self.window.textFieldHasValidContent_(field))
        self.assertEqual(field.errorHint(), "Repeating name: b")
        self.assertTrue(field.isExtraButtonVisible())
        field.setStringValue_("a.sc")
        self.assertTrue(self.window.textFieldHasValidContent_(field))
        self.assertFalse(field.errorHint())
        self.assertFalse(field.isExtraButtonVisible())
        self.assertEqual(
            self.window.tokenField_shouldAddObjects_atIndex_(self.window.unicodesField(),
                                                             ["e9", "1f600", "00g1", "", "41"], 0),
            ["00E9", "1F600", "", "0041"])

    def test_commands(self):
        """Each by its selector; what they do besides is seen in the window's own tests."""
        self.open("a", "b", "c", "d")
        self.select(0, 1)
        self.window.copy_(None)
        copied = pasteboard()
        self.assertEqual((copied.count("\t<glyph "), copied[-1]), (2, "\n"))
        for command, expected in (("cut_", "c d"), ("delete_", "c d"), ("duplicateSelectedInfos_", "a a.001 b b.001 c d"),
                                  ("removeSelectedInfos_", "c d")):
            with self.subTest(command=command):
                self.select(0, 1)
                getattr(self.window, command)(None)
                sheet = self.window.attachedSheet()
                if sheet:
                    self.assertIn("Do you really want to remove all selected entries?", [sheet.text(), sheet.title()])
                    sheet.buttonWithTitle_("Remove").performClick_(None)
                self.assertEqual(names(self.doc), expected)
                self.assertEqual(self.undone(), "a b c d")
        self.window.copyAsTable_(None)
        self.assertIn("name\tunicode", pasteboard())
        self.select(0)
        done, error = self.window.pasteTable_error_("name\tcategory\nb\tMark\nb2\tMark\n", None)
        self.assertEqual((done, names(self.doc)), ("One record changes in one field, one is new.", "a b c d b2"))
        self.assertEqual(self.undone(), "a b c d")
        done, error = self.window.pasteTable_error_("x\ny\n", None)
        self.assertIn("2 rows do not fit 1 selected", error.localizedDescription())
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "t.csv")
            self.assertTrue(self.window.exportTableToURL_fields_records_error_(path, ["name", "case"], "all", None)[0])
            with open(path, encoding="utf-8") as file:
                self.assertEqual(file.read(), "name,case\na,\nb,\nc,\nd,\n")
        self.check_many()
        self.select(3)
        set_pasteboard(copied.replace('"b"', '"x"'))
        self.window.paste_(None)
        self.assertEqual(names(self.doc), "a b c d a x")
        self.window.moveNameToAltName_(None)
        self.assertEqual(self.doc[5].altNames, ["x"])
        self.doc[5].unicodes = ["E000"]
        self.select(5)
        self.window.makeLegacyName_(None)
        self.assertEqual(self.doc[5].production, "uniE000")

    def check_many(self):
        self.select(0, 1)
        self.assertEqual(self.window.addEntries_toField_error_(["top", "_x"], "anchors", None)[0], 2)
        self.assertEqual(self.window.removeEntries_fromField_error_(["_x"], "anchors", None)[0], 2)
        self.assertEqual([info.anchors for info in self.doc], ["top", "top", None, None])
        for entries, key, reason in ((["c"], "altNames", "a: Repeating name: c"), (["x"], "name", "“name” is no field")):
            count, error = self.window.addEntries_toField_error_(entries, key, None)
            self.assertEqual(count, -1)
            self.assertIn(reason, error.localizedDescription())
        made, error = self.window.addVariantsWithSuffixes_fields_error_([".sc", "alt"], ["anchors"], None)
        self.assertEqual(names(made), "a.sc a.alt b.sc b.alt")
        self.assertEqual((names(self.doc), made[0].anchors), ("a a.sc a.alt b b.sc b.alt c d", "top"))
        self.assertIn("“x” is no field", self.window.addVariantsWithSuffixes_fields_error_([".y"], ["x"], None)[1]
                      .localizedDescription())
        self.assertEqual(self.undone(), "a b c d")
        self.doc[0].unicodes = ["E001"]
        self.select(0, 1)
        self.assertEqual(self.window.fillProductionNamesByRule_onlyEmpty_error_("codepoint", True, None)[0], 1)
        self.assertEqual(self.doc[0].production, "uniE001")
        self.assertIn("none of list", self.window.fillProductionNamesByRule_onlyEmpty_error_("x", True, None)[1]
                      .localizedDescription())
        made, error = self.window.addCharactersInText_error_("U+0430-0431, U+0451", None)
        self.assertEqual([info.unicode for info in made], ["0430", "0431", "0451"])
        self.assertEqual((made[0].script, self.doc[-1].unicode), ("cyrillic", "0451"))
        self.assertEqual(self.window.addCharactersInText_error_("бa", None)[0][0].unicode, "0061")
        self.assertIn("type a range", self.window.addCharactersInText_error_(" ", None)[1].localizedDescription())
        self.assertEqual(len(self.doc), 8)
        self.doc.removeInfos_(self.doc.infos()[4:])
        self.select(0, 1)
        for sheet in ("editEntries_", "addCharacters_", "addVariants_", "fillProductionNames_"):
            getattr(self.window, sheet)(None)
            self.window.attachedSheet().buttonWithTitle_("Cancel").performClick_(None)
        for info in self.doc:
            info.production = info.anchors = None
            info.unicodes = []

    def test_names_in_others(self):
        self.open("a", "b", "a.sc")
        self.doc[1].decompose = "a, a.sc"
        self.doc.undoManager().removeAllActions()
        self.assertEqual(names(self.doc.infosUsingName_("a")), "b")
        self.assertEqual(self.doc.renameInfo_to_references_error_(self.doc[0], "b", True, None)[0], 0)
        self.assertEqual(self.doc.renameInfo_to_references_(self.doc[0], "x", True), 2)
        self.assertEqual((names(self.doc), self.doc[1].decompose()), ("x b x.sc", "x, x.sc"))
        history = self.doc.undoManager()
        for edit in (lambda: None, lambda: self.doc[0].setCategory_("Mark")):
            edit()
            history.endUndoGrouping()
            history.beginUndoGrouping()
        self.select(0)
        self.window.showUses_(None)
        self.window.goToComponent_(None)
        self.window.renameInOtherRecords_(None)
        self.window.showInfo_(self.doc[2])
        self.window.goBack_(None)
        self.assertEqual(self.list.selectionIndexes(), [0])
        self.window.goForward_(None)
        self.assertEqual(self.list.selectionIndexes(), [2])
        self.assertEqual(history.stepNames()[0], "Rename a to x in 3 Records")
        self.assertTrue(self.doc.undoOnlyStep_error_(0, None)[0])
        self.assertEqual((names(self.doc), self.doc[0].category()), ("a b a.sc", "Mark"))
        done, error = self.doc.undoOnlyStep_error_(0, None)
        self.assertIn("later changed the Decompose of b", error.localizedDescription())

    def test_values(self):
        self.open("A", "B", "a.sc", category="Leter")
        self.doc[1].category = None
        window = self.window
        self.assertEqual(window.valueCounts_error_("category", None)[0], [["Leter", 2], [None, 1]])
        self.assertEqual(window.valueCounts_error_("suffix", None)[0], [[None, 2], [".sc", 1]])
        self.assertIn("nameLength", window.valueCounts_error_("nothing", None)[1].localizedRecoverySuggestion())
        self.assertEqual(window.renameValue_to_inField_error_("Leter", "Letter", "category", None)[0], 2)
        self.assertEqual([info.category for info in self.doc], ["Letter", None, "Letter"])
        self.doc.undoManager().undo()  # with what the script did before
        self.assertEqual([info.category for info in self.doc], ["Leter"] * 3)
        count, error = window.renameValue_to_inField_error_(".sc", ".smcp", "suffix", None)
        self.assertEqual(count, -1)
        self.assertIn("worked out", error.localizedDescription())
        self.assertTrue(window.showValues_error_("script", None)[0])
        self.assertTrue(window.isValuesShown())
        window.setValuesShown_(False)

    def test_sort_names(self):
        self.open("A", "B", "C", sortName="old")
        self.select(0, 1, 2)
        self.assertIsNone(self.window.sortNameDialog())
        self.window.setSortName_(None)
        dialog = self.window.sortNameDialog()
        dialog.sortNamePrefix().setStringValue_("x")
        dialog.sortNameStep().setIntegerValue_(5)
        self.window.sortNameCancel_(None)
        self.assertEqual([info.sortName() for info in self.doc], ["old"] * 3)
        self.window.setSortName_(None)
        self.window.sortNameOK_(None)
        self.assertEqual(" ".join(info.sortName for info in self.doc), "x001 x006 x011")
        for key, value in (("Prefix", "a"), ("Step", 1)):
            defaults().setObject_forKey_(value, "sortName" + key)

    def test_restoration(self):
        self.open("a", "ab", "b")
        self.window.searchField().setStringValue_("b")
        self.window.filterInfos()
        self.select(1)
        state = self.window.window_willEncodeRestorableState_(self.window, None)
        self.assertEqual((state["searchField"], state["selectedInfos"]), ("b", [1]))
        self.window.searchField().setStringValue_("")
        self.window.filterInfos()
        self.window.window_didDecodeRestorableState_(self.window, state)
        self.assertEqual(names(self.list.arrangedObjects()), "ab b")
        self.assertEqual(names(self.list.selectedObjects()), "b")

    def test_views(self):
        self.open("a")
        self.assertEqual(self.window.splitView().splitView_constrainSplitPosition_ofSubviewAt_(None, 99.9, 0), 99)
        self.assertTrue(self.window.isSidebarShown())
        self.assertNotEqual(self.window.sidebarView(), self.window.contentView())
        self.assertIsNotNone(NSClassFromString("VXWhiteView").alloc().init())
        button = NSClassFromString("VXMenuButton").alloc().init()
        first, last = (button.addItemWithTitle_(title) for title in ("First", "Last"))
        self.assertEqual([item.title() for item in button.itemMenu().itemArray()], ["First", "Last"])
        self.assertEqual(button.positioningItem(), last)
        last.setVisible_(False)
        self.assertEqual(button.positioningItem(), first)


    def test_menus(self):
        self.open("a")
        bar = self.window.menuBar()
        self.assertEqual(NSApplication.sharedApplication().mainMenu(), bar)
        scripts = VXScriptingHandler.sharedHandler().scriptMenu()
        self.assertEqual(bar.itemWithTag_(15).submenu(), scripts)
        self.select(0)
        item = bar.itemWithTitle_("Edit").submenu().itemWithTitle_("Duplicate")
        self.assertTrue(item.isEnabled())
        item.trigger()
        self.assertEqual(names(self.doc), "a a.001")


class FindAndReplace(EditingTest):
    def dialog(self, tag, find, by):
        self.window.performFindPanelAction_(sender(12))
        dialog = self.window.outlet_("VXFindReplaceWindowController")
        self.assertTrue(dialog.fieldPopup().selectItemWithTag_(tag))
        dialog.findField().setStringValue_(find)
        dialog.replaceField().setStringValue_(by)
        return dialog

    def test_replaces(self):
        self.open("ant", "ant")
        self.select(0)
        dialog = self.dialog(2, "a", "b")
        popup = dialog.outlet_("fieldPopup")
        self.assertEqual([item.tag() for item in popup.itemArray()], list(range(2, 10)))
        self.assertEqual((popup.itemTitles().count(), popup.selectItemWithTag_(99)), (8, False))
        self.assertTrue(popup.selectItemWithTitle_(popup.itemTitles()[0]))
        self.assertFalse(popup.selectItemWithTitle_("no such item"))
        for wrong in ((), ("a", "b")):
            with self.assertRaises(TypeError):
                dialog.setWindowTitle_(*wrong)
        self.assertEqual((dialog.selectedTag(), names(dialog.selectedInfos())), (2, "ant"))
        dialog.cancel_(None)
        processEvents()
        self.assertEqual(names(self.doc), "ant ant")
        self.dialog(2, "a", "b").doReplace_(None)
        time.sleep(0.02)  # it begins when the dialog is gone
        processEvents()
        self.assertEqual(names(self.doc), "bnt ant")
        self.assertEqual(self.undone(), "ant ant")

    def test_by_itself(self):
        self.open("a", "b")
        dialog = NSClassFromString("VXFindReplaceWindowController").alloc().init()
        dialog.setSelectedInfos_(list(self.doc))
        self.assertEqual(dialog.runDialog_modalForWindow_(None, None), 0)
        dialog.fieldPopup().selectItemWithTag_(2)
        for find, by, expected in (("", "x", "a b"), ("a", "aa", "aa b")):
            defaults().setObject_forKey_(find, "FindAndReplaceSearch")
            defaults().setObject_forKey_(by, "FindAndReplaceReplace")
            dialog._doReplace()
            self.assertEqual(names(self.doc), expected)

    def test_other_actions(self):
        self.open("a")
        self.window.performFindPanelAction_(7)
        self.window.performFindPanelAction_(1)
        self.assertEqual(self.window.firstResponder(), self.window.searchField())


class Compare(EditingTest):
    def setUp(self):
        self.window = NSApplication.sharedApplication().delegate().compareWindow()
        self.left, self.right = (make_document(*given.split())[0] for given in ("a b c", "b c d d"))
        for doc in (self.left, self.right):
            self.addCleanup(doc.close)
        for key in ("FilterKey", "FilterMode"):
            defaults().setObject_forKey_(0, key)
        self.window.showWindow_(None)
        for choice, doc in ((self.window.leftDocList(), self.left), (self.window.rightDocList(), self.right)):
            choice.setSelectionIndex_(list(choice.arrangedObjects()).index(doc))

    def keys(self, mode):
        defaults().setObject_forKey_(mode, "FilterMode")
        self.window.updateFilters()
        return " ".join(self.window.filteredKeys().arrangedObjects())

    def test_modes(self):
        self.assertTrue(self.window.hasObservers())
        self.assertEqual((self.window.title(), self.window.filterKey()), ("Compare", "name"))
        for info in (*self.left, *self.right):
            info.desc = "same"
        self.right["c"].category = "Mark"
        self.assertEqual([self.keys(mode) for mode in (0, 1, 2)], ["d d", "a", "c"])
        self.assertEqual(self.window.rightDocList().selectedObjects(), [self.right])

    def test_panes_and_copying(self):
        self.keys(2)
        self.right["c"].category = "Mark"
        self.window.observeValueForKeyPath_ofObject_change_context_(None, None, None, "DocumentSelection")
        keys = self.window.filteredKeys()
        keys.setSelectionIndexes_([list(keys.arrangedObjects()).index("c")])
        self.window.observeValueForKeyPath_ofObject_change_context_(None, None, None, "FilterKeySelection")
        self.assertEqual(self.window.leftInfoList().arrangedObjects(), [self.left["c"]])
        normal = self.window.leftLableUnicode().textColor()
        colors = [(self.window.valueForKey_("leftLable" + key).textColor(),
                   self.window.valueForKey_("rightLable" + key).textColor()) for key in ("Category", "Name")]
        self.assertEqual(colors[1], (normal, normal))
        self.assertEqual(colors[0][0], colors[0][1])
        self.assertNotEqual(colors[0][0], normal)
        cells = self.window.leftLableCase().cells()
        self.assertEqual(cells.count(), 6)
        self.assertEqual({cell.textColor() for cell in cells}, {normal})
        self.assertEqual(self.window.colorForValues_others_key_(self.left, self.right, "category"), colors[0][0])
        self.assertEqual(self.window.colorForValues_others_key_([], [], "category"), normal)
        self.window.copyLeft_(None)
        self.assertEqual((names(self.left), self.left[3].category), ("a b c c", "Mark"))
        self.window.copyRight_(None)
        self.window.copyAllRight_(None)
        self.assertEqual(names(self.right), "b c d d c c")

    def listed(self):
        return " ".join(self.window.filteredKeys().arrangedObjects())

    def test_taking(self):
        for info in (*self.left, *self.right):
            info.desc = "same"
        b, c = self.right["b"], self.right["c"]
        b.category = c.category = c.script = "new"
        self.assertEqual(self.keys(2), "b c")
        for key, expected in (("script", "c"), ("category", "b c"), ("", "b c")):
            self.window.filterByField_(key)
            self.assertEqual(self.listed(), expected)
        self.window.filteredKeys().setSelectionIndexes_([0])
        self.window.takeFieldLeft_("category")
        self.assertEqual((self.left["b"].category, self.left["c"].category, self.listed()), ("new", None, "c"))
        self.window.takeLeft()
        self.assertEqual((self.left["c"].category, self.left["c"].script, self.listed()), ("new", "new", ""))
        for step, expected in (("undo", "b c"), ("redo", "")):  # a run of a script is one step in each document
            getattr(self.window, step)()
            self.assertEqual((self.left["c"].script, self.listed()), (None if step == "undo" else "new", expected))
        b.category = c.category = c.script = "more"
        self.assertEqual(self.keys(2), "b c")
        self.window.filteredKeys().setSelectionIndexes_([0])
        self.window.takeRight()
        self.assertEqual((b.category, c.category, self.listed()), ("new", "more", "c"))
        self.window.takeFieldRight_("script")
        self.assertEqual((c.category, c.script, self.listed()), ("more", "new", "c"))
        self.window.takeAllRight()
        self.assertEqual((c.category, self.listed()), ("new", ""))
        self.assertEqual(self.keys(0), "d d")
        self.window.takeAllLeft()
        self.assertEqual((names(self.left), self.listed()), ("a b c d d", ""))
        self.assertEqual(self.keys(1), "a")
        self.window.removeShown()
        self.assertEqual((names(self.left), self.listed()), ("b c d d", ""))

    def test_stepping_and_reports(self):
        self.assertEqual(self.keys(0), "d d")
        self.window.filteredKeys().setSelectionIndexes_([0])
        for step, expected in (("Next", [1]), ("Next", [0]), ("Previous", [1])):
            getattr(self.window, "select%sDifference" % step)()
            self.assertEqual(list(self.window.filteredKeys().selectionIndexes()), expected)
        self.assertEqual([self.window.countOfKeysInMode_(mode) for mode in (0, 1, 2)], [2, 1, 2])
        found = json.loads(self.window.reportOf_format_("all", "json"))
        self.assertEqual([(each["name"], each["missing"]) for each in found],
                         [("a", "right"), ("d", "left"), ("d", "left")])
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "report.txt")
            self.assertTrue(self.window.saveReport_of_format_(path, "selected", "text"))
            with open(path, encoding="utf-8") as file:
                self.assertEqual(file.read(), self.window.reportOf_format_("selected", "text"))

    def test_overlooking(self):
        for doc, category in ((self.left, "mark"), (self.right, "Ma rk")):
            doc["b"].category, doc["b"].desc, doc["c"].desc = category, "b", category
        self.window.setField_ignored_("desc", True)
        self.assertEqual(self.keys(2), "b")
        for toggle, expected in (("Case", "b"), ("Spaces", ""), ("Case", "b"), ("Spaces", "b")):
            getattr(self.window, "toggleIgnore" + toggle)()
            self.assertEqual(self.listed(), expected)
        self.window.setField_ignored_("desc", False)
        self.assertEqual(self.listed(), "b c")


class CodePoints(unittest.TestCase):
    def test_formatter(self):
        formatter = NSClassFromString("VXUnicodeFormatter").alloc().init()
        self.assertEqual(formatter.stringForObjectValue_(["e9", "1f600"]), "E9, 1F600")
        self.assertEqual(formatter.stringForObjectValue_("e9"), "E9")
        self.assertEqual(formatter.getObjectValue_forString_errorDescription_(None, "e9", None)[:2], (True, "e9"))
        for text, expected in (("1F600", None), ("1F6000", "Only maximal five digits are allowd")):
            valid, _, reason = formatter.\
                isPartialStringValid_proposedSelectedRange_originalString_originalSelectedRange_errorDescription_(
                    text, None, "", (0, 0), None)
            self.assertEqual((valid, reason), (expected is None, expected), text)

    def test_validating_field(self):
        class Judge(NSObject):
            def textFieldHasValidContent_(self, field):
                asked.append(field.stringValue())
                field.setErrorHint_("" if field.stringValue() else "empty")
                return bool(field.stringValue())

            def textField_textView_candidates_forSelectedRange_(self, field, view, words, extent):
                return [*words, "more"]

        asked = []
        judge = Judge.alloc().init()
        field = NSClassFromString("VXValidatingTextField").alloc().init()
        field.setStringValue_("nobody asks")
        field.setDelegate_(judge)
        self.assertEqual(field.secodaryDelegate(), judge)
        for text in ("x", "x", ""):
            field.setStringValue_(text)
        self.assertEqual((asked, field.errorHint(), field.oldText()), (["x", ""], "empty", ""))
        self.assertRegex(field.backgroundColor(), "^#[0-9a-f]{6}$")
        cell = NSClassFromString("VXValidatingTextFieldCell").alloc().init()
        badge = cell.errorBadgeString_("empty")
        self.assertEqual((badge["string"], badge["size"], badge["color"]), ("empty", 11, "#ffffff"))
        area = cell.drawInteriorWithFrame_inView_([0, 0, 300, 20], field)
        self.assertEqual(area[2], 300 - cell.errorBadgeRectInView_(field)[2] - 6)
        self.assertEqual(cell.selectWithFrame_inView_([0, 0, 300, 20], field), [0, 0, 300, 20])
        words, _ = field.textView_completions_forPartialWordRange_indexOfSelectedItem_(None, ["a"], (0, 1), None)
        self.assertEqual(words, ["a", "more"])


class Reordering(EditingTest):
    def drag(self, rows, target, mask=NSDragOperationCopy | NSDragOperationMove):
        drag = NSClassFromString("TableDrag").alloc().init()
        drag.setDraggingSourceOperationMask_(mask)
        table = self.list.oTableView()
        if not self.list.tableView_writeRowsWithIndexes_toPasteboard_(table, rows, drag):
            return None
        wanted = NSDragOperationCopy if mask == NSDragOperationCopy else NSDragOperationMove
        self.assertEqual(self.list.tableView_validateDrop_proposedRow_proposedDropOperation_(
            table, drag, target, NSTableViewDropOn), wanted)
        self.assertTrue(self.list.tableView_acceptDrop_row_dropOperation_(table, drag, target, NSTableViewDropAbove))
        return names(self.doc), self.list.selectionIndexes()

    def test_drops(self):
        table = [  # records, rows, target, mask, records after, selection
            ("a b c d e", [1, 3], 0, 3, "b d a c e", [0, 1]),
            ("a b c", [0, 2], 1, NSDragOperationCopy, "a a c b c", [1, 2]),
        ]
        for given, rows, target, mask, expected, selection in table:
            with self.subTest(given=given, rows=rows, target=target):
                self.open(*given.split())
                self.assertEqual(self.drag(rows, target, mask), (expected, selection))
                self.doc.undoManager().undo()
                self.assertEqual(names(self.doc), given)

    def test_refusals(self):
        self.open("a", "b")
        self.list.setDraggingEnabled_(False)
        self.assertIsNone(self.drag([0], 2))
        self.list.awakeFromNib()
        foreign = NSClassFromString("TableDrag").alloc().init()
        self.assertFalse(self.list.tableView_acceptDrop_row_dropOperation_(None, foreign, 0, 0))
        other, other_window = make_document("x")
        self.addCleanup(other.close)
        other_window.infolistController().tableView_writeRowsWithIndexes_toPasteboard_(None, [0], foreign)
        self.assertFalse(self.list.tableView_acceptDrop_row_dropOperation_(None, foreign, 0, 0))
        self.assertEqual(names(self.doc), "a b")

    def test_arithmetic_and_delegate(self):
        self.open("a", "b", "c")
        self.assertEqual(self.list.rowsAboveRow_inIndexSet_(2, [0, 1, 2, 5]), 2)
        self.assertEqual(self.list.indexSetFromRows_([3, 1, 3]), [1, 3])
        self.assertTrue(self.list.tableObjectsSupportCopying())
        table = self.list.oTableView()
        self.assertTrue(self.list.tableView_shouldEditTableColumn_row_(table, 0, 0))
        self.assertFalse(self.list.tableView_shouldShowCellExpansionForTableColumn_row_(table, 0, 0))
        self.assertIsNone(self.list.viewAtColumn_row_makeIfNecessary_(0, 0, False))
        self.assertIsNone(self.list.tableColumn_inTableView_dataCellForRow_(0, table, 0))
        self.assertIsNotNone(self.list.tableView_dataCellForTableColumn_row_(table, 0, 0))

        class Listener(NSObject):
            def arrayController_didCopyObject_copy_(self, controller, source, copy):
                told.append(source.name + copy.name)

            def tableView_shouldEditTableColumn_row_(self, view, column, row):
                return row == 1

        told, listener = [], Listener.alloc().init()
        self.list.setDelegate_(listener)
        self.assertEqual(self.list.delegate(), listener)
        self.list.copyObjectsInArrangedObjectsFromIndexes_toIndex_([0, 2], 0)
        self.assertEqual((names(self.doc), told), ("a c a b c", ["cc", "aa"]))
        self.assertEqual([self.list.tableView_shouldEditTableColumn_row_(table, 0, row) for row in (0, 1)],
                         [False, True])
        self.list.moveObjectsInArrangedObjectsFromIndexes_toIndex_([0], 5)
        self.assertEqual(names(self.doc), "c a b c a")

    def test_goes_with_its_document(self):
        for closes in (False, True):
            document = VXDocument.alloc().init()
            document.makeWindowControllers()
            window = document.windowController()
            document.addInfo_(newInfo("a"))  # the window hears of it later
            if closes:
                document.close()
            del document
            gc.collect()
            processEvents()
            with self.assertRaisesRegex(ReferenceError, "gone"):
                window.title()


result = unittest.TextTestRunner(stream=sys.stdout, verbosity=0).run(
    unittest.defaultTestLoader.loadTestsFromModule(sys.modules["__main__"]))
print("checked", result.testsRun)
sys.exit(0 if result.wasSuccessful() else 1)
