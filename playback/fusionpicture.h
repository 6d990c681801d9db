#pragma once

#include "camera/driver/apsframe.h"
#include "camera/driver/event2d.h"

#include <QColor>
#include <QImage>

#include <array>
#include <cstdint>
#include <mutex>
#include <span>

/// Samples an intensity frame at the pixels of the event sensor, see korvane::kernels::ApsAlignment. Both
/// images are of the format BGR888; what the source does not reach becomes white.
void alignApsToDvs(const QImage& source, QImage& destination, int sourceWidth = 3840, int sourceHeight = 2160,
                   int destinationWidth = 1280, int destinationHeight = 720);

/// An intensity frame as an image, not copied: valid as long as the frame. Null, with one log line a process,
/// for a frame without pixels or of a size that the event sensor's geometry is not made for.
QImage wrapApsFrame(const korvane::ApsFrame& frame);

/// A picture of a fusion camera of 1280 x 720 pixels: an intensity frame with events over it. Pictures that
/// were handed out stay as they are; the memory of those that nobody holds any more is used again. One thread
/// at a time; `apsImageMutex` is for its users.
class FusionPicture
{
public:
    static constexpr int width = 1280;
    static constexpr int height = 720;

    FusionPicture();

    /// Fills the whole picture from an intensity frame, see alignApsToDvs().
    void alignFrame(const QImage& apsImage);
    void fill(const QColor& colour);
    /// See korvane::kernels::paintCounts and paintMirrored: over what the picture holds.
    void paintCounts(std::span<const std::uint16_t> counts);
    void paintEvents(const korvane::Event2D* begin, const korvane::Event2D* end);
    const QImage& image() const { return fusionImage; }

    /// Held while an intensity frame is sampled into the picture, and while a live picture is composed.
    std::mutex apsImageMutex;

private:
    /// Makes `fusionImage` writable without touching what was handed out.
    void makeWritable(bool keepContent);

    QImage fusionImage;
    std::array<QImage, 3> spare;
};
