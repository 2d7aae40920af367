# MenuTitle: List Missing Code Points
__doc__ = """
Lists the assigned code points of a block of Unicode that no glyph has. Asks for the
block; without windows it is Greek and Coptic.
"""

import unicodedata

BLOCKS = {
    "Basic Latin": (0x0020, 0x007E),
    "Latin-1 Supplement": (0x00A0, 0x00FF),
    "Latin Extended-A": (0x0100, 0x017F),
    "Latin Extended-B": (0x0180, 0x024F),
    "Greek and Coptic": (0x0370, 0x03FF),
    "Cyrillic": (0x0400, 0x04FF),
    "Armenian": (0x0530, 0x058F),
    "Hebrew": (0x0590, 0x05FF),
    "Arabic": (0x0600, 0x06FF),
    "Devanagari": (0x0900, 0x097F),
    "Latin Extended Additional": (0x1E00, 0x1EFF),
    "General Punctuation": (0x2010, 0x205E),
    "Currency Symbols": (0x20A0, 0x20BF),
}
# Python's data of later versions know more characters; the answer should be the same with all.
UNICODE_VERSION = unicodedata.ucd_3_2_0

block = "Greek and Coptic"
if canAsk():
    block = askString("Block of Unicode:\n" + ", ".join(BLOCKS), block)

if block in BLOCKS:
    first, last = BLOCKS[block]
    present = {hexStringToInt(code) for info in Doc for code in info.unicodes}
    assigned = [code for code in range(first, last + 1)
                if UNICODE_VERSION.category(chr(code)) not in ("Cn", "Co", "Cs")]
    missing = [code for code in assigned if code not in present]
    for code in missing:
        print("%s  %s  %s" % (hexStringFromInt(code), chr(code), unicodedata.name(chr(code), "")))
    print("%s: %d of %d code points are missing" % (block, len(missing), len(assigned)))
elif block:
    print("There is no block “%s” in the list of this script." % block)
