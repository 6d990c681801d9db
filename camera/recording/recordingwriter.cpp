#include "camera/recording/recordingwriter.h"

#include <QDebug>

#include <algorithm>
#include <exception>
#include <limits>
#include <utility>

namespace korvane::recording {

namespace {

/// What is encoded is written once it is this much, or this old: a process that is killed loses less than a
/// second.
constexpr std::size_t pieceBytes = 1024 * 1024;
constexpr auto flushPeriod = std::chrono::milliseconds(500);
/// The least that an event takes behind a header: time-high, time-low, row and column.
constexpr std::uint64_t leastEventBytes = 8;
} // namespace

RecordingWriter::RecordingWriter(std::unique_ptr<OutputFile> target, const RecordingHead& head,
                                 QString fileName)
    : name(std::move(fileName)), file(std::move(target)), encoder(head.geometry),
      bytes(recordingHeader(head)), headerBytes(bytes.size())
{
    try {
        thread = std::thread([this] { run(); });
    } catch (...) {
        file->discard();
        throw;
    }
}

RecordingWriter::~RecordingWriter()
{
    finish();
}

void RecordingWriter::push(std::span<const Event2D> events, std::span<const EventTriggerIn> triggers)
{
    if (events.empty() && triggers.empty())
        return;
    Batch batch;
    {
        std::unique_lock lock(mutex);
        taken.wait(lock, [this] { return queued < queueRecords || closing || failure; });
        if (closing || failure)
            return;
        if (!spare.empty()) {
            batch = std::move(spare.back());
            spare.pop_back();
            spareRecords -= batch.room();
        }
    }
    try {
        batch.events.assign(events.begin(), events.end());
        batch.triggers.assign(triggers.begin(), triggers.end());
        const std::lock_guard lock(mutex);
        if (closing || failure)
            return;
        queued += batch.size();
        queue.push_back(std::move(batch));
    } catch (const std::exception& exception) {
        abandon(QString::fromLocal8Bit(exception.what()));
    }
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

std::size_t RecordingWriter::roomKept() const
{
    const std::lock_guard lock(mutex);
    return spareRecords;
}

void RecordingWriter::abandon(const QString& why)
{
    {
        const std::lock_guard lock(mutex);
        if (failure)
            return;
        reason = why;
        failure = true;
    }
    pushed.notify_all();
    taken.notify_all();
    qWarning().noquote().nospace() << name << ": the recording ends: " << why;
}

bool RecordingWriter::flush()
{
    const bool written = file->write(bytes);
    bytes.clear();
    if (!written)
        abandon(file->errorString());
    return written;
}

bool RecordingWriter::take(Batch& batch, std::chrono::steady_clock::time_point until)
{
    {
        std::unique_lock lock(mutex);
        if (batch.size() > 0 && spareRecords + batch.room() <= mostSpare) {
            spareRecords += batch.room();
            spare.push_back(std::move(batch));
        }
        batch = {};
        pushed.wait_until(lock, until, [this] { return !queue.empty() || closing || failure; });
        // A fault of the pushing side ends the recording behind what came before it.
        if (queue.empty() && (closing || failure))
            return false;
        if (!queue.empty()) {
            batch = std::move(queue.front());
            queue.pop_front();
            queued -= batch.size();
        }
    }
    taken.notify_one();
    return true;
}

bool RecordingWriter::leaps(const Batch& batch)
{
    if (batch.size() == 0)
        return false;
    std::uint64_t first = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t last = 0;
    const auto extend = [&first, &last](const auto& records) {
        if (records.empty())
            return;
        first = std::min(first, records.front().timestamp);
        last = std::max(last, records.back().timestamp);
    };
    extend(batch.events);
    extend(batch.triggers);
    const std::uint64_t before = latest.value_or(first);
    latest = std::max(before, last);
    return *latest - before > longestIdle;
}

void RecordingWriter::write()
{
    // The header stands in the file at once: whoever looks finds a recording, and a full disk is told early.
    if (!flush())
        return;
    auto lastFlush = std::chrono::steady_clock::now();
    Batch batch;
    while (take(batch, lastFlush + flushPeriod)) {
        if (leaps(batch)) {
            abandon(QStringLiteral("the camera's clock has leapt by more than thirty days"));
            break;
        }
        encoder.encode(batch.events, batch.triggers, bytes);
        const auto now = std::chrono::steady_clock::now();
        if (bytes.size() >= pieceBytes || now - lastFlush >= flushPeriod) {
            if (!flush())
                return;
            lastFlush = now;
        }
    }
    flush();
}

void RecordingWriter::end()
{
    if (encoder.encodedEvents() == 0 || file->size() < headerBytes + leastEventBytes) {
        qInfo().noquote().nospace() << name
                                    << (failure
                                            ? ": no event was written before the fault; the file is removed"
                                            : ": no event came while it was recorded; the empty file is "
                                              "removed");
        file->discard();
        return;
    }
    if (!file->close())
        abandon(file->errorString());
    if (encoder.droppedEvents() > 0)
        qInfo().noquote().nospace() << name << ": " << encoder.droppedEvents()
                                    << " events outside the sensor are left out";
    if (encoder.droppedTriggers() > 0)
        qInfo().noquote().nospace() << name << ": " << encoder.droppedTriggers()
                                    << " triggers on channels that cannot be named are left out";
}

void RecordingWriter::run()
{
    try {
        write();
    } catch (const std::exception& exception) {
        abandon(QString::fromLocal8Bit(exception.what()));
    }
    end();
}

} // namespace korvane::recording
