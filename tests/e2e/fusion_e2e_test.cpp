#include "camera/driver/apsfilereader.h"
#include "camera/driver/dvsfilereader.h"
#include "tests/e2e/livestoryfixture.h"

#include <QImage>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

/// What a picture of the window shows.
struct Look
{
    int red = 0;
    int blue = 0;
    int white = 0;
    int other = 0;
};

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
double shareOnEdges(const QImage& image, bool mirrored)
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

bool FusionStory::eventsLieOnEdges() const
{
    const QImage image = picture();
    return showsEvents() && shareOnEdges(image, false) >= 0.8 && shareOnEdges(image, true) < 0.3;
}

} // namespace

TEST_F(FusionStory, ACameraIsShownInThreeViewsRecordedAndPlayedTwice)
{
    QDir folder(Config::getInstance(QStringLiteral("config.ini"))->output_raw_file_path);
    folder.removeRecursively();

    openFromTheList(fusionRow());
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && showsEvents() && showsFrame(); }));
    EXPECT_EQ(text("label_show_camera_info"), QStringLiteral("PEL-000001"));
    ASSERT_TRUE(wait([this] { return eventsLieOnEdges(); }));

    click("pb_viewer_type"); // events alone
    ASSERT_TRUE(wait([this] { return showsEvents() && !showsFrame(); }));
    click("pb_viewer_type"); // frames alone
    ASSERT_TRUE(wait([this] { return showsFrame() && look().red == 0; }));
    click("pb_viewer_type"); // both
    ASSERT_TRUE(wait([this] { return showsFrame() && showsEvents(); }));

    click("pb_record");
    ASSERT_TRUE(button("pb_record")->isChecked());
    ASSERT_TRUE(wait([this] { return text("lb_recoding_time") == QStringLiteral("00:02"); }));
    click("pb_record");
    EXPECT_FALSE(button("pb_record")->isChecked());
    click("pb_play");
    EXPECT_FALSE(button("pb_play")->isChecked());

    const QStringList raws = folder.entryList({QStringLiteral("*.raw")});
    const QStringList videos = folder.entryList({QStringLiteral("*.mp4")});
    ASSERT_EQ(raws.size(), 1);
    ASSERT_EQ(videos.size(), 1);
    EXPECT_EQ(QFileInfo(raws[0]).completeBaseName(), QFileInfo(videos[0]).completeBaseName());
    const QString path = folder.filePath(raws[0]);
    {
        // One picture for each 33333 us of the events, from the first to the last.
        const auto events = korvane::DvsFileReader::createFileReader(path.toStdString());
        const auto frames
            = korvane::ApsFileReader::createFileReader(folder.filePath(videos[0]).toStdString());
        ASSERT_TRUE(events && frames && events->loadFile() && frames->loadFile());
        std::uint64_t start = 0;
        std::uint64_t end = 0;
        events->getStartTimestamp(start);
        events->getEndTimestamp(end);
        std::vector<std::uint64_t> index;
        frames->getFrameIndex(index);
        EXPECT_EQ(index.size(), (end - start) / 33333 + 1);
    }

    window->openRecording(path);
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && timeline()->isEnabled(); }));
    ASSERT_TRUE(wait([this] { return showsFrame() && showsEvents() && timeline()->centerValue() > 300000; }));
    ASSERT_TRUE(wait([this] { return eventsLieOnEdges(); }));
    // Steps and stop leave a fusion recording alone.
    click("pb_next");
    click("pb_prv");
    click("pb_stop");
    EXPECT_TRUE(button("pb_play")->isChecked());
    ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); })) << "to its end";
    ASSERT_TRUE(wait([this] { return timeline()->centerValue() == timeline()->effectiveLowerValue(); }));
    click("pb_play");
    ASSERT_TRUE(wait([this] { return timeline()->centerValue() > 300000; })) << "again from its start";
    EXPECT_TRUE(button("pb_play")->isChecked());
    click("pb_play");
    EXPECT_FALSE(button("pb_play")->isChecked());
}

TEST_F(FusionStory, ACameraPulledOutWhileItRecordsLeavesBothFilesWhole)
{
    QDir folder(Config::getInstance(QStringLiteral("config.ini"))->output_raw_file_path);
    folder.removeRecursively();
    openFromTheList(fusionRow());
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && showsFrame(); }));
    click("pb_record");
    ASSERT_TRUE(wait([this] { return text("lb_recoding_time") == QStringLiteral("00:01"); }));
    cameras->pull("PEL-000001");
    ASSERT_TRUE(
        wait([this] { return !button("pb_play")->isChecked() && !button("pb_record")->isChecked(); }));
    const QStringList raws = folder.entryList({QStringLiteral("*.raw")});
    ASSERT_EQ(raws.size(), 1);
    window->openRecording(folder.filePath(raws[0]));
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && showsFrame() && showsEvents(); }));
}

TEST_F(FusionStory, ClosingWhileItRecordsEndsCleanly)
{
    openFromTheList(fusionRow());
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && showsFrame(); }));
    click("pb_record");
    window->close();
    window.reset();
    EXPECT_NE(cameras->openFusionCamera("PEL-000001"), nullptr) << "the camera was let go";
}
