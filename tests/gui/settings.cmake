korvane_add_test(settings_test GUI
    SOURCES
        settingitembox_test.cpp
    LINKS korvane_settings korvane_resources)
