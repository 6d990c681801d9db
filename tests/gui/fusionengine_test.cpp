#include "playback/kvfusioncameradataprocessor.h"

#include "camera/driver/backend.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/fakeclock.h"
#include "tests/support/scriptedapsreader.h"
#include "tests/support/scriptedreader.h"

#include <QMetaMethod>
#include <QTest>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr std::uint64_t first = 2'000'000;
constexpr std::uint64_t last = first + 2 * 33333 - 1;

/// A reader that is counted while it lives.
template <typename Reader>
class Counted : public Reader
{
public:
    template <typename... Arguments>
    explicit Counted(std::atomic<int>& livingReaders, Arguments&&... arguments)
        : Reader(std::forward<Arguments>(arguments)...), living(livingReaders)
    {
        ++living;
    }
    ~Counted() override { --living; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

private:
    std::atomic<int>& living;
};

/// Readers for any path, of a recording of two ticks. Notes "aps <path>" and "dvs <path>".
class ReaderBackend : public korvane::Backend
{
public:
    explicit ReaderBackend(ScriptedLog& callLog) : log(callLog) {}
    std::string name() const override { return "readers"; }
    std::unique_ptr<korvane::DvsFileReader> createDvsFileReader(const std::string& path) override
    {
        log.add("dvs " + path);
        if (!offersDvs)
            return nullptr;
        auto reader = std::make_unique<Counted<ScriptedReader>>(readers, first, last);
        reader->seekTime(first);
        reader->onLoad = [this] { return dvsLoads.load(); };
        return reader;
    }
    std::unique_ptr<korvane::ApsFileReader> createApsFileReader(const std::string& path) override
    {
        log.add("aps " + path);
        if (!offersAps)
            return nullptr;
        auto reader = std::make_unique<Counted<ScriptedApsReader>>(readers, std::size_t{2}, log);
        reader->loads = apsLoads.load();
        return reader;
    }

    std::atomic<int> readers{0}; ///< that there are now
    std::atomic<bool> offersDvs{true};
    std::atomic<bool> offersAps{true};
    std::atomic<bool> dvsLoads{true};
    std::atomic<bool> apsLoads{true};

private:
    ScriptedLog& log;
};

class FusionEngineTest : public testing::Test
{
protected:
    FusionEngineTest()
    {
        korvane::registerBackend(backend);
        // Everything the engine tells, in its order.
        const auto note = [this](const std::string& line) { told.add(line); };
        QObject::connect(
            &*engine, &KvFusionCameraDataProcessor::signalFusionImage, &*engine,
            [note](const QImage&) { note("image"); }, Qt::DirectConnection);
        QObject::connect(
            &*engine, &KvFusionCameraDataProcessor::signalTimeStamp, &*engine,
            [note](uint64_t time) { note("time " + std::to_string(time)); }, Qt::DirectConnection);
        QObject::connect(
            &*engine, &KvFusionCameraDataProcessor::signalStartTimeStamp, &*engine,
            [note](uint64_t time) { note("start " + std::to_string(time)); }, Qt::DirectConnection);
        QObject::connect(
            &*engine, &KvFusionCameraDataProcessor::signalEndTimeStamp, &*engine,
            [note](uint64_t time) { note("end " + std::to_string(time)); }, Qt::DirectConnection);
        QObject::connect(
            &*engine, &KvFusionCameraDataProcessor::signalPlayProgress, &*engine,
            [note](uint64_t current, uint64_t total) {
                note("progress " + std::to_string(current) + ' ' + std::to_string(total));
            },
            Qt::DirectConnection);
        QObject::connect(
            &*engine, &KvFusionCameraDataProcessor::signalPalyFileFinished, &*engine,
            [note] { note("finished"); }, Qt::DirectConnection);
    }
    ~FusionEngineTest() override
    {
        engine.reset();
        korvane::unregisterBackend(backend);
    }

    ScriptedLog log;
    ScriptedLog told;
    std::shared_ptr<ReaderBackend> backend = std::make_shared<ReaderBackend>(log);
    FakeClock clock;
    std::optional<KvFusionCameraDataProcessor> engine{std::in_place, clock, nullptr};
};

} // namespace

TEST_F(FusionEngineTest, AClosedRecordingIsLetGoAndCannotBePlayed)
{
    ASSERT_TRUE(engine->slotReadFusionFile("/rec/clip.raw"));
    engine->slotFusionFilePlayControl(true);
    ASSERT_TRUE(clock.awaitWaits(1));
    ASSERT_EQ(backend->readers, 2);
    engine->closeRecording();
    EXPECT_EQ(backend->readers, 0) << "its play thread has let go of them too";
    told.clear();
    engine->slotFusionFilePlayControl(true);
    EXPECT_EQ(told.lines(), ScriptedLog::Lines{"finished"});
}

TEST_F(FusionEngineTest, SignalsAndSlotsStandInTheirOrder)
{
    const char* const expected[] = {
        "signalFusionImage(QImage)",
        "signalFusionPixMap(QPixmap)",
        "triggerFusionImage()",
        "signalTimeStamp(uint64_t)",
        "signalStartTimeStamp(uint64_t)",
        "signalEndTimeStamp(uint64_t)",
        "signalPlayProgress(uint64_t,uint64_t)",
        "signalPalyFileFinished()",
        "slotSetViewerType(korvane::STREAM_TYPE)",
        "slotReadFusionFile(std::string)",
        "slotSetStartTimeStamp(uint64_t)",
        "slotSetEndTimeStamp(uint64_t)",
        "slotFusionFilePlayControl(bool)",
        "slotSetReplayFlag(bool)",
    };
    const QMetaObject& meta = KvFusionCameraDataProcessor::staticMetaObject;
    int index = meta.methodOffset();
    for (const char* const signature : expected)
        EXPECT_EQ(meta.method(index++).methodSignature().toStdString(), signature);
    EXPECT_EQ(index, meta.methodCount());
}

TEST_F(FusionEngineTest, OpensTheTwoFilesOfTheBaseNameAndTellsStartAndEnd)
{
    EXPECT_TRUE(engine->slotReadFusionFile("D:/rec/clip.part1.raw"));
    EXPECT_EQ(
        log.lines(),
        (ScriptedLog::Lines{"aps D:/rec/clip.part1.mp4", "load aps", "index", "dvs D:/rec/clip.part1.raw"}));
    EXPECT_EQ(told.lines(),
              (ScriptedLog::Lines{"start " + std::to_string(first), "end " + std::to_string(last)}));
}

TEST_F(FusionEngineTest, TheBaseNameEndsAtTheLastDotEvenOfAFolder)
{
    EXPECT_TRUE(engine->slotReadFusionFile("D:/rec/a.b/clip"));
    EXPECT_TRUE(log.contains("aps D:/rec/a.mp4"));
    EXPECT_TRUE(log.contains("dvs D:/rec/a.raw"));
}

TEST_F(FusionEngineTest, AnUpperCaseExtensionOpensTheLowerCaseFile)
{
    EXPECT_TRUE(engine->slotReadFusionFile("/rec/CLIP.RAW"));
    EXPECT_TRUE(log.contains("dvs /rec/CLIP.raw"));
}

TEST_F(FusionEngineTest, APathWithoutADotIsItsOwnBaseName)
{
    EXPECT_TRUE(engine->slotReadFusionFile("clip"));
    EXPECT_TRUE(log.contains("aps clip.mp4"));
}

TEST_F(FusionEngineTest, IntensityFramesThatDoNotLoadAreLoggedAndNothingIsTold)
{
    const CapturedMessages messages;
    backend->apsLoads = false;
    EXPECT_FALSE(engine->slotReadFusionFile("/rec/a.raw"));
    backend->offersAps = false;
    EXPECT_FALSE(engine->slotReadFusionFile("/rec/a.raw"));
    EXPECT_EQ(messages.debug().count(QStringLiteral("Load aps file failed.")), 2);
    EXPECT_TRUE(told.lines().empty());
    EXPECT_FALSE(log.contains("dvs /rec/a.raw"));
}

TEST_F(FusionEngineTest, EventsThatDoNotLoadAreLoggedAndNothingIsTold)
{
    const CapturedMessages messages;
    backend->dvsLoads = false;
    EXPECT_FALSE(engine->slotReadFusionFile("/rec/a.raw"));
    EXPECT_EQ(backend->readers, 2) << "they stay stored";
    backend->offersDvs = false;
    EXPECT_FALSE(engine->slotReadFusionFile("/rec/a.raw"));
    EXPECT_EQ(backend->readers, 1) << "the frames' new one";
    EXPECT_EQ(messages.debug().count(QStringLiteral("Load dvs file failed.")), 2);
    EXPECT_TRUE(told.lines().empty());
}

TEST_F(FusionEngineTest, WithoutALoadedRecordingPlayingOnlyTellsThatItHasFinished)
{
    const CapturedMessages messages;
    engine->slotFusionFilePlayControl(true);
    backend->dvsLoads = false;
    engine->slotReadFusionFile("/rec/a.raw");
    engine->slotFusionFilePlayControl(true);
    EXPECT_EQ(told.lines(), (ScriptedLog::Lines{"finished", "finished"}));
    EXPECT_EQ(messages.debug().count(QStringLiteral("There is no fusion recording to play.")), 2);
}

TEST_F(FusionEngineTest, StartAndEndPointsChangeNothing)
{
    engine->slotReadFusionFile("/rec/a.raw");
    engine->slotSetStartTimeStamp(first + 40000);
    engine->slotSetEndTimeStamp(first + 10);
    engine->slotFusionFilePlayControl(true);
    ASSERT_TRUE(clock.awaitWaits(1));
    clock.grant(1);
    ASSERT_TRUE(clock.awaitWaits(2));
    engine->slotFusionFilePlayControl(false);
    EXPECT_TRUE(told.contains("time " + std::to_string(first)));
    EXPECT_TRUE(told.contains("time " + std::to_string(first + 33333)));
}

TEST_F(FusionEngineTest, ARecordingIsPlayedAlikeWhateverTheViewerType)
{
    std::mutex mutex;
    QList<QImage> first;
    bool begins = false;
    QObject::connect(
        &*engine, &KvFusionCameraDataProcessor::signalFusionImage, &*engine,
        [&](const QImage& image) {
            const std::lock_guard lock(mutex);
            if (std::exchange(begins, false))
                first.append(image.copy());
        },
        Qt::DirectConnection);
    std::size_t ticks = 0;
    for (const auto type : {korvane::STREAM_FUSION, korvane::STREAM_DVS, korvane::STREAM_APS}) {
        engine->slotSetViewerType(type);
        engine->slotReadFusionFile("/rec/a.raw");
        begins = true;
        engine->slotFusionFilePlayControl(true);
        ASSERT_TRUE(clock.awaitWaits(++ticks));
        engine->slotFusionFilePlayControl(false);
    }
    ASSERT_EQ(first.size(), 3);
    EXPECT_EQ(first[1], first[0]);
    EXPECT_EQ(first[2], first[0]);
    EXPECT_NE(first[0].pixelColor(640, 360), QColor(Qt::white)) << "a frame";
}

TEST_F(FusionEngineTest, AtTheEndItTellsFinishedOnceThenTheProgressAndPlaysAgainFromTheStart)
{
    engine->slotReadFusionFile("/rec/a.raw");
    engine->slotFusionFilePlayControl(true);
    clock.grant(2);
    ASSERT_TRUE(told.waitForCount("finished", 1));
    const std::string back = "progress " + std::to_string(first) + ' ' + std::to_string(last);
    ASSERT_TRUE(told.waitForCount(back, 2));
    EXPECT_EQ(told.lines().back(), back);
    EXPECT_EQ(*(told.lines().end() - 2), "finished");
    engine->slotFusionFilePlayControl(true);
    ASSERT_TRUE(told.waitForCount("time " + std::to_string(first), 2));
    engine->slotFusionFilePlayControl(false);
}

TEST_F(FusionEngineTest, TheReplayFlagMakesItGoOn)
{
    engine->slotReadFusionFile("/rec/a.raw");
    engine->slotSetReplayFlag(true);
    engine->slotFusionFilePlayControl(true);
    clock.grant(4);
    ASSERT_TRUE(told.waitForCount("time " + std::to_string(first), 2));
    engine->slotFusionFilePlayControl(false);
    EXPECT_FALSE(told.contains("finished"));
}

TEST_F(FusionEngineTest, TheViewerTypeIsFoundByNameAndTimesCrossThreads)
{
    EXPECT_TRUE(QMetaObject::invokeMethod(&*engine, "slotSetViewerType", Qt::DirectConnection,
                                          Q_ARG(korvane::STREAM_TYPE, korvane::STREAM_APS)));
    QObject receiver;
    std::vector<uint64_t> times;
    QObject::connect(
        &*engine, &KvFusionCameraDataProcessor::signalTimeStamp, &receiver,
        [&times](uint64_t time) { times.push_back(time); }, Qt::QueuedConnection);
    engine->slotReadFusionFile("/rec/a.raw");
    engine->slotFusionFilePlayControl(true);
    ASSERT_TRUE(QTest::qWaitFor([&times] { return !times.empty(); }));
    engine->slotFusionFilePlayControl(false);
    EXPECT_EQ(times.front(), first);
}
