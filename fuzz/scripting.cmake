# Files of snippets, which users write or get from others. Only the reader: the bridge to Python has no part in it.
find_package(PkgConfig REQUIRED)
pkg_check_modules(LIBPLIST REQUIRED IMPORTED_TARGET libplist-2.0)
runebook_add_fuzzer(property_list
    SOURCES property_list.cpp "${PROJECT_SOURCE_DIR}/scripting/panel/MacroSnippets.cpp"
        "${PROJECT_SOURCE_DIR}/scripting/python/PropertyListLimits.cpp"
    DEPENDS runebook::platform PkgConfig::LIBPLIST)
