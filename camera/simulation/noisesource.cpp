#include "camera/simulation/noisesource.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace korvane::simulation {

NoiseSource::NoiseSource(std::uint32_t pixelCount, std::uint64_t noiseSeed)
    : pixels(pixelCount), seed(noiseSeed), random(noiseSeed)
{
    setParameters(SensorParameters());
}

void NoiseSource::setParameters(const SensorParameters& parameters)
{
    backgroundRate = static_cast<double>(parameters.backgroundRateHz) * 1e-6;
    onShare = static_cast<double>(parameters.backgroundOnShare);
    chooseHotPixels(parameters);
}

void NoiseSource::chooseHotPixels(const SensorParameters& parameters)
{
    if (parameters.hotPixelShare == hotShare && parameters.hotPixelRateHz == hotRate)
        return;
    hotShare = parameters.hotPixelShare;
    hotRate = parameters.hotPixelRateHz;
    hot.clear();
    hotRates.clear();
    // A draw of its own, so that the same pixels stay hot when other parameters change.
    Random draw(seed ^ 0x484F5450495845U);
    const auto count = static_cast<std::size_t>(std::lround(static_cast<double>(hotShare) * pixels));
    while (hot.size() < count) {
        while (hot.size() < count)
            hot.push_back(static_cast<std::uint32_t>(draw.uniform() * pixels));
        std::sort(hot.begin(), hot.end());
        hot.erase(std::unique(hot.begin(), hot.end()), hot.end());
    }
    for (std::size_t i = 0; i < count; ++i)
        hotRates.push_back(static_cast<double>(hotRate) * std::pow(10.0, draw.uniform(-0.5, 0.5)) * 1e-6);
}

std::span<const NoiseEvent> NoiseSource::nextFrame(std::uint32_t duration)
{
    // A frame is laid out as one axis on which each pixel owns an interval that stands for its time. A
    // Poisson process along this axis (exponential gaps) is one in every pixel, and comes out in the order of
    // the pixels.
    background.clear();
    const double perPixel = backgroundRate * duration;
    double at = perPixel > 0 ? random.exponential() / perPixel : pixels;
    while (at < pixels) {
        const double pixel = std::floor(at);
        const auto time = static_cast<std::uint16_t>((at - pixel) * duration);
        background.push_back({static_cast<std::uint32_t>(pixel), time, drawPolarity()});
        at += random.exponential() / perPixel;
    }
    fromHot.clear();
    double left = random.exponential();
    for (std::size_t i = 0; i < hot.size(); ++i) {
        const double length = hotRates[i] * duration;
        while (left < length) {
            const auto time = static_cast<std::uint16_t>(left / length * duration);
            fromHot.push_back({hot[i], time, drawPolarity()});
            left += random.exponential();
        }
        left -= length;
    }
    if (fromHot.empty())
        return background;
    merged.clear();
    std::merge(background.begin(), background.end(), fromHot.begin(), fromHot.end(),
               std::back_inserter(merged), [](const NoiseEvent& a, const NoiseEvent& b) {
                   return a.pixel != b.pixel ? a.pixel < b.pixel : a.time < b.time;
               });
    return merged;
}

std::uint8_t NoiseSource::drawPolarity()
{
    return random.chance(onShare) ? 1 : 0;
}

} // namespace korvane::simulation
