# Windows test programs run under Wine: `ctest` makes a throw-away Wine before the first of them and removes it behind
# the last.
set(wine_session ${PROJECT_SOURCE_DIR}/tests/support/wine_session)
set(wine_folder ${CMAKE_BINARY_DIR}/wine)
set(CMAKE_CROSSCOMPILING_EMULATOR ${wine_session} run ${wine_folder})

add_test(NAME wine_start COMMAND ${wine_session} start ${wine_folder})
set_tests_properties(wine_start PROPERTIES FIXTURES_SETUP wine)
add_test(NAME wine_stop COMMAND ${wine_session} stop ${wine_folder})
set_tests_properties(wine_stop PROPERTIES FIXTURES_CLEANUP wine)

# doctest is a header alone; the machine's include folder as a whole would bring the wrong C library's headers with it.
find_path(DOCTEST_FOLDER doctest/doctest.h PATHS /usr/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/include)
file(CREATE_LINK ${DOCTEST_FOLDER}/doctest ${CMAKE_BINARY_DIR}/include/doctest SYMBOLIC)
add_library(doctest::doctest INTERFACE IMPORTED)
target_include_directories(doctest::doctest SYSTEM INTERFACE ${CMAKE_BINARY_DIR}/include)
