#pragma once

#include "VxBase/VxError.h"
#include "VxCamera/wire/gvsp/PayloadType.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace receive {

/// What the camera's features say of its pictures, for payloads whose leader does not tell.
struct PictureShape {
    std::uint32_t pixelFormat = 0;
    std::uint32_t widthPx = 0;
    std::uint32_t heightPx = 0;

    bool operator==(const PictureShape&) const = default;
};

/// The picture that a leader announces, with its sizes checked.
struct BlockGeometry {
    /// Ok; NotAnImage: a payload of another kind; InvalidData: sizes that no picture can have
    VxError code = VxError::NotInitialized;
    /// Which part of a multi-part payload is the picture; none for any other payload
    std::optional<std::uint8_t> partId;
    gvsp::PayloadType payloadType;
    std::uint64_t timestampTicks = 0;
    std::uint32_t pixelFormat = 0;
    std::uint32_t widthPx = 0;
    std::uint32_t heightPx = 0;
    std::uint32_t offsetXPx = 0;
    std::uint32_t offsetYPx = 0;
    std::uint32_t linePaddingBytes = 0;
    std::size_t imageBytes = 0;       ///< on the wire: with the padding of every line and of the image
    std::size_t leastImageBytes = 0;  ///< the same without what a part announces beyond its lines
    std::size_t joinedImageBytes = 0; ///< on the wire, from a camera that does not round lines up to whole
                                      ///< bytes but lets them run together
    /// The same up to the last pixel; 0: of a picture that can only be read when each line begins with a byte
    std::size_t joinedMemoryBytes = 0;
    bool areLinesJoined = false; ///< they run together, and the other sizes are those of such a picture
    std::size_t memoryBytes = 0; ///< up to the last pixel: what a buffer must hold

    bool operator==(const BlockGeometry&) const = default;

    /// Whether so many bytes are those of a picture whose lines run together, and of no other.
    [[nodiscard]] bool IsJoined(std::size_t bytes) const
    {
        return bytes == joinedImageBytes && bytes != leastImageBytes;
    }
    /// Whether so many bytes are those of such a picture, and it can be read.
    [[nodiscard]] bool IsReadableJoined(std::size_t bytes) const
    {
        return joinedMemoryBytes != 0 && IsJoined(bytes);
    }
};

/// Whether both announce pictures that take the same packets.
[[nodiscard]] bool IsSameShape(const BlockGeometry& a, const BlockGeometry& b);

/// The first image of a multi-part payload is its picture; that of chunk data is the first chunk, of which
/// the leader tells nothing.
/// @param leader  data of a leader packet
/// @param ofCamera  for chunk data; none: they count as no image
/// @return  code Truncated when the leader is cut
[[nodiscard]] BlockGeometry ReadGeometry(std::span<const std::byte> leader,
                                         const std::optional<PictureShape>& ofCamera = std::nullopt);

/// The same picture with lines that run together; a part whose leader tells so many bytes is one already.
/// @param geometry  with joinedMemoryBytes
[[nodiscard]] BlockGeometry WithJoinedLines(const BlockGeometry& geometry);

/// The same picture with lines that begin with a byte.
[[nodiscard]] BlockGeometry WithRoundedLines(const BlockGeometry& geometry);

/// The same picture with fewer lines; for trailers that say so.
/// @param heightPx  1 to geometry's height
[[nodiscard]] BlockGeometry WithHeight(const BlockGeometry& geometry, std::uint32_t heightPx);

} // namespace receive
