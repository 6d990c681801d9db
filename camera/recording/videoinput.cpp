#include "camera/recording/videoinput.h"

#include "camera/recording/videohandles.h"

#include <QDebug>
#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace korvane::recording {

namespace {

bool isDamaged(const AVFrame& frame)
{
    return (frame.flags & AV_FRAME_FLAG_CORRUPT) != 0 || frame.decode_error_flags != 0;
}

} // namespace

VideoInput::VideoInput(const QString& path) : file(path), device(file)
{
    tameVideoLibraries();
}

VideoInput::~VideoInput()
{
    av_packet_free(&packet);
    av_frame_free(&frame);
    avcodec_free_context(&decoder);
    if (!container)
        return;
    AVIOContext* const use = std::exchange(container->pb, nullptr);
    avformat_close_input(&container);
    VideoDevice::release(use);
}

bool VideoInput::open(QString& error)
{
    // Opening a pipe would wait for somebody who writes into it.
    const QFileInfo info(file);
    if (!info.isFile()) {
        error = info.exists() ? QStringLiteral("it is not a file") : QStringLiteral("there is no such file");
        return false;
    }
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        error = file.errorString();
        return false;
    }
    container = avformat_alloc_context();
    if (!container || !device.attach(*container, false)) {
        error = videoErrorText(AVERROR(ENOMEM));
        return false;
    }
    AVIOContext* const use = container->pb;
    // Frees the container when it fails, but never what it reads through.
    const int code = avformat_open_input(&container, nullptr, av_find_input_format("mp4"), nullptr);
    if (code < 0) {
        VideoDevice::release(use);
        error = device.hasFailed() ? device.errorString()
                                   : QStringLiteral("it is not an .mp4 file: ") + videoErrorText(code);
        return false;
    }
    return true;
}

std::string VideoInput::comment() const
{
    const AVDictionaryEntry* const entry = av_dict_get(container->metadata, "comment", nullptr, 0);
    return entry ? entry->value : std::string();
}

bool VideoInput::hasVideo() const
{
    return std::any_of(container->streams, container->streams + container->nb_streams,
                       [](const AVStream* one) { return one->codecpar->codec_type == AVMEDIA_TYPE_VIDEO; });
}

bool VideoInput::prepare(QString& error)
{
    if (const int code = avformat_find_stream_info(container, nullptr); code < 0) {
        error = videoErrorText(code);
        return false;
    }
    stream = av_find_best_stream(container, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (stream < 0) {
        error = QStringLiteral("it holds no video stream");
        return false;
    }
    if (avformat_index_get_entries_count(container->streams[stream]) > file.size()) {
        error = QStringLiteral("it lists more pictures than it has bytes");
        return false;
    }
    if (!openDecoder(error))
        return false;
    findTimes();
    tellReadError();
    if (pictureTimes.empty())
        error = QStringLiteral("it holds no picture");
    return !pictureTimes.empty();
}

bool VideoInput::openDecoder(QString& error)
{
    const AVCodecParameters& parameters = *container->streams[stream]->codecpar;
    const AVCodec* const codec = avcodec_find_decoder(parameters.codec_id);
    if (!codec) {
        error = QStringLiteral("this machine's FFmpeg has no decoder for ")
            + QString::fromLatin1(avcodec_get_name(parameters.codec_id));
        return false;
    }
    decoder = avcodec_alloc_context3(codec);
    frame = av_frame_alloc();
    packet = av_packet_alloc();
    int code = decoder && frame && packet ? 0 : AVERROR(ENOMEM);
    if (code >= 0)
        code = avcodec_parameters_to_context(decoder, &parameters);
    if (code >= 0) {
        decoder->pkt_timebase = container->streams[stream]->time_base;
        decoder->max_pixels = mostVideoPixels;
        decoder->thread_count = 0; // as many as the machine's processors ask for
        code = avcodec_open2(decoder, codec, nullptr);
    }
    if (code < 0)
        error = videoErrorText(code);
    return code >= 0;
}

std::int64_t VideoInput::microsecondsOf(std::int64_t ticks) const
{
    return std::max<std::int64_t>(av_rescale_q(ticks, container->streams[stream]->time_base, microseconds),
                                  0);
}

void VideoInput::findTimes()
{
    for (unsigned i = 0; i < container->nb_streams; ++i)
        container->streams[i]->discard = static_cast<int>(i) == stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    // The container's index has the times of decoding, which are those of the pictures where none is stored
    // out of order.
    pictureTimes = indexedTimes();
    toBegin();
    const bool inOrder = av_read_frame(container, packet) >= 0 && packet->pts == packet->dts
        && container->streams[stream]->codecpar->video_delay == 0 && !pictureTimes.empty()
        && pictureTimes.front() == static_cast<std::uint64_t>(microsecondsOf(packet->pts));
    av_packet_unref(packet);
    if (!inOrder)
        pictureTimes = scannedTimes();
    toBegin();
    std::sort(pictureTimes.begin(), pictureTimes.end());
    pictureTimes.erase(std::unique(pictureTimes.begin(), pictureTimes.end()), pictureTimes.end());
}

std::vector<std::uint64_t> VideoInput::indexedTimes()
{
    // Reading on while nothing is wanted makes the container read every fragment's index and no picture.
    AVStream* const video = container->streams[stream];
    video->discard = AVDISCARD_ALL;
    while (av_read_frame(container, packet) >= 0)
        av_packet_unref(packet);
    video->discard = AVDISCARD_DEFAULT;
    std::vector<std::uint64_t> found;
    const int count = avformat_index_get_entries_count(video);
    for (int i = 0; i < count; ++i) {
        const AVIndexEntry* const entry = avformat_index_get_entry(video, i);
        if (entry && (entry->flags & AVINDEX_DISCARD_FRAME) == 0)
            found.push_back(static_cast<std::uint64_t>(microsecondsOf(entry->timestamp)));
    }
    return found;
}

std::vector<std::uint64_t> VideoInput::scannedTimes()
{
    std::vector<std::uint64_t> found;
    toBegin();
    while (av_read_frame(container, packet) >= 0) {
        if (packet->stream_index == stream && packet->pts != AV_NOPTS_VALUE
            && (packet->flags & AV_PKT_FLAG_DISCARD) == 0)
            found.push_back(static_cast<std::uint64_t>(microsecondsOf(packet->pts)));
        av_packet_unref(packet);
    }
    return found;
}

void VideoInput::toBegin()
{
    av_seek_frame(container, stream, 0, AVSEEK_FLAG_BACKWARD);
    avcodec_flush_buffers(decoder);
    drained = false;
}

void VideoInput::seek(std::size_t picture)
{
    if (picture == 0) {
        toBegin();
        return;
    }
    const std::int64_t ticks = av_rescale_q(static_cast<std::int64_t>(pictureTimes[picture]), microseconds,
                                            container->streams[stream]->time_base);
    av_seek_frame(container, stream, ticks, AVSEEK_FLAG_BACKWARD);
    avcodec_flush_buffers(decoder);
    drained = false;
}

void VideoInput::tellReadError()
{
    if (device.hasFailed() && !std::exchange(readErrorTold, true))
        qWarning().noquote().nospace()
            << file.fileName() << ": a part of the file cannot be read: " << device.errorString();
}

bool VideoInput::feed()
{
    if (drained)
        return false;
    // A packet that cannot be read, or that the decoder refuses, is a damaged picture: the next ones may be
    // sound.
    std::size_t unread = 0;
    for (int code = 0; code != AVERROR_EOF && unread <= pictureTimes.size();) {
        code = av_read_frame(container, packet);
        if (code < 0) {
            ++unread;
            tellReadError();
            continue;
        }
        const bool ours = packet->stream_index == stream;
        const bool taken = ours && avcodec_send_packet(decoder, packet) >= 0;
        av_packet_unref(packet);
        if (taken)
            return true;
    }
    drained = true;
    return avcodec_send_packet(decoder, nullptr) >= 0;
}

const AVFrame* VideoInput::next(std::size_t& picture)
{
    for (;;) {
        const int code = avcodec_receive_frame(decoder, frame);
        if (code == AVERROR_EOF)
            return nullptr;
        if (code < 0) {
            if (!feed())
                return nullptr;
            continue;
        }
        const std::int64_t ticks = frame->best_effort_timestamp;
        if (isDamaged(*frame) || ticks == AV_NOPTS_VALUE)
            continue;
        const auto behind = std::upper_bound(pictureTimes.begin(), pictureTimes.end(),
                                             static_cast<std::uint64_t>(microsecondsOf(ticks)));
        if (behind == pictureTimes.begin())
            continue;
        picture = static_cast<std::size_t>(behind - pictureTimes.begin()) - 1;
        return frame;
    }
}

} // namespace korvane::recording
