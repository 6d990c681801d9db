#include "camera/driver/fusioncamera.h"

#include <utility>

namespace korvane {

const std::shared_ptr<CameraTool> FusionCamera::getTool(ToolType type) const
{
    const auto found = tools.find(type);
    return found == tools.end() ? nullptr : found->second;
}

void FusionCamera::addTool(ToolType type, std::shared_ptr<CameraTool> tool)
{
    tools[type] = std::move(tool);
}

} // namespace korvane
