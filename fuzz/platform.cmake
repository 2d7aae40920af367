add_executable(fuzz_predicate_parser "${CMAKE_CURRENT_LIST_DIR}/predicate_parser.cpp")
target_link_libraries(fuzz_predicate_parser PRIVATE runebook_options runebook::platform)
target_link_options(fuzz_predicate_parser PRIVATE -fsanitize=fuzzer)
