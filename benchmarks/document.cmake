# Glyph data from file to document and back.
find_package(pugixml REQUIRED)

foreach(subject Reading Saving Autosave Lookup Undo Memory)
    string(TOLOWER "bench_${subject}" program)
    runebook_add_benchmark(${program}
        SOURCES document/${subject}Benchmark.cpp
        DEPENDS runebook_benchmark_support runebook::document)
endforeach()
target_link_libraries(bench_reading PRIVATE pugixml::pugixml)
target_link_libraries(bench_memory PRIVATE pugixml::pugixml)
