korvane_add_test(dvsreadingloop_test THREADS
    SOURCES dvsreadingloop_test.cpp ../support/scriptedcamera.cpp
    LINKS korvane_camera)
