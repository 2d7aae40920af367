# Searching a whole document while typing.
runebook_add_benchmark(bench_search
    SOURCES editing/SearchBenchmark.cpp
    DEPENDS runebook_benchmark_support runebook::editing)
