# From the start of the process to a usable window.
add_executable(bare_window "${CMAKE_CURRENT_LIST_DIR}/bare_window.cpp")
target_link_libraries(bare_window PRIVATE runebook_options Qt6::Widgets)
set_target_properties(bare_window PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/benchmarks")
runebook_add_benchmark(bench_startup
    SOURCES app/StartupBenchmark.cpp
    DEPENDS runebook_benchmark_support)
target_compile_definitions(bench_startup PRIVATE RUNEBOOK_BUILD_DIR="${PROJECT_BINARY_DIR}"
    RUNEBOOK_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
add_dependencies(bench_startup bare_window runebook)
