# MenuTitle: Rename by Pattern
__doc__ = """
Renames the glyphs whose names match a regular expression; the parts of
decompositions and marks that name them follow. Asks for pattern and replacement;
without windows the ending ".sc" becomes ".smcp".
"""

import re


def ask(prompt, usual):
    return askString(prompt, usual) if canAsk() else usual


def renamed(names, new_names):
    """A list kept in one text, with new names."""
    return ", ".join(new_names.get(name, name) for name in names.split(", "))


def main():
    pattern = ask("Names that match (regular expression):", r"^(.+)\.sc$")
    replacement = ask("Become:", r"\1.smcp") if pattern else None
    if replacement is None:
        return
    new_names = {}
    for info in Doc:
        name = re.sub(pattern, replacement, info.name or "")
        if name == info.name:
            continue
        if name in Doc or name in new_names.values():
            print("left alone: %s, since %s is taken" % (info.name, name))
        elif info.validateName_error_(name, None)[1]:
            print("left alone: %s, since %s is not a name" % (info.name, name))
        else:
            new_names[info.name] = name

    with undoGroup("Rename by Pattern"):
        for info in Doc:
            for field in ("decompose", "marks"):
                old = info[field]
                if old and renamed(old, new_names) != old:
                    info[field] = renamed(old, new_names)
            if info.name in new_names:
                info.name = new_names[info.name]

    for old, new in sorted(new_names.items())[:5]:
        print("%s -> %s" % (old, new))
    print("%d glyphs renamed" % len(new_names))


main()
