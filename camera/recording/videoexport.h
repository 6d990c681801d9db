#pragma once

#include <QString>

#include <cstdint>
#include <string>
#include <vector>

namespace korvane::recording {

class RawFileReader;

/// Renders start <= time <= end of a loaded recording, as far as it reaches, to an `.mp4`: what the live view
/// of 1280 x 720 pixels shows, cut to the sensor's size (rounded up to even numbers), a picture for every
/// 33333 us. Picture k has the time k * 33333 us and shows what came in the 33333 us from start + that time
/// on; the last one may cover less.
///
/// The video is written under a temporary name beside `path` and gets `path` or the next free name (see
/// freeRecordingPath) when it is whole; a name without the ending gets it, a missing folder is made. On
/// failure nothing is left and `error` says why. `encoders` as in VideoFormat. Any thread; takes a second
/// one for itself.
bool exportVideo(RawFileReader& source, std::uint64_t start, std::uint64_t end, const QString& path,
                 QString& error, const std::vector<std::string>& encoders = {"libx264"});

} // namespace korvane::recording
