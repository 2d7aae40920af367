# Cells that are pasted.
runebook_add_benchmark(bench_paste_table
    SOURCES editing/PasteTableBenchmark.cpp
    DEPENDS runebook_benchmark_support runebook::editing_tables_rules)
