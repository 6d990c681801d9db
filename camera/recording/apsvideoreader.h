#pragma once

#include "camera/driver/apsfilereader.h"
#include "camera/recording/videoinput.h"

#include <QString>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

struct SwsContext;

namespace korvane::recording {

/// Reads the intensity frames of an `.mp4`: any that FFmpeg decodes, delivered as 3840 x 2160 pixels. Decodes
/// ahead on a thread of its own, a bounded number of frames. A frame that is damaged is delivered as a repeat
/// of the one before, so that every frame keeps its place beside the events. One thread at a time.
class ApsVideoReader : public ApsFileReader
{
public:
    static constexpr std::uint16_t frameWidth = 3840;
    static constexpr std::uint16_t frameHeight = 2160;
    /// Frames that wait at most, of 25 MB each.
    static constexpr std::size_t framesAhead = 3;

    /// A reader for the file, if it is an `.mp4` with a video stream; else nothing, with the reason in
    /// `error`.
    static std::unique_ptr<ApsVideoReader> open(const std::string& path, QString& error);
    ~ApsVideoReader() override;

    bool loadFile() override;
    void getFrameIndex(std::vector<std::uint64_t>& index) override;
    bool getNextFrame(ApsFrame& frame) override;
    /// The frame for a time is the last one that is not later, or the first. It is also the next one that
    /// getNextFrame() gives.
    void seekFrame(std::uint64_t ts, ApsFrame& frame) override;

private:
    using Pixels = std::shared_ptr<std::vector<std::uint8_t>>;
    struct Ready
    {
        Pixels pixels;
        std::uint64_t time = 0; ///< microseconds
    };

    explicit ApsVideoReader(const QString& path);

    void run();
    void goTo(std::size_t picture);
    bool produce(Ready& ready);
    void keepSkipped(const AVFrame& frame);
    void forgetSkipped();
    Pixels convert(const AVFrame& frame);
    Pixels freePixels();
    void reportDamage();
    bool waitForFrame(std::unique_lock<std::mutex>& lock);
    void fill(ApsFrame& frame, const Ready& from) const;

    const QString path;
    bool loaded = false;
    Ready delivered; ///< keeps the pixels of the frame that was handed out

    // The decoding thread's, after loadFile().
    VideoInput input;
    SwsContext* scaler = nullptr;
    std::size_t nextPicture = 0; ///< to be produced
    const AVFrame* decoded = nullptr; ///< not yet produced
    std::size_t decodedPicture = 0; ///< its number
    bool inputEnded = false;
    AVFrame* skipped = nullptr; ///< after a seek, the last sound picture before the wanted one
    Pixels lastGood;
    bool damageReported = false;

    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Pixels> buffers; ///< under mutex: all there are; one that nobody else holds is free
    std::deque<Ready> ready; ///< under mutex
    std::size_t wantedPicture = 0; ///< under mutex
    bool seeking = false; ///< under mutex
    bool ended = false; ///< under mutex
    bool closing = false; ///< under mutex
    std::thread thread;
};

} // namespace korvane::recording
