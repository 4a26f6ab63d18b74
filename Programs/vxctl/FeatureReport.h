#pragma once

#include "vxctl/FeatureFacts.h"

#include <string>
#include <vector>

namespace vxctl {

/// Features below their categories, one a line:
///
///     ImageFormatControl
///       Width    Integer  rw  640        4 to 4096 in steps of 4
[[nodiscard]] std::string FeatureTree(const std::vector<FeatureFacts>& features);

/// Everything known of one feature, one fact a line.
[[nodiscard]] std::string FeatureDetails(const FeatureFacts& feature);

/// An array of objects with everything known.
[[nodiscard]] std::string FeaturesJson(const std::vector<FeatureFacts>& features);

/// What the feature accepts: "4 to 4096 in steps of 4", "Off, Once, Continuous"; empty when nothing is known.
[[nodiscard]] std::string AcceptedText(const FeatureFacts& feature);

} // namespace vxctl
