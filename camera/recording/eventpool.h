#pragma once

#include "camera/driver/event2d.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

namespace korvane::recording {

/// Event vectors that come back when their last user drops them, so that playing allocates nothing once it
/// runs. Any thread. The vectors outlive the pool where they have to.
class EventPool
{
public:
    EventPool();

    /// An empty vector, with the room it had before.
    std::shared_ptr<std::vector<Event2D>> take();

private:
    struct Shelf
    {
        std::mutex mutex;
        std::vector<std::unique_ptr<std::vector<Event2D>>> vectors;
    };
    std::shared_ptr<Shelf> shelf;
};

} // namespace korvane::recording
