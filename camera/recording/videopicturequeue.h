#pragma once

#include "camera/recording/videopicture.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

namespace korvane::recording {

/// Pictures on their way from the thread that draws them to the one that encodes them, and back for the next
/// use: as many as it was given go round. Any thread.
class VideoPictureQueue
{
public:
    using Picture = std::unique_ptr<VideoPicture>;

    /// Adds a picture to draw on, a new one or one that was encoded.
    void giveBack(Picture picture);
    /// A picture to draw on; waits for one. Nothing once the queue was closed.
    Picture takeToDraw();
    /// A picture that was drawn.
    void push(Picture picture);
    /// The oldest picture that was drawn; waits for one. Nothing once the last one is out or the queue was
    /// closed.
    Picture takeToEncode();
    /// No more pictures will be drawn.
    void end();
    /// Nobody encodes any more: what waits is let go.
    void close();

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Picture> spare; ///< under mutex
    std::deque<Picture> drawn; ///< under mutex
    bool ended = false; ///< under mutex
    bool closed = false; ///< under mutex
};

} // namespace korvane::recording
