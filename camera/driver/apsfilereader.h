#pragma once

#include "camera/driver/apsframe.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace korvane {

/// Reads the intensity frames of one recording. One thread at a time.
class ApsFileReader
{
public:
    /// A reader for the file at `path` (local 8-bit encoding); empty when no registered backend can read it.
    static std::unique_ptr<ApsFileReader> createFileReader(std::string path);

    /// The path is the derived reader's business.
    explicit ApsFileReader(std::string) {}
    virtual ~ApsFileReader() = default;
    ApsFileReader(const ApsFileReader&) = delete;
    ApsFileReader& operator=(const ApsFileReader&) = delete;

    /// Opens the file; false when it cannot be read or holds no picture.
    virtual bool loadFile() = 0;
    /// Fills the list of frame times, microseconds from the recording's first event.
    virtual void getFrameIndex(std::vector<std::uint64_t>& index) = 0;
    /// The next frame in file order; false at the end. Valid until the next call on this reader.
    virtual bool getNextFrame(ApsFrame& frame) = 0;
    /// Moves to the frame for this time and fills it.
    virtual void seekFrame(std::uint64_t ts, ApsFrame& frame) = 0;

    /// Size of the frames delivered, pixels.
    std::uint16_t getWidth() const { return width; }
    std::uint16_t getHeight() const { return height; }

protected:
    std::uint16_t width = 0;
    std::uint16_t height = 0;
};

} // namespace korvane
