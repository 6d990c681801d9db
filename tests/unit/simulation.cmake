korvane_add_test(simulation_test
    SOURCES
        simulation_sensor_test.cpp
        simulation_spans_test.cpp
        simulation_stream_test.cpp
        simulation_testscenes.h
    LINKS korvane_simulation)
korvane_add_test(simulation_filters_test
    SOURCES simulation_filtering.h simulation_filters_test.cpp simulation_ratefilter_test.cpp
    LINKS korvane_simulation)
# Recordings as cameras, step by step and in the list.
korvane_add_test(simulation_replay_test
    SOURCES simulation_replaybackend_test.cpp simulation_replaystream_test.cpp
    LINKS korvane_simulation korvane_streamsupport)
korvane_add_test(simulation_streamedfusion_test THREADS
    SOURCES simulation_streamedfusion_test.cpp
    LINKS korvane_simulation korvane_recording)
# Those with intensity frames beside them.
korvane_add_test(simulation_replayfusion_test THREADS
    SOURCES simulation_replayfusion.h simulation_replayfusion_test.cpp
    LINKS korvane_simulation korvane_recording korvane_streamsupport)
# Sanitizers encode 4K frames too slowly.
korvane_add_test(simulation_replayrecorded_test
    SOURCES simulation_replayfusion.h simulation_replayrecorded_test.cpp
    LINKS korvane_simulation korvane_recording korvane_streamsupport
    LABELS release_only)
# What all cameras without hardware do alike.
korvane_add_test(simulation_conformance_test THREADS
    SOURCES simulation_conformance_test.cpp simulation_streamed_test.cpp simulation_watch.h
    LINKS korvane_simulation korvane_recording)
korvane_add_test(simulation_camera_test THREADS
    SOURCES simulation_camera_test.cpp simulation_testscenes.h simulation_watch.h
    LINKS korvane_simulation)

korvane_add_test(simulation_fusion_test THREADS
    SOURCES simulation_apstool_test.cpp simulation_fusion_test.cpp simulation_fusionpictures.h
    LINKS korvane_simulation korvane_recording korvane_kernels)

# A process is forked and killed, which the sanitizers do not follow; and they make 4K frames too slowly.
korvane_add_test(simulation_fusionkilled_test SERIAL
    SOURCES simulation_fusionkilled_test.cpp simulation_fusionplayed_test.cpp simulation_fusionpictures.h
    LINKS korvane_simulation korvane_recording
    LABELS release_only)

# What the settings tools do to a stream.
korvane_add_test(simulation_tools_test
    SOURCES
        simulation_biases_test.cpp
        simulation_filtertools_test.cpp
        simulation_offeredtools_test.cpp
        simulation_testscenes.h
        simulation_triggerinput_test.cpp
    LINKS korvane_simulation korvane_streamsupport)
# What they are made of, and the cameras that have them.
korvane_add_test(simulation_cameratools_test THREADS
    SOURCES
        simulation_cameratools_test.cpp
        simulation_filterchain_test.cpp
        simulation_parametertool_test.cpp
        simulation_testscenes.h
        simulation_watch.h
    LINKS korvane_simulation korvane_streamsupport)
