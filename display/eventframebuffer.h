#pragma once

#include "camera/driver/event2d.h"
#include "display/kernels/eventpainter.h"

#include <QImage>
#include <QPixmap>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

/// Collects the events of a DVS-only source into pictures of 1280 x 720 pixels, whatever the sensor's size.
/// Any thread adds events; pictures are taken by one thread at a time, pixmaps on the GUI thread.
class EventFrameBuffer
{
public:
    static constexpr int width = 1280;
    static constexpr int height = 720;

    EventFrameBuffer();

    /// Paints a batch, the last event at a pixel wins. Events outside the picture are neither painted nor
    /// counted.
    void addEvents(const korvane::Event2D* begin, const korvane::Event2D* end);
    /// Hands the current picture over and clears the buffer. GUI thread.
    void takeFrame(QPixmap& out);
    /// The same for any thread, as a 32-bit image.
    QImage takeImage();
    /// Whether addEvents was called, with events or without, since the last picture was taken. A view shows
    /// no picture otherwise: the cleared buffer would turn it grey.
    bool hasNewEvents() const { return newEvents.load(); }

private:
    std::mutex lock; ///< guards `drawing` and `rate`
    /// One byte a pixel (see kernels::PlaneValue): taking a picture swaps it with `shown` and colours that
    /// one outside the lock.
    std::vector<std::uint8_t> drawing;
    korvane::kernels::EventRateCounter rate;
    std::atomic<bool> newEvents{false};

    std::mutex takeLock; ///< guards `shown`
    std::vector<std::uint8_t> shown; ///< all background between two pictures
};
