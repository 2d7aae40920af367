#!/usr/bin/env python3
"""git merges glyph data with the program: test_git.py --program PATH --docs docs/merging.md

Repositories of their own in a temporary folder, with the settings that --git-setup writes: branches are merged,
rebased and picked from, with and without conflicts; and the example of the documentation comes out as printed there.
"""
import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools/torture"))
from keyboard import Screen  # noqa: E402

BASE = ["A", "B", "C", "D", "E"]


def run(*command, status=0, **options):
    done = subprocess.run([str(part) for part in command], capture_output=True, text=True, check=False, **options)
    assert done.returncode == status, f"{command}: {done.returncode}\n{done.stdout}\n{done.stderr}"
    return done.stdout


def table(*records):
    """A record is a name, or a name with attributes behind a blank."""
    def line(record):
        name, _, attributes = record.partition(" ")
        return f'\t<glyph name="{name}" {attributes + " " if attributes else ""}/>\n'
    return '<glyphData format="2">\n' + "".join(map(line, records)) + "</glyphData>\n"


def own_tables(folder, program):
    """The same with the header that the program writes, so that a save has nothing to ask."""
    file = folder / "own.xml"
    file.write_text(table("A"), encoding="utf-8")
    run(program, "--save", "--lossy", "--eval", "Doc.infos()[0].setScript_('a')", file)
    header = file.read_text(encoding="utf-8").partition("\t<glyph ")[0]
    assert header.endswith('<glyphData format="2">\n'), header
    return lambda *records: table(*records).replace('<glyphData format="2">\n', header)


class Repository:
    def __init__(self, folder, program, has_driver=True):
        self.folder = folder
        self.file = folder / "glyphs.xml"
        folder.mkdir(parents=True)
        self.git("init", "-q", "-b", "main")
        if has_driver:
            lines = run(program, "--git-setup", cwd=folder)
            (folder / ".gitattributes").write_text(lines, encoding="utf-8")
        self.commit(table(*BASE))

    def git(self, *arguments, status=0):
        return run("git", *arguments, status=status, cwd=self.folder)

    def commit(self, text, name="glyphs.xml"):
        content = text if isinstance(text, bytes) else text.encode()
        (self.folder / name).write_bytes(content)
        self.git("add", ".")
        self.git("commit", "-q", "-m", "a change")

    def branches(self, theirs, ours, name="glyphs.xml"):
        """Both start at what is there; the branch of ours is checked out."""
        self.git("checkout", "-q", "-B", "theirs", "main")
        self.commit(theirs, name)
        self.git("checkout", "-q", "-B", "ours", "main")
        self.commit(ours, name)

    def text(self, name="glyphs.xml"):
        return (self.folder / name).read_bytes().decode("utf-8", "replace")


def neighbours_merge(folder, program):
    theirs = table("A", 'B category="x"', "C", "New", "D", "E")
    ours = table('A script="y"', 'B script="y"', "C", "D")
    both = table('A script="y"', 'B category="x" script="y"', "C", "New", "D")
    for way in (("merge", "-q", "theirs"), ("rebase", "-q", "theirs"), ("cherry-pick", "theirs")):
        repository = Repository(folder / way[0], program)
        repository.branches(theirs, ours)
        repository.git(*way)
        assert repository.text() == both, repository.text()
        assert repository.git("status", "--short") == ""
    diff = repository.git("log", "-p", "-1")
    assert "+    category: x" in diff and re.search(r"^@@.*@@", diff, re.M), diff


def conflicts_are_marked(folder, program):
    repository = Repository(folder / "conflicts", program)
    repository.branches(table('A category="x" script="t"', *BASE[1:]), table('A category="y" production="o"', *BASE[1:]))
    report = repository.git("merge", "theirs", status=1)
    assert "glyphs.xml: conflict: A.category: ours y, base (none), theirs x" in report, report
    sides = re.search(r"<{7} ours: glyphs.xml\n(.*)\|{7} base: glyphs.xml\n(.*)={7}\n(.*)>{7} theirs: glyphs.xml\n",
                      repository.text(), re.S)
    assert [re.sub(r'^\t<glyph name="A" | />\n$', "", side) for side in sides.groups()] == [
        'category="y" script="t" production="o"', 'script="t" production="o"', 'category="x" script="t" production="o"'
    ], repository.text()
    assert repository.git("status", "--short").startswith("UU")
    # What is added with its markers is not merged again as if they were records.
    repository.commit(repository.text())
    repository.git("checkout", "-q", "-b", "later", "theirs")
    repository.commit(table('A category="z"', *BASE[1:]))
    repository.git("checkout", "-q", "ours")
    repository.git("merge", "later", status=1)
    assert 'category="z"' in repository.text() and 'category="y"' in repository.text()


def conflicts_are_resolved_in_the_window(folder, program, screen):
    """With the keys that a person presses; the file tells when they have arrived."""
    def end(repository, *keys, is_done):
        tool = subprocess.Popen(["git", "mergetool", "-y", "-t", "runebook"], cwd=repository.folder,
                                env={**os.environ, "DISPLAY": screen.name, "QT_QPA_PLATFORM": "xcb"},
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        finish = time.monotonic() + 120
        while tool.poll() is None and time.monotonic() < finish:
            if screen.focus("Merge into", seconds=5):
                for key in keys if not is_done() else [("Control_L", "w")]:
                    screen.key(*key)
        if tool.poll() is None:
            tool.terminate()
        return tool.wait(), tool.stdout.read()

    own_table = own_tables(folder, program)
    repository = Repository(folder / "window", program)
    repository.git("checkout", "-q", "main")
    repository.commit(own_table(*BASE))
    repository.branches(own_table('A category="x"', 'B script="t"', *BASE[2:]), own_table('A category="y"', "B", 'C script="o"', *BASE[3:]))
    repository.git("merge", "theirs", status=1)
    take_theirs, save = ("Control_L", "Shift_L", "r"), ("Control_L", "s")
    status, output = end(repository, take_theirs, save, is_done=lambda: "<<<<" not in repository.text())
    assert status == 0, output
    assert repository.text() == own_table('A category="x"', 'B script="t"', 'C script="o"', *BASE[3:]), repository.text()
    assert repository.git("status", "--short", "--untracked-files=no").startswith("M "), repository.git("status", "--short")


def conflicts_left_in_the_window_are_told(folder, program, screen):
    """Who closes it leaves the output as it is, whatever was decided, and the caller learns of it."""
    files = [folder / f"left-{side}.xml" for side in ("base", "ours", "theirs", "out")]
    for file, category in zip(files, "botu"):
        file.write_text(table(f'A category="{category}"', f'B category="{category}"'), encoding="utf-8")
    before = files[3].read_bytes()
    tool = subprocess.Popen([str(part) for part in (program, "--mergetool", *files)], stdin=subprocess.DEVNULL,
                            env={**os.environ, "DISPLAY": screen.name, "QT_QPA_PLATFORM": "xcb"})
    assert screen.focus("Merge into")
    screen.key("Alt_L", "Right")  # one of the two
    finish = time.monotonic() + 120
    while tool.poll() is None and time.monotonic() < finish:
        if screen.focus("Merge into", seconds=5):
            screen.key("Control_L", "w")
        if screen.focus("Unresolved Conflicts", seconds=5):
            screen.key("Alt_L", "c")
    if tool.poll() is None:
        tool.terminate()
    assert tool.wait() == 1, tool.returncode
    assert files[3].read_bytes() == before


def criss_cross_branches_merge(folder, program):
    """Each branch has taken the other in once: the base is a merge itself, with its conflicts."""
    repository = Repository(folder / "crossed", program)
    repository.branches(table("A", 'B category="t"', *BASE[2:]), table('A category="o"', *BASE[1:]))
    repository.git("branch", "first")
    repository.git("merge", "-q", "theirs")
    repository.commit(table('A category="o"', 'B category="t"', 'C script="o"', "D", "E"))
    repository.git("checkout", "-q", "theirs")
    repository.git("merge", "-q", "first")
    repository.commit(table('A category="o" script="t"', 'B category="t"', 'C script="t"', "D", "E"))
    repository.git("merge", "ours", status=1)
    assert len(repository.git("merge-base", "--all", "ours", "theirs").split()) == 2
    text = repository.text()
    assert text.startswith(table('A category="o" script="t"', 'B category="t"').removesuffix("</glyphData>\n")), text
    assert text.count("<<<<<<<") == 1 and 'script="o"' in text and 'script="t"' in text, text
    # The same with bases whose own merge conflicts.
    repository = Repository(folder / "crossed-over", program)
    repository.branches(table('A category="t"', *BASE[1:]), table('A category="o"', *BASE[1:]))
    repository.git("branch", "first")
    for branch, other, category in (("ours", "theirs", "o2"), ("theirs", "first", "t2")):
        repository.git("checkout", "-q", branch)
        repository.git("merge", other, status=1)
        repository.commit(table(f'A category="{category}"', *BASE[1:4], f'E script="{category}"'))
    repository.git("merge", "ours", status=1)
    text = repository.text()
    assert all(f'category="{category}"' in text and f'script="{category}"' in text for category in ("o2", "t2")), text
    assert text.splitlines()[-1] == "</glyphData>" and text.count('name="B"') >= 1, text


def nothing_is_lost(folder, program):
    repository = Repository(folder / "unreadable", program)
    repository.branches(table(*BASE).encode() + b"<!-- \xff\xfe theirs -->\n", table(*BASE) + "<!-- ours -->\n")
    repository.git("merge", "theirs", status=1)
    assert "theirs" in repository.text() and "ours" in repository.text() and "<<<<<<<" in repository.text()

    repository = Repository(folder / "removed", program)
    repository.branches(table(*BASE[1:]), table('A category="x"', *BASE[1:]))
    assert "A: edited by ours, removed by theirs" in repository.git("merge", "theirs", status=1)
    assert 'category="x"' in repository.text()

    repository = Repository(folder / "added", program)
    repository.branches(table("A", 'N category="x"'), table("A", 'N script="y"'), "new.xml")
    repository.git("merge", "-q", "theirs")
    assert repository.text("new.xml") == table("A", 'N category="x" script="y"')


def other_files_merge_by_lines(folder, program):
    repository = Repository(folder / "other", program)
    lines = [f"<p>{number}</p>\n" for number in range(20)]
    repository.git("checkout", "-q", "main")
    repository.commit("".join(lines), "page.xml")
    repository.branches("".join(lines) + "<p>theirs</p>\n", "<p>ours</p>\n" + "".join(lines), "page.xml")
    repository.git("merge", "-q", "theirs")
    assert repository.text("page.xml") == "<p>ours</p>\n" + "".join(lines) + "<p>theirs</p>\n"
    # A clone knows the attributes, but not the program.
    run("git", "clone", "-q", folder / "other", folder / "clone")
    clone = folder / "clone"
    (clone / "glyphs.xml").write_text(table('A category="x"', *BASE[1:]), encoding="utf-8")
    run("git", "checkout", "-q", "-b", "mine", "origin/main", cwd=clone)
    run("git", "commit", "-q", "-a", "-m", "mine", cwd=clone)
    run("git", "checkout", "-q", "-b", "yours", "origin/main", cwd=clone)
    (clone / "glyphs.xml").write_text(table(*BASE[:4], 'E category="y"'), encoding="utf-8")
    run("git", "commit", "-q", "-a", "-m", "yours", cwd=clone)
    run("git", "merge", "-q", "mine", cwd=clone)
    assert (clone / "glyphs.xml").read_text(encoding="utf-8") == table('A category="x"', *BASE[1:4], 'E category="y"')


def set_up_is_repeatable(folder, program):
    outside = folder / "outside"
    outside.mkdir()
    done = subprocess.run([program, "--git-setup"], cwd=outside, capture_output=True, text=True, check=False)
    assert done.returncode == 2 and "no git repository" in done.stderr and not done.stdout, done
    assert len(run(program, "--git-setup", "--global", cwd=outside).splitlines()) == 2
    # In a path with blanks and quotes, which a shell will read.
    odd = folder / "it's a place" / "bin"
    odd.mkdir(parents=True)
    wrapper = odd / "runebook"
    shutil.copy(program, wrapper)
    repository = Repository(folder / "repeated", wrapper)
    config = (repository.folder / ".git/config").read_text(encoding="utf-8")
    assert run(wrapper, "--git-setup", cwd=repository.folder) == repository.text(".gitattributes")
    assert (repository.folder / ".git/config").read_text(encoding="utf-8") == config
    repository.branches(table('A category="x"', *BASE[1:]), table("A", 'B category="y"', *BASE[2:]))
    repository.git("merge", "-q", "theirs")
    assert repository.text() == table('A category="x"', 'B category="y"', *BASE[2:])


def example_comes_out_as_printed(folder, program, docs):
    place = folder / "example"
    place.mkdir()
    code, expected = re.search(r"```sh example\n(.*?)```\n\n```text\n(.*?)```", docs.read_text(encoding="utf-8"), re.S).groups()
    path = f"{Path(program).parent}{os.pathsep}{os.environ['PATH']}"
    output = run("sh", "-e", "-c", code, cwd=place, env={**os.environ, "PATH": path})
    assert output == expected, output


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", required=True)
    parser.add_argument("--docs", required=True, type=Path)
    parser.add_argument("--window", action="store_true", help="also what needs a screen with a keyboard")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as name:
        home = Path(name)
        for key in [key for key in os.environ if key.startswith("GIT_")]:
            del os.environ[key]
        os.environ.update(HOME=name, XDG_CONFIG_HOME=f"{name}/config", XDG_DATA_HOME=f"{name}/data", LC_ALL="C.UTF-8",
                          RUNEBOOK_DEFAULTS=f"{name}/defaults.ini", GIT_CONFIG_NOSYSTEM="1", GIT_MERGE_AUTOEDIT="no",
                          GIT_CEILING_DIRECTORIES=name)
        for key, value in (("user.name", "Test"), ("user.email", "test@example.org"), ("core.editor", "true")):
            run("git", "config", "--global", key, value)
        neighbours_merge(home, options.program)
        conflicts_are_marked(home, options.program)
        criss_cross_branches_merge(home, options.program)
        nothing_is_lost(home, options.program)
        other_files_merge_by_lines(home, options.program)
        example_comes_out_as_printed(home, options.program, options.docs)
        set_up_is_repeatable(home, options.program)
        if options.window:
            screen = Screen()
            try:
                conflicts_are_resolved_in_the_window(home, options.program, screen)
                conflicts_left_in_the_window_are_told(home, options.program, screen)
            finally:
                screen.close()
    return 0


if __name__ == "__main__":
    sys.exit(main())
