#!/usr/bin/env python3
"""Make the sample glyph data file that ships with Runebook.

A reference table of some 2,000 glyphs as a type designer knows it, in the form in which Runebook itself writes
version 2. It is made from the Unicode Character Database (Debian's package "unicode-data"), the Adobe glyph lists
(Debian's package "aglfn") and the list of version 1.6 beside this program. The same sources give the same bytes.
The result is checked first; nothing is written when a flaw is found.

Python 3.9 or newer, standard library only.
"""

import argparse
import sys
from collections import Counter
from pathlib import Path

sys.dont_write_bytecode = True      # the folder holds data that are installed, no caches

from samplelib import (arabic, cyrillic, devanagari, figures, greek, hangul, latin, marks, punctuation,  # noqa: E402
                       symbols)
from samplelib.checks import flaws  # noqa: E402
from samplelib.finish import finish  # noqa: E402
from samplelib.glyph import file_text  # noqa: E402
from samplelib.maker import Maker  # noqa: E402
from samplelib.sources import Sources  # noqa: E402

HERE = Path(__file__).resolve().parent

# The order of the file.
BLOCKS = (latin, greek, cyrillic, arabic, devanagari, hangul, figures, punctuation, symbols, marks)


def make(sources):
    """All records, complete and in order."""
    maker = Maker(sources)
    glyphs = [glyph for block in BLOCKS for glyph in block.glyphs(maker)]
    finish(glyphs, sources)
    return glyphs


def summary(glyphs):
    lines = ["%6d records" % len(glyphs)]
    lines += ["%6d %s" % (count, script or "(no script)")
              for script, count in Counter(glyph.script for glyph in glyphs).most_common()]
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description="Make the sample glyph data file.")
    parser.add_argument("--unicode-dir", type=Path, default=Path("/usr/share/unicode"), metavar="DIR",
                        help="folder of UnicodeData.txt and ArabicShaping.txt")
    parser.add_argument("--aglfn-dir", type=Path, default=Path("/usr/share/aglfn"), metavar="DIR",
                        help="folder of glyphlist.txt")
    parser.add_argument("--out", type=Path, default=HERE / "sample.xml", metavar="FILE", help="file to write")
    parser.add_argument("--check", action="store_true",
                        help="write nothing; fail when the file differs from what would be written")
    args = parser.parse_args()

    try:
        sources = Sources(args.unicode_dir, args.aglfn_dir, HERE / "aglfn1.6.txt")
    except OSError as error:
        sys.exit("make_sample: %s" % error)
    glyphs = make(sources)
    found = flaws(glyphs, sources)
    if found:
        sys.exit("make_sample: the sample is not sound:\n" + "\n".join(found))
    text = file_text(glyphs).encode("ascii")
    if args.check:
        if not args.out.is_file() or args.out.read_bytes() != text:
            sys.exit("make_sample: %s is not up to date" % args.out)
    else:
        args.out.write_bytes(text)
        print(summary(glyphs))


if __name__ == "__main__":
    main()
