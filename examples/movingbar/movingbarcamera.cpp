#include "examples/movingbar/movingbarcamera.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <utility>

namespace movingbar {

namespace {

constexpr unsigned width = 1280; // pixels
constexpr unsigned height = 720;
constexpr unsigned barWidth = 40;
constexpr std::uint64_t stepTime = 1000; // microseconds

} // namespace

MovingBarCamera::MovingBarCamera(std::shared_ptr<Socket> itsSocket)
    : socket(std::move(itsSocket)), pullsAtOpening(socket->pulls), recorder({width, height}, serialNumber)
{
    addTool(korvane::ToolType::Biases, biases);
}

MovingBarCamera::~MovingBarCamera()
{
    stop();
    recorder.stop();
    socket->open = false;
}

bool MovingBarCamera::getNextEventBatch(std::vector<korvane::Event2D>& out)
{
    return isConnected() && spans.take(out);
}

int MovingBarCamera::start()
{
    if (!isConnected())
        return 1;
    if (device.joinable())
        return 0;
    spans.restart(now);
    try {
        device = std::jthread([this](const std::stop_token& stopped) { run(stopped); });
    } catch (const std::system_error&) {
        return 2;
    }
    return 0;
}

void MovingBarCamera::stop()
{
    if (!device.joinable())
        return;
    device.request_stop();
    device.join();
}

void MovingBarCamera::run(const std::stop_token& stopped)
{
    std::mutex mutex;
    std::condition_variable_any wake;
    std::unique_lock lock(mutex);
    auto next = std::chrono::steady_clock::now();
    while (!stopped.stop_requested() && isConnected()) {
        step();
        next += std::chrono::microseconds(stepTime);
        // A stop ends the wait at once.
        wake.wait_until(lock, stopped, next, [] { return false; });
    }
}

void MovingBarCamera::step()
{
    events.clear();
    const auto front = static_cast<std::uint16_t>(now / stepTime % width);
    const auto back = static_cast<std::uint16_t>((front + width - barWidth) % width);
    const int rowStep = 8 + biases->diffOn() / 10;
    for (int y = 0; y < static_cast<int>(height); y += rowStep) {
        const auto row = static_cast<std::uint16_t>(y);
        events.push_back({front, row, 1, now});
        events.push_back({back, row, 0, now});
    }
    now += stepTime;
    // What is seen has been recorded.
    recorder.push(events);
    spans.add(events, now);
}

} // namespace movingbar
