#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Word streams like those of real cameras, made by a fixed rule.
namespace streams {

using Bytes = std::vector<std::uint8_t>;

/// EVT 3.0 at 1280 x 720, 10 million events a second: ten events a microsecond on one row, six of ten as
/// single words, the others in vectors of two events on the average; 2.7 to 2.9 bytes an event.
Bytes busyEvt3(std::size_t bytes);
/// EVT 3.0 with an own time, row and column word for every event: 6 bytes an event.
Bytes sparseEvt3(std::size_t bytes);
/// EVT 2.0 at 10 million events a second.
Bytes evt2(std::size_t bytes);
/// EVT 2.1 with eight pixels a word on the average.
Bytes evt21(std::size_t bytes);

/// Where recordings are kept for the next run: what KORVANE_BENCH_DATA names, else "bench-data".
std::string dataFolder();

/// A recording of `bytes` bytes of the busy stream in the data folder, with so many rows of ten events each
/// microsecond, made if it is not there yet; its absolute path. Empty when it cannot be written.
std::string busyRecording(std::size_t bytes, unsigned rows = 1);

} // namespace streams
