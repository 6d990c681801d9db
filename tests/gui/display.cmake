korvane_add_test(display_test GUI
    SOURCES eventframepixmap_test.cpp imagerelay_test.cpp kvgraphicsview_test.cpp showimageform_test.cpp workerthread_test.cpp
    LINKS korvane_display)
