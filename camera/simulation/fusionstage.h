#pragma once

#include "camera/simulation/canvas.h"

#include <array>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <vector>

namespace korvane::simulation {

/// How the two sensors of a fusion camera look at one stage. Stage coordinates (u, v) are those of the
/// picture that both are shown in: pixel (c, r) of the 1280 x 720 pixels shows the point (c, r).
namespace fusiongeometry {
inline constexpr int eventWidth = 1280;
inline constexpr int eventHeight = 720;
inline constexpr int apsWidth = 3840;
inline constexpr int apsHeight = 2160;
/// Intensity pixels for one event pixel, about the common centre.
inline constexpr double apsScale = 3.3517241;
} // namespace fusiongeometry

/// Paints on a canvas in the coordinates of a thing on the stage, its middle at (0, 0). One thread at a time.
class StagePainter
{
public:
    /// `scale` in canvas pixels for a stage unit; a mirrored canvas has u growing to the left.
    StagePainter(Canvas& paintedCanvas, double pixelsPerUnit, bool isMirrored)
        : canvas(paintedCanvas), scale(pixelsPerUnit), mirrored(isMirrored)
    {
    }

    void polygon(std::initializer_list<Point> corners, float shade) const;
    void polygon(std::vector<Point> corners, float shade) const;
    void ellipse(Point centre, double radiusX, double radiusY, float shade) const;

private:
    Point toCanvas(Point point) const;

    Canvas& canvas;
    double scale;
    bool mirrored;
};

/// Something that moves over the stage.
struct StageActor
{
    double halfWidth = 0; ///< stage units; nothing of it lies outside
    double halfHeight = 0;
    std::array<float, 3> tint{1.0F, 1.0F, 1.0F}; ///< how bright it is in blue, green and red
    std::function<void(const StagePainter&)> paint;
    // It swings about a place: two periods that have nothing in common, so that no picture comes twice.
    Point middle;
    Point swing;
    Point periods; ///< seconds
    Point phases; ///< radians

    /// Its middle on the stage at a time.
    Point placeAt(double seconds) const;
    /// A canvas with the actor, at `pixelsPerUnit`.
    Canvas picture(double pixelsPerUnit, bool mirrored) const;
};

/// What a simulated fusion camera looks at: cards, wheels and balls that wander over a softly lit wall. All
/// edges move, none faster than 60 units a second, and the wall has none. Immutable once made; any thread.
class FusionStage
{
public:
    explicit FusionStage(std::uint64_t seed);

    /// From the front.
    const std::vector<StageActor>& actors() const { return things; }
    /// The light of the wall, 0 to 1.
    float wallLight(double u, double v) const;

private:
    std::vector<StageActor> things;
    Point glow;
};

} // namespace korvane::simulation
