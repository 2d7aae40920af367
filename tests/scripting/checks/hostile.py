"""Calls everything that scripts can reach with arguments that nobody would give, in an order that a seed tells.

The arguments: a seed, and how many calls. Nothing is expected of a call but that it comes back.
"""

import gc
import itertools
import os
import random
import sys

from AppKit import NSApplication
from Foundation import *
from MainApp import *
import MainApp
import _runebook

SEED = int(sys.argv[1]) if len(sys.argv) > 1 else 1
CALLS = int(sys.argv[2]) if len(sys.argv) > 2 else 3000
chance = random.Random(SEED)

# What ends the program, its run or its test by design, leaves the folder of the test, or asks the desktop.
LEFT_OUT = ("terminate", "quit", "runMacro", "interruptRun", "openURL", "showScriptFolder", "showScriptingDocu",
            "writeTo", "saveDocument", "saveTo", "revertTo", "Print", "print", "exportTo", "setAutosave", "relaunch",
            "setFeedURL", "initOnce", "initPython", "loadPython", "postNotification", "closeAllWindows",
            "findAllPython", "pythonLib", "restart", "reopen", "saveAs", "duplicate")

CLASSES = ["VXGlyphInfo", "VXDocument", "VXVersionComparator", "VXArrayToStringTransformator",
           "VXDirectionToIndexValueTransformer", "JSTDocument", "JSTTextView", "TDTokenizer", "TDToken", "TDReader",
           "VXLineNumberView", "VXTabBarControl", "VXCodeTextStorage", "SUAppcast", "SUAppcastItem"]


class Mean(NSObject):
    """Answers everything, badly."""

    def __index__(self):
        raise KeyError("no")

    def tag(self):
        gc.collect()
        return -1

    def menuNeedsUpdate_(self, menu):
        menu.numberOfItems()

    def textDidChange_(self, view):
        view.setString_("x")


class Closing:
    """Closes a document while it is read."""

    def __iter__(self):
        document = newDocument()
        yield document
        document.close()
        processEvents()
        yield newInfo("late")

    def __index__(self):
        if documents().count() > 2:
            documents().lastObject().close()
        return 0

    def __bool__(self):
        return chance.random() < 0.5


def ring():
    values = {}
    values["a"] = [values]
    return values


objects = []


def known():
    return chance.choice(objects) if objects else None


ARGUMENTS = [
    lambda: None, lambda: 0, lambda: 1, lambda: -1, lambda: 7, lambda: 1 << 31, lambda: -(1 << 63), lambda: 1 << 70,
    lambda: 0.5, lambda: float("nan"), lambda: float("inf"), lambda: True, lambda: "", lambda: "A", lambda: "0041",
    lambda: "name", lambda: "a\0b", lambda: "\ud800", lambda: "\U0010ffff" * 3, lambda: "x" * 5000, lambda: "#12",
    lambda: b"\xff", lambda: [], lambda: ["a", "b"], lambda: [0, 1], lambda: [5, -5], lambda: [None], lambda: {},
    lambda: {"a": 1}, lambda: {1: 2}, ring, lambda: (0, 0), lambda: (3, 1 << 40), lambda: (-2, 5), lambda: (1, 2, 3),
    lambda: range(3), lambda: iter("ab"), lambda: itertools.repeat("x", 20), lambda: Mean.alloc().init(),
    lambda: Closing(), lambda: object(), lambda: print, lambda: VXGlyphInfo, lambda: newInfo("x"),
    lambda: VXDocument.alloc(), lambda: [newInfo("y"), newInfo("z")], lambda: list(Doc[:2]),
    lambda: {"font": {"name": "Sans"}, "unicodes": ["x"]}, known, known, known, known,
]


def reach(thing):
    if isinstance(thing, NSObject) and type(thing).__module__ == "runebook" and len(objects) < 400:
        objects.append(thing)
    elif isinstance(thing, (list, tuple)):
        for item in thing[:5]:
            reach(item)


def start():
    application = NSApplication.sharedApplication()
    delegate = application.delegate()
    for thing in (application, delegate, Doc, Doc.undoManager(), Doc[0], VXScriptingHandler.sharedHandler(),
                  NSUserDefaults.standardUserDefaults(), _runebook.sharedObject("documentController"),
                  VXScriptingHandler.sharedHandler().scriptMenu()):
        if thing is not None:
            reach(thing)
    for name in CLASSES:
        try:
            reach(NSClassFromString(name).alloc().init())
        except TypeError:
            pass
    Doc.makeWindowControllers()
    window = Doc.windowController()
    if window is not None:
        reach(window)
        for name in window.outletNames():
            reach(window.outlet_(name))
    if delegate is not None:
        for name in ("macroPanelController", "compareWindow", "preferencesController"):
            if hasattr(delegate, name):
                reach(getattr(delegate, name)())


# Where the last call is told, for when one does not come back.
TOLD = os.open(os.environ["HOSTILE_TRACE"], os.O_WRONLY | os.O_CREAT) if "HOSTILE_TRACE" in os.environ else None


def tell(*words):
    if TOLD is not None:
        os.pwrite(TOLD, " ".join(map(str, words)).ljust(400).encode(), 0)


def one():
    thing = known()
    kind = type(thing)
    names = [name for name in _runebook.selectors(kind) if not any(part in name for part in LEFT_OUT)]
    if not names:
        return
    name = chance.choice(names)
    if chance.random() < 0.1:
        value = chance.choice(ARGUMENTS)()
        tell(kind.__name__, name, "=", type(value))
        setattr(thing, name, value)
        return
    count = name.count("_") if chance.random() < 0.95 else chance.randrange(4)
    operation = getattr(kind if chance.random() < 0.05 else thing, name)
    if callable(operation):
        arguments = [chance.choice(ARGUMENTS)() for _ in range(count)]
        tell(kind.__name__, name, *map(type, arguments))
        reach(operation(*arguments))


def main():
    global Doc
    Doc = sys.modules["__main__"].Doc
    start()
    refused = 0
    for call in range(CALLS):
        try:
            one()
        except (Exception, KeyboardInterrupt, SystemExit):
            refused += 1
        if call % 200 == 0:
            processEvents()
            if Doc not in documents():
                Doc = newDocument()
                Doc.addInfo_(newInfo("again"))
            # Objects that are gone are of no more use.
            objects[:] = [thing for thing in objects if "(gone)" not in repr(thing)]
            start() if len(objects) < 30 else None
    print("called", CALLS, "refused", refused > 0)


main()
