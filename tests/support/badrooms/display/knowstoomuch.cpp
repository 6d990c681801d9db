// For the test of the include check: a room that knows one above it.
#include "playback/dvsplayer.h"
