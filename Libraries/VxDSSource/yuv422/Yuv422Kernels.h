#pragma once

#include <cstddef>
#include <cstdint>

namespace vxds {

/// Converts pixels from the start of a row on, as many as whole registers hold.
/// @param bgr    3 bytes a pixel
/// @param yuy2   2 bytes a pixel
/// @return  how many pixels were converted: an even number
using Yuv422Kernel = std::size_t (*)(const std::uint8_t* bgr, std::uint8_t* yuy2, std::size_t widthPx);

// Each is defined in the file named after its set, and run only where the set is available.
[[nodiscard]] std::size_t Yuv422WithSse41(const std::uint8_t* bgr, std::uint8_t* yuy2, std::size_t widthPx);
[[nodiscard]] std::size_t Yuv422WithAvx2(const std::uint8_t* bgr, std::uint8_t* yuy2, std::size_t widthPx);
[[nodiscard]] std::size_t Yuv422WithAvx512(const std::uint8_t* bgr, std::uint8_t* yuy2, std::size_t widthPx);

} // namespace vxds
