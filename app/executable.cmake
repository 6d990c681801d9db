add_executable(korvaneinsight main.cpp)
target_link_libraries(korvaneinsight PRIVATE
    korvane_options korvane_mainwindow korvane_shell korvane_config korvane_recording korvane_simulation
    korvane_plugins korvane_resources)
set_target_properties(korvaneinsight PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
