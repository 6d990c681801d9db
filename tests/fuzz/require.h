#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the process, as fuzzers expect it of a finding, when something that must hold does not.
inline void require(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}
