# Scripts against the same loops without the program.
runebook_add_benchmark(bench_scripting
    SOURCES scripting/ScriptingBenchmark.cpp
    DEPENDS runebook_benchmark_support runebook::scripting)
target_compile_definitions(bench_scripting PRIVATE RUNEBOOK_BUILD_DIR="${PROJECT_BINARY_DIR}")
