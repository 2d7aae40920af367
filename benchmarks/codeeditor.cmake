# The code editor on 500,000 characters of Python.
find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets)
runebook_add_benchmark(bench_codeeditor
    SOURCES "${CMAKE_CURRENT_LIST_DIR}/codeeditor_benchmark.cpp" "${CMAKE_CURRENT_LIST_DIR}/codeeditor_sample.h"
    DEPENDS runebook::codeeditor)

# What it is measured against is a program of its own, as it needs Qt 5; without the library the benchmarks
# run without this peer. Debian: libkf5syntaxhighlighting-dev.
find_package(KF5SyntaxHighlighting QUIET)
if(KF5SyntaxHighlighting_FOUND)
    add_executable(codeeditor_peer "${CMAKE_CURRENT_LIST_DIR}/codeeditor_peer.cpp"
        "${CMAKE_CURRENT_LIST_DIR}/codeeditor_sample.h")
    target_link_libraries(codeeditor_peer PRIVATE KF5::SyntaxHighlighting)
    set_target_properties(codeeditor_peer PROPERTIES AUTOMOC OFF
        RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/benchmarks")
endif()
