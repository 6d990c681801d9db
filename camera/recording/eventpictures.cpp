#include "camera/recording/eventpictures.h"

#include <algorithm>
#include <utility>

namespace korvane::recording {

EventPictures::EventPictures(unsigned columns, unsigned rows, std::uint64_t start, std::uint64_t end,
                             Sink pictureSink)
    : width(columns), height(rows), rangeStart(start), pictures((end - start) / period + 1),
      sink(std::move(pictureSink)), plane(std::size_t(columns) * rows, kernels::PlaneBackground)
{
}

bool EventPictures::add(std::span<const Event2D> events)
{
    while (!events.empty()) {
        const std::uint64_t nextStart = rangeStart + (current + 1) * period;
        const auto own = events.back().timestamp < nextStart
            ? events.size()
            : static_cast<std::size_t>(std::partition_point(events.begin(), events.end(),
                                                            [nextStart](const Event2D& event) {
                                                                return event.timestamp < nextStart;
                                                            })
                                       - events.begin());
        kernels::paintEvents(events.data(), events.data() + own, plane.data(), width, height, rate);
        events = events.subspan(own);
        if (!events.empty() && !next())
            return false;
    }
    return true;
}

bool EventPictures::finish()
{
    while (current < pictures) {
        if (!next())
            return false;
    }
    return true;
}

bool EventPictures::next()
{
    if (!sink(plane.data()))
        return false;
    std::fill(plane.begin(), plane.end(), std::uint8_t(kernels::PlaneBackground));
    ++current;
    return true;
}

} // namespace korvane::recording
