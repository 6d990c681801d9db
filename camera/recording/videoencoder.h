#pragma once

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

struct AVCodecContext;
struct AVPacket;

namespace korvane::recording {

class VideoPicture;

/// How a video is made.
struct VideoFormat
{
    int width = 0; ///< pixels, even
    int height = 0; ///< pixels, even
    std::uint64_t period = 33333; ///< microseconds from picture to picture, nominally
    /// H.264's quantiser, the same for every picture, so that a noisy one keeps its quality: 0 (best) to 51.
    int quantizer = 23;
    int keyInterval = 30; ///< pictures from key picture to key picture at most
    /// Whether pictures come from something that does not wait: a picture leaves the encoder before the next
    /// one enters. Else the encoder may hold some back and work on several at a time.
    bool live = false;
    /// Encoders to try first, in this order, by FFmpeg's names; after them any other of the machine's that
    /// makes H.264, and MPEG-4 Visual last.
    std::vector<std::string> encoders{"libx264"};
    bool otherEncoders = true; ///< whether others than these are tried
};

/// Turns pictures into packets. One thread at a time.
class VideoEncoder
{
public:
    /// The packet is the encoder's and valid during the call, its time stamps in microseconds. False ends.
    using PacketSink = std::function<bool(AVPacket& packet)>;

    /// Opens the first of the format's encoders that the machine has and that takes it; nothing, with the
    /// reason in `error`, when none does. Which one, if not the first, is logged under `name`.
    static std::unique_ptr<VideoEncoder> open(const VideoFormat& format, const QString& name, QString& error);
    ~VideoEncoder();
    VideoEncoder(const VideoEncoder&) = delete;
    VideoEncoder& operator=(const VideoEncoder&) = delete;

    /// Encodes a picture for this time, microseconds, later than the one before; packets that are ready go to
    /// the sink. The picture can be drawn on again afterwards. False, with the reason in `error` unless the
    /// sink ended it.
    bool encode(VideoPicture& picture, std::int64_t time, const PacketSink& sink, QString& error);
    /// Hands the last packets out; nothing can be encoded after.
    bool finish(const PacketSink& sink, QString& error);

    const AVCodecContext& context() const { return *codec; }
    /// FFmpeg's name of the encoder.
    std::string name() const;

private:
    VideoEncoder(AVCodecContext* opened, AVPacket* room, std::uint64_t nominalPeriod);

    bool drain(const PacketSink& sink, QString& error);

    AVCodecContext* codec;
    AVPacket* packet;
    const std::uint64_t period; ///< microseconds
    /// Encoders count pictures, since not all can count microseconds; here are the times of those under way,
    /// by their number modulo the size.
    std::vector<std::int64_t> times;
    std::int64_t pictures = 0;
};

} // namespace korvane::recording
