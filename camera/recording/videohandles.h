#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
#include <libavutil/mem.h>
}

#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace korvane::recording {

// Owners of FFmpeg's objects. Included by sources only: FFmpeg shows in no header that other rooms see.

struct CodecContextDeleter
{
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
using CodecContextHandle = std::unique_ptr<AVCodecContext, CodecContextDeleter>;

struct FrameDeleter
{
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using FrameHandle = std::unique_ptr<AVFrame, FrameDeleter>;

struct PacketDeleter
{
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using PacketHandle = std::unique_ptr<AVPacket, PacketDeleter>;

struct DictionaryDeleter
{
    void operator()(AVDictionary* dictionary) const { av_dict_free(&dictionary); }
};
using DictionaryHandle = std::unique_ptr<AVDictionary, DictionaryDeleter>;

/// FFmpeg's text for one of its error codes.
inline QString videoErrorText(int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return QString::fromLatin1(text);
}

/// The unit of our times, as FFmpeg writes it.
inline constexpr AVRational microseconds{1, 1000000};

/// What one allocation of FFmpeg's may take: a picture of the largest size that is read, sixteen bits a
/// colour. Beyond it a damaged container asks for memory that no video needs.
inline constexpr std::size_t mostVideoMemory = std::size_t(256) << 20U; // bytes
inline constexpr std::int64_t mostVideoPixels = 8192 * 4320; // of a picture

/// What goes wrong is reported with file and reason by us: FFmpeg's own lines are kept off the console. And
/// memory is bounded.
inline void tameVideoLibraries()
{
    av_log_set_level(AV_LOG_FATAL);
    av_max_alloc(mostVideoMemory);
}

} // namespace korvane::recording
