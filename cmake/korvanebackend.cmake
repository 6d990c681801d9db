# korvane_add_backend(name SOURCES files... [LINKS targets...]): a backend as a shared library, lib/<name>.so in
# the build folder, to be named in KORVANE_BACKENDS. It has its own copy of korvane_driver; of what else the project
# has it may link korvane_recording (recorder, reader) and korvane_simulation (cameras made of a stream of events).
#
# KORVANE_EXTRA_BACKENDS: folders outside this tree with a CMakeLists.txt that calls korvane_add_backend.
function(korvane_add_backend name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LINKS")
    add_library(${name} MODULE ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE korvane_driver ${ARG_LINKS})
    set_target_properties(${name} PROPERTIES
        PREFIX "" AUTOMOC OFF AUTOUIC OFF LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
    # Whatever is missing is told by the linker, not by a user's loader. Sanitizers come with the program.
    if(NOT KORVANE_SANITIZE)
        target_link_options(${name} PRIVATE -Wl,--no-undefined)
    endif()
    # Of the copies that the library brings along, none is to meet the program's.
    target_link_options(${name} PRIVATE -Wl,--exclude-libs,ALL)
endfunction()
