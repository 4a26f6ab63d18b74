#pragma once

#include "VxBase/VxByteWriter.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace gvsp {

// Fixed by the protocol: what follows the data of each chunk: its id, and how many bytes it has.
constexpr std::size_t kChunkTrailerBytes = 8;

// Fixed by the protocol: what the trailer of a block says of chunks: how many bytes all of them have, and an
// id that changes with the list of chunks. Chunk data (payload type 4) have the first field alone.
constexpr std::size_t kChunkFieldsBytes = 8;

/// Follows the list of chunks, which can only be read from its end.
///
/// Does not allocate.
/// @param payload  a whole block of chunk data, as received
/// @return  how many bytes the first chunk has, which begins where the payload does; none when the list does
///          not lead there
[[nodiscard]] std::optional<std::size_t> FirstChunkBytes(std::span<const std::byte> payload);

/// @param payload  as far as it is here
/// @return  whether the first chunk has so many bytes, as what stands behind it says
[[nodiscard]] bool BeginsWithChunk(std::span<const std::byte> payload, std::size_t chunkBytes);

/// Does not allocate.
/// @param trailer  data of a trailer packet
/// @return  bytes of all chunks of the block; 0 when it does not tell them, or carries none
[[nodiscard]] std::uint32_t ParseTrailerChunkBytes(std::span<const std::byte> trailer);

/// Writes what stands behind the data of a chunk.
void WriteChunkTrailer(VxByteWriter& out, std::uint32_t chunkId, std::uint32_t chunkBytes);

/// Writes what the trailer of an image says of the chunks behind it, from where that trailer ends.
void WriteTrailerChunkFields(VxByteWriter& out, std::uint32_t chunkBytes, std::uint32_t layoutId);

/// Writes the trailer of a block of chunk data (payload type 4).
void WriteChunkDataTrailer(VxByteWriter& out, std::uint32_t chunkBytes);

} // namespace gvsp
