#pragma once

#include "camera/driver/eventtriggerin.h"
#include "camera/simulation/handover.h"
#include "camera/simulation/parametertool.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace korvane::simulation {

/// The trigger input of a camera, with a square wave connected to it: a rising edge at every multiple of its
/// period, a falling one half a period later. Edges arrive while the input is on. The stream's thread alone,
/// but for the tool.
class TriggerInput
{
public:
    /// In microseconds, at least 2.
    explicit TriggerInput(std::uint64_t period);

    std::shared_ptr<CameraTool> tool() const { return settings; }
    /// The edges that arrive until `until`, which never steps back, since the last call; valid until the next
    /// one.
    std::span<const EventTriggerIn> edgesUntil(std::uint64_t until);

private:
    const std::uint64_t period;
    const std::shared_ptr<Handover<bool>> enabled;
    const std::shared_ptr<ParameterTool> settings;
    bool isOn = false;
    std::uint64_t covered = 0; // microseconds
    std::vector<EventTriggerIn> edges;
};

} // namespace korvane::simulation
