#include "camera/simulation/flickerfilter.h"

#include <cmath>

namespace korvane::simulation {

namespace {

constexpr std::uint32_t polarityBit = 1;
constexpr unsigned scoreShift = 1;
constexpr std::uint32_t scoreMask = 7;
constexpr unsigned periodShift = 4; // 0 there: the period was outside the band
constexpr unsigned riseShift = 16;
constexpr std::uint32_t periodMask = (1U << (riseShift - periodShift)) - 1;
constexpr std::uint32_t belowRise = (1U << riseShift) - 1;

// A period that fits the one before counts for flicker, one that does not counts twice against it. Three fit
// by chance too seldom to thin out motion; at the most it takes three that do not fit to be motion again.
// The digit of a score, from the right, is the score after such a period.
constexpr std::uint32_t enough = 3;
constexpr std::uint32_t raised = 0x77654321;
constexpr std::uint32_t lowered = 0x54321000;
// A pixel that has not brightened for so many of the longest periods sees no flicker any more.
constexpr std::uint32_t patience = 2;
// Periods fit when they differ by less than a quarter: noise of the thresholds moves events that much.
constexpr unsigned toleranceShift = 2;

float ticks(float hertz)
{
    return 1e6F / hertz / static_cast<float>(1U << FlickerFilter::tickShift);
}

// A period that is no whole number of ticks is told as the number below or above it.
std::uint32_t fewestTicks(float hertz)
{
    return static_cast<std::uint32_t>(std::floor(ticks(hertz)));
}

std::uint32_t mostTicks(float hertz)
{
    return static_cast<std::uint32_t>(std::ceil(ticks(hertz)));
}

} // namespace

FlickerFilter::FlickerFilter(int width, int height)
    : places{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)},
      clock(patience * mostTicks(lowestFrequency), 32 - riseShift, tickShift)
{
    configure(settings);
}

void FlickerFilter::configure(const Settings& next)
{
    if (next.enabled && !settings.enabled)
        pixels.assign(places.count(), 0U);
    settings = next;
    shortest = fewestTicks(settings.highFrequency);
    longest = mostTicks(settings.lowFrequency);
}

void FlickerFilter::moveTo(std::uint64_t timestamp)
{
    const std::uint64_t by = clock.moveTo(timestamp);
    for (std::uint32_t& pixel : pixels)
        pixel = ShortClock::moved(pixel >> riseShift, by) << riseShift | (pixel & belowRise);
}

std::size_t FlickerFilter::sort(const Event2D* events, std::size_t count, Event2D* out)
{
    const bool wanted = settings.mode == Mode::BandPass;
    const auto rule = [wanted, time = clock, least = shortest, bandwidth = longest - shortest,
                       stale = patience * longest](const Event2D& event, std::uint32_t& pixel) {
        const std::uint32_t now = time.shortTime(event.timestamp);
        const std::uint32_t polarity = event.polarity & polarityBit;
        const std::uint32_t interval = now - (pixel >> riseShift);
        const std::uint32_t period = pixel >> periodShift & periodMask;
        const std::uint32_t score = pixel >> scoreShift & scoreMask;
        const std::uint32_t current = interval <= stale ? 1 : 0;

        const std::uint32_t difference = choose(interval < period, period - interval, interval - period);
        const std::uint32_t inBand = interval - least <= bandwidth ? 1 : 0;
        const std::uint32_t fits = inBand & (difference < period >> toleranceShift ? 1U : 0U);
        const std::uint32_t digits = choose(fits != 0, raised, lowered & (0U - current));
        const std::uint32_t judged = digits >> (4 * score) & scoreMask;
        const std::uint32_t risen
            = now << riseShift | (interval & (0U - inBand)) << periodShift | judged << scoreShift | polarity;
        const std::uint32_t stayed = (pixel & ~polarityBit) | polarity;
        pixel = choose((polarity & ~pixel) != 0, risen, stayed);

        const std::uint32_t sure = (pixel >> scoreShift & scoreMask) >= enough ? 1 : 0;
        return (sure & current) == (wanted ? 1U : 0U);
    };
    return filterPixelwise(places, pixels.data(), events, count, out, !wanted, rule);
}

std::size_t FlickerFilter::filter(Event2D* events, std::size_t count)
{
    return filterInReach(
        clock, events, count, [this](std::uint64_t time) { moveTo(time); },
        [this](const Event2D* from, std::size_t length, Event2D* out) { return sort(from, length, out); });
}

} // namespace korvane::simulation
