#!/usr/bin/env python3
"""How many conflicts does a merge report that are none? merge_peers.py --program PATH [--records N] [--seed N]

Two branches of one table are made, as glyph data and as a table. Here and there both touch a record or its
neighbour; which of these places conflict is known: where both have given one field different values. (Two
entries added to one list are no conflict: both can stay.) Then git (by lines), daff (by cells; a program for
tables) and Runebook merge the same branches. "Lost" are edits of one side that neither the result nor a
conflict shows.

The status is 1 when a tool is missing, or when Runebook reports a conflict that is none, misses one, or loses
an edit.
"""
import argparse
import csv
import json
import random
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
FIELDS = ["name", "unicode", "category", "subCategory", "script", "production", "anchors", "description"]
CONFLICT = "one field, different values"
KINDS = [CONFLICT, "two fields of a record", "neighbours", "the same change", "two additions at one place",
         "a removal beside an edit", "two entries of a list"]


def corpus(folder, records):
    """Records as dictionaries, each name once."""
    file = folder / "corpus.xml"
    subprocess.run([sys.executable, TOP / "tools/make_glyph_corpus.py", "--records", str(records), "--version", "2", "--seed", "1",
                    "--out", file], check=True, stdout=subprocess.DEVNULL)
    table = {}
    for line in file.read_text(encoding="utf-8").splitlines():
        values = dict(re.findall(r'(\w+)="([^"]*)"', line)) if line.startswith("\t<glyph ") else {}
        if "name" in values and "," not in values.get("unicode", ""):
            table[values["name"]] = {field: values[field] for field in FIELDS if field in values}
    return list(table.values())


class Branches:
    def __init__(self, base, seed, every):
        chance = random.Random(seed)
        self.base = base
        self.ours, self.theirs = [[dict(record) for record in base] for _ in range(2)]
        self.added = [{}, {}]
        self.removed = set()
        self.conflicts = set()  # keys; the field is always the same
        self.wanted = []  # key, field, value that a merge must show; of the list entries, the added one
        self.places = list(range(3, len(base) - 3, every))
        for number, place in enumerate(self.places):
            self.edit(KINDS[number % len(KINDS)], place + chance.randrange(every // 2))

    def edit(self, kind, at):
        if kind == "a removal beside an edit":
            self.removed.add(at)
            self.set(self.theirs, at + 1, "script", "theirs")
        elif kind == "two additions at one place":
            for side, word in enumerate(("ours", "theirs")):
                self.added[side][at] = {"name": f"{word}{at}", "category": "Letter"}
                self.wanted.append((f"{word}{at}", "category", "Letter"))
        elif kind == "two entries of a list":
            for table, anchors, added in ((self.base, "bottom, top", "top"), (self.ours, "bottom, ogonek, top", "ogonek"),
                                          (self.theirs, "bottom, top, topright", "topright")):
                table[at]["anchors"] = anchors
                self.wanted.append((table[at]["name"], "anchors", added))
        elif kind == CONFLICT:
            self.ours[at]["category"], self.theirs[at]["category"] = "Ours", "Theirs"
            self.conflicts.add(self.base[at]["name"])
        else:
            self.set(self.ours, at, "category", "Ours")
            if kind == "two fields of a record":
                self.set(self.theirs, at, "script", "theirs")
            elif kind == "neighbours":
                self.set(self.theirs, at + 1, "category", "Theirs")
            else:
                self.theirs[at]["category"] = "Ours"

    def set(self, table, at, field, value):
        table[at][field] = value
        self.wanted.append((table[at]["name"], field, value))

    def lost(self, rows, excused):
        """How many edits are not in the rows of a result; those of records in a conflict are there to be seen."""
        edits = [(key, field, value) for key, field, value in self.wanted if key not in excused]
        return (sum(value not in rows.get(key, {}).get(field, "").split(", ") for key, field, value in edits)
                + sum(self.base[at]["name"] in rows for at in self.removed if self.base[at]["name"] not in excused))

    def tables(self):
        def records(table, side):
            for at, record in enumerate(table):
                if side != 0 or at not in self.removed:
                    yield record
                if side is not None and at in self.added[side]:
                    yield self.added[side][at]
        return [list(records(table, side)) for table, side in ((self.base, None), (self.ours, 0), (self.theirs, 1))]


def write_xml(path, records):
    lines = ["\t<glyph " + "".join(f'{field}="{record[field]}" ' for field in FIELDS if record.get(field)) + "/>"
             for record in records]
    path.write_text("\n".join(['<glyphData format="2">', *lines, "</glyphData>", ""]), encoding="utf-8")


def write_table(path, records, separator):
    with path.open("w", encoding="utf-8", newline="") as file:
        writer = csv.writer(file, delimiter=separator, lineterminator="\n")
        writer.writerow(FIELDS)
        writer.writerows([record.get(field, "") for field in FIELDS] for record in records)


def rows_of_xml(text):
    records = [dict(re.findall(r'(\w+)="([^"]*)"', line)) for line in text.splitlines() if "<glyph " in line]
    return {record["name"]: record for record in records}


def rows_of_table(lines, separator):
    return {record["name"]: record for record in csv.DictReader(lines, FIELDS, delimiter=separator)}


def by_git(files, name_of, rows_of):
    """The names in each block between markers, and the records outside of them."""
    text = subprocess.run(["git", "merge-file", "-p", files[1], files[0], files[2]], capture_output=True, text=True,
                          check=False).stdout
    block = re.compile(r"^<{7} .*?^>{7} .*?\n", re.S | re.M)
    return [set(re.findall(name_of, each, re.M)) for each in block.findall(text)], rows_of(block.sub("", text))


def by_daff(files):
    if not shutil.which("daff"):
        return None
    merged = files[1].with_name("merged.csv")
    subprocess.run(["daff", "merge", "--id", "name", "--output", merged, *files], stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL, check=False)
    rows = rows_of_table(merged.read_text(encoding="utf-8").splitlines(), ",")
    return [{key} for key, row in rows.items() for cell in row.values() if cell.startswith("((( ")], rows


def by_runebook(program, files):
    out = files[1].with_name("merged.xml")
    done = subprocess.run([program, "--merge", *files, "--output", out, "--json"], capture_output=True, text=True, check=False)
    assert done.returncode in (0, 1), done.stderr
    return [{conflict["key"]} for conflict in json.loads(done.stdout)["conflicts"]], rows_of_xml(out.read_text(encoding="utf-8"))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", required=True)
    parser.add_argument("--records", type=int, default=5000)
    parser.add_argument("--every", type=int, default=20, help="records from one place of edits to the next")
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        branches = Branches(corpus(folder, options.records), options.seed, options.every)
        files = {}
        for form in ("xml", "tsv", "csv"):
            files[form] = [folder / f"{side}.{form}" for side in ("base", "ours", "theirs")]
            for path, records in zip(files[form], branches.tables()):
                if form == "xml":
                    write_xml(path, records)
                else:
                    write_table(path, records, "\t" if form == "tsv" else ",")
        tools = [("git merge-file, glyph data", lambda: by_git(files["xml"], r' name="([^"]*)"', rows_of_xml)),
                 ("git merge-file, table",
                  lambda: by_git(files["tsv"], r"^([^\t\n]*)\t", lambda text: rows_of_table(text.splitlines(), "\t"))),
                 ("daff, table", lambda: by_daff(files["csv"])),
                 ("runebook --merge, glyph data", lambda: by_runebook(options.program, files["xml"]))]
        print(f"{len(branches.base)} records, {len(branches.places)} places that both branches touched, "
              f"{len(branches.conflicts)} of them real conflicts")
        print(f"{'':30}{'conflicts':>10}{'false':>8}{'missed':>8}{'lost':>8}")
        is_good = True
        for title, merge in tools:
            merged = merge()
            if merged is None:
                print(f"{title:30}    FAILED: daff is not in the path; npm installs it under that name.")
                is_good = False
                continue
            found, rows = merged
            names = set().union(*found)
            false = sum(not each & branches.conflicts for each in found)
            missed = len(branches.conflicts - names)
            lost = branches.lost(rows, names)
            print(f"{title:30}{len(found):10}{false:8}{missed:8}{lost:8}")
            if title.startswith("runebook"):
                is_good = is_good and not false and not missed and not lost
    return 0 if is_good else 1


if __name__ == "__main__":
    sys.exit(main())
