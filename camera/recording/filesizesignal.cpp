#include "camera/recording/filesizesignal.h"

#include <csignal>
#include <mutex>

#include <signal.h>

namespace korvane::recording {

void ignoreFileSizeSignal()
{
    static std::once_flag once;
    std::call_once(once, [] {
        struct sigaction present = {};
        if (sigaction(SIGXFSZ, nullptr, &present) == 0 && present.sa_handler == SIG_DFL)
            std::signal(SIGXFSZ, SIG_IGN);
    });
}

} // namespace korvane::recording
