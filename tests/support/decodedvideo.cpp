#include "tests/support/decodedvideo.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/pixdesc.h>
}

#include <QFile>

#include <algorithm>
#include <cmath>

namespace {

std::string text(const char* name)
{
    return name ? name : "";
}

std::vector<std::uint8_t> rows(const std::uint8_t* data, int stride, int width, int height)
{
    std::vector<std::uint8_t> bytes;
    bytes.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y)
        bytes.insert(bytes.end(), data + std::ptrdiff_t(y) * stride,
                     data + std::ptrdiff_t(y) * stride + width);
    return bytes;
}

/// FFmpeg's objects for one decoding.
struct Decoder
{
    ~Decoder()
    {
        av_frame_free(&frame);
        av_packet_free(&packet);
        avcodec_free_context(&codec);
        avformat_close_input(&container);
    }

    bool open(const QString& path)
    {
        if (avformat_open_input(&container, QFile::encodeName(path).constData(), nullptr, nullptr) < 0
            || avformat_find_stream_info(container, nullptr) < 0)
            return false;
        const AVCodec* found = nullptr;
        stream = av_find_best_stream(container, AVMEDIA_TYPE_VIDEO, -1, -1, &found, 0);
        if (stream < 0)
            return false;
        codec = avcodec_alloc_context3(found);
        codec->thread_count = 1;
        frame = av_frame_alloc();
        packet = av_packet_alloc();
        return avcodec_parameters_to_context(codec, container->streams[stream]->codecpar) >= 0
            && avcodec_open2(codec, found, nullptr) >= 0;
    }

    AVFormatContext* container = nullptr;
    AVCodecContext* codec = nullptr;
    AVFrame* frame = nullptr;
    AVPacket* packet = nullptr;
    int stream = -1;
};

} // namespace

DecodedVideo decodeVideo(const QString& path, const std::function<void(const DecodedPicture&)>& visitor)
{
    av_log_set_level(AV_LOG_FATAL);
    DecodedVideo video;
    Decoder decoder;
    if (!decoder.open(path)) {
        video.error = QStringLiteral("cannot be opened");
        return video;
    }
    const AVStream* const stream = decoder.container->streams[decoder.stream];
    const AVCodecParameters* const parameters = stream->codecpar;
    video.codec = text(avcodec_get_name(parameters->codec_id));
    video.pixelFormat = text(av_get_pix_fmt_name(static_cast<AVPixelFormat>(parameters->format)));
    video.range = text(av_color_range_name(parameters->color_range));
    video.matrix = text(av_color_space_name(parameters->color_space));
    video.primaries = text(av_color_primaries_name(parameters->color_primaries));
    video.transfer = text(av_color_transfer_name(parameters->color_trc));
    video.width = parameters->width;
    video.height = parameters->height;
    video.timeBaseDenominator = stream->time_base.num == 1 ? stream->time_base.den : 0;
    video.duration = av_rescale_q(stream->duration, stream->time_base, {1, 1000000});
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(decoder.container->metadata, "", entry, AV_DICT_IGNORE_SUFFIX)))
        video.metadata[entry->key] = entry->value;

    bool reading = true;
    while (reading) {
        reading = av_read_frame(decoder.container, decoder.packet) >= 0;
        if (reading && decoder.packet->stream_index != decoder.stream) {
            av_packet_unref(decoder.packet);
            continue;
        }
        if (avcodec_send_packet(decoder.codec, reading ? decoder.packet : nullptr) < 0)
            video.error = QStringLiteral("a packet cannot be decoded");
        av_packet_unref(decoder.packet);
        while (avcodec_receive_frame(decoder.codec, decoder.frame) >= 0) {
            const AVFrame& frame = *decoder.frame;
            const std::int64_t ticks = frame.pts * 1000000 * stream->time_base.num;
            if (ticks % stream->time_base.den != 0)
                video.error = QStringLiteral("a picture's time is no whole microsecond");
            if (frame.width != video.width || frame.height != video.height
                || frame.format != AV_PIX_FMT_YUV420P || frame.decode_error_flags != 0)
                video.error = QStringLiteral("a picture is not like the others");
            DecodedPicture picture;
            picture.time = ticks / stream->time_base.den;
            picture.key = frame.key_frame != 0;
            const int chromaWidth = (frame.width + 1) / 2;
            const int chromaHeight = (frame.height + 1) / 2;
            picture.luma = rows(frame.data[0], frame.linesize[0], frame.width, frame.height);
            picture.cb = rows(frame.data[1], frame.linesize[1], chromaWidth, chromaHeight);
            picture.cr = rows(frame.data[2], frame.linesize[2], chromaWidth, chromaHeight);
            ++video.count;
            video.times.push_back(picture.time);
            if (visitor)
                visitor(picture);
            else
                video.pictures.push_back(std::move(picture));
        }
    }
    return video;
}

std::vector<std::string> boxesOf(const QString& path)
{
    std::vector<std::string> names;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return names;
    const auto number = [&file](int bytes) {
        std::uint64_t value = 0;
        for (const char byte : file.read(bytes))
            value = (value << 8) | static_cast<std::uint8_t>(byte);
        return value;
    };
    for (qint64 at = 0; at + 8 <= file.size() && file.seek(at);) {
        std::uint64_t size = number(4);
        names.push_back(file.read(4).toStdString());
        if (size == 1)
            size = number(8);
        if (size < 8)
            break;
        at += static_cast<qint64>(size);
    }
    return names;
}

double psnr(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b)
{
    if (a.size() != b.size() || a.empty())
        return 0;
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double difference = double(a[i]) - double(b[i]);
        sum += difference * difference;
    }
    return sum == 0 ? 99 : 10 * std::log10(255.0 * 255.0 * static_cast<double>(a.size()) / sum);
}
