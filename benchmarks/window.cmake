# The document window, as a user feels it.
runebook_add_benchmark(bench_window
    SOURCES editing/WindowBenchmark.cpp editing/OpenWindows.h editing/OpenWindows.cpp
    DEPENDS runebook_benchmark_support runebook::editing runebook::icons)
