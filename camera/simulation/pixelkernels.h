#pragma once

#include <cstdint>

namespace korvane::simulation {

/// Light and pixel levels are natural logarithms of intensity in fixed point, so many units for a factor of
/// e. Mid-grey is 0; what a pixel sees stays within +-8191 units, a factor of 54 to either side.
inline constexpr int logUnits = 2048;
inline constexpr int darkestLevel = -8191;
inline constexpr int brightestLevel = 8191;

/// Pixels are worked on in runs of so many neighbours of a row.
inline constexpr int segmentWidth = 64;

/// Share of the way that a pixel's level goes towards the light in one step, times 32768: `base` at mid-grey,
/// growing by `slope` times the level over 8192, at least `least`.
struct Bandwidth
{
    std::int16_t base = 32767;
    std::int16_t slope = 0;
    std::int16_t least = 1;
};

/// Four neighbouring values of an image around a point between them: two rows, and how far the point lies
/// from the first column (per row) and from the first row, times 32768.
struct Taps
{
    const std::int16_t* first = nullptr; ///< segmentWidth + 1 values
    const std::int16_t* second = nullptr; ///< segmentWidth + 1 values
    std::int16_t firstShift = 0;
    std::int16_t secondShift = 0;
    std::int16_t rowShift = 0;
};

/// The inner loops, one table per instruction set; all tables give the same numbers to the bit. Pure
/// functions on memory, any thread.
struct PixelKernels
{
    const char* name;
    /// Moves the levels of a segment towards the light, keeps the former ones in `before` and returns the
    /// pixels (bit i for pixel i) whose level is not inside (lower, upper).
    std::uint64_t (*step)(const std::int16_t* light, std::int16_t* level, std::int16_t* before,
                          const std::int16_t* lower, const std::int16_t* upper, Bandwidth bandwidth);
    /// Interpolates a segment.
    void (*sample)(std::int16_t* out, const Taps& image);
    /// Interpolates a segment and its opacity (0 to 32767) and lays it over `out`.
    void (*blend)(std::int16_t* out, const Taps& image, const Taps& opacity);
    /// Interpolates along circles: pixel i sees `rings[offset[i] + place]` where place = (angle[i] + turn)
    /// mod 65536 counts 65536 to a full turn and a ring has 2^ringBits values and a copy of the first one.
    void (*turn)(std::int16_t* out, const std::int16_t* rings, const std::uint32_t* offset,
                 const std::uint16_t* angle, std::uint32_t turn, int ringBits);
};

/// The table for the best instruction set of this machine.
const PixelKernels& pixelKernels();
/// The table with this name ("generic", "avx2", "avx512"); null when this machine or build lacks it.
const PixelKernels* pixelKernels(const char* name);

} // namespace korvane::simulation
