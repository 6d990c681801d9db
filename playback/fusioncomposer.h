#pragma once

#include "camera/driver/apsframe.h"
#include "camera/driver/event2d.h"
#include "camera/driver/streamtype.h"
#include "playback/fusionpicture.h"

#include <QImage>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace korvane {
class FusionCamera;
}

/// Composes what a live fusion camera sends into one picture for each intensity frame, by what the viewer is
/// to show. onEvents and onApsFrame run on the driver's threads, setFusionCamera and setViewerType on any.
class FusionComposer
{
public:
    struct Hooks
    {
        /// Hands a picture and its time on; called on the driver's thread under the view's lock.
        std::function<void(const QImage& image)> image;
        std::function<void(std::uint64_t timestamp_us)> timeStamp;
    };

    /// `picture` takes the intensity and fusion views and outlives this.
    FusionComposer(FusionPicture& picture, Hooks hooks);

    void setFusionCamera(std::shared_ptr<korvane::FusionCamera> camera);
    void setViewerType(korvane::STREAM_TYPE type) { viewerType = type; }

    /// Counts events for the view of the events alone; the other views do without.
    void onEvents(const korvane::Event2D* begin, const korvane::Event2D* end);
    /// Makes one picture, or none in the fusion view when the camera has no counts for the frame.
    void onApsFrame(const korvane::ApsFrame& frame);

private:
    void showAps(const korvane::ApsFrame& frame);
    void showFusion(const korvane::ApsFrame& frame);
    void showDvs(std::uint64_t timestamp);
    void emitPicture(const QImage& image, std::uint64_t timestamp) const;

    FusionPicture& picture;
    const Hooks hooks;
    std::atomic<korvane::STREAM_TYPE> viewerType{korvane::STREAM_FUSION};

    std::mutex cameraMutex;
    std::shared_ptr<korvane::FusionCamera> fusionCamera; ///< under cameraMutex

    std::mutex dvsViewMutex; ///< taken before countsMutex
    FusionPicture dvsPicture; ///< under dvsViewMutex
    std::vector<std::uint16_t> shownCounts; ///< under dvsViewMutex; all zero between two pictures
    std::mutex countsMutex;
    std::vector<std::uint16_t> eventCounts; ///< under countsMutex
};
