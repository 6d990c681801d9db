# Our own agent; where QWindowKit was found there is nothing of ours to test.
if(NOT TARGET QWindowKit::Widgets)
    korvane_add_test(frame_test GUI SOURCES frame_test.cpp LINKS korvane_frame)
endif()

# The other branch of the room, against a package in the shape of QWindowKit: a project of its own, since one build
# has one branch only.
set(frame_qwindowkit_source "${CMAKE_SOURCE_DIR}/tests/frame_qwindowkit")
set(frame_qwindowkit_build "${CMAKE_BINARY_DIR}/frame_qwindowkit")
add_test(NAME frame_qwindowkit_branch
    COMMAND ${CMAKE_CTEST_COMMAND}
        --build-and-test "${frame_qwindowkit_source}" "${frame_qwindowkit_build}"
        --build-generator "${CMAKE_GENERATOR}"
        --build-makeprogram "${CMAKE_MAKE_PROGRAM}"
        --build-noclean
        --build-options
            "-DCMAKE_BUILD_TYPE=${CMAKE_BUILD_TYPE}"
            "-DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER}"
            "-DKORVANE_ROOT=${CMAKE_SOURCE_DIR}"
        --test-command frame_qwindowkit_user)
set_tests_properties(frame_qwindowkit_branch PROPERTIES
    TIMEOUT 600
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen")
