korvane_add_test(simulation_test
    SOURCES
        simulation_sensor_test.cpp
        simulation_spans_test.cpp
        simulation_stream_test.cpp
        simulation_testscenes.h
    LINKS korvane_simulation)
korvane_add_test(simulation_camera_test THREADS
    SOURCES simulation_camera_test.cpp simulation_testscenes.h
    LINKS korvane_simulation)
