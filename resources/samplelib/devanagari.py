"""Devanagari: letters, vowel signs, half forms and conjuncts."""

from .maker import camel_case, number

LETTERS = tuple(range(0x904, 0x93A)) + tuple(range(0x958, 0x962)) + tuple(range(0x972, 0x978)) + \
    tuple(range(0x979, 0x980))
CONSONANTS = range(0x915, 0x93A)
HALANT, RA = 0x94D, 0x930
MATRAS = tuple(range(0x93A, 0x93C)) + tuple(range(0x93E, 0x94D)) + (0x94E, 0x94F, 0x955, 0x956, 0x957, 0x962, 0x963)
SIGNS = (0x900, 0x901, 0x902, 0x903, 0x93C, HALANT, 0x951, 0x952)
OTHERS = (0x93D, 0x950, 0x964, 0x965, 0x970, 0x971)
DIGITS = range(0x966, 0x970)
NAMES = {0x900: "candraBinduInverted-deva", 0x901: "candraBindu-deva", HALANT: "halant-deva",
         0x965: "dbldanda-deva", 0x970: "abbreviation-deva", 0x971: "highspacingdot-deva",
         0x951: "udatta-deva", 0x952: "anudatta-deva", 0x97D: "glottalstop-deva",
         0x94E: "ePrishthamatra-deva", 0x955: "eCandraLongMatra-deva"}
SYLLABLE_MARKS = ("candraBindu-deva", "anusvara-deva", "nukta-deva", "udatta-deva", "anudatta-deva")
BELOW = frozenset((0x93C, HALANT, 0x941, 0x942, 0x943, 0x944, 0x952, 0x956, 0x957, 0x962, 0x963))

# Conjuncts in use, by first letter.
CONJUNCTS = """
ka_ka ka_ta ka_ra ka_la ka_va ka_ssa  kha_ra  ga_na ga_ra  gha_na gha_ra  nga_ka nga_kha nga_ga nga_gha nga_ma
ca_ca ca_ra  ja_ja ja_nya ja_ra  nya_ca nya_ja  tta_tta tta_ttha tta_ya  ttha_ttha ttha_ya  dda_ga dda_dda
dda_ya  ddha_ya  ta_ta ta_na ta_ra  tha_ra  da_ga da_gha da_da da_dha da_na da_ba da_bha da_ma da_ya da_ra da_va
dha_na dha_ra  na_na na_ra  pa_ta pa_na pa_ra pa_la  pha_ra  ba_ja ba_na ba_ra  bha_na bha_ra  ma_na ma_ra ma_la
la_la  va_ra  sha_ca sha_na sha_ra sha_la sha_va  ssa_tta ssa_ttha  sa_ra sa_na  ha_nna ha_na ha_ma ha_ya ha_ra
ha_la ha_va
""".split()


def glyph_name(sources, code):
    if code in NAMES:
        return NAMES[code]
    words = sources.characters[code].title.replace("DEVANAGARI ", "").split()
    kind = ""
    if words[:2] == ["VOWEL", "SIGN"]:
        words, kind = words[2:], "Matra"
    elif words[0] in ("LETTER", "SIGN", "DIGIT"):
        words = words[1:]
    # "VOCALIC R" and "SHORT E" are sought by the vowel.
    if len(words) > 1 and words[0] in ("VOCALIC", "SHORT", "CANDRA", "MARWARI", "HEAVY"):
        words = words[1:] + words[:1]
    return camel_case(" ".join(words)) + kind + "-deva"


def conjunct(maker, name, codes):
    parts = [codes[part] for part in name.split("_")]
    with_halant = [parts[0], HALANT, parts[1]]
    titles = [maker.sources.characters[part].title.replace("DEVANAGARI LETTER ", "") for part in parts]
    return maker.ligature(name + "-deva", with_halant, script="devanagari",
                          production="uni" + "".join("%04X" % part for part in with_halant),
                          description="DEVANAGARI CONJUNCT " + " ".join(titles),
                          anchors=["bottom", "top"], marks=list(SYLLABLE_MARKS))


def half_form(maker, letter):
    return maker.form(letter, "half", "HALF FORM", sub_category="Halfform", components=[letter.name, "halant-deva"],
                      anchors=[])


def ra_forms(maker, ra):
    """Ra joins the next letter from above and the one before from below."""
    mark = dict(category="Mark", sub_category="Nonspacing")
    return [maker.form(ra, "reph", "ABOVE THE FOLLOWING SYLLABLE", components=["ra-deva", "halant-deva"],
                       anchors=["_top", "top"], **mark),
            maker.form(ra, "rakar", "BELOW THE PRECEDING LETTER", components=["halant-deva", "ra-deva"],
                       anchors=["_bottom", "bottom"], **mark)]


def letters(maker):
    """Every letter, a consonant followed by its forms and the conjuncts that begin with it."""
    consonants = {glyph_name(maker.sources, code).partition("-")[0]: code for code in CONSONANTS}
    result = []
    for code in LETTERS:
        letter = maker.encoded(code, glyph_name(maker.sources, code), script="devanagari", anchors=["bottom", "top"],
                               components=maker.sources.canonical(code), marks=list(SYLLABLE_MARKS))
        result.append(letter)
        if code in CONSONANTS:
            result += ra_forms(maker, letter) if code == RA else [half_form(maker, letter)]
            first = letter.name.partition("-")[0] + "_"
            result += [conjunct(maker, name, consonants) for name in CONJUNCTS if name.startswith(first)]
    return result


def marks(maker):
    result = []
    for code in SIGNS + MATRAS:
        fields = dict(sub_category="Matra") if code in MATRAS else {}
        if maker.sources.characters[code].category == "Mn":
            anchor = "bottom" if code in BELOW else "top"
            fields["anchors"] = ["_" + anchor, anchor]
        result.append(maker.encoded(code, glyph_name(maker.sources, code), script="devanagari", **fields))
    return result


def glyphs(maker):
    result = letters(maker) + marks(maker)
    result += [maker.encoded(code, glyph_name(maker.sources, code), script="devanagari")
               for code in tuple(DIGITS) + OTHERS]
    return number(result, "deva")
