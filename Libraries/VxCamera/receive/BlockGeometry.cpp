#include "VxCamera/receive/BlockGeometry.h"

#include "VxCamera/pixel/VxPixelFormat.h"
#include "VxCamera/wire/gvsp/ImageLeader.h"
#include "VxCamera/wire/gvsp/MultiPart.h"

#include <algorithm>
#include <limits>

namespace receive {

namespace {

constexpr std::size_t kBitsPerByte = 8;

/// Bytes of the picture when each line begins at the bit behind the last one.
/// @param layoutBytes  of the same picture with whole bytes per line; fits, and is not smaller
std::size_t JoinedBytes(const BlockGeometry& geometry, std::size_t layoutBytes)
{
    const std::size_t bitsPerPixel = VxBitsPerPixel(geometry.pixelFormat);
    if (bitsPerPixel % kBitsPerByte == 0)
        return layoutBytes;
    // Does not overflow: layoutBytes is about an eighth of it, and is below 2^56, see SetSizes.
    const std::size_t pixels = std::size_t{geometry.widthPx} * geometry.heightPx;
    const std::size_t lastBits = pixels % kBitsPerByte * bitsPerPixel;
    return pixels / kBitsPerByte * bitsPerPixel + (lastBits + kBitsPerByte - 1) / kBitsPerByte +
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
    geometry.leastImageBytes = geometry.imageBytes;
    geometry.joinedImageBytes = JoinedBytes(geometry, layout->totalBytes) + imagePaddingBytes;
    // Lines with padding between them do not run together.
    const auto joined = VxJoinedPictureBytes(geometry.pixelFormat, geometry.widthPx, geometry.heightPx);
    geometry.joinedMemoryBytes = geometry.linePaddingBytes == 0 ? joined.value_or(0) : 0;
    geometry.areLinesJoined = false;
}

/// For the leader of an image as for the descriptor of a part: both have the same fields.
template <typename Fields>
void TakeFields(BlockGeometry& geometry, const Fields& fields)
{
    geometry.pixelFormat = fields.pixelFormat;
    geometry.widthPx = fields.widthPx;
    geometry.heightPx = fields.heightPx;
    geometry.offsetXPx = fields.offsetXPx;
    geometry.offsetYPx = fields.offsetYPx;
    geometry.linePaddingBytes = fields.linePaddingBytes;
    SetSizes(geometry, fields.imagePaddingBytes);
}

void TakeImage(BlockGeometry& geometry, std::span<const std::byte> leader)
{
    const auto image = gvsp::ParseImageLeader(leader);
    if (image)
        TakeFields(geometry, *image);
    else
        geometry.code = VxError::Truncated;
}

void TakeShape(BlockGeometry& geometry, const PictureShape& shape)
{
    gvsp::ImageLeader fields; // as a leader with the same picture would have them
    fields.pixelFormat = shape.pixelFormat;
    fields.widthPx = shape.widthPx;
    fields.heightPx = shape.heightPx;
    TakeFields(geometry, fields);
}

void TakeFirstImage(BlockGeometry& geometry, std::span<const std::byte> leader)
{
    constexpr std::size_t kMostParts = 256; // fixed: packets name their part with 8 bits
    const std::size_t parts = std::min(gvsp::PartCount(leader), kMostParts);
    geometry.code = VxError::NotAnImage;
    for (std::size_t i = 0; i < parts; ++i) {
        const auto part = gvsp::ParsePartDescriptor(leader, i);
        if (!part || part->dataType != gvsp::PartDescriptor::kImage2D)
            continue;
        TakeFields(geometry, *part);
        geometry.partId = static_cast<std::uint8_t>(i); // below 256
        // It says how much comes.
        const auto length = static_cast<std::size_t>(part->lengthBytes); // 48 bits
        if (geometry.code == VxError::Ok && geometry.IsReadableJoined(length))
            geometry = WithJoinedLines(geometry);
        else if (geometry.code == VxError::Ok && length > geometry.imageBytes)
            geometry.imageBytes = length;
        return;
    }
}

} // namespace

BlockGeometry WithJoinedLines(const BlockGeometry& geometry)
{
    BlockGeometry joined = geometry;
    joined.areLinesJoined = true;
    joined.memoryBytes = geometry.joinedMemoryBytes;
    joined.imageBytes = geometry.joinedImageBytes;
    joined.leastImageBytes = geometry.joinedImageBytes;
    return joined;
}

BlockGeometry WithRoundedLines(const BlockGeometry& geometry)
{
    BlockGeometry rounded = geometry;
    SetSizes(rounded, geometry.joinedImageBytes - geometry.joinedMemoryBytes); // no line has padding
    return rounded;
}

bool IsSameShape(const BlockGeometry& a, const BlockGeometry& b)
{
    BlockGeometry later = b;
    later.timestampTicks = a.timestampTicks;
    return a == later;
}

BlockGeometry ReadGeometry(std::span<const std::byte> leader, const std::optional<PictureShape>& ofCamera)
{
    BlockGeometry geometry;
    const auto start = gvsp::ParseLeaderStart(leader);
    if (!start) {
        geometry.code = VxError::Truncated;
        return geometry;
    }
    geometry.payloadType = start->payloadType;
    geometry.timestampTicks = start->timestampTicks;
    if (start->payloadType.Type() == gvsp::PayloadType::kMultiPart)
        TakeFirstImage(geometry, leader);
    else if (start->payloadType.HasImageLeader())
        TakeImage(geometry, leader);
    else if (start->payloadType.Type() == gvsp::PayloadType::kChunkData && ofCamera)
        TakeShape(geometry, *ofCamera);
    else
        geometry.code = VxError::NotAnImage;
    return geometry;
}

BlockGeometry WithHeight(const BlockGeometry& geometry, std::uint32_t heightPx)
{
    BlockGeometry shorter = geometry;
    shorter.heightPx = heightPx;
    SetSizes(shorter, 0); // the padding behind the image is not needed for it
    return geometry.areLinesJoined ? WithJoinedLines(shorter) : shorter;
}

} // namespace receive
