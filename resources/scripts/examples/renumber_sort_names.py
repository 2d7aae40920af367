# MenuTitle: Renumber Sort Names
__doc__ = """
Numbers the sort names of the selected glyphs in the order in which they are shown,
with the prefix, start, step and digits that the numbering dialog was given last.
Without a selection, or without windows, all glyphs are numbered.
"""

defaults = NSUserDefaults.standardUserDefaults()


def setting(key, usual):
    value = defaults.objectForKey_(key)
    return usual if value is None else type(usual)(value)


def infos_to_number():
    window = Doc.windowController()
    chosen = window.selectedInfos() if window is not None else []
    return list(chosen) or list(Doc)


prefix = setting("sortNamePrefix", "a")
number = setting("sortNameStart", 1)
step = setting("sortNameStep", 1)
digits = setting("sortNameDigits", 3)

infos = infos_to_number()
with undoGroup("Renumber Sort Names"):
    for info in infos:
        info.sortName = "%s%0*d" % (prefix, digits, number)
        number += step

for info in infos[:3] + infos[-1:]:
    print("%-16s %s" % (info.name, info.sortName))
print("%d sort names numbered" % len(infos))
