#include "camera/driver/backendentry.h"

#include <stdexcept>

// Libraries that are refused, one a fault.

#if FAULT == 1 // of another version
KORVANE_EXPORTED int korvane_backend_version()
{
    return KORVANE_BACKEND_VERSION + 1;
}
KORVANE_EXPORTED korvane::Backend* korvane_create_backend()
{
    throw std::logic_error("asked in spite of its version");
}
#elif FAULT == 2 // without an entry point
KORVANE_EXPORTED int korvane_backend_version()
{
    return KORVANE_BACKEND_VERSION;
}
#elif FAULT == 3 // a library of something else
KORVANE_EXPORTED int something_else()
{
    return 0;
}
#elif FAULT == 4 // throws
KORVANE_EXPORTED int korvane_backend_version()
{
    return KORVANE_BACKEND_VERSION;
}
KORVANE_EXPORTED korvane::Backend* korvane_create_backend()
{
    throw std::runtime_error("no licence");
}
#elif FAULT == 5 // throws what is no exception
KORVANE_EXPORTED int korvane_backend_version()
{
    return KORVANE_BACKEND_VERSION;
}
KORVANE_EXPORTED korvane::Backend* korvane_create_backend()
{
    throw 1;
}
#elif FAULT == 6 // makes nothing
KORVANE_EXPORTED int korvane_backend_version()
{
    return KORVANE_BACKEND_VERSION;
}
KORVANE_EXPORTED korvane::Backend* korvane_create_backend()
{
    return nullptr;
}
#elif FAULT == 7 // lacks what it calls
extern "C" int korvane_test_nowhere();
KORVANE_EXPORTED int korvane_backend_version()
{
    return korvane_test_nowhere();
}
#endif
