#include "VxCamera/wire/gvsp/ChunkData.h"

#include "VxBase/VxByteOrder.h"

#include <cstdint>

namespace gvsp {

//   bytes  field         (big endian, repeated)
//       n  data
//       4  chunk id
//       4  n
std::optional<std::size_t> FirstChunkBytes(std::span<const std::byte> payload)
{
    constexpr std::size_t kLengthBytes = 4;
    while (payload.size() >= kChunkTrailerBytes) {
        const std::size_t bytes = VxLoadBe<std::uint32_t>(payload.last<kLengthBytes>());
        payload = payload.first(payload.size() - kChunkTrailerBytes);
        if (bytes > payload.size())
            return std::nullopt;
        if (bytes == payload.size())
            return bytes;
        payload = payload.first(payload.size() - bytes);
    }
    return std::nullopt;
}

} // namespace gvsp
