#pragma once

#include "camera/simulation/frameevents.h"
#include "camera/simulation/noisesource.h"
#include "camera/simulation/pixelkernels.h"
#include "camera/simulation/random.h"
#include "camera/simulation/sensorparameters.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace korvane::simulation {

/// The pixels of a change detector. Each one follows the logarithm of the light through a low-pass whose
/// corner grows with the light, compares it with the level it remembers from its last event, and makes an
/// event when the difference reaches a threshold of its own. After an event it is blind for the refractory
/// time and remembers the level at the end of that. One thread at a time.
class PixelArray
{
public:
    /// Pixels are numbered along the rows, segmentWidth to a segment; `seed` decides mismatch and jitter.
    PixelArray(std::size_t segmentCount, std::uint64_t seed);

    /// Between frames. `frameUs` is the length of the frames to come, microseconds.
    void setParameters(const SensorParameters& parameters, std::uint32_t frameUs);
    /// Which loops to use; for tests, the best ones are chosen by themselves.
    void setKernels(const PixelKernels& chosen) { kernels = &chosen; }
    /// Settles a segment on this light as if it had seen it for long.
    void settle(std::size_t segment, const std::int16_t* light);

    /// The part of a frame that a step covers.
    struct Step
    {
        std::uint64_t frameStart = 0; ///< microseconds
        std::uint32_t from = 0; ///< microseconds from the start of the frame
        std::uint32_t to = 0;
        int stepsLog2 = 0; ///< the frame is cut into 2^stepsLog2 such steps
    };
    /// Lets the light of a segment change to `light` during a step and adds the events that this and the
    /// `noise` on these pixels make. True when a pixel is blind at the end: its segment must not be left out
    /// next.
    bool advance(std::size_t segment, std::uint32_t firstColumn, const std::int16_t* light, const Step& step,
                 std::span<const NoiseEvent> noise, FrameEvents& out);
    /// Moves what the pixels remember towards what they see, once a frame; does nothing without a high-pass.
    void forget();

    /// The levels that the pixels of a segment have now.
    const std::int16_t* levels(std::size_t segment) const { return segments[segment].level; }

private:
    /// All that is kept for a run of pixels, together because it is used together.
    struct alignas(64) Segment
    {
        std::int16_t level[segmentWidth] = {};
        std::int16_t upper[segmentWidth] = {}; // an event is due at or above
        std::int16_t lower[segmentWidth]
            = {}; // an event is due at or below; while blind, when the pixel sees again
        std::int16_t onThreshold[segmentWidth] = {};
        std::int16_t offThreshold[segmentWidth] = {};
    };
    class Crossings; // of the pixels of a segment during a step

    void setThresholds(const SensorParameters& parameters);
    template <typename Move>
    void moveBounds(std::size_t index, Move move);

    const PixelKernels* kernels;
    std::vector<Segment> segments;
    std::vector<std::uint64_t> blind; // per segment, bit i for pixel i
    std::vector<std::int16_t> onMismatch; // per pixel; standard deviations, times 4096
    std::vector<std::int16_t> offMismatch;
    std::array<Bandwidth, 5> bandwidths;
    std::array<std::int16_t, 256> jitter{}; // normal, times 32768
    std::int16_t forgetShare = 0;
    std::uint32_t refractory = 0;
    QuickRandom random;
};

} // namespace korvane::simulation
