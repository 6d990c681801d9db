#pragma once

#include <string>

// How the names of camera parameters are shown, and how the shown form is reported back. Any thread; ASCII
// letters only, whatever the locale.

/// "bias_diff_on" as "Bias Diff On". Letters inside a word stay as they are.
std::string toDisplayName(std::string name);
/// "Bias Diff On" as "bias_diff_on". Not always the name it was shown for: "ROI_x0" comes back as "roi_x0".
std::string toParameterKey(std::string displayName);
