#include "camera/recording/videoexport.h"

#include "camera/recording/eventpictures.h"
#include "camera/recording/rawfilereader.h"
#include "camera/recording/targetfolder.h"
#include "camera/recording/temporaryfile.h"
#include "camera/recording/videomark.h"
#include "camera/recording/videopicturequeue.h"
#include "camera/recording/videowriter.h"
#include "display/kernels/eventyuv.h"

#include <algorithm>
#include <exception>
#include <thread>
#include <utility>

namespace korvane::recording {

namespace {

/// Pictures that go round between the two threads: enough that neither waits for the other's unevenness.
constexpr int picturesUnderWay = 8;
/// About 38 dB where events are as dense as noise; more elsewhere.
constexpr int quantizer = 23;

QString outOfMemory()
{
    return QStringLiteral("there is not enough memory");
}

int evenUp(unsigned size, unsigned most)
{
    return static_cast<int>(std::min((size + 1) / 2 * 2, most));
}

/// The path with its ending; empty, with the reason in `error`, when it names no file.
QString targetPath(const QString& path, QString& error)
{
    if (!namesFile(path)) {
        error = QStringLiteral("it names no file");
        return {};
    }
    const QLatin1String ending(".mp4");
    return path.endsWith(ending, Qt::CaseInsensitive) ? path : path + ending;
}

/// Draws the pictures of a range on a thread of its own.
class Drawing
{
public:
    Drawing(RawFileReader& recording, const VideoFormat& format, std::uint64_t start, std::uint64_t end,
            VideoPictureQueue& pictures)
        : source(recording), queue(pictures), from(start), to(end),
          width(static_cast<unsigned>(format.width)), height(static_cast<unsigned>(format.height)),
          thread([this] { run(); })
    {
    }
    ~Drawing() { stop(); }
    Drawing(const Drawing&) = delete;
    Drawing& operator=(const Drawing&) = delete;

    /// Waits for the end; false, with the reason, when not all was drawn.
    bool finish(QString& error)
    {
        thread.join();
        error = reason;
        return reason.isEmpty();
    }

private:
    void run()
    {
        try {
            drawAll();
        } catch (const std::exception& exception) {
            reason = QString::fromLocal8Bit(exception.what());
        }
        queue.end();
    }

    void drawAll()
    {
        EventPictures pictures(width, height, from, to,
                               [this](const std::uint8_t* plane) { return draw(plane); });
        bool gap = false;
        source.streamEvents(
            from, to, [&pictures](std::span<const Event2D> events) { return pictures.add(events); }, &gap);
        if (source.hasShrunk())
            reason = QStringLiteral("the recording's file has shrunk");
        else if (gap)
            reason = QStringLiteral("a part of the recording cannot be read");
        else
            pictures.finish();
    }

    bool draw(const std::uint8_t* plane)
    {
        auto picture = queue.takeToDraw();
        if (!picture)
            return false;
        const kernels::YuvPlanes planes = picture->draw();
        if (!planes.luma) {
            reason = outOfMemory();
            return false;
        }
        kernels::colourPlaneYuv(plane, width, height, kernels::yuvPalette(kernels::dvsPalette), planes);
        queue.push(std::move(picture));
        return true;
    }

    void stop()
    {
        queue.close();
        if (thread.joinable())
            thread.join();
    }

    RawFileReader& source;
    VideoPictureQueue& queue;
    const std::uint64_t from;
    const std::uint64_t to;
    const unsigned width;
    const unsigned height;
    QString reason; ///< why not all was drawn; the thread's, until it is joined
    std::thread thread;
};

bool render(RawFileReader& source, std::uint64_t from, std::uint64_t to, const VideoFormat& format,
            VideoWriter& writer, QString& error)
{
    VideoPictureQueue queue;
    for (int i = 0; i < picturesUnderWay; ++i) {
        auto picture = VideoPicture::create(format.width, format.height);
        if (!picture) {
            error = outOfMemory();
            return false;
        }
        queue.giveBack(std::move(picture));
    }
    Drawing drawing(source, format, from, to, queue);
    std::int64_t time = 0;
    while (auto picture = queue.takeToEncode()) {
        if (!writer.write(*picture, time, error))
            return false;
        time += static_cast<std::int64_t>(EventPictures::period);
        queue.giveBack(std::move(picture));
    }
    return drawing.finish(error) && writer.finish(error);
}

bool makeVideo(RawFileReader& source, std::uint64_t start, std::uint64_t end, const QString& path,
               QString& error, const std::vector<std::string>& encoders)
{
    std::uint64_t firstTime = 0;
    std::uint64_t lastTime = 0;
    source.getStartTimestamp(firstTime);
    source.getEndTimestamp(lastTime);
    if (start > end) {
        error = QStringLiteral("the range ends before it begins");
        return false;
    }
    start = std::max(start, firstTime);
    end = std::min(end, lastTime);
    if (start > end) {
        error = QStringLiteral("the range lies outside the recording");
        return false;
    }
    const QString target = targetPath(path, error);
    if (target.isEmpty())
        return false;
    TargetFolder folder(target);
    if (!folder.exists()) {
        error = QStringLiteral("the folder cannot be made");
        return false;
    }
    TemporaryFile temporary(target);
    if (!temporary.isOpen()) {
        error = temporary.errorString();
        return false;
    }
    VideoWriter::Settings settings;
    settings.format.width = evenUp(source.sensorGeometry().width, EventPictures::mostColumns);
    settings.format.height = evenUp(source.sensorGeometry().height, EventPictures::mostRows);
    settings.format.period = EventPictures::period;
    settings.format.quantizer = quantizer;
    settings.format.encoders = encoders;
    settings.comment = exportedVideoMark;
    {
        const auto writer = VideoWriter::create(temporary.device(), settings, target, error);
        if (!writer || !render(source, start, end, settings.format, *writer, error))
            return false;
    }
    if (!temporary.keepAs(target, error))
        return false;
    folder.keep();
    return true;
}

} // namespace

bool exportVideo(RawFileReader& source, std::uint64_t start, std::uint64_t end, const QString& path,
                 QString& error, const std::vector<std::string>& encoders)
{
    try {
        return makeVideo(source, start, end, path, error, encoders);
    } catch (const std::exception& exception) {
        error = QString::fromLocal8Bit(exception.what());
        return false;
    }
}

} // namespace korvane::recording
