# MenuTitle: Fill Sort Names
__doc__ = """
Gives accented letters without sort name one that puts them behind their base letter.
"""

filled = 0
for info in progress(Doc, "Filling sort names"):
    parts = (info.decompose or "").split(", ")
    if info.sortName or len(parts) < 2:
        continue
    # Down to the letter at the bottom: Abreveacute is an Abreve, which is an A.
    base, seen = parts[0], set()
    while base in Doc and base not in seen:
        seen.add(base)
        below = (Doc[base].decompose or "").split(", ")
        if len(below) < 2:
            break
        base = below[0]
    info.sortName = "%s_%s" % (base, info.name)
    filled += 1

print("%d sort names filled" % filled)
for info in list(Doc)[:8]:
    print("%-16s %s" % (info.name, info.sortName or "-"))
