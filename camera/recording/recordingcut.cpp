#include "camera/recording/recordingcut.h"

#include "camera/recording/evt3encoder.h"
#include "camera/recording/rawfilereader.h"
#include "camera/recording/recordingpath.h"
#include "camera/recording/recordingwriter.h"

#include <QDateTime>
#include <QFile>

#include <algorithm>

namespace korvane::recording {

namespace {

constexpr std::size_t pieceBytes = 1024 * 1024;

/// A file that goes with this object unless it was kept.
class TemporaryFile
{
public:
    explicit TemporaryFile(const QString& beside) : file(beside + QStringLiteral(".part"))
    {
        for (int i = 1;
             !(opened = file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
             && file.exists() && i < 100;
             ++i)
            file.setFileName(beside + QStringLiteral(".part%1").arg(i));
    }
    ~TemporaryFile()
    {
        if (opened && !kept)
            file.remove();
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool isOpen() const { return opened; }
    QString errorString() const { return file.errorString(); }
    QString name() const { return file.fileName(); }
    bool write(const char* bytes, std::size_t size)
    {
        return file.write(bytes, static_cast<qint64>(size)) == static_cast<qint64>(size);
    }
    void close() { file.close(); }
    void keep() { kept = true; }

private:
    QFile file;
    bool opened = false;
    bool kept = false;
};

/// The triggers of a range, handed out piece by piece beside its events.
class TriggerQueue
{
public:
    explicit TriggerQueue(DvsFileReader::Triggers all) : triggers(std::move(all)) {}
    /// Those not handed out yet, up to this time.
    std::span<const EventTriggerIn> until(std::uint64_t time)
    {
        const auto rest = remaining();
        const auto last
            = std::partition_point(rest.begin(), rest.end(), [time](const EventTriggerIn& trigger) {
                  return trigger.timestamp <= time;
              });
        const auto count = static_cast<std::size_t>(last - rest.begin());
        next += count;
        return rest.first(count);
    }
    std::span<const EventTriggerIn> remaining() const
    {
        return triggers ? std::span<const EventTriggerIn>(*triggers).subspan(next)
                        : std::span<const EventTriggerIn>();
    }

private:
    DvsFileReader::Triggers triggers;
    std::size_t next = 0;
};

bool sameTriggers(RawFileReader& source, RawFileReader& copy, std::uint64_t start, std::uint64_t end,
                  std::uint64_t shift)
{
    const auto wanted = source.getTriggersAt(start, end - start + 1);
    const auto got = copy.getTriggersAt(0, end - shift + 1);
    return wanted && got
        && std::equal(wanted->begin(), wanted->end(), got->begin(), got->end(),
                      [shift](const EventTriggerIn& a, const EventTriggerIn& b) {
                          return a.timestamp == b.timestamp + shift && a.id == b.id
                              && a.polarity == b.polarity;
                      });
}

/// Reads the copy back and compares it with the source, each counted from its own first event.
bool isTrueCopy(RawFileReader& source, const QString& path, std::uint64_t start, std::uint64_t end,
                QString& error)
{
    const auto copy = RawFileReader::open(path.toLocal8Bit().toStdString(), error);
    if (!copy || !copy->loadFile()) {
        error = QStringLiteral("what was written cannot be read back");
        return false;
    }
    std::uint64_t copyEnd = 0;
    copy->getEndTimestamp(copyEnd);
    std::uint64_t shift = 0;
    bool first = true;
    bool same = true;
    // The copy is asked for the events of the same time span as each piece of the source. Pieces may part the
    // events of one microsecond: those at a piece's last microsecond wait for the next one.
    std::vector<Event2D> waiting;
    std::vector<Event2D> incoming;
    std::uint64_t from = 0;
    const auto compareUntil = [&](std::uint64_t until) {
        const auto got = copy->getEventsAt(from, until - from + 1);
        same = got
            && std::equal(waiting.begin(), waiting.end(), got->begin(), got->end(),
                          [shift](const Event2D& a, const Event2D& b) {
                              return a.timestamp == b.timestamp + shift && a.x == b.x && a.y == b.y
                                  && a.polarity == b.polarity;
                          });
        from = until + 1;
        waiting.clear();
        return same;
    };
    source.streamEvents(start, end, [&](std::span<const Event2D> piece) {
        if (first) {
            std::uint64_t copyStart = 0;
            copy->getStartTimestamp(copyStart);
            shift = piece.front().timestamp - copyStart;
            first = false;
        }
        // Reading the copy on this thread reuses the memory that the piece stands in.
        incoming.assign(piece.begin(), piece.end());
        constexpr std::size_t compared = 64 * 1024;
        if (waiting.size() >= compared && incoming.front().timestamp > waiting.back().timestamp
            && !compareUntil(waiting.back().timestamp - shift))
            return false;
        waiting.insert(waiting.end(), incoming.begin(), incoming.end());
        return true;
    });
    same = same && !waiting.empty() && waiting.back().timestamp - shift == copyEnd && compareUntil(copyEnd);
    if (same)
        same = sameTriggers(source, *copy, start, end, shift);
    if (!same)
        error = QStringLiteral("what was written differs from the recording");
    return same;
}

} // namespace

bool cutRecording(RawFileReader& source, std::uint64_t start, std::uint64_t end, const QString& path,
                  QString& error)
{
    std::uint64_t firstTime = 0;
    std::uint64_t lastTime = 0;
    source.getStartTimestamp(firstTime);
    source.getEndTimestamp(lastTime);
    end = std::min(end, lastTime);
    if (start > end) {
        error = QStringLiteral("the range lies outside the recording");
        return false;
    }
    TemporaryFile file(path);
    if (!file.isOpen()) {
        error = file.errorString();
        return false;
    }
    const QByteArray header = recordingHeader(
        {source.sensorGeometry(), source.fileHeader().serial, QDateTime::currentDateTime()});
    std::vector<std::uint8_t> bytes(header.begin(), header.end());
    const auto flush = [&file, &bytes] {
        const bool written = file.write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        bytes.clear();
        return written;
    };

    Evt3Encoder encoder(source.sensorGeometry());
    TriggerQueue triggers(source.getTriggersAt(start, end - start + 1));
    bool written = true;
    std::uint64_t events = 0;
    source.streamEvents(start, end, [&](std::span<const Event2D> piece) {
        encoder.encode(piece, triggers.until(piece.back().timestamp), bytes);
        events += piece.size();
        written = bytes.size() < pieceBytes || flush();
        return written;
    });
    encoder.encode({}, triggers.remaining(), bytes);
    written = written && flush();
    if (!written) {
        error = file.errorString();
        return false;
    }
    if (events == 0) {
        error = QStringLiteral("the range holds no event");
        return false;
    }
    file.close();
    if (!isTrueCopy(source, file.name(), start, end, error))
        return false;
    if (renameToFree(file.name(), path, error).isEmpty())
        return false;
    file.keep();
    return true;
}

} // namespace korvane::recording
