#include "display/kernels/eventpainter.h"

#include "display/kernels/multiversion.h"

namespace korvane::kernels {

namespace {

constexpr std::uint64_t ratePeriod = 1'000'000; // microseconds

} // namespace

void paintEvents(const Event2D* begin, const Event2D* end, std::uint8_t* plane, unsigned width,
                 unsigned height, EventRateCounter& rate)
{
    // The plane is written through bytes, which may alias anything: what the loop needs stands in locals.
    std::uint64_t periodStart = rate.periodStart;
    std::uint64_t events = rate.eventsInPeriod;
    for (const Event2D* event = begin; event != end; ++event) {
        const unsigned x = event->x;
        const unsigned y = event->y;
        if (x >= width || y >= height)
            continue;
        plane[y * width + x] = event->polarity != 0 ? PlaneOn : PlaneOff;
        if (event->timestamp - periodStart > ratePeriod) {
            periodStart = event->timestamp;
            events = 0;
        } else {
            ++events;
        }
    }
    rate.periodStart = periodStart;
    rate.eventsInPeriod = events;
}

KORVANE_CLONES
void colourPlane(const std::uint8_t* plane, std::size_t count, const EventPalette& palette, Rgb32* pixels)
{
    const Rgb32 background = palette.background;
    const Rgb32 off = palette.off;
    const Rgb32 on = palette.on;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t value = plane[i];
        pixels[i] = value == PlaneBackground ? background : (value == PlaneOff ? off : on);
    }
}

} // namespace korvane::kernels
