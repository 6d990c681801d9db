korvane_add_test(widgets_test GUI
    SOURCES
        kvcapturedlog.h
        kvcombobox_test.cpp
        kvfilepathreminderform_test.cpp
        kvlineedit_test.cpp
        kvmessagebox_test.cpp
        kvpopwidget_test.cpp
        kvslider_test.cpp
        kvthreehandlegeometry_test.cpp
        kvthreehandleslider_test.cpp
        kvthreehandlesliderfixture.h
        kvthreehandlesliderpainting_test.cpp
        kvtooltip_test.cpp
        kvwaitingwin_test.cpp
        timestamptext_test.cpp
    LINKS korvane_widgets korvane_resources)
set_property(SOURCE kvmessagebox_test.cpp APPEND PROPERTY COMPILE_DEFINITIONS
    KORVANE_OWN_FRAME=$<NOT:$<TARGET_EXISTS:QWindowKit::Widgets>>)

# Linked without the program's images, to see them missing.
korvane_add_test(widgets_without_images_test GUI
    SOURCES kvcapturedlog.h kvwaitingwinwithoutgif_test.cpp
    LINKS korvane_widgets)
