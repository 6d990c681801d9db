#include "camera/recording/recordingwriter.h"

#include <chrono>
#include <utility>

namespace korvane::recording {

namespace {

/// What is encoded is written once it is this much, or this old: a process that is killed loses less than a
/// second.
constexpr std::size_t pieceBytes = 1024 * 1024;
constexpr auto flushPeriod = std::chrono::milliseconds(500);
/// Batches kept for reuse.
constexpr std::size_t spareBatches = 16;

} // namespace

QByteArray recordingHeader(const RecordingHead& head)
{
    const QByteArray width = QByteArray::number(head.geometry.width);
    const QByteArray height = QByteArray::number(head.geometry.height);
    QByteArray header;
    header += "% date " + head.date.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")).toLatin1() + '\n';
    header += "% evt 3.0\n";
    header += "% format EVT3;height=" + height + ";width=" + width + '\n';
    header += "% geometry " + width + 'x' + height + '\n';
    if (!head.serial.empty())
        header += "% serial_number " + QByteArray::fromStdString(head.serial) + '\n';
    header += "% end\n";
    return header;
}

RecordingWriter::RecordingWriter(std::unique_ptr<QIODevice> target, const RecordingHead& head)
    : device(std::move(target)), encoder(head.geometry)
{
    const QByteArray header = recordingHeader(head);
    bytes.assign(header.begin(), header.end());
    thread = std::thread([this] { run(); });
}

RecordingWriter::~RecordingWriter()
{
    finish();
}

void RecordingWriter::push(std::span<const Event2D> events, std::span<const EventTriggerIn> triggers)
{
    if (events.empty() && triggers.empty())
        return;
    std::unique_lock lock(mutex);
    taken.wait(lock, [this] { return queued < queueEvents || closing || failure; });
    if (closing || failure)
        return;
    Batch batch;
    if (!spare.empty()) {
        batch = std::move(spare.back());
        spare.pop_back();
    }
    batch.events.assign(events.begin(), events.end());
    batch.triggers.assign(triggers.begin(), triggers.end());
    queued += events.size();
    queue.push_back(std::move(batch));
    lock.unlock();
    pushed.notify_one();
}

bool RecordingWriter::finish()
{
    {
        const std::lock_guard lock(mutex);
        closing = true;
    }
    pushed.notify_all();
    taken.notify_all();
    if (thread.joinable())
        thread.join();
    return !failure;
}

QString RecordingWriter::error() const
{
    const std::lock_guard lock(mutex);
    return reason;
}

void RecordingWriter::fail(const QString& why)
{
    {
        const std::lock_guard lock(mutex);
        reason = why;
        failure = true;
    }
    taken.notify_all();
}

bool RecordingWriter::flush()
{
    const auto size = static_cast<qint64>(bytes.size());
    qint64 done = 0;
    while (done < size) {
        const qint64 step = device->write(reinterpret_cast<const char*>(bytes.data()) + done, size - done);
        if (step <= 0) {
            fail(device->errorString());
            return false;
        }
        done += step;
    }
    bytes.clear();
    written += std::exchange(encodedEvents, 0);
    return true;
}

void RecordingWriter::run()
{
    auto lastFlush = std::chrono::steady_clock::now();
    bool more = true;
    while (more && !failure) {
        Batch batch;
        {
            std::unique_lock lock(mutex);
            pushed.wait_until(lock, lastFlush + flushPeriod, [this] { return !queue.empty() || closing; });
            if (!queue.empty()) {
                batch = std::move(queue.front());
                queue.pop_front();
                queued -= batch.events.size();
            }
            more = !closing || !queue.empty();
        }
        taken.notify_one();
        encoder.encode(batch.events, batch.triggers, bytes);
        encodedEvents += batch.events.size();
        {
            const std::lock_guard lock(mutex);
            if (spare.size() < spareBatches)
                spare.push_back(std::move(batch));
        }
        const auto now = std::chrono::steady_clock::now();
        if (bytes.size() >= pieceBytes || now - lastFlush >= flushPeriod) {
            if (!flush())
                break;
            lastFlush = now;
        }
    }
    if (!failure)
        flush();
    device->close();
}

} // namespace korvane::recording
