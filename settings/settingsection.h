#pragma once

#include "camera/driver/cameratool.h"
#include "settings/settingitembox.h"

#include <memory>

/// One section of a settings panel. GUI thread only.
struct SettingSection
{
    std::shared_ptr<korvane::CameraTool>
        tool; ///< of the last successful fill; kept when the section is cleared
    std::unique_ptr<SettingItemBox> box; ///< empty while there is nothing to set
};
