korvane_add_test(settingnames_test
    SOURCES accumulationtime_test.cpp parameternames_test.cpp
    LINKS korvane_settings)
