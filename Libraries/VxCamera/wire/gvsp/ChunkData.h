#pragma once

#include <cstddef>
#include <optional>
#include <span>

namespace gvsp {

// Fixed by the protocol: what follows the data of each chunk: its id, and how many bytes it has.
constexpr std::size_t kChunkTrailerBytes = 8;

/// Follows the list of chunks, which can only be read from its end.
///
/// Does not allocate.
/// @param payload  a whole block of chunk data, as received
/// @return  how many bytes the first chunk has, which begins where the payload does; none when the list does
///          not lead there
[[nodiscard]] std::optional<std::size_t> FirstChunkBytes(std::span<const std::byte> payload);

} // namespace gvsp
