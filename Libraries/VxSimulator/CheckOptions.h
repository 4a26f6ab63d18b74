#pragma once

#include "VxBase/VxResult.h"

#include "VxSimulator/VxSimulatorOptions.h"

namespace simulator {

/// @return  INVALID_PARAMETER with a sentence that names the first option that cannot be, and what can
[[nodiscard]] VxResult CheckOptions(const VxSimulatorOptions& options);

} // namespace simulator
