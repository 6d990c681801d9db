#pragma once

#include "camera/driver/apsfilereader.h"
#include "camera/simulation/framesource.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace korvane::simulation {

/// The intensity frames of a recording, over and over, beside a ReplayStream of its events. A frame lies in
/// the slot that the video has it in, as in playback, and comes at the end of it, so that the events of the
/// slot are its own. Where the video has no frame, or ends before the events, the last one comes again. One
/// thread at a time.
class ReplayFrames : public FrameSource
{
public:
    /// `loaded` holds at least one frame. The round and the lead are those of the stream, see ReplayStream.
    ReplayFrames(std::unique_ptr<ApsFileReader> loaded, std::uint64_t roundTime, std::uint64_t leadTime);

    ApsFrame frameAt(std::uint64_t time) override;

private:
    void moveTo(std::size_t picture);

    const std::unique_ptr<ApsFileReader> video;
    const std::uint64_t round; ///< microseconds
    const std::uint64_t lead; ///< microseconds
    std::vector<std::uint64_t> times; ///< of the video's frames, microseconds
    ApsFrame frame;
    std::size_t next = 0; ///< the number of the frame that the video gives next
};

} // namespace korvane::simulation
