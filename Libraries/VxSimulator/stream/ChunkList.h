#pragma once

#include "VxSimulator/stream/FrameOrder.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace simulator {

// Ids of the chunks; chosen, description/camera.xml has them, too.
constexpr std::uint32_t kPictureChunk = 1;
constexpr std::uint32_t kFrameIdChunk = 2;   // 64 bits: the block id
constexpr std::uint32_t kTimestampChunk = 3; // 64 bits: ticks

/// @return  bytes of payload that come on top of the picture
[[nodiscard]] std::size_t ChunkBytes(const ChunkOrder& chunks);

/// @return  another one for every list of chunks
[[nodiscard]] std::uint32_t ChunkLayoutId(const ChunkOrder& chunks);

/// Makes the picture the first chunk, and puts the others behind it.
/// @param payload  the picture; grows by ChunkBytes
void AppendChunks(const FrameOrder& order, std::vector<std::byte>& payload);

} // namespace simulator
