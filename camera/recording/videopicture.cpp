#include "camera/recording/videopicture.h"

#include "camera/recording/videohandles.h"

namespace korvane::recording {

std::unique_ptr<VideoPicture> VideoPicture::create(int width, int height)
{
    FrameHandle frame(av_frame_alloc());
    if (!frame)
        return nullptr;
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = width;
    frame->height = height;
    frame->color_range = AVCOL_RANGE_MPEG;
    frame->colorspace = AVCOL_SPC_BT709;
    frame->color_primaries = AVCOL_PRI_BT709;
    frame->color_trc = AVCOL_TRC_BT709;
    frame->chroma_location = AVCHROMA_LOC_CENTER;
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        return nullptr;
    return std::unique_ptr<VideoPicture>(new VideoPicture(frame.release()));
}

VideoPicture::~VideoPicture()
{
    av_frame_free(&held);
}

kernels::YuvPlanes VideoPicture::draw()
{
    // Some encoders read a picture after they took it: then it is theirs, and this one gets new memory.
    if (av_frame_is_writable(held) == 0) {
        const FrameHandle old(av_frame_alloc());
        if (!old)
            return {};
        av_frame_move_ref(old.get(), held);
        held->format = old->format;
        held->width = old->width;
        held->height = old->height;
        if (av_frame_copy_props(held, old.get()) < 0 || av_frame_get_buffer(held, 0) < 0)
            return {};
    }
    return {held->data[0], held->data[1], held->data[2], static_cast<std::size_t>(held->linesize[0]),
            static_cast<std::size_t>(held->linesize[1])};
}

} // namespace korvane::recording
