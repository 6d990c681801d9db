#pragma once

#include <QString>

#include <cstdint>

/// "MM:SS:UUUUUU" of a time in microseconds, zero-filled; minutes are not wrapped at 60 and grow as wide as
/// needed. 75000250 gives "01:15:000250". Any thread.
QString timestampToText(uint64_t us);
