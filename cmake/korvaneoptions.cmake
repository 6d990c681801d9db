# One INTERFACE target carries the language level, the warnings and Qt's strict defines; everything links it.
add_library(korvane_options INTERFACE)
target_compile_features(korvane_options INTERFACE cxx_std_20)
target_include_directories(korvane_options INTERFACE "${CMAKE_SOURCE_DIR}")
target_compile_options(korvane_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
    -Woverloaded-virtual -Wcast-align -Wunused -Wnull-dereference -Wdouble-promotion -Wformat=2
    -Wimplicit-fallthrough -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(korvane_options INTERFACE -Wduplicated-cond -Wlogical-op)
    # GCC 12 sees null dereferences inside the standard library once sanitizers instrument it.
    if(KORVANE_SANITIZE)
        target_compile_options(korvane_options INTERFACE -Wno-null-dereference -Wno-maybe-uninitialized)
    endif()
endif()
target_compile_definitions(korvane_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_FOREACH
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_DISABLE_DEPRECATED_BEFORE=0x050F00)

if(KORVANE_SANITIZE)
    add_compile_options("-fsanitize=${KORVANE_SANITIZE}" -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options("-fsanitize=${KORVANE_SANITIZE}")
endif()

# Sessions of hours and files of any size: 64-bit positions everywhere.
add_compile_definitions(_FILE_OFFSET_BITS=64)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# Some seventy programs are linked for the tests.
find_program(KORVANE_MOLD mold)
if(KORVANE_MOLD AND KORVANE_BUILD_TESTS)
    add_link_options(-fuse-ld=mold)
endif()
find_program(KORVANE_CCACHE ccache)
if(KORVANE_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${KORVANE_CCACHE}")
endif()
