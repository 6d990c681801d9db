#include "camera/simulation/apsrenderer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <utility>

namespace korvane::simulation {

using namespace fusiongeometry;

namespace {

constexpr std::size_t pixelBytes = 3;
constexpr std::size_t rowBytes = std::size_t{apsWidth} * pixelBytes;
constexpr std::size_t lightValues = 4096;
constexpr std::array<float, 3> wallTint{0.96F, 1.0F, 1.0F};

/// What each light becomes: exposed, amplified, and encoded as screens expect it.
using Development = std::array<std::uint8_t, lightValues>;

Development developmentFor(const ApsParameters& parameters, float tint)
{
    constexpr double standardExposure = 10000.0;
    constexpr double gamma = 1.0 / 2.2;
    const double factor = parameters.exposureUs / standardExposure * std::pow(10.0, parameters.gainDb / 20.0)
        * static_cast<double>(tint);
    Development table;
    for (std::size_t i = 0; i < table.size(); ++i) {
        const double light = std::min(1.0, static_cast<double>(i) / (lightValues - 1) * factor);
        const double value = parameters.blackLevel + 255.0 * std::pow(light, gamma);
        table[i] = static_cast<std::uint8_t>(std::clamp(value + 0.5, 0.0, 255.0));
    }
    return table;
}

void develop(const std::vector<std::uint16_t>& light, const std::array<float, 3>& tint,
             const ApsParameters& parameters, std::vector<std::uint8_t>& out)
{
    const std::array<Development, 3> tables{developmentFor(parameters, tint[0]),
                                            developmentFor(parameters, tint[1]),
                                            developmentFor(parameters, tint[2])};
    out.resize(light.size() * pixelBytes);
    std::uint8_t* pixel = out.data();
    for (const std::uint16_t value : light) {
        for (std::size_t channel = 0; channel < pixelBytes; ++channel)
            *pixel++ = tables[channel][value];
    }
}

} // namespace

ApsRenderer::ApsRenderer(std::shared_ptr<const FusionStage> watched)
    : stage(std::move(watched)), wall(std::size_t{apsWidth} * apsHeight), picture(rowBytes * apsHeight),
      drawn(stage->actors().size())
{
    for (const StageActor& actor : stage->actors()) {
        const Canvas canvas = actor.picture(apsScale, false);
        sprites.push_back({canvas.width(), canvas.height(), canvas.light(), canvas.opacity(), {}});
    }
    // The wall is smooth: every fourth pixel is computed, those between lie between.
    constexpr int cell = 4;
    std::array<std::vector<float>, 2> lines;
    const auto fill = [this](std::vector<float>& line, int y) {
        line.resize(apsWidth / cell + 1);
        for (std::size_t i = 0; i < line.size(); ++i)
            line[i]
                = stage->wallLight(eventWidth / 2 + (static_cast<double>(i) * cell - apsWidth / 2) / apsScale,
                                   eventHeight / 2 + (y - apsHeight / 2) / apsScale);
    };
    fill(lines[0], 0);
    std::uint16_t* out = wall.data();
    for (int y = 0; y < apsHeight; y += cell) {
        fill(lines[1], y + cell);
        for (int part = 0; part < cell; ++part) {
            const float down = static_cast<float>(part) / cell;
            for (std::size_t x = 0; x < std::size_t{apsWidth}; ++x) {
                const std::size_t i = x / cell;
                const float right = static_cast<float>(x % cell) / cell;
                const float upper = lines[0][i] + (lines[0][i + 1] - lines[0][i]) * right;
                const float lower = lines[1][i] + (lines[1][i + 1] - lines[1][i]) * right;
                *out++ = Canvas::toLight(upper + (lower - upper) * down);
            }
        }
        lines[0].swap(lines[1]);
    }
}

void ApsRenderer::setParameters(const ApsParameters& next)
{
    developed = developed && next == parameters;
    parameters = next;
}

void ApsRenderer::developAll()
{
    develop(wall, wallTint, parameters, wallPixels);
    for (std::size_t i = 0; i < sprites.size(); ++i)
        develop(sprites[i].light, stage->actors()[i].tint, parameters, sprites[i].pixels);
    std::copy(wallPixels.begin(), wallPixels.end(), picture.begin());
    std::fill(drawn.begin(), drawn.end(), Place());
    developed = true;
}

ApsRenderer::Place ApsRenderer::placeOf(std::size_t actor, double seconds) const
{
    const Point middle = stage->actors()[actor].placeAt(seconds);
    const Sprite& sprite = sprites[actor];
    Place place;
    place.left = static_cast<int>(
        std::lround(apsWidth / 2 + (middle.x - eventWidth / 2) * apsScale - sprite.width / 2.0));
    place.top = static_cast<int>(
        std::lround(apsHeight / 2 + (middle.y - eventHeight / 2) * apsScale - sprite.height / 2.0));
    place.right = place.left + sprite.width;
    place.bottom = place.top + sprite.height;
    return place;
}

void ApsRenderer::restore(const Place& place)
{
    const int left = std::clamp(place.left, 0, apsWidth);
    const int right = std::clamp(place.right, 0, apsWidth);
    const auto bytes = static_cast<std::size_t>(right - left) * pixelBytes;
    if (bytes == 0)
        return;
    for (int y = std::max(0, place.top); y < std::min(apsHeight, place.bottom); ++y) {
        const std::size_t offset
            = static_cast<std::size_t>(y) * rowBytes + static_cast<std::size_t>(left) * pixelBytes;
        std::memcpy(picture.data() + offset, wallPixels.data() + offset, bytes);
    }
}

void ApsRenderer::draw(const Sprite& sprite, const Place& place)
{
    const int left = std::max(0, place.left);
    const int right = std::min(apsWidth, place.right);
    for (int y = std::max(0, place.top); y < std::min(apsHeight, place.bottom); ++y) {
        const std::size_t source
            = static_cast<std::size_t>(y - place.top) * static_cast<std::size_t>(sprite.width);
        for (int x = left; x < right; ++x) {
            const std::size_t from = source + static_cast<std::size_t>(x - place.left);
            const unsigned opacity = sprite.opacity[from];
            if (opacity == 0)
                continue;
            const std::uint8_t* const shade = sprite.pixels.data() + from * pixelBytes;
            std::uint8_t* const out = picture.data() + static_cast<std::size_t>(y) * rowBytes
                + static_cast<std::size_t>(x) * pixelBytes;
            if (opacity == 255) {
                std::memcpy(out, shade, pixelBytes);
                continue;
            }
            for (std::size_t channel = 0; channel < pixelBytes; ++channel)
                out[channel] = static_cast<std::uint8_t>(
                    (shade[channel] * opacity + out[channel] * (255 - opacity) + 127) / 255);
        }
    }
}

ApsFrame ApsRenderer::render(std::uint64_t time)
{
    if (!developed)
        developAll();
    for (const Place& place : drawn)
        restore(place);
    for (std::size_t i = sprites.size(); i-- > 0;) {
        drawn[i] = placeOf(i, static_cast<double>(time) * 1e-6);
        draw(sprites[i], drawn[i]);
    }
    const std::uint8_t* pixels = picture.data();
    if (parameters.flipped) {
        turned.resize(picture.size());
        for (std::size_t y = 0; y < std::size_t{apsHeight}; ++y)
            std::memcpy(turned.data() + y * rowBytes, picture.data() + (apsHeight - 1 - y) * rowBytes,
                        rowBytes);
        pixels = turned.data();
    }
    return {pixels, apsWidth, apsHeight, time};
}

} // namespace korvane::simulation
