"""Latin: letters, small capitals, alternates and ligatures."""

from .marks import SHORT_NAMES

RANGES = ((0x41, 0x5B), (0x61, 0x7B), (0xAA, 0xAB), (0xBA, 0xBB), (0xC0, 0xD7), (0xD8, 0xF7), (0xF8, 0x200),
          (0x218, 0x21C), (0x226, 0x22A), (0x232, 0x234), (0x237, 0x238), (0x23A, 0x23F), (0x241, 0x246),
          (0x1E80, 0x1E86), (0x1E9E, 0x1E9F), (0x1EA0, 0x1EFA))

# Of Latin Extended Additional, what Irish, Semitic and Indic transliterations use; pairs of capital and small.
TRANSLITERATION = tuple(code + i for i in (0, 1) for code in (
    0x1E02, 0x1E0A, 0x1E0C, 0x1E0E, 0x1E10, 0x1E1E, 0x1E20, 0x1E24, 0x1E2A, 0x1E32, 0x1E34, 0x1E36, 0x1E38,
    0x1E40, 0x1E42, 0x1E44, 0x1E46, 0x1E48, 0x1E56, 0x1E5A, 0x1E5C, 0x1E60, 0x1E62, 0x1E6A, 0x1E6C, 0x1E6E,
    0x1E7E, 0x1E8C, 0x1E8E, 0x1E90, 0x1E92))

# Letters of the ranges that type designers hardly meet; the florin stands among the currency signs.
RARE = frozenset(
    [0x184, 0x185, 0x18D, 0x192, 0x195, 0x19B, 0x19C, 0x1A2, 0x1A3, 0x1A6, 0x1A7, 0x1A8, 0x1AA, 0x1AB, 0x1B8,
     0x1B9, 0x1BA, 0x1BB, 0x1BC, 0x1BD, 0x1BE, 0x1BF, 0x1F6, 0x1F7]
    + list(range(0x1C0, 0x1C4)))

# Lower case of African capitals, outside the ranges.
AFRICAN = (0x250, 0x251, 0x253, 0x254, 0x256, 0x257, 0x259, 0x25B, 0x260, 0x263, 0x268, 0x269, 0x272,
           0x275, 0x283, 0x288, 0x289, 0x28A, 0x28B, 0x28C, 0x292, 0x2C65, 0x2C6D, 0x2C6F)

# Usual names that no glyph list has, or that differ from those of the lists.
NAMES = {
    0x162: "Tcedilla", 0x163: "tcedilla", 0x18E: "Ereversed", 0x194: "Gamma-latin", 0x263: "gamma-latin",
    0x196: "Iota-latin", 0x269: "iota-latin", 0x1B1: "Upsilon-latin", 0x28A: "upsilon-latin",
    0x19F: "Obarred", 0x275: "obarred", 0x1DD: "eturned", 0x237: "dotlessj",
    0x23A: "Astroke", 0x2C65: "astroke", 0x23B: "Cstroke",
    0x23C: "cstroke", 0x23D: "Lbar", 0x23E: "Tstroke", 0x241: "Glottalstop", 0x242: "glottalstop",
    0x243: "Bstroke", 0x244: "Ubar", 0x289: "ubar", 0x245: "Vturned", 0x28C: "vturned", 0x1E9E: "Germandbls",
    0x250: "aturned", 0x2C6F: "Aturned",
    0x251: "alpha-latin", 0x2C6D: "Alpha-latin", 0x21A: "Tcommaaccent", 0x21B: "tcommaaccent",
    0x1E10: "Dcommaaccent", 0x1E11: "dcommaaccent", 0x1C5: "Dzcaron", 0x1C8: "Lj", 0x1CB: "Nj", 0x1F2: "Dz",
    0x256: "dtail", 0x259: "schwa", 0x28B: "vhook", 0x19D: "Nhookleft", 0x272: "nhookleft",
    0x1FE: "Oslashacute", 0x1FF: "oslashacute",
}

# Letters whose drawing differs from their canonical decomposition.
DRAWN = {
    0x10F: ("d", "caroncomb.alt"), 0x13D: ("L", "caroncomb.alt"), 0x13E: ("l", "caroncomb.alt"),
    0x165: ("t", "caroncomb.alt"), 0x123: ("g", "commaturnedabovecomb"), 0x132: ("I", "J"), 0x133: ("i", "j"),
    0x13F: ("L", "periodcentered"), 0x140: ("l", "periodcentered"), 0x149: ("quoteright", "n"),
    0x1C4: ("D", "Zcaron"), 0x1C5: ("D", "zcaron"), 0x1C6: ("d", "zcaron"), 0x1C7: ("L", "J"),
    0x1C8: ("L", "j"), 0x1C9: ("l", "j"), 0x1CA: ("N", "J"), 0x1CB: ("N", "j"), 0x1CC: ("n", "j"),
    0x1F1: ("D", "Z"), 0x1F2: ("D", "z"), 0x1F3: ("d", "z"),
}
COMMA_BELOW = frozenset((0x122, 0x136, 0x137, 0x13B, 0x13C, 0x145, 0x146, 0x156, 0x157, 0x1E10, 0x1E11))
CEDILLA, COMMA = 0x327, 0x326
DOTLESS = {0x69: 0x131, 0x6A: 0x237}
ABOVE = 230

NO_SMALL_CAPITAL = frozenset(("napostrophe", "kgreenlandic", "longs", "dotlessi"))

ALTERNATES = (("a", "ss01"), ("g", "ss01"), ("l", "ss01"), ("y", "ss01"), ("G", "ss01"), ("Q", "ss01"),
              ("R", "ss01"), ("a", "ss02"), ("f", "ss02"), ("t", "ss02"), ("A", "swsh"), ("M", "swsh"),
              ("N", "swsh"), ("R", "swsh"), ("longs", "hist"), ("Eng", "loclNSM"), ("i", "loclTRK"))

LIGATURES = ("c_h", "c_k", "c_t", "f_b", "f_f", "f_f_i", "f_f_j", "f_f_l", "f_f_t", "f_h", "f_i", "f_iacute",
             "f_j", "f_k", "f_l", "f_t", "g_j", "q_u", "s_p", "s_t", "t_f", "t_t", "f_f.sc", "T_h", "T_T",
             "Q_u")
ENCODED_LIGATURES = ((0xFB00, "ff", "ff"), (0xFB01, "fi", "fi"), (0xFB02, "fl", "fl"), (0xFB03, "ffi", "ffi"),
                     (0xFB04, "ffl", "ffl"))


def by_name(glyph):
    return glyph.name.casefold(), glyph.name


def letter_name(sources, code, names):
    """The usual name; else that of the base letter with the mark's short name."""
    if code in NAMES:
        return NAMES[code]
    name = sources.usual_name(code)
    parts = sources.canonical(code)
    if not name and len(parts) == 2:
        name = names[parts[0]] + SHORT_NAMES[parts[1]]
    if not name:
        raise KeyError("no name for U+%04X %s" % (code, sources.characters[code].title))
    return name


def components(sources, code):
    """Base and mark as a designer builds the letter."""
    if code in DRAWN:
        return list(DRAWN[code])
    parts = sources.canonical(code)
    if not parts:
        return []
    if parts[1] == CEDILLA and code in COMMA_BELOW:
        parts[1] = COMMA
    if sources.characters[parts[1]].combining == ABOVE:
        parts[0] = DOTLESS.get(parts[0], parts[0])
    return parts


def letters(maker):
    sources = maker.sources
    names, result = {}, []
    wanted = [code for first, end in RANGES for code in range(first, end)]
    # In this order the name of a base letter is known before it is asked for.
    for code in wanted + list(TRANSLITERATION + AFRICAN):
        if code in RARE:
            continue
        names[code] = letter_name(sources, code, names)
        fields = dict(script="latin", components=components(sources, code), anchors=["bottom", "top"])
        if code in (0xAA, 0xBA):
            fields.update(sub_category="Superscript", case="minor", anchors=[])
        result.append(maker.encoded(code, names[code], **fields))
    return result


def small_capital_code(sources, name):
    """The private use code point that old fonts had for a small capital."""
    capital = name.upper() if name in ("ae", "oe") else name[0].upper() + name[1:]
    return sources.private_codes.get(capital + "small", "")


def small_capitals(maker, lower):
    """Small capitals of the letters up to the end of Latin Extended-A, built like those."""
    bases = [g for g in lower if g.codes[0] < 0x180 and g.name not in NO_SMALL_CAPITAL]
    names = {g.codes[0]: g.name for g in lower}
    available = {g.name for g in bases}

    def part_name(part):
        name = names.get(part, part)
        name = {"dotlessi": "i", "dotlessj": "j"}.get(name, name)   # a small capital has no dot
        return name + ".sc" if name in available else name

    return [maker.form(glyph, "sc", "SMALL CAPITAL", sub_category="Smallcaps", case="smallCaps",
                       components=[part_name(part) for part in glyph.components],
                       legacy=small_capital_code(maker.sources, glyph.name))
            for glyph in bases]


def alternates(maker, all_letters):
    notes = {"ss01": "STYLISTIC SET 1", "ss02": "STYLISTIC SET 2", "swsh": "SWASH", "hist": "HISTORICAL",
             "loclNSM": "NORTHERN SAMI", "loclTRK": "TURKISH"}
    by_glyph_name = {g.name: g for g in all_letters}
    return [maker.form(by_glyph_name[name], suffix, notes[suffix]) for name, suffix in ALTERNATES]


def ligatures(maker):
    result = []
    for name in LIGATURES:
        stem, _, suffix = name.partition(".")
        parts = [part + ("." + suffix if suffix else "") for part in stem.split("_")]
        case = "smallCaps" if suffix else "upper" if stem.replace("_", "").isupper() else \
            "lower" if stem.islower() else ""
        anchors = [anchor for i in range(1, len(parts) + 1) for anchor in ("bottom_%d" % i, "top_%d" % i)]
        result.append(maker.ligature(
            name, parts, case=case, script="latin", anchors=anchors,
            description="LATIN LIGATURE " + " ".join(part.partition(".")[0].upper() for part in parts)
                        + (", SMALL CAPITAL" if suffix else "")))
    for code, name, letters_of in ENCODED_LIGATURES:
        result.append(maker.encoded(code, name, sub_category="Ligature", script="latin",
                                    components=list(letters_of)))
    return sorted(result, key=by_name)


def glyphs(maker):
    found = letters(maker)
    upper = sorted((g for g in found if g.case == "upper"), key=by_name)
    title = sorted((g for g in found if g.sub_category == "Other"), key=by_name)
    lower = sorted((g for g in found if g.case == "lower"), key=by_name)
    superior = sorted((g for g in found if g.sub_category == "Superscript"), key=by_name)
    return (upper + title + lower + small_capitals(maker, lower) + alternates(maker, found)
            + ligatures(maker) + superior)
