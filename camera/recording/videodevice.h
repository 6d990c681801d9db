#pragma once

#include <QIODevice>
#include <QString>

#include <cstdint>

struct AVFormatContext;
struct AVIOContext;

namespace korvane::recording {

/// What FFmpeg reads and writes through: an open QIODevice, whose first error is kept, since FFmpeg passes on
/// some errors of a disk as numbers and others not at all. The device and this outlive whatever uses them.
/// One thread at a time.
class VideoDevice
{
public:
    explicit VideoDevice(QIODevice& target) : device(target) {}
    VideoDevice(const VideoDevice&) = delete;
    VideoDevice& operator=(const VideoDevice&) = delete;

    /// Makes this the file that `context` works on, at the device's begin, and also the one that the
    /// container's writer opens by itself when it moves the index to the front. False when memory is short.
    bool attach(AVFormatContext& context, bool writing);
    /// Ends the use that attach() began, given the context's `pb`; what it still held back is written.
    static void release(AVIOContext* use);

    bool hasFailed() const { return !reason.isEmpty(); }
    /// Why the device failed first; empty without an error.
    const QString& errorString() const { return reason; }

private:
    class View;

    void fail();

    QIODevice& device;
    QString reason;
};

} // namespace korvane::recording
