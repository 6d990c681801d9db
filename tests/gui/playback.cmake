korvane_add_test(dvsplayer_test GUI
    SOURCES
        dvsplayer_test.cpp
        dvsplayerplaying_test.cpp
        dvsplayerrange_test.cpp
        ../support/scriptedreader.cpp
    LINKS korvane_playback)

korvane_add_test(recordingopener_test GUI
    SOURCES
        recordingopener_test.cpp
        ../support/scriptedcamera.cpp
        ../support/scriptedreader.cpp
    LINKS korvane_playback korvane_camera korvane_recording korvane_resources)

korvane_add_test(fusionengine_test GUI
    SOURCES fusionengine_test.cpp ../support/scriptedreader.cpp
    LINKS korvane_playback)

korvane_add_test(fusionplayer_test GUI SOURCES fusionplayer_test.cpp LINKS korvane_playback)

korvane_add_test(rangedialogs_test GUI
    SOURCES rangedialogs_test.cpp dialogcard.h
    LINKS korvane_playback korvane_shell korvane_resources)
# QWindowKit leaves dragging to the platform, which the offscreen one does not do.
target_compile_definitions(rangedialogs_test PRIVATE
    KORVANE_OWN_FRAME=$<NOT:$<TARGET_EXISTS:QWindowKit::Widgets>>)
korvane_test_at_scale_2(rangedialogs_test "*NothingIsClipped*")
korvane_add_test(rangesaver_test GUI
    SOURCES rangesaver_test.cpp dialogcard.h ../support/scriptedreader.cpp
    LINKS korvane_playback korvane_shell korvane_resources)
