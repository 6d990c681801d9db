#include "camera/recording/recorder.h"

#include "camera/recording/newfile.h"
#include "camera/recording/recordingpath.h"
#include "camera/recording/recordingwriter.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>

#include <exception>
#include <utility>

namespace korvane::recording {

namespace {

std::string toLocal(const QString& text)
{
    return text.toLocal8Bit().toStdString();
}

} // namespace

Recorder::Recorder(Geometry sensor, std::string serialNumber, OpenFile open)
    : geometry(sensor), serial(std::move(serialNumber)), openFile(std::move(open))
{
}

Recorder::~Recorder()
{
    stop();
}

std::unique_ptr<OutputFile> Recorder::openNewFile(const QString& path, QString& error, bool& taken)
{
    auto file = std::make_unique<NewFile>();
    if (file->open(path))
        return file;
    error = file->errorString();
    taken = file->isTaken();
    return nullptr;
}

void Recorder::fail(const QString& path, const QString& reason)
{
    qWarning().noquote().nospace() << path << ": cannot be recorded: " << reason;
    const std::lock_guard lock(mutex);
    recorderState = {false, toLocal(path), toLocal(reason)};
}

void Recorder::start(const std::string& path)
{
    stop();
    const QString wanted = QString::fromLocal8Bit(path.c_str());
    if (QFileInfo(wanted).fileName().isEmpty()) {
        fail(wanted, QStringLiteral("the file has no name"));
        return;
    }
    if (!QDir().mkpath(QFileInfo(wanted).path())) {
        fail(wanted, QStringLiteral("the folder cannot be made"));
        return;
    }
    QString free;
    QString error;
    std::unique_ptr<OutputFile> file;
    // Somebody else may take the name between the look and the opening: then look again.
    constexpr int attempts = 100;
    bool taken = true;
    for (int attempt = 0; attempt < attempts && taken && !file; ++attempt) {
        taken = false;
        free = freeRecordingPath(wanted);
        file = openFile(free, error, taken);
    }
    if (!file) {
        fail(free, error);
        return;
    }
    try {
        auto started = std::make_shared<RecordingWriter>(std::move(file), headOfNow(geometry, serial), free);
        const std::lock_guard lock(mutex);
        writer = std::move(started);
        recorderState = {true, toLocal(free), {}};
    } catch (const std::exception& exception) {
        // Unless the writer has had it already.
        if (file)
            file->discard();
        fail(free, QString::fromLocal8Bit(exception.what()));
    }
}

void Recorder::stop()
{
    std::shared_ptr<RecordingWriter> ended;
    {
        const std::lock_guard lock(mutex);
        ended = std::exchange(writer, nullptr);
        recorderState.writing = false;
    }
    if (!ended || ended->finish())
        return;
    const std::lock_guard lock(mutex);
    recorderState.error = toLocal(ended->error());
}

std::shared_ptr<RecordingWriter> Recorder::current() const
{
    const std::lock_guard lock(mutex);
    return writer;
}

void Recorder::push(std::span<const Event2D> events, std::span<const EventTriggerIn> triggers)
{
    if (const auto running = current())
        running->push(events, triggers);
}

RecorderState Recorder::state() const
{
    const std::lock_guard lock(mutex);
    RecorderState state = recorderState;
    if (writer && writer->failed()) {
        state.writing = false;
        state.error = toLocal(writer->error());
    }
    return state;
}

} // namespace korvane::recording
