#pragma once

#include "camera/driver/event2d.h"
#include "camera/simulation/pixelwise.h"
#include "camera/simulation/shortclock.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvane::simulation {

/// Thins bursts: events of one pixel and polarity of which each follows the one before within a threshold. An
/// edge of strong contrast leaves such a burst at each pixel that it passes, a trail behind its first events;
/// an event of noise comes alone. Events outside the sensor pass. One thread at a time.
class TrailFilter
{
public:
    enum class Mode {
        Trail, ///< only the first event of each burst passes
        Stc, ///< all but the first: what comes alone has no contrast to confirm it
        StcWithoutTrail, ///< only the second
    };
    struct Settings
    {
        bool enabled = false;
        Mode mode = Mode::Trail;
        std::uint32_t threshold = 10'000; ///< microseconds, at most longestThreshold
    };
    static constexpr std::uint32_t longestThreshold = 100'000;

    /// `width` and `height` of the sensor in pixels.
    TrailFilter(int width, int height);

    /// Before any other use. A filter that is switched on has seen nothing yet.
    void configure(const Settings& next);
    /// Moves the events that pass to the front, in their order, and returns how many they are.
    std::size_t filter(Event2D* events, std::size_t count);

private:
    template <Mode chosen>
    std::size_t thin(const Event2D* events, std::size_t count, Event2D* out);
    std::size_t thinRun(const Event2D* events, std::size_t count, Event2D* out);
    void moveTo(std::uint64_t timestamp);

    PixelPlaces places;
    Settings settings;
    ShortClock clock;
    // Per pixel and one more for what lies outside: polarity of the last event, whether it followed another
    // one, its short time.
    std::vector<std::uint32_t> last;
};

} // namespace korvane::simulation
