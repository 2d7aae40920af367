# MenuTitle: Find Duplicates
__doc__ = """
Lists names, code points and production names that several glyphs share, with the
rows of these glyphs, and selects them in the window.
"""

from collections import defaultdict


def shared(values_of):
    """value -> places, for the values that more than one record has."""
    places = defaultdict(list)
    for place, info in enumerate(Doc):
        for value in values_of(info):
            if value:
                places[value].append(place)
    return {value: found for value, found in places.items() if len(found) > 1}


FIELDS_TO_CHECK = [
    ("names", lambda info: [info.name]),
    ("code points", lambda info: info.unicodes),
    ("production names", lambda info: [info.production]),
]

infos = list(Doc)
selected = set()
for title, values_of in FIELDS_TO_CHECK:
    found = shared(values_of)
    print("%s: %d shared" % (title, len(found)))
    for value, places in sorted(found.items()):
        selected.update(places)
        print("    %s: %s" % (value, ", ".join(
            "%s (row %d)" % (infos[place].name, place + 1) for place in places)))

window = Doc.windowController()
if window is not None and selected:
    window.infolistController().setSelectedObjects_([infos[place] for place in sorted(selected)])
