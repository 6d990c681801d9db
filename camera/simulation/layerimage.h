#pragma once

#include "camera/simulation/canvas.h"

#include <cstdint>
#include <span>
#include <vector>

namespace korvane::simulation {

/// What a run of pixels of a picture holds, as bits.
namespace Cover {
inline constexpr std::uint8_t some = 1; ///< something opaque
inline constexpr std::uint8_t holes = 2; ///< something not fully opaque
inline constexpr std::uint8_t faint = 4; ///< shades that differ too little to make an event by themselves
inline constexpr std::uint8_t strong = 8; ///< shades that differ more, or an outline
} // namespace Cover

/// Logarithm of a light value of a canvas (0 to 4095), in logUnits.
std::int16_t levelOf(std::uint32_t light);

/// A painted picture as the pixels see it: blurred by the lens, as logarithms (logUnits), with summaries that
/// tell which parts are uniform. Rows may differ in length: a row of a wrapping picture is one turn around
/// the world. Immutable once made, any thread.
class LayerImage
{
public:
    struct Row
    {
        const std::int16_t* light = nullptr;
        const std::int16_t* opacity = nullptr; ///< 0 to 32767; null when the whole picture is opaque
        const std::uint8_t* cover
            = nullptr; ///< Cover bits of the runs of 2 x segmentWidth at each segmentWidth
        int length = 0; ///< pixels; a wrapping row repeats after so many
        double scale = 1.0; ///< its length over that of the picture
    };

    explicit LayerImage(const Canvas& canvas);
    /// Rows of different lengths that wrap and need no blur, from the top; scales are relative to `length`.
    /// The first row is transparent, so that the picture has a smooth upper edge.
    LayerImage(std::span<const std::vector<float>> shades, double length);

    int height() const { return static_cast<int>(rows.size()); }
    bool wraps() const { return wrapping; }
    /// Whether all rows have the same length.
    bool uniform() const { return sameLength; }
    /// `index` may be any column from 0 to length - 1; segmentWidth + 1 values can be read from there. The
    /// columns of a picture that ends begin with segmentWidth transparent ones and end with as many.
    Row row(int index) const
    {
        const Place& place = rows[static_cast<std::size_t>(index)];
        return {light.data() + place.values, opacity.empty() ? nullptr : opacity.data() + place.values,
                covers.data() + place.blocks, place.length, place.scale};
    }

private:
    struct Place
    {
        std::size_t values = 0;
        std::size_t blocks = 0;
        int length = 0;
        double scale = 1.0;
    };
    struct Range;
    std::vector<Range> rangesOf(const Place& place) const;
    void addRow(std::span<const std::int16_t> values, std::span<const std::int16_t> alphas, double scale);
    void summarize();

    bool wrapping;
    bool sameLength = true;
    std::vector<Place> rows;
    std::vector<std::int16_t> light;
    std::vector<std::int16_t> opacity;
    std::vector<std::uint8_t> covers;
};

} // namespace korvane::simulation
