"""Reports of errors in code that stands in no file: the tabs of the macro panel and its prompt."""

import linecache
import traceback


def _codes(code):
    """The code and everything that is defined in it."""
    found = {code}
    for constant in code.co_consts:
        if hasattr(constant, "co_code"):
            found |= _codes(constant)
    return found


def _hide(summary, error, label, codes, seen):
    """Leaves out the lines of functions that an earlier run has defined: that source is gone."""
    if summary is None or error is None or id(error) in seen:
        return
    seen.add(id(error))
    frames = [frame for frame, _ in traceback.walk_tb(error.__traceback__)]
    if len(frames) == len(summary.stack):
        for frame, entry in zip(frames, summary.stack):
            if frame.f_code.co_filename == label and frame.f_code not in codes:
                entry._line = ""
    _hide(summary.__cause__, error.__cause__, label, codes, seen)
    _hide(summary.__context__, error.__context__, label, codes, seen)


def show(error, label, source):
    """Prints error to sys.stderr as the interpreter does, with the lines of source."""
    import sys
    codes = set()
    for mode in ("exec", "single"):
        try:
            codes |= _codes(compile(source, label, mode, dont_inherit=True))
        except (SyntaxError, ValueError):
            pass
    linecache.cache[label] = (len(source), None, source.splitlines(True), label)
    try:
        summary = traceback.TracebackException(type(error), error, error.__traceback__)
        _hide(summary, error, label, codes, set())
        report = "".join(summary.format())
    finally:
        del linecache.cache[label]
    sys.last_type, sys.last_value, sys.last_traceback = type(error), error, error.__traceback__
    sys.stderr.write(report)
