#include "camera/simulation/replaystream.h"

#include <QDebug>

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

namespace korvane::simulation {

namespace {

// How far ahead an idle stretch is looked for: far enough to cost nothing, near enough that the triggers in
// it take no memory worth a word.
constexpr std::uint64_t farthestLook = 1000000; // microseconds

} // namespace

ReplayStream::ReplayStream(std::unique_ptr<recording::RawFileReader> recording, QString path, Round round)
    : reader(std::move(recording)), filePath(std::move(path))
{
    std::uint64_t firstEvent = 0;
    reader->getStartTimestamp(firstEvent);
    reader->getEndTimestamp(lastEvent);
    first = firstEvent;
    const std::uint64_t earliest = firstEvent - std::min(firstEvent, longestLead);
    const auto before = reader->getTriggersAt(earliest, firstEvent - earliest);
    if (before && !before->empty())
        first = before->front().timestamp;
    leadTime = firstEvent - first;
    std::uint64_t end = lastEvent;
    if (const auto last = reader->getTriggersAt(lastEvent, std::numeric_limits<std::uint64_t>::max())) {
        std::copy_if(last->begin(), last->end(), std::back_inserter(tail),
                     [this](const EventTriggerIn& trigger) { return trigger.timestamp > lastEvent; });
        if (!tail.empty())
            end = tail.back().timestamp;
    }
    length = std::max({end - first + 1, round.shortest, stepUs});
    length = (length + round.multipleOf - 1) / round.multipleOf * round.multipleOf;
}

StreamStep ReplayStream::generateStep()
{
    events.clear();
    triggers.clear();
    const std::uint64_t until = nextTime();
    bool readAny = false;
    while (now < until) {
        const std::uint64_t end = std::min(until, roundStart + length);
        if (end > quietUntil) {
            readAny = true;
            if (!read(now, end)) {
                // The file has shrunk: it starts again, if there is anything left of it.
                if (now == roundStart) {
                    now = until;
                    break;
                }
                startAgain();
                continue;
            }
        }
        now = end;
        if (now == roundStart + length)
            startAgain();
    }
    if (readAny && events.empty() && triggers.empty())
        lookAhead(now);
    return {events, triggers, now};
}

/// Adds what lies in [from, to) of the stream's time, which is within one round. False when the file ends
/// before.
bool ReplayStream::read(std::uint64_t from, std::uint64_t to)
{
    const std::uint64_t shift = roundStart - first; // may wrap, and then wraps back
    const auto add = [this, shift](std::span<const Event2D> piece) {
        if (events.size() + piece.size() > mostEvents) {
            if (!std::exchange(overflowTold, true))
                qWarning().noquote().nospace() << filePath << ": " << stepUs << " us hold more than "
                                               << mostEvents << " events; the rest is left out";
            return false;
        }
        const std::size_t before = events.size();
        events.insert(events.end(), piece.begin(), piece.end());
        for (std::size_t i = before; i < events.size(); ++i)
            events[i].timestamp += shift;
        return true;
    };
    ++readCount;
    if (from - shift <= lastEvent && !reader->streamEvents(from - shift, to - shift - 1, add))
        return false;
    addTriggers(from, to);
    return true;
}

void ReplayStream::addTriggers(std::uint64_t from, std::uint64_t to)
{
    const std::uint64_t shift = roundStart - first;
    const auto add = [this, shift](EventTriggerIn trigger) {
        trigger.timestamp += shift;
        triggers.push_back(trigger);
    };
    if (from - shift <= lastEvent) {
        const std::uint64_t end = std::min(to - shift, lastEvent + 1);
        if (const auto found = reader->getTriggersAt(from - shift, end - (from - shift)))
            std::for_each(found->begin(), found->end(), add);
    }
    std::for_each(tailFrom(from - shift), tailFrom(to - shift), add);
}

std::vector<EventTriggerIn>::const_iterator ReplayStream::tailFrom(std::uint64_t fileTime) const
{
    return std::partition_point(tail.begin(), tail.end(), [fileTime](const EventTriggerIn& trigger) {
        return trigger.timestamp < fileTime;
    });
}

/// Finds how long nothing comes.
void ReplayStream::lookAhead(std::uint64_t from)
{
    const std::uint64_t shift = roundStart - first;
    const std::uint64_t start = from - shift;
    std::uint64_t quiet = std::min(start + farthestLook, first + length);
    ++readCount;
    if (start <= lastEvent) {
        reader->streamEvents(start, quiet - 1, [&quiet](std::span<const Event2D> piece) {
            quiet = piece.front().timestamp;
            return false;
        });
        const auto found = reader->getTriggersAt(start, quiet - start);
        if (found && !found->empty())
            quiet = found->front().timestamp;
    }
    if (const auto next = tailFrom(start); next != tail.end())
        quiet = std::min(quiet, next->timestamp);
    quietUntil = quiet + shift;
}

void ReplayStream::startAgain()
{
    if (!std::exchange(endTold, true))
        qInfo().noquote().nospace() << filePath << ": has been replayed to its end; it starts again";
    roundStart = now;
    quietUntil = now;
}

} // namespace korvane::simulation
