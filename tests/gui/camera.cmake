include(${CMAKE_CURRENT_LIST_DIR}/cameraslist.cmake OPTIONAL)

korvane_add_test(livesession_test GUI
    SOURCES
        livesession_test.cpp
        livesessionfusion_test.cpp
        livesessionopen_test.cpp
        livesessionrecording_test.cpp
        ../support/scriptedcamera.cpp
    LINKS korvane_camera korvane_resources)
