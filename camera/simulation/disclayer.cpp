#include "camera/simulation/disclayer.h"

#include "camera/simulation/scene.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

namespace korvane::simulation {

namespace {

constexpr double fullTurn = 2.0 * std::numbers::pi;

} // namespace

DiscLayer::DiscLayer(const Canvas& pattern, Point centre, int imageWidth)
    : kernels(pixelKernels()), radius(pattern.height()),
      ringBits(std::countr_zero(static_cast<unsigned>(pattern.width())))
{
    unroll(pattern);
    placeRuns(centre, imageWidth);
}

/// Keeps the rings as levels, each with its first value repeated at its end, blurred to what a pixel spans of
/// them.
void DiscLayer::unroll(const Canvas& pattern)
{
    const auto width = static_cast<std::size_t>(pattern.width());
    rings.resize((width + 1) * static_cast<std::size_t>(radius));
    for (std::size_t ring = 0; ring < static_cast<std::size_t>(radius); ++ring) {
        const std::uint16_t* painted = pattern.light().data() + ring * width;
        std::int16_t* out = rings.data() + ring * (width + 1);
        // The lens spreads a point over about two pixels.
        const double pixel = static_cast<double>(width) / (fullTurn * (static_cast<double>(ring) + 0.5));
        const auto span
            = static_cast<std::size_t>(std::clamp(2.0 * pixel, 1.0, static_cast<double>(width) / 4));
        std::uint64_t sum = 0;
        for (std::size_t i = 0; i < span; ++i)
            sum += painted[i];
        for (std::size_t i = 0; i < width; ++i) {
            out[(i + span / 2) % width] = levelOf(static_cast<std::uint32_t>(sum / span));
            sum += painted[(i + span) % width];
            sum -= painted[i];
        }
        out[width] = out[0];
    }
}

/// Looks up once which ring and angle every pixel of the disc sees.
void DiscLayer::placeRuns(Point centre, int imageWidth)
{
    top = static_cast<int>(std::floor(centre.y)) - radius;
    firstSegment = std::max(0, static_cast<int>(centre.x - radius) / segmentWidth);
    const int lastSegment
        = std::min(imageWidth / segmentWidth - 1, static_cast<int>(centre.x + radius) / segmentWidth);
    segmentsAcross = lastSegment - firstSegment + 1;
    runs.resize(static_cast<std::size_t>(segmentsAcross) * static_cast<std::size_t>(2 * radius + 1));
    const std::uint32_t ringLength = (1U << static_cast<unsigned>(ringBits)) + 1;
    for (std::size_t r = 0; r < runs.size(); ++r) {
        Run& run = runs[r];
        const std::size_t line = r / static_cast<std::size_t>(segmentsAcross);
        const double y = top + static_cast<double>(line) + 0.5 - centre.y;
        const auto across = static_cast<int>(r % static_cast<std::size_t>(segmentsAcross));
        bool whole = true;
        bool some = false;
        for (std::size_t i = 0; i < segmentWidth; ++i) {
            const double x = (firstSegment + across) * segmentWidth + static_cast<double>(i) + 0.5 - centre.x;
            const double distance = std::hypot(x, y);
            const double inside = std::clamp(radius - distance, 0.0, 1.0);
            const double turns = std::atan2(y, x) / fullTurn;
            const auto ring = static_cast<std::uint32_t>(std::min<double>(distance, radius - 1));
            run.opacity[i] = static_cast<std::int16_t>(inside * 32767.0);
            run.offset[i] = ring * ringLength;
            run.angle[i] = static_cast<std::uint16_t>(std::lround(turns * 65536.0) & 0xFFFF);
            whole = whole && inside >= 1.0;
            some = some || inside > 0.0;
        }
        if (some)
            run.cover = whole ? Cover::some | Cover::strong : Cover::some | Cover::strong | Cover::holes;
    }
}

void DiscLayer::turn(double before, double after)
{
    turnsBefore = before;
    turnsAfter = after;
}

bool DiscLayer::beginRow(int row)
{
    const int line = row - top;
    if (line < 0 || line > 2 * radius)
        return false;
    rowRuns = runs.data() + static_cast<std::ptrdiff_t>(line) * segmentsAcross;
    return true;
}

void DiscLayer::cover(std::uint8_t* bits, int segments)
{
    std::fill_n(bits, segments, std::uint8_t{0});
    for (int i = 0; i < segmentsAcross; ++i)
        bits[firstSegment + i] = rowRuns[i].cover;
}

int DiscLayer::steps() const
{
    return stepsFor(std::abs(turnsAfter - turnsBefore) * fullTurn * radius);
}

void DiscLayer::draw(int segment, int point, bool instead, std::int16_t* out)
{
    if (segment < firstSegment || segment >= firstSegment + segmentsAcross)
        return;
    const Run& run = rowRuns[segment - firstSegment];
    const double turns = turnsBefore + (turnsAfter - turnsBefore) * point / Scene::framePoints;
    // The pattern turns with the clock: what a pixel sees came from behind.
    const auto turned = static_cast<std::uint32_t>(std::lround((std::ceil(turns) - turns) * 65536.0));
    if (instead) {
        kernels.turn(out, rings.data(), run.offset, run.angle, turned, ringBits);
        return;
    }
    alignas(64) std::int16_t light[segmentWidth];
    kernels.turn(light, rings.data(), run.offset, run.angle, turned, ringBits);
    for (int i = 0; i < segmentWidth; ++i)
        out[i] = static_cast<std::int16_t>(out[i] + (((light[i] - out[i]) * run.opacity[i] + 0x4000) >> 15));
}

} // namespace korvane::simulation
