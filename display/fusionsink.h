#pragma once

#include "camera/driver/apsframe.h"
#include "camera/driver/event2d.h"

#include <memory>

namespace korvane {
class FusionCamera;
}

/// Where a fusion camera's output goes. The handlers run on the driver's threads; the camera is set on the
/// GUI thread or a worker.
class FusionSink
{
public:
    FusionSink() = default;
    virtual ~FusionSink() = default;
    FusionSink(const FusionSink&) = delete;
    FusionSink& operator=(const FusionSink&) = delete;

    virtual void setFusionCamera(std::shared_ptr<korvane::FusionCamera> camera) = 0;
    virtual void onEvents(const korvane::Event2D* begin, const korvane::Event2D* end) = 0;
    virtual void onApsFrame(const korvane::ApsFrame& frame) = 0;
};
