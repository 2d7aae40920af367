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
           "canAsk", "message", "askString", "askChoice",
           "askFields", "askFile", "askYesNo", "processEvents", "hexStringToInt",
           "hexStringFromInt", "stringWithChar", "character32AtIndex", "unicodeData",
           "rangeOfLine", "UUID", "initBraces", "TE_isOpeningBrace",
           "TE_isClosingBrace", "TE_findMatchingBraceForRangeInString", "FIELDS"]

VXGlyphInfo = _objc.lookUpClass("VXGlyphInfo")
VXDocument = _objc.lookUpClass("VXDocument")
VXVersionComparator = _objc.lookUpClass("VXVersionComparator")
VXScriptingHandler = _objc.lookUpClass("VXScriptingHandler")

_helpers = _runebook.sharedObject("helpers")

#: The fields of a record, in the order of a record's listing.
FIELDS = tuple(str(key) for key in _helpers.fieldKeys())


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
    return isinstance(key, VXGlyphInfo) and self.indexOfObjectInInfos_(key) >= 0


def _problems(self):
    """Everything that the Problems pane can list: maps of kind, hint, info (or None), index, name and text.

    hint tells opinions from problems.
    """
    delegate = _runebook.sharedObject("application").delegate()
    if delegate is None:
        raise RuntimeError("only the program itself looks for problems")
    return delegate.problemsOfDocument_(self)


def _fix_problems(self, kind):
    """Fixes the problems of a kind ("unicode-case") as far as no decision is needed; the number of records.

    One undo step.  Raises ValueError for what is no kind of Doc.problems().
    """
    fixed = _runebook.sharedObject("application").delegate().fixProblems_ofDocument_(kind, self)
    if fixed < 0:
        raise ValueError("no kind of problems: %s" % kind)
    return fixed


VXDocument.__iter__ = lambda self: iter(self.infos)
VXDocument.__len__ = lambda self: self.countOfInfos()
VXDocument.__bool__ = lambda self: True
VXDocument.__getitem__ = _info_at
VXDocument.__contains__ = _has_info
VXDocument.problems = _problems
VXDocument.fixProblems = _fix_problems


def _field(self, key):
    if key not in FIELDS:
        raise KeyError(key)
    return getattr(self, key)


def _set_field(self, key, value):
    if key not in FIELDS:
        raise KeyError(key)
    setattr(self, key, value)


def _copy_info(self, memo=None):
    """A free record with every field; info.copy() leaves some out."""
    made = newInfo()
    for key in FIELDS:
        if key != "unicodeLegacy":
            setattr(made, key, getattr(self, key))
    made.unicodeLegacy = self.unicodeLegacy
    return made


def _restored(fields):
    return newInfo(**fields)


def _plain(value):
    """A value without the classes of the program."""
    for kind in (list, str, int):
        if isinstance(value, kind) and not isinstance(value, bool):
            return kind(value)
    return value


VXGlyphInfo.__len__ = lambda self: len(FIELDS)
VXGlyphInfo.__bool__ = lambda self: True
VXGlyphInfo.__contains__ = lambda self, key: key in FIELDS
VXGlyphInfo.keys = lambda self: FIELDS
VXGlyphInfo.values = lambda self: [getattr(self, key) for key in FIELDS]
VXGlyphInfo.items = lambda self: [(key, getattr(self, key)) for key in FIELDS]
VXGlyphInfo.get = lambda self, key, default=None: getattr(self, key) if key in FIELDS else default
VXGlyphInfo.__copy__ = _copy_info
VXGlyphInfo.__deepcopy__ = _copy_info
VXGlyphInfo.__reduce_ex__ = lambda self, protocol: (
    _restored, ({key: _plain(value) for key, value in self.items()},))
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
    """A record that is in no document yet, with the given fields set: those of
    FIELDS, and whatever else a record answers and takes, such as unicode.

    >>> newInfo("fi", unicodes=["FB01"], category="Letter").unicode
    'FB01'
    """
    info = VXGlyphInfo.alloc().init()
    if name is not None:
        info.name = name
    for key, value in fields.items():
        if key not in FIELDS and not hasattr(VXGlyphInfo, key):
            raise TypeError("a record has no field called " + key)
        setattr(info, key, value)
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


def progress(items, title="Working…", total=None):
    """Goes through items while a bar shows how far; the user can stop it.

    The bar comes when it takes longer than a moment.  Items are taken as they
    come, so a generator is not drained; how many there are can be told as
    total.  Stopping raises KeyboardInterrupt.  Without windows there is no bar.
    """
    if total is None:
        total = len(items) if hasattr(items, "__len__") else 0
    step = max(1, total // 200) if total else 50
    try:
        for place, item in enumerate(items):
            if place % step == 0 and not _helpers.showProgress(title, place, total):
                raise KeyboardInterrupt("stopped by the user")
            yield item
    finally:
        _helpers.endProgress()


def canAsk():
    """Whether somebody is there to answer; not in a run without windows."""
    return _helpers.canAsk()


def message(text, title="Script"):
    """Shows a text to the user; prints it in a run without windows."""
    if _helpers.canAsk():
        _helpers.showMessage(title, str(text))
    else:
        print(text)


def _given(key):
    """What the command line answers with --answer KEY=VALUE; raises when it does not."""
    answer = _helpers.answerFor(key)
    if answer is None:
        raise RuntimeError("nobody can answer in a run without windows; give --answer %r"
                           % (key + "=…"))
    return answer


def _as_kind(value, text):
    """text as a value of the same kind as value."""
    if isinstance(value, bool):
        if text.lower() in ("yes", "true", "1", "on"):
            return True
        if text.lower() in ("no", "false", "0", "off"):
            return False
        raise ValueError("neither yes nor no: %r" % text)
    return type(value)(text) if isinstance(value, (int, float)) else text


def askFields(prompt, **fields):
    """Asks for several values at once; a dictionary of them, None when the user cancels.

    Each field begins with the value given for it, or with the last answer; a
    list or tuple offers its entries.  Texts, numbers, True and False come back
    as what they were.  In a run without windows every field needs an
    --answer FIELD=VALUE.

    >>> askFields("Small caps", suffix=".sc", scale=0.8, style=["a", "b"])
    """
    if not _helpers.canAsk():
        answers = {}
        for key, value in fields.items():
            text = _given(key)
            if isinstance(value, (list, tuple)):
                if text not in map(str, value):
                    raise ValueError("%s is none of %s" % (text, ", ".join(map(str, value))))
                answers[key] = text
            else:
                answers[key] = _as_kind(value, text)
        return answers
    asked = []
    for key, value in fields.items():
        field = {"key": key, "label": key.replace("_", " ").capitalize(), "value": value}
        if isinstance(value, (list, tuple)):
            field["choices"] = [str(choice) for choice in value]
            field["value"] = field["choices"][0] if value else ""
        asked.append(field)
    answers = _helpers.askFields(prompt, asked)
    return None if answers is None else {key: answers[key] for key in fields}


def askString(prompt, text="", key=None):
    """What the user types; None when they cancel.

    In a run without windows --answer KEY=VALUE answers, the prompt being the
    key unless there is another; RuntimeError without one.
    """
    if not _helpers.canAsk():
        return _given(key or prompt)
    answers = _helpers.askFields(prompt, [{"key": "text", "label": "", "value": text}])
    return None if answers is None else answers["text"]


def askChoice(prompt, choices, key=None):
    """Which of choices the user takes, None when they cancel; see askString."""
    choices = [str(choice) for choice in choices]
    if not choices:
        raise ValueError("nothing to choose from")
    if not _helpers.canAsk():
        answer = _given(key or prompt)
        if answer not in choices:
            raise ValueError("%s is none of %s" % (answer, ", ".join(choices)))
        return answer
    answers = _helpers.askFields(prompt, [{"key": "choice", "label": "", "value": choices[0],
                                           "choices": choices}])
    return None if answers is None else answers["choice"]


def askYesNo(question, explanation="", key=None):
    """True or False, None when the user cancels; see askString."""
    if not _helpers.canAsk():
        return _as_kind(True, _given(key or question))
    answer = _helpers.askYesNo(question, explanation)
    return None if answer is None else answer == "yes"


def askFile(prompt="", save=False, name="", filters=(), key=None):
    """The path of a file to read, or to write with save=True; None when the user cancels.

    filters are texts such as "Fonts (*.ttf *.otf)".  See askString.
    """
    if not _helpers.canAsk():
        return _given(key or prompt)
    return _helpers.askFile(prompt, save, name, list(filters))


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


def unicodeData(codePoint):
    """What Unicode says about a character, as a dictionary; None for what it does not assign.

    codePoint is a number or a text such as "00E9".  Keys: name and aliases, category ("Ll"), block, script
    ("Latin"), direction (the bidirectional class, "L"), combining (its class), mirrored; upper, lower and title,
    code points that are the character's own where it has no other; decomposition, a list of code points, and
    decompositionTag ("<super>", None for a canonical one).
    """
    if not isinstance(codePoint, int):
        codePoint = int(str(codePoint), 16)
    if not 0 <= codePoint <= 0x10FFFF:
        raise ValueError("no code point: %X" % codePoint)
    found = dict(_helpers.unicodeData(codePoint))
    if not found:
        return None
    for key in ("name", "block", "decompositionTag"):
        found[key] = found[key] or None
    found["aliases"] = [str(alias) for alias in found["aliases"]]
    found["decomposition"] = list(found["decomposition"])
    return found


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

