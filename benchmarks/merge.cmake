# The merge of three versions of a file, the whole program, against git merge-file.
runebook_add_benchmark(bench_merge
    SOURCES merge/MergeBenchmark.cpp
    DEPENDS runebook_benchmark_support)
target_compile_definitions(bench_merge PRIVATE RUNEBOOK_BUILD_DIR="${PROJECT_BINARY_DIR}")
add_dependencies(bench_merge runebook)
