#include "camera/recording/rawfilereader.h"

#include "camera/recording/evtwords.h"
#include "camera/recording/recordingcut.h"
#include "camera/recording/streamprobe.h"
#include "camera/recording/timehighscan.h"
#include "camera/recording/videoexport.h"

#include <QDebug>
#include <QFileInfo>

#include <algorithm>
#include <exception>
#include <iterator>
#include <limits>
#include <utility>

namespace korvane::recording {

namespace {

/// Bytes of the file that loading has brought in by one call instead of a fault a page: a small file's all.
constexpr std::uint64_t wantedAtOnce = 256 * 1024;
/// Events decoded at a time: 128 KiB, which stay in the processor's second cache until they are copied on.
constexpr std::size_t pieceEvents = 8192;

Event2D* pieceBuffer()
{
    static thread_local std::vector<Event2D> buffer(pieceEvents);
    return buffer.data();
}

/// Decodes a body piece by piece from an index entry on.
class Cursor
{
public:
    Cursor(const EvtDecoder& streamDecoder, Geometry geometry, std::span<const std::uint8_t> body,
           const IndexEntry& from, std::vector<EventTriggerIn>* triggers = nullptr)
        : decoder(streamDecoder), words(body), current(from.state)
    {
        pass.next = words.data() + std::min<std::uint64_t>(from.offset, words.size());
        pass.streamEnd = words.data() + words.size();
        pass.geometry = geometry;
        pass.triggers = triggers;
    }

    bool atEnd() const
    {
        return pass.streamEnd - pass.next < static_cast<std::ptrdiff_t>(wordSize(decoder.encoding()));
    }
    std::uint64_t offset() const { return static_cast<std::uint64_t>(pass.next - words.data()); }
    const EvtState& state() const { return current; }
    const EvtCounts& met() const { return counts; }

    /// The events of the next words, none beyond `endOffset`; perhaps none. Valid until the next call on this
    /// thread.
    std::span<const Event2D> next(std::uint64_t endOffset = std::numeric_limits<std::uint64_t>::max())
    {
        // Idle stretches hold words without events: the limit in bytes lets the caller look at the time in
        // them.
        constexpr std::uint64_t step = 64 * 1024;
        const std::uint64_t end
            = std::min({endOffset, offset() + step, static_cast<std::uint64_t>(words.size())});
        pass.end = words.data() + end;
        pass.out = pieceBuffer();
        pass.outEnd = pass.out + pieceEvents;
        decoder.decode(current, pass, counts);
        return {pieceBuffer(), pass.out};
    }

private:
    const EvtDecoder& decoder;
    std::span<const std::uint8_t> words;
    EvtState current;
    EvtPass pass;
    EvtCounts counts;
};

std::uint64_t saturatedSum(std::uint64_t a, std::uint64_t b)
{
    return a > std::numeric_limits<std::uint64_t>::max() - b ? std::numeric_limits<std::uint64_t>::max()
                                                             : a + b;
}

std::int64_t asSigned(std::uint64_t time)
{
    return static_cast<std::int64_t>(std::min<std::uint64_t>(time, std::numeric_limits<std::int64_t>::max()));
}

/// The encoding by header, and where that is silent by content; nothing with the reason in `error`.
std::optional<EvtEncoding> chooseEncoding(const QString& path, const RawHeader& header,
                                          std::span<const std::uint8_t> body, QString& error)
{
    if (!header.error.empty()) {
        error = QString::fromLocal8Bit(header.error.c_str());
        return std::nullopt;
    }
    if (!header.encoding) {
        const auto probed = probeEncoding(body);
        if (!probed)
            error = QStringLiteral("neither its header nor its content tells an event encoding");
        return probed;
    }
    if (header.encoding != EvtEncoding::Evt21)
        return header.encoding;
    const WordOrderVotes votes = countWordOrder(body);
    const bool voted = votes.little != votes.legacy;
    const bool legacy = header.legacyWordOrder.value_or(votes.legacy > votes.little);
    if (header.legacyWordOrder && voted && legacy != (votes.legacy > votes.little))
        qWarning().noquote().nospace()
            << path << ": the word order in the header and the words themselves disagree";
    return legacy ? EvtEncoding::Evt21Legacy : EvtEncoding::Evt21;
}

} // namespace

std::unique_ptr<RawFileReader> RawFileReader::open(const std::string& path, QString& error)
{
    const QString name = QString::fromLocal8Bit(path.c_str());
    if (!QFileInfo(name).isFile()) {
        error = QFileInfo::exists(name) ? QStringLiteral("it is not a file")
                                        : QStringLiteral("there is no such file");
        return nullptr;
    }
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly)) {
        error = file.errorString();
        return nullptr;
    }
    const QByteArray start = file.read(static_cast<qint64>(probeSize));
    if (start.isEmpty()) {
        error
            = file.error() == QFileDevice::NoError ? QStringLiteral("the file is empty") : file.errorString();
        return nullptr;
    }
    const RawHeader header = parseRawHeader(
        {start.constData(), std::min<std::size_t>(static_cast<std::size_t>(start.size()), probeSize)});
    const std::span all(reinterpret_cast<const std::uint8_t*>(start.constData()),
                        static_cast<std::size_t>(start.size()));
    const auto words = all.subspan(std::min(header.bodyOffset, all.size()));
    // Scripts with "% " comments look like a header up to a point.
    if (!header.encoding && header.error.empty() && looksLikeText(words)) {
        error = QStringLiteral("it is a text file");
        return nullptr;
    }
    const auto encoding = chooseEncoding(name, header, words, error);
    if (!encoding)
        return nullptr;
    return std::unique_ptr<RawFileReader>(new RawFileReader(name, header, *encoding));
}

RawFileReader::RawFileReader(QString path, RawHeader fileHeader, EvtEncoding encoding)
    : filePath(std::move(path)), header(std::move(fileHeader)), decoder(encoding), file(filePath),
      geometry(header.geometry)
{
}

std::span<const std::uint8_t> RawFileReader::body()
{
    const auto all = file.bytes();
    const std::uint64_t size = file.currentSize();
    if (size < all.size() && !shrunk.exchange(true))
        qWarning().noquote().nospace()
            << filePath << ": the file has shrunk while it was open; it ends there";
    const std::size_t end = std::min<std::uint64_t>(size, all.size());
    return end <= header.bodyOffset ? std::span<const std::uint8_t>()
                                    : all.first(end).subspan(header.bodyOffset);
}

bool RawFileReader::couldNotRead(std::uint64_t from, std::uint64_t to)
{
    if (!file.hasLost(header.bodyOffset + from, header.bodyOffset + to) || body().size() < to)
        return false;
    if (!unreadable.exchange(true))
        qWarning().noquote().nospace()
            << filePath << ": a part of the file cannot be read; the events there are left out";
    return true;
}

bool RawFileReader::loadFile()
{
    if (loaded)
        return true;
    try {
        return load();
    } catch (const std::exception& exception) {
        qWarning().noquote().nospace() << filePath << ": cannot be loaded: " << exception.what();
        return false;
    }
}

bool RawFileReader::load()
{
    if (!file.open()) {
        qWarning().noquote().nospace() << filePath << ": cannot be loaded: " << file.errorString();
        return false;
    }
    const auto words = body();
    file.willNeed(0, wantedAtOnce);
    if (!geometry.isValid())
        geometry = inferGeometry(decoder.encoding(), words);
    EvtCounts met;
    index = RecordingIndex::build(decoder, geometry, words, met);
    meet(met);
    if (!findEnds()) {
        qWarning().noquote().nospace() << filePath << ": cannot be loaded: it holds no change event";
        return false;
    }
    couldNotRead(0, words.size());
    if (const std::size_t tail = words.size() % wordSize(decoder.encoding()); tail != 0)
        qInfo().noquote().nospace() << filePath << ": " << tail
                                    << " bytes behind the last whole word are left out";
    const std::lock_guard lock(positionMutex);
    position = firstTime;
    loaded = true;
    return true;
}

std::optional<std::uint64_t> RawFileReader::firstEventIn(const IndexEntry& from)
{
    Cursor cursor(decoder, geometry, body(), from);
    while (!cursor.atEnd()) {
        if (const auto piece = cursor.next(); !piece.empty())
            return piece.front().timestamp;
    }
    return std::nullopt;
}

std::optional<std::uint64_t> RawFileReader::lastEventIn(std::size_t entry)
{
    const auto& entries = index.entries();
    const auto words = body();
    const std::uint64_t end = entry + 1 < entries.size() ? entries[entry + 1].offset : words.size();
    Cursor cursor(decoder, geometry, words, entries[entry]);
    std::optional<std::uint64_t> last;
    while (!cursor.atEnd() && cursor.offset() < end) {
        if (const auto piece = cursor.next(end); !piece.empty())
            last = piece.back().timestamp;
    }
    return last;
}

bool RawFileReader::findEnds()
{
    const auto& entries = index.entries();
    const auto first = entries.empty() ? std::nullopt : firstEventIn(entries.front());
    if (!first)
        return false;
    std::optional<std::uint64_t> last;
    for (std::size_t i = entries.size(); i-- > 0 && !last;)
        last = lastEventIn(i);
    firstTime = *first;
    lastTime = last.value_or(*first);
    return true;
}

void RawFileReader::getStartTimestamp(std::uint64_t& ts)
{
    ts = loaded ? firstTime : 0;
}

void RawFileReader::getEndTimestamp(std::uint64_t& ts)
{
    ts = loaded ? lastTime : 0;
}

bool RawFileReader::isEnd()
{
    const std::lock_guard lock(positionMutex);
    return isPast(position);
}

bool RawFileReader::seekTime(std::uint64_t ts)
{
    if (!loaded || ts < firstTime || ts > lastTime)
        return false;
    const std::lock_guard lock(positionMutex);
    position = ts;
    return true;
}

DvsFileReader::Events RawFileReader::getNextEvents(std::uint64_t duration)
{
    std::uint64_t start = 0;
    {
        const std::lock_guard lock(positionMutex);
        start = position;
        position = saturatedSum(position, duration);
    }
    return getEventsAt(start, duration);
}

template <typename Read>
std::invoke_result_t<Read> RawFileReader::unlessItFails(const Read& read)
{
    try {
        return read();
    } catch (const std::exception& exception) {
        if (!failed.exchange(true))
            qWarning().noquote().nospace() << filePath << ": a window cannot be read: " << exception.what();
        return nullptr;
    }
}

DvsFileReader::Events RawFileReader::getEventsAt(std::uint64_t start, std::uint64_t duration)
{
    return unlessItFails([&] { return readEvents(start, duration); });
}

DvsFileReader::Events RawFileReader::readEvents(std::uint64_t start, std::uint64_t duration)
{
    if (isPast(start))
        return nullptr;
    auto events = pool.take();
    if (duration == 0)
        return events;
    const bool reached
        = streamEvents(start, saturatedSum(start, duration - 1), [&](std::span<const Event2D> piece) {
              if (events->size() + piece.size() > windowLimit) {
                  if (!overfull.exchange(true))
                      qWarning().noquote().nospace() << filePath << ": a window holds more than "
                                                     << windowLimit << " events; only the first are shown";
                  return false;
              }
              events->insert(events->end(), piece.begin(), piece.end());
              return true;
          });
    // A file that has shrunk ends before its own last time.
    if (!reached)
        return nullptr;
    return events;
}

bool RawFileReader::streamEvents(std::uint64_t start, std::uint64_t end, const EventSink& sink, bool* gap)
{
    if (isPast(start) || start > end)
        return false;
    const auto& entries = index.entries();
    std::optional<Cursor> cursor(std::in_place, decoder, geometry, body(),
                                 index.entryForEvents(asSigned(start)));
    bool wanted = true;
    while (wanted && !cursor->atEnd() && cursor->state().eventFloor <= asSigned(end)) {
        const std::uint64_t from = cursor->offset();
        auto piece = cursor->next();
        if (couldNotRead(from, cursor->offset())) {
            if (gap)
                *gap = true;
            // The decoder has seen zeros: it goes on where its state is known again.
            const auto behind = std::lower_bound(
                entries.begin(), entries.end(), cursor->offset(),
                [](const IndexEntry& entry, std::uint64_t offset) { return entry.offset < offset; });
            if (behind == entries.end())
                break;
            meet(cursor->met());
            cursor.emplace(decoder, geometry, body(), *behind);
            continue;
        }
        if (piece.empty())
            continue;
        // What the file lost while it was decoded has read as zeros, which may be events: it ends before
        // them.
        if (body().size() < cursor->offset())
            break;
        if (piece.front().timestamp < start)
            piece = piece.subspan(static_cast<std::size_t>(
                std::partition_point(piece.begin(), piece.end(),
                                     [start](const Event2D& event) { return event.timestamp < start; })
                - piece.begin()));
        if (!piece.empty() && piece.back().timestamp > end)
            piece = piece.first(static_cast<std::size_t>(
                std::partition_point(piece.begin(), piece.end(),
                                     [end](const Event2D& event) { return event.timestamp <= end; })
                - piece.begin()));
        if (!piece.empty())
            wanted = sink(piece);
    }
    meet(cursor->met());
    return !cursor->atEnd() || cursor->state().eventFloor >= asSigned(start);
}

DvsFileReader::Triggers RawFileReader::getTriggersAt(std::uint64_t start, std::uint64_t duration)
{
    return unlessItFails([&] { return readTriggers(start, duration); });
}

DvsFileReader::Triggers RawFileReader::readTriggers(std::uint64_t start, std::uint64_t duration, bool* gap)
{
    if (isPast(start))
        return nullptr;
    auto triggers = std::make_shared<std::vector<EventTriggerIn>>();
    if (duration == 0)
        return triggers;
    const std::uint64_t end = saturatedSum(start, duration - 1);
    const auto words = body();
    const auto& entries = index.entries();
    std::vector<EventTriggerIn> piece;
    bool lost = false;
    for (auto i = static_cast<std::size_t>(&index.entryForTriggers(asSigned(start)) - entries.data());
         i < entries.size() && entries[i].state.triggerFloor <= asSigned(end); ++i) {
        // Triggers are rare: what holds none is passed over at the speed of memory.
        const std::uint64_t from = std::min<std::uint64_t>(entries[i].offset, words.size());
        const std::uint64_t until = i + 1 < entries.size()
            ? std::min<std::uint64_t>(entries[i + 1].offset, words.size())
            : words.size();
        if (!holdsTriggerWord(decoder.encoding(), words.subspan(from, until - from))) {
            lost |= couldNotRead(from, until);
            continue;
        }
        Cursor cursor(decoder, geometry, words, entries[i], &piece);
        while (!cursor.atEnd() && cursor.offset() < until && cursor.state().triggerFloor <= asSigned(end)
               && triggers->size() < windowLimit) {
            piece.clear();
            const std::uint64_t first = cursor.offset();
            cursor.next(until);
            if (couldNotRead(first, cursor.offset())) {
                lost = true;
                break;
            }
            std::copy_if(piece.begin(), piece.end(), std::back_inserter(*triggers),
                         [start, end](const EventTriggerIn& trigger) {
                             return trigger.timestamp >= start && trigger.timestamp <= end;
                         });
        }
        meet(cursor.met());
    }
    if (gap && lost)
        *gap = true;
    if (triggers->size() >= windowLimit && !triggersOverfull.exchange(true))
        qWarning().noquote().nospace()
            << filePath << ": a window holds " << windowLimit << " triggers or more; only the first are read";
    // A file that has shrunk may end before `start`.
    if (triggers->empty() && shrunk && !streamEvents(start, start, [](auto) { return true; }))
        return nullptr;
    return triggers;
}

bool RawFileReader::cutFile(std::uint64_t start, std::uint64_t end, std::string path)
{
    const QString target = QString::fromLocal8Bit(path.c_str());
    QString error = QStringLiteral("no recording is loaded");
    if (loaded && cutRecording(*this, start, end, target, error))
        return true;
    qWarning().noquote().nospace() << target << ": cannot be cut from " << filePath << ": " << error;
    return false;
}

bool RawFileReader::exportVideo(std::uint64_t start, std::uint64_t end, std::string path)
{
    const QString target = QString::fromLocal8Bit(path.c_str());
    QString error = QStringLiteral("no recording is loaded");
    if (loaded && recording::exportVideo(*this, start, end, target, error))
        return true;
    qWarning().noquote().nospace() << target << ": cannot be exported from " << filePath << ": " << error;
    return false;
}

EvtCounts RawFileReader::metCounts() const
{
    const std::lock_guard lock(countsMutex);
    return counts;
}

void RawFileReader::meet(const EvtCounts& met)
{
    if (met == EvtCounts())
        return;
    const std::lock_guard lock(countsMutex);
    const auto add = [this](std::uint64_t& sum, std::uint64_t value, const char* what) {
        if (sum == 0 && value != 0)
            qInfo().noquote().nospace() << filePath << ": " << value << " " << what;
        sum += value;
    };
    add(counts.reservedWords, met.reservedWords, "words of unknown or reserved types are skipped");
    add(counts.beforeTime, met.beforeTime, "events before the first time word are left out");
    add(counts.withoutRow, met.withoutRow, "events without a row are left out");
    add(counts.withoutBase, met.withoutBase, "vector events without a base are left out");
    add(counts.outside, met.outside, "events outside the sensor are left out");
    add(counts.clamped, met.clamped, "events whose time steps back are held at the time before them");
    add(counts.restarts, met.restarts, "restarts of the camera's clock; time goes on from there");
    add(counts.wildTimes, met.wildTimes, "time words that the next one contradicts are skipped");
}

} // namespace korvane::recording
