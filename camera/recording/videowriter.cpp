#include "camera/recording/videowriter.h"

#include "camera/recording/videohandles.h"

#include <utility>

namespace korvane::recording {

namespace {

constexpr std::int64_t longestFragment = 250000; // microseconds

} // namespace

std::unique_ptr<VideoWriter> VideoWriter::create(QIODevice& device, const Settings& settings,
                                                 const QString& name, QString& error)
{
    auto encoder = VideoEncoder::open(settings.format, name, error);
    if (!encoder)
        return nullptr;
    std::unique_ptr<VideoWriter> writer(new VideoWriter(device, std::move(encoder), settings.layout));
    if (!writer->start(settings, error))
        return nullptr;
    return writer;
}

VideoWriter::VideoWriter(QIODevice& device, std::unique_ptr<VideoEncoder> opened, VideoLayout fileLayout)
    : layout(fileLayout), encoder(std::move(opened)), file(device),
      sink([this](AVPacket& packet) { return store(packet); })
{
}

VideoWriter::~VideoWriter()
{
    if (!container)
        return;
    VideoDevice::release(container->pb);
    avformat_free_context(container);
}

bool VideoWriter::start(const Settings& settings, QString& error)
{
    // The name is never opened: both sides of the container work on our device.
    int code = avformat_alloc_output_context2(&container, nullptr, "mp4", "video.mp4");
    if (code < 0 || !file.attach(*container, true))
        return explain(code < 0 ? code : AVERROR(ENOMEM), error);
    AVStream* const stream = avformat_new_stream(container, nullptr);
    if (!stream)
        return explain(AVERROR(ENOMEM), error);
    stream->time_base = microseconds;
    stream->avg_frame_rate = av_inv_q({static_cast<int>(settings.format.period), microseconds.den});
    stream->sample_aspect_ratio = {1, 1};
    code = avcodec_parameters_from_context(stream->codecpar, &encoder->context());
    if (code < 0)
        return explain(code, error);
    if (!settings.comment.empty())
        av_dict_set(&container->metadata, "comment", settings.comment.c_str(), 0);

    AVDictionary* options = nullptr;
    av_dict_set_int(&options, "video_track_timescale", microseconds.den, 0);
    // Pictures begin at 0 and come in order: there is nothing to edit, and an edit list would round the
    // video's length to milliseconds.
    av_dict_set_int(&options, "use_editlist", 0, 0);
    if (layout == VideoLayout::Fragments) {
        av_dict_set(&options, "movflags", "empty_moov+default_base_moof", 0);
        av_dict_set_int(&options, "frag_duration", longestFragment, 0);
    } else {
        av_dict_set(&options, "movflags", "faststart", 0);
    }
    code = avformat_write_header(container, &options);
    const DictionaryHandle rest(options);
    if (code >= 0)
        avio_flush(container->pb);
    return explain(code, error);
}

bool VideoWriter::write(VideoPicture& picture, std::int64_t time, QString& error)
{
    storeCode = 0;
    error.clear();
    if (!encoder->encode(picture, time, sink, error))
        return error.isEmpty() ? explain(storeCode, error) : false;
    // Writes nothing but after the picture that ended a fragment.
    if (layout == VideoLayout::Fragments)
        avio_flush(container->pb);
    return explain(storeCode, error);
}

bool VideoWriter::finish(QString& error)
{
    storeCode = 0;
    error.clear();
    if (!encoder->finish(sink, error))
        return error.isEmpty() ? explain(storeCode, error) : false;
    const int code = av_write_trailer(container);
    // What stands in the last buffer may be what the disk has no room for.
    VideoDevice::release(std::exchange(container->pb, nullptr));
    return explain(code, error);
}

bool VideoWriter::store(AVPacket& packet)
{
    av_packet_rescale_ts(&packet, microseconds, container->streams[0]->time_base);
    packet.stream_index = 0;
    storeCode = av_write_frame(container, &packet);
    return storeCode >= 0 && !file.hasFailed();
}

bool VideoWriter::explain(int code, QString& error) const
{
    // The device knows better than a number what went wrong.
    if (file.hasFailed())
        error = file.errorString();
    else if (code < 0)
        error = QStringLiteral("the video cannot be written: ") + videoErrorText(code);
    else
        return true;
    return false;
}

} // namespace korvane::recording
