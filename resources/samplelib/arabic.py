"""Arabic: letters with positional forms, ligatures, vowel marks, figures and punctuation."""

from .glyph import Glyph
from .maker import number

# Code point, name without "-ar", skeleton and dots (drawn parts), in the order of the alphabet.
LETTERS = (
    (0x621, "hamza", ()), (0x627, "alef", ()), (0x623, "alefHamzaabove", ("alef", "hamzaabove")),
    (0x625, "alefHamzabelow", ("alef", "hamzabelow")), (0x622, "alefMadda", ("alef", "madda")),
    (0x671, "alefWasla", ("alef", "wasla")), (0x66E, "behDotless", ()),
    (0x628, "beh", ("behDotless", "dotbelow")), (0x67E, "peh", ("behDotless", "threedotsbelow")),
    (0x62A, "teh", ("behDotless", "twodotsabove")), (0x62B, "theh", ("behDotless", "threedotsabove")),
    (0x679, "tteh", ("behDotless", "tahabove")), (0x62C, "jeem", ("hah", "dotbelow")),
    (0x686, "tcheh", ()), (0x62D, "hah", ()), (0x62E, "khah", ("hah", "dotabove")), (0x62F, "dal", ()),
    (0x630, "thal", ("dal", "dotabove")), (0x688, "ddal", ("dal", "tahabove")), (0x631, "reh", ()),
    (0x632, "zain", ("reh", "dotabove")), (0x691, "rreh", ("reh", "tahabove")),
    (0x698, "jeh", ("reh", "threedotsabove")), (0x633, "seen", ()),
    (0x634, "sheen", ("seen", "threedotsabove")), (0x635, "sad", ()), (0x636, "dad", ("sad", "dotabove")),
    (0x637, "tah", ()), (0x638, "zah", ("tah", "dotabove")), (0x639, "ain", ()),
    (0x63A, "ghain", ("ain", "dotabove")), (0x6A1, "fehDotless", ()),
    (0x641, "feh", ("fehDotless", "dotabove")), (0x6A4, "veh", ("fehDotless", "threedotsabove")),
    (0x66F, "qafDotless", ()), (0x642, "qaf", ("qafDotless", "twodotsabove")), (0x643, "kaf", ()),
    (0x6A9, "keheh", ()), (0x6AD, "ng", ("kaf", "threedotsabove")), (0x6AF, "gaf", ()), (0x644, "lam", ()),
    (0x645, "meem", ()), (0x6BA, "noonghunna", ()), (0x646, "noon", ()), (0x647, "heh", ()),
    (0x629, "tehMarbuta", ()), (0x6BE, "hehDoachashmee", ()), (0x6C1, "hehgoal", ()),
    (0x6C2, "hehgoalHamzaabove", ("hehgoal", "hamzaabove")), (0x6C3, "tehMarbutagoal", ()),
    (0x6D5, "ae", ()), (0x6C0, "hehYehabove", ("ae", "hamzaabove")), (0x648, "waw", ()),
    (0x624, "wawHamzaabove", ("waw", "hamzaabove")), (0x6C5, "oeKirghiz", ()), (0x6C6, "oe", ()),
    (0x6C7, "u", ()), (0x6C8, "yu", ()), (0x6CB, "ve", ("waw", "threedotsabove")), (0x649, "alefMaksura", ()),
    (0x64A, "yeh", ("alefMaksura", "twodotsbelow")), (0x626, "yehHamzaabove", ("alefMaksura", "hamzaabove")),
    (0x6CC, "yehFarsi", ()), (0x6D0, "e", ()), (0x6D2, "yehbarree", ()),
    (0x6D3, "yehbarreeHamzaabove", ("yehbarree", "hamzaabove")),
)
FORMS = (("fina", "FINAL FORM", "<final>"), ("medi", "MEDIAL FORM", "<medial>"),
         ("init", "INITIAL FORM", "<initial>"))
BELOW = "_bottom", "bottom"
MARKS = (
    (0x64B, "fathatan", ()), (0x64C, "dammatan", ()), (0x64D, "kasratan", BELOW), (0x64E, "fatha", ()),
    (0x64F, "damma", ()), (0x650, "kasra", BELOW), (0x651, "shadda", ()), (0x652, "sukun", ()),
    (0x653, "madda", ()), (0x654, "hamzaabove", ()), (0x655, "hamzabelow", BELOW), (0x656, "alefbelow", BELOW),
    (0x657, "dammainverted", ()), (0x658, "noonghunnamark", ()), (0x670, "alefabove", ()),
)
VOWELS = ("fathatan", "dammatan", "kasratan", "fatha", "damma", "kasra", "shadda", "sukun", "alefabove")
DOTS = (("dotabove", "_top", 0xFBB2), ("dotbelow", "_bottom", 0xFBB3), ("twodotsabove", "_top", 0xFBB4),
        ("twodotsbelow", "_bottom", 0xFBB5), ("threedotsabove", "_top", 0xFBB6),
        ("threedotsbelow", "_bottom", 0xFBB9))
SIGNS_ABOVE = (("tahabove", "ARABIC SMALL TAH ABOVE"), ("wasla", "ARABIC WASLA ABOVE"))
LAM_ALEFS = ((0x627, "alef"), (0x623, "alefHamzaabove"), (0x625, "alefHamzabelow"), (0x622, "alefMadda"),
             (0x671, "alefWasla"))
DIGITS = ("zero", "one", "two", "three", "four", "five", "six", "seven", "eight", "nine")
PUNCTUATION = ((0x60C, "comma"), (0x61B, "semicolon"), (0x61F, "question"), (0x640, "kashida"),
               (0x66A, "percent"), (0x66B, "decimalseparator"), (0x66C, "thousandseparator"),
               (0x66D, "asterisk"), (0x6D4, "fullstop"))
RIAL = 0xFDFC
ALLAH = 0xFDF2
PUNCTUATION_CATEGORY = dict(category="Punctuation", sub_category="Other")


def suffixed(names, form=""):
    return [name + "-ar" + form for name in names]


def presentation_forms(sources):
    """(kind, code points): the compatibility code point that stands for a positional form."""
    return {(kind, tuple(parts)): "%04X" % code for code in list(range(0xFB50, 0xFBB2)) + list(range(0xFE80, 0xFEFD))
            if code in sources.characters for kind, parts in [sources.compatible(code)]}


def letter_with_forms(maker, code, name, parts, legacy):
    """The letter and the forms that its joining type asks for."""
    letter = maker.encoded(code, name + "-ar", script="arabic", direction="RTL", components=suffixed(parts),
                           anchors=["bottom", "top"], marks=suffixed(VOWELS))
    result = [letter]
    for suffix, note, kind in {"D": FORMS, "R": FORMS[:1]}.get(maker.sources.joining.get(code), ()):
        pieces = suffixed(parts[:1], "." + suffix) + suffixed(parts[1:])
        result.append(maker.form(letter, suffix, note, components=pieces, marks=list(letter.marks),
                                 legacy=legacy.get((kind, (code,)), "")))
    return result


def lam_alefs(maker, legacy):
    result = []
    for code, alef in LAM_ALEFS:
        for suffix, kind, parts in (("", "<isolated>", ["lam-ar.init", alef + "-ar.fina"]),
                                    (".fina", "<final>", ["lam-ar.medi", alef + "-ar.fina"])):
            result.append(maker.ligature(
                "lam_%s-ar%s" % (alef, suffix), parts, script="arabic", direction="RTL",
                production="uni0644%04X%s" % (code, suffix), legacy=legacy.get((kind, (0x644, code)), ""),
                description="ARABIC LIGATURE LAM WITH %s%s" % (
                    maker.sources.characters[code].title.replace("ARABIC LETTER ", ""),
                    ", FINAL FORM" if suffix else ""),
                anchors=["bottom_1", "top_1", "bottom_2", "top_2"], marks=suffixed(VOWELS)))
    result.append(maker.encoded(ALLAH, "allah-ar", sub_category="Ligature", script="arabic", direction="RTL",
                                components=suffixed(("alef",)) + ["lam-ar.init", "lam-ar.medi", "heh-ar.fina"]))
    return result


def vowel_marks(maker):
    result = [maker.encoded(code, name + "-ar", script="arabic", direction="RTL",
                            anchors=list(anchors or ("_top", "top"))) for code, name, anchors in MARKS]
    for name, anchor, code in DOTS:
        result.append(maker.encoded(code, name + "-ar", script="arabic", direction="RTL", category="Mark",
                                    sub_category="Nonspacing", anchors=[anchor, anchor[1:]]))
    for name, title in SIGNS_ABOVE:
        result.append(Glyph(name + "-ar", category="Mark", sub_category="Nonspacing", script="arabic",
                            direction="RTL", production=name, description=title,
                            anchors=["_top", "top"]))
    shadda = result[6]
    for code, vowel, _ in MARKS[:6]:
        name = "shadda_%s-ar" % vowel
        result.append(maker.ligature(name, ["shadda-ar", vowel + "-ar"], category="Mark", script="arabic",
                                     direction="RTL", production="uni0651%04X" % code, anchors=["_top", "top"],
                                     description="%s WITH %s" % (shadda.description, vowel.upper())))
    return result


def figures(maker):
    result = []
    for first, suffix in ((0x660, "-ar"), (0x6F0, "Farsi-ar")):
        result += [maker.encoded(first + i, name + suffix, script="arabic", direction="LTR")
                   for i, name in enumerate(DIGITS)]
    return result


def glyphs(maker):
    legacy = presentation_forms(maker.sources)
    result = []
    for code, name, parts in LETTERS:
        result += letter_with_forms(maker, code, name, parts, legacy)
    result += lam_alefs(maker, legacy) + vowel_marks(maker) + figures(maker)
    result += [maker.encoded(code, name + "-ar", script="arabic", direction="RTL", **PUNCTUATION_CATEGORY)
               for code, name in PUNCTUATION]
    result.append(maker.encoded(RIAL, "rial-ar", script="arabic", direction="RTL"))
    return number(result, "ar")
