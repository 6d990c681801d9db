#include "camera/simulation/framecounts.h"

#include "camera/simulation/fusionstage.h"

#include <algorithm>

namespace korvane::simulation {

namespace {

constexpr std::size_t width = fusiongeometry::eventWidth;
constexpr std::size_t height = fusiongeometry::eventHeight;
constexpr std::size_t counters = width * height * 2;

std::uint64_t endOfSlot(std::uint64_t time)
{
    constexpr std::uint64_t period = FrameCounts::period;
    return (time + period - 1) / period * period;
}

void addTo(std::vector<std::uint16_t>& sums, const std::vector<std::uint16_t>& counts)
{
    for (std::size_t i = 0; i < sums.size(); ++i)
        sums[i] = static_cast<std::uint16_t>(std::min(sums[i] + counts[i], int{UINT16_MAX}));
}

} // namespace

std::shared_ptr<EventCountFrame> FrameCounts::emptyCounts()
{
    const auto free = std::find_if(spare.begin(), spare.end(),
                                   [](const auto& counts) { return counts.use_count() == 1; });
    if (free != spare.end()) {
        std::fill((*free)->counts.begin(), (*free)->counts.end(), std::uint16_t{0});
        return *free;
    }
    spare.push_back(std::make_shared<EventCountFrame>());
    spare.back()->counts.resize(counters);
    return spare.back();
}

FrameCounts::Slot& FrameCounts::slotFor(std::uint64_t time)
{
    const std::uint64_t end = endOfSlot(time);
    if (open.empty() || open.back().end < end) {
        // While no frame comes the oldest slots become one: their events belong to the next frame together.
        if (open.size() >= framesKept) {
            addTo(open[1].counts->counts, open[0].counts->counts);
            open.pop_front();
        }
        open.push_back({end, emptyCounts()});
    }
    return open.back();
}

void FrameCounts::count(std::span<const Event2D> events)
{
    const std::lock_guard lock(mutex);
    Slot* slot = nullptr;
    for (const Event2D& event : events) {
        if (event.x == 0 || event.x >= width || event.y >= height)
            continue;
        if (slot == nullptr || event.timestamp > slot->end)
            slot = &slotFor(event.timestamp);
        const std::size_t pixel = event.y * width + (width - event.x);
        std::uint16_t& count = slot->counts->counts[2 * pixel + (event.polarity != 0 ? 1 : 0)];
        if (count != UINT16_MAX)
            ++count;
    }
}

void FrameCounts::closeFrame(std::uint64_t time)
{
    const std::lock_guard lock(mutex);
    Slot frame{time, nullptr};
    while (!open.empty() && open.front().end <= time) {
        const Slot slot = open.front();
        open.pop_front();
        if (!frame.counts) {
            frame.counts = slot.counts;
            continue;
        }
        // A frame was left out: its events belong to this one.
        addTo(frame.counts->counts, slot.counts->counts);
    }
    if (!frame.counts)
        frame.counts = emptyCounts();
    if (closed.size() >= framesKept)
        closed.pop_front();
    closed.push_back(std::move(frame));
}

void FrameCounts::reopenLast()
{
    const std::lock_guard lock(mutex);
    if (closed.empty())
        return;
    // Counts that somebody may have been given do not change any more.
    const Slot slot{closed.back().end, emptyCounts()};
    addTo(slot.counts->counts, closed.back().counts->counts);
    closed.pop_back();
    open.push_front(slot);
}

bool FrameCounts::get(std::shared_ptr<EventCountFrame>& out, std::uint64_t time) const
{
    const std::uint64_t end = endOfSlot(time);
    const std::lock_guard lock(mutex);
    const auto found
        = std::find_if(closed.begin(), closed.end(), [end](const Slot& slot) { return slot.end == end; });
    if (found == closed.end())
        return false;
    out = found->counts;
    return true;
}

void FrameCounts::clear()
{
    const std::lock_guard lock(mutex);
    open.clear();
    closed.clear();
}

} // namespace korvane::simulation
