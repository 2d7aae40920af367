# Two versions of a file against diff, and how soon the compare window answers.
runebook_add_benchmark(bench_compare
    SOURCES editing/CompareBenchmark.cpp
    DEPENDS runebook_benchmark_support runebook::editing)
target_compile_definitions(bench_compare PRIVATE
    RUNEBOOK_CORPUS_TOOL="${PROJECT_SOURCE_DIR}/tools/make_glyph_corpus.py")
