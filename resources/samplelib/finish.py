"""What can be told only when every record is there: component names, marks, further names."""

# Canonical equivalents that have a record of their own.
KEPT_APART = frozenset((0x2126, 0x374, 0x1FBE))


def resolve_components(glyphs):
    """Code points among the components become the names of the glyphs that have them."""
    names = {code: glyph.name for glyph in glyphs for code in glyph.codes}
    for glyph in glyphs:
        glyph.components = [part if isinstance(part, str) else names[part] for part in glyph.components]


def attach_marks(glyphs):
    """A glyph takes the marks that other glyphs are composed with on it, and their anchors."""
    by_name = {glyph.name: glyph for glyph in glyphs}
    for glyph in glyphs:
        if len(glyph.components) != 2:
            continue
        base, mark = (by_name[part] for part in glyph.components)
        anchor = next((a[1:] for a in mark.anchors if a.startswith("_")), "")
        if not anchor or mark.category != "Mark" or base.category not in ("Letter", "Mark"):
            continue
        if base.script in ("arabic", "devanagari"):     # their marks are told by the script, not by composition
            continue
        if mark.name not in base.marks:
            base.marks.append(mark.name)
        if anchor not in base.anchors:
            base.anchors = sorted(base.anchors + [anchor])


def add_equivalents(glyphs, sources):
    """One glyph serves a character and the one that is canonically the same; a file holds two code points."""
    by_code = {glyph.codes[0]: glyph for glyph in glyphs if glyph.codes}
    for code in sorted(sources.characters):
        parts = sources.canonical(code)
        if len(parts) != 1 or code in KEPT_APART or code in by_code:
            continue
        glyph = by_code.get(parts[0])
        if glyph and len(glyph.codes) == 1:
            glyph.codes.append(code)


def add_production_names(glyphs, sources):
    """By the first code point; forms follow their base where its own name does not serve."""
    for glyph in glyphs:
        if glyph.codes:
            glyph.production = sources.production_name(glyph.name, glyph.codes[0])
    for glyph in glyphs:
        if glyph.base and not glyph.production and glyph.base.production:
            suffix = glyph.name.rpartition(".")[2] if "." in glyph.name else "alt"
            glyph.production = "%s.%s" % (glyph.base.production, suffix)


def add_alternative_names(glyphs, sources):
    """The other names that the glyph lists have for the code point."""
    taken = {glyph.name for glyph in glyphs}
    for glyph in glyphs:
        if not glyph.codes:
            continue
        listed = sources.new_font_names.get("%04X" % glyph.codes[0])
        names = ([listed] if listed else []) + sources.all_names.get(glyph.codes[0], [])
        for name in names:
            if name not in taken and "hack" not in name:     # stopgaps for old fonts
                taken.add(name)
                glyph.alt_names.append(name)


def finish(glyphs, sources):
    resolve_components(glyphs)
    attach_marks(glyphs)
    add_equivalents(glyphs, sources)
    add_production_names(glyphs, sources)
    add_alternative_names(glyphs, sources)
