#include "camera/simulation/eventgenerator.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <utility>

namespace korvane::simulation {

namespace {

static_assert(EventGenerator::stepUs <= FrameEvents::longestFrame);
static_assert(EventGenerator::stepUs % Scene::framePoints == 0);

// After the light came to rest the low-pass of a dark pixel still follows for a while: until it is so near,
// in logUnits, or for so many frames.
constexpr int settledDistance = 8;
constexpr std::uint8_t settlingFrames = 16;

bool settled(const std::int16_t* levels, const std::int16_t* light)
{
    int far = 0;
    for (int i = 0; i < segmentWidth; ++i)
        far |= std::abs(levels[i] - light[i]) > settledDistance ? 1 : 0;
    return far == 0;
}

std::size_t pixelCountOf(const Scene& scene)
{
    return static_cast<std::size_t>(scene.width()) * static_cast<std::size_t>(scene.height());
}

} // namespace

EventGenerator::EventGenerator(std::unique_ptr<Scene> watched, const SensorParameters& parameters,
                               std::uint64_t seed)
    : watchedScene(std::move(watched)), pixels(pixelCountOf(*watchedScene) / segmentWidth, seed),
      noiseSource(static_cast<std::uint32_t>(pixelCountOf(*watchedScene)), seed + 1),
      rowSteps(static_cast<std::size_t>(watchedScene->segments())),
      settling(pixelCountOf(*watchedScene) / segmentWidth)
{
    setParameters(parameters);
    settle();
}

void EventGenerator::setParameters(const SensorParameters& parameters)
{
    const SensorParameters usable = sanitized(parameters);
    pixels.setParameters(usable, stepUs);
    noiseSource.setParameters(usable);
    std::fill(settling.begin(), settling.end(), settlingFrames);
}

void EventGenerator::settle()
{
    alignas(64) std::int16_t light[segmentWidth];
    watchedScene->beginFrame(0, stepUs);
    for (int row = 0; row < watchedScene->height(); ++row) {
        watchedScene->beginRow(row, rowSteps.data());
        for (int segment = 0; segment < watchedScene->segments(); ++segment) {
            watchedScene->sample(segment, 0, light);
            pixels.settle(static_cast<std::size_t>(row) * rowSteps.size() + static_cast<std::size_t>(segment),
                          light);
        }
    }
    std::fill(settling.begin(), settling.end(), std::uint8_t{0});
}

std::span<const Event2D> EventGenerator::generateStep()
{
    events.beginFrame();
    frameNoise = noiseSource.nextFrame(stepUs);
    watchedScene->beginFrame(now, stepUs);
    for (int row = 0; row < watchedScene->height(); ++row)
        processRow(row);
    pixels.forget();
    const std::uint64_t start = std::exchange(now, now + stepUs);
    return events.inOrder(start);
}

void EventGenerator::processRow(int row)
{
    events.beginRow(row);
    watchedScene->beginRow(row, rowSteps.data());
    const std::size_t segments = rowSteps.size();
    for (std::size_t segment = 0; segment < segments; ++segment) {
        const std::size_t index = static_cast<std::size_t>(row) * segments + segment;
        const std::size_t endPixel = (index + 1) * segmentWidth;
        std::size_t noisy = 0;
        while (noisy < frameNoise.size() && frameNoise[noisy].pixel < endPixel)
            ++noisy;
        const std::span<const NoiseEvent> noise = frameNoise.first(noisy);
        frameNoise = frameNoise.subspan(noisy);

        const int steps = rowSteps[segment];
        if (steps > 0) {
            settling[index] = settlingFrames;
        } else if (settling[index] > 0) {
            --settling[index];
        } else if (noise.empty()) {
            continue;
        }
        processSegment(row, static_cast<int>(segment), steps, noise);
    }
}

void EventGenerator::processSegment(int row, int segment, int steps, std::span<const NoiseEvent> noise)
{
    const std::size_t index
        = static_cast<std::size_t>(row) * rowSteps.size() + static_cast<std::size_t>(segment);
    const bool atRest = steps == 0 && settling[index] == 0;
    const int count = std::max(1, steps);
    const std::uint32_t length = stepUs / static_cast<std::uint32_t>(count);
    alignas(64) std::int16_t light[segmentWidth];
    bool blind = false;
    for (int i = 0; i < count; ++i) {
        if (atRest)
            std::copy_n(pixels.levels(index), segmentWidth, light);
        else
            watchedScene->sample(segment, (i + 1) * (Scene::framePoints / count), light);
        const auto from = static_cast<std::uint32_t>(i) * length;
        const PixelArray::Step step{now, from, from + length, std::countr_zero(static_cast<unsigned>(count))};
        blind = pixels.advance(index, static_cast<std::uint32_t>(segment * segmentWidth), light, step, noise,
                               events);
    }
    if (steps == 0 && settled(pixels.levels(index), light))
        settling[index] = 0;
    if (blind)
        settling[index] = std::max<std::uint8_t>(settling[index], 1);
}

} // namespace korvane::simulation
