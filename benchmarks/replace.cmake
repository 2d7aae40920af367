# Find and replace over a whole document.
runebook_add_benchmark(bench_replace
    SOURCES editing/ReplaceBenchmark.cpp
    DEPENDS runebook_benchmark_support runebook::editing)
