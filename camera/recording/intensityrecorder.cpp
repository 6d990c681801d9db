#include "camera/recording/intensityrecorder.h"

#include "camera/recording/videoinput.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <exception>
#include <utility>

#include <sys/stat.h>

namespace korvane::recording {

namespace {

constexpr std::uint64_t picturesOfASecond = 1'000'000 / ApsVideoWriter::slot;

/// A file that takes nothing any more once somebody has removed or truncated it: what goes there is lost.
class WatchedFile : public QFile
{
public:
    using QFile::QFile;

protected:
    qint64 writeData(const char* bytes, qint64 count) override
    {
        struct stat status = {};
        const bool known = fstat(handle(), &status) == 0;
        if (known && status.st_nlink == 0) {
            setErrorString(QStringLiteral("the file has been removed"));
            return -1;
        }
        if (known && status.st_size < end) {
            setErrorString(QStringLiteral("the file has been truncated"));
            return -1;
        }
        const qint64 written = QFile::writeData(bytes, count);
        end = std::max(end, pos() + std::max<qint64>(written, 0));
        return written;
    }

private:
    qint64 end = 0; ///< of what was written
};

/// Whether a picture can be had of a video that was not completed.
bool isPlayable(const QString& path)
{
    VideoInput video(path);
    QString why;
    return video.open(why) && video.hasVideo() && video.prepare(why);
}

} // namespace

IntensityRecorder::IntensityRecorder(int frameWidth, int frameHeight, OpenDevice open)
    : width(frameWidth), height(frameHeight), openDevice(std::move(open))
{
}

IntensityRecorder::~IntensityRecorder()
{
    stop();
}

std::unique_ptr<QIODevice> IntensityRecorder::openNewFile(const QString& path, QString& error)
{
    auto file = std::make_unique<WatchedFile>(path);
    if (file->open(QIODevice::ReadWrite | QIODevice::NewOnly | QIODevice::Unbuffered))
        return file;
    error = file->errorString();
    return nullptr;
}

void IntensityRecorder::fail(const QString& path, const QString& reason)
{
    qWarning().noquote().nospace() << path << ": cannot be recorded: " << reason;
    const std::lock_guard lock(mutex);
    recorderState = {false, path.toLocal8Bit().toStdString(), reason.toLocal8Bit().toStdString()};
}

void IntensityRecorder::start(const std::string& rawPath)
{
    stop();
    const QFileInfo raw(QString::fromLocal8Bit(rawPath.c_str()));
    const QString path = raw.path() + QLatin1Char('/') + raw.completeBaseName() + QStringLiteral(".mp4");
    QString error;
    auto device = openDevice(path, error);
    if (!device) {
        fail(path, error);
        return;
    }
    std::shared_ptr<ApsVideoWriter> started;
    try {
        started = ApsVideoWriter::create(std::move(device), width, height, path, error, encoders);
    } catch (const std::exception& exception) {
        error = QString::fromLocal8Bit(exception.what());
    }
    if (!started) {
        QFile::remove(path);
        fail(path, error);
        return;
    }
    const std::lock_guard lock(mutex);
    writer = std::move(started);
    begun = false;
    recorderState = {true, path.toLocal8Bit().toStdString(), {}};
}

void IntensityRecorder::stop()
{
    std::shared_ptr<ApsVideoWriter> ended;
    bool hadEvents = false;
    std::uint64_t last = 0;
    QString path;
    {
        const std::lock_guard pushing(pushMutex);
        const std::lock_guard lock(mutex);
        ended = std::exchange(writer, nullptr);
        recorderState.writing = false;
        hadEvents = begun;
        last = lastEvent;
        path = QString::fromLocal8Bit(recorderState.path.c_str());
    }
    if (!ended)
        return;
    const bool whole = ended->finish(last);
    {
        const std::lock_guard lock(mutex);
        lastCounts = ended->counts();
    }
    if (!hadEvents || (whole && ended->counts().pictures == 0)) {
        // The events' own file is removed as well when it got none; without pictures it stands alone.
        qInfo().noquote().nospace() << path
                                    << ": no picture came while it was recorded; the empty file is removed";
        ended.reset();
        QFile::remove(path);
    } else if (!whole) {
        {
            const std::lock_guard lock(mutex);
            recorderState.error = ended->error().toLocal8Bit().toStdString();
        }
        const std::uint64_t pictures = ended->counts().pictures;
        ended.reset();
        // A video that cannot be played would keep its events from being. One of a second or more has
        // pictures: where a failing disk does not give them now, it may later.
        if (pictures < picturesOfASecond && QFileInfo::exists(path) && !isPlayable(path)) {
            qInfo().noquote().nospace()
                << path << ": no picture was written before the fault; the file is removed";
            QFile::remove(path);
        }
    }
}

void IntensityRecorder::noteEvents(std::span<const Event2D> events)
{
    if (events.empty())
        return;
    const std::lock_guard lock(mutex);
    if (!writer)
        return;
    if (!std::exchange(begun, true))
        writer->begin(events.front().timestamp);
    lastEvent = events.back().timestamp;
}

void IntensityRecorder::push(const ApsFrame& frame)
{
    const std::lock_guard pushing(pushMutex);
    std::shared_ptr<ApsVideoWriter> running;
    {
        const std::lock_guard lock(mutex);
        running = writer;
    }
    if (running)
        running->push(frame);
}

RecorderState IntensityRecorder::state() const
{
    const std::lock_guard lock(mutex);
    RecorderState state = recorderState;
    if (writer && writer->failed()) {
        state.writing = false;
        state.error = writer->error().toLocal8Bit().toStdString();
    }
    return state;
}

ApsVideoWriter::Counts IntensityRecorder::counts() const
{
    const std::lock_guard lock(mutex);
    return writer ? writer->counts() : lastCounts;
}

} // namespace korvane::recording
