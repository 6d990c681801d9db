#pragma once

#include "camera/driver/dvscamera.h"
#include "camera/recording/recorder.h"
#include "examples/movingbar/biastool.h"
#include "examples/movingbar/spanbuffer.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

namespace movingbar {

inline constexpr const char* serialNumber = "EX-000001";

/// Where the one camera is plugged in. Backend and camera share it, since a camera outlives its backend. Any
/// thread.
struct Socket
{
    std::atomic<bool> plugged{true};
    std::atomic<unsigned> pulls{0}; ///< how often it has been unplugged
    std::atomic<bool> open{false};
};

/// Sees a bar move one column a millisecond. A binding of a real camera has its maker's library in place of
/// run() and step(). Threads as DvsCamera says.
class MovingBarCamera : public korvane::DvsCamera
{
public:
    /// `socket` was marked open by the caller; the camera marks it free.
    explicit MovingBarCamera(std::shared_ptr<Socket> socket);
    ~MovingBarCamera() override;

    /// Once unplugged it stays lost, however soon the cable is back.
    bool isConnected() override { return socket->plugged && socket->pulls == pullsAtOpening; }
    void releaseStream(int) override {}
    bool getNextEventBatch(std::vector<korvane::Event2D>& out) override;
    void setBatchTime(std::uint64_t microseconds) override { spans.setLength(microseconds); }
    int start() override;
    void stop() override;
    void startRecording(std::string path) override { recorder.start(path); }
    void stopRecording() override { recorder.stop(); }
    korvane::RecorderState recorderState() override { return recorder.state(); }

private:
    void run(const std::stop_token& stopped);
    void step();

    const std::shared_ptr<Socket> socket;
    const unsigned pullsAtOpening;
    const std::shared_ptr<BiasTool> biases = std::make_shared<BiasTool>();
    SpanBuffer spans;
    korvane::recording::Recorder recorder;
    std::uint64_t now = 0; ///< microseconds; the device thread's while it runs. Goes on after a stop.
    std::vector<korvane::Event2D> events; ///< the device thread's
    std::jthread device; ///< last: it ends before anything it uses
};

} // namespace movingbar
