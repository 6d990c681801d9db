korvane_add_test(driver_test THREADS SOURCES ${CMAKE_CURRENT_LIST_DIR}/driver_test.cpp LINKS korvane_driver)
