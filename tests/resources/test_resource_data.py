#!/usr/bin/env python3
"""Tests of the data files in resources/ and of the programs that make them."""

import copy
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

RESOURCES = Path(__file__).resolve().parents[2] / "resources"
sys.path.insert(0, str(RESOURCES))
sys.dont_write_bytecode = True

from samplelib.checks import REFUSED_MARKS, flaws  # noqa: E402
from samplelib.glyph import Glyph  # noqa: E402
from samplelib.sources import Sources  # noqa: E402

PACKAGES = Path("/usr/share/aglfn/aglfn.txt"), Path("/usr/share/unicode/UnicodeData.txt")


def read_glyph_list():
    lines = (RESOURCES / "aglfn1.6.txt").read_text(encoding="ascii").splitlines()
    return [line.split(";") for line in lines if line and not line.startswith("#")]


class ListOnly(Sources):
    """The sources without the packages: the shipped list alone, which is all the production names need."""

    def __init__(self):
        self.new_font_names = {code: name for code, name, _ in read_glyph_list()}


class GlyphListTest(unittest.TestCase):
    def setUp(self):
        self.rows = read_glyph_list()
        self.code = {name: code for code, name, _ in self.rows}

    def test_mappings_of_this_version(self):
        for name, code in (("Delta", "0394"), ("Omega", "03A9"), ("mu", "03BC"), ("A", "0041"), ("afii10017", "0410"),
                           ("afii57929", "02BC"), ("Gcommaaccent", "0122"), ("tcommaaccent", "0163"),
                           ("sigma1", "03C2"), ("H18533", "25CF"), ("lira", "20A4")):
            self.assertEqual(self.code.get(name), code, name)
        codes = set(self.code.values())
        for code in ("2206", "2126", "00B5"):       # what the Greek letters had before and again later
            self.assertNotIn(code, codes)


class SampleTest(unittest.TestCase):
    def test_scripts_and_kinds_are_there(self):
        text = (RESOURCES / "sample.xml").read_text(encoding="ascii")
        for wanted in ('script="latin"', 'script="greek"', 'script="cyrillic"', 'script="arabic"',
                       'script="devanagari"', 'script="hangul"', 'direction="RTL"', 'case="smallCaps"',
                       'subCategory="Jamo"', 'subCategory="Syllable"', 'subCategory="Halfform"', "unicode2=",
                       'name="f_i" decompose="f, i"', 'unicodeLegacy="FE91" name="beh-ar.init"',
                       'name="ka_ssa-deva" sortName="deva0240" decompose="ka-deva, halant-deva, ssa-deva"',
                       'production="u1F600"', 'anchors="_top, top"', 'unicodeLegacy="F761" name="a.sc"'):
            self.assertIn(wanted, text)


def sound():
    """A small table without a flaw."""
    return [Glyph("A", codes=[0x41], category="Letter", sub_category="Uppercase", case="upper", script="latin",
                  anchors=["bottom", "top"], marks=["acutecomb"]),
            Glyph("acutecomb", codes=[0x301], category="Mark", sub_category="Nonspacing", anchors=["_top", "top"]),
            Glyph("Aacute", codes=[0xC1], category="Letter", components=["A", "acutecomb"]),
            Glyph("beh-ar", codes=[0x628], category="Letter", production="uni0628", direction="RTL")]


# What is done to the table, and the flaw that must be found: (glyph, field, value, part of the sentence).
BROKEN = (
    (2, "name", "A", "A: the name occurs twice"),
    (2, "name", "1A", "1A: not a valid name"),
    (2, "name", "A cute", "not a valid name"),
    (2, "alt_names", ["A"], "is a glyph's name"),
    (2, "alt_names", ["B", "B"], "B: the alternative name occurs twice"),
    (2, "codes", [0x41], "0041: the code point occurs twice"),
    (0, "codes", [0x41, 0x410, 0x391], "more than two code points"),
    (0, "codes", [0xD800], "not a code point"),
    (0, "codes", [0x110000], "not a code point"),
    (0, "category", "Letters", "in no vocabulary"),
    (0, "category", "", "in no vocabulary"),
    (0, "sub_category", "Capital", "in no vocabulary"),
    (0, "script", "Latin", "in no vocabulary"),
    (0, "case", "Upper", "in no vocabulary"),
    (0, "direction", "right", "in no vocabulary"),
    (0, "description", 'a "quoted" word', "cannot be written"),
    (0, "description", "two\nlines", "cannot be written"),
    (0, "description", "caf\u00e9", "cannot be written"),
    (0, "description", "<!-- note", "cannot be written"),
    (0, "description", "blank ", "cannot be written"),
    (2, "components", ["A", "grave"], "the component grave does not exist"),
    (0, "components", ["Aacute"], "A: is a component of itself"),
    (0, "marks", ["grave"], "grave is no mark"),
    (0, "marks", ["beh-ar"], "beh-ar is no mark"),
    (0, "anchors", ["bottom"], "no anchor for acutecomb"),
    (0, "anchors", ["top", "top"], "top occurs twice"),
    (0, "anchors", ["Top 1"], "not a valid anchor"),
    (3, "marks", REFUSED_MARKS.split(", "), "not read back"),
    (3, "production", "uni0629", "not the production name"),
    (3, "production", "", "a font file does not take beh-ar"),
    (3, "production", "Aacute", "two glyphs get this name"),
)


# Name, code point, production name.
PRODUCTION = (
    ("A", 0x41, ""), ("Acap", 0x41, "A"), ("A-cy", 0x410, "uni0410"), ("micro", 0xB5, "uni00B5"), ("mu", 0x3BC, ""),
    ("sigmafinal", 0x3C2, "uni03C2"), ("sigma1", 0x3C2, "uni03C2"), ("Tcedilla", 0x162, "uni0162"),
    ("boxLightHorizontal", 0x2500, "uni2500"), ("grinningFace", 0x1F600, "u1F600"), ("last", 0x10FFFF, ""),
    ("CR", 0x0D, ""), ("DEL", 0x7F, ""), ("return", 0x0D, "uni000D"))


class ProductionNameTest(unittest.TestCase):
    def test_names(self):
        for name, code, production in PRODUCTION:
            self.assertEqual(ListOnly().production_name(name, code), production, name)


class ChecksTest(unittest.TestCase):
    def test_a_sound_table_passes(self):
        self.assertEqual(flaws(sound(), ListOnly()), [])

    def test_every_flaw_is_found(self):
        for at, field, value, sentence in BROKEN:
            with self.subTest(field=field, value=value):
                glyphs = sound()
                self.assertTrue(hasattr(glyphs[at], field))
                setattr(glyphs[at], field, copy.copy(value))
                self.assertIn(sentence, "\n".join(flaws(glyphs, ListOnly())))


class ProgramsTest(unittest.TestCase):
    def run_program(self, name, *arguments):
        return subprocess.run([sys.executable, "-B", str(RESOURCES / name), *map(str, arguments)],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)

    def test_shipped_files_are_what_the_programs_make(self):
        for program, shipped in (("make_aglfn16.py", "aglfn1.6.txt"), ("make_sample.py", "sample.xml")):
            with self.subTest(program), tempfile.TemporaryDirectory() as folder:
                made = Path(folder) / "made"
                self.assertEqual(self.run_program(program, "--out", made).returncode, 0)
                self.assertEqual(made.read_bytes(), (RESOURCES / shipped).read_bytes())
                self.assertEqual(self.run_program(program, "--out", made, "--check").returncode, 0)
                made.write_bytes(made.read_bytes() + b"\n")
                self.assertNotEqual(self.run_program(program, "--out", made, "--check").returncode, 0)

    def test_a_source_of_another_version_is_refused(self):
        with tempfile.TemporaryDirectory() as folder:
            text = PACKAGES[0].read_text(encoding="ascii").replace("version: 1.7", "version: 1.8")
            (Path(folder) / "aglfn.txt").write_text(text, encoding="ascii")
            os.symlink(PACKAGES[0].parent / "glyphlist.txt", Path(folder) / "glyphlist.txt")
            made = Path(folder) / "made"
            result = self.run_program("make_aglfn16.py", "--source-dir", folder, "--out", made)
            self.assertIn(b"the head of the list has changed", result.stderr)
            self.assertFalse(made.exists())


if __name__ == "__main__":
    unittest.main()
