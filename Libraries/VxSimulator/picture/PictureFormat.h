#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace simulator {

/// How the pixels of a format lie in memory.
enum class PixelLayout : std::uint8_t {
    Grey,
    BayerGR, ///< named after the first two pixels of the first line
    BayerRG,
    BayerGB,
    BayerBG,
    Rgb,
    Bgr,
    Rgba,
    Bgra,
    Yuyv,
    Uyvy,
};

/// A pixel format that the simulated camera can send: 8 bits per component.
struct PictureFormat {
    std::string_view name; ///< as in the camera's feature list
    std::uint32_t code;    ///< PFNC
    PixelLayout layout;
    std::uint32_t bytesPerPixel;
};

/// @return  all of them, in the order in which the camera lists them
[[nodiscard]] std::span<const PictureFormat> PictureFormats();

/// @return  the format, or null when the simulated camera does not have it
[[nodiscard]] const PictureFormat* FindPictureFormat(std::uint32_t code);
[[nodiscard]] const PictureFormat* FindPictureFormat(std::string_view name);

/// @return  whether two neighbouring pixels share their colour, so that the width must be even
[[nodiscard]] constexpr bool SharesColour(PixelLayout layout)
{
    return layout == PixelLayout::Yuyv || layout == PixelLayout::Uyvy;
}

[[nodiscard]] constexpr bool IsBayer(PixelLayout layout)
{
    return layout == PixelLayout::BayerGR || layout == PixelLayout::BayerRG ||
           layout == PixelLayout::BayerGB || layout == PixelLayout::BayerBG;
}

/// @return  bytes of one picture; rows have no padding. Sizes of a camera's registers cannot overflow it.
[[nodiscard]] constexpr std::size_t PictureBytes(const PictureFormat& format, std::uint32_t widthPx,
                                                 std::uint32_t heightPx)
{
    return std::size_t{widthPx} * heightPx * format.bytesPerPixel;
}

} // namespace simulator
