#pragma once

#include "camera/simulation/canvas.h"
#include "camera/simulation/layer.h"

#include <cstdint>
#include <vector>

namespace korvane::simulation {

/// A disc that turns in place. One thread at a time.
class DiscLayer : public Layer
{
public:
    /// The pattern is painted unrolled: its columns are the angle (a power of two of them to the turn), its
    /// rows the rings from the centre outwards, one pixel each. `imageWidth` is in pixels.
    DiscLayer(const Canvas& pattern, Point centre, int imageWidth);

    /// Sets the angle at the start and the end of a frame, in turns.
    void turn(double before, double after);

    bool beginRow(int row) override;
    void cover(std::uint8_t* bits, int segments) override;
    int steps() const override;
    bool creeps() const override { return false; }
    void draw(int segment, int point, bool instead, std::int16_t* out) override;

private:
    struct Run // what a segment sees of the disc
    {
        std::uint32_t offset[segmentWidth] = {};
        std::uint16_t angle[segmentWidth] = {};
        std::int16_t opacity[segmentWidth] = {};
        std::uint8_t cover = 0;
    };
    void unroll(const Canvas& pattern);
    void placeRuns(Point centre, int imageWidth);

    const PixelKernels& kernels;
    int radius;
    int ringBits = 0;
    std::vector<std::int16_t> rings;
    int top = 0;
    int firstSegment = 0;
    int segmentsAcross = 0;
    std::vector<Run> runs;
    const Run* rowRuns = nullptr;
    double turnsBefore = 0;
    double turnsAfter = 0;
};

} // namespace korvane::simulation
