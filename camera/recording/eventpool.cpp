#include "camera/recording/eventpool.h"

#include <utility>

namespace korvane::recording {

namespace {

// A view plays one window, steps to another and holds a third; a vector that a crowded moment blew up is not
// kept.
constexpr std::size_t keptVectors = 3;
constexpr std::size_t keptEvents = 2 * 1024 * 1024;

} // namespace

EventPool::EventPool() : shelf(std::make_shared<Shelf>())
{
    // Whoever drops a vector, perhaps because memory is short, needs none for it.
    shelf->vectors.reserve(keptVectors);
}

std::shared_ptr<std::vector<Event2D>> EventPool::take()
{
    std::unique_ptr<std::vector<Event2D>> vector;
    {
        const std::lock_guard lock(shelf->mutex);
        if (!shelf->vectors.empty()) {
            vector = std::move(shelf->vectors.back());
            shelf->vectors.pop_back();
        }
    }
    if (!vector)
        vector = std::make_unique<std::vector<Event2D>>();
    vector->clear();
    return {vector.release(), [home = shelf](std::vector<Event2D>* returned) {
                std::unique_ptr<std::vector<Event2D>> owned(returned);
                if (owned->capacity() > keptEvents)
                    return;
                const std::lock_guard lock(home->mutex);
                if (home->vectors.size() < keptVectors)
                    home->vectors.push_back(std::move(owned));
            }};
}

} // namespace korvane::recording
