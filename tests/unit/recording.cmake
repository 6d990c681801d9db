set(support ${CMAKE_CURRENT_LIST_DIR}/../support)
korvane_add_test(recording_test
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/evtclock_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/evtdecoder_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/mappedfile_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/rawfilereader_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/rawheader_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/recordingbackend_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/streamprobe_test.cpp
        ${support}/randomstreams.cpp
    LINKS korvane_recording)
# Random streams against the reference decoder.
korvane_add_test(recordingstreams_test
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/rawfilereaderwindows_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/recordingindex_test.cpp
        ${CMAKE_CURRENT_LIST_DIR}/streams_test.cpp
        ${support}/randomstreams.cpp
        ${support}/referencedecoder.cpp
    LINKS korvane_recording)
# The reader under threads: no event loop, fit for the thread sanitizer.
korvane_add_test(recordingthreads_test
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/recordingthreads_test.cpp
        ${support}/randomstreams.cpp
    LINKS korvane_recording)
# Recordings made by others, where KORVANE_RECORDINGS names their folder; reported as skipped where it does not.
add_executable(realrecordings_test
    ${CMAKE_CURRENT_LIST_DIR}/realrecordings_test.cpp
    ${support}/randomstreams.cpp
    ${support}/referencedecoder.cpp)
target_link_libraries(realrecordings_test PRIVATE korvane_testsupport korvane_recording)
add_test(NAME realrecordings COMMAND realrecordings_test)
set_tests_properties(realrecordings PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300)
# The fuzz targets over their saved inputs, with whatever compiler and sanitizers the build has.
set(fuzz ${CMAKE_CURRENT_LIST_DIR}/../fuzz)
foreach(target rawheader evtreader rawfile)
    add_executable(fuzz_${target}_replay
        ${fuzz}/fuzz_${target}.cpp
        ${fuzz}/replay.cpp
        ${support}/randomstreams.cpp
        ${support}/referencedecoder.cpp)
    target_link_libraries(fuzz_${target}_replay PRIVATE korvane_recording)
    add_test(NAME fuzz_${target}_replay COMMAND fuzz_${target}_replay ${fuzz}/corpus/${target})
    set_tests_properties(fuzz_${target}_replay PROPERTIES TIMEOUT 120)
endforeach()
