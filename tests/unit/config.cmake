korvane_add_test(config_test
    SOURCES config_test.cpp ../support/faultydisk.cpp ../support/faultydisk.h
    LINKS korvane_config)
