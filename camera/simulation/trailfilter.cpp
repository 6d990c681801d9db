#include "camera/simulation/trailfilter.h"

namespace korvane::simulation {

namespace {

constexpr unsigned timeShift = 2;
constexpr std::uint32_t polarityBit = 1;
constexpr unsigned followerShift = 1;
constexpr std::uint32_t marks = (1U << timeShift) - 1;

} // namespace

TrailFilter::TrailFilter(int width, int height)
    : places{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)},
      clock(longestThreshold, 32 - timeShift)
{
}

void TrailFilter::configure(const Settings& next)
{
    if (next.enabled && !settings.enabled)
        last.assign(places.count(), 0U);
    settings = next;
}

void TrailFilter::moveTo(std::uint64_t timestamp)
{
    const std::uint64_t by = clock.moveTo(timestamp);
    for (std::uint32_t& word : last) {
        const std::uint32_t moved = ShortClock::moved(word >> timeShift, by);
        word = moved << timeShift | (word & marks);
    }
}

template <TrailFilter::Mode chosen>
std::size_t TrailFilter::thin(const Event2D* events, std::size_t count, Event2D* out)
{
    const auto rule
        = [time = clock, threshold = settings.threshold](const Event2D& event, std::uint32_t& word) {
              const std::uint32_t now = time.shortTime(event.timestamp);
              const std::uint32_t polarity = event.polarity & polarityBit;
              const std::uint32_t recent = now - (word >> timeShift) <= threshold ? 1 : 0;
              const std::uint32_t follows = recent & ~(word ^ polarity) & 1U;
              const std::uint32_t afterFollower = word >> followerShift & 1U;
              word = now << timeShift | follows << followerShift | polarity;
              if constexpr (chosen == Mode::Trail)
                  return follows == 0;
              else if constexpr (chosen == Mode::Stc)
                  return follows != 0;
              else
                  return (follows & ~afterFollower) != 0;
          };
    return filterPixelwise(places, last.data(), events, count, out, true, rule);
}

std::size_t TrailFilter::thinRun(const Event2D* events, std::size_t count, Event2D* out)
{
    switch (settings.mode) {
    case Mode::Trail:
        return thin<Mode::Trail>(events, count, out);
    case Mode::Stc:
        return thin<Mode::Stc>(events, count, out);
    case Mode::StcWithoutTrail:
        break;
    }
    return thin<Mode::StcWithoutTrail>(events, count, out);
}

std::size_t TrailFilter::filter(Event2D* events, std::size_t count)
{
    return filterInReach(
        clock, events, count, [this](std::uint64_t time) { moveTo(time); },
        [this](const Event2D* from, std::size_t length, Event2D* out) { return thinRun(from, length, out); });
}

} // namespace korvane::simulation
