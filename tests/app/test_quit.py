#!/usr/bin/env python3
"""Scripts have left files open and functions for the end; the program is ended, with a message of the updater open.

    test_quit.py --program PATH

On a screen of its own: by Ctrl+Q in a document, and by the system's request to end, in the middle of a script as
well. What scripts wrote is in their files when it was quit; the system does not wait for that, as it does not for
Python's own program. What was typed into the document before is kept for the next start.
"""
import argparse
import os
import signal
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), os.pardir, os.pardir, "tools", "torture"))
from keyboard import Screen  # noqa: E402
from program_torture import Files, Place, Typist, text_of  # noqa: E402

CODE = ("import atexit, threading\\n"
        "f = open('open.csv', 'w')\\nf.write('hello')\\n"
        "atexit.register(lambda: open('atexit.csv', 'w').write('ended'))\\n"
        "threading.Thread(target=lambda: (threading.Event().wait(1), open('thread.csv', 'w').write('joined'))).start()\\n"
        "NSApplication.sharedApplication().checkForUpdates_(None)\\n"
        "open('ran', 'w').close()\\n")
ENDLESS = "Doc[5].name = 'half'\\nopen('ran', 'w').close()\\nwhile True: pass\\n"


def press_until(press, is_done, seconds=30):
    """A key that comes before a window takes keys is lost, so it is pressed again; no row minds a second one."""
    end = time.monotonic() + seconds
    while not is_done():
        assert time.monotonic() < end, "nothing comes of it"
        press()
        again = time.monotonic() + 2
        while not is_done() and time.monotonic() < again:
            time.sleep(0.05)


def quit_document(screen, program):
    if screen.windows("data.xml"):
        screen.focus("data.xml", 1)
        screen.key("Control_L", "q")


def ask_to_end(screen, program):
    program.send_signal(signal.SIGTERM)


def end_a_run(program, screen, text):
    """Asked to end while a script runs, the program does so at once, and nothing typed is lost."""
    place = Place(text)
    with open(place.settings, "w", encoding="utf-8") as settings:
        settings.write(f'[General]\nshowMacroPanel=true\nmacroCode="{ENDLESS}"\n')
    running = subprocess.Popen([program, "--new-instance", place.file], cwd=place.folder,
                               env=place.environment(screen.name), stdout=subprocess.DEVNULL)
    try:
        assert screen.focus("Macro") and screen.focus("data.xml"), "no windows"
        typist = Typist(screen)
        for key in ("Down", "Right", "F2"):
            typist.press(key)
        typist.word()
        typist.press("Return")
        assert screen.focus("Macro")
        ran = os.path.join(place.folder, "ran")
        press_until(lambda: screen.key("Control_L", "Return"), lambda: os.path.exists(ran))
        assert place.kept_words() == {1}, "what the script finds is not kept while it runs"
        ask_to_end(screen, running)
        assert running.wait(30) == -signal.SIGTERM
        kept = "".join(map(text_of, place.autosaves()))
        assert 'name="half"' in kept, "nor what the script has done"
        assert place.kept_words() == {1} and text_of(place.file) == text
    finally:
        running.kill()
        running.wait()
        place.remove()


def test(program, screen, text, leave):
    place = Place(text)
    with open(place.settings, "w", encoding="utf-8") as settings:
        settings.write(f'[General]\nshowMacroPanel=true\nmacroCode="{CODE}"\n')
    running = subprocess.Popen([program, "--new-instance", place.file], cwd=place.folder,
                               env=place.environment(screen.name), stdout=subprocess.DEVNULL)
    try:
        assert screen.focus("data.xml") and screen.focus("Macro"), "no windows"
        ran = os.path.join(place.folder, "ran")
        press_until(lambda: screen.key("Control_L", "Return"), lambda: os.path.exists(ran))
        press_until(lambda: None, lambda: screen.windows("^Update"))
        if leave is quit_document:
            press_until(lambda: leave(screen, running), lambda: running.poll() is not None)
        else:
            leave(screen, running)
        status = running.wait(30)
        held = {name: text_of(os.path.join(place.folder, name + ".csv")) for name in ("open", "atexit", "thread")}
        if leave is quit_document:
            assert held == {"open": "hello", "atexit": "ended", "thread": "joined"}, held
        assert status == (0 if leave is quit_document else -signal.SIGTERM), status
        assert text_of(place.file) == text
    finally:
        running.kill()
        running.wait()
        place.remove()


def main():
    arguments = argparse.ArgumentParser(description=__doc__)
    arguments.add_argument("--program", required=True)
    program = os.path.abspath(arguments.parse_args().program)
    screen = Screen()
    try:
        text = Files(program).text(200)
        for leave in (quit_document, ask_to_end):
            print(leave.__name__, flush=True)
            test(program, screen, text, leave)
        end_a_run(program, screen, text)
    finally:
        screen.close()


if __name__ == "__main__":
    main()
