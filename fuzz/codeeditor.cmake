# The code editor on text of any kind.
runebook_add_fuzzer(tokenizer SOURCES "${CMAKE_CURRENT_LIST_DIR}/codeeditor_tokenizer.cpp"
    DEPENDS runebook::codeeditor)
runebook_add_fuzzer(brace_matching SOURCES "${CMAKE_CURRENT_LIST_DIR}/codeeditor_brace_matching.cpp"
    DEPENDS runebook::codeeditor)
