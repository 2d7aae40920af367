# The Scripts menu over very many scripts, against the reading of their beginnings.
runebook_add_benchmark(bench_scripts_menu
    SOURCES scripting/ScriptsMenuBenchmark.cpp
    DEPENDS runebook_benchmark_support runebook::scripting)
target_compile_definitions(bench_scripts_menu PRIVATE RUNEBOOK_BUILD_DIR="${PROJECT_BINARY_DIR}")
