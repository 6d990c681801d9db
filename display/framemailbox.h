#pragma once

#include <QImage>

#include <mutex>
#include <utility>

/// One place for the newest picture on its way to the GUI thread: a picture that was not fetched in time is
/// replaced, and at most one request to fetch is pending. Any thread.
class FrameMailbox
{
public:
    /// Puts a picture; true when the receiver has to be told (else it was told and has not come yet).
    bool put(QImage image)
    {
        const std::lock_guard guard(lock);
        newest = std::move(image);
        return !std::exchange(pending, true);
    }

    /// The newest picture, null when there is none.
    QImage take()
    {
        const std::lock_guard guard(lock);
        pending = false;
        return std::exchange(newest, QImage());
    }

    /// Throws the picture away; a receiver that was told will find none.
    void drop()
    {
        const std::lock_guard guard(lock);
        newest = QImage();
    }

private:
    std::mutex lock;
    QImage newest;
    bool pending = false;
};
