#include "camera/recording/apsvideoreader.h"
#include "camera/recording/apsvideowriter.h"
#include "camera/recording/videomark.h"
#include "camera/recording/videopicture.h"
#include "camera/recording/videowriter.h"
#include "camera/simulation/replaybackend.h"
#include "camera/simulation/replayframes.h"
#include "camera/simulation/streamedfusioncamera.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/plainrecording.h"
#include "tests/support/scriptedapsreader.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using korvane::ApsFrame;
using korvane::Event2D;
using korvane::EventCountFrame;
using korvane::recording::ApsVideoWriter;
using korvane::simulation::ReplayBackend;
using korvane::simulation::ReplayFrames;

namespace {

constexpr std::uint64_t period = 33333;

class ReplayFusionTest : public testing::Test
{
protected:
    static constexpr std::size_t slotCount = 6;

    static int greyOf(std::size_t slot) { return static_cast<int>(30 + 30 * slot); }
    QString pathOf(const std::string& name) const { return QFile::decodeName(folder.path(name).c_str()); }
    /// Every event of slot k is at time 33333 k + 1000 j, its place follows from its time.
    void writeEvents(const std::string& name) const
    {
        writePlainRecording(folder, name, steadyEvents(0, slotCount * period - 300, 1000));
    }
    /// A video of small frames, one of its own grey for each slot.
    void writeFrames(const std::string& name) const
    {
        auto file = std::make_unique<QFile>(pathOf(name));
        ASSERT_TRUE(file->open(QIODevice::ReadWrite | QIODevice::Truncate | QIODevice::Unbuffered));
        QString error;
        const auto writer = ApsVideoWriter::create(std::move(file), 64, 36, pathOf(name), error);
        ASSERT_TRUE(writer) << error.toStdString();
        writer->begin(0);
        for (std::size_t k = 0; k < slotCount; ++k) {
            const std::vector<std::uint8_t> pixels(std::size_t{64} * 36 * 3,
                                                   static_cast<std::uint8_t>(greyOf(k)));
            writer->push({pixels.data(), 64, 36, k * period + 5000});
        }
        ASSERT_TRUE(writer->finish((slotCount - 1) * period));
        ASSERT_EQ(writer->counts().dropped, 0U);
    }
    /// A video as an export leaves it.
    void writeExport(const std::string& name) const
    {
        using namespace korvane::recording;
        QFile file(pathOf(name));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite | QIODevice::Truncate | QIODevice::Unbuffered));
        VideoWriter::Settings settings;
        settings.format.width = 64;
        settings.format.height = 36;
        settings.comment = exportedVideoMark;
        QString error;
        const auto writer = VideoWriter::create(file, settings, pathOf(name), error);
        ASSERT_TRUE(writer) << error.toStdString();
        const auto picture = VideoPicture::create(64, 36);
        picture->draw();
        ASSERT_TRUE(writer->write(*picture, 0, error) && writer->finish(error)) << error.toStdString();
    }
    std::string productOf(ReplayBackend& backend) const
    {
        const auto found = backend.cameraDescriptions();
        return found.size() == 1 ? found.front().product : std::to_string(found.size());
    }

    TemporaryRecordings folder;
};

/// What a running camera sends, for a number of frames.
class Watcher
{
public:
    struct Seen
    {
        std::uint64_t time = 0;
        int grey = 0;
        std::uint64_t counted = 0; ///< events in the counts of this frame
        bool hasCounts = false;
    };

    void watch(const std::shared_ptr<korvane::FusionCamera>& camera)
    {
        korvane::FusionCamera* const seen = camera.get(); // which ends its threads before it goes
        camera->addApsFrameCallback([this, seen](const ApsFrame& frame) {
            Seen one;
            one.time = frame.timestamp;
            one.grey = frame.pixels[(std::size_t{1080} * 3840 + 1920) * 3];
            std::shared_ptr<EventCountFrame> counts;
            one.hasCounts = seen->getEventFrameAt(counts, frame.timestamp);
            if (one.hasCounts) {
                for (const std::uint16_t count : counts->counts)
                    one.counted += count;
            }
            const std::lock_guard lock(mutex);
            frames.push_back(one);
            changed.notify_all();
        });
        camera->addEventsStreamHandleCallback([this](const Event2D* begin, const Event2D* end) {
            const std::lock_guard lock(mutex);
            events.insert(events.end(), begin, end);
        });
    }
    bool awaitFrames(std::size_t count)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(60),
                                [this, count] { return frames.size() >= count; });
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Seen> frames; ///< under mutex
    std::vector<Event2D> events; ///< under mutex
};

} // namespace

TEST_F(ReplayFusionTest, ARecordingWithFramesBesideItIsAFusionCamera)
{
    writeEvents("take.one.raw");
    writeFrames("take.one.mp4");
    ReplayBackend backend(pathOf("take.one.raw"));
    EXPECT_EQ(productOf(backend), "Pellix");
    EXPECT_EQ(backend.openCamera("take.one"), nullptr);
    const auto camera = backend.openFusionCamera("take.one");
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(camera->getDvsDesc().serial, "take.one");
    EXPECT_EQ(camera->getDvsDesc().product, "Pellix");
    EXPECT_EQ(backend.openFusionCamera("take.one"), nullptr) << "it is open already";
}

TEST_F(ReplayFusionTest, WithoutFramesItIsNot)
{
    writeEvents("take.raw");
    writeFrames("other.mp4");
    ReplayBackend backend(pathOf("take.raw"));
    EXPECT_EQ(productOf(backend), "Halvora");
    EXPECT_EQ(backend.openFusionCamera("take"), nullptr);
    EXPECT_NE(backend.openCamera("take"), nullptr);
}

TEST_F(ReplayFusionTest, AnExportedVideoBesideItIsNoFrames)
{
    writeEvents("take.raw");
    writeExport("take.mp4");
    const CapturedMessages messages;
    ReplayBackend backend(pathOf("take.raw"));
    EXPECT_EQ(productOf(backend), "Halvora");
    EXPECT_EQ(productOf(backend), "Halvora");
    EXPECT_EQ(messages.of(QtInfoMsg).size(), 1) << "told once";
    EXPECT_TRUE(messages.warnings().isEmpty());
}

TEST_F(ReplayFusionTest, AFileThatIsNoVideoIsToldOnceAndTheEventsAreReplayed)
{
    writeEvents("take.raw");
    folder.write("take.mp4", "no video at all", {});
    const CapturedMessages messages;
    ReplayBackend backend(pathOf("take.raw"));
    EXPECT_EQ(productOf(backend), "Halvora");
    EXPECT_EQ(productOf(backend), "Halvora");
    EXPECT_EQ(messages.warnings().size(), 1);
}

TEST_F(ReplayFusionTest, FramesThatComeAndGoMakeAnotherCameraOfIt)
{
    writeEvents("take.raw");
    ReplayBackend backend(pathOf("take.raw"));
    ASSERT_EQ(productOf(backend), "Halvora");
    writeFrames("take.mp4");
    EXPECT_EQ(productOf(backend), "Pellix");
    EXPECT_NE(backend.openFusionCamera("take"), nullptr);
    ASSERT_TRUE(QFile::remove(pathOf("take.mp4")));
    EXPECT_EQ(productOf(backend), "Halvora");
    EXPECT_EQ(backend.openFusionCamera("take"), nullptr);
}

TEST_F(ReplayFusionTest, EachFrameComesWithTheEventsOfItsSlotRoundAfterRound)
{
    writeEvents("take.raw");
    writeFrames("take.mp4");
    ReplayBackend backend(pathOf("take.raw"));
    const auto camera = backend.openFusionCamera("take");
    ASSERT_NE(camera, nullptr);
    Watcher watcher;
    watcher.watch(camera);
    camera->start(korvane::STREAM_FUSION);
    ASSERT_TRUE(watcher.awaitFrames(2 * slotCount + 1));
    camera->stop(korvane::STREAM_FUSION);
    const std::lock_guard lock(watcher.mutex);
    std::uint64_t before = 0;
    for (const auto& frame : watcher.frames) {
        const std::uint64_t slot = frame.time / period;
        EXPECT_NEAR(frame.grey, greyOf(slot % slotCount), 2) << frame.time;
        ASSERT_TRUE(frame.hasCounts);
        const auto inside = std::count_if(watcher.events.begin(), watcher.events.end(),
                                          [before, end = (slot + 1) * period](const Event2D& event) {
                                              return event.x != 0 && (before == 0 || event.timestamp > before)
                                                  && event.timestamp <= end;
                                          });
        EXPECT_EQ(frame.counted, static_cast<std::uint64_t>(inside)) << frame.time;
        before = (slot + 1) * period;
    }
}

TEST_F(ReplayFusionTest, RecordedAgainEveryFrameKeepsItsSlot)
{
    writeEvents("take.raw");
    writeFrames("take.mp4");
    ReplayBackend backend(pathOf("take.raw"));
    const auto camera = backend.openFusionCamera("take");
    ASSERT_NE(camera, nullptr);
    Watcher watcher;
    watcher.watch(camera);
    camera->startRecording(folder.path("again.raw"), korvane::STREAM_FUSION);
    ASSERT_TRUE(camera->recorderState().writing) << camera->recorderState().error;
    camera->start(korvane::STREAM_FUSION);
    ASSERT_TRUE(watcher.awaitFrames(slotCount));
    camera->stop(korvane::STREAM_FUSION);
    camera->stopRecording(korvane::STREAM_FUSION);

    QString error;
    const auto video = korvane::recording::ApsVideoReader::open(folder.path("again.mp4"), error);
    ASSERT_TRUE(video && video->loadFile()) << error.toStdString();
    std::map<std::uint64_t, int> shown; // of the frames that a slow machine has left out none is asked for
    {
        const std::lock_guard lock(watcher.mutex);
        for (const auto& frame : watcher.frames)
            shown[frame.time / period] = frame.grey;
    }
    ApsFrame frame;
    for (const auto& [slot, grey] : shown) {
        video->seekFrame(slot * period, frame);
        ASSERT_NE(frame.pixels, nullptr);
        EXPECT_EQ(frame.timestamp, slot * period);
        EXPECT_NEAR(frame.pixels[0], grey, 3) << slot;
    }
}

TEST_F(ReplayFusionTest, APulledCameraIsLostForGood)
{
    writeEvents("take.raw");
    writeFrames("take.mp4");
    ReplayBackend backend(pathOf("take.raw"));
    const auto camera = backend.openFusionCamera("take");
    ASSERT_NE(camera, nullptr);
    Watcher watcher;
    watcher.watch(camera);
    camera->start(korvane::STREAM_FUSION);
    ASSERT_TRUE(watcher.awaitFrames(1));
    backend.pull("take");
    EXPECT_FALSE(camera->isConnected());
    camera->stop(korvane::STREAM_FUSION);
    EXPECT_TRUE(backend.cameraDescriptions().empty());
}

TEST(ReplayFrames, GivesTheFrameOfTheSlotAndTheLastOneWhereThereIsNone)
{
    ScriptedLog log;
    auto video = std::make_unique<ScriptedApsReader>(3, log);
    ReplayFrames frames(std::move(video), 5 * period, 0);
    for (std::uint64_t k = 0; k < 12; ++k) {
        const ApsFrame frame = frames.frameAt((k + 1) * period);
        ASSERT_NE(frame.pixels, nullptr);
        EXPECT_EQ(frame.pixels[0], ScriptedApsReader::colourOf(std::min<std::size_t>(k % 5, 2))) << k;
        EXPECT_EQ(frame.timestamp, (k + 1) * period - 1);
    }
}

TEST(ReplayFrames, LeavesOutWhatASlowMachineHasNoTimeFor)
{
    ScriptedLog log;
    auto video = std::make_unique<ScriptedApsReader>(30, log);
    ReplayFrames frames(std::move(video), 30 * period, 0);
    for (const unsigned slot : {2U, 5U, 25U, 29U, 31U}) {
        const ApsFrame frame = frames.frameAt((slot + 1) * period);
        EXPECT_EQ(frame.pixels[0], ScriptedApsReader::colourOf(slot % 30)) << slot;
    }
}

TEST(ReplayFrames, WaitsForTheFirstEventAsTheStreamDoes)
{
    ScriptedLog log;
    auto video = std::make_unique<ScriptedApsReader>(4, log);
    ReplayFrames frames(std::move(video), 6 * period, period + 10);
    const std::size_t expected[] = {0, 0, 0, 1, 2, 3, 0};
    for (std::size_t k = 0; k < 7; ++k)
        EXPECT_EQ(frames.frameAt((k + 1) * period).pixels[0], ScriptedApsReader::colourOf(expected[k])) << k;
}
