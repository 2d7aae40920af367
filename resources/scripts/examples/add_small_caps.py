# MenuTitle: Add Small Caps
__doc__ = """
Adds a small capital for every lower-case Latin letter that has none.
"""

SMALL_CAPS = 3
LOWER = 2

added = []
for info in Doc.infos:
    name = info.name + ".sc"
    if info.script != "latin" or info["case"] != LOWER or "." in info.name or name in Doc:
        continue
    if not info.unicode:
        continue
    added.append(newInfo(name, category=info.category, subCategory="Smallcaps",
                         script=info.script, case=SMALL_CAPS, anchors=info.anchors,
                         sortName=info.sortName or info.name))

if added:
    with undoGroup("Add Small Caps"):
        Doc.addInfos_(added)

print("%d small capitals added" % len(added))
for info in added[:1]:
    print(info.lineXMLFormatVersion_(2).strip())
print("can undo:", Doc.undoManager().canUndo())
