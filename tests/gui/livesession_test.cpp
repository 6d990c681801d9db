#include "tests/gui/livesessionfixture.h"

#include <chrono>

TEST_F(LiveSessionTest, PlayWithoutASourceDoesNothing)
{
    click(play);
    EXPECT_FALSE(play.isChecked());
    EXPECT_FALSE(state.filePlaying);
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(LiveSessionTest, EventsReachTheFrameBufferAndAreAnnounced)
{
    const auto camera = openCamera();
    camera->push({{10, 20, 1, 4000}, {11, 20, 0, 4711}});
    ASSERT_TRUE(wait([this] { return eventsToShow > 0; }));
    EXPECT_EQ(eventsToShow, 1);
    EXPECT_TRUE(frames.hasNewEvents());
    EXPECT_EQ(session->lastTimestamp(), 4711u);
    EXPECT_EQ(frames.takeImage().pixel(10, 20), qRgb(191, 188, 180));
}

TEST_F(LiveSessionTest, PressedAgainPlayStopsTheStreamThenTheCamera)
{
    const auto camera = openCamera();
    const CapturedMessages messages;
    click(play);
    EXPECT_EQ(log.lines(), (Lines{"S1 releaseStream 0", "S1 stop"}));
    EXPECT_FALSE(state.filePlaying);
    EXPECT_FALSE(play.isChecked());
    EXPECT_TRUE(messages.debug().contains(QStringLiteral("stop camera.")));
    log.clear();
    click(play);
    EXPECT_EQ(log.lines(), (Lines{"S1 start", "S1 setBatchTime 33333"}));
    EXPECT_TRUE(state.filePlaying);
    EXPECT_TRUE(play.isChecked());
    camera->push({{1, 1, 1, 9}});
    ASSERT_TRUE(wait([this] { return eventsToShow > 0; }));
}

TEST_F(LiveSessionTest, TheButtonComesUpBetweenTheStreamsEndAndTheCamerasStop)
{
    openCamera();
    QObject::connect(session.get(), &LiveSession::runningChanged, &window,
                     [this] { log.add(play.isChecked() ? "button down" : "button up"); });
    click(play);
    EXPECT_EQ(log.at("S1 releaseStream 0"), 0);
    EXPECT_EQ(log.at("button up"), 1);
    EXPECT_EQ(log.at("S1 stop"), 2);
    EXPECT_EQ(log.count("button down"), 0);
}

TEST_F(LiveSessionTest, StoppedNothingIsReadAnyMore)
{
    const auto camera = openCamera();
    click(play);
    camera->push({{1, 1, 1, 9}});
    QApplication::processEvents();
    EXPECT_EQ(eventsToShow, 0);
    std::vector<korvane::Event2D> left;
    EXPECT_TRUE(camera->getNextEventBatch(left)) << "the batch lies there still";
}

TEST_F(LiveSessionTest, AStopDuringTheLongestWaitComesBackAtOnce)
{
    const auto camera = openCamera();
    timing.frameStep = 3'600'000'000; // an hour
    camera->push({{1, 1, 1, 9}});
    ASSERT_TRUE(wait([this] { return eventsToShow > 0; }));
    const auto begin = std::chrono::steady_clock::now();
    click(play);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
    EXPECT_FALSE(play.isChecked());
}

TEST_F(LiveSessionTest, ACameraThatDoesNotStartLeavesTheButtonUp)
{
    const auto camera = openCamera();
    click(play);
    log.clear();
    for (const int fault : {1, -1, 255}) {
        camera->startResult = fault;
        const CapturedMessages messages;
        click(play);
        EXPECT_EQ(messages.debug(), (QStringList{QStringLiteral("Please check the camera connection.")}));
        EXPECT_FALSE(state.filePlaying);
        EXPECT_FALSE(play.isChecked());
    }
    EXPECT_EQ(log.lines(), (Lines{"S1 start", "S1 start", "S1 start"})) << "no batch time, no stop";
    camera->startResult = 0;
    click(play);
    EXPECT_TRUE(play.isChecked());
}

TEST_F(LiveSessionTest, ACameraThatDoesNotStartWhenItIsOpenedStaysOpen)
{
    backend->offer("S1", "Halvora");
    backend->onOpen = [](ScriptedCamera& camera) {
        camera.startResult = 1;
        return true;
    };
    pick(0);
    EXPECT_TRUE(log.contains("press play"));
    EXPECT_FALSE(play.isChecked());
    EXPECT_TRUE(session->hasDvsCamera());
    backend->opened("S1")->startResult = 0;
    click(play);
    EXPECT_TRUE(play.isChecked());
}

TEST_F(LiveSessionTest, ALostCameraStopsTheViewAndCannotBeStartedAgain)
{
    const auto camera = openCamera();
    const CapturedMessages messages;
    camera->connected = false;
    ASSERT_TRUE(wait([this] { return !play.isChecked(); }));
    EXPECT_FALSE(state.filePlaying);
    EXPECT_EQ(log.lines(), (Lines{"S1 releaseStream 0", "S1 stop"}));
    EXPECT_EQ(messages.debug().count(QStringLiteral("Camera connection lost.")), 1);
    click(play);
    EXPECT_EQ(messages.debug().count(QStringLiteral("Please connect camera first.")), 1);
    EXPECT_FALSE(play.isChecked());
    EXPECT_EQ(log.count("S1 start"), 0);
}

TEST_F(LiveSessionTest, APressBeforeTheLossIsNoticedLeavesTheButtonAsItWas)
{
    const auto camera = openCamera();
    timing.frameStep = 3'600'000'000; // the loop does not look at the camera for an hour
    camera->push({{1, 1, 1, 9}});
    ASSERT_TRUE(wait([this] { return eventsToShow > 0; }));
    ASSERT_TRUE(play.isChecked());
    camera->connected = false;
    const CapturedMessages messages;
    click(play);
    EXPECT_EQ(messages.debug().count(QStringLiteral("Please connect camera first.")), 1);
    EXPECT_EQ(play.isChecked(), state.filePlaying.load());
}

TEST_F(LiveSessionTest, ALossThatIsToldTooLateIsOfNoInterest)
{
    const auto camera = openCamera("S1");
    camera->connected = false;
    // The loop has told of the loss, and the GUI has not come to it, when the camera is let go and another
    // session begins.
    while (state.filePlaying)
        QThread::yieldCurrentThread();
    session->release();
    ++state.playSession;
    state.filePlaying = true;
    log.clear();
    QApplication::processEvents();
    EXPECT_EQ(log.lines(), Lines());
    EXPECT_TRUE(state.filePlaying) << "it belongs to the new session";
    state.filePlaying = false;
}

TEST_F(LiveSessionTest, AStopInTheSameMomentAsALossStopsOnce)
{
    for (int round = 0; round < 20; ++round) {
        const auto camera = openCamera("S1");
        camera->connected = false;
        click(play);
        ASSERT_TRUE(wait([this] { return !state.filePlaying && !play.isChecked(); }));
        QApplication::processEvents();
        EXPECT_FALSE(state.filePlaying);
        EXPECT_FALSE(play.isChecked());
        EXPECT_EQ(log.count("S1 stop"), 1);
    }
}

TEST_F(LiveSessionTest, TheBatchTimeIsTheAccumulationTimeAndFollowsIt)
{
    const auto camera = openCamera();
    {
        const CapturedMessages messages;
        session->setAccumulationTime(5000);
        EXPECT_TRUE(messages.debug().contains(QStringLiteral("set dvs time interval: 5000")));
    }
    EXPECT_EQ(log.lines(), (Lines{"S1 setBatchTime 5000"}));
    EXPECT_EQ(timing.accumulationTime, 5000u);
    click(play);
    session->setAccumulationTime(7000);
    log.clear();
    click(play);
    EXPECT_EQ(log.lines(), (Lines{"S1 start", "S1 setBatchTime 7000"}));
}

TEST_F(LiveSessionTest, WithoutACameraTheAccumulationTimeIsKeptForTheNext)
{
    const CapturedMessages messages;
    session->setAccumulationTime(12345);
    EXPECT_TRUE(messages.debug().contains(QStringLiteral("set dvs time interval: 12345")));
    EXPECT_EQ(log.lines(), Lines());
    backend->offer("S1", "Halvora");
    pick(0);
    EXPECT_TRUE(log.contains("S1 setBatchTime 12345"));
}

TEST_F(LiveSessionTest, LettingGoStopsAndClosesTheCameraOnce)
{
    openCamera("S1");
    session->release();
    EXPECT_EQ(log.lines(), (Lines{"S1 releaseStream 0", "S1 stop", "S1 closed", "tools"}));
    EXPECT_FALSE(state.filePlaying);
    EXPECT_FALSE(play.isChecked());
    EXPECT_FALSE(session->hasDvsCamera());
    log.clear();
    session->release();
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(LiveSessionTest, LettingGoOfNothingLeavesAPlaybackAlone)
{
    state.playMode = ModeDvsRecording;
    state.filePlaying = true;
    session->release();
    EXPECT_TRUE(state.filePlaying);
    state.filePlaying = false;
}

TEST_F(LiveSessionTest, EndingWhileItRunsAndRecordsEndsInOrder)
{
    openCamera("S1");
    click(record);
    log.clear();
    session.reset();
    EXPECT_FALSE(state.filePlaying);
    const Lines lines = log.lines();
    const auto cameraLines = [&lines] {
        Lines only;
        for (const std::string& line : lines) {
            if (line.starts_with("S1 "))
                only.push_back(line);
        }
        return only;
    }();
    EXPECT_EQ(cameraLines, (Lines{"S1 stopRecording", "S1 releaseStream 0", "S1 stop", "S1 closed"}));
}

TEST_F(LiveSessionTest, EndingAfterALossThatNobodyHasSeenYetEndsCleanly)
{
    auto camera = openCamera("S1");
    const std::weak_ptr weak = camera;
    camera->connected = false;
    camera.reset();
    while (state.filePlaying)
        QThread::yieldCurrentThread();
    session.reset();
    EXPECT_TRUE(weak.expired());
    QApplication::processEvents();
    EXPECT_FALSE(state.filePlaying);
}
