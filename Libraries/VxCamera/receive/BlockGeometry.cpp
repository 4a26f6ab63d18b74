#include "VxCamera/receive/BlockGeometry.h"

#include "VxCamera/pixel/VxPixelFormat.h"
#include "VxCamera/wire/gvsp/ImageLeader.h"

#include <limits>

namespace receive {

namespace {

constexpr std::size_t kBitsPerByte = 8;

/// Bytes of the picture when each line begins at the bit behind the last one.
/// @param layoutBytes  of the same picture with whole bytes per line; fits, and is not smaller
std::size_t LeastBytes(const BlockGeometry& geometry, std::size_t layoutBytes)
{
    const std::size_t bitsPerPixel = VxBitsPerPixel(geometry.pixelFormat);
    if (bitsPerPixel % kBitsPerByte == 0)
        return layoutBytes;
    // Does not overflow: layoutBytes is about an eighth of it, and is below 2^56, see SetSizes.
    const std::size_t pixels = std::size_t{geometry.widthPx} * geometry.heightPx;
    return pixels / kBitsPerByte * bitsPerPixel + (pixels % kBitsPerByte * bitsPerPixel) / kBitsPerByte +
           std::size_t{geometry.linePaddingBytes} * geometry.heightPx;
}

void SetSizes(BlockGeometry& geometry, std::size_t imagePaddingBytes)
{
    // Chosen: so far above every memory that sums with it cannot overflow.
    constexpr std::size_t kLargest = std::numeric_limits<std::size_t>::max() >> kBitsPerByte;
    const auto layout =
        VxLayOutPicture(geometry.pixelFormat, geometry.widthPx, geometry.heightPx, geometry.linePaddingBytes);
    if (!layout || layout->totalBytes > kLargest) {
        geometry.code = VxError::InvalidData;
        return;
    }
    geometry.code = VxError::Ok;
    geometry.memoryBytes = layout->usedBytes;
    geometry.imageBytes = layout->totalBytes + imagePaddingBytes;
    geometry.leastImageBytes = LeastBytes(geometry, layout->totalBytes) + imagePaddingBytes;
}

} // namespace

BlockGeometry ReadGeometry(std::span<const std::byte> leader)
{
    BlockGeometry geometry;
    const auto start = gvsp::ParseLeaderStart(leader);
    if (!start) {
        geometry.code = VxError::Truncated;
        return geometry;
    }
    geometry.payloadType = start->payloadType;
    geometry.timestampTicks = start->timestampTicks;
    if (!start->payloadType.HasImageLeader()) {
        geometry.code = VxError::NotAnImage;
        return geometry;
    }
    const auto image = gvsp::ParseImageLeader(leader);
    if (!image) {
        geometry.code = VxError::Truncated;
        return geometry;
    }
    geometry.pixelFormat = image->pixelFormat;
    geometry.widthPx = image->widthPx;
    geometry.heightPx = image->heightPx;
    geometry.offsetXPx = image->offsetXPx;
    geometry.offsetYPx = image->offsetYPx;
    geometry.linePaddingBytes = image->linePaddingBytes;
    SetSizes(geometry, image->imagePaddingBytes);
    return geometry;
}

BlockGeometry WithHeight(const BlockGeometry& geometry, std::uint32_t heightPx)
{
    BlockGeometry shorter = geometry;
    shorter.heightPx = heightPx;
    SetSizes(shorter, 0); // the padding behind the image is not needed for it
    return shorter;
}

} // namespace receive
