# Libraries that no program should accept.
set(faultyBackends)
foreach(fault 1 2 3 4 5 6 7)
    add_library(faultybackend${fault} MODULE ${CMAKE_CURRENT_LIST_DIR}/../support/backends/faulty.cpp)
    target_link_libraries(faultybackend${fault} PRIVATE korvane_driver)
    target_compile_definitions(faultybackend${fault} PRIVATE FAULT=${fault})
    set_target_properties(faultybackend${fault} PROPERTIES
        PREFIX "" AUTOMOC OFF AUTOUIC OFF LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib/faulty")
    list(APPEND faultyBackends faultybackend${fault})
endforeach()
korvane_add_test(plugins_test THREADS SOURCES backendlibraries_test.cpp LINKS korvane_plugins)
target_compile_definitions(plugins_test PRIVATE
    KORVANE_EXAMPLE_BACKEND="$<TARGET_FILE:movingbar>"
    KORVANE_FAULTY_BACKENDS="${CMAKE_BINARY_DIR}/lib/faulty")
add_dependencies(plugins_test movingbar ${faultyBackends})
