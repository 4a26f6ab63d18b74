#pragma once

#include <cstddef>
#include <cstdint>

namespace vxds {

// Fixed by the formats: bytes of a pixel.
constexpr std::size_t kYuv422BgrBytes = 3;
constexpr std::size_t kYuv422Yuy2Bytes = 2;

// Fixed by the instruction that rearranges 16 bytes: an index with this bit gives 0.
constexpr std::uint8_t kYuv422Zero = 0x80;

/// The bytes of a row that the 16 bits of a pixel come from; kYuv422Zero: none.
struct Yuv422Source {
    std::uint8_t low;
    std::uint8_t high;
};
[[nodiscard]] constexpr Yuv422Source GreenRedOf(std::size_t x)
{
    const std::size_t first = x * kYuv422BgrBytes; // less than 96 here and below
    return {static_cast<std::uint8_t>(first + 1), static_cast<std::uint8_t>(first + 2)};
}
[[nodiscard]] constexpr Yuv422Source BlueOf(std::size_t x)
{
    return {static_cast<std::uint8_t>(x * kYuv422BgrBytes), kYuv422Zero};
}
[[nodiscard]] constexpr Yuv422Source ChromaOf(std::size_t x)
{
    return {static_cast<std::uint8_t>(x * kYuv422BgrBytes + (x % 2 == 0 ? 0 : 2)), kYuv422Zero};
}

} // namespace vxds
