#include "camera/simulation/lamplayer.h"

#include "camera/simulation/layerimage.h"
#include "camera/simulation/scene.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace korvane::simulation {

namespace {

// Of what a mid-grey surface reflects.
constexpr double brightness = 6.0;
// A lamp's phosphor or filament glows on while the current passes through zero.
constexpr double swing = 0.3;
// Pixels over which the edge of the lamp fades.
constexpr double softness = 2.0;

} // namespace

LampLayer::LampLayer(Point centre, double radius, int imageWidth)
    : top(static_cast<int>(std::floor(centre.y - radius))),
      lines(static_cast<int>(std::ceil(2 * radius)) + 1),
      firstSegment(std::max(0, static_cast<int>(centre.x - radius) / segmentWidth)),
      segmentsAcross(
          std::min(imageWidth / segmentWidth - 1, static_cast<int>(centre.x + radius) / segmentWidth)
          - firstSegment + 1),
      runs(static_cast<std::size_t>(lines) * static_cast<std::size_t>(segmentsAcross))
{
    for (std::size_t r = 0; r < runs.size(); ++r) {
        const auto across = static_cast<int>(r % static_cast<std::size_t>(segmentsAcross));
        const double y
            = top + static_cast<double>(r / static_cast<std::size_t>(segmentsAcross)) + 0.5 - centre.y;
        for (int i = 0; i < segmentWidth; ++i) {
            const double x = (firstSegment + across) * segmentWidth + i + 0.5 - centre.x;
            const double inside = std::clamp((radius - std::hypot(x, y)) / softness, 0.0, 1.0);
            runs[r].opacity[i] = static_cast<std::int16_t>(inside * 32767.0);
            runs[r].some = runs[r].some || inside > 0.0;
        }
    }
}

void LampLayer::glow(double before, double after)
{
    timeBefore = before;
    timeAfter = after;
}

bool LampLayer::beginRow(int row)
{
    const int line = row - top;
    if (line < 0 || line >= lines)
        return false;
    rowRuns = runs.data() + static_cast<std::ptrdiff_t>(line) * segmentsAcross;
    return true;
}

void LampLayer::cover(std::uint8_t* bits, int segments)
{
    std::fill_n(bits, segments, std::uint8_t{0});
    const int changes = timeBefore == timeAfter ? 0 : Cover::strong;
    for (int i = 0; i < segmentsAcross; ++i) {
        if (rowRuns[i].some)
            bits[firstSegment + i] = static_cast<std::uint8_t>(Cover::some | Cover::holes | changes);
    }
}

int LampLayer::steps() const
{
    // Ten or more samples of a swing: the light then changes about linearly between them.
    int steps = 1;
    while (steps < Scene::framePoints && steps < 10.0 * frequency * (timeAfter - timeBefore))
        steps *= 2;
    return steps;
}

void LampLayer::draw(int segment, int point, bool, std::int16_t* out)
{
    if (segment < firstSegment || segment >= firstSegment + segmentsAcross)
        return;
    const double time = timeBefore + (timeAfter - timeBefore) * point / Scene::framePoints;
    const double phase = 2.0 * std::numbers::pi * std::fmod(frequency * time, 1.0);
    const auto light
        = static_cast<int>(std::lround(logUnits * std::log(brightness * (1.0 + swing * std::sin(phase)))));
    const Run& run = rowRuns[segment - firstSegment];
    for (int i = 0; i < segmentWidth; ++i)
        out[i] = static_cast<std::int16_t>(out[i] + (((light - out[i]) * run.opacity[i] + 0x4000) >> 15));
}

} // namespace korvane::simulation
