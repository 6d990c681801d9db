korvane_add_test(missingresources_test GUI SOURCES missingresources_test.cpp LINKS korvane_shell)
# An English translation without a single text can be loaded but not installed.
string(ASCII 60 184 100 24 202 239 156 149 205 33 28 191 96 161 189 221 emptyTranslation)
file(CONFIGURE OUTPUT emptytranslation/app_en.qm CONTENT "${emptyTranslation}" @ONLY)
qt_add_resources(missingresources_test emptytranslation
    PREFIX / BASE "${CMAKE_CURRENT_BINARY_DIR}/emptytranslation"
    FILES "${CMAKE_CURRENT_BINARY_DIR}/emptytranslation/app_en.qm")

korvane_add_test(applicationsetup_test GUI
    SOURCES applicationsetup_test.cpp startarguments_test.cpp LINKS korvane_shell korvane_resources)
korvane_add_test(fonts_test GUI SOURCES fonts_test.cpp LINKS korvane_shell korvane_resources)
korvane_add_test(languages_test GUI SOURCES languages_test.cpp LINKS korvane_shell korvane_resources)
korvane_add_test(initdialog_test GUI SOURCES initdialog_test.cpp LINKS korvane_shell korvane_resources)
korvane_add_test(aboutusform_test GUI SOURCES aboutusform_test.cpp LINKS korvane_shell korvane_resources)
korvane_add_test(kvgeneralsetting_test GUI
    SOURCES kvgeneralsetting_test.cpp dialogcard.h LINKS korvane_shell korvane_resources)
target_compile_definitions(kvgeneralsetting_test PRIVATE
    KORVANE_OWN_FRAME=$<NOT:$<TARGET_EXISTS:QWindowKit::Widgets>>)
korvane_test_at_scale_2(kvgeneralsetting_test "*NothingIsClipped*")
korvane_add_test(languageswitch_test GUI
    SOURCES languageswitch_test.cpp dialogcard.h LINKS korvane_shell korvane_resources)
