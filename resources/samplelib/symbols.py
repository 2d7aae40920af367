"""Currency, mathematics, arrows, shapes, box drawing, music and pictures."""

from .maker import camel_case

CURRENCY = (
    (0x24, "dollar"), (0xA2, "cent"), (0xA3, "sterling"), (0xA4, "currency"), (0xA5, "yen"), (0x192, "florin"),
    (0x20A0, "eurocurrency"), (0x20A1, "colonmonetary"), (0x20A2, "cruzeiro"), (0x20A3, "franc"),
    (0x20A4, "lira"), (0x20A5, "mill"), (0x20A6, "naira"), (0x20A7, "peseta"), (0x20A8, "rupee"), (0x20A9, "won"),
    (0x20AA, "sheqel"), (0x20AB, "dong"), (0x20AC, "Euro"), (0x20AD, "kip"), (0x20AE, "tugrik"),
    (0x20B1, "peso"), (0x20B2, "guarani"), (0x20B4, "hryvnia"), (0x20B5, "cedi"), (0x20B8, "tenge"),
    (0x20B9, "rupeeIndian"), (0x20BA, "liraTurkish"), (0x20BC, "manat"), (0x20BD, "ruble"), (0x20BE, "lari"),
    (0x20BF, "bitcoin"))
TABULAR = ("dollar", "cent", "sterling", "yen", "Euro")

MATH = (
    0x2B, 0x3C, 0x3D, 0x3E, 0x5E, 0x7C, 0x7E, 0xA6, 0xAC, 0xB0, 0xB1, 0xB5, 0xD7, 0xF7, 0x2044, 0x2126, 0x2200,
    0x2202, 0x2203, 0x2204, 0x2205, 0x2206, 0x2207, 0x2208, 0x2209, 0x220B, 0x220F, 0x2210, 0x2211, 0x2212, 0x2213,
    0x2215, 0x2216, 0x2217, 0x2218, 0x2219, 0x221A, 0x221D, 0x221E, 0x221F, 0x2220, 0x2223, 0x2225, 0x2227, 0x2228,
    0x2229, 0x222A, 0x222B, 0x222C, 0x222D, 0x222E, 0x2234, 0x2235, 0x223C, 0x2243, 0x2245, 0x2248, 0x2260,
    0x2261, 0x2264, 0x2265, 0x226A, 0x226B, 0x2282, 0x2283, 0x2284, 0x2286, 0x2287, 0x2295, 0x2296, 0x2297,
    0x22A2, 0x22A5, 0x22C5, 0x22EE, 0x22EF, 0x2310, 0x2320, 0x2321)
MATH_NAMES = {
    0xB5: "micro", 0x2126: "Ohm", 0x2204: "existentialnot", 0x2206: "increment", 0x2210: "coproduct",
    0x2213: "minusplus", 0x2215: "divisionslash", 0x2216: "setminus", 0x2218: "ringoperator",
    0x2219: "bulletoperator", 0x2223: "divides", 0x2225: "parallel", 0x222C: "integraldbl",
    0x222D: "integraltriple", 0x222E: "contourintegral", 0x2235: "because", 0x2243: "asymptoticallyequal",
    0x226A: "muchless", 0x226B: "muchgreater", 0x2296: "circleminus", 0x22A2: "righttack", 0x22A5: "uptack",
    0x22EE: "ellipsisvertical", 0x22EF: "ellipsismid"}
MATH_COMPONENTS = {0x222C: ["integral"] * 2, 0x222D: ["integral"] * 3, 0x2126: ["Omega"], 0xB5: ["mu"]}
LETTERLIKE = (
    (0xA9, "copyright"), (0xAE, "registered"), (0x2103, "centigrade"), (0x2105, "careof"), (0x2109, "fahrenheit"),
    (0x2111, "IfrakturSymbol"), (0x2113, "literSign"), (0x2116, "numero"), (0x2117, "published"),
    (0x2118, "weierstrass"), (0x211C, "RfrakturSymbol"), (0x211E, "prescription"), (0x2120, "servicemark"),
    (0x2122, "trademark"), (0x212E, "estimated"), (0x2135, "alefSymbol"))
BLACK_LETTER = ("IfrakturSymbol", "RfrakturSymbol")
BOLD_CAPITALS = range(0x1D400, 0x1D41A)

ARROWS = (
    (0x2190, "arrowleft"), (0x2191, "arrowup"), (0x2192, "arrowright"), (0x2193, "arrowdown"), (0x2194, "arrowboth"),
    (0x2195, "arrowupdn"), (0x2196, "arrowupleft"), (0x2197, "arrowupright"), (0x2198, "arrowdownright"),
    (0x2199, "arrowdownleft"), (0x21A8, "arrowupdnbse"), (0x21B5, "carriagereturn"), (0x21D0, "arrowdblleft"),
    (0x21D1, "arrowdblup"), (0x21D2, "arrowdblright"), (0x21D3, "arrowdbldown"), (0x21D4, "arrowdblboth"))
SHAPES = (
    (0x25A0, "blackSquare"), (0x25A1, "whiteSquare"), (0x25AA, "blackSmallSquare"), (0x25AB, "whiteSmallSquare"),
    (0x25AC, "filledrect"), (0x25B2, "triagup"), (0x25B3, "whiteUpPointingTriangle"),
    (0x25B6, "blackRightPointingTriangle"), (0x25B7, "whiteRightPointingTriangle"), (0x25BA, "triagrt"),
    (0x25BC, "triagdn"), (0x25BD, "whiteDownPointingTriangle"), (0x25C0, "blackLeftPointingTriangle"),
    (0x25C1, "whiteLeftPointingTriangle"), (0x25C4, "triaglf"), (0x25C6, "blackDiamond"), (0x25C7, "whiteDiamond"),
    (0x25C9, "fisheye"), (0x25CA, "lozenge"), (0x25CB, "whiteCircle"), (0x25CC, "dottedCircle"),
    (0x25CF, "blackCircle"), (0x25D8, "invbullet"), (0x25D9, "invcircle"), (0x25E6, "openbullet"),
    (0x25EF, "largeCircle"))
BOX_DRAWING = range(0x2500, 0x2570)
BLOCKS = ((0x2580, "upblock"), (0x2584, "dnblock"), (0x2588, "block"), (0x258C, "lfblock"), (0x2590, "rtblock"),
          (0x2591, "ltshade"), (0x2592, "shade"), (0x2593, "dkshade"))
PICTURES = (
    (0x2302, "house"), (0x2605, "blackStar"), (0x2606, "whiteStar"), (0x263A, "smileface"),
    (0x263B, "invsmileface"), (0x263C, "sun"), (0x2640, "female"), (0x2642, "male"), (0x2660, "spade"),
    (0x2661, "heartWhite"), (0x2663, "club"), (0x2665, "heart"), (0x2666, "diamond"), (0x2713, "checkmark"),
    (0x2717, "ballotx"), (0x2767, "floralheartrotated"), (0xFFFD, "replacementCharacter"))
EMOJI = range(0x1F600, 0x1F610)
MUSIC = (
    (0x2669, "quarternote"), (0x266A, "musicalnote"), (0x266B, "musicalnotedbl"), (0x266D, "musicflat"),
    (0x266E, "musicnatural"), (0x266F, "musicsharp"), (0x1D100, "barlinesingle-musical"),
    (0x1D101, "barlinedouble-musical"), (0x1D102, "barlinefinal-musical"), (0x1D11E, "gClef-musical"),
    (0x1D121, "cClef-musical"), (0x1D122, "fClef-musical"), (0x1D13B, "wholeRest-musical"),
    (0x1D13C, "halfRest-musical"), (0x1D13D, "quarterRest-musical"), (0x1D13E, "eighthRest-musical"),
    (0x1D157, "noteheadVoid-musical"), (0x1D158, "noteheadBlack-musical"), (0x1D15D, "wholeNote-musical"),
    (0x1D165, "stem-musical"), (0x1D15E, "halfNote-musical"), (0x1D15F, "quarterNote-musical"))


def currency(maker):
    result = []
    for code, name in CURRENCY:
        # The hooked f is a letter by its character, and a currency sign by its name.
        glyph = maker.encoded(code, name, category="Symbol", sub_category="Currency", case="")
        result.append(glyph)
        if name in TABULAR:
            result.append(maker.form(glyph, "tf", "TABULAR"))
    return result


def mathematics(maker):
    result = [maker.encoded(code, MATH_NAMES.get(code) or maker.sources.usual_name(code), category="Symbol",
                            sub_category="Math", case="", components=list(MATH_COMPONENTS.get(code, ())))
              for code in MATH]
    for code, name in LETTERLIKE:
        script = "Black Letter" if name in BLACK_LETTER else ""
        result.append(maker.encoded(code, name, category="Symbol", sub_category="Other", case="", script=script))
    for i, code in enumerate(BOLD_CAPITALS):
        result.append(maker.encoded(code, "%sbold-math" % chr(ord("A") + i), script="math"))
    return result


def box_drawing(maker):
    """Those that the list for new fonts has, without the joints of single and double lines."""
    return [maker.encoded(code, camel_case("BOX " + maker.sources.characters[code].title.replace("BOX DRAWINGS ", "")),
                          sub_category="Geometry")
            for code in BOX_DRAWING if "%04X" % code in maker.sources.new_font_names
            and "SINGLE" not in maker.sources.characters[code].title]


def music(maker):
    result = []
    for code, name in MUSIC:
        fields = dict(script="musical", components=maker.sources.canonical(code))
        if name == "stem-musical":      # a mark by its character, without an anchor to attach at
            fields.update(category="Symbol", sub_category="Other")
        result.append(maker.encoded(code, name, **fields))
    return result


def glyphs(maker):
    result = currency(maker) + mathematics(maker)
    result += [maker.encoded(code, name, category="Symbol", sub_category="Arrow") for code, name in ARROWS]
    result += [maker.encoded(code, name, category="Symbol", sub_category="Geometry")
               for code, name in SHAPES + BLOCKS]
    result += box_drawing(maker) + music(maker)
    result += [maker.encoded(code, name) for code, name in PICTURES]
    result += [maker.encoded(code, camel_case(maker.sources.characters[code].title)) for code in EMOJI]
    return result
