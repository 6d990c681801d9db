#include "camera/driver/apsfilereader.h"
#include "camera/driver/apsframe.h"
#include "camera/driver/backend.h"
#include "camera/driver/cameradescription.h"
#include "camera/driver/dvscameramanager.h"
#include "camera/driver/event2d.h"
#include "camera/driver/eventtriggerin.h"
#include "camera/driver/parameterinfo.h"
#include "camera/driver/streamtype.h"
#include "camera/driver/tooltype.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

using namespace korvane;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// --- records ---------------------------------------------------------------------------------------------

TEST(Event2D, HoldsColumnRowPolarityAndTimeInThisOrder)
{
    EXPECT_EQ(offsetof(Event2D, x), 0u);
    EXPECT_EQ(offsetof(Event2D, y), 2u);
    EXPECT_EQ(offsetof(Event2D, polarity), 4u);
    EXPECT_EQ(offsetof(Event2D, timestamp), 8u);
    EXPECT_EQ(sizeof(Event2D), 16u);
    EXPECT_TRUE((std::is_same_v<decltype(Event2D::x), std::uint16_t>));
    EXPECT_TRUE((std::is_same_v<decltype(Event2D::y), std::uint16_t>));
    EXPECT_TRUE((std::is_same_v<decltype(Event2D::polarity), std::uint8_t>));
    EXPECT_TRUE((std::is_same_v<decltype(Event2D::timestamp), std::uint64_t>));
    EXPECT_TRUE(std::is_trivially_copyable_v<Event2D>);
}

TEST(Event2D, IsBuiltFromColumnRowPolarityAndTimeOrAllZero)
{
    const Event2D event(1, 2, 3, 4);
    EXPECT_EQ(event.x, 1);
    EXPECT_EQ(event.y, 2);
    EXPECT_EQ(event.polarity, 3);
    EXPECT_EQ(event.timestamp, 4u);
    const Event2D zero;
    EXPECT_EQ(zero.x + zero.y + zero.polarity, 0);
    EXPECT_EQ(zero.timestamp, 0u);
    Event2D copy;
    copy = event;
    EXPECT_EQ(copy, event);
    EXPECT_NE(copy, zero);
}

TEST(EventTriggerIn, IsBuiltWithItsChannelFirstAndStoresItLast)
{
    EXPECT_EQ(offsetof(EventTriggerIn, polarity), 0u);
    EXPECT_EQ(offsetof(EventTriggerIn, timestamp), 8u);
    EXPECT_EQ(offsetof(EventTriggerIn, id), 16u);
    EXPECT_EQ(sizeof(EventTriggerIn), 24u);
    EXPECT_TRUE((std::is_same_v<decltype(EventTriggerIn::polarity), std::int16_t>));
    EXPECT_TRUE((std::is_same_v<decltype(EventTriggerIn::id), std::int16_t>));
    const EventTriggerIn trigger(5, 1, 99);
    EXPECT_EQ(trigger.id, 5);
    EXPECT_EQ(trigger.polarity, 1);
    EXPECT_EQ(trigger.timestamp, 99u);
    const EventTriggerIn zero;
    EXPECT_EQ(zero.id + zero.polarity, 0);
    EXPECT_EQ(zero.timestamp, 0u);
}

TEST(Records, BeginWithWhatUsersReadOfThem)
{
    EXPECT_EQ(offsetof(ApsFrame, pixels), 0u);
    EXPECT_GT(offsetof(ApsFrame, timestamp), 0u);
    const CameraDescription description{"serial", "product", "backend"};
    EXPECT_EQ(description.serial, "serial");
    EXPECT_EQ(description.product, "product");
    EXPECT_EQ(static_cast<const void*>(&description), static_cast<const void*>(&description.serial));
    EXPECT_LT(static_cast<const void*>(&description.serial), static_cast<const void*>(&description.product));
}

TEST(Records, EnumeratorsHaveTheirValues)
{
    EXPECT_EQ(static_cast<int>(STREAM_DVS), 0);
    EXPECT_EQ(static_cast<int>(STREAM_APS), 1);
    EXPECT_EQ(static_cast<int>(STREAM_FUSION), 2);
    EXPECT_EQ(static_cast<int>(ToolType::Biases), 0);
    EXPECT_EQ(static_cast<int>(ToolType::TriggerIn), 1);
    EXPECT_EQ(static_cast<int>(ToolType::AntiFlicker), 3);
    EXPECT_EQ(static_cast<int>(ToolType::EventTrailFilter), 4);
    EXPECT_EQ(static_cast<int>(ToolType::EventRateControl), 5);
    EXPECT_EQ(static_cast<int>(ToolType::Roi), 6);
    EXPECT_EQ(static_cast<int>(ToolType::Aps), 7);
    EXPECT_EQ(static_cast<int>(BasicParameterInfo::Integer), 0);
    EXPECT_EQ(static_cast<int>(BasicParameterInfo::Float), 1);
    EXPECT_EQ(static_cast<int>(BasicParameterInfo::Boolean), 2);
    EXPECT_EQ(static_cast<int>(BasicParameterInfo::Enumeration), 4);
}

TEST(Records, ReadersAreDestroyedThroughTheirBases)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<DvsFileReader>);
    EXPECT_TRUE(std::has_virtual_destructor_v<ApsFileReader>);
    EXPECT_TRUE(std::has_virtual_destructor_v<DvsCamera>);
    EXPECT_TRUE(std::has_virtual_destructor_v<FusionCamera>);
    EXPECT_TRUE(std::has_virtual_destructor_v<CameraTool>);
    EXPECT_TRUE(std::has_virtual_destructor_v<Backend>);
    EXPECT_FALSE((std::is_base_of_v<DvsCamera, FusionCamera>));
}

// --- doubles ---------------------------------------------------------------------------------------------

class PlainTool : public CameraTool
{
public:
    void getAllParameterInfo(std::map<std::string, BasicParameterInfo>&) override {}
    bool getEnumParameterInfo(std::string, EnumParameterInfo&) override { return false; }
    bool getBoolParameterInfo(std::string, BoolParameterInfo&) override { return false; }
    bool getFloatParameterInfo(std::string, FloatParameterInfo&) override { return false; }
    bool getIntParameterInfo(std::string, IntParameterInfo&) override { return false; }
    bool getBoolParameter(std::string, bool&) override { return false; }
    bool getIntParameter(std::string, int&) override { return false; }
    bool setEnumParameter(std::string, const std::string&) override { return false; }
    bool setBoolParameter(std::string, const bool&) override { return false; }
    bool setFloatParameter(std::string, const float&) override { return false; }
    bool setIntParameter(std::string, const int&) override { return false; }
};

class PlainDvsCamera : public DvsCamera
{
public:
    explicit PlainDvsCamera(std::string backendName) : madeBy(std::move(backendName))
    {
        addTool(ToolType::Roi, tool);
    }
    bool isConnected() override { return true; }
    void releaseStream(int) override {}
    bool getNextEventBatch(std::vector<Event2D>&) override { return false; }
    void setBatchTime(std::uint64_t) override {}
    int start() override { return 0; }
    void stop() override {}
    void startRecording(std::string) override {}
    void stopRecording() override {}
    RecorderState recorderState() override { return {}; }

    const std::string madeBy;
    const std::shared_ptr<CameraTool> tool = std::make_shared<PlainTool>();
};

class PlainFusionCamera : public FusionCamera
{
public:
    explicit PlainFusionCamera(std::string backendName)
    {
        dvsDescription = {"00000001", "Pellix", std::move(backendName)};
        addTool(ToolType::Aps, tool);
    }
    bool isConnected() override { return true; }
    void addEventsStreamHandleCallback(EventsCallback) override {}
    void addApsFrameCallback(ApsFrameCallback) override {}
    void start(STREAM_TYPE) override {}
    void stop(STREAM_TYPE) override {}
    void startRecording(std::string, STREAM_TYPE) override {}
    void stopRecording(STREAM_TYPE) override {}
    bool getEventFrameAt(std::shared_ptr<EventCountFrame>&, std::uint64_t) override { return false; }
    RecorderState recorderState() override { return {}; }

    const std::shared_ptr<CameraTool> tool = std::make_shared<PlainTool>();
};

class PlainDvsReader : public DvsFileReader
{
public:
    explicit PlainDvsReader(std::string backendName) : madeBy(std::move(backendName)) {}
    bool loadFile() override { return false; }
    void getStartTimestamp(std::uint64_t&) override {}
    void getEndTimestamp(std::uint64_t&) override {}
    bool isEnd() override { return true; }
    bool seekTime(std::uint64_t) override { return false; }
    Events getNextEvents(std::uint64_t) override { return nullptr; }
    Events getEventsAt(std::uint64_t, std::uint64_t) override { return nullptr; }
    Triggers getTriggersAt(std::uint64_t, std::uint64_t) override { return nullptr; }
    bool cutFile(std::uint64_t, std::uint64_t, std::string) override { return false; }
    bool exportVideo(std::uint64_t, std::uint64_t, std::string) override { return false; }

    const std::string madeBy;
};

class PlainApsReader : public ApsFileReader
{
public:
    explicit PlainApsReader(std::string backendName) : ApsFileReader(""), madeBy(std::move(backendName))
    {
        width = 3840;
        height = 2160;
    }
    bool loadFile() override { return false; }
    void getFrameIndex(std::vector<std::uint64_t>&) override {}
    bool getNextFrame(ApsFrame&) override { return false; }
    void seekFrame(std::uint64_t, ApsFrame&) override {}

    const std::string madeBy;
};

/// Offers whatever begins with its own name.
class PlainBackend : public Backend
{
public:
    explicit PlainBackend(std::string backendName, std::vector<CameraDescription> found = {})
        : ownName(std::move(backendName)), cameras(std::move(found))
    {
    }
    std::string name() const override { return ownName; }
    std::vector<CameraDescription> cameraDescriptions() override { return cameras; }
    std::shared_ptr<DvsCamera> openCamera(const std::string& serial) override
    {
        asked.push_back(serial);
        return opens(serial) ? std::make_shared<PlainDvsCamera>(ownName) : nullptr;
    }
    std::shared_ptr<FusionCamera> openFusionCamera(const std::string& serial) override
    {
        return opens(serial) ? std::make_shared<PlainFusionCamera>(ownName) : nullptr;
    }
    std::unique_ptr<DvsFileReader> createDvsFileReader(const std::string& path) override
    {
        return opens(path) ? std::make_unique<PlainDvsReader>(ownName) : nullptr;
    }
    std::unique_ptr<ApsFileReader> createApsFileReader(const std::string& path) override
    {
        return opens(path) ? std::make_unique<PlainApsReader>(ownName) : nullptr;
    }

    std::vector<std::string> asked;

private:
    bool opens(const std::string& what) const { return what == ownName || what == "any"; }

    const std::string ownName;
    const std::vector<CameraDescription> cameras;
};

class DummyBackend : public Backend
{
public:
    std::string name() const override { return "dummy"; }
};

/// Registers backends and takes them out again.
class DriverBoundary : public testing::Test
{
protected:
    ~DriverBoundary() override
    {
        for (const auto& backend : registered)
            unregisterBackend(backend);
        EXPECT_THAT(registeredBackends(), IsEmpty());
    }

    std::shared_ptr<PlainBackend> add(const std::string& name, std::vector<CameraDescription> cameras = {})
    {
        auto backend = std::make_shared<PlainBackend>(name, std::move(cameras));
        registered.push_back(backend);
        registerBackend(backend);
        return backend;
    }

    static std::vector<std::string> names()
    {
        std::vector<std::string> found;
        for (const auto& backend : registeredBackends())
            found.push_back(backend->name());
        return found;
    }

    std::vector<std::shared_ptr<Backend>> registered;
};

// --- registry --------------------------------------------------------------------------------------------

TEST_F(DriverBoundary, KeepsBackendsInTheOrderOfTheirRegistration)
{
    EXPECT_THAT(names(), IsEmpty());
    add("one");
    const auto two = add("two");
    add("three");
    EXPECT_THAT(names(), ElementsAre("one", "two", "three"));
    unregisterBackend(two);
    EXPECT_THAT(names(), ElementsAre("one", "three"));
    registerBackend(two);
    EXPECT_THAT(names(), ElementsAre("one", "three", "two"));
}

TEST_F(DriverBoundary, TakesNoEmptyBackendAndForgivesUnknownOnes)
{
    registerBackend(nullptr);
    EXPECT_THAT(registeredBackends(), IsEmpty());
    add("one");
    unregisterBackend(nullptr);
    unregisterBackend(std::make_shared<DummyBackend>());
    EXPECT_THAT(names(), ElementsAre("one"));
}

TEST_F(DriverBoundary, AListTakenBeforeStaysWhatItWas)
{
    const auto one = add("one");
    const auto list = registeredBackends();
    unregisterBackend(one);
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0]->name(), "one");
}

TEST_F(DriverBoundary, BackendsComeAndGoUnderThreads)
{
    add("steady");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int n = 0; n < 200; ++n) {
                const auto own = std::make_shared<PlainBackend>("own");
                registerBackend(own);
                EXPECT_TRUE(DvsFileReader::createFileReader("steady"));
                EXPECT_FALSE(registeredBackends().empty());
                unregisterBackend(own);
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_THAT(names(), ElementsAre("steady"));
}

TEST_F(DriverBoundary, ABackendOffersNothingByItself)
{
    DummyBackend backend;
    EXPECT_THAT(backend.cameraDescriptions(), IsEmpty());
    EXPECT_FALSE(backend.openCamera("x"));
    EXPECT_FALSE(backend.openFusionCamera("x"));
    EXPECT_FALSE(backend.createDvsFileReader("x"));
    EXPECT_FALSE(backend.createApsFileReader("x"));
}

// --- readers ---------------------------------------------------------------------------------------------

TEST_F(DriverBoundary, TheFirstBackendThatCanReadAFileReadsIt)
{
    EXPECT_FALSE(DvsFileReader::createFileReader("any"));
    EXPECT_FALSE(ApsFileReader::createFileReader("any"));
    add("one");
    add("two");
    const auto madeBy = [](const std::string& path) {
        const auto reader = DvsFileReader::createFileReader(path);
        const auto* plain = dynamic_cast<PlainDvsReader*>(reader.get());
        return plain ? plain->madeBy : std::string("nobody");
    };
    EXPECT_EQ(madeBy("any"), "one");
    EXPECT_EQ(madeBy("two"), "two");
    EXPECT_EQ(madeBy("neither"), "nobody");
    const auto aps = ApsFileReader::createFileReader("two");
    ASSERT_TRUE(aps);
    EXPECT_EQ(dynamic_cast<PlainApsReader&>(*aps).madeBy, "two");
    EXPECT_EQ(aps->getWidth(), 3840);
    EXPECT_EQ(aps->getHeight(), 2160);
    EXPECT_FALSE(ApsFileReader::createFileReader("neither"));
}

TEST_F(DriverBoundary, ReadersOutliveTheRegistrationOfTheirBackend)
{
    const auto one = add("one");
    const auto reader = DvsFileReader::createFileReader("one");
    unregisterBackend(one);
    EXPECT_FALSE(DvsFileReader::createFileReader("one"));
    ASSERT_TRUE(reader);
    EXPECT_TRUE(reader->isEnd());
}

// --- cameras ---------------------------------------------------------------------------------------------

TEST_F(DriverBoundary, ListsTheCamerasOfAllBackendsAndWhoFoundThem)
{
    DvsCameraManager manager;
    EXPECT_THAT(manager.getCameraDescs(), IsEmpty());
    add("one", {{"A", "QRT4", ""}, {"B", "Halvora", "wrong"}});
    add("two");
    add("three", {{"C", "Pellix", ""}});
    std::vector<std::string> found;
    for (const auto& description : manager.getCameraDescs())
        found.push_back(description.serial + " " + description.product + " " + description.backend);
    EXPECT_THAT(found, ElementsAre("A QRT4 one", "B Halvora one", "C Pellix three"));
}

TEST_F(DriverBoundary, OpensACameraWithTheFirstBackendThatHasIt)
{
    DvsCameraManager manager;
    EXPECT_FALSE(manager.openCamera("any"));
    EXPECT_FALSE(manager.openFusionCamera("any"));
    const auto one = add("one");
    const auto two = add("two");
    const auto three = add("three");
    const auto camera = std::dynamic_pointer_cast<PlainDvsCamera>(manager.openCamera("two"));
    ASSERT_TRUE(camera);
    EXPECT_EQ(camera->madeBy, "two");
    EXPECT_THAT(one->asked, ElementsAre("two"));
    EXPECT_THAT(two->asked, ElementsAre("two"));
    EXPECT_THAT(three->asked, IsEmpty());
    const auto fusion = manager.openFusionCamera("any");
    ASSERT_TRUE(fusion);
    EXPECT_EQ(fusion->getDvsDesc().backend, "one");
    EXPECT_FALSE(manager.openCamera("nobody's"));
    EXPECT_FALSE(manager.openFusionCamera("nobody's"));
}

TEST_F(DriverBoundary, CamerasGiveTheToolsTheyHave)
{
    const PlainDvsCamera camera("x");
    EXPECT_EQ(camera.getTool(ToolType::Roi), camera.tool);
    EXPECT_FALSE(camera.getTool(ToolType::Biases));
    const PlainFusionCamera fusion("x");
    EXPECT_EQ(fusion.getTool(ToolType::Aps), fusion.tool);
    EXPECT_FALSE(fusion.getTool(ToolType::Roi));
    EXPECT_EQ(fusion.getDvsDesc().product, "Pellix");
}

TEST_F(DriverBoundary, AFusionCameraCanBeCopied)
{
    const PlainFusionCamera camera("x");
    const PlainFusionCamera copy(camera);
    EXPECT_EQ(copy.getDvsDesc().serial, "00000001");
    EXPECT_EQ(copy.getTool(ToolType::Aps), camera.tool);
}

} // namespace
