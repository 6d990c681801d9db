#include "display/eventframebuffer.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t pixels = std::size_t(EventFrameBuffer::width) * EventFrameBuffer::height;

} // namespace

EventFrameBuffer::EventFrameBuffer()
    : drawing(pixels, korvane::kernels::PlaneBackground), shown(pixels, korvane::kernels::PlaneBackground)
{
}

void EventFrameBuffer::addEvents(const korvane::Event2D* begin, const korvane::Event2D* end)
{
    const std::lock_guard guard(lock);
    korvane::kernels::paintEvents(begin, end, drawing.data(), width, height, rate);
    newEvents = true;
}

QImage EventFrameBuffer::takeImage()
{
    const std::lock_guard takeGuard(takeLock);
    {
        const std::lock_guard guard(lock);
        std::swap(drawing, shown);
        newEvents = false;
    }
    QImage image(width, height, QImage::Format_RGB32);
    korvane::kernels::colourPlane(shown.data(), pixels, korvane::kernels::dvsPalette,
                                  reinterpret_cast<korvane::kernels::Rgb32*>(image.bits()));
    std::fill(shown.begin(), shown.end(), korvane::kernels::PlaneBackground);
    return image;
}

void EventFrameBuffer::takeFrame(QPixmap& out)
{
    // A 32-bit image is what screens hold: moved in, it becomes the pixmap without another copy.
    out = QPixmap::fromImage(takeImage());
}
