"""sys.stdout and sys.stderr over the modules that take the program's output, and input()."""

import builtins
import io
import os
import sys


class _Bytes(io.RawIOBase):
    """The buffer of a stream: bytes of UTF-8."""

    def __init__(self, stream):
        import codecs
        self._stream = stream
        self._decoder = codecs.getincrementaldecoder("utf-8")("replace")

    def writable(self):
        return True

    def write(self, data):
        data = bytes(data)
        self._stream.write(self._decoder.decode(data))
        return len(data)


class Stream(io.TextIOBase):
    """A text stream whose text goes to the console of the program."""

    encoding = "utf-8"
    errors = "replace"
    mode = "w"

    def __init__(self, target, name, descriptor):
        self._target = target
        self._write = target.write
        self._descriptor = descriptor
        self.name = name
        self._buffer = None

    def write(self, text):
        self._write(text)
        return len(text)

    def writable(self):
        return True

    def flush(self):
        import _runebook
        _runebook.flushOutput()

    def close(self):
        """Stays open: there is one console."""

    @property
    def buffer(self):
        if self._buffer is None:
            self._buffer = _Bytes(self)
        return self._buffer

    def _own_descriptor(self):
        import _runebook
        return self._descriptor if _runebook.hasOwnOutput() else None

    def fileno(self):
        descriptor = self._own_descriptor()
        if descriptor is None:
            raise io.UnsupportedOperation("the console has no file")
        return descriptor

    def isatty(self):
        descriptor = self._own_descriptor()
        return descriptor is not None and os.isatty(descriptor)


class Input(io.TextIOBase):
    """The standard input of a program with windows: asks."""

    encoding = "utf-8"
    errors = "strict"
    name = "<stdin>"

    def readable(self):
        return True

    def readline(self, size=-1):
        try:
            return _ask("") + "\n"
        except EOFError:
            return ""

    def isatty(self):
        return False


def _ask(prompt):
    import _runebook
    answer = _runebook.sharedObject("helpers").askText("" if prompt is None else str(prompt), "")
    if answer is None:
        raise EOFError("nothing was entered")
    return str(answer)


#: What the program made sys.stdout and sys.stderr; None where it leaves them alone.
own_stdout = own_stderr = None


def install():
    for name, target, descriptor in (("stdout", "TesselOut", 1), ("stderr", "TesselErr", 2)):
        module = sys.modules.get(target)
        if module is not None and getattr(sys, name) is module:
            stream = Stream(module, "<%s>" % name, descriptor)
            setattr(sys, name, stream)
            globals()["own_" + name] = stream
    plain_input = builtins.input

    def input(prompt="", /):
        """Asks for a line of text: in a window in a sheet, elsewhere on the standard input."""
        import _runebook
        if _runebook.hasOwnOutput():
            return plain_input(prompt)
        sys.stdout.write("%s" % prompt)
        answer = _ask(prompt)
        sys.stdout.write(answer + "\n")
        return answer

    builtins.input = input


def installInput():
    """In a run with windows nobody can type into the standard input."""
    sys.stdin = Input()
