# MenuTitle: Fill Production Names
__doc__ = """
Gives glyphs without production name one: the name of the glyph list for their code
point, else uniXXXX; names with an ending such as ".sc" get that of their base glyph.
"""

STANDARD_NAMES = VXGlyphInfo.aglfn()


def name_for_code_point(code):
    if code in STANDARD_NAMES:
        return STANDARD_NAMES[code]
    return ("uni%04X" if len(code) <= 4 else "u%X") % hexStringToInt(code)


def production_name(info):
    """The name to set, or None when there is nothing to go by."""
    if info.unicode:
        return name_for_code_point(info.unicode)
    base, dot, ending = info.name.partition(".")
    if dot and base and base in Doc:
        base_info = Doc[base]
        base_name = base_info.production or production_name(base_info)
        return base_name and base_name + dot + ending
    return None


filled = []
with undoGroup("Fill Production Names"):
    for info in progress(Doc, "Filling production names"):
        if info.production or not info.name:
            continue
        name = production_name(info)
        # The name itself serves where it is the production name.
        if name and name != info.name:
            info.production = name
            filled.append(info)

for info in filled[:8]:
    print("%-20s %s" % (info.name, info.production))
print("%d production names filled" % len(filled))
