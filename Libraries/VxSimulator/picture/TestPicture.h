#pragma once

#include "VxSimulator/picture/PictureView.h"
#include "VxSimulator/picture/TestScene.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/// The simulated camera's picture, for those who check what arrived.
namespace simulator {

/// @param frameNumber  as in the picture's strip; its low 32 bits are shown there
/// @param pixelFormat  PFNC code
/// @return  exactly the bytes that the camera sends for this frame, without padding; empty for a format that
///          the camera does not have, for a size of 0, and for an odd width in a format that shares colour
[[nodiscard]] std::vector<std::byte> TestPicture(std::uint64_t frameNumber, std::uint32_t widthPx,
                                                 std::uint32_t heightPx, std::uint32_t pixelFormat,
                                                 TestPattern pattern = TestPattern::ColorBars);

/// What the same frame looks like after a conversion to BGR8: blue, green, red, top-down, without padding.
///
/// Mono8, RGB8, BGR8, RGBa8 and BGRa8 give this picture exactly. Bayer and YUV give it only where IsFlat says
/// so (YUV within rounding); elsewhere it depends on who converts.
/// @return  empty where TestPicture is
[[nodiscard]] std::vector<std::byte> TestPictureBgr(std::uint64_t frameNumber, std::uint32_t widthPx,
                                                    std::uint32_t heightPx, std::uint32_t pixelFormat);

/// @return  whether all pixels not farther than radiusPx from this one, to the sides and diagonally, are
///          inside the picture and have its colour
[[nodiscard]] bool IsFlat(std::uint64_t frameNumber, std::uint32_t widthPx, std::uint32_t heightPx,
                          std::uint32_t xPx, std::uint32_t yPx, std::uint32_t radiusPx);

} // namespace simulator
