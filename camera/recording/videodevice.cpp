#include "camera/recording/videodevice.h"

#include "camera/recording/videohandles.h"

#include <memory>
#include <new>

namespace korvane::recording {

namespace {

/// Large enough that the system is called seldom, small against a picture's share of a second.
constexpr int bufferBytes = 256 * 1024;

} // namespace

/// One reader or writer of the device with a position of its own: while the index moves there are two.
class VideoDevice::View
{
public:
    explicit View(VideoDevice& file) : owner(file) {}

    static AVIOContext* open(VideoDevice& file, bool writing)
    {
        auto* const buffer = static_cast<unsigned char*>(av_malloc(bufferBytes));
        auto view = std::make_unique<View>(file);
        AVIOContext* const context = buffer
            ? avio_alloc_context(buffer, bufferBytes, writing ? 1 : 0, view.get(), &View::read, &View::write,
                                 &View::seek)
            : nullptr;
        if (!context) {
            av_free(buffer);
            return nullptr;
        }
        (void)view.release(); // the context's now, until close()
        return context;
    }

    static void close(AVIOContext* context)
    {
        if (!context)
            return;
        avio_flush(context);
        delete static_cast<View*>(context->opaque);
        av_freep(&context->buffer);
        avio_context_free(&context);
    }

private:
    static int read(void* opaque, std::uint8_t* bytes, int size)
    {
        View& view = *static_cast<View*>(opaque);
        if (!view.goThere())
            return AVERROR(EIO);
        const qint64 count = view.owner.device.read(reinterpret_cast<char*>(bytes), size);
        if (count < 0) {
            view.owner.fail();
            return AVERROR(EIO);
        }
        view.position += count;
        return count == 0 ? AVERROR_EOF : static_cast<int>(count);
    }

    static int write(void* opaque, std::uint8_t* bytes, int size)
    {
        View& view = *static_cast<View*>(opaque);
        if (view.owner.hasFailed() || !view.goThere())
            return AVERROR(EIO);
        for (int done = 0; done < size;) {
            const qint64 count
                = view.owner.device.write(reinterpret_cast<const char*>(bytes) + done, size - done);
            if (count <= 0) {
                view.owner.fail();
                return AVERROR(EIO);
            }
            done += static_cast<int>(count);
            view.position += count;
        }
        return size;
    }

    static std::int64_t seek(void* opaque, std::int64_t offset, int whence)
    {
        View& view = *static_cast<View*>(opaque);
        if (whence == AVSEEK_SIZE)
            return view.owner.device.size();
        switch (whence & ~AVSEEK_FORCE) {
        case SEEK_SET:
            break;
        case SEEK_CUR:
            offset += view.position;
            break;
        case SEEK_END:
            offset += view.owner.device.size();
            break;
        default:
            return AVERROR(EINVAL);
        }
        if (offset < 0)
            return AVERROR(EINVAL);
        view.position = offset;
        return offset;
    }

    bool goThere()
    {
        if (owner.device.pos() == position || owner.device.seek(position))
            return true;
        owner.fail();
        return false;
    }

    VideoDevice& owner;
    std::int64_t position = 0;
};

bool VideoDevice::attach(AVFormatContext& context, bool writing)
{
    context.pb = View::open(*this, writing);
    context.flags |= AVFMT_FLAG_CUSTOM_IO;
    context.opaque = this;
    context.io_open = [](AVFormatContext* of, AVIOContext** opened, const char*, int flags, AVDictionary**) {
        *opened = View::open(*static_cast<VideoDevice*>(of->opaque), (flags & AVIO_FLAG_WRITE) != 0);
        return *opened ? 0 : AVERROR(ENOMEM);
    };
    context.io_close2 = [](AVFormatContext*, AVIOContext* opened) {
        View::close(opened);
        return 0;
    };
    return context.pb != nullptr;
}

void VideoDevice::release(AVIOContext* use)
{
    View::close(use);
}

void VideoDevice::fail()
{
    if (reason.isEmpty())
        reason = device.errorString();
}

} // namespace korvane::recording
