#include "playback/fusionpicture.h"

#include "display/kernels/apsalignment.h"
#include "display/kernels/fusionpainter.h"

#include <QDebug>

#include <algorithm>
#include <atomic>
#include <cstring>

namespace {

using korvane::kernels::ApsAlignment;

korvane::kernels::BgrPicture pictureOf(QImage& image)
{
    return {image.bits(), static_cast<std::size_t>(image.bytesPerLine()), image.width(), image.height()};
}

} // namespace

void alignApsToDvs(const QImage& source, QImage& destination, int sourceWidth, int sourceHeight,
                   int destinationWidth, int destinationHeight)
{
    static const ApsAlignment cameras; // the sizes of the fusion cameras, which every picture asks for
    const korvane::kernels::BgrView view{source.constBits(), static_cast<std::size_t>(source.bytesPerLine()),
                                         source.width(), source.height()};
    const auto stride = static_cast<std::size_t>(destination.bytesPerLine());
    if (sourceWidth == ApsAlignment::apsWidth && sourceHeight == ApsAlignment::apsHeight
        && destinationWidth == ApsAlignment::dvsWidth && destinationHeight == ApsAlignment::dvsHeight)
        cameras.align(view, destination.bits(), stride);
    else
        ApsAlignment(sourceWidth, sourceHeight, destinationWidth, destinationHeight)
            .align(view, destination.bits(), stride);
}

QImage wrapApsFrame(const korvane::ApsFrame& frame)
{
    const bool sized = (frame.width == 0 && frame.height == 0)
        || (frame.width == ApsAlignment::apsWidth && frame.height == ApsAlignment::apsHeight);
    if (frame.pixels && sized)
        return {frame.pixels, ApsAlignment::apsWidth, ApsAlignment::apsHeight, QImage::Format_BGR888};
    static std::atomic<bool> told{false};
    if (told.exchange(true))
        return {};
    if (!frame.pixels)
        qWarning() << "An intensity frame without pixels cannot be shown.";
    else
        qWarning().nospace() << "Intensity frames of " << frame.width << " x " << frame.height
                             << " pixels cannot be shown: the camera's have " << ApsAlignment::apsWidth
                             << " x " << ApsAlignment::apsHeight << ".";
    return {};
}

FusionPicture::FusionPicture() : fusionImage(width, height, QImage::Format_BGR888)
{
    fusionImage.fill(Qt::white);
}

void FusionPicture::makeWritable(bool keepContent)
{
    if (fusionImage.isDetached())
        return;
    auto free = std::find_if(spare.begin(), spare.end(),
                             [](const QImage& image) { return image.isNull() || image.isDetached(); });
    if (free == spare.end())
        free = spare.begin(); // everything is shown somewhere: this one stays with those who show it
    if (free->isNull() || !free->isDetached())
        *free = QImage(width, height, QImage::Format_BGR888);
    if (keepContent)
        std::memcpy(free->bits(), fusionImage.constBits(), static_cast<std::size_t>(free->sizeInBytes()));
    free->swap(fusionImage);
}

void FusionPicture::alignFrame(const QImage& apsImage)
{
    makeWritable(false);
    alignApsToDvs(apsImage, fusionImage);
}

void FusionPicture::fill(const QColor& colour)
{
    makeWritable(false);
    fusionImage.fill(colour);
}

void FusionPicture::paintCounts(std::span<const std::uint16_t> counts)
{
    makeWritable(true);
    korvane::kernels::paintCounts(counts, pictureOf(fusionImage));
}

void FusionPicture::paintEvents(const korvane::Event2D* begin, const korvane::Event2D* end)
{
    makeWritable(true);
    korvane::kernels::paintMirrored(begin, end, pictureOf(fusionImage));
}
