"""Typing stubs of what scripts can import: runebook --python-stubs FOLDER."""

import ast
import keyword
import os
import sys
import types

import _runebook
import runebook_help as _help

_HEAD = """# Made by runebook --python-stubs; not to be edited.
# mypy: ignore-errors
from typing import (Any, Callable, Dict, Generic, Iterable, Iterator, List, Optional, Tuple, TypeVar, Union,
                    overload)
"""

# Fields are values that can be called as well, and take plain values.
_CLASSES_HEAD = """
from objc import NSArray, NSNumber, NSString

_Value = TypeVar("_Value")
_Given = TypeVar("_Given")

class Field(Generic[_Value, _Given]):
    @overload
    def __get__(self, instance: None, owner: Any) -> Field[_Value, _Given]: ...
    @overload
    def __get__(self, instance: Any, owner: Any) -> _Value: ...
    def __set__(self, instance: Any, value: _Given) -> None: ...

class NSObject:
    def __init__(self) -> None: ...
    @classmethod
    def alloc(cls) -> Any: ...
    @classmethod
    def new(cls) -> Any: ...
    def init(self) -> Any: ...
    def respondsToSelector_(self, selector: str) -> bool: ...
    def performSelector_(self, name: str) -> Any: ...
    def performSelector_withObject_(self, name: str, thing: Any) -> Any: ...
    def valueForKey_(self, key: str) -> Any: ...
    def setValue_forKey_(self, value: Any, key: str) -> None: ...
    def isKindOfClass_(self, cls: Any) -> bool: ...
    def isEqual_(self, other: Any) -> bool: ...
    def className(self) -> str: ...
    def description(self) -> str: ...

"""

_FIELDS = {"str": "NSString", "int": "NSNumber", "List[str]": "NSArray[NSString]"}

# What the friendly layer adds, where more is known than that anything may come.
_KNOWN = {
    ("VXDocument", "__iter__"): ["def __iter__(self) -> Iterator[VXGlyphInfo]: ..."],
    ("VXDocument", "__len__"): ["def __len__(self) -> int: ..."],
    ("VXDocument", "__bool__"): ["def __bool__(self) -> bool: ..."],
    ("VXDocument", "__contains__"): ["def __contains__(self, key: Any) -> bool: ..."],
    ("VXDocument", "problems"): ["def problems(self) -> NSArray[Dict[str, Any]]: ..."],
    ("VXDocument", "fixProblems"): ["def fixProblems(self, kind: str) -> int: ..."],
    ("VXDocument", "__getitem__"): ["@overload", "def __getitem__(self, key: Union[str, int]) -> VXGlyphInfo: ...",
                                    "@overload", "def __getitem__(self, key: slice) -> List[VXGlyphInfo]: ..."],
    ("VXGlyphInfo", "__iter__"): ["def __iter__(self) -> Iterator[str]: ..."],
    ("VXGlyphInfo", "__len__"): ["def __len__(self) -> int: ..."],
    ("VXGlyphInfo", "__getitem__"): ["def __getitem__(self, key: str) -> Any: ..."],
    ("VXGlyphInfo", "__setitem__"): ["def __setitem__(self, key: str, value: Any) -> None: ..."],
    ("VXGlyphInfo", "keys"): ["def keys(self) -> Tuple[str, ...]: ..."],
    ("VXGlyphInfo", "items"): ["def items(self) -> List[Tuple[str, Any]]: ..."],
    ("VXGlyphInfo", "values"): ["def values(self) -> List[Any]: ..."],
}

# Results that the program's own types do not tell.
_RESULTS = {("VXDocument", "undoManager"): "UndoManager",
            ("Document", "windowController"): "VXWindowController",
            ("VXAppDelegate", "compareWindow"): "VXCompareDataWindow"}


def _meet_classes():
    """Classes of windows are known once there is one."""
    application = _runebook.sharedObject("application")
    delegate = application.delegate()
    import MainApp
    document = MainApp.newDocument()
    document.undoManager()
    document.makeWindowControllers()
    window = document.windowController()
    for name in window.outletNames() if window is not None else ():
        window.outlet_(name)
    for name in ("macroPanelController", "compareWindow", "preferencesController"):
        if delegate is not None and hasattr(delegate, name):
            getattr(delegate, name)()
    for name in ("documentController", "userDefaults", "notificationCenter", "scriptingHandler", "helpers"):
        _runebook.sharedObject(name)
    document.close()


def _doc(text, indent):
    lines = text.replace("\\", "\\\\").replace('"""', "'''").split("\n")
    return [indent + '"""' + lines[0]] + [indent + line if line else "" for line in lines[1:]] + [indent + '"""']


def _given(kind):
    """What an argument takes: any iterable is a list."""
    return kind.replace("List[", "Iterable[").replace("NSString", "str")


def _known_type(kind, names):
    for word in kind.replace("[", " ").replace("]", " ").replace(",", " ").split():
        if word.startswith(("VX", "JST", "TD", "SU", "Q", "PSM", "RSRT")) and word not in names:
            return "Any"
    return kind


def _operation(cls, name, operation, names):
    functions = list(_help.functions_of(operation.details))
    lines = []
    for place, (parameters, result) in enumerate(functions):
        if len(functions) > 1:
            lines.append("    @overload")
        if _help.is_of_class(operation.details):
            lines.append("    @classmethod")
        arguments = ["self"] + ["%s: %s" % (each if not keyword.iskeyword(each) else each + "_",
                                            _given(_known_type(kind, names)))
                                for each, kind in parameters]
        if parameters:
            arguments.append("/")
        result = _RESULTS.get((cls.__name__, name)) or _known_type(result, names)
        # An operation that fails raises, so that what it answers is there.
        if result.startswith("Optional["):
            result = result[len("Optional["):-1]
        result = "Any" if name.startswith("init") else result.replace("List[", "NSArray[")
        lines.append("    def %s(%s) -> %s:" % (name, ", ".join(arguments), result))
        lines += _doc(operation.__doc__, " " * 8) if place == 0 else ["        ..."]
    return lines


def _class(cls, names):
    base = cls.__bases__[0].__name__
    lines = ["class %s(%s):" % (cls.__name__, base)] + _doc(cls.__doc__ or cls.__name__, "    ")
    if cls.__name__ == "QWidget":
        lines.append("    def __getattr__(self, name: str) -> Any: ...")
    wanted = set(_runebook.selectors(cls))
    for name, value in sorted(vars(cls).items()):
        if not name.isidentifier() or keyword.iskeyword(name):
            continue
        if (cls.__name__, name) in _KNOWN:
            lines += ["    " + line for line in _KNOWN[cls.__name__, name]]
        elif isinstance(value, types.FunctionType):
            lines.append("    def %s(self, *arguments: Any) -> Any: ..." % name)
        elif type(value).__name__ == "operation":
            if name in wanted:
                lines += _operation(cls, name, value, names)
            elif value.details["takesError"]:
                lines += _operation(cls, name, value, names)
        elif type(value).__name__ == "property":
            kind = _known_type(_help.python_type(value.details["type"]), names)
            shown = _FIELDS.get(kind, kind)
            given = "Optional[%s]" % _given(kind) if kind != "Any" else "Any"
            lines.append("    %s: Field[%s, %s]" % (name, shown, given))
            lines += _doc(value.__doc__, "    ")
        elif type(value).__name__ == "setter":
            lines.append("    def %s(self, value: Any, /) -> None: ..." % name)
    return lines + [""]


def _ordered(classes):
    """Bases first."""
    done, order = set(), []

    def add(cls):
        if cls.__name__ in done or cls.__name__ in ("NSObject", "object"):
            return
        done.add(cls.__name__)
        add(cls.__bases__[0])
        order.append(cls)

    for cls in classes:
        add(cls)
    return order


def _classes_stub():
    _meet_classes()
    found = [_runebook.classFromString(name) for name in _runebook.classNames()]
    classes = _ordered([cls for cls in found if cls is not None])
    names = {cls.__name__ for cls in classes}
    lines = [_HEAD + _CLASSES_HEAD]
    for cls in classes:
        lines += _class(cls, names)
    lines.append("def sharedObject(name: str) -> Any: ...")
    lines.append("def classFromString(name: str) -> Any: ...")
    return "\n".join(lines) + "\n", sorted(names)


def _function(node, indent, is_method):
    parameters = []
    arguments = node.args
    plain = arguments.posonlyargs + arguments.args
    optional = len(plain) - len(arguments.defaults)
    for place, argument in enumerate(plain):
        first = is_method and place == 0
        kind = _PARAMETERS.get((node.name, argument.arg), "Any")
        parameters.append(argument.arg if first else argument.arg + ": " + kind
                          + (" = ..." if place >= optional else ""))
    if arguments.vararg:
        parameters.append("*%s: Any" % arguments.vararg.arg)
    if arguments.kwarg:
        parameters.append("**%s: Any" % arguments.kwarg.arg)
    lines = [indent + "@" + each.id for each in node.decorator_list
             if isinstance(each, ast.Name) and each.id in ("classmethod", "staticmethod", "property")]
    if any(isinstance(each, ast.Attribute) and each.attr == "contextmanager" for each in node.decorator_list):
        result = "ContextManager[None]"
    else:
        result = _MODULE_RESULTS.get(node.name, "Any")
    lines.append(indent + "def %s(%s) -> %s:" % (node.name, ", ".join(parameters), result))
    return lines + (_doc(ast.get_docstring(node), indent + "    ") if ast.get_docstring(node)
                    else [indent + "    ..."])


_PARAMETERS = {("progress", "items"): "Iterable[_Item]"}

_MODULE_RESULTS = {
    "documents": "NSArray[VXDocument]", "currentDocument": "Any", "openDocument": "VXDocument",
    "newDocument": "VXDocument", "newInfo": "VXGlyphInfo", "canAsk": "bool", "message": "None",
    "hexStringToInt": "int", "hexStringFromInt": "str", "stringWithChar": "str", "UUID": "str",
    "unicodeData": "Optional[Dict[str, Any]]",
    "processEvents": "None", "undoGroup": "ContextManager[None]",
    "progress": "Iterator[_Item]", "__call__": "Any",
}


def _module_stub(name, classes):
    path = os.path.join(os.path.dirname(os.path.abspath(__file__)), name + ".py")
    with open(path, encoding="utf-8") as file:
        tree = ast.parse(file.read())
    lines = [_HEAD, "from typing import ContextManager", "_Item = TypeVar(\"_Item\")"]
    if name != "objc":
        lines.append("from objc import NSArray, NSMutableArray, NSNumber, NSString, error")
        lines.append("from _runebook import %s" % ", ".join(["NSObject"] + classes))
    else:
        lines.append("from _runebook import NSObject as NSObject")
        lines.append("def super(*arguments: Any) -> Any: ...")
    if name == "AppKit":
        lines.append("from Foundation import *")
    if name == "MainApp":
        lines += ["#: The frontmost document, in scripts; not there for imports.", "Doc: VXDocument",
                  "VXScriptingHandler: Any"]
    for node in tree.body:
        if isinstance(node, ast.FunctionDef) and not node.name.startswith("_"):
            lines += _function(node, "", False)
        elif isinstance(node, ast.ClassDef) and not node.name.startswith("_"):
            lines += _module_class(node)
        elif isinstance(node, ast.Assign):
            for target in node.targets:
                names = [each.id for each in ast.walk(target) if isinstance(each, ast.Name)]
                lines += ["%s: Any" % each for each in names
                          if each not in classes and not each.startswith("_") and each not in ("super", "NSObject",
                                                                                               "NSError")]
                if "__all__" in names:
                    exported = getattr(sys.modules.get(name) or __import__(name), "__all__")
                    lines.append("__all__ = %r" % (list(exported) + (["Doc"] if name == "MainApp" else []),))
    if name == "Foundation":
        lines.append("NSError = error")
    return "\n".join(lines) + "\n"


def _module_class(node):
    generic = node.name in ("NSArray", "NSMutableArray")
    bases = [ast.unparse(base) for base in node.bases]
    if generic:
        bases = ["List[_Item]"] if node.name == "NSArray" else ["NSArray[_Item]"]
    lines = ["class %s(%s):" % (node.name, ", ".join(bases))]
    if ast.get_docstring(node):
        lines += _doc(ast.get_docstring(node), "    ")
    for item in node.body:
        if isinstance(item, ast.FunctionDef) and item.name != "init":
            lines += _function(item, "    ", True)
        elif isinstance(item, ast.Assign) and isinstance(item.targets[0], ast.Name) \
                and not item.targets[0].id.startswith("_"):
            lines.append("    %s: Any" % item.targets[0].id)
    if generic:
        lines += ["    def firstObject(self) -> Any: ...", "    def init(self) -> Any: ..."]
    return lines + ["    ..."]


def write(folder):
    """Writes the stubs into a folder, which is made."""
    os.makedirs(folder, exist_ok=True)
    text, classes = _classes_stub()
    stubs = {"_runebook": text}
    for name in ("objc", "Foundation", "AppKit", "MainApp"):
        stubs[name] = _module_stub(name, [each for each in classes if each.isidentifier()])
    for name, text in stubs.items():
        with open(os.path.join(folder, name + ".pyi"), "w", encoding="utf-8") as file:
            file.write(text)
