"""Figures with their variants, fractions and Roman numerals."""

from .maker import number

DIGITS = ("zero", "one", "two", "three", "four", "five", "six", "seven", "eight", "nine")
VARIANTS = (("osf", "OLD-STYLE"), ("tf", "TABULAR"), ("tosf", "TABULAR OLD-STYLE"), ("numr", "NUMERATOR"),
            ("dnom", "DENOMINATOR"))
SUPERIORS = (0x2070, 0xB9, 0xB2, 0xB3, 0x2074, 0x2075, 0x2076, 0x2077, 0x2078, 0x2079)
INFERIORS = range(0x2080, 0x208A)
CIRCLED = (0x24EA,) + tuple(range(0x2460, 0x2469))
FRACTIONS = (0xBD, 0x2153, 0x2154, 0xBC, 0xBE, 0x2155, 0x2156, 0x2157, 0x2158, 0x2159, 0x215A, 0x215B, 0x215C,
             0x215D, 0x215E)
FRACTION_NAMES = {0x2155: "onefifth", 0x2156: "twofifths", 0x2157: "threefifths", 0x2158: "fourfifths",
                  0x2159: "onesixth", 0x215A: "fivesixths"}
ROMAN = tuple(range(0x2160, 0x216C)) + tuple(range(0x2170, 0x217C))
SLASH = 0x2044


def digit_forms(maker, digit, name):
    result = []
    for suffix, note in VARIANTS:
        fields = dict(sub_category="Small", case="minor") if suffix in ("numr", "dnom") else {}
        if suffix == "osf":
            fields["legacy"] = maker.sources.private_codes[name + "oldstyle"]
        result.append(maker.form(digit, suffix, note, **fields))
    if name == "zero":
        result.append(maker.form(digit, "zero", "SLASHED"))
    return result


def fraction(maker, code):
    name = FRACTION_NAMES.get(code) or maker.sources.usual_name(code)
    parts = maker.sources.compatible(code)[1]
    at = parts.index(SLASH)
    over = [DIGITS[part - 0x30] + ".numr" for part in parts[:at]]
    under = [DIGITS[part - 0x30] + ".dnom" for part in parts[at + 1:]]
    return maker.encoded(code, name, components=over + ["fraction"] + under)


def roman(maker, code):
    """Named like the letters they are made of."""
    upper = code < 0x2170
    name = maker.sources.characters[code].title.split("NUMERAL ")[1].replace(" ", "").lower()
    return maker.encoded(code, (name.capitalize() if upper else name) + "-roman", script="roman",
                         case="upper" if upper else "lower", components=maker.sources.compatible(code)[1])


def glyphs(maker):
    result = []
    for i, name in enumerate(DIGITS):
        digit = maker.encoded(0x30 + i, name)
        result += [digit] + digit_forms(maker, digit, name)
    for codes, ending, sub_category in ((SUPERIORS, "superior", "Superscript"), (INFERIORS, "inferior", "Small")):
        result += [maker.encoded(code, DIGITS[i] + ending, sub_category=sub_category, case="minor")
                   for i, code in enumerate(codes)]
    result += [maker.encoded(code, DIGITS[i] + "circle", sub_category="Enclosing") for i, code in enumerate(CIRCLED)]
    result += [fraction(maker, code) for code in FRACTIONS]
    result += [roman(maker, code) for code in ROMAN]
    return number(result, "fig")
