#include "camera/recording/apsvideowriter.h"

#include "display/kernels/bgryuv.h"

#include <QDebug>

#include <algorithm>
#include <exception>
#include <utility>

namespace korvane::recording {

namespace {

/// About 42 dB on textured scenes, at 10 to 20 MB a second.
constexpr int quantizer = 23;

} // namespace

std::unique_ptr<ApsVideoWriter> ApsVideoWriter::create(std::unique_ptr<QIODevice> device, int width,
                                                       int height, const QString& name, QString& error,
                                                       const Encoders& encoders)
{
    VideoWriter::Settings settings;
    settings.format.width = width;
    settings.format.height = height;
    settings.format.period = slot;
    settings.format.quantizer = quantizer;
    settings.format.live = true;
    settings.format.encoders = encoders.preferred;
    settings.format.otherEncoders = encoders.others;
    settings.layout = VideoLayout::Fragments;
    std::unique_ptr<ApsVideoWriter> made(new ApsVideoWriter(std::move(device), name));
    made->width = width;
    made->height = height;
    made->writer = VideoWriter::create(*made->device, settings, name, error);
    if (!made->writer)
        return nullptr;
    // One is being drawn, one repeated.
    for (std::size_t i = 0; i < picturesAhead + 2; ++i) {
        auto picture = VideoPicture::create(width, height);
        if (!picture) {
            error = QStringLiteral("there is not enough memory");
            return nullptr;
        }
        made->spare.push_back(std::move(picture));
    }
    made->thread = std::thread([writer = made.get()] { writer->run(); });
    return made;
}

ApsVideoWriter::ApsVideoWriter(std::unique_ptr<QIODevice> target, const QString& fileName)
    : name(fileName), device(std::move(target))
{
}

ApsVideoWriter::~ApsVideoWriter()
{
    end(0);
}

void ApsVideoWriter::begin(std::uint64_t firstEvent)
{
    firstTime = firstEvent;
}

ApsVideoWriter::Picture ApsVideoWriter::takeSpare(std::uint64_t at)
{
    const std::lock_guard lock(mutex);
    const bool late = !queue.empty() && at - queue.front().slot >= slotsAhead;
    if (late || queue.size() >= picturesAhead || spare.empty()) {
        ++counted.dropped;
        return nullptr;
    }
    Picture picture = std::move(spare.back());
    spare.pop_back();
    return picture;
}

void ApsVideoWriter::push(const ApsFrame& frame)
{
    const std::uint64_t first = firstTime;
    if (first == unknown || frame.timestamp < first || !frame.pixels || failure)
        return;
    const std::uint64_t at = (frame.timestamp - first) / slot;
    // A second frame of one slot has no place.
    if (at < pushedSlots)
        return;
    if (at - pushedSlots > mostRepeated) {
        fail(QStringLiteral("no frame could be recorded for five minutes"));
        return;
    }
    Picture picture = takeSpare(at);
    if (!picture)
        return;
    const bool drawn = frame.width == width && frame.height == height && convert(frame, *picture);
    {
        const std::lock_guard lock(mutex);
        if (drawn)
            queue.push_back({std::move(picture), at});
        else
            spare.push_back(std::move(picture));
    }
    if (drawn)
        pushedSlots = at + 1;
    changed.notify_all();
}

bool ApsVideoWriter::convert(const ApsFrame& frame, VideoPicture& picture) const
{
    const kernels::YuvPlanes planes = picture.draw();
    if (!planes.luma)
        return false;
    const auto stride = static_cast<std::size_t>(width * 3 + 3) / 4 * 4;
    kernels::bgrToYuv({frame.pixels, stride, width, height}, planes);
    return true;
}

bool ApsVideoWriter::finish(std::uint64_t lastEvent)
{
    const std::uint64_t first = firstTime;
    const std::uint64_t wanted = first == unknown || lastEvent < first ? 0 : (lastEvent - first) / slot + 1;
    end(std::min(wanted, pushedSlots + mostRepeated));
    return !failure;
}

void ApsVideoWriter::end(std::uint64_t lastSlot)
{
    if (!thread.joinable())
        return;
    {
        const std::lock_guard lock(mutex);
        ending = true;
        slotsWanted = lastSlot;
    }
    changed.notify_all();
    thread.join();
    const Counts all = counts();
    if (all.repeats > 0)
        qInfo().noquote().nospace() << name << ": " << all.repeats << " of " << all.pictures
                                    << " pictures repeat the one before; " << all.dropped
                                    << " frames came while the encoder was behind";
}

QString ApsVideoWriter::error() const
{
    const std::lock_guard lock(mutex);
    return reason;
}

ApsVideoWriter::Counts ApsVideoWriter::counts() const
{
    const std::lock_guard lock(mutex);
    return counted;
}

void ApsVideoWriter::fail(const QString& why)
{
    {
        const std::lock_guard lock(mutex);
        if (failure)
            return;
        reason = why;
        failure = true;
    }
    changed.notify_all();
    qWarning().noquote().nospace() << name << ": the recording of frames ends: " << why;
}

void ApsVideoWriter::run()
{
    try {
        bool more = true;
        while (more && !failure) {
            Drawn drawn;
            std::uint64_t wanted = 0;
            {
                std::unique_lock lock(mutex);
                changed.wait(lock, [this] { return !queue.empty() || ending || failure; });
                if (!queue.empty()) {
                    drawn = std::move(queue.front());
                    queue.pop_front();
                }
                more = drawn.picture != nullptr;
                wanted = slotsWanted;
            }
            if (more)
                store(std::move(drawn));
            else
                fillUp(wanted);
        }
        QString why;
        if (!failure && !writer->finish(why))
            fail(why);
    } catch (const std::exception& exception) {
        fail(QString::fromLocal8Bit(exception.what()));
    }
    device->close();
}

void ApsVideoWriter::fillUp(std::uint64_t count)
{
    while (last && nextSlot < count && put(*last, true))
        continue;
}

void ApsVideoWriter::store(Drawn drawn)
{
    // Slots before the first frame show that one.
    VideoPicture& before = last ? *last : *drawn.picture;
    while (nextSlot < drawn.slot) {
        if (!put(before, true))
            return;
    }
    if (!put(*drawn.picture, false))
        return;
    Picture old = std::exchange(last, std::move(drawn.picture));
    if (old) {
        const std::lock_guard lock(mutex);
        spare.push_back(std::move(old));
    }
}

bool ApsVideoWriter::put(VideoPicture& picture, bool repeat)
{
    QString why;
    if (!writer->write(picture, static_cast<std::int64_t>(nextSlot * slot), why)) {
        fail(why);
        return false;
    }
    ++nextSlot;
    const std::lock_guard lock(mutex);
    ++counted.pictures;
    if (repeat)
        ++counted.repeats;
    return true;
}

} // namespace korvane::recording
