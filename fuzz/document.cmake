# The readers of files that users bring.
runebook_add_fuzzer(line_reader SOURCES line_reader.cpp DEPENDS runebook::model)
runebook_add_fuzzer(file_reader SOURCES file_reader.cpp DEPENDS runebook::document)
runebook_add_fuzzer(tabbed_reader SOURCES tabbed_reader.cpp DEPENDS runebook::document)
runebook_add_fuzzer(table_reader SOURCES table_reader.cpp DEPENDS runebook::document)
# What the program itself has left.
runebook_add_fuzzer(autosave_reader SOURCES autosave_reader.cpp DEPENDS runebook::document)
