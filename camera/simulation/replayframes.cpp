#include "camera/simulation/replayframes.h"

#include "camera/simulation/framecounts.h"

#include <algorithm>
#include <utility>

namespace korvane::simulation {

namespace {

// Frames that are decoded and left out where a machine is too slow; over more of them it seeks.
constexpr std::size_t farthestStep = 8;

} // namespace

ReplayFrames::ReplayFrames(std::unique_ptr<ApsFileReader> loaded, std::uint64_t roundTime,
                           std::uint64_t leadTime)
    : video(std::move(loaded)), round(roundTime), lead(leadTime)
{
    video->getFrameIndex(times);
}

ApsFrame ReplayFrames::frameAt(std::uint64_t time)
{
    const std::uint64_t slot = (time - FrameCounts::period) % round;
    const std::uint64_t inVideo = slot - std::min(slot, lead);
    const auto behind = std::upper_bound(times.begin(), times.end(), inVideo);
    moveTo(behind == times.begin() ? 0 : static_cast<std::size_t>(behind - times.begin()) - 1);
    // The slot's last moment: what records this puts the frame into the same slot again.
    frame.timestamp = time - 1;
    return frame;
}

void ReplayFrames::moveTo(std::size_t picture)
{
    if (picture + 1 == next)
        return;
    if (picture < next || picture - next > farthestStep) {
        video->seekFrame(times[picture], frame);
        next = picture;
    }
    while (next <= picture && video->getNextFrame(frame))
        ++next;
}

} // namespace korvane::simulation
