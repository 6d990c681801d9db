#include "camera/recording/videopicturequeue.h"

#include <utility>

namespace korvane::recording {

void VideoPictureQueue::giveBack(Picture picture)
{
    {
        const std::lock_guard lock(mutex);
        spare.push_back(std::move(picture));
    }
    changed.notify_all();
}

VideoPictureQueue::Picture VideoPictureQueue::takeToDraw()
{
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return !spare.empty() || closed; });
    if (closed)
        return nullptr;
    Picture picture = std::move(spare.back());
    spare.pop_back();
    return picture;
}

void VideoPictureQueue::push(Picture picture)
{
    {
        const std::lock_guard lock(mutex);
        drawn.push_back(std::move(picture));
    }
    changed.notify_all();
}

VideoPictureQueue::Picture VideoPictureQueue::takeToEncode()
{
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return !drawn.empty() || ended || closed; });
    if (closed || drawn.empty())
        return nullptr;
    Picture picture = std::move(drawn.front());
    drawn.pop_front();
    return picture;
}

void VideoPictureQueue::end()
{
    {
        const std::lock_guard lock(mutex);
        ended = true;
    }
    changed.notify_all();
}

void VideoPictureQueue::close()
{
    {
        const std::lock_guard lock(mutex);
        closed = true;
    }
    changed.notify_all();
}

} // namespace korvane::recording
