#pragma once

// KORVANE_CLONES before a function: the compiler makes one version for each of these and the loader picks
// what the processor has. Sanitizers and clang get the plain one.
#if defined(__x86_64__) && !defined(__clang__) && !defined(__SANITIZE_THREAD__)                              \
    && !defined(__SANITIZE_ADDRESS__)
#define KORVANE_CLONES __attribute__((target_clones("arch=x86-64-v4", "avx2", "default")))
#else
#define KORVANE_CLONES
#endif
