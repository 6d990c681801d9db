# What the display room has without a screen.
korvane_add_test(display_threads_test THREADS
    SOURCES displaytiming_test.cpp eventframebuffer_test.cpp framemailbox_test.cpp pacedwait_test.cpp
    LINKS korvane_display)
