# MenuTitle: Check Glyph Data
__doc__ = """
Reports repeated names and code points, and parts that no record describes.
"""

from collections import Counter


def repeated(values):
    return sorted(value for value, count in Counter(values).items() if count > 1)


def missing_parts(doc):
    """(record, part) for every part of a decomposition that is in no record."""
    for info in doc:
        for part in (info.decompose or "").split(", "):
            if part and part not in doc:
                yield info.name, part


names = repeated(info.name for info in Doc)
codes = repeated(code for info in Doc for code in info.unicodes)
parts = sorted(missing_parts(Doc))

print("%d records in %s" % (len(Doc), Doc.displayName))
print("repeated names:", ", ".join(names) or "none")
print("repeated code points:", ", ".join(codes) or "none")
print("missing parts:", ", ".join("%s in %s" % (part, name) for name, part in parts) or "none")
for category, count in sorted(Counter(info.category or "(none)" for info in Doc).items()):
    print("%6d  %s" % (count, category))
