#pragma once

#include "camera/simulation/canvas.h"
#include "camera/simulation/layer.h"
#include "camera/simulation/pixelkernels.h"

#include <cstdint>
#include <vector>

namespace korvane::simulation {

/// A round lamp on alternating current, at rest in the image: its light swings at twice the mains' frequency.
/// One thread at a time.
class LampLayer : public Layer
{
public:
    static constexpr double frequency = 100.0; ///< Hz

    LampLayer(Point centre, double radius, int imageWidth);

    /// Sets the start and the end of a frame, seconds. The same time twice holds the light.
    void glow(double before, double after);

    bool beginRow(int row) override;
    void cover(std::uint8_t* bits, int segments) override;
    int steps() const override;
    bool creeps() const override { return false; }
    void draw(int segment, int point, bool instead, std::int16_t* out) override;

private:
    struct Run // what a segment sees of the lamp
    {
        std::int16_t opacity[segmentWidth] = {};
        bool some = false;
    };

    int top;
    int lines;
    int firstSegment;
    int segmentsAcross;
    std::vector<Run> runs;
    const Run* rowRuns = nullptr;
    double timeBefore = 0;
    double timeAfter = 0;
};

} // namespace korvane::simulation
