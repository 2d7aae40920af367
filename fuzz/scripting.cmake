# Files of snippets, which users write or get from others.
runebook_add_fuzzer(property_list SOURCES "${CMAKE_CURRENT_LIST_DIR}/property_list.cpp"
    DEPENDS runebook::scripting)
