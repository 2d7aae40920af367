# What once held the window for seconds: each has a limit.
runebook_add_benchmark(bench_holds
    SOURCES editing/HoldsBenchmark.cpp editing/OpenWindows.h editing/OpenWindows.cpp
    DEPENDS runebook_benchmark_support runebook::editing runebook::icons)
