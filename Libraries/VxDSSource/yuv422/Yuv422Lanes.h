#pragma once

#include "VxDSSource/yuv422/Yuv422Layout.h"

#include <array>
#include <cstddef>
#include <cstdint>

// Orders of bytes for sets that rearrange bytes within 16 of them.

namespace vxds {

// Fixed by 8 pixels of 3 bytes in 16 bytes: the second 16 begin where they end with the last pixel.
constexpr std::size_t kYuv422LanePixels = 8;
constexpr std::size_t kYuv422LaneBytes = 16;
constexpr std::size_t kYuv422LastPart = kYuv422LanePixels * kYuv422BgrBytes - kYuv422LaneBytes;

/// What comes from the first 16 bytes of 8 pixels, and what from the last 16; together every byte once.
struct Yuv422LaneIndices {
    alignas(kYuv422LaneBytes) std::array<std::uint8_t, kYuv422LaneBytes> first{};
    alignas(kYuv422LaneBytes) std::array<std::uint8_t, kYuv422LaneBytes> last{};
};

[[nodiscard]] constexpr Yuv422LaneIndices LaneIndicesOf(Yuv422Source (*sourceOf)(std::size_t x))
{
    Yuv422LaneIndices indices;
    for (std::size_t i = 0; i < kYuv422LaneBytes; ++i) {
        const Yuv422Source source = sourceOf(i / 2);
        const std::uint8_t byte = i % 2 == 0 ? source.low : source.high;
        const bool isFirst = byte < kYuv422LaneBytes;
        indices.first[i] = isFirst ? byte : kYuv422Zero;
        indices.last[i] = isFirst || byte == kYuv422Zero
                              ? kYuv422Zero
                              : static_cast<std::uint8_t>(byte - kYuv422LastPart); // below 16
    }
    return indices;
}

inline constexpr Yuv422LaneIndices kYuv422GreenRed = LaneIndicesOf(GreenRedOf);
inline constexpr Yuv422LaneIndices kYuv422Blue = LaneIndicesOf(BlueOf);
inline constexpr Yuv422LaneIndices kYuv422Chroma = LaneIndicesOf(ChromaOf);

} // namespace vxds
