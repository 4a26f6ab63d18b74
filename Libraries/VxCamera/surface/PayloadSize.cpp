#include "VxCamera/surface/PayloadSize.h"

#include <limits>
#include <string_view>

namespace {

constexpr std::uint64_t kMostBytes = std::numeric_limits<std::uint32_t>::max();

/// @return  the feature's value when it is possible for a size; else 0
std::uint64_t PositiveValue(genapi::NodeMap& map, std::string_view name)
{
    const auto node = map.Find(name);
    const std::int64_t value = node ? map.GetInteger(*node).ValueOr(0) : 0;
    return value > 0 && static_cast<std::uint64_t>(value) <= kMostBytes ? static_cast<std::uint64_t>(value)
                                                                        : 0;
}

/// Fixed by the naming convention of pixel formats: bits 16 to 23 of the number are the bits that a pixel
/// takes.
std::uint64_t BitsPerPixel(std::uint64_t pixelFormat)
{
    return pixelFormat >> 16 & 0xFF;
}

} // namespace

std::uint32_t PayloadSizeOf(genapi::NodeMap& map)
{
    const auto lock = map.Hold(); // the three belong together
    if (const std::uint64_t bytes = PositiveValue(map, "PayloadSize"); bytes > 0)
        return static_cast<std::uint32_t>(bytes); // fits: see PositiveValue
    const std::uint64_t width = PositiveValue(map, "Width");
    const std::uint64_t height = PositiveValue(map, "Height");
    const std::uint64_t bits = BitsPerPixel(PositiveValue(map, "PixelFormat"));
    if (width == 0 || height == 0 || bits == 0 || width > kMostBytes * 8 / bits / height)
        return 0;
    const std::uint64_t bytes = (width * height * bits + 7) / 8;
    return bytes <= kMostBytes ? static_cast<std::uint32_t>(bytes) : 0;
}

std::optional<receive::PictureShape> PictureInChunksOf(genapi::NodeMap& map)
{
    const auto lock = map.Hold(); // the four belong together
    const auto active = map.Find("ChunkModeActive");
    if (!active || !map.GetBoolean(*active).ValueOr(false))
        return std::nullopt;
    // All fit: see PositiveValue.
    const receive::PictureShape picture{static_cast<std::uint32_t>(PositiveValue(map, "PixelFormat")),
                                        static_cast<std::uint32_t>(PositiveValue(map, "Width")),
                                        static_cast<std::uint32_t>(PositiveValue(map, "Height"))};
    const bool isKnown = picture.pixelFormat != 0 && picture.widthPx != 0 && picture.heightPx != 0;
    return isKnown ? std::optional(picture) : std::nullopt;
}
