"""The record and its line in a glyph data file of version 2."""

from dataclasses import dataclass, field
from typing import List, Optional, Union

HEADER = """<?xml version="1.0" encoding="UTF-8" ?>
<!DOCTYPE glyphData [
<!ELEMENT glyphData (glyph)+>
<!ATTLIST glyphData
\tformat\t\t\tCDATA\t\t#IMPLIED>
<!ELEMENT glyph EMPTY>
<!ATTLIST glyph
\tunicode\t\t\tCDATA\t\t#IMPLIED
\tunicodeLegacy\tCDATA\t\t#IMPLIED
\tname\t\t\tCDATA\t\t#REQUIRED
\tsortName\t\tCDATA\t\t#IMPLIED
\tsortNameKeep\tCDATA\t\t#IMPLIED
\tcategory\t\tCDATA\t\t#REQUIRED
\tsubCategory\t\tCDATA\t\t#IMPLIED
\tcase\t\t\tCDATA\t\t#IMPLIED
\tdirection\t\tCDATA\t\t#IMPLIED
\tscript\t\t\tCDATA\t\t#IMPLIED
\tdescription\t\tCDATA\t\t#IMPLIED
\tproduction\t\tCDATA\t\t#IMPLIED
\taltNames\t\tCDATA\t\t#IMPLIED
\tdecompose\t\tCDATA\t\t#IMPLIED
\tanchors\t\t\tCDATA\t\t#IMPLIED
\tmarks\t\t\tCDATA\t\t#IMPLIED>
]>
<glyphData format="2">
"""
FOOTER = "</glyphData>\n"


@dataclass
class Glyph:
    """One record. Lists stay lists until they are written."""
    name: str
    codes: List[int] = field(default_factory=list)
    legacy: str = ""
    sort_name: str = ""
    components: List[Union[str, int]] = field(default_factory=list)     # names, or code points until resolved
    category: str = ""
    sub_category: str = ""
    case: str = ""
    script: str = ""
    production: str = ""
    direction: str = ""
    alt_names: List[str] = field(default_factory=list)
    description: str = ""
    anchors: List[str] = field(default_factory=list)
    marks: List[str] = field(default_factory=list)
    base: Optional["Glyph"] = None      # what a form with a suffix is a form of

    def attributes(self):
        """Keys and texts in the order of the file, empty ones left out."""
        codes = ["%04X" % code for code in self.codes]
        pairs = (("unicode", codes[0] if codes else ""), ("unicode2", codes[1] if len(codes) > 1 else ""),
                 ("unicodeLegacy", self.legacy), ("name", self.name), ("sortName", self.sort_name),
                 ("decompose", ", ".join(map(str, self.components))), ("category", self.category),
                 ("subCategory", self.sub_category), ("case", self.case), ("script", self.script),
                 ("production", self.production), ("direction", self.direction),
                 ("altNames", ", ".join(self.alt_names)), ("description", self.description),
                 ("anchors", ", ".join(self.anchors)), ("marks", ", ".join(self.marks)))
        return [(key, text) for key, text in pairs if text]

    def line(self):
        return "\t<glyph " + "".join('%s="%s" ' % pair for pair in self.attributes()) + "/>\n"


def file_text(glyphs):
    return HEADER + "".join(glyph.line() for glyph in glyphs) + FOOTER
