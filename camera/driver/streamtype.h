#pragma once

namespace korvane {

/// The streams of a camera, and what a viewer of them shows.
enum STREAM_TYPE : int {
    STREAM_DVS = 0, ///< change events only
    STREAM_APS = 1, ///< intensity frames only
    STREAM_FUSION = 2, ///< intensity frames with the events drawn over them
};

} // namespace korvane
