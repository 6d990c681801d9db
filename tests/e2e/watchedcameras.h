#pragma once

#include "camera/recording/rawfilereader.h"
#include "camera/simulation/eventsink.h"
#include "camera/simulation/simulatedbackend.h"
#include "camera/simulation/streameddvscamera.h"
#include "camera/simulation/streamedfusioncamera.h"

#include <QString>

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

/// Keeps every event that a camera delivers.
class DeliveredEvents : public korvane::simulation::EventSink
{
public:
    void onEvents(const korvane::Event2D* begin, const korvane::Event2D* end) override
    {
        const std::lock_guard lock(mutex);
        events.insert(events.end(), begin, end);
    }
    /// Forgets what came so far.
    void clear()
    {
        const std::lock_guard lock(mutex);
        events.clear();
    }
    /// Whether these came one after the other and nothing between them, their time base being another.
    bool holdInOneRow(const std::vector<korvane::Event2D>& kept) const
    {
        const std::lock_guard lock(mutex);
        for (std::size_t start = 0; !kept.empty() && start + kept.size() <= events.size(); ++start) {
            if (holdAt(start, kept))
                return true;
        }
        return false;
    }
    /// Whether these came last, as above.
    bool endWith(const std::vector<korvane::Event2D>& kept) const
    {
        const std::lock_guard lock(mutex);
        return !kept.empty() && kept.size() <= events.size() && holdAt(events.size() - kept.size(), kept);
    }

private:
    /// Under mutex.
    bool holdAt(std::size_t start, const std::vector<korvane::Event2D>& kept) const
    {
        std::size_t same = 0;
        while (same < kept.size() && isSame(events[start], events[start + same], kept[0], kept[same]))
            ++same;
        return same == kept.size();
    }
    static bool isSame(const korvane::Event2D& firstA, const korvane::Event2D& a,
                       const korvane::Event2D& firstB, const korvane::Event2D& b)
    {
        return a.x == b.x && a.y == b.y && a.polarity == b.polarity
            && a.timestamp - firstA.timestamp == b.timestamp - firstB.timestamp;
    }

    mutable std::mutex mutex;
    std::vector<korvane::Event2D> events; ///< under mutex
};

/// The simulated cameras, and what the one that was opened last delivers.
class WatchedCameras : public korvane::simulation::SimulatedBackend
{
public:
    std::shared_ptr<korvane::DvsCamera> openCamera(const std::string& serial) override
    {
        auto camera = SimulatedBackend::openCamera(serial);
        if (const auto opened = std::dynamic_pointer_cast<korvane::simulation::StreamedDvsCamera>(camera))
            opened->setEventSink(delivered);
        return camera;
    }
    std::shared_ptr<korvane::FusionCamera> openFusionCamera(const std::string& serial) override
    {
        auto camera = SimulatedBackend::openFusionCamera(serial);
        if (const auto opened = std::dynamic_pointer_cast<korvane::simulation::StreamedFusionCamera>(camera))
            opened->setEventSink(delivered);
        return camera;
    }

    const std::shared_ptr<DeliveredEvents> delivered = std::make_shared<DeliveredEvents>();
};

/// All events of a recording; none when it cannot be loaded.
inline std::vector<korvane::Event2D> eventsOfRecording(const QString& path)
{
    std::vector<korvane::Event2D> events;
    QString error;
    const auto reader = korvane::recording::RawFileReader::open(path.toLocal8Bit().toStdString(), error);
    if (reader && reader->loadFile())
        reader->streamEvents(0, ~std::uint64_t(0), [&events](std::span<const korvane::Event2D> piece) {
            events.insert(events.end(), piece.begin(), piece.end());
            return true;
        });
    return events;
}
