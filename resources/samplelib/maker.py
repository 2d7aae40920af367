"""Makes records from characters, and forms from records."""

from .glyph import Glyph

# General category of the database: category and sub-category of the record.
CATEGORIES = {
    "Lu": ("Letter", "Uppercase"), "Ll": ("Letter", "Lowercase"), "Lt": ("Letter", "Other"),
    "Lm": ("Letter", "Modifier"), "Lo": ("Letter", "Other"), "Mn": ("Mark", "Nonspacing"),
    "Mc": ("Mark", "Spacing Combining"), "Me": ("Mark", "Enclosing"), "Nd": ("Number", "Decimal Digit"),
    "Nl": ("Number", "Letter"), "No": ("Number", "Other"), "Pc": ("Punctuation", "Other"),
    "Pd": ("Punctuation", "Dash"), "Ps": ("Punctuation", "Parenthesis"), "Pe": ("Punctuation", "Parenthesis"),
    "Pi": ("Punctuation", "Quote"), "Pf": ("Punctuation", "Quote"), "Po": ("Punctuation", "Other"),
    "Sm": ("Symbol", "Math"), "Sc": ("Symbol", "Currency"), "Sk": ("Symbol", "Modifier"),
    "So": ("Symbol", "Other"), "Zs": ("Separator", "Space"), "Cf": ("Separator", "Format"),
    "Cc": ("Separator", "Other"),
}

# Sub-categories that a compatibility decomposition tells.
KINDS = {"<super>": "Superscript", "<sub>": "Small", "<fraction>": "Fraction"}

CASES = {"Lu": "upper", "Ll": "lower"}

# Canonical combining class: the anchor at which a mark attaches.
ANCHORS = {1: "center", 202: "bottom", 216: "horn", 218: "bottom", 220: "bottom", 228: "top", 230: "top",
           232: "topright", 233: "bottom", 234: "top", 240: "bottom"}


def camel_case(words):
    """"RIGHT TACK" as "rightTack"."""
    words = [word.lower() for word in words.replace("-", " ").split()]
    return words[0] + "".join(word.capitalize() for word in words[1:])


class Maker:
    def __init__(self, sources):
        self.sources = sources

    def encoded(self, code, name, **fields):
        """The record of a character; what the database tells can be overridden."""
        char = self.sources.characters[code]
        category, sub_category = CATEGORIES[char.category]
        sub_category = KINDS.get(self.sources.compatible(code)[0], sub_category)
        values = dict(category=category, sub_category=sub_category, case=CASES.get(char.category, ""),
                      description=char.title, direction="BIDI" if char.mirrored else "")
        values.update(fields)
        return Glyph(name, codes=[code], **values)

    def mark(self, code, name, **fields):
        """The record of a combining mark, which attaches where its combining class says."""
        anchor = ANCHORS.get(self.sources.characters[code].combining)
        fields.setdefault("anchors", ["_" + anchor, anchor] if anchor else [])
        return self.encoded(code, name, **fields)

    def form(self, base, suffix, note, **fields):
        """A form of `base` without code point, named with a suffix."""
        values = dict(category=base.category, sub_category=base.sub_category, case=base.case, script=base.script,
                      direction=base.direction, description="%s, %s" % (base.description, note),
                      anchors=list(base.anchors))
        values.update(fields)
        return Glyph("%s.%s" % (base.name, suffix), base=base, **values)

    def ligature(self, name, components, **fields):
        """A ligature without code point; `components` are names."""
        values = dict(category="Letter", sub_category="Ligature", components=list(components))
        values.update(fields)
        return Glyph(name, **values)


def number(glyphs, prefix):
    """Sort names in the order given: steps of ten for the characters, of one for the forms beside them."""
    at = 0
    for glyph in glyphs:
        at = at + 1 if glyph.base is not None else (at // 10 + 1) * 10
        glyph.sort_name = "%s%04d" % (prefix, at)
    return glyphs
