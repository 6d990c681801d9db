#pragma once

namespace korvane::recording {

/// Lets a write beyond the file size that the system allows this process fail as one onto a full disk does.
/// The signal that comes along would end the program, and with it the recording and whatever else is open. A
/// handler that somebody has set stays. Any thread.
void ignoreFileSizeSignal();

} // namespace korvane::recording
