# Merging, and the reader of what it marks.
runebook_add_fuzzer(conflict_blocks SOURCES conflict_blocks.cpp DEPENDS runebook::merge)
