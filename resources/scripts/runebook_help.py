"""What help(), inspect.signature() and the typing stubs tell of the program's objects.

The words are those of the program's own headers, gathered when it was built.
"""

import os

_FILE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "python", "documentation.json")
_documentation = None

#: How types of the program are written in Python.
TYPES = {
    "QString": "str", "QStringView": "str", "QByteArray": "bytes", "QColor": "str", "bool": "bool",
    "double": "float", "float": "float", "QStringList": "List[str]", "QVariantMap": "Dict[str, Any]",
    "QVariantHash": "Dict[str, Any]", "QVariantList": "List[Any]", "QVariant": "Any", "QFont": "Dict[str, Any]",
    "QList<int>": "List[int]", "runebook::IndexSet": "List[int]", "std::vector<qsizetype>": "List[int]",
    "QList<QObject*>": "List[Any]", "QList<QVariantMap>": "List[Dict[str, Any]]", "InfoPtr": "VXGlyphInfo",
    "InfoList": "List[VXGlyphInfo]", "std::shared_ptr<VXGlyphInfo>": "VXGlyphInfo",
    "std::vector<std::shared_ptr<VXGlyphInfo>>": "List[VXGlyphInfo]",
    "std::optional<InfoList>": "Optional[List[VXGlyphInfo]]", "std::shared_ptr<TDTokenizer>": "TDTokenizer",
    "std::optional<std::vector<std::shared_ptr<VXGlyphInfo>>>": "Optional[List[VXGlyphInfo]]",
    "runebook::TextRange": "Tuple[int, int]", "runebook::UnitRange": "Tuple[int, int]", "TextRange": "Tuple[int, int]",
    "QRectF": "Tuple[float, float, float, float]", "void": "None", "": "None", "QObject*": "Any",
}
_NUMBERS = {"int", "uint", "short", "ushort", "long", "ulong", "qlonglong", "qulonglong", "char", "schar", "uchar",
            "char16_t", "qint64", "quint64", "qsizetype", "unsigned int", "unsigned short"}


def python_type(name):
    """How a type of the program is written in Python."""
    name = name.replace("const ", "").strip()
    if name in TYPES:
        return TYPES[name]
    if name in _NUMBERS:
        return "int"
    short = name.rstrip("*").rpartition("::")[2]
    return short if name.endswith("*") and short.isidentifier() else "Any"


def words(names, operation=""):
    """What the headers tell of an operation, or of a class, that one of these classes has."""
    global _documentation
    if _documentation is None:
        import json
        try:
            with open(_FILE, encoding="utf-8") as file:
                _documentation = json.load(file)
        except OSError:
            _documentation = {}
    for name in names:
        found = _documentation.get(name.rpartition("::")[2], {}).get(operation)
        if found:
            return found
    return ""


def is_of_class(details):
    """Whether an operation is one of the class itself."""
    return (words([details["class"]], "static " + details["operation"]) is True
            or any(function["isOfClass"] for function in details["functions"]))


class _ClassDocumentation:
    """The __doc__ of a class, read when somebody asks."""

    def __init__(self, name):
        self.name = name

    def __get__(self, instance, cls):
        return words([self.name]) or "A class of the program."


def _parameters(function):
    taken = set()
    for place, parameter in enumerate(function["parameters"]):
        name = parameter["name"] or "argument%d" % (place + 1)
        while name in taken or name in ("self", "None", "from", "in", "is", "not", "with", "as"):
            name += "_"
        taken.add(name)
        kind = python_type(parameter["type"])
        if (parameter["mayBeNone"] or parameter["isOut"]) and kind not in ("Any", "None"):
            kind = "Optional[%s]" % kind
        yield name, kind, parameter["isOut"]


def result_of(function, takes_error):
    parts = [python_type(function["result"])] if function["result"] not in ("", "void") else []
    parts += [python_type(each["type"]) for each in function["parameters"] if each["isOut"]]
    if takes_error:
        parts.append("Optional[Error]")
    return "None" if not parts else parts[0] if len(parts) == 1 else "Tuple[%s]" % ", ".join(parts)


def functions_of(details):
    """For each function behind an operation: its parameters as pairs of name and type, and its result."""
    for function in details["functions"]:
        if details["takesError"] and not function["canFail"]:
            continue
        parameters = [(name, kind) for name, kind, _ in _parameters(function)]
        if details["takesError"]:
            parameters.append(("error", "Any"))
        if details["takesSender"] and not parameters:
            parameters.append(("sender", "Any"))
        yield parameters, result_of(function, details["takesError"])


def _operation_text(details):
    lines = []
    for parameters, result in functions_of(details):
        lines.append("%s(%s) -> %s" % (details["name"], ", ".join("%s: %s" % pair for pair in parameters), result))
    owners = [function["from"] for function in details["functions"]] + [details["class"]]
    lines += ["", words(owners, details["operation"]) or "An operation of %s." % details["class"]]
    if details["usual"] != details["name"].replace("_error_", "_"):
        lines += ["", "Usually written %s." % details["usual"]]
    if any(function["canFail"] for function in details["functions"]):
        lines += ["", "Answers its result and the error, or None, as a tuple." if details["takesError"]
                  else "Raises objc.error when it fails."]
    if any(each["isOut"] for function in details["functions"] for each in function["parameters"]):
        lines += ["", "What it hands out comes back beside the result: give None for it."]
    return "\n".join(lines)


def _property_text(details):
    kind = python_type(details["type"])
    text = words([details["from"], details["class"]], details["name"]) or "A field of %s." % details["class"]
    if details["kind"] == "setter":
        return "Sets %s: %s.\n\n%s" % (details["name"], kind, text)
    return "%s: %s%s\n\n%s" % (details["name"], kind, "" if details["isWritable"] else " (cannot be set)", text)


def _signature(details):
    import inspect
    if details["kind"] != "operation":
        names = [] if details["kind"] == "property" else [("value", python_type(details["type"]))]
        result = python_type(details["type"]) if details["kind"] == "property" else "None"
    else:
        # Of several functions the one with the most arguments.
        names, result = max(functions_of(details), key=lambda function: len(function[0]))
    only = inspect.Parameter.POSITIONAL_ONLY
    parameters = [inspect.Parameter("self", only)]
    parameters += [inspect.Parameter(name, only, annotation=kind) for name, kind in names]
    return inspect.Signature(parameters, return_annotation=result)


def describe(thing, what):
    """Called by the program's classes, operations and properties."""
    if what == "class":
        return _ClassDocumentation(thing.__name__)
    details = thing.details
    if what == "signature":
        return _signature(details)
    return _operation_text(details) if details["kind"] == "operation" else _property_text(details)
