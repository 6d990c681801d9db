#pragma once

#include "camera/simulation/simulatedfusioncamera.h"
#include "display/kernels/apsalignment.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

/// What tests of a fusion camera's pictures share.
namespace korvane::simulation::testing {

constexpr int width = 1280;
constexpr int height = 720;

inline SimulatedCameraConfig stageConfig()
{
    const auto all = korvane::simulation::standardCameras();
    return *std::find_if(all.begin(), all.end(),
                         [](const SimulatedCameraConfig& config) { return config.product == "Pellix"; });
}

inline double luma(const std::uint8_t* pixel)
{
    return 0.114 * pixel[0] + 0.587 * pixel[1] + 0.299 * pixel[2];
}

inline double lumaDeviation(const ApsFrame& frame)
{
    double sum = 0;
    double squares = 0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < std::size_t{frame.width} * frame.height; i += 7, ++count) {
        const double value = luma(frame.pixels + i * 3);
        sum += value;
        squares += value * value;
    }
    const double mean = sum / static_cast<double>(count);
    return std::sqrt(squares / static_cast<double>(count) - mean * mean);
}

inline double lumaMean(const ApsFrame& frame)
{
    double sum = 0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < std::size_t{frame.width} * frame.height; i += 7, ++count)
        sum += luma(frame.pixels + i * 3);
    return sum / static_cast<double>(count);
}

/// Which pixels of the picture that a viewer sees lie within two pixels of a strong gradient.
inline std::vector<bool> nearEdges(const ApsFrame& frame)
{
    std::vector<std::uint8_t> picture(std::size_t{width} * height * 3);
    korvane::kernels::ApsAlignment().align(
        {frame.pixels, std::size_t{frame.width} * 3, frame.width, frame.height}, picture.data(),
        std::size_t{width} * 3);
    const auto at = [&picture](int x, int y) {
        return luma(picture.data() + (std::size_t(y) * width + std::size_t(x)) * 3);
    };
    std::vector<bool> near(std::size_t{width} * height);
    for (int y = 1; y + 1 < height; ++y) {
        for (int x = 1; x + 1 < width; ++x) {
            if (std::hypot(at(x + 1, y) - at(x - 1, y), at(x, y + 1) - at(x, y - 1)) < 30.0)
                continue;
            for (int dy = -2; dy <= 2; ++dy) {
                for (int dx = -2; dx <= 2; ++dx) {
                    const int row = std::clamp(y + dy, 0, height - 1);
                    const int column = std::clamp(x + dx, 0, width - 1);
                    near[std::size_t(row) * width + std::size_t(column)] = true;
                }
            }
        }
    }
    return near;
}

struct Shares
{
    double onEdges = 0;
    double mirrored = 0;
    std::uint64_t events = 0;
};

/// The share of a frame's events that lie near its edges, as they are and with the columns mirrored.
inline Shares edgeShares(const ApsFrame& frame, const EventCountFrame& counts)
{
    const std::vector<bool> near = nearEdges(frame);
    double on = 0;
    double mirrored = 0;
    Shares shares;
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const std::size_t pixel = y * width + x;
            const std::uint64_t events = counts.counts[2 * pixel] + counts.counts[2 * pixel + 1];
            shares.events += events;
            on += near[pixel] ? static_cast<double>(events) : 0.0;
            mirrored += near[y * width + (width - 1 - x)] ? static_cast<double>(events) : 0.0;
        }
    }
    shares.onEdges = on / static_cast<double>(shares.events);
    shares.mirrored = mirrored / static_cast<double>(shares.events);
    return shares;
}

/// Collects what a running camera sends.
class Receiver
{
public:
    explicit Receiver(const std::shared_ptr<SimulatedFusionCamera>& camera)
    {
        camera->addEventsStreamHandleCallback([this](const Event2D* begin, const Event2D* end) {
            const std::lock_guard lock(mutex);
            events.insert(events.end(), begin, end);
        });
        camera->addApsFrameCallback([this](const ApsFrame& frame) {
            if (onFrame)
                onFrame(frame);
            const std::lock_guard lock(mutex);
            frames.push_back(frame.timestamp);
            changed.notify_all();
        });
    }
    bool awaitFrames(std::size_t count)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(60),
                                [this, count] { return frames.size() >= count; });
    }
    std::vector<std::uint64_t> frameTimes() const
    {
        const std::lock_guard lock(mutex);
        return frames;
    }
    std::vector<Event2D> allEvents() const
    {
        const std::lock_guard lock(mutex);
        return events;
    }

    std::function<void(const ApsFrame& frame)> onFrame; ///< set before the camera starts

private:
    mutable std::mutex mutex;
    std::condition_variable changed;
    std::vector<Event2D> events;
    std::vector<std::uint64_t> frames;
};

} // namespace korvane::simulation::testing
