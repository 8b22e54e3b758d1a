# display_main: the main function (unless a test brings its own) and the box answerer of every test that shows windows.
include_guard(GLOBAL)

add_library(display_main STATIC
    "${CMAKE_CURRENT_LIST_DIR}/box_answerer.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/display_main.cpp"
    "${CMAKE_CURRENT_LIST_DIR}/display_tests.cpp")
target_link_libraries(display_main PUBLIC toolkit Qt6::Test GTest::gtest websmide_flags PRIVATE xcb)
