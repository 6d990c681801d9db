#pragma once

#include "camera/driver/backend.h"
#include "camera/driver/tooltype.h"
#include "camera/recording/recordingbackend.h"
#include "tests/conformance/sources.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace conformance {

// Long enough for a machine that does much else, and for a hand on a cable; no test waits so long when all is
// well.
inline constexpr std::chrono::seconds patience{30};

inline constexpr std::array allTools{
    korvane::ToolType::Biases,
    korvane::ToolType::TriggerIn,
    korvane::ToolType::AntiFlicker,
    korvane::ToolType::EventTrailFilter,
    korvane::ToolType::EventRateControl,
    korvane::ToolType::Roi,
    korvane::ToolType::Aps,
};

inline bool waitFor(const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

inline bool isInTimeOrder(const korvane::Event2D* begin, const korvane::Event2D* end)
{
    return std::is_sorted(begin, end, [](const auto& a, const auto& b) { return a.timestamp < b.timestamp; });
}

inline bool isInTimeOrder(const std::vector<korvane::Event2D>& events)
{
    return isInTimeOrder(events.data(), events.data() + events.size());
}

/// A backend among the registered ones, beside the one that reads the usual recordings.
class BackendUnderTest
{
public:
    explicit BackendUnderTest(std::shared_ptr<korvane::Backend> tested) : backend(std::move(tested))
    {
        korvane::registerBackend(recordings);
        korvane::registerBackend(backend);
    }
    ~BackendUnderTest()
    {
        korvane::unregisterBackend(backend);
        korvane::unregisterBackend(recordings);
    }
    BackendUnderTest(const BackendUnderTest&) = delete;
    BackendUnderTest& operator=(const BackendUnderTest&) = delete;

    korvane::Backend& operator*() const { return *backend; }
    korvane::Backend* operator->() const { return backend.get(); }

private:
    const std::shared_ptr<korvane::Backend> backend;
    const std::shared_ptr<korvane::Backend> recordings
        = std::make_shared<korvane::recording::RecordingBackend>();
};

/// All events of a recording, none when it is none.
inline std::vector<korvane::Event2D> eventsOf(const std::string& path)
{
    const auto reader = korvane::DvsFileReader::createFileReader(path);
    if (!reader || !reader->loadFile())
        return {};
    std::uint64_t end = 0;
    reader->getEndTimestamp(end);
    const auto events = reader->getEventsAt(0, end + 1);
    return events ? *events : std::vector<korvane::Event2D>();
}

/// What a test of one camera begins with.
class CameraTest : public testing::TestWithParam<CameraSource>
{
protected:
    bool isListed() const
    {
        const auto found = backend->cameraDescriptions();
        return std::any_of(found.begin(), found.end(),
                           [this](const auto& camera) { return camera.serial == serial; });
    }
    std::string target(const char* name) const
    {
        return QFile::encodeName(folder.filePath(QLatin1String(name))).toStdString();
    }
    static QString decoded(const std::string& path) { return QFile::decodeName(path.c_str()); }
    static void expectReasonableDescription(const korvane::CameraDescription& description)
    {
        EXPECT_FALSE(description.serial.empty());
        EXPECT_LE(description.serial.size(), 10U) << "the title bar has room for 10 characters";
        EXPECT_TRUE(description.product == "QRT4" || description.product == "Halvora"
                    || description.product == "Pellix")
            << "the program opens no " << description.product;
    }

    QTemporaryDir folder;
    const std::string serial = GetParam().serial;
    const BackendUnderTest backend{GetParam().backend()};
};

} // namespace conformance
