#include "camera/recording/recorder.h"

#include "camera/recording/recordingpath.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <utility>

namespace korvane::recording {

Recorder::Recorder(Geometry sensor, std::string serialNumber, OpenDevice open)
    : geometry(sensor), serial(std::move(serialNumber)), openDevice(std::move(open))
{
}

Recorder::~Recorder()
{
    stop();
}

std::unique_ptr<QIODevice> Recorder::openNewFile(const QString& path, QString& error)
{
    auto file = std::make_unique<QFile>(path);
    if (!file->open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
        error = file->errorString();
        return nullptr;
    }
    return file;
}

void Recorder::fail(const QString& path, const QString& reason)
{
    qWarning().noquote().nospace() << path << ": cannot be recorded: " << reason;
    const std::lock_guard lock(mutex);
    recorderState = {false, path.toLocal8Bit().toStdString(), reason.toLocal8Bit().toStdString()};
}

void Recorder::start(const std::string& path)
{
    stop();
    const QString wanted = QString::fromLocal8Bit(path.c_str());
    if (!QDir().mkpath(QFileInfo(wanted).path())) {
        fail(wanted, QStringLiteral("the folder cannot be made"));
        return;
    }
    const QString free = freeRecordingPath(wanted);
    QString error;
    auto device = openDevice(free, error);
    if (!device) {
        fail(free, error);
        return;
    }
    auto started = std::make_shared<RecordingWriter>(
        std::move(device), RecordingHead{geometry, serial, QDateTime::currentDateTime()});
    const std::lock_guard lock(mutex);
    writer = std::move(started);
    recorderState = {true, free.toLocal8Bit().toStdString(), {}};
}

void Recorder::stop()
{
    std::shared_ptr<RecordingWriter> ended;
    QString path;
    {
        const std::lock_guard lock(mutex);
        ended = std::exchange(writer, nullptr);
        recorderState.writing = false;
        path = QString::fromLocal8Bit(recorderState.path.c_str());
    }
    if (!ended)
        return;
    if (!ended->finish()) {
        const std::lock_guard lock(mutex);
        recorderState.error = ended->error().toLocal8Bit().toStdString();
    } else if (ended->eventsWritten() == 0) {
        qInfo().noquote().nospace() << path
                                    << ": no event came while it was recorded; the empty file is removed";
        QFile::remove(path);
    }
}

std::shared_ptr<RecordingWriter> Recorder::current() const
{
    const std::lock_guard lock(mutex);
    return writer;
}

void Recorder::push(const Event2D* begin, const Event2D* end)
{
    if (const auto running = current())
        running->push({begin, end});
}

RecorderState Recorder::state() const
{
    const std::lock_guard lock(mutex);
    RecorderState state = recorderState;
    if (writer && writer->failed()) {
        state.writing = false;
        state.error = writer->error().toLocal8Bit().toStdString();
    }
    return state;
}

} // namespace korvane::recording
