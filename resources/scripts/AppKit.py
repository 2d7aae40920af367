"""The application and its documents."""

import _runebook
from Foundation import *
from Foundation import __all__ as _foundation

__all__ = _foundation + ["NSApplication", "NSApp", "NSDocumentController", "NSBeep",
                         "NSDragOperationNone", "NSDragOperationCopy", "NSDragOperationMove",
                         "NSTableViewDropOn", "NSTableViewDropAbove"]

NSDragOperationNone, NSDragOperationCopy, NSDragOperationMove = 0, 1, 2
NSTableViewDropOn, NSTableViewDropAbove = 0, 1


class NSApplication:
    """The application: orderedDocuments(), delegate()."""

    @staticmethod
    def sharedApplication():
        return _runebook.sharedObject("application")


class NSDocumentController:
    """The open documents and what is done to documents as a whole."""

    @staticmethod
    def sharedDocumentController():
        return _runebook.sharedObject("documentController")


def NSApp():
    return NSApplication.sharedApplication()


def NSBeep():
    _runebook.sharedObject("helpers").beep()
