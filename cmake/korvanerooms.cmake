# The rooms of the code and what each may know. A room is one static library; linking or including anything that
# its row does not list stops the configuration (links) or the test "layers" (includes).
#
# KORVANE_ROOMS: the rooms, lowest first.
# KORVANE_<room>_FOLDER: where it lives. KORVANE_<room>_MAY: the rooms and outside libraries it may use.
set(KORVANE_ROOMS
    driver kernels recording simulation plugins frame config widgets display camera playback settings shell mainwindow)

macro(korvane_room room folder)
    set(KORVANE_${room}_FOLDER "${folder}")
    set(KORVANE_${room}_MAY "${ARGN}")
endmacro()

korvane_room(driver     camera/driver)
korvane_room(kernels    display/kernels    driver)
korvane_room(recording  camera/recording   driver kernels QtCore FFmpeg)
korvane_room(simulation camera/simulation  driver kernels recording QtCore)
korvane_room(plugins    camera/plugins     driver QtCore)
korvane_room(frame      mainwindow/frame   QtWidgets)
korvane_room(config     app/config         QtCore)
korvane_room(widgets    widgets            frame QtWidgets)
korvane_room(display    display            driver kernels QtWidgets)
korvane_room(camera     camera             driver display widgets frame config QtWidgets)
korvane_room(playback   playback           driver kernels display widgets frame config QtWidgets)
korvane_room(settings   settings           driver widgets QtWidgets)
korvane_room(shell      app                config widgets frame QtWidgets)
korvane_room(mainwindow mainwindow         driver kernels display widgets frame config camera playback
                                           settings shell QtWidgets)

set(KORVANE_QtCore_TARGETS Qt6::Core Threads::Threads)
set(KORVANE_QtWidgets_TARGETS Qt6::Core Qt6::Gui Qt6::Widgets Threads::Threads QWindowKit::Widgets)
set(KORVANE_FFmpeg_TARGETS PkgConfig::FFMPEG)

# korvane_add_room(room SOURCES files... LINKS targets... PRIVATE_LINKS targets...)
function(korvane_add_room room)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LINKS;PRIVATE_LINKS")
    if(NOT room IN_LIST KORVANE_ROOMS)
        message(FATAL_ERROR "${room} is no room of the table in cmake/korvanerooms.cmake")
    endif()
    set(allowed Threads::Threads)
    foreach(other IN LISTS KORVANE_${room}_MAY)
        if(other IN_LIST KORVANE_ROOMS)
            list(APPEND allowed korvane_${other})
        else()
            list(APPEND allowed ${KORVANE_${other}_TARGETS})
        endif()
    endforeach()
    foreach(link IN LISTS ARG_LINKS ARG_PRIVATE_LINKS)
        if(NOT link IN_LIST allowed)
            message(FATAL_ERROR "the room ${room} may not link ${link}: see cmake/korvanerooms.cmake")
        endif()
    endforeach()
    add_library(korvane_${room} STATIC ${ARG_SOURCES})
    target_link_libraries(korvane_${room} PUBLIC korvane_options ${ARG_LINKS} PRIVATE ${ARG_PRIVATE_LINKS})
endfunction()
