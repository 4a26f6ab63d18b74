#include "VxSimulator/stream/ChunkList.h"

#include "VxBase/VxByteWriter.h"

#include "VxCamera/wire/gvsp/ChunkData.h"

#include <cassert>
#include <span>

namespace simulator {

namespace {

void WriteChunk(VxByteWriter& out, std::uint32_t id, std::uint64_t value)
{
    out.U64be(value);
    gvsp::WriteChunkTrailer(out, id, sizeof(value));
}

} // namespace

std::size_t ChunkBytes(const ChunkOrder& chunks)
{
    constexpr std::size_t kValueChunk = sizeof(std::uint64_t) + gvsp::kChunkTrailerBytes;
    if (chunks.way == ChunkOrder::Way::None)
        return 0;
    return gvsp::kChunkTrailerBytes + (chunks.hasFrameId ? kValueChunk : 0) +
           (chunks.hasTimestamp ? kValueChunk : 0);
}

std::uint32_t ChunkLayoutId(const ChunkOrder& chunks)
{
    return 1u | (chunks.hasFrameId ? 2u : 0u) | (chunks.hasTimestamp ? 4u : 0u);
}

void AppendChunks(const FrameOrder& order, std::vector<std::byte>& payload)
{
    const std::size_t pictureBytes = payload.size();
    const std::size_t chunkBytes = ChunkBytes(order.chunks);
    if (chunkBytes == 0)
        return;
    payload.resize(pictureBytes + chunkBytes);
    VxByteWriter out{std::span(payload).last(chunkBytes)};
    gvsp::WriteChunkTrailer(out, kPictureChunk, static_cast<std::uint32_t>(pictureBytes)); // at most 2^30
    if (order.chunks.hasFrameId)
        WriteChunk(out, kFrameIdChunk, order.blockId);
    if (order.chunks.hasTimestamp)
        WriteChunk(out, kTimestampChunk, order.timestampTicks);
    assert(out.Ok() && out.Written().size() == chunkBytes);
}

} // namespace simulator
