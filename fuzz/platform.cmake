# What a user types into the search field.
runebook_add_fuzzer(predicate_parser SOURCES "${CMAKE_CURRENT_LIST_DIR}/predicate_parser.cpp"
    DEPENDS runebook::platform)
