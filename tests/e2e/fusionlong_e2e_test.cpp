#include "tests/e2e/fusionstory.h"

#include <cstdint>

namespace {

constexpr std::uint64_t second = 1'000'000; // microseconds

class LongFusionStory : public FusionStory
{
protected:
    /// The camera's time of the picture shown, microseconds.
    std::uint64_t shownTime() const
    {
        const QStringList parts = text("label_show_timestamp_info").split(u':');
        if (parts.size() != 3)
            return 0;
        return parts[0].toULongLong() * 60 * second + parts[1].toULongLong() * second
            + parts[2].toULongLong();
    }
    /// On a machine that is busy with other things ten seconds of playback take longer.
    static bool waitLong(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 60000); }
};

} // namespace

TEST_F(LongFusionStory, TenSecondsAreSeenInThreeViewsRecordedAndPlayedToTheEndTwice)
{
    QDir folder(Config::getInstance(QStringLiteral("config.ini"))->output_raw_file_path);
    folder.removeRecursively();
    openFromTheList(fusionRow());
    ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && showsEvents() && showsFrame(); }));
    click("pb_viewer_type");
    ASSERT_TRUE(wait([this] { return showsEvents() && !showsFrame(); }));
    click("pb_viewer_type");
    ASSERT_TRUE(wait([this] { return showsFrame() && look().red == 0; }));
    click("pb_viewer_type");
    ASSERT_TRUE(wait([this] { return showsFrame() && showsEvents(); }));

    const std::uint64_t before = shownTime();
    ASSERT_GT(before, 0U);
    click("pb_record");
    // The picture shown is a little older than the first event recorded.
    ASSERT_TRUE(waitLong([this, before] { return shownTime() > before + 10 * second + second / 2; }));
    EXPECT_GE(text("lb_recoding_time"), QStringLiteral("00:10"));
    click("pb_record");
    EXPECT_FALSE(button("pb_record")->isChecked());
    click("pb_play");
    EXPECT_FALSE(button("pb_play")->isChecked());

    const QStringList raws = folder.entryList({QStringLiteral("*.raw")});
    const QStringList videos = folder.entryList({QStringLiteral("*.mp4")});
    ASSERT_EQ(raws.size(), 1);
    ASSERT_EQ(videos.size(), 1);
    const auto [start, end] = expectAPictureForEachSlot(folder.filePath(raws[0]));
    EXPECT_GE(end - start, 10 * second);

    window->openRecording(folder.filePath(raws[0]));
    for (const char* round : {"opened", "played again"}) {
        ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && timeline()->isEnabled(); }))
            << round;
        ASSERT_TRUE(waitLong([this] {
            return timeline()->centerValue() > static_cast<int>(5 * second) && showsFrame() && showsEvents();
        })) << round;
        ASSERT_TRUE(waitLong([this] { return !button("pb_play")->isChecked(); })) << round;
        ASSERT_TRUE(wait([this] { return timeline()->centerValue() == timeline()->effectiveLowerValue(); }))
            << round;
        EXPECT_EQ(timeline()->maximum(), static_cast<int>(end)) << round;
        click("pb_play");
    }
    EXPECT_TRUE(button("pb_play")->isChecked()) << "and once more";
    click("pb_play");
    EXPECT_FALSE(button("pb_play")->isChecked());
}
