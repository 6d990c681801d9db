#include "camera/simulation/triggerinput.h"

#include <QtGlobal>

#include <string>
#include <utility>
#include <vector>

namespace korvane::simulation {

namespace {

const std::string enable = "enable";
constexpr std::int16_t channel = 0;
constexpr std::int16_t rising = 1;
constexpr std::int16_t falling = 0;

std::shared_ptr<ParameterTool> makeTool(std::shared_ptr<Handover<bool>> enabled)
{
    std::vector<ToolParameter> table{
        {enable,
         QT_TRANSLATE_NOOP("CameraTools", "Records the edges of the signal at the trigger input."),
         ToolParameter::Switch{},
         {}},
    };
    return std::make_shared<ParameterTool>(std::move(table),
                                           [enabled = std::move(enabled)](const ToolValues& wanted) {
                                               enabled->set(wanted.isOn(enable));
                                               return true;
                                           });
}

} // namespace

TriggerInput::TriggerInput(std::uint64_t wavePeriod)
    : period(wavePeriod), enabled(std::make_shared<Handover<bool>>(false)), settings(makeTool(enabled))
{
}

std::span<const EventTriggerIn> TriggerInput::edgesUntil(std::uint64_t until)
{
    enabled->take(isOn);
    edges.clear();
    const std::uint64_t from = std::exchange(covered, until);
    if (!isOn)
        return edges;
    for (std::uint64_t start = from / period * period; start < until; start += period) {
        const std::uint64_t middle = start + period / 2;
        if (start >= from)
            edges.emplace_back(channel, rising, start);
        if (middle >= from && middle < until)
            edges.emplace_back(channel, falling, middle);
    }
    return edges;
}

} // namespace korvane::simulation
