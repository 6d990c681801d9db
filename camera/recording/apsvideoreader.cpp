#include "camera/recording/apsvideoreader.h"

#include "camera/recording/videohandles.h"

extern "C" {
#include <libswscale/swscale.h>
}

#include <QDebug>

#include <algorithm>
#include <exception>
#include <utility>

namespace korvane::recording {

namespace {

constexpr std::size_t rowBytes = std::size_t(ApsVideoReader::frameWidth) * 3;

/// The matrix that a picture's colours were made with; where it is not told, the one usual for its size.
int matrixOf(const AVFrame& frame)
{
    if (frame.colorspace != AVCOL_SPC_UNSPECIFIED)
        return frame.colorspace;
    return frame.height > 576 ? SWS_CS_ITU709 : SWS_CS_ITU601;
}

} // namespace

std::unique_ptr<ApsVideoReader> ApsVideoReader::open(const std::string& path, QString& error)
{
    std::unique_ptr<ApsVideoReader> reader(new ApsVideoReader(QString::fromLocal8Bit(path.c_str())));
    if (!reader->input.open(error))
        return nullptr;
    if (!reader->input.hasVideo()) {
        error = QStringLiteral("it holds no video stream");
        return nullptr;
    }
    return reader;
}

ApsVideoReader::ApsVideoReader(const QString& name) : ApsFileReader({}), path(name), input(name)
{
    width = frameWidth;
    height = frameHeight;
}

ApsVideoReader::~ApsVideoReader()
{
    {
        const std::lock_guard lock(mutex);
        closing = true;
    }
    changed.notify_all();
    if (thread.joinable())
        thread.join();
    forgetSkipped();
    sws_freeContext(scaler);
}

bool ApsVideoReader::loadFile()
{
    if (loaded)
        return true;
    QString error;
    if (!input.prepare(error)) {
        qWarning().noquote().nospace() << path << ": cannot be loaded: " << error;
        return false;
    }
    loaded = true;
    thread = std::thread([this] { run(); });
    return true;
}

void ApsVideoReader::getFrameIndex(std::vector<std::uint64_t>& index)
{
    if (loaded)
        index = input.times();
    else
        index.clear();
}

bool ApsVideoReader::waitForFrame(std::unique_lock<std::mutex>& lock)
{
    changed.wait(lock, [this] { return (!ready.empty() || ended) && !seeking; });
    return !ready.empty();
}

void ApsVideoReader::fill(ApsFrame& frame, const Ready& from) const
{
    frame = {from.pixels->data(), frameWidth, frameHeight, from.time};
}

bool ApsVideoReader::getNextFrame(ApsFrame& frame)
{
    if (!loaded)
        return false;
    {
        std::unique_lock lock(mutex);
        if (!waitForFrame(lock))
            return false;
        delivered = std::move(ready.front());
        ready.pop_front();
    }
    changed.notify_all();
    fill(frame, delivered);
    return true;
}

void ApsVideoReader::seekFrame(std::uint64_t ts, ApsFrame& frame)
{
    if (!loaded)
        return;
    const auto& times = input.times();
    const auto behind = std::upper_bound(times.begin(), times.end(), ts);
    {
        std::unique_lock lock(mutex);
        wantedPicture = behind == times.begin() ? 0 : static_cast<std::size_t>(behind - times.begin()) - 1;
        seeking = true;
        changed.notify_all();
        if (!waitForFrame(lock))
            return;
        delivered = ready.front();
    }
    fill(frame, delivered);
}

void ApsVideoReader::run()
{
    for (;;) {
        {
            std::unique_lock lock(mutex);
            changed.wait(lock,
                         [this] { return closing || seeking || (!ended && ready.size() < framesAhead); });
            if (closing)
                return;
            if (seeking) {
                goTo(wantedPicture);
                seeking = false;
            }
        }
        Ready made;
        bool some = false;
        try {
            some = produce(made);
        } catch (const std::exception& exception) {
            qWarning().noquote().nospace() << path << ": cannot be read on: " << exception.what();
        }
        {
            const std::lock_guard lock(mutex);
            if (!some)
                ended = true;
            else if (!seeking)
                ready.push_back(std::move(made));
            made = {};
        }
        changed.notify_all();
    }
}

/// Under mutex: nobody takes a frame from before the seek.
void ApsVideoReader::goTo(std::size_t picture)
{
    ready.clear();
    ended = false;
    input.seek(picture);
    nextPicture = picture;
    decoded = nullptr;
    inputEnded = false;
    lastGood = nullptr;
    forgetSkipped();
}

/// Without its pixels being copied.
void ApsVideoReader::keepSkipped(const AVFrame& frame)
{
    forgetSkipped();
    skipped = av_frame_clone(&frame);
}

void ApsVideoReader::forgetSkipped()
{
    av_frame_free(&skipped);
}

bool ApsVideoReader::produce(Ready& made)
{
    const auto& times = input.times();
    if (nextPicture >= times.size())
        return false;
    while (!decoded && !inputEnded) {
        decoded = input.next(decodedPicture);
        inputEnded = decoded == nullptr;
        // From the key picture before the wanted one to that one.
        if (decoded && decodedPicture < nextPicture) {
            keepSkipped(*decoded);
            decoded = nullptr;
        }
    }
    const bool sound = decoded && decodedPicture == nextPicture;
    if (!sound && !lastGood && skipped)
        lastGood = convert(*skipped);
    forgetSkipped();
    if (sound || !lastGood) {
        // Where nothing came before that could be repeated, the next sound picture stands in.
        if (!decoded)
            return false;
        lastGood = convert(*decoded);
        if (!lastGood)
            return false;
    }
    if (sound)
        decoded = nullptr;
    else
        reportDamage();
    made = {lastGood, times[nextPicture++]};
    return true;
}

void ApsVideoReader::reportDamage()
{
    if (!std::exchange(damageReported, true))
        qWarning().noquote().nospace()
            << path << ": the picture at " << input.times()[nextPicture]
            << " us is damaged; such pictures are shown as repeats of the one before";
}

ApsVideoReader::Pixels ApsVideoReader::freePixels()
{
    const std::lock_guard lock(mutex);
    lastGood = nullptr;
    // Whoever lets a buffer go does so under the mutex, or is this thread.
    for (const Pixels& buffer : buffers) {
        if (buffer.use_count() == 1)
            return buffer;
    }
    buffers.push_back(std::make_shared<std::vector<std::uint8_t>>(rowBytes * frameHeight));
    return buffers.back();
}

ApsVideoReader::Pixels ApsVideoReader::convert(const AVFrame& frame)
{
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const bool scaled = frame.width != frameWidth || frame.height != frameHeight;
    scaler = sws_getCachedContext(scaler, frame.width, frame.height, format, frameWidth, frameHeight,
                                  AV_PIX_FMT_BGR24, scaled ? SWS_BILINEAR : SWS_POINT, nullptr, nullptr,
                                  nullptr);
    if (!scaler) {
        qWarning().noquote().nospace() << path << ": its pixels cannot be converted";
        return nullptr;
    }
    const int* const matrix = sws_getCoefficients(matrixOf(frame));
    sws_setColorspaceDetails(scaler, matrix, frame.color_range == AVCOL_RANGE_JPEG ? 1 : 0, matrix, 1, 0,
                             1 << 16, 1 << 16);
    Pixels pixels = freePixels();
    std::uint8_t* const planes[] = {pixels->data(), nullptr, nullptr, nullptr};
    const int strides[] = {static_cast<int>(rowBytes), 0, 0, 0};
    sws_scale(scaler, frame.data, frame.linesize, 0, frame.height, planes, strides);
    return pixels;
}

} // namespace korvane::recording
