#include "camera/simulation/layeredscene.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <utility>

namespace korvane::simulation {

namespace {

constexpr int faintFrames = 4;

} // namespace

LayeredScene::LayeredScene(int width, int height)
    : Scene(width, height), stacks(static_cast<std::size_t>(segments())),
      bits(static_cast<std::size_t>(segments()))
{
}

double LayeredScene::crossingsPerSecond(int threshold, double period)
{
    constexpr int moments = 12;
    constexpr int looks = 8; // at a moment
    constexpr double betweenLooks = 0.012; // seconds
    constexpr int everyRow = 9;
    std::vector<std::uint8_t> steps(stacks.size());
    std::vector<std::int16_t> remembered(static_cast<std::size_t>(width() * height()));
    alignas(64) std::int16_t light[segmentWidth];
    std::int64_t crossings = 0;
    for (int moment = 0; moment < moments; ++moment) {
        for (int look = 0; look < looks; ++look) {
            const double time = period * moment / moments + betweenLooks * look;
            moveLayers(time - betweenLooks, time);
            for (int row = moment % everyRow; row < height(); row += everyRow) {
                beginRow(row, steps.data());
                for (int segment = 0; segment < segments(); ++segment) {
                    if (look > 0 && steps[static_cast<std::size_t>(segment)] == 0)
                        continue;
                    sample(segment, framePoints, light);
                    std::int16_t* const last = remembered.data() + row * width() + segment * segmentWidth;
                    for (int i = 0; i < segmentWidth; ++i) {
                        if (look == 0) {
                            // Before the first look a pixel is anywhere between two events.
                            last[i] = static_cast<std::int16_t>(light[i] + i * 13 % 16 * threshold / 16);
                        } else if (std::abs(light[i] - last[i]) >= threshold) {
                            const int count = (light[i] - last[i]) / threshold;
                            last[i] = static_cast<std::int16_t>(last[i] + count * threshold);
                            crossings += std::abs(count);
                        }
                    }
                }
            }
        }
    }
    return static_cast<double>(crossings) * everyRow / (moments * (looks - 1) * betweenLooks);
}

void LayeredScene::beginFrame(std::uint64_t start, std::uint32_t duration)
{
    frame = (frame + 1) % faintFrames;
    const double perMicrosecond = flow * 1e-6;
    moveLayers(static_cast<double>(start) * perMicrosecond,
               static_cast<double>(start + duration) * perMicrosecond);
}

void LayeredScene::addBehind(std::shared_ptr<Layer> layer)
{
    layers.push_back(std::move(layer));
}

void LayeredScene::beginRow(int row, std::uint8_t* steps)
{
    // Faint shades that creep along change too little to be looked at in every frame.
    const std::uint8_t faintSteps = (row + frame) % faintFrames == 0 ? 1 : 0;
    std::fill(stacks.begin(), stacks.end(), Stack());
    std::fill_n(steps, segments(), std::uint8_t{0});
    for (std::size_t i = 0; i < layers.size(); ++i) {
        if (!layers[i]->beginRow(row))
            continue;
        layers[i]->cover(bits.data(), segments());
        const auto strongSteps = static_cast<std::uint8_t>(layers[i]->steps());
        const bool creeping = layers[i]->creeps();
        const std::uint32_t layer = 1U << i;
        for (std::size_t segment = 0; segment < stacks.size(); ++segment) {
            const std::uint8_t cover = bits[segment];
            Stack& stack = stacks[segment];
            if (stack.whole != 0 || (cover & Cover::some) == 0)
                continue;
            stack.drawn |= layer;
            if ((cover & Cover::holes) == 0)
                stack.whole = layer;
            if ((cover & Cover::strong) != 0)
                steps[segment] = std::max(steps[segment], strongSteps);
            else if ((cover & Cover::faint) != 0)
                steps[segment] = std::max(steps[segment], creeping ? faintSteps : std::uint8_t{1});
        }
    }
}

void LayeredScene::sample(int segment, int point, std::int16_t* out)
{
    const Stack& stack = stacks[static_cast<std::size_t>(segment)];
    if (stack.whole == 0)
        std::fill_n(out, segmentWidth, std::int16_t{0});
    for (std::uint32_t left = stack.drawn; left != 0;) {
        const auto deepest = static_cast<std::uint32_t>(std::bit_width(left)) - 1;
        const std::uint32_t layer = 1U << deepest;
        left &= ~layer;
        layers[deepest]->draw(segment, point, layer == stack.whole, out);
    }
}

} // namespace korvane::simulation
