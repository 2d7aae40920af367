"""The friendly side of scripting.

``Doc`` is the frontmost document.  It is a list of records::

    for info in Doc:
        if info.category == "Letter" and not info.sortName:
            info.sortName = info.name

    Doc["Aacute"].anchors = "top, bottom"
    print(len(Doc), "Aacute" in Doc)

Everything a script changes is one undo step.  An absent text is None, which
is not the same as "".  Try help(message) or help(VXDocument).
"""

import contextlib as _contextlib

import _runebook
import objc as _objc

__all__ = ["VXGlyphInfo", "VXDocument", "VXVersionComparator",
           "VXScriptingHandler", "documents", "currentDocument",
           "openDocument", "newDocument", "newInfo", "undoGroup", "progress",
           "canAsk", "message", "askString", "processEvents", "hexStringToInt",
           "hexStringFromInt", "stringWithChar", "character32AtIndex",
           "rangeOfLine", "UUID", "initBraces", "TE_isOpeningBrace",
           "TE_isClosingBrace", "TE_findMatchingBraceForRangeInString", "FIELDS"]

VXGlyphInfo = _objc.lookUpClass("VXGlyphInfo")
VXDocument = _objc.lookUpClass("VXDocument")
VXVersionComparator = _objc.lookUpClass("VXVersionComparator")
VXScriptingHandler = _objc.lookUpClass("VXScriptingHandler")

#: The fields of a record, in the order of a record's listing.
FIELDS = ("name", "category", "subCategory", "marks", "anchors",
          "unicodeLegacy", "unicodes", "script", "production", "direction",
          "sortName", "sortNameKeep", "sortNameOld", "case", "altNames",
          "desc", "decompose")

_helpers = _runebook.sharedObject("helpers")


# Documents are lists of records, records are mappings of fields.

def _info_at(self, key):
    """A record by its index, a list of records by a slice, or a record by its name."""
    if isinstance(key, str):
        info = self.infoForName_(key)
        if info is None:
            raise KeyError(key)
        return info
    if isinstance(key, slice):
        return self.infos[key]
    count = self.countOfInfos()
    index = key + count if key < 0 else key
    if not 0 <= index < count:
        raise IndexError("record %d of %d" % (key, count))
    return self.objectInInfosAtIndex_(index)


def _has_info(self, key):
    """Whether a record of that name, or that very record, is in the document."""
    if isinstance(key, str):
        return self.infoForName_(key) is not None
    return self.indexOfObjectInInfos_(key) >= 0


VXDocument.__iter__ = lambda self: iter(self.infos)
VXDocument.__len__ = lambda self: self.countOfInfos()
VXDocument.__bool__ = lambda self: True
VXDocument.__getitem__ = _info_at
VXDocument.__contains__ = _has_info


def _field(self, key):
    if key not in FIELDS:
        raise KeyError(key)
    return getattr(self, key)


def _set_field(self, key, value):
    if key not in FIELDS:
        raise KeyError(key)
    setattr(self, key, value)


VXGlyphInfo.keys = lambda self: FIELDS
VXGlyphInfo.__iter__ = lambda self: iter(FIELDS)
VXGlyphInfo.__getitem__ = _field
VXGlyphInfo.__setitem__ = _set_field


def documents():
    """The open documents, frontmost first."""
    return _runebook.sharedObject("application").orderedDocuments()


def currentDocument():
    """The frontmost document, or None."""
    return documents().firstObject()


def openDocument(path, display=False):
    """Opens a glyph data file (.xml) or table (.txt) and brings it to the front.

    With display=True it gets a window.  Raises objc.error when the file
    cannot be opened.
    """
    controller = _runebook.sharedObject("documentController")
    return controller.openDocumentWithContentsOfURL_display_(path, display)


def newDocument(display=False):
    """A new, empty document among the open ones."""
    controller = _runebook.sharedObject("documentController")
    return controller.openUntitledDocumentAndDisplay_(display)


def newInfo(name=None, **fields):
    """A record that is in no document yet, with the given fields set.

    >>> newInfo("fi", unicodes=["FB01"], category="Letter").unicode
    'FB01'
    """
    info = VXGlyphInfo.alloc().init()
    if name is not None:
        info.name = name
    for key, value in fields.items():
        info[key] = value
    return info


@_contextlib.contextmanager
def undoGroup(name="", document=None):
    """Makes the changes inside of a with block one undo step of a document.

    A script's run is one step anyway; this is for code that runs later, such
    as observers, and for documents that are not among the open ones.
    """
    document = document or currentDocument()
    manager = document.undoManager() if document is not None else None
    if manager is None:
        yield
        return
    manager.beginUndoGrouping()
    try:
        if name:
            manager.setActionName_(name)
        yield
    finally:
        manager.endUndoGrouping()


def progress(items, title="Working…"):
    """Goes through items while a bar shows how far; the user can stop it.

    Stopping raises KeyboardInterrupt.  Without windows there is no bar.
    """
    items = list(items)
    step = max(1, len(items) // 200)
    try:
        for place, item in enumerate(items):
            if place % step == 0 and not _helpers.showProgress(title, place, len(items)):
                raise KeyboardInterrupt("stopped by the user")
            yield item
    finally:
        _helpers.showProgress(title, len(items), len(items))


def canAsk():
    """Whether somebody is there to answer; not in a run without windows."""
    return _helpers.canAsk()


def message(text, title="Script"):
    """Shows a text to the user; prints it in a run without windows."""
    if _helpers.canAsk():
        _helpers.showMessage(title, str(text))
    else:
        print(text)


def askString(prompt, text=""):
    """What the user types; None when they cancel.

    Raises RuntimeError in a run without windows: nobody is there to answer.
    """
    if not _helpers.canAsk():
        raise RuntimeError("nobody can answer in a run without windows: " + prompt)
    return _helpers.askText(prompt, text)


def processEvents():
    """Lets windows repaint and answer to the user."""
    _helpers.processEvents()


def hexStringToInt(text):
    """The value of a code point text; 0 for anything but hexadecimal digits."""
    return _helpers.hexStringToInt(text)


def hexStringFromInt(number):
    """A code point text of at least four digits."""
    return _helpers.hexStringFromInt(number)


def stringWithChar(codePoint):
    """The character of a code point; None beyond U+10FFFF."""
    return _helpers.stringWithChar(codePoint)


def character32AtIndex(text, index):
    """The code point at a place in UTF-16 units, and the place of its last unit."""
    return tuple(_helpers.character32AtIndex(text, index))


def rangeOfLine(text, number):
    """(location, length) of a line counted from 1, in UTF-16 units."""
    return tuple(_helpers.rangeOfLine(text, number))


def UUID():
    """A new random UUID."""
    return _helpers.UUID()


def _unit(character):
    """The UTF-16 unit of a character given as a text or as a number."""
    if isinstance(character, str):
        units = character.encode("utf-16-le", "surrogatepass")
        return int.from_bytes(units, "little") if len(units) == 2 else 0
    return character


def initBraces():
    """Make the lists of braces, once; the first question about a brace does."""
    _helpers.initBraces()


def TE_isOpeningBrace(character):
    """Whether a character is one of the editor's opening braces.

    The very first question of all is answered with False, whatever the
    character: the lists of braces are made by it.
    """
    return _helpers.TE_isOpeningBrace(_unit(character))


def TE_isClosingBrace(character):
    """Whether a character is one of the editor's closing braces."""
    return _helpers.TE_isClosingBrace(_unit(character))


def TE_findMatchingBraceForRangeInString(index, string):
    """The range (location, 1) of the brace that matches the one at a place.

    (NSNotFound, 0) when there is none.  Places are UTF-16 units.
    """
    found = _helpers.TE_findMatchingBraceForRangeInString(index, string)
    return (0x7FFFFFFFFFFFFFFF, 0) if found is None else found

