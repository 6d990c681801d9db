#pragma once

#include "camera/driver/backend.h"

namespace korvane::recording {

/// Opens recordings from disk: `.raw` event files of any of the field's encodings, `.mp4` files of intensity
/// frames. Any thread.
class RecordingBackend : public Backend
{
public:
    std::string name() const override { return "recordings"; }
    std::unique_ptr<DvsFileReader> createDvsFileReader(const std::string& path) override;
    std::unique_ptr<ApsFileReader> createApsFileReader(const std::string& path) override;
    bool isExportedVideo(const std::string& path) override;
};

} // namespace korvane::recording
