# The panel of values.
find_package(Qt6 REQUIRED COMPONENTS Test)
runebook_add_benchmark(bench_values
    SOURCES editing/ValuesBenchmark.cpp editing/OpenWindows.h editing/OpenWindows.cpp
    DEPENDS runebook_benchmark_support runebook::editing runebook::icons Qt6::Test)
