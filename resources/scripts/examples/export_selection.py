# MenuTitle: Export Selection as Table
__doc__ = """
Writes the selected glyphs as a table of tab-separated values beside the document's
file, with the ending ".selection.txt". Without a selection, or without windows, the
capital letters of the Latin script are written.
"""

import os

KEYS = ["name", "unicodes", "category", "subCategory", "script", "production"]
UPPER = 1


def infos_to_export():
    window = Doc.windowController()
    chosen = window.selectedInfos() if window is not None else []
    return list(chosen) or [info for info in Doc
                            if info.script == "latin" and info["case"] == UPPER]


source = Doc.fileURL()
infos = infos_to_export()
if not source:
    message("Save the document first: the table is written beside its file.")
else:
    path = os.path.splitext(source)[0] + ".selection.txt"
    with open(path, "w", encoding="utf-8", newline="\n") as table:
        table.write("\t".join(KEYS) + "\n")
        for info in infos:
            table.write(info.lineTabbed_(KEYS) + "\n")
    print("%d glyphs written to %s" % (len(infos), os.path.basename(path)))
    with open(path, encoding="utf-8") as table:
        print("".join(table.readlines()[:4]), end="")
