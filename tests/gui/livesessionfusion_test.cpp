#include "display/fusionsink.h"
#include "tests/gui/livesessionfixture.h"
#include "tests/support/scriptedtool.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace {

/// Notes what reaches it.
class ScriptedSink : public FusionSink
{
public:
    explicit ScriptedSink(ScriptedLog& callLog) : log(callLog) {}
    void setFusionCamera(std::shared_ptr<korvane::FusionCamera> camera) override
    {
        log.add(camera ? "sink camera" : "sink no camera");
        held = std::move(camera);
    }
    void onEvents(const korvane::Event2D* begin, const korvane::Event2D* end) override
    {
        log.add("sink events " + std::to_string(end - begin));
    }
    void onApsFrame(const korvane::ApsFrame& frame) override
    {
        log.add("sink frame " + std::to_string(frame.timestamp));
    }

private:
    ScriptedLog& log;
    std::shared_ptr<korvane::FusionCamera> held;
};

/// Notes what is switched in the log that all share.
class LoggedTool : public ScriptedTool
{
public:
    explicit LoggedTool(ScriptedLog& callLog) : log(callLog) {}
    bool setBoolParameter(std::string name, const bool& value) override
    {
        log.add("bool " + name + (value ? " true" : " false"));
        return true;
    }

private:
    ScriptedLog& log;
};

class LiveSessionFusionTest : public LiveSessionTest
{
protected:
    LiveSessionFusionTest()
    {
        session->setFusionSink(&sink);
        backend->onOpenFusion = [this](ScriptedFusionCamera& camera) {
            if (trigger)
                camera.addTool(korvane::ToolType::TriggerIn, trigger);
            return opens;
        };
    }
    // The session tells the sink until its end.
    ~LiveSessionFusionTest() override { session.reset(); }

    std::shared_ptr<ScriptedFusionCamera> openFusion()
    {
        backend->offer("P1", "Pellix");
        EXPECT_TRUE(session->openCameraBySerial(QStringLiteral("P1")));
        return backend->openedFusion();
    }
    /// Where lines stand in the log, which they must do in this order.
    void expectOrder(const std::vector<std::string>& lines) const
    {
        std::ptrdiff_t before = -1;
        for (const std::string& line : lines) {
            const std::ptrdiff_t at = log.at(line);
            EXPECT_GT(at, before) << line;
            before = at;
        }
    }

    bool opens = true;
    std::shared_ptr<ScriptedTool> trigger = std::make_shared<LoggedTool>(log);
    ScriptedSink sink{log};
};

} // namespace

TEST_F(LiveSessionFusionTest, OpeningRegistersCallbacksSwitchesTheTriggerOnAndStarts)
{
    const auto camera = openFusion();
    ASSERT_NE(camera, nullptr);
    expectOrder({"open fusion P1", "P1 frame callback", "P1 event callback", "bool enable true",
                 "sink camera", "live UI 1", "title 1", "serial P1", "press play", "P1 start 2", "viewer 2",
                 "tools"});
    EXPECT_EQ(state.playMode, ModeFusionCamera);
    EXPECT_TRUE(state.filePlaying);
    EXPECT_TRUE(play.isChecked());
    log.clear();
    const korvane::Event2D event(1, 2, 1, 3);
    camera->onEvents(&event, &event + 1);
    camera->onFrame({nullptr, 0, 0, 77});
    EXPECT_EQ(log.lines(), (Lines{"sink events 1", "sink frame 77"}));
}

TEST_F(LiveSessionFusionTest, ACameraWithoutATriggerInputPlaysLikeAnyOther)
{
    trigger = nullptr;
    const auto camera = openFusion();
    ASSERT_NE(camera, nullptr);
    expectOrder({"P1 event callback", "sink camera", "press play", "P1 start 2"});
    EXPECT_TRUE(play.isChecked());
}

TEST_F(LiveSessionFusionTest, PlayStopsAndStartsIt)
{
    const auto camera = openFusion();
    const CapturedMessages messages;
    log.clear();
    click(play);
    EXPECT_TRUE(log.contains("P1 stop 2"));
    EXPECT_FALSE(play.isChecked());
    EXPECT_FALSE(state.filePlaying);
    click(play);
    EXPECT_TRUE(log.contains("P1 start 2"));
    EXPECT_TRUE(play.isChecked());
    EXPECT_EQ(messages.debug(),
              (QStringList{QStringLiteral("Fusion camera stop."), QStringLiteral("Fusion camera start")}));
}

TEST_F(LiveSessionFusionTest, AFailedOpenShowsItsToastAndLeavesNoCamera)
{
    opens = false;
    EXPECT_EQ(openFusion(), nullptr);
    QApplication::processEvents();
    EXPECT_TRUE(log.contains("toast 2 [Open camera: P1failed.] []"));
    EXPECT_FALSE(log.contains("live UI 1"));
    EXPECT_FALSE(state.filePlaying);
    const CapturedMessages messages;
    click(play);
    EXPECT_FALSE(play.isChecked());
    EXPECT_EQ(messages.debug(), QStringList{QStringLiteral("Please connect camera first.")});
}

TEST_F(LiveSessionFusionTest, ItRecordsBothStreamsUnderTheStatedName)
{
    const auto camera = openFusion();
    log.clear();
    click(record);
    EXPECT_TRUE(record.isChecked());
    const std::string path = camera->recorderState().path;
    EXPECT_TRUE(log.contains("P1 record " + path + " 2")) << path;
    EXPECT_TRUE(path.ends_with(".raw"));
    click(record);
    EXPECT_TRUE(log.contains("P1 stop recording 2"));
    EXPECT_TRUE(
        log.contains("toast 0 [Save file success!] [" + config.output_raw_file_path.toStdString() + ']'));
    EXPECT_FALSE(record.isChecked());
}

TEST_F(LiveSessionFusionTest, AFaultOfTheRecorderEndsTheRecordingAndIsTold)
{
    const auto camera = openFusion();
    click(record);
    log.clear();
    camera->failRecorder("disk full");
    ASSERT_TRUE(wait([this] { return !record.isChecked(); }));
    EXPECT_TRUE(log.contains("P1 stop recording 2"));
    EXPECT_TRUE(log.waitFor([](const Lines& lines) {
        return std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
            return line.starts_with("toast 2") && line.find("disk full") != std::string::npos;
        });
    }));
}

TEST_F(LiveSessionFusionTest, AFaultOfTheFramesAloneIsToldOnceAndTheEventsAreRecordedOn)
{
    const auto camera = openFusion();
    click(record);
    log.clear();
    const std::string told
        = "toast 2 [Frames are not recorded: this machine's FFmpeg has no encoder for H.264 "
          "or MPEG-4\nfolder/name.mp4] []";
    camera->failRecorderInPart("folder/name.mp4", "this machine's FFmpeg has no encoder for H.264 or MPEG-4");
    ASSERT_TRUE(wait([this, &told] { return log.contains(told); }));
    // The recorder is looked at ten times a second.
    const auto shown = recordingTimes.size();
    ASSERT_TRUE(wait([this, shown] { return recordingTimes.size() > shown; }));
    EXPECT_TRUE(record.isChecked());
    EXPECT_TRUE(session->isRecording());
    EXPECT_FALSE(log.contains("P1 stop recording 2"));
    click(record);
    EXPECT_EQ(log.count(told), 1);
    EXPECT_TRUE(
        log.contains("toast 0 [Save file success!] [" + config.output_raw_file_path.toStdString() + ']'));
    EXPECT_FALSE(record.isChecked());

    // The next recording tells its own, also when it ends before anybody has looked.
    click(record);
    camera->failRecorderInPart("folder/next.mp4", "no encoder");
    click(record);
    EXPECT_EQ(log.lines().back(), "toast 2 [Frames are not recorded: no encoder\nfolder/next.mp4] []");
}

TEST_F(LiveSessionFusionTest, AFaultOfTheEventsAfterOneOfTheFramesEndsTheRecording)
{
    const auto camera = openFusion();
    click(record);
    camera->failRecorderInPart("folder/name.mp4", "no encoder");
    ASSERT_TRUE(wait([this] {
        return log.contains("toast 2 [Frames are not recorded: no encoder\nfolder/name.mp4] []");
    }));
    camera->failRecorder("disk full");
    ASSERT_TRUE(wait([this] { return !record.isChecked(); }));
    EXPECT_TRUE(log.lines().back().starts_with("toast 2 [Recording stopped: disk full"));
}

TEST_F(LiveSessionFusionTest, ALostCameraEndsViewAndRecording)
{
    const auto camera = openFusion();
    click(record);
    const CapturedMessages messages;
    log.clear();
    camera->connected = false;
    ASSERT_TRUE(wait([this] { return !play.isChecked(); }));
    EXPECT_FALSE(state.filePlaying);
    EXPECT_FALSE(record.isChecked());
    EXPECT_TRUE(messages.debug().contains(QStringLiteral("Camera connection lost.")));
    expectOrder({"P1 stop recording 2", "P1 stop 2"});
    click(play);
    EXPECT_FALSE(play.isChecked());
    EXPECT_FALSE(log.contains("P1 start 2"));
    click(record);
    EXPECT_FALSE(record.isChecked());
    EXPECT_EQ(messages.debug().count(QStringLiteral("Please connect camera first.")), 2);
}

TEST_F(LiveSessionFusionTest, AnotherCameraTakesItsPlaceInOrder)
{
    openFusion();
    click(record);
    log.clear();
    backend->offer("S1", "Halvora");
    ASSERT_TRUE(session->openCameraBySerial(QStringLiteral("S1")));
    expectOrder({"P1 stop recording 2", "P1 stop 2", "sink no camera", "P1 closed", "open S1", "S1 start",
                 "viewer 0"});
    EXPECT_EQ(state.playMode, ModeDvsCamera);
}

TEST_F(LiveSessionFusionTest, EndingWhileItRunsAndRecordsEndsInOrder)
{
    openFusion();
    click(record);
    log.clear();
    session.reset();
    expectOrder({"P1 stop recording 2", "P1 stop 2", "sink no camera", "P1 closed"});
}
