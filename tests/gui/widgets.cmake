korvane_add_test(widgets_test GUI
    SOURCES
        framelesscard_test.cpp
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
    SOURCES kvwaitingwinwithoutgif_test.cpp
    LINKS korvane_widgets)
# Animations that are none, each in a file of resources that the test puts in the missing one's place.
set(broken_gifs "${CMAKE_CURRENT_BINARY_DIR}/brokengifs")
string(ASCII 1 44 1 44 head)
file(CONFIGURE OUTPUT "${broken_gifs}/otherkind.gif" CONTENT "no animation" @ONLY)
file(CONFIGURE OUTPUT "${broken_gifs}/headonly.gif" CONTENT "GIF89a${head}" @ONLY)
foreach(kind otherkind headonly)
    file(CONFIGURE OUTPUT "${broken_gifs}/${kind}.qrc" @ONLY CONTENT
        "<RCC><qresource prefix=\"/img/icon\"><file alias=\"waiting.gif\">${kind}.gif</file></qresource></RCC>")
    qt_add_binary_resources(widgets_broken_gif_${kind} "${broken_gifs}/${kind}.qrc"
        DESTINATION "${broken_gifs}/${kind}.rcc")
    add_dependencies(widgets_without_images_test widgets_broken_gif_${kind})
endforeach()
target_compile_definitions(widgets_without_images_test PRIVATE BROKEN_GIFS="${broken_gifs}")
