#pragma once

#include "camera/recording/evtencoding.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace korvane::recording {

struct RawHeader;

/// What the header of a recording tells.
struct RecordingHead
{
    Geometry geometry;
    std::string serial; ///< empty when it is not known
    std::string date; ///< local time of the recording's start, as "yyyy-MM-dd HH:mm:ss"
    /// Further keys with their values.
    std::vector<std::pair<std::string, std::string>> others;
};

/// The head of a recording that starts now.
RecordingHead headOfNow(Geometry geometry, const std::string& serial);

/// The head of an EVT 3.0 copy of a recording: the same but for what tells how events are encoded. A source
/// that does not tell its date has the present one.
RecordingHead headOfCopy(const RawHeader& source, Geometry geometry);

/// The header of an EVT 3.0 recording, as readers of every kind understand it.
std::vector<std::uint8_t> recordingHeader(const RecordingHead& head);

} // namespace korvane::recording
