#pragma once

#include <cstdint>

namespace vxds {

// Codes of the pixel format naming convention that frame production tests for or asks for: fixed by the
// convention.
inline constexpr std::uint32_t kPixelBgr8 = 0x02180015;
inline constexpr std::uint32_t kPixelBgra8 = 0x02200017;

/// Order of the bytes in a packed 4:2:2 picture.
enum class Yuv422Layout {
    None, ///< no such picture
    Uyvy,
    Yuyv,
};

[[nodiscard]] constexpr Yuv422Layout LayoutOf(std::uint32_t pixelType)
{
    switch (pixelType) {
    case 0x0210001F: // YUV422_8_UYVY
    case 0x02100043: // YCbCr422_8_CbYCrY
    case 0x02100044: // YCbCr601_422_8_CbYCrY
    case 0x02100045: // YCbCr709_422_8_CbYCrY
        return Yuv422Layout::Uyvy;
    case 0x02100032: // YUV422_8
    case 0x0210003B: // YCbCr422_8
    case 0x0210003E: // YCbCr601_422_8
    case 0x02100041: // YCbCr709_422_8
        return Yuv422Layout::Yuyv;
    default:
        return Yuv422Layout::None;
    }
}

} // namespace vxds
