#include "camera/simulation/eventgenerator.h"
#include "camera/simulation/sensorstream.h"
#include "camera/simulation/streamtools.h"
#include "camera/simulation/streetscene.h"
#include "tests/support/capturedmessages.h"
#include "tests/support/recordprinters.h"
#include "tests/unit/simulation_filtering.h"
#include "tests/unit/simulation_testscenes.h"

#include <QString>
#include <QStringList>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace korvane;
using namespace korvane::simulation;
using namespace korvane::simulation::testing;

/// Steps of a stream as a sensor makes them.
using Steps = std::vector<std::vector<Event2D>>;

Steps stepsOf(std::unique_ptr<Scene> scene, int count)
{
    SensorStream sensor(std::move(scene), SensorParameters(), 2);
    Steps steps;
    for (int i = 0; i < count; ++i) {
        const auto events = sensor.generateStep().events;
        steps.emplace_back(events.begin(), events.end());
    }
    return steps;
}

/// Stripes that pass a small sensor, with bursts of events at every edge.
const Steps& stripes()
{
    static const Steps steps = stepsOf(
        std::make_unique<FormulaScene>(128, 64, 8,
                                       [](double column, double row, double seconds) {
                                           return std::sin(2.0 * std::numbers::pi
                                                           * (column / 32.0 + row / 90.0 - 4.0 * seconds));
                                       }),
        70);
    return steps;
}

constexpr recording::Geometry smallSensor{128, 64};
constexpr recording::Geometry wholeSensor{1280, 720};

/// The tools of a camera and what they leave of its stream.
class FilteredCamera
{
public:
    explicit FilteredCamera(recording::Geometry geometry = smallSensor, const Steps& made = stripes())
        : steps(made), tools(geometry)
    {
    }

    CameraTool& tool(ToolType type) { return *tools.all().at(type); }
    /// The next so many steps as they are delivered.
    std::vector<Event2D> next(std::size_t count)
    {
        std::vector<Event2D> events;
        for (const std::size_t end = done + count; done < end; ++done) {
            const StreamStep step = tools.process({steps.at(done), {}, 0});
            events.insert(events.end(), step.events.begin(), step.events.end());
        }
        return events;
    }

private:
    const Steps& steps;
    std::size_t done = 0;
    StreamTools tools;
};

/// The next so many steps as they are made.
std::vector<Event2D> made(const Steps& steps, std::size_t from, std::size_t count)
{
    std::vector<Event2D> events;
    for (std::size_t i = from; i < from + count; ++i)
        events.insert(events.end(), steps.at(i).begin(), steps.at(i).end());
    return events;
}

constexpr ToolType filterTypes[]
    = {ToolType::Roi, ToolType::EventTrailFilter, ToolType::AntiFlicker, ToolType::EventRateControl};

double share(std::size_t part, std::size_t whole)
{
    return static_cast<double>(part) / static_cast<double>(whole);
}

template <typename Rule>
std::vector<Event2D> those(const std::vector<Event2D>& events, Rule rule)
{
    std::vector<Event2D> found;
    std::copy_if(events.begin(), events.end(), std::back_inserter(found), rule);
    return found;
}

bool insideTestWindow(const Event2D& event)
{
    return event.x >= 30 && event.x < 70 && event.y >= 20 && event.y < 50;
}

void setTestWindow(CameraTool& roi)
{
    ASSERT_TRUE(roi.setIntParameter("width", 40));
    ASSERT_TRUE(roi.setIntParameter("height", 30));
    ASSERT_TRUE(roi.setIntParameter("x", 30));
    ASSERT_TRUE(roi.setIntParameter("y", 20));
}

using Window = std::array<int, 4>;
const std::array<std::string, 4> windowNames{"x", "y", "width", "height"};

Window windowOf(CameraTool& roi)
{
    Window window{};
    for (std::size_t i = 0; i < window.size(); ++i)
        EXPECT_TRUE(roi.getIntParameter(windowNames[i], window[i]));
    return window;
}

} // namespace

TEST(FilterTools, SwitchedOffTheyLeaveTheStreamAsItIs)
{
    EXPECT_TRUE(FilteredCamera().next(20) == made(stripes(), 0, 20));
}

TEST(FilterTools, SwitchedOffAgainTheyLeaveTheStreamAsItIs)
{
    FilteredCamera camera;
    for (const ToolType type : filterTypes)
        ASSERT_TRUE(camera.tool(type).setBoolParameter("enable", true));
    setTestWindow(camera.tool(ToolType::Roi));
    EXPECT_LT(camera.next(20).size(), made(stripes(), 0, 20).size() / 2);
    for (const ToolType type : filterTypes)
        ASSERT_TRUE(camera.tool(type).setBoolParameter("enable", false));
    EXPECT_TRUE(camera.next(20) == made(stripes(), 20, 20));
}

TEST(FilterTools, OnlyEventsInsideTheRegionArriveOrOutsideIt)
{
    FilteredCamera camera;
    CameraTool& roi = camera.tool(ToolType::Roi);
    setTestWindow(roi);
    // Set but not switched on.
    EXPECT_TRUE(camera.next(10) == made(stripes(), 0, 10));

    ASSERT_TRUE(roi.setBoolParameter("enable", true));
    auto all = made(stripes(), 10, 10);
    const auto inside = those(all, &insideTestWindow);
    EXPECT_NEAR(share(inside.size(), all.size()), 40.0 * 30.0 / (128.0 * 64.0), 0.03);
    EXPECT_TRUE(camera.next(10) == inside);

    ASSERT_TRUE(roi.setBoolParameter("exclude", true));
    all = made(stripes(), 20, 10);
    EXPECT_TRUE(camera.next(10) == those(all, [](const Event2D& event) { return !insideTestWindow(event); }));
}

TEST(FilterTools, CoordinatesThatMakeNoWindowOnTheSensorAreRefused)
{
    FilteredCamera camera(wholeSensor);
    CameraTool& roi = camera.tool(ToolType::Roi);
    const Window whole{0, 0, 1280, 720};
    EXPECT_EQ(windowOf(roi), whole);
    for (const auto& [name, value] : {std::pair{"x", -1},
                                      {"x", 1280},
                                      {"x", 1},
                                      {"y", 720},
                                      {"y", 719},
                                      {"width", 0},
                                      {"width", 1281},
                                      {"height", 0},
                                      {"height", 721}}) {
        EXPECT_FALSE(roi.setIntParameter(name, value)) << name << ' ' << value;
        EXPECT_EQ(windowOf(roi), whole);
        EXPECT_TRUE(roi.setIntParameter("x", 0) || roi.setIntParameter("y", 0));
    }
    EXPECT_FALSE(roi.setIntParameter("z", 1));
    EXPECT_FALSE(roi.setBoolParameter("x", true));
}

TEST(FilterTools, NumbersOfAWindowMayBeEnteredInAnyOrder)
{
    // A whole sensor, its far corner, a strip, a pixel: from each to each in every order of its numbers.
    const std::vector<Window> windows{
        {0, 0, 1280, 720}, {1000, 500, 280, 220}, {0, 300, 1280, 20}, {1279, 719, 1, 1}, {640, 0, 100, 720}};
    FilteredCamera camera(wholeSensor);
    CameraTool& roi = camera.tool(ToolType::Roi);
    std::array<std::size_t, 4> order{0, 1, 2, 3};
    for (const Window& from : windows) {
        for (const Window& to : windows) {
            do {
                bool accepted = false;
                for (const Window& entered : {from, to}) {
                    for (const std::size_t i : order)
                        accepted = roi.setIntParameter(windowNames[i], entered[i]);
                    // The last answer speaks for all that was entered.
                    ASSERT_TRUE(accepted);
                    ASSERT_EQ(windowOf(roi), entered);
                }
            } while (std::next_permutation(order.begin(), order.end()));
        }
    }
}

TEST(FilterTools, ANumberThatWaitsForOthersDoesNotKeepASwitchFromActing)
{
    FilteredCamera camera;
    CameraTool& roi = camera.tool(ToolType::Roi);
    ASSERT_FALSE(roi.setIntParameter("x", 64));
    EXPECT_TRUE(roi.setBoolParameter("enable", true));
    EXPECT_EQ(windowOf(roi), (Window{0, 0, 128, 64}));
    EXPECT_FALSE(roi.setIntParameter("y", 0));
    EXPECT_TRUE(roi.setIntParameter("width", 64));
    EXPECT_EQ(windowOf(roi), (Window{64, 0, 64, 64}));
    const auto events = camera.next(5);
    ASSERT_FALSE(events.empty());
    EXPECT_TRUE(std::all_of(events.begin(), events.end(), [](const Event2D& e) { return e.x >= 64; }));
}

TEST(FilterTools, TheTrailFiltersModesCutTheTrailBehindAnEdge)
{
    constexpr std::uint64_t thresholdUs = 25'000;
    // How many events follow one of their pixel and polarity within the threshold.
    const auto followers = [](const std::vector<Event2D>& events) {
        std::vector<Event2D> last(std::size_t{smallSensor.width} * smallSensor.height);
        std::size_t found = 0;
        for (const Event2D& event : events) {
            Event2D& before = last[event.y * std::size_t{smallSensor.width} + event.x];
            if (before.timestamp > 0 && before.polarity == event.polarity
                && event.timestamp - before.timestamp <= thresholdUs)
                ++found;
            before = event;
        }
        return found;
    };
    const auto filteredBy = [](const char* mode) {
        FilteredCamera camera;
        CameraTool& filter = camera.tool(ToolType::EventTrailFilter);
        EXPECT_TRUE(filter.setIntParameter("threshold", thresholdUs));
        EXPECT_TRUE(filter.setEnumParameter("mode", mode));
        EXPECT_TRUE(filter.setBoolParameter("enable", true));
        return camera.next(60);
    };
    const auto plain = made(stripes(), 0, 60);
    const std::size_t trail = followers(plain);
    EXPECT_GT(share(trail, plain.size()), 0.7);

    const auto first = filteredBy("Trail");
    EXPECT_EQ(first.size(), plain.size() - trail);
    EXPECT_EQ(followers(first), 0U);
    EXPECT_EQ(filteredBy("STC").size(), trail);
    const auto second = filteredBy("STC without trail");
    EXPECT_LE(second.size(), first.size());
    EXPECT_GT(second.size(), first.size() / 2);
    EXPECT_LT(share(followers(second), second.size()), 0.02);
}

/// How many events a street's lamp has, and how many everything else, with the filter set in some way.
std::pair<double, double> lampAndMotion(const Steps& street, const std::function<void(CameraTool&)>& set)
{
    FilteredCamera camera(wholeSensor, street);
    set(camera.tool(ToolType::AntiFlicker));
    const auto events = camera.next(street.size());
    const auto onLamp = [](const Event2D& event) {
        return event.x >= 144 && event.x < 176 && event.y >= 56 && event.y < 88;
    };
    const auto lamp = static_cast<double>(std::count_if(events.begin(), events.end(), onLamp));
    return {lamp, static_cast<double>(events.size()) - lamp};
}

TEST(FilterTools, AntiFlickerRemovesTheLampAndLeavesMotion)
{
    const Steps street = stepsOf(std::make_unique<StreetScene>(2, 4e6), 50);
    const auto [lamp, motion] = lampAndMotion(street, [](CameraTool&) {});
    EXPECT_GT(lamp, 50'000.0);
    EXPECT_GT(motion, 2e6);

    const auto [lampLeft, motionLeft] = lampAndMotion(
        street, [](CameraTool& filter) { EXPECT_TRUE(filter.setBoolParameter("enable", true)); });
    EXPECT_LE(lampLeft, 0.1 * lamp);
    EXPECT_GE(motionLeft, 0.98 * motion);

    const auto [lampBeyond, motionBeyond] = lampAndMotion(street, [](CameraTool& filter) {
        EXPECT_TRUE(filter.setFloatParameter("lower_frequency", 130.0F));
        EXPECT_TRUE(filter.setBoolParameter("enable", true));
    });
    EXPECT_GE(lampBeyond, 0.98 * lamp);
    EXPECT_GE(motionBeyond, 0.98 * motion);

    const auto [lampPassed, motionPassed] = lampAndMotion(street, [](CameraTool& filter) {
        EXPECT_TRUE(filter.setEnumParameter("mode", "Band-pass"));
        EXPECT_TRUE(filter.setBoolParameter("enable", true));
    });
    EXPECT_EQ(lampPassed, lamp - lampLeft);
    EXPECT_EQ(motionPassed, motion - motionLeft);
}

TEST(FilterTools, ABandWhoseLowerEndIsAboveItsUpperOneIsRefused)
{
    FilteredCamera camera(wholeSensor);
    CameraTool& filter = camera.tool(ToolType::AntiFlicker);
    const auto band = [&filter] {
        FloatParameterInfo low;
        FloatParameterInfo high;
        EXPECT_TRUE(filter.getFloatParameterInfo("lower_frequency", low));
        EXPECT_TRUE(filter.getFloatParameterInfo("upper_frequency", high));
        return std::pair{low.value, high.value};
    };
    const auto standard = band();
    EXPECT_FALSE(filter.setFloatParameter("lower_frequency", 600.0F));
    EXPECT_EQ(band(), standard);
    // It waits for the other end.
    EXPECT_TRUE(filter.setFloatParameter("upper_frequency", 700.0F));
    EXPECT_EQ(band(), (std::pair{600.0F, 700.0F}));
    EXPECT_TRUE(filter.setFloatParameter("upper_frequency", 600.0F));
    for (const float beyond : {9.0F, 1001.0F, -50.0F})
        EXPECT_FALSE(filter.setFloatParameter("lower_frequency", beyond));
    EXPECT_FALSE(filter.setEnumParameter("mode", "band-stop"));
    EXPECT_EQ(band(), (std::pair{600.0F, 600.0F}));
}

TEST(FilterTools, RateControlHoldsTheRateAndTellsWhatItDropped)
{
    constexpr std::uint64_t lengthUs = 65 * EventGenerator::stepUs;
    const auto plain = made(stripes(), 0, 65);
    const double before = static_cast<double>(plain.size()) * 1e6 / lengthUs;
    EXPECT_GT(before, 450e3);
    FilteredCamera camera;
    CameraTool& control = camera.tool(ToolType::EventRateControl);
    ASSERT_TRUE(control.setIntParameter("rate_limit", 200));
    ASSERT_TRUE(control.setBoolParameter("enable", true));
    const CapturedMessages log;
    const auto left = camera.next(65);
    const auto [fewest, most] = ratesOf(left, 0, lengthUs);
    EXPECT_GE(fewest, 0.95 * 200e3);
    EXPECT_LE(most, 1.05 * 200e3);

    const auto inFirstSecond = [](const Event2D& event) { return event.timestamp < 1'000'000; };
    const std::size_t all = those(plain, inFirstSecond).size();
    const std::size_t passed = those(left, inFirstSecond).size();
    const QString line = QStringLiteral("Event rate control dropped %1 of %2 events within a second.");
    EXPECT_EQ(log.of(QtInfoMsg), QStringList{line.arg(all - passed).arg(all)});
}

TEST(FilterTools, RateControlThinsEveryPartOfThePictureAlike)
{
    const auto partsOf = [](const std::vector<Event2D>& events) {
        std::array<std::size_t, 16> parts{};
        for (const Event2D& event : events)
            ++parts[event.y / 16U * 4 + event.x / 32U];
        return parts;
    };
    const auto plain = made(stripes(), 0, 60);
    FilteredCamera camera;
    ASSERT_TRUE(camera.tool(ToolType::EventRateControl).setIntParameter("rate_limit", 100));
    ASSERT_TRUE(camera.tool(ToolType::EventRateControl).setBoolParameter("enable", true));
    const auto left = camera.next(60);
    const auto before = partsOf(plain);
    const auto after = partsOf(left);
    const double even = share(left.size(), plain.size());
    for (std::size_t i = 0; i < before.size(); ++i)
        EXPECT_NEAR(share(after[i], before[i]), even, 0.1 * even) << "part " << i;
}

TEST(FilterTools, RefuseWhatTheyDoNotKnowAndKeepWhatWasSet)
{
    FilteredCamera camera(wholeSensor);
    CameraTool& trail = camera.tool(ToolType::EventTrailFilter);
    EXPECT_TRUE(trail.setIntParameter("threshold", 2500));
    EXPECT_FALSE(trail.setIntParameter("threshold", 99));
    EXPECT_FALSE(trail.setIntParameter("threshold", 100'001));
    EXPECT_FALSE(trail.setEnumParameter("mode", "Comet"));
    int threshold = 0;
    EXPECT_TRUE(trail.getIntParameter("threshold", threshold));
    EXPECT_EQ(threshold, 2500);
    CameraTool& control = camera.tool(ToolType::EventRateControl);
    EXPECT_FALSE(control.setIntParameter("rate_limit", 99));
    EXPECT_FALSE(control.setIntParameter("rate_limit", 100'001));
    EXPECT_FALSE(control.setFloatParameter("rate_limit", 500.0F));
}
