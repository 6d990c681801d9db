if(TARGET korvane_resources)
    korvane_add_test(cameraslist_test GUI SOURCES cameraslist_test.cpp LINKS korvane_camera korvane_resources)
    # QWindowKit leaves dragging to the platform, which the offscreen one does not do.
    target_compile_definitions(cameraslist_test PRIVATE
        KORVANE_OWN_FRAME=$<NOT:$<TARGET_EXISTS:QWindowKit::Widgets>>)
endif()
