"""Combining marks of the European scripts, and the spacing accents."""

# Short name, as it ends the names of letters with the mark: "Abreve", "Abreveacute".
SHORT_NAMES = {
    0x0300: "grave", 0x0301: "acute", 0x0302: "circumflex", 0x0303: "tilde", 0x0304: "macron",
    0x0305: "overline", 0x0306: "breve", 0x0307: "dotaccent", 0x0308: "dieresis", 0x0309: "hookabove",
    0x030A: "ring", 0x030B: "hungarumlaut", 0x030C: "caron", 0x030D: "verticallineabove",
    0x030E: "dblverticallineabove", 0x030F: "dblgrave", 0x0310: "candraBindu", 0x0311: "invertedbreve",
    0x0312: "commaturnedabove", 0x0313: "commaabove", 0x0314: "commareversedabove", 0x0315: "commaaboveright",
    0x031B: "horn", 0x0321: "hookpalatalizedbelow", 0x0322: "hookretroflexbelow", 0x0323: "dotbelow",
    0x0324: "dieresisbelow", 0x0325: "ringbelow", 0x0326: "commaaccent", 0x0327: "cedilla", 0x0328: "ogonek",
    0x0329: "verticallinebelow", 0x032C: "caronbelow", 0x032D: "circumflexbelow", 0x032E: "brevebelow",
    0x032F: "breveinvertedbelow", 0x0330: "tildebelow", 0x0331: "macronbelow", 0x0332: "lowline",
    0x0333: "dbllowline", 0x0334: "tildeoverlay", 0x0335: "strokeshortoverlay", 0x0336: "strokelongoverlay",
    0x0337: "slashshortoverlay", 0x0338: "slashlongoverlay", 0x0342: "perispomeni", 0x0345: "ypogegrammeni",
    0x035C: "brevedoublebelow", 0x035D: "brevedouble", 0x035E: "macrondouble", 0x035F: "macrondoublebelow",
    0x0360: "tildedouble", 0x0361: "breveinverteddouble",
}
ENCLOSING = ((0x20DD, "enclosingcircle"), (0x20DE, "enclosingsquare"), (0x20DF, "enclosingdiamond"),
             (0x20E0, "enclosingcirclebackslash"))
OGONEK = 0x328

# Flat forms for capitals.
HAVE_CAPITAL_FORM = ("gravecomb", "acutecomb", "circumflexcomb", "tildecomb", "macroncomb", "brevecomb",
                     "dotaccentcomb", "dieresiscomb", "hookabovecomb", "ringcomb", "hungarumlautcomb",
                     "caroncomb")

SPACING = ((0x60, "grave"), (0xA8, "dieresis"), (0xAF, "macron"), (0xB4, "acute"), (0xB8, "cedilla"),
           (0x2C6, "circumflex"), (0x2C7, "caron"), (0x2D8, "breve"), (0x2D9, "dotaccent"), (0x2DA, "ring"),
           (0x2DB, "ogonek"), (0x2DC, "tilde"), (0x2DD, "hungarumlaut"), (0x384, "tonos"),
           (0x385, "dieresistonos"), (0x2BB, "commaturnedmod"), (0x2BC, "apostrophemod"),
           (0x2BD, "commareversedmod"), (0x2BE, "ringhalfright"), (0x2BF, "ringhalfleft"),
           (0x2C8, "verticallinemod"), (0x2C9, "firsttonechinese"), (0x2CA, "secondtonechinese"),
           (0x2CB, "fourthtonechinese"), (0x2CC, "verticallinelowmod"), (0x2D0, "colontriangularmod"))


def combining(maker):
    result = []
    for code, short in sorted(SHORT_NAMES.items()):
        fields = dict(anchors=["_ogonek"]) if code == OGONEK else {}
        result.append(maker.mark(code, short + "comb", **fields))
        if result[-1].name in HAVE_CAPITAL_FORM:
            result.append(maker.form(result[-1], "case", "FOR CAPITALS"))
        if short == "caron":
            result.append(maker.form(result[-2], "alt", "VERTICAL, FOR ASCENDERS", anchors=["_topright"]))
        if short == "breve":
            mark = maker.form(result[-2], "cy", "CYRILLIC", script="cyrillic")
            mark.name = "brevecomb-cy"
            result.append(mark)
    result += [maker.mark(code, name + "comb") for code, name in ENCLOSING]
    return result


def spacing(maker):
    return [maker.encoded(code, name, sub_category="Modifier", category="Symbol") for code, name in SPACING]


def glyphs(maker):
    return combining(maker) + spacing(maker)
