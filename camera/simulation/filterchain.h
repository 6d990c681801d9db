#pragma once

#include "camera/driver/event2d.h"
#include "camera/simulation/handover.h"

#include <cstddef>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace korvane::simulation {

/// One filter of a chain. The stream's thread alone.
class FilterStage
{
public:
    FilterStage() = default;
    virtual ~FilterStage() = default;
    FilterStage(const FilterStage&) = delete;
    FilterStage& operator=(const FilterStage&) = delete;

    /// Takes over what was set, once a batch; false when the filter is off.
    virtual bool prepare() = 0;
    /// See FilterChain.
    virtual std::size_t filter(Event2D* events, std::size_t count) = 0;
};

/// Runs a filter on what its tool hands over. A Filter has
/// - `struct Settings` with a member `bool enabled`, which is false in the default,
/// - `void configure(const Settings&)`, called when settings have changed and when the filter is switched on,
/// - `std::size_t filter(Event2D* events, std::size_t count)`, called only while it is on.
template <typename Filter>
class SettableStage : public FilterStage
{
public:
    using Settings = typename Filter::Settings;

    SettableStage(Filter filtering, std::shared_ptr<Handover<Settings>> source)
        : worker(std::move(filtering)), handover(std::move(source)), settings(handover->latest())
    {
        worker.configure(settings);
    }

    bool prepare() override
    {
        if (handover->take(settings))
            worker.configure(settings);
        return settings.enabled;
    }
    std::size_t filter(Event2D* events, std::size_t count) override { return worker.filter(events, count); }

private:
    Filter worker;
    const std::shared_ptr<Handover<Settings>> handover;
    Settings settings;
};

/// Passes batches of events through filters, one after the other. A filter moves the events that it keeps, in
/// their order, to the front of the batch and returns how many they are; it allocates nothing for an event. A
/// batch may be empty. A stream that no filter is on for is passed through untouched. The stream's thread
/// alone, once the filters are added.
class FilterChain
{
public:
    /// Below the filters that it has.
    void add(std::unique_ptr<FilterStage> stage) { stages.push_back(std::move(stage)); }
    /// The events that are left of a batch; valid until the next call and as long as the batch is.
    std::span<const Event2D> run(std::span<const Event2D> batch);

private:
    std::vector<std::unique_ptr<FilterStage>> stages;
    std::vector<Event2D> kept;
};

} // namespace korvane::simulation
