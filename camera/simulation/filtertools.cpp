#include "camera/simulation/filtertools.h"

#include "camera/driver/tooltype.h"
#include "camera/simulation/flickerfilter.h"
#include "camera/simulation/parametertool.h"
#include "camera/simulation/ratefilter.h"
#include "camera/simulation/regionfilter.h"
#include "camera/simulation/streamtools.h"
#include "camera/simulation/trailfilter.h"

#include <QtGlobal>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korvane::simulation {

namespace {

using Integer = ToolParameter::Integer;
using Real = ToolParameter::Real;
using Switch = ToolParameter::Switch;
using Choice = ToolParameter::Choice;

constexpr int shortestThreshold = 100; // microseconds
constexpr int leastLimit = 100; // thousand events per second
constexpr int greatestLimit = 100'000;

const std::string stc = "STC";
const std::string stcWithoutTrail = "STC without trail";
const std::string bandPass = "Band-pass";

TrailFilter::Mode trailModeOf(const std::string& option)
{
    if (option == stc)
        return TrailFilter::Mode::Stc;
    return option == stcWithoutTrail ? TrailFilter::Mode::StcWithoutTrail : TrailFilter::Mode::Trail;
}

void reportDropped(const RateFilter::Count& count)
{
    const std::uint64_t all = count.passed + count.dropped;
    qInfo("Event rate control dropped %llu of %llu events within a second.",
          static_cast<unsigned long long>(count.dropped), static_cast<unsigned long long>(all));
}

} // namespace

void addRegionOfInterest(StreamTools& tools, recording::Geometry geometry)
{
    const int columns = geometry.width;
    const int rows = geometry.height;
    std::vector<ToolParameter> table{
        {"enable",
         QT_TRANSLATE_NOOP("CameraTools", "Delivers only the events of a window of the sensor."),
         Switch{},
         {}},
        {"exclude",
         QT_TRANSLATE_NOOP("CameraTools", "Delivers the events outside the window instead."),
         Switch{},
         {}},
        {"x", QT_TRANSLATE_NOOP("CameraTools", "First column of the window, which must lie on the sensor."),
         Integer{0, columns - 1, 0}, "px"},
        {"y", QT_TRANSLATE_NOOP("CameraTools", "First row of the window, which must lie on the sensor."),
         Integer{0, rows - 1, 0}, "px"},
        {"width", QT_TRANSLATE_NOOP("CameraTools", "Width of the window, which must lie on the sensor."),
         Integer{1, columns, columns}, "px"},
        {"height", QT_TRANSLATE_NOOP("CameraTools", "Height of the window, which must lie on the sensor."),
         Integer{1, rows, rows}, "px"},
    };
    const auto read = [columns, rows](const ToolValues& wanted) -> std::optional<RegionFilter::Settings> {
        const int x = wanted.integer("x");
        const int y = wanted.integer("y");
        const int width = wanted.integer("width");
        const int height = wanted.integer("height");
        if (x + width > columns || y + height > rows)
            return std::nullopt;
        const auto pixels = [](int number) { return static_cast<std::uint16_t>(number); };
        return RegionFilter::Settings{wanted.isOn("enable"),
                                      wanted.isOn("exclude"),
                                      {pixels(x), pixels(y), pixels(width), pixels(height)}};
    };
    tools.addFilter<RegionFilter>(ToolType::Roi, RegionFilter(), std::move(table), read,
                                  ParameterTool::Refused::Waiting);
}

void addEventTrailFilter(StreamTools& tools, recording::Geometry geometry)
{
    std::vector<ToolParameter> table{
        {"enable",
         QT_TRANSLATE_NOOP("CameraTools",
                           "Thins out the bursts of equal events that edges cause at each pixel."),
         Switch{},
         {}},
        {"mode",
         QT_TRANSLATE_NOOP(
             "CameraTools",
             "What is kept of a burst: its first event, all but the first, or only the second."),
         Choice{{"Trail", stc, stcWithoutTrail}},
         {}},
        {"threshold", QT_TRANSLATE_NOOP("CameraTools", "Longest time between two events of a burst."),
         Integer{shortestThreshold, static_cast<int>(TrailFilter::longestThreshold), 10'000}, "µs"},
    };
    const auto read = [](const ToolValues& wanted) -> std::optional<TrailFilter::Settings> {
        return TrailFilter::Settings{wanted.isOn("enable"), trailModeOf(wanted.option("mode")),
                                     static_cast<std::uint32_t>(wanted.integer("threshold"))};
    };
    tools.addFilter<TrailFilter>(ToolType::EventTrailFilter, TrailFilter(geometry.width, geometry.height),
                                 std::move(table), read);
}

void addAntiFlicker(StreamTools& tools, recording::Geometry geometry)
{
    const FlickerFilter::Settings standard;
    std::vector<ToolParameter> table{
        {"enable",
         QT_TRANSLATE_NOOP("CameraTools", "Removes the events of flickering lights and keeps motion."),
         Switch{},
         {}},
        {"mode",
         QT_TRANSLATE_NOOP("CameraTools",
                           "Band-stop removes what flickers in the band, band-pass all the rest."),
         Choice{{"Band-stop", bandPass}},
         {}},
        {"lower_frequency",
         QT_TRANSLATE_NOOP("CameraTools",
                           "Lower end of the band. Lamps flicker at twice the mains frequency."),
         Real{FlickerFilter::lowestFrequency, FlickerFilter::highestFrequency, standard.lowFrequency}, "Hz"},
        {"upper_frequency",
         QT_TRANSLATE_NOOP("CameraTools", "Upper end of the band, not below its lower end."),
         Real{FlickerFilter::lowestFrequency, FlickerFilter::highestFrequency, standard.highFrequency}, "Hz"},
    };
    const auto read = [](const ToolValues& wanted) -> std::optional<FlickerFilter::Settings> {
        const float low = wanted.real("lower_frequency");
        const float high = wanted.real("upper_frequency");
        if (low > high)
            return std::nullopt;
        const auto mode = wanted.option("mode") == bandPass ? FlickerFilter::Mode::BandPass
                                                            : FlickerFilter::Mode::BandStop;
        return FlickerFilter::Settings{wanted.isOn("enable"), mode, low, high};
    };
    tools.addFilter<FlickerFilter>(ToolType::AntiFlicker, FlickerFilter(geometry.width, geometry.height),
                                   std::move(table), read, ParameterTool::Refused::Waiting);
}

void addEventRateControl(StreamTools& tools)
{
    const RateFilter::Settings standard;
    std::vector<ToolParameter> table{
        {"enable",
         QT_TRANSLATE_NOOP("CameraTools", "Holds the event rate at its limit by dropping events evenly."),
         Switch{},
         {}},
        {"rate_limit",
         QT_TRANSLATE_NOOP("CameraTools", "The most events delivered, in thousands per second."),
         Integer{leastLimit, greatestLimit, static_cast<int>(standard.limit / 1000)}, "kev/s"},
    };
    const auto read = [](const ToolValues& wanted) -> std::optional<RateFilter::Settings> {
        return RateFilter::Settings{wanted.isOn("enable"),
                                    static_cast<std::uint32_t>(wanted.integer("rate_limit")) * 1000U};
    };
    tools.addFilter<RateFilter>(ToolType::EventRateControl, RateFilter(&reportDropped), std::move(table),
                                read);
}

} // namespace korvane::simulation
