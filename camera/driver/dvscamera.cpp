#include "camera/driver/dvscamera.h"

#include <utility>

namespace korvane {

const std::shared_ptr<CameraTool> DvsCamera::getTool(ToolType type) const
{
    const auto found = tools.find(type);
    return found == tools.end() ? nullptr : found->second;
}

void DvsCamera::addTool(ToolType type, std::shared_ptr<CameraTool> tool)
{
    tools[type] = std::move(tool);
}

} // namespace korvane
