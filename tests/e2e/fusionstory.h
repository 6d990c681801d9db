#pragma once

#include "camera/driver/apsfilereader.h"
#include "camera/driver/dvsfilereader.h"
#include "tests/e2e/livestoryfixture.h"

#include <QFileInfo>
#include <QImage>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

/// What a picture of the window shows.
struct Look
{
    int red = 0;
    int blue = 0;
    int white = 0;
    int other = 0;
};

/// First and last event of a fusion recording, microseconds, whose video has one picture for each 33333 us
/// from the one to the other.
struct RecordedTimes
{
    std::uint64_t start = 0;
    std::uint64_t end = 0;
};

inline RecordedTimes expectAPictureForEachSlot(const QString& raw)
{
    const QFileInfo file(raw);
    const QString video = file.path() + QLatin1Char('/') + file.completeBaseName() + QStringLiteral(".mp4");
    const auto events = korvane::DvsFileReader::createFileReader(raw.toStdString());
    const auto frames = korvane::ApsFileReader::createFileReader(video.toStdString());
    const bool loaded = events && frames && events->loadFile() && frames->loadFile();
    EXPECT_TRUE(loaded) << raw.toStdString();
    RecordedTimes times;
    if (!loaded)
        return times;
    events->getStartTimestamp(times.start);
    events->getEndTimestamp(times.end);
    std::vector<std::uint64_t> index;
    frames->getFrameIndex(index);
    EXPECT_EQ(index.size(), (times.end - times.start) / 33333 + 1) << "a picture for every slot";
    return times;
}

class FusionStory : public LiveStory
{
protected:
    /// The row of the fusion camera in the list of cameras.
    int fusionRow() const
    {
        const auto all = cameras->cameraDescriptions();
        const auto found = std::find_if(all.begin(), all.end(),
                                        [](const auto& camera) { return camera.product == "Pellix"; });
        return static_cast<int>(found - all.begin());
    }
    QImage picture() const
    {
        return window->findChild<ShowImageForm*>()->shownPixmap().toImage().convertToFormat(
            QImage::Format_RGB32);
    }
    Look look() const
    {
        const QImage image = picture();
        Look seen;
        for (int y = 0; y < image.height(); ++y) {
            const auto* const line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
            for (int x = 0; x < image.width(); ++x) {
                const QRgb pixel = line[x] & 0xFFFFFFU;
                ++(pixel == 0xFF0000U
                       ? seen.red
                       : (pixel == 0xFFU ? seen.blue : (pixel == 0xFFFFFFU ? seen.white : seen.other)));
            }
        }
        return seen;
    }
    bool showsEvents() const { return look().red > 300 && look().blue > 300; }
    bool showsFrame() const { return look().other > 300000; }
    void click(const char* name) const { QTest::mouseClick(button(name), Qt::LeftButton); }
    /// Of the picture shown, as the sensors see it. A machine that makes few frames a second shows events of
    /// a long time with each: then not every picture does.
    bool eventsLieOnEdges() const;
};

/// The share of red and blue pixels within two pixels of a strong change of what lies under them.
inline double shareOnEdges(const QImage& image, bool mirrored)
{
    const int width = image.width();
    const int height = image.height();
    const auto isEvent
        = [](QRgb pixel) { return (pixel & 0xFFFFFFU) == 0xFF0000U || (pixel & 0xFFFFFFU) == 0xFFU; };
    // Events hide what lies under them: grey values next to them are taken instead, from the left.
    std::vector<int> grey(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        int last = 255;
        for (int x = 0; x < width; ++x) {
            if (!isEvent(image.pixel(x, y)))
                last = qGray(image.pixel(x, y));
            grey[static_cast<std::size_t>(y * width + x)] = last;
        }
    }
    std::vector<bool> near(grey.size());
    for (int y = 2; y + 2 < height; ++y) {
        for (int x = 2; x + 2 < width; ++x) {
            const auto at = [&grey, width](int column, int row) {
                return grey[static_cast<std::size_t>(row * width + column)];
            };
            if (std::hypot(at(x + 1, y) - at(x - 1, y), at(x, y + 1) - at(x, y - 1)) < 30.0)
                continue;
            for (int dy = -2; dy <= 2; ++dy)
                for (int dx = -2; dx <= 2; ++dx)
                    near[static_cast<std::size_t>((y + dy) * width + x + dx)] = true;
        }
    }
    int events = 0;
    int on = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (!isEvent(image.pixel(x, y)))
                continue;
            ++events;
            on += near[static_cast<std::size_t>(y * width + (mirrored ? width - 1 - x : x))] ? 1 : 0;
        }
    }
    return static_cast<double>(on) / std::max(1, events);
}

inline bool FusionStory::eventsLieOnEdges() const
{
    const QImage image = picture();
    return showsEvents() && shareOnEdges(image, false) >= 0.8 && shareOnEdges(image, true) < 0.3;
}
