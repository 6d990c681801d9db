#include "camera/simulation/layerimage.h"

#include "camera/simulation/pixelkernels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace korvane::simulation {

namespace {

constexpr std::int16_t opaque = 32767;
// Mid-grey, the level 0, reflects 18 percent.
constexpr double greyLight = 0.18 * 4095.0;
// A quarter of the usual threshold is no news; two thirds of it may be.
constexpr int faintRange = 40;
constexpr int strongRange = 340;

/// The lens: every point spreads over its neighbours with weights 1 2 1, along rows and along columns. Light
/// is weighted with opacity, so that nothing bleeds in from where the canvas is bare.
class Lens
{
public:
    explicit Lens(const Canvas& painted)
        : canvas(painted), width(static_cast<std::size_t>(painted.width())),
          lightSums(3, std::vector<std::uint32_t>(width)), opacitySums(3, std::vector<std::uint32_t>(width))
    {
        alongRow(0);
    }

    /// Rows are taken from the top, one after the other.
    void nextRow(int row, std::vector<std::int16_t>& light, std::vector<std::int16_t>& alpha)
    {
        alongRow(row + 1);
        const auto slot = [](int r) { return static_cast<std::size_t>((r + 3) % 3); };
        const int last = canvas.height() - 1;
        const std::size_t above = slot(std::max(row - 1, 0));
        const std::size_t here = slot(row);
        const std::size_t below = slot(std::min(row + 1, last));
        for (std::size_t x = 0; x < width; ++x) {
            const std::uint32_t sum
                = opacitySums[above][x] + 2 * opacitySums[here][x] + opacitySums[below][x];
            const std::uint32_t weighted = lightSums[above][x] + 2 * lightSums[here][x] + lightSums[below][x];
            // 16 times 255 is a fully opaque neighbourhood.
            alpha[x] = static_cast<std::int16_t>(sum * static_cast<std::uint32_t>(opaque) / 4080U);
            light[x] = sum == 0 ? std::int16_t{0} : levelOf(weighted / sum);
        }
    }

private:
    void alongRow(int row)
    {
        if (row >= canvas.height())
            return;
        const std::size_t start = static_cast<std::size_t>(row) * width;
        const std::uint16_t* light = canvas.light().data() + start;
        const std::uint8_t* alpha = canvas.opacity().data() + start;
        std::vector<std::uint32_t>& lightOut = lightSums[static_cast<std::size_t>(row % 3)];
        std::vector<std::uint32_t>& alphaOut = opacitySums[static_cast<std::size_t>(row % 3)];
        const auto put = [&](std::size_t left, std::size_t x, std::size_t right) {
            const std::uint32_t a = alpha[left];
            const std::uint32_t b = 2U * alpha[x];
            const std::uint32_t c = alpha[right];
            alphaOut[x] = a + b + c;
            lightOut[x] = a * light[left] + b * light[x] + c * light[right];
        };
        const bool wraps = canvas.wraps();
        put(wraps ? width - 1 : 0, 0, 1);
        for (std::size_t x = 1; x + 1 < width; ++x)
            put(x - 1, x, x + 1);
        put(width - 2, width - 1, wraps ? 0 : width - 1);
    }

    const Canvas& canvas;
    std::size_t width;
    std::vector<std::vector<std::uint32_t>> lightSums;
    std::vector<std::vector<std::uint32_t>> opacitySums;
};

} // namespace

std::int16_t levelOf(std::uint32_t light)
{
    static const std::array<std::int16_t, 4096> table = [] {
        std::array<std::int16_t, 4096> values{};
        for (std::size_t i = 0; i < values.size(); ++i) {
            const double level
                = std::log(std::max<double>(static_cast<double>(i), 1.0) / greyLight) * logUnits;
            values[i] = static_cast<std::int16_t>(
                std::clamp<long>(std::lround(level), darkestLevel, brightestLevel));
        }
        return values;
    }();
    return table[light];
}

LayerImage::LayerImage(const Canvas& canvas) : wrapping(canvas.wraps())
{
    const auto width = static_cast<std::size_t>(canvas.width());
    const auto stored = (width + 2 * segmentWidth + 1) * static_cast<std::size_t>(canvas.height());
    light.reserve(stored);
    const bool bare = std::any_of(canvas.opacity().begin(), canvas.opacity().end(),
                                  [](std::uint8_t a) { return a < 255; });
    if (bare || !wrapping)
        opacity.reserve(stored);
    Lens lens(canvas);
    std::vector<std::int16_t> values(width);
    std::vector<std::int16_t> alphas(width);
    for (int row = 0; row < canvas.height(); ++row) {
        lens.nextRow(row, values, alphas);
        addRow(values,
               bare || !wrapping ? std::span<const std::int16_t>(alphas) : std::span<const std::int16_t>(),
               1.0);
    }
    summarize();
}

LayerImage::LayerImage(std::span<const std::vector<float>> shades, double length)
    : wrapping(true), sameLength(false)
{
    std::vector<std::int16_t> values;
    std::vector<std::int16_t> alphas;
    for (const std::vector<float>& row : shades) {
        values.clear();
        for (const float shade : row)
            values.push_back(levelOf(Canvas::toLight(shade)));
        alphas.assign(row.size(), rows.empty() ? std::int16_t{0} : opaque);
        addRow(values, alphas, static_cast<double>(row.size()) / length);
    }
    summarize();
}

void LayerImage::addRow(std::span<const std::int16_t> values, std::span<const std::int16_t> alphas,
                        double scale)
{
    rows.push_back({light.size(), 0, static_cast<int>(values.size()), scale});
    const auto append = [this](std::vector<std::int16_t>& to, std::span<const std::int16_t> from) {
        if (!wrapping)
            to.insert(to.end(), segmentWidth, from.front());
        to.insert(to.end(), from.begin(), from.end());
        if (wrapping)
            to.insert(to.end(), from.begin(), from.begin() + segmentWidth + 1);
        else
            to.insert(to.end(), segmentWidth + 1, from.back());
    };
    append(light, values);
    if (!alphas.empty())
        append(opacity, alphas);
    if (!wrapping)
        rows.back().length += segmentWidth;
}

/// The shades and the opacity of a run of pixels.
struct LayerImage::Range
{
    int least = std::numeric_limits<int>::max();
    int most = std::numeric_limits<int>::min();
    int leastAlpha = opaque;
    int mostAlpha = 0;

    void include(const Range& other)
    {
        least = std::min(least, other.least);
        most = std::max(most, other.most);
        leastAlpha = std::min(leastAlpha, other.leastAlpha);
        mostAlpha = std::max(mostAlpha, other.mostAlpha);
    }
    std::uint8_t cover() const
    {
        if (mostAlpha == 0)
            return 0;
        const int spread = most - least;
        const bool outline = leastAlpha < opaque;
        return static_cast<std::uint8_t>(Cover::some | (outline ? Cover::holes | Cover::strong : 0)
                                         | (spread > strongRange ? Cover::strong : 0)
                                         | (spread > faintRange ? Cover::faint : 0));
    }
};

/// Those of a row's blocks, each with the first pixel of the next.
std::vector<LayerImage::Range> LayerImage::rangesOf(const Place& place) const
{
    const std::size_t blocks = static_cast<std::size_t>(place.length) / segmentWidth + 1;
    const std::size_t stored = static_cast<std::size_t>(place.length) + segmentWidth + 1;
    std::vector<Range> ranges(blocks + 1);
    for (std::size_t block = 0; block <= blocks; ++block) {
        Range& range = ranges[block];
        const std::size_t end = std::min(stored, (block + 1) * segmentWidth + 1);
        for (std::size_t x = block * segmentWidth; x < end; ++x) {
            const int alpha = opacity.empty() ? opaque : opacity[place.values + x];
            range.leastAlpha = std::min(range.leastAlpha, alpha);
            range.mostAlpha = std::max(range.mostAlpha, alpha);
            if (alpha > 0) {
                range.least = std::min<int>(range.least, light[place.values + x]);
                range.most = std::max<int>(range.most, light[place.values + x]);
            }
        }
    }
    return ranges;
}

/// Fills the Cover bits. A picture is sampled between a row and the next, and a run between two blocks, so a
/// summary speaks for two rows and two blocks.
void LayerImage::summarize()
{
    std::vector<Range> below = rangesOf(rows.back());
    std::vector<std::vector<std::uint8_t>> bits(rows.size());
    for (std::size_t r = rows.size(); r-- > 0;) {
        std::vector<Range> here = rangesOf(rows[r]);
        for (std::size_t block = 0; block + 1 < here.size(); ++block) {
            Range range = here[block];
            range.include(here[block + 1]);
            // Rows of different lengths have slightly shifted blocks; the nearest ones tell enough.
            range.include(below[std::min(block, below.size() - 1)]);
            range.include(below[std::min(block + 1, below.size() - 1)]);
            bits[r].push_back(range.cover());
        }
        below = std::move(here);
    }
    for (std::size_t r = 0; r < rows.size(); ++r) {
        rows[r].blocks = covers.size();
        covers.insert(covers.end(), bits[r].begin(), bits[r].end());
    }
}

} // namespace korvane::simulation
