"""What must hold for the sample. Each check yields one sentence for each flaw it finds."""

import re
from collections import Counter

CATEGORIES = frozenset(("Letter", "Number", "Punctuation", "Separator", "Symbol", "Mark"))
SUB_CATEGORIES = frozenset((
    "Uppercase", "Lowercase", "Other", "Nonspacing", "Spacing", "Arrow", "Compatibility", "Currency", "Dash",
    "Decimal Digit", "Digital Digit", "Enclosing", "Format", "Fraction", "Geometry", "Halfform", "Jamo", "Letter",
    "Ligature", "Math", "Matra", "Modifier", "Nonspace", "Parenthesis", "Quote", "Radical", "Small", "Smallcaps",
    "Space", "Spacing Combining", "Superscript", "Syllable", ""))
SCRIPTS = frozenset((
    "latin", "cyrillic", "greek", "arabic", "han", "kana", "oriya", "malayalam", "kannada", "tamil", "gurmukhi",
    "thai", "myanmar", "khmer", "lao", "armenian", "georgian", "tifinagh", "Black Letter", "adlam", "bengali",
    "bopomofo", "cherokee", "devanagari", "ethiopic", "gothic", "gujarati", "hangul", "hebrew", "hiragana",
    "katakana", "kayahli", "lepcha", "mandaic", "math", "mongolian", "musical", "nko", "pahawh hmong",
    "phaistosDisc", "roman", "samaritan", "sinhala", "syriac", "telugu", "tibet", "yi", ""))
CASES = frozenset(("upper", "lower", "smallCaps", "minor", ""))
DIRECTIONS = frozenset(("BIDI", "LTR", "RTL", "VTL", "VTR", ""))

NAME = re.compile(r"[A-Za-z._-][A-Za-z0-9._-]*$")
FINAL_NAME = re.compile(r"(\.notdef|[A-Za-z_][A-Za-z0-9._]{0,62})$")   # what a font file takes
ANCHOR = re.compile(r"_?[a-z]+(_[1-9])?$")
PRINTABLE = re.compile(r"[ !#-~]+$")       # ASCII, no double quote: values are written as they stand

# This one list of marks is not taken over by a record when it is read.
REFUSED_MARKS = ("fathatan-ar, dammatan-ar, fatha-ar, damma-ar, shadda-ar, sukun-ar, madda-ar, hamzaabove-ar, "
                 "noonghunna-ar, alefabove-ar, kasratan-ar, kasra-ar, hamzabelow-ar, alefbelow-ar")


def repeated(values):
    return sorted(value for value, count in Counter(values).items() if count > 1)


def check_names(glyphs):
    for name in repeated(glyph.name for glyph in glyphs):
        yield "%s: the name occurs twice" % name
    names = {glyph.name for glyph in glyphs}
    for glyph in glyphs:
        if not NAME.match(glyph.name):
            yield "%s: not a valid name" % glyph.name
        for alternative in glyph.alt_names:
            if alternative in names:
                yield "%s: the alternative name %s is a glyph's name" % (glyph.name, alternative)
    for name in repeated(name for glyph in glyphs for name in glyph.alt_names):
        yield "%s: the alternative name occurs twice" % name


def check_codes(glyphs):
    for code in repeated(code for glyph in glyphs for code in glyph.codes):
        yield "%04X: the code point occurs twice" % code
    for glyph in glyphs:
        if len(glyph.codes) > 2:
            yield "%s: a file does not hold more than two code points" % glyph.name
        if any(not 0 <= code < 0x110000 or 0xD800 <= code < 0xE000 for code in glyph.codes):
            yield "%s: not a code point" % glyph.name


def check_words(glyphs):
    for glyph in glyphs:
        for word, known in ((glyph.category, CATEGORIES), (glyph.sub_category, SUB_CATEGORIES),
                            (glyph.script, SCRIPTS), (glyph.case, CASES), (glyph.direction, DIRECTIONS)):
            if word not in known:
                yield "%s: the word %r is in no vocabulary" % (glyph.name, word)


def check_values(glyphs):
    for glyph in glyphs:
        for key, text in glyph.attributes():
            if not PRINTABLE.match(text) or text != text.strip() or "<!--" in text or "/>" in text:
                yield "%s: the %s cannot be written: %r" % (glyph.name, key, text)


def check_components(glyphs):
    parts_of = {glyph.name: glyph.components for glyph in glyphs}
    for glyph in glyphs:
        for part in glyph.components:
            if part not in parts_of:
                yield "%s: the component %s does not exist" % (glyph.name, part)
        if glyph.name in parts_within(glyph.name, parts_of):
            yield "%s: is a component of itself" % glyph.name


def parts_within(name, parts_of):
    """Every part of a glyph, and their parts."""
    found, ahead = set(), list(parts_of[name])
    while ahead:
        part = ahead.pop()
        if part not in found:
            found.add(part)
            ahead += parts_of.get(part, [])
    return found


def check_marks(glyphs):
    by_name = {glyph.name: glyph for glyph in glyphs}
    for glyph in glyphs:
        if ", ".join(glyph.marks) == REFUSED_MARKS:
            yield "%s: these marks are not read back" % glyph.name
        for name in repeated(glyph.anchors) + repeated(glyph.marks):
            yield "%s: %s occurs twice" % (glyph.name, name)
        for anchor in glyph.anchors:
            if not ANCHOR.match(anchor):
                yield "%s: not a valid anchor: %s" % (glyph.name, anchor)
        anchors = {re.sub(r"_\d$", "", anchor) for anchor in glyph.anchors}
        for name in glyph.marks:
            mark = by_name.get(name)
            if mark is None or mark.category != "Mark":
                yield "%s: %s is no mark" % (glyph.name, name)
            elif not any(a[1:] in anchors for a in mark.anchors if a.startswith("_")):
                yield "%s: no anchor for %s" % (glyph.name, name)


def check_production(glyphs, sources):
    for glyph in glyphs:
        if glyph.codes and glyph.production != sources.production_name(glyph.name, glyph.codes[0]):
            yield "%s: %s is not the production name of its code point" % (glyph.name, glyph.production)
        if not FINAL_NAME.match(glyph.production or glyph.name):
            yield "%s: a font file does not take %s" % (glyph.name, glyph.production or glyph.name)
    for name in repeated(glyph.production or glyph.name for glyph in glyphs):
        yield "%s: two glyphs get this name in a font file" % name


def flaws(glyphs, sources):
    """Sentences, one for each flaw; none when the sample is sound."""
    found = []
    for check in (check_names, check_codes, check_words, check_values, check_components, check_marks):
        found += check(glyphs)
    return found + list(check_production(glyphs, sources))
