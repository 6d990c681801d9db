#pragma once

#include "camera/driver/event2d.h"
#include "camera/simulation/pixelwise.h"
#include "camera/simulation/shortclock.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvane::simulation {

/// Tells flickering light from motion. A pixel under a flickering light gets brighter again and again after
/// equal periods; one that sees a few such periods within the band is held to see flicker until they end.
/// Events outside the sensor are motion. One thread at a time.
class FlickerFilter
{
public:
    enum class Mode {
        BandStop, ///< flicker is removed
        BandPass, ///< only flicker passes
    };
    /// The band's two ends belong to it. Hz, lowestFrequency to highestFrequency, the lower one first.
    struct Settings
    {
        bool enabled = false;
        Mode mode = Mode::BandStop;
        float lowFrequency = 50.0F;
        float highFrequency = 500.0F;
    };
    static constexpr float lowestFrequency = 10.0F;
    static constexpr float highestFrequency = 1000.0F;
    /// Periods are told in units of 2^tickShift microseconds, so that what is kept of a pixel stays small.
    static constexpr unsigned tickShift = 5;

    /// `width` and `height` of the sensor in pixels.
    FlickerFilter(int width, int height);

    /// Before any other use. A filter that is switched on has seen nothing yet.
    void configure(const Settings& next);
    /// Moves the events that pass to the front, in their order, and returns how many they are.
    std::size_t filter(Event2D* events, std::size_t count);

private:
    std::size_t sort(const Event2D* events, std::size_t count, Event2D* out);
    void moveTo(std::uint64_t timestamp);

    PixelPlaces places;
    Settings settings;
    std::uint32_t shortest = 0; // periods of the band, ticks
    std::uint32_t longest = 0;
    ShortClock clock;
    // Per pixel and one more for what lies outside: polarity of the last event, score, period before the last
    // change from OFF to ON, short time of that.
    std::vector<std::uint32_t> pixels;
};

} // namespace korvane::simulation
