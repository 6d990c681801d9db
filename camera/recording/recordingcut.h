#pragma once

#include <QString>

#include <cstdint>

namespace korvane::recording {

class RawFileReader;

/// Writes the events and triggers with start <= time <= end of a loaded recording as a new EVT 3.0 recording:
/// under a temporary name beside `path`, read back and compared event by event, then renamed to `path` or the
/// next free name. On failure nothing is left and `error` says why. Any thread; it starts a second one.
bool cutRecording(RawFileReader& source, std::uint64_t start, std::uint64_t end, const QString& path,
                  QString& error);

} // namespace korvane::recording
