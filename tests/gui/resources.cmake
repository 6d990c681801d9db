korvane_add_test(resources_test GUI
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/resources_test.cpp
    LINKS korvane_resources Qt6::Svg)
