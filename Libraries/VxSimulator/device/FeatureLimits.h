#pragma once

#include "VxSimulator/device/DeviceMemory.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace simulator {

/// Whether frames are being acquired; size and format cannot be changed meanwhile.
enum class AcquisitionState { Idle, Active };

/// Judges what an application wants to write into the camera's own registers (not the bootstrap registers).
/// @param memory  as it is before
/// @return  InvalidParameter for a value outside the feature's limits, AccessDenied for a feature that is
/// locked now
[[nodiscard]] gvcp::Status CheckFeatures(const DeviceMemory& memory, std::uint32_t address,
                                         std::span<const std::byte> bytes, AcquisitionState state);

} // namespace simulator
