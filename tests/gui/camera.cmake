korvane_add_test(cameraslist_test GUI SOURCES cameraslist_test.cpp LINKS korvane_camera korvane_resources)
# QWindowKit leaves dragging to the platform, which the offscreen one does not do.
target_compile_definitions(cameraslist_test PRIVATE
    KORVANE_OWN_FRAME=$<NOT:$<TARGET_EXISTS:QWindowKit::Widgets>>)

korvane_add_test(livesession_test GUI
    SOURCES
        livesession_test.cpp
        livesessionfusion_test.cpp
        livesessionopen_test.cpp
        livesessionrecording_test.cpp
        ../support/scriptedcamera.cpp
    LINKS korvane_camera korvane_resources)
