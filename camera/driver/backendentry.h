#pragma once

#include "camera/driver/backend.h"

/// What a backend in a shared library exports, with C names:
///
///     int korvane_backend_version();
///     korvane::Backend* korvane_create_backend();
///
/// The first tells the version of the boundary that the library was compiled against; a program of another
/// one refuses the library before it calls anything else. The second makes the backend, which then belongs to
/// the program; it may throw or give nothing, which refuses the library too. Each is called once, on one
/// thread. KORVANE_BACKEND_ENTRY writes both.

/// Counts up with every change to a class of camera/driver/ that a library compiled before would not survive.
#define KORVANE_BACKEND_VERSION 1

#define KORVANE_EXPORTED extern "C" __attribute__((visibility("default")))

/// Stands once in a library, outside all namespaces: the backend is an object of this default-constructible
/// class.
#define KORVANE_BACKEND_ENTRY(BackendClass)                                                                  \
    KORVANE_EXPORTED int korvane_backend_version()                                                           \
    {                                                                                                        \
        return KORVANE_BACKEND_VERSION;                                                                      \
    }                                                                                                        \
    KORVANE_EXPORTED korvane::Backend* korvane_create_backend()                                              \
    {                                                                                                        \
        return new BackendClass;                                                                             \
    }                                                                                                        \
    static_assert(true)
