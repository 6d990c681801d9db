#include "camera/recording/recordingcut.h"

#include "camera/recording/evt3encoder.h"
#include "camera/recording/rawfilereader.h"
#include "camera/recording/recordingheader.h"
#include "camera/recording/targetfolder.h"
#include "camera/recording/temporaryfile.h"
#include "camera/recording/verifyingwriter.h"

#include <QDebug>

#include <algorithm>
#include <exception>
#include <utility>

namespace korvane::recording {

namespace {

/// Events of a block: small enough for the processor's second cache, large enough that handing it to another
/// thread costs nothing.
constexpr std::size_t blockEvents = 16 * 1024;
/// Microseconds that a block covers at most: a day. Idle time has words as well, 43 KB a day, and a damaged
/// recording may claim centuries of it.
constexpr std::uint64_t blockSpan = 86'400'000'000;

/// Makes blocks of a recording's events and triggers and hands them to the writer.
class BlockMaker
{
public:
    BlockMaker(Geometry geometry, std::span<const EventTriggerIn> all, VerifyingWriter& target)
        : encoder(geometry), triggers(all), writer(target), block(writer.emptyBlock())
    {
        block.events.reserve(blockEvents);
    }

    bool add(std::span<const Event2D> events)
    {
        while (!events.empty()) {
            if (!reach(events.front().timestamp))
                return false;
            auto now = events.first(std::min(events.size(), blockEvents - block.events.size()));
            if (now.back().timestamp - begin > blockSpan)
                now = now.first(static_cast<std::size_t>(
                    std::partition_point(
                        now.begin(), now.end(),
                        [this](const Event2D& event) { return event.timestamp - begin <= blockSpan; })
                    - now.begin()));
            block.events.insert(block.events.end(), now.begin(), now.end());
            events = events.subspan(now.size());
            if (block.events.size() == blockEvents && !handOn(block.events.back().timestamp))
                return false;
        }
        return true;
    }
    bool finish()
    {
        return (triggers.empty() || reach(triggers.back().timestamp)) && handOn(~std::uint64_t(0));
    }

    const Evt3Encoder& words() const { return encoder; }
    std::uint64_t events() const { return total; }

private:
    /// Hands on what lies more than a block's span before this time, to which events or triggers have come.
    bool reach(std::uint64_t time)
    {
        if (!std::exchange(begun, true))
            begin = triggers.empty() ? time : std::min(time, triggers.front().timestamp);
        while (time - begin > blockSpan) {
            const std::uint64_t end = begin + blockSpan;
            if (!handOn(end))
                return false;
            encoder.encodeIdle(end, block.bytes);
        }
        return true;
    }
    /// Completes the block with the triggers up to a time.
    bool handOn(std::uint64_t time)
    {
        begin = time;
        const auto behind
            = std::partition_point(triggers.begin(), triggers.end(), [time](const EventTriggerIn& trigger) {
                  return trigger.timestamp <= time;
              });
        const auto now = triggers.first(static_cast<std::size_t>(behind - triggers.begin()));
        triggers = triggers.subspan(now.size());
        encoder.encode(block.events, now, block.bytes);
        std::copy_if(now.begin(), now.end(), std::back_inserter(block.triggers), Evt3Encoder::canName);
        total += block.events.size();
        const bool wanted = writer.put(std::exchange(block, {}));
        if (wanted)
            block = writer.emptyBlock();
        return wanted;
    }

    Evt3Encoder encoder;
    std::span<const EventTriggerIn> triggers;
    VerifyingWriter& writer;
    VerifyingWriter::Block block;
    std::uint64_t total = 0;
    std::uint64_t begin = 0; ///< of the block, microseconds
    bool begun = false;
};

/// Writes the range into the file, verified; false, with the reason in `error`, when not all of it stands
/// there, or when there is none.
bool copyRange(RawFileReader& source, std::uint64_t start, std::uint64_t end, TemporaryFile& target,
               const QString& path, QString& error)
{
    error.clear();
    std::uint64_t lastTime = 0;
    source.getEndTimestamp(lastTime);
    const Geometry geometry = source.sensorGeometry();
    // Triggers may follow the last event: what was asked for counts, not where the events end.
    const std::uint64_t duration = end - start;
    bool gap = false;
    const auto triggers = source.readTriggers(start, std::max(duration, duration + 1), &gap);
    if (triggers && triggers->size() >= source.mostInWindow()) {
        error = QStringLiteral("the range holds too many triggers");
        return false;
    }
    VerifyingWriter writer(target.file(), target.name(),
                           recordingHeader(headOfCopy(source.fileHeader(), geometry)), geometry);
    BlockMaker blocks(
        geometry, triggers ? std::span<const EventTriggerIn>(*triggers) : std::span<const EventTriggerIn>(),
        writer);
    source.streamEvents(
        start, std::min(end, lastTime),
        [&blocks](std::span<const Event2D> piece) { return blocks.add(piece); }, &gap);
    blocks.finish();
    if (!writer.finish())
        error = writer.errorString();
    else if (source.hasShrunk())
        error = QStringLiteral("the recording has shrunk since it was opened");
    else if (gap)
        error = QStringLiteral("a part of the recording cannot be read");
    else if (blocks.events() == 0)
        error = QStringLiteral("the range holds no event");
    else if (const auto nameless = blocks.words().droppedTriggers(); nameless > 0)
        qInfo().noquote().nospace() << path << ": " << nameless
                                    << " triggers on channels that EVT 3.0 cannot name are left out";
    return error.isEmpty();
}

bool cut(RawFileReader& source, std::uint64_t start, std::uint64_t end, const QString& path, QString& error)
{
    std::uint64_t lastTime = 0;
    source.getEndTimestamp(lastTime);
    if (start > end) {
        error = QStringLiteral("the range ends before it begins");
        return false;
    }
    if (start > lastTime) {
        error = QStringLiteral("the range lies outside the recording");
        return false;
    }
    if (!namesFile(path)) {
        error = QStringLiteral("it names no file");
        return false;
    }
    TargetFolder folder(path);
    if (!folder.exists()) {
        error = QStringLiteral("the folder cannot be made");
        return false;
    }
    TemporaryFile temporary(path);
    if (!temporary.isOpen()) {
        error = temporary.errorString();
        return false;
    }
    if (!copyRange(source, start, end, temporary, path, error) || !temporary.keepAs(path, error))
        return false;
    folder.keep();
    return true;
}

} // namespace

bool cutRecording(RawFileReader& source, std::uint64_t start, std::uint64_t end, const QString& path,
                  QString& error)
{
    try {
        return cut(source, start, end, path, error);
    } catch (const std::exception& exception) {
        error = QString::fromLocal8Bit(exception.what());
        return false;
    }
}

} // namespace korvane::recording
