#include "camera/recording/videoencoder.h"

#include "camera/recording/videohandles.h"
#include "camera/recording/videopicture.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <QDebug>

#include <algorithm>
#include <cmath>

namespace korvane::recording {

namespace {

/// More pictures than any encoder holds back.
constexpr std::size_t mostUnderWay = 1024;

bool takesOurPixels(const AVCodec& encoder)
{
    for (const AVPixelFormat* format = encoder.pix_fmts; format && *format != AV_PIX_FMT_NONE; ++format) {
        if (*format == AV_PIX_FMT_YUV420P)
            return true;
    }
    return false;
}

/// The encoders to try, best first.
std::vector<const AVCodec*> candidates(const VideoFormat& format)
{
    std::vector<const AVCodec*> found;
    const auto add = [&found](const AVCodec* encoder) {
        if (encoder && takesOurPixels(*encoder)
            && std::find(found.begin(), found.end(), encoder) == found.end())
            found.push_back(encoder);
    };
    for (const std::string& name : format.encoders)
        add(avcodec_find_encoder_by_name(name.c_str()));
    if (!format.otherEncoders)
        return found;
    for (const AVCodecID id : {AV_CODEC_ID_H264, AV_CODEC_ID_MPEG4}) {
        add(avcodec_find_encoder(id));
        void* position = nullptr;
        while (const AVCodec* const codec = av_codec_iterate(&position)) {
            if (codec->id == id && av_codec_is_encoder(codec) != 0)
                add(codec);
        }
    }
    return found;
}

/// Bits a second for pictures full of noise: two and a half a pixel.
std::int64_t noisyBits(const VideoFormat& format)
{
    const std::int64_t pixelsPerSecond
        = std::int64_t(format.width) * format.height * 1000000 / static_cast<std::int64_t>(format.period);
    return pixelsPerSecond * 5 / 2;
}

CodecContextHandle openEncoder(const AVCodec& encoder, const VideoFormat& format, int& code)
{
    CodecContextHandle context(avcodec_alloc_context3(&encoder));
    if (!context) {
        code = AVERROR(ENOMEM);
        return nullptr;
    }
    context->width = format.width;
    context->height = format.height;
    context->pix_fmt = AV_PIX_FMT_YUV420P;
    context->sample_aspect_ratio = {1, 1};
    context->color_range = AVCOL_RANGE_MPEG;
    context->colorspace = AVCOL_SPC_BT709;
    context->color_primaries = AVCOL_PRI_BT709;
    context->color_trc = AVCOL_TRC_BT709;
    context->chroma_sample_location = AVCHROMA_LOC_CENTER;
    context->gop_size = format.keyInterval;
    context->max_b_frames = 0;
    context->thread_count = 0; // as many as the machine's processors ask for
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    // MPEG-4 Visual knows no finer clock than 65535 ticks a second.
    const int finest = encoder.id == AV_CODEC_ID_MPEG4 ? 65535 : 1000000;
    av_reduce(&context->time_base.num, &context->time_base.den, static_cast<std::int64_t>(format.period),
              1000000, finest);
    context->framerate = av_inv_q(context->time_base);

    // Options that an encoder does not know are left in the dictionary: each takes what it understands.
    AVDictionary* options = nullptr;
    if (encoder.id == AV_CODEC_ID_H264) {
        av_dict_set(&options, "preset", "ultrafast", 0);
        av_dict_set_int(&options, "qp", format.quantizer, 0);
        // What knows no constant quantiser gets as many bits as a noisy picture needs.
        const AVClass* known = encoder.priv_class;
        if (!known || !av_opt_find(&known, "qp", nullptr, 0, AV_OPT_SEARCH_FAKE_OBJ))
            context->bit_rate = noisyBits(format);
        if (format.live)
            av_dict_set(&options, "tune", "zerolatency", 0);
    } else {
        // H.264's step doubles with every 6 of its scale and is 1 at 4; MPEG-4's is twice its scale.
        const int quality
            = std::clamp(static_cast<int>(std::lround(std::exp2((format.quantizer - 4) / 6.0) / 2)), 1, 31);
        context->flags |= AV_CODEC_FLAG_QSCALE;
        context->global_quality = quality * FF_QP2LAMBDA;
        context->qmin = 1;
    }
    code = avcodec_open2(context.get(), &encoder, &options);
    const DictionaryHandle rest(options);
    return code < 0 ? nullptr : std::move(context);
}

} // namespace

std::unique_ptr<VideoEncoder> VideoEncoder::open(const VideoFormat& format, const QString& name,
                                                 QString& error)
{
    tameVideoLibraries();
    if (format.width <= 0 || format.height <= 0 || format.width % 2 != 0 || format.height % 2 != 0) {
        error
            = QStringLiteral("a video of %1 x %2 pixels cannot be made").arg(format.width).arg(format.height);
        return nullptr;
    }
    error = QStringLiteral("this machine's FFmpeg has no encoder for H.264 or MPEG-4");
    for (const AVCodec* const encoder : candidates(format)) {
        int code = 0;
        auto context = openEncoder(*encoder, format, code);
        if (!context) {
            error = QStringLiteral("the encoder %1 does not start: %2")
                        .arg(QString::fromLatin1(encoder->name), videoErrorText(code));
            continue;
        }
        PacketHandle packet(av_packet_alloc());
        if (!packet) {
            error = videoErrorText(AVERROR(ENOMEM));
            return nullptr;
        }
        if (format.encoders.empty() || format.encoders.front() != encoder->name)
            qWarning().noquote().nospace()
                << name << ": this machine's FFmpeg lacks the encoder "
                << (format.encoders.empty() ? QString() : QString::fromStdString(format.encoders.front()))
                << "; the video is made with " << encoder->name;
        error.clear();
        return std::unique_ptr<VideoEncoder>(
            new VideoEncoder(context.release(), packet.release(), format.period));
    }
    return nullptr;
}

VideoEncoder::VideoEncoder(AVCodecContext* opened, AVPacket* room, std::uint64_t nominalPeriod)
    : codec(opened), packet(room), period(nominalPeriod), times(mostUnderWay)
{
}

VideoEncoder::~VideoEncoder()
{
    av_packet_free(&packet);
    avcodec_free_context(&codec);
}

std::string VideoEncoder::name() const
{
    return codec->codec->name;
}

bool VideoEncoder::encode(VideoPicture& picture, std::int64_t time, const PacketSink& sink, QString& error)
{
    times[static_cast<std::size_t>(pictures) % times.size()] = time;
    picture.frame().pts = pictures++;
    if (const int code = avcodec_send_frame(codec, &picture.frame()); code < 0) {
        error = QStringLiteral("a picture cannot be encoded: ") + videoErrorText(code);
        return false;
    }
    return drain(sink, error);
}

bool VideoEncoder::finish(const PacketSink& sink, QString& error)
{
    if (const int code = avcodec_send_frame(codec, nullptr); code < 0 && code != AVERROR_EOF) {
        error = QStringLiteral("the video cannot be completed: ") + videoErrorText(code);
        return false;
    }
    return drain(sink, error);
}

bool VideoEncoder::drain(const PacketSink& sink, QString& error)
{
    for (;;) {
        const int code = avcodec_receive_packet(codec, packet);
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF)
            return true;
        if (code < 0) {
            error = QStringLiteral("a picture cannot be encoded: ") + videoErrorText(code);
            return false;
        }
        // Without pictures that refer to later ones, packets come in the order of the pictures.
        packet->pts = times[static_cast<std::size_t>(packet->pts) % times.size()];
        packet->dts = packet->pts;
        packet->duration = static_cast<std::int64_t>(period);
        const bool wanted = sink(*packet);
        av_packet_unref(packet);
        if (!wanted)
            return false;
    }
}

} // namespace korvane::recording
