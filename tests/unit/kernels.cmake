korvane_add_test(kernels_test
    SOURCES apsalignment_test.cpp bgryuv_test.cpp eventpainter_test.cpp eventyuv_test.cpp fusionpainter_test.cpp
    LINKS korvane_kernels)
