#pragma once

#include "VxBase/VxByteWriter.h"
#include "VxBase/VxExpected.h"

#include "VxCamera/wire/gvsp/ChunkData.h"
#include "VxCamera/wire/gvsp/PayloadType.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace gvsp {

// Fixed by the protocol: the start that all trailers share, and a whole one.
constexpr std::size_t kTrailerStartBytes = 4;
constexpr std::size_t kImageTrailerBytes = 8;

/// How long a trailer is inside an all-in packet, where nothing else tells where the payload begins.
/// @param type  one that has an image leader
[[nodiscard]] constexpr std::size_t ImageTrailerBytes(PayloadType type)
{
    return kImageTrailerBytes + (type.HasChunks() ? kChunkFieldsBytes : 0);
}

/// Trailer of a block that carries an image (and of one with the old extended chunk data).
struct ImageTrailer {
    PayloadType payloadType{PayloadType::kImage};
    std::uint32_t heightPx = 0; ///< lines really sent

    bool operator==(const ImageTrailer&) const = default;
};

/// @return  what the block carried, from any trailer; VxError::Truncated. Does not allocate.
[[nodiscard]] VxExpected<PayloadType> ParseTrailerPayloadType(std::span<const std::byte> data);

/// Does not allocate.
/// @param data  at least 8 bytes, 12 with the old extended chunk data; more is allowed and ignored
/// @return  VxError::Truncated; VxError::InvalidData when the payload type has another kind of trailer
[[nodiscard]] VxExpected<ImageTrailer> ParseImageTrailer(std::span<const std::byte> data);

void WriteImageTrailer(VxByteWriter& out, const ImageTrailer& trailer);

} // namespace gvsp
