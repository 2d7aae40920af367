#!/usr/bin/env python3
"""Restore table version 1.6 of the Adobe Glyph List For New Fonts.

Debian's package "aglfn" holds version 1.7 of that list, with a revision history at its head, and the
full Adobe Glyph List beside it. The history names all that 1.7 changed; this program undoes it:

* "Delta", "Omega" and "mu" go back to the Greek letters, as the entry of 1.5 gives them;
* the names that end in "commaaccent" and those that begin with "afii" come back, with the code points
  that the full list gives them. Names for private use code points stay out, because the list never had
  any (entry of 1.0: "removing the PUA area codes"), and so does a name whose code point has a name
  already (the same entry: "removing duplicate Unicode mappings").

The character names of the restored rows come from the Unicode Character Database (Debian's package
"unicode-data"). The same packages give the same bytes.

Python 3.9 or newer, standard library only.
"""

import argparse
import re
import sys
from pathlib import Path

OUTPUT = Path(__file__).resolve().parent / "aglfn1.6.txt"

# What the entry of 1.5 in the revision history says, word for word: old row, name, new row.
CHANGED_MAPPING = re.compile(r"#\s+[0-9A-F]{4};\w+;[A-Z ]+ changed to ([0-9A-F]{4};\w+;[A-Z ]+)$")

PRIVATE_USE = range(0xE000, 0xF900)


class SourceError(Exception):
    """The sources are not those that this program knows how to turn back."""


def read_lines(path):
    return path.read_text(encoding="ascii").splitlines()


def read_rows(lines):
    """The fields of every row that is neither a comment nor empty."""
    return [line.split(";") for line in lines if line and not line.startswith("#")]


def character_names(path):
    """Code point text to character name."""
    return {row[0]: row[1] for row in read_rows(read_lines(path))}


def restored_mappings(head):
    """The rows of "Delta", "Omega" and "mu" before 1.7, by glyph name."""
    rows = {}
    for line in head:
        match = CHANGED_MAPPING.match(line)
        if match:
            code, name, title = match.group(1).split(";")
            rows[name] = [code, name, title]
    if sorted(rows) != ["Delta", "Omega", "mu"]:
        raise SourceError("the revision history does not tell the old mappings")
    return rows


def removed_names(glyph_list, taken, titles):
    """The rows of the "afii" and "commaaccent" names; `taken` are the code points with a name."""
    rows = []
    for name, code in glyph_list:
        if not (name.startswith("afii") or name.endswith("commaaccent")):
            continue
        if int(code, 16) in PRIVATE_USE or code in taken:
            continue
        rows.append([code, name, titles[code]])
    return rows


def old_head(head):
    """The comments of 1.7 told as those of 1.6: its own history entry gone, version and date set back."""
    first = head.index("# 1.7 [6 November 2008]")
    last = head.index("# 1.6 [30 January 2006]")
    text = "\n".join(head[:first] + head[last:])
    for new, old in (("# Table version: 1.7\n", "# Table version: 1.6\n"),
                     ("# Date:          November 6, 2008\n",
                      "# Date:          January 30, 2006\n"
                      "# Restored:      by make_aglfn16.py from table version 1.7, by undoing what its\n"
                      "#                revision history tells; character names of the restored rows\n"
                      "#                from the Unicode Character Database\n")):
        if new not in text:
            raise SourceError("the head of the list has changed: " + new.strip())
        text = text.replace(new, old)
    return text.splitlines()


def restore(source_dir, unicode_data):
    """The whole text of version 1.6."""
    lines = read_lines(source_dir / "aglfn.txt")
    rows = read_rows(lines)
    head = lines[:next(i for i, line in enumerate(lines) if line and not line.startswith("#"))]

    changed = restored_mappings(head)
    rows = [changed.get(row[1], row) for row in rows]
    rows += removed_names(read_rows(read_lines(source_dir / "glyphlist.txt")),
                          {row[0] for row in rows}, character_names(unicode_data))
    rows.sort(key=lambda row: row[1])   # increasing ASCII order, as the head says

    for field, what in ((0, "code point"), (1, "glyph name")):
        if len({row[field] for row in rows}) != len(rows):
            raise SourceError("a %s occurs twice" % what)
    return "\n".join(old_head(head) + [";".join(row) for row in rows] + ["# END"]) + "\n"


def main():
    parser = argparse.ArgumentParser(description="Restore version 1.6 of the Adobe Glyph List For New Fonts.")
    parser.add_argument("--source-dir", type=Path, default=Path("/usr/share/aglfn"), metavar="DIR",
                        help="folder of aglfn.txt (version 1.7) and glyphlist.txt")
    parser.add_argument("--unicode-data", type=Path, default=Path("/usr/share/unicode/UnicodeData.txt"),
                        metavar="FILE", help="UnicodeData.txt of the Unicode Character Database")
    parser.add_argument("--out", type=Path, default=OUTPUT, metavar="FILE", help="list to write")
    parser.add_argument("--check", action="store_true",
                        help="write nothing; fail when the list differs from what would be written")
    args = parser.parse_args()
    try:
        text = restore(args.source_dir, args.unicode_data).encode("ascii")
    except (OSError, SourceError, ValueError) as error:
        sys.exit("make_aglfn16: %s" % error)
    if args.check:
        if not args.out.is_file() or args.out.read_bytes() != text:
            sys.exit("make_aglfn16: %s is not up to date" % args.out)
    else:
        args.out.write_bytes(text)


if __name__ == "__main__":
    main()
