#!/usr/bin/env python3
"""Kills the program itself, again and again, and counts what is lost.

    program_torture.py --program PATH [--seconds N | --once] [--seed N] [--workers N] [--only KIND,...]

Windows are driven by real keys, 20 a second, on screens of their own; scripts run in the macro panel and
without windows. Everything that is typed is made of numbered words, so that each one can be told to have been
kept or lost, and when it was typed. Ends in one table; status 1 when anything was broken or lost silently, or
when more than one in a hundred lost more than ten seconds.
"""
import argparse
import base64
import collections
import glob
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
import traceback

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from keyboard import Screen  # noqa: E402

KEYS_PER_SECOND = 20
LONGEST_LOSS = 10.0
WORD = re.compile(r"w(\d{6})")


def hear_hangups():
    """The program leaves a hangup alone that whoever started it has it ignore, as nohup does."""
    signal.signal(signal.SIGHUP, signal.SIG_DFL)


class Files:
    """Glyph data in the program's own form: its first save asks nothing."""

    def __init__(self, program):
        self.program, self.texts, self.lock = program, {}, threading.Lock()

    def text(self, records):
        with self.lock:
            if records not in self.texts:
                self.texts[records] = self.make(records)
            return self.texts[records]

    def make(self, records):
        lines = "".join(f'\t<glyph name="g{i}" category="Letter" />\n' for i in range(records))
        place = Place('<glyphData format="2">\n' + lines + "</glyphData>\n")
        subprocess.run([self.program, "--eval", "Doc.updateChangeCount_(0)", "--save", place.file], check=True,
                       env=place.environment(), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        text = text_of(place.file)
        place.remove()
        return text


def text_of(path):
    try:
        with open(path, encoding="utf-8") as file:
            return file.read()
    except OSError:
        return ""


class Place:
    """A folder with everything that one program touches."""

    def __init__(self, text):
        self.folder = tempfile.mkdtemp(prefix="runebook-torture-")
        self.file = os.path.join(self.folder, "data.xml")
        self.settings = os.path.join(self.folder, "settings.ini")
        self.data = os.path.join(self.folder, "data")
        for name in ("data", "home", "run"):
            os.mkdir(os.path.join(self.folder, name), 0o700)
        with open(self.file, "w", encoding="utf-8") as file:
            file.write(text)

    def environment(self, display=None):
        inherited = {name: os.environ[name] for name in ("PATH", "LANG", "LC_ALL", "LD_LIBRARY_PATH")
                     if name in os.environ}
        own = {"HOME": os.path.join(self.folder, "home"), "RUNEBOOK_DEFAULTS": self.settings,
               "XDG_DATA_HOME": self.data, "XDG_RUNTIME_DIR": os.path.join(self.folder, "run"),
               "QT_ACCESSIBILITY": "0", "NO_AT_BRIDGE": "1"}
        if display:
            own["DISPLAY"] = display
        return {**inherited, **own}

    def rescues(self):
        return [path for path in glob.glob(os.path.join(self.folder, ".data.xml.runebook-rescue*"))
                + glob.glob(os.path.join(self.data, "runebook/Rescue/*runebook-rescue*"))
                if not path.endswith(".part")]

    def autosaves(self):
        return glob.glob(os.path.join(self.data, "runebook/Autosave/*/*.xml"))

    def kept_words(self):
        """The numbers of the words in the best of what the next start has to offer."""
        best = set()
        candidates = [[self.file], *([path] for path in self.rescues()),
                      *([path, path[:-len(".xml")] + ".typed"] for path in self.autosaves())]
        for files in candidates:
            words = {int(number) for file in files for number in WORD.findall(text_of(file))}
            if words and max(words) > max(best, default=0):
                best = words
        return best

    def words_in_settings(self):
        """The numbers of the words in the macros, which the settings hold as UTF-16 in a stream."""
        streams = re.findall(r'VXMacroViews="?\\x1streamed:([A-Za-z0-9+/=]+)', text_of(self.settings))
        text = b"".join(base64.b64decode(stream) for stream in streams).replace(b"\0", b"").decode("latin-1")
        return {int(number) for number in WORD.findall(text)}

    def is_whole(self):
        """The file, or what a save has left for it."""
        return any(text_of(path).rstrip().endswith("</glyphData>") for path in [self.file, *self.rescues()])

    def remove(self):
        shutil.rmtree(self.folder, ignore_errors=True)


class Typist:
    """Types numbered words, a key at a time, and knows when."""

    def __init__(self, screen):
        self.screen = screen
        self.started = {}  # number -> when its first key went off
        self.ended = {}
        self.number = 0
        self.due = time.monotonic()

    def press(self, *names):
        self.due = max(self.due + 1 / KEYS_PER_SECOND, time.monotonic() - 0.5)
        time.sleep(max(0, self.due - time.monotonic()))
        self.screen.key(*names)

    def word(self):
        self.number += 1
        self.started[self.number] = time.monotonic()
        for letter in f"w{self.number:06}":
            self.press(letter)
        self.ended[self.number] = time.monotonic()

    def judge(self, words, killed_at):
        """How long ago the oldest of what is lost was begun; and what is missing before what is kept."""
        kept = max(words, default=0)
        holes = [number for number in range(1, kept + 1) if number not in words]
        lost_since = self.started.get(kept + 1)
        return (killed_at - lost_since if lost_since else 0.0), holes


class Result:
    def __init__(self, loss=None, broken=None, note=None):
        self.loss, self.broken, self.note = loss, broken, note


class Torture:
    def __init__(self, program):
        self.program = program
        self.files = Files(program)
        self.meetings = collections.Counter()

    def start(self, place, screen, *arguments):
        return subprocess.Popen([self.program, "--new-instance", *arguments, place.file], cwd=place.folder,
                                env=place.environment(screen.name), stdout=subprocess.DEVNULL,
                                stderr=subprocess.DEVNULL, preexec_fn=hear_hangups)

    # What is typed

    def edit_cells(self, typist, chance, until, saves=False):
        """Names, one after the other, each handed over with Return."""
        for name in ("Down", "Right"):
            typist.press(name)
        while time.monotonic() < until:
            typist.press("F2")
            for _ in range(chance.randint(1, 3)):
                typist.word()
            typist.press("Return")
            typist.press("Down")
            if saves and chance.random() < 0.2:
                typist.press("Control_L", "s")

    def edit_one_cell(self, typist, chance, until):
        """One text that is never handed over."""
        for name in ("Down", "Right", "F2"):
            typist.press(name)
        while time.monotonic() < until:
            typist.word()

    def edit_in_pane(self, typist, chance, until):
        """The fields of a new record in the pane, each left with Tab after a while."""
        typist.press("Control_L", "Shift_L", "n")
        time.sleep(0.3)
        while time.monotonic() < until:
            typist.word()

    def killed_while_typing(self, edit, chance, screen, number):
        place = Place(self.files.text(chance.choice([200, 2000, 20000])))
        program = self.start(place, screen)
        try:
            if not screen.focus("data.xml"):
                return Result(note="no window")
            time.sleep(1)
            typist = Typist(screen)
            end = time.monotonic() + chance.uniform(0.5, 40)
            killer = threading.Timer(end - time.monotonic(), program.kill)
            killer.start()
            edit(typist, chance, end + 0.5)
            killer.join()
            program.wait()
            loss, holes = typist.judge(place.kept_words(), end)
            if program.returncode != -signal.SIGKILL:
                return Result(broken=f"ended by itself with {program.returncode}")
            if holes or not place.is_whole():
                return Result(loss, broken=f"words {holes[:5]} are missing, or no file is whole")
            if number % 5 == 0:
                return Result(loss, broken=self.restore(place, screen, place.kept_words()))
            return Result(loss)
        finally:
            program.kill()
            program.wait()
            place.remove()

    def restore(self, place, screen, words):
        """The next start offers what is left; restored and saved, all of it is in the file."""
        if not words or not place.autosaves():
            return None
        program = self.start(place, screen)
        try:
            if not screen.focus("Recovered Documents", 40):
                return "nothing was offered"
            time.sleep(0.5)
            screen.key("Return")
            time.sleep(2)
            screen.focus("data.xml")
            screen.key("Control_L", "s")
            end = time.monotonic() + 20
            while time.monotonic() < end:
                if words <= {int(number) for number in WORD.findall(text_of(place.file))}:
                    return None
                time.sleep(0.2)
            return "what was restored is not in the saved file"
        finally:
            program.kill()
            program.wait()

    # Scripts

    def killed_in_a_script(self, chance, screen, number):
        """A script that changes a record some 20 times a second, in the macro panel."""
        place = Place(self.files.text(chance.choice([200, 2000, 20000])))
        log = os.path.join(place.folder, "log")
        code = ("import time\\nnumber = 0\\nlog = open('" + log + "', 'w')\\n"
                "while True:\\n  number += 1\\n  Doc.infos()[number % 100].setDesc_('w%06d' % number)\\n"
                "  print(number, time.monotonic(), file=log, flush=True)\\n  time.sleep(0.05)\\n")
        with open(place.settings, "w", encoding="utf-8") as settings:
            settings.write(f'[General]\nshowMacroPanel=true\nmacroCode="{code}"\n')
        program = self.start(place, screen)
        try:
            if not screen.focus("data.xml") or not screen.focus("Macro"):
                return Result(note="no window")
            time.sleep(1)
            screen.key("Control_L", "Return")
            begun = time.monotonic()
            while not text_of(log):
                if time.monotonic() > begun + 20:
                    return Result(note="the script does not start")
                time.sleep(0.05)
            time.sleep(chance.uniform(0.5, 40))
            killed_at = time.monotonic()
            program.kill()
            program.wait()
            times = [line.split() for line in text_of(log).splitlines()]
            kept = max(place.kept_words(), default=0)
            lost = [float(line[1]) for line in times if len(line) == 2 and int(line[0]) > kept]
            # The last hundred words stand in the records, no more.
            words = place.kept_words()
            holes = [word for word in range(max(1, kept - 99), kept + 1) if word not in words]
            return Result(killed_at - min(lost) if lost else 0.0,
                          broken=f"words {holes[:5]} are missing" if holes or not place.is_whole() else None)
        finally:
            program.kill()
            program.wait()
            place.remove()

    def killed_typing_a_macro(self, chance, screen, number):
        place = Place(self.files.text(2000))
        with open(place.settings, "w", encoding="utf-8") as settings:
            settings.write('[General]\nshowMacroPanel=true\nmacroCode="# "\n')
        program = self.start(place, screen)
        try:
            if not screen.focus("data.xml") or not screen.focus("Macro"):
                return Result(note="no window")
            time.sleep(1)
            typist = Typist(screen)
            typist.press("End")
            end = time.monotonic() + chance.uniform(0.5, 30)
            while time.monotonic() < end:
                typist.word()
                typist.press("space")
            program.kill()
            program.wait()
            words = place.words_in_settings()
            loss, holes = typist.judge(words, time.monotonic())
            return Result(loss, broken=f"words {holes[:5]} are missing" if holes else None)
        finally:
            program.kill()
            program.wait()
            place.remove()

    # Two programs, one file

    def meets_a_run(self, chance, screen, number):
        """A window and a run without windows save at the same moment: both changes are in the file, or one of the
        two was told."""
        place = Place(self.files.text(chance.choice([200, 2000, 20000])))
        program = self.start(place, screen)
        try:
            if not screen.focus("data.xml"):
                return Result(note="no window")
            time.sleep(1)
            records = text_of(place.file).count("<glyph ")
            own = set(screen.windows("runebook", "--class"))
            typist = Typist(screen)
            for name in ("Down", "Right"):
                typist.press(name)
            for round_number in range(1, 6):
                mark, go = f"h{number:05}x{round_number}", os.path.join(place.folder, f"go{round_number}")
                code = ("import os, time\n" f"Doc.infos()[-1].setProduction_('{mark}')\nprint('ready', flush=True)\n"
                        f"while not os.path.exists('{go}'): time.sleep(0.001)\n")
                run = subprocess.Popen([self.program, "--eval", code, "--save", place.file], env=place.environment(),
                                       stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
                if run.stdout.readline().strip() != "ready":
                    return Result(note="the script does not run")
                typist.press("F2")
                typist.word()
                typist.press("Return")
                word, ahead = f"w{typist.number:06}", chance.uniform(-0.08, 0.08)
                if ahead > 0:
                    screen.key("Control_L", "s")
                    time.sleep(ahead)
                open(go, "w", encoding="utf-8").close()
                if ahead <= 0:
                    time.sleep(-ahead)
                    screen.key("Control_L", "s")
                errors = run.communicate(timeout=60)[1]
                end = time.monotonic() + 30
                while word not in text_of(place.file) and set(screen.windows("runebook", "--class")) <= own and time.monotonic() < end:
                    time.sleep(0.1)
                text, is_asked = text_of(place.file), not set(screen.windows("runebook", "--class")) <= own
                if text.count("<glyph ") != records or not place.is_whole():
                    return Result(broken="the file is not whole")
                if word not in text and not is_asked:
                    return Result(broken="the window's change is not in the file, and nothing was said")
                if (mark in text) != (run.returncode == 0):
                    return Result(broken=f"the run ended with {run.returncode}, and its change is "
                                         f"{'' if mark in text else 'not '}in the file")
                if run.returncode not in (0, 1) or (run.returncode == 1 and "Another program" not in errors):
                    return Result(broken=f"the run ended with {run.returncode}: {errors}")
                self.meetings["window told" if is_asked else "run told" if run.returncode else "both kept"] += 1
                if is_asked:
                    break
                time.sleep(2)  # for the window to read what the run has saved
            return Result(0.0)
        finally:
            program.kill()
            program.wait()
            place.remove()

    # Signals

    def asked_to_go(self, chance, screen, number):
        """A signal at any moment of typing: gone within a second, all that was typed kept."""
        records = chance.choice([2000, 150000])
        place = Place(self.files.text(records))
        program = self.start(place, screen)
        try:
            if not screen.focus("data.xml"):
                return Result(note="no window")
            time.sleep(1 + records / 50000)
            typist = Typist(screen)
            edit = chance.choice([self.edit_cells, self.edit_one_cell, self.edit_in_pane])
            edit(typist, chance, time.monotonic() + chance.uniform(1, 15))
            time.sleep(0.2)  # for the last keys to arrive
            which = chance.choice([signal.SIGTERM, signal.SIGINT, signal.SIGHUP])
            asked_at = time.monotonic()
            program.send_signal(which)
            try:
                program.wait(30)
            except subprocess.TimeoutExpired:
                return Result(broken="does not go")
            took = time.monotonic() - asked_at
            loss, holes = typist.judge(place.kept_words(), asked_at)
            lost = [word for word in typist.ended if word > max(place.kept_words(), default=0)]
            problem = None
            if holes or lost:
                problem = f"words {(holes + lost)[:5]} of {typist.number} are missing"
            elif program.returncode != -which:
                problem = f"ended with {program.returncode} of signal {int(which)}"
            return Result(took, broken=problem)
        finally:
            program.kill()
            program.wait()
            place.remove()

    # Without windows

    def killed_without_windows(self, chance, screen, number):
        """A script that changes everything and is killed while its file is saved."""
        place = Place(self.files.text(chance.choice([20, 2000, 20000])))
        try:
            old = text_of(place.file)
            mark = f"m{number:06}"
            new = old.replace(" />", f' description="{mark}" />').replace("<glyphData", "<glyphData")
            code = ("for info in Doc.infos(): info.setDesc_('" + mark + "')\n"
                    "print('ready', flush=True)\n")
            run = [self.program, "--eval", code, "--save", place.file]
            program = subprocess.Popen(run, env=place.environment(), stdout=subprocess.PIPE,
                                       stderr=subprocess.DEVNULL)
            if program.stdout.readline().strip() != b"ready":
                return Result(note="the script does not run")
            time.sleep(chance.uniform(0, 0.06))
            program.kill()
            program.communicate()

            def state(path):
                text = text_of(path)
                count = text.count(f'"{mark}"')
                is_ended = text.rstrip().endswith("</glyphData>")
                return ("new" if is_ended and count == new.count(mark) else
                        "old" if text == old else "broken")
            rescues = place.rescues()
            now = state(place.file)
            if now == "broken" and not any(state(path) == "new" for path in rescues):
                return Result(broken="neither the file nor a rescue file is whole")
            # The next run goes on by itself, or says what is in its way and leaves everything alone.
            before = text_of(place.file)
            again = subprocess.run(run, env=place.environment(), capture_output=True, text=True)
            differing = [path for path in rescues if text_of(path) != before]
            if differing:
                if again.returncode != 2 or not any(path in again.stderr for path in differing):
                    return Result(broken=f"a rescue file was passed over: {again.returncode} {again.stderr}")
                if text_of(place.file) != before:
                    return Result(broken="the file was written to all the same")
                subprocess.run([*run, "--ignore-rescue"], env=place.environment(), check=True,
                               capture_output=True)
            elif again.returncode != 0:
                return Result(broken=f"the next run fails: {again.stderr}")
            if state(place.file) != "new":
                return Result(broken="the next run did not save")
            return Result(note="rescue" if differing else now)
        finally:
            place.remove()

    def kinds(self):
        def typing(edit):
            return lambda *run: self.killed_while_typing(edit, *run)
        return {
            "cells": ("killed typing in cells, each handed over", typing(self.edit_cells), 3),
            "saves": ("killed typing in cells, saving now and then",
                      typing(lambda *edit: self.edit_cells(*edit, saves=True)), 3),
            "cell": ("killed typing in one cell", typing(self.edit_one_cell), 2),
            "pane": ("killed typing in a field of the pane", typing(self.edit_in_pane), 2),
            "script": ("killed in a long script of the macro panel", self.killed_in_a_script, 3),
            "macro": ("killed typing a macro", self.killed_typing_a_macro, 1),
            "signal": ("SIGTERM, SIGINT, SIGHUP; seconds to go", self.asked_to_go, 2),
            "meets": ("a window and a run that save one file", self.meets_a_run, 2),
            "headless": ("killed while saving without windows", self.killed_without_windows, 12),
        }


def percentile(values, share):
    return sorted(values)[min(len(values) - 1, int(share * len(values)))] if values else 0.0


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True)
    parser.add_argument("--seconds", type=float, default=60)
    parser.add_argument("--once", action="store_true", help="one run of each kind, whatever it takes")
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(1 << 32))
    parser.add_argument("--workers", type=int, default=4)
    parser.add_argument("--only", default="")
    options = parser.parse_args()
    torture = Torture(os.path.abspath(options.program))
    kinds = {name: kind for name, kind in torture.kinds().items()
             if not options.only or name in options.only.split(",")}
    results = collections.defaultdict(list)
    counter = iter(range(1, 1 << 30))
    lock = threading.Lock()
    end = time.monotonic() + options.seconds

    left = list(kinds)

    def next_run():
        """The number of the next run, its chances and its kind; none when it is over."""
        with lock:
            number = next(counter)
            chance = random.Random(options.seed * 1000003 + number)
            if options.once:
                return (number, chance, left.pop()) if left else None
            kind = chance.choices(list(kinds), [kinds[name][2] for name in kinds])[0]
            return (number, chance, kind) if time.monotonic() < end else None

    def work():
        screen = Screen()
        while run := next_run():
            number, chance, kind = run
            try:
                result = kinds[kind][1](chance, screen, number)
            except Exception:
                result = Result(note=traceback.format_exc())
            with lock:
                results[kind].append((number, result))
                if result.loss and result.loss > LONGEST_LOSS:
                    print(f"    run {number}, {kind}: {result.loss:.1f} seconds lost", flush=True)
                if result.broken or (result.note and "\n" in result.note):
                    print(f"    run {number}, {kind}: {result.broken or result.note}", flush=True)
        screen.close()

    print(f"seed {options.seed}")
    workers = [threading.Thread(target=work) for _ in range(options.workers)]
    for worker in workers:
        worker.start()
    for worker in workers:
        worker.join()

    print(f"{'':52} {'runs':>6} {'broken':>6} {'p50':>6} {'p99':>6} {'most':>6}  seconds lost")
    is_good = True
    for name, (title, _, _) in kinds.items():
        done = [result for _, result in results[name]]
        losses = [result.loss for result in done if result.loss is not None]
        broken = sum(1 for result in done if result.broken)
        notes = collections.Counter(result.note.strip().splitlines()[-1] for result in done if result.note)
        p99 = percentile(losses, 0.99)
        notes.update(torture.meetings if name == "meets" else {})
        figures = (f"{percentile(losses, 0.5):6.1f} {p99:6.1f} {max(losses):6.1f}" if losses else " " * 20)
        said = ", ".join(f"{note}: {count}" for note, count in notes.items())
        print(f"{title:52} {len(done):6} {broken:6} {figures}  {said}")
        is_good &= broken == 0 and (name == "signal" or p99 <= LONGEST_LOSS)
        # A kind that never did anything proves nothing.
        is_good &= not options.once or any(result.loss is not None or not result.note for result in done) \
            or name == "headless"
    return 0 if is_good else 1


if __name__ == "__main__":
    sys.exit(main())
