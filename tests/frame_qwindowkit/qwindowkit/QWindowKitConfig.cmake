# A stand-in for the package, with the names that a build uses.
add_library(QWindowKit::Widgets INTERFACE IMPORTED)
target_include_directories(QWindowKit::Widgets INTERFACE "${CMAKE_CURRENT_LIST_DIR}/include")
set(QWindowKit_Widgets_FOUND TRUE)
