#include "camera/recording/videomark.h"

#include "camera/recording/videodevice.h"
#include "camera/recording/videohandles.h"

#include <QFile>

namespace korvane::recording {

bool isMarkedVideo(const QString& path)
{
    silenceVideoLibraries();
    QFile file(path);
    AVFormatContext* container = avformat_alloc_context();
    if (!container || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        avformat_free_context(container);
        return false;
    }
    VideoDevice device(file);
    if (!device.attach(*container, false)) {
        avformat_free_context(container);
        return false;
    }
    AVIOContext* const input = container->pb;
    bool marked = false;
    // Frees the container when it fails, but never what it reads through.
    if (avformat_open_input(&container, nullptr, av_find_input_format("mp4"), nullptr) >= 0) {
        const AVDictionaryEntry* const comment = av_dict_get(container->metadata, "comment", nullptr, 0);
        marked = comment && exportedVideoMark == comment->value;
        container->pb = nullptr;
        avformat_close_input(&container);
    }
    VideoDevice::release(input);
    return marked;
}

} // namespace korvane::recording
