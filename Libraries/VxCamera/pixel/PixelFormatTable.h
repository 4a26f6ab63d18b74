#pragma once

#include "VxCamera/pixel/VxPixelFormat.h"

#include <span>

namespace pixel {

/// Every pixel format of the naming convention, in ascending order of code.
[[nodiscard]] std::span<const VxPixelFormat> FormatTable();

} // namespace pixel
