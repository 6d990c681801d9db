korvane_add_test(config_test SOURCES config_test.cpp LINKS korvane_config)
