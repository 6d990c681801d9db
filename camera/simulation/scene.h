#pragma once

#include "camera/simulation/pixelkernels.h"

#include <cstdint>

namespace korvane::simulation {

/// A moving picture of the world as the sensor sees it, rendered run by run. The generator asks frame by
/// frame and, within a frame, row by row from the top. One thread at a time.
class Scene
{
public:
    /// The time of a frame is counted in so many parts: point 0 is its start, point framePoints its end.
    static constexpr int framePoints = 16;

    /// `width` and `height` in pixels; the width is a multiple of segmentWidth.
    Scene(int width, int height) : columns(width), rows(height) {}
    virtual ~Scene() = default;
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    int width() const { return columns; }
    int height() const { return rows; }
    int segments() const { return columns / segmentWidth; }

    /// Sets the interval that the next rows are for, microseconds of the scene's life.
    virtual void beginFrame(std::uint64_t start, std::uint32_t duration) = 0;
    /// Chooses the row that the next samples are for. Fills, per segment, into how many steps the frame is to
    /// be cut so that the light changes about linearly within each: 0 (at rest), 1, 2, 4, 8 or 16.
    virtual void beginRow(int row, std::uint8_t* steps) = 0;
    /// The light on the segmentWidth pixels of a segment of the chosen row, in logUnits, at a point of the
    /// frame.
    virtual void sample(int segment, int point, std::int16_t* out) = 0;

private:
    int columns;
    int rows;
};

} // namespace korvane::simulation
