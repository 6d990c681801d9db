#pragma once

#include "camera/driver/cameratool.h"
#include "camera/driver/tooltype.h"
#include "camera/recording/evtencoding.h"
#include "camera/simulation/eventstream.h"
#include "camera/simulation/filterchain.h"
#include "camera/simulation/handover.h"
#include "camera/simulation/parametertool.h"
#include "camera/simulation/triggerinput.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace korvane::simulation {

/// The settings tools of a camera, and what those among them do that work on its stream: between the sensor
/// and everything that takes its events, recorder and view alike. Tools are added while the camera is made;
/// process() belongs to the stream's thread.
class StreamTools
{
public:
    /// With the filters that every camera has.
    explicit StreamTools(recording::Geometry geometry);

    void add(ToolType type, std::shared_ptr<CameraTool> tool) { tools[type] = std::move(tool); }
    /// Adds a filter below those there are, and its tool. `read` makes settings of the tool's values, or
    /// nothing to refuse them; it may outlive the camera.
    template <typename Filter>
    void addFilter(ToolType type, Filter filter, std::vector<ToolParameter> table,
                   std::function<std::optional<typename Filter::Settings>(const ToolValues& values)> read,
                   ParameterTool::Refused refused = ParameterTool::Refused::Forgotten)
    {
        auto handover = std::make_shared<Handover<typename Filter::Settings>>();
        chain.add(std::make_unique<SettableStage<Filter>>(std::move(filter), handover));
        add(type,
            std::make_shared<ParameterTool>(
                std::move(table),
                [handover, read = std::move(read)](const ToolValues& wanted) {
                    const auto settings = read(wanted);
                    if (settings)
                        handover->set(*settings);
                    return settings.has_value();
                },
                refused));
    }

    /// Gives the camera a trigger input with a signal of this period, in microseconds.
    void addTriggerInput(std::uint64_t period);

    const std::map<ToolType, std::shared_ptr<CameraTool>>& all() const { return tools; }
    /// What the tools leave of a step and add to it; valid until the next call and as long as the step is.
    StreamStep process(const StreamStep& step);

private:
    std::map<ToolType, std::shared_ptr<CameraTool>> tools;
    FilterChain chain;
    std::optional<TriggerInput> triggerInput;
};

} // namespace korvane::simulation
