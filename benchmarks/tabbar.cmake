# The tab bar with very many tabs.
runebook_add_benchmark(bench_tabbar
    SOURCES tabbar_layout.cpp
    DEPENDS runebook_benchmark_support runebook::tabbar)
