"""The habits of scripts written against the program's objects.

Operations are called by selector: every label is followed by an underscore,
``doc.insertObject_inInfosAtIndex_(info, 3)``.  An operation that may fail and
is called without its last label ``error_`` raises ``objc.error``; called with
it and ``None`` it answers a tuple of its result and the error.
"""

import builtins

import _runebook

__all__ = ["error", "super", "nil", "YES", "NO", "lookUpClass", "selector",
           "python_method", "IBAction", "IBOutlet", "NSObject"]

nil = None
YES = True
NO = False
super = builtins.super


class error(Exception):
    """An error of the program.  Answers what the error object answers."""

    def __init__(self, nserror):
        super().__init__(nserror)
        self.error = nserror

    def __str__(self):
        reason = self.error.localizedFailureReason
        text = self.error.localizedDescription or "unknown error"
        return text + " " + reason if reason else str(text)

    def domain(self):
        return self.error.domain()

    def code(self):
        return self.error.code()

    def localizedDescription(self):
        return self.error.localizedDescription()

    def localizedFailureReason(self):
        return self.error.localizedFailureReason()

    def localizedRecoverySuggestion(self):
        return self.error.localizedRecoverySuggestion()


def _plain(cls):
    """The class again as one whose objects the collector of cycles has no work with."""
    made = _runebook.plainClass(cls)
    for name, value in list(vars(cls).items()):
        if name not in ("__dict__", "__weakref__", "__slots__", "__module__", "__qualname__"):
            setattr(made, name, value)
    return made


@_plain
class NSString(str):
    """A text that answers as a text object does; calling it gives the text."""

    __slots__ = ()

    def __call__(self):
        return self

    @classmethod
    def stringWithString_(cls, text):
        return cls(text)

    def length(self):
        """The length in UTF-16 units."""
        return len(self.encode("utf-16-le", "surrogatepass")) // 2

    def isEqualToString_(self, other):
        return str(self) == other

    def uppercaseString(self):
        return NSString(self.upper())

    def lowercaseString(self):
        return NSString(self.lower())

    def hasPrefix_(self, prefix):
        return self.startswith(prefix)

    def hasSuffix_(self, suffix):
        return self.endswith(suffix)

    def componentsSeparatedByString_(self, separator):
        return NSArray(self.split(separator))

    def stringByAppendingString_(self, text):
        return NSString(self + text)

    def stringByReplacingOccurrencesOfString_withString_(self, old, new):
        return NSString(self.replace(old, new))

    def lastPathComponent(self):
        return NSString(self.rstrip("/").rpartition("/")[2])

    def intValue(self):
        return self.integerValue()

    def integerValue(self):
        digits = self.strip()
        end = 1 if digits[:1] in ("+", "-") else 0
        while end < len(digits) and digits[end] in "0123456789":
            end += 1
        return int(digits[:end]) if digits[:end].strip("+-") else 0

    def UTF8String(self):
        return self.encode("utf-8", "surrogatepass")


@_plain
class NSNumber(int):
    """A number that answers as a number object does; calling it gives the number."""

    __slots__ = ()

    def __call__(self):
        return int(self)

    def intValue(self):
        return int(self)

    integerValue = intValue

    def boolValue(self):
        return bool(self)


def _refuse(name):
    def refuse(self, *_, **__):
        raise TypeError(
            "this list is a copy that cannot be changed (%s): change list(...) of it "
            "and assign the result" % name)
    refuse.__name__ = name
    return refuse


class NSArray(list):
    """A list that answers as an array object does; calling it gives the list.

    It cannot be changed: what the program hands out is a copy, and changing
    it would change nothing else.  Change list(...) of it and assign that.
    """

    __slots__ = ()
    __hash__ = None

    def __call__(self):
        return self

    @classmethod
    def array(cls):
        return cls()

    @classmethod
    def alloc(cls):
        return cls()

    def init(self):
        return self

    @classmethod
    def arrayWithArray_(cls, items):
        return cls(items)

    @classmethod
    def arrayWithObject_(cls, item):
        return cls([item])

    def count(self, *item):
        """The number of objects; with an argument, how often it occurs."""
        return list.count(self, *item) if item else len(self)

    def objectAtIndex_(self, index):
        if not 0 <= index < len(self):
            raise IndexError("index %d beyond %d objects" % (index, len(self)))
        return self[index]

    def firstObject(self):
        return self[0] if self else None

    def lastObject(self):
        return self[-1] if self else None

    def indexOfObject_(self, item):
        """The first index of an equal object; NSNotFound when there is none."""
        return self.index(item) if item in self else 0x7FFFFFFFFFFFFFFF

    def containsObject_(self, item):
        return item in self

    def objectEnumerator(self):
        return iter(self)

    def componentsJoinedByString_(self, separator):
        return NSString(separator.join(str(item) for item in self))

    def arrayByAddingObject_(self, item):
        return type(self)(self + [item])

    def subarrayWithRange_(self, extent):
        location, length = extent
        return type(self)(self[location:location + length])

    def mutableCopy(self):
        return NSMutableArray(self)


_CHANGES = ("append", "extend", "insert", "remove", "pop", "clear", "sort", "reverse",
            "__setitem__", "__delitem__", "__iadd__", "__imul__")
for _name in _CHANGES:
    setattr(NSArray, _name, _refuse(_name))
NSArray.__reduce_ex__ = lambda self, protocol: (list, (list(self),))


class NSMutableArray(NSArray):
    """An array that can be changed by selector."""

    __slots__ = ()

    def addObject_(self, item):
        self.append(item)

    def addObjectsFromArray_(self, items):
        self.extend(items)

    def insertObject_atIndex_(self, item, index):
        if not 0 <= index <= len(self):
            raise IndexError("index %d beyond %d objects" % (index, len(self)))
        self.insert(index, item)

    def removeObject_(self, item):
        self[:] = [kept for kept in self if kept != item]

    def removeObjectAtIndex_(self, index):
        del self[index]

    def removeLastObject(self):
        self.pop()

    def removeAllObjects(self):
        self.clear()

    def replaceObjectAtIndex_withObject_(self, index, item):
        self[index] = item


for _name in _CHANGES:
    setattr(NSMutableArray, _name, getattr(list, _name))
NSMutableArray.__reduce_ex__ = lambda self, protocol: (NSMutableArray, (list(self),))

NSObject = _runebook.NSObject
from runebook_help import describe as _describe

_runebook.setValueTypes(NSArray, NSString, NSNumber, error, _describe)


def lookUpClass(name):
    """The class of that name; raises NameError when there is none."""
    found = _runebook.classFromString(name)
    if found is None:
        raise NameError(name)
    return found


def selector(function, **_):
    return function


python_method = IBAction = selector


def IBOutlet(name=None):
    return None


# What every object answers.

def _attribute_name(selector_text):
    return selector_text.replace(":", "_")


def _responds(self, selector_text):
    return hasattr(self, _attribute_name(selector_text))


def _perform(self, selector_text, *arguments):
    return getattr(self, _attribute_name(selector_text))(*arguments)


def _value_for_key(self, key):
    value = getattr(self, key)
    return value() if callable(value) else value


def _set_value_for_key(self, value, key):
    setter = getattr(self, "set" + key[:1].upper() + key[1:] + "_", None)
    if setter is not None:
        setter(value)
    else:
        setattr(self, key, value)


# Every operation answers to several spellings; listings show the documented one.

def _class_listing(cls):
    return sorted({*type.__dir__(NSObject), *_runebook.selectors(cls), *_own_names(cls)})


def _listing(self):
    return sorted({*_class_listing(type(self)), *getattr(self, "__dict__", ())})


def _own_names(cls):
    """The names that Python classes on top of the program's add."""
    names = set()
    for base in cls.__mro__:
        if base.__module__ not in ("runebook", "builtins"):
            names.update(vars(base))
    return names


NSObject.respondsToSelector_ = _responds
NSObject.performSelector_ = lambda self, name: _perform(self, name)
NSObject.performSelector_withObject_ = _perform
NSObject.valueForKey_ = _value_for_key
NSObject.setValue_forKey_ = _set_value_for_key
NSObject.isKindOfClass_ = lambda self, cls: isinstance(self, cls)
NSObject.isEqual_ = lambda self, other: self == other
NSObject.className = lambda self: type(self).__name__
NSObject.description = lambda self: repr(self)
NSObject.new = classmethod(lambda cls: cls.alloc().init())
NSObject.__dir__ = _listing
type(NSObject).__dir__ = _class_listing

# The parts of windows are asked for by name as well.
_runebook.classFromString("QWidget").__dir__ = lambda self: sorted({*_listing(self), *self.outletNames()})
