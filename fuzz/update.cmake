# Update feeds and the pages that they bring.
runebook_add_fuzzer(appcast SOURCES "${CMAKE_CURRENT_LIST_DIR}/appcast.cpp" DEPENDS runebook::update)
