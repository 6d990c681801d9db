# A screen that begins beside the origin and is large enough for the whole window; the platform's own is smaller
# than the window's smallest size.
set(mainwindow_screen "${CMAKE_CURRENT_BINARY_DIR}/mainwindowscreen.json")
file(CONFIGURE OUTPUT "${mainwindow_screen}" CONTENT [[
{ "screens": [ { "name": "beside the origin", "x": 200, "y": 100, "width": 1601, "height": 1001,
                 "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1 } ] }
]] @ONLY)
korvane_add_test(mainwindow_test GUI
    SOURCES
        livesessionfixture.h
        mainwidget_test.cpp
        mainwidgetplayback_test.cpp
        mainwindowbuttons_test.cpp
        mainwindowfixture.h
        mainwindowinterface_test.cpp
        mainwindowtexts_test.cpp
        mainwindowtree_test.cpp
        sidebars_test.cpp
        toasts_test.cpp
        ../support/scriptedcamera.cpp
        translations_test.cpp
        windowkeys_test.cpp
        windowmenus_test.cpp
        windowmenuslook_test.cpp
    LINKS korvane_mainwindow korvane_recording korvane_simulation korvane_resources)
set_property(SOURCE mainwidget_test.cpp APPEND PROPERTY COMPILE_DEFINITIONS
    KORVANE_OWN_FRAME=$<NOT:$<TARGET_EXISTS:QWindowKit::Widgets>>)
target_compile_definitions(mainwindow_test PRIVATE
    MAINWINDOW_SCREEN="${mainwindow_screen}"
    TRANSLATIONS_SOURCE_DIR="${CMAKE_SOURCE_DIR}"
    TRANSLATIONS_LIST="${CMAKE_BINARY_DIR}/resources/lupdate.lst"
    TRANSLATIONS_LUPDATE="$<TARGET_FILE:Qt6::lupdate>")
korvane_test_at_scale_2(mainwindow_test "*MainWindowTextsTest*")
