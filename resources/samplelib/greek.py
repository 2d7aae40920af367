"""Greek: the monotonic alphabet, its symbols and the archaic letters."""

from .maker import number

NAMES = {
    0x370: "Heta-gr", 0x371: "heta-gr", 0x372: "Sampiarchaic-gr", 0x373: "sampiarchaic-gr",
    0x376: "Digammapamphylian-gr", 0x377: "digammapamphylian-gr", 0x37F: "Yot-gr", 0x3C2: "sigmafinal",
    0x3CF: "KaiSymbol-gr", 0x3D0: "betaSymbol-gr", 0x3D1: "thetaSymbol-gr", 0x3D2: "UpsilonhookSymbol-gr",
    0x3D3: "UpsilonacutehookSymbol-gr", 0x3D4: "UpsilondieresishookSymbol-gr", 0x3D5: "phiSymbol-gr",
    0x3D6: "piSymbol-gr", 0x3D7: "kaiSymbol-gr", 0x3D8: "Koppaarchaic-gr", 0x3D9: "koppaarchaic-gr",
    0x3DA: "Stigma-gr", 0x3DB: "stigma-gr", 0x3DC: "Digamma-gr", 0x3DD: "digamma-gr", 0x3DE: "Koppa-gr",
    0x3DF: "koppa-gr", 0x3E0: "Sampi-gr", 0x3E1: "sampi-gr", 0x3F0: "kappaSymbol-gr", 0x3F1: "rhoSymbol-gr",
    0x3F2: "sigmaLunateSymbol-gr", 0x3F3: "yot-gr", 0x3F4: "ThetaSymbol-gr", 0x3F5: "epsilonLunateSymbol-gr",
    0x3F7: "Sho-gr", 0x3F8: "sho-gr", 0x3F9: "SigmaLunateSymbol-gr", 0x3FA: "San-gr", 0x3FB: "san-gr",
}
COPTIC = range(0x3E2, 0x3F0)

# The accents that Greek letters are drawn with.
TONOS = {0x301: "tonos", 0x308: "dieresiscomb"}
WITH_BOTH = {0x390: ("iota", "dieresistonos"), 0x3B0: ("upsilon", "dieresistonos")}
SIGNS = ((0x374, "numeralsign-gr"), (0x375, "numeralsignlower-gr"), (0x37A, "ypogegrammeni"))


def order(sources):
    """By the alphabet, accented letters after their base; symbols and archaic letters at the end."""
    def key(glyph):
        code = glyph.codes[0]
        root = code
        while sources.canonical(root):
            root = sources.canonical(root)[0]
        alphabet = 0x391 <= root <= 0x3C9
        return not alphabet, glyph.case != "upper", root, code != root, code
    return key


def glyphs(maker):
    sources = maker.sources
    result = []
    for code in range(0x370, 0x3FC):
        if code not in sources.characters or code in COPTIC or sources.characters[code].category not in ("Lu", "Ll") \
                or not (code in NAMES or sources.usual_name(code)) or code in (0x37B, 0x37C, 0x37D):
            continue
        parts = sources.canonical(code)
        if parts:
            parts[1] = TONOS[parts[1]]
        result.append(maker.encoded(code, NAMES.get(code) or sources.usual_name(code), script="greek",
                                    components=list(WITH_BOTH.get(code, parts)), anchors=["bottom", "top"]))
    result.sort(key=order(sources))
    result += [maker.encoded(code, name, script="greek") for code, name in SIGNS]
    return number(result, "gr")
