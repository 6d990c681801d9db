#pragma once

#include "camera/driver/event2d.h"
#include "display/kernels/eventpainter.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace korvane::recording {

/// Divides the events of a range into pictures of 33333 us each, painted by the rules of the live view.
/// Picture k shows start + k * period <= time < start + (k + 1) * period; the last one may cover less. One
/// thread at a time.
class EventPictures
{
public:
    static constexpr std::uint64_t period = 33333; ///< microseconds
    /// What the live view shows at most; events beyond are not drawn there either.
    static constexpr unsigned mostColumns = 1280;
    static constexpr unsigned mostRows = 720;

    /// Gets the pictures in order, none left out, as event planes (see kernels::PlaneValue) that are valid
    /// during the call. False ends.
    using Sink = std::function<bool(const std::uint8_t* plane)>;

    /// For the range start <= time <= end, both microseconds; a picture is `columns` x `rows` pixels.
    EventPictures(unsigned columns, unsigned rows, std::uint64_t start, std::uint64_t end, Sink pictureSink);

    /// Events of the range, in time order. False when the sink has ended.
    bool add(std::span<const Event2D> events);
    /// Hands out the pictures up to the range's end. False when the sink has ended.
    bool finish();

    /// How many pictures the range makes.
    std::uint64_t count() const { return pictures; }

private:
    bool next();

    const unsigned width;
    const unsigned height;
    const std::uint64_t rangeStart;
    const std::uint64_t pictures;
    const Sink sink;
    std::uint64_t current = 0; ///< number of the picture being painted
    std::vector<std::uint8_t> plane;
    kernels::EventRateCounter rate;
};

} // namespace korvane::recording
