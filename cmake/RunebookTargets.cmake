# How every target of the project is built: one place for language level, warnings and defines.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTOUIC ON)
set(CMAKE_AUTORCC ON)
set(CMAKE_AUTOUIC_SEARCH_PATHS "${PROJECT_SOURCE_DIR}/resources")
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

find_program(RUNEBOOK_CCACHE ccache)
if(RUNEBOOK_CCACHE)
    # Precompiled headers and ccache agree only with these relaxations.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime ${RUNEBOOK_CCACHE})
endif()

add_library(runebook_options INTERFACE)
target_compile_definitions(runebook_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_FOREACH
    RUNEBOOK_VERSION="${PROJECT_VERSION}")
target_compile_options(runebook_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
    $<$<BOOL:${RUNEBOOK_WERROR}>:-Werror>)
target_include_directories(runebook_options INTERFACE "${PROJECT_SOURCE_DIR}")

# The headers that nearly all sources take, of target NAME: made once by the lowest library that is built with
# widgets, and once by the lowest that is not.
function(runebook_precompile name is_without_widgets)
    if(is_without_widgets)
        set(maker runebook_platform)
        set(headers Precompiled.h)
    else()
        set(maker runebook_platform_widgets)
        set(headers PrecompiledWidgets.h)
    endif()
    if(name STREQUAL maker)
        target_precompile_headers(${name} PRIVATE "${PROJECT_SOURCE_DIR}/cmake/${headers}")
    else()
        target_precompile_headers(${name} REUSE_FROM ${maker})
    endif()
endfunction()

# runebook_add_library(NAME [WITHOUT_WIDGETS] SOURCES file... [DEPENDS target...]): the static library of one folder
# or room, or of its rules, known to others as runebook::NAME. DEPENDS spells the architecture. What is declared
# WITHOUT_WIDGETS links none, nor do its tests; tools/check sees to it.
function(runebook_add_library name)
    cmake_parse_arguments(ARG "WITHOUT_WIDGETS" "" "SOURCES;DEPENDS" ${ARGN})
    add_library(runebook_${name} STATIC ${ARG_SOURCES})
    add_library(runebook::${name} ALIAS runebook_${name})
    target_link_libraries(runebook_${name} PUBLIC runebook_options ${ARG_DEPENDS})
    runebook_precompile(runebook_${name} ${ARG_WITHOUT_WIDGETS})
endfunction()

set(RUNEBOOK_SANITIZER_OPTIONS
    "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/leaks.txt:print_suppressions=0"
    "TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/races.txt:print_suppressions=0:die_after_fork=0")
# The thread sanitizer sees nothing of the locks of an event loop of another library.
if(CMAKE_CXX_FLAGS_DEBUG MATCHES "sanitize=thread")
    list(APPEND RUNEBOOK_SANITIZER_OPTIONS "QT_NO_GLIB=1")
endif()

# runebook_add_test(NAME [WITHOUT_WIDGETS] SOURCES file... DEPENDS target...): one Qt Test program. It finds the
# files of its folder under RUNEBOOK_TEST_DATA and brings its own defaults and data folders (tests/TestMain.h).
function(runebook_add_test name)
    cmake_parse_arguments(ARG "WITHOUT_WIDGETS" "" "SOURCES;DEPENDS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE runebook_options ${ARG_DEPENDS} Qt6::Test)
    target_compile_definitions(${name} PRIVATE
        RUNEBOOK_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data"
        RUNEBOOK_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
        RUNEBOOK_BUILD_DIR="${PROJECT_BINARY_DIR}")
    runebook_precompile(${name} ${ARG_WITHOUT_WIDGETS})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 300
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;${RUNEBOOK_SANITIZER_OPTIONS}")
    # Those that leave something to chance, or have it larger, do more of it in tools/long.
    list(TRANSFORM ARG_SOURCES PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/" OUTPUT_VARIABLE sources)
    foreach(source IN LISTS sources)
        file(STRINGS "${source}" uses REGEX "tests/Rounds.h" LIMIT_COUNT 1)
        if(uses)
            set_tests_properties(${name} PROPERTIES LABELS rounds TIMEOUT 1800)
        endif()
    endforeach()
endfunction()

# runebook_add_fuzzer(NAME SOURCES file... DEPENDS target...): one libFuzzer program, run by tools/fuzz.
function(runebook_add_fuzzer name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE runebook_options ${ARG_DEPENDS})
    target_link_options(${name} PRIVATE -fsanitize=fuzzer,address,undefined)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/fuzz")
endfunction()

# runebook_add_benchmark(NAME SOURCES file... DEPENDS target...): one Google Benchmark program, run by
# tools/bench.
function(runebook_add_benchmark name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE runebook_options ${ARG_DEPENDS} benchmark::benchmark)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/benchmarks")
endfunction()
