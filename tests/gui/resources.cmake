korvane_add_test(resources_test GUI
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/imageaddresses_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/imagecomparison.h
        ${CMAKE_CURRENT_LIST_DIR}/resources_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/spinner_test.cpp
    LINKS korvane_resources Qt6::Svg)
target_compile_definitions(resources_test PRIVATE RESOURCES_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
