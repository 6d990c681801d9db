korvane_add_test(settings_test GUI
    SOURCES
        settingdisplayitem_test.cpp
        settingitembox_test.cpp
        settingitems_test.cpp
        settingpanel_test.cpp
        settingsfixture.h
        settingsections_test.cpp
        sidebarapssettingui_test.cpp
        sidebarcamerasettingui_test.cpp
        sidebardvssettingui_test.cpp
    LINKS korvane_settings korvane_resources)
