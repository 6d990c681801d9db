korvane_add_test(timelinescale_test SOURCES timelinescale_test.cpp LINKS korvane_playback)
korvane_add_test(dvsplayloop_test THREADS
    SOURCES dvsplayloop_test.cpp dvsplayloopseek_test.cpp ../support/scriptedreader.cpp
    LINKS korvane_playback)
korvane_add_test(fusion_test THREADS
    SOURCES fusioncomposer_test.cpp fusionplayloop_test.cpp ../support/scriptedreader.cpp
    LINKS korvane_playback)
