"""The data that the sample derives from: the Unicode Character Database and the Adobe glyph lists."""

from collections import namedtuple

Character = namedtuple("Character", "title category combining decomposition mirrored")

# Names that stand in the list for new fonts but are no longer used as production names.
IGNORED_NAMES = frozenset((
    "Tcommaaccent", "tcommaaccent", "sigma1", "theta1", "Upsilon1", "phi1", "omega1", "aleph", "Ifraktur",
    "Rfraktur", "perpendicular", "H22073", "H18543", "H18551", "H18533"))

PRIVATE_USE = range(0xE000, 0xF900)


def hex_text(code):
    """A code point as glyph data files write it: upper case, at least four digits."""
    return "%04X" % code


def data_rows(path):
    """The fields of every line that holds data, without comments and blanks around the fields."""
    for line in path.read_text(encoding="utf-8").splitlines():
        line = line.split("#", 1)[0].strip()
        if line:
            yield [field.strip() for field in line.split(";")]


class Sources:
    """Read once, then only asked."""

    def __init__(self, unicode_dir, aglfn_dir, list_for_new_fonts):
        self.characters = {}
        self._read_characters(unicode_dir / "UnicodeData.txt")
        self.joining = {int(row[0], 16): row[2] for row in data_rows(unicode_dir / "ArabicShaping.txt")}
        self.new_font_names = {row[0]: row[1] for row in data_rows(list_for_new_fonts)}
        self.all_names = {}         # code point: every name of the full list
        self.private_codes = {}     # name: private use code point text
        self._read_glyph_list(aglfn_dir / "glyphlist.txt")

    def _read_characters(self, path):
        for row in data_rows(path):
            title = row[10] if row[1].startswith("<") else row[1]
            self.characters[int(row[0], 16)] = Character(title, row[2], int(row[3]), row[5], row[9] == "Y")

    def _read_glyph_list(self, path):
        for name, codes in data_rows(path):
            if " " in codes:
                continue
            if int(codes, 16) in PRIVATE_USE:
                self.private_codes[name] = codes
            else:
                self.all_names.setdefault(int(codes, 16), []).append(name)

    def canonical(self, code):
        """The code points that the character is canonically equivalent to, or none."""
        text = self.characters[code].decomposition
        return [] if not text or text.startswith("<") else [int(part, 16) for part in text.split()]

    def compatible(self, code):
        """The kind of a compatibility decomposition ("<super>") and its code points; "" without one."""
        text = self.characters[code].decomposition
        if not text.startswith("<"):
            return "", []
        kind, *parts = text.split()
        return kind, [int(part, 16) for part in parts]

    def usual_name(self, code):
        """The name that designers know: that of the list for new fonts, else the full list's first."""
        name = self.new_font_names.get(hex_text(code), "")
        if name and name not in IGNORED_NAMES and not name.startswith(("afii", "SF")):
            return name
        names = [n for n in self.all_names.get(code, ())
                 if n not in IGNORED_NAMES and not n.startswith(("afii", "SF"))]
        return names[0] if names else ""

    def production_name(self, name, code):
        """The production name of a glyph by its first code point; "" when its own name serves."""
        if name in ("CR", "DEL"):
            return ""
        text = hex_text(code)
        listed = self.new_font_names.get(text, "")
        if listed and not listed.startswith(("afii", "SF")) and listed not in IGNORED_NAMES:
            production = listed if listed != name else ""
        else:
            production = "uni" + text if len(text) == 4 else ""
        return "u" + text if len(text) == 5 else production
