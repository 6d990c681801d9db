#pragma once

#include "camera/recording/videodevice.h"
#include "camera/recording/videoencoder.h"

#include <QIODevice>
#include <QString>

#include <cstdint>
#include <memory>
#include <string>

struct AVFormatContext;

namespace korvane::recording {

/// How an `.mp4` is laid out.
enum class VideoLayout {
    /// The index in front, put there at the end: players start before they have the whole file. Nothing can
    /// be played of a file that was not finished.
    IndexInFront,
    /// Fragments, each with its own index, of half a second of pictures at most: a process that is killed
    /// leaves a file that plays up to the last one.
    Fragments,
};

/// Writes pictures at given times into one `.mp4`. Errors are values: after the first, only destroy it. One
/// thread at a time.
class VideoWriter
{
public:
    struct Settings
    {
        VideoFormat format;
        VideoLayout layout = VideoLayout::IndexInFront;
        std::string comment; ///< stands in the file's metadata; none when empty
    };

    /// Starts a video on an open and empty device, readable and writable, unbuffered; it outlives this.
    /// `name` stands in log lines. Nothing, with the reason in `error`, when it cannot be started.
    static std::unique_ptr<VideoWriter> create(QIODevice& device, const Settings& settings,
                                               const QString& name, QString& error);
    /// A video that was not finished is left as it is.
    ~VideoWriter();
    VideoWriter(const VideoWriter&) = delete;
    VideoWriter& operator=(const VideoWriter&) = delete;

    /// Adds a picture of the format's size at this time, microseconds, later than the one before. The picture
    /// can be drawn on again afterwards. False with the reason in `error`.
    bool write(VideoPicture& picture, std::int64_t time, QString& error);
    /// Completes the file. False with the reason in `error`.
    bool finish(QString& error);

    /// FFmpeg's name of the encoder in use.
    std::string encoderName() const { return encoder->name(); }

private:
    VideoWriter(QIODevice& device, std::unique_ptr<VideoEncoder> opened, VideoLayout fileLayout);

    bool start(const Settings& settings, QString& error);
    bool store(AVPacket& packet);
    bool explain(int code, QString& error) const;

    const VideoLayout layout;
    std::unique_ptr<VideoEncoder> encoder;
    VideoDevice file;
    AVFormatContext* container = nullptr;
    VideoEncoder::PacketSink sink;
    int storeCode = 0; ///< the container's answer to the last packet
};

} // namespace korvane::recording
