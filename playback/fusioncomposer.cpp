#include "playback/fusioncomposer.h"

#include "camera/driver/fusioncamera.h"
#include "display/kernels/fusionpainter.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t counters = std::size_t{FusionPicture::width} * FusionPicture::height * 2;

} // namespace

FusionComposer::FusionComposer(FusionPicture& fusionPicture, Hooks receivers)
    : picture(fusionPicture), hooks(std::move(receivers)), shownCounts(counters), eventCounts(counters)
{
}

void FusionComposer::setFusionCamera(std::shared_ptr<korvane::FusionCamera> camera)
{
    {
        const std::lock_guard lock(cameraMutex);
        fusionCamera.swap(camera);
    }
    // The former one goes here, outside the lock: it may be its last pointer.
}

void FusionComposer::onEvents(const korvane::Event2D* begin, const korvane::Event2D* end)
{
    if (viewerType != korvane::STREAM_DVS)
        return;
    const std::lock_guard lock(countsMutex);
    korvane::kernels::countEvents(begin, end, eventCounts, FusionPicture::width);
}

void FusionComposer::onApsFrame(const korvane::ApsFrame& frame)
{
    switch (viewerType.load()) {
    case korvane::STREAM_APS:
        showAps(frame);
        break;
    case korvane::STREAM_FUSION:
        showFusion(frame);
        break;
    case korvane::STREAM_DVS:
        showDvs(frame.timestamp);
        break;
    }
}

void FusionComposer::emitPicture(const QImage& image, std::uint64_t timestamp) const
{
    hooks.image(image);
    hooks.timeStamp(timestamp);
}

void FusionComposer::showAps(const korvane::ApsFrame& frame)
{
    const QImage aps = wrapApsFrame(frame);
    if (aps.isNull())
        return;
    const std::lock_guard lock(picture.apsImageMutex);
    picture.alignFrame(aps);
    emitPicture(picture.image(), frame.timestamp);
}

void FusionComposer::showFusion(const korvane::ApsFrame& frame)
{
    std::shared_ptr<korvane::FusionCamera> camera;
    {
        const std::lock_guard lock(cameraMutex);
        camera = fusionCamera;
    }
    if (!camera || !camera->isConnected())
        return;
    std::shared_ptr<korvane::EventCountFrame> counts;
    if (!camera->getEventFrameAt(counts, frame.timestamp) || !counts || counts->counts.size() < counters)
        return;
    const QImage aps = wrapApsFrame(frame);
    if (aps.isNull())
        return;
    const std::lock_guard lock(picture.apsImageMutex);
    picture.alignFrame(aps);
    picture.paintCounts(counts->counts);
    emitPicture(picture.image(), frame.timestamp);
}

void FusionComposer::showDvs(std::uint64_t timestamp)
{
    const std::lock_guard viewLock(dvsViewMutex);
    {
        // Counting goes on into the zeroed spare while these are painted.
        const std::lock_guard lock(countsMutex);
        eventCounts.swap(shownCounts);
    }
    dvsPicture.fill(Qt::white);
    dvsPicture.paintCounts(shownCounts);
    emitPicture(dvsPicture.image(), timestamp);
    std::fill(shownCounts.begin(), shownCounts.end(), std::uint16_t{0});
}
