#include "VxDSSource/stream/Yuv422Formula.h"

#include <algorithm>
#include <cstddef>

namespace vxds {

namespace {

constexpr std::size_t kBgrBytes = 3;
constexpr std::size_t kYuy2Bytes = 2;

struct Pixel {
    std::uint8_t blue;
    std::uint8_t green;
    std::uint8_t red;
};

float Luma(const Pixel& pixel)
{
    return static_cast<float>(0.299 * pixel.red + 0.587 * pixel.green + 0.114 * pixel.blue);
}

/// @param difference  colour minus luma, in single precision
std::uint8_t Chroma(float difference, double factor)
{
    return static_cast<std::uint8_t>(difference * factor + 128.0);
}

} // namespace

void BgrRowToYuy2(std::span<const std::uint8_t> bgr, std::span<std::uint8_t> yuy2)
{
    const std::size_t widthPx = std::min(bgr.size() / kBgrBytes, yuy2.size() / kYuy2Bytes);
    const std::uint8_t* in = bgr.data();
    std::uint8_t* out = yuy2.data();
    for (std::size_t x = 0; x < widthPx; ++x, in += kBgrBytes, out += kYuy2Bytes) {
        const Pixel pixel{in[0], in[1], in[2]};
        const float luma = Luma(pixel);
        const bool isEven = x % 2 == 0;
        out[0] = static_cast<std::uint8_t>(luma);
        out[1] = isEven ? Chroma(static_cast<float>(pixel.blue) - luma, 0.565)
                        : Chroma(static_cast<float>(pixel.red) - luma, 0.713);
    }
}

} // namespace vxds
