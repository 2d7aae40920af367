#!/usr/bin/env python3
"""A script holds the program inside of Python's own code; the user ends it and gets the windows back.

    test_end_and_reopen.py --program PATH

On a screen of its own, with real keys: a name is edited and not saved, a macro typed and run that cannot be
stopped. The watching window comes, End and Reopen is chosen, and the program is there again with what was unsaved
before the run, without what the script did.
"""
import argparse
import os
import re
import signal
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), os.pardir, os.pardir, "tools", "torture"))
from keyboard import Screen  # noqa: E402
from program_torture import Files, Place, Typist, text_of  # noqa: E402

RECORDS = 200
HELD = "Doc[3].name = 'undone'; print(sum(range(10 ** 11))) # "


def wait_for(what, is_there, seconds=60, meanwhile=lambda: None):
    end = time.monotonic() + seconds
    while not is_there():
        if time.monotonic() > end:
            raise AssertionError(f"waited {seconds} s for {what}")
        meanwhile()
        time.sleep(0.1)


def processes(place):
    """The programs of this test, by their settings."""
    found = []
    for name in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{name}/environ", "rb") as environ, open(f"/proc/{name}/comm") as command:
                if command.read().strip() == "runebook" and place.settings.encode() in environ.read():
                    found.append(int(name))
        except OSError:
            continue
    return found


def is_alive(process):
    return process.poll() is None


def test(program, screen, place):
    with open(place.settings, "w", encoding="utf-8") as settings:
        settings.write(f'[General]\nshowMacroPanel=true\nmacroCode="{HELD}"\n')
    first = subprocess.Popen([program, "--new-instance", place.file], cwd=place.folder,
                             env=place.environment(screen.name), stdout=subprocess.DEVNULL)
    assert screen.focus("data.xml") and screen.focus("Macro"), "no windows"
    typist = Typist(screen)
    typist.press("Control_L", "End")
    typist.word()  # 1: in the macro
    assert screen.focus("data.xml")
    for key in ("Down", "Right", "F2"):
        typist.press(key)
    typist.word()  # 2: in a name
    typist.press("Return")
    assert screen.focus("Macro")
    typist.press("Control_L", "Return")
    begun = time.monotonic()

    assert screen.focus("Script Still Running", 30), "nobody says that the program is held up"
    told_after = time.monotonic() - begun
    assert is_alive(first) and "w000002" not in text_of(place.file)
    screen.key("Alt_L", "e")
    wait_for("the end of the program", lambda: not is_alive(first))
    ended = time.monotonic()
    wait_for("its windows", lambda: screen.windows("data.xml") and screen.windows("Macro"))
    reopened_after = time.monotonic() - ended

    assert screen.focus("data.xml")
    wait_for("the unsaved name in the saved file", lambda: "w000002" in text_of(place.file),
             meanwhile=lambda: screen.key("Control_L", "s"))
    assert "undone" not in text_of(place.file), "what the script did came back"
    assert len(re.findall("<glyph ", text_of(place.file))) == RECORDS
    [process] = processes(place)
    os.kill(process, signal.SIGTERM)
    wait_for("the end", lambda: not processes(place))
    assert 1 in place.words_in_settings(), "the macro's text is lost"
    print(f"told after {told_after:.1f} s, windows back {reopened_after:.1f} s after the end")


def main():
    arguments = argparse.ArgumentParser(description=__doc__)
    arguments.add_argument("--program", required=True)
    program = os.path.abspath(arguments.parse_args().program)
    screen = Screen()
    place = Place(Files(program).text(RECORDS))
    try:
        test(program, screen, place)
    finally:
        for process in processes(place):
            os.kill(process, signal.SIGKILL)
        screen.close()
        place.remove()


if __name__ == "__main__":
    main()
