set(recordingSupport ${CMAKE_CURRENT_LIST_DIR}/../support)
# Random streams, and a second decoder to judge the first by.
add_library(korvane_streamsupport STATIC
    ${recordingSupport}/randomstreams.cpp
    ${recordingSupport}/randomstreams.h
    ${recordingSupport}/referencedecoder.cpp
    ${recordingSupport}/referencedecoder.h)
target_link_libraries(korvane_streamsupport PUBLIC korvane_recording)

# Decodes videos with FFmpeg's libraries, to judge what was written.
add_library(korvane_videosupport STATIC
    ${recordingSupport}/decodedvideo.cpp
    ${recordingSupport}/decodedvideo.h
    ${recordingSupport}/foreignvideo.cpp
    ${recordingSupport}/foreignvideo.h
    ${recordingSupport}/pictureluma.h)
target_link_libraries(korvane_videosupport PUBLIC korvane_options Qt6::Gui PRIVATE PkgConfig::FFMPEG)

korvane_add_test(recording_test
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/evtclock_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/evtdecoder_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/mappedfile_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/rawfilereader_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/rawfilereaderfiles_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/rawfilereaderfixture.h
        ${CMAKE_CURRENT_LIST_DIR}/rawheader_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/recordingbackend_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/streamprobe_test.cpp
    LINKS korvane_streamsupport)
# Reading where memory is short: with an operator new of its own.
korvane_add_test(recordingmemory_test
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/rawfilereaderfixture.h
        ${CMAKE_CURRENT_LIST_DIR}/rawfilereadermemory_test.cpp
    LINKS korvane_recording)
# Writing: encoder, recorder, cut.
korvane_add_test(recordingwriting_test
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/evt3encoder_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/recorder_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/recordingcut_test.cpp
    LINKS korvane_streamsupport)
# Videos: pictures of events, encoder and container, export.
korvane_add_test(recordingvideo_test
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/eventpictures_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/videoexport_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/videoexportfixture.h
        ${CMAKE_CURRENT_LIST_DIR}/videowriter_test.cpp
    LINKS korvane_recording korvane_display korvane_videosupport)
korvane_add_test(videothreads_test THREADS
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/videoexportfixture.h
        ${CMAKE_CURRENT_LIST_DIR}/videothreads_test.cpp
    LINKS korvane_recording korvane_display korvane_videosupport)
# Videos of intensity frames: their threads need no event loop.
korvane_add_test(apsvideo_test THREADS
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/apsvideofixture.h
        ${CMAKE_CURRENT_LIST_DIR}/apsvideoreader_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/apsvideowriter_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/intensityrecorder_test.cpp
    LINKS korvane_recording korvane_videosupport)
# Random streams against the reference decoder.
korvane_add_test(recordingstreams_test
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/rawfilereaderwindows_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/recordingindex_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/streams_test.cpp
    LINKS korvane_streamsupport)
# Reader and recorder under threads: no event loop, fit for the thread sanitizer.
korvane_add_test(recordingthreads_test THREADS
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/recorderthreads_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/recordingthreads_test.cpp
    LINKS korvane_streamsupport)
# Twenty seconds by the clock.
korvane_add_test(recordingendurance_test
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/recordingendurance_test.cpp
    LINKS korvane_simulation
    LABELS release_only)

# Recordings made by others, where KORVANE_RECORDINGS names their folder; reported as skipped where it does not.
add_executable(realrecordings_test ${CMAKE_CURRENT_LIST_DIR}/realrecordings_test.cpp)
target_link_libraries(realrecordings_test PRIVATE korvane_testsupport korvane_streamsupport)
add_test(NAME realrecordings COMMAND realrecordings_test)
set_tests_properties(realrecordings PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300)

# The fuzz targets over their saved inputs, with whatever compiler and sanitizers the build has.
set(recordingFuzz ${CMAKE_CURRENT_LIST_DIR}/../fuzz)
function(korvane_add_fuzz_replay target)
    add_executable(fuzz_${target}_replay ${recordingFuzz}/fuzz_${target}.cpp ${recordingFuzz}/replay.cpp)
    target_link_libraries(fuzz_${target}_replay PRIVATE ${ARGN})
    add_test(NAME fuzz_${target}_replay COMMAND fuzz_${target}_replay ${recordingFuzz}/corpus/${target})
    set_tests_properties(fuzz_${target}_replay PROPERTIES TIMEOUT 120)
endfunction()
korvane_add_fuzz_replay(rawheader korvane_streamsupport)
korvane_add_fuzz_replay(evtreader korvane_streamsupport)
korvane_add_fuzz_replay(rawfile korvane_streamsupport)
korvane_add_fuzz_replay(apsvideo korvane_recording)
korvane_add_fuzz_replay(config korvane_config)
korvane_add_fuzz_replay(rangetimes korvane_playback korvane_recording)
