"""Punctuation with forms for capitals, and the spaces."""

from .glyph import Glyph

CODES = (
    tuple(range(0x21, 0x24)) + tuple(range(0x25, 0x2B)) + (0x2C, 0x2D, 0x2E, 0x2F, 0x3A, 0x3B, 0x3F, 0x40)
    + tuple(range(0x5B, 0x5E)) + (0x5F, 0x7B, 0x7D, 0xA1, 0xA7, 0xAB, 0xB6, 0xB7, 0xBB, 0xBF)
    + tuple(range(0x2010, 0x2028)) + tuple(range(0x2030, 0x2038)) + tuple(range(0x2039, 0x203F))
    + (0x2042, 0x2045, 0x2046, 0x2047, 0x2048, 0x2049, 0x204A, 0x2051, 0x2E17, 0x2E3A, 0x2E3B, 0x2308, 0x2309,
       0x230A, 0x230B, 0x27E8, 0x27E9))

NAMES = {
    0x2010: "hyphentwo", 0x2011: "nonbreakinghyphen", 0x2015: "horizontalbar", 0x2016: "dblverticalbar",
    0x201F: "quotedblreversed", 0x2023: "triangularbullet", 0x2027: "hyphenationpoint",
    0x2031: "pertenthousand", 0x2032: "minute", 0x2033: "second", 0x2034: "millisecond",
    0x2035: "primereversed", 0x2036: "primedblreversed", 0x2037: "primetriplereversed", 0x203B: "referencemark",
    0x203D: "interrobang", 0x203E: "overline", 0x2042: "asterism", 0x2045: "bracketleftquill",
    0x2046: "bracketrightquill", 0x2047: "questiondbl", 0x2048: "questionexclam", 0x2049: "exclamquestion",
    0x204A: "tironiansign", 0x2051: "asterisksvertical", 0x2E17: "hyphenoblique", 0x2E3A: "twoemdash",
    0x2E3B: "threeemdash", 0x2308: "ceilingleft", 0x2309: "ceilingright", 0x230A: "floorleft",
    0x230B: "floorright", 0x27E8: "angbracketleft", 0x27E9: "angbracketright", 0xB7: "periodcentered",
}
QUOTES = frozenset((0x22, 0x27, 0x201A, 0x201E))
FOR_CAPITALS = ("exclamdown", "questiondown", "parenleft", "parenright", "bracketleft", "bracketright",
                "braceleft", "braceright", "hyphen", "endash", "emdash", "guillemotleft", "guillemotright",
                "guilsinglleft", "guilsinglright", "periodcentered", "bullet", "at", "slash", "colon")
FOR_SMALL_CAPITALS = ("exclam", "exclamdown", "question", "questiondown", "ampersand")

# Which dots, marks and strokes a sign is made of.
COMPONENTS = {
    0x2024: ["period"], 0x2025: ["period"] * 2, 0x2026: ["period"] * 3, 0x203C: ["exclam"] * 2,
    0x2033: ["minute"] * 2, 0x2034: ["minute"] * 3, 0x2047: ["question"] * 2, 0x2048: ["question", "exclam"],
    0x2049: ["exclam", "question"], 0x2036: ["primereversed"] * 2, 0x2037: ["primereversed"] * 3,
    0x201C: ["quoteleft"] * 2, 0x201D: ["quoteright"] * 2, 0x201E: ["quotesinglbase"] * 2, 0x22: ["quotesingle"] * 2,
    0x2010: ["hyphen"], 0x2011: ["hyphen"], 0x201F: ["quotereversed"] * 2,
}

SPACES = (
    (0x20, "space"), (0xA0, "nbspace"), (0xAD, "softhyphen"), (0x2002, "enspace"), (0x2003, "emspace"),
    (0x2004, "threeperemspace"), (0x2005, "fourperemspace"), (0x2006, "sixperemspace"), (0x2007, "figurespace"),
    (0x2008, "punctuationspace"), (0x2009, "thinspace"), (0x200A, "hairspace"), (0x200B, "zerowidthspace"),
    (0x200C, "zerowidthnonjoiner"), (0x200D, "zerowidthjoiner"), (0x200E, "lefttorightmark"),
    (0x200F, "righttoleftmark"), (0x202A, "lefttorightembedding"), (0x202B, "righttoleftembedding"),
    (0x202C, "popdirectionalformatting"), (0x202D, "lefttorightoverride"), (0x202E, "righttoleftoverride"),
    (0x202F, "narrownbspace"), (0x205F, "mediumspace-math"), (0x2060, "wordjoiner"), (0x3000, "ideographicspace"),
    (0xFEFF, "zerowidthnobreakspace"), (0x0D, "CR"))


def punctuation(maker):
    result = []
    for code in CODES:
        fields = dict(components=list(COMPONENTS.get(code, ())))
        if code in QUOTES:
            fields["sub_category"] = "Quote"
        glyph = maker.encoded(code, NAMES.get(code) or maker.sources.usual_name(code), **fields)
        result.append(glyph)
        if glyph.name in FOR_CAPITALS:
            result.append(maker.form(glyph, "case", "FOR CAPITALS"))
        if glyph.name in FOR_SMALL_CAPITALS:
            result.append(maker.form(glyph, "sc", "FOR SMALL CAPITALS", case="smallCaps"))
    return result


def spaces(maker):
    result = []
    for code, name in SPACES:
        script = "math" if name.endswith("-math") else ""
        result.append(maker.encoded(code, name, script=script, components=["space"] if name == "nbspace" else []))
    result.append(Glyph(".notdef", category="Separator", sub_category="Other", description="MISSING GLYPH"))
    return result


def glyphs(maker):
    order = ("Other", "Dash", "Parenthesis", "Quote")
    found = punctuation(maker)
    return sorted(found, key=lambda glyph: order.index(glyph.sub_category)) + spaces(maker)
