#pragma once

#include "camera/driver/apsframe.h"
#include "camera/simulation/fusionstage.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace korvane::simulation {

/// What the intensity sensor of a fusion camera does with the light. A plain value.
struct ApsParameters
{
    static constexpr int shortestExposureUs = 10;
    static constexpr int longestExposureUs = 33000; ///< about the time from a frame to the next
    static constexpr int greatestGainDb = 24;
    static constexpr int greatestBlackLevel = 64;

    int exposureUs = 10000;
    int gainDb = 0;
    int blackLevel = 0; ///< of 255: added to every value
    bool flipped = false; ///< upside down

    friend bool operator==(const ApsParameters&, const ApsParameters&) = default;
};

/// A stage as the intensity sensor of a fusion camera sees it. One thread at a time.
class ApsRenderer
{
public:
    explicit ApsRenderer(std::shared_ptr<const FusionStage> watched);

    /// Takes effect with the next picture.
    void setParameters(const ApsParameters& parameters);
    /// The picture at a time, microseconds of the stage's life: 3840 x 2160 pixels, valid until the next
    /// call.
    ApsFrame render(std::uint64_t time);

private:
    struct Sprite
    {
        int width = 0;
        int height = 0;
        std::vector<std::uint16_t> light; ///< 0 to 4095
        std::vector<std::uint8_t> opacity;
        std::vector<std::uint8_t> pixels; ///< developed, 3 bytes each
    };
    struct Place
    {
        int left = 0;
        int top = 0;
        int right = 0;
        int bottom = 0;
    };
    void developAll();
    Place placeOf(std::size_t actor, double seconds) const;
    void restore(const Place& place);
    void draw(const Sprite& sprite, const Place& place);

    std::shared_ptr<const FusionStage> stage;
    std::vector<Sprite> sprites; ///< in the stage's order, from the front
    std::vector<std::uint16_t> wall; ///< light, 0 to 4095
    ApsParameters parameters;
    bool developed = false;
    std::vector<std::uint8_t> wallPixels; ///< developed
    std::vector<std::uint8_t> picture;
    std::vector<std::uint8_t> turned; ///< the picture upside down, when asked for
    std::vector<Place> drawn; ///< where sprites stand in `picture`
};

} // namespace korvane::simulation
