#pragma once

#include "VxCamera/pixel/VxPixelFormat.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace pixel {

/// Turns a row of packed or deep components into one byte per component: the most significant bits of deep
/// ones, and shallow ones stretched to 0..255. Writes as many components as the destination has.
using UnpackKernel = void (*)(std::span<const std::uint8_t> packed, std::span<std::uint8_t> components);

/// How a row gets to one byte per component.
struct Unpacking {
    UnpackKernel kernel; ///< null: it is there already
};

/// @return  empty for a packing or depth that is not read
[[nodiscard]] std::optional<Unpacking> UnpackingOf(VxPixelPacking packing, unsigned bitsPerComponent);

} // namespace pixel
