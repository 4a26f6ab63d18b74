#include "VxSimulator/stream/Block.h"

#include "VxCamera/wire/gvsp/BlockLayout.h"
#include "VxCamera/wire/gvsp/ChunkData.h"
#include "VxCamera/wire/gvsp/ImageLeader.h"
#include "VxCamera/wire/gvsp/ImageTrailer.h"

#include "VxSimulator/stream/ChunkList.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace simulator {

namespace {

std::vector<std::byte> WithChunks(const FrameOrder& order, std::vector<std::byte> picture)
{
    AppendChunks(order, picture);
    return picture;
}

} // namespace

Block::Block(const FrameOrder& order, std::vector<std::byte> picture)
    : m_order(order),
      m_payload(WithChunks(order, std::move(picture))),
      // The camera's registers allow no packet without room; an order that is made elsewhere divides by none.
      m_bytesPerPacket(
          std::max<std::size_t>(gvsp::PayloadBytesPerPacket(order.packetSizeBytes, order.idMode), 1)),
      // Even 16384 x 16384 pixels of 4 bytes in the smallest packets are fewer than 2^23.
      m_payloadPackets(static_cast<std::uint32_t>(gvsp::PayloadPackets(m_payload.size(), m_bytesPerPacket)))
{
}

void Block::NoteSent(std::uint32_t packetId, IVxClock::Time now)
{
    if (m_sentAt)
        m_sentAt[packetId] = now.time_since_epoch().count();
}

std::optional<IVxClock::Time> Block::SentAt(std::uint32_t packetId) const
{
    const auto ticks = m_sentAt ? m_sentAt[packetId].load() : 0;
    return ticks != 0 ? std::optional(IVxClock::Time(IVxClock::Time::duration(ticks))) : std::nullopt;
}

gvsp::PayloadType Block::PayloadType() const
{
    switch (m_order.chunks.way) {
    case ChunkOrder::Way::BehindImage:
        return {gvsp::PayloadType::kImage | gvsp::PayloadType::kChunksFollow};
    case ChunkOrder::Way::AsPayload:
        return {gvsp::PayloadType::kChunkData};
    case ChunkOrder::Way::None:
        break;
    }
    return {gvsp::PayloadType::kImage};
}

void Block::WriteLeader(VxByteWriter& out) const
{
    const gvsp::LeaderStart start{.payloadType = PayloadType(), .timestampTicks = m_order.timestampTicks};
    if (!start.payloadType.HasImageLeader()) {
        gvsp::WriteLeaderStart(out, start);
        return;
    }
    gvsp::WriteImageLeader(out, {.start = start,
                                 .pixelFormat = m_order.format.code,
                                 .widthPx = m_order.widthPx,
                                 .heightPx = m_order.heightPx,
                                 .offsetXPx = m_order.offsetXPx,
                                 .offsetYPx = m_order.offsetYPx});
}

void Block::WriteTrailer(VxByteWriter& out) const
{
    const auto bytes = static_cast<std::uint32_t>(m_payload.size()); // below 2^31
    if (m_order.chunks.way == ChunkOrder::Way::AsPayload) {
        gvsp::WriteChunkDataTrailer(out, bytes);
        return;
    }
    gvsp::WriteImageTrailer(out, {.payloadType = PayloadType(), .heightPx = m_order.heightPx});
    if (m_order.chunks.way == ChunkOrder::Way::BehindImage)
        gvsp::WriteTrailerChunkFields(out, bytes, ChunkLayoutId(m_order.chunks));
}

std::span<const std::byte> Block::WritePacket(std::uint32_t packetId, Sending sending,
                                              std::span<std::byte> memory) const
{
    assert(packetId < PacketCount());
    gvsp::PacketHeader header{.idMode = m_order.idMode, .blockId = m_order.blockId, .packetId = packetId};
    if (sending == Sending::Again) {
        header.status = gvsp::Status::PacketResend;
        header.flags = gvsp::kFlagIsResend;
    }
    VxByteWriter out(memory);
    if (packetId == 0) {
        header.format = gvsp::PacketFormat::Leader;
        gvsp::WritePacketHeader(out, header);
        WriteLeader(out);
    } else if (packetId <= m_payloadPackets) {
        gvsp::WritePacketHeader(out, header);
        const auto offset =
            static_cast<std::size_t>(gvsp::PayloadOffset(packetId, m_bytesPerPacket)); // in m_payload
        const std::size_t size = std::min(m_bytesPerPacket, m_payload.size() - offset);
        out.Bytes(std::span(m_payload).subspan(offset, size));
    } else {
        header.format = gvsp::PacketFormat::Trailer;
        gvsp::WritePacketHeader(out, header);
        WriteTrailer(out);
    }
    assert(out.Ok());
    return out.Written();
}

} // namespace simulator
