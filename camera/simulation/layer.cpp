#include "camera/simulation/layer.h"

#include "camera/simulation/scene.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace korvane::simulation {

namespace {

/// Pixels times 65536.
std::int64_t toFixed(double pixels)
{
    return std::llround(pixels * 65536.0);
}

} // namespace

int Layer::stepsFor(double pixelsPerFrame)
{
    int steps = 1;
    while (steps < Scene::framePoints && pixelsPerFrame > steps)
        steps *= 2;
    return steps;
}

PictureLayer::PictureLayer(std::shared_ptr<const LayerImage> shown, int phaseCount)
    : image(std::move(shown)), kernels(pixelKernels()), phases(phaseCount),
      phaseHeight(image->height() / phaseCount)
{
    move(Motion());
}

void PictureLayer::move(const Motion& next)
{
    motion = next;
    tracks.clear();
    if (image->uniform())
        tracks.push_back(trackOf(0));
}

PictureLayer::Track PictureLayer::trackOf(int pictureRow) const
{
    const LayerImage::Row row = image->row(pictureRow);
    double before = (motion.scrollBefore + motion.anchor) * row.scale - motion.anchor;
    double after = (motion.scrollAfter + motion.anchor) * row.scale - motion.anchor;
    if (image->wraps()) {
        const double turns = std::floor(std::min(before, after) / row.length) * row.length;
        before -= turns;
        after -= turns;
    } else {
        before += segmentWidth;
        after += segmentWidth;
    }
    return {toFixed(before), toFixed(after) - toFixed(before), row.length};
}

const PictureLayer::Track& PictureLayer::track(int pictureRow) const
{
    return tracks[image->uniform() ? 0 : static_cast<std::size_t>(pictureRow - firstRow)];
}

bool PictureLayer::beginRow(int row)
{
    place = toFixed(row - motion.topBefore);
    lift = toFixed(row - motion.topAfter) - place;
    firstRow = std::max(0, static_cast<int>(std::min(place, place + lift) >> 16));
    lastRow = std::min(phaseHeight - 1, static_cast<int>(std::max(place, place + lift) >> 16) + 1);
    if (firstRow >= lastRow)
        return false;
    if (!image->uniform()) {
        tracks.clear();
        for (int pictureRow = firstRow; pictureRow <= lastRow; ++pictureRow)
            tracks.push_back(trackOf(pictureRow));
    }
    return true;
}

/// How far things move in the frame, pixels.
double PictureLayer::travelled() const
{
    const double along = std::abs(static_cast<double>(tracks.front().travel)) / 65536.0;
    const double turning = std::abs(motion.phaseAfter - motion.phaseBefore) * phases / 2;
    const double upright = std::abs(static_cast<double>(lift)) / 65536.0;
    return std::max({along, upright, turning});
}

int PictureLayer::steps() const
{
    return stepsFor(travelled());
}

bool PictureLayer::creeps() const
{
    return travelled() <= 0.25;
}

PictureLayer::Spot PictureLayer::spot(const Track& at, int segment, int point) const
{
    const std::int64_t position = at.start + at.travel * point / Scene::framePoints
        + (static_cast<std::int64_t>(segment) * segmentWidth << 16);
    std::int64_t column = position >> 16;
    if (image->wraps()) {
        while (column >= at.length)
            column -= at.length;
    } else if (column < 0 || column >= at.length) {
        return {};
    }
    return {static_cast<int>(column), static_cast<std::int16_t>((position & 0xFFFF) >> 1)};
}

void PictureLayer::cover(std::uint8_t* bits, int segments)
{
    const bool still = travelled() == 0;
    std::fill_n(bits, segments, std::uint8_t{0});
    for (int row = firstRow; row < lastRow; ++row) {
        const std::uint8_t* const summary = image->row(row).cover;
        for (int segment = 0; segment < segments; ++segment) {
            const Spot before = spot(track(row), segment, 0);
            const Spot after = spot(track(row), segment, Scene::framePoints);
            int found = bits[segment];
            if (before.column >= 0)
                found |= summary[before.column / segmentWidth];
            if (after.column >= 0)
                found |= summary[after.column / segmentWidth];
            // What comes in or goes out in this frame covers the segment for a part of it only.
            if ((before.column < 0) != (after.column < 0))
                found |= Cover::holes;
            bits[segment] = static_cast<std::uint8_t>(found);
        }
    }
    for (int segment = 0; segment < segments; ++segment) {
        if (phases > 1 && bits[segment] != 0)
            bits[segment] = Cover::some | Cover::holes | Cover::strong;
        if (still)
            bits[segment] &= Cover::some | Cover::holes;
    }
}

int PictureLayer::phaseRow(int point) const
{
    if (phases == 1)
        return 0;
    const double phase = motion.phaseBefore
        + (motion.phaseAfter - motion.phaseBefore) * point / static_cast<double>(Scene::framePoints);
    const double turned = phase - std::floor(phase);
    return std::min(static_cast<int>(turned * phases), phases - 1) * phaseHeight;
}

void PictureLayer::draw(int segment, int point, bool instead, std::int16_t* out)
{
    const std::int64_t down = place + lift * point / Scene::framePoints;
    const int base = static_cast<int>(down >> 16);
    if (base < firstRow || base + 1 > lastRow)
        return;
    const Spot above = spot(track(base), segment, point);
    const Spot below = image->uniform() ? above : spot(track(base + 1), segment, point);
    if (above.column < 0 || below.column < 0)
        return;
    const int phase = phaseRow(point);
    const LayerImage::Row upper = image->row(base + phase);
    const LayerImage::Row lower = image->row(base + 1 + phase);
    const auto rowShift = static_cast<std::int16_t>((down & 0xFFFF) >> 1);
    const Taps light{upper.light + above.column, lower.light + below.column, above.shift, below.shift,
                     rowShift};
    if (instead || upper.opacity == nullptr) {
        kernels.sample(out, light);
        return;
    }
    const Taps opacity{upper.opacity + above.column, lower.opacity + below.column, above.shift, below.shift,
                       rowShift};
    kernels.blend(out, light, opacity);
}

} // namespace korvane::simulation
