#pragma once

#include <atomic>
#include <cstdint>

/// What the play bar acts on.
enum PlayMode : int {
    ModeNone = 0,
    ModeDvsCamera = 1,
    ModeFusionCamera = 2,
    ModeDvsRecording = 3,
    ModeFusionRecording = 4,
};

/// What runs, shared by the live session and the players. Written on the GUI thread, but for `filePlaying`,
/// which a reading thread clears when it ends by itself, and for `playMode`, which the job that loads a
/// fusion recording sets while the GUI thread waits for it behind the spinner; read anywhere.
struct SourceState
{
    std::atomic<int> playMode{ModeNone};
    /// A live view or a playback runs; the play button shows it.
    std::atomic<bool> filePlaying{false};
    /// Counts starts. What a thread posts carries the number it was started with, and is dropped when another
    /// start or a stop has come in between: else a pause at the last tick would start playback again.
    std::atomic<std::uint64_t> playSession{0};
};
