# The console under a flood of output, and how soon a script stops.
runebook_add_benchmark(bench_console
    SOURCES scripting/ConsoleBenchmark.cpp
    DEPENDS runebook_benchmark_support runebook::scripting)
target_compile_definitions(bench_console PRIVATE RUNEBOOK_BUILD_DIR="${PROJECT_BINARY_DIR}")
