#include "tests/e2e/fusionstory.h"
#include "tests/support/holdings.h"

#include <QElapsedTimer>

namespace {

/// A day of work, round after round: nothing is to be left over from one.
class FusionSoak : public FusionStory
{
protected:
    void playAndStop()
    {
        click("pb_play");
        ASSERT_TRUE(wait([this] { return showsFrame() && showsEvents(); }));
        click("pb_play");
        ASSERT_FALSE(button("pb_play")->isChecked());
    }
    /// Ends with an open recording that does not play.
    void round()
    {
        QDir folder(Config::getInstance(QStringLiteral("config.ini"))->output_raw_file_path);
        folder.removeRecursively();

        openFromTheList(fusionRow());
        ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked() && showsEvents() && showsFrame(); }));
        for (int view = 0; view < 3; ++view)
            click("pb_viewer_type");
        click("pb_play");
        playAndStop();
        click("pb_play");
        click("pb_record");
        ASSERT_TRUE(wait([this] { return text("lb_recoding_time") == QStringLiteral("00:01"); }));
        click("pb_record");
        ASSERT_FALSE(button("pb_record")->isChecked());
        // Another camera, and back, while the first one runs.
        openFromTheList(0);
        ASSERT_TRUE(wait([this] {
            return text("label_show_camera_info") != QStringLiteral("PEL-000001") && eventPixels() > 1000;
        }));
        openFromTheList(fusionRow());
        ASSERT_TRUE(wait([this] {
            return text("label_show_camera_info") == QStringLiteral("PEL-000001") && showsFrame();
        }));

        const QStringList raws = folder.entryList({QStringLiteral("*.raw")});
        ASSERT_EQ(raws.size(), 1);
        window->openRecording(folder.filePath(raws[0]));
        ASSERT_TRUE(
            wait([this] { return button("pb_play")->isChecked() && timeline()->centerValue() > 100000; }));
        ASSERT_TRUE(wait([this] { return !button("pb_play")->isChecked(); })) << "to its end";
        playAndStop();
    }
};

} // namespace

// KORVANE_SOAK_SECONDS makes it go on for longer than the few rounds that show a leak.
TEST_F(FusionSoak, OpenedPlayedRecordedAndSwitchedOverAndOverItHoldsNoMoreThanBefore)
{
    bool given = false;
    const int wanted = qEnvironmentVariableIntValue("KORVANE_SOAK_SECONDS", &given);
    const int seconds = given ? wanted : 10;
    constexpr int warmUp = 2;
    SteadyHoldings holdings(warmUp, 200);
    QElapsedTimer timer;
    timer.start();
    for (int number = 1; number <= warmUp + 1 || timer.elapsed() < seconds * 1000; ++number) {
        ASSERT_NO_FATAL_FAILURE(round()) << "round " << number;
        ASSERT_NO_FATAL_FAILURE(holdings.check(timer.elapsed() / 1000));
    }
    holdings.expectNoDrift();
}
