#pragma once

#include "VxSimulator/picture/PictureView.h"

#include <cstdint>

namespace simulator {

enum class PictureOrientation : std::uint8_t {
    Upright,
    UpsideDown,            ///< top and bottom exchanged
    Mirrored,              ///< left and right exchanged
    UpsideDownAndMirrored, ///< turned by half
    Unknown,               ///< too small, or another picture
};

/// Looks for the two marks in a received picture that shows the whole test picture.
[[nodiscard]] PictureOrientation ReadOrientation(const PictureView& picture);

} // namespace simulator
