#pragma once

#include "camera/recording/apsvideowriter.h"
#include "camera/recording/videomark.h"
#include "camera/recording/videopicture.h"
#include "camera/recording/videowriter.h"
#include "camera/simulation/replaybackend.h"
#include "camera/simulation/streamedfusioncamera.h"
#include "tests/support/plainrecording.h"

#include <QFile>
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

/// What tests of replayed fusion recordings share.
namespace korvane::simulation::testing {

using recording::ApsVideoWriter;

inline constexpr std::uint64_t period = 33333;

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

class ReplayFusionTest : public ::testing::Test
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
        using namespace recording;
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

    /// Opens take.raw, a recording with frames, as a camera that is watched.
    void openTake()
    {
        writeEvents("take.raw");
        writeFrames("take.mp4");
        offered.emplace(pathOf("take.raw"));
        take = offered->openFusionCamera("take");
        ASSERT_NE(take, nullptr);
        watcher.watch(take);
    }

    TemporaryRecordings folder;
    Watcher watcher;
    std::optional<ReplayBackend> offered; ///< openTake's
    std::shared_ptr<korvane::FusionCamera> take; ///< openTake's
};

} // namespace korvane::simulation::testing
