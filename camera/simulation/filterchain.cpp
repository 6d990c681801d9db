#include "camera/simulation/filterchain.h"

namespace korvane::simulation {

std::span<const Event2D> FilterChain::run(std::span<const Event2D> batch)
{
    bool copied = false;
    std::size_t count = batch.size();
    for (const auto& stage : stages) {
        if (!stage->prepare())
            continue;
        if (!copied) {
            kept.assign(batch.begin(), batch.end());
            copied = true;
        }
        count = stage->filter(kept.data(), count);
    }
    return copied ? std::span<const Event2D>(kept.data(), count) : batch;
}

} // namespace korvane::simulation
