#pragma once

#include "camera/recording/videodevice.h"

#include <QFile>
#include <QString>

#include <cstdint>
#include <string>
#include <vector>

struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;

namespace korvane::recording {

/// Reads an `.mp4` with FFmpeg: its metadata, the times of its pictures, the pictures. One thread at a time.
class VideoInput
{
public:
    explicit VideoInput(const QString& path);
    ~VideoInput();
    VideoInput(const VideoInput&) = delete;
    VideoInput& operator=(const VideoInput&) = delete;

    /// Opens the container only. False, with the reason in `error`, when the file cannot be read or is no
    /// `.mp4`.
    bool open(QString& error);
    /// The comment in the metadata; empty when there is none.
    std::string comment() const;
    bool hasVideo() const;
    /// Gets ready for pictures: finds the times of all and a decoder for them. False with the reason.
    bool prepare(QString& error);

    /// Times of all pictures, microseconds, rising; known from prepare() on.
    const std::vector<std::uint64_t>& times() const { return pictureTimes; }
    /// Moves to the key picture at or before this picture, a number into times().
    void seek(std::size_t picture);
    /// The next picture that could be decoded without damage, valid until the next call, and its number in
    /// `picture`; nothing at the end.
    const AVFrame* next(std::size_t& picture);

private:
    bool openDecoder(QString& error);
    void findTimes();
    std::vector<std::uint64_t> indexedTimes();
    std::vector<std::uint64_t> scannedTimes();
    void toBegin();
    bool feed();
    /// Once a file.
    void tellReadError();
    std::int64_t microsecondsOf(std::int64_t ticks) const;

    QFile file;
    VideoDevice device;
    AVFormatContext* container = nullptr;
    AVCodecContext* decoder = nullptr;
    AVFrame* frame = nullptr;
    AVPacket* packet = nullptr;
    int stream = -1;
    bool drained = false; ///< the decoder was told that nothing more comes
    bool readErrorTold = false;
    std::vector<std::uint64_t> pictureTimes;
};

} // namespace korvane::recording
