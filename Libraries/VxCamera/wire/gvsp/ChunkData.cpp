#include "VxCamera/wire/gvsp/ChunkData.h"

#include "VxBase/VxByteOrder.h"
#include "VxBase/VxByteReader.h"

#include "VxCamera/wire/gvsp/ImageTrailer.h"
#include "VxCamera/wire/gvsp/PayloadType.h"

namespace gvsp {

namespace {

struct ChunkTrailer {
    std::uint32_t id = 0;
    std::uint32_t bytes = 0;
};

//   bytes  field         (big endian, repeated)
//       n  data
//       4  chunk id
//       4  n
ChunkTrailer ReadChunkTrailer(std::span<const std::byte, kChunkTrailerBytes> trailer)
{
    return {VxLoadBe<std::uint32_t>(trailer.first<4>()), VxLoadBe<std::uint32_t>(trailer.last<4>())};
}

} // namespace

std::optional<std::size_t> FirstChunkBytes(std::span<const std::byte> payload)
{
    while (payload.size() >= kChunkTrailerBytes) {
        const ChunkTrailer chunk = ReadChunkTrailer(payload.last<kChunkTrailerBytes>());
        payload = payload.first(payload.size() - kChunkTrailerBytes);
        // Zeros are data: where a chunk full of them was cut they would lead to the one before.
        const bool isNoChunk = chunk.id == 0 && chunk.bytes == 0;
        if (isNoChunk || chunk.bytes > payload.size())
            return std::nullopt;
        if (chunk.bytes == payload.size())
            return chunk.bytes;
        payload = payload.first(payload.size() - chunk.bytes);
    }
    return std::nullopt;
}

bool BeginsWithChunk(std::span<const std::byte> payload, std::size_t chunkBytes)
{
    if (payload.size() < kChunkTrailerBytes || payload.size() - kChunkTrailerBytes < chunkBytes)
        return false;
    return ReadChunkTrailer(payload.subspan(chunkBytes).first<kChunkTrailerBytes>()).bytes == chunkBytes;
}

//   offset  bytes  chunk data, old extended chunk data  |  offset  bytes  image with chunks   (big endian)
//        4      4  bytes of all chunks                  |       8      4  bytes of all chunks
std::uint32_t ParseTrailerChunkBytes(std::span<const std::byte> trailer)
{
    const auto type = ParseTrailerPayloadType(trailer);
    if (!type || !type->HasChunks())
        return 0;
    VxByteReader in(trailer);
    switch (type->Type()) {
    case PayloadType::kChunkData:
    case PayloadType::kExtendedChunkData:
        in.Skip(kTrailerStartBytes);
        break;
    case PayloadType::kImage:
        in.Skip(kImageTrailerBytes);
        break;
    default:
        return 0;
    }
    const std::uint32_t bytes = in.U32be();
    return in.Ok() ? bytes : 0;
}

void WriteChunkTrailer(VxByteWriter& out, std::uint32_t chunkId, std::uint32_t chunkBytes)
{
    out.U32be(chunkId);
    out.U32be(chunkBytes);
}

void WriteTrailerChunkFields(VxByteWriter& out, std::uint32_t chunkBytes, std::uint32_t layoutId)
{
    out.U32be(chunkBytes);
    out.U32be(layoutId);
}

void WriteChunkDataTrailer(VxByteWriter& out, std::uint32_t chunkBytes)
{
    out.U16be(0); // reserved
    out.U16be(PayloadType::kChunkData);
    out.U32be(chunkBytes);
}

} // namespace gvsp
