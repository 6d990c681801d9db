#include "tests/support/foreignvideo.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <QFile>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

/// FFmpeg's objects for one file of one stream.
struct Encoder
{
    ~Encoder()
    {
        if (container && container->pb)
            avio_closep(&container->pb);
        avformat_free_context(container);
        av_frame_free(&frame);
        av_packet_free(&packet);
        avcodec_free_context(&codec);
    }

    bool prepare(const QString& path, AVCodecID id)
    {
        av_log_set_level(AV_LOG_FATAL);
        const QByteArray name = QFile::encodeName(path);
        const AVCodec* const encoder = avcodec_find_encoder(id);
        codec = avcodec_alloc_context3(encoder);
        frame = av_frame_alloc();
        packet = av_packet_alloc();
        codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        return avformat_alloc_output_context2(&container, nullptr, "mp4", name.constData()) >= 0
            && avio_open(&container->pb, name.constData(), AVIO_FLAG_WRITE) >= 0;
    }

    bool start()
    {
        if (avcodec_open2(codec, nullptr, nullptr) < 0)
            return false;
        AVStream* const stream = avformat_new_stream(container, nullptr);
        stream->time_base = codec->time_base;
        return avcodec_parameters_from_context(stream->codecpar, codec) >= 0
            && avformat_write_header(container, nullptr) >= 0 && av_frame_get_buffer(frame, 0) >= 0;
    }

    bool send(AVFrame* one)
    {
        if (avcodec_send_frame(codec, one) < 0)
            return false;
        while (avcodec_receive_packet(codec, packet) >= 0) {
            // Encoders leave it at nothing, and the last picture would end with its begin.
            packet->duration = std::max<std::int64_t>(packet->duration, 1);
            av_packet_rescale_ts(packet, codec->time_base, container->streams[0]->time_base);
            if (av_interleaved_write_frame(container, packet) < 0)
                return false;
        }
        return one != nullptr || av_write_trailer(container) >= 0;
    }

    AVFormatContext* container = nullptr;
    AVCodecContext* codec = nullptr;
    AVFrame* frame = nullptr;
    AVPacket* packet = nullptr;
};

} // namespace

bool writeForeignVideo(const QString& path, int width, int height, int pictures,
                       const std::function<int(int)>& luma)
{
    Encoder encoder;
    if (!encoder.prepare(path, AV_CODEC_ID_H264))
        return false;
    encoder.codec->width = encoder.frame->width = width;
    encoder.codec->height = encoder.frame->height = height;
    encoder.codec->pix_fmt = AV_PIX_FMT_YUV420P;
    encoder.frame->format = AV_PIX_FMT_YUV420P;
    encoder.codec->time_base = {1, 25};
    encoder.codec->gop_size = 12;
    encoder.codec->max_b_frames = 2;
    encoder.codec->bit_rate = 4000000;
    if (!encoder.start())
        return false;
    for (int k = 0; k < pictures; ++k) {
        if (av_frame_make_writable(encoder.frame) < 0)
            return false;
        for (int plane = 0; plane < 3; ++plane) {
            const int rows = plane == 0 ? height : (height + 1) / 2;
            std::memset(encoder.frame->data[plane], plane == 0 ? luma(k) : 128,
                        static_cast<std::size_t>(encoder.frame->linesize[plane] * rows));
        }
        encoder.frame->pts = k;
        if (!encoder.send(encoder.frame))
            return false;
    }
    return encoder.send(nullptr);
}

bool writeSoundOnly(const QString& path)
{
    Encoder encoder;
    if (!encoder.prepare(path, AV_CODEC_ID_AAC))
        return false;
    encoder.codec->sample_rate = encoder.frame->sample_rate = 44100;
    encoder.codec->sample_fmt = AV_SAMPLE_FMT_FLTP;
    encoder.frame->format = AV_SAMPLE_FMT_FLTP;
    encoder.codec->time_base = {1, 44100};
    encoder.codec->ch_layout = AV_CHANNEL_LAYOUT_MONO;
    encoder.frame->ch_layout = AV_CHANNEL_LAYOUT_MONO;
    encoder.frame->nb_samples = 1024;
    if (!encoder.start())
        return false;
    std::memset(encoder.frame->data[0], 0, 1024 * sizeof(float));
    for (int k = 0; k < 43; ++k) {
        encoder.frame->pts = k * 1024;
        if (!encoder.send(encoder.frame))
            return false;
    }
    return encoder.send(nullptr);
}
