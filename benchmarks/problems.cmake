# What is wrong with a document: the first look, and following edits.
runebook_add_benchmark(bench_problems
    SOURCES editing/ProblemsBenchmark.cpp
    DEPENDS runebook_benchmark_support runebook::editing)
