"""Cyrillic: the letters of the block, with localised forms."""

from .maker import number

# Lower-case names; the capital's begins with a capital letter. The others follow the character names.
NAMES = {
    0x0435: "ie-cy", 0x0438: "ii-cy", 0x0439: "iishort-cy", 0x044B: "yeru-cy", 0x044D: "ereversed-cy",
    0x0454: "e-cy", 0x0456: "i-cy", 0x045D: "iigrave-cy", 0x0453: "gje-cy", 0x045C: "kje-cy",
    0x048B: "iishorttail-cy", 0x04A1: "kabashkir-cy", 0x04A5: "enghe-cy", 0x04A9: "haabkhasian-cy",
    0x04AF: "ustraight-cy", 0x04B1: "ustraightstroke-cy", 0x04B5: "tetse-cy", 0x04BD: "cheabkhasian-cy",
    0x04BF: "chedescenderabkhasian-cy", 0x04CC: "chekhakassian-cy", 0x04D5: "aie-cy", 0x04E1: "dzeabkhasian-cy",
    0x04E3: "iimacron-cy", 0x04E5: "iidieresis-cy", 0x04E9: "obarred-cy", 0x04EB: "obarreddieresis-cy",
    0x04ED: "ereverseddieresis-cy", 0x04F3: "uhungarumlaut-cy",
}
PALOCHKA = 0x4C0
LEFT_OUT = frozenset(range(0x460, 0x48A))    # historic letters, thousands sign and combining marks
BREVE = 0x306
LOCALISED = {"loclBGR": ("BULGARIAN", ("ve-cy", "ghe-cy", "de-cy", "zhe-cy", "ze-cy", "ii-cy", "ka-cy", "el-cy",
                                       "pe-cy", "te-cy", "tse-cy", "sha-cy", "shcha-cy", "softsign-cy",
                                       "hardsign-cy", "yu-cy", "De-cy", "El-cy", "Ef-cy")),
             "loclSRB": ("SERBIAN", ("be-cy", "ghe-cy", "de-cy", "pe-cy", "te-cy"))}


def name_from_title(title):
    """"CYRILLIC SMALL LETTER KA WITH DESCENDER" as "kadescender-cy"."""
    words = title.replace("CYRILLIC ", "").replace("-", " ").split()
    words = [w for w in words if w not in ("CAPITAL", "SMALL", "LETTER", "WITH", "AND")]
    return "".join(words).lower().replace("diaeresis", "dieresis") + "-cy"


def glyph_name(sources, code):
    title = sources.characters[code].title
    upper = sources.characters[code].category == "Lu"
    lower = code
    if upper and code != PALOCHKA:
        lower = code + 0x20 if 0x410 <= code < 0x430 else code + 0x50 if code < 0x410 else \
            code + 1
    name = NAMES.get(lower) if code != PALOCHKA else "palochka-cy"
    name = name or name_from_title(title)
    return name[0].upper() + name[1:] if upper else name


def key(sources):
    """Capitals, then lower case; letters of the Russian alphabet where they stand there, then the others."""
    def of(glyph):
        code = glyph.codes[0]
        parts = sources.canonical(code)
        root = parts[0] if parts else code
        common = 0x410 <= root < 0x450
        return glyph.case != "upper", not common, root if common else code, bool(parts), code
    return of


def glyphs(maker):
    sources = maker.sources
    letters = []
    for code in range(0x400, 0x500):
        if code in LEFT_OUT:
            continue
        parts = sources.canonical(code)
        if parts and parts[1] == BREVE:
            parts[1] = "brevecomb-cy"
        letters.append(maker.encoded(code, glyph_name(sources, code), script="cyrillic", components=parts,
                                     anchors=["bottom", "top"]))
    letters.sort(key=key(sources))
    result = []
    for letter in letters:
        result.append(letter)
        result += [maker.form(letter, suffix, language) for suffix, (language, names) in LOCALISED.items()
                   if letter.name in names]
    return number(result, "cy")
