"""The basic objects that scripts expect beside the program's own."""

import os
import urllib.parse

import _runebook
from objc import (NSArray, NSMutableArray, NSNumber, NSObject, NSString,
                  error as NSError)

__all__ = ["NSArray", "NSMutableArray", "NSString", "NSNumber", "NSObject",
           "NSError", "NSConcreteValue", "NSClassFromString", "NSURL",
           "NSUserDefaults", "NSNotification", "NSNotificationCenter",
           "NSNotFound", "NSWorkspace", "NSMakeRange", "NSDictionary",
           "NSMutableDictionary", "NSLog", "NSPasteboard",
           "NSPasteboardTypeString", "NSStringPboardType"]

NSNotFound = 0x7FFFFFFFFFFFFFFF
NSPasteboardTypeString = "public.utf8-plain-text"
NSStringPboardType = "NSStringPboardType"

NSDictionary = NSMutableDictionary = dict

_helpers = _runebook.sharedObject("helpers")

_own_classes = {}


def NSClassFromString(name):
    """The class of that name, of the program or of this module; None when there is none."""
    return _runebook.classFromString(name) or _own_classes.get(name)


def NSMakeRange(location, length):
    """A range is a pair of location and length in UTF-16 units."""
    return (location, length)


def NSLog(text, *arguments):
    print(text.replace("%@", "%s") % arguments if arguments else text)


class NSConcreteValue(NSObject):
    """Holds one value: a range, a point, a number."""

    @classmethod
    def valueWithRange_(cls, extent):
        made = cls.alloc().init()
        made.value = tuple(extent)
        return made

    valueWithPoint_ = valueWithRange_

    def rangeValue(self):
        return self.value

    pointValue = rangeValue


class NSURL(NSString):
    """The place of a file or page.  Files are kept by their path, so an
    NSURL can be given wherever the program takes a path."""

    __slots__ = ()

    @classmethod
    def fileURLWithPath_(cls, path):
        return cls(os.path.abspath(os.path.expanduser(path)))

    @classmethod
    def URLWithString_(cls, text):
        if text.startswith("file:"):
            return cls(urllib.parse.unquote(urllib.parse.urlsplit(text).path))
        return cls(text)

    def isFileURL(self):
        return "://" not in self

    def path(self):
        return NSString(self if self.isFileURL() else urllib.parse.urlsplit(self).path)

    def absoluteString(self):
        return NSString("file://" + urllib.parse.quote(self) if self.isFileURL() else self)

    def pathExtension(self):
        return NSString(os.path.splitext(self.path())[1][1:])

    def URLByAppendingPathComponent_(self, name):
        return NSURL(os.path.join(self, name))

    def URLByDeletingLastPathComponent(self):
        return NSURL(os.path.dirname(self.rstrip("/")))


class NSUserDefaults:
    """What the user has chosen, by key."""

    @staticmethod
    def standardUserDefaults():
        return _runebook.sharedObject("userDefaults")


class NSNotification(NSObject):
    """A named message: name(), object(), userInfo()."""

    @classmethod
    def notificationWithName_object_userInfo_(cls, name, about, info):
        made = cls.alloc().init()
        made._parts = (NSString(name), about, info)
        return made

    def name(self):
        return self._parts[0]

    def object(self):
        return self._parts[1]

    def userInfo(self):
        return self._parts[2]


class NSNotificationCenter(NSObject):
    """Passes notifications of the program and of scripts to observers.

    Observers are kept until they are removed.  An exception in one is
    printed; the others are told all the same.
    """

    @classmethod
    def defaultCenter(cls):
        return _center

    def init(self):
        self._observers = []
        return self

    def addObserver_selector_name_object_(self, observer, selector, name, about):
        """selector names a method ("changed:" or "changed_") or is a function."""
        if isinstance(selector, str):
            function = getattr(observer, selector.replace(":", "_"))
        elif hasattr(selector, "__self__"):
            function = selector
        else:
            def function(note):
                return selector(observer, note)
        self._observers.append((observer, function, name, about))

    def addObserverForName_object_queue_usingBlock_(self, name, about, queue, function):
        token = object()
        self._observers.append((token, function, name, about))
        return token

    def removeObserver_(self, observer):
        self._observers = [kept for kept in self._observers if kept[0] is not observer]

    def removeObserver_name_object_(self, observer, name, about):
        self._observers = [
            kept for kept in self._observers
            if not (kept[0] is observer and (name is None or kept[2] == name)
                    and (about is None or kept[3] == about))]

    def postNotificationName_object_(self, name, about):
        self.postNotificationName_object_userInfo_(name, about, None)

    def postNotificationName_object_userInfo_(self, name, about, info):
        own = about is not None and not _is_of_program(about)
        if own or (info is not None and not _crosses(info)):
            # Only scripts know such an object: the program is not told.
            _deliver(name, about, info)
        else:
            center = _runebook.sharedObject("notificationCenter")
            center.postNotificationNameObject(name, about, info or {})


def _is_of_program(thing):
    return isinstance(thing, NSObject) and type(thing).__module__ == "runebook"


def _crosses(info):
    return all(isinstance(key, str)
               and isinstance(value, (str, int, float, bytes, type(None)))
               for key, value in info.items())


def _deliver(name, about, info):
    note = NSNotification.notificationWithName_object_userInfo_(name, about, info)
    for observer, function, wanted, wanted_about in list(_center._observers):
        if wanted is not None and wanted != name:
            continue
        if wanted_about is not None and wanted_about != about:
            continue
        try:
            function(note)
        except Exception:
            import traceback
            traceback.print_exc()


_center = NSNotificationCenter.alloc().init()
_runebook.observeNotifications(_deliver)


class NSWorkspace:
    """The desktop."""

    @classmethod
    def sharedWorkspace(cls):
        return _workspace

    def openURL_(self, url):
        return _helpers.openURL_(url)

    openFile_ = openURL_

    def selectFile_inFileViewerRootedAtPath_(self, path, root):
        return _helpers.openURL_(os.path.dirname(path))


_workspace = NSWorkspace()


class NSPasteboard:
    """The clipboard, for text."""

    @classmethod
    def generalPasteboard(cls):
        return _pasteboard

    def clearContents(self):
        _helpers.clearClipboard()

    def declareTypes_owner_(self, types, owner):
        self.clearContents()

    def types(self):
        return NSArray([NSPasteboardTypeString] if _helpers.hasClipboardText() else [])

    def setString_forType_(self, text, kind):
        if kind not in (NSPasteboardTypeString, NSStringPboardType):
            return False
        _helpers.setClipboardText_(text)
        return True

    def stringForType_(self, kind):
        if kind not in (NSPasteboardTypeString, NSStringPboardType):
            return None
        return _helpers.clipboardText() if _helpers.hasClipboardText() else None


_pasteboard = NSPasteboard()

_own_classes.update((name, value) for name, value in list(globals().items())
                    if isinstance(value, type))
